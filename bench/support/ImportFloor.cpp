#include "bench/support/ImportFloor.h"

#include <libpq-fe.h>
#include <sqlite3.h>

#include <QByteArray>
#include <QFile>
#include <QHash>
#include <QRegularExpression>
#include <cstdio>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace Bench::ImportFloor {
namespace {

// A value as its text; a null QByteArray is NULL.
using Value = QByteArray;
using Values = std::vector<Value>;

struct Section {
    Values row;  // title, instructions
    Value place;
    std::vector<Values> lines;  // ingredientID, unitID, amount
};

struct Recipe {
    Values row;  // typeID, sourceID, title
    std::vector<Section> sections;
};

// A lookup list's rows with their keys, and the statement that writes one.
struct Lookup {
    const char* insert;
    std::vector<Values> rows;
};

struct Rows {
    std::vector<Lookup> lookups;
    std::vector<Recipe> recipes;
};

// The statements of a recipe; the key of the new row, where one is needed.
struct Statement {
    const char* sql;
    const char* key;
};
const Statement RecipeRow{"INSERT INTO [Recipe] (typeID, sourceID, title) VALUES (?1, ?2, ?3)",
                          "recipeID"};
const Statement SectionRow{"INSERT INTO [Section] (title, instructions) VALUES (?1, ?2)",
                           "sectionID"};
const Statement RecipeSectionRow{
    "INSERT INTO [RecipeSection] (recipeID, sectionID, place) VALUES (?1, ?2, ?3)", nullptr};
const Statement LineRow{
    "INSERT INTO [SectionIngredient] (sectionID, ingredientID, unitID, "
    "amount) VALUES (?1, ?2, ?3, ?4)",
    nullptr};

void Fail(const QString& what) { std::fprintf(stderr, "%s\n", qPrintable(what)); }

// Runs a query on the source, handing each row's values as texts to `row`.
bool Each(sqlite3* db, const char* sql, const std::function<void(const Values&)>& row) {
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(db, sql, -1, &statement, nullptr) != SQLITE_OK) {
        Fail(QString::fromUtf8(sqlite3_errmsg(db)));
        return false;
    }
    Values values(static_cast<size_t>(sqlite3_column_count(statement)));
    int result = SQLITE_DONE;
    while ((result = sqlite3_step(statement)) == SQLITE_ROW) {
        for (int i = 0; i < static_cast<int>(values.size()); ++i) {
            const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, i));
            values[size_t(i)] = sqlite3_column_type(statement, i) == SQLITE_NULL
                                    ? Value()
                                    : Value(text, sqlite3_column_bytes(statement, i));
        }
        row(values);
    }
    sqlite3_finalize(statement);
    return result == SQLITE_DONE;
}

bool Read(const QString& fileName, Rows& rows) {
    sqlite3* db = nullptr;
    const QByteArray path = QFile::encodeName(fileName);
    if (sqlite3_open_v2(path.constData(), &db, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK) {
        Fail(QStringLiteral("cannot open %1").arg(fileName));
        sqlite3_close(db);
        return false;
    }
    const std::vector<std::pair<const char*, const char*>> lookups{
        {"SELECT groupID, name FROM [Group]",
         "INSERT INTO [Group] (groupID, name) VALUES (?1, ?2)"},
        {"SELECT typeID, groupID, name FROM [Type]",
         "INSERT INTO [Type] (typeID, groupID, name) VALUES (?1, ?2, ?3)"},
        {"SELECT sourceID, name FROM [Source]",
         "INSERT INTO [Source] (sourceID, name) VALUES (?1, ?2)"},
        {"SELECT unitID, name FROM [Unit]", "INSERT INTO [Unit] (unitID, name) VALUES (?1, ?2)"},
        {"SELECT ingredientID, name FROM [Ingredient]",
         "INSERT INTO [Ingredient] (ingredientID, name) VALUES (?1, ?2)"}};
    bool read = true;
    for (const auto& [select, insert] : lookups) {
        Lookup& lookup = rows.lookups.emplace_back(Lookup{insert, {}});
        read = read && Each(db, select, [&](const Values& row) { lookup.rows.push_back(row); });
    }
    QHash<QByteArray, size_t> recipeAt;
    QHash<QByteArray, std::pair<size_t, size_t>> sectionAt;
    read = read && Each(db,
                        "SELECT recipeID, typeID, sourceID, title FROM [Recipe] ORDER BY "
                        "recipeID",
                        [&](const Values& row) {
                            recipeAt.insert(row[0], rows.recipes.size());
                            rows.recipes.push_back({{row[1], row[2], row[3]}, {}});
                        });
    read =
        read && Each(db,
                     "SELECT rs.recipeID, rs.sectionID, rs.place, s.title, "
                     "s.instructions FROM [RecipeSection] rs INNER JOIN [Section] s ON "
                     "s.sectionID = rs.sectionID ORDER BY rs.recipeID, rs.place",
                     [&](const Values& row) {
                         Recipe& recipe = rows.recipes[recipeAt.value(row[0])];
                         sectionAt.insert(row[1], {recipeAt.value(row[0]), recipe.sections.size()});
                         recipe.sections.push_back({{row[3], row[4]}, row[2], {}});
                     });
    read =
        read &&
        Each(db,
             "SELECT sectionID, ingredientID, unitID, amount FROM "
             "[SectionIngredient] ORDER BY sectionIngredientID",
             [&](const Values& row) {
                 const auto [recipe, section] = sectionAt.value(row[0]);
                 rows.recipes[recipe].sections[section].lines.push_back({row[1], row[2], row[3]});
             });
    sqlite3_close(db);
    return read;
}

// Where the rows go.
class Target {
public:
    virtual ~Target() = default;
    virtual bool Exec(const char* sql) = 0;
    // Writes a row; its new key when the statement names one, else 0; -1 after a failure.
    virtual qint64 Insert(const Statement& statement, const Values& values) = 0;
};

class SqliteTarget : public Target {
public:
    SqliteTarget(const QString& fileName, bool synced) {
        const QByteArray path = QFile::encodeName(fileName);
        m_open =
            sqlite3_open_v2(path.constData(), &m_db, SQLITE_OPEN_READWRITE, nullptr) == SQLITE_OK;
        m_open = m_open && Exec("PRAGMA journal_mode=WAL") &&
                 Exec(synced ? "PRAGMA synchronous=NORMAL" : "PRAGMA synchronous=OFF") &&
                 Exec("PRAGMA wal_autocheckpoint=16384") && Exec("PRAGMA cache_size=-65536");
    }
    ~SqliteTarget() override {
        for (const auto& [sql, statement] : m_statements) {
            sqlite3_finalize(statement);
        }
        sqlite3_close(m_db);
    }

    bool Open() const { return m_open; }

    bool Exec(const char* sql) override {
        if (sqlite3_exec(m_db, sql, nullptr, nullptr, nullptr) == SQLITE_OK) {
            return true;
        }
        Fail(QStringLiteral("%1: %2").arg(QLatin1String(sql), sqlite3_errmsg(m_db)));
        return false;
    }

    qint64 Insert(const Statement& statement, const Values& values) override {
        sqlite3_stmt*& prepared = m_statements[statement.sql];
        if (!prepared && sqlite3_prepare_v2(m_db, statement.sql, -1, &prepared, nullptr) != 0) {
            Fail(QString::fromUtf8(sqlite3_errmsg(m_db)));
            return -1;
        }
        sqlite3_reset(prepared);
        for (int i = 0; i < static_cast<int>(values.size()); ++i) {
            const Value& value = values[size_t(i)];
            if (value.isNull()) {
                sqlite3_bind_null(prepared, i + 1);
            } else {
                sqlite3_bind_text(prepared, i + 1, value.constData(), int(value.size()),
                                  SQLITE_STATIC);
            }
        }
        if (sqlite3_step(prepared) != SQLITE_DONE) {
            Fail(QString::fromUtf8(sqlite3_errmsg(m_db)));
            return -1;
        }
        return statement.key ? sqlite3_last_insert_rowid(m_db) : 0;
    }

private:
    sqlite3* m_db = nullptr;
    bool m_open = false;
    std::map<const char*, sqlite3_stmt*> m_statements;
};

// The server's statement: quoted lower-case table names, markers $1, $2, ..., the new key
// returned.
QByteArray ServerSql(const Statement& statement) {
    QString sql = QString::fromLatin1(statement.sql);
    static const QRegularExpression table(QStringLiteral("\\[(\\w+)\\]"));
    for (auto match = table.match(sql); match.hasMatch(); match = table.match(sql)) {
        sql.replace(match.capturedStart(), match.capturedLength(),
                    QLatin1Char('"') + match.captured(1).toLower() + QLatin1Char('"'));
    }
    sql.replace(QLatin1Char('?'), QLatin1Char('$'));
    if (statement.key) {
        sql += QStringLiteral(" RETURNING ") + QLatin1String(statement.key);
    }
    return sql.toUtf8();
}

class ServerTarget : public Target {
public:
    explicit ServerTarget(const QString& address)
        : m_connection(PQconnectdb(address.toUtf8().constData())) {}
    ~ServerTarget() override { PQfinish(m_connection); }

    bool Open() const {
        if (PQstatus(m_connection) != CONNECTION_OK) {
            Fail(QString::fromUtf8(PQerrorMessage(m_connection)));
        }
        return PQstatus(m_connection) == CONNECTION_OK;
    }

    bool Exec(const char* sql) override {
        return Done(PQexec(m_connection, ServerSql({sql, nullptr}).constData())) >= 0;
    }

    qint64 Insert(const Statement& statement, const Values& values) override {
        auto [at, added] = m_names.try_emplace(statement.sql, "s" + std::to_string(m_names.size()));
        if (added && Done(PQprepare(m_connection, at->second.c_str(),
                                    ServerSql(statement).constData(), 0, nullptr)) < 0) {
            return -1;
        }
        std::vector<const char*> texts;
        for (const Value& value : values) {
            texts.push_back(value.isNull() ? nullptr : value.constData());
        }
        return Done(PQexecPrepared(m_connection, at->second.c_str(), int(texts.size()),
                                   texts.data(), nullptr, nullptr, 0));
    }

private:
    // The first value of the result as a number (0 without one); -1 after a failure.
    qint64 Done(PGresult* result) {
        const ExecStatusType status = PQresultStatus(result);
        qint64 value = -1;
        if (status == PGRES_TUPLES_OK && PQntuples(result) > 0) {
            value = QByteArray(PQgetvalue(result, 0, 0)).toLongLong();
        } else if (status == PGRES_TUPLES_OK || status == PGRES_COMMAND_OK) {
            value = 0;
        } else {
            Fail(QString::fromUtf8(PQresultErrorMessage(result)));
        }
        PQclear(result);
        return value;
    }

    PGconn* m_connection;
    std::map<const char*, std::string> m_names;  // statement -> its prepared name
};

bool WriteRecipe(Target& target, const Recipe& recipe) {
    const qint64 recipeID = target.Insert(RecipeRow, recipe.row);
    bool written = recipeID > 0;
    for (const Section& section : recipe.sections) {
        const qint64 sectionID = written ? target.Insert(SectionRow, section.row) : -1;
        const Value recipeKey = QByteArray::number(recipeID);
        const Value sectionKey = QByteArray::number(sectionID);
        written = sectionID > 0 &&
                  target.Insert(RecipeSectionRow, {recipeKey, sectionKey, section.place}) == 0;
        for (const Values& line : section.lines) {
            written =
                written && target.Insert(LineRow, {sectionKey, line[0], line[1], line[2]}) == 0;
        }
    }
    return written;
}

bool WriteAll(Target& target, const Rows& rows, const char* begin) {
    bool written = target.Exec(begin);
    for (const Lookup& lookup : rows.lookups) {
        for (const Values& row : lookup.rows) {
            written = written && target.Insert({lookup.insert, nullptr}, row) == 0;
        }
    }
    written = written && target.Exec("COMMIT");
    for (const Recipe& recipe : rows.recipes) {
        written =
            written && target.Exec(begin) && WriteRecipe(target, recipe) && target.Exec("COMMIT");
    }
    return written;
}

}  // namespace

int Copy(const QString& from, const QString& into, bool synced) {
    Rows rows;
    if (!Read(from, rows)) {
        return 1;
    }
    if (into.startsWith(QLatin1String("postgresql://"))) {
        ServerTarget server(into);
        return server.Open() && WriteAll(server, rows, "BEGIN") ? 0 : 1;
    }
    SqliteTarget file(into, synced);
    return file.Open() && WriteAll(file, rows, "BEGIN IMMEDIATE") ? 0 : 1;
}

}  // namespace Bench::ImportFloor
