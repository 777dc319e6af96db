#include "core/database/DatabaseAddress.h"

#include <libpq-fe.h>

#include <QMap>
#include <QUrl>

#include "core/database/modDatabase.h"
#include "core/modGeneral.h"

namespace DatabaseAddress {
namespace {

const QStringList Schemes{QStringLiteral("postgresql://"), QStringLiteral("postgres://")};

// What an address may set: one server, its database and who connects. Everything else comes
// from libpq's own places (environment variables, a service file, ~/.pgpass).
const QStringList Known{"host", "port", "dbname", "user", "password"};

// The values libpq reads from the URI, by keyword; std::nullopt and libpq's message when it
// cannot read it.
std::optional<QMap<QString, QString>> LibpqValues(const QString& text, QString& problem) {
    char* message = nullptr;
    PQconninfoOption* options = PQconninfoParse(text.toUtf8().constData(), &message);
    if (!options) {
        problem = QStringLiteral("Naslova zbirke ni mogoče prebrati: %1")
                      .arg(message ? QString::fromUtf8(message).trimmed()
                                   : QStringLiteral("ni dovolj pomnilnika"));
        PQfreemem(message);
        return std::nullopt;
    }
    QMap<QString, QString> values;
    for (const PQconninfoOption* option = options; option->keyword; ++option) {
        if (option->val) {
            values.insert(QString::fromUtf8(option->keyword), QString::fromUtf8(option->val));
        }
    }
    PQconninfoFree(options);
    return values;
}

// A reason why the values read make no address of the program, or an empty text.
QString Problem(const QMap<QString, QString>& values) {
    for (auto value = values.cbegin(); value != values.cend(); ++value) {
        if (!Known.contains(value.key())) {
            return QStringLiteral("Parameter %1=%2 v naslovu zbirke ni podprt.")
                .arg(value.key(), value.value());
        }
        // The connection string keeps its values between semicolons.
        if (value.value().contains(QLatin1Char(';'))) {
            return QStringLiteral("Naslov zbirke ne sme vsebovati podpičja (;).");
        }
    }
    if (values.value(QStringLiteral("host")).contains(QLatin1Char(',')) ||
        values.value(QStringLiteral("port")).contains(QLatin1Char(','))) {
        return QStringLiteral("Naslov zbirke sme imenovati le en strežnik.");
    }
    const QString port = values.value(QStringLiteral("port"));
    bool numeric = false;
    const int portNumber = port.toInt(&numeric);
    if (!port.isEmpty() && (!numeric || portNumber < 1 || portNumber > 65535)) {
        return QStringLiteral("Napačna vrata v naslovu zbirke: %1").arg(port);
    }
    return QString();
}

std::optional<Address> ParseUri(const QString& text, QString& problem) {
    const auto values = LibpqValues(text, problem);
    if (!values) {
        return std::nullopt;
    }
    problem = Problem(*values);
    if (!problem.isEmpty()) {
        return std::nullopt;
    }
    Address address;
    address.kind = modDatabase::ServerDatabase;
    const QString host = values->value(QStringLiteral("host"));
    const QString port = values->value(QStringLiteral("port"));
    // An IPv6 address ends in a colon and a group of its own: the port follows it always.
    const QString shownPort = port.isEmpty() && host.contains(QLatin1Char(':'))
                                  ? qEnvironmentVariable("PGPORT", QStringLiteral("5432"))
                                  : port;
    address.server = shownPort.isEmpty() ? host : host + QLatin1Char(':') + shownPort;
    address.database = values->value(QStringLiteral("dbname"));
    address.user = values->value(QStringLiteral("user"));
    address.password = values->value(QStringLiteral("password"));
    return address;
}

}  // namespace

bool IsUri(const QString& text) {
    return std::any_of(Schemes.cbegin(), Schemes.cend(),
                       [&](const QString& scheme) { return text.startsWith(scheme); });
}

std::optional<Address> Parse(const QString& text, QString& problem) {
    if (IsUri(text)) {
        return ParseUri(text, problem);
    }
    if (text.isEmpty()) {
        problem = QStringLiteral("Ime zbirke podatkov je prazno.");
        return std::nullopt;
    }
    Address address;
    address.kind = modDatabase::FileDatabase;
    address.database = text;
    return address;
}

QString Describe(const Address& address) {
    if (address.kind != modDatabase::ServerDatabase) {
        return address.database;
    }
    const QString user =
        address.user.isEmpty()
            ? QString()
            : QString::fromUtf8(QUrl::toPercentEncoding(address.user)) + QLatin1Char('@');
    QString server = address.server;
    const qsizetype colon = server.lastIndexOf(QLatin1Char(':'));
    if (server.count(QLatin1Char(':')) > 1) {
        server = QLatin1Char('[') + server.left(colon) + QLatin1Char(']') + server.mid(colon);
    }
    return QStringLiteral("postgresql://") + user + server + QLatin1Char('/') +
           QString::fromUtf8(QUrl::toPercentEncoding(address.database));
}

std::shared_ptr<modDatabase::DbConnection> Connection(const Address& address) {
    return std::make_shared<modDatabase::DbConnection>(
        address.kind,
        modDatabase::BuildConnectionString(address.kind, address.server, address.database,
                                           address.user, address.password));
}

void UseForProgram(const Address& address) {
    modGeneral::DatabaseType = address.kind;
    modGeneral::ServerName = address.server;
    modGeneral::DatabaseName = address.database;
    modGeneral::Username = address.user;
    modGeneral::Password = address.password;
}

}  // namespace DatabaseAddress
