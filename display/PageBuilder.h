// Laying a parsed page out in a QTextDocument. Blocks, lists, line breaks and text are in
// PageBuilder.cpp; tables and recipe lists in PageTables.cpp.
#pragma once

#include <gumbo.h>

#include <QList>
#include <QString>
#include <QTextCursor>
#include <QTextFormat>
#include <vector>

#include "display/PageStyle.h"
#include "display/PageTables.h"

class QTextDocument;
class QTextList;

namespace PageDocument::detail {

// Browsers' parsers keep a page's elements at most 512 deep (Blink and WebKit attach anything
// deeper to the element at that depth): beyond it only the text stays.
constexpr int MostDepth = 512;
// Longer words get a break opportunity after every this many characters.
constexpr int MostWordLength = 100;

// Lays the parsed tree out in the document, keeping the position of a browser's line boxes:
// inline content flows into the block of the nearest block-level element, whitespace collapses,
// and a line break that ends a block adds no empty line.
class Builder {
public:
    Builder(QTextDocument& document, bool quirks);

    void Run(const GumboNode* root, const StyleSheet& sheet);

private:
    Style ElementStyle(const GumboNode* node, const Style& parent, Box& box) const;
    void Children(const GumboNode* node, const Style& style);
    void Element(const GumboNode* node, const Style& parent);
    // The text of an element nested deeper than the page keeps structure for, in the style of
    // the deepest element that keeps it.
    void FlatText(const GumboNode* node, const Style& style);
    void Text(const QString& raw, const Style& style);
    void Write(const QString& text, const Style& style);

    // Starts the pending block, when inline content arrives after a block boundary.
    void EnsureBlock(const Style& style);

    // Ends the current block: a last line break adds no line of its own.
    void EndBlock();

    // An empty block that stands only because the document needs one (before a table at the
    // start, after a table at the end) takes no height.
    void CollapseEmptyBlock();

    void BlockOf(const GumboNode* node, const Style& style, const Box& box, bool rule);

    // The cells of a table's rows (directly in the table or in its row groups).
    void CollectRows(const GumboNode* node, const Style& style, QList<Cell>& cells, int& rows,
                     int& columns);

    void Table(const GumboNode* node, const Style& style, const Box& box);
    // A table beyond the bounds of nesting and number: each cell a block of its own.
    void CellBlocks(const GumboNode* node, const Style& style);

    // A table that IsRowList accepts, as rows of text with the second cell at a right tab.
    void RowList(const GumboNode* node, const Style& style, const Box& box,
                 const QList<Cell>& cells);

    struct ListEntry {
        QTextListFormat::Style style;
        QTextList* list;
    };

    QTextDocument& m_document;
    QTextCursor m_cursor;
    const bool m_quirks;
    const StyleSheet* m_sheet = nullptr;
    QList<QTextBlockFormat> m_blockFormats;  // of the block-level elements open, innermost last
    std::vector<ListEntry> m_lists;
    bool m_listItemPending = false;
    bool m_needBlock = true;   // inline content starts a new block
    bool m_blockEmpty = true;  // the cursor's block holds nothing yet and may be taken as it is
    bool m_atLineStart = true;
    bool m_pendingSpace = false;
    int m_pendingBreaks = 0;
    qreal m_pendingTop = 0;
    int m_blocksStarted = 0;
    int m_wordLength = 0;  // characters since the last space
    int m_depth = 0;       // elements open
    int m_tableDepth = 0;  // tables open
    int m_tables = 0;      // tables laid out as tables so far
};

}  // namespace PageDocument::detail
