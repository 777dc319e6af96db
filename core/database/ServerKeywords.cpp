#include "core/database/ServerKeywords.h"

#include <algorithm>

#include "core/database/modDatabase.h"

namespace modDatabase {

QList<QPair<QString, QString>> ServerKeywords(const QString& connectionString) {
    const QString server = ConnectionStringValue(connectionString, QStringLiteral("Server"));
    const QString user = ConnectionStringValue(connectionString, QStringLiteral("User ID"));
    const QString password = ConnectionStringValue(connectionString, QStringLiteral("Password"));
    QList<QPair<QString, QString>> keywords;
    // "host", "host:port" or "host,port"
    const qsizetype separator =
        std::max(server.lastIndexOf(QLatin1Char(':')), server.lastIndexOf(QLatin1Char(',')));
    if (!server.isEmpty()) {
        keywords.append({QStringLiteral("host"), separator > 0 ? server.left(separator) : server});
    }
    if (separator > 0) {
        keywords.append({QStringLiteral("port"), server.mid(separator + 1)});
    }
    keywords.append({QStringLiteral("dbname"),
                     ConnectionStringValue(connectionString, QStringLiteral("Database"))});
    if (!user.isEmpty()) {
        keywords.append({QStringLiteral("user"), user});
    }
    // Without a password of its own, libpq looks in its own places: PGPASSWORD, ~/.pgpass.
    if (!password.isEmpty()) {
        keywords.append({QStringLiteral("password"), password});
    }
    // A server that is lost while the program waits for it is noticed within 25 seconds: an
    // idle connection is probed after 10 s of silence every 5 s, and data that the server does
    // not acknowledge for 25 s ends the connection; the statement then fails on the error path.
    keywords.append({{QStringLiteral("connect_timeout"), QStringLiteral("15")},
                     {QStringLiteral("keepalives"), QStringLiteral("1")},
                     {QStringLiteral("keepalives_idle"), QStringLiteral("10")},
                     {QStringLiteral("keepalives_interval"), QStringLiteral("5")},
                     {QStringLiteral("keepalives_count"), QStringLiteral("3")},
                     {QStringLiteral("tcp_user_timeout"), QStringLiteral("25000")},
                     {QStringLiteral("client_encoding"), QStringLiteral("UTF8")},
                     {QStringLiteral("application_name"), QStringLiteral("Morvena")}});
    return keywords;
}

}  // namespace modDatabase
