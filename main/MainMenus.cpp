#include "main/MainMenus.h"

#include <QAction>
#include <QFileInfo>
#include <QIcon>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QToolBar>

#include "core/modGeneral.h"

namespace {

QMenu* AddMenu(QMainWindow* window, const char* name, const QString& caption) {
    QMenu* menu = window->menuBar()->addMenu(caption);
    menu->setObjectName(QString::fromLatin1(name));
    menu->menuAction()->setObjectName(QString::fromLatin1(name));
    return menu;
}

QAction* AddItem(QMenu* menu, const char* name, const QString& caption,
                 const QKeySequence& shortcut = QKeySequence()) {
    QAction* action = menu->addAction(caption);
    action->setObjectName(QString::fromLatin1(name));
    action->setShortcut(shortcut);
    return action;
}

void AddBar(QMenu* menu, const char* name) {
    menu->addSeparator()->setObjectName(QString::fromLatin1(name));
}

// An icon of the desktop's theme, or the one shipped with the program.
QIcon ThemeIcon(const QString& name) {
    const QString shipped =
        modGeneral::DefaultInstallDir() + QStringLiteral("/icons/") + name + QStringLiteral(".svg");
    return QIcon::fromTheme(name, QFileInfo::exists(shipped) ? QIcon(shipped) : QIcon());
}

}  // namespace

void MainMenus::Build(QMainWindow* window) {
    mnuDocument = AddMenu(window, "mnuDocument", QStringLiteral("&Dokument"));
    mnuDocumentNew = AddItem(mnuDocument, "mnuDocumentNew", QStringLiteral("&Nov recept..."),
                             QKeySequence(QStringLiteral("Ctrl+N")));
    mnuDocumentEdit = AddItem(mnuDocument, "mnuDocumentEdit", QStringLiteral("&Uredi recept..."),
                              QKeySequence(QStringLiteral("Ctrl+E")));
    mnuDocumentDelete = AddItem(mnuDocument, "mnuDocumentDelete", QStringLiteral("Iz&briši recept"),
                                QKeySequence(QStringLiteral("Ctrl+D")));
    AddBar(mnuDocument, "mnuDocumentBar0");
    mnuDocumentPrint =
        AddItem(mnuDocument, "mnuDocumentPrint", QStringLiteral("Na&tisni recept..."),
                QKeySequence(QStringLiteral("Ctrl+P")));
    AddBar(mnuDocument, "mnuDocumentBar1");
    mnuDocumentImport =
        AddItem(mnuDocument, "mnuDocumentImport", QStringLiteral("Uvo&zi recepte..."));
    mnuDocumentExport =
        AddItem(mnuDocument, "mnuDocumentExport", QStringLiteral("Iz&vozi recepte..."));
    AddBar(mnuDocument, "mnuDocumentBar2");
    mnuDocumentQuit = AddItem(mnuDocument, "mnuDocumentQuit", QStringLiteral("&Izhod"),
                              QKeySequence(QStringLiteral("Ctrl+Q")));

    mnuEdit = AddMenu(window, "mnuEdit", QStringLiteral("&Urejanje"));
    mnuEditGroupNew = AddItem(mnuEdit, "mnuEditGroupNew", QStringLiteral("&Nova skupina..."));
    mnuEditGroupEdit = AddItem(mnuEdit, "mnuEditGroupEdit", QStringLiteral("&Uredi skupino..."));
    mnuEditGroupDelete = AddItem(mnuEdit, "mnuEditGroupDelete", QStringLiteral("&Izbriši skupino"));
    AddBar(mnuEdit, "mnuEditBar0");
    mnuEditTypeNew = AddItem(mnuEdit, "mnuEditTypeNew", QStringLiteral("Nova &podskupina..."));
    mnuEditTypeEdit = AddItem(mnuEdit, "mnuEditTypeEdit", QStringLiteral("Uredi p&odskupino..."));
    mnuEditTypeDelete = AddItem(mnuEdit, "mnuEditTypeDelete", QStringLiteral("Izbriši po&dkupino"));
    AddBar(mnuEdit, "mnuEditBar1");
    mnuEditSources = AddItem(mnuEdit, "mnuEditSources", QStringLiteral("Uredi seznam &virov..."));
    mnuEditIngredients =
        AddItem(mnuEdit, "mnuEditIngredients", QStringLiteral("Uredi seznam &sestavin..."));
    mnuEditUnits = AddItem(mnuEdit, "mnuEditUnits", QStringLiteral("Uredi seznam &enot..."));

    mnuTools = AddMenu(window, "mnuTools", QStringLiteral("&Orodja"));
    mnuToolsFind = AddItem(mnuTools, "mnuToolsFind", QStringLiteral("&Iskanje..."),
                           QKeySequence(QStringLiteral("Ctrl+F")));
    mnuToolsSettings = AddItem(mnuTools, "mnuToolsSettings", QStringLiteral("&Nastavitve..."));

    mnuHelp = AddMenu(window, "mnuHelp", QStringLiteral("&Pomoč"));
    mnuHelpDocumentation = AddItem(mnuHelp, "mnuHelpDocumentation", QStringLiteral("&Navodila"));
    AddBar(mnuHelp, "mnuHelpbar0");
    mnuHelpAbout = AddItem(mnuHelp, "mnuHelpAbout", QStringLiteral("Vizitka..."));

    tbMain = window->addToolBar(QString());
    tbMain->setObjectName(QStringLiteral("tbMain"));
    tbMain->setMovable(false);
    const struct {
        const char* key;
        const char* toolTip;
        const char* icon;
    } buttons[] = {
        {"newRecipe", "Nov recept (Ctrl+N)", "document-new"},
        {"editRecipe", "Uredi recept (Ctrl+E)", "document-edit"},
        {"deleteRecipe", "Izbriši recept (Ctrl+D)", "edit-delete"},
        {"printRecipe", "Natisni recept (Ctrl+P)", "document-print"},
        {"listSources", "Uredi seznam virov", "x-office-address-book"},
        {"listIngredients", "Uredi seznam sestavin", "format-justify-fill"},
        {"listUnits", "Uredi seznam enot", "accessories-calculator"},
        {"find", "Iskanje (Ctrl+F)", "edit-find"},
        {"exitProgram", "Izhod (Ctrl+Q)", "application-exit"},
    };
    for (const auto& button : buttons) {
        QAction* action = tbMain->addAction(ThemeIcon(QString::fromLatin1(button.icon)),
                                            QString::fromUtf8(button.toolTip));
        action->setObjectName(QString::fromLatin1(button.key));
        action->setToolTip(QString::fromUtf8(button.toolTip));
        action->setData(QString::fromLatin1(button.key));
    }
}

QAction* MainMenus::Button(const QString& key) const {
    return tbMain->findChild<QAction*>(key, Qt::FindDirectChildrenOnly);
}
