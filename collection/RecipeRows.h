#pragma once

#include <QString>
#include <QtGlobal>

// Deleting the rows of a recipe's parts, as the main window's delete rules and the editor's save
// both do it.
namespace RecipeRows {

// Deletes every row that the SELECT selects, one at a time through its result set.
void DeleteRows(const QString& sql);

// The main window's section deletion routine (its errors pass on with the source
// "frmMain:DeleteSection"): deletes the section's ingredient lines, every link of a recipe to the
// section, and the section itself.
void DeleteSection(qint32 sectionID);

}  // namespace RecipeRows
