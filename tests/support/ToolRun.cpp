#include "tests/support/ToolRun.h"

#include <QFile>
#include <QProcess>

#include "tests/support/TestDatabase.h"

namespace ToolRun {

Result Tool(const QStringList& arguments) {
    QProcess process;
    process.start(qEnvironmentVariable("MORVENA_TOOL"), arguments);
    if (!process.waitForFinished(300000)) {
        qFatal("morvena-tool did not finish");
    }
    // A tool that crashed has no exit code of its own.
    return {process.exitStatus() == QProcess::CrashExit ? -1 : process.exitCode(),
            QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

QString Work(const QString& name) { return TestDatabase::WorkFolder() + QLatin1Char('/') + name; }

QByteArray FileBytes(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

}  // namespace ToolRun
