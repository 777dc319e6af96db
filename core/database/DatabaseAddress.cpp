#include "core/database/DatabaseAddress.h"

#include <QMap>
#include <QUrl>

#include "core/database/modDatabase.h"
#include "core/modGeneral.h"

namespace DatabaseAddress {
namespace {

const QStringList Schemes{QStringLiteral("postgresql://"), QStringLiteral("postgres://")};

bool IsHexDigit(char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

// Percent-decoding as libpq does it: "%" and two hexadecimal digits, never "%00".
std::optional<QString> Decoded(const QString& text, QString& problem) {
    const QByteArray bytes = text.toUtf8();
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        if (bytes[i] != '%') {
            continue;
        }
        if (i + 2 >= bytes.size() || !IsHexDigit(bytes[i + 1]) || !IsHexDigit(bytes[i + 2])) {
            problem = QStringLiteral("Napačno kodiran znak v naslovu zbirke: %1").arg(text);
            return std::nullopt;
        }
        if (bytes[i + 1] == '0' && bytes[i + 2] == '0') {
            problem = QStringLiteral("Naslov zbirke ne sme vsebovati znaka %00.");
            return std::nullopt;
        }
    }
    return QString::fromUtf8(QByteArray::fromPercentEncoding(bytes));
}

// The parts of a URI before decoding: "user", "password", "host", "port", "dbname" and the
// query parameters.
std::optional<QMap<QString, QString>> Split(const QString& rest, QString& problem) {
    QMap<QString, QString> parts;
    qsizetype position = 0;
    const qsizetype at = rest.indexOf(QLatin1Char('@'));
    const qsizetype slash = rest.indexOf(QLatin1Char('/'));
    if (at >= 0 && (slash < 0 || at < slash)) {
        const QString credentials = rest.left(at);
        const qsizetype colon = credentials.indexOf(QLatin1Char(':'));
        parts.insert(QStringLiteral("user"), credentials.left(colon));
        if (colon >= 0) {
            parts.insert(QStringLiteral("password"), credentials.mid(colon + 1));
        }
        position = at + 1;
    }
    QString host;
    if (rest.mid(position).startsWith(QLatin1Char('['))) {
        const qsizetype close = rest.indexOf(QLatin1Char(']'), position);
        if (close < 0) {
            problem = QStringLiteral("V naslovu zbirke manjka ] za naslovom IPv6.");
            return std::nullopt;
        }
        host = rest.mid(position + 1, close - position - 1);
        position = close + 1;
    } else {
        while (position < rest.size() && !QStringLiteral(":/?,").contains(rest[position])) {
            host += rest[position++];
        }
    }
    parts.insert(QStringLiteral("host"), host);
    if (position < rest.size() && rest[position] == QLatin1Char(':')) {
        QString port;
        while (++position < rest.size() && !QStringLiteral("/?,").contains(rest[position])) {
            port += rest[position];
        }
        parts.insert(QStringLiteral("port"), port);
    }
    if (position < rest.size() && rest[position] == QLatin1Char(',')) {
        problem = QStringLiteral("Naslov zbirke sme imenovati le en strežnik.");
        return std::nullopt;
    }
    const qsizetype question = rest.indexOf(QLatin1Char('?'), position);
    if (position < rest.size() && rest[position] == QLatin1Char('/')) {
        parts.insert(QStringLiteral("dbname"),
                     rest.mid(position + 1, question < 0 ? -1 : question - position - 1));
    }
    if (question < 0) {
        return parts;
    }
    static const QStringList known{"host", "port", "user", "password", "dbname"};
    for (const QString& parameter : rest.mid(question + 1).split(QLatin1Char('&'))) {
        const qsizetype equals = parameter.indexOf(QLatin1Char('='));
        const QString key = parameter.left(equals);
        if (equals < 0 || !known.contains(key)) {
            problem = QStringLiteral("Parameter %1 v naslovu zbirke ni podprt.").arg(parameter);
            return std::nullopt;
        }
        parts.insert(key, parameter.mid(equals + 1));
    }
    return parts;
}

std::optional<Address> ParseUri(const QString& text, QString& problem) {
    QString rest = text;
    for (const QString& scheme : Schemes) {
        if (rest.startsWith(scheme)) {
            rest = rest.mid(scheme.size());
        }
    }
    const auto parts = Split(rest, problem);
    if (!parts) {
        return std::nullopt;
    }
    QMap<QString, QString> values;
    for (auto part = parts->cbegin(); part != parts->cend(); ++part) {
        const auto value = Decoded(part.value(), problem);
        if (!value) {
            return std::nullopt;
        }
        // The connection string keeps its values between semicolons.
        if (value->contains(QLatin1Char(';'))) {
            problem = QStringLiteral("Naslov zbirke ne sme vsebovati podpičja (;).");
            return std::nullopt;
        }
        values.insert(part.key(), *value);
    }
    const QString port = values.value(QStringLiteral("port"));
    bool numeric = false;
    const int portNumber = port.toInt(&numeric);
    if (!port.isEmpty() && (!numeric || portNumber < 1 || portNumber > 65535)) {
        problem = QStringLiteral("Napačna vrata v naslovu zbirke: %1").arg(port);
        return std::nullopt;
    }
    Address address;
    address.kind = modDatabase::ServerDatabase;
    const QString host = values.value(QStringLiteral("host"));
    // An IPv6 address ends in a colon and a group of its own: the port follows it always.
    const QString shownPort = port.isEmpty() && host.contains(QLatin1Char(':'))
                                  ? qEnvironmentVariable("PGPORT", QStringLiteral("5432"))
                                  : port;
    address.server = shownPort.isEmpty() ? host : host + QLatin1Char(':') + shownPort;
    address.database = values.value(QStringLiteral("dbname"));
    address.user = values.value(QStringLiteral("user"));
    address.password = values.value(QStringLiteral("password"));
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
