#pragma once

#include <QSqlQuery>
#include <QString>

namespace modDatabase {
class DbConnection;
}

// Statements that the collection tools run on a connection of their own, not the shared one.
namespace Statements {

// Runs one statement of the program's SQL on the connection, its rows to be read forward once;
// a failure raises the database library's error.
QSqlQuery Run(modDatabase::DbConnection& connection, const QString& sql);

}  // namespace Statements
