// The recipe editor: adding, deleting, moving and selecting sections, the ingredient line cycle,
// the checks of an ingredient line, a section and a recipe, and the reuse of a section of another
// recipe through the section picker.
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
#include "main/frmMain.h"
#include "tests/support/EditorDriver.h"
#include "tests/support/MessageRecorder.h"
#include "tests/support/TestDatabase.h"

using TestDatabase::Rows;

using namespace EditorDriver;

namespace {}  // namespace

class TestEditorSections : public QObject {
    Q_OBJECT

private:
    bool m_errorsExpected = false;

    static void Open(const QString& kind) {
        TestDatabase::OpenFresh(kind);
        TestDatabase::LoadSmallCollection();
        modGeneral::TempFilename = TestDatabase::WorkFolder() + QStringLiteral("/page.html");
    }

    // Adds a recipe of subgroup 1 with the given section titles at places 1, 2, ...; section n
    // has the instructions "<title> delo" and one line "<n * 10> g moka".
    static qint32 AddRecipe(const QStringList& sectionTitles) {
        const qint32 recipeID = TestDatabase::Insert(
            "Recipe", {{"typeID", 1}, {"sourceID", 2}, {"title", "Sestavljen"}});
        int place = 0;
        for (const QString& title : sectionTitles) {
            ++place;
            const qint32 sectionID = TestDatabase::Insert(
                "Section", {{"title", title}, {"instructions", title + QStringLiteral(" delo")}});
            TestDatabase::Insert(
                "RecipeSection",
                {{"recipeID", recipeID}, {"sectionID", sectionID}, {"place", place}});
            TestDatabase::Insert("SectionIngredient", {{"sectionID", sectionID},
                                                       {"ingredientID", 1},
                                                       {"unitID", 1},
                                                       {"amount", place * 10}});
        }
        return recipeID;
    }

private Q_SLOTS:
    void initTestCase() { TestDatabase::IsolateEnvironment(); }

    void init() {
        QFile::remove(QStringLiteral("errors.log"));
        modGeneral::lngLastID = -12345;
        m_errorsExpected = false;
    }

    void cleanup() {
        UiServices::SetMousePointer(UiServices::vbDefault);
        if (!m_errorsExpected) {
            QVERIFY2(ErrorLog().isEmpty(), qPrintable(ErrorLog()));
        }
    }

    // ---- adding sections --------------------------------------------------------------------

    void addingToAnUntitledSectionIsRefused() {
        Open(TestDatabase::Sqlite);
        MessageRecorder messages;
        ShowEditor(-1, [&](frmNew* editor) {
            AddLine(editor, QStringLiteral("12"), QStringLiteral("g"), QStringLiteral("moka"));
            Click(editor, "cmdSectionAdd");
            QCOMPARE(Said(messages), QStringList{"64 Vpišite naslov razdelka!"});
            QCOMPARE(List(editor, "lstSections")->topLevelItemCount(), 0);
            QVERIFY(!editor->MultiSectionMode());
            QCOMPARE(LineTexts(editor), QStringList{"12|g|moka|1|1"});
            QCOMPARE(editor->WorkingSections().size(), 1);
            // A title alone is not enough: the section needs ingredient lines.
            messages.Clear();
            QTest::mouseClick(Button(editor, "cmdSectionIngredientAdd"), Qt::LeftButton);
            Click(editor, "cmdIngredientCancel");
            List(editor, "lstSectionIngredient")->topLevelItem(0)->setSelected(true);
            Click(editor, "cmdSectionIngredientDelete");
            QTest::keyClicks(Box(editor, "txtSectionTitle"), QStringLiteral("Juha"));
            Click(editor, "cmdSectionAdd");
            QCOMPARE(Said(messages), QStringList{"64 Vnesite sestavine razdelka!"});
            QCOMPARE(List(editor, "lstSections")->topLevelItemCount(), 0);
            QVERIFY(!editor->MultiSectionMode());
        });
    }

    void addingToATitledSingleSection() {
        Open(TestDatabase::Sqlite);
        MessageRecorder messages;
        ShowEditor(1, [&](frmNew* editor) {
            QTest::keyClicks(Box(editor, "txtSectionTitle"), QStringLiteral("Juha"));
            SetInstructions(editor, QStringLiteral("Skuhamo.\r\nSolimo."));
            Click(editor, "cmdSectionAdd");
            QTreeWidget* lstSections = List(editor, "lstSections");
            QCOMPARE(EntryTexts(lstSections), (QStringList{"Juha", "Novi razdelek"}));
            QCOMPARE(SelectedRow(lstSections), 1);
            QCOMPARE(editor->CurrentSectionEntry(), lstSections->topLevelItem(1));
            QCOMPARE(Box(editor, "txtSectionTitle")->text(), QStringLiteral("Novi razdelek"));
            QCOMPARE(Instructions(editor), QString());
            QCOMPARE(LineTexts(editor), QStringList());
            QVERIFY(editor->MultiSectionMode());
            QCOMPARE(Stored(editor),
                     (QStringList{"Juha|Skuhamo.\r\nSolimo.|100 g moka (1,1)", "||"}));
            QCOMPARE(editor->focusWidget(), Box(editor, "txtSectionTitle"));
            for (const char* name : {"cmdSectionDelete", "cmdSectionUp", "cmdSectionDown"}) {
                QVERIFY2(Button(editor, name)->isEnabled(), name);
            }
            // The list shows the title being typed.
            QTest::keyClicks(Box(editor, "txtSectionTitle"), QStringLiteral(" 2"));
            QCOMPARE(EntryTexts(lstSections), (QStringList{"Juha", "Novi razdelek 2"}));
        });
        QVERIFY(messages.Messages().isEmpty());
    }

    void addingInMultiSectionModeStoresTheShownSection() {
        Open(TestDatabase::Sqlite);
        MessageRecorder messages;
        ShowEditor(3, [&](frmNew* editor) {
            SetInstructions(editor, QStringLiteral("Zamesimo gladko."));
            Click(editor, "cmdSectionAdd");
            QTreeWidget* lstSections = List(editor, "lstSections");
            QCOMPARE(EntryTexts(lstSections), (QStringList{"Testo", "Krema", "Novi razdelek"}));
            QCOMPARE(SelectedRow(lstSections), 2);
            QCOMPARE(editor->CurrentSectionEntry(), lstSections->topLevelItem(2));
            QCOMPARE(Box(editor, "txtSectionTitle")->text(), QStringLiteral("Novi razdelek"));
            QCOMPARE(LineTexts(editor), QStringList());
            QCOMPARE(Stored(editor),
                     (QStringList{"Testo|Zamesimo gladko.|300 g moka (1,1)",
                                  "Krema|Stopimo ČOKOLADO.|2 žlica Čokolada (2,4)", "||"}));
            QVERIFY(editor->MultiSectionMode());
        });
        QVERIFY(messages.Messages().isEmpty());
    }

    void failedAddInMultiSectionModeLeavesTheSingleSectionRules() {
        Open(TestDatabase::Sqlite);
        MessageRecorder messages;
        ShowEditor(3, [&](frmNew* editor) {
            QTreeWidget* lstSections = List(editor, "lstSections");
            QLineEdit* txtSectionTitle = Box(editor, "txtSectionTitle");
            txtSectionTitle->clear();
            QCOMPARE(EntryTexts(lstSections), (QStringList{"", "Krema"}));
            Click(editor, "cmdSectionAdd");
            QCOMPARE(Said(messages), QStringList{"64 Vpišite naslov razdelka!"});
            QVERIFY(!editor->MultiSectionMode());
            QCOMPARE(lstSections->topLevelItemCount(), 2);
            // Kept as designed: the form now checks the shown section as a single one, so a
            // titled section cannot be left.
            messages.Clear();
            QTest::keyClicks(txtSectionTitle, QStringLiteral("Testo"));
            ClickEntry(lstSections, 1);
            QCOMPARE(Said(messages), QStringList{"64 Izbrišite naslov razdelka!"});
            QCOMPARE(SelectedRow(lstSections), 0);
            QCOMPARE(editor->CurrentSectionEntry(), lstSections->topLevelItem(0));
            QCOMPARE(txtSectionTitle->text(), QStringLiteral("Testo"));
            // A successful add sets the mode again.
            messages.Clear();
            Click(editor, "cmdSectionAdd");
            QVERIFY(messages.Messages().isEmpty());
            QVERIFY(editor->MultiSectionMode());
            QCOMPARE(EntryTexts(lstSections), (QStringList{"Testo", "Krema", "Novi razdelek"}));
        });
    }

    // ---- deleting sections ------------------------------------------------------------------

    void deletingOneOfTwoReturnsToSingleSectionMode_data() {
        QTest::addColumn<int>("deleted");
        QTest::addColumn<QString>("instructions");
        QTest::addColumn<QString>("line");
        QTest::newRow("the second") << 1 << "Zamesimo."
                                    << "300|g|moka|1|1";
        QTest::newRow("the first") << 0 << "Stopimo ČOKOLADO."
                                   << "2|žlica|Čokolada|2|4";
    }
    void deletingOneOfTwoReturnsToSingleSectionMode() {
        QFETCH(int, deleted);
        QFETCH(QString, instructions);
        QFETCH(QString, line);
        Open(TestDatabase::Sqlite);
        MessageRecorder messages;
        ShowEditor(3, [&](frmNew* editor) {
            QTreeWidget* lstSections = List(editor, "lstSections");
            ClickEntry(lstSections, deleted);
            QCOMPARE(SelectedRow(lstSections), deleted);
            Click(editor, "cmdSectionDelete");
            QCOMPARE(Said(messages), QStringList{"36 Ali res želite izbrisati razdelek?"});
            QCOMPARE(lstSections->topLevelItemCount(), 0);
            QCOMPARE(Box(editor, "txtSectionTitle")->text(), QString());
            QCOMPARE(Instructions(editor), instructions);
            QCOMPARE(LineTexts(editor), QStringList{line});
            QVERIFY(!editor->MultiSectionMode());
            QCOMPARE(editor->WorkingSections().size(), 1);
            QVERIFY(!editor->CurrentSectionEntry());
            for (const char* name : {"cmdSectionDelete", "cmdSectionUp", "cmdSectionDown"}) {
                QVERIFY2(!Button(editor, name)->isEnabled(), name);
            }
            // Typing a title now touches no list entry.
            QTest::keyClicks(Box(editor, "txtSectionTitle"), QStringLiteral("Nov"));
            QCOMPARE(lstSections->topLevelItemCount(), 0);
        });
    }

    void deletingAnsweredNoChangesNothing() {
        Open(TestDatabase::Sqlite);
        MessageRecorder messages;
        messages.Answer(UiServices::vbNo);
        ShowEditor(3, [&](frmNew* editor) {
            Click(editor, "cmdSectionDelete");
            QCOMPARE(Said(messages), QStringList{"36 Ali res želite izbrisati razdelek?"});
            QCOMPARE(EntryTexts(List(editor, "lstSections")), (QStringList{"Testo", "Krema"}));
            QCOMPARE(Box(editor, "txtSectionTitle")->text(), QStringLiteral("Testo"));
            QVERIFY(editor->MultiSectionMode());
            QCOMPARE(editor->WorkingSections().size(), 3);
        });
    }

    void deletingTheThirdOfFourShowsTheFirst() {
        Open(TestDatabase::Sqlite);
        const qint32 recipeID = AddRecipe({"A", "B", "C", "D"});
        MessageRecorder messages;
        ShowEditor(recipeID, [&](frmNew* editor) {
            QTreeWidget* lstSections = List(editor, "lstSections");
            ClickEntry(lstSections, 2);
            QCOMPARE(Box(editor, "txtSectionTitle")->text(), QStringLiteral("C"));
            Click(editor, "cmdSectionDelete");
            QCOMPARE(EntryTexts(lstSections), (QStringList{"A", "B", "D"}));
            QCOMPARE(SelectedRow(lstSections), 0);
            QCOMPARE(editor->CurrentSectionEntry(), lstSections->topLevelItem(0));
            QCOMPARE(Box(editor, "txtSectionTitle")->text(), QStringLiteral("A"));
            QCOMPARE(Instructions(editor), QStringLiteral("A delo"));
            QCOMPARE(LineTexts(editor), QStringList{"10|g|moka|1|1"});
            QCOMPARE(Stored(editor),
                     (QStringList{"A|A delo|10 g moka (1,1)", "B|B delo|20 g moka (1,1)",
                                  "D|D delo|40 g moka (1,1)"}));
            QVERIFY(editor->MultiSectionMode());
        });
        QCOMPARE(Said(messages), QStringList{"36 Ali res želite izbrisati razdelek?"});
    }

    // ---- moving sections --------------------------------------------------------------------

    void movingUpThenClickingTheFirstStoresPlaceTwo() {
        Open(TestDatabase::Sqlite);
        const qint32 recipeID = AddRecipe({"A", "B", "C"});
        MessageRecorder messages;
        ShowEditor(recipeID, [&](frmNew* editor) {
            QTreeWidget* lstSections = List(editor, "lstSections");
            ClickEntry(lstSections, 2);
            SetInstructions(editor, QStringLiteral("C novo"));
            Click(editor, "cmdSectionUp");
            QCOMPARE(EntryTexts(lstSections), (QStringList{"A", "C", "B"}));
            QCOMPARE(SelectedRow(lstSections), 1);
            QCOMPARE(editor->CurrentSectionEntry(), lstSections->topLevelItem(1));
            // The moved section stays in the controls; its place is written later.
            QCOMPARE(Box(editor, "txtSectionTitle")->text(), QStringLiteral("C"));
            QCOMPARE(Instructions(editor), QStringLiteral("C novo"));
            QCOMPARE(Stored(editor),
                     (QStringList{"A|A delo|10 g moka (1,1)", "B|B delo|20 g moka (1,1)",
                                  "B|B delo|20 g moka (1,1)"}));
            ClickEntry(lstSections, 0);
            QCOMPARE(Stored(editor),
                     (QStringList{"A|A delo|10 g moka (1,1)", "C|C novo|30 g moka (1,1)",
                                  "B|B delo|20 g moka (1,1)"}));
            QCOMPARE(Box(editor, "txtSectionTitle")->text(), QStringLiteral("A"));
            // "Dol" moves the first one down.
            Click(editor, "cmdSectionDown");
            QCOMPARE(EntryTexts(lstSections), (QStringList{"C", "A", "B"}));
            QCOMPARE(SelectedRow(lstSections), 1);
            ClickEntry(lstSections, 2);
            QCOMPARE(Stored(editor),
                     (QStringList{"C|C novo|30 g moka (1,1)", "A|A delo|10 g moka (1,1)",
                                  "B|B delo|20 g moka (1,1)"}));
            QCOMPARE(Box(editor, "txtSectionTitle")->text(), QStringLiteral("B"));
        });
        QVERIFY(messages.Messages().isEmpty());
    }

    void movingPastTheEndsDoesNothing() {
        Open(TestDatabase::Sqlite);
        const qint32 recipeID = AddRecipe({"A", "B"});
        MessageRecorder messages;
        ShowEditor(recipeID, [&](frmNew* editor) {
            QTreeWidget* lstSections = List(editor, "lstSections");
            Click(editor, "cmdSectionUp");
            QCOMPARE(EntryTexts(lstSections), (QStringList{"A", "B"}));
            QCOMPARE(SelectedRow(lstSections), 0);
            ClickEntry(lstSections, 1);
            Click(editor, "cmdSectionDown");
            QCOMPARE(EntryTexts(lstSections), (QStringList{"A", "B"}));
            QCOMPARE(SelectedRow(lstSections), 1);
            QCOMPARE(Box(editor, "txtSectionTitle")->text(), QStringLiteral("B"));
        });
        QVERIFY(messages.Messages().isEmpty());
    }

    void movingAnInvalidSectionIsRefused() {
        Open(TestDatabase::Sqlite);
        const qint32 recipeID = AddRecipe({"A", "B"});
        MessageRecorder messages;
        ShowEditor(recipeID, [&](frmNew* editor) {
            Box(editor, "txtSectionTitle")->setText(QStringLiteral("   "));
            Click(editor, "cmdSectionDown");
            QCOMPARE(Said(messages), QStringList{"64 Vpišite naslov razdelka!"});
            QCOMPARE(EntryTexts(List(editor, "lstSections")), (QStringList{"   ", "B"}));
            QCOMPARE(SelectedRow(List(editor, "lstSections")), 0);
        });
    }

    // ---- selecting sections -----------------------------------------------------------------

    void equalTitlesKeepShowingTheFirst() {
        Open(TestDatabase::Sqlite);
        const qint32 recipeID = AddRecipe({"Testo", "Testo"});
        MessageRecorder messages;
        ShowEditor(recipeID, [&](frmNew* editor) {
            QTreeWidget* lstSections = List(editor, "lstSections");
            ClickEntry(lstSections, 1);
            QCOMPARE(SelectedRow(lstSections), 1);
            QCOMPARE(editor->CurrentSectionEntry(), lstSections->topLevelItem(0));
            QCOMPARE(LineTexts(editor), QStringList{"10|g|moka|1|1"});
            QCOMPARE(Instructions(editor), QStringLiteral("Testo delo"));
        });
        QVERIFY(messages.Messages().isEmpty());
    }

    void leavingASectionWithoutLinesPutsTheSelectionBack() {
        Open(TestDatabase::Sqlite);
        MessageRecorder messages;
        ShowEditor(3, [&](frmNew* editor) {
            QTreeWidget* lstSections = List(editor, "lstSections");
            ClickEntry(List(editor, "lstSectionIngredient"), 0);
            Click(editor, "cmdSectionIngredientDelete");
            QCOMPARE(LineTexts(editor), QStringList());
            ClickEntry(lstSections, 1);
            QCOMPARE(Said(messages), QStringList{"64 Vnesite sestavine razdelka!"});
            QCOMPARE(SelectedRow(lstSections), 0);
            QCOMPARE(editor->CurrentSectionEntry(), lstSections->topLevelItem(0));
            QCOMPARE(Box(editor, "txtSectionTitle")->text(), QStringLiteral("Testo"));
            // The keyboard takes the same way.
            messages.Clear();
            lstSections->setFocus();
            QTest::keyClick(lstSections, Qt::Key_Down);
            QCoreApplication::processEvents();
            QCOMPARE(Said(messages), QStringList{"64 Vnesite sestavine razdelka!"});
            QCOMPARE(SelectedRow(lstSections), 0);
        });
    }

    void aNewSectionWithoutLinesCannotBeLeft() {
        Open(TestDatabase::Sqlite);
        MessageRecorder messages;
        ShowEditor(3, [&](frmNew* editor) {
            Click(editor, "cmdSectionAdd");
            ClickEntry(List(editor, "lstSections"), 0);
            QCOMPARE(Said(messages), QStringList{"64 Vnesite sestavine razdelka!"});
            QCOMPARE(SelectedRow(List(editor, "lstSections")), 2);
        });
    }

    void clickingAnotherSectionStoresAndShowsIt() {
        Open(TestDatabase::Sqlite);
        MessageRecorder messages;
        ShowEditor(3, [&](frmNew* editor) {
            QTreeWidget* lstSections = List(editor, "lstSections");
            Box(editor, "txtSectionTitle")->setText(QStringLiteral("Testo za torto"));
            QCOMPARE(EntryTexts(lstSections), (QStringList{"Testo za torto", "Krema"}));
            AddLine(editor, QStringLiteral("3"), QStringLiteral("žlica"),
                    QStringLiteral("krompir"));
            ClickEntry(lstSections, 1);
            QCOMPARE(Box(editor, "txtSectionTitle")->text(), QStringLiteral("Krema"));
            QCOMPARE(LineTexts(editor), QStringList{"2|žlica|Čokolada|2|4"});
            QCOMPARE(
                Stored(editor),
                (QStringList{"Testo za torto|Zamesimo.|300 g moka (1,1), 3 žlica krompir (2,3)",
                             "Krema|Stopimo ČOKOLADO.|2 žlica Čokolada (2,4)"}));
            ClickEntry(lstSections, 0);
            QCOMPARE(LineTexts(editor), (QStringList{"300|g|moka|1|1", "3|žlica|krompir|2|3"}));
        });
        QVERIFY(messages.Messages().isEmpty());
    }

    void amountAbove32767OverflowsWhenTheSectionIsStored() {
        Open(TestDatabase::Sqlite);
        m_errorsExpected = true;
        MessageRecorder messages;
        ShowEditor(3, [&](frmNew* editor) {
            AddLine(editor, QStringLiteral("40000"), QStringLiteral("g"), QStringLiteral("moka"));
            QCOMPARE(LineTexts(editor), (QStringList{"300|g|moka|1|1", "40000|g|moka|1|1"}));
            QVERIFY(messages.Messages().isEmpty());  // the check lets it pass
            ClickEntry(List(editor, "lstSections"), 1);
            QCOMPARE(Said(messages), QStringList{"48 " + ErrorPath::UnexpectedErrorMessage});
            QCOMPARE(editor->CurrentSectionEntry(), List(editor, "lstSections")->topLevelItem(0));
            QCOMPARE(Box(editor, "txtSectionTitle")->text(), QStringLiteral("Testo"));
        });
        QVERIFY2(ErrorLog().contains(QStringLiteral(
                     "frmNew:lstSections_ItemClick->frmNew:StoreSection->Morvena->Overflow")),
                 qPrintable(ErrorLog()));
    }

    // ---- the ingredient cycle ---------------------------------------------------------------

    void ingredientLineIsAddedEditedAndDeleted() {
        Open(TestDatabase::Sqlite);
        MessageRecorder messages;
        ShowEditor(-1, [&](frmNew* editor) {
            QVERIFY(QTest::qWaitForWindowActive(editor));
            QTreeWidget* lines = List(editor, "lstSectionIngredient");
            QTreeWidget* lstIngredient = List(editor, "lstIngredient");
            QLineEdit* txtAmount = Box(editor, "txtAmount");
            QLineEdit* txtFilter = Box(editor, "txtFilter");
            QComboBox* cmbUnit = Combo(editor, "cmbUnit");
            const QStringList frame{
                "txtAmount",        "cmbUnit",   "cmdUnitAdd",      "lstIngredient",
                "cmdIngredientAdd", "txtFilter", "cmdIngredientOk", "cmdIngredientCancel"};
            const auto frameEnabled = [&](bool enabled) {
                for (const QString& name : frame) {
                    if (editor->findChild<QWidget*>(name)->isEnabled() != enabled) {
                        return false;
                    }
                }
                return true;
            };

            // A new line, with an ingredient found through the filter.
            Click(editor, "cmdSectionIngredientAdd");
            QVERIFY(frameEnabled(true));
            QCOMPARE(editor->focusWidget(), txtAmount);
            QCOMPARE(txtAmount->text(), QString());
            QCOMPARE(cmbUnit->currentIndex(), -1);
            QCOMPARE(SelectedRow(lstIngredient), 0);
            QVERIFY(!editor->EditedIngredientLine());
            QTest::keyClicks(txtAmount, QStringLiteral(" 12 "));
            ChooseCombo(cmbUnit, QStringLiteral("g"));
            QTest::keyClicks(txtFilter, QStringLiteral("kr"));
            ClickEntry(lstIngredient, 0);
            Click(editor, "cmdIngredientOk");
            QCOMPARE(LineTexts(editor), QStringList{"12|g|krompir|1|3"});
            QVERIFY(frameEnabled(false));
            QCOMPARE(editor->focusWidget(), Button(editor, "cmdSectionIngredientAdd"));

            // "Dodaj" again: empty amount, no unit, the filter emptied, the first ingredient.
            Click(editor, "cmdSectionIngredientAdd");
            QCOMPARE(txtFilter->text(), QString());
            QCOMPARE(EntryTexts(lstIngredient),
                     (QStringList{"Čokolada", "korenje", "krompir", "moka"}));
            QCOMPARE(SelectedRow(lstIngredient), 0);
            QCOMPARE(txtAmount->text(), QString());
            QCOMPARE(cmbUnit->currentIndex(), -1);
            // "Prekliči" adds nothing.
            QTest::keyClicks(txtAmount, QStringLiteral("5"));
            Click(editor, "cmdIngredientCancel");
            QVERIFY(frameEnabled(false));
            QCOMPARE(editor->focusWidget(), Button(editor, "cmdSectionIngredientAdd"));
            QCOMPARE(LineTexts(editor), QStringList{"12|g|krompir|1|3"});

            // Editing the line: the frame shows its values; "Potrdi" overwrites it.
            QVERIFY(!Button(editor, "cmdSectionIngredientEdit")->isEnabled());
            ClickEntry(lines, 0);
            QVERIFY(Button(editor, "cmdSectionIngredientEdit")->isEnabled());
            QVERIFY(Button(editor, "cmdSectionIngredientDelete")->isEnabled());
            Click(editor, "cmdSectionIngredientEdit");
            QCOMPARE(editor->EditedIngredientLine(), lines->topLevelItem(0));
            QVERIFY(frameEnabled(true));
            QCOMPARE(editor->focusWidget(), txtAmount);
            QCOMPARE(txtAmount->text(), QStringLiteral("12"));
            QCOMPARE(txtAmount->selectedText(), QStringLiteral("12"));
            QCOMPARE(cmbUnit->currentText(), QStringLiteral("g"));
            QCOMPARE(SelectedText(lstIngredient), QStringLiteral("krompir"));
            QTest::keyClicks(txtAmount, QStringLiteral("15"));
            ChooseCombo(cmbUnit, QStringLiteral("žlica"));
            ClickEntry(lstIngredient, RowOf(lstIngredient, QStringLiteral("moka")));
            Click(editor, "cmdIngredientOk");
            QCOMPARE(LineTexts(editor), QStringList{"15|žlica|moka|2|1"});

            // A second line; a double click edits the line clicked.
            AddLine(editor, QStringLiteral("2"), QStringLiteral("g"), QStringLiteral("Čokolada"));
            QCOMPARE(LineTexts(editor), (QStringList{"15|žlica|moka|2|1", "2|g|Čokolada|1|4"}));
            DoubleClickEntry(lines, lines->topLevelItem(1));
            QCOMPARE(editor->EditedIngredientLine(), lines->topLevelItem(1));
            QCOMPARE(txtAmount->text(), QStringLiteral("2"));
            QCOMPARE(SelectedText(lstIngredient), QStringLiteral("Čokolada"));
            QTest::keyClicks(txtAmount, QStringLiteral("3"));
            Click(editor, "cmdIngredientOk");
            QCOMPARE(LineTexts(editor), (QStringList{"15|žlica|moka|2|1", "3|g|Čokolada|1|4"}));

            // "Izbriši" removes the selected line.
            ClickEntry(lines, 0);
            Click(editor, "cmdSectionIngredientDelete");
            QCOMPARE(LineTexts(editor), QStringList{"3|g|Čokolada|1|4"});
            QVERIFY(!Button(editor, "cmdSectionIngredientDelete")->isEnabled());
            QVERIFY(!Button(editor, "cmdSectionIngredientEdit")->isEnabled());
        });
        QVERIFY(messages.Messages().isEmpty());
    }

    void deletingTheLineBeingEditedMakesPotrdiAddOne() {
        Open(TestDatabase::Sqlite);
        MessageRecorder messages;
        ShowEditor(1, [&](frmNew* editor) {
            QTreeWidget* lines = List(editor, "lstSectionIngredient");
            ClickEntry(lines, 0);
            Click(editor, "cmdSectionIngredientEdit");
            Click(editor, "cmdSectionIngredientDelete");
            QVERIFY(!editor->EditedIngredientLine());
            Click(editor, "cmdIngredientOk");
            QCOMPARE(LineTexts(editor), QStringList{"100|g|moka|1|1"});
        });
        QVERIFY(messages.Messages().isEmpty());
    }

    void amountMustBeWholeDigits_data() {
        QTest::addColumn<QString>("amount");
        QTest::addColumn<bool>("accepted");
        QTest::newRow("12") << "12" << true;
        QTest::newRow("blanks around 7") << "  7 " << true;
        QTest::newRow("40000") << "40000" << true;
        QTest::newRow("1,5") << "1,5" << false;
        QTest::newRow("1.5") << "1.5" << false;
        QTest::newRow("-1") << "-1" << false;
        QTest::newRow("a blank") << " " << false;
        QTest::newRow("empty") << "" << false;
        QTest::newRow("letters") << "12a" << false;
    }
    void amountMustBeWholeDigits() {
        QFETCH(QString, amount);
        QFETCH(bool, accepted);
        Open(TestDatabase::Sqlite);
        MessageRecorder messages;
        ShowEditor(-1, [&](frmNew* editor) {
            AddLine(editor, amount, QStringLiteral("g"), QStringLiteral("moka"));
            if (accepted) {
                QVERIFY(messages.Messages().isEmpty());
                QCOMPARE(LineTexts(editor), QStringList{modGeneral::TrimBlanks(amount) +
                                                        QStringLiteral("|g|moka|1|1")});
                QVERIFY(!Button(editor, "cmdIngredientOk")->isEnabled());
            } else {
                QCOMPARE(Said(messages), QStringList{"64 Vnesite veljavno količino!"});
                QCOMPARE(LineTexts(editor), QStringList());
                QVERIFY(Button(editor, "cmdIngredientOk")->isEnabled());
            }
        });
    }

    void unitAndIngredientAreRequired() {
        Open(TestDatabase::Sqlite);
        MessageRecorder messages;
        ShowEditor(-1, [&](frmNew* editor) {
            Click(editor, "cmdSectionIngredientAdd");
            QTest::keyClicks(Box(editor, "txtAmount"), QStringLiteral("5"));
            Click(editor, "cmdIngredientOk");
            QCOMPARE(Said(messages), QStringList{"64 Izberite enoto!"});
            messages.Clear();
            ChooseCombo(Combo(editor, "cmbUnit"), QStringLiteral("g"));
            QTest::keyClicks(Box(editor, "txtFilter"), QStringLiteral("zz"));
            QCOMPARE(List(editor, "lstIngredient")->topLevelItemCount(), 0);
            Click(editor, "cmdIngredientOk");
            QCOMPARE(Said(messages), QStringList{"64 Izberite sestavino!"});
            QCOMPARE(LineTexts(editor), QStringList());
            // With an empty amount only the amount is named.
            messages.Clear();
            Box(editor, "txtAmount")->clear();
            Combo(editor, "cmbUnit")->setCurrentIndex(-1);
            Click(editor, "cmdIngredientOk");
            QCOMPARE(Said(messages), QStringList{"64 Vnesite veljavno količino!"});
        });
    }

    // ---- the recipe check -------------------------------------------------------------------

    void recipeChecksNameTheFirstMissingPart() {
        Open(TestDatabase::Sqlite);
        MessageRecorder messages;
        const QString ask = QStringLiteral("36 Ali res želite shraniti recept?");
        ShowEditor(-1, [&](frmNew* editor) {
            const auto save = [&](const char* expected) {
                messages.Clear();
                Click(editor, "cmdOK");
                QCOMPARE(Said(messages), (QStringList{ask, QString::fromUtf8(expected)}));
                QVERIFY(editor->isVisible());
            };
            save("64 Izberite skupino recepta!");
            ChooseCombo(Combo(editor, "cmbGroup"), QStringLiteral("Juhe"));
            save("64 Izberite podskupino recepta!");
            ChooseCombo(Combo(editor, "cmbType"), QStringLiteral("Mesne juhe"));
            save("64 Izberite vir recepta!");
            ChooseCombo(Combo(editor, "cmbSource"), QStringLiteral("Knjiga"));
            save("64 Vpišite naslov recepta!");
            Box(editor, "txtRecipeTitle")->setText(QStringLiteral("    "));
            save("64 Vpišite naslov recepta!");
            Box(editor, "txtRecipeTitle")->setText(QStringLiteral("Juha"));
            save("64 Vnesite sestavine razdelka!");
            Box(editor, "txtSectionTitle")->setText(QStringLiteral("Osnova"));
            save("64 Izbrišite naslov razdelka!");
            AddLine(editor, QStringLiteral("1"), QStringLiteral("g"), QStringLiteral("moka"));
            save("64 Izbrišite naslov razdelka!");
            Box(editor, "txtSectionTitle")->setText(QStringLiteral("   "));
            // A title of blanks counts as empty: now the recipe is saved.
            messages.Clear();
            Click(editor, "cmdOK");
            QCOMPARE(Said(messages), QStringList{ask});
            QVERIFY(!editor->isVisible());
        });
        QCOMPARE(Rows("SELECT recipeID, title FROM [Recipe] WHERE recipeID > 3;"),
                 QStringList{"4|Juha"});
    }

    void withNothingChosenOnlyTheGroupIsNamed() {
        Open(TestDatabase::Sqlite);
        MessageRecorder messages;
        ShowEditor(-1, [&](frmNew* editor) {
            Box(editor, "txtSectionTitle")->setText(QStringLiteral("Naslov"));
            Click(editor, "cmdOK");
        });
        QCOMPARE(Said(messages), (QStringList{"36 Ali res želite shraniti recept?",
                                              "64 Izberite skupino recepta!"}));
    }

    // ---- reusing a section ------------------------------------------------------------------

    void reusingIntoAnUntitledSectionIsRefused_data() { TestDatabase::AddKinds(); }
    void reusingIntoAnUntitledSectionIsRefused() {
        QFETCH(QString, kind);
        Open(kind);
        MessageRecorder messages;
        ShowEditor(-1, [&](frmNew* editor) {
            AddLine(editor, QStringLiteral("12"), QStringLiteral("g"), QStringLiteral("moka"));
            // The picker would wait for an answer: returning from the click shows it was not
            // opened.
            Click(editor, "cmdSectionSelect");
            QCOMPARE(Said(messages), QStringList{"64 Vpišite naslov razdelka!"});
            QCOMPARE(QApplication::activeModalWidget(), editor);
            QCOMPARE(List(editor, "lstSections")->topLevelItemCount(), 0);
            QVERIFY(!editor->MultiSectionMode());
            QCOMPARE(UiServices::MousePointer(), int(UiServices::vbDefault));
        });
    }

    void reusingIntoATitledSingleSection_data() { TestDatabase::AddKinds(); }
    void reusingIntoATitledSingleSection() {
        QFETCH(QString, kind);
        Open(kind);
        MessageRecorder messages;
        ShowEditor(1, [&](frmNew* editor) {
            QTest::keyClicks(Box(editor, "txtSectionTitle"), QStringLiteral("Juha"));
            PickSection(QStringLiteral("S3"));
            Click(editor, "cmdSectionSelect");
            QCOMPARE(editor->lngSectionID, 3);
            QTreeWidget* lstSections = List(editor, "lstSections");
            QCOMPARE(EntryTexts(lstSections), (QStringList{"Juha", "Krema"}));
            QCOMPARE(SelectedRow(lstSections), 1);
            QCOMPARE(editor->CurrentSectionEntry(), lstSections->topLevelItem(1));
            QCOMPARE(Box(editor, "txtSectionTitle")->text(), QStringLiteral("Krema"));
            QCOMPARE(Instructions(editor), QStringLiteral("Stopimo ČOKOLADO."));
            QCOMPARE(LineTexts(editor), QStringList{"2|žlica|Čokolada|2|4"});
            QCOMPARE(Stored(editor),
                     (QStringList{"Juha|Skuhamo.|100 g moka (1,1)",
                                  "Krema|Stopimo ČOKOLADO.|2 žlica Čokolada (2,4)"}));
            QVERIFY(editor->MultiSectionMode());
            QCOMPARE(editor->focusWidget(), Box(editor, "txtSectionTitle"));
            QCOMPARE(UiServices::MousePointer(), int(UiServices::vbDefault));
        });
        QVERIFY(messages.Messages().isEmpty());
    }

    void cancellingThePickerAddsNothing_data() {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("way");
        for (const QString& kind : {TestDatabase::Sqlite, TestDatabase::Postgres}) {
            for (const char* way : {"cancel", "close box"}) {
                QTest::newRow(qPrintable(kind + QLatin1Char(' ') + QLatin1String(way)))
                    << kind << QString::fromLatin1(way);
            }
        }
    }
    void cancellingThePickerAddsNothing() {
        QFETCH(QString, kind);
        QFETCH(QString, way);
        Open(kind);
        MessageRecorder messages;
        ShowEditor(1, [&](frmNew* editor) {
            QTest::keyClicks(Box(editor, "txtSectionTitle"), QStringLiteral("Juha"));
            editor->lngSectionID = 3;
            WhenModal("frmSelectSection", [&](QWidget* picker) {
                if (way == QLatin1String("cancel")) {
                    Button(picker, "cmdCancel")->click();
                } else {
                    picker->close();
                }
            });
            Click(editor, "cmdSectionSelect");
            QCOMPARE(editor->lngSectionID, -1);
            QCOMPARE(List(editor, "lstSections")->topLevelItemCount(), 0);
            QVERIFY(!editor->MultiSectionMode());
            QCOMPARE(Box(editor, "txtSectionTitle")->text(), QStringLiteral("Juha"));
            QCOMPARE(LineTexts(editor), QStringList{"100|g|moka|1|1"});
        });
        QVERIFY(messages.Messages().isEmpty());
    }

    void cancellingThePickerInMultiSectionModeLeavesTheFlagFalse() {
        Open(TestDatabase::Sqlite);
        MessageRecorder messages;
        ShowEditor(3, [&](frmNew* editor) {
            WhenModal("frmSelectSection",
                      [&](QWidget* picker) { Button(picker, "cmdCancel")->click(); });
            Click(editor, "cmdSectionSelect");
            QCOMPARE(EntryTexts(List(editor, "lstSections")), (QStringList{"Testo", "Krema"}));
            QVERIFY(!editor->MultiSectionMode());  // kept as designed
        });
        QVERIFY(messages.Messages().isEmpty());
    }

    void choosingTheSameSectionTwiceAddsTwoCopies_data() { TestDatabase::AddKinds(); }
    void choosingTheSameSectionTwiceAddsTwoCopies() {
        QFETCH(QString, kind);
        Open(kind);
        MessageRecorder messages;
        ShowEditor(3, [&](frmNew* editor) {
            QTreeWidget* lstSections = List(editor, "lstSections");
            PickSection(QStringLiteral("S2"));
            Click(editor, "cmdSectionSelect");
            PickSection(QStringLiteral("S2"));
            Click(editor, "cmdSectionSelect");
            QCOMPARE(EntryTexts(lstSections), (QStringList{"Testo", "Krema", "Testo", "Testo"}));
            QCOMPARE(SelectedRow(lstSections), 3);
            QCOMPARE(editor->CurrentSectionEntry(), lstSections->topLevelItem(3));
            // The copies are independent: a change to the last one reaches only it.
            SetInstructions(editor, QStringLiteral("Zamesimo drugače."));
            ClickEntry(lstSections, 1);
            QCOMPARE(Stored(editor), (QStringList{"Testo|Zamesimo.|300 g moka (1,1)",
                                                  "Krema|Stopimo ČOKOLADO.|2 žlica Čokolada (2,4)",
                                                  "Testo|Zamesimo.|300 g moka (1,1)",
                                                  "Testo|Zamesimo drugače.|300 g moka (1,1)"}));
        });
        QVERIFY(messages.Messages().isEmpty());
    }

    void reusingInMultiSectionModeDropsUnstoredEdits() {
        Open(TestDatabase::Sqlite);
        MessageRecorder messages;
        ShowEditor(3, [&](frmNew* editor) {
            SetInstructions(editor, QStringLiteral("Neshranjeno."));
            PickSection(QStringLiteral("S3"));
            Click(editor, "cmdSectionSelect");
            QCOMPARE(Stored(editor),
                     (QStringList{"Testo|Zamesimo.|300 g moka (1,1)",
                                  "Krema|Stopimo ČOKOLADO.|2 žlica Čokolada (2,4)",
                                  "Krema|Stopimo ČOKOLADO.|2 žlica Čokolada (2,4)"}));
            QCOMPARE(Instructions(editor), QStringLiteral("Stopimo ČOKOLADO."));
        });
        QVERIFY(messages.Messages().isEmpty());
    }

    void reusedSectionWithoutTitleMustBeNamed() {
        Open(TestDatabase::Sqlite);
        // A section stored with an empty (not NULL) title is offered, and arrives untitled.
        TestDatabase::Exec(QStringLiteral("UPDATE [Section] SET title = '' WHERE sectionID = 3"));
        MessageRecorder messages;
        ShowEditor(1, [&](frmNew* editor) {
            Box(editor, "txtSectionTitle")->setText(QStringLiteral("Juha"));
            PickSection(QStringLiteral("S3"));
            Click(editor, "cmdSectionSelect");
            QCOMPARE(EntryTexts(List(editor, "lstSections")), (QStringList{"Juha", ""}));
            QCOMPARE(Box(editor, "txtSectionTitle")->text(), QString());
            ClickEntry(List(editor, "lstSections"), 0);
            QCOMPARE(Said(messages), QStringList{"64 Vpišite naslov razdelka!"});
        });
    }
};

QTEST_MAIN(TestEditorSections)
#include "tst_editor_sections.moc"
