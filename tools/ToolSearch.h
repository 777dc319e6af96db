#pragma once

#include <QStringList>
#include <QTextStream>

namespace ToolCommands {

// search [--Group V] ... [--any KEY] [--any-criterion] [--sort N] [--sql] [--database NAME]:
// the search window's query from options, its text or its rows.
int Search(const QStringList& arguments, QTextStream& out, QTextStream& err);

}  // namespace ToolCommands
