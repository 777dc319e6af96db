#pragma once

#include <QByteArray>
#include <QString>
#include <QTemporaryFile>

// A file an export writes: written under a new name of its own beside the target and renamed
// into place when complete, so that a link planted at the target's name is replaced, never
// written through, and a failed export leaves the target as it was. The file gets the
// permissions a new file of the user gets.
class ExportFile {
public:
    // Raises an error when the file cannot be made.
    explicit ExportFile(const QString& path);
    void Write(const QByteArray& bytes);
    // Renames the complete file into place; raises an error when it cannot.
    void Commit();

    // Writes a whole file at once: made new under its own name when nothing has that name
    // (a folder of many files is written quickly so), else through a new file as above.
    static void WriteWhole(const QString& path, const QByteArray& bytes);

private:
    QString m_path;
    QTemporaryFile m_part;
};
