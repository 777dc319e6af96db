#pragma once

#include <QByteArray>
#include <QString>

#include "exchange/ExchangeRecipe.h"

// The recipe files an import takes, each recognised by what it holds, never by its name:
// MealMaster, MasterCook (text and XML), RecipeML, a web page or JSON with schema.org recipes,
// Cooklang.
namespace Exchange::RecipeFiles {

// The name of the format of the data, as a report names it ("MealMaster", "spletna stran",
// ...); empty when the data is in none of them.
QString FormatOf(const QByteArray& data);

// Reads every recipe of the file, handing each to `sink` as soon as it is read. `encoding`
// names the encoding of a text format when the file's bytes should not decide (empty: they
// decide). Returns an empty text, or why the file could not be read at all.
QString Read(const QString& path, const QString& encoding, const RecipeSink& sink, FileNotes& notes,
             QString& format);

}  // namespace Exchange::RecipeFiles
