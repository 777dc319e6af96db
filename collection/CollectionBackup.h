#pragma once

#include <QString>
#include <QStringList>

// A consistent copy of a database file, taken while the program may have the file open and be
// writing to it, and checked before it is given its name.
namespace CollectionBackup {

struct Outcome {
    bool done = false;
    QString message;        // why there is no backup
    QStringList integrity;  // what the new file's own check found; {"ok"} when nothing
};

// Copies the collection in `file` into the new file `destination`, which must not exist: an
// existing file is never overwritten. A copy that fails its integrity check is not kept.
Outcome Backup(const QString& file, const QString& destination);

}  // namespace CollectionBackup
