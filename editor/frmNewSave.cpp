// Saving the recipe held by the editor: the recipe row is inserted or updated, every old section
// of the recipe is deleted, and every section in the editor is inserted afresh. All of it is one
// transaction with the recipe's row locked: a save is whole or absent (a failure half-way
// writes nothing and the editor stays open), and two saves of one recipe follow one another.
// A recipe that someone else saved or deleted since the editor read it is saved only after the
// user has been told and has answered Yes.
#include <QComboBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QScopeGuard>
#include <QTreeWidget>
#include <optional>

#include "collection/RecipeRows.h"
#include "core/AppError.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "core/ui/Controls.h"
#include "core/ui/UiServices.h"
#include "editor/frmNew.h"

using EditSections::UBound;
using modDatabase::GetRecordset;
using modGeneral::TrimBlanks;

namespace {

// Empty instructions are stored as a single blank.
QString StoredInstructions(const QString& text) {
    const QString trimmed = TrimBlanks(text);
    return trimmed.isEmpty() ? QStringLiteral(" ") : trimmed;
}

// Adds a Section row and its RecipeSection link; returns the new section's key.
qint32 InsertSection(qint32 recipeID, const QVariant& title, const QString& instructions,
                     int place) {
    Recordset section =
        GetRecordset(QStringLiteral("SELECT * FROM [Section] WHERE sectionID = 0;"));
    section.AddNew();
    section.SetField(QStringLiteral("Title"), title);
    section.SetField(QStringLiteral("instructions"), instructions);
    section.Update();
    const qint32 sectionID = section.Long(QStringLiteral("sectionID"));
    section.Close();

    Recordset link =
        GetRecordset(QStringLiteral("SELECT * FROM [RecipeSection] WHERE recipeSectionID = 0;"));
    link.AddNew();
    link.SetField(QStringLiteral("recipeID"), recipeID);
    link.SetField(QStringLiteral("sectionID"), sectionID);
    link.SetField(QStringLiteral("place"), place);
    link.Update();
    link.Close();
    return sectionID;
}

}  // namespace

void frmNew::cmdOK_Click() {
    ErrorPath::Handle("frmNew:cmdOK_Click->", [&] {
        setCursor(Qt::WaitCursor);
        const auto normal = qScopeGuard([this] { unsetCursor(); });
        if (UiServices::MsgBox(QStringLiteral("Ali res želite shraniti recept?"),
                               UiServices::vbYesNo + UiServices::vbQuestion) == UiServices::vbNo) {
            return;
        }
        if (!CheckRecipe()) {
            return;
        }
        if (QTreeWidgetItem* selected = SelectedSection()) {
            StoreSection(SectionIndex(selected));
        }

        // What someone else saved since the editor read the recipe is overwritten only on Yes,
        // and only as the user was told of it: asked with nothing locked, and asked again when
        // the recipe changes once more before the save holds its lock.
        RecipeFingerprint overwritable = m_loadedRecipe;
        while (const std::optional<RecipeFingerprint> found = SaveRecipe(overwritable)) {
            if (!OverwriteAgreed(*found)) {
                return;
            }
            overwritable = *found;
        }
        UnloadFromCode(QDialog::Accepted);
    });
}

std::optional<RecipeFingerprint> frmNew::SaveRecipe(const RecipeFingerprint& overwritable) {
    modDatabase::Transaction transaction;
    if (lngRecipeID > -1) {
        transaction.LockRow(QStringLiteral("[Recipe]"), QStringLiteral("recipeID"), lngRecipeID);
        const RecipeFingerprint now = RecipeFingerprint::Read(lngRecipeID);
        if (now != overwritable) {
            return now;  // the transaction ends unwritten
        }
    }
    const qint32 saved = WriteRecipe();
    transaction.Commit();
    modGeneral::lngLastID = saved;
    return std::nullopt;
}

bool frmNew::OverwriteAgreed(const RecipeFingerprint& found) {
    const QString question =
        found.Exists() ? QStringLiteral(
                             "Recept je medtem spremenil nekdo drug. Ali ga želite kljub temu "
                             "shraniti in prepisati te spremembe?")
                       : QStringLiteral(
                             "Recept je medtem nekdo izbrisal. Ali ga želite kljub temu shraniti "
                             "kot nov recept?");
    return UiServices::MsgBox(question, UiServices::vbYesNo + UiServices::vbQuestion) ==
           UiServices::vbYes;
}

qint32 frmNew::WriteRecipe() {
    // The recipe row
    Recordset recipe = GetRecordset(QStringLiteral("SELECT * FROM [Recipe] WHERE recipeID = ") +
                                    QString::number(lngRecipeID) + QStringLiteral(";"));
    if (recipe.Eof()) {
        recipe.AddNew();
    }
    recipe.SetField(QStringLiteral("typeID"), cmbType->currentData());
    recipe.SetField(QStringLiteral("Title"), TrimBlanks(txtRecipeTitle->text()));
    recipe.SetField(QStringLiteral("sourceID"), cmbSource->currentData());
    recipe.Update();
    const qint32 recipeID = recipe.Long(QStringLiteral("recipeID"));

    // The old sections
    if (lngRecipeID > -1) {
        Recordset old =
            GetRecordset(QStringLiteral("SELECT sectionID FROM [RecipeSection] WHERE recipeID = ") +
                         QString::number(lngRecipeID) + QStringLiteral(";"));
        for (; !old.Eof(); old.MoveNext()) {
            RecipeRows::DeleteSection(old.Long(QStringLiteral("sectionID")));
        }
        old.Close();
    }

    if (SelectedSection()) {
        // Several sections, in list order
        for (int i = 1; i <= UBound(arrSections); ++i) {
            const EditSection& section = arrSections[i];
            const qint32 sectionID = InsertSection(recipeID, TrimBlanks(section.Title),
                                                   StoredInstructions(section.Instructions), i);
            Recordset lines = GetRecordset(
                QStringLiteral("SELECT * FROM [SectionIngredient] WHERE sectionIngredientID = 0;"));
            for (int k = 1; k <= UBound(section.Ingredients); ++k) {
                const EditIngredient& line = section.Ingredients[k];
                lines.AddNew();
                lines.SetField(QStringLiteral("sectionID"), sectionID);
                lines.SetField(QStringLiteral("ingredientID"), line.IngredientID);
                lines.SetField(QStringLiteral("amount"), line.Fraction.isEmpty()
                                                             ? QVariant(int(line.Amount))
                                                             : QVariant(line.Fraction));
                lines.SetField(QStringLiteral("unitID"), line.UnitID);
                lines.Update();
            }
            lines.Close();
        }
    } else {
        // The single, untitled section from the controls
        const qint32 sectionID =
            InsertSection(recipeID, modDatabase::StrToNull(QString()),
                          StoredInstructions(Controls::MultiLineText(txtInstructions)), 1);
        Recordset lines = GetRecordset(
            QStringLiteral("SELECT * FROM [SectionIngredient] WHERE sectionIngredientID = 0;"));
        for (int k = 0; k < lstSectionIngredient->topLevelItemCount(); ++k) {
            const QTreeWidgetItem* entry = lstSectionIngredient->topLevelItem(k);
            lines.AddNew();
            lines.SetField(QStringLiteral("sectionID"), sectionID);
            lines.SetField(QStringLiteral("ingredientID"), entry->text(4));
            const QString fraction = KeptFraction(entry);
            lines.SetField(QStringLiteral("amount"),
                           fraction.isEmpty() ? entry->text(0) : fraction);
            lines.SetField(QStringLiteral("unitID"), entry->text(3));
            lines.Update();
        }
        lines.Close();
    }

    recipe.Close();
    return recipeID;
}
