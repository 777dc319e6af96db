#pragma once

#include <QString>

// The floor of an export: a collection's recipes read with nothing but the database library and
// written as plain text.
namespace Bench::ExportFloor {

// Reads every recipe of the collection `from` (a SQLite file) in the order of the keys, a recipe
// at a time, through three statements prepared once: the recipes with the names of their
// source, group and subgroup; a recipe's sections; a section's lines joined with their units and
// ingredients. Each recipe is written as text (the title, the names, each section's title, lines
// and method text, the values as the database gives them) into the file `into`, or with
// `filePerRecipe` into a file of its own in the folder `into`. Returns 0, or 1 after telling
// stderr why it failed.
int Write(const QString& from, const QString& into, bool filePerRecipe);

}  // namespace Bench::ExportFloor
