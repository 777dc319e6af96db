#include "exchange/ExportFile.h"

#include <sys/stat.h>
#include <QFileInfo>

#include <cstdio>

#include "core/AppError.h"

namespace {

[[noreturn]] void CannotWrite(const QString& path) {
    ErrorPath::Raise(AppError::PassedOn,
                     QStringLiteral("Datoteke %1 ni mogoče zapisati.").arg(path));
}

}  // namespace

ExportFile::ExportFile(const QString& path)
    : m_path(path),
      m_part(QFileInfo(path).absolutePath() + QStringLiteral("/.") + QFileInfo(path).fileName() +
             QStringLiteral(".XXXXXX")) {
    if (!m_part.open()) {
        ErrorPath::Raise(AppError::PassedOn,
                         QStringLiteral("Datoteke %1 ni mogoče ustvariti.").arg(path));
    }
}

void ExportFile::Write(const QByteArray& bytes) {
    if (m_part.write(bytes) != bytes.size()) {
        CannotWrite(m_path);
    }
}

void ExportFile::Commit() {
    const mode_t mask = ::umask(0);
    ::umask(mask);
    const QByteArray part = QFile::encodeName(m_part.fileName());
    if (!m_part.flush() || ::chmod(part.constData(), 0666 & ~mask) != 0 ||
        std::rename(part.constData(), QFile::encodeName(m_path).constData()) != 0) {
        CannotWrite(m_path);
    }
    m_part.setAutoRemove(false);
    m_part.close();
}
