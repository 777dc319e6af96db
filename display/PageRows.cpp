#include "display/PageRows.h"

#include <QFontMetricsF>
#include <QHash>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextFrame>
#include <QTextTable>
#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <optional>
#include <vector>

#include "display/PageTables.h"

namespace PageDocument::detail {
namespace {

// The width of a row's cells' text, kept in the block's user state in quarter pixels (-1 before
// it is measured): measured once, compared at every width.
constexpr qreal StateUnit = 4;

struct Row {
    QTextBlock block;
    int place = 0;  // the block's position, taken for the rows made tables
    QString text;
    qsizetype tab = 0;
    QTextCharFormat format;
    int formatIndex = -1;  // the document's number of that format
    QStringView First() const { return QStringView(text).left(tab); }
    QStringView Second() const { return QStringView(text).mid(tab + 1); }
};

// The row's two cells, when the block holds them as plain text in one format.
bool ReadRow(const QTextBlock& block, Row& row) {
    const QString text = block.text();
    const qsizetype tab = text.indexOf(QLatin1Char('\t'));
    if (tab < 0 || text.indexOf(QLatin1Char('\t'), tab + 1) >= 0) {
        return false;
    }
    QTextBlock::iterator fragment = block.begin();
    if (fragment.atEnd()) {
        return false;
    }
    row.formatIndex = fragment.fragment().charFormatIndex();
    for (++fragment; !fragment.atEnd(); ++fragment) {
        if (fragment.fragment().charFormatIndex() != row.formatIndex) {
            return false;
        }
    }
    row.format = block.begin().fragment().charFormat();
    row.block = block;
    row.text = text;
    row.tab = tab;
    return true;
}

qreal TextWidth(const QTextDocument& document, const QTextCharFormat& format, const QString& text) {
    return QFontMetricsF(format.font().resolve(document.defaultFont())).horizontalAdvance(text);
}

// The first cell's width, measured once per block.
// The widths of single letters in one font, summed over a text: a bound above the text's width
// (pairs of letters set together only come closer) that costs no shaping. A row whose first
// cell is clearly within its room by this sum is not measured.
class LetterWidths {
public:
    LetterWidths(const QTextDocument& document, const QTextCharFormat& format)
        : m_metrics(format.font().resolve(document.defaultFont())) {}

    qreal Sum(QStringView text) {
        qreal sum = 0;
        for (const QChar letter : text) {
            const char16_t code = letter.unicode();
            if (code < m_common.size()) {
                if (m_common[code] < 0) {
                    m_common[code] = m_metrics.horizontalAdvance(letter);
                }
                sum += m_common[code];
                continue;
            }
            auto known = m_widths.constFind(code);
            if (known == m_widths.cend()) {
                known = m_widths.insert(code, m_metrics.horizontalAdvance(letter));
            }
            sum += *known;
        }
        return sum;
    }

private:
    QFontMetricsF m_metrics;
    std::array<qreal, 0x250> m_common = Unknown();  // Latin letters, Slovenian ones among them
    QHash<char16_t, qreal> m_widths;

    static std::array<qreal, 0x250> Unknown() {
        std::array<qreal, 0x250> widths{};
        widths.fill(-1);
        return widths;
    }
};

qreal FirstWidth(const QTextDocument& document, const Row& row) {
    QTextBlock block = row.block;
    if (block.userState() < 0) {
        block.setUserState(
            int(std::ceil(TextWidth(document, row.format, row.First().toString()) * StateUnit)));
    }
    return block.userState() / StateUnit;
}

// The room of a row's first cell as a browser gives it: the row's width (less its margins,
// which hold the cell spacing and padding at either end) less the spacing and padding between
// the cells and the second column's width.
qreal FirstRoom(qreal room, qreal left, qreal right, qreal padding, qreal second) {
    const qreal spacing = right - padding;
    return room - left - right - spacing - 2 * padding - second;
}

bool InRootFrame(const QTextDocument& document, const QTextBlock& block) {
    return !block.isValid() || QTextCursor(block).currentFrame() == document.rootFrame();
}

// Sets a row table's width and its columns' from the width of the text.
void FitTable(QTextTable* table, qreal room) {
    QTextTableFormat format = table->format();
    const qreal padding = format.cellPadding();
    const qreal width =
        std::max<qreal>(room - format.leftMargin() - format.rightMargin(), 4 * padding + 1);
    // The widest number with the cell's padding, and a pixel for the layout's rounding.
    const qreal second =
        std::ceil(format.property(RowSecondWidthProperty).toReal()) + 2 * padding + 1;
    format.setWidth(QTextLength(QTextLength::FixedLength, width));
    format.setColumnWidthConstraints({QTextLength(QTextLength::FixedLength, width - second),
                                      QTextLength(QTextLength::FixedLength, second)});
    table->setFormat(format);
}

// Makes a row a table of one row: the row's margins around it, its padding in the cells, the
// second cell as wide as the list's widest (`secondWidth`) and its text in the middle.
void MakeTable(QTextDocument& document, Row row, qreal secondWidth, qreal room) {
    // The row's block is found again at its place: tables made after it changed the blocks.
    row.block = document.findBlock(row.place);
    const QTextBlockFormat rowFormat = row.block.blockFormat();
    const qreal padding = rowFormat.doubleProperty(RowPaddingProperty);
    const QTextBlock after = row.block.next();
    QTextCursor cursor(row.block);
    cursor.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
    cursor.removeSelectedText();
    QTextTableFormat format;
    format.setProperty(RowProperty, true);
    format.setProperty(RowSecondWidthProperty, secondWidth);
    format.setProperty(RowBottomProperty, rowFormat.bottomMargin());
    format.setBorder(0);
    format.setBorderStyle(QTextFrameFormat::BorderStyle_None);
    format.setCellSpacing(0);
    format.setCellPadding(padding);
    format.setLeftMargin(rowFormat.leftMargin() - padding);
    format.setRightMargin(rowFormat.rightMargin() - padding);
    format.setTopMargin(rowFormat.topMargin() - padding);
    // The block after a table is laid out without its top margin: the table's bottom margin
    // gives the space that the two margins gave together.
    const bool afterInRoot = after.isValid() && InRootFrame(document, after);
    format.setBottomMargin(
        std::max(rowFormat.bottomMargin(), afterInRoot ? after.blockFormat().topMargin() : 0) -
        padding);
    QTextTable* table = cursor.insertTable(1, 2, format);
    FitTable(table, room);
    table->cellAt(0, 0).firstCursorPosition().insertText(row.First().toString(), row.format);
    QTextTableCell second = table->cellAt(0, 1);
    QTextCharFormat middle = second.format();
    middle.setVerticalAlignment(QTextCharFormat::AlignMiddle);
    second.setFormat(middle);
    QTextCursor secondText = second.firstCursorPosition();
    QTextBlockFormat right;
    right.setAlignment(Qt::AlignRight);
    secondText.setBlockFormat(right);
    secondText.insertText(row.Second().toString(), row.format);

    // The row's emptied block before the table and the new one after it go: the block before
    // joins the one above, the block after takes in the one below with that one's format.
    QTextCursor before(row.block);
    before.deletePreviousChar();
    QTextCursor next(table->lastCursorPosition());
    next.movePosition(QTextCursor::NextBlock);
    if (after.isValid() && next.block().next() == after && InRootFrame(document, after)) {
        next.setBlockFormat(after.blockFormat());
        next.setBlockCharFormat(after.charFormat());
        next.deleteChar();
        return;
    }
    // Between two tables, or at the end, the block stays without height.
    QTextBlockFormat none;
    none.setProperty(RowSpacerProperty, true);
    none.setLineHeight(0, QTextBlockFormat::FixedHeight);
    next.setBlockFormat(none);
    QTextCharFormat tiny;
    tiny.setProperty(QTextFormat::FontPixelSize, 1);
    next.setBlockCharFormat(tiny);
}

// The text of a table cell and its format.
QString CellText(const QTextTableCell& cell, QTextCharFormat* format = nullptr) {
    QTextCursor cursor = cell.firstCursorPosition();
    cursor.setPosition(cell.lastCursorPosition().position(), QTextCursor::KeepAnchor);
    if (format) {
        QTextCursor first = cell.firstCursorPosition();
        first.movePosition(QTextCursor::NextCharacter);
        *format = first.charFormat();
    }
    return cursor.selectedText();
}

// Makes a row table a row of text again, in its place.
void MakeRow(QTextDocument& document, QTextTable* table) {
    const QTextTableFormat format = table->format();
    const qreal padding = format.cellPadding();
    QTextBlockFormat row;
    row.setProperty(RowProperty, true);
    row.setProperty(RowPaddingProperty, padding);
    row.setLeftMargin(format.leftMargin() + padding);
    row.setRightMargin(format.rightMargin() + padding);
    row.setTopMargin(format.topMargin() + padding);
    row.setBottomMargin(format.doubleProperty(RowBottomProperty));
    QTextCharFormat charFormat;
    const QString text = CellText(table->cellAt(0, 0), &charFormat) + QLatin1Char('\t') +
                         CellText(table->cellAt(0, 1));
    // The table goes, which joins the blocks before and after it; the row comes in between.
    const QTextBlock after = document.findBlock(table->lastPosition() + 1);
    const QTextBlockFormat afterFormat = after.blockFormat();
    const QTextCharFormat afterCharFormat = after.charFormat();
    const int place = table->firstPosition() - 1;
    QTextCursor cursor(&document);
    cursor.setPosition(place);
    const bool spacerBefore = cursor.blockFormat().boolProperty(RowSpacerProperty);
    cursor.setPosition(table->lastPosition() + 1, QTextCursor::KeepAnchor);
    cursor.removeSelectedText();
    cursor.setPosition(place);
    // A spacer left between two tables before it becomes the row; one after it is not needed
    // any more.
    if (spacerBefore) {
        cursor.setBlockFormat(row);
        cursor.setBlockCharFormat(charFormat);
    } else {
        cursor.insertBlock(row, charFormat);
    }
    cursor.insertText(text, charFormat);
    if (!afterFormat.boolProperty(RowSpacerProperty)) {
        cursor.insertBlock(afterFormat, afterCharFormat);
    }
}

}  // namespace

void WrapLongRows(QTextDocument& document, qreal room) {
    if (room <= 0) {
        return;  // a view without a width yet
    }
    // Tables whose first cell fits again become rows of text again.
    for (QTextFrame* frame : document.rootFrame()->childFrames()) {
        auto* table = qobject_cast<QTextTable*>(frame);
        if (!table || !table->format().boolProperty(RowProperty)) {
            continue;
        }
        const QTextTableFormat format = table->format();
        QTextCharFormat charFormat;
        const QString first = CellText(table->cellAt(0, 0), &charFormat);
        const qreal padding = format.cellPadding();
        if (TextWidth(document, charFormat, first) <=
            FirstRoom(room, format.leftMargin() + padding, format.rightMargin() + padding, padding,
                      format.property(RowSecondWidthProperty).toReal())) {
            MakeRow(document, table);
        }
    }
    // The runs of rows with the same margins are the lists; a list's second column is as wide
    // as its widest second cell.
    std::vector<Row> wrapped;
    std::vector<qreal> secondWidths;
    std::vector<Row> run;
    qreal runMargins = -1;
    const auto endRun = [&] {
        std::unique_ptr<LetterWidths> letters;
        int lettersFormat = -1;
        const auto lettersOf = [&](const Row& row) -> LetterWidths& {
            if (!letters || row.formatIndex != lettersFormat) {
                letters = std::make_unique<LetterWidths>(document, row.format);
                lettersFormat = row.formatIndex;
            }
            return *letters;
        };
        // Only a second cell whose letters could make it wider than the widest measured so far
        // is measured (a list's numbers: their digits are alike, so mostly the first one).
        qreal second = 0;
        for (const Row& row : run) {
            if (lettersOf(row).Sum(row.Second()) > second) {
                second = std::max(second, TextWidth(document, row.format, row.Second().toString()));
            }
        }
        for (const Row& row : run) {
            const QTextBlockFormat format = row.block.blockFormat();
            const qreal firstRoom = FirstRoom(room, format.leftMargin(), format.rightMargin(),
                                              format.doubleProperty(RowPaddingProperty), second);
            if (lettersOf(row).Sum(row.First()) * 1.03 + 1 <= firstRoom) {
                continue;  // clearly fits
            }
            if (FirstWidth(document, row) > firstRoom) {
                wrapped.push_back(row);
                wrapped.back().place = row.block.position();
                secondWidths.push_back(second);
            }
        }
        run.clear();
        runMargins = -1;
    };
    // The root frame's own blocks, in order: a row can be made a table when the items on either
    // side of it are blocks of the root frame too (a row is decided when the next item is seen).
    std::optional<Row> candidate;
    qreal candidateMargins = 0;
    bool previousIsBlock = true;
    for (QTextFrame::iterator item = document.rootFrame()->begin();; ++item) {
        const bool end = item.atEnd();
        const bool isBlock = !end && !item.currentFrame();
        if (candidate) {
            if (isBlock || end) {
                if (!run.empty() && candidateMargins != runMargins) {
                    endRun();
                }
                run.push_back(*candidate);
                runMargins = candidateMargins;
            } else {
                endRun();
            }
            candidate.reset();
        }
        if (end) {
            break;
        }
        Row row;
        const QTextBlockFormat format =
            isBlock ? item.currentBlock().blockFormat() : QTextBlockFormat();
        if (isBlock && previousIsBlock && format.boolProperty(RowProperty) &&
            ReadRow(item.currentBlock(), row)) {
            candidate = row;
            candidateMargins = format.leftMargin() + format.rightMargin();
        } else {
            endRun();
        }
        previousIsBlock = isBlock;
    }
    endRun();
    // From the last to the first, so that the rows not yet made tables stay where they were.
    for (std::size_t i = wrapped.size(); i-- > 0;) {
        MakeTable(document, wrapped[i], secondWidths[i], room);
    }
    for (QTextFrame* frame : document.rootFrame()->childFrames()) {
        auto* table = qobject_cast<QTextTable*>(frame);
        if (table && table->format().boolProperty(RowProperty)) {
            FitTable(table, room);
        }
    }
}

}  // namespace PageDocument::detail
