#pragma once

#include <QString>
#include <QStringList>

#include "exchange/ExchangeRecipe.h"
#include "exchange/Quantity.h"
#include "exchange/Units.h"

namespace Exchange {

// One ingredient line written as free text ("1 1/2 cups flour, sifted", "2 large eggs",
// "salt to taste", "200 g moke", "1 (14 oz) can tomatoes"), read into its parts:
// - the amount at the start (Quantity), also a range written with its unit twice
//   ("110ml-150ml");
// - notes on the size right after the amount or the unit: "(14 oz)", "28-ounce", and other
//   measures after a slash ("125g/4½oz", "1.5kg/3lb 5oz"); they go to the preparation;
// - the unit, a form the units know, right after the amount ("125g", "2 tbsp", "1 c.", also
//   "1 1/2-inch"); without an amount only when "of" follows ("pinch of salt");
// - "of" after the unit is left out;
// - the rest is the ingredient, up to the first comma or semicolon outside parentheses, and the
//   preparation after it.
struct IngredientText {
    QString original;  // the line, trimmed
    Quantity quantity;
    QString amountText;  // the amount as written: "1 1/2", "2-3", "110ml-150ml" gives "110"
    QString unit;        // the unit as written: "cups", "g", "c."
    QString unitKey;     // the unit's key in the units read with: "cup", "gram"
    QString ingredient;
    QString preparation;
    // The line was read whole: an ingredient that starts with a letter and not with a word that
    // joins it to what came before ("or", "to", "plus", "x", ...), and parentheses that close.
    // A line that is not read whole is better shown to the cook as it was written.
    bool whole = false;

    static IngredientText Read(const QString& line, const Units& units = Units::Common());

    // The text split at the first comma or semicolon outside parentheses: the ingredient and the
    // preparation, each trimmed ("onion, finely chopped" -> "onion", "finely chopped"). A text
    // that starts with the separator stays whole.
    static QStringList SplitPreparation(const QString& text);

    // The parts as an ingredient line of a recipe.
    Line ToLine() const;
};

}  // namespace Exchange
