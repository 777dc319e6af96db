// morvena-tool backup FILE DEST: a checked copy of a database file that may be in use.
#include "collection/CollectionBackup.h"
#include "core/database/DatabaseAddress.h"
#include "core/database/modDatabase.h"
#include "tools/ToolCommands.h"
#include "tools/ToolSupport.h"

namespace ToolCommands {

int Backup(const QStringList& arguments, QTextStream& out, QTextStream& err) {
    const QStringList names = arguments.mid(1);
    for (const QString& name : names) {
        if (name.startsWith(QLatin1String("--"))) {
            return ToolSupport::Usage(err, QStringLiteral("Neznana možnost: %1").arg(name));
        }
    }
    if (names.size() != 2) {
        return ToolSupport::Usage(
            err, QStringLiteral("backup potrebuje datoteko zbirke in novo datoteko kopije."));
    }
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
