#pragma once

#include <QString>
#include <QStringView>

namespace Exchange {

// The amount at the start of a text, read exactly as a plain decimal ("1.5"), as recipes write
// amounts: "2", "1.5", "1,5" (a comma followed by a digit is a decimal comma, so "1,000" is 1),
// ".5" (0.5), "1/2", "1 1/2", "1-1/2" (MealMaster's way of writing 1 1/2), "1½", "1 ½", "½",
// "3⁄4" (fraction slash). "0" is the amount 0: it is written there, and the caller decides what
// an amount of nothing means.
//
// A fraction whose decimals end is exact ("1/16" is 0.0625); one whose decimals repeat is
// rounded to three decimals, half away from zero ("1/3" is 0.333, "2/3" is 0.667).
//
// A range ("2-3", "2 - 3", "2–3", "1-1 1/2", "3/4-1", "2 to 3", "2 or 3", "2 do 3", "2 ali 3",
// "2 bis 3") is its lower bound, with the upper bound kept beside it. An integer followed by a
// dash and a proper fraction ("1-1/2", "2-3/4") is one mixed number, not a range.
struct Quantity {
    QString value;         // the amount, a plain decimal; empty when the text starts with none
    QString rangeTo;       // the upper bound of a range; empty when the amount is no range
    qsizetype length = 0;  // characters read: spaces before the amount and the amount itself

    bool IsEmpty() const { return value.isEmpty(); }

    // The amount at the start of `text`; an empty quantity (length 0) when there is none.
    static Quantity Read(QStringView text);
};

}  // namespace Exchange
