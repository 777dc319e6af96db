#include "core/ui/WindowFit.h"

#include <QApplication>
#include <QEvent>
#include <QGuiApplication>
#include <QScreen>
#include <QWidget>
#include <QWindow>

namespace WindowFit {
namespace {

QMargins MarginsOf(const QWidget* window) {
    if (!window || !window->isVisible() || !window->windowHandle()) {
        return {};
    }
    return window->windowHandle()->frameMargins();
}

// The screen a window shows on: where the program placed it, or where its parent window is.
QScreen* ScreenOf(const QWidget* window) {
    if (window->testAttribute(Qt::WA_Moved)) {
        if (QScreen* screen = QGuiApplication::screenAt(window->geometry().center())) {
            return screen;
        }
    }
    if (const QWidget* parent = window->parentWidget()) {
        if (parent->window()->isVisible()) {
            return parent->window()->screen();
        }
    }
    return window->screen();
}

// `inner` moved the least distance that brings its frame inside `available`; when it is larger
// than the area, its top left corner goes to the area's.
QRect Placed(const QRect& inner, const QMargins& frame, const QRect& available) {
    const QRect outer = inner.marginsAdded(frame);
    const int left =
        std::max(available.left(), std::min(outer.left(), available.right() + 1 - outer.width()));
    const int top =
        std::max(available.top(), std::min(outer.top(), available.bottom() + 1 - outer.height()));
    return inner.translated(left - outer.left(), top - outer.top());
}

// Fits `window` to its screen; a window about to show that nobody placed is centred first.
void Place(QWidget* window, bool showing) {
    if (window->windowState() &
        (Qt::WindowMaximized | Qt::WindowFullScreen | Qt::WindowMinimized)) {
        return;
    }
    const QScreen* screen = ScreenOf(window);
    if (!screen) {
        return;
    }
    const QRect available = screen->availableGeometry();
    const QMargins frame = FrameOf(window);
    // the size first: the window's minimum size, which its controls need, wins over the area
    window->resize(
        Inside(window->geometry(), frame, available).size().expandedTo(window->minimumSize()));
    QRect inner = window->geometry();
    if (!window->testAttribute(Qt::WA_Moved)) {
        if (!showing) {
            return;  // placed when it shows, at its size then
        }
        const QWidget* parent = window->parentWidget() ? window->parentWidget()->window() : nullptr;
        inner.moveCenter(parent && parent->isVisible() ? parent->frameGeometry().center()
                                                       : available.center());
    }
    window->setGeometry(Placed(inner, frame, available));
}

// Fits its window whenever the window is about to show (the show event comes before the window
// system maps the window).
class ShowFilter : public QObject {
public:
    explicit ShowFilter(QWidget* window) : QObject(window), m_window(window) {
        window->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        // (a window the window system shows again, as after minimising, stays where it was)
        if (watched == m_window && event->type() == QEvent::Show && !event->spontaneous()) {
            Place(m_window, true);
        }
        return QObject::eventFilter(watched, event);
    }

private:
    QWidget* m_window;
};

}  // namespace

QRect Inside(const QRect& inner, const QMargins& frame, const QRect& available) {
    const QSize room = available.size().shrunkBy(frame).expandedTo(QSize(0, 0));
    return Placed(QRect(inner.topLeft(), inner.size().boundedTo(room)), frame, available);
}

QMargins FrameOf(const QWidget* window) {
    QMargins frame = MarginsOf(window);
    if (!frame.isNull()) {
        return frame;
    }
    if (const QWidget* parent = window->parentWidget()) {
        frame = MarginsOf(parent->window());
        if (!frame.isNull()) {
            return frame;
        }
    }
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (const QWidget* other : windows) {
        frame = MarginsOf(other);
        if (!frame.isNull()) {
            return frame;
        }
    }
    return {};
}

void Fit(QWidget* window) { Place(window, window->isVisible()); }

void Keep(QWidget* window) {
    new ShowFilter(window);
    Place(window, false);
}

}  // namespace WindowFit
