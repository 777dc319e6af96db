#include "tools/ToolBackup.h"

#include "collection/CollectionBackup.h"
#include "core/database/DatabaseAddress.h"
#include "core/database/modDatabase.h"
#include "tools/ToolCommands.h"
#include "tools/ToolSupport.h"

namespace ToolCommands {

int Backup(const QStringList& arguments, QTextStream& out, QTextStream& err) {
    const auto found = ToolSupport::Names(
        arguments, 2, QStringLiteral("backup potrebuje datoteko zbirke in novo datoteko kopije."),
        err);
    if (!found) {
        return BadArguments;
    }
    const QStringList& names = *found;
    QString problem;
    const auto source = DatabaseAddress::Parse(names[0], problem);
    if (!source) {
        return ToolSupport::Usage(err, problem);
    }
    if (source->kind == modDatabase::ServerDatabase) {
        return ToolSupport::Failure(
            err, QStringLiteral("Zbirko na strežniku PostgreSQL kopirajte z njegovim programom "
                                "pg_dump, na primer: pg_dump -Fc -f %1 '%2'")
                     .arg(names[1], DatabaseAddress::Describe(*source)));
    }
    const CollectionBackup::Outcome outcome = CollectionBackup::Backup(names[0], names[1]);
    if (!outcome.done) {
        for (const QString& line : outcome.integrity) {
            err << line << Qt::endl;
        }
        return ToolSupport::Failure(err, outcome.message);
    }
    out << QStringLiteral("Varnostna kopija je v %1; preverjanje celovitosti: %2")
               .arg(names[1], outcome.integrity.join(QStringLiteral("; ")))
        << Qt::endl;
    return Done;
}

}  // namespace ToolCommands
