#include "display/PageView.h"

#include <QEvent>
#include <QFile>
#include <QResizeEvent>
#include <QTextBrowser>
#include <QTextDocument>

#include "display/PageDocument.h"

namespace PageView {
namespace {

const QString KeeperName = QStringLiteral("pageWidthKeeper");

// Keeps the page's lists fitted to the width of the view when the view changes its size.
class WidthKeeper : public QObject {
public:
    explicit WidthKeeper(QTextBrowser* view)
        : QObject(view), m_view(view), m_viewport(view->viewport()) {
        setObjectName(KeeperName);
        m_viewport->installEventFilter(this);
    }

protected:
    // The viewport is compared by pointer only: its events also come while the view is being
    // destroyed.
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (watched == m_viewport && event->type() == QEvent::Resize) {
            PageDocument::FitWidth(*m_view->document(),
                                   static_cast<QResizeEvent*>(event)->size().width());
        }
        return QObject::eventFilter(watched, event);
    }

private:
    QTextBrowser* m_view;
    QObject* m_viewport;
};

}  // namespace

void Show(QTextBrowser* view, const QString& fileName) {
    if (!view->findChild<QObject*>(KeeperName, Qt::FindDirectChildrenOnly)) {
        new WidthKeeper(view);
    }
    // The page is laid out apart from the view, which then takes the finished document in one
    // step and lays out only what it shows first (the rest follows while the user reads).
    auto* document = new QTextDocument(view);
    QFile page(fileName);
    if (page.open(QIODevice::ReadOnly)) {
        PageDocument::BuildFromBytes(*document, page.readAll());
    }
    // A view not shown yet has no width of its own: the page is fitted when it gets one.
    if (view->isVisible()) {
        PageDocument::FitWidth(*document, view->viewport()->width());
    }
    // The view deletes the document it made itself; those made here go when replaced.
    QTextDocument* previous = view->document();
    const bool madeHere = previous->parent() == view;
    view->setDocument(document);
    if (madeHere) {
        delete previous;
    }
}

}  // namespace PageView
