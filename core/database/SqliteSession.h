#pragma once

#include "core/database/SqlSession.h"

struct sqlite3;

// A database file through SQLite's own interface.
class SqliteSession : public SqlSession {
public:
    // Opens the file a "file:" URI names (its mode among the URI's parameters); nullptr and the
    // library's message in `failure` when it cannot be opened.
    static std::shared_ptr<SqliteSession> Open(const QString& uri, SqlFailure& failure);
    ~SqliteSession() override;

    bool IsOpen() const override { return m_db != nullptr; }
    bool InTransaction() const override;
    std::unique_ptr<SqlCursor> NewCursor(bool streamed) override;
    sqlite3* Handle() const { return m_db; }

private:
    explicit SqliteSession(sqlite3* db) : m_db(db) {}
    sqlite3* m_db;
};
