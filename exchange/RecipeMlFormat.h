#pragma once

#include <QByteArray>
#include <QByteArrayView>

#include "exchange/ExchangeRecipe.h"

// RecipeML 0.5 files (.xml, .recipeml): one <recipeml> element with any number of <recipe>,
// directly or in <menu> elements.
//
// A recipe is read as:
// - from its <head>: the <title>; the <srcitem> of <source>, or its text, as the source, joined
//   by "; "; the <cat> of <categories>; the <yield> as its amount and unit ("2-3 dozen"), a
//   yield without a unit as a number of servings ("4 servings", "1 serving");
// - each <ing> in <ingredients> as an ingredient line: the <qty> and <unit> of its <amt>, the
//   text of <item> as the ingredient and of <prep> as the preparation. An amount is kept as
//   written ("3/4-1"); a <range> is its bounds with a dash between them ("0.75-1");
// - each alternative (<alt-ing>) as a line of its own after the ingredient, the line before
//   each alternative ending with "or" ("1 cup a, or", "2 cups b");
// - an <ing-div> as a part of the ingredients with its <title>; ingredients outside one make an
//   untitled part where they stand, and a part left with nothing is dropped;
// - the <step> of <directions>, or its text where it has no steps, as the method of the last
//   part (RecipeML writes one method for the whole recipe), one step a paragraph. The steps of a
//   <dir-div> go to the part of the ingredients with its title, or to a part of their own with
//   it at the end.
// A menu's own head, descriptions, notes, times and nutrient data are left out.
//
// The bytes are read as XmlText::Text reads them. A recipe without a title is counted as a part
// that is no recipe and named among the problems; so is the part from where a file stops being
// well-formed XML (XmlText).
namespace Exchange::RecipeMlFormat {

// True when the first element at the start of a file is <recipeml>.
bool Recognizes(QByteArrayView start);

// Reads every recipe of the file's bytes, handing each to `sink` as soon as it is read.
void Read(const QByteArray& data, const RecipeSink& sink, FileNotes& notes);

}  // namespace Exchange::RecipeMlFormat
