#include "search/frmFind.h"

#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPushButton>
#include <QScopeGuard>
#include <QShortcut>
#include <QSignalBlocker>
#include <QTreeView>
#include <QTreeWidget>
#include <QVBoxLayout>

#include "core/AppError.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "core/ui/ColumnFit.h"
#include "core/ui/Controls.h"
#include "core/ui/KeepSelection.h"
#include "search/ResultsModel.h"

namespace {

// Value lists count with 16-bit numbers.
constexpr int MaxValues = 32767;

// The selected entry of a list view, or none.
QTreeWidgetItem* SelectedEntry(const QTreeWidget* list) {
    const QList<QTreeWidgetItem*> selected = list->selectedItems();
    return selected.isEmpty() ? nullptr : selected.first();
}

// The offered values of a criterion: its values in the database that contain the filter text.
QString AvailableQuery(int criterion, const QString& filter) {
    const auto like = [&](const char* column, const char* table) {
        return QStringLiteral("SELECT DISTINCT [%1] FROM [%2] WHERE [%1] LIKE '%")
                   .arg(QLatin1String(column), QLatin1String(table)) +
               filter + QStringLiteral("%' ORDER BY [%1];").arg(QLatin1String(column));
    };
    switch (criterion) {
        case SearchQuery::Group:
            return like("name", "Group");
        case SearchQuery::Type:
            return like("name", "Type");
        case SearchQuery::RecipeTitle:
            return like("title", "Recipe");
        case SearchQuery::SectionTitle:
            return like("title", "Section");
        case SearchQuery::Ingredient:
            return like("name", "Ingredient");
        case SearchQuery::Instructions:
            // Never a row: method texts can only be typed.
            return QStringLiteral("SELECT DISTINCT [name] FROM [Group] WHERE [groupID] = -1;");
        default:
            return QString();
    }
}

int CriterionOfRow(const QTreeWidgetItem* row) {
    return row ? SearchQuery::CriterionOf(modGeneral::ItemKey(row)) : -1;
}

}  // namespace

frmFind::frmFind(QWidget* parent) : QWidget(parent, Qt::Window) {
    setObjectName(QStringLiteral("frmFind"));
    setWindowTitle(QStringLiteral("Iskanje"));
    setAttribute(Qt::WA_DeleteOnClose);
    using namespace Controls;

    frmCriteria = new QGroupBox(QStringLiteral("Kriteriji"), this);
    frmCriteria->setObjectName(QStringLiteral("frmCriteria"));
    lstCriteria = NewListView(frmCriteria, QStringLiteral("lstCriteria"), {1300, 7150});
    lstCriteria->setAllColumnsShowFocus(true);
    KeepSelection::Apply(lstCriteria);
    lblCondition = NewLabel(frmCriteria, QStringLiteral("lblCondition"),
                            QStringLiteral("Rezultati naj zadoščajo:"));
    cmbCondition = new QComboBox(frmCriteria);
    cmbCondition->setObjectName(QStringLiteral("cmbCondition"));
    cmbCondition->addItems({QStringLiteral("vsem pogojem"), QStringLiteral("vsaj enemu pogoju!")});

    frmField = new QGroupBox(this);
    frmField->setObjectName(QStringLiteral("frmField"));
    lblField = NewLabel(frmField, QStringLiteral("lblField"), QStringLiteral("Išči:"));
    cmbField = new QComboBox(frmField);
    cmbField->setObjectName(QStringLiteral("cmbField"));
    cmbField->addItems({QStringLiteral("vse vrednosti"), QStringLiteral("vsaj eno vrednost!")});
    lblFilter = NewLabel(frmField, QStringLiteral("lblFilter"), QStringLiteral("Filter:"));
    txtFilter = NewTextBox(frmField, QStringLiteral("txtFilter"));
    lblAvailable =
        NewLabel(frmField, QStringLiteral("lblAvailable"), QStringLiteral("Nabor vrednosti:"));
    lstAvailable = NewListView(frmField, QStringLiteral("lstAvailable"), {3900});
    lstAvailable->setUniformRowHeights(true);
    KeepSelection::Apply(lstAvailable);
    lblSelected =
        NewLabel(frmField, QStringLiteral("lblSelected"), QStringLiteral("Iskane vrednosti:"));
    lstSelected = NewListView(frmField, QStringLiteral("lstSelected"), {3900});
    KeepSelection::Apply(lstSelected);
    cmdAdd = NewButton(frmField, QStringLiteral("cmdAdd"), QStringLiteral("Dodaj"));
    cmdDelete = NewButton(frmField, QStringLiteral("cmdDelete"), QStringLiteral("Odstrani"));
    cmdFind = NewButton(frmField, QStringLiteral("cmdFind"), QStringLiteral("Išči"));

    frmResults = new QGroupBox(QStringLiteral("Rezultati"), this);
    frmResults->setObjectName(QStringLiteral("frmResults"));
    results = new ResultsModel({QStringLiteral("Naslov recepta"), QStringLiteral("Št."),
                                QStringLiteral("Skupina"), QStringLiteral("Podskupina")},
                               this);
    lstResults =
        NewReportView(frmResults, QStringLiteral("lstResults"), results, {3770, 500, 2000, 2000});
    // recipe numbers of up to six digits show whole
    ColumnFit::AtLeast(lstResults, 1, Controls::FitPixels(lstResults, QStringLiteral("999999")));
    lstResults->setUniformRowHeights(true);
    lstResults->setAllColumnsShowFocus(true);
    KeepSelection::Apply(lstResults);
    lstResults->setSortingEnabled(false);
    lstResults->header()->setSortIndicatorShown(false);
    lstResults->header()->setSectionsClickable(true);
    lstResults->header()->setSectionsMovable(false);
    // Closes the window; not shown (Escape presses it).
    cmdCancel = NewButton(this, QStringLiteral("cmdCancel"), QStringLiteral("Command1"));
    cmdCancel->setAutoDefault(false);
    cmdCancel->hide();

    // Layout: the criteria at the top, the values of the chosen criterion below them, the
    // results at the bottom taking what height is left.
    auto* criteriaLayout = new QVBoxLayout(frmCriteria);
    criteriaLayout->addWidget(lstCriteria);
    auto* conditionRow = new QHBoxLayout;
    conditionRow->addWidget(lblCondition);
    conditionRow->addWidget(cmbCondition);
    conditionRow->addStretch(1);
    criteriaLayout->addLayout(conditionRow);

    auto* fieldLayout = new QGridLayout(frmField);
    fieldLayout->addWidget(lblField, 0, 0);
    fieldLayout->addWidget(cmbField, 0, 1, Qt::AlignLeft);
    fieldLayout->addWidget(lblFilter, 1, 0);
    fieldLayout->addWidget(txtFilter, 1, 1);
    fieldLayout->addWidget(cmdAdd, 1, 2);
    fieldLayout->addWidget(lblAvailable, 2, 0, 1, 2);
    fieldLayout->addWidget(lblSelected, 2, 2, 1, 2);
    fieldLayout->addWidget(lstAvailable, 3, 0, 1, 2);
    fieldLayout->addWidget(lstSelected, 3, 2, 1, 2);
    auto* fieldButtons = new QHBoxLayout;
    fieldButtons->addWidget(cmdDelete);
    fieldButtons->addStretch(1);
    fieldButtons->addWidget(cmdFind);
    fieldLayout->addLayout(fieldButtons, 4, 2, 1, 2);
    fieldLayout->setColumnStretch(1, 1);
    fieldLayout->setColumnStretch(3, 1);

    auto* resultsLayout = new QVBoxLayout(frmResults);
    resultsLayout->addWidget(lstResults);

    // on a screen too small for all of it the window scrolls
    auto* layout = new QVBoxLayout(Controls::NewScrollingPage(this));
    layout->addWidget(frmCriteria);
    layout->addWidget(frmField, 1);
    layout->addWidget(frmResults, 1);
    Controls::SetFirstSize(this, 9600, 11700);
    setTabOrder(lstCriteria, cmbCondition);
    setTabOrder(cmbCondition, cmbField);
    setTabOrder(cmbField, txtFilter);
    setTabOrder(txtFilter, cmdAdd);
    setTabOrder(cmdAdd, lstAvailable);
    setTabOrder(lstAvailable, lstSelected);
    setTabOrder(lstSelected, cmdDelete);
    setTabOrder(cmdDelete, cmdFind);
    setTabOrder(cmdFind, lstResults);

    Form_Load();
    // All six criteria show; the lists of values and results show at least four rows (on a
    // small screen the window scrolls instead).
    const int row = lstCriteria->sizeHintForRow(0) > 0 ? lstCriteria->sizeHintForRow(0)
                                                       : fontMetrics().height() + 4;
    const int frame = 2 * lstCriteria->frameWidth();
    lstCriteria->setFixedHeight(row * 6 + frame);
    lstAvailable->setMinimumHeight(row * 4 + frame);
    lstSelected->setMinimumHeight(row * 4 + frame);
    lstResults->setMinimumHeight(lstResults->header()->sizeHint().height() + row * 4 + frame);

    connect(lstCriteria, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem* current) {
        if (current) {
            lstCriteria_ItemClick();
        }
    });
    lstAvailable->viewport()->installEventFilter(this);
    lstResults->viewport()->installEventFilter(this);
    connect(cmdAdd, &QPushButton::clicked, this, &frmFind::cmdAdd_Click);
    connect(cmdDelete, &QPushButton::clicked, this, &frmFind::cmdDelete_Click);
    connect(cmdFind, &QPushButton::clicked, this, &frmFind::cmdFind_Click);
    connect(cmdCancel, &QPushButton::clicked, this, &frmFind::cmdCancel_Click);
    connect(cmbField, &QComboBox::currentIndexChanged, this, &frmFind::cmbField_Click);
    connect(txtFilter, &QLineEdit::textChanged, this, &frmFind::txtFilter_Change);
    Controls::OnGotFocus(txtFilter, [this] { txtFilter_GotFocus(); });
    connect(lstResults->header(), &QHeaderView::sectionClicked, this,
            [this](int logicalIndex) { lstResults_ColumnClick(logicalIndex + 1); });
    auto* escape = new QShortcut(QKeySequence(Qt::Key_Escape), this);
    connect(escape, &QShortcut::activated, cmdCancel, &QPushButton::click);
}

// A double click anywhere in the offered values or the results is the list's double click; the
// handler works on the selected entry (on empty space, the one selected before).
bool frmFind::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::MouseButtonDblClick &&
        static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton) {
        if (watched == lstAvailable->viewport()) {
            lstAvailable_DblClick();
        } else if (watched == lstResults->viewport()) {
            lstResults_DblClick();
        }
    }
    return QWidget::eventFilter(watched, event);
}

void frmFind::Form_Load() {
    ErrorPath::Handle("frmFind:Form_Load->", [&] {
        // The criteria part.
        for (int criterion = 0; criterion < SearchQuery::CriterionCount; ++criterion) {
            auto* row = new QTreeWidgetItem(lstCriteria, {SearchQuery::Label(criterion)});
            row->setData(0, modGeneral::KeyRole, SearchQuery::Key(criterion));
        }
        cmbCondition->setCurrentIndex(0);
        {
            const QSignalBlocker quiet(cmbField);
            cmbField->setCurrentIndex(0);
        }
        criterionValues = {};
        criterionMatch = {};
        currentCriterion = nullptr;
        {
            const QSignalBlocker quiet(lstCriteria);
            lstCriteria->setCurrentItem(lstCriteria->topLevelItem(0));
        }
        lstCriteria_ItemClick();
        // The result part: the columns are made with the list; the first search is by title.
        sortColumn = 1;
    });
}

void frmFind::FillAvailable() {
    ErrorPath::PassOn("frmFind:FillAvailable", [&] {
        const int criterion = CriterionOfRow(lstCriteria->currentItem());
        if (criterion < 0) {
            return;
        }
        Recordset rs = modDatabase::GetRecordset(AvailableQuery(criterion, txtFilter->text()));
        lstAvailable->clear();
        QList<QTreeWidgetItem*> entries;
        entries.reserve(rs.RecordCount());
        for (; !rs.Eof(); rs.MoveNext()) {
            entries << new QTreeWidgetItem(QStringList{rs.Fields(0).toString()});
        }
        lstAvailable->addTopLevelItems(entries);
        rs.Close();
    });
}

void frmFind::StoreSelected() {
    ErrorPath::PassOn("frmFind:StoreSelected", [&] {
        const int criterion = CriterionOfRow(currentCriterion);
        if (criterion < 0) {
            return;
        }
        criterionMatch[criterion] = static_cast<qint16>(cmbField->currentIndex());
        criterionValues[criterion].clear();
        const int count = lstSelected->topLevelItemCount();
        if (count > MaxValues) {
            ErrorPath::Raise(6, QStringLiteral("Overflow"));
        }
        for (int i = 0; i < count; ++i) {
            criterionValues[criterion] << lstSelected->topLevelItem(i)->text(0);
        }
    });
}

void frmFind::InitializeSelected() {
    ErrorPath::PassOn("frmFind:InitializeSelected", [&] {
        const int criterion = CriterionOfRow(lstCriteria->currentItem());
        if (criterion < 0) {
            return;
        }
        lstSelected->clear();
        QList<QTreeWidgetItem*> entries;
        for (const QString& value : criterionValues[criterion]) {
            entries << new QTreeWidgetItem(QStringList{value});
        }
        lstSelected->addTopLevelItems(entries);
        {
            const QSignalBlocker quiet(cmbField);
            cmbField->setCurrentIndex(criterionMatch[criterion]);
        }
        // Setting the choice counts as choosing it, also when it stays the same.
        cmbField_Click();
    });
}

void frmFind::DisplaySearchString() {
    ErrorPath::PassOn("frmFind:DisplaySearchString", [&] {
        const int index = cmbField->currentIndex();
        const QString separator = index == 0   ? QStringLiteral("' in '")
                                  : index == 1 ? QStringLiteral("' ali '")
                                               : QString();
        QString text;
        const int count = lstSelected->topLevelItemCount();
        if (count > 0) {
            text = QStringLiteral("'");
            for (int i = 0; i < count; ++i) {
                if (i > 0) {
                    text += separator;
                }
                text += lstSelected->topLevelItem(i)->text(0);
            }
            text += QLatin1Char('\'');
        }
        if (QTreeWidgetItem* row = lstCriteria->currentItem()) {
            row->setText(1, text);
        }
    });
}

void frmFind::lstCriteria_ItemClick() {
    ErrorPath::Handle("frmFind:lstCriteria_ItemClick->", [&] {
        StoreSelected();
        QTreeWidgetItem* row = lstCriteria->currentItem();
        frmField->setTitle(row ? row->text(0) : QString());
        currentCriterion = row;
        FillAvailable();
        InitializeSelected();
    });
}

void frmFind::lstAvailable_DblClick() {
    ErrorPath::Handle("frmFind:lstAvailable_DblClick->", [&] {
        if (const QTreeWidgetItem* entry = SelectedEntry(lstAvailable)) {
            new QTreeWidgetItem(lstSelected, {entry->text(0)});
            DisplaySearchString();
        }
    });
}

void frmFind::cmdAdd_Click() {
    ErrorPath::Handle("frmFind:cmdAdd_Click->", [&] {
        // Empty values and duplicates too: the text goes in as it is.
        new QTreeWidgetItem(lstSelected, {txtFilter->text()});
        DisplaySearchString();
    });
}

void frmFind::cmdDelete_Click() {
    ErrorPath::Handle("frmFind:cmdDelete_Click->", [&] {
        if (QTreeWidgetItem* entry = SelectedEntry(lstSelected)) {
            delete entry;
            if (lstSelected->topLevelItemCount() > 0) {
                QTreeWidgetItem* first = lstSelected->topLevelItem(0);
                lstSelected->setCurrentItem(first);
                first->setSelected(true);
                lstSelected->scrollToItem(first);
            }
        }
        DisplaySearchString();
    });
}

void frmFind::cmbField_Click() {
    ErrorPath::Handle("frmFind:cmbField_Click->", [&] { DisplaySearchString(); });
}

void frmFind::txtFilter_Change() {
    ErrorPath::Handle("frmFind:txtFilter_Change->", [&] {
        const QString text = txtFilter->text();
        const QString clean = modGeneral::RemoveQuotes(text);
        if (clean != text) {
            // The cursor stays where it was, less the apostrophes before it. Changing the text
            // runs this handler again, which refills the offered values.
            const int cursor = txtFilter->cursorPosition();
            const int removedBefore = static_cast<int>(text.left(cursor).count(QLatin1Char('\'')));
            txtFilter->setText(clean);
            txtFilter->setCursorPosition(cursor - removedBefore);
            return;
        }
        FillAvailable();
    });
}

void frmFind::txtFilter_GotFocus() {
    ErrorPath::Handle("frmFind:txtFilter_GotFocus->", [&] { Controls::SelectAll(txtFilter); });
}

void frmFind::cmdFind_Click() {
    setCursor(Qt::WaitCursor);
    try {
        StoreSelected();
        SearchQuery::Criteria criteria;
        criteria.values = criterionValues;
        criteria.match = criterionMatch;
        const QString query = SearchQuery::BuildQuery(
            criteria, static_cast<qint16>(cmbCondition->currentIndex()), sortColumn);
        lastQuery = query;
        Recordset rs = modDatabase::GetRecordset(query);
        results->SetRows({});
        // Entries are shown in one go at the end, or up to the failing row on an error.
        std::vector<ResultsModel::Row> entries;
        entries.reserve(static_cast<size_t>(rs.RecordCount()));
        const auto show = qScopeGuard([&] { results->SetRows(std::move(entries)); });
        for (; !rs.Eof(); rs.MoveNext()) {
            // An entry exists once its title is read; a later field that fails leaves it.
            entries.push_back({rs.Text(QStringLiteral("Title"))});
            ResultsModel::Row& entry = entries.back();
            entry[1] = rs.Text(QStringLiteral("recipeID"));
            entry[2] = rs.Text(QStringLiteral("groupName"));
            entry[3] = rs.Text(QStringLiteral("TypeName"));
        }
        rs.Close();
        unsetCursor();
    } catch (...) {
        unsetCursor();
        ErrorPath::Report(QStringLiteral("frmFind:cmdFind_Click->"));
    }
}

void frmFind::lstResults_ColumnClick(int column) {
    ErrorPath::Handle("frmFind:lstResults_ColumnClick->", [&] {
        if (column != qAbs(static_cast<int>(sortColumn))) {
            sortColumn = static_cast<qint16>(column);
        } else {
            sortColumn = static_cast<qint16>(-sortColumn);
        }
        // Always from the database with the new order; the list is never sorted here.
        cmdFind_Click();
    });
}

void frmFind::lstResults_DblClick() {
    ErrorPath::Handle("frmFind:lstResults_DblClick->", [&] {
        const QModelIndexList selected = lstResults->selectionModel()->selectedRows();
        if (selected.isEmpty()) {
            return;
        }
        Q_EMIT RecipeChosen(QStringLiteral("R") + results->At(selected.first().row())[1]);
    });
}

void frmFind::cmdCancel_Click() {
    ErrorPath::Handle("frmFind:cmdCancel_Click->", [&] { close(); });
}
