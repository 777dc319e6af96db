#pragma once

#include <QByteArray>

#include "exchange/ExchangeRecipe.h"

// schema.org recipes in a saved web page (.html: JSON-LD or microdata) or in a JSON file that
// holds a Recipe object or a list of them. Both are recognised by what they hold.
//
// How a recipe is read:
// - title: "name" (else "headline", else the page's <title>), markup and entities resolved;
// - source: the authors' names ("author": a text, an object with "name", one that the page
//   names by "@id", or a list, joined with ", "), else the publisher's name, else the recipe's
//   "url", else the page's own address (canonical link or og:url);
// - categories: "recipeCategory", a list or a text split at its commas;
// - yield: "recipeYield" as written; of a list the first member that is more than a number;
// - sections: see SchemaOrgSections::Combine; ingredient lines keep their text in `original`.
namespace Exchange::SchemaOrgFormat {

// Whether the data is an HTML page (every page is read, to say when it holds no recipe), or
// JSON that holds a schema.org Recipe.
bool Recognises(const QByteArray& data);

// Hands `sink` the recipes of the page or JSON file in their order. A file without recipes, or
// JSON that cannot be read, counts as one part that is no recipe, with a line that says why.
void Read(const QByteArray& data, const RecipeSink& sink, FileNotes& notes);

}  // namespace Exchange::SchemaOrgFormat
