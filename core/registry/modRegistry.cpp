#include "core/registry/modRegistry.h"

#include <QStandardPaths>

#include "core/AppError.h"
#include "core/registry/RegistryFile.h"

namespace modRegistry {
namespace {

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
    return RegistryFile::Load(StoreFile(machineWide)).FindValue(keyName, valueName) != nullptr;
}

QString GetRegistryString(const QString& keyName, const QString& valueName,
                          const QString& defaultValue, bool machineWide) {
    return ErrorPath::PassOn("modRegistry:GetRegistryString", [&] {
        const RegistryFile store = RegistryFile::Load(StoreFile(machineWide));
        const RegistryFile::Value* value = store.FindValue(keyName, valueName);
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
        const RegistryFile store = RegistryFile::Load(StoreFile(machineWide));
        const RegistryFile::Value* value = store.FindValue(keyName, valueName);
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
