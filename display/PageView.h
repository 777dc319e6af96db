#pragma once

#include <QString>
#include <future>
#include <memory>

class QTextBrowser;
class QTextDocument;

// Showing the display file in the main window's browser control, as a browser shows it
// (PageDocument), read afresh on every call.
namespace PageView {

// Shows the page of a display file; a file that cannot be read shows an empty page.
void Show(QTextBrowser* view, const QString& fileName);

// A page being laid out on a thread of its own while the caller goes on.
class Prepared {
public:
    Prepared() = default;
    bool IsValid() const { return m_document.valid(); }

private:
    friend Prepared Prepare(const QString& fileName);
    friend void Show(QTextBrowser* view, Prepared page);
    std::future<std::unique_ptr<QTextDocument>> m_document;
};

// Reads the display file as it is now and starts laying its page out on another thread; a long
// page (megabytes) is laid out at once, on this thread, before the caller goes on.
Prepared Prepare(const QString& fileName);
// Shows a prepared page once it is laid out (waiting for it), as Show shows a file.
void Show(QTextBrowser* view, Prepared page);

}  // namespace PageView
