#pragma once

#include <QList>
#include <QPair>
#include <QString>

namespace modDatabase {

// libpq's keywords and values for a server's connection string ("Server", "Database", "User ID",
// "Password"), with the program's own: how long to wait for a server, the encoding, the
// application's name.
QList<QPair<QString, QString>> ServerKeywords(const QString& connectionString);

}  // namespace modDatabase
