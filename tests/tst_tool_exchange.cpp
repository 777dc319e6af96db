// morvena-tool import and export as a user runs them: their arguments, messages and exit codes,
// the report on the standard output, a dry run, and a collection on the server named by a URI.
#include <QDir>
#include <QFile>
#include <QTest>

#include "core/database/modDatabase.h"
#include "tests/support/TestDatabase.h"
#include "tests/support/ToolRun.h"

using ToolRun::FileBytes;
using ToolRun::Result;
using ToolRun::Tool;
using ToolRun::Work;

namespace {

const QString Data = QStringLiteral(MORVENA_TEST_SOURCE_DIR "/data/import/");
const QString Gourmet =
    Data + QStringLiteral("thinkle-gourmet/gourmet/tests/recipe_files/mealmaster.mmf");
const QString Krecipes = Data + QStringLiteral("KDE-krecipes/src/tests/import-export/");

QString Fresh(const QString& name) {
    QFile::remove(Work(name));
    if (Tool({"create-db", Work(name)}).exitCode != 0) {
        qFatal("cannot create %s", qPrintable(name));
    }
    return Work(name);
}

QString Help() { return QStringLiteral(" (morvena-tool --help)\n"); }

}  // namespace

class TestToolExchange : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { TestDatabase::IsolateEnvironment(); }

    void badArgumentsAreNamed_data() {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("message");
        QTest::newRow("no file") << QStringList{"import", "--type", "1"}
                                 << "import potrebuje vsaj eno datoteko.";
        QTest::newRow("no subgroup") << QStringList{"import", "a.mmf"}
                                     << "import potrebuje --type ŠTEVILKA ali --group IME --type "
                                        "IME.";
        QTest::newRow("group alone") << QStringList{"import", "a.mmf", "--group", "Juhe"}
                                     << "import potrebuje --type ŠTEVILKA ali --group IME --type "
                                        "IME.";
        QTest::newRow("type by name") << QStringList{"import", "a.mmf", "--type", "Juhe"}
                                      << "--type brez --group potrebuje številko podskupine.";
        QTest::newRow("encoding") << QStringList{"import", "a.mmf",      "--type",
                                                 "1",      "--encoding", "ebcdic"}
                                  << "Neznano kodiranje: ebcdic";
        QTest::newRow("export format") << QStringList{"export", "--format", "pdf", "x"}
                                       << "export potrebuje --format mealmaster, schema ali "
                                          "cooklang in izhodno datoteko (pri cooklang mapo).";
        QTest::newRow("export scope")
            << QStringList{"export", "--format", "schema", "--type", "1", "--group", "1", "x"}
            << "Podajte največ eno od --recipe, --type in --group s "
               "številko.";
    }
    void badArgumentsAreNamed() {
        QFETCH(QStringList, arguments);
        QFETCH(QString, message);
        const Result result = Tool(arguments);
        QCOMPARE(result.exitCode, 2);
        QCOMPARE(result.err, message + Help());
        QCOMPARE(result.out, QString());
    }

    void importsAndReports() {
        const QString db = Fresh(QStringLiteral("uvoz.db"));
        const QStringList files{Gourmet, Krecipes + QStringLiteral("mx2test.txt"),
                                Krecipes + QStringLiteral("recipemltest.txt"),
                                Krecipes + QStringLiteral("mxptest.txt")};
        const Result dry = Tool(QStringList{"import"} + files +
                                QStringList{"--group", "Uvoz", "--type", "Drugi programi",
                                            "--dry-run", "--database", db});
        QCOMPARE(dry.exitCode, 0);
        QVERIFY2(dry.out.endsWith(QStringLiteral(
                     "Skupaj: datoteke 4, neprebrane datoteke 0, uvoženi recepti 9, preskočeni "
                     "recepti 2.\nPoskusni uvoz: v zbirko ni bilo nič zapisano.\n")),
                 qPrintable(dry.out));
        TestDatabase::UseSettingsFor(TestDatabase::Sqlite, db);
        modDatabase::OpenConnection();
        QCOMPARE(TestDatabase::Rows("SELECT COUNT(*) FROM [Group]"), QStringList{"0"});
        QCOMPARE(TestDatabase::Rows("SELECT COUNT(*) FROM [Type]"), QStringList{"0"});
        modDatabase::CloseConnection();

        const Result real =
            Tool(QStringList{"import"} + files +
                 QStringList{"--group", "Uvoz", "--type", "Drugi programi", "--database", db});
        QCOMPARE(real.exitCode, 0);
        QCOMPARE(real.out, dry.out.chopped(QStringLiteral("Poskusni uvoz: v zbirko ni bilo nič "
                                                          "zapisano.\n")
                                               .size()));
        const QStringList lines = real.out.split(QLatin1Char('\n'));
        QVERIFY(lines.contains(QStringLiteral("Datoteka %1 (MasterCook MX2)")
                                   .arg(Krecipes + QStringLiteral("mx2test.txt"))));
        QVERIFY(lines.contains(QStringLiteral("Datoteka %1 (RecipeML)")
                                   .arg(Krecipes + QStringLiteral("recipemltest.txt"))));
        QVERIFY(lines.contains(QStringLiteral("Datoteka %1 (MasterCook MXP)")
                                   .arg(Krecipes + QStringLiteral("mxptest.txt"))));

        // Again: nothing new; with --allow-duplicates every recipe once more.
        const Result again = Tool({"import", Gourmet, "--type", "1", "--database", db});
        QCOMPARE(again.exitCode, 0);
        QVERIFY(
            again.out.contains(QStringLiteral("Najdeni recepti: 5, uvoženi: 0, preskočeni: 5")));
        const Result allowed =
            Tool({"import", Gourmet, "--type", "1", "--allow-duplicates", "--database", db});
        QVERIFY(
            allowed.out.contains(QStringLiteral("Najdeni recepti: 5, uvoženi: 5, preskočeni: 0")));
    }

    void aFileThatCannotBeReadFailsTheRun() {
        const QString db = Fresh(QStringLiteral("napaka.db"));
        const Result result = Tool(
            {"import", Work("ni.mmf"), Gourmet, "--group", "A", "--type", "B", "--database", db});
        QCOMPARE(result.exitCode, 1);
        QVERIFY(result.out.startsWith(
            QStringLiteral("Datoteka %1\n  Ni prebrana: Datoteke ni mogoče odpreti: ")
                .arg(Work("ni.mmf"))));
        QVERIFY(result.out.contains(QStringLiteral("uvoženi recepti 5")));
        const Result missing = Tool({"import", Gourmet, "--type", "99", "--database", db});
        QCOMPARE(missing.exitCode, 1);
        QCOMPARE(missing.err, QStringLiteral("Podskupine s številko 99 ni.\n"));
    }

    // A link planted at the output's name is replaced by the file, never written through; so is
    // one planted in the folder of a Cooklang export.
    void anExportNeverWritesThroughALink() {
        const QString db = Work(QStringLiteral("link.db"));
        QFile::remove(db);
        QCOMPARE(Tool({"create-db", "--sample", db}).exitCode, 0);
        const QString victim = Work(QStringLiteral("victim.txt"));
        QFile file(victim);
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write("mine\n");
        file.close();
        const QString output = Work(QStringLiteral("out.mmf"));
        QFile::remove(output);
        QVERIFY(QFile::link(victim, output));
        QCOMPARE(
            Tool({"export", "--format", "mealmaster", "--recipe", "1", "--database", db, output})
                .exitCode,
            0);
        QCOMPARE(FileBytes(victim), QByteArray("mine\n"));
        QVERIFY(!QFileInfo(output).isSymLink());
        QVERIFY(FileBytes(output).startsWith("MMMMM----- Recipe via Meal-Master (tm) v8.02"));

        const QString folder = Work(QStringLiteral("cook"));
        QVERIFY(QDir().mkpath(folder));
        const QString planted = folder + QStringLiteral("/Goveja juha z rezanci.cook");
        QFile::remove(planted);
        QVERIFY(QFile::link(victim, planted));
        QCOMPARE(Tool({"export", "--format", "cooklang", "--recipe", "1", "--database", db, folder})
                     .exitCode,
                 0);
        QCOMPARE(FileBytes(victim), QByteArray("mine\n"));
        QVERIFY(!QFileInfo(planted).isSymLink());
        QVERIFY(FileBytes(planted).startsWith("---\ntitle: Goveja juha z rezanci\n"));
    }

    void exportsAndImportsOnTheServer() {
        TestDatabase::CreatePostgresDatabase(QStringLiteral("tool_exchange"));
        const QString uri = TestDatabase::PostgresUri(QStringLiteral("tool_exchange"));
        QCOMPARE(Tool({"create-db", "--sample", "--database", uri}).exitCode, 0);
        const Result exported = Tool({"export", "--format", "mealmaster", "--group", "1",
                                      "--database", uri, Work("skupina.mmf")});
        QCOMPARE(exported.exitCode, 0);
        const QString count = exported.out.section(QLatin1Char(' '), 2).trimmed();
        QVERIFY(count.toInt() > 0);
        QCOMPARE(QString::fromUtf8(FileBytes(Work("skupina.mmf"))).count(QStringLiteral("Title: ")),
                 count.toInt());

        // Into the same collection: every recipe is one it has, unless duplicates are allowed.
        const Result same = Tool({"import", Work("skupina.mmf"), "--group", "Kopija", "--type",
                                  "Vse", "--database", uri});
        QCOMPARE(same.exitCode, 0);
        QVERIFY2(same.out.contains(
                     QStringLiteral("uvoženi recepti 0, preskočeni recepti %1.").arg(count)),
                 qPrintable(same.out));
        const Result allowed = Tool({"import", Work("skupina.mmf"), "--group", "KOPIJA", "--type",
                                     "vse", "--allow-duplicates", "--database", uri});
        QVERIFY(allowed.out.contains(
            QStringLiteral("uvoženi recepti %1, preskočeni recepti 0.").arg(count)));
    }
};

QTEST_GUILESS_MAIN(TestToolExchange)
#include "tst_tool_exchange.moc"
