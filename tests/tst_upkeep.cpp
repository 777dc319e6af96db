// Keeping a collection: morvena-tool backup of a file in use, and check with its repair.
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRandomGenerator>
#include <QTest>

#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "display/modDisplay.h"
#include "tests/support/TestDatabase.h"
#include "tests/support/ToolRun.h"

using TestDatabase::PostgresUri;
using ToolRun::FileBytes;
using ToolRun::Result;
using ToolRun::Tool;
using ToolRun::Work;

namespace {

// The database the program has open, as the tool names it.
QString Current() {
    return modGeneral::DatabaseType == modDatabase::ServerDatabase
               ? PostgresUri(modGeneral::DatabaseName)
               : modGeneral::DatabaseName;
}

const QString IntegrityOk = QStringLiteral("Celovitost datoteke (PRAGMA integrity_check): ok\n");

// The lines of a check: the file's own check first (SQLite only), then one line per kind.
QString CheckLines(const QString& kind, const QStringList& counts, const QString& last) {
    const QStringList descriptions{
        "Razdelki, ki jih ne uporablja noben recept",
        "Povezave receptov z razdelki, ki kažejo na manjkajoč recept ali razdelek",
        "Vrstice sestavin, ki kažejo na manjkajoč razdelek, sestavino ali enoto",
        "Recepti brez razdelkov",
        "Recepti, katerih podskupine ni",
        "Podskupine, katerih skupine ni",
        "Recepti z vrzeljo ali ponovitvijo v vrstnem redu razdelkov"};
    QString text = kind == TestDatabase::Sqlite ? IntegrityOk : QString();
    for (int i = 0; i < descriptions.size(); ++i) {
        text += descriptions[i] + QStringLiteral(": ") + counts[i] + QLatin1Char('\n');
    }
    return text + last;
}

// A child process that saves recipes through the editor until it is killed.
class SaveLoop {
public:
    explicit SaveLoop(const QString& database, quint32 choices) {
        m_process.setWorkingDirectory(TestDatabase::WorkFolder());
        m_process.start(qEnvironmentVariable("MORVENA_SAVELOOP"),
                        {database, QStringLiteral("--random"), QString::number(choices)});
    }
    ~SaveLoop() { Kill(); }

    // Waits until `count` more saves have finished.
    bool WaitForSaves(int count) {
        const int target = m_saves + count;
        while (m_saves < target && m_process.state() != QProcess::NotRunning) {
            m_process.waitForReadyRead(200);
            while (m_process.canReadLine()) {
                m_saves += m_process.readLine().startsWith("saved ") ? 1 : 0;
            }
        }
        return m_saves >= target;
    }
    void Kill() {
        if (m_process.state() != QProcess::NotRunning) {
            m_process.kill();
            m_process.waitForFinished(30000);
        }
    }
    QString Errors() { return QString::fromUtf8(m_process.readAllStandardError()); }

private:
    QProcess m_process;
    int m_saves = 0;
};

// Damage of every kind that check looks for, on top of the small collection (keys as its
// comment in TestDatabase.h tells): section 5 that no recipe uses, with line 6; link 5 to the
// missing recipe 99; link 6 to the missing section 77; lines 7 (missing ingredient) and 8
// (missing section); recipe 4 without sections; recipe 5 of the missing type 42; type 4 of the
// missing group 9; recipe 2's only section at place 2; recipe 6 with two sections at place 1.
void Damage() {
    using TestDatabase::Exec;
    using TestDatabase::Insert;
    QCOMPARE(Insert("Section", {{"title", "Ostanek"}, {"instructions", " "}}), 5);
    QCOMPARE(Insert("SectionIngredient",
                    {{"sectionID", 5}, {"ingredientID", 1}, {"unitID", 1}, {"amount", 10}}),
             6);
    QCOMPARE(Insert("RecipeSection", {{"recipeID", 99}, {"sectionID", 2}, {"place", 1}}), 5);
    QCOMPARE(Insert("RecipeSection", {{"recipeID", 1}, {"sectionID", 77}, {"place", 2}}), 6);
    QCOMPARE(Insert("SectionIngredient",
                    {{"sectionID", 1}, {"ingredientID", 99}, {"unitID", 1}, {"amount", 1}}),
             7);
    QCOMPARE(Insert("SectionIngredient",
                    {{"sectionID", 88}, {"ingredientID", 1}, {"unitID", 1}, {"amount", 1}}),
             8);
    QCOMPARE(Insert("Recipe", {{"typeID", 1}, {"title", "Brez razdelkov"}}), 4);
    QCOMPARE(Insert("Recipe", {{"typeID", 42}, {"title", "Izgubljen"}}), 5);
    QCOMPARE(Insert("Type", {{"groupID", 9}, {"name", "Sirota"}}), 4);
    Exec("UPDATE [RecipeSection] SET place = 2 WHERE recipeSectionID = 4;");
    QCOMPARE(Insert("Recipe", {{"typeID", 3}, {"title", "Dvojna"}}), 6);
    QCOMPARE(Insert("Section", {{"title", "Prvi"}, {"instructions", "A"}}), 6);
    QCOMPARE(Insert("Section", {{"title", "Drugi"}, {"instructions", "B"}}), 7);
    Insert("RecipeSection", {{"recipeID", 6}, {"sectionID", 6}, {"place", 1}});
    Insert("RecipeSection", {{"recipeID", 6}, {"sectionID", 7}, {"place", 1}});
}

QStringList AllRows() {
    using TestDatabase::Rows;
    return Rows("SELECT * FROM [Section] ORDER BY sectionID;") +
           Rows("SELECT * FROM [RecipeSection] ORDER BY recipeSectionID;") +
           Rows("SELECT * FROM [SectionIngredient] ORDER BY sectionIngredientID;") +
           Rows("SELECT * FROM [Recipe] ORDER BY recipeID;") +
           Rows("SELECT * FROM [Type] ORDER BY typeID;");
}

}  // namespace

class TestUpkeep : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        TestDatabase::IsolateEnvironment();
        QVERIFY(QFile::exists(qEnvironmentVariable("MORVENA_TOOL")));
        QVERIFY(QFile::exists(qEnvironmentVariable("MORVENA_SAVELOOP")));
    }
    void cleanup() { modDatabase::Connection.reset(); }

    void backupWhileRecipesAreBeingSaved() {
        const QString live = Work("live.db");
        QCOMPARE(Tool({"create-db", "--sample", live}).exitCode, 0);
        SaveLoop loop(live, 7);
        QVERIFY2(loop.WaitForSaves(3), qPrintable(loop.Errors()));
        const Result backup = Tool({"backup", live, Work("live-backup.db")});
        QVERIFY2(loop.WaitForSaves(2), qPrintable(loop.Errors()));
        QCOMPARE(backup.err, QString());
        QCOMPARE(backup.exitCode, 0);
        QCOMPARE(backup.out,
                 QStringLiteral("Varnostna kopija je v %1; preverjanje celovitosti: ok\n")
                     .arg(Work("live-backup.db")));
        // Never over an existing file, not even an older backup.
        const QByteArray first = FileBytes(Work("live-backup.db"));
        const Result again = Tool({"backup", live, Work("live-backup.db")});
        QCOMPARE(again.exitCode, 1);
        QCOMPARE(again.err,
                 QStringLiteral("Datoteka %1 že obstaja.\n").arg(Work("live-backup.db")));
        QCOMPARE(FileBytes(Work("live-backup.db")), first);
        loop.Kill();
        QCOMPARE(QDir(TestDatabase::WorkFolder())
                     .entryList({QStringLiteral(".live-backup.db*")}, QDir::Files | QDir::Hidden),
                 QStringList());

        // The backup opens in the program and shows its pages.
        TestDatabase::UseSettingsFor(TestDatabase::Sqlite, Work("live-backup.db"));
        modDatabase::OpenConnection();
        QCOMPARE(modDatabase::Connection->State(), int(modDatabase::adStateOpen));
        QVERIFY(TestDatabase::Rows("SELECT recipeID FROM [Recipe];").size() >= 65);
        QVERIFY(!TestDatabase::Rows("SELECT title FROM [Recipe] WHERE title LIKE 'Recept zanke%';")
                     .isEmpty());
        modGeneral::TempFilename = Work("from-backup.html");
        modDisplay::DisplayRecipe(1);
        QVERIFY(FileBytes(Work("from-backup.html")).endsWith("</body></html>"));
        const QStringList check = TestDatabase::Rows("PRAGMA integrity_check;");
        QCOMPARE(check, QStringList{"ok"});
    }

    void backupOfAMissingFileOrAForeignFileMakesNothing() {
        const Result missing = Tool({"backup", Work("ni.db"), Work("ni-kopija.db")});
        QCOMPARE(missing.exitCode, 1);
        QCOMPARE(missing.err, QStringLiteral("Datoteka %1 ne obstaja.\n").arg(Work("ni.db")));
        QVERIFY(!QFile::exists(Work("ni-kopija.db")));
        QVERIFY(QFile::copy(QFINDTESTDATA("tst_upkeep.cpp"), Work("text.db")));
        const Result foreign = Tool({"backup", Work("text.db"), Work("text-kopija.db")});
        QCOMPARE(foreign.exitCode, 1);
        QCOMPARE(foreign.err,
                 QStringLiteral("%1 ni zbirka podatkov programa Morvena.\n").arg(Work("text.db")));
        QVERIFY(!QFile::exists(Work("text-kopija.db")));
    }

    void backupOfAServerDatabasePointsToPgDump() {
        TestDatabase::OpenFresh(TestDatabase::Postgres);
        const Result result = Tool({"backup", Current(), Work("server.dump")});
        QCOMPARE(result.exitCode, 1);
        QCOMPARE(
            result.err,
            QStringLiteral("Zbirko na strežniku PostgreSQL kopirajte z njegovim programom "
                           "pg_dump, na primer: pg_dump -Fc -f %1 'postgresql://morvena@%2/%3'\n")
                .arg(Work("server.dump"), TestDatabase::PostgresServer(),
                     modGeneral::DatabaseName));
        QCOMPARE(result.out, QString());
        QVERIFY(!QFile::exists(Work("server.dump")));
    }

    void checkFindsNothingInAnIntactCollection_data() { TestDatabase::AddKinds(); }
    void checkFindsNothingInAnIntactCollection() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        TestDatabase::LoadSmallCollection();
        const QStringList before = AllRows();
        const QStringList zeros(7, QStringLiteral("0"));
        for (const QStringList& repair : {QStringList(), QStringList{"--repair"}}) {
            const Result result = Tool(QStringList{"check", Current()} + repair);
            QCOMPARE(result.err, QString());
            QCOMPARE(result.out, CheckLines(kind, zeros, QStringLiteral("Ni najdenih napak.\n")));
            QCOMPARE(result.exitCode, 0);
        }
        QCOMPARE(AllRows(), before);
    }

    void checkFindsEveryKindAndRepairsOnlyWhatNothingReaches_data() { TestDatabase::AddKinds(); }
    void checkFindsEveryKindAndRepairsOnlyWhatNothingReaches() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        TestDatabase::LoadSmallCollection();
        Damage();
        const QStringList found{
            "1 (Section 5)",   "2 (RecipeSection 5, 6)", "2 (SectionIngredient 7, 8)",
            "2 (Recipe 4, 5)", "1 (Recipe 5)",           "1 (Type 4)",
            "2 (Recipe 2, 6)"};
        const QStringList before = AllRows();
        const Result check = Tool({"check", Current()});
        QCOMPARE(check.err, QString());
        QCOMPARE(check.out, CheckLines(kind, found, QStringLiteral("Najdene so napake.\n")));
        QCOMPARE(check.exitCode, 3);
        QCOMPARE(AllRows(), before);

        const Result repair = Tool({"check", Current(), "--repair"});
        QCOMPARE(repair.exitCode, 3);
        QCOMPARE(repair.out,
                 CheckLines(kind, found,
                            QStringLiteral("Izbrisane vrstice sestavin: 3 (SectionIngredient 6, "
                                           "7, 8)\n"
                                           "Izbrisane povezave receptov z razdelki: 2 "
                                           "(RecipeSection 5, 6)\n"
                                           "Izbrisani razdelki: 1 (Section 5)\n"
                                           "Najdene so napake.\n")));
        // Exactly those rows are gone; nothing was renumbered.
        QStringList expected = before;
        for (const char* row :
             {"5|Ostanek| ", "5|99|2|1", "6|1|77|2", "6|5|1|1|10", "7|1|99|1|1", "8|88|1|1|1"}) {
            QVERIFY2(expected.removeOne(QString::fromUtf8(row)), row);
        }
        QCOMPARE(AllRows(), expected);

        // What no repair may touch is still reported; the rest is gone.
        const Result after = Tool({"check", Current()});
        QCOMPARE(after.exitCode, 3);
        QCOMPARE(after.out, CheckLines(kind,
                                       {"0", "0", "0", "2 (Recipe 4, 5)", "1 (Recipe 5)",
                                        "1 (Type 4)", "2 (Recipe 2, 6)"},
                                       QStringLiteral("Najdene so napake.\n")));
    }

    void checkReportsADamagedFileAndDoesNotRepairIt() {
        QCOMPARE(Tool({"generate", Work("damaged.db"), "--recipes", "50"}).exitCode, 0);
        TestDatabase::UseSettingsFor(TestDatabase::Sqlite, Work("damaged.db"));
        modDatabase::OpenConnection();
        const int page =
            TestDatabase::Rows("SELECT rootpage FROM sqlite_master WHERE name = 'Unit';")
                .value(0)
                .toInt();
        const int pageSize = TestDatabase::Rows("PRAGMA page_size;").value(0).toInt();
        modDatabase::Connection.reset();
        QVERIFY(page > 1 && pageSize > 0);
        QFile file(Work("damaged.db"));
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(file.seek(qint64(page - 1) * pageSize));
        file.write(QByteArray(pageSize, '\0'));
        file.close();
        const QByteArray damaged = FileBytes(Work("damaged.db"));

        const Result check = Tool({"check", Work("damaged.db"), "--repair"});
        QCOMPARE(check.exitCode, 3);
        QVERIFY2(check.out.startsWith(
                     QStringLiteral("Celovitost datoteke (PRAGMA integrity_check): *** in "
                                    "database main ***\nPage %1: ")
                         .arg(page)),
                 qPrintable(check.out));
        QVERIFY(check.out.contains(
            QStringLiteral("Vrstice sestavin, ki kažejo na manjkajoč razdelek, sestavino ali "
                           "enoto: ni mogoče preveriti (")));
        QVERIFY(check.out.endsWith(QStringLiteral(
            "Datoteka je poškodovana, zato ni popravljeno nič.\nNajdene so napake.\n")));
        QCOMPARE(FileBytes(Work("damaged.db")), damaged);
    }

    void checkOfADatabaseThatCannotBeOpened() {
        const Result result = Tool({"check", Work("ni.db")});
        QCOMPARE(result.exitCode, 1);
        QCOMPARE(result.err, QStringLiteral("Datoteka %1 ne obstaja.\n").arg(Work("ni.db")));
    }

    // A save loop killed at random moments, again and again: check names what the interrupted
    // saves left, repair takes away what nothing reaches, and the program's pages still show.
    void checkAfterKilledSaves_data() { TestDatabase::AddKinds(); }
    void checkAfterKilledSaves() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        TestDatabase::LoadSmallCollection();
        const QString database = Current();
        modDatabase::Connection.reset();
        QRandomGenerator random(kind == TestDatabase::Sqlite ? 11 : 12);
        for (int round = 0; round < 6; ++round) {
            SaveLoop loop(database, random.generate());
            QVERIFY2(loop.WaitForSaves(1 + random.bounded(3)), qPrintable(loop.Errors()));
            QTest::qWait(random.bounded(40));
            loop.Kill();
        }
        const Result check = Tool({"check", database});
        qInfo().noquote() << "check after killed saves (" << kind << "):\n" << check.out;
        QVERIFY(check.exitCode == 0 || check.exitCode == 3);
        QCOMPARE(check.err, QString());
        const QStringList lines = check.out.split(QLatin1Char('\n'));
        if (kind == TestDatabase::Sqlite) {
            QCOMPARE(lines.value(0) + QLatin1Char('\n'), IntegrityOk);
        }
        // A save never touches subgroups and groups.
        QVERIFY(lines.contains(QStringLiteral("Recepti, katerih podskupine ni: 0")));
        QVERIFY(lines.contains(QStringLiteral("Podskupine, katerih skupine ni: 0")));

        const Result repair = Tool({"check", database, "--repair"});
        QCOMPARE(repair.exitCode, check.exitCode);
        const Result after = Tool({"check", database});
        const QStringList remaining = after.out.split(QLatin1Char('\n'));
        for (const char* kindOfRow :
             {"Razdelki, ki jih ne uporablja noben recept: 0",
              "Povezave receptov z razdelki, ki kažejo na manjkajoč recept ali razdelek: 0",
              "Vrstice sestavin, ki kažejo na manjkajoč razdelek, sestavino ali enoto: 0"}) {
            QVERIFY2(remaining.contains(QString::fromUtf8(kindOfRow)), qPrintable(after.out));
        }
        modDatabase::OpenConnection();  // the settings still name the killed loop's database
        QVERIFY(TestDatabase::Rows("SELECT title FROM [Recipe] WHERE title LIKE 'Recept zanke%';")
                    .size() > 0);
        modGeneral::TempFilename = Work("after-killed.html");
        modDisplay::DisplayGroup(1);
        QVERIFY(FileBytes(Work("after-killed.html")).endsWith("</body></html>"));
    }
};

QTEST_MAIN(TestUpkeep)
#include "tst_upkeep.moc"
