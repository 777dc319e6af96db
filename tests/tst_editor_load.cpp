// The recipe editor: its controls, opening a new and an existing recipe (one, three, no sections;
// blank instructions; a missing subgroup), the lookup lists with the ingredient filter, the quick
// additions through the record entry dialog, and leaving the editor without saving.
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
#include "core/ui/ColumnFit.h"
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

class TestEditorLoad : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<frmMain> m_main;
    bool m_errorsExpected = false;

    // A fresh database of the kind with the small collection.
    static void Open(const QString& kind) {
        TestDatabase::OpenFresh(kind);
        TestDatabase::LoadSmallCollection();
        modGeneral::TempFilename = TestDatabase::WorkFolder() + QStringLiteral("/page.html");
    }

    // Adds a recipe of subgroup 1 with the given sections (title, or none for NULL) at places
    // 1, 2, ... in that order; every section gets one line "<n> g moka".
    static qint32 AddRecipe(const QString& title, const QList<QVariant>& sectionTitles) {
        const qint32 recipeID =
            TestDatabase::Insert("Recipe", {{"typeID", 1}, {"sourceID", 2}, {"title", title}});
        int place = 0;
        for (const QVariant& sectionTitle : sectionTitles) {
            ++place;
            const qint32 sectionID = TestDatabase::Insert(
                "Section", {{"title", sectionTitle},
                            {"instructions", QStringLiteral("Korak %1.").arg(place)}});
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
        QFile::remove(modRegistry::StoreFile(true));
        modGeneral::lngLastID = -12345;
        m_errorsExpected = false;
    }

    void cleanup() {
        m_main.reset();
        UiServices::SetMousePointer(UiServices::vbDefault);
        if (!m_errorsExpected) {
            QVERIFY2(ErrorLog().isEmpty(), qPrintable(ErrorLog()));
        }
    }

    // ---- controls ---------------------------------------------------------------------------

    void controlsCarryTheirNamesAndCaptions() {
        Open(TestDatabase::Sqlite);
        MessageRecorder messages;
        ShowEditor(-1, [&](frmNew* editor) {
            QCOMPARE(editor->objectName(), QStringLiteral("frmNew"));
            QCOMPARE(editor->windowTitle(), QStringLiteral("Urejanje recepta"));
            QVERIFY(editor->isModal());
            const QList<QPair<const char*, const char*>> labels{
                {"lblGroup", "Skupina receptov:"},  {"lblType", "Podsk. receptov:"},
                {"lblSource", "Vir recepta:"},      {"lblRecipeTitle", "Naslov recepta:"},
                {"lblSections", "Razdelki:"},       {"lblSectionTitle", "Naslov razdelka:"},
                {"lblInstructions", "Potek dela:"}, {"lblAmount", "Količina:"},
                {"lblUnit", "Merska enota:"},       {"lblIngredientsFilter", "Filter:"}};
            for (const auto& [name, caption] : labels) {
                QCOMPARE(Control<QLabel>(editor, name)->text(), QString::fromUtf8(caption));
            }
            const QList<QPair<const char*, const char*>> buttons{
                {"cmdGroupAdd", "Dodaj..."},
                {"cmdTypeAdd", "Dodaj..."},
                {"cmdSourceAdd", "Dodaj..."},
                {"cmdSectionAdd", "Dodaj"},
                {"cmdSectionDelete", "Izbriši"},
                {"cmdSectionUp", "Gor"},
                {"cmdSectionDown", "Dol"},
                {"cmdSectionSelect", "Izberi..."},
                {"cmdSectionIngredientAdd", "Dodaj"},
                {"cmdSectionIngredientEdit", "Uredi"},
                {"cmdSectionIngredientDelete", "Izbriši"},
                {"cmdUnitAdd", "Dodaj..."},
                {"cmdIngredientAdd", "Dodaj..."},
                {"cmdIngredientOk", "Potrdi"},
                {"cmdIngredientCancel", "Prekliči"},
                {"cmdOK", "Potrdi"},
                {"cmdCancel", "Prekliči"}};
            for (const auto& [name, caption] : buttons) {
                QCOMPARE(Button(editor, name)->text(), QString::fromUtf8(caption));
            }
            QCOMPARE(Control<QGroupBox>(editor, "frmSection")->title(), QStringLiteral("Razdelek"));
            QCOMPARE(Control<QGroupBox>(editor, "frmIngredient")->title(),
                     QStringLiteral("Sestavine"));
            QCOMPARE(Box(editor, "txtSectionTitle")->parentWidget()->objectName(),
                     QStringLiteral("frmSection"));
            QCOMPARE(List(editor, "lstSectionIngredient")->parentWidget()->objectName(),
                     QStringLiteral("frmSection"));
            QCOMPARE(Box(editor, "txtAmount")->parentWidget()->objectName(),
                     QStringLiteral("frmIngredient"));
            QCOMPARE(List(editor, "lstIngredient")->parentWidget()->objectName(),
                     QStringLiteral("frmIngredient"));
            QVERIFY(Box(editor, "txtRecipeTitle"));
            QVERIFY(Memo(editor, "txtInstructions"));
            QVERIFY(Box(editor, "txtFilter"));
            QVERIFY(Combo(editor, "cmbUnit"));

            // The list views: report form, empty headers, the columns and their widths.
            QTreeWidget* lstSections = List(editor, "lstSections");
            QCOMPARE(lstSections->columnCount(), 1);
            QCOMPARE(ColumnFit::Given(lstSections, 0),
                     Controls::TextPixels(1200, lstSections->font()));
            QVERIFY(lstSections->isHeaderHidden());
            QTreeWidget* lines = List(editor, "lstSectionIngredient");
            QCOMPARE(lines->columnCount(), 5);
            QVERIFY(lines->isHeaderHidden());
            const QList<int> widths{500, 1000, 2000};
            for (int c = 0; c < 3; ++c) {
                QCOMPARE(ColumnFit::Given(lines, c),
                         c == 0 ? qMax(Controls::TextPixels(500, lines->font()),
                                       Controls::FitPixels(lines, QStringLiteral("99999")))
                                : Controls::TextPixels(widths[c], lines->font()));
                QVERIFY(!lines->isColumnHidden(c));
            }
            QVERIFY(lines->isColumnHidden(3));
            QVERIFY(lines->isColumnHidden(4));
            QTreeWidget* lstIngredient = List(editor, "lstIngredient");
            QCOMPARE(lstIngredient->columnCount(), 1);
            QCOMPARE(ColumnFit::Given(lstIngredient, 0),
                     Controls::TextPixels(2550, lstIngredient->font()));
            QVERIFY(lstIngredient->isHeaderHidden());
            // No button is the default: Enter in a text box saves nothing.
            for (QPushButton* button : editor->findChildren<QPushButton*>()) {
                QVERIFY2(!button->isDefault() && !button->autoDefault(),
                         qPrintable(button->objectName()));
            }
        });
        QVERIFY(messages.Messages().isEmpty());
    }

    // ---- a new recipe -----------------------------------------------------------------------

    void newRecipeOpensEmpty_data() { TestDatabase::AddKinds(); }
    void newRecipeOpensEmpty() {
        QFETCH(QString, kind);
        Open(kind);
        MessageRecorder messages;
        UiServices::SetMousePointer(UiServices::vbHourglass);  // as the caller does
        ShowEditor(-1, [&](frmNew* editor) {
            QCOMPARE(UiServices::MousePointer(), int(UiServices::vbDefault));
            QCOMPARE(ComboTexts(Combo(editor, "cmbGroup")), (QStringList{"Juhe", "Sladice"}));
            QCOMPARE(Combo(editor, "cmbGroup")->itemData(1).toInt(), 2);
            QCOMPARE(ComboTexts(Combo(editor, "cmbSource")),
                     (QStringList{"Babičina kuharica", "Knjiga"}));
            QCOMPARE(ComboTexts(Combo(editor, "cmbUnit")), (QStringList{"g", "žlica"}));
            QCOMPARE(Combo(editor, "cmbUnit")->itemData(1).toInt(), 2);
            for (const char* name : {"cmbGroup", "cmbType", "cmbSource", "cmbUnit"}) {
                QVERIFY2(Combo(editor, name)->currentIndex() == -1, name);
            }
            QCOMPARE(Combo(editor, "cmbType")->count(), 0);
            QVERIFY(!Combo(editor, "cmbType")->isEnabled());
            QVERIFY(!Button(editor, "cmdTypeAdd")->isEnabled());
            QVERIFY(Combo(editor, "cmbGroup")->isEnabled());
            // All ingredients, in name order, with their keys; none selected.
            QTreeWidget* lstIngredient = List(editor, "lstIngredient");
            QCOMPARE(EntryTexts(lstIngredient),
                     (QStringList{"Čokolada", "korenje", "krompir", "moka"}));
            QStringList keys;
            for (int i = 0; i < lstIngredient->topLevelItemCount(); ++i) {
                keys << modGeneral::ItemKey(lstIngredient->topLevelItem(i));
            }
            QCOMPARE(keys, (QStringList{"I4", "I2", "I3", "I1"}));
            QCOMPARE(SelectedRow(lstIngredient), -1);
            // The lists are empty, the boxes too.
            QCOMPARE(List(editor, "lstSections")->topLevelItemCount(), 0);
            QCOMPARE(List(editor, "lstSectionIngredient")->topLevelItemCount(), 0);
            QCOMPARE(Box(editor, "txtRecipeTitle")->text(), QString());
            QCOMPARE(Box(editor, "txtSectionTitle")->text(), QString());
            QCOMPARE(Instructions(editor), QString());
            // The ingredient frame and the list buttons are disabled.
            for (const char* name :
                 {"txtAmount", "cmbUnit", "cmdUnitAdd", "lstIngredient", "cmdIngredientAdd",
                  "txtFilter", "cmdIngredientOk", "cmdIngredientCancel", "cmdSectionDelete",
                  "cmdSectionUp", "cmdSectionDown", "cmdSectionIngredientEdit",
                  "cmdSectionIngredientDelete"}) {
                QVERIFY2(!Control<QWidget>(editor, name)->isEnabled(), name);
            }
            for (const char* name : {"cmdSectionAdd", "cmdSectionSelect", "cmdSectionIngredientAdd",
                                     "cmdOK", "cmdCancel", "cmdGroupAdd", "cmdSourceAdd",
                                     "txtSectionTitle", "txtInstructions"}) {
                QVERIFY2(Control<QWidget>(editor, name)->isEnabled(), name);
            }
            QVERIFY(!editor->MultiSectionMode());
            QCOMPARE(editor->WorkingSections().size(), 1);
            QVERIFY(!editor->CurrentSectionEntry());
            QCOMPARE(editor->CurrentGroupID(), -1);
        });
        QVERIFY(messages.Messages().isEmpty());
    }

    // ---- editing ----------------------------------------------------------------------------

    void oneSectionOpensInSingleSectionMode_data() { TestDatabase::AddKinds(); }
    void oneSectionOpensInSingleSectionMode() {
        QFETCH(QString, kind);
        Open(kind);
        MessageRecorder messages;
        ShowEditor(1, [&](frmNew* editor) {
            QCOMPARE(Combo(editor, "cmbGroup")->currentText(), QStringLiteral("Juhe"));
            QCOMPARE(ComboTexts(Combo(editor, "cmbType")),
                     (QStringList{"Mesne juhe", "Zelenjavne juhe"}));
            QCOMPARE(Combo(editor, "cmbType")->currentText(), QStringLiteral("Mesne juhe"));
            QVERIFY(Combo(editor, "cmbType")->isEnabled());
            QVERIFY(Button(editor, "cmdTypeAdd")->isEnabled());
            QCOMPARE(editor->CurrentGroupID(), 1);
            QCOMPARE(Combo(editor, "cmbSource")->currentText(),
                     QStringLiteral("Babičina kuharica"));
            QCOMPARE(Box(editor, "txtRecipeTitle")->text(), QStringLiteral("Goveja juha"));
            QCOMPARE(List(editor, "lstSections")->topLevelItemCount(), 0);
            QCOMPARE(Box(editor, "txtSectionTitle")->text(), QString());
            QCOMPARE(Instructions(editor), QStringLiteral("Skuhamo."));
            QCOMPARE(LineTexts(editor), (QStringList{"100|g|moka|1|1"}));
            QVERIFY(!editor->MultiSectionMode());
            QCOMPARE(editor->WorkingSections().size(), 1);
            QVERIFY(!editor->CurrentSectionEntry());
            QVERIFY(!Button(editor, "cmdSectionDelete")->isEnabled());
        });
        QVERIFY(messages.Messages().isEmpty());
    }

    void singleTitledSectionShowsItsTitle_data() { TestDatabase::AddKinds(); }
    void singleTitledSectionShowsItsTitle() {
        QFETCH(QString, kind);
        Open(kind);
        const qint32 recipeID = AddRecipe(QStringLiteral("Palačinke"), {QStringLiteral("Testo")});
        MessageRecorder messages;
        ShowEditor(recipeID, [&](frmNew* editor) {
            QCOMPARE(List(editor, "lstSections")->topLevelItemCount(), 0);
            QCOMPARE(Box(editor, "txtSectionTitle")->text(), QStringLiteral("Testo"));
            QCOMPARE(Instructions(editor), QStringLiteral("Korak 1."));
            QCOMPARE(LineTexts(editor), (QStringList{"10|g|moka|1|1"}));
            QVERIFY(!editor->MultiSectionMode());
            // Typing in the title box changes no list entry: there is none.
            QTest::keyClicks(Box(editor, "txtSectionTitle"), QStringLiteral("x"));
            QCOMPARE(List(editor, "lstSections")->topLevelItemCount(), 0);
        });
        QVERIFY(messages.Messages().isEmpty());
    }

    void threeSectionsInPlaceOrder_data() { TestDatabase::AddKinds(); }
    void threeSectionsInPlaceOrder() {
        QFETCH(QString, kind);
        Open(kind);
        // Written in another order than their places.
        const qint32 recipeID =
            TestDatabase::Insert("Recipe", {{"typeID", 3}, {"sourceID", 1}, {"title", "Torta"}});
        const QList<QPair<QString, int>> sections{{"Krema", 2}, {"Okras", 3}, {"Biskvit", 1}};
        for (const auto& [title, place] : sections) {
            const qint32 sectionID = TestDatabase::Insert(
                "Section", {{"title", title}, {"instructions", title + QStringLiteral(" delo")}});
            TestDatabase::Insert(
                "RecipeSection",
                {{"recipeID", recipeID}, {"sectionID", sectionID}, {"place", place}});
            TestDatabase::Insert("SectionIngredient", {{"sectionID", sectionID},
                                                       {"ingredientID", place},
                                                       {"unitID", 2},
                                                       {"amount", place}});
        }
        MessageRecorder messages;
        ShowEditor(recipeID, [&](frmNew* editor) {
            QTreeWidget* lstSections = List(editor, "lstSections");
            QCOMPARE(EntryTexts(lstSections), (QStringList{"Biskvit", "Krema", "Okras"}));
            QCOMPARE(SelectedRow(lstSections), 0);
            QCOMPARE(editor->CurrentSectionEntry(), lstSections->topLevelItem(0));
            QCOMPARE(Box(editor, "txtSectionTitle")->text(), QStringLiteral("Biskvit"));
            QCOMPARE(Instructions(editor), QStringLiteral("Biskvit delo"));
            QCOMPARE(LineTexts(editor), (QStringList{"1|žlica|moka|2|1"}));
            QVERIFY(editor->MultiSectionMode());
            QCOMPARE(Stored(editor), (QStringList{"Biskvit|Biskvit delo|1 žlica moka (2,1)",
                                                  "Krema|Krema delo|2 žlica korenje (2,2)",
                                                  "Okras|Okras delo|3 žlica krompir (2,3)"}));
            QCOMPARE(Combo(editor, "cmbGroup")->currentText(), QStringLiteral("Sladice"));
            QCOMPARE(Combo(editor, "cmbType")->currentText(), QStringLiteral("Pecivo"));
            for (const char* name : {"cmdSectionDelete", "cmdSectionUp", "cmdSectionDown"}) {
                QVERIFY2(Button(editor, name)->isEnabled(), name);
            }
        });
        QVERIFY(messages.Messages().isEmpty());
    }

    void blankInstructionsShowEmpty_data() { TestDatabase::AddKinds(); }
    void blankInstructionsShowEmpty() {
        QFETCH(QString, kind);
        Open(kind);
        MessageRecorder messages;
        ShowEditor(2, [&](frmNew* editor) {
            QCOMPARE(Memo(editor, "txtInstructions")->toPlainText(), QString());
            QCOMPARE(LineTexts(editor).size(), 2);
            QVERIFY(LineTexts(editor).contains(QStringLiteral("500|g|korenje|1|2")));
            QVERIFY(LineTexts(editor).contains(QStringLiteral("200|g|krompir|1|3")));
            // Recipe 2 has no source: no source is selected.
            QCOMPARE(Combo(editor, "cmbSource")->currentIndex(), -1);
            QCOMPARE(Combo(editor, "cmbType")->currentText(), QStringLiteral("Zelenjavne juhe"));
        });
        QVERIFY(messages.Messages().isEmpty());
    }

    void instructionsKeepTheirLineBreaks() {
        Open(TestDatabase::Sqlite);
        TestDatabase::Exec(QStringLiteral(
            "UPDATE [Section] SET instructions = '  Prvi korak.' || char(13) || char(10) || "
            "'Drugi korak.  ' WHERE sectionID = 1"));
        MessageRecorder messages;
        ShowEditor(1, [&](frmNew* editor) {
            QCOMPARE(Memo(editor, "txtInstructions")->toPlainText(),
                     QStringLiteral("Prvi korak.\nDrugi korak."));
            QCOMPARE(Instructions(editor), QStringLiteral("Prvi korak.\r\nDrugi korak."));
        });
    }

    void recipeWithoutSectionsOpensEmpty() {
        Open(TestDatabase::Sqlite);
        const qint32 recipeID = AddRecipe(QStringLiteral("Prazen"), {});
        MessageRecorder messages;
        ShowEditor(recipeID, [&](frmNew* editor) {
            QCOMPARE(Box(editor, "txtRecipeTitle")->text(), QStringLiteral("Prazen"));
            QCOMPARE(List(editor, "lstSections")->topLevelItemCount(), 0);
            QCOMPARE(List(editor, "lstSectionIngredient")->topLevelItemCount(), 0);
            QVERIFY(!editor->MultiSectionMode());
            QCOMPARE(editor->WorkingSections().size(), 1);
        });
        QVERIFY(messages.Messages().isEmpty());
    }

    void recipeOfAMissingTypeTakesTheErrorPath_data() { TestDatabase::AddKinds(); }
    void recipeOfAMissingTypeTakesTheErrorPath() {
        QFETCH(QString, kind);
        Open(kind);
        m_errorsExpected = true;
        const qint32 recipeID =
            TestDatabase::Insert("Recipe", {{"typeID", 99}, {"title", "Sirota"}});
        MessageRecorder messages;
        ShowEditor(recipeID, [&](frmNew* editor) {
            QCOMPARE(Box(editor, "txtRecipeTitle")->text(), QString());
            QVERIFY(editor->isVisible());
        });
        QCOMPARE(Said(messages), QStringList{"48 " + ErrorPath::UnexpectedErrorMessage});
        QVERIFY2(ErrorLog().contains(QStringLiteral(
                     "frmNew:Form_Load->frmNew:LoadRecipe->Morvena->No current record.")),
                 qPrintable(ErrorLog()));
        QCOMPARE(UiServices::MousePointer(), int(UiServices::vbDefault));
    }

    void storedAmountAbove32767OverflowsOnLoading() {
        Open(TestDatabase::Sqlite);
        m_errorsExpected = true;
        TestDatabase::Exec(QStringLiteral("UPDATE [SectionIngredient] SET amount = 40000"));
        MessageRecorder messages;
        ShowEditor(1, [&](frmNew*) {});
        QCOMPARE(Said(messages), QStringList{"48 " + ErrorPath::UnexpectedErrorMessage});
        QVERIFY2(ErrorLog().contains(
                     QStringLiteral("frmNew:Form_Load->frmNew:LoadSection->Morvena->Overflow")),
                 qPrintable(ErrorLog()));
    }

    // ---- lookup lists -----------------------------------------------------------------------

    void filterListsMatchingIngredients_data() { TestDatabase::AddKinds(); }
    void filterListsMatchingIngredients() {
        QFETCH(QString, kind);
        Open(kind);
        MessageRecorder messages;
        ShowEditor(-1, [&](frmNew* editor) {
            Click(editor, "cmdSectionIngredientAdd");
            QTreeWidget* lstIngredient = List(editor, "lstIngredient");
            QLineEdit* txtFilter = Box(editor, "txtFilter");
            ClickEntry(lstIngredient, RowOf(lstIngredient, QStringLiteral("korenje")));
            QCOMPARE(SelectedText(lstIngredient), QStringLiteral("korenje"));
            // Two letters: the names that contain them, in name order; korenje stays selected.
            QTest::keyClicks(txtFilter, QStringLiteral("ko"));
            QCOMPARE(EntryTexts(lstIngredient), (QStringList{"Čokolada", "korenje"}));
            QCOMPARE(SelectedText(lstIngredient), QStringLiteral("korenje"));
            // Letter case does not matter.
            txtFilter->clear();
            QTest::keyClicks(txtFilter, QStringLiteral("KO"));
            QCOMPARE(EntryTexts(lstIngredient), (QStringList{"Čokolada", "korenje"}));
            QCOMPARE(SelectedText(lstIngredient), QStringLiteral("korenje"));
            // A filter that drops the selected ingredient leaves nothing selected.
            txtFilter->clear();
            QTest::keyClicks(txtFilter, QStringLiteral("mo"));
            QCOMPARE(EntryTexts(lstIngredient), (QStringList{"moka"}));
            QCOMPARE(SelectedText(lstIngredient), QStringLiteral("<none>"));
            txtFilter->clear();
            QCOMPARE(EntryTexts(lstIngredient),
                     (QStringList{"Čokolada", "korenje", "krompir", "moka"}));
        });
        QVERIFY(messages.Messages().isEmpty());
    }

    void apostropheDisappearsFromTheFilter_data() { TestDatabase::AddKinds(); }
    void apostropheDisappearsFromTheFilter() {
        QFETCH(QString, kind);
        Open(kind);
        MessageRecorder messages;
        ShowEditor(-1, [&](frmNew* editor) {
            Click(editor, "cmdSectionIngredientAdd");
            QLineEdit* txtFilter = Box(editor, "txtFilter");
            QTest::keyClicks(txtFilter, QStringLiteral("k"));
            QTest::keyClicks(txtFilter, QStringLiteral("'"));
            QCOMPARE(txtFilter->text(), QStringLiteral("k"));
            QTest::keyClicks(txtFilter, QStringLiteral("r'"));
            QCOMPARE(txtFilter->text(), QStringLiteral("kr"));
            QCOMPARE(EntryTexts(List(editor, "lstIngredient")), (QStringList{"krompir"}));
        });
        QVERIFY(messages.Messages().isEmpty());
    }

    void choosingAGroupFillsItsSubgroups_data() { TestDatabase::AddKinds(); }
    void choosingAGroupFillsItsSubgroups() {
        QFETCH(QString, kind);
        Open(kind);
        MessageRecorder messages;
        ShowEditor(-1, [&](frmNew* editor) {
            QComboBox* cmbGroup = Combo(editor, "cmbGroup");
            QComboBox* cmbType = Combo(editor, "cmbType");
            ChooseCombo(cmbGroup, QStringLiteral("Juhe"));
            QVERIFY(cmbType->isEnabled());
            QVERIFY(Button(editor, "cmdTypeAdd")->isEnabled());
            QCOMPARE(ComboTexts(cmbType), (QStringList{"Mesne juhe", "Zelenjavne juhe"}));
            QCOMPARE(cmbType->currentIndex(), -1);
            QCOMPARE(cmbType->itemData(1).toInt(), 2);
            ChooseCombo(cmbType, QStringLiteral("Zelenjavne juhe"));
            ChooseCombo(cmbGroup, QStringLiteral("Sladice"));
            QCOMPARE(ComboTexts(cmbType), (QStringList{"Pecivo"}));
            QCOMPARE(cmbType->currentIndex(), -1);
            QCOMPARE(editor->CurrentGroupID(), 2);
        });
        QVERIFY(messages.Messages().isEmpty());
    }

    void sameGroupAgainKeepsTheSubgroup_data() { TestDatabase::AddKinds(); }
    void sameGroupAgainKeepsTheSubgroup() {
        QFETCH(QString, kind);
        Open(kind);
        MessageRecorder messages;
        ShowEditor(-1, [&](frmNew* editor) {
            QComboBox* cmbGroup = Combo(editor, "cmbGroup");
            QComboBox* cmbType = Combo(editor, "cmbType");
            ChooseCombo(cmbGroup, QStringLiteral("Juhe"));
            ChooseCombo(cmbType, QStringLiteral("Zelenjavne juhe"));
            // The user picks the same group from the list.
            QTest::keyClick(cmbGroup, Qt::Key_Home);
            QCOMPARE(cmbGroup->currentText(), QStringLiteral("Juhe"));
            QCOMPARE(cmbType->currentText(), QStringLiteral("Zelenjavne juhe"));
            // The group list is refilled after a cancelled quick add and the same group is
            // selected again: the subgroup stays.
            WhenModal("frmAddRecord", [](QWidget* dialog) { Click(dialog, "cmdCancel"); });
            Click(editor, "cmdGroupAdd");
            QCOMPARE(cmbGroup->currentText(), QStringLiteral("Juhe"));
            QCOMPARE(cmbType->currentText(), QStringLiteral("Zelenjavne juhe"));
            QVERIFY(cmbType->isEnabled());
            QCOMPARE(modGeneral::lngLastID, -1);
        });
    }

    // ---- quick add --------------------------------------------------------------------------

    void addingASourceAndCancellingKeepsTheSourceBefore_data() { TestDatabase::AddKinds(); }
    void addingASourceAndCancellingKeepsTheSourceBefore() {
        QFETCH(QString, kind);
        Open(kind);
        MessageRecorder messages;
        ShowEditor(-1, [&](frmNew* editor) {
            QVERIFY(QTest::qWaitForWindowActive(editor));
            QComboBox* cmbSource = Combo(editor, "cmbSource");
            ChooseCombo(cmbSource, QStringLiteral("Knjiga"));
            QString caption;
            WhenModal("frmAddRecord", [&](QWidget* dialog) {
                caption = dialog->windowTitle();
                QCOMPARE(UiServices::MousePointer(), int(UiServices::vbDefault));
                Box(dialog, "txtName")->setText(QStringLiteral("Ne shrani"));
                Click(dialog, "cmdCancel");
            });
            Click(editor, "cmdSourceAdd");
            QCOMPARE(caption, QStringLiteral("Vnos vira receptov"));
            QCOMPARE(cmbSource->currentText(), QStringLiteral("Knjiga"));
            QCOMPARE(ComboTexts(cmbSource), (QStringList{"Babičina kuharica", "Knjiga"}));
            QCOMPARE(editor->focusWidget(), Box(editor, "txtRecipeTitle"));
            QCOMPARE(UiServices::MousePointer(), int(UiServices::vbDefault));
        });
        QCOMPARE(Rows("SELECT sourceID, name FROM [Source] ORDER BY sourceID;"),
                 (QStringList{"1|Babičina kuharica", "2|Knjiga"}));
        QVERIFY(messages.Messages().isEmpty());
    }

    void cancelledQuickAddWithNothingSelectedSelectsNothing() {
        Open(TestDatabase::Sqlite);
        MessageRecorder messages;
        ShowEditor(-1, [&](frmNew* editor) {
            WhenModal("frmAddRecord", [](QWidget* dialog) { Click(dialog, "cmdCancel"); });
            Click(editor, "cmdSourceAdd");
            QCOMPARE(Combo(editor, "cmbSource")->currentIndex(), -1);
        });
    }

    void quickAddSelectsTheNewRecord_data() {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("caption");
        QTest::addColumn<QString>("target");
        QTest::addColumn<QString>("focus");
        QTest::addColumn<QStringList>("entries");
        for (const QString& kind : {TestDatabase::Sqlite, TestDatabase::Postgres}) {
            const QByteArray k = kind.toUtf8();
            QTest::newRow((k + " group").constData())
                << kind << "cmdGroupAdd"
                << "Vnos skupine receptov"
                << "cmbGroup"
                << "cmbType" << QStringList{"Brusnice", "Juhe", "Sladice"};
            QTest::newRow((k + " subgroup").constData())
                << kind << "cmdTypeAdd"
                << "Vnos podskupine receptov"
                << "cmbType"
                << "cmbSource" << QStringList{"Brusnice", "Pecivo"};
            QTest::newRow((k + " source").constData())
                << kind << "cmdSourceAdd"
                << "Vnos vira receptov"
                << "cmbSource"
                << "txtRecipeTitle" << QStringList{"Babičina kuharica", "Brusnice", "Knjiga"};
            QTest::newRow((k + " unit").constData())
                << kind << "cmdUnitAdd"
                << "Vnos merske enote"
                << "cmbUnit"
                << "lstIngredient" << QStringList{"Brusnice", "g", "žlica"};
            QTest::newRow((k + " ingredient").constData())
                << kind << "cmdIngredientAdd"
                << "Vnos sestavine"
                << "lstIngredient"
                << "lstIngredient"
                << QStringList{"Brusnice", "Čokolada", "korenje", "krompir", "moka"};
        }
    }
    void quickAddSelectsTheNewRecord() {
        QFETCH(QString, kind);
        QFETCH(QString, button);
        QFETCH(QString, caption);
        QFETCH(QString, target);
        QFETCH(QString, focus);
        QFETCH(QStringList, entries);
        Open(kind);
        MessageRecorder messages;
        ShowEditor(-1, [&](frmNew* editor) {
            ChooseCombo(Combo(editor, "cmbGroup"), QStringLiteral("Sladice"));
            Click(editor, "cmdSectionIngredientAdd");  // the ingredient frame is enabled
            QString shownCaption;
            WhenModal("frmAddRecord", [&](QWidget* dialog) {
                shownCaption = dialog->windowTitle();
                Box(dialog, "txtName")->setText(QStringLiteral("Brusnice"));
                Click(dialog, "cmdOK");
            });
            Click(editor, qPrintable(button));
            QCOMPARE(shownCaption, caption);
            const qint32 saved = modGeneral::lngLastID;
            QVERIFY(saved > 0);
            if (target == QLatin1String("lstIngredient")) {
                QTreeWidget* list = List(editor, "lstIngredient");
                QCOMPARE(EntryTexts(list), entries);
                QCOMPARE(SelectedText(list), QStringLiteral("Brusnice"));
                QCOMPARE(modGeneral::ItemKey(list->selectedItems().first()),
                         QStringLiteral("I%1").arg(saved));
            } else {
                QComboBox* combo = Combo(editor, qPrintable(target));
                QCOMPARE(combo->currentText(), QStringLiteral("Brusnice"));
                QCOMPARE(combo->currentData().toInt(), saved);
                QCOMPARE(ComboTexts(combo), entries);
            }
            QCOMPARE(editor->focusWidget()->objectName(), focus);
            if (button == QLatin1String("cmdGroupAdd")) {
                // The new group is the chosen one: its (no) subgroups are listed.
                QCOMPARE(Combo(editor, "cmbType")->count(), 0);
                QCOMPARE(editor->CurrentGroupID(), saved);
            }
        });
        if (button == QLatin1String("cmdTypeAdd")) {
            QCOMPARE(Rows("SELECT typeID, groupID, name FROM [Type] WHERE name = 'Brusnice';"),
                     (QStringList{"4|2|Brusnice"}));
        }
        QVERIFY(messages.Messages().isEmpty());
    }

    void addingAGroupWithoutSubgroupListFocusesTheGroups() {
        Open(TestDatabase::Sqlite);
        MessageRecorder messages;
        ShowEditor(-1, [&](frmNew* editor) {
            WhenModal("frmAddRecord", [](QWidget* dialog) { Click(dialog, "cmdCancel"); });
            Click(editor, "cmdGroupAdd");
            QVERIFY(!Combo(editor, "cmbType")->isEnabled());
            QCOMPARE(editor->focusWidget(), Combo(editor, "cmbGroup"));
        });
    }

    // ---- leaving without saving -------------------------------------------------------------

    void closeBoxAnsweredNoKeepsTheEditorOpen() {
        Open(TestDatabase::Sqlite);
        MessageRecorder messages;
        messages.Answer(UiServices::vbNo);
        bool stillOpen = false;
        const int result = ShowEditor(1, [&](frmNew* editor) {
            Box(editor, "txtRecipeTitle")->setText(QStringLiteral("Spremenjeno"));
            QVERIFY(!editor->close());
            stillOpen = editor->isVisible();
            QCOMPARE(Box(editor, "txtRecipeTitle")->text(), QStringLiteral("Spremenjeno"));
            QCOMPARE(LineTexts(editor), (QStringList{"100|g|moka|1|1"}));
        });
        QVERIFY(stillOpen);
        QCOMPARE(result, ClosedByTest);
        QCOMPARE(Said(messages), QStringList{"36 Ali res želite preklicati vnešene podatke?"});
        QCOMPARE(modGeneral::lngLastID, -12345);
    }

    void closeBoxAnsweredYesLeavesLastID() {
        Open(TestDatabase::Sqlite);
        MessageRecorder messages;
        messages.Answer(UiServices::vbYes);
        const int result = ShowEditor(1, [&](frmNew* editor) { QVERIFY(editor->close()); });
        QCOMPARE(result, int(QDialog::Rejected));
        QCOMPARE(Said(messages), QStringList{"36 Ali res želite preklicati vnešene podatke?"});
        QCOMPARE(modGeneral::lngLastID, -12345);
        QCOMPARE(Rows("SELECT title FROM [Recipe] WHERE recipeID = 1;"),
                 QStringList{"Goveja juha"});
    }

    void escapeAsksLikeTheCloseBox() {
        Open(TestDatabase::Sqlite);
        MessageRecorder messages;
        messages.Answer(UiServices::vbNo);
        messages.Answer(UiServices::vbYes);
        const int result = ShowEditor(-1, [&](frmNew* editor) {
            QTest::keyClick(editor, Qt::Key_Escape);
            QVERIFY(editor->isVisible());
            QTest::keyClick(editor, Qt::Key_Escape);
            QVERIFY(!editor->isVisible());
        });
        QCOMPARE(result, int(QDialog::Rejected));
        QCOMPARE(Said(messages), (QStringList{"36 Ali res želite preklicati vnešene podatke?",
                                              "36 Ali res želite preklicati vnešene podatke?"}));
        QCOMPARE(modGeneral::lngLastID, -12345);
    }

    void cancelButtonAsksAndSetsLastID() {
        Open(TestDatabase::Sqlite);
        MessageRecorder messages;
        messages.Answer(UiServices::vbNo);
        messages.Answer(UiServices::vbYes);
        const int result = ShowEditor(1, [&](frmNew* editor) {
            Click(editor, "cmdCancel");
            QVERIFY(editor->isVisible());
            QCOMPARE(modGeneral::lngLastID, -12345);
            Box(editor, "txtRecipeTitle")->setText(QStringLiteral("Ne shrani"));
            Click(editor, "cmdCancel");
            QVERIFY(!editor->isVisible());
        });
        QCOMPARE(result, int(QDialog::Rejected));
        QCOMPARE(Said(messages), (QStringList{"36 Ali res želite preklicati vnešene podatke?",
                                              "36 Ali res želite preklicati vnešene podatke?"}));
        QCOMPARE(modGeneral::lngLastID, -1);
        QCOMPARE(Rows("SELECT title FROM [Recipe] WHERE recipeID = 1;"),
                 QStringList{"Goveja juha"});
    }

    // ---- text boxes select their text on entering --------------------------------------------

    void textBoxSelectsAllOnFocus_data() {
        QTest::addColumn<QString>("box");
        for (const char* name : {"txtRecipeTitle", "txtSectionTitle", "txtAmount", "txtFilter"}) {
            QTest::newRow(name) << QString::fromLatin1(name);
        }
    }
    void textBoxSelectsAllOnFocus() {
        QFETCH(QString, box);
        Open(TestDatabase::Sqlite);
        MessageRecorder messages;
        ShowEditor(-1, [&](frmNew* editor) {
            QVERIFY(QTest::qWaitForWindowActive(editor));
            Click(editor, "cmdSectionIngredientAdd");
            QLineEdit* edit = Box(editor, qPrintable(box));
            const QString text =
                box == QLatin1String("txtAmount") ? QStringLiteral("1234") : QStringLiteral("kr");
            edit->setText(text);
            QPushButton* other = Button(editor, "cmdCancel");
            other->setFocus(Qt::OtherFocusReason);
            QTRY_VERIFY(other->hasFocus());
            edit->deselect();
            QTest::mouseClick(edit, Qt::LeftButton, {},
                              QPoint(edit->width() / 2, edit->height() / 2));
            QTRY_VERIFY(edit->hasFocus());
            QCOMPARE(edit->selectionStart(), 0);
            QCOMPARE(edit->selectedText(), text);
            other->setFocus(Qt::OtherFocusReason);
            QTRY_VERIFY(other->hasFocus());
            edit->deselect();
            edit->setFocus(Qt::TabFocusReason);
            QCOMPARE(edit->selectedText(), text);
        });
        QVERIFY(messages.Messages().isEmpty());
    }
};

QTEST_MAIN(TestEditorLoad)
#include "tst_editor_load.moc"
