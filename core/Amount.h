#pragma once

#include <QString>
#include <QVariant>

// The amount of an ingredient line: a whole number, or a decimal fraction that the Windows
// program's collections may hold (1.5, 0.25). Whole amounts stay integers everywhere; a
// fraction is kept exactly as its decimal text ("0.25") and stored as a decimal.
namespace Amount {

// The plain decimal form of a number's text ("1.2500" -> "1.25", "3.0" -> "3", "-0" -> "0",
// "1e-3" -> "0.001"); empty when the text is no number.
QString Canonical(const QString& number);
// A stored amount as a value to store again: a whole number as an integer, a fraction as its
// canonical decimal text; NULL stays NULL.
QVariant Stored(const QVariant& value);
// True when the stored value is a whole number (or NULL).
bool IsWhole(const QVariant& value);
// The amount as a page writes it: a whole number as its digits, a fraction with a decimal
// comma and at most three decimals, without trailing zeros ("0,5", "1,25", "0,333");
// NULL is the empty text.
QString PageText(const QVariant& value);
// The amount as the editor lists it: a whole number as its digits, a fraction with a decimal
// comma and every decimal it has.
QString EditText(const QVariant& value);

}  // namespace Amount
