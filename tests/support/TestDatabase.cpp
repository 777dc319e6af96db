#include "tests/support/TestDatabase.h"

#include <libpq-fe.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <map>
#include <memory>

#include "core/database/Recordset.h"
#include "core/database/Schema.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"

namespace TestDatabase {
namespace {

QTemporaryDir& Work() {
    static QTemporaryDir dir;
    return dir;
}

QString ServerDatabaseName() {
    return QStringLiteral("t_%1_%2")
        .arg(QCoreApplication::applicationName().toLower().remove(QLatin1Char('-')))
        .arg(QCoreApplication::applicationPid());
}

bool g_serverDatabaseCreated = false;

// A connection of the tests' own to the tests' server, outside the program's connections.
PGconn* AdminConnection(const QString& database) {
    // Kept open for the whole run and closed at its end.
    static std::map<QString, std::unique_ptr<PGconn, decltype(&PQfinish)>> open;
    if (const auto kept = open.find(database); kept != open.end()) {
        return kept->second.get();
    }
    const QString server = PostgresServer();
    const QByteArray host = server.section(QLatin1Char(':'), 0, 0).toUtf8();
    const QByteArray port = server.section(QLatin1Char(':'), 1).toUtf8();
    const QByteArray name = database.toUtf8();
    const QByteArray user = PostgresUser().toUtf8();
    const QByteArray password = PostgresPassword().toUtf8();
    const char* keywords[] = {"host", "port", "dbname", "user", "password", nullptr};
    const char* values[] = {host.constData(), port.constData(),     name.constData(),
                            user.constData(), password.constData(), nullptr};
    PGconn* db = PQconnectdbParams(keywords, values, 0);
    if (PQstatus(db) != CONNECTION_OK) {
        qFatal("cannot reach the tests' PostgreSQL server %s: %s", qPrintable(server),
               PQerrorMessage(db));
    }
    PQsetNoticeProcessor(
        db, [](void*, const char*) {}, nullptr);
    open.emplace(database, std::unique_ptr<PGconn, decltype(&PQfinish)>(db, &PQfinish));
    return db;
}

void Run(PGconn* db, const QString& sql) {
    PGresult* result = PQexec(db, sql.toUtf8().constData());
    const ExecStatusType status = PQresultStatus(result);
    if (status != PGRES_COMMAND_OK && status != PGRES_TUPLES_OK) {
        qFatal("%s: %s", qPrintable(sql), PQresultErrorMessage(result));
    }
    PQclear(result);
}

}  // namespace

void AddKinds() {
    QTest::addColumn<QString>("kind");
    QTest::newRow("sqlite") << Sqlite;
    QTest::newRow("postgresql") << Postgres;
}

QString CurrentKind() {
    const QString* kind = static_cast<const QString*>(QTest::qData("kind", qMetaTypeId<QString>()));
    return kind ? *kind : Sqlite;
}

void IsolateEnvironment() {
    qputenv("MORVENA_CONFIG_DIR", QFile::encodeName(WorkFolder() + QStringLiteral("/config")));
    QDir::setCurrent(WorkFolder());
}

QString WorkFolder() { return Work().path(); }

QString PostgresServer() {
    QFile file(QStringLiteral(MORVENA_TEST_PG_ADDRESS_FILE));
    if (!file.open(QIODevice::ReadOnly)) {
        qFatal("the tests' PostgreSQL server is not running (%s missing); run the tests with ctest",
               MORVENA_TEST_PG_ADDRESS_FILE);
    }
    return QString::fromUtf8(file.readAll()).trimmed();
}

QString PostgresUser() { return QStringLiteral("morvena"); }
QString PostgresPassword() { return QStringLiteral("morvena-test"); }

void CreatePostgresDatabase(const QString& name) {
    PGconn* admin = AdminConnection(QStringLiteral("postgres"));
    Run(admin, QStringLiteral("DROP DATABASE IF EXISTS \"%1\" WITH (FORCE)").arg(name));
    Run(admin, QStringLiteral("CREATE DATABASE \"%1\"").arg(name));
}

QString PostgresUri(const QString& database) {
    return QStringLiteral("postgresql://%1:%2@%3/%4")
        .arg(PostgresUser(), PostgresPassword().replace(QLatin1Char('-'), QStringLiteral("%2D")),
             PostgresServer(), database);
}

void UseSettingsFor(const QString& kind, const QString& name) {
    using namespace modGeneral;
    if (kind == Postgres) {
        DatabaseType = modDatabase::ServerDatabase;
        ServerName = PostgresServer();
        DatabaseName = name;
        Username = PostgresUser();
        Password = PostgresPassword();
    } else {
        DatabaseType = modDatabase::FileDatabase;
        ServerName.clear();
        DatabaseName = name;
        Username.clear();
        Password.clear();
    }
}

void OpenFresh(const QString& kind) {
    modDatabase::Connection.reset();
    static int counter = 0;
    if (kind == Postgres) {
        const QString name = ServerDatabaseName();
        if (!g_serverDatabaseCreated) {
            CreatePostgresDatabase(name);
            g_serverDatabaseCreated = true;
        }
        PGconn* db = AdminConnection(name);
        Run(db, QStringLiteral("DROP SCHEMA IF EXISTS public CASCADE"));
        Run(db, QStringLiteral("CREATE SCHEMA public"));
        UseSettingsFor(kind, name);
    } else {
        UseSettingsFor(kind, WorkFolder() + QStringLiteral("/db%1.sqlite").arg(++counter));
    }
    auto empty = std::make_shared<modDatabase::DbConnection>(
        modGeneral::DatabaseType,
        modDatabase::BuildConnectionString(modGeneral::DatabaseType, modGeneral::ServerName,
                                           modGeneral::DatabaseName, modGeneral::Username,
                                           modGeneral::Password));
    empty->OpenEmpty();
    if (empty->State() != modDatabase::adStateOpen) {
        qFatal("cannot create a test database: %s", qPrintable(empty->LastError()));
    }
    Schema::Create(*empty);
    empty.reset();
    modDatabase::OpenConnection();
    if (modDatabase::Connection->State() != modDatabase::adStateOpen) {
        qFatal("cannot open the test database: %s",
               qPrintable(modDatabase::Connection->LastError()));
    }
}

void Exec(const QString& sql) { modDatabase::Execute(sql); }

qint32 Insert(const QString& table, const QList<QPair<QString, QVariant>>& fields) {
    Recordset rs = modDatabase::GetRecordset(
        QStringLiteral("SELECT * FROM [%1] WHERE %2 = 0;")
            .arg(table, table.left(1).toLower() + table.mid(1) + QStringLiteral("ID")));
    rs.AddNew();
    for (const auto& [name, value] : fields) {
        rs.SetField(name, value);
    }
    rs.Update();
    const qint32 key = rs.Long(rs.FieldName(0));
    rs.Close();
    return key;
}

void LoadSmallCollection() {
    Insert("Group", {{"name", "Juhe"}, {"description", "Tople juhe\r\nin enolončnice"}});
    Insert("Group", {{"name", "Sladice"}});
    Insert("Type", {{"groupID", 1}, {"name", "Mesne juhe"}});
    Insert("Type", {{"groupID", 1}, {"name", "Zelenjavne juhe"}});
    Insert("Type", {{"groupID", 2}, {"name", "Pecivo"}});
    Insert("Source", {{"name", "Babičina kuharica"}});
    Insert("Source", {{"name", "Knjiga"}});
    Insert("Unit", {{"name", "g"}});
    Insert("Unit", {{"name", "žlica"}});
    for (const char* name : {"moka", "korenje", "krompir", "Čokolada"}) {
        Insert("Ingredient", {{"name", name}});
    }
    Insert("Recipe", {{"typeID", 1}, {"sourceID", 1}, {"title", "Goveja juha"}});
    Insert("Recipe", {{"typeID", 2}, {"title", "Korenčkova juha"}});
    Insert("Recipe", {{"typeID", 3}, {"sourceID", 2}, {"title", "čokoladna torta"}});
    Insert("Section", {{"instructions", "Skuhamo."}});
    Insert("Section", {{"title", "Testo"}, {"instructions", "Zamesimo."}});
    Insert("Section", {{"title", "Krema"}, {"instructions", "Stopimo ČOKOLADO."}});
    Insert("Section", {{"instructions", " "}});
    const QList<QList<int>> links{{1, 1, 1}, {3, 3, 2}, {3, 2, 1}, {2, 4, 1}};
    for (const QList<int>& link : links) {
        Insert("RecipeSection",
               {{"recipeID", link[0]}, {"sectionID", link[1]}, {"place", link[2]}});
    }
    const QList<QList<int>> lines{
        {1, 1, 1, 100}, {4, 2, 1, 500}, {4, 3, 1, 200}, {2, 1, 1, 300}, {3, 4, 2, 2}};
    for (const QList<int>& line : lines) {
        Insert("SectionIngredient", {{"sectionID", line[0]},
                                     {"ingredientID", line[1]},
                                     {"unitID", line[2]},
                                     {"amount", line[3]}});
    }
}

QStringList Rows(const QString& sql) {
    Recordset rs = modDatabase::GetRecordset(sql);
    QStringList rows;
    for (; !rs.Eof(); rs.MoveNext()) {
        QStringList fields;
        for (int i = 0; i < rs.FieldCount(); ++i) {
            const QVariant value = rs.Fields(i);
            fields << (value.isNull() ? QStringLiteral("NULL") : value.toString());
        }
        rows << fields.join(QLatin1Char('|'));
    }
    return rows;
}

}  // namespace TestDatabase
