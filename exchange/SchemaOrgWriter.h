#pragma once

#include <QJsonObject>

#include "exchange/ExchangeRecipe.h"

// A recipe as a schema.org Recipe object, as web pages carry it (JSON-LD):
// - "name", "author" (a Person of the source's name), "recipeCategory" (the categories);
// - "recipeIngredient": a text a line, "1,5 dl mleka", amounts with a decimal comma; before
//   the lines of each section of a recipe of several, its title followed by a colon, as pages
//   head their ingredient groups;
// - "recipeInstructions": HowToStep objects, inside a HowToSection of each titled section.
// Texts are HTML as JSON-LD holds it: "&", "<" and ">" are written as entities.
namespace Exchange::SchemaOrgWriter {

QJsonObject Write(const Recipe& recipe);

}  // namespace Exchange::SchemaOrgWriter
