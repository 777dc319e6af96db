#include "tools/ToolImport.h"

#include "core/database/modDatabase.h"
#include "exchange/CollectionImport.h"
#include "exchange/RecipeImport.h"
#include "exchange/TextEncoding.h"
#include "tools/ToolCommands.h"
#include "tools/ToolSupport.h"

namespace ToolCommands {
namespace {

const QString DryRun = QStringLiteral("--dry-run");
const QString AllowDuplicates = QStringLiteral("--allow-duplicates");

// The subgroup the options name: by key with --type alone, by names with --group and --type
// (made when missing; a dry run makes nothing and imports into a subgroup to be, key -1).
// 0 after writing the reason to err.
qint32 TargetType(const QMap<QString, QString>& options, bool dryRun, QTextStream& err) {
    modDatabase::DbConnection& connection = *modDatabase::Connection;
    const QString type = options.value(QStringLiteral("--type"));
    const QString group = options.value(QStringLiteral("--group")).trimmed();
    if (options.contains(QStringLiteral("--group")) && dryRun) {
        const qint32 found = Exchange::FoundType(connection, group, type.trimmed());
        return found > 0 ? found : -1;
    }
    if (options.contains(QStringLiteral("--group"))) {
        return Exchange::TypeByNames(connection, group, type.trimmed());
    }
    const qint32 typeID = Exchange::ExistingType(connection, type.toInt());
    if (typeID == 0) {
        ToolSupport::Failure(err, QStringLiteral("Podskupine s številko %1 ni.").arg(type));
    }
    return typeID;
}

// The problem with the arguments; empty when they name files, a subgroup and an encoding.
QString ArgumentProblem(const ToolSupport::Arguments& args) {
    const QString type = args.options.value(QStringLiteral("--type")).trimmed();
    const bool byNames = args.options.contains(QStringLiteral("--group"));
    bool number = false;
    type.toInt(&number);
    Exchange::Encoding encoding;
    if (args.sample || args.positional.size() < 2) {
        return QStringLiteral("import potrebuje vsaj eno datoteko.");
    }
    if (type.isEmpty() ||
        (byNames && args.options.value(QStringLiteral("--group")).trimmed().isEmpty())) {
        return QStringLiteral("import potrebuje --type ŠTEVILKA ali --group IME --type IME.");
    }
    if (!byNames && !number) {
        return QStringLiteral("--type brez --group potrebuje številko podskupine.");
    }
    if (args.options.contains(QStringLiteral("--encoding")) &&
        !Exchange::TextEncoding::FromName(args.options.value(QStringLiteral("--encoding")),
                                          encoding)) {
        return QStringLiteral("Neznano kodiranje: %1")
            .arg(args.options.value(QStringLiteral("--encoding")));
    }
    return QString();
}

}  // namespace

int Import(const QStringList& arguments, QTextStream& out, QTextStream& err) {
    QStringList words = arguments;
    Exchange::ImportOptions options;
    options.dryRun = words.removeAll(DryRun) > 0;
    options.allowDuplicates = words.removeAll(AllowDuplicates) > 0;
    QString problem;
    const auto args =
        ToolSupport::Parse(words, {"--type", "--group", "--encoding", "--database"}, problem);
    if (!args) {
        return ToolSupport::Usage(err, problem);
    }
    if (const QString wrong = ArgumentProblem(*args); !wrong.isEmpty()) {
        return ToolSupport::Usage(err, wrong);
    }
    if (const int failed =
            ToolSupport::OpenDatabase(args->options, ToolSupport::Use::Changing, err)) {
        return failed;
    }
    options.encoding = args->options.value(QStringLiteral("--encoding"));
    try {
        options.typeID = TargetType(args->options, options.dryRun, err);
        if (options.typeID == 0) {
            return Failed;
        }
    } catch (...) {
        return ToolSupport::Failure(err, ToolSupport::ErrorText());
    }
    const Exchange::ImportReport report =
        Exchange::ImportFiles(*modDatabase::Connection, args->positional.mid(1), options);
    out << report.Text();
    return report.stopped.isEmpty() && report.Unread() == 0 ? Done : Failed;
}

}  // namespace ToolCommands
