#include "exchange/SchemaOrgMicrodata.h"

#include <QJsonArray>
#include <QRegularExpression>
#include <QString>
#include <QStringList>

#include "exchange/HtmlText.h"

namespace Exchange::SchemaOrgMicrodata {
namespace {

using HtmlText::Attribute;

// Deeper than this, an item's elements are left out, as HtmlText leaves them out.
constexpr int MostDepth = 400;

bool IsItem(const GumboNode* element) { return !Attribute(element, "itemscope").isNull(); }

QStringList Words(const QString& text) {
    static const QRegularExpression blanks(QStringLiteral("\\s+"));
    return text.split(blanks, Qt::SkipEmptyParts);
}

// "Recipe" of itemtype="http://schema.org/Recipe" (the first type when there are several).
QString ItemType(const GumboNode* element) {
    const QStringList types = Words(Attribute(element, "itemtype"));
    if (types.isEmpty()) {
        return QString();
    }
    return types.first().section(u'/', -1).trimmed();
}

// A property's name without the vocabulary's address that some pages put in front.
QString PropertyName(const QString& word) { return word.section(u'/', -1); }

QString ValueOf(const GumboNode* element) {
    switch (element->v.element.tag) {
        case GUMBO_TAG_META:
            return Attribute(element, "content").trimmed();
        case GUMBO_TAG_A:
        case GUMBO_TAG_LINK:
        case GUMBO_TAG_AREA:
            return Attribute(element, "href").trimmed();
        case GUMBO_TAG_IMG:
        case GUMBO_TAG_SOURCE:
        case GUMBO_TAG_VIDEO:
        case GUMBO_TAG_AUDIO:
        case GUMBO_TAG_IFRAME:
        case GUMBO_TAG_EMBED:
            return Attribute(element, "src").trimmed();
        case GUMBO_TAG_TIME:
            if (!Attribute(element, "datetime").isNull()) {
                return Attribute(element, "datetime").trimmed();
            }
            break;
        default:
            break;
    }
    const QString content = Attribute(element, "content");
    return content.isNull() ? HtmlText::OfNode(element) : content.trimmed();
}

void Add(QJsonObject& item, const QString& name, const QJsonValue& value) {
    const QJsonValue present = item.value(name);
    if (present.isUndefined()) {
        item.insert(name, value);
        return;
    }
    QJsonArray values = present.isArray() ? present.toArray() : QJsonArray{present};
    values.append(value);
    item.insert(name, values);
}

QJsonObject ItemOf(const GumboNode* element, int depth);

// The properties that the element and what is inside it give the item; a nested item keeps
// its own.
void CollectProperties(const GumboNode* node, QJsonObject& item, int depth) {
    if (node->type != GUMBO_NODE_ELEMENT || depth > MostDepth) {
        return;
    }
    const QStringList names = Words(Attribute(node, "itemprop"));
    if (!names.isEmpty()) {
        const QJsonValue value =
            IsItem(node) ? QJsonValue(ItemOf(node, depth)) : QJsonValue(ValueOf(node));
        for (const QString& name : names) {
            Add(item, PropertyName(name), value);
        }
    }
    if (IsItem(node)) {
        return;
    }
    const GumboVector& children = node->v.element.children;
    for (unsigned i = 0; i < children.length; ++i) {
        CollectProperties(static_cast<const GumboNode*>(children.data[i]), item, depth + 1);
    }
}

QJsonObject ItemOf(const GumboNode* element, int depth) {
    QJsonObject item;
    item.insert(QLatin1String("@type"), ItemType(element));
    const GumboVector& children = element->v.element.children;
    for (unsigned i = 0; i < children.length; ++i) {
        CollectProperties(static_cast<const GumboNode*>(children.data[i]), item, depth + 1);
    }
    return item;
}

}  // namespace

QList<QJsonObject> RecipeItems(const GumboNode* root) {
    QList<QJsonObject> recipes;
    HtmlText::ForEachElement(root, [&recipes](const GumboNode* element) {
        if (!IsItem(element) || ItemType(element).compare(u"Recipe", Qt::CaseInsensitive) != 0) {
            return true;
        }
        recipes.append(ItemOf(element, 0));
        return false;
    });
    return recipes;
}

}  // namespace Exchange::SchemaOrgMicrodata
