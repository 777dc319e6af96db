// Lists keep their selected entry against stray clicks: a click on the empty part of a list and
// Ctrl+click (or Ctrl+Space) on the selected entry change nothing; a click on another entry and
// the program's own code still do. Real mouse events on the lists' viewports: on the three kinds
// of item view, and in the recipe editor, where a lost selection used to lose sections on
// "Potrdi" and store the screen into the wrong place on "Dodaj" (on both database kinds).
#include <QListWidget>
#include <QStandardItemModel>
#include <QTest>
#include <QTreeView>
#include <QTreeWidget>

#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "core/ui/KeepSelection.h"
#include "main/frmMain.h"
#include "tests/support/EditorDriver.h"
#include "tests/support/MessageRecorder.h"
#include "tests/support/TestDatabase.h"

using namespace EditorDriver;
using TestDatabase::Rows;

namespace {

// A point of the viewport below its last entry.
QPoint EmptySpot(QAbstractItemView* view, const QModelIndex& last) {
    const QRect rect = view->visualRect(last);
    return QPoint(rect.left() + 5, rect.bottom() + 10);
}

QStringList SelectedTexts(QAbstractItemView* view) {
    QStringList texts;
    for (const QModelIndex& index : view->selectionModel()->selectedIndexes()) {
        texts << index.data().toString();
    }
    return texts;
}

// The clicks every kind of view must take: the empty part, Ctrl+click and Ctrl+Space on the
// selected entry (nothing changes), then a click on another entry (it moves).
void CheckView(QAbstractItemView* view, QAbstractItemModel* model) {
    view->resize(300, 300);
    view->show();
    QVERIFY(QTest::qWaitForWindowExposed(view));
    const QModelIndex first = model->index(0, 0);
    const QModelIndex second = model->index(1, 0);
    view->setCurrentIndex(first);
    QCOMPARE(SelectedTexts(view), QStringList{"prvi"});

    const QPoint empty = EmptySpot(view, second);
    QVERIFY(view->viewport()->rect().contains(empty));
    QVERIFY(!view->indexAt(empty).isValid());
    QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, empty);
    QCOMPARE(SelectedTexts(view), QStringList{"prvi"});
    QTest::mouseDClick(view->viewport(), Qt::LeftButton, {}, empty);
    QCOMPARE(SelectedTexts(view), QStringList{"prvi"});
    QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::ControlModifier,
                      view->visualRect(first).center());
    QCOMPARE(SelectedTexts(view), QStringList{"prvi"});
    QTest::keyClick(view, Qt::Key_Space, Qt::ControlModifier);
    QCOMPARE(SelectedTexts(view), QStringList{"prvi"});
    // A drag from the entry into the empty part.
    QTest::mousePress(view->viewport(), Qt::LeftButton, {}, view->visualRect(first).center());
    QMouseEvent move(QEvent::MouseMove, empty, view->viewport()->mapToGlobal(empty), Qt::NoButton,
                     Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(view->viewport(), &move);
    QTest::mouseRelease(view->viewport(), Qt::LeftButton, {}, empty);
    QCOMPARE(SelectedTexts(view), QStringList{"prvi"});

    QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, view->visualRect(second).center());
    QCOMPARE(SelectedTexts(view), QStringList{"drugi"});
    QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, view->visualRect(first).center());
    QCOMPARE(SelectedTexts(view), QStringList{"prvi"});
    // The program's own code still clears.
    view->clearSelection();
    QCOMPARE(SelectedTexts(view), QStringList());
    // Without a selection, a click on the empty part is left alone.
    QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, empty);
    QCOMPARE(SelectedTexts(view), QStringList());
}

}  // namespace

class TestKeepSelection : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { TestDatabase::IsolateEnvironment(); }
    void cleanup() { modDatabase::Connection.reset(); }

    void treeWidget() {
        QTreeWidget view;
        view.setHeaderHidden(true);
        view.setSelectionMode(QAbstractItemView::SingleSelection);
        new QTreeWidgetItem(&view, QStringList{"prvi"});
        new QTreeWidgetItem(&view, QStringList{"drugi"});
        KeepSelection::Apply(&view);
        CheckView(&view, view.model());
    }
    void listWidget() {
        QListWidget view;
        view.setSelectionMode(QAbstractItemView::SingleSelection);
        view.addItems({"prvi", "drugi"});
        KeepSelection::Apply(&view);
        CheckView(&view, view.model());
    }
    void treeViewOverAModel() {
        QStandardItemModel model;
        model.appendRow(new QStandardItem(QStringLiteral("prvi")));
        model.appendRow(new QStandardItem(QStringLiteral("drugi")));
        QTreeView view;
        view.setHeaderHidden(true);
        view.setModel(&model);
        view.setSelectionMode(QAbstractItemView::ExtendedSelection);
        KeepSelection::Apply(&view);
        CheckView(&view, &model);
    }

    // Recipe 3 has the sections Testo and Krema. A click on the empty part of the section list,
    // then "Potrdi": both sections are saved, in order.
    void strayClickThenPotrdiKeepsEverySection_data() {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<bool>("control");
        for (const QString& kind : {TestDatabase::Sqlite, TestDatabase::Postgres}) {
            QTest::addRow("%s empty part", qPrintable(kind)) << kind << false;
            QTest::addRow("%s Ctrl+click on the selected entry", qPrintable(kind)) << kind << true;
        }
    }
    void strayClickThenPotrdiKeepsEverySection() {
        QFETCH(QString, kind);
        QFETCH(bool, control);
        TestDatabase::OpenFresh(kind);
        TestDatabase::LoadSmallCollection();
        modGeneral::TempFilename = TestDatabase::WorkFolder() + QStringLiteral("/page.html");
        MessageRecorder messages;
        frmMain mainWindow;
        const int result = ShowEditor(3, [&](frmNew* editor) {
            QTreeWidget* sections = List(editor, "lstSections");
            QCOMPARE(EntryTexts(sections), (QStringList{"Testo", "Krema"}));
            QCOMPARE(SelectedText(sections), QStringLiteral("Testo"));
            if (control) {
                QTest::mouseClick(sections->viewport(), Qt::LeftButton, Qt::ControlModifier,
                                  sections->visualItemRect(sections->topLevelItem(0)).center());
            } else {
                const QModelIndex last = sections->model()->index(1, 0);
                QTest::mouseClick(sections->viewport(), Qt::LeftButton, {},
                                  EmptySpot(sections, last));
            }
            QCoreApplication::processEvents();
            QCOMPARE(SelectedText(sections), QStringLiteral("Testo"));
            Click(editor, "cmdOK");
        });
        QCOMPARE(result, int(QDialog::Accepted));
        QCOMPARE(Said(messages), QStringList{"36 Ali res želite shraniti recept?"});
        QCOMPARE(Rows(QStringLiteral(
                     "SELECT [Section].title, [Section].instructions, [RecipeSection].place FROM "
                     "[RecipeSection] INNER JOIN [Section] ON [RecipeSection].sectionID = "
                     "[Section].sectionID WHERE recipeID = 3 ORDER BY place;")),
                 (QStringList{"Testo|Zamesimo.|1", "Krema|Stopimo ČOKOLADO.|2"}));
    }

    // The same click, then "Dodaj": the section on screen is stored in its own place.
    void strayClickThenDodajStoresTheSectionInItsPlace_data() { TestDatabase::AddKinds(); }
    void strayClickThenDodajStoresTheSectionInItsPlace() {
        TestDatabase::OpenFresh(TestDatabase::CurrentKind());
        TestDatabase::LoadSmallCollection();
        modGeneral::TempFilename = TestDatabase::WorkFolder() + QStringLiteral("/page.html");
        MessageRecorder messages;
        frmMain mainWindow;
        ShowEditor(3, [&](frmNew* editor) {
            QTreeWidget* sections = List(editor, "lstSections");
            SetInstructions(editor, QStringLiteral("Zamesimo hitro."));
            const QModelIndex last = sections->model()->index(1, 0);
            QTest::mouseClick(sections->viewport(), Qt::LeftButton, {}, EmptySpot(sections, last));
            QCoreApplication::processEvents();
            Click(editor, "cmdSectionAdd");
            QCOMPARE(EntryTexts(sections), (QStringList{"Testo", "Krema", "Novi razdelek"}));
            QCOMPARE(SelectedText(sections), QStringLiteral("Novi razdelek"));
            const QStringList stored = Stored(editor);
            QCOMPARE(stored.size(), 3);
            QVERIFY2(stored[0].startsWith(QStringLiteral("Testo|Zamesimo hitro.|")),
                     qPrintable(stored[0]));
            QVERIFY2(stored[1].startsWith(QStringLiteral("Krema|Stopimo ČOKOLADO.|")),
                     qPrintable(stored[1]));
            QCOMPARE(editor->WorkingSections()[0].Title, QString());
            QCOMPARE(editor->WorkingSections()[0].Instructions, QString());
        });
        QCOMPARE(Said(messages), QStringList());
    }
};

QTEST_MAIN(TestKeepSelection)
#include "tst_keepselection.moc"
