#include "exchange/CollectionSql.h"

#include "core/database/modDatabase.h"

namespace Exchange::CollectionSql {
namespace {

SqlStatement Started(modDatabase::DbConnection& connection, const QString& sql,
                     const QVariantList& values, SqlStatement::Rows rows) {
    SqlStatement statement(connection, rows);
    if (!statement.Exec(connection.Translate(sql), values)) {
        modDatabase::RaiseDriverError(connection, statement.Failure());
    }
    return statement;
}

}  // namespace

void Run(modDatabase::DbConnection& connection, const QString& sql, const QVariantList& values) {
    Started(connection, sql, values, SqlStatement::InMemory);
}

QVariant Value(modDatabase::DbConnection& connection, const QString& sql,
               const QVariantList& values) {
    SqlStatement statement = Started(connection, sql, values, SqlStatement::InMemory);
    return statement.Next() ? statement.Value(0) : QVariant();
}

void ForEachRow(modDatabase::DbConnection& connection, const QString& sql,
                const QVariantList& values, const std::function<void(const SqlStatement&)>& row) {
    SqlStatement statement = Started(connection, sql, values, SqlStatement::Streamed);
    while (statement.Next()) {
        row(statement);
    }
    if (!statement.Failure().text.isEmpty()) {
        modDatabase::RaiseDriverError(connection, statement.Failure());
    }
}

}  // namespace Exchange::CollectionSql
