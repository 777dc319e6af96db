// Databases that cannot be written: a SQLite file in a read-only folder or without write rights,
// never used, used by the program, or left in write-ahead mode, opens for reading: the tree,
// the pages and the search work, and a write takes the error path with the library's message.
// Opening leaves the file in the plain journal mode. A failure to open says whether the
// database is no Morvena database or cannot be opened or read, and why.
//
// A read-only folder does not stop root: as root, the reading user is "nobody", in a child
// process.
#include <sqlite3.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QTest>
#include <QTreeView>
#include <QTreeWidget>
#include <functional>

#include "core/AppError.h"
#include "core/database/Recordset.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "display/modDisplay.h"
#include "main/frmMain.h"
#include "search/SearchQuery.h"
#include "tests/support/MessageRecorder.h"
#include "tests/support/TestDatabase.h"

using TestDatabase::Rows;

namespace {

constexpr uid_t Nobody = 65534;

QByteArray Name(const QString& path) { return QFile::encodeName(path); }

// The journal mode written in the file's header: 1 plain journal, 2 write-ahead log.
int HeaderJournalMode(const QString& fileName) {
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        return -1;
    }
    const QByteArray header = file.read(20);
    return header.size() == 20 ? header.at(18) : -1;
}

// Puts the file into write-ahead mode as a program that opened it once before would leave it.
void LeaveInWriteAheadMode(const QString& fileName) {
    sqlite3* db = nullptr;
    QCOMPARE(sqlite3_open(Name(fileName).constData(), &db), SQLITE_OK);
    QCOMPARE(sqlite3_exec(db, "PRAGMA journal_mode=WAL", nullptr, nullptr, nullptr), SQLITE_OK);
    sqlite3_close(db);
    QCOMPARE(HeaderJournalMode(fileName), 2);
}

// Runs `body` as a user who may read but not write `folder` and the files in it; false when
// a check inside failed.
bool AsReader(const QString& folder, const std::function<void()>& body) {
    if (::geteuid() != 0) {
        ::chmod(Name(folder).constData(), 0555);
        body();
        ::chmod(Name(folder).constData(), 0755);
        return !QTest::currentTestFailed();
    }
    ::chmod(Name(TestDatabase::WorkFolder()).constData(), 0711);
    ::chmod(Name(folder).constData(), 0755);
    const pid_t child = ::fork();
    if (child == 0) {
        const bool dropped = ::setgid(Nobody) == 0 && ::setuid(Nobody) == 0;
        if (dropped) {
            body();
        }
        ::_exit(dropped && !QTest::currentTestFailed() ? 0 : 1);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    ::chmod(Name(TestDatabase::WorkFolder()).constData(), 0700);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

// A folder with a copy of the small collection, readable by everyone, and a folder where the
// reader may write its pages.
QString PrepareCollection(const QString& name) {
    TestDatabase::OpenFresh(TestDatabase::Sqlite);
    TestDatabase::LoadSmallCollection();
    const QString source = modGeneral::DatabaseName;
    modDatabase::Connection.reset();
    const QString folder = TestDatabase::WorkFolder() + QLatin1Char('/') + name;
    QDir(folder).removeRecursively();
    QDir().mkpath(folder);
    const QString copy = folder + QStringLiteral("/Recepti.db");
    QFile::copy(source, copy);
    ::chmod(Name(copy).constData(), 0644);
    const QString pages = TestDatabase::WorkFolder() + QStringLiteral("/pages");
    QDir().mkpath(pages);
    ::chmod(Name(pages).constData(), 01777);
    modGeneral::TempFilename = pages + QStringLiteral("/") + name + QStringLiteral(".html");
    TestDatabase::UseSettingsFor(TestDatabase::Sqlite, copy);
    return copy;
}

// What the reader sees: the tree, a page, a search; and a write on the error path.
void UseForReading(const QString& fileName) {
    MessageRecorder messages;
    modDatabase::OpenConnection();
    QVERIFY2(modDatabase::Connection->State() == modDatabase::adStateOpen,
             qPrintable(modDatabase::Connection->LastError()));
    {
        frmMain window;
        auto* tree = window.findChild<QTreeView*>(QStringLiteral("tvRecipes"));
        QVERIFY(tree);
        QCOMPARE(tree->model()->rowCount(), 2);
        QCOMPARE(tree->model()->index(0, 0).data().toString(), QStringLiteral("Juhe"));
    }
    modDisplay::DisplayRecipe(3);
    QFile page(modGeneral::TempFilename);
    QVERIFY(page.open(QIODevice::ReadOnly));
    QVERIFY(page.readAll().startsWith("<html><head><title>3 - "));

    SearchQuery::Criteria criteria;
    criteria.values[SearchQuery::CriterionOf(QStringLiteral("RecipeTitle"))]
        << QStringLiteral("juha");
    QCOMPARE(Rows(SearchQuery::BuildQuery(criteria, SearchQuery::AllValues, 1)).size(), 2);

    try {
        modDatabase::Execute(
            QStringLiteral("UPDATE [Recipe] SET title = 'Nova' WHERE recipeID = 1;"));
        QFAIL("the read-only database was written");
    } catch (const AppError& error) {
        QCOMPARE(error.Source(), QStringLiteral("modDatabase:Execute"));
        QVERIFY2(error.Description().startsWith(QStringLiteral("SQLite->attempt to write a "
                                                               "readonly database")),
                 qPrintable(error.Description()));
    }
    QCOMPARE(Rows(QStringLiteral("SELECT title FROM [Recipe] WHERE recipeID = 1;")),
             QStringList{"Goveja juha"});
    QCOMPARE(messages.Texts(), QStringList());
    modDatabase::Connection.reset();
    QVERIFY(QFileInfo::exists(fileName));
}

}  // namespace

class TestReadOnly : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { TestDatabase::IsolateEnvironment(); }
    void cleanup() { modDatabase::Connection.reset(); }

    void openingLeavesThePlainJournal() {
        const QString file = PrepareCollection(QStringLiteral("used"));
        modDatabase::OpenConnection();
        QCOMPARE(modDatabase::Connection->State(), int(modDatabase::adStateOpen));
        TestDatabase::Exec(
            QStringLiteral("UPDATE [Recipe] SET title = 'Juha' WHERE recipeID = 1;"));
        modDatabase::CloseConnection();
        QCOMPARE(HeaderJournalMode(file), 1);
        QVERIFY(!QFileInfo::exists(file + QStringLiteral("-wal")));
    }

    void readOnlyFolder_data() {
        QTest::addColumn<QString>("history");
        QTest::newRow("never used") << "new";
        QTest::newRow("used by the program") << "program";
        QTest::newRow("left in write-ahead mode") << "wal";
    }
    void readOnlyFolder() {
        QFETCH(QString, history);
        const QString file = PrepareCollection(QStringLiteral("ro-") + history);
        if (history == QLatin1String("program")) {
            modDatabase::OpenConnection();
            QCOMPARE(modDatabase::Connection->State(), int(modDatabase::adStateOpen));
            modDatabase::CloseConnection();
        } else if (history == QLatin1String("wal")) {
            LeaveInWriteAheadMode(file);
        }
        const QString folder = QFileInfo(file).absolutePath();
        QVERIFY(AsReader(folder, [&] { UseForReading(file); }));
        QCOMPARE(QDir(folder).entryList(QDir::Files), QStringList{"Recepti.db"});
    }

    // The file without write rights, in a folder that may be written.
    void fileWithoutWriteRights() {
        const QString file = PrepareCollection(QStringLiteral("ro-file"));
        LeaveInWriteAheadMode(file);
        const QString folder = QFileInfo(file).absolutePath();
        if (::geteuid() == 0) {
            QVERIFY(::chmod(Name(folder).constData(), 01777) == 0);
        } else {
            QVERIFY(::chmod(Name(file).constData(), 0444) == 0);
        }
        QVERIFY(AsReader(folder + QStringLiteral("/none"), [&] { UseForReading(file); }));
    }

    void failuresSayWhy_data() { TestDatabase::AddKinds(); }
    void failuresSayWhy() {
        const QString kind = TestDatabase::CurrentKind();
        if (kind == TestDatabase::Sqlite) {
            // A file that cannot be read.
            const QString file = PrepareCollection(QStringLiteral("unreadable"));
            QVERIFY(::chmod(Name(file).constData(), 0600) == 0);
            QVERIFY(AsReader(QFileInfo(file).absolutePath(), [&] {
                modDatabase::OpenConnection();
                QCOMPARE(modDatabase::Connection->State(), int(modDatabase::adStateClosed));
                const QString error = modDatabase::Connection->LastError();
                QVERIFY2(error.startsWith(QStringLiteral("Zbirke podatkov ") + file +
                                          QStringLiteral(" ni mogoče odpreti ali prebrati: ")),
                         qPrintable(error));
                QVERIFY2(error.size() > 60, qPrintable(error));
            }));
            // A file of another kind.
            const QString text = TestDatabase::WorkFolder() + QStringLiteral("/notes.txt");
            QFile notes(text);
            QVERIFY(notes.open(QIODevice::WriteOnly));
            notes.write("Nakupovalni seznam: moka, jajca, mleko, sol, sladkor in kvas\n");
            notes.close();
            TestDatabase::UseSettingsFor(kind, text);
            modDatabase::OpenConnection();
            QCOMPARE(modDatabase::Connection->LastError(),
                     text + QStringLiteral(" ni zbirka podatkov programa Morvena."));
        } else {
            // A server that does not answer, and a database without the program's tables.
            TestDatabase::UseSettingsFor(kind, QStringLiteral("recepti"));
            modGeneral::ServerName = QStringLiteral("127.0.0.1:1");
            modDatabase::OpenConnection();
            const QString error = modDatabase::Connection->LastError();
            QVERIFY2(error.startsWith(QStringLiteral(
                         "Zbirke podatkov recepti ni mogoče odpreti ali prebrati: ")),
                     qPrintable(error));
            QVERIFY2(error.contains(QStringLiteral("127.0.0.1")), qPrintable(error));
            TestDatabase::CreatePostgresDatabase(QStringLiteral("t_readonly_empty"));
            TestDatabase::UseSettingsFor(kind, QStringLiteral("t_readonly_empty"));
            modDatabase::OpenConnection();
            QCOMPARE(modDatabase::Connection->LastError(),
                     QStringLiteral("t_readonly_empty ni zbirka podatkov programa Morvena."));
        }
        QCOMPARE(modDatabase::Connection->State(), int(modDatabase::adStateClosed));
    }
};

QTEST_MAIN(TestReadOnly)
#include "tst_readonly.moc"
