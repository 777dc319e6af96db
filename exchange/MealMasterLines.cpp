#include "exchange/MealMasterLines.h"

#include <QStringList>

#include "exchange/Quantity.h"
#include "exchange/Units.h"

namespace Exchange::MealMasterLines {
namespace {

// Where the columns of an ingredient start: amount, unit, text; and where a second column
// starts on a line of two.
constexpr qsizetype UnitColumn = 8;
constexpr qsizetype TextColumn = 11;
constexpr qsizetype SecondColumn = 41;

// MealMaster's unit codes (in any letter case: files write "T" and "Tb" as well as "tb").
const QStringList UnitCodes = {
    QStringLiteral("x"),  QStringLiteral("sm"), QStringLiteral("md"), QStringLiteral("lg"),
    QStringLiteral("cn"), QStringLiteral("pk"), QStringLiteral("pn"), QStringLiteral("dr"),
    QStringLiteral("ds"), QStringLiteral("ct"), QStringLiteral("bn"), QStringLiteral("sl"),
    QStringLiteral("ea"), QStringLiteral("t"),  QStringLiteral("ts"), QStringLiteral("tb"),
    QStringLiteral("fl"), QStringLiteral("c"),  QStringLiteral("pt"), QStringLiteral("qt"),
    QStringLiteral("ga"), QStringLiteral("oz"), QStringLiteral("lb"), QStringLiteral("ml"),
    QStringLiteral("cb"), QStringLiteral("cl"), QStringLiteral("dl"), QStringLiteral("l"),
    QStringLiteral("dg"), QStringLiteral("kg"), QStringLiteral("g"),  QStringLiteral("mg"),
};

bool IsBlankOrSpace(QStringView line, qsizetype at) {
    return at >= line.size() || line[at] == QLatin1Char(' ');
}

bool IsAmount(QStringView text) {
    return text.isEmpty() || Quantity::Read(text).length == text.size();
}

// "c. sugar" -> unit "c.", text "sugar": a unit with a period written where the text starts.
void TakeUnitFromText(Column& column) {
    const qsizetype space = column.text.indexOf(QLatin1Char(' '));
    const QString word = column.text.left(space);
    if (space > 0 && word.endsWith(QLatin1Char('.')) && !Units::Common().Key(word).isEmpty()) {
        column.unit = word;
        column.text = column.text.mid(space + 1).trimmed();
    }
}

std::optional<Column> ReadColumn(QStringView part) {
    Column column;
    column.amountText = part.left(UnitColumn - 1).trimmed().toString();
    column.unit = part.mid(UnitColumn, 2).trimmed().toString();
    column.text = part.mid(TextColumn).trimmed().toString();
    const bool layout =
        IsBlankOrSpace(part, UnitColumn - 1) && IsBlankOrSpace(part, TextColumn - 1);
    const bool knownUnit =
        column.unit.isEmpty() || UnitCodes.contains(column.unit, Qt::CaseInsensitive);
    if (!layout || !knownUnit || !IsAmount(column.amountText) || column.text.isEmpty()) {
        return std::nullopt;
    }
    column.original = part.trimmed().toString();
    column.continuation = column.amountText.isEmpty() && column.unit.isEmpty() &&
                          column.text.startsWith(QLatin1Char('-'));
    if (column.unit.isEmpty() && !column.amountText.isEmpty()) {
        TakeUnitFromText(column);
    }
    return column;
}

QStringView TrimmedEnd(QStringView line) {
    qsizetype size = line.size();
    while (size > 0 && line[size - 1].isSpace()) {
        --size;
    }
    return line.left(size);
}

}  // namespace

QString Clean(QStringView line) {
    QString clean;
    clean.reserve(line.size());
    for (const QChar c : line) {
        if (c == QLatin1Char('\t')) {
            clean += QLatin1Char(' ');
        } else if (c.category() != QChar::Other_Control) {
            clean += c;
        }
    }
    return clean;
}

bool IsRecipeStart(QStringView line) {
    return (line.startsWith(QLatin1String("MMMMM")) || line.startsWith(QLatin1String("-----"))) &&
           line.contains(QLatin1String("Meal-Master"), Qt::CaseInsensitive);
}

bool IsRecipeEnd(QStringView line) {
    const QStringView end = TrimmedEnd(line);
    return end == QLatin1String("MMMMM") || end == QLatin1String("-----");
}

QString HeadingTitle(QStringView line) {
    const QStringView trimmed = TrimmedEnd(line);
    const bool marked =
        trimmed.startsWith(QLatin1String("MMMMM-")) ||
        (trimmed.startsWith(QLatin1String("---")) && trimmed.endsWith(QLatin1String("---")));
    if (!marked) {
        return QString();
    }
    qsizetype begin = trimmed.startsWith(QLatin1Char('M')) ? 5 : 0;
    qsizetype end = trimmed.size();
    while (begin < end && trimmed[begin] == QLatin1Char('-')) {
        ++begin;
    }
    while (end > begin && trimmed[end - 1] == QLatin1Char('-')) {
        --end;
    }
    return trimmed.mid(begin, end - begin).trimmed().toString();
}

std::optional<IngredientRow> ReadIngredientRow(QStringView line) {
    if (line.size() > SecondColumn && line[SecondColumn - 1] == QLatin1Char(' ')) {
        const std::optional<Column> left = ReadColumn(line.left(SecondColumn));
        const std::optional<Column> right = ReadColumn(line.mid(SecondColumn));
        if (left && right) {
            return IngredientRow{*left, right};
        }
    }
    const std::optional<Column> only = ReadColumn(line);
    if (!only) {
        return std::nullopt;
    }
    return IngredientRow{*only, std::nullopt};
}

}  // namespace Exchange::MealMasterLines
