// RecipeML files read into recipes: Krecipes' cookie recipe with its groups, ranges and
// alternatives, menus, the forms of amounts, yields and directions, and files that are damaged
// or cut short.
#include <QTest>

#include "exchange/MasterCookTextFormat.h"
#include "exchange/MasterCookXmlFormat.h"
#include "exchange/MealMasterFormat.h"
#include "exchange/Quantity.h"
#include "exchange/RecipeMlFormat.h"
#include "tests/support/ExchangeRead.h"

using namespace Exchange;
using namespace ExchangeRead;

namespace {

const QString Krecipes = QStringLiteral("KDE-krecipes/src/tests/import-export/");

FileRead Read(const QByteArray& bytes) {
    return Collect([&](const RecipeSink& sink, FileNotes& notes) {
        RecipeMlFormat::Read(bytes, sink, notes);
    });
}

// A menu of two recipes: plain text directions, groups of the method, amounts and yields in
// their other forms, HTML's entities.
const QByteArray MenuXml =
    "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n"
    "<!DOCTYPE recipeml PUBLIC \"-//FormatData//DTD RecipeML 0.5//EN\" "
    "\"http://www.formatdata.com/recipeml/recipeml.dtd\">\n"
    "<recipeml version=\"0.5\">\n"
    "<menu><head><title>Sunday</title></head>\n"
    "<recipe><head><title> Cr&eacute;pes\n with jam </title>\n"
    "<source>Babica&unknown;\n Ana</source><yield>4</yield></head>\n"
    "<ingredients><ing><amt><qty>3/4-1</qty><unit>cup</unit></amt><item>flour</item></ing>\n"
    "<ing><amt><qty>2</qty></amt><item>eggs</item><prep>beaten</prep></ing>\n"
    "<ing-div><title>Filling</title><note>any jam</note>\n"
    "<ing><item>apricot jam</item></ing></ing-div>\n"
    "<ing-div><title>Empty</title></ing-div></ingredients>\n"
    "<directions>Mix well.\n  Rest.\n\n  Fry thin.\n"
    "<dir-div><title>Filling</title><step>Spread the jam.</step></dir-div>\n"
    "<dir-div><title>Serving</title><step>Roll up.</step><step>Dust with sugar.</step>"
    "</dir-div></directions></recipe></menu>\n"
    "<recipe><head><title>Tea</title><yield><qty>1</qty></yield></head>\n"
    "<ingredients><ing><amt><qty>1</qty><unit>tsp</unit></amt><item>tea</item></ing>"
    "</ingredients>\n<directions><step>Brew\n3&nbsp;minutes.\n\nServe.</step></directions>"
    "</recipe>\n"
    "<recipe><head><yield>2</yield></head></recipe>\n"
    "</recipeml>\n";

}  // namespace

class TestExchangeRecipeMl : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void recognizesRecipeMlByContent() {
        const QByteArray recipeMl = FileBytes(Krecipes + "recipemltest.txt");
        QVERIFY(RecipeMlFormat::Recognizes(recipeMl.left(400)));
        QVERIFY(RecipeMlFormat::Recognizes(MenuXml));
        QVERIFY(!MasterCookXmlFormat::Recognizes(recipeMl));
        QVERIFY(!MasterCookTextFormat::Recognizes(recipeMl));
        QVERIFY(!MealMasterFormat::Recognizes(recipeMl));
        for (const QString& other :
             {Krecipes + "mx2test.txt", Krecipes + "mxptest.txt", Krecipes + "mmftest.txt",
              QStringLiteral("thinkle-gourmet/gourmet/tests/recipe_files/"
                             "athenos.mx2")}) {
            QVERIFY2(!RecipeMlFormat::Recognizes(FileBytes(other)), qPrintable(other));
        }
        QVERIFY(!RecipeMlFormat::Recognizes("<?xml version=\"1.0\"?>\n<!-- <recipeml> -->"));
    }

    // The same recipe twice: two groups, then an ingredient with two alternatives.
    void readsTheKrecipesFile() {
        const FileRead read = Read(FileBytes(Krecipes + "recipemltest.txt"));
        QCOMPARE(read.recipes.size(), 2);
        QCOMPARE(read.notes.notRecipes, 0);
        QCOMPARE(read.notes.problems, QStringList());
        for (const Recipe& recipe : read.recipes) {
            QCOMPARE(recipe.title, QStringLiteral("Cookies_Test"));
            QCOMPARE(recipe.source, QStringLiteral("Colleen Beamer; Mona Beamer"));
            QCOMPARE(recipe.yield, QStringLiteral("2-3 dozen"));
            QCOMPARE(recipe.categories, (QStringList{"Snacks", "Cookies & Squares"}));
            QCOMPARE(SectionTitles(recipe), (QStringList{"Dry Ingredients", "Fat & Liquids", ""}));
            QCOMPARE(Fields(recipe.sections[0]),
                     (QStringList{"0.75-1|c.|granulated sugar|", "1|c.|brown sugar|",
                                  "2|c.|all-purpose flour|", "1|tsp.|baking soda|"}));
            QCOMPARE(Fields(recipe.sections[1]),
                     (QStringList{"1|c.|shortening|softened,at room temperature",
                                  "1|c.|peanut butter|", "2||eggs|", "1|tsp.|vanilla extract|"}));
            QCOMPARE(Fields(recipe.sections[2]),
                     (QStringList{"1|cup|a|or", "2|cups|b|or", "3|cups|c|"}));
            QCOMPARE(recipe.sections[1].lines[0].original,
                     QStringLiteral("1 c. shortening, softened,at room temperature"));
            QCOMPARE(recipe.sections[1].lines[2].original, QStringLiteral("2 eggs"));
            QCOMPARE(recipe.sections[2].lines[0].original, QStringLiteral("1 cup a, or"));
            QCOMPARE(recipe.sections[2].lines[2].original, QStringLiteral("3 cups c"));
            QCOMPARE(recipe.sections[0].steps, QStringList());
            QCOMPARE(recipe.sections[1].steps, QStringList());
            QCOMPARE(
                recipe.sections[2].steps,
                QStringList{"Drop by spoonful on greased cookie sheet.  Bake in moderate oven."});
        }
        const Quantity sugar = Quantity::Read(read.recipes[0].sections[0].lines[0].amountText);
        QCOMPARE(sugar.value, QStringLiteral("0.75"));
        QCOMPARE(sugar.rangeTo, QStringLiteral("1"));
    }

    void readsTheRecipesOfAMenu() {
        const FileRead read = Read(MenuXml);
        QCOMPARE(read.recipes.size(), 2);
        const Recipe& crepes = read.recipes[0];
        QCOMPARE(crepes.title, QStringLiteral("Crépes with jam"));
        QCOMPARE(crepes.source, QStringLiteral("Babica Ana"));
        QCOMPARE(crepes.yield, QStringLiteral("4 servings"));
        QCOMPARE(crepes.categories, QStringList());
        // The empty group is dropped; the method's group "Serving" is a section of its own.
        QCOMPARE(SectionTitles(crepes), (QStringList{"", "Filling", "Serving"}));
        QCOMPARE(Fields(crepes.sections[0]), (QStringList{"3/4-1|cup|flour|", "2||eggs|beaten"}));
        QCOMPARE(Fields(crepes.sections[1]), QStringList{"||apricot jam|"});
        QCOMPARE(crepes.sections[0].steps, QStringList());
        QCOMPARE(crepes.sections[1].steps,
                 (QStringList{"Mix well. Rest.", "Fry thin.", "Spread the jam."}));
        QCOMPARE(crepes.sections[2].lines.size(), 0);
        QCOMPARE(crepes.sections[2].steps, (QStringList{"Roll up.", "Dust with sugar."}));
        const Quantity flour = Quantity::Read(crepes.sections[0].lines[0].amountText);
        QCOMPARE(flour.value, QStringLiteral("0.75"));
        QCOMPARE(flour.rangeTo, QStringLiteral("1"));
        const Recipe& tea = read.recipes[1];
        QCOMPARE(tea.title, QStringLiteral("Tea"));
        QCOMPARE(tea.yield, QStringLiteral("1 serving"));
        QCOMPARE(SectionTitles(tea), QStringList{""});
        QCOMPARE(Fields(tea.sections[0]), QStringList{"1|tsp|tea|"});
        QCOMPARE(tea.sections[0].steps, (QStringList{"Brew 3 minutes.", "Serve."}));
        // The recipe without a title.
        QCOMPARE(read.notes.notRecipes, 1);
        QCOMPARE(read.notes.problems, QStringList{"vrstica 26: recept brez naslova"});
    }

    // Every length of the file cut short: the recipes before the cut, the rest named.
    void readsAFileCutShort() {
        const QByteArray whole = FileBytes(Krecipes + "recipemltest.txt");
        QCOMPARE(FirstBadCut(whole, "</recipe>", "</recipeml>", 11, Read), QString());
        // Cut on the line of the second ingredient, in the blanks before its <item>.
        const QByteArray half = whole.left(whole.indexOf("<item>brown sugar"));
        QCOMPARE(Read(half).notes.problems,
                 QStringList{"vrstica 48: datoteka se konča sredi zapisa XML"});
    }

    void readsDamagedFiles() {
        const FileRead read = Read(RandomBytes(20261122, 65536));
        QCOMPARE(read.recipes.size(), 0);
        QCOMPARE(read.notes.notRecipes, 1);
        QCOMPARE(read.notes.problems, QStringList{"vrstica 1: zapis XML tu ni pravilen"});
        // A damaged recipe after a whole one.
        const FileRead damaged = Read(
            "<recipeml>\n<recipe><head><title>One</title></head></recipe>\n"
            "<recipe><head><title>Two</title></head>\n<ingredients><ing><item>x</ing>\n"
            "</recipe></recipeml>");
        QCOMPARE(damaged.recipes.size(), 1);
        QCOMPARE(damaged.recipes.first().title, QStringLiteral("One"));
        QCOMPARE(damaged.notes.notRecipes, 1);
        QCOMPARE(damaged.notes.problems, QStringList{"vrstica 4: zapis XML tu ni pravilen"});
        // Deep nesting is skipped, not followed.
        QByteArray deep = "<recipeml><recipe><head><title>Deep</title></head><directions>";
        deep += QByteArray("<step>").repeated(100000) + "Stir." +
                QByteArray("</step>").repeated(100000) + "</directions></recipe></recipeml>";
        const FileRead nested = Read(deep);
        QCOMPARE(nested.recipes.size(), 1);
        QCOMPARE(nested.recipes.first().sections.first().steps, QStringList{"Stir."});
        // An entity no one declares in a file without a DTD.
        const FileRead entity = Read(
            "<recipeml><recipe><head><title>Cr&eacute;pes &amp; jam</title></head></recipe>\n"
            "<recipe><head><title>&AMP;</title></head></recipe></recipeml>");
        QCOMPARE(entity.recipes.size(), 1);
        QCOMPARE(entity.recipes.first().title, QStringLiteral("Crépes & jam"));
        QCOMPARE(entity.notes.problems, QStringList{"vrstica 2: zapis XML tu ni pravilen"});
        // Another XML format.
        const FileRead other = Read(FileBytes(Krecipes + "mx2test.txt"));
        QCOMPARE(other.recipes.size(), 0);
        QCOMPARE(other.notes.notRecipes, 1);
        QCOMPARE(other.notes.problems, QStringList{"vrstica 4: datoteka ni v zapisu RecipeML"});
    }
};

QTEST_GUILESS_MAIN(TestExchangeRecipeMl)
#include "tst_exchange_recipeml.moc"
