// Database access on both kinds: connection strings, opening, result sets, the error chain,
// and the comparison rules for names.
#include <sqlite3.h>
#include <QFile>
#include <QTest>

#include "core/AppError.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "tests/support/TestDatabase.h"

using namespace modDatabase;
using TestDatabase::Rows;

class TestDatabaseAccess : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { TestDatabase::IsolateEnvironment(); }
    void cleanup() { Connection.reset(); }

    void connectionStringOfFileKind() {
        QCOMPARE(BuildConnectionString(1, QStringLiteral("srv"), QStringLiteral("/data/r.db"),
                                       QStringLiteral("ana"), QStringLiteral("skrivno")),
                 QStringLiteral("Provider=Microsoft.Jet.OLEDB.4.0;Data Source=/data/r.db;"
                                "User ID=ana;Password=skrivno;"));
    }
    void connectionStringOfServerKind() {
        QCOMPARE(
            BuildConnectionString(2, QStringLiteral("localhost:5433"), QStringLiteral("recepti"),
                                  QStringLiteral("ana"), QStringLiteral("skrivno")),
            QStringLiteral("Server=localhost:5433;Database=recepti;User ID=ana;"
                           "Password=skrivno;"));
    }
    void connectionStringWithEmptyCredentialsKeepsBothKeys() {
        QCOMPARE(BuildConnectionString(2, QStringLiteral("s"), QStringLiteral("d"), QString(),
                                       QString()),
                 QStringLiteral("Server=s;Database=d;User ID=;Password=;"));
        QCOMPARE(BuildConnectionString(1, QString(), QStringLiteral("a.db"), QString(), QString()),
                 QStringLiteral("Provider=Microsoft.Jet.OLEDB.4.0;Data Source=a.db;User ID=;"
                                "Password=;"));
    }
    void connectionStringOfOtherKindIsEmpty() {
        QCOMPARE(BuildConnectionString(3, QStringLiteral("s"), QStringLiteral("d"),
                                       QStringLiteral("u"), QStringLiteral("p")),
                 QString());
    }
    void connectionStringValuesAreReadBack() {
        const QString text = BuildConnectionString(2, QStringLiteral("h:1"), QStringLiteral("d"),
                                                   QStringLiteral("u"), QStringLiteral("p"));
        QCOMPARE(ConnectionStringValue(text, QStringLiteral("server")), QStringLiteral("h:1"));
        QCOMPARE(ConnectionStringValue(text, QStringLiteral("User ID")), QStringLiteral("u"));
        QCOMPARE(ConnectionStringValue(text, QStringLiteral("Missing")), QString());
    }

    void strToNull() {
        QVERIFY(StrToNull(QString()).isNull());
        QVERIFY(StrToNull(QStringLiteral("")).isNull());
        QCOMPARE(StrToNull(QStringLiteral(" ")).toString(), QStringLiteral(" "));
        QCOMPARE(StrToNull(QStringLiteral(" a ")).toString(), QStringLiteral(" a "));
    }
    void nullToStr() {
        QCOMPARE(NullToStr(QVariant()), QString());
        QCOMPARE(NullToStr(QVariant(QMetaType::fromType<int>())), QString());
        QCOMPARE(NullToStr(QVariant(5)), QStringLiteral("5"));
        QCOMPARE(NullToStr(QVariant(QStringLiteral("moka"))), QStringLiteral("moka"));
    }

    void missingFileStaysClosedAndIsNotCreated() {
        const QString file = TestDatabase::WorkFolder() + QStringLiteral("/missing.db");
        TestDatabase::UseSettingsFor(TestDatabase::Sqlite, file);
        OpenConnection();
        QVERIFY(Connection);
        QCOMPARE(Connection->State(), int(adStateClosed));
        QVERIFY(!QFile::exists(file));
        QVERIFY(Connection->LastError().contains(file));
    }
    void foreignFileStaysClosed() {
        const QString text = TestDatabase::WorkFolder() + QStringLiteral("/notes.txt");
        QFile file(text);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("Nakupovalni seznam: moka, jajca\n");
        file.close();
        TestDatabase::UseSettingsFor(TestDatabase::Sqlite, text);
        OpenConnection();
        QCOMPARE(Connection->State(), int(adStateClosed));
        QFile reread(text);
        QVERIFY(reread.open(QIODevice::ReadOnly));
        QCOMPARE(reread.readAll(), QByteArray("Nakupovalni seznam: moka, jajca\n"));
    }
    void sqliteFileWithoutTheTablesStaysClosed() {
        const QString path = TestDatabase::WorkFolder() + QStringLiteral("/other.sqlite");
        {
            sqlite3* db = nullptr;
            QCOMPARE(sqlite3_open(QFile::encodeName(path).constData(), &db), SQLITE_OK);
            QCOMPARE(sqlite3_exec(db, "CREATE TABLE notes (id INTEGER)", nullptr, nullptr, nullptr),
                     SQLITE_OK);
            sqlite3_close(db);
        }
        TestDatabase::UseSettingsFor(TestDatabase::Sqlite, path);
        OpenConnection();
        QCOMPARE(Connection->State(), int(adStateClosed));
    }
    void unknownKindStaysClosed() {
        TestDatabase::OpenFresh(TestDatabase::Sqlite);
        modGeneral::DatabaseType = 7;
        OpenConnection();
        QCOMPARE(Connection->State(), int(adStateClosed));
        QCOMPARE(Connection->ConnectionString(), QString());
    }
    void wrongServerPasswordStaysClosed() {
        TestDatabase::OpenFresh(TestDatabase::Postgres);
        modGeneral::Password = QStringLiteral("napačno");
        OpenConnection();
        QCOMPARE(Connection->State(), int(adStateClosed));
        QVERIFY(!Connection->LastError().isEmpty());
    }
    void unreachableServerStaysClosed() {
        TestDatabase::UseSettingsFor(TestDatabase::Postgres, QStringLiteral("recepti"));
        modGeneral::ServerName = QStringLiteral("127.0.0.1:1");
        OpenConnection();
        QCOMPARE(Connection->State(), int(adStateClosed));
    }
    void openingReplacesTheSharedConnection_data() { TestDatabase::AddKinds(); }
    void openingReplacesTheSharedConnection() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        const std::shared_ptr<DbConnection> first = Connection;
        OpenConnection();
        QVERIFY(Connection != first);
        QCOMPARE(Connection->State(), int(adStateOpen));
        QCOMPARE(first->State(), int(adStateOpen));  // the old one is dropped, not closed
    }

    // A server passes rows on from parallel workers cheaply, so that a search through every
    // method text is shared between processes.
    void serverSessionMakesParallelRowsCheap() {
        TestDatabase::OpenFresh(TestDatabase::Postgres);
        QCOMPARE(Rows(QStringLiteral("SELECT current_setting('parallel_tuple_cost');")),
                 QStringList{"0.01"});
        OpenConnection();
        QCOMPARE(Rows(QStringLiteral("SELECT current_setting('parallel_tuple_cost');")),
                 QStringList{"0.01"});
    }

    // A file connection gives back the memory of the pages it holds and reads on; a server's
    // connection and a closed one are left alone.
    void releasingCacheMemoryKeepsReading_data() { TestDatabase::AddKinds(); }
    void releasingCacheMemoryKeepsReading() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        TestDatabase::Insert(QStringLiteral("Unit"), {{"name", "g"}});
        QCOMPARE(Rows(QStringLiteral("SELECT name FROM [Unit];")), QStringList{"g"});
        const auto cacheUsed = [] {
            int used = 0;
            int highest = 0;
            sqlite3_db_status(Connection->SqliteHandle(), SQLITE_DBSTATUS_CACHE_USED, &used,
                              &highest, 0);
            return used;
        };
        if (kind == TestDatabase::Sqlite) {
            const int before = cacheUsed();
            ReleaseCacheMemory();
            QVERIFY2(cacheUsed() < before, qPrintable(QString::number(before)));
        } else {
            ReleaseCacheMemory();
        }
        QCOMPARE(Rows(QStringLiteral("SELECT name FROM [Unit];")), QStringList{"g"});
        CloseConnection();
        ReleaseCacheMemory();
        QVERIFY(!Connection);
    }

    void queryOnClosedConnectionOpensItFirst_data() { TestDatabase::AddKinds(); }
    void queryOnClosedConnectionOpensItFirst() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        TestDatabase::Insert(QStringLiteral("Unit"), {{"name", "g"}});
        CloseConnection();
        QVERIFY(!Connection);
        QCOMPARE(Rows(QStringLiteral("SELECT name FROM [Unit];")), QStringList{"g"});
        QCOMPARE(Connection->State(), int(adStateOpen));
        Connection->Close();
        QCOMPARE(Rows(QStringLiteral("SELECT name FROM [Unit];")), QStringList{"g"});
    }

    void emptyResultIsAtEndAtOnce_data() { TestDatabase::AddKinds(); }
    void emptyResultIsAtEndAtOnce() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        Recordset rs = GetRecordset(QStringLiteral("SELECT * FROM [Group] WHERE groupID = 0;"));
        QVERIFY(rs.Eof());
        QCOMPARE(rs.RecordCount(), 0);
        QVERIFY_THROWS_EXCEPTION(AppError, rs.Fields(QStringLiteral("name")));
        QVERIFY_THROWS_EXCEPTION(AppError, rs.MoveNext());
    }

    void fieldsAreFoundWithoutRegardToCase_data() { TestDatabase::AddKinds(); }
    void fieldsAreFoundWithoutRegardToCase() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        const qint32 id = TestDatabase::Insert(QStringLiteral("Group"),
                                               {{"Name", "Juhe"}, {"Description", QVariant()}});
        Recordset rs = GetRecordset(
            QStringLiteral(
                "SELECT groupID, name AS groupName, description FROM [Group] WHERE groupID = %1;")
                .arg(id));
        QCOMPARE(rs.Fields(QStringLiteral("GROUPID")).toInt(), id);
        QCOMPARE(rs.Text(QStringLiteral("groupname")), QStringLiteral("Juhe"));
        QCOMPARE(rs.Text(QStringLiteral("GroupName")), QStringLiteral("Juhe"));
        QVERIFY(rs.Fields(QStringLiteral("Description")).isNull());
        QVERIFY_THROWS_EXCEPTION(AppError, rs.Text(QStringLiteral("description")));
        QVERIFY_THROWS_EXCEPTION(AppError, rs.Fields(QStringLiteral("nosuchfield")));
        QCOMPARE(rs.RecordCount(), 1);
    }

    void resultIsASnapshot_data() { TestDatabase::AddKinds(); }
    void resultIsASnapshot() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        TestDatabase::Insert(QStringLiteral("Unit"), {{"name", "g"}});
        Recordset rs = GetRecordset(QStringLiteral("SELECT * FROM [Unit] ORDER BY name;"));
        TestDatabase::Insert(QStringLiteral("Unit"), {{"name", "kg"}});
        TestDatabase::Exec(QStringLiteral("UPDATE [Unit] SET name = 'dag' WHERE name = 'g'"));
        QCOMPARE(rs.RecordCount(), 1);
        QCOMPARE(rs.Text(QStringLiteral("name")), QStringLiteral("g"));
        rs.MoveNext();
        QVERIFY(rs.Eof());
    }

    void insertingThroughAnEmptyResultGivesAPositiveKey_data() { TestDatabase::AddKinds(); }
    void insertingThroughAnEmptyResultGivesAPositiveKey() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        Recordset rs = GetRecordset(QStringLiteral("SELECT * FROM [Section] WHERE sectionID = 0;"));
        QVERIFY(rs.Eof());
        rs.AddNew();
        rs.SetField(QStringLiteral("Title"), QVariant());
        rs.SetField(QStringLiteral("instructions"), QStringLiteral("Zmešamo."));
        rs.Update();
        const qint32 first = rs.Long(QStringLiteral("sectionID"));
        QVERIFY(first > 0);
        rs.AddNew();
        rs.SetField(QStringLiteral("instructions"), QStringLiteral(" "));
        rs.Update();
        const qint32 second = rs.Long(QStringLiteral("sectionid"));
        QVERIFY(second > first);
        rs.Close();
        QCOMPARE(Rows(QStringLiteral("SELECT sectionID, title, instructions FROM [Section] "
                                     "ORDER BY sectionID;")),
                 (QStringList{QStringLiteral("%1|NULL|Zmešamo.").arg(first),
                              QStringLiteral("%1|NULL| ").arg(second)}));
        QCOMPARE(Rows(QStringLiteral("SELECT * FROM [Section] WHERE sectionID = 0;")),
                 QStringList());
    }

    void numbersGivenAsTextAreStoredAsNumbers_data() { TestDatabase::AddKinds(); }
    void numbersGivenAsTextAreStoredAsNumbers() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        Recordset rs = GetRecordset(
            QStringLiteral("SELECT * FROM [SectionIngredient] WHERE sectionIngredientID = 0;"));
        rs.AddNew();
        rs.SetField(QStringLiteral("sectionID"), 4);
        rs.SetField(QStringLiteral("ingredientID"), QStringLiteral("7"));
        rs.SetField(QStringLiteral("amount"), QStringLiteral("0012"));
        rs.SetField(QStringLiteral("unitID"), QStringLiteral("2"));
        rs.Update();
        QCOMPARE(Rows(QStringLiteral("SELECT sectionID, ingredientID, unitID, amount + 1 FROM "
                                     "[SectionIngredient];")),
                 QStringList{"4|7|2|13"});
    }

    void changingAndDeletingRows_data() { TestDatabase::AddKinds(); }
    void changingAndDeletingRows() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        for (const char* name : {"g", "dag", "kg"}) {
            TestDatabase::Insert(QStringLiteral("Unit"), {{"name", name}});
        }
        Recordset rs = GetRecordset(QStringLiteral("SELECT * FROM [Unit] ORDER BY unitID;"));
        rs.SetField(QStringLiteral("Name"), QStringLiteral("gram"));
        rs.SetField(QStringLiteral("Description"), QStringLiteral("Osnovna enota"));
        rs.Update();
        rs.MoveNext();
        rs.Delete();
        rs.Update();
        rs.MoveNext();
        QCOMPARE(rs.Text(QStringLiteral("name")), QStringLiteral("kg"));
        rs.Close();
        QCOMPARE(Rows(QStringLiteral("SELECT unitID, name, description FROM [Unit] ORDER BY "
                                     "unitID;")),
                 (QStringList{"1|gram|Osnovna enota", "3|kg|NULL"}));
    }

    void deleteRecordsetDeletesEveryRow_data() { TestDatabase::AddKinds(); }
    void deleteRecordsetDeletesEveryRow() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        for (int section : {1, 1, 2, 1}) {
            TestDatabase::Insert(QStringLiteral("RecipeSection"),
                                 {{"recipeID", 9}, {"sectionID", section}, {"place", 1}});
        }
        Recordset rs =
            GetRecordset(QStringLiteral("SELECT * FROM [RecipeSection] WHERE sectionID = 1;"));
        DeleteRecordset(rs);
        QVERIFY(rs.Eof());
        QCOMPARE(Rows(QStringLiteral("SELECT recipeSectionID, sectionID FROM [RecipeSection];")),
                 QStringList{"3|2"});
    }
    void deleteRecordsetOnEmptyResultDoesNothing_data() { TestDatabase::AddKinds(); }
    void deleteRecordsetOnEmptyResultDoesNothing() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        TestDatabase::Insert(QStringLiteral("Unit"), {{"name", "g"}});
        Recordset rs = GetRecordset(QStringLiteral("SELECT * FROM [Unit] WHERE unitID = 0;"));
        DeleteRecordset(rs);
        QCOMPARE(Rows(QStringLiteral("SELECT name FROM [Unit];")), QStringList{"g"});
    }

    void onlyResultsOverOneTableAreUpdatable_data() { TestDatabase::AddKinds(); }
    void onlyResultsOverOneTableAreUpdatable() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        TestDatabase::Insert(QStringLiteral("Unit"), {{"name", "g"}});
        Recordset rs = GetRecordset(QStringLiteral("SELECT name FROM [Unit];"));
        QVERIFY_THROWS_EXCEPTION(AppError, rs.SetField(QStringLiteral("name"), "kg"));
        QVERIFY_THROWS_EXCEPTION(AppError, rs.Delete());
    }

    void faultySqlTakesTheErrorPathWithTheDriversName_data() { TestDatabase::AddKinds(); }
    void faultySqlTakesTheErrorPathWithTheDriversName() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        try {
            GetRecordset(
                QStringLiteral("SELECT * FROM [Source]WHERE name = 'O'Brien' AND "
                               "sourceID <> -1;"));
            QFAIL("no error");
        } catch (const AppError& error) {
            QCOMPARE(error.Number(), AppError::PassedOn);
            QCOMPARE(error.Source(), QStringLiteral("modDatabase:GetRecordset"));
            const QString driver = kind == TestDatabase::Postgres ? QStringLiteral("PostgreSQL->")
                                                                  : QStringLiteral("SQLite->");
            QVERIFY2(error.Description().startsWith(driver), qPrintable(error.Description()));
            QVERIFY(error.Description().size() > driver.size());
        }
    }

    void namesCompareWithoutRegardToCase_data() { TestDatabase::AddKinds(); }
    void namesCompareWithoutRegardToCase() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        for (const char* name : {"Moka", "Čokolada", "šipek", "ŽAFRAN"}) {
            TestDatabase::Insert(QStringLiteral("Ingredient"), {{"name", name}});
        }
        QCOMPARE(Rows(QStringLiteral("SELECT name FROM [Ingredient] WHERE name = 'moka';")),
                 QStringList{"Moka"});
        QCOMPARE(Rows(QStringLiteral("SELECT name FROM [Ingredient] WHERE name = 'čokolada';")),
                 QStringList{"Čokolada"});
        QCOMPARE(Rows(QStringLiteral("SELECT name FROM [Ingredient] WHERE name = 'ŠIPEK';")),
                 QStringList{"šipek"});
        QCOMPARE(Rows(QStringLiteral("SELECT name FROM [Ingredient] WHERE name LIKE '%ČOKO%';")),
                 QStringList{"Čokolada"});
        QCOMPARE(Rows(QStringLiteral("SELECT name FROM [Ingredient] WHERE name LIKE '%žaf%';")),
                 QStringList{"ŽAFRAN"});
        QCOMPARE(Rows(QStringLiteral("SELECT name FROM [Ingredient] WHERE name LIKE 'mok_';")),
                 QStringList{"Moka"});
        QCOMPARE(Rows(QStringLiteral("SELECT name FROM [Ingredient] WHERE name = 'mok';")),
                 QStringList());
    }

    void namesSortInSlovenianOrder_data() { TestDatabase::AddKinds(); }
    void namesSortInSlovenianOrder() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        const QStringList names{"žganci",          "Zelje", "šmorn",   "Sarma", "dušeno",
                                "ćevapčiči",       "čaj",   "Cvetača", "burek", "Ajdova kaša",
                                "Tatarski biftek", "ričet"};
        for (const QString& name : names) {
            TestDatabase::Insert(QStringLiteral("Recipe"), {{"typeID", 1}, {"title", name}});
        }
        QCOMPARE(Rows(QStringLiteral("SELECT title FROM [Recipe] WHERE typeID = 1 ORDER BY "
                                     "title;")),
                 (QStringList{"Ajdova kaša", "burek", "Cvetača", "čaj", "ćevapčiči", "dušeno",
                              "ričet", "Sarma", "šmorn", "Tatarski biftek", "Zelje", "žganci"}));
    }
};

QTEST_MAIN(TestDatabaseAccess)
#include "tst_database.moc"
