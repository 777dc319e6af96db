// The main window's layout and its persistence: the size, state and splitter position read at
// load and stored as they change, the splitter dragged with the mouse, and the leaving asked for.
#include <QCloseEvent>
#include <QFrame>
#include <QLayout>
#include <QMouseEvent>
#include <QTextBrowser>
#include <QTreeView>
#include <algorithm>

#include "Version.h"
#include "core/AppError.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "core/registry/modRegistry.h"
#include "core/ui/UiServices.h"
#include "core/ui/WindowFit.h"
#include "main/frmMain.h"

using modGeneral::TwipsPerPixel;
using UiServices::MsgBox;
using UiServices::SetMousePointer;

namespace {

constexpr int MarginTwips = 120;
constexpr int MinimumSplitterTwips = 500;
constexpr int SplitterWidthTwips = 60;

int Twips(int pixels) { return pixels * TwipsPerPixel; }
int Pixels(int twips) { return twips / TwipsPerPixel; }

qint32 ReadLong(const char* name, qint32 defaultValue) {
    return modRegistry::GetRegistryLong(modRegistry::ProgramKey, QString::fromLatin1(name),
                                        defaultValue, true);
}
void StoreLong(const char* name, qint32 value) {
    modRegistry::SetRegistryLong(modRegistry::ProgramKey, QString::fromLatin1(name), value, true);
}

}  // namespace

void frmMain::Form_Load() {
    const bool loaded = ErrorPath::Handle("frmMain:Form_Load->", [&] {
        setWindowTitle(QStringLiteral("%1 %2.%3.%4 - %5")
                           .arg(QString::fromUtf8(Version::Title))
                           .arg(Version::Major)
                           .arg(Version::Minor)
                           .arg(Version::Revision)
                           .arg(QString::fromUtf8(Version::LegalNotice)));
        const int width = ReadLong("WindowWidth", 8000);
        const int height = ReadLong("WindowHeight", 6000);
        const int splitter = ReadLong("SplitterPosition", 2000);
        const int state = ReadLong("WindowState", 0);
        Navigate(BlankPage);
        RefreshTreeView();
        EnableControls();
        tvRecipes->setFocus();
        resize(Pixels(width), Pixels(height));
        WindowFit::Keep(this);  // a size stored on a larger screen shrinks to this one
        layout()->activate();   // the inner size of the new window size, also before it shows
        MoveSplitter(splitter);
        setWindowState(state == 2   ? Qt::WindowMaximized
                       : state == 1 ? Qt::WindowMinimized
                                    : Qt::WindowNoState);
    });
    if (!loaded) {
        SetMousePointer(UiServices::vbDefault);
    }
}

void frmMain::MoveSplitter(int wantedTwips) {
    ErrorPath::PassOn("frmMain:MoveSplitter", [&] {
        const int limit = Twips(centralWidget()->width()) - MarginTwips - SplitterWidthTwips;
        if (wantedTwips < MinimumSplitterTwips) {
            m_splitterLeft = MinimumSplitterTwips;
        } else if (wantedTwips > limit) {
            m_splitterLeft = limit;
        } else {
            m_splitterLeft = wantedTwips;
        }
        LayoutControls();
        StoreLong("SplitterPosition", m_splitterLeft);
    });
}

void frmMain::LayoutControls() {
    const int margin = Pixels(MarginTwips);
    const int height = std::max(0, centralWidget()->height() - 2 * margin);
    const int splitterLeft = Pixels(m_splitterLeft);
    const int splitterWidth = Pixels(SplitterWidthTwips);
    tvRecipes->setGeometry(margin, margin, std::max(0, splitterLeft - margin), height);
    imgSplitter->setGeometry(splitterLeft, margin, splitterWidth, height);
    const int browserLeft = splitterLeft + splitterWidth;
    webDisplay->setGeometry(browserLeft, margin,
                            std::max(0, centralWidget()->width() - margin - browserLeft), height);
}

void frmMain::resizeEvent(QResizeEvent* event) {
    QMainWindow::resizeEvent(event);
    Form_Resize();
}

void frmMain::Form_Resize() {
    ErrorPath::Handle("frmMain:Form_Resize->", [&] {
        const int limit = Twips(centralWidget()->width()) - MarginTwips - SplitterWidthTwips;
        m_splitterLeft = std::max(MinimumSplitterTwips, std::min(m_splitterLeft, limit));
        LayoutControls();
        if (!(windowState() & (Qt::WindowMinimized | Qt::WindowMaximized | Qt::WindowFullScreen))) {
            StoreLong("WindowWidth", Twips(width()));
            StoreLong("WindowHeight", Twips(height()));
        }
    });
}

bool frmMain::eventFilter(QObject* watched, QEvent* event) {
    if (watched == imgSplitter) {
        if (event->type() == QEvent::MouseButtonPress) {
            ErrorPath::Handle("frmMain:imgSplitter_MouseDown->", [&] { m_dragging = true; });
        } else if (event->type() == QEvent::MouseMove) {
            const auto* mouse = static_cast<QMouseEvent*>(event);
            ErrorPath::Handle("frmMain:imgSplitter_MouseMove->", [&] {
                if (m_dragging) {
                    MoveSplitter(m_splitterLeft + Twips(qRound(mouse->position().x())));
                }
            });
        } else if (event->type() == QEvent::MouseButtonRelease) {
            ErrorPath::Handle("frmMain:imgSplitter_MouseUp->", [&] { m_dragging = false; });
        }
    } else if (watched == tvRecipes->viewport() && event->type() == QEvent::MouseButtonPress &&
               static_cast<QMouseEvent*>(event)->button() == Qt::RightButton) {
        // The shortcut menu belongs to the selected node; the click selects nothing.
        tvRecipes_MouseDown(static_cast<QMouseEvent*>(event)->globalPosition().toPoint());
        return true;
    }
    return QMainWindow::eventFilter(watched, event);
}

void frmMain::closeEvent(QCloseEvent* event) {
    if (!Form_QueryUnload()) {
        event->ignore();
        return;
    }
    Form_Unload();
    event->accept();
}

bool frmMain::Form_QueryUnload() {
    bool leave = false;
    ErrorPath::Handle("frmMain:Form_QueryUnload->", [&] {
        if (MsgBox(QStringLiteral("Ali res želite zapustiti program?"),
                   UiServices::vbYesNo + UiServices::vbQuestion) == UiServices::vbNo) {
            return;
        }
        const Qt::WindowStates state = windowState();
        StoreLong("WindowState", state & Qt::WindowMinimized   ? 1
                                 : state & Qt::WindowMaximized ? 2
                                                               : 0);
        leave = true;
    });
    return leave;
}

void frmMain::Form_Unload() {
    ErrorPath::Handle("frmMain:Form_Unload->", [&] { modDatabase::CloseConnection(); });
}
