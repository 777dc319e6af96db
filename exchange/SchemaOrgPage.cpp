#include "exchange/SchemaOrgPage.h"

#include <QStringDecoder>

#include "exchange/HtmlText.h"
#include "exchange/SchemaOrgJson.h"
#include "exchange/SchemaOrgMicrodata.h"

namespace Exchange::SchemaOrgPage {
namespace {

using HtmlText::Attribute;

// What the page says about itself besides its recipes.
struct PageFacts {
    QList<QJsonValue> blocks;  // the JSON-LD blocks that are JSON
    int blocksSeen = 0;        // and those that are not, too
    SchemaOrgJson::Context context;
};

bool IsJsonLd(const GumboNode* element) {
    return element->v.element.tag == GUMBO_TAG_SCRIPT &&
           Attribute(element, "type")
                   .section(u';', 0, 0)
                   .trimmed()
                   .compare(u"application/ld+json", Qt::CaseInsensitive) == 0;
}

QByteArray ScriptText(const GumboNode* element) {
    QByteArray text;
    const GumboVector& children = element->v.element.children;
    for (unsigned i = 0; i < children.length; ++i) {
        const auto* child = static_cast<const GumboNode*>(children.data[i]);
        if (child->type == GUMBO_NODE_TEXT || child->type == GUMBO_NODE_WHITESPACE ||
            child->type == GUMBO_NODE_CDATA) {
            text += child->v.text.text;
        }
    }
    return text;
}

void AddBlock(const GumboNode* element, PageFacts& facts, FileNotes& notes) {
    const int number = ++facts.blocksSeen;
    QString error;
    const std::optional<QJsonValue> block = SchemaOrgJson::Parse(ScriptText(element), error);
    if (!block) {
        notes.problems.append(
            QStringLiteral("blok JSON-LD %1 ni berljiv: %2").arg(number).arg(error));
        return;
    }
    facts.blocks.append(*block);
    SchemaOrgJson::IndexObjects(*block, facts.context.objectsById);
}

// The page's own address: <link rel="canonical">, else <meta property="og:url">.
void NoteAddress(const GumboNode* element, PageFacts& facts) {
    const GumboTag tag = element->v.element.tag;
    if (tag == GUMBO_TAG_LINK &&
        Attribute(element, "rel").compare(u"canonical", Qt::CaseInsensitive) == 0) {
        facts.context.pageUrl = Attribute(element, "href").trimmed();
    } else if (tag == GUMBO_TAG_META && facts.context.pageUrl.isEmpty() &&
               Attribute(element, "property").compare(u"og:url", Qt::CaseInsensitive) == 0) {
        facts.context.pageUrl = Attribute(element, "content").trimmed();
    } else if (tag == GUMBO_TAG_TITLE && facts.context.pageTitle.isEmpty()) {
        facts.context.pageTitle = HtmlText::Lines(HtmlText::OfNode(element)).join(u' ');
    }
}

PageFacts Gather(const GumboNode* root, FileNotes& notes) {
    PageFacts facts;
    HtmlText::ForEachElement(root, [&](const GumboNode* element) {
        if (IsJsonLd(element)) {
            AddBlock(element, facts, notes);
            return false;
        }
        NoteAddress(element, facts);
        return true;
    });
    return facts;
}

// The page as UTF-8, from the encoding that it declares (UTF-8 when it declares none).
QByteArray AsUtf8(const QByteArray& page) {
    QStringDecoder decoder = QStringDecoder::decoderForHtml(page);
    if (!decoder.isValid()) {
        decoder = QStringDecoder(QStringDecoder::Utf8);
    }
    return QString(decoder.decode(page)).toUtf8();
}

QList<QJsonObject> RecipesOf(const QList<QJsonValue>& blocks) {
    QList<QJsonObject> recipes;
    for (const QJsonValue& block : blocks) {
        recipes += SchemaOrgJson::FindRecipes(block);
    }
    return recipes;
}

}  // namespace

void Read(const QByteArray& page, const RecipeSink& sink, FileNotes& notes) {
    const HtmlText::Document document = HtmlText::Parse(AsUtf8(page));
    const PageFacts facts = Gather(document->root, notes);
    QList<QJsonObject> recipes = RecipesOf(facts.blocks);
    if (recipes.isEmpty()) {
        recipes = SchemaOrgMicrodata::RecipeItems(document->root);
    }
    if (recipes.isEmpty()) {
        notes.notRecipes += 1;
        notes.problems.append(QStringLiteral(
            "stran nima podatkov o receptu (schema.org Recipe ne v JSON-LD ne v mikropodatkih)"));
        return;
    }
    for (const QJsonObject& recipe : recipes) {
        sink(SchemaOrgJson::ToRecipe(recipe, facts.context));
    }
}

}  // namespace Exchange::SchemaOrgPage
