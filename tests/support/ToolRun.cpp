#include "tests/support/ToolRun.h"

#include <QFile>
#include <QProcess>

#include "core/modGeneral.h"
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

QString LoopDatabase() {
    using namespace modGeneral;
    if (DatabaseType != 2) {
        return DatabaseName;
    }
    return QStringLiteral("postgresql://%1:%2@%3/%4")
        .arg(Username, Password, ServerName, DatabaseName);
}

void StartSaveLoop(QProcess& loop, const QString& folder, const QStringList& arguments) {
    loop.setWorkingDirectory(folder);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("MORVENA_CONFIG_DIR"), folder);
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    loop.setProcessEnvironment(environment);
    loop.start(qEnvironmentVariable("MORVENA_SAVELOOP"), arguments);
}

QString Work(const QString& name) { return TestDatabase::WorkFolder() + QLatin1Char('/') + name; }

QString WriteWork(const QString& name, const QByteArray& bytes) {
    const QString path = Work(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) ||
        file.write(bytes) != bytes.size()) {
        qFatal("cannot write %s", qPrintable(path));
    }
    return path;
}

QByteArray FileBytes(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

}  // namespace ToolRun
