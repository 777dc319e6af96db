#pragma once

#include <QString>

// The floor of an import: the rows an import wrote, written again into an empty collection with
// nothing but the database library, as cheaply as the rows can be written one recipe at a time.
namespace Bench::ImportFloor {

// Reads the rows of the collection `from` (a SQLite file) into memory and writes them into the
// empty collection `into`, a SQLite file or a postgresql:// address: the [Group], [Type],
// [Source], [Unit] and [Ingredient] rows in one transaction with their keys, then each recipe
// in a transaction of its own, its [Recipe], [Section], [RecipeSection] and [SectionIngredient]
// rows through statements prepared once, the new keys as the database gives them. A SQLite file
// is written ahead into a log with synchronous=NORMAL and a checkpoint every 16,384 pages as the
// program's import writes, or with synchronous=OFF when `synced` is false. Returns 0, or 1 after
// telling stderr why it failed.
int Copy(const QString& from, const QString& into, bool synced);

}  // namespace Bench::ImportFloor
