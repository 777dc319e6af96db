#pragma once

#include <QByteArray>
#include <QString>

#include "exchange/ExchangeRecipe.h"

// Cooklang recipes (.cook): one recipe a file, its steps written as text with marks for
// ingredients, cookware and timers (see CooklangStep), its metadata in a front matter or in
// ">> key: value" lines (see CooklangMetadata).
//
// How a file is read:
// - a paragraph (lines up to an empty line) is one step; its lines are joined with a blank and
//   runs of blanks made one;
// - "= Title" or "== Title ==" starts a section; steps before the first one form an untitled
//   section;
// - each step's ingredients are lines of its section, in order, amount, unit and name kept
//   apart and the line rebuilt as "1.5 cups flour";
// - a paragraph that starts with the comment "-- sestavine" (or "-- ingredients") and holds an
//   ingredient mark alone on each other line is a list of the section's ingredients, no step
//   (Morvena writes a section's ingredients so);
// - "-- ..." to the end of its line and "[- ... -]" are comments; a line "> ..." is a note,
//   kept as text of its step;
// - the title comes from the metadata, else from the file's name without its extension.
namespace Exchange::CooklangFormat {

// Whether UTF-8 text holds Cooklang: an ingredient mark ("@salt", "@sugar{2%tbsp}"), a
// metadata line (">> servings: 2") or a front matter with a title; a text that starts as JSON,
// XML or HTML does ("{", "[", "<") is none.
bool Recognizes(const QByteArray& data);

// `fileName` is the file's name or path, for the title of a recipe whose metadata has none.
// A file without steps and metadata counts as one part that is no recipe.
void Read(const QByteArray& data, const QString& fileName, const RecipeSink& sink,
          FileNotes& notes);

}  // namespace Exchange::CooklangFormat
