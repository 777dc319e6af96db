// A cook's collection from the Windows program where the database setting looks: start-up
// offers to convert it, writes a new collection beside it, stores that as the database and
// opens it; the next start opens the converted collection without asking. The settings dialog
// offers the same for an Access file chosen there.
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QProcess>
#include <QPushButton>
#include <QScopeGuard>
#include <QTest>

#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "core/registry/modRegistry.h"
#include "core/startup/Startup.h"
#include "core/ui/UiServices.h"
#include "display/modDisplay.h"
#include "settings/WindowsCollection.h"
#include "settings/frmSettings.h"
#include "tests/support/AccessPatch.h"
#include "tests/support/DialogDriver.h"
#include "tests/support/MessageRecorder.h"
#include "tests/support/TestDatabase.h"

using namespace modGeneral;

namespace {

QString Stored(const char* name) {
    return modRegistry::GetRegistryString(modRegistry::ProgramKey, QString::fromLatin1(name),
                                          QStringLiteral("<none>"), true);
}

QString Question(const QString& access, const QString& converted) {
    return QStringLiteral(
               "Datoteka %1 je zbirka receptov programa Morvena za Windows (Access).\r\n\r\nAli "
               "jo želite pretvoriti v zbirko tega programa? Recepti bodo zapisani v novo "
               "datoteko %2, datoteka %1 pa ostane, kakršna je.")
        .arg(access, converted);
}

}  // namespace

class TestConversion : public QObject {
    Q_OBJECT

    QString m_folder;  // where the cook put the old collection
    QString m_access;
    QByteArray m_accessChecksum;
    QStringList m_shown;

    StartupWindows Windows() {
        return {[this] { m_shown << QStringLiteral("settings"); },
                [this] { m_shown << QStringLiteral("main"); },
                [] { WindowsCollection::Offer(nullptr); }};
    }

    // The cook's old collection under the default name, named by the stored setting.
    void PutAccessFile(const QString& from = QStringLiteral("Morvena-sample.mdb")) {
        m_access = m_folder + QStringLiteral("/Morvena.mdb");
        QFile::remove(m_access);
        QVERIFY(
            QFile::copy(QStringLiteral(MORVENA_TEST_SOURCE_DIR "/data/access/") + from, m_access));
        m_accessChecksum = AccessPatch::Checksum(m_access);
        modRegistry::SetRegistryString(modRegistry::ProgramKey, QStringLiteral("DatabaseName"),
                                       m_access, true);
        modRegistry::SetRegistryLong(modRegistry::ProgramKey, QStringLiteral("DatabaseType"), 1,
                                     true);
    }

private Q_SLOTS:
    void initTestCase() {
        TestDatabase::IsolateEnvironment();
        qputenv("XDG_DATA_HOME", QFile::encodeName(TestDatabase::WorkFolder() + "/data"));
    }
    void init() {
        QDir(modRegistry::StoreFolder()).removeRecursively();
        m_folder = TestDatabase::WorkFolder() + QStringLiteral("/windows");
        QDir(m_folder).removeRecursively();
        QVERIFY(QDir().mkpath(m_folder));
        m_shown.clear();
        modDatabase::Connection.reset();
    }
    void cleanup() { modDatabase::Connection.reset(); }

    void startUpConvertsOnYesAndOpensTheConversionNextTime() {
        PutAccessFile();
        const QString converted = m_folder + QStringLiteral("/Morvena-linux.mdb");
        MessageRecorder messages;
        messages.Answer(UiServices::vbYes);
        QVERIFY(Main(Windows()));
        QCOMPARE(messages.Texts(), QStringList{Question(m_access, converted)});
        QCOMPARE(messages.Messages().first().style, UiServices::vbYesNo + UiServices::vbQuestion);
        QCOMPARE(m_shown, QStringList{"main"});
        QCOMPARE(DatabaseName, converted);
        QCOMPARE(Stored("DatabaseName"), converted);
        QCOMPARE(modDatabase::Connection->State(), int(modDatabase::adStateOpen));
        QCOMPARE(TestDatabase::Rows("SELECT COUNT(*) FROM [Recipe];"), QStringList{"65"});
        QVERIFY(modDisplay::RecipePage(1).contains(
            QStringLiteral("<h1>Goveja juha z rezanci</h1><h3>Sestavine:</h3>600 g goveje "
                           "meso<br>300 g goveje kosti")));
        QCOMPARE(AccessPatch::Checksum(m_access), m_accessChecksum);

        // The next start opens the converted collection and asks nothing.
        modDatabase::Connection.reset();
        messages.Clear();
        m_shown.clear();
        QVERIFY(Main(Windows()));
        QCOMPARE(messages.Texts(), QStringList());
        QCOMPARE(m_shown, QStringList{"main"});
        QCOMPARE(DatabaseName, converted);
        QCOMPARE(modDatabase::Connection->State(), int(modDatabase::adStateOpen));
        modDatabase::Connection.reset();
        QCOMPARE(QDir(m_folder).entryList(QDir::Files),
                 (QStringList{"Morvena-linux.mdb", "Morvena.mdb"}));
    }

    void startUpOnNoShowsTheSettingsDialogAndWritesNothing() {
        PutAccessFile();
        MessageRecorder messages;
        messages.Answer(UiServices::vbNo);
        QVERIFY(Main(Windows()));
        QCOMPARE(messages.Texts(),
                 QStringList{Question(m_access, m_folder + QStringLiteral("/Morvena-linux.mdb"))});
        QCOMPARE(m_shown, (QStringList{"settings", "main"}));
        QCOMPARE(QDir(m_folder).entryList(QDir::Files | QDir::Hidden), QStringList{"Morvena.mdb"});
        QCOMPARE(Stored("DatabaseName"), m_access);
        QCOMPARE(AccessPatch::Checksum(m_access), m_accessChecksum);
    }

    // A name already taken is not overwritten: the next free one is used.
    void aTakenNameIsLeftAlone() {
        PutAccessFile();
        QFile taken(m_folder + QStringLiteral("/Morvena-linux.mdb"));
        QVERIFY(taken.open(QIODevice::WriteOnly));
        taken.write("mine");
        taken.close();
        const QString converted = m_folder + QStringLiteral("/Morvena-linux-2.mdb");
        MessageRecorder messages;
        QVERIFY(Main(Windows()));
        QCOMPARE(messages.Texts(), QStringList{Question(m_access, converted)});
        QCOMPARE(DatabaseName, converted);
        QVERIFY(taken.open(QIODevice::ReadOnly));
        QCOMPARE(taken.readAll(), QByteArray("mine"));
    }

    // A folder the cook cannot write: the new collection goes to the user's data folder.
    void anUnwritableFolderSendsTheNewFileToTheDataFolder() {
        PutAccessFile();
        const QByteArray folder = QFile::encodeName(m_folder);
        QVERIFY(QFile::setPermissions(m_folder, QFile::ReadOwner | QFile::ExeOwner));
        // The administrator writes anywhere but into a folder marked unchangeable.
        const bool immutable =
            ::access(folder.constData(), W_OK) == 0 &&
            QProcess::execute(QStringLiteral("chattr"), {QStringLiteral("+i"), m_folder}) == 0;
        const auto restore = qScopeGuard([&] {
            if (immutable) {
                QProcess::execute(QStringLiteral("chattr"), {QStringLiteral("-i"), m_folder});
            }
            QFile::setPermissions(m_folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        });
        if (::access(folder.constData(), W_OK) == 0) {
            QSKIP("no folder can be made unwritable here");
        }
        const QString converted =
            TestDatabase::WorkFolder() + QStringLiteral("/data/morvena/Morvena-linux.mdb");
        QFile::remove(converted);
        MessageRecorder messages;
        QVERIFY(Main(Windows()));
        QCOMPARE(messages.Texts(), QStringList{Question(m_access, converted)});
        QCOMPARE(DatabaseName, converted);
        QCOMPARE(modDatabase::Connection->State(), int(modDatabase::adStateOpen));
        QCOMPARE(AccessPatch::Checksum(m_access), m_accessChecksum);
        modDatabase::Connection.reset();
        QFile::remove(converted);
    }

    // A damaged file: the reason, then the settings dialog; nothing is left behind.
    void aFailedConversionSaysWhyAndShowsTheSettingsDialog() {
        PutAccessFile();
        QVERIFY(QFile::resize(m_access, 200000));
        m_accessChecksum = AccessPatch::Checksum(m_access);
        MessageRecorder messages;
        QVERIFY(Main(Windows()));
        QCOMPARE(messages.Texts(),
                 (QStringList{Question(m_access, m_folder + QStringLiteral("/Morvena-linux.mdb")),
                              QStringLiteral("Pretvorba ni uspela.\r\n\r\nDatoteka %1 je "
                                             "poškodovana: ni cela (njena dolžina ni "
                                             "večkratnik strani).")
                                  .arg(m_access)}));
        QCOMPARE(m_shown, (QStringList{"settings", "main"}));
        QCOMPARE(QDir(m_folder).entryList(QDir::Files | QDir::Hidden), QStringList{"Morvena.mdb"});
        QCOMPARE(AccessPatch::Checksum(m_access), m_accessChecksum);
    }

    // An Access file chosen in the settings dialog is converted on "Potrdi" and Yes.
    void theSettingsDialogConvertsAChosenAccessFile() {
        TestDatabase::OpenFresh(TestDatabase::Sqlite);
        const QString working = DatabaseName;
        PutAccessFile();
        const QString converted = m_folder + QStringLiteral("/Morvena-linux.mdb");
        MessageRecorder messages;
        frmSettings settings;
        const auto ran =
            DialogDriver::WhenShown(QStringLiteral("frmSettings"), [&](QDialog* shown) {
                shown->findChild<QLineEdit*>(QStringLiteral("txtDatabase"))->setText(m_access);
                QTest::mouseClick(DialogDriver::Button(shown, "cmdOK"), Qt::LeftButton);
            });
        QCOMPARE(settings.exec(), int(QDialog::Accepted));
        QVERIFY(*ran);
        QCOMPARE(messages.Texts(), QStringList{Question(m_access, converted)});
        QVERIFY(working != converted);
        QCOMPARE(DatabaseName, converted);
        QCOMPARE(Stored("DatabaseName"), converted);
        QCOMPARE(modDatabase::Connection->State(), int(modDatabase::adStateOpen));
        QCOMPARE(TestDatabase::Rows("SELECT COUNT(*) FROM [Section];"), QStringList{"84"});
    }

    // Answering No in the settings dialog: the message that the file is the Windows program's.
    void theSettingsDialogOnNoSaysWhatTheFileIs() {
        TestDatabase::OpenFresh(TestDatabase::Sqlite);
        PutAccessFile();
        MessageRecorder messages;
        messages.Answer(UiServices::vbNo);
        frmSettings settings;
        DialogDriver::WhenShown(QStringLiteral("frmSettings"), [&](QDialog* shown) {
            shown->findChild<QLineEdit*>(QStringLiteral("txtDatabase"))->setText(m_access);
            QTest::mouseClick(DialogDriver::Button(shown, "cmdOK"), Qt::LeftButton);
            QTest::mouseClick(DialogDriver::Button(shown, "cmdCancel"), Qt::LeftButton);
        });
        settings.exec();
        QCOMPARE(messages.Texts().value(1),
                 QStringLiteral("Povezava z zbirko podatkov ni bila vzpostavljena.\r\n\r\n%1 je "
                                "zbirka podatkov programa Morvena za Windows (Access). Morvena "
                                "jo odpre, ko jo pretvori v svojo zbirko.")
                     .arg(m_access));
        QCOMPARE(QDir(m_folder).entryList(QDir::Files | QDir::Hidden), QStringList{"Morvena.mdb"});
    }
};

QTEST_MAIN(TestConversion)
#include "tst_conversion.moc"
