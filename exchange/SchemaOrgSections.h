#pragma once

#include <QJsonValue>
#include <QList>
#include <QString>
#include <QStringList>

#include "exchange/ExchangeRecipe.h"

// The parts of a schema.org recipe: its ingredients and its method, each in groups as the page
// groups them, and the sections they make together.
namespace Exchange::SchemaOrgSections {

// A run of ingredient texts or steps under one heading (empty for none).
struct Group {
    QString title;
    QStringList texts;
    bool open = false;  // a heading line of a list: the texts after it belong to it
};

// "recipeIngredient" (or the older "ingredients"): a list of texts, one text with a line per
// ingredient, or a list that holds groups, objects with a "name" and their own list of
// ingredients in "itemListElement" or "recipeIngredient".
QList<Group> IngredientGroups(const QJsonValue& ingredients);

// "recipeInstructions": one text (a step per line or paragraph), a list of texts (a step
// each), of HowToStep objects (their "text", or "name" when they have no text), or of
// HowToSection objects (a "name" and their steps in "itemListElement").
QList<Group> InstructionGroups(const QJsonValue& instructions);

// The sections of a recipe:
// - every ingredient group is a section, in the page's order; ungrouped ingredients make one
//   untitled section;
// - a titled part of the method joins the section of the same title (letter case ignored);
//   without one it takes the first untitled section that has no steps yet (so the ingredients
//   of a page that groups only its method go with the method's first part), and failing that
//   it becomes a section of its own;
// - steps under no heading go to the first untitled section, or to the last section when every
//   section has a title;
// - a section with neither ingredients nor steps is left out.
QList<Section> Combine(const QList<Group>& ingredients, const QList<Group>& instructions);

}  // namespace Exchange::SchemaOrgSections
