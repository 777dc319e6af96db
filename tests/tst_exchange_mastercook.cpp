// MasterCook's text export (MXP) and its XML (MX2) read into recipes: Krecipes' cookie recipe in
// both, Gourmet's export of 100 recipes from MasterCook 6, the fields, headings and amounts of
// either, and files that are damaged or cut short.
#include <QTest>

#include "core/AppError.h"
#include "exchange/MasterCookTextFormat.h"
#include "exchange/MasterCookXmlFormat.h"
#include "exchange/MealMasterFormat.h"
#include "exchange/Quantity.h"
#include "tests/support/ExchangeRead.h"

using namespace Exchange;
using namespace ExchangeRead;

namespace {

const QString Krecipes = QStringLiteral("KDE-krecipes/src/tests/import-export/");
const QString Athenos = QStringLiteral("thinkle-gourmet/gourmet/tests/recipe_files/athenos.mx2");

FileRead ReadText(const QByteArray& bytes, const QString& encoding = QString()) {
    return Collect([&](const RecipeSink& sink, FileNotes& notes) {
        MasterCookTextFormat::Read(bytes, sink, notes, encoding);
    });
}

FileRead ReadXml(const QByteArray& bytes) {
    return Collect([&](const RecipeSink& sink, FileNotes& notes) {
        MasterCookXmlFormat::Read(bytes, sink, notes);
    });
}

Recipe Titled(const QList<Recipe>& recipes, const QString& title) {
    for (const Recipe& recipe : recipes) {
        if (recipe.title == title) {
            return recipe;
        }
    }
    return Recipe();
}

const QStringList CookieLines = {"|c.|granulated sugar|",
                                 "1|c.|brown sugar|",
                                 "2|c.|all-purpose flour|",
                                 "1|tsp.|baking soda|",
                                 "1|c.|shortening|",
                                 "1|c.|peanut butter|",
                                 "2||eggs|",
                                 "1|tsp.|vanilla extract|"};

// A recipe with the fields, headings and notes that MasterCook writes, then one without a title.
const QStringList PoticaText = {
    "Recipes from the club.",
    "",
    "*  Exported from  MasterCook  *",
    "",
    "                     Potica",
    "",
    "Recipe By     :n/a",
    "Serving Size  : 0     Preparation Time :1:30",
    "Categories    : Breads                          Desserts",
    "                Slovenian",
    "",
    "  Amount  Measure       Ingredient -- Preparation Method",
    "--------  ------------  --------------------------------",
    "                        === DOUGH ===",
    "  1 1/2        pounds  flour",
    "     1/2           cup  milk -- lukewarm",
    "                        For the filling:",
    "  1              pound  walnuts -- ground",
    "  3 tbsp honey, warmed",
    "",
    "Knead the dough.",
    "Let it rise.",
    "",
    "Roll out, spread and bake.",
    "",
    "Source:",
    "  \"Babica Ana's notebook\"",
    "S(Internet address):",
    "  \"http://example.org/potica\"",
    "Yield:",
    "  \"2 loaves\"",
    "Description:",
    "  \"A festive roll, served",
    "  at Christmas\"",
    "",
    "Nutr. Assoc. : 0 0 0",
    "",
    "                                    - - - - - - - - - - - - - - - - - - -",
    "",
    "Per Serving (excluding unknown items): 300 Calories.",
    "",
    "NOTES : Keep it under a cloth",
    "        for a day.",
    "Nutr. Assoc. : 0 0 0",
    "",
    "* Exported from MasterCook *",
    "",
    "Recipe By     : Nobody",
};

const QByteArray StrudelXml =
    "<?xml version=\"1.0\" standalone=\"yes\" encoding=\"ISO-8859-1\"?>\n"
    "<mx2 source=\"test\">\n"
    "<Summ><Nam>Sirov \x9Atrudelj</Nam></Summ>\n"
    "<RcpE name=\" Sirov \x9Atrudelj \" author=\"Ana\">\n"
    "<Serv qty=\"0\"/><CatS><CatT>Desserts</CatT><CatT> </CatT></CatS>\n"
    "<IngR name=\"flour\" unit=\"cups\" qty=\"1 1/2\"/>\n"
    "<IngR name=\"sugar\" unit=\"cup\" qty=\"1 1 1/2\"/>\n"
    "<IngR name=\"Filling:\" code=\"S\"/>\n"
    "<IngR name=\"cottage cheese\" unit=\"g\" qty=\"500\"><IPrp>drained,\n pressed</IPrp></IngR>\n"
    "<IngR name=\"salt\"/>\n"
    "<DirS><DirT>Mix.\n\nBake.</DirT></DirS>\n"
    "<Yield unit=\"pieces\" qty=\"12.000000\"/>\n"
    "</RcpE>\n"
    "<RcpE name=\"One\" author=\"n/a\"><Serv qty=\"1\"/></RcpE>\n"
    "<RcpE author=\"Nobody\"></RcpE>\n"
    "</mx2>\n";

}  // namespace

class TestExchangeMasterCook : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void recognizesEachFormatByContent() {
        const QByteArray mxp = FileBytes(Krecipes + "mxptest.txt");
        const QByteArray mx2 = FileBytes(Krecipes + "mx2test.txt");
        const QByteArray athenos = FileBytes(Athenos);
        const QByteArray recipeMl = FileBytes(Krecipes + "recipemltest.txt");
        const QByteArray mealMaster = FileBytes(Krecipes + "mmftest.txt");
        QVERIFY(MasterCookTextFormat::Recognizes(mxp.left(512)));
        QVERIFY(MasterCookTextFormat::Recognizes(PoticaText.join('\n').toUtf8()));
        QVERIFY(MasterCookXmlFormat::Recognizes(mx2.left(512)));
        QVERIFY(MasterCookXmlFormat::Recognizes(athenos.left(512)));
        for (const QByteArray& other : {mx2, athenos, recipeMl, mealMaster}) {
            QVERIFY(!MasterCookTextFormat::Recognizes(other));
        }
        for (const QByteArray& other : {mxp, recipeMl, mealMaster}) {
            QVERIFY(!MasterCookXmlFormat::Recognizes(other));
        }
        QVERIFY(!MealMasterFormat::Recognizes(mxp));
        QVERIFY(!MasterCookTextFormat::Recognizes("* Exported from MasterCook *\n\n  Pie\n"));
        QVERIFY(!MasterCookXmlFormat::Recognizes(athenos.left(60)));
    }

    // The same recipe twice, TABs inside its lines.
    void readsTheKrecipesTextExport() {
        const FileRead read = ReadText(FileBytes(Krecipes + "mxptest.txt"));
        QCOMPARE(read.recipes.size(), 2);
        QCOMPARE(read.notes.notRecipes, 0);
        QCOMPARE(read.notes.problems, QStringList());
        QStringList lines = CookieLines;
        lines[0].prepend(QStringLiteral("3/4"));
        lines[4].append(QStringLiteral("softened,at room temperature"));
        for (const Recipe& recipe : read.recipes) {
            QCOMPARE(recipe.title, QStringLiteral("Cookies Test"));
            QCOMPARE(recipe.source, QStringLiteral("Mona Beamer, Colleen Beamer"));
            QCOMPARE(recipe.yield, QStringLiteral("2 servings"));
            QCOMPARE(recipe.categories, (QStringList{"Snacks", "Cookies & Squares"}));
            QCOMPARE(SectionTitles(recipe), QStringList{""});
            QCOMPARE(Fields(recipe), lines);
            QCOMPARE(
                Originals(recipe).mid(3, 4),
                (QStringList{"1 tsp. baking soda", "1 c. shortening, softened,at room temperature",
                             "1 c. peanut butter", "2 eggs"}));
            QCOMPARE(
                recipe.sections[0].steps,
                QStringList{"Drop by spoonful on greased cookie sheet.  Bake in moderate oven."});
        }
    }

    void readsTheFieldsHeadingsAndNotesOfTheTextExport() {
        const FileRead read = ReadText(PoticaText.join(QStringLiteral("\r\n")).toUtf8());
        QCOMPARE(read.recipes.size(), 1);
        const Recipe& potica = read.recipes.first();
        QCOMPARE(potica.title, QStringLiteral("Potica"));
        QCOMPARE(
            potica.source,
            QStringLiteral("Babica Ana's notebook; Internet address: http://example.org/potica"));
        QCOMPARE(potica.yield, QStringLiteral("2 loaves"));
        QCOMPARE(potica.categories, (QStringList{"Breads", "Desserts", "Slovenian"}));
        QCOMPARE(SectionTitles(potica), (QStringList{"DOUGH", "For the filling"}));
        // The last line crosses the columns and is read as free text.
        QCOMPARE(Fields(potica), (QStringList{"1 1/2|pounds|flour|", "1/2|cup|milk|lukewarm",
                                              "1|pound|walnuts|ground", "3|tbsp|honey|warmed"}));
        QCOMPARE(potica.sections[0].steps, QStringList());
        QCOMPARE(potica.sections[1].steps,
                 (QStringList{"Knead the dough. Let it rise.", "Roll out, spread and bake.",
                              "Description: A festive roll, served at Christmas",
                              "Keep it under a cloth for a day."}));
        // The text before the first banner and the recipe without a title.
        QCOMPARE(read.notes.notRecipes, 2);
        const int untitled = static_cast<int>(PoticaText.indexOf("* Exported from MasterCook *"));
        QCOMPARE(read.notes.problems,
                 QStringList{QStringLiteral("vrstica %1: recept brez naslova").arg(untitled + 1)});
    }

    void readsTheEncodingOfTheTextExport() {
        const QByteArray bytes =
            "* Exported from MasterCook *\n\n  Cr\xE8me br\xFBl\xE9"
            "e\n\nRecipe By     : \x91"
            "Chef\x92\n";
        const FileRead read = ReadText(bytes);
        QCOMPARE(read.recipes.size(), 1);
        QCOMPARE(read.recipes.first().title, QStringLiteral("Crème brûlée"));
        QCOMPARE(read.recipes.first().source, QStringLiteral("‘Chef’"));
        QCOMPARE(ReadText(bytes, QStringLiteral("CP437")).recipes.first().title,
                 QStringLiteral("CrΦme br√lΘe"));
        try {
            ReadText(bytes, QStringLiteral("EBCDIC"));
            QFAIL("no error");
        } catch (const AppError& error) {
            QCOMPARE(error.Source(), QStringLiteral("MasterCookTextFormat:Read"));
            QVERIFY(error.Description().endsWith(QLatin1String("->Unknown encoding EBCDIC")));
        }
    }

    // The same recipe twice; the first without the shortening's preparation.
    void readsTheKrecipesXml() {
        const FileRead read = ReadXml(FileBytes(Krecipes + "mx2test.txt"));
        QCOMPARE(read.recipes.size(), 2);
        QCOMPARE(read.notes.notRecipes, 0);
        QCOMPARE(read.notes.problems, QStringList());
        QStringList lines = CookieLines;
        lines[0].prepend(QStringLiteral("0.75-1"));
        lines[1].replace(0, 1, QStringLiteral("3/4-1"));
        for (const Recipe& recipe : read.recipes) {
            QCOMPARE(recipe.title, QStringLiteral("Cookies Test"));
            QCOMPARE(recipe.source, QStringLiteral("Colleen Beamer; krecipes.sourceforge.nte; "
                                                   "Internet address: "
                                                   "http://krecipes.sourceforge.net/"));
            QCOMPARE(recipe.yield, QStringLiteral("2 servings"));
            QCOMPARE(recipe.categories, (QStringList{"Snacks", "Cookies & Squares"}));
            QCOMPARE(SectionTitles(recipe), QStringList{""});
            QCOMPARE(recipe.sections[0].steps, (QStringList{"Drop by spoonful on greased cookie "
                                                            "sheet.",
                                                            "Bake in moderate oven."}));
        }
        QCOMPARE(Fields(read.recipes[0]), lines);
        lines[4].append(QStringLiteral("softened, at room temperature"));
        QCOMPARE(Fields(read.recipes[1]), lines);
        QCOMPARE(Originals(read.recipes[1]).mid(0, 5),
                 (QStringList{"0.75-1 c. granulated sugar", "3/4-1 c. brown sugar",
                              "2 c. all-purpose flour", "1 tsp. baking soda",
                              "1 c. shortening, softened, at room temperature"}));
        // A range is its lower bound with the upper one named.
        const Quantity decimal = Quantity::Read(read.recipes[0].sections[0].lines[0].amountText);
        QCOMPARE(decimal.value, QStringLiteral("0.75"));
        QCOMPARE(decimal.rangeTo, QStringLiteral("1"));
        const Quantity fraction = Quantity::Read(read.recipes[0].sections[0].lines[1].amountText);
        QCOMPARE(fraction.value, QStringLiteral("0.75"));
        QCOMPARE(fraction.rangeTo, QStringLiteral("1"));
    }

    void readsTheAthenosExport() {
        const FileRead read = ReadXml(FileBytes(Athenos));
        QCOMPARE(read.recipes.size(), 100);
        QCOMPARE(read.notes.notRecipes, 0);
        QCOMPARE(read.notes.problems, QStringList());
        QCOMPARE(read.recipes.first().title, QStringLiteral("5 Layer Mediterranean Dip"));
        QCOMPARE(read.recipes.last().title, QStringLiteral("Zippy Mashed Potatoes"));
        // Six ingredients, the first without a unit.
        const Recipe& dip = read.recipes.first();
        QCOMPARE(dip.source, QStringLiteral("Athenos' recipe archive at http://www.athenos.com; "
                                            "Formatted for MC6: 08-03-2001  by  Joe Comiskey  - "
                                            " jcomiskey@krypto.net"));
        QCOMPARE(dip.yield, QStringLiteral("2 cups"));
        QCOMPARE(dip.categories, (QStringList{"Appetizers", "Dips/Spreads"}));
        QCOMPARE(
            Fields(dip),
            (QStringList{"1||fresh jalapeño pepper|", "1|package|Atnenos Original Hummus - (7 oz)|",
                         "1/2|cup|chopped tomato|", "1/4|cup|chopped cucumber|",
                         "1|package|Atnenos Traditional Crumbled Feta Cheese -|(4 oz)",
                         "2|tablespoons|sliced pitted ripe olives|"}));
        QCOMPARE(Originals(dip).first(), QStringLiteral("1 fresh jalapeño pepper"));
        QCOMPARE(dip.sections[0].steps,
                 (QStringList{"Spread hummus on bottom of 9-inch pie plate.  Layer with remaining "
                              "ingredients.  Serve with tortilla chips.",
                              "This recipe yields 2 cups.",
                              "Great Substitute:  Try kalamata olives in place of ripe olives."}));
        // Windows' quotes in a file that declares ISO-8859-1.
        const Recipe torta = Titled(read.recipes, QStringLiteral("Chocolate-Walnut Torta Caprese"));
        QCOMPARE(Fields(torta).at(2),
                 QStringLiteral("8|ounces|Baker’s Semi-Sweet Baking Chocolate|melted, cooled"));
        QCOMPARE(torta.yield, QStringLiteral("10 servings"));
        const Recipe nachos = Titled(read.recipes, QStringLiteral("Cheesy Beef Nachos"));
        QCOMPARE(SectionTitles(nachos), (QStringList{"", "TOPPINGS"}));
        QCOMPARE(Fields(nachos).mid(1, 2),
                 (QStringList{"1/2|cup|Taco Bell Home Originals Thick ‘N|", "||Chunky Salsa|"}));
        QCOMPARE(nachos.sections[1].lines.size(), 7);
        QCOMPARE(nachos.sections[1].steps.size(), 5);
        QVERIFY(!Titled(read.recipes, QStringLiteral("Oreo® Cheesecake")).title.isEmpty());
    }

    // MasterCook's subtitles and the headings its cooks write; a note after the method.
    void readsTheHeadingsAndNotesOfAthenos() {
        const FileRead read = ReadXml(FileBytes(Athenos));
        const Recipe olives = Titled(read.recipes, QStringLiteral("Marinated Olives"));
        QCOMPARE(SectionTitles(olives),
                 (QStringList{"", "For Greek", "For Italian", "For Spanish", "For French"}));
        QCOMPARE(olives.yield, QStringLiteral("1.75 cups"));
        QCOMPARE(Fields(olives).first(),
                 QStringLiteral("1|can|whole pitted ripe olives - (6 oz)|drained"));
        QCOMPARE(olives.sections[4].steps.first(),
                 QStringLiteral("Mix olives and seasonings of choice.  Refrigerate 2 hours or "
                                "overnight."));
        const Recipe catfish =
            Titled(read.recipes,
                   QStringLiteral("Grilled Catfish, Coriander Black Beans, Roasted Eggplant"));
        QVERIFY(catfish.source.startsWith(QLatin1String("Fritz Sonnenschmidt; Athenos'")));
        QCOMPARE(SectionTitles(catfish), (QStringList{"CATFISH", "BLACK BEANS"}));
        QCOMPARE(LineCount(catfish), 17);
        QCOMPARE(catfish.sections[1].steps.last(),
                 QStringLiteral("Recipe created for Athenos by chef Fritz Sonnenschmidt"));
    }

    void readsTheAmountsAndYieldsOfTheXml() {
        const FileRead read = ReadXml(StrudelXml);
        QCOMPARE(read.recipes.size(), 2);
        const Recipe& strudel = read.recipes[0];
        QCOMPARE(strudel.title, QStringLiteral("Sirov štrudelj"));
        QCOMPARE(strudel.source, QStringLiteral("Ana"));
        QCOMPARE(strudel.yield, QStringLiteral("12 pieces"));
        QCOMPARE(strudel.categories, QStringList{"Desserts"});
        QCOMPARE(SectionTitles(strudel), (QStringList{"", "Filling"}));
        QCOMPARE(Fields(strudel),
                 (QStringList{"1 1/2|cups|flour|", "1-1 1/2|cup|sugar|",
                              "500|g|cottage cheese|drained, pressed", "||salt|"}));
        QCOMPARE(strudel.sections[0].steps, QStringList());
        QCOMPARE(strudel.sections[1].steps, (QStringList{"Mix.", "Bake."}));
        const Recipe& one = read.recipes[1];
        QCOMPARE(one.title, QStringLiteral("One"));
        QCOMPARE(one.source, QString());
        QCOMPARE(one.yield, QStringLiteral("1 serving"));
        QCOMPARE(one.sections.size(), 0);
        QCOMPARE(read.notes.notRecipes, 1);
        QCOMPARE(read.notes.problems, QStringList{"vrstica 18: recept brez naslova"});
    }

    // Every length of the file cut short: the recipes before the cut, the rest named.
    void readsXmlCutShort() {
        QCOMPARE(FirstBadCut(FileBytes(Krecipes + "mx2test.txt"), "</RcpE>", "</mx2>", 8, ReadXml),
                 QString());
        const QByteArray athenos = FileBytes(Athenos);
        const QByteArray half = athenos.left(athenos.size() / 2);
        const FileRead read = ReadXml(half);
        QCOMPARE(read.recipes.size(), static_cast<int>(half.count("</RcpE>")));
        QCOMPARE(read.notes.notRecipes, 1);
        // The line where the part cut short starts: the text export kept in the recipe.
        const qsizetype cutPart = half.left(half.lastIndexOf("<![CDATA[")).count('\n') + 1;
        QCOMPARE(
            read.notes.problems,
            QStringList{
                QStringLiteral("vrstica %1: datoteka se konča sredi zapisa XML").arg(cutPart)});
    }

    void readsTextCutShort() {
        const QByteArray whole = FileBytes(Krecipes + "mxptest.txt");
        for (qsizetype cut = 0; cut < whole.size(); ++cut) {
            const QByteArray part = whole.left(cut);
            const FileRead read = ReadText(part);
            // Each banner is a recipe, or one without a title.
            const qsizetype banners = part.count("* Exported from MasterCook *");
            QCOMPARE(read.recipes.size() + read.notes.problems.size(), banners);
            QVERIFY(read.recipes.size() <= 2);
        }
    }

    void readsGarbage() {
        const QByteArray garbage = RandomBytes(20261122, 65536);
        const FileRead xml = ReadXml(garbage);
        QCOMPARE(xml.recipes.size(), 0);
        QCOMPARE(xml.notes.notRecipes, 1);
        QCOMPARE(xml.notes.problems, QStringList{"vrstica 1: zapis XML tu ni pravilen"});
        const FileRead text = ReadText(garbage);
        QCOMPARE(text.recipes.size(), 0);
        QCOMPARE(text.notes.notRecipes, 1);
        QCOMPARE(text.notes.problems, QStringList());
        // Garbage inside a recipe and after a banner.
        const FileRead inRecipe = ReadXml("<mx2><RcpE name=\"Pie\"><IngR " + garbage);
        QCOMPARE(inRecipe.recipes.size(), 0);
        QCOMPARE(inRecipe.notes.notRecipes, 1);
        QCOMPARE(inRecipe.notes.problems.size(), 1);
        const FileRead afterBanner = ReadText("* Exported from MasterCook *\n" + garbage);
        QCOMPARE(afterBanner.recipes.size() + afterBanner.notes.problems.size(), 1);
        // Deep nesting is skipped, not followed.
        const FileRead deep =
            ReadXml("<mx2><RcpE name=\"Deep\"><DirS><DirT>" + QByteArray("<b>").repeated(100000) +
                    "Stir." + QByteArray("</b>").repeated(100000) + "</DirT></DirS></RcpE></mx2>");
        QCOMPARE(deep.recipes.size(), 1);
        QCOMPARE(deep.recipes.first().sections.first().steps, QStringList{"Stir."});
        // Another XML format.
        const FileRead other = ReadXml(FileBytes(Krecipes + "recipemltest.txt"));
        QCOMPARE(other.recipes.size(), 0);
        QCOMPARE(other.notes.notRecipes, 1);
        QCOMPARE(other.notes.problems,
                 QStringList{"vrstica 2: datoteka ni v zapisu MasterCook MX2"});
        QCOMPARE(ReadXml(QByteArray()).notes.problems,
                 QStringList{"vrstica 1: datoteka se konča sredi zapisa XML"});
    }
};

QTEST_GUILESS_MAIN(TestExchangeMasterCook)
#include "tst_exchange_mastercook.moc"
