#pragma once

#include <QByteArray>
#include <QString>

// MealMaster files made up for measuring the reader and the import: recipes of two ingredient
// columns, a heading, a continuation and two paragraphs, each with a title of its own.
namespace Bench::MealMasterFile {

// Recipe `number` as MealMaster writes it, lines ending in CR LF.
QByteArray Recipe(int number);
// Writes a file of at least `megabytes` MB; returns the number of recipes in it, 0 when the
// file cannot be written.
int Write(const QString& fileName, int megabytes);
// The floor of reading such a file: its lines read with QFile::readLine and nothing else done.
// Returns the exit code of a child that does it: 0 when it read lines, 1 when none.
int ReadLines(const QString& fileName);

}  // namespace Bench::MealMasterFile
