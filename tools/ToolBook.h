#pragma once

#include <QStringList>
#include <QTextStream>

namespace ToolCommands {

// book --pdf FILE [--group ID | --type ID] [--paper letter] [--database NAME]: a cookbook
// printed to a PDF file, every page on a sheet of its own, numbered through the book.
int Book(const QStringList& arguments, QTextStream& err);

}  // namespace ToolCommands
