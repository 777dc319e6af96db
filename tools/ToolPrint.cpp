#include "tools/ToolPrint.h"

#include "core/Windows1250.h"
#include "display/modDisplay.h"
#include "tools/ToolCommands.h"
#include "tools/ToolSupport.h"

namespace ToolCommands {
namespace {

// The page of a recipe (R), a subgroup (T) or a group (G).
QString PageOf(const QString& kind, qint32 id) {
    if (kind == QLatin1String("R")) {
        return modDisplay::RecipePage(id);
    }
    return kind == QLatin1String("T") ? modDisplay::TypePage(id) : modDisplay::GroupPage(id);
}

}  // namespace

int Print(const QStringList& arguments, QTextStream& err) {
    const auto args =
        ToolSupport::PrintArguments(arguments, {"--pdf", "--paper", "--database"}, err);
    if (!args) {
        return BadArguments;
    }
    QString kind;
    qint32 id = 0;
    if (!ToolSupport::NamesPage(args->positional, kind, id)) {
        return ToolSupport::Usage(
            err, QStringLiteral("print potrebuje vrsto R, T ali G in številko zapisa."));
    }
    const auto paper = ToolSupport::Paper(*args);
    if (!args->options.contains(QStringLiteral("--pdf")) || !paper) {
        return ToolSupport::Usage(
            err, QStringLiteral("print potrebuje --pdf DATOTEKA (papir a4 ali letter)."));
    }
    if (const int failed =
            ToolSupport::OpenDatabase(args->options, ToolSupport::Use::Reading, err)) {
        return failed;
    }
    try {
        ToolSupport::PrintPages({Windows1250::Encode(PageOf(kind, id))},
                                args->options.value(QStringLiteral("--pdf")), *paper, {});
    } catch (...) {
        return ToolSupport::Failure(err, ToolSupport::ErrorText());
    }
    return Done;
}

}  // namespace ToolCommands
