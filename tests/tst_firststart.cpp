// The first start does what the installation did: on a machine whose store holds none of the
// connection values, the start-up values are stored once before any window shows, so that
// "Prekliči" in the settings dialog puts back working values. A store that holds them is left
// as it is.
#include <sys/stat.h>

#include <QDir>
#include <QFile>
#include <QPushButton>
#include <QTest>

#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "core/registry/modRegistry.h"
#include "core/startup/Startup.h"
#include "core/ui/UiServices.h"
#include "display/modDisplay.h"
#include "settings/frmSettings.h"
#include "tests/support/DialogDriver.h"
#include "tests/support/MessageRecorder.h"
#include "tests/support/TestDatabase.h"

using namespace modGeneral;

namespace {

QByteArray ReadBytes(const QString& fileName) {
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

ino_t Inode(const QString& fileName) {
    struct stat info {};
    return ::stat(QFile::encodeName(fileName).constData(), &info) == 0 ? info.st_ino : 0;
}

QString Stored(const char* name) {
    return modRegistry::GetRegistryString(modRegistry::ProgramKey, QString::fromLatin1(name),
                                          QStringLiteral("<none>"), true);
}

}  // namespace

class TestFirstStart : public QObject {
    Q_OBJECT

    QStringList m_shown;
    QStringList m_storedWhenShown;

    StartupWindows Windows() {
        const auto note = [this](const char* window) {
            m_shown << QString::fromLatin1(window);
            m_storedWhenShown << Stored("DatabaseName") + QLatin1Char('|') + Stored("TempFilename");
        };
        return {[note] { note("settings"); }, [note] { note("main"); }};
    }

private Q_SLOTS:
    void initTestCase() { TestDatabase::IsolateEnvironment(); }
    void init() {
        QDir(modRegistry::StoreFolder()).removeRecursively();
        m_shown.clear();
        m_storedWhenShown.clear();
        modDatabase::Connection.reset();
        DialogDriver::ForgetPendingDrivers();
    }
    void cleanup() { modDatabase::Connection.reset(); }

    void firstStartStoresTheStartUpValuesOnce() {
        MessageRecorder messages;
        QVERIFY(Main(Windows()));
        QCOMPARE(m_shown, (QStringList{"settings", "main"}));
        // Stored before the first window showed.
        const QString values = QStringLiteral("Morvena.mdb|") + DefaultTempFilename();
        QCOMPARE(m_storedWhenShown, (QStringList{values, values}));
        QCOMPARE(modRegistry::GetRegistryLong(modRegistry::ProgramKey,
                                              QStringLiteral("DatabaseType"), -1, true),
                 1);
        // The installation folder belongs to the program that runs (here a build tree's).
        QCOMPARE(Stored("InstallDir"), QStringLiteral("<none>"));
        QCOMPARE(Stored("ServerName"), QStringLiteral("<none>"));
        QCOMPARE(Stored("Password"), QStringLiteral("<none>"));

        // The next start finds them and writes nothing.
        const QByteArray bytes = ReadBytes(modRegistry::StoreFile(true));
        const ino_t inode = Inode(modRegistry::StoreFile(true));
        modDatabase::Connection.reset();
        QVERIFY(Main(Windows()));
        QCOMPARE(ReadBytes(modRegistry::StoreFile(true)), bytes);
        QCOMPARE(Inode(modRegistry::StoreFile(true)), inode);
    }

    // A store with the user's connection values is not touched, whatever it lacks.
    void storeWithConnectionValuesIsLeftAsItIs_data() { TestDatabase::AddKinds(); }
    void storeWithConnectionValuesIsLeftAsItIs() {
        TestDatabase::OpenFresh(TestDatabase::CurrentKind());
        modRegistry::SetRegistryString(modRegistry::ProgramKey, QStringLiteral("ServerName"),
                                       ServerName, true);
        modRegistry::SetRegistryString(modRegistry::ProgramKey, QStringLiteral("DatabaseName"),
                                       DatabaseName, true);
        modRegistry::SetRegistryString(modRegistry::ProgramKey, QStringLiteral("Username"),
                                       Username, true);
        modRegistry::SetRegistryString(modRegistry::ProgramKey, QStringLiteral("Password"),
                                       Password, true);
        modRegistry::SetRegistryLong(modRegistry::ProgramKey, QStringLiteral("DatabaseType"),
                                     DatabaseType, true);
        const QByteArray bytes = ReadBytes(modRegistry::StoreFile(true));
        modDatabase::Connection.reset();
        MessageRecorder messages;
        QVERIFY(Main(Windows()));
        QCOMPARE(m_shown, QStringList{"main"});
        QCOMPARE(ReadBytes(modRegistry::StoreFile(true)), bytes);
        QCOMPARE(Stored("TempFilename"), QStringLiteral("<none>"));
    }

    // A fresh installation with the program's database under its default name: after the
    // first start, "Prekliči" in the settings dialog keeps working values and pages still show.
    void cancelAfterTheFirstStartKeepsWorkingValues() {
        TestDatabase::OpenFresh(TestDatabase::Sqlite);
        TestDatabase::LoadSmallCollection();
        modDatabase::Connection.reset();
        const QString defaultName = TestDatabase::WorkFolder() + QStringLiteral("/Morvena.mdb");
        QFile::remove(defaultName);
        QVERIFY(QFile::copy(DatabaseName, defaultName));
        QCOMPARE(QDir::currentPath(), TestDatabase::WorkFolder());

        MessageRecorder messages;
        QVERIFY(Main(Windows()));
        QCOMPARE(m_shown, QStringList{"main"});
        QCOMPARE(modDatabase::Connection->State(), int(modDatabase::adStateOpen));

        frmSettings settings;
        const auto ran = DialogDriver::WhenShown(QStringLiteral("frmSettings"), [](QDialog* shown) {
            QTest::mouseClick(DialogDriver::Button(shown, "cmdCancel"), Qt::LeftButton);
        });
        settings.exec();
        QVERIFY(*ran);
        QCOMPARE(DatabaseName, QStringLiteral("Morvena.mdb"));
        QCOMPARE(TempFilename, DefaultTempFilename());
        QCOMPARE(DatabaseType, 1);
        QCOMPARE(modDatabase::Connection->State(), int(modDatabase::adStateOpen));
        modDisplay::DisplayRecipe(1);
        QVERIFY(ReadBytes(TempFilename).startsWith("<html><head><title>1 - Goveja juha</title>"));
        QVERIFY(messages.Messages().isEmpty());
    }

    // A stored display file whose folder this session does not have (the runtime folder of a
    // login that is not there) gives way to the start-up default, at start-up and when
    // "Prekliči" reads the store back; the store keeps what it holds.
    void displayFileInAMissingFolderGivesWayToTheDefault() {
        TestDatabase::OpenFresh(TestDatabase::Sqlite);
        const QString stored =
            TestDatabase::WorkFolder() + QStringLiteral("/no-such-login/tmpRecipeDB.html");
        for (const char* name : {"ServerName", "DatabaseName", "Username", "Password"}) {
            const QString& value =
                QLatin1String(name) == QLatin1String("DatabaseName") ? DatabaseName : QString();
            modRegistry::SetRegistryString(modRegistry::ProgramKey, QString::fromLatin1(name),
                                           value, true);
        }
        modRegistry::SetRegistryLong(modRegistry::ProgramKey, QStringLiteral("DatabaseType"), 1,
                                     true);
        modRegistry::SetRegistryString(modRegistry::ProgramKey, QStringLiteral("TempFilename"),
                                       stored, true);
        const QByteArray bytes = ReadBytes(modRegistry::StoreFile(true));
        modDatabase::Connection.reset();

        MessageRecorder messages;
        QVERIFY(Main(Windows()));
        QCOMPARE(m_shown, QStringList{"main"});
        QCOMPARE(TempFilename, DefaultTempFilename());

        frmSettings settings;
        const auto ran = DialogDriver::WhenShown(QStringLiteral("frmSettings"), [](QDialog* shown) {
            QTest::mouseClick(DialogDriver::Button(shown, "cmdCancel"), Qt::LeftButton);
        });
        settings.exec();
        QVERIFY(*ran);
        QCOMPARE(TempFilename, DefaultTempFilename());
        QCOMPARE(ReadBytes(modRegistry::StoreFile(true)), bytes);
        QVERIFY(messages.Messages().isEmpty());
    }
};

QTEST_MAIN(TestFirstStart)
#include "tst_firststart.moc"
