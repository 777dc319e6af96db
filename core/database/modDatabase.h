// core/database/: the one connection (SQLite or PostgreSQL through their own libraries), result
// sets, the SQL dialect, SQLite functions and collation, planner statistics, addresses, schema.
// May use: core.
#pragma once

#include <QString>
#include <QVariant>
#include <memory>
#include <optional>

#include "core/database/Recordset.h"
#include "core/database/RowReader.h"
#include "core/database/SqlSession.h"
#include "core/database/Transaction.h"

struct sqlite3;
class PostgresSession;

// The program's single database connection and the operations through which every window
// reaches the tables: open, query into a result set, delete the rows of a result set, close,
// and the conversions between empty text and NULL. (A second connection only reads beside it for
// a while, on another thread: OpenReadingPartner.)
namespace modDatabase {

enum ObjectState { adStateClosed = 0, adStateOpen = 1 };
enum DatabaseKind { FileDatabase = 1, ServerDatabase = 2 };

// One connection: a database file (kind 1) or a database on a server (kind 2), described by a
// connection string. Closed when the last reference to it goes.
class DbConnection {
public:
    DbConnection(int kind, QString connectionString);
    ~DbConnection();
    DbConnection(const DbConnection&) = delete;
    DbConnection& operator=(const DbConnection&) = delete;

    // Opens the connection to a Morvena database; a failure (a missing file, a file or database
    // without the program's tables, one that cannot be opened or read) leaves it closed with
    // LastError() telling why. A file that cannot be written here is opened for reading.
    void Open();
    // Opens a database that is to receive the schema: a new file (it must not exist yet) or an
    // existing server database without the program's tables.
    void OpenEmpty();
    // Opens a Morvena database to be read and left exactly as it is: a file is opened read-only
    // and keeps its journal mode and statistics.
    void OpenForReading();
    // Opens a Morvena database for work that only reads it and leaves it as it was: nothing is
    // written on opening or closing (a file keeps its journal mode and planner statistics). A
    // file that may be written is opened for writing all the same, so that SQLite still rolls
    // back what a writer that stopped half-way left behind.
    void OpenToRead();
    // Opens a second connection to the database of an open one, to read beside it: a file as
    // OpenToRead opens it, a server with what the other connected with (a password typed then
    // is not asked for again).
    void OpenBeside(const DbConnection& other);
    void Close();
    int State() const;
    int Kind() const { return m_kind; }
    const QString& ConnectionString() const { return m_connectionString; }
    const QString& LastError() const { return m_lastError; }
    // The database library's name, the source of its errors.
    QString DriverName() const;
    // The open connection's library session (nullptr when closed).
    SqlSession* Session() const { return m_session.get(); }
    // The SQLite connection of an open file (nullptr for a server or a closed connection).
    sqlite3* SqliteHandle() const;
    // The program's SQL as this database speaks it.
    QString Translate(const QString& sql) const;
    // Runs one statement of the program's SQL that returns no rows; a failure raises the
    // library's error.
    void Run(const QString& sql);

private:
    enum class Expect { MorvenaDatabase, EmptyDatabase };
    void OpenFile(const QString& fileName, Expect expect);
    void OpenServer(Expect expect);
    // Sets up a server session that has just connected; false (and closed) when it cannot
    // serve the program.
    bool StartServerSession(std::shared_ptr<PostgresSession> session, const QString& database);
    // Empty when the open database is what `expect` wants; otherwise why it is not: not a
    // Morvena database, or a database that cannot be read (with the cause).
    QString Problem(Expect expect, const QString& name);
    // Closes the connection with the description (nothing happens for an empty one).
    void Fail(const QString& description);

    int m_kind;
    QString m_connectionString;
    std::shared_ptr<SqlSession> m_session;
    QList<QPair<QString, QString>> m_serverKeywords;  // what a server session connected with
    QString m_lastError;
    bool m_writable = true;    // a file opened for reading only is false
    bool m_readOnly = false;   // opened with OpenForReading
    bool m_unchanged = false;  // opened with OpenToRead or OpenForReading: nothing written
};

// Asks the person at the terminal for the password of a user on a server ("uporabnik@strežnik/
// zbirka"); std::nullopt when there is no one to ask.
using PasswordPrompt = std::optional<QString> (*)(const QString& who);
// Set by a program that may ask: a server that wants a password which neither the settings
// nor libpq's own places (PGPASSWORD, ~/.pgpass) give is then asked for it, once.
void SetPasswordPrompt(PasswordPrompt prompt);

// The shared connection; absent until the first attempt to open one.
extern std::shared_ptr<DbConnection> Connection;

// The connection string for a kind, with the values inserted as they are.
QString BuildConnectionString(int kind, const QString& server, const QString& database,
                              const QString& user, const QString& password);
// The value of one key of a connection string ("" when missing); keys ignore letter case.
QString ConnectionStringValue(const QString& connectionString, const QString& key);

// Replaces the shared connection by a new one opened with the program-wide settings values.
// Never fails: the connection's state tells the outcome.
void OpenConnection();
// The same for work that only reads the database (DbConnection::OpenToRead).
void OpenConnectionToRead();
// A second connection to the shared connection's database, to read beside it on another thread:
// nullptr while the shared connection is inside a transaction (the other would not see its
// changes), or when it cannot be opened.
std::shared_ptr<DbConnection> OpenReadingPartner();
// The shared connection to a file gives the memory of its page cache back (the cache fills again
// as it reads); nothing happens for a server or a closed connection.
void ReleaseCacheMemory();
// The shared connection, opened first with the current settings when it is closed.
DbConnection& Opened();
// Runs a SELECT into a result set; opens the shared connection first when it is closed.
Recordset GetRecordset(const QString& sql);
// The same for a statement that holds text the user typed between the quotes of a literal:
// `sql` marks its place with %1, and `typed` goes in as it stands (in one pass: a typed "%1" is
// text). A text holding the quote, which would end its literal, is refused with an error of the
// database library (its name as source) and never reaches the database. The server reads a
// backslash in a literal as a plain character (standard_conforming_strings, set at connect).
Recordset GetRecordset(const QString& sql, const QString& typed);
// Runs a SELECT whose rows are read once in order, straight from the database library; opens
// the shared connection first when it is closed. Errors leave as GetRecordset's.
RowReader ReadRows(const QString& sql);
// Deletes every row from the current one to the end.
void DeleteRecordset(Recordset& rs);
// Closes and releases the shared connection.
void CloseConnection();
// Runs a statement that returns no rows on the shared connection, or on another one.
void Execute(const QString& sql);
void Execute(DbConnection& connection, const QString& sql);

// Raises a failure of the database library: its name is the source, its message the description.
[[noreturn]] void RaiseDriverError(const DbConnection& connection, const SqlFailure& failure);

QVariant StrToNull(const QString& text);
QString NullToStr(const QVariant& value);

}  // namespace modDatabase
