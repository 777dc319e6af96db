#include "core/database/Transaction.h"

#include "core/AppError.h"
#include "core/database/SqlStatement.h"
#include "core/database/modDatabase.h"

namespace modDatabase {

Transaction::Transaction(Purpose purpose) {
    ErrorPath::PassOn("modDatabase:BeginTransaction", [&] {
        Opened();
        m_shared = Connection;
        m_connection = m_shared.get();
        Begin(purpose);
    });
}

Transaction::Transaction(Purpose purpose, DbConnection& connection) : m_connection(&connection) {
    ErrorPath::PassOn("modDatabase:BeginTransaction", [&] { Begin(purpose); });
}

void Transaction::Begin(Purpose purpose) {
    const bool server = m_connection->Kind() == ServerDatabase;
    if (purpose == Writing) {
        Execute(*m_connection,
                server ? QStringLiteral("START TRANSACTION") : QStringLiteral("BEGIN IMMEDIATE"));
    } else {
        Execute(*m_connection,
                server
                    ? QStringLiteral("START TRANSACTION ISOLATION LEVEL REPEATABLE READ, READ ONLY")
                    : QStringLiteral("BEGIN"));
    }
    m_open = true;
}

Transaction::~Transaction() {
    if (m_open && m_connection->State() == adStateOpen) {
        SqlStatement(*m_connection).Exec(QStringLiteral("ROLLBACK"));  // whatever it says
    }
}

void Transaction::LockRow(const QString& bracketedTable, const QString& keyColumn, qint32 key) {
    if (m_connection->Kind() == ServerDatabase) {
        Execute(*m_connection, QStringLiteral("SELECT %1 FROM %2 WHERE %1 = %3 FOR UPDATE;")
                                   .arg(keyColumn, bracketedTable)
                                   .arg(key));
    }
}

void Transaction::Commit() {
    ErrorPath::PassOn("modDatabase:CommitTransaction", [&] {
        Execute(*m_connection, QStringLiteral("COMMIT"));
        m_open = false;
    });
}

}  // namespace modDatabase
