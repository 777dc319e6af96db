#include "settings/frmSettings.h"

#include <QCloseEvent>
#include <QFocusEvent>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QShowEvent>
#include <QVBoxLayout>
#include <iterator>
#include <optional>

#include "core/AppError.h"
#include "core/modGeneral.h"
#include "core/registry/modRegistry.h"
#include "core/ui/Controls.h"
#include "core/ui/UiServices.h"
#include "core/ui/WindowFit.h"
#include "settings/WindowsCollection.h"

namespace {

using Controls::NewButton;
using Controls::NewLabel;
using Controls::NewTextBox;
using Controls::Pixels;

// The database box beside its browse button, and alone (database server: no browse button).
constexpr int DatabaseWidthWithBrowse = Pixels(2205);
constexpr int DatabaseWidthAlone = Pixels(2565);
// A browse button and its gap to its box fill the difference, so that both rows end together.
constexpr int BrowseGap = 3;
constexpr int BrowseButtonSize = DatabaseWidthAlone - DatabaseWidthWithBrowse - BrowseGap;

QPushButton* NewBrowseButton(const QString& name, QWidget* parent) {
    QPushButton* button = NewButton(parent, name, QStringLiteral("..."));
    button->setFixedSize(BrowseButtonSize, BrowseButtonSize);
    button->setAutoDefault(false);
    return button;
}

// A text box with its browse button beside it.
QHBoxLayout* BrowseRow(QLineEdit* box, QPushButton* button) {
    auto* row = new QHBoxLayout;
    row->setSpacing(BrowseGap);
    row->addWidget(box);
    row->addWidget(button);
    row->addStretch(1);
    return row;
}

// Selects an option button; its click handler runs also when it was selected already.
void Select(QRadioButton* option, void (frmSettings::*handler)(), frmSettings* form) {
    if (option->isChecked()) {
        (form->*handler)();
    } else {
        option->setChecked(true);  // runs the handler through the toggled signal
    }
}

}  // namespace

frmSettings::frmSettings(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmSettings"));
    setWindowTitle(QStringLiteral("Nastavitve"));
    CreateControls();
    WindowFit::Keep(this);
}

frmSettings::~frmSettings() = default;

void frmSettings::CreateControls() {
    fraDatabase = new QGroupBox(QStringLiteral("Zbirka podatkov"), this);
    fraDatabase->setObjectName(QStringLiteral("fraDatabase"));
    optAccess = new QRadioButton(QStringLiteral("Access"), fraDatabase);
    optAccess->setObjectName(QStringLiteral("optAccess"));
    optSqlServer = new QRadioButton(QStringLiteral("SQL Server"), fraDatabase);
    optSqlServer->setObjectName(QStringLiteral("optSqlServer"));
    auto* options = new QHBoxLayout(fraDatabase);
    options->addWidget(optAccess);
    options->addWidget(optSqlServer);
    options->addStretch(1);

    lblServer = NewLabel(this, QStringLiteral("lblServer"), QStringLiteral("Strežnik:"));
    txtServer = NewTextBox(this, QStringLiteral("txtServer"));
    lblDatabase = NewLabel(this, QStringLiteral("lblDatabase"), QStringLiteral("Zbirka podatkov:"));
    txtDatabase = NewTextBox(this, QStringLiteral("txtDatabase"));
    cmdDatabase = NewBrowseButton(QStringLiteral("cmdDatabase"), this);
    lblUsername = NewLabel(this, QStringLiteral("lblUsername"), QStringLiteral("Uporabniško ime:"));
    txtUsername = NewTextBox(this, QStringLiteral("txtUsername"));
    lblPassword = NewLabel(this, QStringLiteral("lblPassword"), QStringLiteral("Geslo:"));
    txtPassword = NewTextBox(this, QStringLiteral("txtPassword"));
    txtPassword->setEchoMode(QLineEdit::Password);
    lblTempFilename =
        NewLabel(this, QStringLiteral("lblTempFilename"), QStringLiteral("Začasna datoteka:"));
    txtTempFilename = NewTextBox(this, QStringLiteral("txtTempFilename"));
    cmdTempFilename = NewBrowseButton(QStringLiteral("cmdTempFilename"), this);
    cmdOK = NewButton(this, QStringLiteral("cmdOK"), QStringLiteral("Potrdi"));
    cmdOK->setDefault(true);
    cmdCancel = NewButton(this, QStringLiteral("cmdCancel"), QStringLiteral("Prekliči"));

    for (QLineEdit* box : {txtServer, txtUsername, txtPassword}) {
        box->setFixedWidth(DatabaseWidthAlone);
    }
    txtDatabase->setFixedWidth(DatabaseWidthWithBrowse);
    txtTempFilename->setFixedWidth(DatabaseWidthWithBrowse);
    lblServer->setBuddy(txtServer);
    lblDatabase->setBuddy(txtDatabase);
    lblUsername->setBuddy(txtUsername);
    lblPassword->setBuddy(txtPassword);
    lblTempFilename->setBuddy(txtTempFilename);

    auto* form = new QGridLayout;
    form->addWidget(lblServer, 0, 0);
    form->addWidget(txtServer, 0, 1, Qt::AlignLeft);
    form->addWidget(lblDatabase, 1, 0);
    form->addLayout(BrowseRow(txtDatabase, cmdDatabase), 1, 1);
    form->addWidget(lblUsername, 2, 0);
    form->addWidget(txtUsername, 2, 1, Qt::AlignLeft);
    form->addWidget(lblPassword, 3, 0);
    form->addWidget(txtPassword, 3, 1, Qt::AlignLeft);
    form->addWidget(lblTempFilename, 4, 0);
    form->addLayout(BrowseRow(txtTempFilename, cmdTempFilename), 4, 1);

    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(cmdOK);
    buttons->addWidget(cmdCancel);

    auto* main = new QVBoxLayout(this);
    main->setSizeConstraint(QLayout::SetFixedSize);
    main->addWidget(fraDatabase);
    main->addLayout(form);
    main->addLayout(buttons);

    // The tab order follows the form from top to bottom.
    QWidget* order[] = {optAccess,       optSqlServer, txtServer,   txtDatabase,
                        cmdDatabase,     txtUsername,  txtPassword, txtTempFilename,
                        cmdTempFilename, cmdOK,        cmdCancel};
    for (size_t i = 1; i < std::size(order); ++i) {
        setTabOrder(order[i - 1], order[i]);
    }

    connect(optAccess, &QRadioButton::toggled, this, [this](bool checked) {
        if (checked) {
            optAccess_Click();
        }
    });
    connect(optSqlServer, &QRadioButton::toggled, this, [this](bool checked) {
        if (checked) {
            optSqlServer_Click();
        }
    });
    connect(cmdDatabase, &QPushButton::clicked, this, [this] { cmdDatabase_Click(); });
    connect(cmdTempFilename, &QPushButton::clicked, this, [this] { cmdTempFilename_Click(); });
    connect(cmdOK, &QPushButton::clicked, this, [this] { cmdOK_Click(); });
    connect(cmdCancel, &QPushButton::clicked, this, [this] { cmdCancel_Click(); });
    for (QLineEdit* box : {txtServer, txtDatabase, txtUsername, txtPassword, txtTempFilename}) {
        box->installEventFilter(this);
    }
}

void frmSettings::showEvent(QShowEvent* event) {
    if (!event->spontaneous() && !m_loaded) {
        m_loaded = true;
        Form_Load();
    }
    QDialog::showEvent(event);
}

void frmSettings::closeEvent(QCloseEvent* event) {
    if (!m_unloading) {
        Form_QueryUnload();
    }
    // The query-unload handler does not keep the dialog: it unloads unless the handler did.
    if (isVisible()) {
        Unload(QDialog::Rejected);
    }
    event->accept();
}

void frmSettings::done(int result) {
    m_unloading = true;
    QDialog::done(result);
    m_unloading = false;
    m_loaded = false;
    m_focusedByMouse = nullptr;
    // The dialog holds no connection while it is not shown.
    previousConnection.reset();
}

void frmSettings::reject() { cmdCancel_Click(); }

void frmSettings::Unload(int result) { done(result); }

bool frmSettings::eventFilter(QObject* watched, QEvent* event) {
    auto* box = qobject_cast<QLineEdit*>(watched);
    if (box && box->parent() == this) {
        switch (event->type()) {
            case QEvent::FocusIn: {
                // Focus that comes back with the window or from a popup menu is no new focus.
                const Qt::FocusReason reason = static_cast<QFocusEvent*>(event)->reason();
                if (reason != Qt::ActiveWindowFocusReason && reason != Qt::PopupFocusReason) {
                    GotFocus(box);
                    m_focusedByMouse = reason == Qt::MouseFocusReason ? box : nullptr;
                }
                break;
            }
            case QEvent::FocusOut:
                m_focusedByMouse = nullptr;
                break;
            case QEvent::MouseButtonPress:
                if (box == m_focusedByMouse) {
                    // The press that gave the focus would put the cursor where it was pressed.
                    m_focusedByMouse = nullptr;
                    return true;
                }
                break;
            default:
                break;
        }
    }
    return QDialog::eventFilter(watched, event);
}

void frmSettings::GotFocus(QLineEdit* box) {
    if (box == txtServer) {
        txtServer_GotFocus();
    } else if (box == txtDatabase) {
        txtDatabase_GotFocus();
    } else if (box == txtUsername) {
        txtUsername_GotFocus();
    } else if (box == txtPassword) {
        txtPassword_GotFocus();
    } else if (box == txtTempFilename) {
        txtTempFilename_GotFocus();
    }
}

void frmSettings::Form_Load() {
    ErrorPath::Handle("frmSettings:Form_Load->", [&] {
        using namespace modGeneral;
        previousConnection = modDatabase::Connection;
        if (DatabaseType != modDatabase::ServerDatabase) {
            Select(optAccess, &frmSettings::optAccess_Click, this);
        } else {
            Select(optSqlServer, &frmSettings::optSqlServer_Click, this);
        }
        txtServer->setText(ServerName);
        txtDatabase->setText(DatabaseName);
        txtUsername->setText(Username);
        txtPassword->setText(Password);
        txtTempFilename->setText(TempFilename);
        UiServices::SetMousePointer(UiServices::vbDefault);
    });
}

void frmSettings::optAccess_Click() {
    ErrorPath::Handle("frmSettings:optAccess_Click->", [&] {
        lblServer->setVisible(false);
        txtServer->setVisible(false);
        txtDatabase->setFixedWidth(DatabaseWidthWithBrowse);
        cmdDatabase->setVisible(true);
    });
}

void frmSettings::optSqlServer_Click() {
    ErrorPath::Handle("frmSettings:optSqlServer_Click->", [&] {
        lblServer->setVisible(true);
        txtServer->setVisible(true);
        // The database box is wider when no browse button stands beside it.
        txtDatabase->setFixedWidth(DatabaseWidthAlone);
        cmdDatabase->setVisible(false);
    });
}

void frmSettings::cmdDatabase_Click() {
    try {
        UiServices::FileDialogRequest request;
        request.parent = this;
        request.save = false;
        request.title = QStringLiteral("Izberite zbirko podatkov");
        request.defaultExtension = QStringLiteral(".mdb");
        request.filter = QStringLiteral("Zbirka podatkov (*.mdb)|*.mdb");
        request.mustExist = true;  // the file must exist; no read-only box
        request.initialFile = txtDatabase->text();
        const std::optional<QString> chosen = UiServices::ShowFileDialog(request);
        if (chosen) {
            txtDatabase->setText(*chosen);
        }
    } catch (...) {
        // Like a cancelled dialog: the handler ends silently and the text stays.
    }
}

void frmSettings::cmdTempFilename_Click() {
    try {
        UiServices::FileDialogRequest request;
        request.parent = this;
        request.save = true;
        request.title = QStringLiteral("Izberite začasno datoteko");
        request.defaultExtension = QStringLiteral(".html");
        request.filter = QStringLiteral("Dokument HTML (*.html)|*.html");
        request.askOverwrite = true;  // ask before overwriting; no read-only box
        request.initialFile = txtTempFilename->text();
        const std::optional<QString> chosen = UiServices::ShowFileDialog(request);
        if (chosen) {
            txtTempFilename->setText(*chosen);
        }
    } catch (...) {
        // Like a cancelled dialog: the handler ends silently and the text stays.
    }
}

void frmSettings::cmdOK_Click() {
    ErrorPath::Handle("frmSettings:cmdOK_Click->", [&] {
        using namespace modGeneral;
        using namespace modRegistry;
        // The values become the program's before the connection is tried.
        if (optAccess->isChecked()) {
            DatabaseType = modDatabase::FileDatabase;
            ServerName.clear();
        } else {
            DatabaseType = modDatabase::ServerDatabase;
            ServerName = txtServer->text();
        }
        DatabaseName = txtDatabase->text();
        Username = txtUsername->text();
        Password = txtPassword->text();
        TempFilename = txtTempFilename->text();

        modDatabase::OpenConnection();

        const auto& connection = modDatabase::Connection;
        const bool open = connection && connection->State() == modDatabase::adStateOpen;
        const WindowsCollection::Outcome conversion =
            open ? WindowsCollection::Outcome::NotAccess : WindowsCollection::Offer(this);
        if (conversion == WindowsCollection::Outcome::Failed) {
            return;
        }
        if (open || conversion == WindowsCollection::Outcome::Converted) {
            SetRegistryString(ProgramKey, QStringLiteral("ServerName"), ServerName, true);
            // Written with a lower-case n; the store matches value names without regard to
            // case, so this is the value read as "DatabaseName".
            SetRegistryString(ProgramKey, QStringLiteral("Databasename"), DatabaseName, true);
            SetRegistryString(ProgramKey, QStringLiteral("TempFilename"), TempFilename, true);
            SetRegistryString(ProgramKey, QStringLiteral("Username"), Username, true);
            SetRegistryString(ProgramKey, QStringLiteral("Password"), Password, true);
            SetRegistryLong(ProgramKey, QStringLiteral("DatabaseType"), DatabaseType, true);
            Unload(QDialog::Accepted);
        } else {
            UiServices::MsgBox(
                QStringLiteral("Povezava z zbirko podatkov ni bila vzpostavljena.\r\n\r\n") +
                    (connection ? connection->LastError() : QString()),
                UiServices::vbOKOnly + UiServices::vbInformation);
        }
    });
}

void frmSettings::cmdCancel_Click() {
    ErrorPath::Handle("frmSettings:cmdCancel_Click->", [&] {
        using namespace modGeneral;
        using namespace modRegistry;
        // Opened because no connection worked: there is nothing to go back to.
        if (!previousConnection || previousConnection->State() != modDatabase::adStateOpen) {
            UiServices::EndProgram();
            return;
        }
        ServerName = GetRegistryString(ProgramKey, QStringLiteral("ServerName"), QString(), true);
        DatabaseName = GetRegistryString(ProgramKey, QStringLiteral("DatabaseName"),
                                         QStringLiteral("Recipes.mdb"), true);
        TempFilename = UsableTempFilename(
            GetRegistryString(ProgramKey, QStringLiteral("TempFilename"), QString(), true));
        Username = GetRegistryString(ProgramKey, QStringLiteral("Username"), QString(), true);
        Password = GetRegistryString(ProgramKey, QStringLiteral("Password"), QString(), true);
        DatabaseType = GetRegistryLong(ProgramKey, QStringLiteral("DatabaseType"),
                                       modDatabase::FileDatabase, true);
        modDatabase::Connection = previousConnection;
        Unload(QDialog::Rejected);
    });
}

void frmSettings::Form_QueryUnload() {
    // Called only when the dialog is closed other than by its own code (the close box).
    ErrorPath::Handle("frmSettings:Form_QueryUnload->", [&] { cmdCancel_Click(); });
}

void frmSettings::txtServer_GotFocus() {
    ErrorPath::Handle("frmSettings:txtServer_GotFocus->", [&] { txtServer->selectAll(); });
}

void frmSettings::txtDatabase_GotFocus() {
    ErrorPath::Handle("frmSettings:txtDatabase_GotFocus->", [&] { txtDatabase->selectAll(); });
}

void frmSettings::txtUsername_GotFocus() {
    ErrorPath::Handle("frmSettings:txtUsername_GotFocus->", [&] { txtUsername->selectAll(); });
}

void frmSettings::txtPassword_GotFocus() {
    ErrorPath::Handle("frmSettings:txtPassword_GotFocus->", [&] { txtPassword->selectAll(); });
}

void frmSettings::txtTempFilename_GotFocus() {
    ErrorPath::Handle("frmSettings:txtTempFilename_GotFocus->",
                      [&] { txtTempFilename->selectAll(); });
}
