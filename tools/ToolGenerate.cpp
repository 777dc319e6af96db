#include "tools/ToolGenerate.h"

#include "collection/SyntheticDatabase.h"
#include "tools/ToolCommands.h"
#include "tools/ToolSupport.h"

namespace ToolCommands {
namespace {

// The value of --recipes: a whole number, 0 or more; -1 for anything else.
int Recipes(const ToolSupport::Arguments& args) {
    bool numeric = false;
    const int recipes = args.options.value(QStringLiteral("--recipes")).toInt(&numeric);
    return numeric && recipes >= 0 ? recipes : -1;
}

// The value of --shape: home cooking when it is not given, or uniform.
std::optional<SyntheticDatabase::Shape> Shape(const ToolSupport::Arguments& args) {
    if (!args.options.contains(QStringLiteral("--shape"))) {
        return SyntheticDatabase::Shape::HomeCooking;
    }
    if (args.options.value(QStringLiteral("--shape")) == QLatin1String("uniform")) {
        return SyntheticDatabase::Shape::Uniform;
    }
    return std::nullopt;
}

}  // namespace

int Generate(const QStringList& arguments, QTextStream& out, QTextStream& err) {
    QString problem;
    const auto args = ToolSupport::Parse(
        arguments, ToolSupport::NewDatabaseOptions + QStringList{"--recipes", "--shape"}, problem);
    if (!args) {
        return ToolSupport::Usage(err, problem);
    }
    const int recipes = Recipes(*args);
    if (recipes < 0) {
        return ToolSupport::Usage(
            err, QStringLiteral("generate potrebuje --recipes N (celo število, 0 ali več)."));
    }
    if (args->sample || !ToolSupport::NamesOneDatabase(*args)) {
        return ToolSupport::Usage(
            err, QStringLiteral("generate potrebuje datoteko ali --server in --database."));
    }
    const auto shape = Shape(*args);
    if (!shape) {
        return ToolSupport::Usage(err, QStringLiteral("--shape pozna le vrednost uniform."));
    }
    const int created = ToolSupport::CreateDatabase(*args, err, [&](const auto& connection) {
        SyntheticDatabase::Generate(*connection, recipes, *shape);
    });
    if (created != Done) {
        return created;
    }
    out << QStringLiteral("Ustvarjenih je %1 receptov.").arg(recipes) << Qt::endl;
    return Done;
}

}  // namespace ToolCommands
