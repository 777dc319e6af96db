#include <QCoreApplication>
#include <QTextStream>

#include "tools/ToolCommands.h"

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    QTextStream out(stdout);
    QTextStream err(stderr);
    QStringList arguments = QCoreApplication::arguments();
    arguments.removeFirst();
    return ToolCommands::Run(arguments, out, err);
}
