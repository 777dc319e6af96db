// about/: the about box.
// May use: core/startup, core/registry, core/ui, core.
#pragma once

#include <QDialog>
#include <QIcon>
#include <QString>

class QLabel;
class QPushButton;

// The about box: the program's name, version and legal notice, and two labels that behave like
// links, one to the author's web page and one to the author's e-mail address. Shown modally
// from the main window's help menu ("Vizitka...").
class frmAbout : public QDialog {
    Q_OBJECT

public:
    explicit frmAbout(QWidget* parent = nullptr);

    // The program icon: the file "icons/morvena.svg" in the installation folder, else the
    // desktop theme's "morvena", else a neutral icon of the style. Never null.
    static QIcon ProgramIcon();
    // The program icon's file in the installation folder (it may not exist).
    static QString ProgramIconFile();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void BuildControls();
    void Form_Load();
    void cmdOK_Click();
    void lblWeb_Click();
    void lblEmail_Click();
    void lblWeb_MouseMove(double x, double y);
    void lblEmail_MouseMove(double x, double y);
    void Form_MouseMove();

    QLabel* picIcon = nullptr;
    QLabel* lblTitle = nullptr;
    QLabel* lblVersion = nullptr;
    QLabel* lblLegal = nullptr;
    QLabel* lblDisclaimer = nullptr;
    QLabel* lblWebLabel = nullptr;
    QLabel* lblWeb = nullptr;
    QLabel* lblEmailLabel = nullptr;
    QLabel* lblEmail = nullptr;
    QPushButton* cmdOK = nullptr;

    // The link label on which the left mouse button went down (a click needs press and
    // release on the same label).
    QObject* m_pressedLink = nullptr;
};
