#pragma once

#include <QList>

class QTreeView;

// The widths of a list view's columns follow the list's width and contents: each shown column
// has its preferred width (the width it was given, or what its heading or values need when that
// is more); when the list is wider, the last shown column takes the rest, so that rows use the
// whole width; when it is narrower, the columns give up what they do not need for their heading
// and values, in proportion. A horizontal scroll bar thus shows only when the values need it.
// Once the user drags a column's edge, the widths are the user's.
namespace ColumnFit {

// The widths (pixels) of the shown columns, in the order shown, for a list `available` pixels
// wide: `preferred` and `needed` per column (a column never gets less than it needs).
QList<int> Widths(const QList<int>& preferred, const QList<int>& needed, int available);

// Fits the columns of `list` from now on; `widths` are the columns' given widths in pixels (0
// for a hidden column).
void Apply(QTreeView* list, const QList<int>& widths);

// Raises the given width of one column of a list that Apply fits, to at least `pixels`.
void AtLeast(QTreeView* list, int column, int pixels);

// The given width of one column of a list that Apply fits (pixels).
int Given(const QTreeView* list, int column);

}  // namespace ColumnFit
