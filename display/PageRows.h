// The rows of a page's recipe lists whose first cell does not fit beside the second.
#pragma once

#include <QtGlobal>

class QTextDocument;

namespace PageDocument::detail {

// A recipe list is laid out as one line box per row with the second cell at a right tab (see
// IsRowList in PageTables.cpp). A browser gives the list's second column the width of its
// widest cell and wraps a long first cell inside the first column, the second cell standing
// beside it in the middle of the row's height. At a text width, each row whose first cell would
// not fit beside the list's second column is made a table of one row in that picture (once made,
// it stays one: when its text fits it looks as the row did), and every such table is given the
// width of the text. `room` is the text width less the document's margins.
void WrapLongRows(QTextDocument& document, qreal room);

}  // namespace PageDocument::detail
