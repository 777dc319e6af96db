// Recipes of other programs' files written into a collection, on both kinds of database: the
// rows each recipe becomes, lookups found without regard to letter case, the report, duplicates,
// dry runs, files that cannot be read, and a recipe that fails half-way.
#include <QDir>
#include <QFile>
#include <QTest>

#include "core/Windows1250.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "display/modDisplay.h"
#include "exchange/CollectionImport.h"
#include "exchange/RecipeImport.h"
#include "support/TestDatabase.h"
#include "support/ToolRun.h"

using Exchange::ImportOptions;
using Exchange::ImportReport;
using TestDatabase::Rows;
using ToolRun::FileBytes;

namespace {

// A MealMaster file of two recipes: one of two parts with a range, a line without an amount,
// fractions written three ways and a source; one with a single part.
const char* const Palacinke =
    "MMMMM----- Recipe via Meal-Master (tm) v8.02\r\n"
    "\r\n"
    "      Title: Palačinke  \r\n"
    " Categories: Sladice\r\n"
    "   Servings: 4\r\n"
    "\r\n"
    "MMMMM-----------------------------TESTO-------------------------------\r\n"
    "  1 1/2 c  moka\r\n"
    "      2 ea jajci\r\n"
    "    1,5 dl mleko\r\n"
    "    2-3 T  sladkor\r\n"
    "           sol po okusu\r\n"
    "\r\n"
    "  Vse zmešamo v gladko testo.\r\n"
    "\r\n"
    "  Pustimo počivati pol ure.\r\n"
    "\r\n"
    "MMMMM-----------------------------NADEV-------------------------------\r\n"
    "      ½ c  marmelada\r\n"
    "\r\n"
    "  Namažemo in zvijemo.\r\n"
    "\r\n"
    "  From: Mamin zvezek\r\n"
    "\r\n"
    "MMMMM\r\n"
    "\r\n"
    "MMMMM----- Recipe via Meal-Master (tm) v8.02\r\n"
    "\r\n"
    "      Title: Čaj\r\n"
    "\r\n"
    "      1 l  voda\r\n"
    "      2 G  Čokolada\r\n"
    "\r\n"
    "  Zavremo.\r\n"
    "\r\n"
    "MMMMM\r\n";

ImportReport Import(const QStringList& paths, ImportOptions options = {}) {
    if (options.typeID == 0) {
        options.typeID = 3;  // Pecivo
    }
    return Exchange::ImportFiles(*modDatabase::Connection, paths, options);
}

int Count(const QString& table) {
    return Rows(QStringLiteral("SELECT COUNT(*) FROM [%1]").arg(table)).value(0).toInt();
}

QStringList Counts() {
    QStringList counts;
    for (const char* table : {"Group", "Type", "Source", "Unit", "Ingredient", "Recipe", "Section",
                              "RecipeSection", "SectionIngredient"}) {
        counts
            << QStringLiteral("%1 %2").arg(QLatin1String(table)).arg(Count(QLatin1String(table)));
    }
    return counts;
}

// The lines of a recipe as "place|section title|amount|unit|ingredient", in typing order.
QStringList RecipeLines(qint32 recipeID) {
    return Rows(QStringLiteral(
                    "SELECT [RecipeSection].place, [Section].title, [SectionIngredient].amount, "
                    "[Unit].name, [Ingredient].name FROM ((([RecipeSection] INNER JOIN [Section] "
                    "ON [RecipeSection].sectionID = [Section].sectionID) INNER JOIN "
                    "[SectionIngredient] ON [Section].sectionID = [SectionIngredient].sectionID) "
                    "INNER JOIN [Unit] ON [SectionIngredient].unitID = [Unit].unitID) INNER JOIN "
                    "[Ingredient] ON [SectionIngredient].ingredientID = "
                    "[Ingredient].ingredientID WHERE [RecipeSection].recipeID = %1 ORDER BY "
                    "[RecipeSection].place, [SectionIngredient].sectionIngredientID")
                    .arg(recipeID));
}

QString ExpectedReport(const QString& path) {
    return QStringLiteral(
               "Datoteka %1 (MealMaster)\n"
               "  Najdeni recepti: 2, uvoženi: 2, preskočeni: 0\n"
               "  »Palačinke«: razpon količin, vzeta je manjša količina: 2-3 T  sladkor\n"
               "  »Palačinke«: vrstica brez količine, zapisana na začetek postopka: sol po "
               "okusu\n"
               "Skupaj: datoteke 1, neprebrane datoteke 0, uvoženi recepti 2, preskočeni "
               "recepti 0.\n")
        .arg(path);
}

}  // namespace

class TestExchangeImport : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        TestDatabase::IsolateEnvironment();
        modGeneral::TempFilename = TestDatabase::WorkFolder() + QStringLiteral("/prikaz.htm");
    }

    void writesEachRecipeAsItsRows_data() { TestDatabase::AddKinds(); }
    void writesEachRecipeAsItsRows() {
        TestDatabase::OpenFresh(TestDatabase::CurrentKind());
        TestDatabase::LoadSmallCollection();
        const QString path = ToolRun::WriteWork(QStringLiteral("palacinke.mmf"), Palacinke);
        const ImportReport report = Import({path});
        QCOMPARE(report.Text(), ExpectedReport(path));
        QCOMPARE(report.FirstRecipeID(), 4);

        QCOMPARE(Rows("SELECT recipeID, typeID, sourceID, title FROM [Recipe] WHERE recipeID > 3 "
                      "ORDER BY recipeID"),
                 (QStringList{"4|3|3|Palačinke", "5|3|NULL|Čaj"}));
        QCOMPARE(Rows("SELECT sourceID, name, description FROM [Source] WHERE sourceID = 3"),
                 QStringList{"3|Mamin zvezek|NULL"});
        QCOMPARE(Rows("SELECT [RecipeSection].place, [Section].title, [Section].instructions "
                      "FROM [RecipeSection] INNER JOIN [Section] ON [RecipeSection].sectionID = "
                      "[Section].sectionID WHERE recipeID >= 4 ORDER BY recipeID, place"),
                 (QStringList{"1|TESTO|sol po okusu\r\n\r\nVse zmešamo v gladko testo.\r\n"
                              "Pustimo počivati pol ure.",
                              "2|NADEV|Namažemo in zvijemo.", "1|NULL|Zavremo."}));
        QCOMPARE(RecipeLines(4), (QStringList{"1|TESTO|1.5|skodelica|moka", "1|TESTO|2|kos|jajci",
                                              "1|TESTO|1.5|dl|mleko", "1|TESTO|2|žlica|sladkor",
                                              "2|NADEV|0.5|skodelica|marmelada"}));
        // "G" and "Čokolada" are the collection's g and Čokolada; "l" and "voda" are new.
        QCOMPARE(RecipeLines(5), (QStringList{"1|NULL|1|l|voda", "1|NULL|2|g|Čokolada"}));
        QCOMPARE(Rows("SELECT name FROM [Unit] ORDER BY unitID"),
                 (QStringList{"g", "žlica", "skodelica", "kos", "dl", "l"}));
        QCOMPARE(Rows("SELECT name FROM [Ingredient] WHERE ingredientID > 4 ORDER BY "
                      "ingredientID"),
                 (QStringList{"jajci", "mleko", "sladkor", "marmelada", "voda"}));
    }

    // On a file: the page lists lines in the order the database returns them, which a file
    // gives in the order they were written.
    void showsTheImportedRecipeAsAPage() {
        TestDatabase::OpenFresh(TestDatabase::Sqlite);
        TestDatabase::LoadSmallCollection();
        Import({ToolRun::WriteWork(QStringLiteral("palacinke.mmf"), Palacinke)});
        modDisplay::DisplayRecipe(4);
        QFile page(modGeneral::TempFilename);
        QVERIFY(page.open(QIODevice::ReadOnly));
        const QString text = Windows1250::Decode(page.readAll());
        QVERIFY2(text.contains(QStringLiteral(
                     "Recept št. 4<br>Vir: Mamin "
                     "zvezek<h1>Palačinke</h1><h2>TESTO</h2><h3>Sestavine:</h3>"
                     "1,5 skodelica moka<br>2 kos jajci<br>1,5 dl mleko<br>2 žlica sladkor<br>"
                     "<h3>Potek dela:</h3>sol po okusu<br><br>Vse zmešamo v gladko testo.<br>"
                     "Pustimo počivati pol ure.<h2>NADEV</h2><h3>Sestavine:</h3>"
                     "0,5 skodelica marmelada<br><h3>Potek dela:</h3>Namažemo in zvijemo.")),
                 qPrintable(text));
    }

    void skipsARecipeTheCollectionHas_data() { TestDatabase::AddKinds(); }
    void skipsARecipeTheCollectionHas() {
        TestDatabase::OpenFresh(TestDatabase::CurrentKind());
        TestDatabase::LoadSmallCollection();
        const QString path = ToolRun::WriteWork(QStringLiteral("palacinke.mmf"), Palacinke);
        Import({path});
        const QStringList after = Counts();

        const QString again = Import({path}).Text();
        QCOMPARE(Counts(), after);
        QCOMPARE(again,
                 QStringLiteral("Datoteka %1 (MealMaster)\n"
                                "  Najdeni recepti: 2, uvoženi: 0, preskočeni: 2\n"
                                "  Preskočen »Palačinke«: enak recept je že v zbirki\n"
                                "  Preskočen »Čaj«: enak recept je že v zbirki\n"
                                "Skupaj: datoteke 1, neprebrane datoteke 0, uvoženi recepti 0, "
                                "preskočeni recepti 2.\n")
                     .arg(path));

        // The same recipe in other letters is the same recipe; another amount is another one.
        const QString upper =
            ToolRun::WriteWork(QStringLiteral("caj.mmf"),
                               QByteArray(Palacinke)
                                   .mid(QByteArray(Palacinke).indexOf("MMMMM\r\n\r\nMMMMM") + 9)
                                   .replace("Title: Čaj", "Title: ČAJ")
                                   .replace("1 l  voda", "1 L  VODA"));
        QCOMPARE(Import({upper}).Skipped(), 1);
        QCOMPARE(Counts(), after);
        const QString other = ToolRun::WriteWork(
            QStringLiteral("caj2.mmf"), FileBytes(upper).replace("1 L  VODA", "2 L  VODA"));
        QCOMPARE(Import({other}).Imported(), 1);

        ImportOptions allow;
        allow.allowDuplicates = true;
        QCOMPARE(Import({path}, allow).Imported(), 2);
        QCOMPARE(Count(QStringLiteral("Recipe")), 8);
    }

    void aDryRunWritesNothing_data() { TestDatabase::AddKinds(); }
    void aDryRunWritesNothing() {
        TestDatabase::OpenFresh(TestDatabase::CurrentKind());
        TestDatabase::LoadSmallCollection();
        const QStringList before = Counts();
        const QString path = ToolRun::WriteWork(QStringLiteral("palacinke.mmf"), Palacinke);
        ImportOptions dry;
        dry.dryRun = true;
        const ImportReport report = Import({path, path}, dry);
        QCOMPARE(Counts(), before);
        QCOMPARE(report.Imported(), 2);
        QCOMPARE(report.Skipped(), 2);  // the second file repeats the first
        QVERIFY(report.Text().endsWith(
            QStringLiteral("Poskusni uvoz: v zbirko ni bilo nič zapisano.\n")));
        QCOMPARE(report.FirstRecipeID(), 0);
    }

    void namesFilesItCannotReadAndGoesOn_data() { TestDatabase::AddKinds(); }
    void namesFilesItCannotReadAndGoesOn() {
        TestDatabase::OpenFresh(TestDatabase::CurrentKind());
        TestDatabase::LoadSmallCollection();
        const QString missing = TestDatabase::WorkFolder() + QStringLiteral("/ni.mmf");
        const QString empty = ToolRun::WriteWork(QStringLiteral("prazna.txt"), QByteArray());
        const QString binary = ToolRun::WriteWork(QStringLiteral("slika.png"),
                                                  QByteArray("\x89PNG\r\n\x1a\n\0\0", 10));
        const QString good = ToolRun::WriteWork(QStringLiteral("palacinke.mmf"), Palacinke);
        const ImportReport report = Import({missing, empty, binary, good});
        QCOMPARE(report.Imported(), 2);
        QCOMPARE(report.Unread(), 3);
        const QStringList lines = report.Text().split(QLatin1Char('\n'));
        QCOMPARE(lines.mid(0, 6),
                 (QStringList{
                     QStringLiteral("Datoteka %1").arg(missing),
                     QStringLiteral("  Ni prebrana: Datoteke ni mogoče odpreti: No such file or "
                                    "directory"),
                     QStringLiteral("Datoteka %1").arg(empty),
                     QStringLiteral("  Ni prebrana: Datoteka je prazna."),
                     QStringLiteral("Datoteka %1").arg(binary),
                     QStringLiteral("  Ni prebrana: Datoteka ni v nobeni od oblik, ki jih program "
                                    "pozna (MealMaster, MasterCook, RecipeML, Cooklang, spletna "
                                    "stran ali JSON z recepti schema.org).")}));
    }

    void aRecipeThatFailsHalfWayLeavesNothing_data() { TestDatabase::AddKinds(); }
    void aRecipeThatFailsHalfWayLeavesNothing() {
        const QString kind = TestDatabase::CurrentKind();
        TestDatabase::OpenFresh(kind);
        TestDatabase::LoadSmallCollection();
        // The database refuses the line of the amount 666, which the second part of the
        // second recipe holds: its recipe row, first part and new lookups are written by then.
        if (kind == TestDatabase::Sqlite) {
            TestDatabase::Exec(
                "CREATE TRIGGER refuse BEFORE INSERT ON [SectionIngredient] WHEN NEW.amount = 666 "
                "BEGIN SELECT RAISE(ABORT, 'refused'); END");
        } else {
            TestDatabase::Exec(
                "CREATE FUNCTION refuse() RETURNS trigger LANGUAGE plpgsql AS $$ BEGIN IF "
                "NEW.amount = 666 THEN RAISE EXCEPTION 'refused'; END IF; RETURN NEW; END $$");
            TestDatabase::Exec(
                "CREATE TRIGGER refuse BEFORE INSERT ON [SectionIngredient] FOR "
                "EACH ROW EXECUTE FUNCTION refuse()");
        }
        const QString path =
            ToolRun::WriteWork(QStringLiteral("palacinke.mmf"),
                               QByteArray(Palacinke)
                                   .replace("Title: Čaj", "Title: Najprej")
                                   .replace("      ½ c  marmelada", "    666 pn novost"));
        // Čaj first, so that one recipe is whole before the failing one.
        const QByteArray bytes = FileBytes(path);
        const qsizetype second = bytes.indexOf("MMMMM\r\n\r\nMMMMM") + 9;
        ToolRun::WriteWork(QStringLiteral("palacinke.mmf"),
                           bytes.mid(second) + "\r\n" + bytes.left(second));
        const QStringList units = Rows("SELECT name FROM [Unit] ORDER BY unitID");

        const ImportReport report = Import({path});
        QCOMPARE(report.Imported(), 1);
        QVERIFY2(report.stopped.contains(QStringLiteral("refused")), qPrintable(report.stopped));
        QCOMPARE(Rows("SELECT title FROM [Recipe] WHERE recipeID > 3"), QStringList{"Najprej"});
        QCOMPARE(Count(QStringLiteral("Section")), 5);
        QCOMPARE(Rows("SELECT name FROM [Ingredient] WHERE name = 'moka' OR name = 'novost'"),
                 QStringList{"moka"});
        QCOMPARE(Rows("SELECT name FROM [Unit] ORDER BY unitID"), units + QStringList{"l"});
        QCOMPARE(Count(QStringLiteral("Source")), 2);
    }

    void findsOrAddsTheSubgroupByNames_data() { TestDatabase::AddKinds(); }
    void findsOrAddsTheSubgroupByNames() {
        TestDatabase::OpenFresh(TestDatabase::CurrentKind());
        TestDatabase::LoadSmallCollection();
        modDatabase::DbConnection& connection = *modDatabase::Connection;
        QCOMPARE(Exchange::TypeByNames(connection, "JUHE", "zelenjavne Juhe"), 2);
        QCOMPARE(Exchange::TypeByNames(connection, "Sladice", "Mesne juhe"), 4);
        QCOMPARE(Exchange::TypeByNames(connection, "Uvoženo", "Splet"), 5);
        QCOMPARE(Exchange::TypeByNames(connection, "uvoŽENO", "SPLET"), 5);
        QCOMPARE(Rows("SELECT typeID, groupID, name FROM [Type] WHERE typeID > 3 ORDER BY typeID"),
                 (QStringList{"4|2|Mesne juhe", "5|3|Splet"}));
        QCOMPARE(Rows("SELECT groupID, name FROM [Group] WHERE groupID > 2"),
                 QStringList{"3|Uvoženo"});
        QCOMPARE(Exchange::ExistingType(connection, 3), 3);
        QCOMPARE(Exchange::ExistingType(connection, 99), 0);
    }
};

QTEST_MAIN(TestExchangeImport)
#include "tst_exchange_import.moc"
