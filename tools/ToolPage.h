#pragma once

#include <QStringList>
#include <QTextStream>

namespace ToolCommands {

// page R|T|G ID [--output FILE] [--database NAME]: a page written as the program writes it into
// its display file.
int Page(const QStringList& arguments, QTextStream& err);

}  // namespace ToolCommands
