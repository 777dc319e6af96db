// collection/: whole collections, with no window: copying, checking and backing them up, the
// sample and the generated collections, and the rows of a recipe's parts that windows delete.
// May use: core/database, core.
#pragma once

#include <QByteArray>
#include <QString>
#include <functional>
#include <vector>

#include "core/database/DatabaseAddress.h"

namespace modDatabase {
class DbConnection;
}

// Copies a whole collection between two databases of either kind: every row of the nine
// tables with its key unchanged, in one transaction on the target, verified by counting and
// summing every table the same way on both sides before the copy is committed.
namespace CollectionCopy {

// What one table holds: its rows and a checksum over all their values in key order.
struct TableSummary {
    QString table;
    qint64 rows = 0;
    QByteArray checksum;  // hexadecimal
};

// Called now and then while a table is copied: its name, rows copied so far, rows in all.
using Progress = std::function<void(const QString& table, qint64 done, qint64 total)>;
// Asked between batches of rows; true stops the copy and leaves the target as it was.
using Cancelled = std::function<bool()>;

struct Hooks {
    Progress progress;
    Cancelled cancelled;
};

// The tables' summaries of an open database (read in one snapshot when `connection` is in a
// transaction).
std::vector<TableSummary> Summarize(modDatabase::DbConnection& connection);

struct Outcome {
    bool copied = false;
    QString message;                   // why nothing was copied
    std::vector<TableSummary> tables;  // the copied tables, equal on both sides
};

// Copies the collection at `source` into the empty database at `target` (a file that does not
// exist yet, or a database on a server without tables). When anything goes wrong the target is
// left as it was (a new file is removed again) and the outcome tells why.
Outcome Copy(const DatabaseAddress::Address& source, const DatabaseAddress::Address& target,
             const Hooks& hooks);

}  // namespace CollectionCopy
