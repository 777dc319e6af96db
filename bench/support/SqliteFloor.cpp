#include "bench/support/SqliteFloor.h"

#include <sqlite3.h>

#include <QFile>

#include "core/database/SqliteExtensions.h"

namespace Bench {

SqliteFloor::SqliteFloor(const QString& fileName, bool programFunctions) {
    const QByteArray path = QFile::encodeName(fileName);
    if (sqlite3_open_v2(path.constData(), &m_db, SQLITE_OPEN_READWRITE, nullptr) != SQLITE_OK) {
        m_error = QString::fromUtf8(sqlite3_errmsg(m_db));
        return;
    }
    if (programFunctions) {
        SqliteExtensions::Register(m_db);
    }
    // the same page cache as the program's own connections
    sqlite3_exec(m_db, "PRAGMA cache_size=-65536", nullptr, nullptr, nullptr);
}

SqliteFloor::~SqliteFloor() { sqlite3_close_v2(m_db); }

long long SqliteFloor::Run(const QByteArray& sql, const std::function<void(sqlite3_stmt*)>& row) {
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(m_db, sql.constData(), static_cast<int>(sql.size()), &statement,
                           nullptr) != SQLITE_OK) {
        m_error = QString::fromUtf8(sqlite3_errmsg(m_db));
        sqlite3_finalize(statement);
        return -1;
    }
    long long rows = 0;
    int result = SQLITE_DONE;
    while ((result = sqlite3_step(statement)) == SQLITE_ROW) {
        row(statement);
        ++rows;
    }
    if (result != SQLITE_DONE) {
        m_error = QString::fromUtf8(sqlite3_errmsg(m_db));
        rows = -1;
    }
    sqlite3_finalize(statement);
    return rows;
}

long long SqliteFloor::ReadAll(const QByteArray& sql) {
    return Run(sql, [](sqlite3_stmt* statement) {
        const int columns = sqlite3_column_count(statement);
        for (int i = 0; i < columns; ++i) {
            if (sqlite3_column_type(statement, i) == SQLITE_INTEGER) {
                static_cast<void>(Integer(statement, i));
            } else {
                static_cast<void>(Text(statement, i));
            }
        }
    });
}

QString SqliteFloor::Text(sqlite3_stmt* statement, int column) {
    return QString::fromUtf8(reinterpret_cast<const char*>(sqlite3_column_text(statement, column)),
                             sqlite3_column_bytes(statement, column));
}

long long SqliteFloor::Integer(sqlite3_stmt* statement, int column) {
    return sqlite3_column_int64(statement, column);
}

long long FloorCatalogue(SqliteFloor& floor, bool withRecipes, std::vector<long long>* recipes) {
    long long rows = 0;
    std::vector<long long> groups;
    rows += floor.Run("SELECT * FROM [Group] ORDER BY name;", [&](sqlite3_stmt* s) {
        groups.push_back(SqliteFloor::Integer(s, 0));
        static_cast<void>(SqliteFloor::Text(s, 1));
    });
    for (const long long group : groups) {
        std::vector<long long> types;
        rows += floor.Run(
            "SELECT * FROM [Type] WHERE groupID = " + QByteArray::number(group) + " ORDER BY name;",
            [&](sqlite3_stmt* s) {
                types.push_back(SqliteFloor::Integer(s, 0));
                static_cast<void>(SqliteFloor::Text(s, 2));
            });
        for (const long long type : withRecipes ? types : std::vector<long long>()) {
            rows += floor.Run("SELECT * FROM [Recipe] WHERE typeID = " + QByteArray::number(type) +
                                  " ORDER BY title;",
                              [&](sqlite3_stmt* s) {
                                  if (recipes) {
                                      recipes->push_back(SqliteFloor::Integer(s, 0));
                                  }
                                  static_cast<void>(SqliteFloor::Text(s, 3));
                              });
        }
    }
    return rows;
}

}  // namespace Bench
