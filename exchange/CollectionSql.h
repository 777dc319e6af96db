#pragma once

#include <QString>
#include <QVariant>
#include <QVariantList>
#include <functional>

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

}  // namespace Exchange::CollectionSql
