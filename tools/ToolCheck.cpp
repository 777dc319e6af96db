#include "tools/ToolCheck.h"

#include "collection/CollectionCheck.h"
#include "core/database/DatabaseAddress.h"
#include "core/database/modDatabase.h"
#include "tools/ToolCommands.h"
#include "tools/ToolSupport.h"

namespace ToolCommands {
namespace {

QString Line(const CollectionCheck::Finding& finding) {
    if (!finding.error.isEmpty()) {
        return finding.description + QStringLiteral(": ni mogoče preveriti (") + finding.error +
               QLatin1Char(')');
    }
    QString line =
        finding.description + QStringLiteral(": ") + QString::number(finding.keys.size());
    if (!finding.keys.isEmpty()) {
        QStringList keys;
        for (qint64 key : finding.keys) {
            keys << QString::number(key);
        }
        line += QStringLiteral(" (%1 %2)").arg(finding.table, keys.join(QStringLiteral(", ")));
    }
    return line;
}

}  // namespace

int Check(const QStringList& arguments, QTextStream& out, QTextStream& err) {
    QStringList words = arguments;
    const bool repair = words.removeAll(QStringLiteral("--repair")) > 0;
    const auto names =
        ToolSupport::Names(words, 1, QStringLiteral("check potrebuje eno zbirko."), err);
    if (!names) {
        return BadArguments;
    }
    QString problem;
    const auto address = DatabaseAddress::Parse(names->at(0), problem);
    if (!address) {
        return ToolSupport::Usage(err, problem);
    }
    // The collection is examined as it lies; it is opened for writing only to be repaired.
    auto connection = DatabaseAddress::Connection(*address);
    connection->OpenForReading();
    if (connection->State() != modDatabase::adStateOpen) {
        return ToolSupport::Failure(err, connection->LastError());
    }
    try {
        const CollectionCheck::Report report = CollectionCheck::Check(*connection);
        if (report.integrityChecked) {
            out << QStringLiteral("Celovitost datoteke (PRAGMA integrity_check): ")
                << report.integrity.join(QStringLiteral("; ")) << Qt::endl;
        }
        for (const CollectionCheck::Finding& finding : report.findings) {
            out << Line(finding) << Qt::endl;
        }
        const bool damaged =
            report.integrityChecked && report.integrity != QStringList{QStringLiteral("ok")};
        if (repair && damaged) {
            out << QStringLiteral("Datoteka je poškodovana, zato ni popravljeno nič.") << Qt::endl;
        } else if (repair && !report.Clean()) {
            connection = DatabaseAddress::Connection(*address);
            connection->Open();
            if (connection->State() != modDatabase::adStateOpen) {
                return ToolSupport::Failure(err, connection->LastError());
            }
            for (const CollectionCheck::Finding& deleted : CollectionCheck::Repair(*connection)) {
                out << Line(deleted) << Qt::endl;
            }
        }
        out << (report.Clean() ? QStringLiteral("Ni najdenih napak.")
                               : QStringLiteral("Najdene so napake."))
            << Qt::endl;
        return report.Clean() ? Done : Found;
    } catch (...) {
        return ToolSupport::Failure(err, ToolSupport::ErrorText());
    }
}

}  // namespace ToolCommands
