#pragma once

#include <QString>
#include <QVariant>
#include <QVector>
#include <QtGlobal>

// The recipe editor's working copy of a recipe's sections, without any widgets. Arrays keep the
// program's lower bound 0: element 0 is a placeholder that is never read, the entries occupy
// 1 .. upper bound.

// One ingredient line in memory.
struct EditIngredient {
    qint16 Amount = 0;
    // A stored amount that is a fraction ("0.5"), kept as it is while the cook does not edit
    // the line; empty for a whole amount, which is `Amount`.
    QString Fraction;
    qint32 UnitID = 0;
    QString UnitName;
    qint32 IngredientID = 0;
    QString IngredientName;
};

// One section in memory.
struct EditSection {
    QString Title;                           // as typed, not trimmed
    QVector<EditIngredient> Ingredients{1};  // lines at 1 .. upper bound
    QString Instructions;                    // with CR LF line breaks
};

using EditSectionArray = QVector<EditSection>;

namespace EditSections {

// The upper bound of an array with lower bound 0 (0 when only the placeholder is there).
template <class T>
int UBound(const QVector<T>& array) {
    return static_cast<int>(array.size()) - 1;
}

// True when `index` lies within the bounds 0 .. upper bound.
template <class T>
bool InBounds(const QVector<T>& array, int index) {
    return index >= 0 && index <= UBound(array);
}

// Re-dimensions to 0 .. upper; the elements are new (not preserved).
template <class T>
void Redim(QVector<T>& array, int upper) {
    array = QVector<T>(upper + 1);
}

// Re-dimensions to 0 .. upper, keeping the elements that remain within the bounds.
template <class T>
void RedimPreserve(QVector<T>& array, int upper) {
    array.resize(upper + 1);
}

// A deep copy inside the array: title, instructions and every ingredient line of element
// `from` go to element `to`. An index outside the bounds raises "Subscript out of range".
void CopySection(EditSectionArray& sections, int from, int to);

// A value converted to a 16-bit integer as the program converts amounts: a number or a text
// holding one (blanks around it allowed), rounded half to even. A value outside -32768 .. 32767
// raises "Overflow", anything that is not a number "Type mismatch".
qint16 ToInteger(const QVariant& value);
// The same for a 32-bit integer (keys kept as text in the list entries).
qint32 ToLong(const QVariant& value);

}  // namespace EditSections
