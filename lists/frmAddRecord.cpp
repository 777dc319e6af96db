#include "lists/frmAddRecord.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScopeGuard>
#include <optional>

#include "core/AppError.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "core/ui/Controls.h"
#include "core/ui/UiServices.h"

namespace {

struct Kind {
    const char* caption;
    const char* table;
    const char* keyField;
};

// The kinds by rtMode 1 to 5.
const Kind Kinds[] = {
    {"Vnos skupine receptov", "[Group]", "groupID"},
    {"Vnos podskupine receptov", "[Type]", "typeID"},
    {"Vnos vira receptov", "[Source]", "sourceID"},
    {"Vnos merske enote", "[Unit]", "unitID"},
    {"Vnos sestavine", "[Ingredient]", "ingredientID"},
};

}  // namespace

frmAddRecord::frmAddRecord(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmAddRecord"));
    using namespace Controls;
    lblName = NewLabel(this, QStringLiteral("lblName"), QStringLiteral("Naziv:"));
    txtName = NewTextBox(this, QStringLiteral("txtName"), 50);
    lblDescription = NewLabel(this, QStringLiteral("lblDescription"), QStringLiteral("Opis:"));
    txtDescription = NewMultiLineTextBox(this, QStringLiteral("txtDescription"));
    cmdOK = NewButton(this, QStringLiteral("cmdOK"), QStringLiteral("Potrdi"));
    cmdCancel = NewButton(this, QStringLiteral("cmdCancel"), QStringLiteral("Prekliči"));
    cmdOK->setDefault(true);
    cmdCancel->setAutoDefault(false);

    auto* grid = new QGridLayout(this);
    grid->addWidget(lblName, 0, 0);
    grid->addWidget(txtName, 0, 1);
    grid->addWidget(lblDescription, 1, 0, Qt::AlignTop);
    grid->addWidget(txtDescription, 1, 1);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(cmdOK);
    buttons->addWidget(cmdCancel);
    grid->addLayout(buttons, 2, 0, 1, 2);
    Controls::SetFirstSize(this, 5400, 3600);
    setTabOrder(txtName, txtDescription);
    setTabOrder(txtDescription, cmdOK);
    setTabOrder(cmdOK, cmdCancel);

    connect(cmdOK, &QPushButton::clicked, this, &frmAddRecord::cmdOK_Click);
    connect(cmdCancel, &QPushButton::clicked, this, &frmAddRecord::cmdCancel_Click);
    OnGotFocus(txtName, [this] { txtName_GotFocus(); });
    OnGotFocus(txtDescription, [this] { txtDescription_GotFocus(); });
    txtDescription->installEventFilter(this);
}

int frmAddRecord::exec() {
    Form_Load();
    return QDialog::exec();
}

void frmAddRecord::Form_Load() {
    ErrorPath::Handle("frmAddRecord:Form_Load->", [&] {
        txtName->clear();
        txtDescription->clear();
        txtName->setFocus();
        const bool known = rtMode >= rtGroup && rtMode <= rtIngredient;
        const Kind kind = known ? Kinds[rtMode - 1] : Kind{"", "", ""};
        setWindowTitle(QString::fromUtf8(kind.caption));
        m_table = QString::fromLatin1(kind.table);
        m_keyField = QString::fromLatin1(kind.keyField);
        m_loadingStatement =
            known ? QStringLiteral("SELECT * FROM %1 WHERE %2 = ").arg(m_table, m_keyField)
                  : QString();
        m_extraCondition =
            rtMode == rtType ? QStringLiteral(" AND groupID = %1").arg(lngGroupID) : QString();
        m_loadedRow = RowVersion();
        if (lngID > 0) {
            Recordset rs = modDatabase::GetRecordset(m_loadingStatement + QString::number(lngID));
            m_loadedRow = RowVersion(rs);
            txtName->setText(rs.Text(QStringLiteral("Name")));
            Controls::SetMultiLineText(
                txtDescription, modDatabase::NullToStr(rs.Fields(QStringLiteral("Description"))));
            rs.Close();
        }
    });
    UiServices::SetMousePointer(UiServices::vbDefault);
}

void frmAddRecord::cmdOK_Click() {
    ErrorPath::Handle("frmAddRecord:cmdOK_Click->", [&] {
        setCursor(Qt::WaitCursor);
        const auto normalPointer = qScopeGuard([this] { unsetCursor(); });
        const QString name = modGeneral::TrimBlanks(txtName->text());
        const QString description = modGeneral::TrimBlanks(Controls::MultiLineText(txtDescription));
        if (name.isEmpty()) {
            UiServices::MsgBox(QStringLiteral("Vnesite naziv!"),
                               UiServices::vbOKOnly + UiServices::vbInformation);
            return;
        }
        Recordset duplicates = modDatabase::GetRecordset(
            QStringLiteral("SELECT * FROM ") + m_table + QStringLiteral("WHERE name = '%1' AND ") +
                m_keyField + QStringLiteral(" <> ") + QString::number(lngID) + m_extraCondition +
                QStringLiteral(";"),
            name);
        if (!duplicates.Eof()) {
            UiServices::MsgBox(QStringLiteral("Naziv že obstaja!"),
                               UiServices::vbOKOnly + UiServices::vbInformation);
            return;
        }
        duplicates.Close();
        // What someone else changed since the dialog loaded the record is overwritten only on
        // Yes: asked with nothing locked, and asked again when the row changes once more.
        RowVersion overwritable = m_loadedRow;
        while (const std::optional<RowVersion> found =
                   SaveRecord(overwritable, name, description)) {
            if (UiServices::MsgBox(QStringLiteral("Vnos je medtem spremenil nekdo drug. Ali ga "
                                                  "želite kljub temu shraniti?"),
                                   UiServices::vbYesNo + UiServices::vbQuestion) !=
                UiServices::vbYes) {
                return;
            }
            overwritable = *found;
        }
        accept();
    });
}

std::optional<RowVersion> frmAddRecord::SaveRecord(const RowVersion& overwritable,
                                                   const QString& name,
                                                   const QString& description) {
    modDatabase::Transaction transaction;
    if (lngID > 0) {
        transaction.LockRow(m_table, m_keyField, lngID);
    }
    Recordset rs = modDatabase::GetRecordset(m_loadingStatement + QString::number(lngID));
    if (rs.Eof()) {
        rs.AddNew();
    } else if (const RowVersion now(rs); now != overwritable) {
        return now;  // the transaction ends unwritten
    }
    rs.SetField(QStringLiteral("Name"), name);
    rs.SetField(QStringLiteral("Description"), modDatabase::StrToNull(description));
    if (rtMode == rtType) {
        rs.SetField(QStringLiteral("groupID"), lngGroupID);
    }
    rs.Update();
    const qint32 saved = rs.Long(rs.FieldName(0));
    rs.Close();
    transaction.Commit();
    modGeneral::lngLastID = saved;
    return std::nullopt;
}

void frmAddRecord::cmdCancel_Click() {
    ErrorPath::Handle("frmAddRecord:cmdCancel_Click->", [&] {
        modGeneral::lngLastID = -1;
        QDialog::reject();
    });
}

// The close box and Escape count as "Prekliči".
void frmAddRecord::reject() { cmdCancel_Click(); }

// Enter in the description box presses "Potrdi" as everywhere else; Ctrl+Enter starts a new line.
bool frmAddRecord::eventFilter(QObject* watched, QEvent* event) {
    if (watched == txtDescription && event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        if (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) {
            if (key->modifiers() & Qt::ControlModifier) {
                txtDescription->insertPlainText(QStringLiteral("\n"));
            } else {
                cmdOK->click();
            }
            return true;
        }
    }
    return QDialog::eventFilter(watched, event);
}

void frmAddRecord::txtName_GotFocus() {
    ErrorPath::Handle("frmAddRecord:txtName_GotFocus->", [&] { Controls::SelectAll(txtName); });
}

void frmAddRecord::txtDescription_GotFocus() {
    ErrorPath::Handle("frmAddRecord:txtDescription_GotFocus->",
                      [&] { Controls::SelectAll(txtDescription); });
}
