// app/: the program's entry point: start-up with the settings dialog and the main window.
// May use: main, settings, core/startup, core/ui, core.
#include <QApplication>
#include <QIcon>
#include <memory>

#include "core/modGeneral.h"
#include "core/startup/Startup.h"
#include "core/ui/QtTranslation.h"
#include "main/frmMain.h"
#include "settings/WindowsCollection.h"
#include "settings/frmSettings.h"

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Morvena"));
    QtTranslation::Install(app);
    QApplication::setWindowIcon(QIcon::fromTheme(
        QStringLiteral("morvena"),
        QIcon(modGeneral::DefaultInstallDir() + QStringLiteral("/icons/morvena.svg"))));
    std::unique_ptr<frmMain> mainWindow;
    const bool started = modGeneral::Main({
        [] {
            frmSettings settings;
            settings.exec();
        },
        [&] {
            mainWindow = std::make_unique<frmMain>();
            mainWindow->show();
        },
        [] { WindowsCollection::Offer(nullptr); },
    });
    return started ? QApplication::exec() : 1;
}
