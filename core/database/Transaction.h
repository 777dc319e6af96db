#pragma once

#include <QString>
#include <memory>

namespace modDatabase {

class DbConnection;

// A transaction on the shared connection (or another one), rolled back when it ends without
// Commit (an error half-way). One for writing takes the write lock of a database file at once
// (another writer waits for it); one for reading sees the database as it was when it began.
class Transaction {
public:
    enum Purpose { Writing, Reading };
    explicit Transaction(Purpose purpose = Writing);
    Transaction(Purpose purpose, DbConnection& connection);
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    // Locks a row of a server database until the transaction ends (a file is locked whole).
    void LockRow(const QString& bracketedTable, const QString& keyColumn, qint32 key);
    void Commit();

private:
    void Begin(Purpose purpose);

    std::shared_ptr<DbConnection> m_shared;  // the shared connection, kept while in use
    DbConnection* m_connection = nullptr;
    bool m_open = false;
};

}  // namespace modDatabase
