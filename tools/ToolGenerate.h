#pragma once

#include <QStringList>
#include <QTextStream>

namespace ToolCommands {

// generate FILE --recipes N [--shape uniform], or the same with --server and --database: a
// made-up collection for measuring, always the same for the same options.
int Generate(const QStringList& arguments, QTextStream& out, QTextStream& err);

}  // namespace ToolCommands
