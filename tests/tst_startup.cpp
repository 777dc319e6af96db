// Start-up: the settings values with their defaults and the steps of Main up to the windows.
#include <QFile>
#include <QTest>

#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "core/registry/modRegistry.h"
#include "core/startup/Startup.h"
#include "core/ui/UiServices.h"
#include "tests/support/MessageRecorder.h"
#include "tests/support/TestDatabase.h"

using namespace modGeneral;

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
};

QTEST_MAIN(TestStartup)
#include "tst_startup.moc"
