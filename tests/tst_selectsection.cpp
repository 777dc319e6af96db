// The section picker of the recipe editor: the tree of groups, subgroups, recipes and titled
// sections, choosing a section by a double click, leaving without a choice, a failure while
// filling, and the tree filling the dialog.
#include <QApplication>
#include <QComboBox>
#include <QFile>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>
#include <functional>
#include <memory>

#include "core/AppError.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "core/registry/modRegistry.h"
#include "core/ui/Controls.h"
#include "core/ui/UiServices.h"
#include "display/modDisplay.h"
#include "editor/frmNew.h"
#include "editor/frmSelectSection.h"
#include "main/frmMain.h"
#include "tests/support/EditorDriver.h"
#include "tests/support/MessageRecorder.h"
#include "tests/support/TestDatabase.h"

using TestDatabase::Rows;

using namespace EditorDriver;

namespace {

// Every node as "<indent><key> <text>[ (b)]", depth first; "(b)" marks bold text.
void AddNodeTexts(const QTreeWidgetItem* node, int depth, QStringList& texts) {
    texts << QString(depth * 2, QLatin1Char(' ')) + modGeneral::ItemKey(node) + QLatin1Char(' ') +
                 node->text(0) + (node->font(0).bold() ? QStringLiteral(" (b)") : QString());
    for (int i = 0; i < node->childCount(); ++i) {
        AddNodeTexts(node->child(i), depth + 1, texts);
    }
}
QStringList NodeTexts(const QTreeWidget* tree) {
    QStringList texts;
    for (int i = 0; i < tree->topLevelItemCount(); ++i) {
        AddNodeTexts(tree->topLevelItem(i), 0, texts);
    }
    return texts;
}

bool AnyExpanded(const QTreeWidgetItem* node) {
    if (node->isExpanded()) {
        return true;
    }
    for (int i = 0; i < node->childCount(); ++i) {
        if (AnyExpanded(node->child(i))) {
            return true;
        }
    }
    return false;
}

// Shows the picker for an editor as the editor does and drives it.
int ShowPicker(frmNew& editor, const std::function<void(frmSelectSection*)>& drive) {
    frmSelectSection picker(&editor);
    return ShowModal(picker, [&](QDialog* form) { drive(static_cast<frmSelectSection*>(form)); });
}

}  // namespace

class TestSelectSection : public QObject {
    Q_OBJECT

private:
    bool m_errorsExpected = false;

    static void Open(const QString& kind, bool withCollection = true) {
        TestDatabase::OpenFresh(kind);
        if (withCollection) {
            TestDatabase::LoadSmallCollection();
        }
    }

private Q_SLOTS:
    void initTestCase() { TestDatabase::IsolateEnvironment(); }

    void init() {
        QFile::remove(QStringLiteral("errors.log"));
        m_errorsExpected = false;
    }

    void cleanup() {
        UiServices::SetMousePointer(UiServices::vbDefault);
        if (!m_errorsExpected) {
            QVERIFY2(ErrorLog().isEmpty(), qPrintable(ErrorLog()));
        }
    }

    void captionAndControls() {
        Open(TestDatabase::Sqlite);
        MessageRecorder messages;
        frmNew editor;
        UiServices::SetMousePointer(UiServices::vbHourglass);  // as the editor does
        ShowPicker(editor, [&](frmSelectSection* picker) {
            QCOMPARE(UiServices::MousePointer(), int(UiServices::vbDefault));
            QCOMPARE(picker->objectName(), QStringLiteral("frmSelectSection"));
            QCOMPARE(picker->windowTitle(), QStringLiteral("Izbira obstoječega razdelka"));
            QVERIFY(picker->isModal());
            QTreeWidget* tvSections = List(picker, "tvSections");
            QVERIFY(tvSections->isVisible());
            QVERIFY(tvSections->isHeaderHidden());
            QPushButton* cmdCancel = Button(picker, "cmdCancel");
            QCOMPARE(cmdCancel->text(), QStringLiteral("Command1"));
            QVERIFY(!cmdCancel->isVisible());
            // The tree is the only visible control.
            for (QWidget* child :
                 picker->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly)) {
                QVERIFY2(child == tvSections || !child->isVisible(),
                         qPrintable(child->objectName()));
            }
        });
        QVERIFY(messages.Messages().isEmpty());
    }

    void treeHoldsGroupsTypesRecipesAndTitledSections_data() { TestDatabase::AddKinds(); }
    void treeHoldsGroupsTypesRecipesAndTitledSections() {
        QFETCH(QString, kind);
        Open(kind);
        TestDatabase::Insert("Group", {{"name", "Čaji"}});
        TestDatabase::Insert("Type", {{"groupID", 1}, {"name", "Enolončnice"}});
        // A recipe with an untitled and two titled sections, placed out of insertion order.
        const qint32 recipeID =
            TestDatabase::Insert("Recipe", {{"typeID", 3}, {"title", "Ajdov kolač"}});
        const QList<QPair<QVariant, int>> sections{
            {QStringLiteral("Nadev"), 3}, {QVariant(), 1}, {QStringLiteral("Testo"), 2}};
        for (const auto& [title, place] : sections) {
            const qint32 sectionID =
                TestDatabase::Insert("Section", {{"title", title}, {"instructions", " "}});
            TestDatabase::Insert(
                "RecipeSection",
                {{"recipeID", recipeID}, {"sectionID", sectionID}, {"place", place}});
        }
        MessageRecorder messages;
        frmNew editor;
        ShowPicker(editor, [&](frmSelectSection* picker) {
            QTreeWidget* tvSections = List(picker, "tvSections");
            QCOMPARE(NodeTexts(tvSections),
                     (QStringList{"G3 Čaji (b)", "G1 Juhe (b)", "  T4 Enolončnice (b)",
                                  "  T1 Mesne juhe (b)", "    R1 Goveja juha",
                                  "  T2 Zelenjavne juhe (b)", "    R2 Korenčkova juha",
                                  "G2 Sladice (b)", "  T3 Pecivo (b)", "    R4 Ajdov kolač",
                                  "      S7 Testo", "      S5 Nadev", "    R3 čokoladna torta",
                                  "      S2 Testo", "      S3 Krema"}));
            for (int i = 0; i < tvSections->topLevelItemCount(); ++i) {
                QVERIFY(!AnyExpanded(tvSections->topLevelItem(i)));
            }
        });
        QVERIFY(messages.Messages().isEmpty());
    }

    void emptyDatabaseShowsAnEmptyTree_data() {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("way");
        for (const QString& kind : {TestDatabase::Sqlite, TestDatabase::Postgres}) {
            for (const char* way : {"cancel", "close box", "Escape"}) {
                QTest::newRow(qPrintable(kind + QLatin1Char(' ') + QLatin1String(way)))
                    << kind << QString::fromLatin1(way);
            }
        }
    }
    void emptyDatabaseShowsAnEmptyTree() {
        QFETCH(QString, kind);
        QFETCH(QString, way);
        Open(kind, false);
        MessageRecorder messages;
        frmNew editor;
        editor.lngSectionID = 42;
        bool closed = false;
        const int result = ShowPicker(editor, [&](frmSelectSection* picker) {
            QCOMPARE(List(picker, "tvSections")->topLevelItemCount(), 0);
            if (way == QLatin1String("cancel")) {
                Button(picker, "cmdCancel")->click();
            } else if (way == QLatin1String("close box")) {
                QVERIFY(picker->close());
            } else {
                QTest::keyClick(picker, Qt::Key_Escape);
            }
            closed = !picker->isVisible();
        });
        QVERIFY(closed);
        QVERIFY(result != ClosedByTest);
        QCOMPARE(editor.lngSectionID, -1);
        QVERIFY(messages.Messages().isEmpty());
    }

    void doubleClickOnlyChoosesASection_data() { TestDatabase::AddKinds(); }
    void doubleClickOnlyChoosesASection() {
        QFETCH(QString, kind);
        Open(kind);
        MessageRecorder messages;
        frmNew editor;
        editor.lngSectionID = 42;
        bool closed = false;
        ShowPicker(editor, [&](frmSelectSection* picker) {
            QTreeWidget* tvSections = List(picker, "tvSections");
            // Group, subgroup and recipe: the tree expands them, the picker stays open.
            for (const char* key : {"G2", "T3", "R3"}) {
                QTreeWidgetItem* node = Node(tvSections, QString::fromLatin1(key));
                QVERIFY(!node->isExpanded());
                DoubleClickEntry(tvSections, node);
                QVERIFY2(picker->isVisible(), key);
                QCOMPARE(editor.lngSectionID, 42);
                QVERIFY2(node->isExpanded(), key);
            }
            DoubleClickEntry(tvSections, Node(tvSections, QStringLiteral("S3")));
            closed = !picker->isVisible();
        });
        QVERIFY(closed);
        QCOMPARE(editor.lngSectionID, 3);
        QVERIFY(messages.Messages().isEmpty());
    }

    void untitledSectionsAreNeverOffered() {
        Open(TestDatabase::Sqlite);
        MessageRecorder messages;
        frmNew editor;
        ShowPicker(editor, [&](frmSelectSection* picker) {
            QTreeWidget* tvSections = List(picker, "tvSections");
            // Sections 1 and 4 are untitled (recipes 1 and 2).
            QCOMPARE(Node(tvSections, QStringLiteral("R1"))->childCount(), 0);
            QCOMPARE(Node(tvSections, QStringLiteral("R2"))->childCount(), 0);
            QVERIFY(!Node(tvSections, QStringLiteral("S1")));
            QVERIFY(!Node(tvSections, QStringLiteral("S4")));
        });
    }

    void sectionOfTwoRecipesIsOfferedOnce() {
        Open(TestDatabase::Sqlite);
        TestDatabase::Insert("RecipeSection", {{"recipeID", 1}, {"sectionID", 3}, {"place", 2}});
        MessageRecorder messages;
        frmNew editor;
        ShowPicker(editor, [&](frmSelectSection* picker) {
            QTreeWidget* tvSections = List(picker, "tvSections");
            QTreeWidgetItem* soup = Node(tvSections, QStringLiteral("R1"));
            QCOMPARE(soup->childCount(), 1);
            QCOMPARE(modGeneral::ItemKey(soup->child(0)), QStringLiteral("S3"));
            QCOMPARE(Node(tvSections, QStringLiteral("R3"))->childCount(), 1);
            QCOMPARE(modGeneral::ItemKey(Node(tvSections, QStringLiteral("R3"))->child(0)),
                     QStringLiteral("S2"));
        });
        QVERIFY(messages.Messages().isEmpty());
    }

    void failureWhileFillingKeepsThePartOfTheTree_data() { TestDatabase::AddKinds(); }
    void failureWhileFillingKeepsThePartOfTheTree() {
        QFETCH(QString, kind);
        Open(kind);
        m_errorsExpected = true;
        TestDatabase::Exec(QStringLiteral("DROP TABLE [RecipeSection]"));
        MessageRecorder messages;
        frmNew editor;
        bool open = false;
        ShowPicker(editor, [&](frmSelectSection* picker) {
            open = picker->isVisible();
            QCOMPARE(NodeTexts(List(picker, "tvSections")),
                     (QStringList{"G1 Juhe (b)", "  T1 Mesne juhe (b)", "    R1 Goveja juha"}));
        });
        QVERIFY(open);
        QCOMPARE(Said(messages), QStringList{"48 " + ErrorPath::UnexpectedErrorMessage});
        QVERIFY2(ErrorLog().contains(QStringLiteral(
                     "frmSelectSection:Form_Load->frmSelectSection:RefreshTreeView->")),
                 qPrintable(ErrorLog()));
        QCOMPARE(UiServices::MousePointer(), int(UiServices::vbDefault));
    }

    void treeFillsTheDialog() {
        Open(TestDatabase::Sqlite);
        MessageRecorder messages;
        frmNew editor;
        ShowPicker(editor, [&](frmSelectSection* picker) {
            QTreeWidget* tvSections = List(picker, "tvSections");
            const QPoint corner = tvSections->pos();
            QCOMPARE(corner, QPoint(Controls::Pixels(120), Controls::Pixels(120)));
            picker->resize(400, 300);
            QTRY_COMPARE(tvSections->size(), QSize(400 - corner.x() - Controls::Pixels(120),
                                                   300 - corner.y() - Controls::Pixels(375)));
            picker->resize(12, 30);
            QTRY_COMPARE(picker->size(), QSize(12, 30));
            QCOMPARE(tvSections->size(), QSize(0, 0));
        });
        QVERIFY(messages.Messages().isEmpty());
    }
};

QTEST_MAIN(TestSelectSection)
#include "tst_selectsection.moc"
