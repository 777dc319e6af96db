#include "core/ui/UiServices.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDesktopServices>
#include <QDialog>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QProcess>
#include <QPushButton>
#include <QUrl>
#include <QVBoxLayout>
#include <QtPrintSupport/QPrintDialog>
#include <cstdio>
#include <cstdlib>

#include "Version.h"
#include "core/ui/WindowFit.h"

namespace UiServices {
namespace {

MsgBoxHandler g_msgBox;
OpenerHandler g_opener;
FileDialogHandler g_fileDialog;
PrintDialogHandler g_printDialog;
FilesDialogHandler g_filesDialog;
ReportHandler g_report;
EndProgramHandler g_endProgram;
int g_mousePointer = vbDefault;

int RealMsgBox(const QString& text, int style, const QString& title) {
    QMessageBox box(QApplication::activeWindow());
    box.setWindowTitle(title);
    box.setText(QString(text).replace(QStringLiteral("\r\n"), QStringLiteral("\n")));
    switch (style & 0x70) {
        case vbQuestion:
            box.setIcon(QMessageBox::Question);
            break;
        case vbExclamation:
            box.setIcon(QMessageBox::Warning);
            break;
        case vbInformation:
            box.setIcon(QMessageBox::Information);
            break;
        default:
            box.setIcon(QMessageBox::NoIcon);
            break;
    }
    if ((style & 0x7) == vbYesNo) {
        box.setStandardButtons(QMessageBox::Yes | QMessageBox::No);
        box.button(QMessageBox::Yes)->setText(QStringLiteral("&Da"));
        box.button(QMessageBox::No)->setText(QStringLiteral("&Ne"));
        box.setDefaultButton(QMessageBox::Yes);
        return box.exec() == QMessageBox::Yes ? vbYes : vbNo;
    }
    box.setStandardButtons(QMessageBox::Ok);
    box.exec();
    return vbOK;
}

void RealOpen(const QString& target, const QString& workingFolder) {
    const QUrl asUrl(target);
    const bool isLink = asUrl.scheme().size() > 1;  // a drive letter is no scheme
    const QString argument =
        isLink ? target : QDir(workingFolder).absoluteFilePath(QDir::fromNativeSeparators(target));
    if (!QProcess::startDetached(QStringLiteral("xdg-open"), {argument}, workingFolder)) {
        QDesktopServices::openUrl(isLink ? asUrl : QUrl::fromLocalFile(argument));
    }
}

// "Description (*.ext)|*.ext|..." becomes Qt's "Description (*.ext);;...".
QString QtFilter(const QString& filter) {
    const QStringList parts = filter.split(QLatin1Char('|'));
    QStringList result;
    for (int i = 0; i + 1 < parts.size(); i += 2) {
        result << parts[i];
    }
    return result.join(QStringLiteral(";;"));
}

std::optional<QString> RealFileDialog(const FileDialogRequest& request) {
    QFileDialog dialog(request.parent, request.title, QFileInfo(request.initialFile).path(),
                       QtFilter(request.filter));
    dialog.setAcceptMode(request.save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    dialog.setFileMode(request.mustExist ? QFileDialog::ExistingFile : QFileDialog::AnyFile);
    dialog.setOption(QFileDialog::DontConfirmOverwrite, !request.askOverwrite);
    dialog.setDefaultSuffix(QString(request.defaultExtension).remove(0, 1));
    if (!request.initialFile.isEmpty()) {
        dialog.selectFile(request.initialFile);
    }
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) {
        return std::nullopt;
    }
    return dialog.selectedFiles().first();
}

std::optional<QStringList> RealFilesDialog(const FileDialogRequest& request) {
    QFileDialog dialog(request.parent, request.title, QFileInfo(request.initialFile).path(),
                       QtFilter(request.filter));
    dialog.setAcceptMode(QFileDialog::AcceptOpen);
    dialog.setFileMode(QFileDialog::ExistingFiles);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) {
        return std::nullopt;
    }
    return dialog.selectedFiles();
}

void RealReport(const QString& title, const QString& text, QWidget* parent) {
    QDialog dialog(parent);
    dialog.setObjectName(QStringLiteral("dlgReport"));
    dialog.setWindowTitle(title);
    auto* view = new QPlainTextEdit(text, &dialog);
    view->setObjectName(QStringLiteral("txtReport"));
    view->setReadOnly(true);
    view->setLineWrapMode(QPlainTextEdit::WidgetWidth);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, &dialog);
    buttons->button(QDialogButtonBox::Close)->setText(QStringLiteral("Zapri"));
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    auto* layout = new QVBoxLayout(&dialog);
    layout->addWidget(view);
    layout->addWidget(buttons);
    const QFontMetrics metrics(view->font());
    dialog.resize(metrics.averageCharWidth() * 90, metrics.lineSpacing() * 24);
    WindowFit::Keep(&dialog);
    dialog.exec();
}

bool RealPrintDialog(QPrinter& printer, QWidget* parent) {
    QPrintDialog dialog(&printer, parent);
    return dialog.exec() == QDialog::Accepted;
}

}  // namespace

QString MsgBoxTitle() { return QString::fromUtf8(Version::Title); }

int MsgBox(const QString& text, int style, const QString& title) {
    return g_msgBox ? g_msgBox(text, style, title) : RealMsgBox(text, style, title);
}

void SetMsgBoxHandler(MsgBoxHandler handler) { g_msgBox = std::move(handler); }

void SetMousePointer(int shape) {
    g_mousePointer = shape;
    if (!qobject_cast<QApplication*>(QCoreApplication::instance())) {
        return;
    }
    if (shape == vbHourglass) {
        if (!QApplication::overrideCursor()) {
            QApplication::setOverrideCursor(Qt::WaitCursor);
        }
        return;
    }
    while (QApplication::overrideCursor()) {
        QApplication::restoreOverrideCursor();
    }
}

int MousePointer() { return g_mousePointer; }

void Open(const QString& target, const QString& workingFolder) {
    if (g_opener) {
        g_opener(target, workingFolder);
    } else {
        RealOpen(target, workingFolder);
    }
}

void SetOpenerHandler(OpenerHandler handler) { g_opener = std::move(handler); }

std::optional<QString> ShowFileDialog(const FileDialogRequest& request) {
    return g_fileDialog ? g_fileDialog(request) : RealFileDialog(request);
}

void SetFileDialogHandler(FileDialogHandler handler) { g_fileDialog = std::move(handler); }

}  // namespace UiServices

namespace UiServices {

bool ShowPrintDialog(QPrinter& printer, QWidget* parent) {
    return g_printDialog ? g_printDialog(printer, parent) : RealPrintDialog(printer, parent);
}

void SetPrintDialogHandler(PrintDialogHandler handler) { g_printDialog = std::move(handler); }

std::optional<QStringList> ShowFilesDialog(const FileDialogRequest& request) {
    return g_filesDialog ? g_filesDialog(request) : RealFilesDialog(request);
}

void SetFilesDialogHandler(FilesDialogHandler handler) { g_filesDialog = std::move(handler); }

void ShowReport(const QString& title, const QString& text, QWidget* parent) {
    if (g_report) {
        g_report(title, text, parent);
    } else {
        RealReport(title, text, parent);
    }
}

void SetReportHandler(ReportHandler handler) { g_report = std::move(handler); }

void EndProgram() {
    if (g_endProgram) {
        g_endProgram();
        return;
    }
    // Like a program that stops at once: the settings are already on disk and the database has
    // committed every change.
    std::fflush(nullptr);
    std::_Exit(0);
}

void SetEndProgramHandler(EndProgramHandler handler) { g_endProgram = std::move(handler); }

}  // namespace UiServices
