#pragma once

#include <QString>
#include <functional>

#include "exchange/CollectionRecipes.h"

namespace modDatabase {
class DbConnection;
}

namespace Exchange {

enum class ExportFormat { MealMaster, SchemaOrg, Cooklang };

// The format of a name: "mealmaster", "schema", "cooklang". False for any other.
bool ExportFormatNamed(const QString& name, ExportFormat& format);

// The format a file name asks for by its extension, and where that format writes: ".json"
// schema.org into the file, ".cook" Cooklang into the folder of that name without ".cook",
// any other MealMaster into the file.
ExportFormat ExportFormatOfFile(const QString& fileName, QString& output);

// Writes the recipes of the scope in the format: MealMaster all into one file, schema.org into
// one JSON file that holds a list of Recipe objects, Cooklang a file per recipe into the folder
// `output` (made when missing; a second recipe of the same title gets " (2)" after it).
// `progress` is told the recipes written so far and their number. Returns the number of
// recipes written; a file that cannot be written raises an error.
int ExportRecipes(modDatabase::DbConnection& connection, const RecipeScope& scope,
                  ExportFormat format, const QString& output,
                  const std::function<void(int done, int total)>& progress = {});

}  // namespace Exchange
