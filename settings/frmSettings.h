// settings/: the settings dialog, which chooses the collection, and the conversion of a
// collection of the Windows program. May use: collection, core/database, core/registry,
// core/ui, core.
#pragma once

#include <QDialog>
#include <memory>

#include "core/database/modDatabase.h"

class QCloseEvent;
class QEvent;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QShowEvent;

// The settings dialog: the choice between a database file and a database server, the server,
// the database, the user name and password, and the path of the display file. "Potrdi" applies
// the values, reopens the connection and stores the values only when the connection works;
// "Prekliči" (and the close box) puts back the stored values and the previous connection, or
// ends the program when no connection worked when the dialog opened.
//
// Shown modally with exec(). The values are loaded each time the dialog is shown, so one
// instance may be shown again and again.
class frmSettings : public QDialog {
    Q_OBJECT

public:
    explicit frmSettings(QWidget* parent = nullptr);
    ~frmSettings() override;

    // Closes the dialog from the program's own code: no cancel runs.
    void done(int result) override;
    // Escape: the same as "Prekliči".
    void reject() override;

protected:
    void showEvent(QShowEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void CreateControls();

    void Form_Load();
    void optAccess_Click();
    void optSqlServer_Click();
    void cmdDatabase_Click();
    void cmdTempFilename_Click();
    void cmdOK_Click();
    void cmdCancel_Click();
    void Form_QueryUnload();
    void txtServer_GotFocus();
    void txtDatabase_GotFocus();
    void txtUsername_GotFocus();
    void txtPassword_GotFocus();
    void txtTempFilename_GotFocus();

    // Runs the GotFocus handler of a text box.
    void GotFocus(QLineEdit* box);
    // Closes the dialog from code (the program's own unload) with the result of exec().
    void Unload(int result);

    QGroupBox* fraDatabase = nullptr;
    QRadioButton* optAccess = nullptr;
    QRadioButton* optSqlServer = nullptr;
    QLabel* lblServer = nullptr;
    QLineEdit* txtServer = nullptr;
    QLabel* lblDatabase = nullptr;
    QLineEdit* txtDatabase = nullptr;
    QPushButton* cmdDatabase = nullptr;
    QLabel* lblUsername = nullptr;
    QLineEdit* txtUsername = nullptr;
    QLabel* lblPassword = nullptr;
    QLineEdit* txtPassword = nullptr;
    QLabel* lblTempFilename = nullptr;
    QLineEdit* txtTempFilename = nullptr;
    QPushButton* cmdTempFilename = nullptr;
    QPushButton* cmdOK = nullptr;
    QPushButton* cmdCancel = nullptr;

    // The connection in effect when the dialog was loaded; put back by "Prekliči".
    std::shared_ptr<modDatabase::DbConnection> previousConnection;

    bool m_loaded = false;     // Form_Load has run for the current showing
    bool m_unloading = false;  // the dialog is being closed by its own code
    // The text box that has just received the focus from a mouse press: that press must not
    // undo the selection of its text.
    QLineEdit* m_focusedByMouse = nullptr;
};
