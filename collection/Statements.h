#pragma once

#include <QString>

#include "core/database/SqlStatement.h"

namespace modDatabase {
class DbConnection;
}

// Statements that the collection tools run on a connection of their own, not the shared one.
namespace Statements {

// Runs one statement of the program's SQL on the connection, its rows to be read forward once;
// a failure raises the database library's error.
SqlStatement Run(modDatabase::DbConnection& connection, const QString& sql,
                 SqlStatement::Rows rows = SqlStatement::InMemory);

// The first value of every row of a statement's result; a row that cannot be read raises the
// library's error.
QVariantList FirstColumn(modDatabase::DbConnection& connection, const QString& sql);

}  // namespace Statements
