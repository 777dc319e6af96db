#include "exchange/Quantity.h"

#include <numeric>

#include "core/Amount.h"

namespace Exchange {
namespace {

// An exact rational number: what a written amount is before it becomes a decimal.
struct Fraction {
    qint64 numerator = 0;
    qint64 denominator = 1;
};

// A number read from a position of the text: its value and where it ends (-1: none there).
struct Scan {
    Fraction value;
    qsizetype end = -1;
    bool decimal = false;  // written with a decimal point or comma

    bool Found() const { return end >= 0; }
};

constexpr int MostDigits = 9;  // more digits than this are no amount of an ingredient

struct Vulgar {
    char16_t character;
    int numerator;
    int denominator;
};

constexpr Vulgar VulgarFractions[] = {
    {u'¼', 1, 4},  {u'½', 1, 2}, {u'¾', 3, 4}, {u'⅐', 1, 7}, {u'⅑', 1, 9},
    {u'⅒', 1, 10}, {u'⅓', 1, 3}, {u'⅔', 2, 3}, {u'⅕', 1, 5}, {u'⅖', 2, 5},
    {u'⅗', 3, 5},  {u'⅘', 4, 5}, {u'⅙', 1, 6}, {u'⅚', 5, 6}, {u'⅛', 1, 8},
    {u'⅜', 3, 8},  {u'⅝', 5, 8}, {u'⅞', 7, 8}, {u'↉', 0, 3},
};

// The words between the bounds of a range.
const char* const RangeWords[] = {"to", "or", "do", "ali", "bis", "oder"};

bool IsSpace(QChar c) {
    return c == QLatin1Char(' ') || c == QLatin1Char('\t') || c == QChar(0x00A0) ||
           c == QChar(0x2009) || c == QChar(0x202F);
}

bool IsDash(QChar c) { return c == QLatin1Char('-') || c == QChar(0x2013) || c == QChar(0x2014); }

bool IsDigit(QStringView text, qsizetype i) {
    return i < text.size() && text[i] >= QLatin1Char('0') && text[i] <= QLatin1Char('9');
}

qsizetype SkipSpaces(QStringView text, qsizetype i) {
    while (i < text.size() && IsSpace(text[i])) {
        ++i;
    }
    return i;
}

// The digits from i on as a number: where they end, or -1 when there are none or too many.
qsizetype ReadDigits(QStringView text, qsizetype i, qint64& value, int& count) {
    value = 0;
    count = 0;
    for (; IsDigit(text, i); ++i, ++count) {
        value = value * 10 + (text[i].unicode() - u'0');
    }
    return count == 0 || count > MostDigits ? -1 : i;
}

Scan VulgarAt(QStringView text, qsizetype i) {
    if (i >= text.size()) {
        return {};
    }
    for (const Vulgar& vulgar : VulgarFractions) {
        if (text[i].unicode() == vulgar.character) {
            return {{vulgar.numerator, vulgar.denominator}, i + 1};
        }
    }
    return {};
}

// "3/4" or "3⁄4".
Scan SlashFractionAt(QStringView text, qsizetype i) {
    qint64 numerator = 0;
    qint64 denominator = 0;
    int count = 0;
    const qsizetype slash = ReadDigits(text, i, numerator, count);
    if (slash < 0 || slash >= text.size() ||
        (text[slash] != QLatin1Char('/') && text[slash] != QChar(0x2044))) {
        return {};
    }
    const qsizetype end = ReadDigits(text, slash + 1, denominator, count);
    if (end < 0 || denominator == 0) {
        return {};
    }
    return {{numerator, denominator}, end};
}

// "12", "1.25", "1,5", ".5".
Scan DecimalAt(QStringView text, qsizetype i) {
    qint64 whole = 0;
    int count = 0;
    const qsizetype point = IsDigit(text, i) ? ReadDigits(text, i, whole, count) : i;
    if (point < 0) {
        return {};
    }
    // A decimal comma needs digits before it: ",5" is no amount, ".5" is.
    const bool separator = point < text.size() && (text[point] == QLatin1Char('.') ||
                                                   (text[point] == QLatin1Char(',') && point > i));
    if (!separator || !IsDigit(text, point + 1)) {
        return point == i ? Scan{} : Scan{{whole, 1}, point};
    }
    qint64 decimals = 0;
    const qsizetype end = ReadDigits(text, point + 1, decimals, count);
    if (end < 0 || count > 6) {
        return {};
    }
    qint64 scale = 1;
    for (int d = 0; d < count; ++d) {
        scale *= 10;
    }
    return {{whole * scale + decimals, scale}, end, true};
}

bool IsProper(const Scan& scan) {
    return scan.Found() && scan.value.numerator < scan.value.denominator;
}

Scan Mixed(qint64 whole, const Scan& fraction) {
    const Fraction part = fraction.value;
    return {{whole * part.denominator + part.numerator, part.denominator}, fraction.end};
}

// The proper fraction that makes a whole number a mixed one: "½" right after it, "-1/2" or
// "-½" (MealMaster), or after spaces "1/2" or "½".
Scan FractionAfterWhole(QStringView text, qsizetype end) {
    if (VulgarAt(text, end).Found()) {
        return VulgarAt(text, end);
    }
    if (end < text.size() && text[end] == QLatin1Char('-')) {
        const Scan slash = SlashFractionAt(text, end + 1);
        return IsProper(slash) ? slash : VulgarAt(text, end + 1);
    }
    const qsizetype next = SkipSpaces(text, end);
    if (next == end) {
        return {};
    }
    const Scan slash = SlashFractionAt(text, next);
    return IsProper(slash) ? slash : VulgarAt(text, next);
}

// One amount without a range: a fraction, a decimal or a whole number with its fraction.
Scan AmountAt(QStringView text, qsizetype i) {
    if (VulgarAt(text, i).Found()) {
        return VulgarAt(text, i);
    }
    if (SlashFractionAt(text, i).Found()) {
        return SlashFractionAt(text, i);
    }
    const Scan number = DecimalAt(text, i);
    if (!number.Found() || number.decimal) {
        return number;
    }
    const Scan fraction = FractionAfterWhole(text, number.end);
    return IsProper(fraction) ? Mixed(number.value.numerator, fraction) : number;
}

// Where the upper bound of a range starts after the lower one ends; -1 when no range follows.
qsizetype UpperBoundStart(QStringView text, qsizetype lowerEnd) {
    const qsizetype next = SkipSpaces(text, lowerEnd);
    if (next < text.size() && IsDash(text[next])) {
        return SkipSpaces(text, next + 1);
    }
    for (const char* word : RangeWords) {
        const auto length = static_cast<qsizetype>(qstrlen(word));
        const QStringView candidate = text.mid(next, length);
        const qsizetype after = next + length;
        if (next > lowerEnd && candidate.compare(QLatin1String(word), Qt::CaseInsensitive) == 0 &&
            after < text.size() && IsSpace(text[after])) {
            return SkipSpaces(text, after);
        }
    }
    return -1;
}

// The decimal places of a fraction whose decimals end, digit by digit.
QString ExactDecimals(qint64 remainder, qint64 denominator) {
    QString digits;
    while (remainder != 0) {
        remainder *= 10;
        digits += QChar(u'0' + static_cast<char16_t>(remainder / denominator));
        remainder %= denominator;
    }
    return digits;
}

bool DecimalsEnd(qint64 denominator) {
    for (const qint64 factor : {2, 5}) {
        while (denominator % factor == 0) {
            denominator /= factor;
        }
    }
    return denominator == 1;
}

QString DecimalText(Fraction value) {
    const qint64 common = std::gcd(value.numerator, value.denominator);
    const qint64 denominator = value.denominator / (common == 0 ? 1 : common);
    const qint64 numerator = value.numerator / (common == 0 ? 1 : common);
    qint64 whole = numerator / denominator;
    const qint64 remainder = numerator % denominator;
    if (DecimalsEnd(denominator)) {
        return Amount::Canonical(QString::number(whole) + QLatin1Char('.') +
                                 ExactDecimals(remainder, denominator));
    }
    qint64 thousandths = (remainder * 2000 + denominator) / (2 * denominator);
    if (thousandths == 1000) {
        ++whole;
        thousandths = 0;
    }
    return Amount::Canonical(
        QStringLiteral("%1.%2").arg(whole).arg(thousandths, 3, 10, QLatin1Char('0')));
}

}  // namespace

Quantity Quantity::Read(QStringView text) {
    const Scan lower = AmountAt(text, SkipSpaces(text, 0));
    if (!lower.Found()) {
        return {};
    }
    Quantity quantity{DecimalText(lower.value), QString(), lower.end};
    const qsizetype upperStart = UpperBoundStart(text, lower.end);
    const Scan upper = upperStart < 0 ? Scan{} : AmountAt(text, upperStart);
    if (upper.Found()) {
        quantity.rangeTo = DecimalText(upper.value);
        quantity.length = upper.end;
    }
    return quantity;
}

}  // namespace Exchange
