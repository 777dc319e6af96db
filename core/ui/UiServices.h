// core/ui/: the UI services that tests replace (message boxes, the mouse pointer, documents, file
// dialogs), the shared control helpers, the selection guard and Qt's own Slovenian catalogue.
// May use: nothing else of the program (Qt only).
#pragma once

#include <QString>
#include <QStringList>
#include <functional>
#include <optional>

class QPrinter;
class QWidget;

// The program's contact points with the desktop: message boxes, the mouse pointer, opening
// documents and links, and file dialogs. Each goes through one function whose implementation
// tests can replace.
namespace UiServices {

// Message box styles (added together) and answers.
enum MsgBoxStyle {
    vbOKOnly = 0,
    vbYesNo = 4,
    vbQuestion = 32,
    vbExclamation = 48,
    vbInformation = 64,
};
enum MsgBoxResult { vbOK = 1, vbCancel = 2, vbYes = 6, vbNo = 7 };

// The title of every message box.
QString MsgBoxTitle();

using MsgBoxHandler = std::function<int(const QString& text, int style, const QString& title)>;

// Shows a message box and returns the answer.
int MsgBox(const QString& text, int style, const QString& title = MsgBoxTitle());
// Replaces the message box (an empty handler puts the real one back).
void SetMsgBoxHandler(MsgBoxHandler handler);

// The program-wide mouse pointer: a switch, not a stack.
enum MousePointerShape { vbDefault = 0, vbHourglass = 11 };
void SetMousePointer(int shape);
int MousePointer();

using OpenerHandler = std::function<void(const QString& target, const QString& workingFolder)>;
// Opens a document or link with the desktop's default program; a relative file name resolves
// against the working folder.
void Open(const QString& target, const QString& workingFolder);
void SetOpenerHandler(OpenerHandler handler);

struct FileDialogRequest {
    QWidget* parent = nullptr;
    bool save = false;  // save dialog instead of open dialog
    QString title;
    QString defaultExtension;  // e.g. ".mdb"
    QString filter;            // "Description (*.ext)|*.ext"
    QString initialFile;
    bool mustExist = false;     // the chosen file must exist
    bool askOverwrite = false;  // ask before an existing file is chosen for saving
};
using FileDialogHandler = std::function<std::optional<QString>(const FileDialogRequest&)>;
// Returns the chosen file name, or nothing when the user cancels.
std::optional<QString> ShowFileDialog(const FileDialogRequest& request);
void SetFileDialogHandler(FileDialogHandler handler);

// The open dialog for several files: returns the chosen files, or nothing when the user cancels.
using FilesDialogHandler = std::function<std::optional<QStringList>(const FileDialogRequest&)>;
std::optional<QStringList> ShowFilesDialog(const FileDialogRequest& request);
void SetFilesDialogHandler(FilesDialogHandler handler);

// A long text for the user to read, such as a report: a window with the text, which can be
// selected and copied, and a button that closes it.
using ReportHandler =
    std::function<void(const QString& title, const QString& text, QWidget* parent)>;
void ShowReport(const QString& title, const QString& text, QWidget* parent);
void SetReportHandler(ReportHandler handler);

// The print dialog: returns false when the user cancels.
using PrintDialogHandler = std::function<bool(QPrinter& printer, QWidget* parent)>;
bool ShowPrintDialog(QPrinter& printer, QWidget* parent);
void SetPrintDialogHandler(PrintDialogHandler handler);

// Ends the program at once (nothing after it runs).
using EndProgramHandler = std::function<void()>;
void EndProgram();
void SetEndProgramHandler(EndProgramHandler handler);

}  // namespace UiServices
