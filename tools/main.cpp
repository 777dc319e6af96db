#include <QCoreApplication>
#include <QTextStream>

#include "core/modDatabase.h"
#include "tools/ToolCommands.h"

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    QTextStream out(stdout);
    QTextStream err(stderr);
    QStringList arguments = QCoreApplication::arguments();
    arguments.removeFirst();
    const int exitCode = ToolCommands::Run(arguments, out, err);
    modDatabase::Connection.reset();
    return exitCode;
}
