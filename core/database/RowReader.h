#pragma once

#include <QByteArray>
#include <QString>
#include <memory>

namespace modDatabase {
class DbConnection;
}
class SqlStatement;

// The rows of one SELECT, read forward once, each straight from the database library as the
// caller comes to it: for work that goes through every row once in order and keeps none (a
// result set holds all rows as values). Fields are found by name without regard to letter case,
// as in a result set, and read as the library's UTF-8 text.
class RowReader {
public:
    // Runs the statement (the program's SQL) on an open connection; errors carry the driver's
    // name as source.
    RowReader(std::shared_ptr<modDatabase::DbConnection> connection, const QString& sql);
    RowReader(RowReader&&) noexcept;
    RowReader& operator=(RowReader&&) noexcept;
    ~RowReader();

    // The place of a field; an error when the result has no field of that name.
    int Field(const QString& name) const;
    // Moves to the next row (the first one on the first call); false after the last.
    bool Next();
    // Appends a field of the current row as text: an integer as its digits, a text as it is; a
    // NULL is an error ("Invalid use of Null"), as a result set's text of a field.
    void AppendText(int field, QByteArray& to) const;
    // A field of the current row as a whole number (0 for NULL or for a text that is none).
    qint64 Number(int field) const;

private:
    std::shared_ptr<modDatabase::DbConnection> m_connection;
    std::unique_ptr<SqlStatement> m_statement;
};
