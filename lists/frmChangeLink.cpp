#include "lists/frmChangeLink.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "core/AppError.h"
#include "core/database/modDatabase.h"
#include "core/ui/Controls.h"
#include "core/ui/UiServices.h"

frmChangeLink::frmChangeLink(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmChangeLink"));
    setWindowTitle(QStringLiteral("Zapis v uporabi"));
    using namespace Controls;
    lblRecordInUse = NewLabel(this, QStringLiteral("lblRecordInUse"), QString());
    lblRecordInUse->setWordWrap(true);
    cmbReplacement = new QComboBox(this);
    cmbReplacement->setObjectName(QStringLiteral("cmbReplacement"));
    cmbReplacement->setEditable(false);
    cmbReplacement->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    cmdOK = NewButton(this, QStringLiteral("cmdOK"), QStringLiteral("Potrdi"));
    cmdCancel = NewButton(this, QStringLiteral("cmdCancel"), QStringLiteral("Prekliči"));
    cmdOK->setDefault(true);
    cmdCancel->setAutoDefault(false);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(lblRecordInUse);
    layout->addWidget(cmbReplacement);
    layout->addStretch(1);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(cmdOK);
    buttons->addWidget(cmdCancel);
    layout->addLayout(buttons);
    Controls::SetFirstSize(this, 5400, 2400);
    setTabOrder(cmbReplacement, cmdOK);
    setTabOrder(cmdOK, cmdCancel);

    connect(cmdOK, &QPushButton::clicked, this, &frmChangeLink::cmdOK_Click);
    connect(cmdCancel, &QPushButton::clicked, this, &frmChangeLink::cmdCancel_Click);
}

int frmChangeLink::exec() {
    Form_Load();
    return QDialog::exec();
}

void frmChangeLink::Form_Load() {
    ErrorPath::Handle("frmChangeLink:Form_Load->", [&] {
        lblRecordInUse->setText(
            QStringLiteral("Izbrani zapis je uporabljen v ") + QString::number(intCount) +
            QStringLiteral(" nadrejenih zapisih. Izberite zapis, s katerim želite izbrisanega v "
                           "teh nadrejenih zapisih nadomestiti."));
        FillCmbReplacement();
        cmbReplacement->setFocus();
    });
    UiServices::SetMousePointer(UiServices::vbDefault);
}

void frmChangeLink::FillCmbReplacement() {
    ErrorPath::PassOn("frmChangeLink:FillCmbReplacement", [&] {
        cmbReplacement->clear();
        Recordset rs = modDatabase::GetRecordset(
            QStringLiteral("SELECT * FROM ") + strTable + QStringLiteral(" WHERE ") + strFieldID +
            QStringLiteral(" <> ") + QString::number(lngID) + QStringLiteral(" ORDER BY name;"));
        for (; !rs.Eof(); rs.MoveNext()) {
            cmbReplacement->addItem(rs.Text(QStringLiteral("Name")), rs.Long(strFieldID));
        }
        rs.Close();
        cmbReplacement->setCurrentIndex(-1);
    });
}

void frmChangeLink::cmdOK_Click() {
    ErrorPath::Handle("frmChangeLink:cmdOK_Click->", [&] {
        if (cmbReplacement->currentIndex() < 0) {
            UiServices::MsgBox(QStringLiteral("Izbrati morate nadomestni zapis."),
                               UiServices::vbOKOnly + UiServices::vbInformation);
            return;
        }
        const qint32 replacement = cmbReplacement->currentData().toInt();
        Recordset rs = modDatabase::GetRecordset(QStringLiteral("SELECT * FROM ") + strRelTable +
                                                 QStringLiteral(" WHERE ") + strFieldID +
                                                 QStringLiteral(" = ") + QString::number(lngID));
        for (; !rs.Eof(); rs.MoveNext()) {
            rs.SetField(strFieldID, replacement);
            rs.Update();
        }
        rs.Close();
        booDelete = true;
        accept();
    });
}

void frmChangeLink::cmdCancel_Click() {
    ErrorPath::Handle("frmChangeLink:cmdCancel_Click->", [&] {
        booDelete = false;
        QDialog::reject();
    });
}

// The close box and Escape count as "Prekliči".
void frmChangeLink::reject() { cmdCancel_Click(); }
