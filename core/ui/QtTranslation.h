#pragma once

class QCoreApplication;

// Qt's own texts (the print and file dialogs, the standard buttons of dialogs and message
// boxes) in Slovenian, from Qt's Slovenian catalogue "qt_sl.qm" in Qt's translations folder
// (Debian's qt6-translations-l10n).
namespace QtTranslation {

// Loads the catalogue and installs it in the application; false when it cannot be loaded (Qt's
// texts then stay in English).
bool Install(QCoreApplication& application);

}  // namespace QtTranslation
