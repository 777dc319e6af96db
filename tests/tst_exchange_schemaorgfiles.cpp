// Saved recipe pages and schema.org JSON files of real sites, read into the exchange model and
// held against what the tests of the programs they come from expect.
#include <QTest>

#include "tests/support/SchemaOrgRead.h"

using namespace SchemaOrgRead;

namespace {

QString HhursevFolder() { return QStringLiteral("hhursev-recipe-scrapers/tests/test_data/"); }

// The upstream's expected extraction beside a saved page (page.testhtml, page.json).
QJsonObject Expected(const QString& page) {
    return QJsonDocument::fromJson(
               FileBytes(DataPath(HhursevFolder() + page + QStringLiteral(".json"))))
        .object();
}

// The texts of a list, with runs of blanks (a no-break space too) made one space, as the
// reader gives them.
QStringList Texts(const QJsonValue& list) {
    QStringList texts;
    for (const QJsonValue text : list.toArray()) {
        texts.append(text.toString().simplified());
    }
    return texts;
}

int StepCount(const Recipe& recipe) { return static_cast<int>(AllSteps(recipe).size()); }

}  // namespace

class TestExchangeSchemaOrgFiles : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // Saved pages whose upstream tests give the title, the ingredient lines, the steps and the
    // author. Where this reader differs on purpose, the row says so: it reads only the page's
    // schema.org data, where the upstream reads some sites' own markup too (ingredient groups,
    // steps the site leaves out of its data), and a heading of the method is a section title,
    // not a step.
    void savedPages_data() {
        QTest::addColumn<QString>("page");
        QTest::addColumn<QStringList>("sections");
        QTest::addColumn<int>("steps");
        QTest::addColumn<bool>("sameLines");
        QTest::addColumn<QString>("yield");
        QTest::addColumn<QStringList>("categories");
        const QString none;
        const QStringList untitled{QString()};
        QTest::newRow("akispetretzikis") << "akispetretzikis.com/akispetretzikis" << untitled << 9
                                         << true << "8-10" << QStringList();
        QTest::newRow("atelierdeschefs: two parts of the method, broken JSON")
            << "atelierdeschefs.fr/atelierdeschefs"
            << QStringList{QStringLiteral("Pour la pâte à crêpes"),
                           QStringLiteral("Pour la garniture")}
            << 19 << true << none << QStringList();
        QTest::newRow("bettybossi") << "bettybossi.ch/bettybossi" << untitled << 4 << true
                                    << "12 personnes" << QStringList{QStringLiteral("Dessert")};
        QTest::newRow("chefkoch: one part of the method")
            << "chefkoch.de/chefkoch" << QStringList{QStringLiteral("Zubereitung")} << 6 << true
            << "4" << QStringList();
        QTest::newRow("cuisineaz: @graph") << "cuisineaz.com/cuisineaz" << untitled << 6 << true
                                           << "4" << QStringList{QStringLiteral("Viandes")};
        QTest::newRow("kuchniadomowa: microdata, with a note in the method")
            << "kuchnia-domowa.pl/kuchniadomowa" << untitled << 7 << true << "ok. 4- 5"
            << QStringList{QStringLiteral("Dodatki do dań")};
        QTest::newRow("madamecuisine: @graph, author by @id, groups only in the site's markup")
            << "madamecuisine.de/madamecuisine_1"
            << QStringList{QString(), QStringLiteral("Für die Gremolata")} << 12 << false
            << "4 Personen"
            << QStringList{QStringLiteral("Eintopf"), QStringLiteral("Gemüse"),
                           QStringLiteral("Hauptgericht")};
        QTest::newRow("receptiindex_1: the site's data has 4 of its 7 steps")
            << "recepti.index.hr/receptiindex_1" << untitled << 4 << true << "4"
            << QStringList{QStringLiteral("Kruh i peciva"), QStringLiteral("Jeftini recepti"),
                           QStringLiteral("Bosanska kuhinja"), QStringLiteral("Turska kuhinja")};
        QTest::newRow("receptiindex_2: groups only in the site's markup, 4 of 6 steps")
            << "recepti.index.hr/receptiindex_2" << untitled << 4 << true << "2"
            << QStringList{QStringLiteral("Salate"), QStringLiteral("Najljepše za Instagram"),
                           QStringLiteral("Gubitak kilograma"), QStringLiteral("Vege")};
        QTest::newRow("receptyprevas: categories in one text, groups only in the site's markup")
            << "receptyprevas.sk/receptyprevas" << untitled << 5 << true << "4"
            << QStringList{QStringLiteral("Bezmäsitá strava"), QStringLiteral("Detské recepty"),
                           QStringLiteral("Hlavné jedlá"), QStringLiteral("Klasické jedlá"),
                           QStringLiteral("Múčne jedlá")};
        QTest::newRow("sobors: entities, QuantitativeValue")
            << "sobors.hu/sobors" << untitled << 9 << true << "6 személyre" << QStringList();
        QTest::newRow("theglutenfreeaustrian: the method as one text")
            << "theglutenfreeaustrian.com/theglutenfreeaustrian_1" << untitled << 7 << true << "250"
            << QStringList{QStringLiteral("Gluten Free Bread")};
        QTest::newRow("valdemarsro: microdata beside a @graph without recipe")
            << "valdemarsro.dk/valdemarsro" << untitled << 2 << true << "10"
            << QStringList{QStringLiteral("Bålmad")};
    }

    void savedPages() {
        QFETCH(QString, page);
        QFETCH(QStringList, sections);
        QFETCH(int, steps);
        QFETCH(bool, sameLines);
        QFETCH(QString, yield);
        QFETCH(QStringList, categories);
        const QByteArray data =
            FileBytes(DataPath(HhursevFolder() + page + QStringLiteral(".testhtml")));
        QVERIFY(Exchange::SchemaOrgFormat::Recognises(data));
        FileNotes notes;
        const QList<Recipe> recipes = ReadAll(data, notes);
        QCOMPARE(recipes.size(), 1);
        QCOMPARE(notes.notRecipes, 0);
        QCOMPARE(notes.problems, QStringList());
        const Recipe& recipe = recipes.first();
        const QJsonObject expected = Expected(page);
        QCOMPARE(recipe.title, expected.value(QLatin1String("title")).toString());
        QCOMPARE(recipe.source, expected.value(QLatin1String("author")).toString());
        QCOMPARE(recipe.yield, yield);
        QCOMPARE(recipe.categories, categories);
        QCOMPARE(Titles(recipe), sections);
        const QStringList expectedLines = Texts(expected.value(QLatin1String("ingredients")));
        QCOMPARE(AllLines(recipe).size(), expectedLines.size());
        if (sameLines) {
            QCOMPARE(AllLines(recipe), expectedLines);
        }
        const QStringList expectedSteps = Texts(expected.value(QLatin1String("instructions_list")));
        QCOMPARE(StepCount(recipe), steps);
        if (steps == expectedSteps.size()) {
            QCOMPARE(AllSteps(recipe), expectedSteps);
        }
    }

    // The upstream reads the site's own markup, which keeps what the recipe's data writes in
    // parentheses without them and has two groups; the data has one list.
    void madamecuisineLines() {
        const Recipe recipe = ReadOne(FileBytes(DataPath(
            HhursevFolder() + QStringLiteral("madamecuisine.de/madamecuisine_1.testhtml"))));
        QCOMPARE(recipe.sections[0].lines.size(), 21);
        QCOMPARE(recipe.sections[0].lines[2].original,
                 QStringLiteral("3 Stangen Sellerie (+ das Grün für die Gremolata)"));
        QCOMPARE(recipe.sections[1].lines.size(), 0);
        QCOMPARE(recipe.sections[1].steps.size(), 4);
    }

    void pagesWithoutRecipe_data() {
        QTest::addColumn<QString>("file");
        QTest::newRow("kochbucher: no schema.org data")
            << HhursevFolder() + QStringLiteral("kochbucher.com/kochbucher.testhtml");
        QTest::newRow("mealie's own page")
            << QStringLiteral("mealie-recipes-mealie/tests/data/html/mealie-recipe.html");
        QTest::newRow("a hand-written page")
            << QStringLiteral("thinkle-gourmet/gourmet/tests/recipe_files/sample_site.html");
    }

    void pagesWithoutRecipe() {
        QFETCH(QString, file);
        const QByteArray data = FileBytes(DataPath(file));
        QVERIFY(Exchange::SchemaOrgFormat::Recognises(data));
        FileNotes notes;
        QCOMPARE(ReadAll(data, notes).size(), 0);
        QCOMPARE(notes.notRecipes, 1);
        QCOMPARE(notes.problems,
                 QStringList{QStringLiteral("stran nima podatkov o receptu (schema.org Recipe ne "
                                            "v JSON-LD ne v mikropodatkih)")});
    }

    // A page of a blog: four JSON-LD blocks and a graph, none of them a recipe.
    void blocksWithoutRecipe() {
        const QByteArray page =
            "<html><head><title>Korenje</title>"
            "<script type=\"application/ld+json\">{\"@context\":\"https://schema.org\","
            "\"@type\":\"Organization\",\"name\":\"Blog\"}</script>"
            "<script type=\"application/ld+json\">{\"@type\":\"WebSite\",\"url\":\"https://"
            "example.org/\"}</script>"
            "<script type=\"application/ld+json\">[{\"@type\":\"BreadcrumbList\"}]</script>"
            "<script type=\"application/ld+json\">{\"@graph\":[{\"@type\":[\"Article\","
            "\"BlogPosting\"],\"headline\":\"Korenje\"}]}</script>"
            "</head><body><h1>Korenje z rižem</h1><p>200 g korenja</p></body></html>";
        QVERIFY(Exchange::SchemaOrgFormat::Recognises(page));
        FileNotes notes;
        QCOMPARE(ReadAll(page, notes).size(), 0);
        QCOMPARE(notes.notRecipes, 1);
        QCOMPARE(notes.problems,
                 QStringList{QStringLiteral("stran nima podatkov o receptu (schema.org Recipe ne "
                                            "v JSON-LD ne v mikropodatkih)")});
    }

    // Pages and JSON files with the counts that their upstream tests give (the shrimp page's
    // one step is not in its data; the pasta page's upstream reads only its OpenGraph tags).
    void otherFiles_data() {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("title");
        QTest::addColumn<int>("lines");
        QTest::addColumn<QStringList>("sections");
        QTest::addColumn<int>("steps");
        QTest::addColumn<QString>("source");
        QTest::addColumn<QString>("yield");
        const QString html = QStringLiteral("mealie-recipes-mealie/tests/data/html/");
        const QString json = QStringLiteral("mealie-recipes-mealie/tests/data/json/");
        const QStringList untitled{QString()};
        QTest::newRow("taiwanese")
            << html + QStringLiteral("taiwanese-three-cup-chicken-san-bei-gi-recipe.html")
            << "Taiwanese Three Cup Chicken (San Bei Ji) Recipe" << 10 << untitled << 3
            << "Cathy Erway"
            << "6";
        QTest::newRow("schinken: microdata, a HowToSection")
            << html + QStringLiteral("schinken-kase-waffeln-ohne-viel-schnickschnack.html")
            << "Schinken-Käse Waffeln ohne viel Schnickschnack" << 7
            << QStringList{QStringLiteral("Waffelteig")} << 1 << "THERMOMIX ® REZEPT"
            << "12";
        QTest::newRow("beef ribs: microdata, old ingredients")
            << html + QStringLiteral("sous-vide-smoked-beef-ribs.html")
            << "Sous-vide Smoked Beef Ribs" << 7 << untitled << 12 << "jason williams"
            << "4 servings";
        QTest::newRow("shrimp: no method in the data")
            << html + QStringLiteral("sous-vide-shrimp.html") << "Sous Vide Shrimp" << 5 << untitled
            << 0 << "J. Kenji López-Alt"
            << "Ingredients for 4";
        QTest::newRow("pasta bake")
            << html + QStringLiteral("healthy-pasta-bake-60759.html") << "Healthy pasta bake" << 13
            << untitled << 4 << "Justine Pattison"
            << "Serves 4";
        QTest::newRow("salsa") << json + QStringLiteral("best-homemade-salsa-recipe.json")
                               << "The Best Homemade Salsa Recipe" << 11 << untitled << 2
                               << "Sommer Collier"
                               << "20 (5 cups)";
        QTest::newRow("meatballs: a heading among the ingredients")
            << json +
                   QStringLiteral(
                       "blue-cheese-stuffed-turkey-meatballs-with-raspberry-balsamic-glaze-2.json")
            << "Blue Cheese Stuffed Turkey Meatballs with Raspberry Balsamic Glaze" << 12
            << QStringList{QString(), QStringLiteral("Dipping Sauce")} << 3
            << "Nicole-Cooking for Keeps"
            << "Makes 18-22 meatballs depending on size";
        QTest::newRow("apple cake: the method as one text")
            << json + QStringLiteral("chunky-apple-cake.json") << "Chunky Apple Cake" << 12
            << untitled << 4 << "Delia Smith"
            << "";
        QTest::newRow("spaghetti")
            << json + QStringLiteral("how-to-make-instant-pot-spaghetti.json")
            << "How to Make Instant Pot Spaghetti" << 12 << untitled << 8 << "Karlynn Johnston"
            << "4";
        QTest::newRow("chicken") << json + QStringLiteral("instant-pot-chicken-and-potatoes.json")
                                 << "Instant Pot Chicken and Potatoes" << 12 << untitled << 4
                                 << "Tiffany"
                                 << "4 people";
        QTest::newRow("dip") << json + QStringLiteral("jalapeno-popper-dip.json")
                             << "Jalapeño Popper Dip" << 10 << untitled << 4 << "Michelle"
                             << "10 to 12 servings";
        QTest::newRow("sweet potatoes")
            << json + QStringLiteral("microwave-sweet-potatoes-04783.json")
            << "Microwave jacket sweet potato" << 19 << untitled << 4 << "Justine Pattison"
            << "Serves 2";
        QTest::newRow("pizza") << json + QStringLiteral(
                                             "pizza-knoblauch-champignon-paprika-vegan-html.json")
                               << "Pizza Knoblauch Champignon Paprika - vegan" << 13 << untitled
                               << 3 << "healing21"
                               << "2 Portion(en)";
        QTest::newRow("nytimes") << QStringLiteral(
                                        "thinkle-gourmet/gourmet/tests/recipe_files/nytimes.html")
                                 << "Egg Curry" << 14 << untitled << 3 << "Tejal Rao"
                                 << "4 servings";
    }

    void otherFiles() {
        QFETCH(QString, file);
        QFETCH(QString, title);
        QFETCH(int, lines);
        QFETCH(QStringList, sections);
        QFETCH(int, steps);
        QFETCH(QString, source);
        QFETCH(QString, yield);
        const QByteArray data = FileBytes(DataPath(file));
        QVERIFY(Exchange::SchemaOrgFormat::Recognises(data));
        FileNotes notes;
        const QList<Recipe> recipes = ReadAll(data, notes);
        QCOMPARE(recipes.size(), 1);
        QCOMPARE(notes.notRecipes, 0);
        QCOMPARE(notes.problems, QStringList());
        QCOMPARE(recipes[0].title, title);
        QCOMPARE(AllLines(recipes[0]).size(), lines);
        QCOMPARE(Titles(recipes[0]), sections);
        QCOMPARE(StepCount(recipes[0]), steps);
        QCOMPARE(recipes[0].source, source);
        QCOMPARE(recipes[0].yield, yield);
    }
};

QTEST_GUILESS_MAIN(TestExchangeSchemaOrgFiles)
#include "tst_exchange_schemaorgfiles.moc"
