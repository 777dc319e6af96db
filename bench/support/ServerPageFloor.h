#pragma once

#include <QByteArray>
#include <QString>
#include <vector>

struct pg_conn;

namespace Bench {

// The floor of a recipe page on a PostgreSQL server: the statements that fetch what the page
// shows (the recipe, its sections in their places, the lines of each section in the order of
// their keys), sent through libpq on a connection of its own, every value decoded into a QString;
// no page is built.
class ServerPageFloor {
public:
    // `server` is "host:port".
    ServerPageFloor(const QString& server, const QString& database);
    ~ServerPageFloor();
    ServerPageFloor(const ServerPageFloor&) = delete;
    ServerPageFloor& operator=(const ServerPageFloor&) = delete;

    // Empty while every statement ran.
    QString Error() const;
    // The number of values of one recipe's page; -1 when a statement failed.
    long long Page(qint32 recipeID);

private:
    // Runs one statement and decodes its values; the second column of each row goes to `keys`
    // when given.
    long long Run(const QByteArray& sql, std::vector<QByteArray>* keys = nullptr);

    pg_conn* m_connection = nullptr;
    QString m_error;
};

}  // namespace Bench
