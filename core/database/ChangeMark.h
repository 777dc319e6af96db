#pragma once

#include <QByteArray>

namespace modDatabase {
class DbConnection;
}

// A mark of what a database holds at a moment, taken cheaply: two equal marks of one connection
// mean that nothing was committed to the database in between, by this program or any other. A
// database file counts its commits (data_version for the others' commits, the connection's own
// count of changed rows for its own); a server's mark is the snapshot of a new transaction, which
// names every transaction that has been committed. An empty mark is never equal to anything; a
// file's mark is empty inside a transaction, whose changes may still be rolled back.
namespace ChangeMark {

QByteArray Of(modDatabase::DbConnection& connection);

}  // namespace ChangeMark
