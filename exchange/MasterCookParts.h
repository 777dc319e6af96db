#pragma once

#include <QString>

#include "exchange/ExchangeRecipe.h"

// What MasterCook's text export (MXP) and its XML (MX2) write alike: the author, the servings
// and the headings that its cooks write among the ingredients.
namespace Exchange::MasterCookParts {

// The author as MasterCook writes it, trimmed; empty for "n/a", which MasterCook writes for none.
QString Author(const QString& text);

// The recipe's yield: "4 servings" ("1 serving") for a number of servings above 0, else
// `otherYield` (MasterCook's "Yield", such as "2 cups"), trimmed.
QString Yield(const QString& servings, const QString& otherYield);

// The title of a line that heads a part of the ingredients: a line with no amount, measure or
// preparation, written "For the sauce:" or "=== SAUCE ===" ("For the sauce", "SAUCE"). Empty
// for any other line.
QString HeadingTitle(const Line& line);

// Adds an ingredient line to the recipe's last section. A heading (HeadingTitle, or any line when
// `heading` says so, MX2 marking it) starts a section with its title instead.
void AddIngredient(Recipe& recipe, const Line& line, bool heading = false);

}  // namespace Exchange::MasterCookParts
