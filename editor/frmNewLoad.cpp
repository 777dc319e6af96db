// Loading the recipe editor: the lookup lists filled and, for an existing recipe, its header,
// sections and ingredient lines read into the working state.
#include <QComboBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QTreeWidget>

#include "core/Amount.h"
#include "core/AppError.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "core/ui/UiServices.h"
#include "editor/frmNew.h"

using EditSections::UBound;

void frmNew::Form_Load() {
    ErrorPath::Handle("frmNew:Form_Load->", [&] {
        // A form that is shown again starts from empty controls, as a newly loaded one does.
        txtRecipeTitle->clear();
        ClearSectionEntries();
        ClearIngredientLines();
        txtSectionTitle->clear();
        txtInstructions->clear();
        txtAmount->clear();
        {
            const QSignalBlocker quiet(txtFilter);
            txtFilter->clear();
        }
        {
            const QSignalBlocker quiet(cmbType);
            cmbType->clear();
        }

        lngCurrentGroupID = -1;
        cmbType->setEnabled(false);
        cmdTypeAdd->setEnabled(false);
        EditSections::Redim(arrSections, 0);
        FillCmbGroup();
        FillCmbSource();
        FillCmbUnit();
        FillLstIngredient();
        EnableIngredient(false);
        m_loadedRecipe = RecipeFingerprint();
        if (lngRecipeID < 0) {
            itmSection = nullptr;
            booSections = false;
        } else {
            // The recipe as one save left it: read in one snapshot, however others save it.
            modDatabase::Transaction reading(modDatabase::Transaction::Reading);
            m_loadedRecipe = RecipeFingerprint::Read(lngRecipeID);
            LoadRecipe(lngRecipeID);
            Recordset rs = modDatabase::GetRecordset(
                QStringLiteral("SELECT sectionID FROM [RecipeSection] WHERE recipeID = ") +
                QString::number(lngRecipeID) + QStringLiteral(" ORDER BY place;"));
            for (; !rs.Eof(); rs.MoveNext()) {
                LoadSection(rs.Long(QStringLiteral("sectionID")));
            }
            rs.Close();
            reading.Commit();
            if (UBound(arrSections) > 1) {
                itmSection = SelectedSection();
                DisplaySection(SectionIndex(itmSection));
                booSections = true;
            } else {
                itmSection = nullptr;
                DisplaySection(1);
                EditSections::RedimPreserve(arrSections, 0);
                ClearSectionEntries();
                booSections = false;
            }
        }
        EnableControls();
    });
    UiServices::SetMousePointer(UiServices::vbDefault);
}

void frmNew::LoadRecipe(qint32 recipeID) {
    ErrorPath::PassOn("frmNew:LoadRecipe", [&] {
        Recordset rs = modDatabase::GetRecordset(
            QStringLiteral("SELECT [Type].groupID, Recipe.* FROM [Recipe] INNER JOIN [Type] ON "
                           "[Type].typeID = [Recipe].typeID WHERE recipeID = ") +
            QString::number(recipeID) + QStringLiteral(";"));
        modGeneral::SelectComboItem(cmbGroup, rs.Long(QStringLiteral("groupID")));
        modGeneral::SelectComboItem(cmbType, rs.Long(QStringLiteral("typeID")));
        const QVariant sourceID = rs.Fields(QStringLiteral("sourceID"));
        modGeneral::SelectComboItem(cmbSource, sourceID.isNull() ? 0 : sourceID.toInt());
        txtRecipeTitle->setText(rs.Text(QStringLiteral("Title")));
        rs.Close();
    });
}

void frmNew::LoadSection(qint32 sectionID) {
    ErrorPath::PassOn("frmNew:LoadSection", [&] {
        const QString id = QString::number(sectionID);
        Recordset rs = modDatabase::GetRecordset(
            QStringLiteral("SELECT title, instructions FROM [Section] WHERE sectionID = ") + id +
            QStringLiteral(";"));
        const int n = UBound(arrSections) + 1;
        EditSections::RedimPreserve(arrSections, n);
        EditSection& section = arrSections[n];
        section.Title = modDatabase::NullToStr(rs.Fields(QStringLiteral("title")));
        section.Instructions = modGeneral::TrimBlanks(rs.Text(QStringLiteral("instructions")));

        Recordset lines = modDatabase::GetRecordset(
            QStringLiteral("SELECT [SectionIngredient].amount, [Ingredient].ingredientID, "
                           "[Ingredient].name AS ingredientName, [Unit].unitID, [Unit].name AS "
                           "unitName FROM ([SectionIngredient] INNER JOIN [Ingredient] ON "
                           "[Ingredient].ingredientID = [SectionIngredient].ingredientID) INNER "
                           "JOIN [Unit] ON Unit.unitID = [SectionIngredient].unitID WHERE "
                           "sectionID = ") +
            id + QStringLiteral(";"));
        // The statement names no order; the lines come back as the cook typed them, in the
        // order of their keys, so that a save keeps them in that order.
        lines.Arrange(
            modDatabase::GetRecordset(
                QStringLiteral("SELECT amount, ingredientID, unitID FROM [SectionIngredient] "
                               "WHERE sectionID = ") +
                id + QStringLiteral(" ORDER BY sectionIngredientID;")),
            {QStringLiteral("amount"), QStringLiteral("ingredientID"), QStringLiteral("unitID")});
        const int count = lines.RecordCount();
        EditSections::Redim(section.Ingredients, count);
        for (int k = 1; k <= count; ++k) {
            EditIngredient& line = section.Ingredients[k];
            const QVariant amount = lines.Fields(QStringLiteral("amount"));
            if (Amount::IsWhole(amount)) {
                line.Amount = EditSections::ToInteger(amount);
            } else {
                line.Fraction = Amount::Stored(amount).toString();
            }
            line.IngredientID = lines.Long(QStringLiteral("ingredientID"));
            line.UnitID = lines.Long(QStringLiteral("unitID"));
            line.IngredientName = lines.Text(QStringLiteral("ingredientName"));
            line.UnitName = lines.Text(QStringLiteral("unitName"));
            lines.MoveNext();
        }
        lines.Close();
        AddSectionEntry(section.Title);
        rs.Close();
    });
}
