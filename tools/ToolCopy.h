#pragma once

#include <QStringList>
#include <QTextStream>

namespace ToolCommands {

// copy SOURCE TARGET: a whole collection from one database into an empty one.
int Copy(const QStringList& arguments, QTextStream& out, QTextStream& err);

}  // namespace ToolCommands
