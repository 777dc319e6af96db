#include "display/PageView.h"

#include <QEvent>
#include <QFile>
#include <QResizeEvent>
#include <QTextBrowser>
#include <QTextDocument>
#include <QThread>

#include <malloc.h>

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

// The page of a display file in a document of its own, not yet fitted to a width.
std::unique_ptr<QTextDocument> Build(const QByteArray& bytes) {
    auto document = std::make_unique<QTextDocument>();
    PageDocument::BuildFromBytes(*document, bytes);
    return document;
}

// The page built, and the memory of its parse (some twenty times the page's size, free now on
// the building thread's heap) given back to the system.
std::unique_ptr<QTextDocument> BuildAndTrim(const QByteArray& bytes) {
    malloc_trim(0);  // what the thread freed before, so that the parse can reuse it
    std::unique_ptr<QTextDocument> document = Build(bytes);
    malloc_trim(0);
    return document;
}

// A page longer than this (some 25,000 rows of a list) is laid out before the caller goes on:
// its parse beside whatever the caller does next (reading the tree of a large collection) would
// need the memory of both at once.
const qsizetype LongPageBytes = 2 * 1024 * 1024;

QByteArray ReadFile(const QString& fileName) {
    QFile page(fileName);
    return page.open(QIODevice::ReadOnly) ? page.readAll() : QByteArray();
}

// The view takes the finished document in one step and lays out only what it shows first (the
// rest follows while the user reads).
void Place(QTextBrowser* view, std::unique_ptr<QTextDocument> document) {
    if (!view->findChild<QObject*>(KeeperName, Qt::FindDirectChildrenOnly)) {
        new WidthKeeper(view);
    }
    // A view not shown yet has no width of its own: the page is fitted when it gets one.
    if (view->isVisible()) {
        PageDocument::FitWidth(*document, view->viewport()->width());
    }
    // The view deletes the document it made itself; those made here go when replaced.
    QTextDocument* previous = view->document();
    const bool madeHere = previous->parent() == view;
    document->setParent(view);
    view->setDocument(document.release());
    if (madeHere) {
        delete previous;
    }
}

}  // namespace

void Show(QTextBrowser* view, const QString& fileName) { Place(view, Build(ReadFile(fileName))); }

Prepared Prepare(const QString& fileName) {
    QByteArray bytes = ReadFile(fileName);
    Prepared page;
    if (bytes.size() > LongPageBytes) {
        std::promise<std::unique_ptr<QTextDocument>> laidOut;
        page.m_document = laidOut.get_future();
        laidOut.set_value(BuildAndTrim(bytes));
        return page;
    }
    QThread* const home = QThread::currentThread();
    page.m_document = std::async(std::launch::async, [bytes = std::move(bytes), home] {
        std::unique_ptr<QTextDocument> document = BuildAndTrim(bytes);
        document->moveToThread(home);  // only the thread that made it can hand it on
        return document;
    });
    return page;
}

void Show(QTextBrowser* view, Prepared page) { Place(view, page.m_document.get()); }

}  // namespace PageView
