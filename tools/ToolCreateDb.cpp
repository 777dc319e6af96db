#include "tools/ToolCreateDb.h"

#include "collection/SampleDatabase.h"
#include "core/database/modDatabase.h"
#include "tools/ToolCommands.h"
#include "tools/ToolSupport.h"

namespace ToolCommands {

int CreateDb(const QStringList& arguments, QTextStream& out, QTextStream& err) {
    QString problem;
    const auto args = ToolSupport::Parse(arguments, ToolSupport::NewDatabaseOptions, problem);
    if (!args) {
        return ToolSupport::Usage(err, problem);
    }
    if (!ToolSupport::NamesOneDatabase(*args)) {
        return ToolSupport::Usage(
            err, QStringLiteral("create-db potrebuje datoteko ali --server in --database."));
    }
    const int created = ToolSupport::CreateDatabase(*args, err, [&](const auto& connection) {
        if (args->sample) {
            modDatabase::Connection = connection;
            SampleDatabase::Load(SampleDatabase::BuiltInText());
        }
    });
    if (created != Done) {
        return created;
    }
    out << QStringLiteral("Zbirka podatkov je ustvarjena.") << Qt::endl;
    return Done;
}

}  // namespace ToolCommands
