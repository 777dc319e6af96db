// What the tests of the readers of MasterCook and RecipeML files share: the test data's files,
// the recipes and notes of a read, the parts of a recipe as lists to compare, and garbage.
#pragma once

#include <QFile>
#include <QRandomGenerator>
#include <QStringList>
#include <functional>

#include "exchange/ExchangeRecipe.h"

namespace ExchangeRead {

using Exchange::FileNotes;
using Exchange::Recipe;
using Exchange::RecipeSink;
using Exchange::Section;

// A file of tests/data/import/.
inline QByteArray FileBytes(const QString& relative) {
    QFile file(QStringLiteral(MORVENA_TEST_SOURCE_DIR "/data/import/") + relative);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

struct FileRead {
    QList<Recipe> recipes;
    FileNotes notes;
};

// What a reader gives: `read` runs it with the sink and the notes.
inline FileRead Collect(const std::function<void(const RecipeSink&, FileNotes&)>& read) {
    FileRead result;
    read([&result](Recipe&& recipe) { result.recipes.append(std::move(recipe)); }, result.notes);
    return result;
}

// Each line as "amount|unit|ingredient|preparation".
inline QStringList Fields(const Section& section) {
    QStringList lines;
    for (const Exchange::Line& line : section.lines) {
        lines << QStringList{line.amountText, line.unit, line.ingredient, line.preparation}.join(
            QLatin1Char('|'));
    }
    return lines;
}

// The fields of all lines, the sections one after the other.
inline QStringList Fields(const Recipe& recipe) {
    QStringList lines;
    for (const Section& section : recipe.sections) {
        lines << Fields(section);
    }
    return lines;
}

inline QStringList Originals(const Recipe& recipe) {
    QStringList originals;
    for (const Section& section : recipe.sections) {
        for (const Exchange::Line& line : section.lines) {
            originals << line.original;
        }
    }
    return originals;
}

inline QStringList SectionTitles(const Recipe& recipe) {
    QStringList titles;
    for (const Section& section : recipe.sections) {
        titles << section.title;
    }
    return titles;
}

// Reads an XML file cut short at every length before its end. Each read must give the recipes
// whose end tag `recipeEnd` the part holds, each with `lines` ingredient lines, and count the
// rest as one part that is no recipe and name it, unless the part holds the root's end tag
// `fileEnd`. The first cut that does not, described; empty when every cut does.
inline QString FirstBadCut(const QByteArray& whole, const QByteArray& recipeEnd,
                           const QByteArray& fileEnd, int lines,
                           const std::function<FileRead(const QByteArray&)>& read) {
    for (qsizetype cut = 0; cut < whole.size(); ++cut) {
        const QByteArray part = whole.left(cut);
        const FileRead result = read(part);
        const int broken = part.contains(fileEnd) ? 0 : 1;
        bool fine = result.recipes.size() == part.count(recipeEnd) &&
                    result.notes.notRecipes == broken && result.notes.problems.size() == broken;
        for (const Recipe& recipe : result.recipes) {
            fine = fine && Exchange::LineCount(recipe) == lines;
        }
        if (!fine) {
            return QStringLiteral("cut at %1: %2 recipes, %3 problems")
                .arg(cut)
                .arg(result.recipes.size())
                .arg(result.notes.problems.size());
        }
    }
    return QString();
}

// Bytes of any value, the same for the same seed.
inline QByteArray RandomBytes(quint32 seed, int size) {
    QRandomGenerator random(seed);
    QByteArray bytes(size, '\0');
    for (char& byte : bytes) {
        byte = static_cast<char>(random.bounded(256));
    }
    return bytes;
}

}  // namespace ExchangeRead
