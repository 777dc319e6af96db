#include "collection/Statements.h"

#include "core/database/modDatabase.h"

namespace Statements {

SqlStatement Run(modDatabase::DbConnection& connection, const QString& sql,
                 SqlStatement::Rows rows) {
    SqlStatement query(connection, rows);
    if (!query.Exec(connection.Translate(sql))) {
        modDatabase::RaiseDriverError(connection, query.Failure());
    }
    return query;
}

QVariantList FirstColumn(modDatabase::DbConnection& connection, const QString& sql) {
    SqlStatement query = Run(connection, sql);
    QVariantList values;
    while (query.Next()) {
        values << query.Value(0);
    }
    if (!query.Failure().text.isEmpty()) {
        modDatabase::RaiseDriverError(connection, query.Failure());
    }
    return values;
}

}  // namespace Statements
