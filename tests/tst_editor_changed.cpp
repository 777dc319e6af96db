// The recipe editor and a recipe that someone else changed or deleted after the editor read it:
// "Potrdi" says so and asks; No keeps the editor open with the user's edits and writes nothing;
// Yes saves the editor's version (a deleted recipe as a new one). A recipe saved again as it was
// counts as unchanged; a change made while the question is on screen is asked about again.
#include <QTest>
#include <functional>

#include "collection/CollectionCheck.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "core/ui/UiServices.h"
#include "editor/frmNew.h"
#include "tests/support/EditorDriver.h"
#include "tests/support/MessageRecorder.h"
#include "tests/support/TestDatabase.h"

using TestDatabase::Rows;
using namespace EditorDriver;

namespace {

const QString AskChanged = QStringLiteral(
    "36 Recept je medtem spremenil nekdo drug. Ali ga želite kljub temu shraniti in prepisati te "
    "spremembe?");
const QString AskDeleted = QStringLiteral(
    "36 Recept je medtem nekdo izbrisal. Ali ga želite kljub temu shraniti kot nov recept?");

// A recipe as "title|sourceID" and its sections as "place|title|instructions".
QStringList RecipeRows(qint32 recipeID) {
    return Rows(QStringLiteral("SELECT title, sourceID FROM [Recipe] WHERE recipeID = %1;")
                    .arg(recipeID)) +
           Rows(QStringLiteral("SELECT [RecipeSection].place, [Section].title, "
                               "[Section].instructions FROM [RecipeSection] INNER JOIN [Section] "
                               "ON [RecipeSection].sectionID = [Section].sectionID WHERE "
                               "[RecipeSection].recipeID = %1 ORDER BY [RecipeSection].place;")
                    .arg(recipeID));
}

// The torte as the small collection has it.
const QStringList Torte{"čokoladna torta|2", "1|Testo|Zamesimo.", "2|Krema|Stopimo ČOKOLADO."};

void VerifyCollectionClean() {
    const CollectionCheck::Report report = CollectionCheck::Check(*modDatabase::Connection);
    for (const CollectionCheck::Finding& finding : report.findings) {
        QVERIFY2(
            finding.keys.isEmpty() && finding.error.isEmpty(),
            qPrintable(finding.description +
                       QStringLiteral(": %1 rows of ").arg(finding.keys.size()) + finding.table));
    }
}

}  // namespace

class TestEditorChanged : public QObject {
    Q_OBJECT

private:
    static void Open(const QString& kind) {
        TestDatabase::OpenFresh(kind);
        TestDatabase::LoadSmallCollection();
    }

private Q_SLOTS:
    void initTestCase() { TestDatabase::IsolateEnvironment(); }

    void init() {
        QFile::remove(QStringLiteral("errors.log"));
        modGeneral::lngLastID = -12345;
    }

    void cleanup() {
        UiServices::SetMsgBoxHandler({});
        QVERIFY2(ErrorLog().isEmpty(), qPrintable(ErrorLog()));
        modDatabase::Connection.reset();
    }

    // Whatever part of the recipe another user changed, "Potrdi" asks first.
    void changeMeanwhileIsAskedAbout_data() {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("change");
        QTest::addColumn<QStringList>("changed");  // the torte's rows after the change
        for (const QString& kind : {TestDatabase::Sqlite, TestDatabase::Postgres}) {
            const char* k = kind == TestDatabase::Sqlite ? "sqlite" : "postgresql";
            QTest::addRow("%s title", k)
                << kind << "UPDATE [Recipe] SET title = 'Sacher' WHERE recipeID = 3"
                << QStringList{"Sacher|2", "1|Testo|Zamesimo.", "2|Krema|Stopimo ČOKOLADO."};
            QTest::addRow("%s source", k)
                << kind << "UPDATE [Recipe] SET sourceID = NULL WHERE recipeID = 3"
                << QStringList{"čokoladna torta|NULL", "1|Testo|Zamesimo.",
                               "2|Krema|Stopimo ČOKOLADO."};
            QTest::addRow("%s method", k)
                << kind << "UPDATE [Section] SET instructions = 'Vmešamo.' WHERE sectionID = 3"
                << QStringList{"čokoladna torta|2", "1|Testo|Zamesimo.", "2|Krema|Vmešamo."};
            QTest::addRow("%s section title", k)
                << kind << "UPDATE [Section] SET title = 'Nadev' WHERE sectionID = 3"
                << QStringList{"čokoladna torta|2", "1|Testo|Zamesimo.",
                               "2|Nadev|Stopimo ČOKOLADO."};
            QTest::addRow("%s order of sections", k)
                << kind << "UPDATE [RecipeSection] SET place = 3 - place WHERE recipeID = 3"
                << QStringList{"čokoladna torta|2", "1|Krema|Stopimo ČOKOLADO.",
                               "2|Testo|Zamesimo."};
            QTest::addRow("%s amount", k)
                << kind << "UPDATE [SectionIngredient] SET amount = 3 WHERE sectionID = 3" << Torte;
            QTest::addRow("%s unit replaced", k)
                << kind << "UPDATE [SectionIngredient] SET unitID = 1 WHERE unitID = 2" << Torte;
        }
    }
    void changeMeanwhileIsAskedAbout() {
        QFETCH(QString, kind);
        QFETCH(QString, change);
        QFETCH(QStringList, changed);
        Open(kind);
        QCOMPARE(RecipeRows(3), Torte);
        MessageRecorder messages;
        messages.Answer(UiServices::vbYes);
        messages.Answer(UiServices::vbNo);
        ShowEditor(3, [&](frmNew* editor) {
            TestDatabase::Exec(change);
            const QStringList linesChanged = LineRows(3);
            Box(editor, "txtRecipeTitle")->setText(QStringLiteral("Moja torta"));
            Click(editor, "cmdOK");
            QVERIFY(editor->isVisible());
            QCOMPARE(Said(messages), (QStringList{AskSave, AskChanged}));
            QCOMPARE(RecipeRows(3), changed);
            QCOMPARE(LineRows(3), linesChanged);
            QCOMPARE(Box(editor, "txtRecipeTitle")->text(), QStringLiteral("Moja torta"));
            QCOMPARE(modGeneral::lngLastID, -12345);
            QCOMPARE(editor->cursor().shape(), Qt::ArrowCursor);
        });
    }

    // No, then the user's own edits saved over the other user's on Yes.
    void noKeepsTheEditsAndYesSavesThem_data() { TestDatabase::AddKinds(); }
    void noKeepsTheEditsAndYesSavesThem() {
        QFETCH(QString, kind);
        Open(kind);
        MessageRecorder messages;
        messages.Answer(UiServices::vbYes);
        messages.Answer(UiServices::vbNo);
        const int result = ShowEditor(3, [&](frmNew* editor) {
            TestDatabase::Exec(QStringLiteral(
                "UPDATE [Section] SET instructions = 'Stopimo in ohladimo.' WHERE sectionID = 3"));
            TestDatabase::Exec(QStringLiteral(
                "UPDATE [SectionIngredient] SET amount = 5 WHERE sectionIngredientID = 5"));
            Box(editor, "txtRecipeTitle")->setText(QStringLiteral("Moja torta"));
            ClickEntry(List(editor, "lstSections"), 0);
            SetInstructions(editor, QStringLiteral("Zamesimo gladko testo."));
            Click(editor, "cmdOK");
            QVERIFY(editor->isVisible());
            QCOMPARE(Said(messages), (QStringList{AskSave, AskChanged}));
            // Nothing written; the edits are where the user left them.
            QCOMPARE(RecipeRows(3), (QStringList{"čokoladna torta|2", "1|Testo|Zamesimo.",
                                                 "2|Krema|Stopimo in ohladimo."}));
            QCOMPARE(LineRows(3), (QStringList{"1|300|1|1", "2|5|2|4"}));
            QCOMPARE(Box(editor, "txtRecipeTitle")->text(), QStringLiteral("Moja torta"));
            QCOMPARE(EntryTexts(List(editor, "lstSections")), (QStringList{"Testo", "Krema"}));
            QCOMPARE(SelectedText(List(editor, "lstSections")), QStringLiteral("Testo"));
            QCOMPARE(Instructions(editor), QStringLiteral("Zamesimo gladko testo."));
            // Asked again on the next "Potrdi"; Yes saves the editor's version.
            messages.Clear();
            Click(editor, "cmdOK");
            QVERIFY(!editor->isVisible());
        });
        QCOMPARE(result, int(QDialog::Accepted));
        QCOMPARE(Said(messages), (QStringList{AskSave, AskChanged}));
        QCOMPARE(modGeneral::lngLastID, 3);
        QCOMPARE(RecipeRows(3), (QStringList{"Moja torta|2", "1|Testo|Zamesimo gladko testo.",
                                             "2|Krema|Stopimo ČOKOLADO."}));
        QCOMPARE(LineRows(3), (QStringList{"1|300|1|1", "2|2|2|4"}));
        VerifyCollectionClean();
    }

    // The editor's own save and a recipe saved again as it was (new sections and lines, the same
    // recipe) ask nothing.
    void recipeSavedAgainAsItWasAsksNothing_data() { TestDatabase::AddKinds(); }
    void recipeSavedAgainAsItWasAsksNothing() {
        QFETCH(QString, kind);
        Open(kind);
        MessageRecorder messages;
        const int result = ShowEditor(3, [&](frmNew* editor) {
            // Another cook opens the torte and saves it unchanged.
            QCOMPARE(ShowEditor(3, [](frmNew* other) { Click(other, "cmdOK"); }),
                     int(QDialog::Accepted));
            QCOMPARE(Rows("SELECT sectionID FROM [RecipeSection] WHERE recipeID = 3 ORDER BY "
                          "place;"),
                     (QStringList{"5", "6"}));
            Box(editor, "txtRecipeTitle")->setText(QStringLiteral("Moja torta"));
            Click(editor, "cmdOK");
        });
        QCOMPARE(result, int(QDialog::Accepted));
        QCOMPARE(Said(messages), (QStringList{AskSave, AskSave}));
        QCOMPARE(RecipeRows(3),
                 (QStringList{"Moja torta|2", "1|Testo|Zamesimo.", "2|Krema|Stopimo ČOKOLADO."}));
        QCOMPARE(LineRows(3), (QStringList{"1|300|1|1", "2|2|2|4"}));
        VerifyCollectionClean();
    }

    // A recipe deleted meanwhile: No writes nothing; Yes saves it as a new recipe.
    void deletedRecipeIsSavedAsNewOnlyOnYes_data() { TestDatabase::AddKinds(); }
    void deletedRecipeIsSavedAsNewOnlyOnYes() {
        QFETCH(QString, kind);
        Open(kind);
        MessageRecorder messages;
        messages.Answer(UiServices::vbYes);
        messages.Answer(UiServices::vbNo);
        const int result = ShowEditor(1, [&](frmNew* editor) {
            for (const char* sql : {"DELETE FROM [SectionIngredient] WHERE sectionID = 1",
                                    "DELETE FROM [RecipeSection] WHERE recipeID = 1",
                                    "DELETE FROM [Section] WHERE sectionID = 1",
                                    "DELETE FROM [Recipe] WHERE recipeID = 1"}) {
                TestDatabase::Exec(QString::fromUtf8(sql));
            }
            Box(editor, "txtRecipeTitle")->setText(QStringLiteral("Goveja juha z rezanci"));
            Click(editor, "cmdOK");
            QVERIFY(editor->isVisible());
            QCOMPARE(Said(messages), (QStringList{AskSave, AskDeleted}));
            QCOMPARE(Rows("SELECT recipeID, title FROM [Recipe] ORDER BY recipeID;"),
                     (QStringList{"2|Korenčkova juha", "3|čokoladna torta"}));
            QCOMPARE(Box(editor, "txtRecipeTitle")->text(),
                     QStringLiteral("Goveja juha z rezanci"));
            QCOMPARE(modGeneral::lngLastID, -12345);
            messages.Clear();
            Click(editor, "cmdOK");
            QVERIFY(!editor->isVisible());
        });
        QCOMPARE(result, int(QDialog::Accepted));
        QCOMPARE(Said(messages), (QStringList{AskSave, AskDeleted}));
        QCOMPARE(modGeneral::lngLastID, 4);
        QCOMPARE(Rows("SELECT recipeID, typeID, sourceID, title FROM [Recipe] ORDER BY recipeID;"),
                 (QStringList{"2|2|NULL|Korenčkova juha", "3|3|2|čokoladna torta",
                              "4|1|1|Goveja juha z rezanci"}));
        QCOMPARE(RecipeRows(4), (QStringList{"Goveja juha z rezanci|1", "1|NULL|Skuhamo."}));
        QCOMPARE(LineRows(4), QStringList{"1|100|1|1"});
        VerifyCollectionClean();
    }

    // A change made while the question is on screen is told again before anything is written.
    void changeDuringTheQuestionIsAskedAgain_data() { TestDatabase::AddKinds(); }
    void changeDuringTheQuestionIsAskedAgain() {
        QFETCH(QString, kind);
        Open(kind);
        QStringList said;
        int changes = 0;
        UiServices::SetMsgBoxHandler([&](const QString& text, int style, const QString& title) {
            said << QString::number(style) + QLatin1Char(' ') + text + QLatin1Char(' ') + title;
            if (text.startsWith(QStringLiteral("Recept je medtem")) && changes++ == 0) {
                TestDatabase::Exec(
                    QStringLiteral("UPDATE [Recipe] SET title = 'Tretja' WHERE recipeID = 3"));
            }
            return int(UiServices::vbYes);
        });
        const int result = ShowEditor(3, [&](frmNew* editor) {
            TestDatabase::Exec(
                QStringLiteral("UPDATE [Recipe] SET title = 'Druga' WHERE recipeID = 3"));
            Box(editor, "txtRecipeTitle")->setText(QStringLiteral("Moja torta"));
            Click(editor, "cmdOK");
        });
        QCOMPARE(result, int(QDialog::Accepted));
        QCOMPARE(said, (QStringList{AskSave + " Morvena", AskChanged + " Morvena",
                                    AskChanged + " Morvena"}));
        QCOMPARE(RecipeRows(3),
                 (QStringList{"Moja torta|2", "1|Testo|Zamesimo.", "2|Krema|Stopimo ČOKOLADO."}));
        VerifyCollectionClean();
    }
};

QTEST_MAIN(TestEditorChanged)
#include "tst_editor_changed.moc"
