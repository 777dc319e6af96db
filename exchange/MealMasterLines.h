#pragma once

#include <QString>
#include <QStringView>
#include <optional>

// What one line of a MealMaster file is: a recipe's first or last line, a heading of a part of
// the recipe, a line of ingredients in MealMaster's columns, or text.
namespace Exchange::MealMasterLines {

// The line without control characters; a TAB becomes a space.
QString Clean(QStringView line);

// A recipe's first line: "MMMMM----- Recipe via Meal-Master (tm) v8.02", "---------- Recipe via
// Meal-Master (tm) v8.05", "----- Exported by ... [Meal-Master Export Format] -----": it starts
// with "MMMMM" or "-----" and names Meal-Master.
bool IsRecipeStart(QStringView line);

// A recipe's last line: "MMMMM" or "-----", with nothing else but spaces after it.
bool IsRecipeEnd(QStringView line);

// The title of a heading line ("MMMMM-------TESTO-------", "---- TESTO ----",
// "-----FOR THE SAUCE-----" give "TESTO", "TESTO", "FOR THE SAUCE"): a line that starts with
// "MMMMM-", or starts and ends with "---", and has a title between the dashes. Empty for any
// other line.
QString HeadingTitle(QStringView line);

// One ingredient in the columns: the amount in the first seven, MealMaster's unit code in the
// ninth and tenth, the text from the twelfth on. A unit written with a period at the start of
// the text, outside the unit's columns ("    3/4    c. sugar", as some programs write), is
// taken as the unit.
struct Column {
    QString original;    // the column's text, trimmed
    QString amountText;  // as written: "1 1/2", "1-2"; empty for none
    QString unit;        // as written: "c", "tb", "c."; empty for none
    QString text;        // the ingredient with its preparation, as written
    // A continuation of the ingredient before it: no amount, no unit, a text that starts
    // with "-".
    bool continuation = false;
};

// A line of ingredients: one column, or two side by side, the second from the 42nd character
// on (MealMaster lists two columns down the left column first, then down the right one).
struct IngredientRow {
    Column left;
    std::optional<Column> right;
};

// The ingredients of a line; none when the line is not in the ingredient columns (an amount
// that is no amount, a unit code MealMaster does not have, no text).
std::optional<IngredientRow> ReadIngredientRow(QStringView line);

}  // namespace Exchange::MealMasterLines
