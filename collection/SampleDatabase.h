#pragma once

#include <QByteArray>

// The sample recipe collection that ships with the program (data/sample.txt), loaded into the
// open shared connection through ordinary result sets.
//
// The text is line based: UNIT name|description, SOURCE name|description, GROUP name,
// TYPE name, DESC line (of the group or subgroup above), RECIPE title, FROM source,
// SECTION title, ING amount unit ingredient, STEP line. Several DESC or STEP lines are joined
// with CR LF, as the program stores line breaks.
namespace SampleDatabase {

// The collection built into the program.
QByteArray BuiltInText();
// Loads a collection into the shared connection; a malformed line raises an error naming it.
void Load(const QByteArray& text);

}  // namespace SampleDatabase
