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

SqlStatement& Prepared::Started(const QString& sql, const QVariantList& values) {
    auto found = m_statements.find(sql);
    if (found == m_statements.end()) {
        SqlStatement statement(m_connection);
        if (!statement.Prepare(m_connection.Translate(sql))) {
            modDatabase::RaiseDriverError(m_connection, statement.Failure());
        }
        found = m_statements.emplace(sql, std::move(statement)).first;
    }
    if (!found->second.Run(values)) {
        modDatabase::RaiseDriverError(m_connection, found->second.Failure());
    }
    return found->second;
}

void Prepared::Run(const QString& sql, const QVariantList& values) { Started(sql, values); }

QVariant Prepared::Value(const QString& sql, const QVariantList& values) {
    SqlStatement& statement = Started(sql, values);
    const QVariant value = statement.Next() ? statement.Value(0) : QVariant();
    while (statement.Next()) {
        // read to its end: a statement left on a row would keep the transaction from ending
    }
    return value;
}

}  // namespace Exchange::CollectionSql
