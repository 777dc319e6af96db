#include "display/PageElements.h"

#include <QColor>
#include <QList>
#include <algorithm>

namespace PageDocument::detail {

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

}  // namespace PageDocument::detail
