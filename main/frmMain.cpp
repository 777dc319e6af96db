#include "main/frmMain.h"

#include <QAction>
#include <QFrame>
#include <QMenu>
#include <QMouseEvent>
#include <QScopeGuard>
#include <QShortcut>
#include <QTextBrowser>
#include <QToolBar>
#include <QTreeView>

#include "core/AppError.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "core/ui/UiServices.h"
#include "display/PageView.h"
#include "display/modDisplay.h"
#include "main/RecipeTreeModel.h"

using UiServices::MsgBox;
using UiServices::SetMousePointer;

namespace {

frmMain* g_instance = nullptr;

// Runs a handler whenever a mouse button goes down on a widget (before the widget handles it).
class PressWatcher : public QObject {
public:
    PressWatcher(QWidget* widget, std::function<void()> onPress)
        : QObject(widget), m_onPress(std::move(onPress)) {
        widget->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::MouseButtonPress) {
            m_onPress();
        }
        return QObject::eventFilter(watched, event);
    }

private:
    std::function<void()> m_onPress;
};

}  // namespace

const QString frmMain::BlankPage = QStringLiteral("about:blank");

frmMain* frmMain::Instance() { return g_instance; }

frmMain::frmMain(QWidget* parent) : QMainWindow(parent) {
    g_instance = this;
    setObjectName(QStringLiteral("frmMain"));
    menus.Build(this);
    auto* central = new QWidget(this);
    setCentralWidget(central);
    tvRecipes = new QTreeView(central);
    tvRecipes->setObjectName(QStringLiteral("tvRecipes"));
    m_tree = new RecipeTreeModel(tvRecipes);
    tvRecipes->setModel(m_tree);
    tvRecipes->setHeaderHidden(true);
    tvRecipes->setUniformRowHeights(true);
    tvRecipes->setExpandsOnDoubleClick(true);
    tvRecipes->viewport()->installEventFilter(this);
    imgSplitter = new QFrame(central);
    imgSplitter->setObjectName(QStringLiteral("imgSplitter"));
    imgSplitter->setCursor(Qt::SplitHCursor);
    imgSplitter->installEventFilter(this);
    webDisplay = new QTextBrowser(central);
    webDisplay->setObjectName(QStringLiteral("webDisplay"));
    webDisplay->setOpenLinks(false);
    ConnectCommands();
    Form_Load();
}

frmMain::~frmMain() {
    if (g_instance == this) {
        g_instance = nullptr;
    }
}

void frmMain::ConnectCommands() {
    connect(tvRecipes->selectionModel(), &QItemSelectionModel::currentChanged, this, [this] {
        if (!m_selectingFromCode) {
            tvRecipes_NodeClick();
        }
    });
    // A click on the node that is already selected, or Enter or Space on it, shows its page
    // afresh as well (the page may have changed, e.g. after a source was renamed).
    new PressWatcher(tvRecipes->viewport(), [this] { m_keyAtPress = SelectedKey(); });
    connect(tvRecipes, &QTreeView::pressed, this, [this] {
        if (SelectedKey() == m_keyAtPress && !m_selectingFromCode) {
            tvRecipes_NodeClick();
        }
    });
    for (const int key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space}) {
        auto* shortcut =
            new QShortcut(QKeySequence(key), tvRecipes, nullptr, nullptr, Qt::WidgetShortcut);
        connect(shortcut, &QShortcut::activated, this, [this] { tvRecipes_NodeClick(); });
    }
    connect(tvRecipes, &QTreeView::doubleClicked, this, [this] { tvRecipes_DblClick(); });
    const auto on = [this](QAction* action, void (frmMain::*handler)()) {
        connect(action, &QAction::triggered, this, handler);
    };
    on(menus.mnuDocumentNew, &frmMain::mnuDocumentNew_Click);
    on(menus.mnuDocumentEdit, &frmMain::mnuDocumentEdit_Click);
    on(menus.mnuEditSources, &frmMain::mnuEditSources_Click);
    on(menus.mnuEditIngredients, &frmMain::mnuEditIngredients_Click);
    on(menus.mnuEditUnits, &frmMain::mnuEditUnits_Click);
    on(menus.mnuToolsFind, &frmMain::mnuToolsFind_Click);
    on(menus.mnuEditGroupNew, &frmMain::mnuEditGroupNew_Click);
    on(menus.mnuEditGroupEdit, &frmMain::mnuEditGroupEdit_Click);
    on(menus.mnuEditTypeNew, &frmMain::mnuEditTypeNew_Click);
    on(menus.mnuEditTypeEdit, &frmMain::mnuEditTypeEdit_Click);
    on(menus.mnuDocumentDelete, &frmMain::mnuDocumentDelete_Click);
    on(menus.mnuDocumentPrint, &frmMain::mnuDocumentPrint_Click);
    on(menus.mnuDocumentQuit, &frmMain::mnuDocumentQuit_Click);
    on(menus.mnuDocumentImport, &frmMain::mnuDocumentImport_Click);
    on(menus.mnuDocumentExport, &frmMain::mnuDocumentExport_Click);
    on(menus.mnuEditGroupDelete, &frmMain::mnuEditGroupDelete_Click);
    on(menus.mnuEditTypeDelete, &frmMain::mnuEditTypeDelete_Click);
    on(menus.mnuToolsSettings, &frmMain::mnuToolsSettings_Click);
    on(menus.mnuHelpDocumentation, &frmMain::mnuHelpDocumentation_Click);
    on(menus.mnuHelpAbout, &frmMain::mnuHelpAbout_Click);
    connect(menus.tbMain, &QToolBar::actionTriggered, this,
            [this](QAction* button) { tbMain_ButtonClick(button->data().toString()); });
}

void frmMain::RefreshTreeView() {
    ErrorPath::PassOn("frmMain:RefreshTreeView", [&] {
        SetMousePointer(UiServices::vbHourglass);
        // The first group's page is written as soon as the groups are read, and laid out while
        // their subgroups and recipes are read.
        PageView::Prepared firstPage;
        RebuildTree([&](const QString& firstGroup) { firstPage = PrepareFirstPage(firstGroup); });
        if (m_tree->rowCount() == 0) {
            Navigate(BlankPage);
        } else if (firstPage.IsValid()) {
            Navigate(std::move(firstPage));
        }
        EnableControls();
        SetMousePointer(UiServices::vbDefault);
    });
}

void frmMain::RebuildTree(const std::function<void(const QString&)>& groupsRead) {
    {
        // The nodes read before a failure stay in the tree.
        m_selectingFromCode = true;
        const auto read = qScopeGuard([this] { m_selectingFromCode = false; });
        m_tree->Reload(groupsRead);
    }
    if (m_tree->rowCount() > 0) {
        m_selectingFromCode = true;
        tvRecipes->setCurrentIndex(m_tree->index(0, 0));
        m_selectingFromCode = false;
    }
}

PageView::Prepared frmMain::PrepareFirstPage(const QString& key) {
    PageView::Prepared page;
    if (!key.isEmpty()) {
        // As the node-click handling of that group, which reports its own errors.
        ErrorPath::Handle("frmMain:tvRecipes_NodeClick->", [&] {
            WritePage(key);
            // The page's statements filled the cache; the tree's read fills it again.
            modDatabase::ReleaseCacheMemory();
            page = PageView::Prepare(modGeneral::TempFilename);
        });
    }
    return page;
}

void frmMain::RefreshAndRestore(const QString& key) {
    // As RefreshTreeView, but the first group's page, which the restored node's page would
    // replace at once, is not written on the way.
    ErrorPath::PassOn("frmMain:RefreshTreeView", [&] {
        SetMousePointer(UiServices::vbHourglass);
        RebuildTree();
        if (m_tree->rowCount() == 0) {
            Navigate(BlankPage);
        }
        EnableControls();
    });
    m_selectingFromCode = true;
    modGeneral::SelectTreeViewItem(tvRecipes, key);
    m_selectingFromCode = false;
    tvRecipes_NodeClick();
    EnableControls();
    SetMousePointer(UiServices::vbDefault);
}

void frmMain::tvRecipes_NodeClick() {
    ErrorPath::Handle("frmMain:tvRecipes_NodeClick->", [&] {
        SetMousePointer(UiServices::vbHourglass);
        EnableControls();
        const QString key = SelectedKey();
        if (!key.isEmpty()) {
            WritePage(key);
            Navigate(modGeneral::TempFilename);
        }
        SetMousePointer(UiServices::vbDefault);
    });
}

void frmMain::WritePage(const QString& key) {
    const QChar kind = key.at(0);
    const qint32 id = key.mid(1).toInt();
    if (kind == QLatin1Char('R')) {
        modDisplay::DisplayRecipe(id);
    } else if (kind == QLatin1Char('T')) {
        modDisplay::DisplayType(id);
    } else if (kind == QLatin1Char('G')) {
        modDisplay::DisplayGroup(id);
    }
}

void frmMain::Navigate(const QString& address) {
    m_address = address;
    if (address == BlankPage) {
        webDisplay->clear();
        return;
    }
    PageView::Show(webDisplay, address);
}

void frmMain::Navigate(PageView::Prepared page) {
    m_address = modGeneral::TempFilename;
    PageView::Show(webDisplay, std::move(page));
}

QString frmMain::SelectedKey() const { return modGeneral::ItemKey(tvRecipes->currentIndex()); }
QString frmMain::SelectedKind() const { return SelectedKey().left(1); }
qint32 frmMain::SelectedID() const { return SelectedKey().mid(1).toInt(); }

qint32 frmMain::SelectedGroupID() const {
    QModelIndex node = tvRecipes->currentIndex();
    while (node.parent().isValid()) {
        node = node.parent();
    }
    return modGeneral::ItemKey(node).mid(1).toInt();
}

void frmMain::EnableControls() {
    ErrorPath::PassOn("frmMain:EnableControls", [&] {
        const QString kind = SelectedKind();
        const bool recipe = kind == QLatin1String("R");
        const bool group = kind == QLatin1String("G");
        const bool type = kind == QLatin1String("T");
        menus.mnuDocumentEdit->setEnabled(recipe);
        menus.mnuDocumentDelete->setEnabled(recipe);
        menus.Button(QStringLiteral("editRecipe"))->setEnabled(recipe);
        menus.Button(QStringLiteral("deleteRecipe"))->setEnabled(recipe);
        menus.mnuEditGroupEdit->setEnabled(group);
        menus.mnuEditGroupDelete->setEnabled(group);
        menus.mnuEditTypeEdit->setEnabled(type);
        menus.mnuEditTypeDelete->setEnabled(type);
        menus.mnuEditTypeNew->setEnabled(!kind.isEmpty());
    });
}

QModelIndex frmMain::NodeOfKey(const QString& key) const {
    return m_tree->IndexOf(m_tree->Catalogue().Find(key));
}

void frmMain::ShowNode(const QString& key) {
    modGeneral::SelectTreeViewItem(tvRecipes, key);
    tvRecipes_NodeClick();
}

void frmMain::tbMain_ButtonClick(const QString& key) {
    ErrorPath::Handle("frmMain:tbMain_ButtonClick->", [&] {
        const QMap<QString, QAction*> commands{
            {QStringLiteral("newRecipe"), menus.mnuDocumentNew},
            {QStringLiteral("editRecipe"), menus.mnuDocumentEdit},
            {QStringLiteral("deleteRecipe"), menus.mnuDocumentDelete},
            {QStringLiteral("listSources"), menus.mnuEditSources},
            {QStringLiteral("listIngredients"), menus.mnuEditIngredients},
            {QStringLiteral("listUnits"), menus.mnuEditUnits},
            {QStringLiteral("find"), menus.mnuToolsFind},
            {QStringLiteral("exitProgram"), menus.mnuDocumentQuit},
        };
        if (key == QLatin1String("printRecipe")) {
            SetMousePointer(UiServices::vbHourglass);
            PrintDisplay(false);
            SetMousePointer(UiServices::vbDefault);
        } else if (QAction* command = commands.value(key)) {
            command->trigger();
        }
    });
}

void frmMain::tvRecipes_DblClick() {
    ErrorPath::Handle("frmMain:tvRecipes_DblClick->", [&] {
        const QString kind = SelectedKind();
        QAction* command = kind == QLatin1String("G")   ? menus.mnuEditGroupEdit
                           : kind == QLatin1String("T") ? menus.mnuEditTypeEdit
                           : kind == QLatin1String("R") ? menus.mnuDocumentEdit
                                                        : nullptr;
        if (command) {
            command->trigger();
        }
    });
}

void frmMain::tvRecipes_MouseDown(const QPoint& globalPosition) {
    ErrorPath::Handle("frmMain:tvRecipes_MouseDown->", [&] { ShowPopupMenu(globalPosition); });
}

void frmMain::ShowPopupMenu(const QPoint& globalPosition) {
    const QString kind = SelectedKind();
    QMenu* menu = kind == QLatin1String("R") ? menus.mnuDocument : menus.mnuEdit;
    QAction* defaultItem = kind == QLatin1String("R")   ? menus.mnuDocumentEdit
                           : kind == QLatin1String("T") ? menus.mnuEditTypeEdit
                           : kind == QLatin1String("G") ? menus.mnuEditGroupEdit
                                                        : menus.mnuEditGroupNew;
    menu->setDefaultAction(defaultItem);
    menu->exec(globalPosition);
    menu->setDefaultAction(nullptr);
}
