#pragma once

#include <QByteArray>
#include <QString>
#include <functional>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

namespace Bench {

// The floor of a measurement: the same SQL text run through the sqlite3 C API on a handle of its
// own, every row read as cheaply as the program could (integers as numbers, texts decoded once
// into a QString). With the program's functions it compares names and LIKE as the program does
// (Slovenian, case-blind for every letter); without them SQLite's built-in NOCASE and LIKE run,
// which ignore the case of ASCII letters only and sort by code point.
class SqliteFloor {
public:
    SqliteFloor(const QString& fileName, bool programFunctions);
    ~SqliteFloor();
    SqliteFloor(const SqliteFloor&) = delete;
    SqliteFloor& operator=(const SqliteFloor&) = delete;

    const QString& Error() const { return m_error; }
    // Runs one statement, calling `row` for every row; returns the number of rows (-1 after an
    // error, which Error() tells).
    long long Run(const QByteArray& sql, const std::function<void(sqlite3_stmt*)>& row);
    // Runs a statement and reads every column of every row into QStrings and numbers.
    long long ReadAll(const QByteArray& sql);

    static QString Text(sqlite3_stmt* statement, int column);
    static long long Integer(sqlite3_stmt* statement, int column);

private:
    sqlite3* m_db = nullptr;
    QString m_error;
};

// The catalogue as the recipe tree and the section picker read it, through the floor: the
// groups, each group's subgroups and, with `withRecipes`, each subgroup's recipes, every row
// read into a key and a QString; `recipes` (when given) receives the recipe keys in tree order.
// Returns the rows read.
long long FloorCatalogue(SqliteFloor& floor, bool withRecipes,
                         std::vector<long long>* recipes = nullptr);

}  // namespace Bench
