#pragma once

#include <QMap>
#include <QStringList>
#include <QTextStream>

// The commands of morvena-tool. Each returns the process exit code: 0 done, 1 the database
// could not be opened or the work failed, 2 bad arguments, 3 check found something.
namespace ToolCommands {

enum ExitCode { Done = 0, Failed = 1, BadArguments = 2, Found = 3 };

int Run(const QStringList& arguments, QTextStream& out, QTextStream& err);

// copy SOURCE TARGET (tools/ToolCopy.cpp)
int Copy(const QStringList& arguments, QTextStream& out, QTextStream& err);
// backup FILE DEST (tools/ToolBackup.cpp)
int Backup(const QStringList& arguments, QTextStream& out, QTextStream& err);
// check DATABASE [--repair] (tools/ToolCheck.cpp)
int Check(const QStringList& arguments, QTextStream& out, QTextStream& err);

}  // namespace ToolCommands
