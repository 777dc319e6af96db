// The recipe editor's lookup lists (groups, subgroups, sources, units, ingredients), the quick
// additions through the record entry dialog, and leaving the editor without saving.
#include <QComboBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScopeGuard>
#include <QSignalBlocker>
#include <QTreeWidget>

#include "core/AppError.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "core/ui/Controls.h"
#include "core/ui/UiServices.h"
#include "editor/frmNew.h"
#include "lists/frmAddRecord.h"

using UiServices::MsgBox;

namespace {

// Refills a drop-down list from a lookup table: entry text "Name", item data the key. Filling
// selects nothing and raises no click.
void FillCombo(QComboBox* combo, const QString& sql, const QString& keyField) {
    const QSignalBlocker quiet(combo);
    combo->clear();
    Recordset rs = modDatabase::GetRecordset(sql);
    for (; !rs.Eof(); rs.MoveNext()) {
        combo->addItem(rs.Text(QStringLiteral("Name")), rs.Long(keyField));
    }
    rs.Close();
    combo->setCurrentIndex(-1);
}

// The key of the selected entry of a drop-down list, -1 when none is selected.
qint32 SelectedKey(const QComboBox* combo) {
    return combo->currentIndex() < 0 ? -1 : combo->currentData().toInt();
}

}  // namespace

void frmNew::FillCmbGroup() {
    ErrorPath::PassOn("frmNew:FillCmbGroup", [&] {
        FillCombo(cmbGroup, QStringLiteral("SELECT * FROM [Group] ORDER BY name;"),
                  QStringLiteral("groupID"));
    });
}

void frmNew::FillCmbType() {
    ErrorPath::PassOn("frmNew:FillCmbType", [&] {
        FillCombo(cmbType,
                  QStringLiteral("SELECT * FROM [Type] WHERE groupID = ") +
                      QString::number(lngCurrentGroupID) + QStringLiteral(" ORDER BY name;"),
                  QStringLiteral("typeID"));
    });
}

void frmNew::FillCmbSource() {
    ErrorPath::PassOn("frmNew:FillCmbSource", [&] {
        FillCombo(cmbSource, QStringLiteral("SELECT * FROM [Source] ORDER BY name;"),
                  QStringLiteral("sourceID"));
    });
}

void frmNew::FillCmbUnit() {
    ErrorPath::PassOn("frmNew:FillCmbUnit", [&] {
        FillCombo(cmbUnit, QStringLiteral("SELECT * FROM [Unit] ORDER BY name;"),
                  QStringLiteral("unitID"));
    });
}

void frmNew::FillLstIngredient() {
    ErrorPath::PassOn("frmNew:FillLstIngredient", [&] {
        lstIngredient->clear();
        Recordset rs = modDatabase::GetRecordset(
            QStringLiteral("SELECT * FROM [Ingredient] WHERE name LIKE '%%1%' ORDER BY name;"),
            txtFilter->text());
        for (; !rs.Eof(); rs.MoveNext()) {
            auto* entry =
                new QTreeWidgetItem(lstIngredient, QStringList{rs.Text(QStringLiteral("Name"))});
            entry->setData(
                0, modGeneral::KeyRole,
                QStringLiteral("I") + QString::number(rs.Long(QStringLiteral("ingredientID"))));
        }
        rs.Close();
    });
}

void frmNew::cmbGroup_Click() {
    ErrorPath::Handle("frmNew:cmbGroup_Click->", [&] {
        const bool selected = cmbGroup->currentIndex() >= 0;
        if (selected && SelectedKey(cmbGroup) != lngCurrentGroupID) {
            lngCurrentGroupID = SelectedKey(cmbGroup);
            FillCmbType();
        }
        cmbType->setEnabled(selected);
        cmdTypeAdd->setEnabled(selected);
    });
}

qint32 frmNew::AddRecord(int mode, qint32 selectedBefore) {
    frmAddRecord dialog(this);
    dialog.rtMode = mode;
    dialog.lngID = -1;
    if (mode == frmAddRecord::rtType) {
        dialog.lngGroupID = lngCurrentGroupID;
    }
    dialog.exec();
    return modGeneral::lngLastID == -1 ? selectedBefore : modGeneral::lngLastID;
}

void frmNew::cmdGroupAdd_Click() {
    ErrorPath::Handle("frmNew:cmdGroupAdd_Click->", [&] {
        UiServices::SetMousePointer(UiServices::vbHourglass);
        const auto normal = qScopeGuard([] { UiServices::SetMousePointer(UiServices::vbDefault); });
        const qint32 id = AddRecord(frmAddRecord::rtGroup, SelectedKey(cmbGroup));
        FillCmbGroup();
        modGeneral::SelectComboItem(cmbGroup, id);
        if (cmbType->isEnabled()) {
            cmbType->setFocus();
        } else {
            cmbGroup->setFocus();
        }
    });
}

void frmNew::cmdTypeAdd_Click() {
    ErrorPath::Handle("frmNew:cmdTypeAdd_Click->", [&] {
        UiServices::SetMousePointer(UiServices::vbHourglass);
        const auto normal = qScopeGuard([] { UiServices::SetMousePointer(UiServices::vbDefault); });
        const qint32 id = AddRecord(frmAddRecord::rtType, SelectedKey(cmbType));
        FillCmbType();
        modGeneral::SelectComboItem(cmbType, id);
        cmbSource->setFocus();
    });
}

void frmNew::cmdSourceAdd_Click() {
    ErrorPath::Handle("frmNew:cmdSourceAdd_Click->", [&] {
        UiServices::SetMousePointer(UiServices::vbHourglass);
        const auto normal = qScopeGuard([] { UiServices::SetMousePointer(UiServices::vbDefault); });
        const qint32 id = AddRecord(frmAddRecord::rtSource, SelectedKey(cmbSource));
        FillCmbSource();
        modGeneral::SelectComboItem(cmbSource, id);
        txtRecipeTitle->setFocus();
    });
}

void frmNew::cmdUnitAdd_Click() {
    ErrorPath::Handle("frmNew:cmdUnitAdd_Click->", [&] {
        UiServices::SetMousePointer(UiServices::vbHourglass);
        const auto normal = qScopeGuard([] { UiServices::SetMousePointer(UiServices::vbDefault); });
        const qint32 id = AddRecord(frmAddRecord::rtUnit, SelectedKey(cmbUnit));
        FillCmbUnit();
        modGeneral::SelectComboItem(cmbUnit, id);
        lstIngredient->setFocus();
    });
}

void frmNew::cmdIngredientAdd_Click() {
    ErrorPath::Handle("frmNew:cmdIngredientAdd_Click->", [&] {
        UiServices::SetMousePointer(UiServices::vbHourglass);
        const auto normal = qScopeGuard([] { UiServices::SetMousePointer(UiServices::vbDefault); });
        const QList<QTreeWidgetItem*> selected = lstIngredient->selectedItems();
        const qint32 before =
            selected.isEmpty() ? -1 : modGeneral::ItemKey(selected.first()).mid(1).toInt();
        const qint32 id = AddRecord(frmAddRecord::rtIngredient, before);
        FillLstIngredient();
        modGeneral::SelectListItem(lstIngredient, QStringLiteral("I") + QString::number(id));
        lstIngredient->setFocus();
    });
}

void frmNew::txtFilter_Change() {
    ErrorPath::Handle("frmNew:txtFilter_Change->", [&] {
        const QString cleaned = modGeneral::RemoveQuotes(txtFilter->text());
        if (cleaned != txtFilter->text()) {
            txtFilter->setText(cleaned);
        }
        const QList<QTreeWidgetItem*> selected = lstIngredient->selectedItems();
        const QString key = selected.isEmpty() ? QString() : modGeneral::ItemKey(selected.first());
        FillLstIngredient();
        modGeneral::SelectListItem(lstIngredient, key);
    });
}

void frmNew::txtFilter_GotFocus() {
    ErrorPath::Handle("frmNew:txtFilter_GotFocus->", [&] { Controls::SelectAll(txtFilter); });
}

void frmNew::txtAmount_GotFocus() {
    ErrorPath::Handle("frmNew:txtAmount_GotFocus->", [&] { Controls::SelectAll(txtAmount); });
}

void frmNew::txtRecipeTitle_GotFocus() {
    ErrorPath::Handle("frmNew:txtRecipeTitle_GotFocus->",
                      [&] { Controls::SelectAll(txtRecipeTitle); });
}

void frmNew::txtSectionTitle_GotFocus() {
    ErrorPath::Handle("frmNew:txtSectionTitle_GotFocus->",
                      [&] { Controls::SelectAll(txtSectionTitle); });
}

void frmNew::cmdCancel_Click() {
    ErrorPath::Handle("frmNew:cmdCancel_Click->", [&] {
        if (MsgBox(QStringLiteral("Ali res želite preklicati vnešene podatke?"),
                   UiServices::vbYesNo + UiServices::vbQuestion) == UiServices::vbYes) {
            modGeneral::lngLastID = -1;
            UnloadFromCode(QDialog::Rejected);
        }
    });
}

// True when the form may close.
bool frmNew::Form_QueryUnload() {
    bool close = true;
    ErrorPath::Handle("frmNew:Form_QueryUnload->", [&] {
        close = MsgBox(QStringLiteral("Ali res želite preklicati vnešene podatke?"),
                       UiServices::vbYesNo + UiServices::vbQuestion) != UiServices::vbNo;
    });
    return close;
}

void frmNew::reject() {
    if (m_unloadingFromCode || Form_QueryUnload()) {
        m_unloadingFromCode = true;
        QDialog::reject();
    }
}
