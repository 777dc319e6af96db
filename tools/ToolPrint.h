#pragma once

#include <QStringList>
#include <QTextStream>

// morvena-tool print and book: pages printed to a PDF file as the program prints them.
namespace ToolPrint {

// print R|T|G ID --pdf FILE [--paper letter] [--database FILE]
int Print(const QStringList& arguments, QTextStream& err);
// book --pdf FILE [--group ID | --type ID] [--paper letter] [--database FILE]
int Book(const QStringList& arguments, QTextStream& err);

}  // namespace ToolPrint
