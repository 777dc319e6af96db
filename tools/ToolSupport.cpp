#include "tools/ToolSupport.h"

#include <sys/stat.h>

#include <QFileInfo>
#include <QTemporaryFile>
#include <QtPrintSupport/QPrinter>
#include <cstdio>

#include "core/AppError.h"
#include "core/database/DatabaseAddress.h"
#include "core/database/Schema.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "core/startup/Startup.h"
#include "display/PagePrinter.h"
#include "tools/ToolCommands.h"

namespace ToolSupport {

std::optional<Arguments> Parse(const QStringList& arguments, const QStringList& valued,
                               QString& problem) {
    Arguments parsed;
    for (int i = 0; i < arguments.size(); ++i) {
        const QString& argument = arguments[i];
        if (argument == QLatin1String("--sample")) {
            parsed.sample = true;
        } else if (valued.contains(argument)) {
            if (i + 1 >= arguments.size()) {
                problem = QStringLiteral("Možnost %1 potrebuje vrednost.").arg(argument);
                return std::nullopt;
            }
            parsed.options.insert(argument, arguments[++i]);
        } else if (argument.startsWith(QLatin1String("--"))) {
            problem = QStringLiteral("Neznana možnost: %1").arg(argument);
            return std::nullopt;
        } else {
            parsed.positional << argument;
        }
    }
    return parsed;
}

std::optional<QStringList> Names(const QStringList& arguments, int count, const QString& wanted,
                                 QTextStream& err) {
    const QStringList names = arguments.mid(1);
    for (const QString& name : names) {
        if (name.startsWith(QLatin1String("--"))) {
            Usage(err, QStringLiteral("Neznana možnost: %1").arg(name));
            return std::nullopt;
        }
    }
    if (names.size() != count) {
        Usage(err, wanted);
        return std::nullopt;
    }
    return names;
}

bool NamesPage(const QStringList& words, QString& kind, qint32& id) {
    kind = words.value(0);
    bool numeric = false;
    id = words.value(1).toInt(&numeric);
    return words.size() == 2 && numeric && QStringList{"R", "T", "G"}.contains(kind);
}

int Usage(QTextStream& err, const QString& problem) {
    err << problem << " (morvena-tool --help)" << Qt::endl;
    return ToolCommands::BadArguments;
}

int Failure(QTextStream& err, const QString& message) {
    err << message << Qt::endl;
    return ToolCommands::Failed;
}

QString ErrorText() {
    const AppError error = ErrorPath::Current();
    return error.Source() + QStringLiteral("->") + error.Description();
}

bool UseDatabase(const QString& value, QString& problem) {
    const auto address = DatabaseAddress::Parse(value, problem);
    if (address) {
        DatabaseAddress::UseForProgram(*address);
    }
    return address.has_value();
}

int OpenDatabase(const std::optional<QString>& database, Use use, QTextStream& err) {
    modGeneral::ReadSettings();
    QString problem;
    if (database && !UseDatabase(*database, problem)) {
        return Usage(err, problem);
    }
    if (use == Use::Reading) {
        modDatabase::OpenConnectionToRead();
    } else {
        modDatabase::OpenConnection();
    }
    if (modDatabase::Connection->State() != modDatabase::adStateOpen) {
        return Failure(err, modDatabase::Connection->LastError());
    }
    return ToolCommands::Done;
}

int OpenDatabase(const QMap<QString, QString>& options, Use use, QTextStream& err) {
    const auto named = options.find(QStringLiteral("--database"));
    return OpenDatabase(named == options.end() ? std::nullopt : std::optional<QString>(*named), use,
                        err);
}

// ---- a new database ----

const QStringList NewDatabaseOptions{"--server", "--database", "--user", "--password"};

bool NamesOneDatabase(const Arguments& args) {
    if (DatabaseAddress::IsUri(args.options.value(QStringLiteral("--database")))) {
        return args.positional.size() == 1 && !args.options.contains(QStringLiteral("--server"));
    }
    const bool server = args.options.contains(QStringLiteral("--server"));
    const bool expectedPositional = args.positional.size() == 1 + (server ? 0 : 1);
    return expectedPositional && (!server || args.options.contains(QStringLiteral("--database")));
}

namespace {

// The empty database named by the arguments: a new file, or an empty database on a server
// (--server with --database, or --database with a URI). A URI that cannot be read gives
// nullptr and the problem.
std::shared_ptr<modDatabase::DbConnection> EmptyDatabase(const Arguments& args, QString& problem) {
    const QString database = args.options.value(QStringLiteral("--database"));
    if (DatabaseAddress::IsUri(database)) {
        const auto address = DatabaseAddress::Parse(database, problem);
        return address ? DatabaseAddress::Connection(*address) : nullptr;
    }
    if (args.options.contains(QStringLiteral("--server"))) {
        return std::make_shared<modDatabase::DbConnection>(
            modDatabase::ServerDatabase,
            modDatabase::BuildConnectionString(modDatabase::ServerDatabase,
                                               args.options.value(QStringLiteral("--server")),
                                               args.options.value(QStringLiteral("--database")),
                                               args.options.value(QStringLiteral("--user")),
                                               args.options.value(QStringLiteral("--password"))));
    }
    return std::make_shared<modDatabase::DbConnection>(
        modDatabase::FileDatabase,
        modDatabase::BuildConnectionString(modDatabase::FileDatabase, QString(),
                                           args.positional.value(1), QString(), QString()));
}

}  // namespace

int CreateDatabase(
    const Arguments& args, QTextStream& err,
    const std::function<void(const std::shared_ptr<modDatabase::DbConnection>&)>& fill) {
    QString problem;
    const auto connection = EmptyDatabase(args, problem);
    if (!connection) {
        return Usage(err, problem);
    }
    connection->OpenEmpty();
    if (connection->State() != modDatabase::adStateOpen) {
        return Failure(err, connection->LastError());
    }
    try {
        Schema::Create(*connection);
        fill(connection);
    } catch (...) {
        return Failure(err, ErrorText());
    }
    return ToolCommands::Done;
}

// ---- printing to PDF ----

std::optional<Arguments> PrintArguments(const QStringList& arguments, const QStringList& valued,
                                        QTextStream& err) {
    QString problem;
    auto args = Parse(arguments.mid(1), valued, problem);
    if (args && args->sample) {
        problem = QStringLiteral("Neznana možnost: --sample");
        args.reset();
    }
    if (!args) {
        Usage(err, problem);
    }
    return args;
}

std::optional<QPageSize> Paper(const Arguments& args) {
    const QString paper = args.options.value(QStringLiteral("--paper"), QStringLiteral("a4"));
    if (paper.compare(QLatin1String("a4"), Qt::CaseInsensitive) == 0) {
        return QPageSize(QPageSize::A4);
    }
    if (paper.compare(QLatin1String("letter"), Qt::CaseInsensitive) == 0) {
        return QPageSize(QPageSize::Letter);
    }
    return std::nullopt;
}

void PrintPages(const QList<QByteArray>& pages, const QString& pdf, const QPageSize& paper,
                const PagePrinter::BookProgress& progress) {
    // Written under a new name of its own beside the target, then renamed into place: a link
    // planted at the target's name is replaced, never written through, and a failed print
    // leaves the target as it was.
    const QFileInfo target(pdf);
    QTemporaryFile part(target.absolutePath() + QStringLiteral("/.") + target.fileName() +
                        QStringLiteral(".XXXXXX"));
    if (!part.open()) {
        ErrorPath::Raise(AppError::PassedOn,
                         QStringLiteral("Datoteke %1 ni mogoče ustvariti.").arg(pdf));
    }
    part.close();
    QPrinter printer(QPrinter::HighResolution);
    printer.setOutputFormat(QPrinter::PdfFormat);
    printer.setOutputFileName(part.fileName());
    printer.setPageSize(paper);
    PagePrinter::PrintBook(printer, pages, PagePrinter::ProgramPageSetup, progress);
    const mode_t mask = ::umask(0);
    ::umask(mask);
    if (::chmod(QFile::encodeName(part.fileName()).constData(), 0666 & ~mask) != 0 ||
        ::rename(QFile::encodeName(part.fileName()).constData(),
                 QFile::encodeName(pdf).constData()) != 0) {
        ErrorPath::Raise(AppError::PassedOn,
                         QStringLiteral("Datoteke %1 ni mogoče zapisati.").arg(pdf));
    }
    part.setAutoRemove(false);
}

}  // namespace ToolSupport
