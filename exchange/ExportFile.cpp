#include "exchange/ExportFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFileInfo>
#include <cerrno>
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

void ExportFile::WriteWhole(const QString& path, const QByteArray& bytes) {
    // O_EXCL with O_CREAT never opens what is there already, a link included.
    const int fd = ::open(QFile::encodeName(path).constData(),
                          O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
    if (fd < 0 && errno == EEXIST) {
        ExportFile file(path);
        file.Write(bytes);
        file.Commit();
        return;
    }
    if (fd < 0) {
        CannotWrite(path);
    }
    for (qsizetype done = 0; done < bytes.size();) {
        const ssize_t n = ::write(fd, bytes.constData() + done, size_t(bytes.size() - done));
        if (n < 0 && errno == EINTR) {
            continue;
        }
        if (n <= 0) {
            ::close(fd);
            QFile::remove(path);
            CannotWrite(path);
        }
        done += n;
    }
    if (::close(fd) != 0) {
        QFile::remove(path);
        CannotWrite(path);
    }
}
