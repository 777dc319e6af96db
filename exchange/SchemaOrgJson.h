#pragma once

#include <QHash>
#include <QJsonObject>
#include <QJsonValue>
#include <QList>
#include <QString>
#include <optional>

#include "exchange/ExchangeRecipe.h"

// schema.org Recipe objects as JSON-LD writes them (and as microdata reads into the same shape):
// where they stand in a document, and how one becomes an Exchange::Recipe.
namespace Exchange::SchemaOrgJson {

// What a recipe object may refer to or fall back on: the objects of its document by their
// "@id" (an author given as {"@id": ...}), and the page it stands on.
struct Context {
    QHash<QString, QJsonObject> objectsById;
    QString pageUrl;    // the page's canonical address, empty when unknown
    QString pageTitle;  // the page's <title>, for a recipe without a name
};

// A JSON text as JSON-LD blocks hold it. Raw line breaks and tabs inside strings, which many
// pages write, are read as blanks; anything else that is no JSON gives no document and the
// parser's message in `error`.
std::optional<QJsonValue> Parse(const QByteArray& json, QString& error);

// The Recipe objects of a document: the value itself, the members of a list or of "@graph", and
// the "mainEntity" of a page object, in document order.
QList<QJsonObject> FindRecipes(const QJsonValue& document);

// Adds every object with an "@id" in the document (at the top, in lists, in "@graph").
void IndexObjects(const QJsonValue& document, QHash<QString, QJsonObject>& objectsById);

// Whether "@type" (a text or a list of texts) names `type`, as "Recipe" or a full address.
bool HasType(const QJsonObject& object, const QString& type);

// A property by its name; pages that write "Name" for "name" are read too.
QJsonValue Property(const QJsonObject& object, const QString& name);

// A text or number value as one line of plain text (markup and entities resolved, blanks
// collapsed); of a list (a property that microdata gives twice) the first member that has one;
// empty for anything else.
QString PlainText(const QJsonValue& value);

// The recipe that one Recipe object describes.
Recipe ToRecipe(const QJsonObject& object, const Context& context);

}  // namespace Exchange::SchemaOrgJson
