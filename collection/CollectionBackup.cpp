#include "collection/CollectionBackup.h"

#include <QFileInfo>
#include <QTemporaryFile>

#include "collection/CollectionCheck.h"
#include "core/database/SqlStatement.h"
#include "core/database/modDatabase.h"

namespace CollectionBackup {
namespace {

using modDatabase::DbConnection;

std::shared_ptr<DbConnection> FileConnection(const QString& file) {
    return std::make_shared<DbConnection>(
        modDatabase::FileDatabase,
        modDatabase::BuildConnectionString(modDatabase::FileDatabase, QString(), file, QString(),
                                           QString()));
}

bool Taken(const QString& path) {
    const QFileInfo info(path);
    return info.exists() || info.isSymLink();
}

// The database's own check of the file, on a connection of the program's kind (its collation
// orders the indexes).
QStringList IntegrityOf(const QString& file, QString& problem) {
    auto connection = FileConnection(file);
    connection->Open();
    if (connection->State() != modDatabase::adStateOpen) {
        problem = connection->LastError();
        return {};
    }
    SqlStatement query(*connection);
    QStringList lines;
    if (!query.Exec(QStringLiteral("PRAGMA integrity_check"))) {
        problem = query.Failure().text;
        return {};
    }
    while (query.Next()) {
        lines << query.Value(0).toString();
    }
    return lines;
}

}  // namespace

Outcome Backup(const QString& file, const QString& destination) {
    Outcome outcome;
    if (Taken(destination)) {
        outcome.message = QStringLiteral("Datoteka %1 že obstaja.").arg(destination);
        return outcome;
    }
    auto source = FileConnection(file);
    source->Open();
    if (source->State() != modDatabase::adStateOpen) {
        outcome.message = source->LastError();
        return outcome;
    }
    outcome.message = CollectionCheck::Damage(*source, file);
    if (!outcome.message.isEmpty()) {
        return outcome;
    }
    // The copy is made beside its destination under a name of its own and renamed when it
    // has passed its check.
    QTemporaryFile part(QFileInfo(destination).absolutePath() + QLatin1Char('/') +
                        QStringLiteral(".") + QFileInfo(destination).fileName() +
                        QStringLiteral(".XXXXXX"));
    if (!part.open()) {
        outcome.message = QStringLiteral("Datoteke %1 ni mogoče ustvariti: %2")
                              .arg(destination, part.errorString());
        return outcome;
    }
    part.close();
    SqlStatement vacuum(*source);
    if (!vacuum.Exec(QStringLiteral("VACUUM INTO $1"), {part.fileName()})) {
        outcome.message = source->DriverName() + QStringLiteral("->") + vacuum.Failure().text;
        return outcome;
    }
    source.reset();
    QString problem;
    outcome.integrity = IntegrityOf(part.fileName(), problem);
    if (!problem.isEmpty() || outcome.integrity != QStringList{QStringLiteral("ok")}) {
        outcome.message = problem.isEmpty()
                              ? QStringLiteral("Kopija ni prestala preverjanja celovitosti.")
                              : problem;
        return outcome;
    }
    QFile::setPermissions(part.fileName(), QFileInfo(file).permissions());
    // Renaming never replaces a file that appeared meanwhile.
    if (!QFile::rename(part.fileName(), destination)) {
        outcome.message = Taken(destination)
                              ? QStringLiteral("Datoteka %1 že obstaja.").arg(destination)
                              : QStringLiteral("Datoteke %1 ni mogoče ustvariti.").arg(destination);
        return outcome;
    }
    part.setAutoRemove(false);
    outcome.done = true;
    return outcome;
}

}  // namespace CollectionBackup
