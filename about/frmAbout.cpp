#include "about/frmAbout.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

#include "Version.h"
#include "core/AppError.h"
#include "core/modGeneral.h"
#include "core/startup/Startup.h"
#include "core/ui/WindowFit.h"

namespace {

constexpr int IconSize = 64;

// A label that shows a link: the desktop's link colour and the pointing hand.
void MakeLinkLook(QLabel* label) {
    QPalette palette = label->palette();
    palette.setColor(QPalette::WindowText, palette.color(QPalette::Link));
    label->setPalette(palette);
    label->setCursor(Qt::PointingHandCursor);
    label->setMouseTracking(true);
}

void SetUnderline(QLabel* label, bool underline) {
    if (label->font().underline() == underline) {
        return;
    }
    QFont font = label->font();
    font.setUnderline(underline);
    label->setFont(font);
}

// Strictly inside the label: the edges themselves count as outside.
bool StrictlyInside(const QWidget* label, double x, double y) {
    return x > 0 && x < label->width() && y > 0 && y < label->height();
}

QLabel* NewLabel(const QString& name, QWidget* parent) {
    auto* label = new QLabel(parent);
    label->setObjectName(name);
    return label;
}

}  // namespace

frmAbout::frmAbout(QWidget* parent) : QDialog(parent) {
    BuildControls();
    Form_Load();
    WindowFit::Keep(this);
}

QString frmAbout::ProgramIconFile() {
    return QDir(modGeneral::InstallationFolder())
        .absoluteFilePath(QStringLiteral("icons/morvena.svg"));
}

QIcon frmAbout::ProgramIcon() {
    const QString file = ProgramIconFile();
    if (QFileInfo(file).isFile()) {
        QIcon icon(file);
        if (!icon.pixmap(IconSize, IconSize).isNull()) {
            return icon;
        }
    }
    const QIcon themed = QIcon::fromTheme(QStringLiteral("morvena"));
    if (!themed.isNull()) {
        return themed;
    }
    return QApplication::style()->standardIcon(QStyle::SP_MessageBoxInformation);
}

void frmAbout::BuildControls() {
    setObjectName(QStringLiteral("frmAbout"));
    setModal(true);
    setMouseTracking(true);
    installEventFilter(this);

    picIcon = NewLabel(QStringLiteral("picIcon"), this);
    picIcon->setFrameShape(QFrame::StyledPanel);
    picIcon->setAlignment(Qt::AlignCenter);
    picIcon->setFixedSize(IconSize + 16, IconSize + 16);

    lblTitle = NewLabel(QStringLiteral("lblTitle"), this);
    QFont titleFont = lblTitle->font();
    titleFont.setBold(true);
    titleFont.setPointSizeF(titleFont.pointSizeF() * 1.6);
    lblTitle->setFont(titleFont);

    lblVersion = NewLabel(QStringLiteral("lblVersion"), this);
    lblLegal = NewLabel(QStringLiteral("lblLegal"), this);
    lblDisclaimer = NewLabel(QStringLiteral("lblDisclaimer"), this);
    lblDisclaimer->setWordWrap(true);

    lblWebLabel = NewLabel(QStringLiteral("lblWebLabel"), this);
    lblWeb = NewLabel(QStringLiteral("lblWeb"), this);
    lblEmailLabel = NewLabel(QStringLiteral("lblEmailLabel"), this);
    lblEmail = NewLabel(QStringLiteral("lblEmail"), this);
    // The other labels and the icon are part of the background: a move over them reaches the
    // dialog and clears the links' underline.
    for (QLabel* plain :
         {picIcon, lblTitle, lblVersion, lblLegal, lblDisclaimer, lblWebLabel, lblEmailLabel}) {
        plain->setAttribute(Qt::WA_TransparentForMouseEvents);
    }
    for (QLabel* link : {lblWeb, lblEmail}) {
        MakeLinkLook(link);
        link->installEventFilter(this);
    }

    cmdOK = new QPushButton(this);
    cmdOK->setObjectName(QStringLiteral("cmdOK"));
    cmdOK->setDefault(true);
    cmdOK->setAutoDefault(true);
    connect(cmdOK, &QPushButton::clicked, this, [this] { cmdOK_Click(); });

    auto* heading = new QVBoxLayout;
    heading->setSpacing(2);
    heading->addWidget(lblTitle);
    heading->addWidget(lblVersion);
    heading->addWidget(lblLegal);
    heading->addStretch();

    auto* top = new QHBoxLayout;
    top->setSpacing(16);
    top->addWidget(picIcon, 0, Qt::AlignTop);
    top->addLayout(heading, 1);

    auto* separator = new QFrame(this);
    separator->setFrameShape(QFrame::HLine);
    separator->setFrameShadow(QFrame::Sunken);

    auto* links = new QGridLayout;
    links->setHorizontalSpacing(12);
    links->addWidget(lblWebLabel, 0, 0);
    links->addWidget(lblWeb, 0, 1, Qt::AlignLeft);
    links->addWidget(lblEmailLabel, 1, 0);
    links->addWidget(lblEmail, 1, 1, Qt::AlignLeft);
    links->setColumnStretch(2, 1);

    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(cmdOK);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(18, 18, 18, 14);
    layout->setSpacing(10);
    layout->addLayout(top);
    layout->addWidget(separator);
    layout->addWidget(lblDisclaimer);
    layout->addLayout(links);
    layout->addSpacing(6);
    layout->addLayout(buttons);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    lblDisclaimer->setFixedWidth(380);
}

void frmAbout::Form_Load() {
    ErrorPath::Handle("frmAbout:Form_Load->", [&] {
        const QString title = QString::fromUtf8(Version::Title);
        setWindowTitle(QStringLiteral("Vizitka programa ") + title);
        lblVersion->setText(
            QStringLiteral("Različica %1.%2.%3 - %4")
                .arg(QString::number(Version::Major), QString::number(Version::Minor),
                     QString::number(Version::Revision), QString::fromUtf8(Version::ReleaseDate)));
        lblTitle->setText(title);
        lblLegal->setText(QString::fromUtf8(Version::LegalNotice));
        lblDisclaimer->setText(QStringLiteral(
            "Program je na voljo takšen, kakršen je, brez kakršnega koli jamstva. Avtor ne "
            "odgovarja za škodo, ki bi nastala zaradi njegove uporabe, zato redno shranjujte "
            "varnostne kopije svoje zbirke receptov."));
        lblWebLabel->setText(QStringLiteral("Splet:"));
        lblWeb->setText(QString::fromUtf8(Version::WebAddress));
        lblWeb->setToolTip(QStringLiteral("Odpri spletno stran programa"));
        lblEmailLabel->setText(QStringLiteral("E-pošta:"));
        lblEmail->setText(QString::fromUtf8(Version::EmailAddress));
        lblEmail->setToolTip(QStringLiteral("Napiši sporočilo avtorju"));
        cmdOK->setText(QStringLiteral("OK"));

        const QIcon icon = ProgramIcon();
        setWindowIcon(icon);
        picIcon->setPixmap(icon.pixmap(IconSize, IconSize));
    });
}

void frmAbout::cmdOK_Click() {
    ErrorPath::Handle("frmAbout:cmdOK_Click->", [&] { accept(); });
}

void frmAbout::lblWeb_Click() {
    ErrorPath::Handle("frmAbout:lblWeb_Click->", [&] {
        modGeneral::OpenRegisteredFile(QString::fromUtf8(Version::WebAddress));
        SetUnderline(lblWeb, false);
    });
}

void frmAbout::lblEmail_Click() {
    ErrorPath::Handle("frmAbout:lblEmail_Click->", [&] {
        modGeneral::OpenRegisteredFile(QStringLiteral("mailto:") +
                                       QString::fromUtf8(Version::EmailAddress));
        SetUnderline(lblEmail, false);
    });
}

void frmAbout::lblWeb_MouseMove(double x, double y) {
    ErrorPath::Handle("frmAbout:lblWeb_MouseMove->",
                      [&] { SetUnderline(lblWeb, StrictlyInside(lblWeb, x, y)); });
}

void frmAbout::lblEmail_MouseMove(double x, double y) {
    ErrorPath::Handle("frmAbout:lblEmail_MouseMove->",
                      [&] { SetUnderline(lblEmail, StrictlyInside(lblEmail, x, y)); });
}

void frmAbout::Form_MouseMove() {
    ErrorPath::Handle("frmAbout:Form_MouseMove->", [&] {
        SetUnderline(lblWeb, false);
        SetUnderline(lblEmail, false);
    });
}

bool frmAbout::eventFilter(QObject* watched, QEvent* event) {
    const bool isLink = watched == lblWeb || watched == lblEmail;
    switch (event->type()) {
        case QEvent::MouseMove: {
            const QPointF position = static_cast<QMouseEvent*>(event)->position();
            if (watched == lblWeb) {
                lblWeb_MouseMove(position.x(), position.y());
                return true;  // a move over a link does not reach the background
            }
            if (watched == lblEmail) {
                lblEmail_MouseMove(position.x(), position.y());
                return true;
            }
            if (watched == this) {
                Form_MouseMove();
            }
            break;
        }
        case QEvent::MouseButtonPress:
            if (isLink && static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton) {
                m_pressedLink = watched;
                return true;
            }
            break;
        case QEvent::MouseButtonRelease:
            if (isLink && static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton) {
                const bool click = m_pressedLink == watched &&
                                   static_cast<QWidget*>(watched)->rect().contains(
                                       static_cast<QMouseEvent*>(event)->position().toPoint());
                m_pressedLink = nullptr;
                if (click && watched == lblWeb) {
                    lblWeb_Click();
                } else if (click) {
                    lblEmail_Click();
                }
                return true;
            }
            break;
        case QEvent::Leave:
            if (isLink) {
                SetUnderline(static_cast<QLabel*>(watched), false);
            }
            break;
        default:
            break;
    }
    return QDialog::eventFilter(watched, event);
}

void frmAbout::keyPressEvent(QKeyEvent* event) {
    // Escape, like Enter, presses "OK": the button is both the default and the cancel button.
    if (event->key() == Qt::Key_Escape && event->modifiers() == Qt::NoModifier) {
        cmdOK->click();
        event->accept();
        return;
    }
    QDialog::keyPressEvent(event);
}
