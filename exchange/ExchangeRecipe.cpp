#include "exchange/ExchangeRecipe.h"

namespace Exchange {

int LineCount(const Recipe& recipe) {
    int lines = 0;
    for (const Section& section : recipe.sections) {
        lines += static_cast<int>(section.lines.size());
    }
    return lines;
}

Line LineOfParts(const QString& amountText, const QString& unit, const QString& ingredient,
                 const QString& preparation) {
    QStringList words;
    for (const QString& part : {amountText, unit, ingredient}) {
        if (!part.isEmpty()) {
            words << part;
        }
    }
    QString original = words.join(QLatin1Char(' '));
    if (!preparation.isEmpty()) {
        original += original.isEmpty() ? preparation : QStringLiteral(", ") + preparation;
    }
    return Line{original, amountText, unit, ingredient, preparation};
}

Section& LastSection(Recipe& recipe) {
    if (recipe.sections.isEmpty()) {
        recipe.sections.append(Section());
    }
    return recipe.sections.last();
}

void DropEmptySections(Recipe& recipe) {
    recipe.sections.removeIf(
        [](const Section& section) { return section.lines.isEmpty() && section.steps.isEmpty(); });
}

void AddMethod(Recipe& recipe, const QStringList& steps) {
    if (steps.isEmpty()) {
        return;
    }
    DropEmptySections(recipe);
    LastSection(recipe).steps << steps;
}

QStringList Paragraphs(const QString& text) {
    QStringList paragraphs;
    QStringList lines;
    QString unified = QString(text).replace(QLatin1String("\r\n"), QLatin1String("\n"));
    unified.replace(QLatin1Char('\r'), QLatin1Char('\n'));
    for (const QString& line : unified.split(QLatin1Char('\n'))) {
        if (!line.trimmed().isEmpty()) {
            lines << line.trimmed();
        } else if (!lines.isEmpty()) {
            paragraphs << lines.join(QLatin1Char(' '));
            lines.clear();
        }
    }
    if (!lines.isEmpty()) {
        paragraphs << lines.join(QLatin1Char(' '));
    }
    return paragraphs;
}

QString OneLine(const QString& text) { return Paragraphs(text).join(QLatin1Char(' ')); }

void HandOver(Recipe&& recipe, int lineNumber, const RecipeSink& sink, FileNotes& notes) {
    DropEmptySections(recipe);
    if (recipe.title.isEmpty()) {
        ++notes.notRecipes;
        notes.problems << QStringLiteral("vrstica %1: recept brez naslova").arg(lineNumber);
        return;
    }
    sink(std::move(recipe));
}

}  // namespace Exchange
