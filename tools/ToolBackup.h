#pragma once

#include <QStringList>
#include <QTextStream>

namespace ToolCommands {

// backup FILE DEST: a checked copy of a database file that may be in use.
int Backup(const QStringList& arguments, QTextStream& out, QTextStream& err);

}  // namespace ToolCommands
