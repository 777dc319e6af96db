#include "display/PageBuilder.h"

#include <QScopeGuard>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextList>
#include <algorithm>

#include "display/PageElements.h"

namespace PageDocument::detail {

Builder::Builder(QTextDocument& document, bool quirks)
    : m_document(document), m_cursor(&document), m_quirks(quirks) {}

void Builder::Run(const GumboNode* root, const StyleSheet& sheet) {
    m_sheet = &sheet;
    Style style;
    style.MakeFormat();
    m_blockFormats << QTextBlockFormat();
    Element(root, style);
    EndBlock();
    if (m_blockEmpty) {
        CollapseEmptyBlock();
    }
}

Style Builder::ElementStyle(const GumboNode* node, const Style& parent, Box& box) const {
    const GumboTag tag = node->v.element.tag;
    Style style = parent;
    style.verticalAlignment = QTextCharFormat::AlignNormal;
    ApplyDefaults(tag, node, m_quirks, style, box);
    ApplyAttributes(tag, node, style);
    for (const Declaration& declaration : m_sheet->For(node)) {
        ApplyDeclaration(declaration, parent, style, box);
    }
    if (!style.SameLook(parent)) {
        style.MakeFormat();
    }
    return style;
}

void Builder::Children(const GumboNode* node, const Style& style) {
    const GumboVector& children = node->v.element.children;
    for (unsigned i = 0; i < children.length; ++i) {
        const auto* child = static_cast<const GumboNode*>(children.data[i]);
        switch (child->type) {
            case GUMBO_NODE_ELEMENT:
                Element(child, style);
                break;
            case GUMBO_NODE_TEXT:
            case GUMBO_NODE_WHITESPACE:
            case GUMBO_NODE_CDATA:
                Text(QString::fromUtf8(child->v.text.text), style);
                break;
            default:
                break;
        }
    }
}

void Builder::Element(const GumboNode* node, const Style& parent) {
    const GumboTag tag = node->v.element.tag;
    const Kind kind = KindOf(tag);
    if (kind == Kind::Hidden) {
        return;
    }
    if (m_depth >= MostDepth) {
        FlatText(node, parent);
        return;
    }
    ++m_depth;
    const auto closed = qScopeGuard([this] { --m_depth; });
    Box box;
    const Style style = ElementStyle(node, parent, box);
    switch (kind) {
        case Kind::Break:
            EnsureBlock(style);
            m_pendingSpace = false;
            ++m_pendingBreaks;
            m_atLineStart = true;
            return;
        case Kind::Image: {
            const QString alt = Attribute(node, "alt");
            if (!alt.isEmpty()) {
                Text(alt, style);
            }
            return;
        }
        case Kind::Rule:
            BlockOf(node, style, box, true);
            return;
        case Kind::Table:
            Table(node, style, box);
            return;
        case Kind::List:
            m_lists.push_back(
                {tag == GUMBO_TAG_OL ? QTextListFormat::ListDecimal : QTextListFormat::ListDisc,
                 nullptr});
            BlockOf(node, style, box, false);
            m_lists.pop_back();
            return;
        case Kind::ListItem:
            m_listItemPending = !m_lists.empty();
            BlockOf(node, style, box, false);
            return;
        case Kind::Block:
            BlockOf(node, style, box, false);
            return;
        default:
            Children(node, style);
            return;
    }
}

void Builder::FlatText(const GumboNode* node, const Style& style) {
    // Walked with a stack of its own: the nesting may be as deep as the page is long.
    std::vector<std::pair<const GumboNode*, unsigned>> open{{node, 0}};
    while (!open.empty()) {
        auto& [element, next] = open.back();
        const GumboVector& children = element->v.element.children;
        if (next == children.length) {
            open.pop_back();
            continue;
        }
        const auto* child = static_cast<const GumboNode*>(children.data[next++]);
        if (child->type == GUMBO_NODE_ELEMENT && KindOf(child->v.element.tag) != Kind::Hidden) {
            open.emplace_back(child, 0);
        } else if (child->type == GUMBO_NODE_TEXT || child->type == GUMBO_NODE_WHITESPACE ||
                   child->type == GUMBO_NODE_CDATA) {
            Text(QString::fromUtf8(child->v.text.text), style);
        }
    }
}

void Builder::Text(const QString& raw, const Style& style) {
    if (style.preformatted) {
        QString text = raw;
        text.replace(QLatin1Char('\r'), QLatin1Char('\n'));
        text.replace(QLatin1Char('\n'), QChar::LineSeparator);
        Write(text, style);
        return;
    }
    QString out;
    out.reserve(raw.size());
    for (const QChar c : raw) {
        if (IsSpace(c)) {
            m_pendingSpace = true;
            continue;
        }
        if (m_pendingSpace && !(m_atLineStart && out.isEmpty())) {
            out += QLatin1Char(' ');
            m_wordLength = 0;
        }
        m_pendingSpace = false;
        // A word too long for any line may break after every MostWordLength characters, as a
        // browser breaks it when it overflows; Qt's line breaking would otherwise try the whole
        // word again for every line (a million characters took 75 s).
        if (++m_wordLength > MostWordLength) {
            out += QChar(0x200B);  // zero width space
            m_wordLength = 1;
        }
        out += c;
    }
    if (!out.isEmpty()) {
        const bool trailingSpace = m_pendingSpace;
        Write(out, style);
        m_pendingSpace = trailingSpace;
    } else if (m_atLineStart) {
        m_pendingSpace = false;
    }
}

void Builder::Write(const QString& text, const Style& style) {
    EnsureBlock(style);
    if (m_pendingBreaks > 0) {
        m_cursor.insertText(QString(m_pendingBreaks, QChar::LineSeparator), style.format);
        m_pendingBreaks = 0;
    }
    m_cursor.insertText(text, style.format);
    m_atLineStart = false;
}

void Builder::EnsureBlock(const Style& style) {
    if (!m_needBlock) {
        return;
    }
    QTextBlockFormat format = m_blockFormats.last();
    format.setTopMargin(format.topMargin() + m_pendingTop);
    m_pendingTop = 0;
    if (m_blockEmpty) {
        m_cursor.setBlockFormat(format);
        m_cursor.setBlockCharFormat(style.format);
    } else {
        m_cursor.insertBlock(format, style.format);
    }
    if (m_listItemPending) {
        ListEntry& list = m_lists.back();
        if (list.list) {
            list.list->add(m_cursor.block());
        } else {
            QTextListFormat listFormat;
            listFormat.setStyle(list.style);
            listFormat.setIndent(int(m_lists.size()));
            list.list = m_cursor.createList(listFormat);
        }
        m_listItemPending = false;
    }
    m_needBlock = false;
    m_blockEmpty = false;
    m_atLineStart = true;
    m_pendingSpace = false;
    m_pendingBreaks = 0;
    ++m_blocksStarted;
}

void Builder::EndBlock() {
    m_wordLength = 0;
    if (!m_needBlock && m_pendingBreaks > 1) {
        m_cursor.insertText(QString(m_pendingBreaks - 1, QChar::LineSeparator));
    }
    m_pendingBreaks = 0;
    m_pendingSpace = false;
    m_atLineStart = true;
    m_needBlock = true;
}

void Builder::CollapseEmptyBlock() {
    QTextBlockFormat format;
    format.setLineHeight(0, QTextBlockFormat::FixedHeight);
    m_cursor.setBlockFormat(format);
    QTextCharFormat tiny;
    tiny.setProperty(QTextFormat::FontPixelSize, 1);
    m_cursor.setBlockCharFormat(tiny);
}

void Builder::BlockOf(const GumboNode* node, const Style& style, const Box& box, bool rule) {
    EndBlock();
    m_pendingTop = std::max(m_pendingTop, box.top.Pixels(style.fontPixels));
    QTextBlockFormat format;
    format.setAlignment(style.alignment);
    format.setLeftMargin(m_blockFormats.last().leftMargin() + box.left.Pixels(style.fontPixels));
    if (rule) {
        format.setProperty(QTextFormat::BlockTrailingHorizontalRulerWidth,
                           QTextLength(QTextLength::PercentageLength, 100));
    }
    m_blockFormats << format;
    const int startedBefore = m_blocksStarted;
    if (rule) {
        EnsureBlock(style);
    }
    Children(node, style);
    EndBlock();
    const qreal bottom = box.bottom.Pixels(style.fontPixels);
    if (m_blocksStarted > startedBefore && !m_blockEmpty) {
        QTextBlockFormat last = m_cursor.blockFormat();
        last.setBottomMargin(std::max(last.bottomMargin(), bottom));
        m_cursor.setBlockFormat(last);
    } else {
        m_pendingTop = std::max(m_pendingTop, bottom);
    }
    m_blockFormats.removeLast();
}

}  // namespace PageDocument::detail
