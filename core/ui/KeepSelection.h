#pragma once

class QAbstractItemView;

// A list whose selected entry the program reads keeps that entry selected against stray input:
// a click (or double click, or a drag) on the empty part of the list, and Ctrl+click or
// Ctrl+Space on the selected entry, change nothing. The user changes the selection only by
// choosing another entry; the program's own code still selects and clears as it likes.
// Works for any item view (QTreeWidget, QListWidget, a QTreeView over a model).
namespace KeepSelection {

// Applies the rule to the view for as long as it lives.
void Apply(QAbstractItemView* view);

}  // namespace KeepSelection
