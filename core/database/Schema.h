#pragma once

#include <QStringList>

namespace modDatabase {
class DbConnection;
}

// The nine tables of the recipe database, kept as SQL for both kinds of database.
namespace Schema {

// The tables' names as the program writes them.
const QStringList& TableNames();
// The schema's statements for a kind of database.
QStringList Statements(int kind);
// Creates the tables and indexes on an open, empty database.
void Create(modDatabase::DbConnection& connection);

}  // namespace Schema
