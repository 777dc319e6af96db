#include "collection/Statements.h"

#include "core/database/modDatabase.h"

namespace Statements {

QSqlQuery Run(modDatabase::DbConnection& connection, const QString& sql) {
    QSqlQuery query(connection.Database());
    query.setForwardOnly(true);
    if (!query.exec(connection.Translate(sql))) {
        modDatabase::RaiseDriverError(connection, query.lastError());
    }
    return query;
}

}  // namespace Statements
