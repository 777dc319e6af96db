#pragma once

#include <QStringList>
#include <QTextStream>

namespace ToolCommands {

// print R|T|G ID --pdf FILE [--paper letter] [--database NAME]: one page printed to a PDF
// file as the program prints it.
int Print(const QStringList& arguments, QTextStream& err);

}  // namespace ToolCommands
