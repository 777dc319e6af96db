#include "tools/ToolPage.h"

#include "core/modGeneral.h"
#include "display/modDisplay.h"
#include "tools/ToolCommands.h"
#include "tools/ToolSupport.h"

namespace ToolCommands {
namespace {

// Writes the page into the display file, as a click on its node in the tree does.
void Display(const QString& kind, qint32 id) {
    if (kind == QLatin1String("R")) {
        modDisplay::DisplayRecipe(id);
    } else if (kind == QLatin1String("T")) {
        modDisplay::DisplayType(id);
    } else {
        modDisplay::DisplayGroup(id);
    }
}

}  // namespace

int Page(const QStringList& arguments, QTextStream& err) {
    QString problem;
    const auto args = ToolSupport::Parse(arguments, {"--output", "--database"}, problem);
    if (!args) {
        return ToolSupport::Usage(err, problem);
    }
    QString kind;
    qint32 id = 0;
    if (args->sample || !ToolSupport::NamesPage(args->positional.mid(1), kind, id)) {
        return ToolSupport::Usage(
            err, QStringLiteral("page potrebuje vrsto R, T ali G in številko zapisa."));
    }
    if (const int failed =
            ToolSupport::OpenDatabase(args->options, ToolSupport::Use::Reading, err)) {
        return failed;
    }
    if (args->options.contains(QStringLiteral("--output"))) {
        modGeneral::TempFilename = args->options.value(QStringLiteral("--output"));
    }
    try {
        Display(kind, id);
    } catch (...) {
        return ToolSupport::Failure(err, ToolSupport::ErrorText());
    }
    return Done;
}

}  // namespace ToolCommands
