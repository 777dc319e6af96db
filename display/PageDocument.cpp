#include "display/PageDocument.h"

#include <gumbo.h>

#include <QColor>
#include <QHash>
#include <QList>
#include <QRegularExpression>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextList>
#include <QTextTable>
#include <algorithm>
#include <memory>

#include "core/Windows1250.h"

namespace PageDocument {
namespace {

// A length of the page's style rules: pixels, or a multiple of the element's font size.
struct Length {
    qreal value = 0;
    bool em = false;
    qreal Pixels(qreal fontPixels) const { return em ? value * fontPixels : value; }
};

// What an element passes on to its content (the inherited properties of CSS).
struct Style {
    QStringList families{QStringLiteral("serif")};
    qreal fontPixels = 16;  // a browser's "medium"
    bool bold = false;
    bool italic = false;
    bool underline = false;
    bool strike = false;
    QTextCharFormat::VerticalAlignment verticalAlignment = QTextCharFormat::AlignNormal;
    QColor color;
    QString anchor;
    Qt::Alignment alignment = Qt::AlignLeft;
    bool preformatted = false;
    QTextCharFormat format;  // the character format of the values above

    bool SameLook(const Style& other) const {
        return families == other.families && fontPixels == other.fontPixels && bold == other.bold &&
               italic == other.italic && underline == other.underline && strike == other.strike &&
               verticalAlignment == other.verticalAlignment && color == other.color &&
               anchor == other.anchor;
    }

    void MakeFormat() {
        format = QTextCharFormat();
        format.setFontFamilies(families);
        format.setProperty(QTextFormat::FontPixelSize, std::max(1, qRound(fontPixels)));
        format.setFontWeight(bold ? QFont::Bold : QFont::Normal);
        if (italic) {
            format.setFontItalic(true);
        }
        if (underline) {
            format.setFontUnderline(true);
        }
        if (strike) {
            format.setFontStrikeOut(true);
        }
        if (verticalAlignment != QTextCharFormat::AlignNormal) {
            format.setVerticalAlignment(verticalAlignment);
        }
        if (color.isValid()) {
            format.setForeground(color);
        }
        if (!anchor.isEmpty()) {
            format.setAnchor(true);
            format.setAnchorHref(anchor);
        }
    }
};

// The box of a block-level element (not passed on).
struct Box {
    Length top;
    Length bottom;
    Length left;
};

// Marks the blocks that are the rows of a recipe list (see Builder::IsRowList).
constexpr int RowProperty = QTextFormat::UserProperty + 1;

enum class Kind { Hidden, Inline, Block, ListItem, List, Table, Break, Rule, Image };

Kind KindOf(GumboTag tag) {
    switch (tag) {
        case GUMBO_TAG_HEAD:
        case GUMBO_TAG_TITLE:
        case GUMBO_TAG_STYLE:
        case GUMBO_TAG_SCRIPT:
        case GUMBO_TAG_NOSCRIPT:
        case GUMBO_TAG_TEMPLATE:
        case GUMBO_TAG_META:
        case GUMBO_TAG_LINK:
        case GUMBO_TAG_BASE:
        case GUMBO_TAG_AREA:
        case GUMBO_TAG_MAP:
        case GUMBO_TAG_PARAM:
        case GUMBO_TAG_SELECT:
        case GUMBO_TAG_IFRAME:
        case GUMBO_TAG_OBJECT:
        case GUMBO_TAG_EMBED:
        case GUMBO_TAG_INPUT:
        case GUMBO_TAG_TEXTAREA:
            return Kind::Hidden;
        case GUMBO_TAG_HTML:
        case GUMBO_TAG_BODY:
        case GUMBO_TAG_ADDRESS:
        case GUMBO_TAG_ARTICLE:
        case GUMBO_TAG_ASIDE:
        case GUMBO_TAG_BLOCKQUOTE:
        case GUMBO_TAG_CENTER:
        case GUMBO_TAG_DD:
        case GUMBO_TAG_DETAILS:
        case GUMBO_TAG_DIR:
        case GUMBO_TAG_DIV:
        case GUMBO_TAG_DL:
        case GUMBO_TAG_DT:
        case GUMBO_TAG_FIELDSET:
        case GUMBO_TAG_FIGCAPTION:
        case GUMBO_TAG_FIGURE:
        case GUMBO_TAG_FOOTER:
        case GUMBO_TAG_FORM:
        case GUMBO_TAG_H1:
        case GUMBO_TAG_H2:
        case GUMBO_TAG_H3:
        case GUMBO_TAG_H4:
        case GUMBO_TAG_H5:
        case GUMBO_TAG_H6:
        case GUMBO_TAG_HEADER:
        case GUMBO_TAG_HGROUP:
        case GUMBO_TAG_LEGEND:
        case GUMBO_TAG_LISTING:
        case GUMBO_TAG_MAIN:
        case GUMBO_TAG_MENU:
        case GUMBO_TAG_NAV:
        case GUMBO_TAG_P:
        case GUMBO_TAG_PLAINTEXT:
        case GUMBO_TAG_PRE:
        case GUMBO_TAG_SECTION:
        case GUMBO_TAG_SUMMARY:
        case GUMBO_TAG_XMP:
        case GUMBO_TAG_CAPTION:
            return Kind::Block;
        case GUMBO_TAG_UL:
        case GUMBO_TAG_OL:
            return Kind::List;
        case GUMBO_TAG_LI:
            return Kind::ListItem;
        case GUMBO_TAG_TABLE:
            return Kind::Table;
        case GUMBO_TAG_BR:
            return Kind::Break;
        case GUMBO_TAG_HR:
            return Kind::Rule;
        case GUMBO_TAG_IMG:
            return Kind::Image;
        default:
            return Kind::Inline;
    }
}

QString Attribute(const GumboNode* node, const char* name) {
    const GumboAttribute* attribute = gumbo_get_attribute(&node->v.element.attributes, name);
    return attribute ? QString::fromUtf8(attribute->value) : QString();
}

bool IsSpace(QChar c) { return c == u' ' || c == u'\t' || c == u'\n' || c == u'\r' || c == u'\f'; }

qreal Percent(const QString& value, qreal whole, bool* ok) {
    return value.chopped(1).trimmed().toDouble(ok) / 100 * whole;
}

// A CSS length: px, pt, em, % (of `relativeTo`), or a bare 0. Returns false when unreadable.
bool ReadLength(QString value, qreal relativeTo, Length& length) {
    value = value.trimmed().toLower();
    bool ok = false;
    if (value.endsWith(QLatin1String("px"))) {
        length = {value.chopped(2).toDouble(&ok), false};
    } else if (value.endsWith(QLatin1String("pt"))) {
        length = {value.chopped(2).toDouble(&ok) * 96 / 72, false};
    } else if (value.endsWith(QLatin1String("em"))) {
        length = {value.chopped(2).toDouble(&ok), true};
    } else if (value.endsWith(QLatin1Char('%'))) {
        length = {Percent(value, relativeTo, &ok), false};
    } else {
        length = {value.toDouble(&ok), false};
        ok = ok && length.value == 0;
    }
    return ok;
}

// The font size a CSS font-size value gives within a parent of `parentPixels`.
qreal FontSize(const QString& value, qreal parentPixels) {
    static const QHash<QString, qreal> keywords{
        {QStringLiteral("xx-small"), 9}, {QStringLiteral("x-small"), 10},
        {QStringLiteral("small"), 13},   {QStringLiteral("medium"), 16},
        {QStringLiteral("large"), 18},   {QStringLiteral("x-large"), 24},
        {QStringLiteral("xx-large"), 32}};
    const QString v = value.trimmed().toLower();
    if (keywords.contains(v)) {
        return keywords.value(v);
    }
    if (v == QLatin1String("smaller")) {
        return parentPixels / 1.2;
    }
    if (v == QLatin1String("larger")) {
        return parentPixels * 1.2;
    }
    Length length;
    if (!ReadLength(v, parentPixels, length) || length.value <= 0) {
        return parentPixels;
    }
    return length.Pixels(parentPixels);
}

Qt::Alignment AlignmentOf(const QString& value, Qt::Alignment otherwise) {
    const QString v = value.trimmed().toLower();
    if (v == QLatin1String("left")) {
        return Qt::AlignLeft;
    }
    if (v == QLatin1String("right")) {
        return Qt::AlignRight;
    }
    if (v == QLatin1String("center") || v == QLatin1String("middle")) {
        return Qt::AlignHCenter;
    }
    if (v == QLatin1String("justify")) {
        return Qt::AlignJustify;
    }
    return otherwise;
}

struct Declaration {
    QString property;
    QString value;
};

// The element rules of the page's style blocks ("h1{font-size:22px;}"), in the order given.
// Rules with other selectors than element names do not apply to anything here.
class StyleSheet {
public:
    void Add(QString css) {
        static const QRegularExpression comments(QStringLiteral("/\\*.*?\\*/"),
                                                 QRegularExpression::DotMatchesEverythingOption);
        css.remove(comments);
        css.remove(QStringLiteral("<!--"));
        css.remove(QStringLiteral("-->"));
        qsizetype position = 0;
        while (true) {
            const qsizetype open = css.indexOf(QLatin1Char('{'), position);
            const qsizetype close = css.indexOf(QLatin1Char('}'), open + 1);
            if (open < 0 || close < 0) {
                return;
            }
            const QStringList selectors =
                css.mid(position, open - position).split(QLatin1Char(','));
            const QList<Declaration> declarations =
                Declarations(css.mid(open + 1, close - open - 1));
            for (const QString& selector : selectors) {
                const QString name = selector.trimmed().toLower();
                static const QRegularExpression element(QStringLiteral("^(\\*|[a-z][a-z0-9]*)$"));
                if (element.match(name).hasMatch()) {
                    m_rules[name] += declarations;
                }
            }
            position = close + 1;
        }
    }

    // Makes the rules ready for lookup; call after the last Add.
    void Finish() {
        m_byTag.resize(GUMBO_TAG_LAST + 1);
        for (int tag = 0; tag < GUMBO_TAG_LAST; ++tag) {
            m_byTag[tag] = ForName(QString::fromLatin1(gumbo_normalized_tagname(GumboTag(tag))));
        }
    }

    // The declarations for an element: those for every element first, then its own.
    QList<Declaration> For(const GumboNode* node) const {
        const GumboTag tag = node->v.element.tag;
        if (tag != GUMBO_TAG_UNKNOWN && tag < GUMBO_TAG_LAST) {
            return m_byTag[tag];
        }
        GumboStringPiece original = node->v.element.original_tag;
        gumbo_tag_from_original_text(&original);
        return ForName(QString::fromUtf8(original.data, int(original.length)).toLower());
    }

private:
    static QList<Declaration> Declarations(const QString& block) {
        QList<Declaration> list;
        for (const QString& part : block.split(QLatin1Char(';'))) {
            const qsizetype colon = part.indexOf(QLatin1Char(':'));
            if (colon > 0) {
                QString value = part.mid(colon + 1).trimmed();
                value.remove(QRegularExpression(QStringLiteral("\\s*!\\s*important$")));
                list << Declaration{part.left(colon).trimmed().toLower(), value};
            }
        }
        return list;
    }

    QList<Declaration> ForName(const QString& name) const {
        return m_rules.value(QStringLiteral("*")) + m_rules.value(name);
    }

    QHash<QString, QList<Declaration>> m_rules;
    std::vector<QList<Declaration>> m_byTag;
};

void ApplyDeclaration(const Declaration& d, const Style& parent, Style& style, Box& box) {
    const QString v = d.value.toLower();
    Length length;
    if (d.property == QLatin1String("font-family")) {
        QStringList families;
        for (QString family : d.value.split(QLatin1Char(','))) {
            family = family.trimmed();
            family.remove(QLatin1Char('"'));
            family.remove(QLatin1Char('\''));
            if (!family.isEmpty()) {
                families << family;
            }
        }
        if (!families.isEmpty()) {
            style.families = families;
        }
    } else if (d.property == QLatin1String("font-size")) {
        style.fontPixels = FontSize(v, parent.fontPixels);
    } else if (d.property == QLatin1String("font-weight")) {
        style.bold = v == QLatin1String("bold") || v == QLatin1String("bolder") || v.toInt() >= 600;
    } else if (d.property == QLatin1String("font-style")) {
        style.italic = v == QLatin1String("italic") || v == QLatin1String("oblique");
    } else if (d.property == QLatin1String("text-decoration")) {
        style.underline = v.contains(QLatin1String("underline"));
        style.strike = v.contains(QLatin1String("line-through"));
    } else if (d.property == QLatin1String("text-align")) {
        style.alignment = AlignmentOf(v, style.alignment);
    } else if (d.property == QLatin1String("color")) {
        const QColor color(d.value.trimmed());
        if (color.isValid()) {
            style.color = color;
        }
    } else if (d.property == QLatin1String("margin-top") && ReadLength(v, 0, length)) {
        box.top = length;
    } else if (d.property == QLatin1String("margin-bottom") && ReadLength(v, 0, length)) {
        box.bottom = length;
    } else if (d.property == QLatin1String("margin-left") && ReadLength(v, 0, length)) {
        box.left = length;
    } else if (d.property == QLatin1String("margin")) {
        const QStringList parts = v.split(QLatin1Char(' '), Qt::SkipEmptyParts);
        QList<Length> lengths;
        for (const QString& part : parts) {
            if (!ReadLength(part, 0, length)) {
                return;
            }
            lengths << length;
        }
        if (!lengths.isEmpty()) {
            box.top = lengths[0];
            box.bottom = lengths.value(2, lengths[0]);
            box.left = lengths.value(3, lengths.value(1, lengths[0]));
        }
    }
}

// A browser's own rules for an element (its default style sheet), before the page's rules.
void ApplyDefaults(GumboTag tag, const GumboNode* node, bool quirks, Style& style, Box& box) {
    static const qreal headingSizes[] = {2, 1.5, 1.17, 1, 0.83, 0.67};
    static const qreal headingMargins[] = {0.67, 0.83, 1, 1.33, 1.67, 2.33};
    switch (tag) {
        case GUMBO_TAG_H1:
        case GUMBO_TAG_H2:
        case GUMBO_TAG_H3:
        case GUMBO_TAG_H4:
        case GUMBO_TAG_H5:
        case GUMBO_TAG_H6: {
            const int level = tag - GUMBO_TAG_H1;
            style.bold = true;
            style.fontPixels *= headingSizes[level];
            box.top = box.bottom = {headingMargins[level], true};
            break;
        }
        case GUMBO_TAG_P:
        case GUMBO_TAG_DL:
        case GUMBO_TAG_PRE:
        case GUMBO_TAG_LISTING:
        case GUMBO_TAG_XMP:
        case GUMBO_TAG_PLAINTEXT:
            box.top = box.bottom = {1, true};
            break;
        case GUMBO_TAG_UL:
        case GUMBO_TAG_OL:
        case GUMBO_TAG_MENU:
        case GUMBO_TAG_DIR:
            box.top = box.bottom = {1, true};
            break;
        case GUMBO_TAG_BLOCKQUOTE:
        case GUMBO_TAG_FIGURE:
            box.top = box.bottom = {1, true};
            box.left = {40, false};
            break;
        case GUMBO_TAG_DD:
            box.left = {40, false};
            break;
        case GUMBO_TAG_CENTER:
            style.alignment = Qt::AlignHCenter;
            break;
        case GUMBO_TAG_TH:
            style.bold = true;
            style.alignment = Qt::AlignHCenter;
            break;
        case GUMBO_TAG_TABLE:
            if (quirks) {  // pages without a document type: tables do not inherit these
                style.fontPixels = 16;
                style.bold = false;
                style.italic = false;
                style.alignment = Qt::AlignLeft;
            }
            break;
        case GUMBO_TAG_B:
        case GUMBO_TAG_STRONG:
            style.bold = true;
            break;
        case GUMBO_TAG_I:
        case GUMBO_TAG_EM:
        case GUMBO_TAG_CITE:
        case GUMBO_TAG_VAR:
        case GUMBO_TAG_DFN:
        case GUMBO_TAG_ADDRESS:
            style.italic = true;
            break;
        case GUMBO_TAG_U:
        case GUMBO_TAG_INS:
            style.underline = true;
            break;
        case GUMBO_TAG_S:
        case GUMBO_TAG_STRIKE:
        case GUMBO_TAG_DEL:
            style.strike = true;
            break;
        case GUMBO_TAG_TT:
        case GUMBO_TAG_CODE:
        case GUMBO_TAG_KBD:
        case GUMBO_TAG_SAMP:
            style.families = {QStringLiteral("monospace")};
            style.fontPixels *= 13.0 / 16.0;
            break;
        case GUMBO_TAG_SUB:
        case GUMBO_TAG_SUP:
            style.verticalAlignment = tag == GUMBO_TAG_SUB ? QTextCharFormat::AlignSubScript
                                                           : QTextCharFormat::AlignSuperScript;
            style.fontPixels /= 1.2;
            break;
        case GUMBO_TAG_SMALL:
            style.fontPixels /= 1.2;
            break;
        case GUMBO_TAG_BIG:
            style.fontPixels *= 1.2;
            break;
        case GUMBO_TAG_A:
            if (!Attribute(node, "href").isNull()) {
                style.anchor = Attribute(node, "href");
                style.color = QColor(0, 0, 238);
                style.underline = true;
            }
            break;
        default:
            break;
    }
    if (tag == GUMBO_TAG_PRE || tag == GUMBO_TAG_LISTING || tag == GUMBO_TAG_XMP ||
        tag == GUMBO_TAG_PLAINTEXT) {
        style.preformatted = true;
        style.families = {QStringLiteral("monospace")};
        style.fontPixels *= 13.0 / 16.0;
    }
}

// Presentational attributes (align, <font>), which count before the page's rules.
void ApplyAttributes(GumboTag tag, const GumboNode* node, Style& style) {
    static const QList<GumboTag> aligned{
        GUMBO_TAG_P,  GUMBO_TAG_DIV,   GUMBO_TAG_H1,    GUMBO_TAG_H2,    GUMBO_TAG_H3,
        GUMBO_TAG_H4, GUMBO_TAG_H5,    GUMBO_TAG_H6,    GUMBO_TAG_TD,    GUMBO_TAG_TH,
        GUMBO_TAG_TR, GUMBO_TAG_TBODY, GUMBO_TAG_THEAD, GUMBO_TAG_TFOOT, GUMBO_TAG_CAPTION};
    if (aligned.contains(tag)) {
        style.alignment = AlignmentOf(Attribute(node, "align"), style.alignment);
    }
    if (tag == GUMBO_TAG_FONT) {
        const QString face = Attribute(node, "face");
        if (!face.isEmpty()) {
            style.families = face.split(QLatin1Char(','));
        }
        const QColor color(Attribute(node, "color"));
        if (color.isValid()) {
            style.color = color;
        }
        const QString size = Attribute(node, "size").trimmed();
        if (!size.isEmpty()) {
            static const qreal sizes[] = {10, 13, 16, 18, 24, 32, 48};
            bool ok = false;
            int number = size.toInt(&ok);
            if (ok) {
                if (size.startsWith(QLatin1Char('+')) || size.startsWith(QLatin1Char('-'))) {
                    number += 3;
                }
                style.fontPixels = sizes[std::clamp(number, 1, 7) - 1];
            }
        }
    }
}

// Lays the parsed tree out in the document, keeping the position of a browser's line boxes:
// inline content flows into the block of the nearest block-level element, whitespace collapses,
// and a line break that ends a block adds no empty line.
class Builder {
public:
    Builder(QTextDocument& document, bool quirks)
        : m_document(document), m_cursor(&document), m_quirks(quirks) {}

    void Run(const GumboNode* root, const StyleSheet& sheet) {
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

private:
    Style ElementStyle(const GumboNode* node, const Style& parent, Box& box) const {
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

    void Children(const GumboNode* node, const Style& style) {
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

    void Element(const GumboNode* node, const Style& parent) {
        const GumboTag tag = node->v.element.tag;
        const Kind kind = KindOf(tag);
        if (kind == Kind::Hidden) {
            return;
        }
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

    void Text(const QString& raw, const Style& style) {
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
            }
            m_pendingSpace = false;
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

    void Write(const QString& text, const Style& style) {
        EnsureBlock(style);
        if (m_pendingBreaks > 0) {
            m_cursor.insertText(QString(m_pendingBreaks, QChar::LineSeparator), style.format);
            m_pendingBreaks = 0;
        }
        m_cursor.insertText(text, style.format);
        m_atLineStart = false;
    }

    // Starts the pending block, when inline content arrives after a block boundary.
    void EnsureBlock(const Style& style) {
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

    // Ends the current block: a last line break adds no line of its own.
    void EndBlock() {
        if (!m_needBlock && m_pendingBreaks > 1) {
            m_cursor.insertText(QString(m_pendingBreaks - 1, QChar::LineSeparator));
        }
        m_pendingBreaks = 0;
        m_pendingSpace = false;
        m_atLineStart = true;
        m_needBlock = true;
    }

    // An empty block that stands only because the document needs one (before a table at the
    // start, after a table at the end) takes no height.
    void CollapseEmptyBlock() {
        QTextBlockFormat format;
        format.setLineHeight(0, QTextBlockFormat::FixedHeight);
        m_cursor.setBlockFormat(format);
        QTextCharFormat tiny;
        tiny.setProperty(QTextFormat::FontPixelSize, 1);
        m_cursor.setBlockCharFormat(tiny);
    }

    void BlockOf(const GumboNode* node, const Style& style, const Box& box, bool rule) {
        EndBlock();
        m_pendingTop = std::max(m_pendingTop, box.top.Pixels(style.fontPixels));
        QTextBlockFormat format;
        format.setAlignment(style.alignment);
        format.setLeftMargin(m_blockFormats.last().leftMargin() +
                             box.left.Pixels(style.fontPixels));
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

    struct Cell {
        const GumboNode* node;
        int row;
        int column;
        int span;
        Style style;
    };

    // The cells of a table's rows (directly in the table or in its row groups).
    void CollectRows(const GumboNode* node, const Style& style, QList<Cell>& cells, int& rows,
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
                    if (cell->type != GUMBO_NODE_ELEMENT || (cell->v.element.tag != GUMBO_TAG_TD &&
                                                             cell->v.element.tag != GUMBO_TAG_TH)) {
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

    void Table(const GumboNode* node, const Style& style, const Box& box) {
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
            format.setWidth(
                QTextLength(QTextLength::PercentageLength, width.chopped(1).toDouble()));
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

    static bool InlineOnly(const GumboNode* node) {
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
    static bool IsRowList(const GumboNode* table, const QList<Cell>& cells) {
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
    static bool PlainText(const GumboNode* cell, QString& text) {
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

    void RowList(const GumboNode* node, const Style& style, const Box& box,
                 const QList<Cell>& cells) {
        const QString spacingText = Attribute(node, "cellspacing");
        const QString paddingText = Attribute(node, "cellpadding");
        const qreal spacing = spacingText.isEmpty() ? 2 : spacingText.toDouble();
        const qreal padding = paddingText.isEmpty() ? 1 : paddingText.toDouble();
        QTextBlockFormat row;
        row.setProperty(RowProperty, true);
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
};

// The text of an element's text children as they stand (a style block).
QString RawText(const GumboNode* element) {
    QString text;
    const GumboVector& children = element->v.element.children;
    for (unsigned i = 0; i < children.length; ++i) {
        const auto* child = static_cast<const GumboNode*>(children.data[i]);
        if (child->type == GUMBO_NODE_TEXT || child->type == GUMBO_NODE_WHITESPACE) {
            text += QString::fromUtf8(child->v.text.text);
        }
    }
    return text;
}

// The style blocks of the whole page, in order, and its title (the first title element).
void CollectHead(const GumboNode* node, StyleSheet& sheet, QString& title) {
    if (node->type != GUMBO_NODE_ELEMENT) {
        return;
    }
    const GumboTag tag = node->v.element.tag;
    if (tag == GUMBO_TAG_STYLE) {
        sheet.Add(RawText(node));
        return;
    }
    if (tag == GUMBO_TAG_TITLE) {
        if (title.isNull()) {
            title = RawText(node).simplified();
        }
        return;
    }
    const GumboVector& children = node->v.element.children;
    for (unsigned i = 0; i < children.length; ++i) {
        CollectHead(static_cast<const GumboNode*>(children.data[i]), sheet, title);
    }
}

}  // namespace

void Build(QTextDocument& document, const QString& html) {
    const QByteArray utf8 = html.toUtf8();
    std::unique_ptr<GumboOutput, void (*)(GumboOutput*)> output(
        gumbo_parse_with_options(&kGumboDefaultOptions, utf8.constData(), size_t(utf8.size())),
        [](GumboOutput* parsed) { gumbo_destroy_output(&kGumboDefaultOptions, parsed); });
    StyleSheet sheet;
    QString title;
    CollectHead(output->root, sheet, title);
    sheet.Finish();

    const bool undo = document.isUndoRedoEnabled();
    document.setUndoRedoEnabled(false);
    document.setDocumentMargin(8);  // the body's margin
    document.setMetaInformation(QTextDocument::DocumentTitle, title);
    const bool quirks =
        output->document->v.document.doc_type_quirks_mode != GUMBO_DOCTYPE_NO_QUIRKS;
    Builder(document, quirks).Run(output->root, sheet);
    document.setUndoRedoEnabled(undo);
}

void FitWidth(QTextDocument& document, qreal textWidth) {
    const qreal room = textWidth - 2 * document.documentMargin();
    QTextCursor run(&document);
    bool inRun = false;
    qreal runMargins = 0;
    const auto endRun = [&](const QTextBlock& last) {
        QTextBlockFormat tabs;
        tabs.setTabPositions(
            {QTextOption::Tab(std::max<qreal>(room - runMargins, 0), QTextOption::RightTab)});
        run.setPosition(last.position(), QTextCursor::KeepAnchor);
        run.mergeBlockFormat(tabs);
        inRun = false;
    };
    QTextBlock previous;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        const QTextBlockFormat format = block.blockFormat();
        const bool row = format.boolProperty(RowProperty);
        const qreal margins = format.leftMargin() + format.rightMargin();
        if (inRun && (!row || margins != runMargins)) {
            endRun(previous);
        }
        if (row && !inRun) {
            run.setPosition(block.position());
            runMargins = margins;
            inRun = true;
        }
        previous = block;
    }
    if (inRun) {
        endRun(previous);
    }
}

void BuildFromBytes(QTextDocument& document, const QByteArray& bytes) {
    Build(document, Windows1250::Decode(bytes));
}

}  // namespace PageDocument
