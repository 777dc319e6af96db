#include "display/PageTables.h"

#include <QList>
#include <QString>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextTable>
#include <algorithm>

#include "display/PageBuilder.h"
#include "display/PageElements.h"

namespace PageDocument::detail {

constexpr int MostTableNesting = 6;
constexpr int MostTables = 1000;
namespace {

// Whether an element holds inline content only, at any depth.
bool InlineOnly(const GumboNode* node) {
    const GumboVector& children = node->v.element.children;
    for (unsigned i = 0; i < children.length; ++i) {
        const auto* child = static_cast<const GumboNode*>(children.data[i]);
        if (child->type != GUMBO_NODE_ELEMENT) {
            continue;
        }
        const Kind kind = KindOf(child->v.element.tag);
        if ((kind != Kind::Inline && kind != Kind::Hidden && kind != Kind::Break &&
             kind != Kind::Image) ||
            !InlineOnly(child)) {
            return false;
        }
    }
    return true;
}

// A table as the pages write their recipe lists: as wide as the page, one or two cells a
// row holding text only, the first cell aligned left and the second right. Such a table is
// laid out as one line box per row, the second cell at a right tab on the row's right edge:
// the same picture as a table, and a long list shows at once instead of waiting for the
// whole table's layout.
bool IsRowList(const GumboNode* table, const QList<Cell>& cells) {
    if (Attribute(table, "width").trimmed() != QLatin1String("100%") ||
        Attribute(table, "border").toInt() > 0) {
        return false;
    }
    for (const Cell& cell : cells) {
        const bool aligned = cell.column == 0 ? cell.style.alignment == Qt::AlignLeft
                                              : cell.style.alignment == Qt::AlignRight;
        if (cell.span != 1 || cell.column > 1 || !aligned || cell.style.preformatted ||
            !InlineOnly(cell.node)) {
            return false;
        }
    }
    return true;
}

// The text of a cell that holds nothing but text, whitespace collapsed as in a line box;
// false for a cell with elements in it.
bool PlainText(const GumboNode* cell, QString& text) {
    text.clear();
    bool space = false;
    const GumboVector& children = cell->v.element.children;
    for (unsigned i = 0; i < children.length; ++i) {
        const auto* child = static_cast<const GumboNode*>(children.data[i]);
        if (child->type != GUMBO_NODE_TEXT && child->type != GUMBO_NODE_WHITESPACE) {
            return false;
        }
        for (const QChar c : QString::fromUtf8(child->v.text.text)) {
            if (IsSpace(c)) {
                space = true;
                continue;
            }
            if (space && !text.isEmpty()) {
                text += QLatin1Char(' ');
            }
            space = false;
            text += c;
        }
    }
    return true;
}

}  // namespace

// The Builder's tables (the class is in PageBuilder.h).

void Builder::CollectRows(const GumboNode* node, const Style& style, QList<Cell>& cells, int& rows,
                          int& columns) {
    const GumboVector& children = node->v.element.children;
    for (unsigned i = 0; i < children.length; ++i) {
        const auto* child = static_cast<const GumboNode*>(children.data[i]);
        if (child->type != GUMBO_NODE_ELEMENT) {
            continue;
        }
        const GumboTag tag = child->v.element.tag;
        Box ignored;
        if (tag == GUMBO_TAG_TBODY || tag == GUMBO_TAG_THEAD || tag == GUMBO_TAG_TFOOT) {
            CollectRows(child, ElementStyle(child, style, ignored), cells, rows, columns);
        } else if (tag == GUMBO_TAG_TR) {
            const Style rowStyle = ElementStyle(child, style, ignored);
            int column = 0;
            const GumboVector& rowChildren = child->v.element.children;
            for (unsigned j = 0; j < rowChildren.length; ++j) {
                const auto* cell = static_cast<const GumboNode*>(rowChildren.data[j]);
                if (cell->type != GUMBO_NODE_ELEMENT ||
                    (cell->v.element.tag != GUMBO_TAG_TD && cell->v.element.tag != GUMBO_TAG_TH)) {
                    continue;
                }
                const int span = std::clamp(Attribute(cell, "colspan").toInt(), 1, 1000);
                cells << Cell{cell, rows, column, span, ElementStyle(cell, rowStyle, ignored)};
                column += span;
            }
            columns = std::max(columns, column);
            ++rows;
        }
    }
}

void Builder::Table(const GumboNode* node, const Style& style, const Box& box) {
    // Laying out a table inside a table measures the inner one again for each pass over the
    // outer one, so the time doubles with every level (8 levels 0.2 s, 12 levels 2.4 s, 16
    // levels 45 s). Tables nested deeper than MostTableNesting, and those after the first
    // MostTables of a page, show their cells one after another as blocks.
    if (m_tableDepth >= MostTableNesting || m_tables >= MostTables) {
        CellBlocks(node, style);
        return;
    }
    ++m_tables;
    ++m_tableDepth;
    const auto closed = qScopeGuard([this] { --m_tableDepth; });
    EndBlock();
    QList<Cell> cells;
    int rows = 0;
    int columns = 0;
    CollectRows(node, style, cells, rows, columns);
    if (rows == 0 || columns == 0) {
        return;  // a table without cells shows nothing
    }
    if (IsRowList(node, cells)) {
        RowList(node, style, box, cells);
        return;
    }
    QTextTableFormat format;
    format.setBorder(std::max(0, Attribute(node, "border").toInt()));
    format.setBorderStyle(format.border() > 0 ? QTextFrameFormat::BorderStyle_Outset
                                              : QTextFrameFormat::BorderStyle_None);
    const QString spacing = Attribute(node, "cellspacing");
    const QString padding = Attribute(node, "cellpadding");
    format.setCellSpacing(spacing.isEmpty() ? 2 : spacing.toDouble());
    format.setCellPadding(padding.isEmpty() ? 1 : padding.toDouble());
    format.setMargin(0);
    format.setTopMargin(std::max(m_pendingTop, box.top.Pixels(style.fontPixels)));
    m_pendingTop = 0;
    const QString width = Attribute(node, "width").trimmed();
    if (width.endsWith(QLatin1Char('%'))) {
        format.setWidth(QTextLength(QTextLength::PercentageLength, width.chopped(1).toDouble()));
    } else if (width.toInt() > 0) {
        format.setWidth(QTextLength(QTextLength::FixedLength, width.toInt()));
    }
    const QString align = Attribute(node, "align").toLower();
    if (align == QLatin1String("center") || align == QLatin1String("right")) {
        format.setAlignment(AlignmentOf(align, Qt::AlignLeft));
    }
    if (m_blockEmpty) {
        CollapseEmptyBlock();
    }
    QTextTable* table = m_cursor.insertTable(rows, columns, format);
    for (const Cell& cell : cells) {
        if (cell.span > 1) {
            table->mergeCells(cell.row, cell.column, 1, std::min(cell.span, columns));
        }
        m_cursor = table->cellAt(cell.row, cell.column).firstCursorPosition();
        m_blockEmpty = true;
        QTextBlockFormat cellBlock;
        cellBlock.setAlignment(cell.style.alignment);
        m_blockFormats << cellBlock;
        m_needBlock = true;
        Children(cell.node, cell.style);
        EndBlock();
        if (m_blockEmpty) {
            m_cursor.setBlockCharFormat(cell.style.format);
        }
        m_blockFormats.removeLast();
    }
    m_cursor = table->lastCursorPosition();
    m_cursor.movePosition(QTextCursor::NextBlock);
    m_blockEmpty = true;
    m_needBlock = true;
    ++m_blocksStarted;
}

void Builder::CellBlocks(const GumboNode* node, const Style& style) {
    EndBlock();
    QList<Cell> cells;
    int rows = 0;
    int columns = 0;
    CollectRows(node, style, cells, rows, columns);
    for (const Cell& cell : cells) {
        BlockOf(cell.node, cell.style, Box(), false);
    }
}

void Builder::RowList(const GumboNode* node, const Style& style, const Box& box,
                      const QList<Cell>& cells) {
    const QString spacingText = Attribute(node, "cellspacing");
    const QString paddingText = Attribute(node, "cellpadding");
    const qreal spacing = spacingText.isEmpty() ? 2 : spacingText.toDouble();
    const qreal padding = paddingText.isEmpty() ? 1 : paddingText.toDouble();
    QTextBlockFormat row;
    row.setProperty(RowProperty, true);
    row.setProperty(RowPaddingProperty, padding);
    row.setLeftMargin(m_blockFormats.last().leftMargin() + spacing + padding);
    row.setRightMargin(spacing + padding);
    row.setTopMargin(spacing + padding);
    row.setBottomMargin(padding);
    EndBlock();
    const qreal top = std::max(m_pendingTop, box.top.Pixels(style.fontPixels));
    m_pendingTop = 0;
    m_blockFormats << row;

    // Rows of plain text in one character format go into the document in one piece.
    QString batch;
    QTextCharFormat batchFormat;
    const auto flush = [&] {
        if (!batch.isEmpty()) {
            EnsureBlock(style);
            m_cursor.insertText(batch, batchFormat);
            batch.clear();
            EndBlock();
        }
    };
    int firstPosition = -1;
    QString first;
    QString second;
    for (qsizetype i = 0; i < cells.size();) {
        qsizetype end = i + 1;
        while (end < cells.size() && cells[end].row == cells[i].row) {
            ++end;
        }
        const QTextCharFormat& format = cells[i].style.format;
        const bool plain = PlainText(cells[i].node, first) &&
                           (end == i + 1 || (cells[i + 1].style.format == format &&
                                             PlainText(cells[i + 1].node, second)));
        if (plain) {
            if (!batch.isEmpty() && batchFormat != format) {
                flush();
            }
            if (firstPosition < 0) {
                EnsureBlock(style);
                firstPosition = m_cursor.position();
            } else if (!batch.isEmpty()) {
                batch += QLatin1Char('\n');
            }
            batchFormat = format;
            batch += end == i + 1 ? first : first + QLatin1Char('\t') + second;
        } else {
            flush();
            EndBlock();
            EnsureBlock(style);
            if (firstPosition < 0) {
                firstPosition = m_cursor.position();
            }
            for (qsizetype c = i; c < end; ++c) {
                if (cells[c].column == 1) {
                    m_cursor.insertText(QStringLiteral("\t"), cells[c].style.format);
                    m_atLineStart = true;
                    m_pendingSpace = false;
                    m_pendingBreaks = 0;
                }
                Children(cells[c].node, cells[c].style);
                m_pendingSpace = false;
            }
            EndBlock();
        }
        i = end;
    }
    flush();
    m_blockFormats.removeLast();

    // The first row keeps the space above the table, the last row ends the table.
    QTextCursor firstRow(&m_document);
    firstRow.setPosition(firstPosition);
    QTextBlockFormat format = firstRow.blockFormat();
    format.setTopMargin(format.topMargin() + top);
    firstRow.setBlockFormat(format);
    format = m_cursor.blockFormat();
    format.setBottomMargin(padding + spacing);
    m_cursor.setBlockFormat(format);
}

}  // namespace PageDocument::detail
