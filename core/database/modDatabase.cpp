#include "core/database/modDatabase.h"

#include <sqlite3.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QUrl>

#include "core/AppError.h"
#include "core/database/AccessFile.h"
#include "core/database/PlannerStatistics.h"
#include "core/database/PostgresSession.h"
#include "core/database/Schema.h"
#include "core/database/ServerKeywords.h"
#include "core/database/SqlDialect.h"
#include "core/database/SqlStatement.h"
#include "core/database/SqliteExtensions.h"
#include "core/database/SqliteSession.h"
#include "core/modGeneral.h"

namespace modDatabase {

std::shared_ptr<DbConnection> Connection;

namespace {

PasswordPrompt g_passwordPrompt = nullptr;

QString NotMorvena(const QString& name) {
    return QStringLiteral("%1 ni zbirka podatkov programa Morvena.").arg(name);
}

QString FromWindows(const QString& name) {
    return QStringLiteral(
               "%1 je zbirka podatkov programa Morvena za Windows (Access). Morvena jo odpre, ko "
               "jo pretvori v svojo zbirko.")
        .arg(name);
}

QString CannotRead(const QString& name, const QString& cause) {
    return QStringLiteral("Zbirke podatkov %1 ni mogoče odpreti ali prebrati: %2").arg(name, cause);
}

// Whether this process may change the file and make files beside it (a journal).
bool CanWrite(const QString& fileName) {
    return ::access(QFile::encodeName(fileName).constData(), W_OK) == 0 &&
           ::access(QFile::encodeName(QFileInfo(fileName).absolutePath()).constData(), W_OK) == 0;
}

// Runs a statement whose outcome does not matter (it only helps).
void TryRun(DbConnection& connection, const QString& sql) { SqlStatement(connection).Exec(sql); }

}  // namespace

DbConnection::DbConnection(int kind, QString connectionString)
    : m_kind(kind), m_connectionString(std::move(connectionString)) {
    // The shared connection goes when the application does, before the libraries' own state.
    static const bool releasedAtExit = [] {
        qAddPostRoutine([] { Connection.reset(); });
        return true;
    }();
    Q_UNUSED(releasedAtExit);
}

DbConnection::~DbConnection() { Close(); }

void DbConnection::Open() {
    m_lastError.clear();
    if (m_kind == FileDatabase) {
        OpenFile(ConnectionStringValue(m_connectionString, QStringLiteral("Data Source")),
                 Expect::MorvenaDatabase);
    } else if (m_kind == ServerDatabase) {
        OpenServer(Expect::MorvenaDatabase);
    } else {
        Fail(QStringLiteral("Neznana vrsta zbirke podatkov: %1").arg(m_kind));
    }
}

void DbConnection::OpenForReading() {
    m_readOnly = true;
    m_unchanged = true;
    Open();
}

void DbConnection::OpenToRead() {
    m_unchanged = true;
    Open();
}

void DbConnection::OpenEmpty() {
    m_lastError.clear();
    if (m_kind == FileDatabase) {
        OpenFile(ConnectionStringValue(m_connectionString, QStringLiteral("Data Source")),
                 Expect::EmptyDatabase);
    } else {
        OpenServer(Expect::EmptyDatabase);
    }
}

void DbConnection::OpenFile(const QString& fileName, Expect expect) {
    const bool exists = QFileInfo::exists(fileName);
    if (fileName.isEmpty() || (expect == Expect::MorvenaDatabase && !exists)) {
        Fail(QStringLiteral("Datoteka %1 ne obstaja.").arg(fileName));
        return;
    }
    if (expect == Expect::EmptyDatabase && exists) {
        Fail(QStringLiteral("Datoteka %1 že obstaja.").arg(fileName));
        return;
    }
    if (AccessFile::IsAccessFile(fileName)) {
        Fail(FromWindows(fileName));
        return;
    }
    const QString path = QFileInfo(fileName).absoluteFilePath();
    // A new file is made; an existing one is never made anew (one that vanished meanwhile is
    // not created). A file that cannot be written here (read-only media, a read-only folder, no
    // write rights) is opened for reading: writes then fail with the library's message. A file
    // left in write-ahead mode needs files beside it that cannot be made there; it is then read
    // as it stands.
    m_writable = expect == Expect::EmptyDatabase || (!m_readOnly && CanWrite(path));
    const QStringList modes = expect == Expect::EmptyDatabase ? QStringList{"mode=rwc"}
                              : m_writable                    ? QStringList{"mode=rw"}
                                           : QStringList{"mode=ro", "mode=ro&immutable=1"};
    for (const QString& mode : modes) {
        m_session.reset();
        QUrl url = QUrl::fromLocalFile(path);
        url.setQuery(mode);
        SqlFailure failure;
        std::shared_ptr<SqliteSession> session =
            SqliteSession::Open(url.toString(QUrl::FullyEncoded), failure);
        if (!session) {
            m_lastError = CannotRead(fileName, failure.text);
            continue;
        }
        SqliteExtensions::Register(session->Handle());
        m_session = session;
        m_lastError = Problem(expect, fileName);
        if (m_lastError.isEmpty()) {
            break;
        }
    }
    if (!m_lastError.isEmpty()) {
        Close();
        return;
    }
    // A database in use writes ahead into a log (and goes back to the plain journal when it is
    // closed); a database being created stays in the plain journal mode. Either way the file
    // as left also opens where it cannot be written. A database that is only read is left as
    // it is.
    if (m_unchanged) {
        return;
    }
    if (m_writable && expect == Expect::MorvenaDatabase) {
        TryRun(*this, QStringLiteral("PRAGMA journal_mode=WAL"));
        TryRun(*this, QStringLiteral("PRAGMA synchronous=FULL"));
        PlannerStatistics::Keep(SqliteHandle());
    }
    // A connection that lives long keeps more pages at hand. A short read (OpenToRead) does
    // better with SQLite's small default: the memory of a large cache is new to the process,
    // and filling it costs a page fault for every page read.
    TryRun(*this, QStringLiteral("PRAGMA cache_size=-65536"));
}

void DbConnection::OpenServer(Expect expect) {
    const QString server = ConnectionStringValue(m_connectionString, QStringLiteral("Server"));
    const QString database = ConnectionStringValue(m_connectionString, QStringLiteral("Database"));
    const QString user = ConnectionStringValue(m_connectionString, QStringLiteral("User ID"));
    const QString password = ConnectionStringValue(m_connectionString, QStringLiteral("Password"));
    QList<QPair<QString, QString>> keywords = ServerKeywords(m_connectionString);
    SqlFailure failure;
    bool needsPassword = false;
    std::shared_ptr<PostgresSession> session =
        PostgresSession::Open(keywords, failure, needsPassword);
    if (!session && needsPassword && password.isEmpty() && g_passwordPrompt) {
        const QString who = (user.isEmpty() ? QString() : user + QLatin1Char('@')) + server +
                            QLatin1Char('/') + database;
        if (const std::optional<QString> typed = g_passwordPrompt(who)) {
            keywords.append({QStringLiteral("password"), *typed});
            session = PostgresSession::Open(keywords, failure, needsPassword);
        }
    }
    if (!session) {
        Fail(CannotRead(database, failure.text));
        return;
    }
    m_serverKeywords = keywords;
    if (StartServerSession(session, database)) {
        Fail(Problem(expect, database));
    }
}

bool DbConnection::StartServerSession(std::shared_ptr<PostgresSession> session,
                                      const QString& database) {
    const PostgresSession& server = *session;
    m_session = std::move(session);
    // A backslash in a literal is a plain character, whatever the server was told before.
    TryRun(*this, QStringLiteral("SET standard_conforming_strings = on"));
    if (server.Reported("standard_conforming_strings") != QLatin1String("on")) {
        Fail(CannotRead(database, QStringLiteral("standard_conforming_strings ni vključen.")));
        return false;
    }
    // A search's text criteria compare the lower case of every text in the Slovenian collation,
    // which the planner counts as nearly free: the rows that pass are few next to that work, so
    // handing them on from a parallel worker is made cheap. A common method text at 100,000
    // recipes is then searched by two processes (0.5-0.6 s instead of 0.75-0.85 s on two cores).
    TryRun(*this, QStringLiteral("SET parallel_tuple_cost = 0.01"));
    return true;
}

void DbConnection::OpenBeside(const DbConnection& other) {
    if (m_kind == FileDatabase) {
        OpenToRead();
        return;
    }
    m_lastError.clear();
    m_unchanged = true;
    SqlFailure failure;
    bool needsPassword = false;
    const QString database = ConnectionStringValue(m_connectionString, QStringLiteral("Database"));
    std::shared_ptr<PostgresSession> session =
        PostgresSession::Open(other.m_serverKeywords, failure, needsPassword);
    if (!session) {
        Fail(CannotRead(database, failure.text));
        return;
    }
    m_serverKeywords = other.m_serverKeywords;
    StartServerSession(session, database);
}

QString DbConnection::Problem(Expect expect, const QString& name) {
    SqlStatement query(*this);
    const QString sql = m_kind == FileDatabase
                            ? QStringLiteral("SELECT name FROM sqlite_master WHERE type = 'table'")
                            // The catalogue itself: the information schema's view of it
                            // takes the server a hundred times longer to answer.
                            : QStringLiteral(
                                  "SELECT relname FROM pg_catalog.pg_class "
                                  "WHERE relnamespace = pg_catalog.current_schema()::regnamespace "
                                  "AND relkind IN ('r', 'p', 'v', 'f')");
    QStringList present;
    if (!query.Exec(sql)) {
        // A file of another kind is no Morvena database; any other failure is one of reading.
        const bool foreign =
            m_kind == FileDatabase && (query.Failure().code & 0xff) == SQLITE_NOTADB;
        return foreign ? NotMorvena(name) : CannotRead(name, query.Failure().text);
    }
    while (query.Next()) {
        present << query.Value(0).toString().toLower();
    }
    if (expect == Expect::EmptyDatabase) {
        // Tables of other programs may share a server database; none of the program's own.
        for (const QString& table : Schema::TableNames()) {
            if (present.contains(table.toLower())) {
                return QStringLiteral("Zbirka podatkov %1 ni prazna.").arg(name);
            }
        }
        return QString();
    }
    for (const QString& table : Schema::TableNames()) {
        if (!present.contains(table.toLower())) {
            return NotMorvena(name);
        }
    }
    return QString();
}

void DbConnection::Fail(const QString& description) {
    if (description.isEmpty()) {
        return;
    }
    if (m_lastError.isEmpty()) {
        m_lastError = description;
    }
    Close();
}

void DbConnection::Close() {
    if (!m_session) {
        return;
    }
    if (m_kind == FileDatabase && m_session->IsOpen() && m_writable && !m_unchanged) {
        TryRun(*this, QStringLiteral("PRAGMA optimize"));  // keeps the statistics fresh
        // Back to the plain journal (when no one else has the file open), so that the file
        // opens for reading on read-only media too.
        TryRun(*this, QStringLiteral("PRAGMA journal_mode=DELETE"));
    }
    m_session.reset();
}

int DbConnection::State() const {
    return m_session && m_session->IsOpen() ? adStateOpen : adStateClosed;
}

QString DbConnection::DriverName() const {
    return m_kind == ServerDatabase ? QStringLiteral("PostgreSQL") : QStringLiteral("SQLite");
}

sqlite3* DbConnection::SqliteHandle() const {
    const auto* file = dynamic_cast<const SqliteSession*>(m_session.get());
    return file && State() == adStateOpen ? file->Handle() : nullptr;
}

QString DbConnection::Translate(const QString& sql) const {
    return m_kind == ServerDatabase ? SqlDialect::ToPostgres(sql) : sql;
}

void DbConnection::Run(const QString& sql) {
    SqlStatement statement(*this);
    if (!statement.Exec(Translate(sql))) {
        RaiseDriverError(*this, statement.Failure());
    }
}

void SetPasswordPrompt(PasswordPrompt prompt) { g_passwordPrompt = prompt; }

QString BuildConnectionString(int kind, const QString& server, const QString& database,
                              const QString& user, const QString& password) {
    const QString credentials = QStringLiteral(";User ID=") + user + QStringLiteral(";Password=") +
                                password + QStringLiteral(";");
    switch (kind) {
        case FileDatabase:
            return QStringLiteral("Provider=Microsoft.Jet.OLEDB.4.0;Data Source=") + database +
                   credentials;
        case ServerDatabase:
            return QStringLiteral("Server=") + server + QStringLiteral(";Database=") + database +
                   credentials;
        default:
            return QString();
    }
}

QString ConnectionStringValue(const QString& connectionString, const QString& key) {
    for (const QString& pair : connectionString.split(QLatin1Char(';'))) {
        const qsizetype equals = pair.indexOf(QLatin1Char('='));
        if (equals > 0 && pair.left(equals).trimmed().compare(key, Qt::CaseInsensitive) == 0) {
            return pair.mid(equals + 1);
        }
    }
    return QString();
}

namespace {

// A new shared connection with the program-wide settings values, opened by `open`.
void OpenShared(void (DbConnection::*open)()) {
    using namespace modGeneral;
    try {
        Connection = std::make_shared<DbConnection>(
            DatabaseType,
            BuildConnectionString(DatabaseType, ServerName, DatabaseName, Username, Password));
        ((*Connection).*open)();
    } catch (...) {
        // Opening reports nothing: the connection's state tells the outcome.
    }
}

}  // namespace

void OpenConnection() { OpenShared(&DbConnection::Open); }

void OpenConnectionToRead() { OpenShared(&DbConnection::OpenToRead); }

std::shared_ptr<DbConnection> OpenReadingPartner() {
    if (!Connection || Connection->State() != adStateOpen ||
        Connection->Session()->InTransaction()) {
        return nullptr;
    }
    auto partner =
        std::make_shared<DbConnection>(Connection->Kind(), Connection->ConnectionString());
    partner->OpenBeside(*Connection);
    return partner->State() == adStateOpen ? partner : nullptr;
}

void ReleaseCacheMemory() {
    if (sqlite3* shared = Connection ? Connection->SqliteHandle() : nullptr) {
        sqlite3_db_release_memory(shared);
    }
}

DbConnection& Opened() {
    if (!Connection || Connection->State() == adStateClosed) {
        OpenConnection();
    }
    return *Connection;
}

Recordset GetRecordset(const QString& sql) {
    return ErrorPath::PassOn("modDatabase:GetRecordset", [&] {
        Opened();
        return GetRecordsetFor(Connection, sql);
    });
}

Recordset GetRecordset(const QString& sql, const QString& typed) {
    return ErrorPath::PassOn("modDatabase:GetRecordset", [&] {
        if (typed.contains(QLatin1Char('\''))) {
            throw AppError(0, Opened().DriverName(),
                           QStringLiteral("Vneseno besedilo vsebuje apostrof, ki bi končal "
                                          "besedilo v poizvedbi; ni bilo izvedeno: %1")
                               .arg(typed));
        }
        Opened();
        return GetRecordsetFor(Connection, sql.arg(typed));
    });
}

RowReader ReadRows(const QString& sql) {
    return ErrorPath::PassOn("modDatabase:GetRecordset", [&] {
        Opened();
        return RowReader(Connection, sql);
    });
}

void DeleteRecordset(Recordset& rs) {
    ErrorPath::PassOn("modDatabase:DeleteRecordset", [&] {
        while (!rs.Eof()) {
            rs.Delete();
            rs.Update();
            rs.MoveNext();
        }
    });
}

void CloseConnection() {
    ErrorPath::PassOn("modDatabase:CloseConnection", [&] {
        if (Connection) {
            Connection->Close();
        }
        Connection.reset();
    });
}

void Execute(const QString& sql) { Execute(Opened(), sql); }

void Execute(DbConnection& connection, const QString& sql) {
    ErrorPath::PassOn("modDatabase:Execute", [&] { connection.Run(sql); });
}

void RaiseDriverError(const DbConnection& connection, const SqlFailure& failure) {
    throw AppError(failure.code, connection.DriverName(), failure.text);
}

QVariant StrToNull(const QString& text) { return text.isEmpty() ? QVariant() : QVariant(text); }

QString NullToStr(const QVariant& value) { return value.isNull() ? QString() : value.toString(); }

}  // namespace modDatabase
