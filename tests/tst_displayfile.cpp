// The display file is the user's own: written with owner-only rights through a new file made
// beside it and renamed into place, never through a link or a file someone else planted at its
// name or at the names it used to write through. On both kinds.
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTest>

#include "core/AppError.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "display/modDisplay.h"
#include "tests/support/TestDatabase.h"

namespace {

const QByteArray VictimBytes = "the victim's own file\n";

QByteArray ReadBytes(const QString& fileName) {
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void WriteBytes(const QString& fileName, const QByteArray& bytes) {
    QFile file(fileName);
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    QCOMPARE(file.write(bytes), bytes.size());
}

struct stat Status(const QString& fileName) {
    struct stat info {};
    ::lstat(QFile::encodeName(fileName).constData(), &info);
    return info;
}

QStringList Entries(const QString& folder) {
    return QDir(folder).entryList(
        QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System, QDir::Name);
}

// The page of recipe 3, as the program writes it.
QByteArray ExpectedPage() {
    const QString saved = modGeneral::TempFilename;
    modGeneral::TempFilename = TestDatabase::WorkFolder() + QStringLiteral("/clean/page.html");
    QDir().mkpath(TestDatabase::WorkFolder() + QStringLiteral("/clean"));
    modDisplay::DisplayRecipe(3);
    modGeneral::TempFilename = saved;
    return ReadBytes(TestDatabase::WorkFolder() + QStringLiteral("/clean/page.html"));
}

}  // namespace

class TestDisplayFile : public QObject {
    Q_OBJECT

    QString m_folder;
    QString m_victim;

    // A fresh folder for the display file (mode `mode`) and a victim file elsewhere.
    void Prepare(const QString& name, mode_t mode) {
        m_folder = TestDatabase::WorkFolder() + QLatin1Char('/') + name;
        QDir(m_folder).removeRecursively();
        QVERIFY(QDir().mkpath(m_folder));
        QVERIFY(::chmod(QFile::encodeName(m_folder).constData(), mode) == 0);
        m_victim = TestDatabase::WorkFolder() + QStringLiteral("/victim.txt");
        WriteBytes(m_victim, VictimBytes);
        modGeneral::TempFilename = m_folder + QStringLiteral("/tmpRecipeDB.html");
    }

    // Writes the page of recipe 3; true when it was written, false when the error path ran.
    static bool Display() {
        try {
            modDisplay::DisplayRecipe(3);
            return true;
        } catch (const AppError& error) {
            if (!error.Description().contains(QStringLiteral("Path/File access error"))) {
                QTest::qFail(qPrintable(error.Description()), __FILE__, __LINE__);
            }
            return false;
        }
    }

    // What a written page must look like: the page's bytes in a regular file of the user's own,
    // mode 0600, and nothing else left in the folder but what was there.
    void CheckWritten(const QByteArray& page) {
        const struct stat info = Status(modGeneral::TempFilename);
        QVERIFY(S_ISREG(info.st_mode));
        QCOMPARE(info.st_uid, ::geteuid());
        QCOMPARE(info.st_mode & 07777, mode_t(0600));
        QCOMPARE(ReadBytes(modGeneral::TempFilename), page);
    }

private Q_SLOTS:
    void initTestCase() { TestDatabase::IsolateEnvironment(); }
    void cleanup() { modDatabase::Connection.reset(); }

    void pageIsWrittenForTheOwnerOnly_data() { TestDatabase::AddKinds(); }
    void pageIsWrittenForTheOwnerOnly() {
        TestDatabase::OpenFresh(TestDatabase::CurrentKind());
        TestDatabase::LoadSmallCollection();
        const QByteArray page = ExpectedPage();
        QVERIFY(page.startsWith("<html><head><title>3 - "));
        const mode_t mask = ::umask(0);  // even with a umask that lets everyone read
        Prepare(QStringLiteral("private"), 0700);
        const bool written = Display();
        ::umask(mask);
        QVERIFY(written);
        CheckWritten(page);
        QCOMPARE(Entries(m_folder), QStringList{"tmpRecipeDB.html"});
        // Written again over the old page.
        QVERIFY(Display());
        CheckWritten(page);
        QCOMPARE(Entries(m_folder), QStringList{"tmpRecipeDB.html"});
    }

    // Links planted at the display file's name and at the name it used to be written through
    // (".part"), in a folder everyone may write to, as the shared temporary folder is.
    void plantedLinksAreNeverFollowed_data() { TestDatabase::AddKinds(); }
    void plantedLinksAreNeverFollowed() {
        TestDatabase::OpenFresh(TestDatabase::CurrentKind());
        TestDatabase::LoadSmallCollection();
        const QByteArray page = ExpectedPage();
        Prepare(QStringLiteral("shared"), 01777);
        const QByteArray victim = QFile::encodeName(m_victim);
        const QByteArray part =
            QFile::encodeName(modGeneral::TempFilename + QStringLiteral(".part"));
        QVERIFY(::symlink(victim.constData(), part.constData()) == 0);
        QVERIFY(::symlink(victim.constData(),
                          QFile::encodeName(modGeneral::TempFilename).constData()) == 0);
        const struct stat before = Status(m_victim);
        const bool written = Display();
        QCOMPARE(ReadBytes(m_victim), VictimBytes);
        QCOMPARE(Status(m_victim).st_mode, before.st_mode);
        QCOMPARE(Status(m_victim).st_ino, before.st_ino);
        QVERIFY(S_ISLNK(Status(QFile::decodeName(part)).st_mode));
        if (written) {
            CheckWritten(page);
        } else {
            QVERIFY(S_ISLNK(Status(modGeneral::TempFilename).st_mode));
        }
        QCOMPARE(Entries(m_folder), (QStringList{"tmpRecipeDB.html", "tmpRecipeDB.html.part"}));
    }

    // A file of someone else's at either name: it is neither written into nor given to the user.
    void foreignFilesAreNeverWrittenInto_data() { TestDatabase::AddKinds(); }
    void foreignFilesAreNeverWrittenInto() {
        TestDatabase::OpenFresh(TestDatabase::CurrentKind());
        TestDatabase::LoadSmallCollection();
        const QByteArray page = ExpectedPage();
        Prepare(QStringLiteral("foreign"), 01777);
        const QString part = modGeneral::TempFilename + QStringLiteral(".part");
        for (const QString& name : {part, modGeneral::TempFilename}) {
            WriteBytes(name, VictimBytes);
            QVERIFY(::chmod(QFile::encodeName(name).constData(), 0666) == 0);
            if (::geteuid() == 0) {
                QVERIFY(::chown(QFile::encodeName(name).constData(), 65534, 65534) == 0);
            }
        }
        const ino_t foreignInode = Status(modGeneral::TempFilename).st_ino;
        const bool written = Display();
        QCOMPARE(ReadBytes(part), VictimBytes);
        if (written) {
            CheckWritten(page);
            QVERIFY(Status(modGeneral::TempFilename).st_ino != foreignInode);
        } else {
            QCOMPARE(ReadBytes(modGeneral::TempFilename), VictimBytes);
        }
        QCOMPARE(Entries(m_folder), (QStringList{"tmpRecipeDB.html", "tmpRecipeDB.html.part"}));
    }

    // A page that cannot be put in place takes the error path and leaves nothing behind.
    void failedWriteLeavesTheOldPageAndNoTemporaryFile_data() { TestDatabase::AddKinds(); }
    void failedWriteLeavesTheOldPageAndNoTemporaryFile() {
        TestDatabase::OpenFresh(TestDatabase::CurrentKind());
        TestDatabase::LoadSmallCollection();
        Prepare(QStringLiteral("blocked"), 0700);
        // A folder at the display file's name: the new page cannot replace it.
        QVERIFY(QDir().mkpath(modGeneral::TempFilename));
        try {
            modDisplay::DisplayRecipe(3);
            QFAIL("the page was written over a folder");
        } catch (const AppError& error) {
            QCOMPARE(error.Source(), QStringLiteral("modDisplay:DisplayRecipe"));
            QCOMPARE(error.Description(),
                     QStringLiteral("Morvena->Path/File access error: Is a directory"));
        }
        QCOMPARE(Entries(m_folder), QStringList{"tmpRecipeDB.html"});
        QVERIFY(QFileInfo(modGeneral::TempFilename).isDir());
    }
};

QTEST_MAIN(TestDisplayFile)
#include "tst_displayfile.moc"
