// The recipe editor saving a recipe: the rows written for one and for several sections, new
// section rows on every save, the order of reordered sections, reused sections as independent
// copies, and the round trip from the editor to the recipe page. Failures while saving are in
// tst_editor_savefailure.
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

namespace {

QByteArray FileBytes(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

}  // namespace

class TestEditorSave : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<frmMain> m_main;
    bool m_errorsExpected = false;

    // A fresh database of the kind with the small collection, and the main window (whose
    // routine deletes the old sections of an edited recipe).
    void Open(const QString& kind) {
        m_main.reset();
        TestDatabase::OpenFresh(kind);
        TestDatabase::LoadSmallCollection();
        modGeneral::TempFilename = TestDatabase::WorkFolder() + QStringLiteral("/page.html");
        m_main = std::make_unique<frmMain>();
    }

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

    // Fills the header of a new recipe.
    static void Header(frmNew* editor, const QString& group, const QString& type,
                       const QString& source, const QString& title) {
        ChooseCombo(Combo(editor, "cmbGroup"), group);
        ChooseCombo(Combo(editor, "cmbType"), type);
        ChooseCombo(Combo(editor, "cmbSource"), source);
        Box(editor, "txtRecipeTitle")->setText(title);
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

    void newRecipeWithOneUntitledSection_data() { TestDatabase::AddKinds(); }
    void newRecipeWithOneUntitledSection() {
        QFETCH(QString, kind);
        Open(kind);
        MessageRecorder messages;
        const int result = ShowEditor(-1, [&](frmNew* editor) {
            Header(editor, QStringLiteral("Juhe"), QStringLiteral("Zelenjavne juhe"),
                   QStringLiteral("Knjiga"), QStringLiteral("  Fižolova juha  "));
            AddLine(editor, QStringLiteral("250"), QStringLiteral("g"), QStringLiteral("krompir"));
            AddLine(editor, QStringLiteral("2"), QStringLiteral("žlica"), QStringLiteral("moka"));
            QPlainTextEdit* txtInstructions = Memo(editor, "txtInstructions");
            txtInstructions->insertPlainText(QStringLiteral("  Namočimo fižol."));
            QTest::keyClick(txtInstructions, Qt::Key_Return);
            QTest::keyClicks(txtInstructions, QStringLiteral("Kuhamo.  "));
            Click(editor, "cmdOK");
            QVERIFY(!editor->isVisible());
        });
        QCOMPARE(result, int(QDialog::Accepted));
        QCOMPARE(Said(messages), QStringList{AskSave});
        QCOMPARE(modGeneral::lngLastID, 4);
        QCOMPARE(Rows("SELECT recipeID, typeID, sourceID, title FROM [Recipe] WHERE recipeID > 3;"),
                 QStringList{"4|2|2|Fižolova juha"});
        QCOMPARE(Rows("SELECT sectionID, title, instructions FROM [Section] WHERE sectionID > 4;"),
                 QStringList{"5|NULL|Namočimo fižol.\r\nKuhamo."});
        QCOMPARE(Rows("SELECT recipeSectionID, recipeID, sectionID, place FROM [RecipeSection] "
                      "WHERE recipeSectionID > 4;"),
                 QStringList{"5|4|5|1"});
        QCOMPARE(Rows("SELECT sectionIngredientID, sectionID, ingredientID, unitID, amount FROM "
                      "[SectionIngredient] WHERE sectionIngredientID > 5 ORDER BY "
                      "sectionIngredientID;"),
                 (QStringList{"6|5|3|1|250", "7|5|1|2|2"}));
        // The page shows the line break.
        QVERIFY(modDisplay::RecipePage(4).contains(
            QStringLiteral("<h3>Potek dela:</h3>Namočimo fižol.<br>Kuhamo.")));
        // Nothing else changed.
        QCOMPARE(Rows("SELECT COUNT(*) FROM [SectionIngredient];"), QStringList{"7"});
        QCOMPARE(UiServices::MousePointer(), int(UiServices::vbDefault));
    }

    void answeringNoWritesNothing() {
        Open(TestDatabase::Sqlite);
        MessageRecorder messages;
        messages.Answer(UiServices::vbNo);
        const int result = ShowEditor(1, [&](frmNew* editor) {
            Box(editor, "txtRecipeTitle")->setText(QStringLiteral("Druga juha"));
            Click(editor, "cmdOK");
            QVERIFY(editor->isVisible());
            QCOMPARE(Box(editor, "txtRecipeTitle")->text(), QStringLiteral("Druga juha"));
            QCOMPARE(editor->cursor().shape(), Qt::ArrowCursor);
        });
        QCOMPARE(result, ClosedByTest);
        QCOMPARE(Said(messages), QStringList{AskSave});
        QCOMPARE(modGeneral::lngLastID, -12345);
        QCOMPARE(Rows("SELECT title FROM [Recipe] WHERE recipeID = 1;"),
                 QStringList{"Goveja juha"});
        QCOMPARE(Rows("SELECT sectionID FROM [RecipeSection] WHERE recipeID = 1;"),
                 QStringList{"1"});
    }

    void editedRecipeGetsNewSectionRows_data() { TestDatabase::AddKinds(); }
    void editedRecipeGetsNewSectionRows() {
        QFETCH(QString, kind);
        Open(kind);
        MessageRecorder messages;
        const int result = ShowEditor(3, [&](frmNew* editor) { Click(editor, "cmdOK"); });
        QCOMPARE(result, int(QDialog::Accepted));
        QCOMPARE(Said(messages), QStringList{AskSave});
        QCOMPARE(modGeneral::lngLastID, 3);
        QCOMPARE(Rows("SELECT recipeID, typeID, sourceID, title FROM [Recipe] ORDER BY recipeID;"),
                 (QStringList{"1|1|1|Goveja juha", "2|2|NULL|Korenčkova juha",
                              "3|3|2|čokoladna torta"}));
        QCOMPARE(Rows("SELECT sectionID, title, instructions FROM [Section] ORDER BY sectionID;"),
                 (QStringList{"1|NULL|Skuhamo.", "4|NULL| ", "5|Testo|Zamesimo.",
                              "6|Krema|Stopimo ČOKOLADO."}));
        QCOMPARE(Rows("SELECT recipeID, sectionID, place FROM [RecipeSection] ORDER BY "
                      "recipeSectionID;"),
                 (QStringList{"1|1|1", "2|4|1", "3|5|1", "3|6|2"}));
        QCOMPARE(Rows("SELECT sectionID, ingredientID, unitID, amount FROM [SectionIngredient] "
                      "ORDER BY sectionIngredientID;"),
                 (QStringList{"1|1|1|100", "4|2|1|500", "4|3|1|200", "5|1|1|300", "6|4|2|2"}));

        // A single section is replaced too, again untitled.
        messages.Clear();
        ShowEditor(1, [&](frmNew* editor) { Click(editor, "cmdOK"); });
        QCOMPARE(modGeneral::lngLastID, 1);
        QCOMPARE(Rows("SELECT [Section].sectionID, title, instructions, place FROM [Section] "
                      "INNER JOIN [RecipeSection] ON [Section].sectionID = "
                      "[RecipeSection].sectionID WHERE recipeID = 1;"),
                 QStringList{"7|NULL|Skuhamo.|1"});
        QCOMPARE(Rows("SELECT sectionID, ingredientID, unitID, amount FROM [SectionIngredient] "
                      "WHERE sectionID IN (1, 7);"),
                 QStringList{"7|1|1|100"});
    }

    void emptyInstructionsAreStoredAsOneBlank_data() { TestDatabase::AddKinds(); }
    void emptyInstructionsAreStoredAsOneBlank() {
        QFETCH(QString, kind);
        Open(kind);
        MessageRecorder messages;
        // One section whose instructions were " ": shown empty, stored as " " again.
        ShowEditor(2, [&](frmNew* editor) {
            ChooseCombo(Combo(editor, "cmbSource"), QStringLiteral("Knjiga"));
            Click(editor, "cmdOK");
        });
        QCOMPARE(SectionRows(2), QStringList{"NULL| |1"});
        // Several sections: blanks only count as empty too.
        ShowEditor(3, [&](frmNew* editor) {
            ClickEntry(List(editor, "lstSections"), 1);
            SetInstructions(editor, QStringLiteral("   "));
            ClickEntry(List(editor, "lstSections"), 0);
            SetInstructions(editor, QString());
            Click(editor, "cmdOK");
        });
        QCOMPARE(SectionRows(3), (QStringList{"Testo| |1", "Krema| |2"}));
        QCOMPARE(Said(messages), (QStringList{AskSave, AskSave}));
    }

    void sectionTitlesAreStoredTrimmed() {
        Open(TestDatabase::Sqlite);
        MessageRecorder messages;
        ShowEditor(3, [&](frmNew* editor) {
            Box(editor, "txtSectionTitle")->setText(QStringLiteral("  Testo  "));
            SetInstructions(editor, QStringLiteral("  Zamesimo.\r\n  "));
            Click(editor, "cmdOK");
        });
        QCOMPARE(SectionRows(3),
                 (QStringList{"Testo|Zamesimo.\r\n|1", "Krema|Stopimo ČOKOLADO.|2"}));
    }

    void reorderedSectionsAreStoredInTheNewOrder_data() { TestDatabase::AddKinds(); }
    void reorderedSectionsAreStoredInTheNewOrder() {
        QFETCH(QString, kind);
        Open(kind);
        const qint32 recipeID = AddRecipe({"A", "B", "C"});
        MessageRecorder messages;
        ShowEditor(recipeID, [&](frmNew* editor) {
            QTreeWidget* lstSections = List(editor, "lstSections");
            ClickEntry(lstSections, 2);
            SetInstructions(editor, QStringLiteral("C novo"));
            Click(editor, "cmdSectionUp");
            Click(editor, "cmdSectionUp");
            QCOMPARE(EntryTexts(lstSections), (QStringList{"C", "A", "B"}));
            // The moved section is still only on screen; saving stores it in its place.
            Click(editor, "cmdOK");
        });
        QCOMPARE(Said(messages), QStringList{AskSave});
        QCOMPARE(SectionRows(recipeID), (QStringList{"C|C novo|1", "A|A delo|2", "B|B delo|3"}));
        QCOMPARE(LineRows(recipeID), (QStringList{"1|30|1|1", "2|10|1|1", "3|20|1|1"}));
    }

    void reusedSectionIsAnIndependentCopy_data() { TestDatabase::AddKinds(); }
    void reusedSectionIsAnIndependentCopy() {
        QFETCH(QString, kind);
        Open(kind);
        MessageRecorder messages;
        ShowEditor(1, [&](frmNew* editor) {
            Box(editor, "txtSectionTitle")->setText(QStringLiteral("Juha"));
            PickSection(QStringLiteral("S3"));
            Click(editor, "cmdSectionSelect");
            QCOMPARE(EntryTexts(List(editor, "lstSections")), (QStringList{"Juha", "Krema"}));
            Click(editor, "cmdOK");
        });
        QCOMPARE(modGeneral::lngLastID, 1);
        QCOMPARE(Rows("SELECT [Section].sectionID, title, place FROM [Section] INNER JOIN "
                      "[RecipeSection] ON [Section].sectionID = [RecipeSection].sectionID WHERE "
                      "recipeID = 1 ORDER BY place;"),
                 (QStringList{"5|Juha|1", "6|Krema|2"}));
        QCOMPARE(LineRows(1), (QStringList{"1|100|1|1", "2|2|2|4"}));
        // Recipe 3 still has its own section 3; saving recipe 3 deletes only that row.
        QCOMPARE(Rows("SELECT sectionID, place FROM [RecipeSection] WHERE recipeID = 3 ORDER BY "
                      "place;"),
                 (QStringList{"2|1", "3|2"}));
        ShowEditor(3, [&](frmNew* editor) { Click(editor, "cmdOK"); });
        QCOMPARE(Rows("SELECT sectionID FROM [Section] WHERE sectionID IN (2, 3);"), QStringList());
        QCOMPARE(Rows("SELECT [Section].sectionID, title, place FROM [Section] INNER JOIN "
                      "[RecipeSection] ON [Section].sectionID = [RecipeSection].sectionID WHERE "
                      "recipeID = 1 ORDER BY place;"),
                 (QStringList{"5|Juha|1", "6|Krema|2"}));
        QCOMPARE(LineRows(1), (QStringList{"1|100|1|1", "2|2|2|4"}));
        QCOMPARE(SectionRows(3), (QStringList{"Testo|Zamesimo.|1", "Krema|Stopimo ČOKOLADO.|2"}));
    }

    void singleSectionAmountsGoInAsTyped_data() { TestDatabase::AddKinds(); }
    void singleSectionAmountsGoInAsTyped() {
        QFETCH(QString, kind);
        Open(kind);
        MessageRecorder messages;
        ShowEditor(-1, [&](frmNew* editor) {
            Header(editor, QStringLiteral("Sladice"), QStringLiteral("Pecivo"),
                   QStringLiteral("Knjiga"), QStringLiteral("Kruh"));
            AddLine(editor, QStringLiteral("007"), QStringLiteral("g"), QStringLiteral("moka"));
            // A single section never passes through the working state: no overflow.
            AddLine(editor, QStringLiteral("40000"), QStringLiteral("g"), QStringLiteral("moka"));
            Click(editor, "cmdOK");
        });
        QCOMPARE(Said(messages), QStringList{AskSave});
        QCOMPARE(LineRows(4), (QStringList{"1|7|1|1", "1|40000|1|1"}));
    }

    // Deleting the old sections is the recipe rows' own routine: the editor saves the same rows
    // whether the main window is open or not.
    void savingAnEditedRecipeWithoutTheMainWindowReplacesItsSections() {
        Open(TestDatabase::Sqlite);
        m_main.reset();
        MessageRecorder messages;
        const QStringList sections = SectionRows(3);
        const QStringList lines = LineRows(3);
        const QStringList oldKeys =
            Rows("SELECT sectionID FROM [RecipeSection] WHERE recipeID = 3 ORDER BY place;");
        ShowEditor(3, [&](frmNew* editor) { Click(editor, "cmdOK"); });
        QCOMPARE(Said(messages), QStringList{AskSave});
        QCOMPARE(modGeneral::lngLastID, 3);
        QCOMPARE(SectionRows(3), sections);
        QCOMPARE(LineRows(3), lines);
        for (const QString& key : oldKeys) {
            QCOMPARE(Rows("SELECT COUNT(*) FROM [Section] WHERE sectionID = " + key + ";"),
                     QStringList{"0"});
        }
    }

    // A recipe made in the editor, reopened, reordered with "Gor" and "Dol" and saved, gives the
    // same page, byte for byte, as the same recipe written directly in the new order.
    void roundTripGivesTheSamePage_data() { TestDatabase::AddKinds(); }
    void roundTripGivesTheSamePage() {
        QFETCH(QString, kind);
        Open(kind);
        MessageRecorder messages;
        ShowEditor(-1, [&](frmNew* editor) {
            Header(editor, QStringLiteral("Sladice"), QStringLiteral("Pecivo"),
                   QStringLiteral("Knjiga"), QStringLiteral("Sadna torta"));
            Box(editor, "txtSectionTitle")->setText(QStringLiteral("Biskvit"));
            AddLine(editor, QStringLiteral("200"), QStringLiteral("g"), QStringLiteral("moka"));
            AddLine(editor, QStringLiteral("4"), QStringLiteral("žlica"),
                    QStringLiteral("Čokolada"));
            SetInstructions(editor, QStringLiteral("Stepemo jajca.\r\nPrimešamo moko."));
            Click(editor, "cmdSectionAdd");
            Box(editor, "txtSectionTitle")->setText(QStringLiteral("Krema"));
            AddLine(editor, QStringLiteral("3"), QStringLiteral("žlica"),
                    QStringLiteral("korenje"));
            SetInstructions(editor, QStringLiteral("Skuhamo kremo."));
            Click(editor, "cmdSectionAdd");
            Box(editor, "txtSectionTitle")->setText(QStringLiteral("Preliv"));
            AddLine(editor, QStringLiteral("100"), QStringLiteral("g"), QStringLiteral("krompir"));
            Click(editor, "cmdOK");
            QVERIFY(!editor->isVisible());
        });
        QCOMPARE(modGeneral::lngLastID, 4);
        QCOMPARE(SectionRows(4), (QStringList{"Biskvit|Stepemo jajca.\r\nPrimešamo moko.|1",
                                              "Krema|Skuhamo kremo.|2", "Preliv| |3"}));

        ShowEditor(4, [&](frmNew* editor) {
            QTreeWidget* lstSections = List(editor, "lstSections");
            QCOMPARE(EntryTexts(lstSections), (QStringList{"Biskvit", "Krema", "Preliv"}));
            QCOMPARE(Instructions(editor), QStringLiteral("Stepemo jajca.\r\nPrimešamo moko."));
            ClickEntry(lstSections, 2);
            Click(editor, "cmdSectionUp");  // Biskvit, Preliv, Krema
            ClickEntry(lstSections, 0);
            Click(editor, "cmdSectionDown");  // Preliv, Biskvit, Krema
            QCOMPARE(EntryTexts(lstSections), (QStringList{"Preliv", "Biskvit", "Krema"}));
            Click(editor, "cmdOK");
            QVERIFY(!editor->isVisible());
        });
        QCOMPARE(modGeneral::lngLastID, 4);
        QCOMPARE(Said(messages), (QStringList{AskSave, AskSave}));
        QCOMPARE(SectionRows(4),
                 (QStringList{"Preliv| |1", "Biskvit|Stepemo jajca.\r\nPrimešamo moko.|2",
                              "Krema|Skuhamo kremo.|3"}));
        const QString edited = modDisplay::RecipePage(4);
        modDisplay::DisplayRecipe(4);
        const QByteArray editedBytes = FileBytes(modGeneral::TempFilename);
        QVERIFY(editedBytes.contains("Stepemo jajca.<br>Prime"));

        // The same recipe written directly, in the new order.
        m_main.reset();
        TestDatabase::OpenFresh(kind);
        TestDatabase::LoadSmallCollection();
        const qint32 recipeID = TestDatabase::Insert(
            "Recipe", {{"typeID", 3}, {"sourceID", 2}, {"title", "Sadna torta"}});
        QCOMPARE(recipeID, 4);
        struct Line {
            int amount, unit, ingredient;
        };
        const QList<std::tuple<QString, QString, QList<Line>>> sections{
            {"Preliv", " ", {{100, 1, 3}}},
            {"Biskvit", "Stepemo jajca.\r\nPrimešamo moko.", {{200, 1, 1}, {4, 2, 4}}},
            {"Krema", "Skuhamo kremo.", {{3, 2, 2}}}};
        int place = 0;
        for (const auto& [title, instructions, lines] : sections) {
            const qint32 sectionID =
                TestDatabase::Insert("Section", {{"title", title}, {"instructions", instructions}});
            TestDatabase::Insert(
                "RecipeSection",
                {{"recipeID", recipeID}, {"sectionID", sectionID}, {"place", ++place}});
            for (const Line& line : lines) {
                TestDatabase::Insert("SectionIngredient", {{"sectionID", sectionID},
                                                           {"ingredientID", line.ingredient},
                                                           {"unitID", line.unit},
                                                           {"amount", line.amount}});
            }
        }
        QCOMPARE(modDisplay::RecipePage(4), edited);
        modDisplay::DisplayRecipe(4);
        QCOMPARE(FileBytes(modGeneral::TempFilename), editedBytes);
    }
};

QTEST_MAIN(TestEditorSave)
#include "tst_editor_save.moc"
