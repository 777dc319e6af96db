// Start-up: the settings values with their defaults and the steps of Main up to the windows.
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTest>

#include "Version.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "core/registry/modRegistry.h"
#include "core/startup/Startup.h"
#include "core/ui/UiServices.h"
#include "tests/support/MessageRecorder.h"
#include "tests/support/TestDatabase.h"

using namespace modGeneral;

namespace {

QByteArray ReadBytes(const QString& fileName) {
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

}  // namespace

class TestStartup : public QObject {
    Q_OBJECT

private:
    QStringList m_shown;
    StartupWindows Windows() {
        return {[this] { m_shown << QStringLiteral("settings"); },
                [this] { m_shown << QStringLiteral("main"); }};
    }
    void StoreSettings(const QString& kind, const QString& name) {
        TestDatabase::UseSettingsFor(kind, name);
        using namespace modRegistry;
        SetRegistryString(ProgramKey, QStringLiteral("ServerName"), ServerName, true);
        SetRegistryString(ProgramKey, QStringLiteral("Databasename"), DatabaseName, true);
        SetRegistryString(ProgramKey, QStringLiteral("Username"), Username, true);
        SetRegistryString(ProgramKey, QStringLiteral("Password"), Password, true);
        SetRegistryLong(ProgramKey, QStringLiteral("DatabaseType"), DatabaseType, true);
    }

private Q_SLOTS:
    void initTestCase() { TestDatabase::IsolateEnvironment(); }
    void init() {
        QFile::remove(modRegistry::StoreFile(true));
        QFile::remove(QStringLiteral("errors.log"));
        m_shown.clear();
        modDatabase::Connection.reset();
    }

    void workingDatabaseShowsOnlyTheMainWindow_data() { TestDatabase::AddKinds(); }
    void workingDatabaseShowsOnlyTheMainWindow() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        StoreSettings(kind, DatabaseName);
        modDatabase::Connection.reset();
        MessageRecorder messages;
        QVERIFY(Main(Windows()));
        QCOMPARE(m_shown, QStringList{"main"});
        QCOMPARE(modDatabase::Connection->State(), int(modDatabase::adStateOpen));
        QVERIFY(messages.Messages().isEmpty());
        QCOMPARE(TempFilename, DefaultTempFilename());
    }

    void missingDatabaseShowsTheSettingsDialogFirst() {
        StoreSettings(TestDatabase::Sqlite, TestDatabase::WorkFolder() + QStringLiteral("/no.db"));
        MessageRecorder messages;
        QVERIFY(Main(Windows()));
        QCOMPARE(m_shown, (QStringList{"settings", "main"}));
        QCOMPARE(modDatabase::Connection->State(), int(modDatabase::adStateClosed));
        QVERIFY(!QFile::exists(TestDatabase::WorkFolder() + QStringLiteral("/no.db")));
    }

    void defaultDatabaseNameIsTriedWhenNothingIsStored() {
        MessageRecorder messages;
        QVERIFY(Main(Windows()));
        QCOMPARE(DatabaseName, QStringLiteral("Morvena.mdb"));
        QCOMPARE(modDatabase::Connection->ConnectionString(),
                 QStringLiteral("Provider=Microsoft.Jet.OLEDB.4.0;Data Source=Morvena.mdb;User "
                                "ID=;Password=;"));
        QCOMPARE(m_shown, (QStringList{"settings", "main"}));
    }

    void emptyDatabaseNameEndsTheProgramThroughTheErrorPath() {
        modRegistry::SetRegistryString(modRegistry::ProgramKey, QStringLiteral("DatabaseName"),
                                       QString(), true);
        MessageRecorder messages;
        QVERIFY(!Main(Windows()));
        QVERIFY(m_shown.isEmpty());
        QCOMPARE(messages.Texts(),
                 QStringList{"Prišlo je do nepričakovane napake.\r\n\r\nOpis napake v datoteki "
                             "errors.log sporočite avtorju."});
        QFile log(QStringLiteral("errors.log"));
        QVERIFY(log.open(QIODevice::ReadOnly));
        const QString entry = QString::fromUtf8(log.readAll());
        QVERIFY2(entry.endsWith(QStringLiteral(
                     " (v1.3.0)\r\n\r\nmodGeneral:Main->Morvena->Object variable not set\r\n\r\n")),
                 qPrintable(entry));
    }

    void settingsAreReadWithTheirDefaults() {
        ReadSettings();
        QCOMPARE(ServerName, QString());
        QCOMPARE(DatabaseName, QStringLiteral("Morvena.mdb"));
        QCOMPARE(TempFilename, TemporaryFolder() + QStringLiteral("/tmpRecipeDB.html"));
        QCOMPARE(Username, QString());
        QCOMPARE(Password, QString());
        QCOMPARE(DatabaseType, 1);
        QVERIFY(!QFile::exists(modRegistry::StoreFile(true)));
    }

    // A display file stored in a folder this session does not have (the runtime folder of a
    // login that is not there, as under su): the session uses the start-up default, and the
    // store keeps what it holds.
    void displayFileInAMissingFolderGivesWayForTheSession() {
        const QString folder = TestDatabase::WorkFolder() + QStringLiteral("/run-user-1000");
        QDir(folder).removeRecursively();
        const QString stored = folder + QStringLiteral("/tmpRecipeDB.html");
        StoreSettings(TestDatabase::Sqlite, TestDatabase::WorkFolder() + QStringLiteral("/no.db"));
        modRegistry::SetRegistryString(modRegistry::ProgramKey, QStringLiteral("TempFilename"),
                                       stored, true);
        const QByteArray before = ReadBytes(modRegistry::StoreFile(true));
        MessageRecorder messages;
        QVERIFY(Main(Windows()));
        QCOMPARE(TempFilename, DefaultTempFilename());
        QCOMPARE(ReadBytes(modRegistry::StoreFile(true)), before);
        QVERIFY(!QFileInfo::exists(folder));

        // Once the folder is there, the stored file is used again.
        QVERIFY(QDir().mkpath(folder));
        ReadSettings();
        QCOMPARE(TempFilename, stored);
    }

    // The installation folder: what an installation stored, otherwise the program's own data.
    void installationFolder_data() {
        QTest::addColumn<QString>("stored");  // null: nothing stored
        QTest::addColumn<QString>("expected");
        const QString work = TestDatabase::WorkFolder();
        const QString installed = work + QStringLiteral("/opt/morvena");
        QDir().mkpath(installed);
        // The data folder of another build tree, as an earlier version stored it after a run
        // from that tree.
        const QString buildTree = work + QStringLiteral("/other-build/share");
        QDir().mkpath(buildTree);
        QFile marker(buildTree + QLatin1Char('/') + QString::fromUtf8(Version::BuildTreeMarker));
        QVERIFY(marker.open(QIODevice::WriteOnly));
        marker.close();
        QTest::newRow("nothing stored") << QString() << DefaultInstallDir();
        QTest::newRow("an installation's folder") << installed << installed;
        QTest::newRow("a build tree's data") << buildTree << DefaultInstallDir();
        QTest::newRow("the program's own build tree")
            << QString::fromUtf8(Version::BuildDataDir) << DefaultInstallDir();
        QTest::newRow("a deleted build tree")
            << work + QStringLiteral("/deleted-build/share") << DefaultInstallDir();
    }
    void installationFolder() {
        QFETCH(QString, stored);
        QFETCH(QString, expected);
        if (!stored.isNull()) {
            modRegistry::SetRegistryString(modRegistry::ProgramKey, QStringLiteral("InstallDir"),
                                           stored, true);
        }
        QCOMPARE(InstallationFolder(), expected);
        QStringList folders;
        UiServices::SetOpenerHandler(
            [&](const QString&, const QString& workingFolder) { folders << workingFolder; });
        OpenRegisteredFile(QStringLiteral("docs/page11.html"));
        UiServices::SetOpenerHandler({});
        QCOMPARE(folders, QStringList{expected + QLatin1Char('/')});
    }

    // A run from the build tree, its first start included, stores no installation folder.
    void firstStartFromTheBuildTreeStoresNoInstallationFolder() {
        QVERIFY(IsBuildTreeData(DefaultInstallDir()));
        MessageRecorder messages;
        QVERIFY(Main(Windows()));
        QVERIFY(QFile::exists(modRegistry::StoreFile(true)));
        QVERIFY(!modRegistry::RegistryValueExists(modRegistry::ProgramKey,
                                                  QStringLiteral("InstallDir"), true));
    }

    // An installed program finds its data beside it under any prefix; a program whose
    // executable has none beside it is a build tree's and uses that tree's data.
    void installedProgramFindsItsOwnData() {
        const QString prefix = TestDatabase::WorkFolder() + QStringLiteral("/prefix");
        const QString data = QDir::cleanPath(
            QDir(prefix + QStringLiteral("/bin"))
                .absoluteFilePath(QString::fromUtf8(Version::InstalledDataDirFromBin)));
        QVERIFY(QDir().mkpath(data + QStringLiteral("/docs")));
        QVERIFY(QDir().mkpath(prefix + QStringLiteral("/bin")));
        QCOMPARE(DefaultInstallDirFor(prefix + QStringLiteral("/bin")), data);
        QVERIFY(!IsBuildTreeData(data));
        const QString tree = TestDatabase::WorkFolder() + QStringLiteral("/tree/app");
        QVERIFY(QDir().mkpath(tree));
        QCOMPARE(DefaultInstallDirFor(tree), QString::fromUtf8(Version::BuildDataDir));
    }
};

QTEST_MAIN(TestStartup)
#include "tst_startup.moc"
