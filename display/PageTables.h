// The tables of a page: their cells as read from the rows, and the mark of recipe lists laid
// out as rows of text. The Builder's table part is in PageTables.cpp.
#pragma once

#include <gumbo.h>

#include <QTextFormat>

#include "display/PageStyle.h"

namespace PageDocument::detail {

// Marks the blocks that are the rows of a recipe list (see IsRowList in PageTables.cpp), and
// the one-row tables that such a row becomes when its first cell wraps (PageRows.cpp).
constexpr int RowProperty = QTextFormat::UserProperty + 1;
// A row's cell padding, kept with it.
constexpr int RowPaddingProperty = QTextFormat::UserProperty + 2;
// A row table's second column's text width, and the bottom margin of the row it was.
constexpr int RowSecondWidthProperty = QTextFormat::UserProperty + 3;
constexpr int RowBottomProperty = QTextFormat::UserProperty + 4;
// The block without height that stands between two row tables, or after the last of a page.
constexpr int RowSpacerProperty = QTextFormat::UserProperty + 5;

// A cell of a table: its place in the table's grid and the style it passes on to its content.
struct Cell {
    const GumboNode* node;
    int row;
    int column;
    int span;
    Style style;
};

}  // namespace PageDocument::detail
