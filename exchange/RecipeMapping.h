#pragma once

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>
#include <QVariant>

#include "exchange/ExchangeRecipe.h"
#include "exchange/Units.h"

namespace Exchange {

// A recipe as a collection holds it, with names where the collection has keys.
struct StoredLine {
    QVariant amount;  // as Amount::Stored gives it: an integer, or a fraction's decimal text
    QString unit;
    QString ingredient;
};

struct StoredSection {
    QString title;         // empty for an untitled section (stored as NULL)
    QString instructions;  // lines separated by CR LF; " " when there are none
    QList<StoredLine> lines;
};

struct StoredRecipe {
    QString title;
    QString source;  // empty for none
    QList<StoredSection> sections;
};

// What the mapping of one ingredient line tells the cook.
struct LineNote {
    enum Kind {
        Range,     // a range of amounts: the lower bound was taken
        NoAmount,  // no amount: the line went into the method text
        Unread,    // not read as amount, unit and ingredient: it went into the method text
    };
    Kind kind;
    QString text;  // the line as the file wrote it
};

struct MappedRecipe {
    StoredRecipe recipe;
    QList<LineNote> notes;
};

// How a recipe read from a file becomes a recipe of the collection, the same for every format:
// - the title trimmed; the source as it stands;
// - a recipe of one section keeps it untitled; of several, an untitled one takes the recipe's
//   title, for every section of such a recipe has a heading;
// - a line with an amount, an ingredient and perhaps a unit becomes an ingredient line: the
//   amount exactly (a range its lower bound), the ingredient with its preparation after a comma
//   ("čebula, drobno sesekljana"), the unit a name of the collection's units when the line
//   writes one, else the collection name of the unit's key in the units table, and "kos" (the
//   table's "each") when the line writes none;
// - a line without an amount ("sol po okusu") or one that was not read whole goes, as written,
//   to the top of its section's method text, one line each, a blank line before the steps, so
//   that the page shows it as the file wrote it and no amount is made up;
// - the method text is the steps, one a line.
class RecipeMapping {
public:
    // `collectionUnits` are the names of the collection's units: a line that writes one of
    // them, in any case, gets that unit as it is.
    explicit RecipeMapping(const QStringList& collectionUnits);

    MappedRecipe Map(const Recipe& recipe) const;

private:
    StoredSection MapSection(const Section& section, QList<LineNote>& notes) const;
    bool MapLine(const Line& line, StoredLine& stored, QList<LineNote>& notes) const;
    QString UnitName(const QString& written, const QString& key) const;

    Units m_units;                         // the table's and the collection's
    QHash<QString, QString> m_collection;  // case-folded name -> the collection's unit name
};

}  // namespace Exchange
