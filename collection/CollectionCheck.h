#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <vector>

namespace modDatabase {
class DbConnection;
}

// Finds what the program's own rules for the tables exclude, as a save interrupted half-way
// can leave it (saving has no transaction): sections no recipe uses, links and ingredient lines
// that point to a missing row, recipes without sections, recipes without their subgroup,
// subgroups without their group, gaps and repeats in the order of a recipe's sections. Repairs
// what no page and no window can reach.
namespace CollectionCheck {

// One kind of finding: the keys of the rows of `table` that show it.
struct Finding {
    QString description;
    QString table;
    QList<qint64> keys;
    QString error;  // why the rows could not be looked for (a damaged file)
};

struct Report {
    bool integrityChecked = false;  // a database file checks its own structure
    QStringList integrity;          // what that check found; {"ok"} when nothing
    std::vector<Finding> findings;  // every kind, also those with no keys

    // True when the check found nothing at all.
    bool Clean() const;
};

Report Check(modDatabase::DbConnection& connection);

// A database file's own check of its structure, before it is copied: empty when the file is
// whole (a server database is), otherwise why it is not, for the user.
QString Damage(modDatabase::DbConnection& connection, const QString& name);

// Deletes, in one transaction, the rows that nothing reaches: sections no recipe uses with
// their ingredient lines, links of recipes to sections that point to a missing row, ingredient
// lines whose section, ingredient or unit is missing. Renumbers nothing. Returns what was
// deleted, per table.
std::vector<Finding> Repair(modDatabase::DbConnection& connection);

}  // namespace CollectionCheck
