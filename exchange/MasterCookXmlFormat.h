#pragma once

#include <QByteArray>
#include <QByteArrayView>

#include "exchange/ExchangeRecipe.h"

// MasterCook's XML files (.mx2): one <mx2> element with any number of recipes, each a <RcpE>.
//
// A recipe is read as:
// - the title from the attribute "name", the source from "author" ("n/a" is none), then <Srce>
//   and each <AltS> ("label: source"), joined by "; ";
// - the categories from the <CatT> in <CatS>;
// - the yield from <Serv qty>, "4 servings" ("1 serving"), or, where that is 0 or missing, from
//   <Yield qty unit> ("2 cups"; the decimals MasterCook writes there, "2.000000", without their
//   zeros at the end);
// - each <IngR> as an ingredient line: "qty" as the amount, "unit" as the unit (either may be
//   missing), "name" as the ingredient and the text of <IPrp> as the preparation. An amount of
//   two numbers is a range, written with a dash between them: "0.75 1" gives "0.75-1", "3/4 1"
//   "3/4-1", and "1 1 1/2" "1-1 1/2" (a whole number followed by a fraction is one number:
//   "1 1/2" stays "1 1/2");
// - an <IngR code="S"> (MasterCook's subtitle) starts a part of the ingredients with that title,
//   without a colon at its end; so does a line written as such a heading ("=== SAUCE ===", see
//   MasterCookParts::HeadingTitle). Ingredients before the first make an untitled part; a part
//   left with nothing is dropped;
// - the paragraphs of each <DirT> in <DirS>, then those of each <Note>, as the method of the
//   last part (MasterCook writes one method for the whole recipe).
// The text export of the recipe that MasterCook keeps beside it (<RTxt>), its summary of the
// file's titles (<Summ>), the description, the times and the nutrient data are left out.
//
// The bytes are read as XmlText::Text reads them; MasterCook declares ISO-8859-1 and writes
// windows-1252. A recipe without a title is counted as a part that is no recipe and named among
// the problems; so is the part from where a file stops being well-formed XML (XmlText).
namespace Exchange::MasterCookXmlFormat {

// True when the first element at the start of a file is <mx2>.
bool Recognizes(QByteArrayView start);

// Reads every recipe of the file's bytes, handing each to `sink` as soon as it is read.
void Read(const QByteArray& data, const RecipeSink& sink, FileNotes& notes);

}  // namespace Exchange::MasterCookXmlFormat
