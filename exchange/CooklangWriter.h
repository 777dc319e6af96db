#pragma once

#include <QString>

#include "exchange/ExchangeRecipe.h"

// A recipe written as a Cooklang file (.cook), for the programs that read Cooklang:
// - a front matter with "title", "source" and the categories as "tags";
// - a section's title as "== Title ==";
// - a section's ingredients as a paragraph of their own that starts with the comment
//   "-- sestavine", one mark a line ("@moka{20%dag}", "@orehi{3%dag}(grobo sesekljani)" for an
//   ingredient named "orehi, grobo sesekljani"): a list of ingredients, no step;
// - a section's method after them, a paragraph per step.
// Amounts are decimals with a point ("1.5"), as Cooklang writes them.
namespace Exchange::CooklangWriter {

QString Write(const Recipe& recipe);

// A name for the recipe's file: the title without the signs a file name cannot hold ("/", a
// leading "."), and ".cook".
QString FileName(const Recipe& recipe);

}  // namespace Exchange::CooklangWriter
