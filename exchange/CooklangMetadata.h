#pragma once

#include <QHash>
#include <QString>
#include <QStringList>

#include "exchange/ExchangeRecipe.h"

// The metadata of a Cooklang recipe: a front matter between two "---" lines at the top (the
// simple YAML that recipes use: "key: value", "key: [a, b]", a key followed by "- item" lines
// or by indented "name: value" lines, read as "key.name"), and ">> key: value" lines.
namespace Exchange::CooklangMetadata {

// Values by key, keys in small letters.
using Values = QHash<QString, QStringList>;

void ReadFrontMatter(const QStringList& lines, Values& values);

// A line without its ">>".
void ReadLine(const QString& line, Values& values);

// What the recipe takes from its metadata:
// - title: "title";
// - source: "source.name", else "source", else "author", else "source.url";
// - yield: "servings", else "yield", as written;
// - categories: "category" and "tags" (a list, or a text split at its commas).
void Apply(const Values& values, Recipe& recipe);

}  // namespace Exchange::CooklangMetadata
