#pragma once

#include <QByteArray>
#include <QString>
#include <QVariant>
#include <QVariantList>
#include <atomic>
#include <memory>

// What a database library said when a statement failed: its code (SQLite's extended result
// code, or PostgreSQL's SQLSTATE where it is a number) and its message.
struct SqlFailure {
    qint64 code = 0;
    QString text;
};

// One statement as the database library runs it: prepared once from a text that holds exactly
// one statement, run with values for its markers $1, $2, ..., its rows read forward once.
class SqlCursor {
public:
    virtual ~SqlCursor() = default;
    virtual bool Prepare(const QByteArray& sql, SqlFailure& failure) = 0;
    // Runs the prepared statement; rows are then read with Next.
    virtual bool Run(const QVariantList& values, SqlFailure& failure) = 0;
    // Moves to the next row; false at the end, or on a failure (then `failure` says so).
    virtual bool Next(SqlFailure& failure) = 0;
    virtual QVariant Value(int column) const = 0;
    // The value's text as the library gives it (UTF-8; an integer as its digits) without making
    // a value of it; valid until the cursor moves. nullptr for NULL.
    virtual const char* Text(int column, int& length) const = 0;
    virtual int ColumnCount() const = 0;
    virtual QString ColumnName(int column) const = 0;
};

// An open connection of one database library.
class SqlSession : public std::enable_shared_from_this<SqlSession> {
public:
    virtual ~SqlSession() = default;
    // False once the connection is lost or closed.
    virtual bool IsOpen() const = 0;
    // True between the start of a transaction and its end.
    virtual bool InTransaction() const = 0;
    // A statement whose rows are read into memory when it runs (`streamed` false), or come one
    // at a time from the database as they are read (for tables read whole). The session stays
    // open while one of its statements is left.
    virtual std::unique_ptr<SqlCursor> NewCursor(bool streamed) = 0;
    // A number that no other session of this process has had.
    quint64 Serial() const { return m_serial; }

private:
    static inline std::atomic<quint64> s_sessions{0};
    const quint64 m_serial = ++s_sessions;
};
