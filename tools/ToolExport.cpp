#include "tools/ToolExport.h"

#include "core/database/modDatabase.h"
#include "exchange/RecipeExport.h"
#include "tools/ToolCommands.h"
#include "tools/ToolSupport.h"

namespace ToolCommands {
namespace {

// The recipes the options name: one recipe, a subgroup, a group, or everything. False when
// more than one is named or a key is no number.
bool Scope(const QMap<QString, QString>& options, Exchange::RecipeScope& scope) {
    static const QList<std::pair<QString, Exchange::RecipeScope::Kind>> kinds{
        {QStringLiteral("--recipe"), Exchange::RecipeScope::OneRecipe},
        {QStringLiteral("--type"), Exchange::RecipeScope::OneType},
        {QStringLiteral("--group"), Exchange::RecipeScope::OneGroup},
    };
    int named = 0;
    bool number = true;
    for (const auto& [option, kind] : kinds) {
        if (options.contains(option)) {
            ++named;
            scope = {kind, options.value(option).toInt(&number)};
        }
    }
    return named <= 1 && number;
}

}  // namespace

int Export(const QStringList& arguments, QTextStream& out, QTextStream& err) {
    QString problem;
    const auto args = ToolSupport::Parse(
        arguments, {"--format", "--recipe", "--type", "--group", "--database"}, problem);
    if (!args) {
        return ToolSupport::Usage(err, problem);
    }
    Exchange::ExportFormat format;
    Exchange::RecipeScope scope;
    if (args->sample || args->positional.size() != 2 ||
        !Exchange::ExportFormatNamed(args->options.value(QStringLiteral("--format")), format)) {
        return ToolSupport::Usage(
            err, QStringLiteral("export potrebuje --format mealmaster, schema ali cooklang in "
                                "izhodno datoteko (pri cooklang mapo)."));
    }
    if (!Scope(args->options, scope)) {
        return ToolSupport::Usage(
            err, QStringLiteral("Podajte največ eno od --recipe, --type in --group s številko."));
    }
    if (const int failed =
            ToolSupport::OpenDatabase(args->options, ToolSupport::Use::Reading, err)) {
        return failed;
    }
    try {
        const int written = Exchange::ExportRecipes(*modDatabase::Connection, scope, format,
                                                    args->positional.at(1));
        out << QStringLiteral("Izvoženi recepti: %1\n").arg(written);
    } catch (...) {
        return ToolSupport::Failure(err, ToolSupport::ErrorText());
    }
    return Done;
}

}  // namespace ToolCommands
