#pragma once

#include <QString>

#include "collection/CollectionCopy.h"

// Turns an Access collection of the Windows program into a collection of this program: a new
// database file beside it, named after it with "-linux", or in the user's data folder when
// the Access file's folder cannot be written
// (~/.local/share/morvena). The Access file is only read.
namespace AccessConversion {

// The file the conversion writes: "<name>-linux.mdb" (then "-linux-2.mdb" and so on when the
// name is taken), beside the Access file or in the user's data folder.
QString NewFileFor(const QString& accessFile);
// Copies the Access file into the new file, verified; on failure no new file is left.
CollectionCopy::Outcome Convert(const QString& accessFile, const QString& newFile,
                                const CollectionCopy::Hooks& hooks);

}  // namespace AccessConversion
