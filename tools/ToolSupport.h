#pragma once

#include <QString>
#include <QTextStream>

// What the commands of morvena-tool share: the one-line messages and their exit codes, and the
// use of a database named with --database (a file or a PostgreSQL URI).
namespace ToolSupport {

// A bad argument: the message and a pointer to the help; exit code 2.
int Usage(QTextStream& err, const QString& problem);
// The work failed: the message; exit code 1.
int Failure(QTextStream& err, const QString& message);
// The error being handled, as its chain of sources and its description.
QString ErrorText();

// Makes the value of --database the program's database, as the settings would.
bool UseDatabase(const QString& value, QString& problem);

}  // namespace ToolSupport
