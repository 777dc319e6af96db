#include "core/startup/Startup.h"

#include <QFileInfo>

#include "core/AppError.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "core/registry/modRegistry.h"
#include "core/ui/UiServices.h"

namespace modGeneral {

void ReadSettings() {
    using namespace modRegistry;
    ServerName = GetRegistryString(ProgramKey, QStringLiteral("ServerName"), QString(), true);
    DatabaseName = GetRegistryString(ProgramKey, QStringLiteral("DatabaseName"),
                                     QStringLiteral("Morvena.mdb"), true);
    TempFilename = UsableTempFilename(
        GetRegistryString(ProgramKey, QStringLiteral("TempFilename"), DefaultTempFilename(), true));
    Username = GetRegistryString(ProgramKey, QStringLiteral("Username"), QString(), true);
    Password = GetRegistryString(ProgramKey, QStringLiteral("Password"), QString(), true);
    DatabaseType = GetRegistryLong(ProgramKey, QStringLiteral("DatabaseType"), 1, true);
}

void StoreInstallationValues() {
    using namespace modRegistry;
    for (const char* name :
         {"ServerName", "DatabaseName", "TempFilename", "Username", "Password", "DatabaseType"}) {
        if (RegistryValueExists(ProgramKey, QString::fromLatin1(name), true)) {
            return;
        }
    }
    SetRegistryString(ProgramKey, QStringLiteral("DatabaseName"), DatabaseName, true);
    SetRegistryString(ProgramKey, QStringLiteral("TempFilename"), TempFilename, true);
    SetRegistryLong(ProgramKey, QStringLiteral("DatabaseType"), DatabaseType, true);
}

QString InstallationFolder() {
    using namespace modRegistry;
    const QString own = DefaultInstallDir();
    if (!RegistryValueExists(ProgramKey, QStringLiteral("InstallDir"), true)) {
        return own;
    }
    const QString stored = GetRegistryString(ProgramKey, QStringLiteral("InstallDir"), own, true);
    const bool gone = !QFileInfo(stored).isDir() && QFileInfo(own).isDir();
    return stored.isEmpty() || IsBuildTreeData(stored) || gone ? own : stored;
}

bool Main(const StartupWindows& windows) {
    return ErrorPath::Handle("modGeneral:Main->", [&] {
        ReadSettings();
        StoreInstallationValues();
        if (!DatabaseName.isEmpty()) {
            modDatabase::OpenConnection();
        }
        if (!modDatabase::Connection) {
            ErrorPath::Raise(91, QStringLiteral("Object variable not set"));
        }
        if (modDatabase::Connection->State() != modDatabase::adStateOpen &&
            windows.offerConversion) {
            windows.offerConversion();
        }
        if (modDatabase::Connection->State() != modDatabase::adStateOpen &&
            windows.showSettingsDialog) {
            windows.showSettingsDialog();
        }
        if (windows.showMainWindow) {
            windows.showMainWindow();
        }
    });
}

void OpenRegisteredFile(const QString& fileName) {
    QString installDir = InstallationFolder();
    if (!installDir.endsWith(QLatin1Char('/'))) {
        installDir += QLatin1Char('/');
    }
    UiServices::Open(fileName, installDir);
}

}  // namespace modGeneral
