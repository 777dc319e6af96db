// The main window: the recipe tree, the commands and their enabled states, the delete rules,
// the shortcut menus, the splitter, the kept window layout, closing, printing and the help menu.
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPrinter>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTextBrowser>
#include <QTimer>
#include <QToolBar>
#include <QTreeView>
#include <QTreeWidget>

#include "core/Windows1250.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "core/registry/modRegistry.h"
#include "core/ui/UiServices.h"
#include "display/PagePrinter.h"
#include "display/modDisplay.h"
#include "main/frmMain.h"
#include "tests/support/MessageRecorder.h"
#include "tests/support/TestDatabase.h"

using TestDatabase::Rows;

namespace {

QByteArray FileBytes(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QStringList NodeTexts(const QTreeView* tree) {
    const QAbstractItemModel* model = tree->model();
    const auto line = [](const QModelIndex& node, int depth) {
        return QString(depth * 2, QLatin1Char(' ')) + modGeneral::ItemKey(node) + QLatin1Char(' ') +
               node.data().toString();
    };
    QStringList texts;
    for (int g = 0; g < model->rowCount(); ++g) {
        const QModelIndex group = model->index(g, 0);
        texts << line(group, 0);
        for (int t = 0; t < model->rowCount(group); ++t) {
            const QModelIndex type = model->index(t, 0, group);
            texts << line(type, 1);
            for (int r = 0; r < model->rowCount(type); ++r) {
                texts << line(model->index(r, 0, type), 2);
            }
        }
    }
    return texts;
}

QModelIndex Node(frmMain& window, const QString& key) { return window.NodeOfKey(key); }

QString StoreText() { return QString::fromUtf8(FileBytes(modRegistry::StoreFile(true))); }

// Acts on the next modal dialog as soon as it shows (its exec() runs the event loop).
void OnNextDialog(std::function<void(QWidget*)> act) {
    QTimer::singleShot(0, [act] {
        QWidget* dialog = QApplication::activeModalWidget();
        if (!dialog) {
            OnNextDialog(act);
            return;
        }
        act(dialog);
    });
}

// Fills the record entry dialog and presses "Potrdi" (or "Prekliči" when name is null).
void AnswerRecordDialog(const QString& name, QString* caption = nullptr,
                        QString* shownName = nullptr) {
    OnNextDialog([=](QWidget* dialog) {
        if (caption) {
            *caption = dialog->windowTitle();
        }
        auto* box = dialog->findChild<QLineEdit*>(QStringLiteral("txtName"));
        if (shownName) {
            *shownName = box->text();
        }
        if (name.isNull()) {
            dialog->findChild<QPushButton*>(QStringLiteral("cmdCancel"))->click();
            return;
        }
        box->setText(name);
        dialog->findChild<QPushButton*>(QStringLiteral("cmdOK"))->click();
    });
}

}  // namespace

class TestMainWindow : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<frmMain> Open(const QString& kind, bool withCollection = true) {
        TestDatabase::OpenFresh(kind);
        if (withCollection) {
            TestDatabase::LoadSmallCollection();
        }
        modGeneral::TempFilename = TestDatabase::WorkFolder() + QStringLiteral("/page.html");
        auto window = std::make_unique<frmMain>();
        return window;
    }
    void Select(frmMain& window, const QString& key) {
        window.tvRecipes->setCurrentIndex(key.isEmpty() ? QModelIndex() : Node(window, key));
    }
    static bool Enabled(frmMain& w, const QString& name) {
        return w.findChild<QAction*>(name)->isEnabled();
    }

private Q_SLOTS:
    void initTestCase() { TestDatabase::IsolateEnvironment(); }
    void init() { QFile::remove(modRegistry::StoreFile(true)); }

    void treeListsGroupsTypesAndRecipesInOrder_data() { TestDatabase::AddKinds(); }
    void treeListsGroupsTypesAndRecipesInOrder() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        TestDatabase::LoadSmallCollection();
        TestDatabase::Insert("Group", {{"name", "Čaji"}});
        TestDatabase::Insert("Type", {{"groupID", 1}, {"name", "Enolončnice"}});
        TestDatabase::Insert("Recipe", {{"typeID", 3}, {"title", "Ajdov kolač"}});
        modGeneral::TempFilename = TestDatabase::WorkFolder() + QStringLiteral("/page.html");
        frmMain window;
        QCOMPARE(NodeTexts(window.tvRecipes),
                 (QStringList{"G3 Čaji", "G1 Juhe", "  T4 Enolončnice", "  T1 Mesne juhe",
                              "    R1 Goveja juha", "  T2 Zelenjavne juhe",
                              "    R2 Korenčkova juha", "G2 Sladice", "  T3 Pecivo",
                              "    R4 Ajdov kolač", "    R3 čokoladna torta"}));
        QVERIFY(window.tvRecipes->model()->index(0, 0).data(Qt::FontRole).value<QFont>().bold());
        QVERIFY(Node(window, "T4").data(Qt::FontRole).value<QFont>().bold());
        QCOMPARE(window.tvRecipes->model()->rowCount(Node(window, "T4")), 0);
        QVERIFY(!Node(window, "R1").data(Qt::FontRole).value<QFont>().bold());
        QVERIFY(Node(window, "R1").data(Qt::DecorationRole).isNull());
        // the first group is selected and its page shown
        QCOMPARE(modGeneral::ItemKey(window.tvRecipes->currentIndex()), QStringLiteral("G3"));
        QCOMPARE(window.DisplayedAddress(), modGeneral::TempFilename);
        QCOMPARE(window.webDisplay->toPlainText().left(4), QStringLiteral("Čaji"));
        QCOMPARE(UiServices::MousePointer(), int(UiServices::vbDefault));
    }

    void emptyDatabaseGivesEmptyTreeAndBlankPage() {
        auto window = Open(TestDatabase::Sqlite, false);
        QCOMPARE(window->tvRecipes->model()->rowCount(), 0);
        QCOMPARE(window->DisplayedAddress(), QStringLiteral("about:blank"));
        QCOMPARE(window->webDisplay->toPlainText(), QString());
        for (const char* name : {"mnuDocumentEdit", "mnuDocumentDelete", "mnuEditGroupEdit",
                                 "mnuEditGroupDelete", "mnuEditTypeEdit", "mnuEditTypeDelete",
                                 "mnuEditTypeNew", "editRecipe", "deleteRecipe"}) {
            QVERIFY2(!Enabled(*window, name), name);
        }
        for (const char* name : {"mnuDocumentNew", "mnuDocumentPrint", "mnuEditGroupNew",
                                 "mnuToolsFind", "newRecipe", "printRecipe", "exitProgram"}) {
            QVERIFY2(Enabled(*window, name), name);
        }
    }

    void commandsFollowTheSelectedNode_data() {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QStringList>("enabled");
        const QStringList always{"mnuDocumentNew",
                                 "mnuDocumentPrint",
                                 "mnuDocumentImport",
                                 "mnuDocumentExport",
                                 "mnuDocumentQuit",
                                 "mnuEditGroupNew",
                                 "mnuEditSources",
                                 "mnuEditIngredients",
                                 "mnuEditUnits",
                                 "mnuToolsFind",
                                 "mnuToolsSettings",
                                 "mnuHelpDocumentation",
                                 "mnuHelpAbout",
                                 "newRecipe",
                                 "printRecipe",
                                 "listSources",
                                 "listIngredients",
                                 "listUnits",
                                 "find",
                                 "exitProgram"};
        QTest::newRow("nothing") << QString() << always;
        QTest::newRow("group") << "G1"
                               << always + QStringList{"mnuEditGroupEdit", "mnuEditGroupDelete",
                                                       "mnuEditTypeNew"};
        QTest::newRow("type") << "T2"
                              << always + QStringList{"mnuEditTypeEdit", "mnuEditTypeDelete",
                                                      "mnuEditTypeNew"};
        QTest::newRow("recipe") << "R3"
                                << always + QStringList{"mnuDocumentEdit", "mnuDocumentDelete",
                                                        "editRecipe", "deleteRecipe",
                                                        "mnuEditTypeNew"};
    }
    void commandsFollowTheSelectedNode() {
        QFETCH(QString, key);
        QFETCH(QStringList, enabled);
        auto window = Open(TestDatabase::Sqlite);
        Select(*window, key);
        QStringList actual;
        for (QAction* action : window->findChildren<QAction*>()) {
            if (!action->objectName().isEmpty() && !action->isSeparator() && !action->menu() &&
                action->isEnabled()) {
                actual << action->objectName();
            }
        }
        actual.sort();
        enabled.sort();
        QCOMPARE(actual, enabled);
    }

    void clickingANodeShowsItsPage_data() { TestDatabase::AddKinds(); }
    void clickingANodeShowsItsPage() {
        QFETCH(QString, kind);
        auto window = Open(kind);
        for (const QString& key :
             {QStringLiteral("R3"), QStringLiteral("T1"), QStringLiteral("G2")}) {
            Select(*window, key);
            const QString expected = key.startsWith('R')   ? modDisplay::RecipePage(3)
                                     : key.startsWith('T') ? modDisplay::TypePage(1)
                                                           : modDisplay::GroupPage(2);
            QCOMPARE(FileBytes(modGeneral::TempFilename), Windows1250::Encode(expected));
            QCOMPARE(window->DisplayedAddress(), modGeneral::TempFilename);
        }
        QVERIFY(window->webDisplay->toPlainText().startsWith(QStringLiteral("Sladice")));
    }

    void pageThatCannotBeWrittenTakesTheErrorPath() {
        auto window = Open(TestDatabase::Sqlite);
        MessageRecorder messages;
        QFile::remove(QStringLiteral("errors.log"));
        modGeneral::TempFilename =
            TestDatabase::WorkFolder() + QStringLiteral("/no/such/page.html");
        Select(*window, "R1");
        QCOMPARE(messages.Messages().size(), 1);
        QCOMPARE(messages.Messages()[0].style, 48);
        const QString log = QString::fromUtf8(FileBytes(QStringLiteral("errors.log")));
        QVERIFY2(log.contains(QStringLiteral(
                     "\r\n\r\nfrmMain:tvRecipes_NodeClick->modDisplay:DisplayRecipe->Morvena->")),
                 qPrintable(log));
        QCOMPARE(UiServices::MousePointer(), int(UiServices::vbHourglass));
        UiServices::SetMousePointer(UiServices::vbDefault);
    }

    void refreshAndRestoreSelectsTheNode_data() { TestDatabase::AddKinds(); }
    void refreshAndRestoreSelectsTheNode() {
        QFETCH(QString, kind);
        auto window = Open(kind);
        TestDatabase::Insert("Recipe", {{"typeID", 2}, {"title", "Bučna juha"}});
        window->RefreshAndRestore(QStringLiteral("R4"));
        QCOMPARE(modGeneral::ItemKey(window->tvRecipes->currentIndex()), QStringLiteral("R4"));
        QCOMPARE(FileBytes(modGeneral::TempFilename),
                 Windows1250::Encode(modDisplay::RecipePage(4)));
        window->RefreshAndRestore(QStringLiteral("R99"));
        QCOMPARE(modGeneral::ItemKey(window->tvRecipes->currentIndex()), QStringLiteral("G1"));
    }

    void deletingARecipeAsksAndRemovesItsSections_data() { TestDatabase::AddKinds(); }
    void deletingARecipeAsksAndRemovesItsSections() {
        QFETCH(QString, kind);
        auto window = Open(kind);
        // recipe 1 also uses section 2 (Testo) of recipe 3
        TestDatabase::Insert("RecipeSection", {{"recipeID", 1}, {"sectionID", 2}, {"place", 2}});
        Select(*window, "R3");
        MessageRecorder messages;
        messages.Answer(UiServices::vbNo);
        window->menus.mnuDocumentDelete->trigger();
        QCOMPARE(messages.Messages().size(), 1);
        QCOMPARE(messages.Messages()[0].text, QStringLiteral("Ali res želite izbrisati recept?"));
        QCOMPARE(messages.Messages()[0].style, 36);
        QCOMPARE(messages.Messages()[0].title, QStringLiteral("Morvena"));
        QCOMPARE(Rows("SELECT recipeID FROM [Recipe] ORDER BY recipeID;"),
                 (QStringList{"1", "2", "3"}));
        window->menus.mnuDocumentDelete->trigger();  // answered Yes
        QCOMPARE(Rows("SELECT recipeID FROM [Recipe] ORDER BY recipeID;"), (QStringList{"1", "2"}));
        QCOMPARE(Rows("SELECT sectionID FROM [Section] ORDER BY sectionID;"),
                 (QStringList{"1", "4"}));
        QCOMPARE(Rows("SELECT recipeID, sectionID, place FROM [RecipeSection] ORDER BY "
                      "recipeSectionID;"),
                 (QStringList{"1|1|1", "2|4|1"}));
        QCOMPARE(Rows("SELECT sectionID FROM [SectionIngredient] ORDER BY sectionIngredientID;"),
                 (QStringList{"1", "4", "4"}));
        QCOMPARE(modGeneral::ItemKey(window->tvRecipes->currentIndex()), QStringLiteral("G1"));
        QVERIFY(!Node(*window, "R3").isValid());
    }

    void deletingAGroupWithSubgroupsIsRefused_data() { TestDatabase::AddKinds(); }
    void deletingAGroupWithSubgroupsIsRefused() {
        QFETCH(QString, kind);
        auto window = Open(kind);
        TestDatabase::Insert("Group", {{"name", "Zimnica"}});
        window->RefreshAndRestore(QStringLiteral("G1"));
        MessageRecorder messages;
        window->menus.mnuEditGroupDelete->trigger();
        QCOMPARE(messages.Texts(), (QStringList{"Ali res želite izbrisati skupino?",
                                                "Najprej morate izbrisati vse pripadajoče "
                                                "podskupine."}));
        QCOMPARE(messages.Messages()[1].style, 64);
        QCOMPARE(Rows("SELECT COUNT(*) FROM [Group];"), QStringList{"3"});
        Select(*window, "G3");
        messages.Clear();
        window->menus.mnuEditGroupDelete->trigger();
        QCOMPARE(messages.Texts(), QStringList{"Ali res želite izbrisati skupino?"});
        QCOMPARE(Rows("SELECT name FROM [Group] ORDER BY name;"), (QStringList{"Juhe", "Sladice"}));
        QCOMPARE(modGeneral::ItemKey(window->tvRecipes->currentIndex()), QStringLiteral("G1"));
    }

    void deletingATypeWithRecipesIsRefused_data() { TestDatabase::AddKinds(); }
    void deletingATypeWithRecipesIsRefused() {
        QFETCH(QString, kind);
        auto window = Open(kind);
        TestDatabase::Insert("Type", {{"groupID", 2}, {"name", "Torte"}});
        window->RefreshAndRestore(QStringLiteral("T3"));
        MessageRecorder messages;
        window->menus.mnuEditTypeDelete->trigger();
        QCOMPARE(messages.Texts(), (QStringList{"Ali res želite izbrisati podskupino?",
                                                "Najprej morate izbrisati vse pripadajoče "
                                                "recepte."}));
        QCOMPARE(Rows("SELECT COUNT(*) FROM [Type];"), QStringList{"4"});
        Select(*window, "T4");
        messages.Answer(UiServices::vbNo);
        window->menus.mnuEditTypeDelete->trigger();
        QCOMPARE(Rows("SELECT COUNT(*) FROM [Type];"), QStringList{"4"});
        window->menus.mnuEditTypeDelete->trigger();
        QCOMPARE(Rows("SELECT typeID FROM [Type] ORDER BY typeID;"), (QStringList{"1", "2", "3"}));
    }

    void shortcutMenuBelongsToTheSelectedNode_data() {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("menu");
        QTest::addColumn<QString>("defaultItem");
        QTest::newRow("nothing") << QString() << "mnuEdit"
                                 << "mnuEditGroupNew";
        QTest::newRow("group") << "G1"
                               << "mnuEdit"
                               << "mnuEditGroupEdit";
        QTest::newRow("type") << "T1"
                              << "mnuEdit"
                              << "mnuEditTypeEdit";
        QTest::newRow("recipe") << "R1"
                                << "mnuDocument"
                                << "mnuDocumentEdit";
    }
    void shortcutMenuBelongsToTheSelectedNode() {
        QFETCH(QString, key);
        QFETCH(QString, menu);
        QFETCH(QString, defaultItem);
        auto window = Open(TestDatabase::Sqlite);
        window->show();
        QVERIFY(QTest::qWaitForWindowExposed(window.get()));
        Select(*window, key);
        QString shownMenu;
        QString shownDefault;
        bool shownDefaultBold = false;
        QTimer::singleShot(0, [&] {
            auto* popup = qobject_cast<QMenu*>(QApplication::activePopupWidget());
            if (popup) {
                shownMenu = popup->objectName();
                shownDefault =
                    popup->defaultAction() ? popup->defaultAction()->objectName() : QString();
                shownDefaultBold = popup->defaultAction() != nullptr;
                popup->close();
            }
        });
        // right click on another node: the menu is the selected node's, the selection stays
        const QModelIndex other = Node(*window, "R2");
        window->tvRecipes->scrollTo(other);
        QTest::mouseClick(window->tvRecipes->viewport(), Qt::RightButton, {},
                          window->tvRecipes->visualRect(other).center());
        QTRY_COMPARE(shownMenu, menu);
        QCOMPARE(shownDefault, defaultItem);
        QVERIFY(shownDefaultBold);
        QCOMPARE(modGeneral::ItemKey(window->tvRecipes->currentIndex()), key);
        QVERIFY(!window->findChild<QMenu*>(menu)->defaultAction());
    }

    void doubleClickOpensTheNodesEditCommand_data() {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("command");
        QTest::newRow("group") << "G1"
                               << "mnuEditGroupEdit";
        QTest::newRow("type") << "T2"
                              << "mnuEditTypeEdit";
        QTest::newRow("recipe") << "R2"
                                << "mnuDocumentEdit";
    }
    void doubleClickOpensTheNodesEditCommand() {
        MessageRecorder messages;  // the editor's cancel question is answered Yes
        QFETCH(QString, key);
        QFETCH(QString, command);
        auto window = Open(TestDatabase::Sqlite);
        window->show();
        QVERIFY(QTest::qWaitForWindowExposed(window.get()));
        window->tvRecipes->expandAll();
        Select(*window, key);
        QSignalSpy triggered(window->findChild<QAction*>(command), &QAction::triggered);
        OnNextDialog([](QWidget* dialog) { static_cast<QDialog*>(dialog)->reject(); });
        const QPoint where = window->tvRecipes->visualRect(Node(*window, key)).center();
        QTest::mouseClick(window->tvRecipes->viewport(), Qt::LeftButton, {}, where);
        QTest::mouseDClick(window->tvRecipes->viewport(), Qt::LeftButton, {}, where);
        QTRY_COMPARE(triggered.count(), 1);
    }

    void menusAndToolbarCarryTheirCaptions() {
        auto window = Open(TestDatabase::Sqlite);
        QStringList menus;
        for (QAction* top : window->menuBar()->actions()) {
            menus << top->text();
            for (QAction* item : top->menu()->actions()) {
                menus << QStringLiteral("  ") +
                             (item->isSeparator() ? QStringLiteral("-") : item->text()) +
                             (item->shortcut().isEmpty()
                                  ? QString()
                                  : QLatin1Char('\t') + item->shortcut().toString());
            }
        }
        QCOMPARE(menus, (QStringList{"&Dokument",
                                     "  &Nov recept...\tCtrl+N",
                                     "  &Uredi recept...\tCtrl+E",
                                     "  Iz&briši recept\tCtrl+D",
                                     "  -",
                                     "  Na&tisni recept...\tCtrl+P",
                                     "  -",
                                     "  Uvo&zi recepte...",
                                     "  Iz&vozi recepte...",
                                     "  -",
                                     "  &Izhod\tCtrl+Q",
                                     "&Urejanje",
                                     "  &Nova skupina...",
                                     "  &Uredi skupino...",
                                     "  &Izbriši skupino",
                                     "  -",
                                     "  Nova &podskupina...",
                                     "  Uredi p&odskupino...",
                                     "  Izbriši po&dkupino",
                                     "  -",
                                     "  Uredi seznam &virov...",
                                     "  Uredi seznam &sestavin...",
                                     "  Uredi seznam &enot...",
                                     "&Orodja",
                                     "  &Iskanje...\tCtrl+F",
                                     "  &Nastavitve...",
                                     "&Pomoč",
                                     "  &Navodila",
                                     "  -",
                                     "  Vizitka..."}));
        QStringList buttons;
        for (QAction* button : window->menus.tbMain->actions()) {
            buttons << button->objectName() + QLatin1Char('=') + button->toolTip();
        }
        QCOMPARE(
            buttons,
            (QStringList{"newRecipe=Nov recept (Ctrl+N)", "editRecipe=Uredi recept (Ctrl+E)",
                         "deleteRecipe=Izbriši recept (Ctrl+D)",
                         "printRecipe=Natisni recept (Ctrl+P)", "listSources=Uredi seznam virov",
                         "listIngredients=Uredi seznam sestavin", "listUnits=Uredi seznam enot",
                         "find=Iskanje (Ctrl+F)", "exitProgram=Izhod (Ctrl+Q)"}));
        for (QAction* button : window->menus.tbMain->actions()) {
            QVERIFY2(!button->icon().isNull(), qPrintable(button->objectName()));
        }
        QVERIFY(window->windowTitle().startsWith(QStringLiteral("Morvena 1.3.0 - ")));
    }

    void toolbarButtonsRunTheMenuCommands() {
        auto window = Open(TestDatabase::Sqlite);
        Select(*window, "R1");
        const QStringList pairs{"newRecipe=mnuDocumentNew",
                                "editRecipe=mnuDocumentEdit",
                                "deleteRecipe=mnuDocumentDelete",
                                "listSources=mnuEditSources",
                                "listIngredients=mnuEditIngredients",
                                "listUnits=mnuEditUnits",
                                "find=mnuToolsFind",
                                "exitProgram=mnuDocumentQuit"};
        MessageRecorder messages;
        for (const QString& pair : pairs) {
            const QString command = pair.section('=', 1);
            if (command == QLatin1String("mnuDocumentNew") ||
                command == QLatin1String("mnuDocumentEdit") || command.startsWith("mnuEdit")) {
                messages.Answer(UiServices::vbYes);  // the editor's cancel question
                OnNextDialog([](QWidget* dialog) { static_cast<QDialog*>(dialog)->reject(); });
            } else {
                messages.Answer(UiServices::vbNo);  // the delete and the closing questions
            }
            QSignalSpy spy(window->findChild<QAction*>(pair.section('=', 1)), &QAction::triggered);
            window->menus.Button(pair.section('=', 0, 0))->trigger();
            QCOMPARE(spy.count(), 1);
        }
    }

    void splitterStaysWithinItsLimits() {
        auto window = Open(TestDatabase::Sqlite);
        window->resize(800, 600);
        window->show();
        QVERIFY(QTest::qWaitForWindowExposed(window.get()));
        const int innerTwips = window->centralWidget()->width() * 15;
        window->MoveSplitter(100);
        QCOMPARE(window->imgSplitter->x(), 500 / 15);
        QVERIFY(StoreText().contains(QStringLiteral("\"SplitterPosition\"=dword:000001f4")));
        window->MoveSplitter(100000);
        QCOMPARE(window->imgSplitter->x(), (innerTwips - 120 - 60) / 15);
        QCOMPARE(modRegistry::GetRegistryLong(modRegistry::ProgramKey, "SplitterPosition", 0, true),
                 innerTwips - 120 - 60);
        window->MoveSplitter(3000);
        QCOMPARE(window->imgSplitter->x(), 200);
        QCOMPARE(window->tvRecipes->geometry().right() + 1, 200);
        QCOMPARE(window->webDisplay->x(), 204);
        // dragging: press, move 30 pixels right, release
        QTest::mousePress(window->imgSplitter, Qt::LeftButton, {}, QPoint(1, 5));
        QMouseEvent move(QEvent::MouseMove, QPointF(31, 5),
                         window->imgSplitter->mapToGlobal(QPointF(31, 5)), Qt::NoButton,
                         Qt::LeftButton, {});
        QApplication::sendEvent(window->imgSplitter, &move);
        QCOMPARE(window->imgSplitter->x(), 231);
        QTest::mouseRelease(window->imgSplitter, Qt::LeftButton, {}, QPoint(31, 5));
        QMouseEvent after(QEvent::MouseMove, QPointF(60, 5),
                          window->imgSplitter->mapToGlobal(QPointF(60, 5)), Qt::NoButton,
                          Qt::NoButton, {});
        QApplication::sendEvent(window->imgSplitter, &after);
        QCOMPARE(window->imgSplitter->x(), 231);
        QCOMPARE(modRegistry::GetRegistryLong(modRegistry::ProgramKey, "SplitterPosition", 0, true),
                 231 * 15);
    }

    void windowLayoutIsKeptBetweenRuns() {
        TestDatabase::OpenFresh(TestDatabase::Sqlite);
        {
            frmMain first;
            QCOMPARE(first.size(), QSize(8000 / 15, 6000 / 15));
            QCOMPARE(first.imgSplitter->x(), 2000 / 15);
            first.show();
            QVERIFY(QTest::qWaitForWindowExposed(&first));
            first.resize(700, 500);
            QTRY_COMPARE(
                modRegistry::GetRegistryLong(modRegistry::ProgramKey, "WindowWidth", 0, true),
                700 * 15);
            first.MoveSplitter(2400);
            QCOMPARE(modRegistry::GetRegistryLong(modRegistry::ProgramKey, "WindowHeight", 0, true),
                     500 * 15);
        }
        frmMain second;
        QCOMPARE(second.size(), QSize(700, 500));
        QCOMPARE(second.imgSplitter->x(), 160);
    }

    void closingAsksAndKeepsTheStateAndClosesTheConnection_data() { TestDatabase::AddKinds(); }
    void closingAsksAndKeepsTheStateAndClosesTheConnection() {
        QFETCH(QString, kind);
        auto window = Open(kind);
        window->show();
        QVERIFY(QTest::qWaitForWindowExposed(window.get()));
        MessageRecorder messages;
        messages.Answer(UiServices::vbNo);
        window->menus.mnuDocumentQuit->trigger();
        QCOMPARE(messages.Texts(), QStringList{"Ali res želite zapustiti program?"});
        QCOMPARE(messages.Messages()[0].style, 36);
        QVERIFY(window->isVisible());
        QCOMPARE(modDatabase::Connection->State(), int(modDatabase::adStateOpen));
        window->showMaximized();
        window->close();  // answered Yes
        QVERIFY(!window->isVisible());
        QVERIFY(!modDatabase::Connection);
        QCOMPARE(modRegistry::GetRegistryLong(modRegistry::ProgramKey, "WindowState", -1, true), 2);
    }

    void documentationOpensFromTheInstallationFolder() {
        auto window = Open(TestDatabase::Sqlite);
        const QString installed = TestDatabase::WorkFolder() + QStringLiteral("/opt/morvena");
        QVERIFY(QDir().mkpath(installed));
        modRegistry::SetRegistryString(modRegistry::ProgramKey, "InstallDir", installed, true);
        QStringList opened;
        UiServices::SetOpenerHandler([&](const QString& target, const QString& folder) {
            opened << target + QLatin1Char('@') + folder;
        });
        window->menus.mnuHelpDocumentation->trigger();
        UiServices::SetOpenerHandler({});
        QCOMPARE(opened, QStringList{"docs/page11.html@" + installed + "/"});
    }

    void printingSwapsThePageSetupAndPutsItBack() {
        auto window = Open(TestDatabase::Sqlite);
        Select(*window, "R3");
        PagePrinter::WritePageSetup({QStringLiteral("Moja glava &p"), QStringLiteral("Moja noga")});
        const QString pdf = TestDatabase::WorkFolder() + QStringLiteral("/print.pdf");
        QStringList seenHeaders;
        PagePrinter::SetPrinterPreparer([&](QPrinter& printer) {
            printer.setOutputFormat(QPrinter::PdfFormat);
            printer.setOutputFileName(pdf);
            seenHeaders << PagePrinter::ReadPageSetup().header + QLatin1Char('|') +
                               PagePrinter::ReadPageSetup().footer;
        });
        int dialogs = 0;
        UiServices::SetPrintDialogHandler([&](QPrinter&, QWidget*) { return ++dialogs > 0; });
        window->menus.Button(QStringLiteral("printRecipe"))->trigger();
        QCOMPARE(dialogs, 0);
        QVERIFY(QFile::exists(pdf));
        QFile::remove(pdf);
        window->menus.mnuDocumentPrint->trigger();
        QCOMPARE(dialogs, 1);
        QVERIFY(QFile::exists(pdf));
        QCOMPARE(seenHeaders, (QStringList{"&w&bStran &p od &P|", "&w&bStran &p od &P|"}));
        QCOMPARE(PagePrinter::ReadPageSetup().header, QStringLiteral("Moja glava &p"));
        QCOMPARE(PagePrinter::ReadPageSetup().footer, QStringLiteral("Moja noga"));
        PagePrinter::SetPrinterPreparer({});
        UiServices::SetPrintDialogHandler({});
    }

    void newGroupIsSavedAndSelected_data() { TestDatabase::AddKinds(); }
    void newGroupIsSavedAndSelected() {
        QFETCH(QString, kind);
        auto window = Open(kind);
        Select(*window, "R2");
        QString caption;
        AnswerRecordDialog(QStringLiteral("Enolončnice"), &caption);
        window->menus.mnuEditGroupNew->trigger();
        QCOMPARE(caption, QStringLiteral("Vnos skupine receptov"));
        QCOMPARE(Rows("SELECT groupID, name, description FROM [Group] ORDER BY groupID;"),
                 (QStringList{"1|Juhe|Tople juhe\r\nin enolončnice", "2|Sladice|NULL",
                              "3|Enolončnice|NULL"}));
        QCOMPARE(modGeneral::ItemKey(window->tvRecipes->currentIndex()), QStringLiteral("G3"));
        QCOMPARE(window->tvRecipes->model()->index(0, 0).data().toString(),
                 QStringLiteral("Enolončnice"));
        QCOMPARE(FileBytes(modGeneral::TempFilename),
                 Windows1250::Encode(modDisplay::GroupPage(3)));
        QCOMPARE(UiServices::MousePointer(), int(UiServices::vbDefault));
    }

    void cancelledNewGroupKeepsTheSelection() {
        auto window = Open(TestDatabase::Sqlite);
        Select(*window, "R2");
        AnswerRecordDialog(QString());
        window->menus.mnuEditGroupNew->trigger();
        QCOMPARE(modGeneral::lngLastID, -1);
        QCOMPARE(Rows("SELECT COUNT(*) FROM [Group];"), QStringList{"2"});
        QCOMPARE(modGeneral::ItemKey(window->tvRecipes->currentIndex()), QStringLiteral("R2"));
        QCOMPARE(FileBytes(modGeneral::TempFilename),
                 Windows1250::Encode(modDisplay::RecipePage(2)));
    }

    void editedGroupKeepsItsNode_data() { TestDatabase::AddKinds(); }
    void editedGroupKeepsItsNode() {
        QFETCH(QString, kind);
        auto window = Open(kind);
        window->show();
        QVERIFY(QTest::qWaitForWindowExposed(window.get()));
        Select(*window, "G2");
        QString shownName;
        AnswerRecordDialog(QStringLiteral("Pecivo in sladice"), nullptr, &shownName);
        const QPoint where = window->tvRecipes->visualRect(Node(*window, "G2")).center();
        QTest::mouseClick(window->tvRecipes->viewport(), Qt::LeftButton, {}, where);
        QTest::mouseDClick(window->tvRecipes->viewport(), Qt::LeftButton, {}, where);
        QTRY_COMPARE(Rows("SELECT name FROM [Group] WHERE groupID = 2;"),
                     QStringList{"Pecivo in sladice"});
        QCOMPARE(shownName, QStringLiteral("Sladice"));
        QCOMPARE(modGeneral::ItemKey(window->tvRecipes->currentIndex()), QStringLiteral("G2"));
        QCOMPARE(window->tvRecipes->currentIndex().data().toString(),
                 QStringLiteral("Pecivo in sladice"));
    }

    void newSubgroupBelongsToTheGroupOfTheSelectedNode_data() { TestDatabase::AddKinds(); }
    void newSubgroupBelongsToTheGroupOfTheSelectedNode() {
        QFETCH(QString, kind);
        auto window = Open(kind);
        Select(*window, "R3");  // a recipe of group 2
        QString caption;
        AnswerRecordDialog(QStringLiteral("Torte"), &caption);
        window->menus.mnuEditTypeNew->trigger();
        QCOMPARE(caption, QStringLiteral("Vnos podskupine receptov"));
        QCOMPARE(Rows("SELECT typeID, groupID, name FROM [Type] WHERE name = 'Torte';"),
                 QStringList{"4|2|Torte"});
        QCOMPARE(modGeneral::ItemKey(window->tvRecipes->currentIndex()), QStringLiteral("T4"));
        QCOMPARE(modGeneral::ItemKey(window->tvRecipes->currentIndex().parent()),
                 QStringLiteral("G2"));
        Select(*window, "T1");
        AnswerRecordDialog(QStringLiteral("Torte"));  // the same name in group 1 is allowed
        window->menus.mnuEditTypeNew->trigger();
        QCOMPARE(Rows("SELECT groupID FROM [Type] WHERE name = 'torte' ORDER BY groupID;"),
                 (QStringList{"1", "2"}));
    }

    void editedSubgroupKeepsItsNode() {
        auto window = Open(TestDatabase::Sqlite);
        Select(*window, "T2");
        QString shownName;
        AnswerRecordDialog(QStringLiteral("Zelenjavne juhe in enolončnice"), nullptr, &shownName);
        window->menus.mnuEditTypeEdit->trigger();
        QCOMPARE(shownName, QStringLiteral("Zelenjavne juhe"));
        QCOMPARE(Rows("SELECT groupID, name FROM [Type] WHERE typeID = 2;"),
                 QStringList{"1|Zelenjavne juhe in enolončnice"});
        QCOMPARE(modGeneral::ItemKey(window->tvRecipes->currentIndex()), QStringLiteral("T2"));
    }

    void newRecipeFromTheEditorIsSelectedAndShown_data() { TestDatabase::AddKinds(); }
    void newRecipeFromTheEditorIsSelectedAndShown() {
        QFETCH(QString, kind);
        auto window = Open(kind);
        window->show();
        QVERIFY(QTest::qWaitForWindowExposed(window.get()));
        Select(*window, "G1");
        MessageRecorder messages;  // "Ali res želite shraniti recept?" answered Yes
        QString caption;
        OnNextDialog([&](QWidget* editor) {
            caption = editor->windowTitle();
            auto combo = [&](const char* name) { return editor->findChild<QComboBox*>(name); };
            combo("cmbGroup")->setCurrentIndex(combo("cmbGroup")->findText("Sladice"));
            combo("cmbType")->setCurrentIndex(combo("cmbType")->findText("Pecivo"));
            combo("cmbSource")->setCurrentIndex(combo("cmbSource")->findText("Knjiga"));
            editor->findChild<QLineEdit*>("txtRecipeTitle")->setText("Orehova potica");
            editor->findChild<QPushButton*>("cmdSectionIngredientAdd")->click();
            editor->findChild<QLineEdit*>("txtAmount")->setText("500");
            combo("cmbUnit")->setCurrentIndex(combo("cmbUnit")->findText("g"));
            auto* ingredients = editor->findChild<QTreeWidget*>("lstIngredient");
            modGeneral::SelectListItem(ingredients, QStringLiteral("I1"));
            editor->findChild<QPushButton*>("cmdIngredientOk")->click();
            editor->findChild<QPushButton*>("cmdOK")->click();
        });
        QTest::keyClick(window.get(), Qt::Key_N, Qt::ControlModifier);
        QCOMPARE(caption, QStringLiteral("Urejanje recepta"));
        QCOMPARE(Rows("SELECT recipeID, typeID, sourceID, title FROM [Recipe] WHERE recipeID = 4;"),
                 QStringList{"4|3|2|Orehova potica"});
        QCOMPARE(Rows("SELECT amount, unitID, ingredientID FROM [SectionIngredient] WHERE "
                      "sectionID = 5;"),
                 QStringList{"500|1|1"});
        QCOMPARE(modGeneral::ItemKey(window->tvRecipes->currentIndex()), QStringLiteral("R4"));
        QCOMPARE(FileBytes(modGeneral::TempFilename),
                 Windows1250::Encode(modDisplay::RecipePage(4)));
    }

    void cancelledNewRecipeKeepsTheSelection() {
        auto window = Open(TestDatabase::Sqlite);
        Select(*window, "T2");
        MessageRecorder messages;
        OnNextDialog([](QWidget* editor) {
            editor->findChild<QPushButton*>("cmdCancel")->click();  // answered Yes
        });
        window->menus.Button(QStringLiteral("newRecipe"))->trigger();
        QCOMPARE(messages.Texts(), QStringList{"Ali res želite preklicati vnešene podatke?"});
        QCOMPARE(modGeneral::lngLastID, -1);
        QCOMPARE(Rows("SELECT COUNT(*) FROM [Recipe];"), QStringList{"3"});
        QCOMPARE(modGeneral::ItemKey(window->tvRecipes->currentIndex()), QStringLiteral("T2"));
    }

    void editingARecipeOpensItAndKeepsItsNode_data() { TestDatabase::AddKinds(); }
    void editingARecipeOpensItAndKeepsItsNode() {
        QFETCH(QString, kind);
        auto window = Open(kind);
        window->show();
        QVERIFY(QTest::qWaitForWindowExposed(window.get()));
        window->tvRecipes->expandAll();
        Select(*window, "R3");
        MessageRecorder messages;
        QString title;
        QStringList sections;
        OnNextDialog([&](QWidget* editor) {
            title = editor->findChild<QLineEdit*>("txtRecipeTitle")->text();
            auto* list = editor->findChild<QTreeWidget*>("lstSections");
            for (int i = 0; i < list->topLevelItemCount(); ++i) {
                sections << list->topLevelItem(i)->text(0);
            }
            editor->findChild<QLineEdit*>("txtRecipeTitle")->setText("Čokoladna torta");
            editor->findChild<QPushButton*>("cmdOK")->click();
        });
        const QPoint where = window->tvRecipes->visualRect(Node(*window, "R3")).center();
        QTest::mouseClick(window->tvRecipes->viewport(), Qt::LeftButton, {}, where);
        QTest::mouseDClick(window->tvRecipes->viewport(), Qt::LeftButton, {}, where);
        QTRY_COMPARE(title, QStringLiteral("čokoladna torta"));
        QCOMPARE(sections, (QStringList{"Testo", "Krema"}));
        QTRY_COMPARE(Rows("SELECT title FROM [Recipe] WHERE recipeID = 3;"),
                     QStringList{"Čokoladna torta"});
        QCOMPARE(modGeneral::ItemKey(window->tvRecipes->currentIndex()), QStringLiteral("R3"));
        QCOMPARE(Rows("SELECT place, title FROM [RecipeSection] INNER JOIN [Section] ON "
                      "[RecipeSection].sectionID = [Section].sectionID WHERE recipeID = 3 ORDER "
                      "BY place;"),
                 (QStringList{"1|Testo", "2|Krema"}));
    }

    void listCommandsOpenTheListEditor_data() {
        QTest::addColumn<QString>("command");
        QTest::addColumn<QString>("caption");
        QTest::newRow("sources") << "mnuEditSources"
                                 << "Urejanje seznama virov";
        QTest::newRow("ingredients") << "mnuEditIngredients"
                                     << "Urejanje seznama sestavin";
        QTest::newRow("units") << "mnuEditUnits"
                               << "Urejanje seznama enot";
        QTest::newRow("sources button") << "listSources"
                                        << "Urejanje seznama virov";
        QTest::newRow("ingredients button") << "listIngredients"
                                            << "Urejanje seznama sestavin";
        QTest::newRow("units button") << "listUnits"
                                      << "Urejanje seznama enot";
    }
    void listCommandsOpenTheListEditor() {
        QFETCH(QString, command);
        QFETCH(QString, caption);
        auto window = Open(TestDatabase::Sqlite);
        Select(*window, "R1");
        QString shown;
        OnNextDialog([&](QWidget* dialog) {
            shown = dialog->windowTitle();
            static_cast<QDialog*>(dialog)->reject();
        });
        window->findChild<QAction*>(command)->trigger();
        QCOMPARE(shown, caption);
        QCOMPARE(modGeneral::ItemKey(window->tvRecipes->currentIndex()), QStringLiteral("R1"));
    }

    void searchWindowStaysOpenBesideTheMainWindow() {
        auto window = Open(TestDatabase::Sqlite);
        window->show();
        QVERIFY(QTest::qWaitForWindowExposed(window.get()));
        QTest::keyClick(window.get(), Qt::Key_F, Qt::ControlModifier);
        QWidget* find = nullptr;
        QTRY_VERIFY((find = QApplication::topLevelWidgets().contains(window.get())
                                ? window->findChild<QWidget*>("frmFind")
                                : nullptr));
        QTRY_VERIFY(find->isVisible());
        QCOMPARE(find->windowTitle(), QStringLiteral("Iskanje"));
        QVERIFY(!find->isModal());
        window->menus.Button(QStringLiteral("find"))->trigger();
        QCOMPARE(window->findChildren<QWidget*>("frmFind").size(), 1);
        find->close();
        QTRY_COMPARE(window->findChildren<QWidget*>("frmFind").size(), 0);
    }
};

QTEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"
