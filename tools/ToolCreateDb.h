#pragma once

#include <QStringList>
#include <QTextStream>

namespace ToolCommands {

// create-db [--sample] FILE, or create-db [--sample] --server HOST --database NAME [--user
// NAME] [--password WORD]: the schema (and the sample recipes) in a new, empty database.
int CreateDb(const QStringList& arguments, QTextStream& out, QTextStream& err);

}  // namespace ToolCommands
