#pragma once

#include <QList>
#include <QPair>
#include <QString>

#include "core/database/SqlSession.h"

struct pg_conn;
class PostgresCursor;

// A database on a PostgreSQL server through libpq. Every statement goes through the extended
// query protocol, which carries exactly one statement by the server's own rule.
class PostgresSession : public SqlSession {
public:
    // Connects with libpq's keywords and values (host, port, dbname, user, password, ...); a
    // keyword left out is taken from libpq's own places (PGPASSWORD, ~/.pgpass, a service
    // file). nullptr and libpq's message in `failure` when it cannot connect; `needsPassword`
    // then tells whether the server asked for a password that libpq did not find.
    static std::shared_ptr<PostgresSession> Open(const QList<QPair<QString, QString>>& keywords,
                                                 SqlFailure& failure, bool& needsPassword);
    ~PostgresSession() override;

    bool IsOpen() const override;
    bool InTransaction() const override;
    std::unique_ptr<SqlCursor> NewCursor(bool streamed) override;
    // A setting the server reports to its clients ("standard_conforming_strings").
    QString Reported(const char* setting) const;

private:
    friend class PostgresCursor;
    explicit PostgresSession(pg_conn* connection) : m_connection(connection) {}
    // Reads to its end what a statement still has on its way, so that the next one can be sent.
    void Settle();

    pg_conn* m_connection;
    PostgresCursor* m_streaming = nullptr;  // whose rows are still on their way
    quint64 m_parses = 0;                   // how often the unnamed statement was replaced
};
