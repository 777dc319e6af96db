#include "main/frmMain.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QFile>
#include <QFont>
#include <QFrame>
#include <QLayout>
#include <QMenu>
#include <QMouseEvent>
#include <QScopeGuard>
#include <QShortcut>
#include <QTextBrowser>
#include <QToolBar>
#include <QTreeWidget>

#include "Version.h"
#include "about/frmAbout.h"
#include "collection/RecipeRows.h"
#include "core/AppError.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "core/registry/modRegistry.h"
#include "core/startup/Startup.h"
#include "core/ui/UiServices.h"
#include "display/PageView.h"
#include "display/modDisplay.h"
#include "editor/frmNew.h"
#include "lists/frmAddRecord.h"
#include "lists/frmEditList.h"
#include "main/TreeNode.h"
#include "search/frmFind.h"
#include "settings/frmSettings.h"

using modGeneral::TwipsPerPixel;
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

constexpr int MarginTwips = 120;
constexpr int MinimumSplitterTwips = 500;
constexpr int SplitterWidthTwips = 60;
const QString BlankPage = QStringLiteral("about:blank");

int Twips(int pixels) { return pixels * TwipsPerPixel; }
int Pixels(int twips) { return twips / TwipsPerPixel; }

qint32 ReadLong(const char* name, qint32 defaultValue) {
    return modRegistry::GetRegistryLong(modRegistry::ProgramKey, QString::fromLatin1(name),
                                        defaultValue, true);
}
void StoreLong(const char* name, qint32 value) {
    modRegistry::SetRegistryLong(modRegistry::ProgramKey, QString::fromLatin1(name), value, true);
}

// Runs a statement through a result set and tells whether it found any row.
bool HasRows(const QString& sql) {
    Recordset rs = modDatabase::GetRecordset(sql);
    const bool found = !rs.Eof();
    rs.Close();
    return found;
}

}  // namespace

frmMain* frmMain::Instance() { return g_instance; }

frmMain::frmMain(QWidget* parent) : QMainWindow(parent) {
    g_instance = this;
    setObjectName(QStringLiteral("frmMain"));
    menus.Build(this);
    auto* central = new QWidget(this);
    setCentralWidget(central);
    tvRecipes = new QTreeWidget(central);
    tvRecipes->setObjectName(QStringLiteral("tvRecipes"));
    tvRecipes->setHeaderHidden(true);
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
    connect(tvRecipes, &QTreeWidget::currentItemChanged, this, [this] {
        if (!m_selectingFromCode) {
            tvRecipes_NodeClick();
        }
    });
    // A click on the node that is already selected, or Enter or Space on it, shows its page
    // afresh as well (the page may have changed, e.g. after a source was renamed).
    new PressWatcher(tvRecipes->viewport(), [this] { m_nodeAtPress = tvRecipes->currentItem(); });
    connect(tvRecipes, &QTreeWidget::pressed, this, [this] {
        if (tvRecipes->currentItem() == m_nodeAtPress && !m_selectingFromCode) {
            tvRecipes_NodeClick();
        }
    });
    for (const int key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space}) {
        auto* shortcut =
            new QShortcut(QKeySequence(key), tvRecipes, nullptr, nullptr, Qt::WidgetShortcut);
        connect(shortcut, &QShortcut::activated, this, [this] { tvRecipes_NodeClick(); });
    }
    connect(tvRecipes, &QTreeWidget::itemDoubleClicked, this, [this] { tvRecipes_DblClick(); });
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
    on(menus.mnuEditGroupDelete, &frmMain::mnuEditGroupDelete_Click);
    on(menus.mnuEditTypeDelete, &frmMain::mnuEditTypeDelete_Click);
    on(menus.mnuToolsSettings, &frmMain::mnuToolsSettings_Click);
    on(menus.mnuHelpDocumentation, &frmMain::mnuHelpDocumentation_Click);
    on(menus.mnuHelpAbout, &frmMain::mnuHelpAbout_Click);
    connect(menus.tbMain, &QToolBar::actionTriggered, this,
            [this](QAction* button) { tbMain_ButtonClick(button->data().toString()); });
}

void frmMain::Form_Load() {
    const bool loaded = ErrorPath::Handle("frmMain:Form_Load->", [&] {
        setWindowTitle(QStringLiteral("%1 %2.%3.%4 - %5")
                           .arg(QString::fromUtf8(Version::Title))
                           .arg(Version::Major)
                           .arg(Version::Minor)
                           .arg(Version::Revision)
                           .arg(QString::fromUtf8(Version::LegalNotice)));
        const int width = ReadLong("WindowWidth", 8000);
        const int height = ReadLong("WindowHeight", 6000);
        const int splitter = ReadLong("SplitterPosition", 2000);
        const int state = ReadLong("WindowState", 0);
        Navigate(BlankPage);
        RefreshTreeView();
        EnableControls();
        tvRecipes->setFocus();
        resize(Pixels(width), Pixels(height));
        layout()->activate();  // the inner size of the new window size, also before it shows
        MoveSplitter(splitter);
        setWindowState(state == 2   ? Qt::WindowMaximized
                       : state == 1 ? Qt::WindowMinimized
                                    : Qt::WindowNoState);
    });
    if (!loaded) {
        SetMousePointer(UiServices::vbDefault);
    }
}

void frmMain::RefreshTreeView() {
    ErrorPath::PassOn("frmMain:RefreshTreeView", [&] {
        using modDatabase::GetRecordset;
        SetMousePointer(UiServices::vbHourglass);
        m_selectingFromCode = true;
        tvRecipes->clear();
        // Groups are filled while they stand apart from the tree, which is much faster than
        // adding node by node; they join the tree when the building ends, also when it fails
        // part-way, so the nodes read so far stay.
        QList<QTreeWidgetItem*> groupNodes;
        const auto attach = qScopeGuard([&] {
            tvRecipes->addTopLevelItems(groupNodes);
            m_selectingFromCode = false;
        });
        Recordset groups = GetRecordset(QStringLiteral("SELECT * FROM [Group] ORDER BY name;"));
        for (; !groups.Eof(); groups.MoveNext()) {
            const qint32 groupID = groups.Long(QStringLiteral("groupID"));
            auto* groupNode = new TreeNode('G', groupID, groups.Text(QStringLiteral("Name")));
            groupNodes << groupNode;
            Recordset types =
                GetRecordset(QStringLiteral("SELECT * FROM [Type] WHERE groupID = ") +
                             QString::number(groupID) + QStringLiteral(" ORDER BY name;"));
            for (; !types.Eof(); types.MoveNext()) {
                const qint32 typeID = types.Long(QStringLiteral("typeID"));
                auto* typeNode = new TreeNode('T', typeID, types.Text(QStringLiteral("Name")));
                groupNode->addChild(typeNode);
                Recordset recipes =
                    GetRecordset(QStringLiteral("SELECT * FROM [Recipe] WHERE typeID = ") +
                                 QString::number(typeID) + QStringLiteral(" ORDER BY title;"));
                for (; !recipes.Eof(); recipes.MoveNext()) {
                    typeNode->addChild(new TreeNode('R', recipes.Long(QStringLiteral("recipeID")),
                                                    recipes.Text(QStringLiteral("Title"))));
                }
                recipes.Close();
            }
            types.Close();
        }
        groups.Close();
        tvRecipes->addTopLevelItems(groupNodes);
        groupNodes.clear();
        m_selectingFromCode = true;
        if (tvRecipes->topLevelItemCount() > 0) {
            tvRecipes->setCurrentItem(tvRecipes->topLevelItem(0));
            m_selectingFromCode = false;
            tvRecipes_NodeClick();
        } else {
            m_selectingFromCode = false;
            Navigate(BlankPage);
        }
        EnableControls();
        SetMousePointer(UiServices::vbDefault);
    });
}

void frmMain::RefreshAndRestore(const QString& key) {
    RefreshTreeView();
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
        const QString kind = SelectedKind();
        if (!kind.isEmpty()) {
            const qint32 id = SelectedID();
            if (kind == QLatin1String("R")) {
                modDisplay::DisplayRecipe(id);
            } else if (kind == QLatin1String("T")) {
                modDisplay::DisplayType(id);
            } else if (kind == QLatin1String("G")) {
                modDisplay::DisplayGroup(id);
            }
            Navigate(modGeneral::TempFilename);
        }
        SetMousePointer(UiServices::vbDefault);
    });
}

void frmMain::Navigate(const QString& address) {
    m_address = address;
    if (address == BlankPage) {
        webDisplay->clear();
        return;
    }
    PageView::Show(webDisplay, address);
}

QString frmMain::SelectedKey() const { return modGeneral::ItemKey(tvRecipes->currentItem()); }
QString frmMain::SelectedKind() const { return SelectedKey().left(1); }
qint32 frmMain::SelectedID() const { return SelectedKey().mid(1).toInt(); }

qint32 frmMain::SelectedGroupID() const {
    QTreeWidgetItem* node = tvRecipes->currentItem();
    while (node && node->parent()) {
        node = node->parent();
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

qint32 frmMain::EditRecipe(qint32 recipeID) {
    frmNew editor(this);
    editor.lngRecipeID = recipeID;
    editor.exec();
    return modGeneral::lngLastID;
}

void frmMain::mnuDocumentNew_Click() {
    ErrorPath::Handle("frmMain:mnuDocumentNew_Click->", [&] {
        SetMousePointer(UiServices::vbHourglass);
        const QString selected = SelectedKey();
        const qint32 saved = EditRecipe(-1);
        RefreshAndRestore(saved != -1 ? QStringLiteral("R%1").arg(saved) : selected);
    });
}

void frmMain::mnuDocumentEdit_Click() {
    ErrorPath::Handle("frmMain:mnuDocumentEdit_Click->", [&] {
        SetMousePointer(UiServices::vbHourglass);
        if (SelectedKind() != QLatin1String("R")) {
            SetMousePointer(UiServices::vbDefault);
            return;
        }
        EditRecipe(SelectedID());
        RefreshAndRestore(SelectedKey());
    });
}

void frmMain::EditList(qint32 mode) {
    SetMousePointer(UiServices::vbHourglass);
    frmEditList dialog(this);
    dialog.rtMode = mode;
    dialog.exec();
    SetMousePointer(UiServices::vbDefault);
}

void frmMain::mnuEditSources_Click() {
    ErrorPath::Handle("frmMain:mnuEditSources_Click->", [&] { EditList(frmAddRecord::rtSource); });
}

void frmMain::mnuEditIngredients_Click() {
    ErrorPath::Handle("frmMain:mnuEditIngredients_Click->",
                      [&] { EditList(frmAddRecord::rtIngredient); });
}

void frmMain::mnuEditUnits_Click() {
    ErrorPath::Handle("mnuEditUnits_Click->", [&] { EditList(frmAddRecord::rtUnit); });
}

// The search window is not modal: it stays open beside the main window until it is closed.
void frmMain::mnuToolsFind_Click() {
    ErrorPath::Handle("frmMain:mnuToolsFind_Click->", [&] {
        SetMousePointer(UiServices::vbHourglass);
        if (!m_find) {
            m_find = new frmFind(this);
            m_find->setAttribute(Qt::WA_DeleteOnClose);
            connect(m_find, &frmFind::RecipeChosen, this, &frmMain::ShowNode);
        }
        m_find->show();
        m_find->raise();
        m_find->activateWindow();
        SetMousePointer(UiServices::vbDefault);
    });
}

void frmMain::ShowNode(const QString& key) {
    modGeneral::SelectTreeViewItem(tvRecipes, key);
    tvRecipes_NodeClick();
}

qint32 frmMain::EditRecord(qint32 mode, qint32 id, qint32 groupID) {
    frmAddRecord dialog(this);
    dialog.rtMode = mode;
    dialog.lngID = id;
    dialog.lngGroupID = groupID;
    dialog.exec();
    return modGeneral::lngLastID;
}

// After a new record is saved its node is shown; after a cancel the node that was selected.
void frmMain::mnuEditGroupNew_Click() {
    ErrorPath::Handle("frmMain:mnuEditGroupNew_Click->", [&] {
        SetMousePointer(UiServices::vbHourglass);
        const qint32 saved = EditRecord(frmAddRecord::rtGroup, -1, 0);
        RefreshAndRestore(saved != -1 ? QStringLiteral("G%1").arg(saved) : SelectedKey());
    });
}

void frmMain::mnuEditGroupEdit_Click() {
    ErrorPath::Handle("frmMain:mnuEditGroupEdit_Click->", [&] {
        SetMousePointer(UiServices::vbHourglass);
        if (SelectedKind() != QLatin1String("G")) {
            SetMousePointer(UiServices::vbDefault);
            return;
        }
        const QString key = SelectedKey();
        EditRecord(frmAddRecord::rtGroup, SelectedID(), 0);
        RefreshAndRestore(key);
    });
}

void frmMain::mnuEditTypeNew_Click() {
    ErrorPath::Handle("frmMain:mnuEditTypeNew_Click->", [&] {
        SetMousePointer(UiServices::vbHourglass);
        const QString selected = SelectedKey();
        const qint32 saved = EditRecord(frmAddRecord::rtType, -1, SelectedGroupID());
        RefreshAndRestore(saved != -1 ? QStringLiteral("T%1").arg(saved) : selected);
    });
}

void frmMain::mnuEditTypeEdit_Click() {
    ErrorPath::Handle("frmMain:mnuEditTypeEdit_Click->", [&] {
        SetMousePointer(UiServices::vbHourglass);
        if (SelectedKind() != QLatin1String("T")) {
            SetMousePointer(UiServices::vbDefault);
            return;
        }
        const QString key = SelectedKey();
        EditRecord(frmAddRecord::rtType, SelectedID(), SelectedGroupID());
        RefreshAndRestore(key);
    });
}

void frmMain::mnuDocumentDelete_Click() {
    ErrorPath::Handle("frmMain:mnuDocumentDelete_Click->", [&] {
        SetMousePointer(UiServices::vbHourglass);
        if (SelectedKind() != QLatin1String("R")) {
            SetMousePointer(UiServices::vbDefault);
            return;
        }
        if (MsgBox(QStringLiteral("Ali res želite izbrisati recept?"),
                   UiServices::vbYesNo + UiServices::vbQuestion) == UiServices::vbNo) {
            SetMousePointer(UiServices::vbDefault);
            return;
        }
        const QString key = QString::number(SelectedID());
        Recordset sections = modDatabase::GetRecordset(
            QStringLiteral("SELECT sectionID FROM [RecipeSection] WHERE recipeID = ") + key +
            QStringLiteral(";"));
        for (; !sections.Eof(); sections.MoveNext()) {
            RecipeRows::DeleteSection(sections.Long(QStringLiteral("sectionID")));
        }
        sections.Close();
        RecipeRows::DeleteRows(QStringLiteral("SELECT * FROM [Recipe] WHERE recipeID = ") + key +
                               QStringLiteral(";"));
        RefreshTreeView();
        SetMousePointer(UiServices::vbDefault);
    });
}

void frmMain::mnuEditGroupDelete_Click() {
    ErrorPath::Handle("frmMain:mnuEditGroupDelete_Click->", [&] {
        SetMousePointer(UiServices::vbHourglass);
        if (SelectedKind() == QLatin1String("G") &&
            MsgBox(QStringLiteral("Ali res želite izbrisati skupino?"),
                   UiServices::vbYesNo + UiServices::vbQuestion) == UiServices::vbYes) {
            const QString key = QString::number(SelectedID());
            if (HasRows(QStringLiteral("SELECT typeID FROM [Type] WHERE groupID = ") + key +
                        QStringLiteral(";"))) {
                MsgBox(QStringLiteral("Najprej morate izbrisati vse pripadajoče podskupine."),
                       UiServices::vbOKOnly + UiServices::vbInformation);
            } else {
                RecipeRows::DeleteRows(QStringLiteral("SELECT * FROM [Group] WHERE groupID = ") +
                                       key + QStringLiteral(";"));
                RefreshTreeView();
            }
        }
        SetMousePointer(UiServices::vbDefault);
    });
}

void frmMain::mnuEditTypeDelete_Click() {
    ErrorPath::Handle("frmMain:mnuEditTypeDelete_Click->", [&] {
        SetMousePointer(UiServices::vbHourglass);
        if (SelectedKind() == QLatin1String("T") &&
            MsgBox(QStringLiteral("Ali res želite izbrisati podskupino?"),
                   UiServices::vbYesNo + UiServices::vbQuestion) == UiServices::vbYes) {
            const QString key = QString::number(SelectedID());
            if (HasRows(QStringLiteral("SELECT recipeID FROM [Recipe] WHERE typeID = ") + key +
                        QStringLiteral(";"))) {
                MsgBox(QStringLiteral("Najprej morate izbrisati vse pripadajoče recepte."),
                       UiServices::vbOKOnly + UiServices::vbInformation);
            } else {
                RecipeRows::DeleteRows(QStringLiteral("SELECT * FROM [Type] WHERE typeID = ") +
                                       key + QStringLiteral(";"));
                RefreshTreeView();
            }
        }
        SetMousePointer(UiServices::vbDefault);
    });
}

void frmMain::mnuDocumentPrint_Click() {
    ErrorPath::Handle("frmMain:mnuDocumentPrint_Click->", [&] {
        SetMousePointer(UiServices::vbHourglass);
        PrintDisplay(true);
        SetMousePointer(UiServices::vbDefault);
    });
}

void frmMain::PrintDisplay(bool showDialog) {
    ErrorPath::PassOn("frmMain:PrintDisplay", [&] {
        if (m_address == BlankPage) {
            return;  // nothing is shown, so there is nothing to print
        }
        m_savedPageSetup = PagePrinter::ReadPageSetup();
        PagePrinter::WritePageSetup(PagePrinter::ProgramPageSetup);
        // The user's own page set-up goes back also when printing is cancelled or fails.
        const auto teardown = qScopeGuard([this] { webDisplay_PrintTemplateTeardown(); });
        PagePrinter::PrintFile(m_address, showDialog, this);
    });
}

// When the print job is done the user's own page set-up goes back in place.
void frmMain::webDisplay_PrintTemplateTeardown() {
    ErrorPath::Handle("frmMain:tvRecipes_NodeClick->",
                      [&] { PagePrinter::WritePageSetup(m_savedPageSetup); });
}

void frmMain::mnuDocumentQuit_Click() {
    ErrorPath::Handle("frmMain:mnuDocumentQuit_Click->", [&] {
        SetMousePointer(UiServices::vbHourglass);
        SetMousePointer(UiServices::vbDefault);
        close();
    });
}

void frmMain::mnuToolsSettings_Click() {
    ErrorPath::Handle("frmMain:mnuToolsSettings_Click->", [&] {
        SetMousePointer(UiServices::vbHourglass);
        frmSettings dialog(this);
        dialog.exec();
        SetMousePointer(UiServices::vbDefault);
    });
}

void frmMain::mnuHelpDocumentation_Click() {
    ErrorPath::Handle("frmMain:mnuHelpDocumentation_Click->", [&] {
        SetMousePointer(UiServices::vbHourglass);
        modGeneral::OpenRegisteredFile(QStringLiteral("docs/page11.html"));
        SetMousePointer(UiServices::vbDefault);
    });
}

void frmMain::mnuHelpAbout_Click() {
    ErrorPath::Handle("frmMain:mnuHelpAbout_Click->", [&] {
        SetMousePointer(UiServices::vbHourglass);
        frmAbout dialog(this);
        SetMousePointer(UiServices::vbDefault);
        dialog.exec();
    });
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

void frmMain::MoveSplitter(int wantedTwips) {
    ErrorPath::PassOn("frmMain:MoveSplitter", [&] {
        const int limit = Twips(centralWidget()->width()) - MarginTwips - SplitterWidthTwips;
        if (wantedTwips < MinimumSplitterTwips) {
            m_splitterLeft = MinimumSplitterTwips;
        } else if (wantedTwips > limit) {
            m_splitterLeft = limit;
        } else {
            m_splitterLeft = wantedTwips;
        }
        LayoutControls();
        StoreLong("SplitterPosition", m_splitterLeft);
    });
}

void frmMain::LayoutControls() {
    const int margin = Pixels(MarginTwips);
    const int height = std::max(0, centralWidget()->height() - 2 * margin);
    const int splitterLeft = Pixels(m_splitterLeft);
    const int splitterWidth = Pixels(SplitterWidthTwips);
    tvRecipes->setGeometry(margin, margin, std::max(0, splitterLeft - margin), height);
    imgSplitter->setGeometry(splitterLeft, margin, splitterWidth, height);
    const int browserLeft = splitterLeft + splitterWidth;
    webDisplay->setGeometry(browserLeft, margin,
                            std::max(0, centralWidget()->width() - margin - browserLeft), height);
}

void frmMain::resizeEvent(QResizeEvent* event) {
    QMainWindow::resizeEvent(event);
    Form_Resize();
}

void frmMain::Form_Resize() {
    ErrorPath::Handle("frmMain:Form_Resize->", [&] {
        const int limit = Twips(centralWidget()->width()) - MarginTwips - SplitterWidthTwips;
        m_splitterLeft = std::max(MinimumSplitterTwips, std::min(m_splitterLeft, limit));
        LayoutControls();
        if (!(windowState() & (Qt::WindowMinimized | Qt::WindowMaximized | Qt::WindowFullScreen))) {
            StoreLong("WindowWidth", Twips(width()));
            StoreLong("WindowHeight", Twips(height()));
        }
    });
}

bool frmMain::eventFilter(QObject* watched, QEvent* event) {
    if (watched == imgSplitter) {
        if (event->type() == QEvent::MouseButtonPress) {
            ErrorPath::Handle("frmMain:imgSplitter_MouseDown->", [&] { m_dragging = true; });
        } else if (event->type() == QEvent::MouseMove) {
            const auto* mouse = static_cast<QMouseEvent*>(event);
            ErrorPath::Handle("frmMain:imgSplitter_MouseMove->", [&] {
                if (m_dragging) {
                    MoveSplitter(m_splitterLeft + Twips(qRound(mouse->position().x())));
                }
            });
        } else if (event->type() == QEvent::MouseButtonRelease) {
            ErrorPath::Handle("frmMain:imgSplitter_MouseUp->", [&] { m_dragging = false; });
        }
    } else if (watched == tvRecipes->viewport() && event->type() == QEvent::MouseButtonPress &&
               static_cast<QMouseEvent*>(event)->button() == Qt::RightButton) {
        // The shortcut menu belongs to the selected node; the click selects nothing.
        tvRecipes_MouseDown(static_cast<QMouseEvent*>(event)->globalPosition().toPoint());
        return true;
    }
    return QMainWindow::eventFilter(watched, event);
}

void frmMain::closeEvent(QCloseEvent* event) {
    if (!Form_QueryUnload()) {
        event->ignore();
        return;
    }
    Form_Unload();
    event->accept();
}

bool frmMain::Form_QueryUnload() {
    bool leave = false;
    ErrorPath::Handle("frmMain:Form_QueryUnload->", [&] {
        if (MsgBox(QStringLiteral("Ali res želite zapustiti program?"),
                   UiServices::vbYesNo + UiServices::vbQuestion) == UiServices::vbNo) {
            return;
        }
        const Qt::WindowStates state = windowState();
        StoreLong("WindowState", state & Qt::WindowMinimized   ? 1
                                 : state & Qt::WindowMaximized ? 2
                                                               : 0);
        leave = true;
    });
    return leave;
}

void frmMain::Form_Unload() {
    ErrorPath::Handle("frmMain:Form_Unload->", [&] { modDatabase::CloseConnection(); });
}
