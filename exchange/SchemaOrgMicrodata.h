#pragma once

#include <QJsonObject>
#include <QList>

#include <gumbo.h>

// schema.org microdata (itemscope, itemtype, itemprop) read into the shape that JSON-LD gives
// the same data, so that one mapping serves both.
namespace Exchange::SchemaOrgMicrodata {

// Every Recipe item of the page that stands inside no other Recipe, in document order: its
// properties by name, a property met more than once as a list, a nested item as an object with
// its "@type". A property's value is what a browser's microdata reader gives: "content" of
// <meta>, the address of <a> and <link>, "datetime" of <time>, otherwise the element's text with
// a line per paragraph, list item or <br>.
QList<QJsonObject> RecipeItems(const GumboNode* root);

}  // namespace Exchange::SchemaOrgMicrodata
