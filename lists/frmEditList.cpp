#include "lists/frmEditList.h"

#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScopeGuard>
#include <QSignalBlocker>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <optional>

#include "core/AppError.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "core/ui/Controls.h"
#include "core/ui/KeepSelection.h"
#include "core/ui/UiServices.h"
#include "lists/frmAddRecord.h"
#include "lists/frmChangeLink.h"

namespace {

struct ListKind {
    const char* caption;
    const char* table;
    const char* keyField;
    const char* relTable;
    const char* relFieldID;
};

// The lists by rtMode 3 to 5.
const ListKind ListKinds[] = {
    {"Urejanje seznama virov", "[Source]", "sourceID", "[Recipe]", "recipeID"},
    {"Urejanje seznama enot", "[Unit]", "unitID", "[SectionIngredient]", "sectionIngredientID"},
    {"Urejanje seznama sestavin", "[Ingredient]", "ingredientID", "[SectionIngredient]",
     "sectionIngredientID"},
};

constexpr qint32 FirstListMode = frmAddRecord::rtSource;
constexpr qint32 LastListMode = frmAddRecord::rtIngredient;

// The record key in a list entry's key ("I12" gives 12).
qint32 KeyNumber(const QString& key) { return key.mid(1).toInt(); }

QString ListKey(qint32 id) { return QStringLiteral("I") + QString::number(id); }

// A list entry keeps its record's row as the list read it.
constexpr int VersionRole = modGeneral::KeyRole + 1;

}  // namespace

frmEditList::frmEditList(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmEditList"));
    using namespace Controls;
    lblFilter = NewLabel(this, QStringLiteral("lblFilter"), QStringLiteral("Filter:"));
    txtFilter = NewTextBox(this, QStringLiteral("txtFilter"), 50);
    lstRecords = NewListView(this, QStringLiteral("lstRecords"), {3500});
    lstRecords->setSelectionMode(QAbstractItemView::SingleSelection);
    lstRecords->setSelectionBehavior(QAbstractItemView::SelectRows);
    lstRecords->setEditTriggers(QAbstractItemView::NoEditTriggers);
    KeepSelection::Apply(lstRecords);
    cmdAdd = NewButton(this, QStringLiteral("cmdAdd"), QStringLiteral("Dodaj..."));
    cmdEdit = NewButton(this, QStringLiteral("cmdEdit"), QStringLiteral("Uredi..."));
    cmdDelete = NewButton(this, QStringLiteral("cmdDelete"), QStringLiteral("Izbriši"));
    cmdCancel = NewButton(this, QStringLiteral("cmdCancel"), QStringLiteral("Zapri"));
    // Enter in the filter box presses no button.
    for (QPushButton* button : {cmdAdd, cmdEdit, cmdDelete, cmdCancel}) {
        button->setAutoDefault(false);
        button->setDefault(false);
    }

    auto* grid = new QGridLayout(this);
    grid->addWidget(lblFilter, 0, 0);
    grid->addWidget(txtFilter, 0, 1);
    grid->addWidget(lstRecords, 1, 0, 1, 2);
    auto* buttons = new QVBoxLayout;
    buttons->addWidget(cmdAdd);
    buttons->addWidget(cmdEdit);
    buttons->addWidget(cmdDelete);
    buttons->addStretch(1);
    buttons->addWidget(cmdCancel);
    grid->addLayout(buttons, 1, 2);
    grid->setColumnStretch(1, 1);
    grid->setRowStretch(1, 1);
    Controls::SetFirstSize(this, 5700, 5400);
    setTabOrder(txtFilter, lstRecords);
    setTabOrder(lstRecords, cmdAdd);
    setTabOrder(cmdAdd, cmdEdit);
    setTabOrder(cmdEdit, cmdDelete);
    setTabOrder(cmdDelete, cmdCancel);

    connect(txtFilter, &QLineEdit::textChanged, this, &frmEditList::txtFilter_Change);
    OnGotFocus(txtFilter, [this] { txtFilter_GotFocus(); });
    connect(lstRecords, &QTreeWidget::itemSelectionChanged, this,
            &frmEditList::lstRecords_SelectionChanged);
    connect(lstRecords, &QTreeWidget::itemDoubleClicked, this, &frmEditList::lstRecords_DblClick);
    connect(cmdAdd, &QPushButton::clicked, this, &frmEditList::cmdAdd_Click);
    connect(cmdEdit, &QPushButton::clicked, this, &frmEditList::cmdEdit_Click);
    connect(cmdDelete, &QPushButton::clicked, this, &frmEditList::cmdDelete_Click);
    connect(cmdCancel, &QPushButton::clicked, this, &frmEditList::cmdCancel_Click);
}

int frmEditList::exec() {
    Form_Load();
    return QDialog::exec();
}

QTreeWidgetItem* frmEditList::SelectedItem() const {
    const QList<QTreeWidgetItem*> selected = lstRecords->selectedItems();
    return selected.isEmpty() ? nullptr : selected.first();
}

void frmEditList::Form_Load() {
    ErrorPath::Handle("frmEditList:Form_Load->", [&] {
        const bool known = rtMode >= FirstListMode && rtMode <= LastListMode;
        const ListKind kind =
            known ? ListKinds[rtMode - FirstListMode] : ListKind{"", "", "", "", ""};
        setWindowTitle(QString::fromUtf8(kind.caption));
        m_table = QString::fromLatin1(kind.table);
        m_keyField = QString::fromLatin1(kind.keyField);
        m_relTable = QString::fromLatin1(kind.relTable);
        m_relFieldID = QString::fromLatin1(kind.relFieldID);
        {
            const QSignalBlocker quiet(txtFilter);
            txtFilter->clear();
        }
        txtFilter->setFocus();
        RefreshList();
    });
    UiServices::SetMousePointer(UiServices::vbDefault);
}

void frmEditList::RefreshList() {
    ErrorPath::PassOn("frmEditList:RefreshList", [&] {
        setCursor(Qt::WaitCursor);
        const auto normalPointer = qScopeGuard([this] { unsetCursor(); });
        lstRecords->clear();
        Recordset rs =
            modDatabase::GetRecordset(QStringLiteral("SELECT * FROM ") + m_table +
                                          QStringLiteral(" WHERE name LIKE '%%1%' ORDER BY name;"),
                                      txtFilter->text());
        QList<QTreeWidgetItem*> items;
        auto unlisted = qScopeGuard([&items] { qDeleteAll(items); });
        for (; !rs.Eof(); rs.MoveNext()) {
            auto* item = new QTreeWidgetItem;
            item->setData(0, modGeneral::KeyRole, ListKey(rs.Long(rs.FieldName(0))));
            item->setText(0, rs.Text(QStringLiteral("Name")));
            item->setData(0, VersionRole, QVariant::fromValue(RowVersion(rs)));
            items << item;
        }
        rs.Close();
        lstRecords->addTopLevelItems(items);
        unlisted.dismiss();
        EnableControls();
    });
}

void frmEditList::EnableControls() {
    ErrorPath::PassOn("frmEditList:EnableControls", [&] {
        const bool selected = SelectedItem() != nullptr;
        cmdAdd->setEnabled(true);
        cmdEdit->setEnabled(selected);
        cmdDelete->setEnabled(selected);
    });
}

void frmEditList::txtFilter_Change() {
    ErrorPath::Handle("frmEditList:txtFilterChange->", [&] {
        const QString typed = txtFilter->text();
        const QString filter = modGeneral::RemoveQuotes(typed);
        if (filter != typed) {
            // The cursor stays after the character it followed.
            const int cursor = txtFilter->cursorPosition();
            const int dropped = static_cast<int>(typed.left(cursor).count(QLatin1Char('\'')));
            const QSignalBlocker quiet(txtFilter);
            txtFilter->setText(filter);
            txtFilter->setCursorPosition(cursor - dropped);
        }
        const QString key = modGeneral::ItemKey(SelectedItem());
        RefreshList();
        if (!key.isEmpty()) {
            modGeneral::SelectListItem(lstRecords, key);
        }
    });
}

void frmEditList::txtFilter_GotFocus() {
    ErrorPath::Handle("frmEditList:txtFilter_GotFocus->", [&] { Controls::SelectAll(txtFilter); });
}

// Edit and Delete follow the selection.
void frmEditList::lstRecords_SelectionChanged() {
    ErrorPath::Handle("frmEditList:lstRecords_SelectionChanged->", [&] { EnableControls(); });
}

void frmEditList::lstRecords_DblClick() {
    ErrorPath::Handle("frmEditList:lstRecords_DblClick->", [&] { cmdEdit_Click(); });
}

void frmEditList::cmdAdd_Click() {
    ErrorPath::Handle("frmEditList:cmdAdd_Click->", [&] {
        UiServices::SetMousePointer(UiServices::vbHourglass);
        const auto normalPointer =
            qScopeGuard([] { UiServices::SetMousePointer(UiServices::vbDefault); });
        const QString selectedBefore = modGeneral::ItemKey(SelectedItem());
        {
            frmAddRecord entry(this);
            entry.rtMode = rtMode;
            entry.lngID = -1;
            entry.exec();
        }
        const QString key =
            modGeneral::lngLastID != -1 ? ListKey(modGeneral::lngLastID) : selectedBefore;
        RefreshList();
        modGeneral::SelectListItem(lstRecords, key);
    });
}

void frmEditList::cmdEdit_Click() {
    ErrorPath::Handle("frmEditList:cmdEdit_Click->", [&] {
        QTreeWidgetItem* item = SelectedItem();
        if (!item) {
            return;
        }
        UiServices::SetMousePointer(UiServices::vbHourglass);
        const auto normalPointer =
            qScopeGuard([] { UiServices::SetMousePointer(UiServices::vbDefault); });
        {
            frmAddRecord entry(this);
            entry.rtMode = rtMode;
            entry.lngID = KeyNumber(modGeneral::ItemKey(item));
            entry.exec();
        }
        const QString key = modGeneral::ItemKey(SelectedItem());
        RefreshList();
        modGeneral::SelectListItem(lstRecords, key);
    });
}

void frmEditList::cmdDelete_Click() {
    ErrorPath::Handle("frmEditList:cmdDelete_Click->", [&] {
        setCursor(Qt::WaitCursor);
        const auto normalPointer = qScopeGuard([this] { unsetCursor(); });
        QTreeWidgetItem* item = SelectedItem();
        if (!item) {
            return;
        }
        const QString key = modGeneral::ItemKey(item);
        const qint32 id = KeyNumber(key);
        const RowVersion shown = item->data(0, VersionRole).value<RowVersion>();
        if (UiServices::MsgBox(QStringLiteral("Ali res želite izbrisati zapis?"),
                               UiServices::vbYesNo + UiServices::vbQuestion) != UiServices::vbYes) {
            return;
        }
        Recordset references = modDatabase::GetRecordset(
            QStringLiteral("SELECT ") + m_relFieldID + QStringLiteral(" FROM ") + m_relTable +
            QStringLiteral(" WHERE ") + m_keyField + QStringLiteral(" = ") + QString::number(id) +
            QStringLiteral(";"));
        const int count = references.RecordCount();
        bool deleteRecord = true;
        if (count > 0) {
            if (count > 32767) {
                ErrorPath::Raise(6, QStringLiteral("Overflow"));  // the count is a 16-bit integer
            }
            frmChangeLink replacement(this);
            replacement.intCount = static_cast<qint16>(count);
            replacement.lngID = id;
            replacement.strTable = m_table;
            replacement.strFieldID = m_keyField;
            replacement.strRelTable = m_relTable;
            replacement.strRelFieldID = m_relFieldID;
            UiServices::SetMousePointer(UiServices::vbHourglass);
            replacement.exec();
            deleteRecord = replacement.booDelete;
        }
        references.Close();
        if (deleteRecord) {
            // A record that someone else changed since the list showed it is deleted only on
            // Yes: asked with nothing locked, and asked again when it changes once more. On No
            // it stays, listed as it is now.
            RowVersion overwritable = shown;
            while (const std::optional<RowVersion> found = DeleteUnlessChanged(id, overwritable)) {
                if (UiServices::MsgBox(QStringLiteral("Zapis je medtem spremenil nekdo drug. Ali "
                                                      "ga želite kljub temu izbrisati?"),
                                       UiServices::vbYesNo + UiServices::vbQuestion) !=
                    UiServices::vbYes) {
                    RefreshList();
                    modGeneral::SelectListItem(lstRecords, key);
                    return;
                }
                overwritable = *found;
            }
        }
        RefreshList();
    });
}

std::optional<RowVersion> frmEditList::DeleteUnlessChanged(qint32 id,
                                                           const RowVersion& overwritable) {
    modDatabase::Transaction transaction;
    transaction.LockRow(m_table, m_keyField, id);
    Recordset rs = modDatabase::GetRecordset(
        QStringLiteral("SELECT * FROM ") + m_table + QStringLiteral(" WHERE ") + m_keyField +
        QStringLiteral(" = ") + QString::number(id) + QStringLiteral(";"));
    if (const RowVersion now(rs); now.Exists() && now != overwritable) {
        return now;  // the transaction ends unwritten
    }
    rs.Delete();  // a record that is gone already fails here: "No current record."
    rs.Update();
    rs.Close();
    transaction.Commit();
    return std::nullopt;
}

void frmEditList::cmdCancel_Click() {
    ErrorPath::Handle("frmEditList:cmdCancel_Click->", [&] { QDialog::reject(); });
}

// The close box and Escape count as the cancel button.
void frmEditList::reject() { cmdCancel_Click(); }
