// display/: the pages: their bytes written to the display file, read as a browser reads them,
// shown and printed, alone or as a book.
// May use: core/database, core/registry, core/ui, core.
#pragma once

#include <QString>
#include <QtGlobal>

// The HTML pages of a recipe, a subgroup and a group, written whole to the display file named by
// the TempFilename setting (windows-1250, one line, nothing escaped: the pages trust the
// database). A failure raises an error and leaves the previous display file as it was.
namespace modDisplay {

void DisplayRecipe(qint32 recipeID);
void DisplayType(qint32 typeID);
void DisplayGroup(qint32 groupID);

// The pages as text, before they are written.
QString RecipePage(qint32 recipeID);
QString TypePage(qint32 typeID);
QString GroupPage(qint32 groupID);

// Writes a page to the display file in one piece: into a new owner-only file beside it, then
// renamed into its place.
void WriteDisplayFile(const QString& page);

}  // namespace modDisplay
