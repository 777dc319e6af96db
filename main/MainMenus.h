#pragma once

#include <QString>

class QAction;
class QMainWindow;
class QMenu;
class QToolBar;

// The main window's menu bar and toolbar: every command with its caption, access key,
// shortcut and tool tip. Each menu, item and toolbar button carries its name as objectName.
struct MainMenus {
    QMenu* mnuDocument = nullptr;
    QAction* mnuDocumentNew = nullptr;
    QAction* mnuDocumentEdit = nullptr;
    QAction* mnuDocumentDelete = nullptr;
    QAction* mnuDocumentPrint = nullptr;
    QAction* mnuDocumentImport = nullptr;
    QAction* mnuDocumentExport = nullptr;
    QAction* mnuDocumentQuit = nullptr;

    QMenu* mnuEdit = nullptr;
    QAction* mnuEditGroupNew = nullptr;
    QAction* mnuEditGroupEdit = nullptr;
    QAction* mnuEditGroupDelete = nullptr;
    QAction* mnuEditTypeNew = nullptr;
    QAction* mnuEditTypeEdit = nullptr;
    QAction* mnuEditTypeDelete = nullptr;
    QAction* mnuEditSources = nullptr;
    QAction* mnuEditIngredients = nullptr;
    QAction* mnuEditUnits = nullptr;

    QMenu* mnuTools = nullptr;
    QAction* mnuToolsFind = nullptr;
    QAction* mnuToolsSettings = nullptr;

    QMenu* mnuHelp = nullptr;
    QAction* mnuHelpDocumentation = nullptr;
    QAction* mnuHelpAbout = nullptr;

    QToolBar* tbMain = nullptr;

    // Builds the menu bar and the toolbar of `window`.
    void Build(QMainWindow* window);
    // The toolbar button with the given key ("newRecipe", "editRecipe", ...).
    QAction* Button(const QString& key) const;
};
