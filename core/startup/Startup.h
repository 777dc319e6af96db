// core/startup/: start-up: reads the program-wide settings values, stores the installation's
// values, opens the connection and shows the first windows; opens the installation's documents.
// May use: core/database, core/registry, core/ui, core.
#pragma once

#include <QString>
#include <functional>

namespace modGeneral {

// Reads the settings values with their start-up defaults. A stored display file whose folder
// is not there in this session gives way to the start-up default for the session (the store
// keeps it).
void ReadSettings();
// What the installation did on Windows: when the machine-wide store holds none of the
// connection values, stores the start-up values read by ReadSettings (DatabaseName,
// TempFilename, DatabaseType), once, so that the settings dialog's cancel path finds working
// values. The installation folder is never stored: it belongs to the program that runs.
void StoreInstallationValues();

// The installation folder: InstallDir as an installation stored it, or the program's own data
// folder (DefaultInstallDir) when none is stored, when the stored folder is a build tree's, or
// when it is gone while the program's own is there.
QString InstallationFolder();

// The windows that Main shows, modally, when no connection works: first the offer to convert a
// collection of the Windows program that the database setting names, then, when still no
// connection works, the settings dialog; then the main window.
struct StartupWindows {
    std::function<void()> showSettingsDialog;
    std::function<void()> showMainWindow;
    std::function<void()> offerConversion;
};
// The program's entry procedure. Returns false when the program is to end at once.
bool Main(const StartupWindows& windows);

// Opens a document (relative to the installation folder) or a link with the desktop's program.
void OpenRegisteredFile(const QString& fileName);

}  // namespace modGeneral
