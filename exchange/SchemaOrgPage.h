#pragma once

#include <QByteArray>

#include "exchange/ExchangeRecipe.h"

// A saved web page with schema.org recipes: the JSON-LD blocks (<script
// type="application/ld+json">) of the whole page, or, when none of them holds a recipe, its
// microdata.
namespace Exchange::SchemaOrgPage {

// Hands `sink` every recipe of the page, in the page's order. A block that is no JSON is noted
// as a problem; a page without any recipe counts as one part that is no recipe.
void Read(const QByteArray& page, const RecipeSink& sink, FileNotes& notes);

}  // namespace Exchange::SchemaOrgPage
