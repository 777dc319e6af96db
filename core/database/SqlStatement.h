#pragma once

#include <QString>
#include <QVariant>
#include <QVariantList>
#include <memory>

#include "core/database/SqlSession.h"

namespace modDatabase {
class DbConnection;
}

// One statement on an open connection, in the database's own SQL (the program's SQL goes
// through DbConnection::Translate first). The text must hold exactly one statement: the server
// refuses a second one by its protocol, and SQLite's is refused before anything runs. Values
// go beside the text, for the markers $1, $2, ... in it.
class SqlStatement {
public:
    enum Rows { InMemory, Streamed };
    explicit SqlStatement(modDatabase::DbConnection& connection, Rows rows = InMemory);
    SqlStatement(SqlStatement&&) noexcept;
    SqlStatement& operator=(SqlStatement&&) noexcept;
    ~SqlStatement();

    bool Prepare(const QString& sql);
    bool Run(const QVariantList& values = {});
    // Prepares and runs.
    bool Exec(const QString& sql, const QVariantList& values = {});
    bool Next();
    QVariant Value(int column) const;
    // The value's text as the library gives it, valid until the next row; nullptr for NULL.
    const char* Text(int column, int& length) const;
    int ColumnCount() const;
    QString ColumnName(int column) const;
    const SqlFailure& Failure() const { return m_failure; }

private:
    std::unique_ptr<SqlCursor> m_cursor;
    SqlFailure m_failure;
    bool m_prepared = false;
};
