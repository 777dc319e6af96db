// core/registry/: the settings store, two registry-style text files of named values.
// May use: core.
#pragma once

#include <QString>
#include <QtGlobal>

// The settings store: named text and number values under keys, in two roots (machine-wide and
// per-user), each root one file in the settings folder. A missing key or value, or a value of
// the other kind, reads as the caller's default; a write that cannot be stored is lost silently.
namespace modRegistry {

// The program's own key.
extern const QString ProgramKey;

// The folder of the two files: $MORVENA_CONFIG_DIR, or "morvena" in the user's config folder.
QString StoreFolder();
// The file of one root.
QString StoreFile(bool machineWide);

// True when the value is stored (of either kind) under the key.
bool RegistryValueExists(const QString& keyName, const QString& valueName, bool machineWide);

QString GetRegistryString(const QString& keyName, const QString& valueName,
                          const QString& defaultValue, bool machineWide);
void SetRegistryString(const QString& keyName, const QString& valueName, QString value,
                       bool machineWide);
qint32 GetRegistryLong(const QString& keyName, const QString& valueName, qint32 defaultValue,
                       bool machineWide);
void SetRegistryLong(const QString& keyName, const QString& valueName, qint32 value,
                     bool machineWide);

}  // namespace modRegistry
