// The recipe editor: its controls, its lists, and moving a section between the working state and
// the section controls (loading a recipe is in frmNewLoad.cpp).
#include "editor/frmNew.h"

#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include "core/Amount.h"
#include "core/AppError.h"
#include "core/ui/ColumnFit.h"
#include "core/ui/Controls.h"
#include "core/ui/KeepSelection.h"

using EditSections::InBounds;
using EditSections::UBound;

namespace {

QComboBox* NewDropDownList(QWidget* parent, const QString& name) {
    auto* combo = new QComboBox(parent);
    combo->setObjectName(name);
    combo->setEditable(false);
    return combo;
}

QGroupBox* NewFrame(QWidget* parent, const QString& name, const QString& caption) {
    auto* frame = new QGroupBox(caption, parent);
    frame->setObjectName(name);
    return frame;
}

}  // namespace

frmNew::frmNew(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmNew"));
    setWindowTitle(QStringLiteral("Urejanje recepta"));
    BuildControls();
    ConnectHandlers();
}

void frmNew::BuildControls() {
    using namespace Controls;
    // Recipe header
    lblGroup = NewLabel(this, QStringLiteral("lblGroup"), QStringLiteral("Skupina receptov:"));
    cmbGroup = NewDropDownList(this, QStringLiteral("cmbGroup"));
    cmdGroupAdd = NewButton(this, QStringLiteral("cmdGroupAdd"), QStringLiteral("Dodaj..."));
    lblType = NewLabel(this, QStringLiteral("lblType"), QStringLiteral("Podsk. receptov:"));
    cmbType = NewDropDownList(this, QStringLiteral("cmbType"));
    cmdTypeAdd = NewButton(this, QStringLiteral("cmdTypeAdd"), QStringLiteral("Dodaj..."));
    lblSource = NewLabel(this, QStringLiteral("lblSource"), QStringLiteral("Vir recepta:"));
    cmbSource = NewDropDownList(this, QStringLiteral("cmbSource"));
    cmdSourceAdd = NewButton(this, QStringLiteral("cmdSourceAdd"), QStringLiteral("Dodaj..."));
    lblRecipeTitle =
        NewLabel(this, QStringLiteral("lblRecipeTitle"), QStringLiteral("Naslov recepta:"));
    txtRecipeTitle = NewTextBox(this, QStringLiteral("txtRecipeTitle"));
    lblSections = NewLabel(this, QStringLiteral("lblSections"), QStringLiteral("Razdelki:"));
    lstSections = NewListView(this, QStringLiteral("lstSections"), {1200});
    cmdSectionAdd = NewButton(this, QStringLiteral("cmdSectionAdd"), QStringLiteral("Dodaj"));
    cmdSectionDelete =
        NewButton(this, QStringLiteral("cmdSectionDelete"), QStringLiteral("Izbriši"));
    cmdSectionUp = NewButton(this, QStringLiteral("cmdSectionUp"), QStringLiteral("Gor"));
    cmdSectionDown = NewButton(this, QStringLiteral("cmdSectionDown"), QStringLiteral("Dol"));
    cmdSectionSelect =
        NewButton(this, QStringLiteral("cmdSectionSelect"), QStringLiteral("Izberi..."));

    // Section frame
    frmSection = NewFrame(this, QStringLiteral("frmSection"), QStringLiteral("Razdelek"));
    lblSectionTitle =
        NewLabel(frmSection, QStringLiteral("lblSectionTitle"), QStringLiteral("Naslov razdelka:"));
    txtSectionTitle = NewTextBox(frmSection, QStringLiteral("txtSectionTitle"));
    lblInstructions =
        NewLabel(frmSection, QStringLiteral("lblInstructions"), QStringLiteral("Potek dela:"));
    txtInstructions = NewMultiLineTextBox(frmSection, QStringLiteral("txtInstructions"));
    lstSectionIngredient =
        NewListView(frmSection, QStringLiteral("lstSectionIngredient"), {500, 1000, 2000, 0, 0});
    cmdSectionIngredientAdd =
        NewButton(frmSection, QStringLiteral("cmdSectionIngredientAdd"), QStringLiteral("Dodaj"));
    cmdSectionIngredientEdit =
        NewButton(frmSection, QStringLiteral("cmdSectionIngredientEdit"), QStringLiteral("Uredi"));
    cmdSectionIngredientDelete = NewButton(frmSection, QStringLiteral("cmdSectionIngredientDelete"),
                                           QStringLiteral("Izbriši"));

    // Ingredient frame
    frmIngredient = NewFrame(this, QStringLiteral("frmIngredient"), QStringLiteral("Sestavine"));
    lblAmount = NewLabel(frmIngredient, QStringLiteral("lblAmount"), QStringLiteral("Količina:"));
    txtAmount = NewTextBox(frmIngredient, QStringLiteral("txtAmount"));
    lblUnit = NewLabel(frmIngredient, QStringLiteral("lblUnit"), QStringLiteral("Merska enota:"));
    cmbUnit = NewDropDownList(frmIngredient, QStringLiteral("cmbUnit"));
    cmdUnitAdd = NewButton(frmIngredient, QStringLiteral("cmdUnitAdd"), QStringLiteral("Dodaj..."));
    lblIngredientsFilter =
        NewLabel(frmIngredient, QStringLiteral("lblIngredientsFilter"), QStringLiteral("Filter:"));
    txtFilter = NewTextBox(frmIngredient, QStringLiteral("txtFilter"));
    lstIngredient = NewListView(frmIngredient, QStringLiteral("lstIngredient"), {2550});
    cmdIngredientAdd =
        NewButton(frmIngredient, QStringLiteral("cmdIngredientAdd"), QStringLiteral("Dodaj..."));
    cmdIngredientOk =
        NewButton(frmIngredient, QStringLiteral("cmdIngredientOk"), QStringLiteral("Potrdi"));
    cmdIngredientCancel =
        NewButton(frmIngredient, QStringLiteral("cmdIngredientCancel"), QStringLiteral("Prekliči"));

    // Form buttons
    cmdOK = NewButton(this, QStringLiteral("cmdOK"), QStringLiteral("Potrdi"));
    cmdCancel = NewButton(this, QStringLiteral("cmdCancel"), QStringLiteral("Prekliči"));

    // Enter in a text box presses no button: the editor has no default button.
    for (QPushButton* button : findChildren<QPushButton*>()) {
        button->setAutoDefault(false);
        button->setDefault(false);
    }
    for (QTreeWidget* list : {lstSections, lstSectionIngredient, lstIngredient}) {
        list->setSelectionMode(QAbstractItemView::SingleSelection);
        list->setEditTriggers(QAbstractItemView::NoEditTriggers);
        list->setExpandsOnDoubleClick(false);
        KeepSelection::Apply(list);
    }

    // Layout: the header on top; below it the section list, the section frame and the
    // ingredient frame side by side; the form buttons at the bottom.
    auto* header = new QGridLayout;
    header->addWidget(lblGroup, 0, 0);
    header->addWidget(cmbGroup, 0, 1);
    header->addWidget(cmdGroupAdd, 0, 2);
    header->addWidget(lblType, 1, 0);
    header->addWidget(cmbType, 1, 1);
    header->addWidget(cmdTypeAdd, 1, 2);
    header->addWidget(lblSource, 2, 0);
    header->addWidget(cmbSource, 2, 1);
    header->addWidget(cmdSourceAdd, 2, 2);
    header->addWidget(lblRecipeTitle, 3, 0);
    header->addWidget(txtRecipeTitle, 3, 1, 1, 2);
    header->setColumnStretch(1, 1);

    auto* sections = new QVBoxLayout;
    sections->addWidget(lblSections);
    sections->addWidget(lstSections, 1);
    for (QPushButton* button :
         {cmdSectionAdd, cmdSectionDelete, cmdSectionUp, cmdSectionDown, cmdSectionSelect}) {
        sections->addWidget(button);
    }
    lstSections->setMinimumWidth(ColumnFit::Given(lstSections, 0) + 8);
    lstSections->setMaximumWidth(Controls::TextPixels(2000, lstSections->font()));

    auto* sectionGrid = new QGridLayout(frmSection);
    sectionGrid->addWidget(lblSectionTitle, 0, 0);
    sectionGrid->addWidget(txtSectionTitle, 0, 1, 1, 3);
    sectionGrid->addWidget(lblInstructions, 1, 0, 1, 4);
    sectionGrid->addWidget(txtInstructions, 2, 0, 1, 4);
    sectionGrid->addWidget(lstSectionIngredient, 3, 0, 1, 4);
    auto* lineButtons = new QHBoxLayout;
    lineButtons->addStretch(1);
    lineButtons->addWidget(cmdSectionIngredientAdd);
    lineButtons->addWidget(cmdSectionIngredientEdit);
    lineButtons->addWidget(cmdSectionIngredientDelete);
    sectionGrid->addLayout(lineButtons, 4, 0, 1, 4);
    sectionGrid->setRowStretch(2, 1);
    sectionGrid->setRowStretch(3, 1);
    sectionGrid->setColumnStretch(1, 1);
    // amounts of up to five digits show whole
    ColumnFit::AtLeast(lstSectionIngredient, 0,
                       Controls::FitPixels(lstSectionIngredient, QStringLiteral("99999")));

    auto* ingredientGrid = new QGridLayout(frmIngredient);
    ingredientGrid->addWidget(lblAmount, 0, 0);
    ingredientGrid->addWidget(txtAmount, 0, 1, 1, 2);
    ingredientGrid->addWidget(lblUnit, 1, 0);
    ingredientGrid->addWidget(cmbUnit, 1, 1);
    ingredientGrid->addWidget(cmdUnitAdd, 1, 2);
    ingredientGrid->addWidget(lblIngredientsFilter, 2, 0);
    ingredientGrid->addWidget(txtFilter, 2, 1, 1, 2);
    ingredientGrid->addWidget(lstIngredient, 3, 0, 1, 3);
    ingredientGrid->addWidget(cmdIngredientAdd, 4, 2);
    auto* ingredientButtons = new QHBoxLayout;
    ingredientButtons->addStretch(1);
    ingredientButtons->addWidget(cmdIngredientOk);
    ingredientButtons->addWidget(cmdIngredientCancel);
    ingredientGrid->addLayout(ingredientButtons, 5, 0, 1, 3);
    ingredientGrid->setRowStretch(3, 1);
    ingredientGrid->setColumnStretch(1, 1);

    auto* body = new QHBoxLayout;
    body->addLayout(sections);
    body->addWidget(frmSection, 3);
    body->addWidget(frmIngredient, 2);

    auto* formButtons = new QHBoxLayout;
    formButtons->addStretch(1);
    formButtons->addWidget(cmdOK);
    formButtons->addWidget(cmdCancel);

    // on a screen too small for all of it the window scrolls
    auto* form = new QVBoxLayout(Controls::NewScrollingPage(this));
    form->addLayout(header);
    form->addLayout(body, 1);
    form->addLayout(formButtons);
    Controls::SetFirstSize(this, 14400, 8400);
}

void frmNew::ConnectHandlers() {
    using Controls::OnGotFocus;
    const auto click = [this](QPushButton* button, void (frmNew::*handler)()) {
        connect(button, &QPushButton::clicked, this, handler);
    };
    click(cmdGroupAdd, &frmNew::cmdGroupAdd_Click);
    click(cmdTypeAdd, &frmNew::cmdTypeAdd_Click);
    click(cmdSourceAdd, &frmNew::cmdSourceAdd_Click);
    click(cmdUnitAdd, &frmNew::cmdUnitAdd_Click);
    click(cmdIngredientAdd, &frmNew::cmdIngredientAdd_Click);
    click(cmdSectionAdd, &frmNew::cmdSectionAdd_Click);
    click(cmdSectionDelete, &frmNew::cmdSectionDelete_Click);
    click(cmdSectionUp, &frmNew::cmdSectionUp_Click);
    click(cmdSectionDown, &frmNew::cmdSectionDown_Click);
    click(cmdSectionSelect, &frmNew::cmdSectionSelect_Click);
    click(cmdSectionIngredientAdd, &frmNew::cmdSectionIngredientAdd_Click);
    click(cmdSectionIngredientEdit, &frmNew::cmdSectionIngredientEdit_Click);
    click(cmdSectionIngredientDelete, &frmNew::cmdSectionIngredientDelete_Click);
    click(cmdIngredientOk, &frmNew::cmdIngredientOk_Click);
    click(cmdIngredientCancel, &frmNew::cmdIngredientCancel_Click);
    click(cmdOK, &frmNew::cmdOK_Click);
    click(cmdCancel, &frmNew::cmdCancel_Click);

    connect(cmbGroup, &QComboBox::currentIndexChanged, this, [this] { cmbGroup_Click(); });
    connect(txtFilter, &QLineEdit::textChanged, this, [this] { txtFilter_Change(); });
    connect(txtSectionTitle, &QLineEdit::textChanged, this, [this] { txtSectionTitle_Change(); });
    // A selection made by the user (mouse or keyboard) counts as a click; selections made by
    // the code do not. The click is handled once the list has finished the mouse or key event
    // (which may select more than once), so that putting the selection back holds.
    connect(lstSections, &QTreeWidget::itemSelectionChanged, this, [this] {
        if (!m_selectingFromCode && !m_sectionClickPending) {
            m_sectionClickPending = true;
            QMetaObject::invokeMethod(
                this,
                [this] {
                    m_sectionClickPending = false;
                    lstSections_ItemClick();
                },
                Qt::QueuedConnection);
        }
    });
    connect(lstSectionIngredient, &QTreeWidget::itemDoubleClicked, this,
            [this] { lstSectionIngredient_DblClick(); });
    // The list buttons follow the selection of the ingredient lines.
    connect(lstSectionIngredient, &QTreeWidget::itemSelectionChanged, this, [this] {
        ErrorPath::Handle("frmNew:lstSectionIngredient_ItemClick->", [&] { EnableControls(); });
    });

    OnGotFocus(txtAmount, [this] { txtAmount_GotFocus(); });
    OnGotFocus(txtFilter, [this] { txtFilter_GotFocus(); });
    OnGotFocus(txtRecipeTitle, [this] { txtRecipeTitle_GotFocus(); });
    OnGotFocus(txtSectionTitle, [this] { txtSectionTitle_GotFocus(); });
}

int frmNew::exec() {
    m_unloadingFromCode = false;
    Form_Load();
    return QDialog::exec();
}

void frmNew::UnloadFromCode(int result) {
    m_unloadingFromCode = true;
    done(result);
}

// ---- lstSections and lstSectionIngredient ----------------------------------------------------

QTreeWidgetItem* frmNew::SelectedSection() const {
    const QList<QTreeWidgetItem*> selected = lstSections->selectedItems();
    return selected.isEmpty() ? nullptr : selected.first();
}

int frmNew::SectionIndex(const QTreeWidgetItem* entry) const {
    return entry ? lstSections->indexOfTopLevelItem(const_cast<QTreeWidgetItem*>(entry)) + 1 : 0;
}

QTreeWidgetItem* frmNew::SectionEntry(int index) const {
    return lstSections->topLevelItem(index - 1);
}

QTreeWidgetItem* frmNew::AddSectionEntry(const QString& text) {
    const bool first = lstSections->topLevelItemCount() == 0;
    auto* entry = new QTreeWidgetItem(lstSections, QStringList{text});
    if (first) {
        SelectSectionEntry(entry);
    }
    return entry;
}

void frmNew::SelectSectionEntry(QTreeWidgetItem* entry) {
    const bool before = m_selectingFromCode;
    m_selectingFromCode = true;
    lstSections->setCurrentItem(entry);
    if (entry) {
        entry->setSelected(true);
        lstSections->scrollToItem(entry);
    }
    m_selectingFromCode = before;
}

// An entry that leaves the list is no longer the entry on screen.
void frmNew::ClearSectionEntries() {
    const bool before = m_selectingFromCode;
    m_selectingFromCode = true;
    lstSections->clear();
    itmSection = nullptr;
    m_selectingFromCode = before;
}

void frmNew::RemoveLastSectionEntry() {
    const bool before = m_selectingFromCode;
    m_selectingFromCode = true;
    QTreeWidgetItem* last = lstSections->topLevelItem(lstSections->topLevelItemCount() - 1);
    if (last == itmSection) {
        itmSection = nullptr;
    }
    delete last;
    m_selectingFromCode = before;
}

QTreeWidgetItem* frmNew::SelectedIngredientLine() const {
    const QList<QTreeWidgetItem*> selected = lstSectionIngredient->selectedItems();
    return selected.isEmpty() ? nullptr : selected.first();
}

// A line that leaves the list is no longer the line being edited.
void frmNew::ClearIngredientLines() {
    lstSectionIngredient->clear();
    itmIngredient = nullptr;
}

void frmNew::KeepFraction(QTreeWidgetItem* entry, const QString& fraction) {
    entry->setData(0, Qt::UserRole, fraction.isEmpty() ? QVariant() : QVariant(fraction));
}

QString frmNew::KeptFraction(const QTreeWidgetItem* entry) {
    return entry->data(0, Qt::UserRole).toString();
}

// ---- the section on screen -------------------------------------------------------------------

void frmNew::DisplaySection(int intIndex) {
    ErrorPath::PassOn("frmNew:DisplaySection", [&] {
        if (intIndex != -1 && InBounds(arrSections, intIndex)) {
            const EditSection& section = arrSections[intIndex];
            txtSectionTitle->setText(section.Title);
            Controls::SetMultiLineText(txtInstructions, section.Instructions);
            ClearIngredientLines();
            for (int k = 1; k <= UBound(section.Ingredients); ++k) {
                const EditIngredient& line = section.Ingredients[k];
                auto* entry = new QTreeWidgetItem(
                    lstSectionIngredient,
                    QStringList{line.Fraction.isEmpty() ? QString::number(line.Amount)
                                                        : Amount::EditText(line.Fraction),
                                line.UnitName, line.IngredientName, QString::number(line.UnitID),
                                QString::number(line.IngredientID)});
                KeepFraction(entry, line.Fraction);
            }
        } else if (intIndex == -1) {
            txtSectionTitle->setText(QString());
            ClearIngredientLines();
            txtInstructions->clear();
        }
    });
}

void frmNew::StoreSection(int intIndex) {
    ErrorPath::PassOn("frmNew:StoreSection", [&] {
        if (!InBounds(arrSections, intIndex)) {
            return;
        }
        EditSection& section = arrSections[intIndex];
        section.Title = txtSectionTitle->text();
        section.Instructions = Controls::MultiLineText(txtInstructions);
        const int count = lstSectionIngredient->topLevelItemCount();
        EditSections::Redim(section.Ingredients, count);
        for (int k = 1; k <= count; ++k) {
            const QTreeWidgetItem* entry = lstSectionIngredient->topLevelItem(k - 1);
            EditIngredient& line = section.Ingredients[k];
            line.Fraction = KeptFraction(entry);
            line.Amount = line.Fraction.isEmpty() ? EditSections::ToInteger(entry->text(0)) : 0;
            line.UnitName = entry->text(1);
            line.IngredientName = entry->text(2);
            line.UnitID = EditSections::ToLong(entry->text(3));
            line.IngredientID = EditSections::ToLong(entry->text(4));
        }
    });
}

void frmNew::EnableControls() {
    ErrorPath::PassOn("frmNew:EnableControls", [&] {
        const bool section = SelectedSection() != nullptr;
        cmdSectionDelete->setEnabled(section);
        cmdSectionDown->setEnabled(section);
        cmdSectionUp->setEnabled(section);
        const bool line = SelectedIngredientLine() != nullptr;
        cmdSectionIngredientDelete->setEnabled(line);
        cmdSectionIngredientEdit->setEnabled(line);
    });
}
