#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include "exchange/ExchangeRecipe.h"

// MasterCook's text export (.mxp, .txt): any number of recipes, each from its banner
// ("*  Exported from  MasterCook  *", also "* Exported from MasterCook Mac *") to the next one or
// the file's end.
//
// A recipe is read as:
// - the title, the first line after the banner that is not blank;
// - "Recipe By" as the source ("n/a" is none); "Serving Size" as the yield, "4 servings"
//   ("1 serving"), or, where it is 0, the "Yield" field written after the method ("2 cups");
//   "Categories", separated by a TAB or by two blanks or more, continued on the indented lines
//   below;
// - the ingredients in the columns below the rule under "Amount  Measure  Ingredient --
//   Preparation Method", where the rule shows them, with TABs in the lines standing for blanks up
//   to the next multiple of eight columns; the text is split at "--" into ingredient and
//   preparation. A line whose words cross the columns is read as free text (IngredientText).
//   A line with nothing but a text "For the sauce:" or "=== SAUCE ===" starts a part with that
//   title (MasterCookParts::HeadingTitle); ingredients before the first make an untitled part;
//   a part left with nothing is dropped;
// - the method, from the first blank line after the ingredients to a rule of spaced dashes
//   ("- - - -") or the recipe's end: paragraphs separated by blank lines, the lines of one joined
//   by a blank, all of it in the last part (MasterCook writes one method for the whole recipe,
//   and the last part is the one it follows). Fields written as a label on a line of its own and
//   a quoted value below it are taken out of the method: "Source" and other sources
//   ("S(Internet address):", given as "Internet address: ...") go to the source after "Recipe
//   By", joined by "; "; "Yield" to the yield; any other field ("Description:", "Copyright:")
//   stays a paragraph "Label: value". MasterCook's links to its nutrient data ("Nutr. Assoc. :")
//   are left out;
// - after that rule only the paragraph that starts with "NOTES :" is read, as a paragraph of the
//   method; the nutrition analysis MasterCook writes there is left out.
// Text before the first banner is counted as a part that is no recipe; a recipe without a title
// is counted the same and named among the problems.
//
// Bytes are read in the encoding named, or as LineReader finds it, with windows-1252
// (MasterCook's own) as the single-byte code page when the bytes tell nothing.
namespace Exchange::MasterCookTextFormat {

// True when the start of a file holds a banner and a "Recipe By" line after it, and is no XML
// (an MX2 file keeps the text export of each recipe inside).
bool Recognizes(QByteArrayView start);

// Reads every recipe of the file's bytes, handing each to `sink` as soon as it is read. An
// encoding name that TextEncoding does not know raises an error.
void Read(const QByteArray& data, const RecipeSink& sink, FileNotes& notes,
          const QString& encoding = QString());

}  // namespace Exchange::MasterCookTextFormat
