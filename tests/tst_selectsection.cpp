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
#include <QTreeView>
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

// Every node the model holds now as "<indent><key> <text>[ (b)]", depth first; "(b)" marks
// bold text.
void AddNodeTexts(const QAbstractItemModel* model, const QModelIndex& parent, int depth,
                  QStringList& texts) {
    for (int row = 0; row < model->rowCount(parent); ++row) {
        const QModelIndex node = model->index(row, 0, parent);
        texts << QString(depth * 2, QLatin1Char(' ')) + node.data(modGeneral::KeyRole).toString() +
                     QLatin1Char(' ') + node.data().toString() +
                     (node.data(Qt::FontRole).value<QFont>().bold() ? QStringLiteral(" (b)")
                                                                    : QString());
        AddNodeTexts(model, node, depth + 1, texts);
    }
}
QStringList NodeTexts(const QTreeView* tree) {
    QStringList texts;
    AddNodeTexts(tree->model(), QModelIndex(), 0, texts);
    return texts;
}

bool AnyExpanded(const QTreeView* tree, const QModelIndex& parent = QModelIndex()) {
    const QAbstractItemModel* model = tree->model();
    for (int row = 0; row < model->rowCount(parent); ++row) {
        const QModelIndex node = model->index(row, 0, parent);
        if (tree->isExpanded(node) || AnyExpanded(tree, node)) {
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
            QTreeView* tvSections = Tree(picker, "tvSections");
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
            QTreeView* tvSections = Tree(picker, "tvSections");
            // The tree opens collapsed.
            QVERIFY(!AnyExpanded(tvSections));
            ExpandAll(tvSections);
            QCOMPARE(NodeTexts(tvSections),
                     (QStringList{"G3 Čaji (b)", "G1 Juhe (b)", "  T4 Enolončnice (b)",
                                  "  T1 Mesne juhe (b)", "    R1 Goveja juha",
                                  "  T2 Zelenjavne juhe (b)", "    R2 Korenčkova juha",
                                  "G2 Sladice (b)", "  T3 Pecivo (b)", "    R4 Ajdov kolač",
                                  "      S7 Testo", "      S5 Nadev", "    R3 čokoladna torta",
                                  "      S2 Testo", "      S3 Krema"}));
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
            QCOMPARE(Tree(picker, "tvSections")->model()->rowCount(), 0);
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
            QTreeView* tvSections = Tree(picker, "tvSections");
            // Group, subgroup and recipe: the tree expands them, the picker stays open.
            for (const char* key : {"G2", "T3", "R3"}) {
                const QModelIndex node = Node(tvSections, QString::fromLatin1(key));
                QVERIFY2(node.isValid(), key);
                QVERIFY(!tvSections->isExpanded(node));
                DoubleClickEntry(tvSections, node);
                QVERIFY2(picker->isVisible(), key);
                QCOMPARE(editor.lngSectionID, 42);
                QVERIFY2(tvSections->isExpanded(node), key);
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
            QTreeView* tvSections = Tree(picker, "tvSections");
            const QAbstractItemModel* model = tvSections->model();
            ExpandAll(tvSections);
            // Sections 1 and 4 are untitled (recipes 1 and 2): the recipes cannot be expanded.
            for (const char* key : {"R1", "R2"}) {
                const QModelIndex recipe = Node(tvSections, QString::fromLatin1(key));
                QVERIFY2(!model->hasChildren(recipe), key);
                QCOMPARE(model->rowCount(recipe), 0);
            }
            QVERIFY(!Node(tvSections, QStringLiteral("S1")).isValid());
            QVERIFY(!Node(tvSections, QStringLiteral("S4")).isValid());
            QVERIFY(Node(tvSections, QStringLiteral("S2")).isValid());
        });
    }

    void sectionOfTwoRecipesIsOfferedOnce() {
        Open(TestDatabase::Sqlite);
        TestDatabase::Insert("RecipeSection", {{"recipeID", 1}, {"sectionID", 3}, {"place", 2}});
        MessageRecorder messages;
        frmNew editor;
        ShowPicker(editor, [&](frmSelectSection* picker) {
            QTreeView* tvSections = Tree(picker, "tvSections");
            ExpandAll(tvSections);
            QCOMPARE(NodeTexts(tvSections),
                     (QStringList{"G1 Juhe (b)", "  T1 Mesne juhe (b)", "    R1 Goveja juha",
                                  "      S3 Krema", "  T2 Zelenjavne juhe (b)",
                                  "    R2 Korenčkova juha", "G2 Sladice (b)", "  T3 Pecivo (b)",
                                  "    R3 čokoladna torta", "      S2 Testo"}));
        });
        QVERIFY(messages.Messages().isEmpty());
    }

    void failureWhileFillingKeepsThePartOfTheTree_data() { TestDatabase::AddKinds(); }
    void failureWhileFillingKeepsThePartOfTheTree() {
        QFETCH(QString, kind);
        Open(kind);
        m_errorsExpected = true;
        TestDatabase::Exec(QStringLiteral("DROP TABLE [Type]"));
        MessageRecorder messages;
        frmNew editor;
        bool open = false;
        ShowPicker(editor, [&](frmSelectSection* picker) {
            open = picker->isVisible();
            QCOMPARE(NodeTexts(Tree(picker, "tvSections")), QStringList{"G1 Juhe (b)"});
        });
        QVERIFY(open);
        QCOMPARE(Said(messages), QStringList{"48 " + ErrorPath::UnexpectedErrorMessage});
        QVERIFY2(ErrorLog().contains(QStringLiteral(
                     "frmSelectSection:Form_Load->frmSelectSection:RefreshTreeView->")),
                 qPrintable(ErrorLog()));
        QCOMPARE(UiServices::MousePointer(), int(UiServices::vbDefault));
    }

    // The sections are read as the tree is expanded: a failure then is reported once, the
    // recipes stay without sections, and the picker stays open.
    void failureWhileExpandingKeepsThePicker_data() { TestDatabase::AddKinds(); }
    void failureWhileExpandingKeepsThePicker() {
        QFETCH(QString, kind);
        Open(kind);
        m_errorsExpected = true;
        TestDatabase::Exec(QStringLiteral("DROP TABLE [RecipeSection]"));
        MessageRecorder messages;
        frmNew editor;
        bool open = false;
        ShowPicker(editor, [&](frmSelectSection* picker) {
            QTreeView* tvSections = Tree(picker, "tvSections");
            QVERIFY(messages.Messages().isEmpty());
            const QModelIndex pastry = Node(tvSections, QStringLiteral("T3"));
            tvSections->expand(pastry.parent());
            DoubleClickEntry(tvSections, pastry);
            QVERIFY(tvSections->isExpanded(pastry));
            const QModelIndex cake = Node(tvSections, QStringLiteral("R3"));
            QVERIFY(!tvSections->model()->hasChildren(cake));
            ExpandAll(tvSections);
            open = picker->isVisible();
            QCOMPARE(NodeTexts(tvSections),
                     (QStringList{"G1 Juhe (b)", "  T1 Mesne juhe (b)", "    R1 Goveja juha",
                                  "  T2 Zelenjavne juhe (b)", "    R2 Korenčkova juha",
                                  "G2 Sladice (b)", "  T3 Pecivo (b)", "    R3 čokoladna torta"}));
        });
        QVERIFY(open);
        // Once for each subgroup whose recipes were asked about.
        QCOMPARE(Said(messages), QStringList(3, "48 " + ErrorPath::UnexpectedErrorMessage));
        QVERIFY2(ErrorLog().contains(
                     QStringLiteral("frmSelectSection:tvSections_Expand->frmSelectSection:"
                                    "ReadSectionAnswers->")),
                 qPrintable(ErrorLog()));
    }

    // Opening reads groups and subgroups; a group's recipes come when it is first expanded, a
    // recipe's sections when it is first expanded, and whether it can be expanded is known
    // before.
    void sectionsAreReadWhenARecipeIsExpanded_data() { TestDatabase::AddKinds(); }
    void sectionsAreReadWhenARecipeIsExpanded() {
        QFETCH(QString, kind);
        Open(kind);
        MessageRecorder messages;
        frmNew editor;
        ShowPicker(editor, [&](frmSelectSection* picker) {
            QTreeView* tvSections = Tree(picker, "tvSections");
            const QAbstractItemModel* model = tvSections->model();
            QCOMPARE(NodeTexts(tvSections),
                     (QStringList{"G1 Juhe (b)", "  T1 Mesne juhe (b)", "  T2 Zelenjavne juhe (b)",
                                  "G2 Sladice (b)", "  T3 Pecivo (b)"}));
            const QModelIndex pastry = Node(tvSections, QStringLiteral("T3"));
            QCOMPARE(model->rowCount(pastry), 0);
            tvSections->expand(pastry.parent());
            QVERIFY(model->hasChildren(pastry));
            QCOMPARE(model->rowCount(pastry), 1);
            tvSections->expand(pastry);
            const QModelIndex cake = Node(tvSections, QStringLiteral("R3"));
            QCOMPARE(cake.data().toString(), QStringLiteral("čokoladna torta"));
            QVERIFY(model->hasChildren(cake));
            QCOMPARE(model->rowCount(cake), 0);
            tvSections->expand(cake);
            QCOMPARE(model->rowCount(cake), 2);
            QCOMPARE(model->index(1, 0, cake).data().toString(), QStringLiteral("Krema"));
            QCOMPARE(model->index(1, 0, cake).data(modGeneral::KeyRole).toString(),
                     QStringLiteral("S3"));
            QVERIFY(!model->hasChildren(model->index(1, 0, cake)));
        });
        QVERIFY(messages.Messages().isEmpty());
    }

    void treeFillsTheDialog() {
        Open(TestDatabase::Sqlite);
        MessageRecorder messages;
        frmNew editor;
        ShowPicker(editor, [&](frmSelectSection* picker) {
            QTreeView* tvSections = Tree(picker, "tvSections");
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
