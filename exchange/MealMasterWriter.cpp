#include "exchange/MealMasterWriter.h"

#include <QStringList>

#include "exchange/Units.h"

namespace Exchange::MealMasterWriter {
namespace {

const QString End = QStringLiteral("\r\n");
constexpr qsizetype AmountWidth = 7;
constexpr qsizetype MethodWidth = 78;

// The fractions MealMaster writes, by the decimals a collection stores for them.
const QList<std::pair<QString, QString>> Fractions = {
    {QStringLiteral("5"), QStringLiteral("1/2")},   {QStringLiteral("25"), QStringLiteral("1/4")},
    {QStringLiteral("75"), QStringLiteral("3/4")},  {QStringLiteral("333"), QStringLiteral("1/3")},
    {QStringLiteral("667"), QStringLiteral("2/3")}, {QStringLiteral("125"), QStringLiteral("1/8")},
    {QStringLiteral("375"), QStringLiteral("3/8")}, {QStringLiteral("625"), QStringLiteral("5/8")},
    {QStringLiteral("875"), QStringLiteral("7/8")},
};

// MealMaster's code for a unit of the collection: the code of the table's unit of that name.
QString UnitCode(const QString& unit) {
    for (const Units::Row& row : Units::Common().Rows()) {
        if (!row.mealMaster.isEmpty() && row.name.compare(unit, Qt::CaseInsensitive) == 0) {
            return row.mealMaster;
        }
    }
    return QString();
}

QString IngredientLine(const Line& line) {
    QString amount = line.amountText.isEmpty() ? QString() : AmountText(line.amountText);
    QString code = UnitCode(line.unit);
    QStringList text{line.ingredient};
    if (code.isEmpty() && !line.unit.isEmpty()) {
        text.prepend(line.unit);
    }
    if (amount.size() > AmountWidth) {
        text.prepend(code);
        text.prepend(amount);
        amount.clear();
        code.clear();
    }
    text.removeAll(QString());
    return amount.rightJustified(AmountWidth) + QLatin1Char(' ') + code.leftJustified(2) +
           QLatin1Char(' ') + text.join(QLatin1Char(' '));
}

// A paragraph in lines of at most MethodWidth characters, broken at blanks.
QStringList Wrapped(const QString& paragraph) {
    QStringList lines;
    QString line;
    for (const QString& word : paragraph.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        if (!line.isEmpty() && line.size() + 1 + word.size() > MethodWidth) {
            lines.append(line);
            line.clear();
        }
        line += (line.isEmpty() ? QString() : QStringLiteral(" ")) + word;
    }
    if (!line.isEmpty()) {
        lines.append(line);
    }
    return lines;
}

QString Heading(const QString& title) {
    const QString dashes(std::max<qsizetype>(5, (70 - title.size()) / 2), QLatin1Char('-'));
    return QStringLiteral("MMMMM") + dashes + title + dashes;
}

void AddSection(QStringList& lines, const Section& section) {
    if (!section.title.isEmpty()) {
        lines << Heading(section.title);
    }
    for (const Line& line : section.lines) {
        lines << IngredientLine(line);
    }
    for (const QString& step : section.steps) {
        lines << QString();
        lines += Wrapped(step);
    }
    lines << QString();
}

}  // namespace

QString AmountText(const QString& decimal) {
    const qsizetype point = decimal.indexOf(QLatin1Char('.'));
    if (point < 0) {
        return decimal;
    }
    const QString whole = decimal.left(point);
    const QString decimals = decimal.mid(point + 1);
    for (const auto& [digits, fraction] : Fractions) {
        if (decimals == digits) {
            return whole == QLatin1String("0") ? fraction : whole + QLatin1Char(' ') + fraction;
        }
    }
    return decimal;
}

QString Write(const Recipe& recipe) {
    QStringList lines{
        QStringLiteral("MMMMM----- Recipe via Meal-Master (tm) v8.02"), QString(),
        QStringLiteral("      Title: ") + recipe.title,
        QStringLiteral(" Categories: ") + recipe.categories.join(QStringLiteral(", ")), QString()};
    for (const Section& section : recipe.sections) {
        AddSection(lines, section);
    }
    if (!recipe.source.isEmpty()) {
        lines << QStringLiteral("From: ") + recipe.source << QString();
    }
    lines << QStringLiteral("MMMMM") << QString();
    return lines.join(End) + End;
}

}  // namespace Exchange::MealMasterWriter
