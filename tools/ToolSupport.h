#pragma once

#include <QMap>
#include <QString>
#include <QStringList>
#include <QTextStream>
#include <optional>

// What the commands of morvena-tool share: the one-line messages and their exit codes, and the
// use of a database named with --database (a file or a PostgreSQL URI).
namespace ToolSupport {

// A command's arguments: the words in their order and the options with their values.
struct Arguments {
    QStringList positional;
    QMap<QString, QString> options;  // "--name" -> value
    bool sample = false;
};

// Splits the arguments; options with a value are listed in `valued`. A bad option gives
// nullopt with the reason in `problem`.
std::optional<Arguments> Parse(const QStringList& arguments, const QStringList& valued,
                               QString& problem);

// A bad argument: the message and a pointer to the help; exit code 2.
int Usage(QTextStream& err, const QString& problem);
// The work failed: the message; exit code 1.
int Failure(QTextStream& err, const QString& message);
// The error being handled, as its chain of sources and its description.
QString ErrorText();

// Makes the value of --database the program's database, as the settings would.
bool UseDatabase(const QString& value, QString& problem);
// Opens the program's database: the one of the settings, or the one named by --database.
// Returns 0, or the exit code after writing the reason to err (2 for a bad name, 1 when the
// database cannot be opened).
int OpenDatabase(const std::optional<QString>& database, QTextStream& err);
// The same with the value of the option "--database" among a command's options.
int OpenDatabase(const QMap<QString, QString>& options, QTextStream& err);

}  // namespace ToolSupport
