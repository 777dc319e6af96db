#pragma once

#include <QString>
#include <QStringList>
#include <functional>

#include "exchange/ImportReport.h"

namespace modDatabase {
class DbConnection;
}

namespace Exchange {

struct ImportOptions {
    qint32 typeID = 0;  // the subgroup that receives the recipes
    QString encoding;   // of text formats; empty: the file's bytes decide
    bool dryRun = false;
    bool allowDuplicates = false;
};

// Told after each recipe (the file's index and the recipes handled so far in it); returns
// false to stop the import after that recipe.
using ImportProgress = std::function<bool(int file, int recipes)>;

// Imports the files in their order into the subgroup: every recipe in its own transaction,
// files that cannot be read named with the reason while the others go on. A database error
// stops the import; what was written before it stays, and the report says where it stopped.
ImportReport ImportFiles(modDatabase::DbConnection& connection, const QStringList& paths,
                         const ImportOptions& options, const ImportProgress& progress = {});

}  // namespace Exchange
