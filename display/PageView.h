#pragma once

#include <QString>

class QTextBrowser;

// Showing the display file in the main window's browser control, as a browser shows it
// (PageDocument), read afresh on every call.
namespace PageView {

// Shows the page of a display file; a file that cannot be read shows an empty page.
void Show(QTextBrowser* view, const QString& fileName);

}  // namespace PageView
