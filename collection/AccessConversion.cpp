#include "collection/AccessConversion.h"

#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include "core/database/modDatabase.h"

namespace AccessConversion {
namespace {

bool CanWriteIn(const QString& folder) {
    return ::access(QFile::encodeName(folder).constData(), W_OK | X_OK) == 0;
}

bool Taken(const QString& path) {
    const QFileInfo info(path);
    return info.exists() || info.isSymLink();
}

}  // namespace

QString NewFileFor(const QString& accessFile) {
    const QFileInfo access(accessFile);
    QString folder = access.absolutePath();
    if (!CanWriteIn(folder)) {
        folder = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
                 QStringLiteral("/morvena");
        QDir().mkpath(folder);
    }
    const QString base =
        folder + QLatin1Char('/') + access.completeBaseName() + QStringLiteral("-linux");
    QString name = base + QStringLiteral(".mdb");
    for (int n = 2; Taken(name); ++n) {
        name = base + QStringLiteral("-%1.mdb").arg(n);
    }
    return name;
}

CollectionCopy::Outcome Convert(const QString& accessFile, const QString& newFile,
                                const CollectionCopy::Hooks& hooks) {
    DatabaseAddress::Address from;
    from.kind = modDatabase::FileDatabase;
    from.database = accessFile;
    DatabaseAddress::Address to = from;
    to.database = newFile;
    return CollectionCopy::Copy(from, to, hooks);
}

}  // namespace AccessConversion
