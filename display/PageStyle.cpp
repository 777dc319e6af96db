#include "display/PageStyle.h"

#include <QRegularExpression>
#include <algorithm>

namespace PageDocument::detail {
namespace {

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

}  // namespace

void Style::MakeFormat() {
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

void StyleSheet::Add(QString css) {
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
        const QStringList selectors = css.mid(position, open - position).split(QLatin1Char(','));
        const QList<Declaration> declarations = Declarations(css.mid(open + 1, close - open - 1));
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

void StyleSheet::Finish() {
    m_byTag.resize(GUMBO_TAG_LAST + 1);
    for (int tag = 0; tag < GUMBO_TAG_LAST; ++tag) {
        m_byTag[tag] = ForName(QString::fromLatin1(gumbo_normalized_tagname(GumboTag(tag))));
    }
}

QList<Declaration> StyleSheet::For(const GumboNode* node) const {
    const GumboTag tag = node->v.element.tag;
    if (tag != GUMBO_TAG_UNKNOWN && tag < GUMBO_TAG_LAST) {
        return m_byTag[tag];
    }
    GumboStringPiece original = node->v.element.original_tag;
    gumbo_tag_from_original_text(&original);
    return ForName(QString::fromUtf8(original.data, int(original.length)).toLower());
}

QList<Declaration> StyleSheet::Declarations(const QString& block) {
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

QList<Declaration> StyleSheet::ForName(const QString& name) const {
    return m_rules.value(QStringLiteral("*")) + m_rules.value(name);
}

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

}  // namespace PageDocument::detail
