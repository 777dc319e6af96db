// morvena-tool: help, argument errors, creating databases, pages, generated collections.
#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTest>

#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "display/modDisplay.h"
#include "tests/support/TestDatabase.h"
#include "tests/support/ToolRun.h"

using ToolRun::FileBytes;
using ToolRun::Result;
using ToolRun::Tool;
using ToolRun::Work;

namespace {

QStringList Server() {
    return {QStringLiteral("--server"),   TestDatabase::PostgresServer(),
            QStringLiteral("--user"),     TestDatabase::PostgresUser(),
            QStringLiteral("--password"), TestDatabase::PostgresPassword()};
}

}  // namespace

class TestTool : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        TestDatabase::IsolateEnvironment();
        QVERIFY(QFile::exists(qEnvironmentVariable("MORVENA_TOOL")));
    }
    void cleanup() { modDatabase::Connection.reset(); }

    void helpIsSlovenian() {
        const Result result = Tool({QStringLiteral("--help")});
        QCOMPARE(result.exitCode, 0);
        QVERIFY(result.out.startsWith(QStringLiteral("Uporaba: morvena-tool UKAZ [MOŽNOSTI]\n")));
        for (const char* command : {"create-db", "page R|T|G", "generate", "--recipes N"}) {
            QVERIFY2(result.out.contains(QString::fromUtf8(command)), command);
        }
    }

    void badArgumentsGiveOneLineAndExitCodeTwo_data() {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("message");
        QTest::newRow("no command") << QStringList() << "Manjka ukaz. (morvena-tool --help)\n";
        QTest::newRow("unknown command")
            << QStringList{"izbriši"} << "Neznan ukaz: izbriši (morvena-tool --help)\n";
        QTest::newRow("unknown option") << QStringList{"create-db", "--force", "a.db"}
                                        << "Neznana možnost: --force (morvena-tool --help)\n";
        QTest::newRow("create-db without file")
            << QStringList{"create-db"}
            << "create-db potrebuje datoteko ali --server in --database. (morvena-tool --help)\n";
        QTest::newRow("page with bad kind")
            << QStringList{"page", "X", "1"}
            << "page potrebuje vrsto R, T ali G in številko zapisa. (morvena-tool --help)\n";
        QTest::newRow("page with bad number")
            << QStringList{"page", "R", "ena"}
            << "page potrebuje vrsto R, T ali G in številko zapisa. (morvena-tool --help)\n";
        QTest::newRow("generate without count")
            << QStringList{"generate", "x.db"}
            << "generate potrebuje --recipes N (celo število, 0 ali več). (morvena-tool --help)\n";
        QTest::newRow("option without value") << QStringList{"page", "R", "1", "--output"}
                                              << "Možnost --output potrebuje vrednost. "
                                                 "(morvena-tool --help)\n";
    }
    void badArgumentsGiveOneLineAndExitCodeTwo() {
        QFETCH(QStringList, arguments);
        QFETCH(QString, message);
        const Result result = Tool(arguments);
        QCOMPARE(result.exitCode, 2);
        QCOMPARE(result.err, message);
        QCOMPARE(result.out, QString());
    }

    void databaseThatCannotBeOpenedGivesItsMessageAndExitCodeOne() {
        const Result missing =
            Tool({"page", "R", "1", "--database", Work("ni.db"), "--output", Work("p.html")});
        QCOMPARE(missing.exitCode, 1);
        QCOMPARE(missing.err, QStringLiteral("Datoteka %1 ne obstaja.\n").arg(Work("ni.db")));
        QVERIFY(!QFile::exists(Work("ni.db")));
        QVERIFY(!QFile::exists(Work("p.html")));
        QVERIFY(QFile::copy(QFINDTESTDATA("tst_tool.cpp"), Work("text.db")));
        const Result foreign = Tool({"page", "G", "1", "--database", Work("text.db")});
        QCOMPARE(foreign.exitCode, 1);
        QCOMPARE(foreign.err,
                 QStringLiteral("%1 ni zbirka podatkov programa Morvena.\n").arg(Work("text.db")));
    }

    void createDbMakesAnEmptyDatabaseAndRefusesAnExistingFile() {
        QCOMPARE(Tool({"create-db", Work("empty.db")}).exitCode, 0);
        TestDatabase::UseSettingsFor(TestDatabase::Sqlite, Work("empty.db"));
        modDatabase::OpenConnection();
        QCOMPARE(modDatabase::Connection->State(), int(modDatabase::adStateOpen));
        QCOMPARE(TestDatabase::Rows(QStringLiteral("SELECT COUNT(*) FROM [Recipe];")),
                 QStringList{"0"});
        modDatabase::Connection.reset();
        const QByteArray before = FileBytes(Work("empty.db"));
        const Result again = Tool({"create-db", "--sample", Work("empty.db")});
        QCOMPARE(again.exitCode, 1);
        QCOMPARE(again.err, QStringLiteral("Datoteka %1 že obstaja.\n").arg(Work("empty.db")));
        QCOMPARE(FileBytes(Work("empty.db")), before);
    }

    void sampleCollection_data() { TestDatabase::AddKinds(); }
    void sampleCollection() {
        QFETCH(QString, kind);
        if (kind == TestDatabase::Postgres) {
            TestDatabase::CreatePostgresDatabase(QStringLiteral("tool_sample"));
            QCOMPARE(
                Tool(QStringList{"create-db", "--sample", "--database", "tool_sample"} + Server())
                    .exitCode,
                0);
            TestDatabase::UseSettingsFor(kind, QStringLiteral("tool_sample"));
        } else {
            QCOMPARE(Tool({"create-db", "--sample", Work("sample.db")}).exitCode, 0);
            TestDatabase::UseSettingsFor(kind, Work("sample.db"));
        }
        modDatabase::OpenConnection();
        using TestDatabase::Rows;
        QVERIFY(Rows("SELECT recipeID FROM [Recipe];").size() >= 40);
        QVERIFY(Rows("SELECT groupID FROM [Group];").size() >= 5);
        QVERIFY(Rows("SELECT typeID FROM [Type];").size() >= 12);
        QVERIFY(Rows("SELECT recipeID FROM [RecipeSection] GROUP BY recipeID HAVING COUNT(*) > 1;")
                    .size() >= 8);
        QVERIFY(!Rows("SELECT recipeID FROM [Recipe] WHERE sourceID IS NULL;").isEmpty());
        QVERIFY(!Rows("SELECT recipeID FROM [Recipe] WHERE sourceID IS NOT NULL;").isEmpty());
        QVERIFY(Rows("SELECT unitID FROM [Unit];").size() >= 8);
        QVERIFY(Rows("SELECT ingredientID FROM [Ingredient];").size() >= 40);
        QVERIFY(Rows("SELECT description FROM [Group];").join(QString()).contains("\r\n"));
        const QString all = Rows("SELECT title FROM [Recipe];").join(QLatin1Char(' ')) +
                            Rows("SELECT name FROM [Ingredient];").join(QLatin1Char(' '));
        for (const QChar letter : QStringLiteral("čšž")) {
            QVERIFY(all.contains(letter));
        }
    }

    void pageWritesTheBytesOfTheDisplayFile() {
        QCOMPARE(Tool({"create-db", "--sample", Work("pages.db")}).exitCode, 0);
        TestDatabase::UseSettingsFor(TestDatabase::Sqlite, Work("pages.db"));
        modDatabase::OpenConnection();
        for (const QString& kind :
             {QStringLiteral("R"), QStringLiteral("T"), QStringLiteral("G")}) {
            const Result result = Tool(
                {"page", kind, "2", "--database", Work("pages.db"), "--output", Work("tool.html")});
            QCOMPARE(result.exitCode, 0);
            modGeneral::TempFilename = Work("direct.html");
            if (kind == QLatin1String("R")) {
                modDisplay::DisplayRecipe(2);
            } else if (kind == QLatin1String("T")) {
                modDisplay::DisplayType(2);
            } else {
                modDisplay::DisplayGroup(2);
            }
            QCOMPARE(FileBytes(Work("tool.html")), FileBytes(Work("direct.html")));
            QVERIFY(FileBytes(Work("tool.html")).startsWith("<html><head><title>"));
        }
        const Result missing = Tool(
            {"page", "R", "99999", "--database", Work("pages.db"), "--output", Work("x.html")});
        QCOMPARE(missing.exitCode, 1);
        QCOMPARE(missing.err,
                 QStringLiteral("modDisplay:DisplayRecipe->Morvena->No current record.\n"));
        QVERIFY(!QFile::exists(Work("x.html")));
    }

    void pageUsesTheSettingsWhenNoDatabaseIsGiven() {
        QCOMPARE(Tool({"create-db", "--sample", Work("settings.db")}).exitCode, 0);
        const QString store =
            qEnvironmentVariable("MORVENA_CONFIG_DIR") + QStringLiteral("/machine.reg");
        QVERIFY(QDir().mkpath(qEnvironmentVariable("MORVENA_CONFIG_DIR")));
        QFile file(store);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(
            QStringLiteral("Windows Registry Editor Version 5.00\n\n[Software\\Orlessa\\Morvena]\n"
                           "\"DatabaseName\"=\"%1\"\n\"TempFilename\"=\"%2\"\n")
                .arg(Work("settings.db"), Work("fromsettings.html"))
                .toUtf8());
        file.close();
        QCOMPARE(Tool({"page", "G", "1"}).exitCode, 0);
        QVERIFY(FileBytes(Work("fromsettings.html")).endsWith("</body></html>"));
        QFile::remove(store);
    }

    void generateIsDeterministic_data() {
        QTest::addColumn<QStringList>("shape");
        QTest::addColumn<QString>("types");
        QTest::newRow("home cooking") << QStringList() << QStringLiteral("54");
        QTest::newRow("uniform") << QStringList{"--shape", "uniform"} << QStringLiteral("100");
    }
    void generateIsDeterministic() {
        QFETCH(QStringList, shape);
        QFETCH(QString, types);
        QCOMPARE(Tool(QStringList{"generate", Work("g1.db"), "--recipes", "300"} + shape).exitCode,
                 0);
        QCOMPARE(Tool(QStringList{"generate", Work("g2.db"), "--recipes", "300"} + shape).exitCode,
                 0);
        QStringList dumps;
        for (const char* name : {"g1.db", "g2.db"}) {
            TestDatabase::UseSettingsFor(TestDatabase::Sqlite, Work(name));
            modDatabase::OpenConnection();
            using TestDatabase::Rows;
            QCOMPARE(Rows("SELECT COUNT(*) FROM [Recipe];"), QStringList{"300"});
            QCOMPARE(Rows("SELECT COUNT(*) FROM [Type];"), QStringList{types});
            dumps << (Rows("SELECT * FROM [Recipe] ORDER BY recipeID;") +
                      Rows("SELECT * FROM [Section] ORDER BY sectionID;") +
                      Rows("SELECT * FROM [SectionIngredient] ORDER BY sectionIngredientID;"))
                         .join(QLatin1Char('\n'));
            modDatabase::Connection.reset();
        }
        QCOMPARE(dumps[0], dumps[1]);
        QFile::remove(Work("g1.db"));
        QFile::remove(Work("g2.db"));
    }

    void generatedHomeCookingAnswersTheWorkedExample() {
        QCOMPARE(Tool({"generate", Work("home.db"), "--recipes", "2000"}).exitCode, 0);
        // Skupina juhe; Sestavine korenje ali krompir
        const Result found =
            Tool({"search", "--Group", "juhe", "--Ingredient", "korenje", "--Ingredient", "krompir",
                  "--any", "Ingredient", "--database", Work("home.db")});
        QCOMPARE(found.exitCode, 0);
        const QStringList rows = found.out.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        QVERIFY2(rows.size() > 20, qPrintable(found.out));
        for (const QString& row : rows) {
            QCOMPARE(row.section(QLatin1Char('\t'), 2, 2), QStringLiteral("Juhe"));
        }
        // a big subgroup and a small one, the ingredients reused with a long tail
        TestDatabase::UseSettingsFor(TestDatabase::Sqlite, Work("home.db"));
        modDatabase::OpenConnection();
        using TestDatabase::Rows;
        const QStringList perType =
            Rows("SELECT COUNT(*) FROM [Recipe] GROUP BY typeID ORDER BY COUNT(*) DESC;");
        QVERIFY2(perType.first().toInt() >= 100 && perType.last().toInt() < 20,
                 qPrintable(perType.join(QLatin1Char(' '))));
        const QStringList perIngredient = Rows(
            "SELECT COUNT(*) FROM [SectionIngredient] GROUP BY ingredientID ORDER BY COUNT(*) "
            "DESC;");
        QVERIFY2(perIngredient.first().toInt() > 50 * perIngredient.last().toInt(),
                 qPrintable(perIngredient.join(QLatin1Char(' '))));
        modDatabase::Connection.reset();
    }

    void generateKnowsOnlyTheUniformShape() {
        const Result result = Tool({"generate", Work("bad.db"), "--recipes", "5", "--shape", "x"});
        QCOMPARE(result.exitCode, 2);
        QCOMPARE(result.err,
                 QStringLiteral("--shape pozna le vrednost uniform. (morvena-tool --help)\n"));
        QVERIFY(!QFile::exists(Work("bad.db")));
    }

    void generateOnTheServerKeepsKeysAssignable() {
        TestDatabase::CreatePostgresDatabase(QStringLiteral("tool_generated"));
        QCOMPARE(Tool(QStringList{"generate", "--database", "tool_generated", "--recipes", "50"} +
                      Server())
                     .exitCode,
                 0);
        TestDatabase::UseSettingsFor(TestDatabase::Postgres, QStringLiteral("tool_generated"));
        modDatabase::OpenConnection();
        QCOMPARE(TestDatabase::Rows("SELECT COUNT(*) FROM [Recipe];"), QStringList{"50"});
        QCOMPARE(TestDatabase::Insert(QStringLiteral("Recipe"), {{"typeID", 1}, {"title", "Nova"}}),
                 51);
    }
};

QTEST_MAIN(TestTool)
#include "tst_tool.moc"
