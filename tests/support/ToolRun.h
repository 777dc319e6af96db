#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

class QProcess;

// Running morvena-tool (the path in MORVENA_TOOL) as a user would, and the files it leaves in
// the tests' private folder.
namespace ToolRun {

struct Result {
    int exitCode;  // -1 when the tool crashed
    QString out;
    QString err;
};

// Runs the tool with the arguments and waits for it to end.
Result Tool(const QStringList& arguments);
// A file in the tests' private folder.
QString Work(const QString& name);
// Writes a file of the tests' private folder; returns its path.
QString WriteWork(const QString& name, const QByteArray& bytes);
// A file's bytes (empty when it cannot be read).
QByteArray FileBytes(const QString& path);

// The program-wide database settings as morvena-saveloop names a database on its command line.
QString LoopDatabase();
// Starts morvena-saveloop (the path in MORVENA_SAVELOOP) in `folder`, which also holds its
// settings and error log, offscreen.
void StartSaveLoop(QProcess& loop, const QString& folder, const QStringList& arguments);

}  // namespace ToolRun
