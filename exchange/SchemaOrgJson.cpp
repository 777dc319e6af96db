#include "exchange/SchemaOrgJson.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonParseError>
#include <QStringList>
#include <algorithm>

#include "exchange/HtmlText.h"
#include "exchange/SchemaOrgSections.h"

namespace Exchange::SchemaOrgJson {
namespace {

// The last part of a type's name: "Recipe" of "https://schema.org/Recipe" or "schema:Recipe".
QString TypeName(const QString& type) {
    const qsizetype cut = std::max(type.lastIndexOf(u'/'), type.lastIndexOf(u':'));
    return type.mid(cut + 1).trimmed();
}

std::optional<QJsonValue> ParseStrict(const QByteArray& json, QString& error) {
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(json, &parseError);
    if (parseError.error != QJsonParseError::NoError) {
        error = QStringLiteral("%1 (znak %2)").arg(parseError.errorString()).arg(parseError.offset);
        return std::nullopt;
    }
    return document.isArray() ? QJsonValue(document.array()) : QJsonValue(document.object());
}

// The JSON with every control character (a raw line break, a tab) as a blank: outside strings
// that changes nothing, inside them it makes the text valid.
QByteArray WithoutControlCharacters(QByteArray json) {
    for (char& byte : json) {
        if (static_cast<unsigned char>(byte) < 0x20) {
            byte = ' ';
        }
    }
    return json;
}

// The name of a person or organisation: a text, an object with "name" (or one that the
// document gives by its "@id"), or a list of them joined with commas.
QString NameOf(const QJsonValue& value, const Context& context) {
    if (value.isArray()) {
        QStringList names;
        for (const QJsonValue member : value.toArray()) {
            const QString name = NameOf(member, context);
            if (!name.isEmpty() && !names.contains(name)) {
                names.append(name);
            }
        }
        return names.join(QLatin1String(", "));
    }
    if (!value.isObject()) {
        return PlainText(value);
    }
    QJsonObject object = value.toObject();
    const QString id = object.value(QLatin1String("@id")).toString();
    if (Property(object, QStringLiteral("name")).isUndefined() &&
        context.objectsById.contains(id)) {
        object = context.objectsById.value(id);
    }
    return PlainText(Property(object, QStringLiteral("name")));
}

// Author, else publisher, else the recipe's own address, else the page's.
QString SourceOf(const QJsonObject& object, const Context& context) {
    for (const char* property : {"author", "publisher"}) {
        const QString name = NameOf(Property(object, QLatin1String(property)), context);
        if (!name.isEmpty()) {
            return name;
        }
    }
    const QString url = PlainText(Property(object, QStringLiteral("url")));
    return url.isEmpty() ? context.pageUrl : url;
}

QString TitleOf(const QJsonObject& object, const Context& context) {
    for (const char* property : {"name", "headline"}) {
        const QString title = PlainText(Property(object, QLatin1String(property)));
        if (!title.isEmpty()) {
            return title;
        }
    }
    return context.pageTitle;
}

// A text of categories is split at its commas ("Salate,Vege"); a list gives one each.
QStringList CategoriesOf(const QJsonValue& value) {
    QStringList categories;
    const QJsonArray members = value.isArray() ? value.toArray() : QJsonArray{value};
    for (const QJsonValue member : members) {
        if (!member.isString()) {
            continue;
        }
        for (const QString& part : PlainText(member).split(u',')) {
            const QString category = part.trimmed();
            if (!category.isEmpty() && !categories.contains(category)) {
                categories.append(category);
            }
        }
    }
    return categories;
}

// A text or number as it stands; a QuantitativeValue as its value and unit ("6 személyre"); of
// a list the first member that says more than a bare number ("4 Personen" of ["4", "4
// Personen"]), else the first.
QString YieldOf(const QJsonValue& value) {
    if (value.isObject()) {
        const QJsonObject object = value.toObject();
        return QStringList{PlainText(Property(object, QStringLiteral("value"))),
                           PlainText(Property(object, QStringLiteral("unitText")))}
            .join(u' ')
            .trimmed();
    }
    if (!value.isArray()) {
        return PlainText(value);
    }
    QString first;
    for (const QJsonValue member : value.toArray()) {
        const QString text = YieldOf(member);
        bool number = false;
        text.toDouble(&number);
        if (!text.isEmpty() && !number) {
            return text;
        }
        if (first.isEmpty()) {
            first = text;
        }
    }
    return first;
}

void Find(const QJsonValue& value, QList<QJsonObject>& recipes, int depth) {
    if (depth > 8) {
        return;
    }
    if (value.isArray()) {
        for (const QJsonValue member : value.toArray()) {
            Find(member, recipes, depth + 1);
        }
        return;
    }
    const QJsonObject object = value.toObject();
    if (HasType(object, QStringLiteral("Recipe"))) {
        recipes.append(object);
        return;
    }
    Find(object.value(QLatin1String("@graph")), recipes, depth + 1);
    Find(object.value(QLatin1String("mainEntity")), recipes, depth + 1);
}

}  // namespace

std::optional<QJsonValue> Parse(const QByteArray& json, QString& error) {
    std::optional<QJsonValue> value = ParseStrict(json, error);
    if (!value) {
        QString ignored;
        value = ParseStrict(WithoutControlCharacters(json), ignored);
    }
    return value;
}

QList<QJsonObject> FindRecipes(const QJsonValue& document) {
    QList<QJsonObject> recipes;
    Find(document, recipes, 0);
    return recipes;
}

void IndexObjects(const QJsonValue& document, QHash<QString, QJsonObject>& objectsById) {
    if (document.isArray()) {
        for (const QJsonValue member : document.toArray()) {
            IndexObjects(member, objectsById);
        }
        return;
    }
    const QJsonObject object = document.toObject();
    const QString id = object.value(QLatin1String("@id")).toString();
    if (!id.isEmpty() && !objectsById.contains(id)) {
        objectsById.insert(id, object);
    }
    const QJsonValue graph = object.value(QLatin1String("@graph"));
    if (graph.isArray()) {
        IndexObjects(graph, objectsById);
    }
}

bool HasType(const QJsonObject& object, const QString& type) {
    const QJsonValue value = object.value(QLatin1String("@type"));
    const QJsonArray types = value.isArray() ? value.toArray() : QJsonArray{value};
    for (const QJsonValue member : types) {
        if (TypeName(member.toString()).compare(type, Qt::CaseInsensitive) == 0) {
            return true;
        }
    }
    return false;
}

QJsonValue Property(const QJsonObject& object, const QString& name) {
    const QJsonValue exact = object.value(name);
    if (!exact.isUndefined()) {
        return exact;
    }
    for (auto it = object.constBegin(); it != object.constEnd(); ++it) {
        if (it.key().compare(name, Qt::CaseInsensitive) == 0) {
            return it.value();
        }
    }
    return QJsonValue(QJsonValue::Undefined);
}

QString PlainText(const QJsonValue& value) {
    if (value.isDouble()) {
        return QString::number(value.toDouble());
    }
    if (value.isArray()) {
        for (const QJsonValue member : value.toArray()) {
            const QString text = PlainText(member);
            if (!text.isEmpty()) {
                return text;
            }
        }
    }
    return HtmlText::Lines(HtmlText::OfFragment(value.toString())).join(u' ');
}

Recipe ToRecipe(const QJsonObject& object, const Context& context) {
    QJsonValue ingredients = Property(object, QStringLiteral("recipeIngredient"));
    if (ingredients.isUndefined()) {
        ingredients = Property(object, QStringLiteral("ingredients"));
    }
    Recipe recipe;
    recipe.title = TitleOf(object, context);
    recipe.source = SourceOf(object, context);
    recipe.categories = CategoriesOf(Property(object, QStringLiteral("recipeCategory")));
    recipe.yield = YieldOf(Property(object, QStringLiteral("recipeYield")));
    recipe.sections =
        SchemaOrgSections::Combine(SchemaOrgSections::IngredientGroups(ingredients),
                                   SchemaOrgSections::InstructionGroups(
                                       Property(object, QStringLiteral("recipeInstructions"))));
    return recipe;
}

}  // namespace Exchange::SchemaOrgJson
