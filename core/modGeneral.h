// core/: the foundation's own room: the program-wide settings values, the error log, the helpers
// that several windows share and the windows-1250 text; the error path is in core/AppError.h.
// May use: core/ui.
#pragma once

#include <QString>
#include <QtGlobal>

class QComboBox;
class QModelIndex;
class QTreeView;
class QTreeWidget;
class QTreeWidgetItem;

// The program-wide settings values, the error log and the helpers that several windows share
// (start-up is in core/startup/Startup.h).
namespace modGeneral {

// Program-wide settings values (read by Main, changed by the settings dialog).
extern QString ServerName;
extern QString DatabaseName;
extern QString TempFilename;
extern QString Username;
extern QString Password;
extern qint32 DatabaseType;  // 1 = database file, 2 = database server

// The key saved by the last entry dialog or the editor; -1 after a cancel.
extern qint32 lngLastID;

// Window sizes and positions are kept in twips: 15 twips per pixel at 96 dots per inch.
constexpr int TwipsPerPixel = 15;

// The item data role under which list entries and tree nodes keep their key ("G12", "I5").
constexpr int KeyRole = Qt::UserRole + 1;

// The user's private temporary folder, without its final separator: $XDG_RUNTIME_DIR when it is
// a folder of the user's that no one else may enter; otherwise "morvena-<uid>" in the system's
// temporary folder, made with mode 0700 (or, when someone else holds that name, "morvena-tmp"
// in the user's cache folder).
QString TemporaryFolder();
// Default path of the display file at start-up.
QString DefaultTempFilename();
// The display file to use for a stored path: the stored path itself, or, when its folder is not
// there in this session (a runtime folder of another login, a removed disk), the start-up
// default. An empty path stays empty.
QString UsableTempFilename(const QString& stored);
// Where the program's data (documentation, sample database) lives when InstallDir is not set:
// an installed program's own data folder, which lies at the same place relative to its
// executable under any installation prefix; a program run from its build tree finds none there
// and uses the data folder of that build tree.
QString DefaultInstallDir();
// The same for a program whose executable lies in `programFolder`.
QString DefaultInstallDirFor(const QString& programFolder);
// Whether a folder is the data folder of a build tree (which holds the build's marker file):
// it belongs to one developer build and is never an installation folder.
bool IsBuildTreeData(const QString& folder);

// Appends one entry to "errors.log" in the current folder; never fails.
void LogError(const QString& text);

// Selects the entry of a drop-down list whose item data equals `id`; none when no entry has it.
void SelectComboItem(QComboBox* combo, qint32 id);
// Selects the row of a list view whose key equals `key` and scrolls it into view.
void SelectListItem(QTreeWidget* list, const QString& key);
// Depth-first search from `node` through its children and its following siblings.
QTreeWidgetItem* SelectNodesItem(QTreeWidgetItem* node, const QString& key);
// Selects the node of the tree whose key equals `key`; the selection stays when none has it.
void SelectTreeViewItem(QTreeWidget* tree, const QString& key);
// The same for a tree view: its model finds the node (QAbstractItemModel::match on KeyRole).
void SelectTreeViewItem(QTreeView* tree, const QString& key);
// The key of a list entry or tree node.
QString ItemKey(const QTreeWidgetItem* item);
QString ItemKey(const QModelIndex& node);

// The text without blanks (the space character only) at either end.
QString TrimBlanks(const QString& text);
// True when every character is a digit 0 to 9 (so also for the empty text).
bool IsNumeric(const QString& text);
// The text without apostrophes.
QString RemoveQuotes(const QString& text);

}  // namespace modGeneral
