#pragma once

#include <QByteArrayView>
#include <QString>

#include "exchange/ExchangeRecipe.h"

class QIODevice;

// MealMaster's text files (.mmf, .mm, .txt): any number of recipes, each from its first line
// ("MMMMM----- Recipe via Meal-Master (tm) v8.02") to its last ("MMMMM" or "-----").
//
// A recipe is read as:
// - the title, the categories (separated by commas) and "Servings:" or "Yield:" as the yield,
//   from the lines after the first;
// - the ingredients in MealMaster's columns (one or two columns; a line of two is read down the
//   left column first), a "-" text continuing the ingredient before it in the same part; the
//   text is split at the first comma or semicolon outside parentheses into ingredient and
//   preparation;
// - heading lines ("MMMMM-----TESTO-----", "---- TESTO ----") start a new part with that title;
//   ingredients before the first heading make an untitled part, and a part left with nothing is
//   dropped;
// - the method is everything from the first line that is not an ingredient line on, in the part
//   it is written in: paragraphs separated by blank lines, the lines of one joined by a space,
//   a line that starts with ":" starting a new one;
// - paragraphs at the method's end that start with "Source:", "From:", "Recipe by:" (also
//   "Quelle:", "Vir:") are the source, without that label; several are joined by "; ". Such a
//   paragraph that is followed by other method text stays in the method.
// Text between recipes is counted as a part that is no recipe; a recipe without a title is
// counted the same and named among the problems; a recipe that has no last line is read up to
// where the next one starts or the file ends, and named among the problems too.
//
// Bytes are read in the encoding named, or as LineReader finds it, with CP437 (MealMaster's own)
// as the single-byte code page when the bytes tell nothing.
namespace Exchange::MealMasterFormat {

// True when the start of a file holds a recipe's first line and a "Title:" line after it.
bool Recognizes(QByteArrayView start);

// Reads every recipe of the device, handing each to `sink` as soon as it is read. An encoding
// name that TextEncoding does not know raises an error.
void Read(QIODevice& device, const RecipeSink& sink, FileNotes& notes,
          const QString& encoding = QString());

}  // namespace Exchange::MealMasterFormat
