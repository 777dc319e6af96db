#pragma once

#include <QString>
#include <QVariant>
#include <QVariantList>
#include <functional>
#include <map>

#include "core/database/SqlStatement.h"

namespace modDatabase {
class DbConnection;
}

// The import's and the export's own statements, in the program's SQL with values beside the
// text for the markers $1, $2, ...: nothing a file holds becomes part of a statement. A failure
// raises the database library's error.
namespace Exchange::CollectionSql {

// Runs a statement that returns no rows.
void Run(modDatabase::DbConnection& connection, const QString& sql, const QVariantList& values);
// The first value of the first row; NULL when there is no row.
QVariant Value(modDatabase::DbConnection& connection, const QString& sql,
               const QVariantList& values);
// Hands every row of the result to `row`, read forward as the database sends them.
void ForEachRow(modDatabase::DbConnection& connection, const QString& sql,
                const QVariantList& values, const std::function<void(const SqlStatement&)>& row);

// Statements prepared once and run again with other values: an import writes the same few
// statements for every recipe.
class Prepared {
public:
    explicit Prepared(modDatabase::DbConnection& connection) : m_connection(connection) {}
    // Runs a statement that returns no rows, prepared when first run. A failure raises the
    // library's error.
    void Run(const QString& sql, const QVariantList& values);
    // The same for a statement that returns a value: the first value of its first row (NULL
    // when there is no row).
    QVariant Value(const QString& sql, const QVariantList& values);

private:
    SqlStatement& Started(const QString& sql, const QVariantList& values);

    modDatabase::DbConnection& m_connection;
    std::map<QString, SqlStatement> m_statements;
};

}  // namespace Exchange::CollectionSql
