#include "core/modGeneral.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QComboBox>
#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <QTreeView>
#include <QTreeWidget>
#include <vector>

#include "Version.h"
#include "core/AppError.h"

namespace modGeneral {

QString ServerName;
QString DatabaseName;
QString TempFilename;
QString Username;
QString Password;
qint32 DatabaseType = 1;
qint32 lngLastID = -1;

namespace {

QString WithoutFinalSeparators(QString folder) {
    while (folder.size() > 1 && folder.endsWith(QLatin1Char('/'))) {
        folder.chop(1);
    }
    return folder;
}

// A real folder (not a link) of this user's that no one else may enter.
bool IsPrivateFolder(const QString& folder) {
    struct stat info {};
    return ::lstat(QFile::encodeName(folder).constData(), &info) == 0 && S_ISDIR(info.st_mode) &&
           info.st_uid == ::geteuid() && (info.st_mode & 077) == 0;
}

// Makes the folder with mode 0700 unless it is there (a folder of the user's own that others
// may enter loses their rights); true when it is then private.
bool MakePrivateFolder(const QString& folder) {
    const QByteArray name = QFile::encodeName(folder);
    ::mkdir(name.constData(), 0700);
    struct stat info {};
    if (::lstat(name.constData(), &info) == 0 && S_ISDIR(info.st_mode) &&
        info.st_uid == ::geteuid() && (info.st_mode & 077) != 0) {
        ::chmod(name.constData(), 0700);
    }
    return IsPrivateFolder(folder);
}

}  // namespace

QString TemporaryFolder() {
    const QString runtime = WithoutFinalSeparators(qEnvironmentVariable("XDG_RUNTIME_DIR"));
    if (!runtime.isEmpty() && IsPrivateFolder(runtime)) {
        return runtime;
    }
    QString shared = WithoutFinalSeparators(QDir::tempPath());
    if (shared == QLatin1String("/")) {
        shared.clear();
    }
    const QString own = shared + QStringLiteral("/morvena-%1").arg(::geteuid());
    if (MakePrivateFolder(own)) {
        return own;
    }
    // Someone else holds that name: the user's own cache folder instead.
    const QString cache = QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation);
    QDir().mkpath(cache);
    const QString cached = cache + QStringLiteral("/morvena-tmp");
    MakePrivateFolder(cached);
    return cached;
}

QString DefaultTempFilename() { return TemporaryFolder() + QStringLiteral("/tmpRecipeDB.html"); }

QString UsableTempFilename(const QString& stored) {
    if (stored.isEmpty() || QFileInfo(QFileInfo(stored).absolutePath()).isDir()) {
        return stored;
    }
    return DefaultTempFilename();
}

bool IsBuildTreeData(const QString& folder) {
    return !folder.isEmpty() &&
           QFileInfo(QDir(folder).absoluteFilePath(QString::fromUtf8(Version::BuildTreeMarker)))
               .isFile();
}

QString DefaultInstallDir() { return DefaultInstallDirFor(QCoreApplication::applicationDirPath()); }

QString DefaultInstallDirFor(const QString& programFolder) {
    const QString installed =
        QDir(programFolder).absoluteFilePath(QString::fromUtf8(Version::InstalledDataDirFromBin));
    if (QFileInfo(installed).isDir()) {
        return QDir::cleanPath(installed);
    }
    return QString::fromUtf8(Version::BuildDataDir);
}

void LogError(const QString& text) {
    // The log holds what the user typed: it is the owner's alone, and a link planted at its
    // name (or anything but a plain file) is not written through.
    const int fd = ::open("errors.log", O_WRONLY | O_APPEND | O_CREAT | O_NOFOLLOW | O_CLOEXEC,
                          S_IRUSR | S_IWUSR);
    if (fd < 0) {
        return;
    }
    struct stat info {};
    QFile log;
    if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode) ||
        !log.open(fd, QIODevice::WriteOnly | QIODevice::Append, QFileDevice::AutoCloseHandle)) {
        ::close(fd);
        return;
    }
    const QString entry =
        QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd HH:mm")) +
        QStringLiteral(" (v%1.%2.%3)")
            .arg(Version::Major)
            .arg(Version::Minor)
            .arg(Version::Revision) +
        QStringLiteral("\r\n\r\n") + text + QStringLiteral("\r\n\r\n");
    log.write(entry.toUtf8());
}

void SelectComboItem(QComboBox* combo, qint32 id) {
    for (int i = 0; i < combo->count(); ++i) {
        if (combo->itemData(i).toLongLong() == id) {
            combo->setCurrentIndex(i);
            return;
        }
    }
    combo->setCurrentIndex(-1);
}

QString ItemKey(const QTreeWidgetItem* item) {
    return item ? item->data(0, KeyRole).toString() : QString();
}

QString ItemKey(const QModelIndex& node) { return node.data(KeyRole).toString(); }

void SelectListItem(QTreeWidget* list, const QString& key) {
    for (int i = 0; i < list->topLevelItemCount(); ++i) {
        QTreeWidgetItem* item = list->topLevelItem(i);
        if (ItemKey(item) == key) {
            list->setCurrentItem(item);
            list->scrollToItem(item);
            return;
        }
    }
}

namespace {
QTreeWidgetItem* NextSibling(QTreeWidgetItem* node) {
    QTreeWidgetItem* parent = node->parent();
    if (parent) {
        return parent->child(parent->indexOfChild(node) + 1);
    }
    QTreeWidget* tree = node->treeWidget();
    return tree ? tree->topLevelItem(tree->indexOfTopLevelItem(node) + 1) : nullptr;
}
}  // namespace

QTreeWidgetItem* SelectNodesItem(QTreeWidgetItem* node, const QString& key) {
    // The order of a recursive search through first child, then next sibling, kept on an
    // explicit stack so that long lists of siblings cannot exhaust the call stack.
    std::vector<QTreeWidgetItem*> pending{node};
    while (!pending.empty()) {
        QTreeWidgetItem* current = pending.back();
        pending.pop_back();
        if (!current) {
            continue;
        }
        if (ItemKey(current) == key) {
            return current;
        }
        pending.push_back(NextSibling(current));
        pending.push_back(current->childCount() > 0 ? current->child(0) : nullptr);
    }
    return nullptr;
}

void SelectTreeViewItem(QTreeWidget* tree, const QString& key) {
    if (tree->topLevelItemCount() == 0) {
        return;
    }
    if (QTreeWidgetItem* found = SelectNodesItem(tree->topLevelItem(0), key)) {
        tree->setCurrentItem(found);
    }
}

void SelectTreeViewItem(QTreeView* tree, const QString& key) {
    QAbstractItemModel* model = tree->model();
    if (!model || model->rowCount() == 0) {
        return;
    }
    const QModelIndexList found =
        model->match(model->index(0, 0), KeyRole, key, 1, Qt::MatchExactly | Qt::MatchRecursive);
    if (!found.isEmpty()) {
        tree->setCurrentIndex(found.first());
    }
}

QString TrimBlanks(const QString& text) {
    qsizetype start = 0;
    qsizetype end = text.size();
    while (start < end && text[start] == QLatin1Char(' ')) {
        ++start;
    }
    while (end > start && text[end - 1] == QLatin1Char(' ')) {
        --end;
    }
    return text.mid(start, end - start);
}

bool IsNumeric(const QString& text) {
    for (const QChar c : text) {
        if (c < QLatin1Char('0') || c > QLatin1Char('9')) {
            return false;
        }
    }
    return true;
}

QString RemoveQuotes(const QString& text) { return QString(text).remove(QLatin1Char('\'')); }

}  // namespace modGeneral
