#pragma once

#include <QList>
#include <QString>
#include <functional>

class QFont;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QAbstractItemModel;
class QTreeView;
class QTreeWidget;
class QWidget;

// Building the controls of the program's windows: each control carries its name as objectName,
// sizes given in twips become pixels.
namespace Controls {

constexpr int Pixels(int twips) { return twips / 15; }

// The lengths in twips that the program's windows are designed with, a window's first size and
// the widths of its list columns, were chosen for texts in "MS Sans Serif" 8 pt; the fonts here
// are wider. Both become pixels (15 twips a pixel) scaled alike by how much wider the control's
// font is than MS Sans Serif 8 pt, compared by the average width of the letters a-z and A-Z
// (MsSansSerifLetterWidth); a narrower font keeps the plain 15 twips a pixel. So a window keeps
// the room its columns were given. Sizes the settings store keeps (the main window's) record a
// window as it was on this screen: they convert at Pixels(), both ways.
constexpr double MsSansSerifLetterWidth = 6.0;  // pixels at 96 dots per inch
int TextPixels(int twips, const QFont& font);
// Gives a window its first size (twips, as TextPixels in the window's font) and keeps it inside
// the available area of its screen (WindowFit::Keep).
void SetFirstSize(QWidget* window, int widthTwips, int heightTwips);
// The width a column of a list view needs to show `text` whole in the view's font.
int FitPixels(const QTreeView* list, const QString& text);

QLabel* NewLabel(QWidget* parent, const QString& name, const QString& caption);
QLineEdit* NewTextBox(QWidget* parent, const QString& name, int maxLength = 0);
// A multi-line text box with a vertical scroll bar; Tab moves the focus on.
QPlainTextEdit* NewMultiLineTextBox(QWidget* parent, const QString& name);
QPushButton* NewButton(QWidget* parent, const QString& name, const QString& caption);
// A list view in report form: one column per width (twips, as TextPixels), headings hidden when
// all are empty. The columns fit the list's width (ColumnFit): the last shown column takes what
// is left, and a column whose heading or values need more than its width gets it.
QTreeWidget* NewListView(QWidget* parent, const QString& name, const QList<int>& widthsTwips,
                         const QStringList& headings = {});
// A list view in report form over a model of rows (headings from the model), one column per
// width (twips): for lists far too long for one item per row.
QTreeView* NewReportView(QWidget* parent, const QString& name, QAbstractItemModel* model,
                         const QList<int>& widthsTwips);
// The columns' widths of a list view (twips, as TextPixels); a width of 0 hides its column. The
// widths are fitted to the list as ColumnFit does.
void SetColumnWidths(QTreeView* list, const QList<int>& widthsTwips);

// The page that holds a window's controls (give it the window's layout), in a scrolling area
// that fills the window: on a screen too small for the controls the window scrolls, so that all
// of them can be reached; where they fit, no scroll bar shows.
QWidget* NewScrollingPage(QWidget* window);

// Runs `gotFocus` whenever the box receives the focus (not when its window is activated again);
// the mouse press that gave the focus does not move the cursor, so a selection made by the
// handler stays.
void OnGotFocus(QWidget* box, std::function<void()> gotFocus);
// Selects the whole text of a text box.
void SelectAll(QWidget* box);

// The text of a multi-line box with CR LF line breaks, as the program stores texts.
QString MultiLineText(const QPlainTextEdit* box);
void SetMultiLineText(QPlainTextEdit* box, const QString& text);

}  // namespace Controls
