#include "exchange/CooklangWriter.h"

#include <QStringList>

namespace Exchange::CooklangWriter {
namespace {

QString Mark(const Line& line) {
    const QString amount =
        line.unit.isEmpty() ? line.amountText : line.amountText + QLatin1Char('%') + line.unit;
    // A name ends at a comma in Cooklang: what follows it is the preparation, in parentheses.
    const qsizetype comma = line.ingredient.indexOf(QLatin1Char(','));
    const QString name = comma < 0 ? line.ingredient : line.ingredient.left(comma).trimmed();
    const QString preparation =
        comma < 0 ? QString()
                  : QLatin1Char('(') + line.ingredient.mid(comma + 1).trimmed() + QLatin1Char(')');
    return QLatin1Char('@') + name + QLatin1Char('{') + amount + QLatin1Char('}') + preparation;
}

void AddSection(QStringList& lines, const Section& section) {
    if (!section.title.isEmpty()) {
        lines << QStringLiteral("== %1 ==").arg(section.title) << QString();
    }
    if (!section.lines.isEmpty()) {
        lines << QStringLiteral("-- sestavine");
        for (const Line& line : section.lines) {
            lines << Mark(line);
        }
        lines << QString();
    }
    for (const QString& step : section.steps) {
        lines << step << QString();
    }
}

}  // namespace

QString Write(const Recipe& recipe) {
    QStringList lines{QStringLiteral("---"), QStringLiteral("title: ") + recipe.title};
    if (!recipe.source.isEmpty()) {
        lines << QStringLiteral("source: ") + recipe.source;
    }
    if (!recipe.categories.isEmpty()) {
        lines << QStringLiteral("tags: [%1]").arg(recipe.categories.join(QStringLiteral(", ")));
    }
    lines << QStringLiteral("---") << QString();
    for (const Section& section : recipe.sections) {
        AddSection(lines, section);
    }
    return lines.join(QLatin1Char('\n'));
}

QString FileName(const Recipe& recipe) {
    QString name = recipe.title.simplified();
    name.replace(QLatin1Char('/'), QLatin1Char('-'));
    while (name.startsWith(QLatin1Char('.'))) {
        name.remove(0, 1);
    }
    return (name.isEmpty() ? QStringLiteral("recept") : name.left(200)) + QStringLiteral(".cook");
}

}  // namespace Exchange::CooklangWriter
