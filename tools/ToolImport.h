#pragma once

#include <QStringList>
#include <QTextStream>

namespace ToolCommands {

// import FILE... (--type ID | --group NAME --type NAME) [--encoding NAME] [--dry-run]
//        [--allow-duplicates] [--database NAME]: recipes of other programs' files into a
// subgroup, and the report of what happened.
int Import(const QStringList& arguments, QTextStream& out, QTextStream& err);

}  // namespace ToolCommands
