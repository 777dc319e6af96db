// exchange/: recipes in the files of other programs (MealMaster, MasterCook, RecipeML, Cooklang,
// schema.org pages): read into one model, mapped onto the collection, written out again.
// May use: core/database, core.
#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <functional>

// A recipe as a file of another program holds it, before it meets the collection: every format
// reads into this model, and everything written out is made from it.
namespace Exchange {

// One ingredient line. A format that separates amount, unit and ingredient fills them as the
// file writes them; a format that keeps the line as one text leaves them empty and the text is
// read later, in the same way for every format.
struct Line {
    QString original;     // the line as the file wrote it, trimmed (never empty)
    QString amountText;   // the amount as written: "1 1/2", "½", "2-3", "1,5"; empty for none
    QString unit;         // the unit as written: "c", "T", "cup", "g"; empty for none
    QString ingredient;   // the ingredient's name, without what follows a comma or ";"
    QString preparation;  // what follows: "chopped", "finely diced"
};

// A part of a recipe with its own heading: an ingredient group, a section of the method.
struct Section {
    QString title;      // empty for a section without a heading
    QList<Line> lines;  // in the file's order
    QStringList steps;  // the method, one text per step or paragraph, in order
};

struct Recipe {
    QString title;
    QString source;  // who or where it comes from: author, book, site
    QStringList categories;
    QString yield;  // as written: "4 servings", "1 loaf"
    QList<Section> sections;
};

// Handed each recipe as soon as it has been read, so that a file of any size streams.
using RecipeSink = std::function<void(Recipe&& recipe)>;

// What a reader met in a file besides recipes: parts it could not read, as one line each
// ("vrstica 12: ..."), and the number of parts that were no recipe.
struct FileNotes {
    QStringList problems;
    int notRecipes = 0;
};

// The number of ingredient lines of all sections.
int LineCount(const Recipe& recipe);

// What the readers share in building a recipe.

// A line of its parts, the original made of them: "1 c. shortening, softened".
Line LineOfParts(const QString& amountText, const QString& unit, const QString& ingredient,
                 const QString& preparation);

// The recipe's last section; an untitled one is added first when it has none.
Section& LastSection(Recipe& recipe);

// Leaves out the sections that have neither lines nor steps.
void DropEmptySections(Recipe& recipe);

// Adds a method written for the whole recipe to its last section, the one it follows, after the
// sections left with nothing are dropped (an untitled one is added when none is left).
void AddMethod(Recipe& recipe, const QStringList& steps);

// The paragraphs of a text: its lines up to a blank line, each line trimmed and the lines of a
// paragraph joined with a blank. A text without a line break is one paragraph, itself trimmed.
QStringList Paragraphs(const QString& text);

// The paragraphs of a text joined with a blank: a text written on lines as one.
QString OneLine(const QString& text);

// Hands a recipe that has been read to `sink`, without its empty sections. A recipe without a
// title is counted as a part that is no recipe and named among the problems with `lineNumber`,
// the line it starts on.
void HandOver(Recipe&& recipe, int lineNumber, const RecipeSink& sink, FileNotes& notes);

}  // namespace Exchange
