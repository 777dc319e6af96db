#pragma once

#include <QString>

#include "exchange/ExchangeRecipe.h"

// Recipes written as MealMaster writes them, for the programs that read MealMaster files:
// - "MMMMM----- Recipe via Meal-Master (tm) v8.02", then "Title:" and "Categories:" (no
//   "Yield:": a collection keeps none);
// - a section's title as a heading line "MMMMM-----TITLE-----" before its ingredients;
// - ingredients in MealMaster's columns: the amount right-aligned in the first seven (a
//   fraction as MealMaster writes it, "1 1/2", "1/3", else as a decimal with a point), the
//   unit's two-letter code, the name; a unit MealMaster has no code for starts the name
//   ("20 dag moke" keeps "dag" there), and so does an amount longer than seven characters;
// - the section's method after its ingredients, a paragraph per step wrapped at 78 columns;
// - the source at the end as "From: ...", and "MMMMM" as the last line.
// Lines end in CR LF; the text is UTF-8, since MealMaster's own code page has no č, š or ž.
namespace Exchange::MealMasterWriter {

QString Write(const Recipe& recipe);

// The amount as MealMaster writes it: "1.5" as "1 1/2", "0.333" as "1/3", "0.2" as "0.2".
QString AmountText(const QString& decimal);

}  // namespace Exchange::MealMasterWriter
