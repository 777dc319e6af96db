#include <QCoreApplication>
#include <QGuiApplication>
#include <QTextStream>
#include <memory>

#include "core/database/modDatabase.h"
#include "tools/ToolCommands.h"
#include "tools/ToolPasswords.h"

int main(int argc, char* argv[]) {
    // Printing lays pages out with fonts, which takes a GUI application; it needs no screen.
    const bool prints =
        argc > 1 && (qstrcmp(argv[1], "print") == 0 || qstrcmp(argv[1], "book") == 0);
    if (prints && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    const std::unique_ptr<QCoreApplication> app(prints ? new QGuiApplication(argc, argv)
                                                       : new QCoreApplication(argc, argv));
    QTextStream out(stdout);
    QTextStream err(stderr);
    QStringList arguments = QCoreApplication::arguments();
    arguments.removeFirst();
    ToolPasswords::HideFromProcessList(argc, argv);
    modDatabase::SetPasswordPrompt(ToolPasswords::AskOnTerminal);
    return ToolCommands::Run(arguments, out, err);
}
