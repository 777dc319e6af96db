// main/: the main window, which opens every other window.
// May use: about, settings, lists, search, editor, display, collection, exchange, core/startup,
// core/database, core/registry, core/ui, core.
#pragma once

#include <QMainWindow>
#include <QModelIndex>
#include <QPointer>
#include <QString>
#include <functional>

#include "display/PagePrinter.h"
#include "display/PageView.h"
#include "main/MainMenus.h"

class QFrame;
class frmFind;
class QTextBrowser;
class QTreeView;
class RecipeTreeModel;

// The main window: the recipe tree on the left, the page of the selected node on the right,
// the splitter between them, the menu bar and the toolbar.
class frmMain : public QMainWindow {
    Q_OBJECT

public:
    explicit frmMain(QWidget* parent = nullptr);
    ~frmMain() override;

    // The one main window of the program (nullptr before it is created).
    static frmMain* Instance();

    // Rebuilds the tree from the database and ends on the first group.
    void RefreshTreeView();
    // Shows the page of the selected node.
    void tvRecipes_NodeClick();
    // Sets the commands' enabled states by the kind of the selected node.
    void EnableControls();
    // The node the tree shows with a key, as the tree's model gives it (invalid for none).
    QModelIndex NodeOfKey(const QString& key) const;
    // Places the splitter's left edge (twips) within its limits and stores the position.
    void MoveSplitter(int wantedTwips);
    // Prints the page shown, with the print dialog or at once.
    void PrintDisplay(bool showDialog);
    // Rebuilds the tree, selects the node with `key` (the first group when none has it) and
    // shows its page.
    void RefreshAndRestore(const QString& key);
    // Selects the node with `key` (the selection stays when none has it) and shows its page: what
    // a double click on a result of the search window does.
    void ShowNode(const QString& key);

    QTreeView* tvRecipes = nullptr;
    QTextBrowser* webDisplay = nullptr;
    QFrame* imgSplitter = nullptr;
    MainMenus menus;

    // The address of the page shown ("about:blank" when empty).
    QString DisplayedAddress() const { return m_address; }

protected:
    void closeEvent(QCloseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    // The address shown before any page and when none is to be shown.
    static const QString BlankPage;

    // Reads the tree anew and selects its first node, without showing a page; `groupsRead` as
    // RecipeTreeModel::Reload gives it.
    void RebuildTree(const std::function<void(const QString&)>& groupsRead = {});
    // Writes the page of the node with a key into the display file.
    void WritePage(const QString& key);
    // Writes the first group's page and starts laying it out while the tree is read on.
    PageView::Prepared PrepareFirstPage(const QString& key);
    void Form_Load();
    void Form_Resize();
    bool Form_QueryUnload();
    void Form_Unload();
    void Navigate(const QString& address);
    void Navigate(PageView::Prepared page);
    void LayoutControls();
    void ConnectCommands();
    void ShowPopupMenu(const QPoint& globalPosition);
    void webDisplay_PrintTemplateTeardown();

    void mnuDocumentNew_Click();
    void mnuDocumentEdit_Click();
    void mnuEditSources_Click();
    void mnuEditIngredients_Click();
    void mnuEditUnits_Click();
    void mnuToolsFind_Click();
    void mnuEditGroupNew_Click();
    void mnuEditGroupEdit_Click();
    void mnuEditTypeNew_Click();
    void mnuEditTypeEdit_Click();
    void mnuDocumentDelete_Click();
    void mnuDocumentPrint_Click();
    void mnuDocumentQuit_Click();
    void mnuDocumentImport_Click();
    void mnuDocumentExport_Click();
    qint32 ImportType();
    void mnuEditGroupDelete_Click();
    void mnuEditTypeDelete_Click();
    void mnuToolsSettings_Click();
    void mnuHelpDocumentation_Click();
    void mnuHelpAbout_Click();
    void tbMain_ButtonClick(const QString& key);
    void tvRecipes_DblClick();
    void tvRecipes_MouseDown(const QPoint& globalPosition);

    // The selected node's kind letter ("G", "T", "R"; empty when none) and key.
    QString SelectedKind() const;
    qint32 SelectedID() const;
    QString SelectedKey() const;
    // The group of the selected node: the node itself for a group, the one above for a subgroup
    // or a recipe.
    qint32 SelectedGroupID() const;
    // Opens the recipe editor for a recipe (-1 for a new one); returns lngLastID afterwards.
    qint32 EditRecipe(qint32 recipeID);
    // Opens the list editor for sources, units or ingredients.
    void EditList(qint32 mode);
    // Opens the record entry dialog for a group or a subgroup; returns lngLastID afterwards.
    qint32 EditRecord(qint32 mode, qint32 id, qint32 groupID);

    QPointer<frmFind> m_find;
    QString m_address;
    bool m_dragging = false;
    bool m_selectingFromCode = false;
    RecipeTreeModel* m_tree = nullptr;
    QString m_keyAtPress;    // the selected node's key when a mouse button went down
    int m_splitterLeft = 0;  // twips
    PagePrinter::PageSetup m_savedPageSetup;
};
