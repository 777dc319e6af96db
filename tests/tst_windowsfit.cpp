// Every window opens inside the area of the screen that windows may take, and no list shows a
// scroll bar that its contents do not need. CTest runs this also on screens of 1280x800 and
// 1920x1080 pixels at scale 1 and 2 (tests/data/screens); without them it runs on the offscreen
// platform's own screen.
#include <QApplication>
#include <QHeaderView>
#include <QPushButton>
#include <QScreen>
#include <QScrollBar>
#include <QTest>
#include <QTreeView>
#include <QTreeWidget>

#include "about/frmAbout.h"
#include "core/registry/modRegistry.h"
#include "core/ui/ColumnFit.h"
#include "core/ui/Controls.h"
#include "core/ui/WindowFit.h"
#include "editor/frmNew.h"
#include "editor/frmSelectSection.h"
#include "lists/frmAddRecord.h"
#include "lists/frmChangeLink.h"
#include "lists/frmEditList.h"
#include "main/frmMain.h"
#include "search/ResultsModel.h"
#include "search/frmFind.h"
#include "settings/frmSettings.h"
#include "tests/support/EditorDriver.h"
#include "tests/support/MessageRecorder.h"
#include "tests/support/TestDatabase.h"

namespace {

QString U(const char* utf8) { return QString::fromUtf8(utf8); }

QString Text(const QRect& r) {
    return QStringLiteral("%1x%2 at %3,%4").arg(r.width()).arg(r.height()).arg(r.x()).arg(r.y());
}

// The window's frame lies inside the available area of its screen.
void CheckInside(QWidget* window) {
    const QRect available = window->screen()->availableGeometry();
    const QRect frame = window->frameGeometry();
    QVERIFY2(available.contains(frame),
             qPrintable(QStringLiteral("%1: %2 (at least %3x%4) outside %5")
                            .arg(window->objectName(), Text(frame))
                            .arg(window->minimumWidth())
                            .arg(window->minimumHeight())
                            .arg(Text(available))));
}

// A modal dialog, shown as the program shows it, is inside the available area.
void CheckDialog(QDialog& dialog) {
    EditorDriver::ShowModal(dialog, [](QDialog* shown) { CheckInside(shown); });
}

QTreeView* ListOf(QWidget* window, const char* name) {
    return window->findChild<QTreeView*>(QString::fromLatin1(name));
}

// Neither scroll bar of the list shows.
void CheckNoScrollBars(QTreeView* list) {
    QVERIFY2(!list->horizontalScrollBar()->isVisible(), qPrintable(list->objectName()));
    QVERIFY2(!list->verticalScrollBar()->isVisible(), qPrintable(list->objectName()));
}

// The shown columns fill the list's width exactly (rows use it whole, nothing to scroll to),
// unless their headings and values need more: then each column has just what it needs.
void CheckRowsFill(QTreeView* list) {
    const auto* view = static_cast<const QAbstractItemView*>(list);
    int total = 0;
    int needed = 0;
    for (int c = 0; c < list->header()->count(); ++c) {
        if (!list->isColumnHidden(c)) {
            total += list->columnWidth(c);
            needed += std::max({0, view->sizeHintForColumn(c),
                                list->isHeaderHidden() ? 0 : list->header()->sectionSizeHint(c)});
        }
    }
    QVERIFY2(total == std::max(needed, list->viewport()->width()),
             qPrintable(QStringLiteral("%1: columns %2, list %3, values %4")
                            .arg(list->objectName())
                            .arg(total)
                            .arg(list->viewport()->width())
                            .arg(needed)));
    QTRY_COMPARE(list->horizontalScrollBar()->isVisible(), needed > list->viewport()->width());
}

// The width the list's delegate asks for to show the entry whole.
int Needed(const QTreeView* list, const QModelIndex& index) {
    QStyleOptionViewItem option;
    option.initFrom(list);
    option.font = list->font();
    option.features |= QStyleOptionViewItem::HasDisplay;
    return list->itemDelegateForIndex(index)->sizeHint(option, index).width();
}

}  // namespace

class TestWindowsFit : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { TestDatabase::IsolateEnvironment(); }

    // The frame moved and shrunk into the available area, on screens and panels of any size.
    void frameMovesAndShrinksIntoTheArea() {
        using WindowFit::Inside;
        const QMargins frame(4, 30, 4, 4);
        // a 1920x1080 screen with a panel on top: a main window stored on a larger screen
        const QRect desk(0, 32, 1920, 1048);
        QCOMPARE(Inside(QRect(100, 100, 2400, 1400), frame, desk), QRect(4, 62, 1912, 1014));
        // the search window, too tall, opened low on a 1280x900 screen
        QCOMPARE(Inside(QRect(320, 135, 794, 967), frame, QRect(0, 0, 1280, 900)),
                 QRect(320, 30, 794, 866));
        // a window that fits keeps its size and moves in from the right and bottom edges
        QCOMPARE(Inside(QRect(1200, 700, 400, 300), frame, QRect(0, 0, 1280, 800)),
                 QRect(876, 496, 400, 300));
        // and from the left and top edges, and from a screen on the left of this one
        QCOMPARE(Inside(QRect(-50, -10, 400, 300), frame, QRect(1280, 0, 960, 540)),
                 QRect(1284, 30, 400, 300));
        // 1920x1080 at scale 2 (960x540) and 1280x800 at scale 2 (640x400), without a frame
        QCOMPARE(Inside(QRect(0, 0, 794, 967), QMargins(), QRect(0, 0, 960, 540)),
                 QRect(0, 0, 794, 540));
        QCOMPARE(Inside(QRect(10, 10, 794, 967), QMargins(), QRect(0, 0, 640, 400)),
                 QRect(0, 0, 640, 400));
        // a window that fits exactly stays where it is
        QCOMPARE(Inside(QRect(4, 30, 632, 366), frame, QRect(0, 0, 640, 400)),
                 QRect(4, 30, 632, 366));
    }

    // Columns from the list's width: the last takes the rest; a narrow list takes from what the
    // columns can spare; only values that need more than the width make a scroll bar.
    void columnsShareTheListsWidth() {
        using ColumnFit::Widths;
        QCOMPARE(Widths({300, 50, 160, 160}, {120, 40, 80, 100}, 800),
                 (QList<int>{300, 50, 160, 290}));
        QCOMPARE(Widths({300, 50, 160, 160}, {120, 40, 80, 100}, 670),
                 (QList<int>{300, 50, 160, 160}));
        // 330 to give up of 330 spare... half of it: each column gives up half of its spare
        QCOMPARE(Widths({300, 50, 160, 160}, {120, 40, 80, 100}, 505),
                 (QList<int>{210, 45, 120, 130}));
        QCOMPARE(Widths({300, 50, 160, 160}, {120, 40, 80, 100}, 200),
                 (QList<int>{120, 40, 80, 100}));
        // a value wider than its given width widens its column
        QCOMPARE(Widths({100, 400}, {250, 0}, 600), (QList<int>{250, 350}));
        QCOMPARE(Widths({260}, {0}, 180), (QList<int>{180}));
        QCOMPARE(Widths({}, {}, 300), QList<int>{});
    }

    void mainWindowAtItsDefaultSize() {
        TestDatabase::OpenFresh(TestDatabase::Sqlite);
        frmMain window;
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        CheckInside(&window);
    }

    // A size stored on a larger screen (or at a smaller scale) shrinks to this screen's area.
    void mainWindowReopenedAtALargerStoredSize() {
        TestDatabase::OpenFresh(TestDatabase::Sqlite);
        modRegistry::SetRegistryLong(modRegistry::ProgramKey, QStringLiteral("WindowWidth"),
                                     2600 * 15, true);
        modRegistry::SetRegistryLong(modRegistry::ProgramKey, QStringLiteral("WindowHeight"),
                                     1500 * 15, true);
        {
            frmMain window;
            window.show();
            QVERIFY(QTest::qWaitForWindowExposed(&window));
            CheckInside(&window);
            const QRect available = window.screen()->availableGeometry();
            QVERIFY(window.width() <= available.width() && window.height() <= available.height());
            // the splitter stays within the narrower window
            QVERIFY(window.imgSplitter->geometry().right() < window.centralWidget()->width());
        }
        // what is stored now is the window as it was: it opens at that size again
        const int width = modRegistry::GetRegistryLong(modRegistry::ProgramKey,
                                                       QStringLiteral("WindowWidth"), 0, true);
        QVERIFY2(width < 2600 * 15, qPrintable(QString::number(width)));
        frmMain again;
        QCOMPARE(again.width() * 15, width);
    }

    void searchWindowFitsAndShowsItsColumnsWhole() {
        TestDatabase::OpenFresh(TestDatabase::Sqlite);
        TestDatabase::LoadSmallCollection();
        TestDatabase::Exec(
            U("UPDATE [Recipe] SET [title] = 'Orehov in jabolčni zavitek s "
              "skuto' WHERE [recipeID] = 2;"));
        frmFind window;
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        CheckInside(&window);
        // its first size: twips scaled by the font as its columns are, within the screen's area
        const QSize designed(Controls::TextPixels(9600, window.font()),
                             Controls::TextPixels(11700, window.font()));
        const QSize room =
            window.screen()->availableGeometry().size().shrunkBy(WindowFit::FrameOf(&window));
        QCOMPARE(window.size(), designed.boundedTo(room));
        const QList<QTreeView*> lists{
            ListOf(&window, "lstCriteria"), ListOf(&window, "lstAvailable"),
            ListOf(&window, "lstSelected"), ListOf(&window, "lstResults")};
        // empty (the values offered are the two groups)
        for (QTreeView* list : lists) {
            QTRY_VERIFY(!list->horizontalScrollBar()->isVisible());
            CheckNoScrollBars(list);
            CheckRowsFill(list);
        }
        // with results
        window.findChild<QPushButton*>(QStringLiteral("cmdFind"))->click();
        QTreeView* results = ListOf(&window, "lstResults");
        QCOMPARE(results->model()->rowCount(), 3);
        QApplication::processEvents();
        for (QTreeView* list : lists) {
            CheckNoScrollBars(list);
            CheckRowsFill(list);
        }
        // every heading and every value whole
        const QFontMetrics metrics(results->font());
        for (int c = 0; c < 4; ++c) {
            const QString heading = results->model()->headerData(c, Qt::Horizontal).toString();
            QVERIFY2(results->columnWidth(c) >= results->header()->sectionSizeHint(c),
                     qPrintable(heading));
            QVERIFY2(results->columnWidth(c) >= metrics.horizontalAdvance(heading),
                     qPrintable(heading));
            for (int r = 0; r < 3; ++r) {
                const QModelIndex index = results->model()->index(r, c);
                QVERIFY2(results->columnWidth(c) >= Needed(results, index),
                         qPrintable(index.data().toString()));
            }
        }
    }

    void editorAndSectionPickerFit() {
        TestDatabase::OpenFresh(TestDatabase::Sqlite);
        TestDatabase::LoadSmallCollection();
        EditorDriver::ShowEditor(1, [](frmNew* editor) {
            CheckInside(editor);
            for (const char* name : {"lstSections", "lstSectionIngredient", "lstIngredient"}) {
                CheckRowsFill(ListOf(editor, name));
            }
            frmSelectSection picker(editor, editor);
            CheckDialog(picker);
        });
    }

    void listDialogsFit() {
        TestDatabase::OpenFresh(TestDatabase::Sqlite);
        TestDatabase::LoadSmallCollection();
        MessageRecorder messages;
        frmAddRecord add;
        add.rtMode = 5;
        CheckDialog(add);
        frmEditList edit;
        edit.rtMode = 5;
        EditorDriver::ShowModal(edit, [](QDialog* shown) {
            CheckInside(shown);
            QTreeView* list = ListOf(shown, "lstRecords");
            CheckNoScrollBars(list);
            CheckRowsFill(list);
        });
        frmChangeLink change;
        change.intCount = 1;
        change.lngID = 1;
        change.strTable = QStringLiteral("[Unit]");
        change.strFieldID = QStringLiteral("unitID");
        change.strRelTable = QStringLiteral("[SectionIngredient]");
        change.strRelFieldID = QStringLiteral("sectionIngredientID");
        CheckDialog(change);
    }

    void settingsAndAboutFit() {
        TestDatabase::OpenFresh(TestDatabase::Sqlite);
        MessageRecorder messages;
        frmSettings settings;
        CheckDialog(settings);
        frmAbout about;
        CheckDialog(about);
    }
};

QTEST_MAIN(TestWindowsFit)
#include "tst_windowsfit.moc"
