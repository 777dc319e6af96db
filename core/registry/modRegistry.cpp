#include "core/registry/modRegistry.h"

#include <sys/stat.h>

#include <QFile>
#include <QStandardPaths>

#include "core/AppError.h"
#include "core/registry/RegistryFile.h"

namespace modRegistry {
namespace {

bool SameFile(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino && a.st_size == b.st_size &&
           a.st_mtim.tv_sec == b.st_mtim.tv_sec && a.st_mtim.tv_nsec == b.st_mtim.tv_nsec &&
           a.st_ctim.tv_sec == b.st_ctim.tv_sec && a.st_ctim.tv_nsec == b.st_ctim.tv_nsec;
}

// The store of a root as last read: the file is read again only when it changed (or another
// file took its name), not once for every value.
const RegistryFile& Current(bool machineWide) {
    struct Cache {
        bool loaded = false;
        QString fileName;
        bool exists = false;
        struct stat info {};
        RegistryFile store;
    };
    static Cache caches[2];
    Cache& cache = caches[machineWide ? 1 : 0];
    const QString fileName = StoreFile(machineWide);
    struct stat info {};
    const bool exists = ::stat(QFile::encodeName(fileName).constData(), &info) == 0;
    if (!cache.loaded || cache.fileName != fileName || cache.exists != exists ||
        (exists && !SameFile(cache.info, info))) {
        cache.store = RegistryFile::Load(fileName);
        cache.loaded = true;
        cache.fileName = fileName;
        cache.exists = exists;
        cache.info = info;
    }
    return cache.store;
}

// Writes one value: only its line changes. A file that cannot be read is never replaced, and a
// value already stored as given is not written again; either way the write is lost silently,
// as a refused write is.
void Store(bool machineWide, const QString& keyName, const RegistryFile::Value& value) {
    const QString fileName = StoreFile(machineWide);
    RegistryFile store = RegistryFile::Load(fileName);
    if (store.Readable() && store.SetValue(keyName, value)) {
        store.Save(fileName);
    }
}

}  // namespace

const QString ProgramKey = QStringLiteral("Software\\Orlessa\\Morvena");

QString StoreFolder() {
    const QString overridden = qEnvironmentVariable("MORVENA_CONFIG_DIR");
    if (!overridden.isEmpty()) {
        return overridden;
    }
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/morvena");
}

QString StoreFile(bool machineWide) {
    return StoreFolder() +
           (machineWide ? QStringLiteral("/machine.reg") : QStringLiteral("/user.reg"));
}

bool RegistryValueExists(const QString& keyName, const QString& valueName, bool machineWide) {
    return Current(machineWide).FindValue(keyName, valueName) != nullptr;
}

QString GetRegistryString(const QString& keyName, const QString& valueName,
                          const QString& defaultValue, bool machineWide) {
    return ErrorPath::PassOn("modRegistry:GetRegistryString", [&] {
        const RegistryFile::Value* value = Current(machineWide).FindValue(keyName, valueName);
        if (!value || value->type != RegistryFile::RegSz) {
            return defaultValue;
        }
        const int nul = value->text.indexOf(QChar(0));
        return nul < 0 ? value->text : value->text.left(nul);
    });
}

void SetRegistryString(const QString& keyName, const QString& valueName, QString value,
                       bool machineWide) {
    ErrorPath::PassOn("modRegistry:SetRegistryString", [&] {
        if (value.isEmpty()) {
            value = QString(QChar(0));
        }
        Store(machineWide, keyName, {valueName, RegistryFile::RegSz, value, 0});
    });
}

qint32 GetRegistryLong(const QString& keyName, const QString& valueName, qint32 defaultValue,
                       bool machineWide) {
    return ErrorPath::PassOn("modRegistry:GetRegistryLong", [&] {
        const RegistryFile::Value* value = Current(machineWide).FindValue(keyName, valueName);
        if (!value || value->type != RegistryFile::RegDword) {
            return defaultValue;
        }
        return static_cast<qint32>(value->number);
    });
}

void SetRegistryLong(const QString& keyName, const QString& valueName, qint32 value,
                     bool machineWide) {
    ErrorPath::PassOn("modRegistry:SetRegistryLong", [&] {
        Store(machineWide, keyName,
              {valueName, RegistryFile::RegDword, QString(), static_cast<quint32>(value)});
    });
}

}  // namespace modRegistry
