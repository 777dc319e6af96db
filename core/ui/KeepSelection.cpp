#include "core/ui/KeepSelection.h"

#include <QAbstractItemView>
#include <QCoreApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QObject>

namespace KeepSelection {
namespace {

// Watches the view's viewport (mouse) and the view (keys) and swallows the input that would
// leave the view without a selected entry.
class Guard : public QObject {
public:
    explicit Guard(QAbstractItemView* view)
        : QObject(view), m_view(view), m_viewport(view->viewport()) {
        m_viewport->installEventFilter(this);
        view->installEventFilter(this);
    }

protected:
    // Compares pointers only: events also come while the view is being destroyed.
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (watched == m_viewport) {
            return MouseWouldClear(event);
        }
        if (watched == m_view && event->type() == QEvent::KeyPress) {
            return KeyWouldClear(static_cast<QKeyEvent*>(event));
        }
        return false;
    }

private:
    bool HasSelection() const {
        return m_view->selectionModel() && m_view->selectionModel()->hasSelection();
    }

    // True when the index is the only selected one: taking it away leaves nothing selected.
    bool OnlySelected(const QModelIndex& index) const {
        const QModelIndexList rows = m_view->selectionModel()->selectedRows();
        const QModelIndexList indexes = m_view->selectionModel()->selectedIndexes();
        return index.isValid() && m_view->selectionModel()->isSelected(index) &&
               (rows.size() == 1 || (rows.isEmpty() && indexes.size() == 1) ||
                m_view->selectionMode() == QAbstractItemView::SingleSelection);
    }

    bool MouseWouldClear(QEvent* event) {
        const QEvent::Type type = event->type();
        if (m_resending ||
            (type != QEvent::MouseButtonPress && type != QEvent::MouseButtonDblClick &&
             type != QEvent::MouseMove && type != QEvent::MouseButtonRelease)) {
            return false;
        }
        const auto* mouse = static_cast<QMouseEvent*>(event);
        const QPoint at = mouse->position().toPoint();
        const QModelIndex index = m_view->indexAt(at);
        if (type == QEvent::MouseButtonRelease) {
            return ReleaseWouldClear(mouse, index);
        }
        if ((type == QEvent::MouseMove && mouse->buttons() == Qt::NoButton) || !HasSelection()) {
            return false;
        }
        const bool clear = !index.isValid() || ((mouse->modifiers() & Qt::ControlModifier) &&
                                                type != QEvent::MouseMove && OnlySelected(index));
        if (!clear) {
            if (type != QEvent::MouseMove) {
                m_pressedAt = at;
                m_pressed = true;
            }
            return false;
        }
        if (type != QEvent::MouseMove) {
            m_swallowedPress = true;
            m_view->setFocus(Qt::MouseFocusReason);
        }
        return true;
    }

    // A release that belongs to a swallowed press is swallowed too. A release on the empty
    // part after a press on an entry (a drag that left the entries) would clear: the view gets
    // it where the press was instead.
    bool ReleaseWouldClear(const QMouseEvent* mouse, const QModelIndex& index) {
        const bool swallowed = m_swallowedPress;
        const bool pressed = m_pressed;
        m_swallowedPress = false;
        m_pressed = false;
        if (swallowed) {
            return true;
        }
        if (!pressed || index.isValid() || !HasSelection()) {
            return false;
        }
        QMouseEvent moved(QEvent::MouseButtonRelease, QPointF(m_pressedAt),
                          m_view->viewport()->mapToGlobal(QPointF(m_pressedAt)), mouse->button(),
                          mouse->buttons(), mouse->modifiers());
        m_resending = true;
        QCoreApplication::sendEvent(m_view->viewport(), &moved);
        m_resending = false;
        return true;
    }

    bool KeyWouldClear(const QKeyEvent* key) const {
        return key->key() == Qt::Key_Space && (key->modifiers() & Qt::ControlModifier) &&
               HasSelection() && OnlySelected(m_view->currentIndex());
    }

    QAbstractItemView* m_view;
    QObject* m_viewport;
    bool m_swallowedPress = false;  // the press was taken away: so is its release
    bool m_pressed = false;         // a press reached the view, at m_pressedAt
    QPoint m_pressedAt;
    bool m_resending = false;
};

}  // namespace

void Apply(QAbstractItemView* view) { new Guard(view); }

}  // namespace KeepSelection
