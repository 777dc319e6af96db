#pragma once

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QPageSize>
#include <QString>
#include <QStringList>
#include <QTextStream>
#include <functional>
#include <memory>
#include <optional>

#include "display/PagePrinter.h"

namespace modDatabase {
class DbConnection;
}

// What the commands of morvena-tool share: the one-line messages and their exit codes, the use
// of a database named with --database (a file or a PostgreSQL URI), the new databases of
// create-db and generate, and the printing of print and book.
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
// The words after the command's name when they are `count` names and no option; otherwise
// nullopt after writing the reason to err (`wanted` when there are too few or too many).
std::optional<QStringList> Names(const QStringList& arguments, int count, const QString& wanted,
                                 QTextStream& err);
// Whether the words are a page: its kind R, T or G and the number of its record.
bool NamesPage(const QStringList& words, QString& kind, qint32& id);

// A bad argument: the message and a pointer to the help; exit code 2.
int Usage(QTextStream& err, const QString& problem);
// The work failed: the message; exit code 1.
int Failure(QTextStream& err, const QString& message);
// The error being handled, as its chain of sources and its description.
QString ErrorText();

// Makes the value of --database the program's database, as the settings would.
bool UseDatabase(const QString& value, QString& problem);
// What a command does with the database it opens: only reads it (it is left exactly as it was,
// its journal mode included), or changes it.
enum class Use { Reading, Changing };
// Opens the program's database: the one of the settings, or the one named by --database.
// Returns 0, or the exit code after writing the reason to err (2 for a bad name, 1 when the
// database cannot be opened).
int OpenDatabase(const std::optional<QString>& database, Use use, QTextStream& err);
// The same with the value of the option "--database" among a command's options.
int OpenDatabase(const QMap<QString, QString>& options, Use use, QTextStream& err);

// ---- a new database (create-db, generate) ----

// The options that name it: --server with --database, or --database with a URI.
extern const QStringList NewDatabaseOptions;
// A file beside the command, or a server with a database.
bool NamesOneDatabase(const Arguments& args);
// Opens the empty database the arguments name, creates the schema in it and lets `fill` write
// its rows. Returns 0, or the exit code after writing the reason to err.
int CreateDatabase(
    const Arguments& args, QTextStream& err,
    const std::function<void(const std::shared_ptr<modDatabase::DbConnection>&)>& fill);

// ---- printing to PDF (print, book) ----

// The command's arguments after its name; --sample belongs to no printing command. Bad ones
// give nullopt after the usage message.
std::optional<Arguments> PrintArguments(const QStringList& arguments, const QStringList& valued,
                                        QTextStream& err);
// The paper named by --paper: A4 unless "letter"; nullopt for anything else.
std::optional<QPageSize> Paper(const Arguments& args);
// Prints the pages (display file bytes) to the PDF file with the program's header and footer.
void PrintPages(const QList<QByteArray>& pages, const QString& pdf, const QPageSize& paper,
                const PagePrinter::BookProgress& progress);

}  // namespace ToolSupport
