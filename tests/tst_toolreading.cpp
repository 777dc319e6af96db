// morvena-tool's commands that only read a collection (search, page, print, book, export, check)
// leave its file as it was: a file in the plain journal mode stays in it, one in write-ahead
// mode stays in that, and no log is left beside it. The search still lists what it finds.
#include <sqlite3.h>

#include <QFile>
#include <QTest>

#include "tests/support/TestDatabase.h"
#include "tests/support/ToolRun.h"

using ToolRun::FileBytes;
using ToolRun::Result;
using ToolRun::Tool;
using ToolRun::Work;

namespace {

// Bytes 18 and 19 of the file's header: 1 1 for the plain journal, 2 2 for write-ahead mode.
QByteArray ModeBytes(const QString& file) { return FileBytes(file).mid(18, 2); }

// The journal mode a new connection finds.
QString JournalMode(const QString& file) {
    sqlite3* db = nullptr;
    QString mode;
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_open_v2(QFile::encodeName(file).constData(), &db, SQLITE_OPEN_READWRITE, nullptr) ==
            SQLITE_OK &&
        sqlite3_prepare_v2(db, "PRAGMA journal_mode", -1, &statement, nullptr) == SQLITE_OK &&
        sqlite3_step(statement) == SQLITE_ROW) {
        mode = QString::fromUtf8(reinterpret_cast<const char*>(sqlite3_column_text(statement, 0)));
    }
    sqlite3_finalize(statement);
    sqlite3_close(db);
    return mode;
}

// Sets a file's journal mode as another program would, and closes it.
bool SetJournalMode(const QString& file, const char* mode) {
    sqlite3* db = nullptr;
    const bool set = sqlite3_open(QFile::encodeName(file).constData(), &db) == SQLITE_OK &&
                     sqlite3_exec(db, (QByteArray("PRAGMA journal_mode=") + mode).constData(),
                                  nullptr, nullptr, nullptr) == SQLITE_OK;
    sqlite3_close(db);
    return set;
}

}  // namespace

class TestToolReading : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        TestDatabase::IsolateEnvironment();
        QVERIFY(QFile::exists(qEnvironmentVariable("MORVENA_TOOL")));
    }

    void readingLeavesTheJournalModeAsItWas_data() {
        QTest::addColumn<QStringList>("command");
        QTest::addColumn<QString>("mode");
        const QList<QStringList> commands{
            {"search", "--Instructions", "juh", "--RecipeTitle", "REZANCI"},
            {"page", "R", "1", "--output", Work("page.html")},
            {"print", "R", "1", "--pdf", Work("page.pdf")},
            {"book", "--type", "1", "--pdf", Work("book.pdf")},
            {"export", "--format", "mealmaster", Work("export.mmf")},
            {"check"},
        };
        for (const char* mode : {"delete", "wal"}) {
            for (const QStringList& command : commands) {
                QTest::addRow("%s %s", qPrintable(command.first()), mode)
                    << command << QString::fromLatin1(mode);
            }
        }
    }
    void readingLeavesTheJournalModeAsItWas() {
        QFETCH(QStringList, command);
        QFETCH(QString, mode);
        const QString file = Work(QStringLiteral("reading.db"));
        for (const QString& name : {file, file + "-wal", file + "-shm", file + "-journal"}) {
            QFile::remove(name);
        }
        QCOMPARE(Tool({"create-db", "--sample", file}).exitCode, 0);
        QVERIFY(SetJournalMode(file, mode.toLatin1().constData()));
        const QByteArray before = ModeBytes(file);
        QCOMPARE(before,
                 mode == QLatin1String("wal") ? QByteArray("\x02\x02") : QByteArray("\x01\x01"));

        QStringList arguments = command;
        if (command.first() == QLatin1String("check")) {
            arguments << file;
        } else {
            arguments << "--database" << file;
        }
        const Result result = Tool(arguments);
        QVERIFY2(result.exitCode == 0, qPrintable(result.err));

        QCOMPARE(ModeBytes(file), before);
        QCOMPARE(JournalMode(file), mode);
        // A file in the plain journal mode gets no log beside it. (One in write-ahead mode may
        // keep an empty one after a reader that could not remove it.)
        if (mode == QLatin1String("delete")) {
            QVERIFY(!QFile::exists(file + "-wal"));
        }
        QVERIFY(!QFile::exists(file + "-journal"));
        if (command.first() == QLatin1String("search")) {
            QCOMPARE(result.out, QStringLiteral("Goveja juha z rezanci\t1\tJuhe\tMesne juhe\n"));
        }
    }
};

QTEST_MAIN(TestToolReading)
#include "tst_toolreading.moc"
