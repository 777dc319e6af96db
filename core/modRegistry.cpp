#include "core/modRegistry.h"

#include <QStandardPaths>

#include "core/AppError.h"
#include "core/RegistryFile.h"

namespace modRegistry {

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
        RegistryFile store = RegistryFile::Load(StoreFile(machineWide));
        store.SetValue(keyName, {valueName, RegistryFile::RegSz, value, 0});
        store.Save(StoreFile(machineWide));
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
        RegistryFile store = RegistryFile::Load(StoreFile(machineWide));
        store.SetValue(keyName,
                       {valueName, RegistryFile::RegDword, QString(), static_cast<quint32>(value)});
        store.Save(StoreFile(machineWide));
    });
}

}  // namespace modRegistry
