#pragma once

#include <QStringList>
#include <QTextStream>

namespace ToolCommands {

// check DATABASE [--repair]: what an interrupted save leaves behind, and its repair.
int Check(const QStringList& arguments, QTextStream& out, QTextStream& err);

}  // namespace ToolCommands
