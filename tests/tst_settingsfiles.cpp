// Settings files that cannot hang or exhaust the program: only plain files of at most 1 MB are
// read (anything else reads as an unreadable store: the defaults, never rewritten), a file is
// read once per change, and Regedit's own UTF-16 export is read and kept in its encoding.
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QTest>

#include "core/registry/modRegistry.h"
#include "tests/support/TestDatabase.h"

using namespace modRegistry;

namespace {

const QString Key = QStringLiteral("Software\\Orlessa\\Morvena");

QString Machine() { return StoreFile(true); }

void WriteBytes(const QString& fileName, const QByteArray& bytes) {
    QDir().mkpath(StoreFolder());
    QFile file(fileName);
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    QCOMPARE(file.write(bytes), bytes.size());
}

QByteArray ReadBytes(const QString& fileName) {
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

mode_t Mode(const QString& path) {
    struct stat info {};
    return ::lstat(QFile::encodeName(path).constData(), &info) == 0 ? info.st_mode : 0;
}

QByteArray Utf16(const QString& text) {
    return QByteArray("\xff\xfe", 2) +
           QByteArray(reinterpret_cast<const char*>(text.utf16()), text.size() * 2);
}

}  // namespace

class TestSettingsFiles : public QObject {
    Q_OBJECT

    // The store is not read, gives the defaults, and is not replaced by a write.
    void ReadsAsUnreadable(mode_t kind) {
        QCOMPARE(GetRegistryString(Key, QStringLiteral("DatabaseName"), QStringLiteral("privzeto"),
                                   true),
                 QStringLiteral("privzeto"));
        QCOMPARE(GetRegistryLong(Key, QStringLiteral("DatabaseType"), 7, true), 7);
        SetRegistryString(Key, QStringLiteral("DatabaseName"), QStringLiteral("novo"), true);
        QCOMPARE(Mode(Machine()) & S_IFMT, kind);
    }

private Q_SLOTS:
    void initTestCase() { TestDatabase::IsolateEnvironment(); }
    void init() {
        QDir(StoreFolder()).removeRecursively();
        QVERIFY(QDir().mkpath(StoreFolder()));
    }

    void aFifoDoesNotBlock() {
        QCOMPARE(::mkfifo(QFile::encodeName(Machine()).constData(), 0600), 0);
        ReadsAsUnreadable(S_IFIFO);
    }

    void aLinkToADeviceIsNotRead() {
        QVERIFY(QFile::link(QStringLiteral("/dev/zero"), Machine()));
        ReadsAsUnreadable(S_IFLNK);
        QCOMPARE(QFile::symLinkTarget(Machine()), QStringLiteral("/dev/zero"));
    }

    void aFolderIsNotRead() {
        QVERIFY(QDir().mkpath(Machine()));
        ReadsAsUnreadable(S_IFDIR);
    }

    void aFileOverOneMegabyteIsNotReadNorRewritten() {
        QByteArray bytes = "Windows Registry Editor Version 5.00\r\n\r\n[" + Key.toUtf8() +
                           "]\r\n\"DatabaseType\"=dword:00000002\r\n\"Opomba\"=\"";
        bytes += QByteArray(2 << 20, 'x') + "\"\r\n";
        WriteBytes(Machine(), bytes);
        ReadsAsUnreadable(S_IFREG);
        QCOMPARE(ReadBytes(Machine()), bytes);
    }

    // Reading many values opens the file once; a change is read at the next value.
    void theFileIsReadOncePerChange() {
        SetRegistryString(Key, QStringLiteral("ServerName"), QStringLiteral("strežnik"), true);
        SetRegistryLong(Key, QStringLiteral("DatabaseType"), 2, true);
        const int watch = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
        QVERIFY(watch >= 0);
        QVERIFY(::inotify_add_watch(watch, QFile::encodeName(Machine()).constData(), IN_OPEN) >= 0);
        for (int i = 0; i < 100; ++i) {
            QCOMPARE(GetRegistryString(Key, QStringLiteral("ServerName"), QString(), true),
                     QStringLiteral("strežnik"));
            QCOMPARE(GetRegistryLong(Key, QStringLiteral("DatabaseType"), 0, true), 2);
        }
        char events[4096];
        const ssize_t read = ::read(watch, events, sizeof events);
        ::close(watch);
        QVERIFY(read <= ssize_t(sizeof(inotify_event)));  // at most one open
        QByteArray bytes = ReadBytes(Machine());
        bytes.replace("dword:00000002", "dword:00000001");
        WriteBytes(Machine(), bytes);
        QCOMPARE(GetRegistryLong(Key, QStringLiteral("DatabaseType"), 0, true), 1);
    }

    // Regedit's own export: UTF-16LE after a byte-order mark; a write keeps its encoding.
    void readsRegeditsOwnExport() {
        const QString text = QStringLiteral(
                                 "Windows Registry Editor Version 5.00\r\n\r\n[HKEY_LOCAL_MACHINE"
                                 "\\%1]\r\n\"DatabaseName\"=\"C:\\\\Recepti\\\\Čokolada.mdb\"\r\n"
                                 "\"DatabaseType\"=dword:00000001\r\n")
                                 .arg(Key);
        WriteBytes(Machine(), Utf16(text));
        QCOMPARE(GetRegistryString(Key, QStringLiteral("DatabaseName"), QString(), true),
                 QStringLiteral("C:\\Recepti\\Čokolada.mdb"));
        SetRegistryLong(Key, QStringLiteral("DatabaseType"), 2, true);
        const QByteArray after = ReadBytes(Machine());
        QVERIFY(after.startsWith("\xff\xfe"));
        QCOMPARE(QString::fromUtf16(reinterpret_cast<const char16_t*>(after.constData() + 2),
                                    (after.size() - 2) / 2)
                     .count(QStringLiteral("dword:00000002")),
                 1);
        QCOMPARE(GetRegistryLong(Key, QStringLiteral("DatabaseType"), 0, true), 2);
    }
};

QTEST_MAIN(TestSettingsFiles)
#include "tst_settingsfiles.moc"
