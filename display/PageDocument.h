#pragma once

#include <QByteArray>
#include <QString>

class QTextDocument;

// The viewer's side of the display file: the page is read the way a web browser reads it. An
// HTML5 parser builds the element tree (closing an open heading at any heading end tag,
// dropping stray end tags, closing what is left open), and the tree is laid out in a
// QTextDocument with the browser's own defaults and the page's style rules (element rules of
// its <style> block: font family, font size, font weight and style, margins, text alignment).
// The main window shows that document and printing prints it.
namespace PageDocument {

// Fills an empty document with the page. The page's title becomes the document's title
// (QTextDocument::DocumentTitle).
void Build(QTextDocument& document, const QString& html);

// Places the right-hand cells of the page's recipe lists at the right edge of a text width
// (the width of the view, or of the printed page), and wraps a long left-hand cell inside its
// column (PageRows.h); called whenever that width changes.
void FitWidth(QTextDocument& document, qreal textWidth);

// The page of display file bytes (windows-1250).
void BuildFromBytes(QTextDocument& document, const QByteArray& bytes);

}  // namespace PageDocument
