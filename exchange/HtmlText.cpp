#include "exchange/HtmlText.h"

#include <QStringList>

namespace Exchange::HtmlText {
namespace {

// Deeper than this, a page's elements are left out: no page worth reading nests so far.
constexpr int MostDepth = 400;

bool EndsLine(GumboTag tag) {
    switch (tag) {
        case GUMBO_TAG_BR:
        case GUMBO_TAG_P:
        case GUMBO_TAG_DIV:
        case GUMBO_TAG_LI:
        case GUMBO_TAG_UL:
        case GUMBO_TAG_OL:
        case GUMBO_TAG_DL:
        case GUMBO_TAG_DT:
        case GUMBO_TAG_DD:
        case GUMBO_TAG_H1:
        case GUMBO_TAG_H2:
        case GUMBO_TAG_H3:
        case GUMBO_TAG_H4:
        case GUMBO_TAG_H5:
        case GUMBO_TAG_H6:
        case GUMBO_TAG_TR:
        case GUMBO_TAG_TABLE:
        case GUMBO_TAG_SECTION:
        case GUMBO_TAG_ARTICLE:
        case GUMBO_TAG_BLOCKQUOTE:
        case GUMBO_TAG_PRE:
        case GUMBO_TAG_HEADER:
        case GUMBO_TAG_FOOTER:
            return true;
        default:
            return false;
    }
}

bool IsHidden(GumboTag tag) {
    return tag == GUMBO_TAG_SCRIPT || tag == GUMBO_TAG_STYLE || tag == GUMBO_TAG_TEMPLATE ||
           tag == GUMBO_TAG_HEAD || tag == GUMBO_TAG_NOSCRIPT;
}

// The text of a text node: with `keepBreaks` its line breaks stay, otherwise every blank is a
// space, as a browser shows it.
QString TextOf(const GumboNode* node, bool keepBreaks) {
    QString text = QString::fromUtf8(node->v.text.text);
    if (keepBreaks) {
        return text.replace(QLatin1String("\r\n"), QLatin1String("\n")).replace(u'\r', u'\n');
    }
    for (QChar& character : text) {
        if (character.isSpace()) {
            character = u' ';
        }
    }
    return text;
}

void Collect(const GumboNode* node, bool keepBreaks, int depth, QString& text) {
    if (node->type == GUMBO_NODE_TEXT || node->type == GUMBO_NODE_WHITESPACE ||
        node->type == GUMBO_NODE_CDATA) {
        text += TextOf(node, keepBreaks);
        return;
    }
    if ((node->type != GUMBO_NODE_ELEMENT && node->type != GUMBO_NODE_DOCUMENT) ||
        depth > MostDepth) {
        return;
    }
    const GumboVector& children =
        node->type == GUMBO_NODE_DOCUMENT ? node->v.document.children : node->v.element.children;
    const GumboTag tag =
        node->type == GUMBO_NODE_DOCUMENT ? GUMBO_TAG_UNKNOWN : node->v.element.tag;
    if (IsHidden(tag)) {
        return;
    }
    const bool endsLine = EndsLine(tag);
    if (endsLine) {
        text += u'\n';
    }
    for (unsigned i = 0; i < children.length; ++i) {
        Collect(static_cast<const GumboNode*>(children.data[i]), keepBreaks, depth + 1, text);
    }
    if (endsLine) {
        text += u'\n';
    }
}

QString Tidy(const QString& text) { return Lines(text).join(u'\n'); }

void Visit(const GumboNode* node, const std::function<bool(const GumboNode*)>& visit, int depth) {
    if (node->type != GUMBO_NODE_ELEMENT || depth > MostDepth || !visit(node)) {
        return;
    }
    const GumboVector& children = node->v.element.children;
    for (unsigned i = 0; i < children.length; ++i) {
        Visit(static_cast<const GumboNode*>(children.data[i]), visit, depth + 1);
    }
}

}  // namespace

Document Parse(const QByteArray& utf8) {
    return Document(
        gumbo_parse_with_options(&kGumboDefaultOptions, utf8.constData(), size_t(utf8.size())),
        [](GumboOutput* parsed) { gumbo_destroy_output(&kGumboDefaultOptions, parsed); });
}

QString OfNode(const GumboNode* node) {
    QString text;
    Collect(node, false, 0, text);
    return Tidy(text);
}

QString OfFragment(const QString& html) {
    if (!html.contains(u'<') && !html.contains(u'&')) {
        return Tidy(html);
    }
    const Document document = Parse(html.toUtf8());
    QString text;
    Collect(document->root, true, 0, text);
    return Tidy(text);
}

QStringList Lines(const QString& text) {
    QStringList lines;
    for (const QString& line : text.split(u'\n')) {
        const QString tidy = line.simplified();
        if (!tidy.isEmpty()) {
            lines.append(tidy);
        }
    }
    return lines;
}

void ForEachElement(const GumboNode* node, const std::function<bool(const GumboNode*)>& visit) {
    Visit(node, visit, 0);
}

QString Attribute(const GumboNode* element, const char* name) {
    if (element->type != GUMBO_NODE_ELEMENT) {
        return QString();
    }
    const GumboAttribute* attribute = gumbo_get_attribute(&element->v.element.attributes, name);
    return attribute ? QString::fromUtf8(attribute->value) : QString();
}

}  // namespace Exchange::HtmlText
