#include "editor/EditSection.h"

#include <cmath>

#include "core/AppError.h"

namespace EditSections {
namespace {

[[noreturn]] void SubscriptOutOfRange() {
    ErrorPath::Raise(9, QStringLiteral("Subscript out of range"));
}

// The number a value holds, or a type mismatch.
double Number(const QVariant& value) {
    if (value.isNull()) {
        ErrorPath::Raise(94, QStringLiteral("Invalid use of Null"));
    }
    bool ok = false;
    double number = 0.0;
    switch (value.typeId()) {
        case QMetaType::Int:
        case QMetaType::UInt:
        case QMetaType::LongLong:
        case QMetaType::ULongLong:
        case QMetaType::Short:
        case QMetaType::UShort:
        case QMetaType::Double:
        case QMetaType::Float:
            number = value.toDouble(&ok);
            break;
        default: {
            const QString text = value.toString().trimmed();
            number = text.isEmpty() ? 0.0 : text.toDouble(&ok);
            ok = ok && !text.isEmpty();
            break;
        }
    }
    if (!ok || std::isnan(number)) {
        ErrorPath::Raise(13, QStringLiteral("Type mismatch"));
    }
    return number;
}

// Rounds half to even and checks the range.
qint64 Whole(double number, double lowest, double highest) {
    if (!(number > lowest - 0.5 && number < highest + 0.5)) {
        ErrorPath::Raise(6, QStringLiteral("Overflow"));
    }
    double whole = std::nearbyint(number);  // the default rounding mode: half to even
    if (whole < lowest || whole > highest) {
        ErrorPath::Raise(6, QStringLiteral("Overflow"));
    }
    return static_cast<qint64>(whole);
}

}  // namespace

void CopySection(EditSectionArray& sections, int from, int to) {
    if (!InBounds(sections, from) || !InBounds(sections, to)) {
        SubscriptOutOfRange();
    }
    if (from == to) {
        return;
    }
    const EditSection& source = sections[from];
    EditSection& target = sections[to];
    target.Instructions = source.Instructions;
    target.Title = source.Title;
    Redim(target.Ingredients, UBound(source.Ingredients));
    for (int k = 1; k <= UBound(source.Ingredients); ++k) {
        target.Ingredients[k].Amount = source.Ingredients[k].Amount;
        target.Ingredients[k].Fraction = source.Ingredients[k].Fraction;
        target.Ingredients[k].UnitID = source.Ingredients[k].UnitID;
        target.Ingredients[k].UnitName = source.Ingredients[k].UnitName;
        target.Ingredients[k].IngredientID = source.Ingredients[k].IngredientID;
        target.Ingredients[k].IngredientName = source.Ingredients[k].IngredientName;
    }
}

qint16 ToInteger(const QVariant& value) {
    return static_cast<qint16>(Whole(Number(value), -32768.0, 32767.0));
}

qint32 ToLong(const QVariant& value) {
    return static_cast<qint32>(Whole(Number(value), -2147483648.0, 2147483647.0));
}

}  // namespace EditSections
