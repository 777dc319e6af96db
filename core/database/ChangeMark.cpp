#include "core/database/ChangeMark.h"

#include <sqlite3.h>

#include "core/database/SqlStatement.h"
#include "core/database/modDatabase.h"

namespace ChangeMark {
namespace {

QByteArray FileMark(sqlite3* db) {
    // What is read inside a transaction may yet be rolled back, which no count of changes shows.
    if (!sqlite3_get_autocommit(db)) {
        return QByteArray();
    }
    sqlite3_stmt* statement = nullptr;
    QByteArray mark;
    if (sqlite3_prepare_v2(db, "PRAGMA data_version;", -1, &statement, nullptr) == SQLITE_OK &&
        sqlite3_step(statement) == SQLITE_ROW) {
        mark = QByteArray::number(sqlite3_column_int64(statement, 0)) + ':' +
               QByteArray::number(sqlite3_total_changes64(db));
    }
    sqlite3_finalize(statement);
    return mark;
}

QByteArray ServerMark(modDatabase::DbConnection& connection) {
    SqlStatement statement(connection);
    if (!statement.Exec(QStringLiteral("SELECT pg_current_snapshot()::text")) ||
        !statement.Next()) {
        return QByteArray();
    }
    int length = 0;
    const char* snapshot = statement.Text(0, length);
    return QByteArray(snapshot, length);
}

}  // namespace

QByteArray Of(modDatabase::DbConnection& connection) {
    if (connection.State() != modDatabase::adStateOpen) {
        return QByteArray();
    }
    const QByteArray mark =
        connection.SqliteHandle() ? FileMark(connection.SqliteHandle()) : ServerMark(connection);
    return mark.isEmpty() ? mark : QByteArray::number(connection.Session()->Serial()) + '/' + mark;
}

}  // namespace ChangeMark
