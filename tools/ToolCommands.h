// tools/: morvena-tool, one file pair per command, over the rooms that need no window.
// May use: collection, display, search (its query only), exchange, core/startup, core/database,
// core.
#pragma once

#include <QStringList>
#include <QTextStream>

// The dispatcher of morvena-tool: the help text and the command named by the first argument.
// Each command has a file pair of its own (tools/Tool<Command>.h and .cpp) and returns the
// process exit code: 0 done, 1 the database could not be opened or the work failed, 2 bad
// arguments, 3 check found something.
namespace ToolCommands {

enum ExitCode { Done = 0, Failed = 1, BadArguments = 2, Found = 3 };

int Run(const QStringList& arguments, QTextStream& out, QTextStream& err);

}  // namespace ToolCommands
