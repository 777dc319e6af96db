// The recipe editor's section and ingredient editing, the three checks, and the reuse of a
// section of another recipe through the section picker.
#include <QComboBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScopeGuard>
#include <QTreeWidget>

#include "core/AppError.h"
#include "core/modGeneral.h"
#include "core/ui/Controls.h"
#include "core/ui/UiServices.h"
#include "editor/frmNew.h"
#include "editor/frmSelectSection.h"

using EditSections::UBound;
using modGeneral::TrimBlanks;
using UiServices::MsgBox;

namespace {

const QString NewSectionTitle = QStringLiteral("Novi razdelek");

// A validation message: information icon, OK.
void Inform(const QString& text) { MsgBox(text, UiServices::vbOKOnly + UiServices::vbInformation); }

}  // namespace

// ---- sections --------------------------------------------------------------------------------

void frmNew::cmdSectionAdd_Click() {
    ErrorPath::Handle("frmNew:cmdSectionAdd_Click->", [&] {
        setCursor(Qt::WaitCursor);
        const auto normal = qScopeGuard([this] { unsetCursor(); });
        booSections = true;
        if (!CheckSection()) {
            booSections = false;
            EnableControls();
            return;
        }
        if (lstSections->topLevelItemCount() == 0) {
            EditSections::Redim(arrSections, 2);
            AddSectionEntry(txtSectionTitle->text());
            QTreeWidgetItem* added = AddSectionEntry(NewSectionTitle);
            StoreSection(1);
            arrSections[1].Title = txtSectionTitle->text();
            DisplaySection(-1);
            txtSectionTitle->setText(NewSectionTitle);
            SelectSectionEntry(added);
            itmSection = added;
        } else {
            const int n = lstSections->topLevelItemCount() + 1;
            EditSections::RedimPreserve(arrSections, n);
            QTreeWidgetItem* added = AddSectionEntry(NewSectionTitle);
            StoreSection(SectionIndex(SelectedSection()));
            SelectSectionEntry(added);
            itmSection = added;
            DisplaySection(n);
            txtSectionTitle->setText(NewSectionTitle);
        }
        txtSectionTitle->setFocus();
        EnableControls();
    });
}

void frmNew::cmdSectionDelete_Click() {
    ErrorPath::Handle("frmNew:cmdSectionDelete_Click->", [&] {
        setCursor(Qt::WaitCursor);
        const auto normal = qScopeGuard([this] { unsetCursor(); });
        if (itmSection) {
            if (MsgBox(QStringLiteral("Ali res želite izbrisati razdelek?"),
                       UiServices::vbYesNo + UiServices::vbQuestion) == UiServices::vbNo) {
                EnableControls();
                return;
            }
            const int deleted = SectionIndex(itmSection);
            const int count = lstSections->topLevelItemCount();
            if (count == 2) {
                DisplaySection(3 - deleted);
                txtSectionTitle->setText(QString());
                ClearSectionEntries();
                EditSections::Redim(arrSections, 0);
                booSections = false;
            } else {
                for (int i = deleted; i <= count - 1; ++i) {
                    CopySection(i + 1, i);
                    SectionEntry(i)->setText(0, SectionEntry(i + 1)->text(0));
                }
                RemoveLastSectionEntry();
                EditSections::RedimPreserve(arrSections, UBound(arrSections) - 1);
                itmSection = SectionEntry(1);
                DisplaySection(1);
                SelectSectionEntry(itmSection);
            }
        }
        EnableControls();
    });
}

void frmNew::CopySection(int intFrom, int intTo) {
    ErrorPath::PassOn("frmNew:CopySection",
                      [&] { EditSections::CopySection(arrSections, intFrom, intTo); });
}

void frmNew::cmdSectionUp_Click() {
    ErrorPath::Handle("frmNew:cmdSectionUp_Click->", [&] { MoveSection(-1); });
}

void frmNew::cmdSectionDown_Click() {
    ErrorPath::Handle("frmNew:cmdSectionDown_Click->", [&] { MoveSection(+1); });
}

// "Gor" (-1) and "Dol" (+1): the neighbour's stored data moves into the place of the section on
// screen, which stays in the controls and reaches its new place at the next StoreSection.
void frmNew::MoveSection(int offset) {
    setCursor(Qt::WaitCursor);
    const auto normal = qScopeGuard([this] { unsetCursor(); });
    if (itmSection && CheckSection()) {
        const int i = SectionIndex(itmSection);
        const int j = i + offset;
        if (j >= 1 && j <= lstSections->topLevelItemCount()) {
            CopySection(j, i);
            QTreeWidgetItem* entryI = SectionEntry(i);
            QTreeWidgetItem* entryJ = SectionEntry(j);
            const QString text = entryI->text(0);
            entryI->setText(0, entryJ->text(0));
            entryJ->setText(0, text);
            SelectSectionEntry(entryJ);
            itmSection = entryJ;
        }
    }
    EnableControls();
}

void frmNew::lstSections_ItemClick() {
    ErrorPath::Handle("frmNew:lstSections_ItemClick->", [&] {
        setCursor(Qt::WaitCursor);
        const auto normal = qScopeGuard([this] { unsetCursor(); });
        QTreeWidgetItem* selected = SelectedSection();
        if (selected && itmSection && selected->text(0) != itmSection->text(0)) {
            if (CheckSection()) {
                StoreSection(SectionIndex(itmSection));
                itmSection = selected;
                DisplaySection(SectionIndex(itmSection));
            } else {
                SelectSectionEntry(itmSection);
            }
        }
        EnableControls();
    });
}

void frmNew::txtSectionTitle_Change() {
    ErrorPath::Handle("frmNew:txtSectionTitle_Change->", [&] {
        if (itmSection) {
            itmSection->setText(0, txtSectionTitle->text());
        }
    });
}

void frmNew::cmdSectionSelect_Click() {
    ErrorPath::Handle("frmNew:cmdSectionSelect_Click->", [&] {
        UiServices::SetMousePointer(UiServices::vbHourglass);
        const auto normal = qScopeGuard([] { UiServices::SetMousePointer(UiServices::vbDefault); });
        booSections = true;
        if (!CheckSection()) {
            booSections = false;
        } else {
            ShowSectionPicker();
            if (lngSectionID == -1) {
                booSections = false;
            } else {
                if (lstSections->topLevelItemCount() < 2) {
                    EditSections::Redim(arrSections, 1);
                    AddSectionEntry(txtSectionTitle->text());
                    StoreSection(1);
                    arrSections[1].Title = txtSectionTitle->text();
                }
                LoadSection(lngSectionID);
                QTreeWidgetItem* last = SectionEntry(UBound(arrSections));
                itmSection = last;
                SelectSectionEntry(last);
                DisplaySection(UBound(arrSections));
            }
        }
        txtSectionTitle->setFocus();
        EnableControls();
    });
}

void frmNew::ShowSectionPicker() {
    lngSectionID = -1;  // an exit the picker does not foresee means no choice
    frmSelectSection picker(this, this);
    picker.exec();
}

// ---- ingredient lines ------------------------------------------------------------------------

void frmNew::cmdSectionIngredientAdd_Click() {
    ErrorPath::Handle("frmNew:cmdSectionIngredientAdd_Click->", [&] {
        itmIngredient = nullptr;
        InitSectionIngredient();
        EnableIngredient(true);
        txtAmount->setFocus();
        EnableControls();
    });
}

void frmNew::cmdSectionIngredientEdit_Click() {
    ErrorPath::Handle("frmNew:cmdSectionIngredientEdit_Click->", [&] {
        itmIngredient = SelectedIngredientLine();
        InitSectionIngredient();
        EnableIngredient(true);
        txtAmount->setFocus();
    });
}

void frmNew::lstSectionIngredient_DblClick() {
    ErrorPath::Handle("frmNew:lstSectionIngredient_DblClick->",
                      [&] { cmdSectionIngredientEdit_Click(); });
}

void frmNew::cmdSectionIngredientDelete_Click() {
    ErrorPath::Handle("frmNew:cmdSectionIngredientDelete_Click->", [&] {
        if (QTreeWidgetItem* line = SelectedIngredientLine()) {
            if (line == itmIngredient) {
                itmIngredient = nullptr;  // the line being edited is gone
            }
            delete line;
            // No other line takes over the selection.
            lstSectionIngredient->setCurrentItem(nullptr);
            lstSectionIngredient->clearSelection();
        }
        EnableControls();
    });
}

void frmNew::cmdIngredientOk_Click() {
    ErrorPath::Handle("frmNew:cmdIngredientOk_Click->", [&] {
        if (!CheckSectionIngredient()) {
            return;
        }
        QTreeWidgetItem* line = itmIngredient;
        if (!line) {
            line = new QTreeWidgetItem(lstSectionIngredient);
        }
        QTreeWidgetItem* ingredient = lstIngredient->selectedItems().first();
        line->setText(0, TrimBlanks(txtAmount->text()));
        KeepFraction(line, QString());  // the amount is now the one typed
        line->setText(1, cmbUnit->currentText());
        line->setText(2, ingredient->text(0));
        line->setText(3, QString::number(cmbUnit->currentData().toInt()));
        line->setText(4, modGeneral::ItemKey(ingredient).mid(1));
        EnableIngredient(false);
        cmdSectionIngredientAdd->setFocus();
        EnableControls();
    });
}

void frmNew::cmdIngredientCancel_Click() {
    ErrorPath::Handle("frmNew:cmdIngredientCancel_Click->", [&] {
        EnableIngredient(false);
        cmdSectionIngredientAdd->setFocus();
        EnableControls();
    });
}

void frmNew::InitSectionIngredient() {
    ErrorPath::PassOn("frmNew:InitSectionIngredient", [&] {
        txtFilter->setText(QString());
        if (!itmIngredient) {
            txtAmount->setText(QString());
            cmbUnit->setCurrentIndex(-1);
            if (QTreeWidgetItem* first = lstIngredient->topLevelItem(0)) {
                lstIngredient->setCurrentItem(first);
                first->setSelected(true);
                lstIngredient->scrollToItem(first);
            }
        } else {
            txtAmount->setText(itmIngredient->text(0));
            modGeneral::SelectComboItem(cmbUnit, EditSections::ToLong(itmIngredient->text(3)));
            modGeneral::SelectListItem(lstIngredient, QStringLiteral("I") + itmIngredient->text(4));
        }
    });
}

void frmNew::EnableIngredient(bool booEnable) {
    ErrorPath::PassOn("frmNew:EnableIngredient", [&] {
        for (QWidget* control : std::initializer_list<QWidget*>{
                 txtAmount, cmbUnit, cmdUnitAdd, lstIngredient, cmdIngredientAdd, txtFilter,
                 cmdIngredientOk, cmdIngredientCancel}) {
            control->setEnabled(booEnable);
        }
    });
}

// ---- checks ----------------------------------------------------------------------------------

bool frmNew::CheckSectionIngredient() {
    return ErrorPath::PassOn("frmNew:CheckSectionIngredient", [&] {
        const QString amount = TrimBlanks(txtAmount->text());
        if (amount.isEmpty() || !modGeneral::IsNumeric(amount)) {
            Inform(QStringLiteral("Vnesite veljavno količino!"));
            return false;
        }
        if (cmbUnit->currentIndex() < 0) {
            Inform(QStringLiteral("Izberite enoto!"));
            return false;
        }
        if (lstIngredient->selectedItems().isEmpty()) {
            Inform(QStringLiteral("Izberite sestavino!"));
            return false;
        }
        return true;
    });
}

bool frmNew::CheckSection() {
    return ErrorPath::PassOn("frmNew:CheckSection", [&] {
        const QString title = TrimBlanks(txtSectionTitle->text());
        const QString instructions = TrimBlanks(Controls::MultiLineText(txtInstructions));
        Q_UNUSED(instructions);  // instructions are never required
        if (booSections && title.isEmpty()) {
            Inform(QStringLiteral("Vpišite naslov razdelka!"));
            return false;
        }
        if (!booSections && !title.isEmpty()) {
            Inform(QStringLiteral("Izbrišite naslov razdelka!"));
            return false;
        }
        if (lstSectionIngredient->topLevelItemCount() == 0) {
            Inform(QStringLiteral("Vnesite sestavine razdelka!"));
            return false;
        }
        return true;
    });
}

bool frmNew::CheckRecipe() {
    return ErrorPath::PassOn("frmNew:CheckRecipe", [&] {
        if (cmbGroup->currentIndex() < 0) {
            Inform(QStringLiteral("Izberite skupino recepta!"));
            return false;
        }
        if (cmbType->currentIndex() < 0) {
            Inform(QStringLiteral("Izberite podskupino recepta!"));
            return false;
        }
        if (cmbSource->currentIndex() < 0) {
            Inform(QStringLiteral("Izberite vir recepta!"));
            return false;
        }
        if (TrimBlanks(txtRecipeTitle->text()).isEmpty()) {
            Inform(QStringLiteral("Vpišite naslov recepta!"));
            return false;
        }
        return CheckSection();
    });
}
