#pragma once

#include <QStringList>
#include <QTextStream>

// The commands of morvena-tool. Each returns the process exit code: 0 done, 1 the database
// could not be opened or the work failed, 2 bad arguments.
namespace ToolCommands {

enum ExitCode { Done = 0, Failed = 1, BadArguments = 2 };

int Run(const QStringList& arguments, QTextStream& out, QTextStream& err);

}  // namespace ToolCommands
