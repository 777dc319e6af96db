#pragma once

#include <QMap>
#include <QStringList>
#include <QTextStream>

// The commands of morvena-tool. Each returns the process exit code: 0 done, 1 the database
// could not be opened or the work failed, 2 bad arguments.
namespace ToolCommands {

enum ExitCode { Done = 0, Failed = 1, BadArguments = 2 };

int Run(const QStringList& arguments, QTextStream& out, QTextStream& err);

// Opens the database the commands work on: the one of the settings, or the one named by the
// option "--database". On failure writes the reason to err and returns false.
bool OpenDatabase(const QMap<QString, QString>& options, QTextStream& err);

}  // namespace ToolCommands
