#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QtGlobal>

#include "exchange/RecipeMapping.h"

namespace Exchange {

// What an import did with each file, for the cook to read.
struct FileReport {
    struct Skipped {
        QString title;   // empty for a recipe without a title
        QString reason;  // "enak recept je že v zbirki", "recept nima naslova"
    };
    struct NotedLine {
        QString title;  // the recipe's
        LineNote note;
    };

    QString path;
    QString format;   // the format recognised; empty when none
    QString failure;  // why the file could not be read at all; empty when it was read
    int found = 0;
    int imported = 0;
    int notRecipes = 0;        // parts of the file that are no recipe
    QStringList problems;      // what the reader could not read, one line each
    QList<Skipped> skipped;    // in the file's order
    QList<NotedLine> lines;    // lines with a range, without an amount, or not read
    qint32 firstRecipeID = 0;  // the first recipe written; 0 for none
};

struct ImportReport {
    QList<FileReport> files;
    bool dryRun = false;
    QString stopped;  // why the import stopped before its end (a database error); empty when not

    int Imported() const;
    int Skipped() const;
    int Unread() const;  // files that could not be read
    qint32 FirstRecipeID() const;
    // The report as text: a block per file, then the totals.
    QString Text() const;
};

}  // namespace Exchange
