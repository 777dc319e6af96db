// The settings dialog on the real widgets: its controls, the choice of the database kind, "Potrdi"
// with a working and with a failing database, "Prekliči", the close box and Escape, the browse
// buttons and the selection of a text box's text when it gets the focus.
#include <QApplication>
#include <QFile>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <QTimer>
#include <functional>
#include <optional>

#include "core/AppError.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "core/registry/modRegistry.h"
#include "core/ui/UiServices.h"
#include "settings/frmSettings.h"
#include "tests/support/MessageRecorder.h"
#include "tests/support/TestDatabase.h"

using namespace modGeneral;

namespace {

const QString ConnectionFailed =
    QStringLiteral("Povezava z zbirko podatkov ni bila vzpostavljena.");
// exec()'s result when the test had to close the dialog itself.
constexpr int ClosedByTest = 99;

QString ReadStoreFile() {
    QFile file(modRegistry::StoreFile(true));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

QString Stored(const QString& name) {
    return modRegistry::GetRegistryString(modRegistry::ProgramKey, name,
                                          QStringLiteral("<missing>"), true);
}

qint32 StoredLong(const QString& name) {
    return modRegistry::GetRegistryLong(modRegistry::ProgramKey, name, -12345, true);
}

struct SettingsValues {
    QString server, database, tempFile, user, password;
    qint32 type;
};

SettingsValues CurrentValues() {
    return {ServerName, DatabaseName, TempFilename, Username, Password, DatabaseType};
}

void CompareValues(const SettingsValues& actual, const SettingsValues& expected) {
    QCOMPARE(actual.server, expected.server);
    QCOMPARE(actual.database, expected.database);
    QCOMPARE(actual.tempFile, expected.tempFile);
    QCOMPARE(actual.user, expected.user);
    QCOMPARE(actual.password, expected.password);
    QCOMPARE(actual.type, expected.type);
}

}  // namespace

class TestSettings : public QObject {
    Q_OBJECT

private:
    int m_endProgramCalls = 0;
    QList<UiServices::FileDialogRequest> m_fileRequests;
    QList<std::optional<QString>> m_fileAnswers;
    bool m_fileDialogFails = false;

    template <class T>
    static T* Control(QWidget* dialog, const char* name) {
        T* control = dialog->findChild<T*>(QString::fromLatin1(name));
        if (!control) {
            qFatal("no control %s", name);
        }
        return control;
    }
    static QLineEdit* Box(QWidget* dialog, const char* name) {
        return Control<QLineEdit>(dialog, name);
    }
    static QPushButton* Button(QWidget* dialog, const char* name) {
        return Control<QPushButton>(dialog, name);
    }
    static QRadioButton* Option(QWidget* dialog, const char* name) {
        return Control<QRadioButton>(dialog, name);
    }

    // Shows the dialog modally as the program does and runs `drive` on it once it is up. A dialog
    // that `drive` leaves open is closed from code afterwards (exec() then returns ClosedByTest).
    static int ShowDialog(const std::function<void(frmSettings*)>& drive) {
        frmSettings dialog;
        bool driven = false;
        QTimer::singleShot(0, &dialog, [&] {
            driven = true;
            auto* shown = qobject_cast<frmSettings*>(QApplication::activeModalWidget());
            if (shown == &dialog) {
                drive(shown);
            } else {
                QTest::qFail("the settings dialog is not the active modal window", __FILE__,
                             __LINE__);
            }
            if (dialog.isVisible()) {
                dialog.done(ClosedByTest);
            }
        });
        const int result = dialog.exec();
        if (!driven) {
            QTest::qFail("the dialog closed before the test could drive it", __FILE__, __LINE__);
        }
        return result;
    }

    // Stores settings values as a working "Potrdi" would have.
    static void StoreValues(const SettingsValues& values) {
        using namespace modRegistry;
        SetRegistryString(ProgramKey, QStringLiteral("ServerName"), values.server, true);
        SetRegistryString(ProgramKey, QStringLiteral("DatabaseName"), values.database, true);
        SetRegistryString(ProgramKey, QStringLiteral("TempFilename"), values.tempFile, true);
        SetRegistryString(ProgramKey, QStringLiteral("Username"), values.user, true);
        SetRegistryString(ProgramKey, QStringLiteral("Password"), values.password, true);
        SetRegistryLong(ProgramKey, QStringLiteral("DatabaseType"), values.type, true);
    }

    // A fresh database of the kind, open as the shared connection, its values stored.
    static SettingsValues OpenAndStore(const QString& kind) {
        TestDatabase::OpenFresh(kind);
        TempFilename = TestDatabase::WorkFolder() + QStringLiteral("/stored page.html");
        const SettingsValues values = CurrentValues();
        StoreValues(values);
        return values;
    }

    // Types the values of a database of the kind into the dialog.
    static void TypeDatabase(frmSettings* dialog, const QString& kind, const QString& database,
                             const QString& tempFile) {
        if (kind == TestDatabase::Postgres) {
            QTest::mouseClick(Option(dialog, "optSqlServer"), Qt::LeftButton);
            Box(dialog, "txtServer")->setText(TestDatabase::PostgresServer());
            Box(dialog, "txtUsername")->setText(TestDatabase::PostgresUser());
            Box(dialog, "txtPassword")->setText(TestDatabase::PostgresPassword());
        } else {
            QTest::mouseClick(Option(dialog, "optAccess"), Qt::LeftButton);
            Box(dialog, "txtUsername")->clear();
            Box(dialog, "txtPassword")->clear();
        }
        QLineEdit* txtDatabase = Box(dialog, "txtDatabase");
        txtDatabase->clear();
        QTest::keyClicks(txtDatabase, database);
        Box(dialog, "txtTempFilename")->setText(tempFile);
    }

    // A database of the kind that cannot be opened.
    static QString MissingDatabase(const QString& kind) {
        return kind == TestDatabase::Postgres
                   ? QStringLiteral("t_ni_zbirke")
                   : TestDatabase::WorkFolder() + QStringLiteral("/ni zbirke.sqlite");
    }

    // The shared connection points at a database that cannot be opened.
    static void OpenMissing(const QString& kind) {
        TestDatabase::UseSettingsFor(kind, MissingDatabase(kind));
        modDatabase::OpenConnection();
        QVERIFY(modDatabase::Connection);
        QCOMPARE(modDatabase::Connection->State(), int(modDatabase::adStateClosed));
    }

private Q_SLOTS:
    void initTestCase() { TestDatabase::IsolateEnvironment(); }

    void init() {
        QFile::remove(modRegistry::StoreFile(true));
        QFile::remove(QStringLiteral("errors.log"));
        modDatabase::Connection.reset();
        ServerName.clear();
        DatabaseName.clear();
        TempFilename.clear();
        Username.clear();
        Password.clear();
        DatabaseType = 1;
        m_endProgramCalls = 0;
        m_fileRequests.clear();
        m_fileAnswers.clear();
        m_fileDialogFails = false;
        UiServices::SetEndProgramHandler([this] { ++m_endProgramCalls; });
        UiServices::SetFileDialogHandler(
            [this](const UiServices::FileDialogRequest& request) -> std::optional<QString> {
                m_fileRequests << request;
                if (m_fileDialogFails) {
                    ErrorPath::Raise(5, QStringLiteral("Invalid procedure call"));
                }
                return m_fileAnswers.isEmpty() ? std::nullopt : m_fileAnswers.takeFirst();
            });
    }

    void cleanup() {
        UiServices::SetEndProgramHandler({});
        UiServices::SetFileDialogHandler({});
        UiServices::SetMousePointer(UiServices::vbDefault);
        modDatabase::Connection.reset();
        // Nothing the dialog does here is an error of its own.
        QVERIFY2(!QFile::exists(QStringLiteral("errors.log")), "errors.log was written");
    }

    void captionsAndTextsOfTheControls() {
        MessageRecorder messages;
        ShowDialog([](frmSettings* dialog) {
            QCOMPARE(dialog->objectName(), QStringLiteral("frmSettings"));
            QCOMPARE(dialog->windowTitle(), QStringLiteral("Nastavitve"));
            QVERIFY(dialog->isModal());
            QCOMPARE(Control<QGroupBox>(dialog, "fraDatabase")->title(),
                     QStringLiteral("Zbirka podatkov"));
            QCOMPARE(Option(dialog, "optAccess")->text(), QStringLiteral("Access"));
            QCOMPARE(Option(dialog, "optSqlServer")->text(), QStringLiteral("SQL Server"));
            QCOMPARE(Option(dialog, "optAccess")->parentWidget()->objectName(),
                     QStringLiteral("fraDatabase"));
            QCOMPARE(Option(dialog, "optSqlServer")->parentWidget()->objectName(),
                     QStringLiteral("fraDatabase"));
            QCOMPARE(Control<QLabel>(dialog, "lblServer")->text(), QStringLiteral("Strežnik:"));
            QCOMPARE(Control<QLabel>(dialog, "lblDatabase")->text(),
                     QStringLiteral("Zbirka podatkov:"));
            QCOMPARE(Control<QLabel>(dialog, "lblUsername")->text(),
                     QStringLiteral("Uporabniško ime:"));
            QCOMPARE(Control<QLabel>(dialog, "lblPassword")->text(), QStringLiteral("Geslo:"));
            QCOMPARE(Control<QLabel>(dialog, "lblTempFilename")->text(),
                     QStringLiteral("Začasna datoteka:"));
            QCOMPARE(Button(dialog, "cmdOK")->text(), QStringLiteral("Potrdi"));
            QCOMPARE(Button(dialog, "cmdCancel")->text(), QStringLiteral("Prekliči"));
            QCOMPARE(Button(dialog, "cmdDatabase")->text(), QStringLiteral("..."));
            QCOMPARE(Button(dialog, "cmdTempFilename")->text(), QStringLiteral("..."));
            QVERIFY(Button(dialog, "cmdOK")->isDefault());
            QCOMPARE(Box(dialog, "txtPassword")->echoMode(), QLineEdit::Password);
            for (const char* name :
                 {"txtServer", "txtDatabase", "txtUsername", "txtPassword", "txtTempFilename"}) {
                QVERIFY2(Box(dialog, name)->text().isEmpty(), name);
            }
        });
        QVERIFY(messages.Messages().isEmpty());
    }

    void optionFollowsTheDatabaseType_data() {
        QTest::addColumn<qint32>("type");
        QTest::addColumn<bool>("server");
        QTest::newRow("1 database file") << 1 << false;
        QTest::newRow("2 database server") << 2 << true;
        QTest::newRow("0") << 0 << false;
        QTest::newRow("3") << 3 << false;
        QTest::newRow("-1") << -1 << false;
    }
    void optionFollowsTheDatabaseType() {
        QFETCH(qint32, type);
        QFETCH(bool, server);
        DatabaseType = type;
        ShowDialog([&](frmSettings* dialog) {
            QCOMPARE(Option(dialog, "optAccess")->isChecked(), !server);
            QCOMPARE(Option(dialog, "optSqlServer")->isChecked(), server);
            // The option's click handler has run.
            QCOMPARE(Control<QLabel>(dialog, "lblServer")->isVisible(), server);
            QCOMPARE(Box(dialog, "txtServer")->isVisible(), server);
            QCOMPARE(Button(dialog, "cmdDatabase")->isVisible(), !server);
            QTRY_COMPARE(Box(dialog, "txtDatabase")->width(), server ? 171 : 147);
        });
        QCOMPARE(DatabaseType, type);  // loading changes no value
    }

    void fieldsAreFilledFromTheSettingsValues() {
        ServerName = QStringLiteral("strežnik.example:5432");
        DatabaseName = QStringLiteral("/home/kuhar/Čebula in česen.sqlite");
        TempFilename = QStringLiteral("/tmp/stran za tisk.html");
        Username = QStringLiteral("Žiga");
        Password = QStringLiteral("skrito geslo");
        DatabaseType = 2;
        UiServices::SetMousePointer(UiServices::vbHourglass);
        const SettingsValues before = CurrentValues();
        ShowDialog([](frmSettings* dialog) {
            QCOMPARE(Box(dialog, "txtServer")->text(), QStringLiteral("strežnik.example:5432"));
            QCOMPARE(Box(dialog, "txtDatabase")->text(),
                     QStringLiteral("/home/kuhar/Čebula in česen.sqlite"));
            QCOMPARE(Box(dialog, "txtTempFilename")->text(),
                     QStringLiteral("/tmp/stran za tisk.html"));
            QCOMPARE(Box(dialog, "txtUsername")->text(), QStringLiteral("Žiga"));
            QCOMPARE(Box(dialog, "txtPassword")->text(), QStringLiteral("skrito geslo"));
            QCOMPARE(UiServices::MousePointer(), int(UiServices::vbDefault));
        });
        CompareValues(CurrentValues(), before);
    }

    void theServerNameIsFilledAlsoForADatabaseFile() {
        ServerName = QStringLiteral("ostanek");
        DatabaseType = 1;
        ShowDialog([](frmSettings* dialog) {
            QCOMPARE(Box(dialog, "txtServer")->text(), QStringLiteral("ostanek"));
            QVERIFY(!Box(dialog, "txtServer")->isVisible());
        });
    }

    void choosingTheKindShowsAndHidesTheServer() {
        DatabaseType = 1;
        ShowDialog([](frmSettings* dialog) {
            QLabel* lblServer = Control<QLabel>(dialog, "lblServer");
            QLineEdit* txtServer = Box(dialog, "txtServer");
            QLineEdit* txtDatabase = Box(dialog, "txtDatabase");
            QPushButton* cmdDatabase = Button(dialog, "cmdDatabase");

            QTest::mouseClick(Option(dialog, "optSqlServer"), Qt::LeftButton);
            QVERIFY(Option(dialog, "optSqlServer")->isChecked());
            QVERIFY(!Option(dialog, "optAccess")->isChecked());
            QVERIFY(lblServer->isVisible());
            QVERIFY(txtServer->isVisible());
            QVERIFY(!cmdDatabase->isVisible());
            QCOMPARE(txtDatabase->minimumWidth(), 171);
            QCOMPARE(txtDatabase->maximumWidth(), 171);
            QTRY_COMPARE(txtDatabase->width(), 171);

            QTest::mouseClick(Option(dialog, "optAccess"), Qt::LeftButton);
            QVERIFY(Option(dialog, "optAccess")->isChecked());
            QVERIFY(!Option(dialog, "optSqlServer")->isChecked());
            QVERIFY(!lblServer->isVisible());
            QVERIFY(!txtServer->isVisible());
            QVERIFY(cmdDatabase->isVisible());
            QCOMPARE(txtDatabase->minimumWidth(), 147);
            QCOMPARE(txtDatabase->maximumWidth(), 147);
            QTRY_COMPARE(txtDatabase->width(), 147);

            // The database box with its browse button ends where the box alone would.
            QTRY_COMPARE(cmdDatabase->geometry().right() - txtDatabase->geometry().left() + 1, 171);
        });
        QCOMPARE(DatabaseType, 1);  // choosing changes no value before "Potrdi"
    }

    void okWithAWorkingDatabaseStoresTheValues_data() { TestDatabase::AddKinds(); }
    void okWithAWorkingDatabaseStoresTheValues() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        const QString database = DatabaseName;
        const auto previous = modDatabase::Connection;
        // Values of another database are in effect when the dialog opens.
        ServerName = QStringLiteral("drugi strežnik");
        DatabaseName = QStringLiteral("druga.sqlite");
        Username = QStringLiteral("drugi");
        Password = QStringLiteral("drugo");
        DatabaseType = kind == TestDatabase::Postgres ? 1 : 2;
        const QString tempFile = TestDatabase::WorkFolder() + QStringLiteral("/stran.html");
        MessageRecorder messages;
        const int result = ShowDialog([&](frmSettings* dialog) {
            TypeDatabase(dialog, kind, database, tempFile);
            QTest::mouseClick(Button(dialog, "cmdOK"), Qt::LeftButton);
            QVERIFY(!dialog->isVisible());
        });
        QCOMPARE(result, int(QDialog::Accepted));
        QVERIFY(messages.Messages().isEmpty());
        QCOMPARE(m_endProgramCalls, 0);

        // A new connection, open, is the shared one (no cancel ran on closing).
        QVERIFY(modDatabase::Connection);
        QVERIFY(modDatabase::Connection != previous);
        QCOMPARE(modDatabase::Connection->State(), int(modDatabase::adStateOpen));
        QCOMPARE(TestDatabase::Rows(QStringLiteral("SELECT COUNT(*) FROM [Group];")),
                 QStringList{"0"});

        const bool server = kind == TestDatabase::Postgres;
        const SettingsValues expected{server ? TestDatabase::PostgresServer() : QString(),
                                      database,
                                      tempFile,
                                      server ? TestDatabase::PostgresUser() : QString(),
                                      server ? TestDatabase::PostgresPassword() : QString(),
                                      server ? 2 : 1};
        CompareValues(CurrentValues(), expected);
        SettingsValues stored{
            Stored(QStringLiteral("ServerName")),   Stored(QStringLiteral("DatabaseName")),
            Stored(QStringLiteral("TempFilename")), Stored(QStringLiteral("Username")),
            Stored(QStringLiteral("Password")),     StoredLong(QStringLiteral("DatabaseType"))};
        CompareValues(stored, expected);

        // The machine-wide store holds the six values under the names written.
        const QString file = ReadStoreFile();
        for (const char* name : {"\"ServerName\"=", "\"Databasename\"=", "\"TempFilename\"=",
                                 "\"Username\"=", "\"Password\"=", "\"DatabaseType\"=dword:"}) {
            QVERIFY2(file.contains(QLatin1String(name)), qPrintable(file));
        }
        QVERIFY2(!file.contains(QLatin1String("\"DatabaseName\"")), qPrintable(file));
        QVERIFY(
            file.contains(QStringLiteral("\"DatabaseType\"=dword:0000000%1").arg(server ? 2 : 1)));
        QVERIFY(!QFile::exists(modRegistry::StoreFile(false)));
    }

    void okWithAccessEmptiesTheServerName() {
        TestDatabase::OpenFresh(TestDatabase::Sqlite);
        const QString database = DatabaseName;
        ServerName = QStringLiteral("stari strežnik");
        DatabaseType = 2;
        MessageRecorder messages;
        const int result = ShowDialog([&](frmSettings* dialog) {
            QLineEdit* txtServer = Box(dialog, "txtServer");
            QCOMPARE(txtServer->text(), QStringLiteral("stari strežnik"));
            txtServer->clear();
            QTest::keyClicks(txtServer, QStringLiteral("tipkan streznik"));
            QTest::mouseClick(Option(dialog, "optAccess"), Qt::LeftButton);
            QVERIFY(!txtServer->isVisible());
            QCOMPARE(txtServer->text(), QStringLiteral("tipkan streznik"));
            Box(dialog, "txtDatabase")->setText(database);
            QTest::mouseClick(Button(dialog, "cmdOK"), Qt::LeftButton);
        });
        QCOMPARE(result, int(QDialog::Accepted));
        QVERIFY(messages.Messages().isEmpty());
        QCOMPARE(ServerName, QString());
        QCOMPARE(DatabaseType, 1);
        QCOMPARE(Stored(QStringLiteral("ServerName")), QString());
        QCOMPARE(StoredLong(QStringLiteral("DatabaseType")), 1);
        QCOMPARE(modDatabase::Connection->State(), int(modDatabase::adStateOpen));
    }

    void okWithAFailingDatabaseKeepsTheDialogOpen_data() { TestDatabase::AddKinds(); }
    void okWithAFailingDatabaseKeepsTheDialogOpen() {
        QFETCH(QString, kind);
        const SettingsValues stored = OpenAndStore(kind);
        const QString storeBefore = ReadStoreFile();
        const auto previous = modDatabase::Connection;
        const QString missing = MissingDatabase(kind);
        const QString tempFile = TestDatabase::WorkFolder() + QStringLiteral("/nova stran.html");
        MessageRecorder messages;
        const int result = ShowDialog([&](frmSettings* dialog) {
            TypeDatabase(dialog, kind, missing, tempFile);
            QTest::mouseClick(Button(dialog, "cmdOK"), Qt::LeftButton);
            QCOMPARE(messages.Messages().size(), 1);
            QVERIFY(dialog->isVisible());
            // The values typed stay in the dialog.
            QCOMPARE(Box(dialog, "txtDatabase")->text(), missing);
            QCOMPARE(Box(dialog, "txtTempFilename")->text(), tempFile);
            QCOMPARE(Option(dialog, "optSqlServer")->isChecked(), kind == TestDatabase::Postgres);
        });
        QCOMPARE(result, ClosedByTest);
        QCOMPARE(m_endProgramCalls, 0);

        // The message names the driver's description of the failure.
        QVERIFY(modDatabase::Connection);
        QVERIFY(modDatabase::Connection != previous);
        QCOMPARE(modDatabase::Connection->State(), int(modDatabase::adStateClosed));
        const QString description = modDatabase::Connection->LastError();
        if (kind == TestDatabase::Postgres) {
            QVERIFY2(description.contains(QStringLiteral("\"t_ni_zbirke\"")),
                     qPrintable(description));
            QVERIFY2(description.contains(QStringLiteral("does not exist")),
                     qPrintable(description));
        } else {
            QCOMPARE(description,
                     QStringLiteral("Datoteka ") + missing + QStringLiteral(" ne obstaja."));
        }
        QCOMPARE(messages.Messages().size(), 1);
        const MessageRecorder::Message& message = messages.Messages().first();
        QCOMPARE(message.text, ConnectionFailed + QStringLiteral("\r\n\r\n") + description);
        QCOMPARE(message.style, int(UiServices::vbOKOnly + UiServices::vbInformation));
        QCOMPARE(message.style, 64);
        QCOMPARE(message.title, QStringLiteral("Morvena"));

        // The store keeps the old values; the program-wide values are the new, unstored ones.
        QCOMPARE(ReadStoreFile(), storeBefore);
        QCOMPARE(Stored(QStringLiteral("DatabaseName")), stored.database);
        SettingsValues typed = stored;
        typed.database = missing;
        typed.tempFile = tempFile;
        CompareValues(CurrentValues(), typed);
        // The previous connection still works.
        QCOMPARE(previous->State(), int(modDatabase::adStateOpen));
        QVERIFY(!QFile::exists(missing));
    }

    void okWithAFileThatIsNoDatabaseOfTheProgram() {
        const SettingsValues stored = OpenAndStore(TestDatabase::Sqlite);
        const QString other = TestDatabase::WorkFolder() + QStringLiteral("/tuja.sqlite");
        {
            auto empty = std::make_shared<modDatabase::DbConnection>(
                1, modDatabase::BuildConnectionString(1, QString(), other, QString(), QString()));
            empty->OpenEmpty();
            QCOMPARE(empty->State(), int(modDatabase::adStateOpen));
        }
        QVERIFY(QFile::exists(other));
        MessageRecorder messages;
        ShowDialog([&](frmSettings* dialog) {
            Box(dialog, "txtDatabase")->setText(other);
            QTest::mouseClick(Button(dialog, "cmdOK"), Qt::LeftButton);
            QVERIFY(dialog->isVisible());
        });
        QCOMPARE(messages.Texts(),
                 QStringList{ConnectionFailed + QStringLiteral("\r\n\r\n") + other +
                             QStringLiteral(" ni zbirka podatkov programa Morvena.")});
        QCOMPARE(Stored(QStringLiteral("DatabaseName")), stored.database);
        QCOMPARE(DatabaseName, other);
    }

    void okFailingTwiceThenWorking_data() { TestDatabase::AddKinds(); }
    void okFailingTwiceThenWorking() {
        QFETCH(QString, kind);
        const SettingsValues stored = OpenAndStore(kind);
        MessageRecorder messages;
        const int result = ShowDialog([&](frmSettings* dialog) {
            QLineEdit* txtDatabase = Box(dialog, "txtDatabase");
            txtDatabase->setText(MissingDatabase(kind));
            QTest::mouseClick(Button(dialog, "cmdOK"), Qt::LeftButton);
            txtDatabase->setText(MissingDatabase(kind) + QStringLiteral("2"));
            QTest::mouseClick(Button(dialog, "cmdOK"), Qt::LeftButton);
            QCOMPARE(messages.Messages().size(), 2);
            QVERIFY(dialog->isVisible());
            QCOMPARE(Stored(QStringLiteral("DatabaseName")), stored.database);
            txtDatabase->setText(stored.database);
            QTest::mouseClick(Button(dialog, "cmdOK"), Qt::LeftButton);
        });
        QCOMPARE(result, int(QDialog::Accepted));
        QCOMPARE(messages.Messages().size(), 2);
        QCOMPARE(modDatabase::Connection->State(), int(modDatabase::adStateOpen));
        CompareValues(CurrentValues(), stored);
    }

    void cancelAfterAFailedOkRestoresTheStoredValues_data() { TestDatabase::AddKinds(); }
    void cancelAfterAFailedOkRestoresTheStoredValues() {
        QFETCH(QString, kind);
        const SettingsValues stored = OpenAndStore(kind);
        const QString storeBefore = ReadStoreFile();
        const auto previous = modDatabase::Connection;
        MessageRecorder messages;
        const int result = ShowDialog([&](frmSettings* dialog) {
            // Typed: the other kind of database, which cannot be opened.
            const QString other =
                kind == TestDatabase::Postgres ? TestDatabase::Sqlite : TestDatabase::Postgres;
            TypeDatabase(dialog, other, MissingDatabase(other),
                         QStringLiteral("/nekam/drugam.html"));
            QTest::mouseClick(Button(dialog, "cmdOK"), Qt::LeftButton);
            QCOMPARE(messages.Messages().size(), 1);
            QVERIFY(modDatabase::Connection != previous);
            QCOMPARE(DatabaseName, MissingDatabase(other));
            QTest::mouseClick(Button(dialog, "cmdCancel"), Qt::LeftButton);
            QVERIFY(!dialog->isVisible());
        });
        QCOMPARE(result, int(QDialog::Rejected));
        QCOMPARE(m_endProgramCalls, 0);
        CompareValues(CurrentValues(), stored);
        // The connection that was open before is the shared one again, still open.
        QCOMPARE(modDatabase::Connection.get(), previous.get());
        QCOMPARE(modDatabase::Connection->State(), int(modDatabase::adStateOpen));
        QCOMPARE(TestDatabase::Rows(QStringLiteral("SELECT COUNT(*) FROM [Recipe];")),
                 QStringList{"0"});
        QCOMPARE(ReadStoreFile(), storeBefore);
        QCOMPARE(messages.Messages().size(), 1);
    }

    void cancelWithNothingStoredUsesTheDefaultsOfCancel_data() { TestDatabase::AddKinds(); }
    void cancelWithNothingStoredUsesTheDefaultsOfCancel() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        TempFilename = QStringLiteral("/tmp/tmpRecipeDB.html");
        const auto previous = modDatabase::Connection;
        MessageRecorder messages;
        const int result = ShowDialog([&](frmSettings* dialog) {
            Box(dialog, "txtDatabase")->setText(MissingDatabase(kind));
            QTest::mouseClick(Button(dialog, "cmdOK"), Qt::LeftButton);
            QTest::mouseClick(Button(dialog, "cmdCancel"), Qt::LeftButton);
        });
        QCOMPARE(result, int(QDialog::Rejected));
        QCOMPARE(messages.Messages().size(), 1);
        CompareValues(CurrentValues(), {QString(), QStringLiteral("Recipes.mdb"), QString(),
                                        QString(), QString(), 1});
        QCOMPARE(modDatabase::Connection.get(), previous.get());
        QCOMPARE(modDatabase::Connection->State(), int(modDatabase::adStateOpen));
        // Cancelling writes nothing.
        QVERIFY(!QFile::exists(modRegistry::StoreFile(true)));
    }

    void cancelWithoutAChangeKeepsTheConnection_data() { TestDatabase::AddKinds(); }
    void cancelWithoutAChangeKeepsTheConnection() {
        QFETCH(QString, kind);
        const SettingsValues stored = OpenAndStore(kind);
        const auto previous = modDatabase::Connection;
        MessageRecorder messages;
        const int result = ShowDialog([](frmSettings* dialog) {
            QTest::mouseClick(Button(dialog, "cmdCancel"), Qt::LeftButton);
        });
        QCOMPARE(result, int(QDialog::Rejected));
        QVERIFY(messages.Messages().isEmpty());
        QCOMPARE(modDatabase::Connection.get(), previous.get());
        QCOMPARE(modDatabase::Connection->State(), int(modDatabase::adStateOpen));
        CompareValues(CurrentValues(), stored);
    }

    void cancelWithoutAWorkingConnectionEndsTheProgram_data() { TestDatabase::AddKinds(); }
    void cancelWithoutAWorkingConnectionEndsTheProgram() {
        QFETCH(QString, kind);
        OpenMissing(kind);
        StoreValues(
            {QString(), QStringLiteral("shranjena.sqlite"), QString(), QString(), QString(), 1});
        const SettingsValues before = CurrentValues();
        MessageRecorder messages;
        ShowDialog([&](frmSettings* dialog) {
            QTest::mouseClick(Button(dialog, "cmdCancel"), Qt::LeftButton);
            QCOMPARE(m_endProgramCalls, 1);
        });
        QCOMPARE(m_endProgramCalls, 1);
        QVERIFY(messages.Messages().isEmpty());
        // Nothing was read back before the end.
        CompareValues(CurrentValues(), before);
    }

    void cancelAfterAFailedOkWithoutAWorkingConnectionEndsTheProgram() {
        OpenMissing(TestDatabase::Sqlite);
        MessageRecorder messages;
        ShowDialog([&](frmSettings* dialog) {
            QTest::mouseClick(Button(dialog, "cmdOK"), Qt::LeftButton);
            QCOMPARE(messages.Messages().size(), 1);
            QTest::mouseClick(Button(dialog, "cmdCancel"), Qt::LeftButton);
        });
        QCOMPARE(m_endProgramCalls, 1);
    }

    void cancelWithoutAnyConnectionEndsTheProgram() {
        QVERIFY(!modDatabase::Connection);
        MessageRecorder messages;
        ShowDialog([](frmSettings* dialog) {
            QTest::mouseClick(Button(dialog, "cmdCancel"), Qt::LeftButton);
        });
        QCOMPARE(m_endProgramCalls, 1);
        QVERIFY(messages.Messages().isEmpty());
    }

    void closeBoxWithoutAWorkingConnectionEndsTheProgram_data() { TestDatabase::AddKinds(); }
    void closeBoxWithoutAWorkingConnectionEndsTheProgram() {
        QFETCH(QString, kind);
        OpenMissing(kind);
        MessageRecorder messages;
        const int result = ShowDialog([&](frmSettings* dialog) {
            QVERIFY(dialog->close());
            QCOMPARE(m_endProgramCalls, 1);
        });
        QCOMPARE(result, int(QDialog::Rejected));
        QCOMPARE(m_endProgramCalls, 1);
        QVERIFY(messages.Messages().isEmpty());
    }

    void closeBoxWithAWorkingConnectionActsAsCancel_data() { TestDatabase::AddKinds(); }
    void closeBoxWithAWorkingConnectionActsAsCancel() {
        QFETCH(QString, kind);
        const SettingsValues stored = OpenAndStore(kind);
        const QString storeBefore = ReadStoreFile();
        const auto previous = modDatabase::Connection;
        MessageRecorder messages;
        const int result = ShowDialog([&](frmSettings* dialog) {
            Box(dialog, "txtDatabase")->setText(MissingDatabase(kind));
            Box(dialog, "txtUsername")->setText(QStringLiteral("nekdo drug"));
            QTest::mouseClick(Button(dialog, "cmdOK"), Qt::LeftButton);
            QCOMPARE(Username, QStringLiteral("nekdo drug"));
            QVERIFY(dialog->close());
            QVERIFY(!dialog->isVisible());
        });
        QCOMPARE(result, int(QDialog::Rejected));
        QCOMPARE(m_endProgramCalls, 0);
        QCOMPARE(messages.Messages().size(), 1);
        CompareValues(CurrentValues(), stored);
        QCOMPARE(modDatabase::Connection.get(), previous.get());
        QCOMPARE(modDatabase::Connection->State(), int(modDatabase::adStateOpen));
        QCOMPARE(ReadStoreFile(), storeBefore);
    }

    void escapeActsAsCancel_data() { TestDatabase::AddKinds(); }
    void escapeActsAsCancel() {
        QFETCH(QString, kind);
        const SettingsValues stored = OpenAndStore(kind);
        const auto previous = modDatabase::Connection;
        MessageRecorder messages;
        const int result = ShowDialog([&](frmSettings* dialog) {
            Box(dialog, "txtDatabase")->setText(MissingDatabase(kind));
            QTest::mouseClick(Button(dialog, "cmdOK"), Qt::LeftButton);
            QTest::keyClick(dialog, Qt::Key_Escape);
        });
        QCOMPARE(result, int(QDialog::Rejected));
        CompareValues(CurrentValues(), stored);
        QCOMPARE(modDatabase::Connection.get(), previous.get());
        QCOMPARE(m_endProgramCalls, 0);
    }

    void escapeWithoutAWorkingConnectionEndsTheProgram() {
        OpenMissing(TestDatabase::Sqlite);
        MessageRecorder messages;
        ShowDialog([&](frmSettings* dialog) {
            QTest::keyClick(dialog, Qt::Key_Escape);
            QCOMPARE(m_endProgramCalls, 1);
        });
        QCOMPARE(m_endProgramCalls, 1);
    }

    void theDialogLoadsAgainWhenShownAgain() {
        const SettingsValues stored = OpenAndStore(TestDatabase::Sqlite);
        frmSettings dialog;
        for (int round = 0; round < 2; ++round) {
            const auto previous = modDatabase::Connection;
            QTimer::singleShot(0, &dialog, [&] {
                QCOMPARE(Box(&dialog, "txtDatabase")->text(), stored.database);
                QVERIFY(Option(&dialog, "optAccess")->isChecked());
                Box(&dialog, "txtDatabase")->setText(QStringLiteral("nekaj drugega"));
                QTest::mouseClick(Option(&dialog, "optSqlServer"), Qt::LeftButton);
                QTest::mouseClick(Button(&dialog, "cmdCancel"), Qt::LeftButton);
                if (dialog.isVisible()) {
                    dialog.done(ClosedByTest);
                }
            });
            QCOMPARE(dialog.exec(), int(QDialog::Rejected));
            QCOMPARE(modDatabase::Connection.get(), previous.get());
            CompareValues(CurrentValues(), stored);
        }
    }

    void browseButtonAsksTheFileDialog_data() {
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("box");
        QTest::addColumn<bool>("save");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("extension");
        QTest::addColumn<QString>("filter");
        QTest::addColumn<bool>("mustExist");
        QTest::addColumn<bool>("askOverwrite");
        QTest::newRow("database") << "cmdDatabase"
                                  << "txtDatabase" << false << "Izberite zbirko podatkov"
                                  << ".mdb"
                                  << "Zbirka podatkov (*.mdb)|*.mdb" << true << false;
        QTest::newRow("display file") << "cmdTempFilename"
                                      << "txtTempFilename" << true << "Izberite začasno datoteko"
                                      << ".html"
                                      << "Dokument HTML (*.html)|*.html" << false << true;
    }
    void browseButtonAsksTheFileDialog() {
        QFETCH(QString, button);
        QFETCH(QString, box);
        QFETCH(bool, save);
        QFETCH(QString, title);
        QFETCH(QString, extension);
        QFETCH(QString, filter);
        QFETCH(bool, mustExist);
        QFETCH(bool, askOverwrite);
        DatabaseName = QStringLiteral("/pot/do/Recepti.mdb");
        TempFilename = QStringLiteral("/tmp/stran.html");
        const QString initial = box == QLatin1String("txtDatabase") ? DatabaseName : TempFilename;
        m_fileAnswers << QStringLiteral("/izbrana/datoteka Č.x");
        MessageRecorder messages;
        QWidget* shownDialog = nullptr;
        ShowDialog([&](frmSettings* dialog) {
            shownDialog = dialog;
            QTest::mouseClick(dialog->findChild<QPushButton*>(button), Qt::LeftButton);
            QCOMPARE(dialog->findChild<QLineEdit*>(box)->text(),
                     QStringLiteral("/izbrana/datoteka Č.x"));
        });
        QCOMPARE(m_fileRequests.size(), 1);
        const UiServices::FileDialogRequest& request = m_fileRequests.first();
        QCOMPARE(request.parent, shownDialog);
        QCOMPARE(request.save, save);
        QCOMPARE(request.title, title);
        QCOMPARE(request.defaultExtension, extension);
        QCOMPARE(request.filter, filter);
        QCOMPARE(request.initialFile, initial);
        QCOMPARE(request.mustExist, mustExist);
        QCOMPARE(request.askOverwrite, askOverwrite);
        QVERIFY(messages.Messages().isEmpty());
        // Only "Potrdi" changes the program's values.
        QCOMPARE(DatabaseName, QStringLiteral("/pot/do/Recepti.mdb"));
        QCOMPARE(TempFilename, QStringLiteral("/tmp/stran.html"));
    }

    void browseStartsFromTheTextTyped_data() {
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("box");
        QTest::newRow("database") << "cmdDatabase"
                                  << "txtDatabase";
        QTest::newRow("display file") << "cmdTempFilename"
                                      << "txtTempFilename";
    }
    void browseStartsFromTheTextTyped() {
        QFETCH(QString, button);
        QFETCH(QString, box);
        ShowDialog([&](frmSettings* dialog) {
            QTest::keyClicks(dialog->findChild<QLineEdit*>(box), QStringLiteral("tipkano.ime"));
            QTest::mouseClick(dialog->findChild<QPushButton*>(button), Qt::LeftButton);
        });
        QCOMPARE(m_fileRequests.size(), 1);
        QCOMPARE(m_fileRequests.first().initialFile, QStringLiteral("tipkano.ime"));
    }

    void cancelledFileDialogChangesNothing_data() { browseStartsFromTheTextTyped_data(); }
    void cancelledFileDialogChangesNothing() {
        QFETCH(QString, button);
        QFETCH(QString, box);
        DatabaseName = QStringLiteral("/pot/do/Recepti.mdb");
        TempFilename = QStringLiteral("/tmp/stran.html");
        m_fileAnswers << std::nullopt;
        MessageRecorder messages;
        ShowDialog([&](frmSettings* dialog) {
            QLineEdit* edit = dialog->findChild<QLineEdit*>(box);
            const QString before = edit->text();
            QTest::mouseClick(dialog->findChild<QPushButton*>(button), Qt::LeftButton);
            QCOMPARE(m_fileRequests.size(), 1);
            QCOMPARE(edit->text(), before);
            QVERIFY(dialog->isVisible());
        });
        QVERIFY(messages.Messages().isEmpty());
        QCOMPARE(m_endProgramCalls, 0);
        QCOMPARE(DatabaseName, QStringLiteral("/pot/do/Recepti.mdb"));
        QCOMPARE(TempFilename, QStringLiteral("/tmp/stran.html"));
    }

    void failingFileDialogEndsSilently_data() { browseStartsFromTheTextTyped_data(); }
    void failingFileDialogEndsSilently() {
        QFETCH(QString, button);
        QFETCH(QString, box);
        DatabaseName = QStringLiteral("/pot/do/Recepti.mdb");
        TempFilename = QStringLiteral("/tmp/stran.html");
        m_fileDialogFails = true;
        MessageRecorder messages;
        ShowDialog([&](frmSettings* dialog) {
            QLineEdit* edit = dialog->findChild<QLineEdit*>(box);
            const QString before = edit->text();
            QTest::mouseClick(dialog->findChild<QPushButton*>(button), Qt::LeftButton);
            QCOMPARE(m_fileRequests.size(), 1);
            QCOMPARE(edit->text(), before);
        });
        QVERIFY(messages.Messages().isEmpty());
        // cleanup() checks that nothing was logged.
    }

    void textBoxSelectsAllOnFocus_data() {
        QTest::addColumn<QString>("box");
        for (const char* name :
             {"txtServer", "txtDatabase", "txtUsername", "txtPassword", "txtTempFilename"}) {
            QTest::newRow(name) << QString::fromLatin1(name);
        }
    }
    void textBoxSelectsAllOnFocus() {
        QFETCH(QString, box);
        DatabaseType = 2;  // the server box is shown
        ShowDialog([&](frmSettings* dialog) {
            QVERIFY(QTest::qWaitForWindowActive(dialog));
            QLineEdit* edit = dialog->findChild<QLineEdit*>(box);
            QVERIFY(edit);
            QVERIFY(edit->isVisible());
            const QString text = QStringLiteral("Besedilo v polju");
            edit->setText(text);
            QPushButton* cmdOK = Button(dialog, "cmdOK");
            const auto everythingSelected = [&] {
                return edit->hasFocus() && edit->selectionStart() == 0 &&
                       edit->selectionLength() == text.size() &&
                       edit->cursorPosition() == text.size();
            };

            // By the mouse, clicked in the middle of the text.
            cmdOK->setFocus(Qt::OtherFocusReason);
            QTRY_VERIFY(cmdOK->hasFocus());
            edit->deselect();
            QTest::mouseClick(edit, Qt::LeftButton, {},
                              QPoint(edit->width() / 2, edit->height() / 2));
            QVERIFY(everythingSelected());

            // A second click into the box that has the focus places the cursor as usual.
            QTest::mouseClick(edit, Qt::LeftButton, {},
                              QPoint(edit->width() / 2, edit->height() / 2));
            QVERIFY(!edit->hasSelectedText());

            // From the program's code.
            cmdOK->setFocus(Qt::OtherFocusReason);
            QTRY_VERIFY(cmdOK->hasFocus());
            edit->deselect();
            edit->setFocus(Qt::OtherFocusReason);
            QVERIFY(everythingSelected());

            // By the keyboard, from the control before it.
            cmdOK->setFocus(Qt::OtherFocusReason);
            edit->deselect();
            QWidget* before = edit->previousInFocusChain();
            while (!before->isVisible() || !(before->focusPolicy() & Qt::TabFocus)) {
                before = before->previousInFocusChain();
            }
            before->setFocus(Qt::OtherFocusReason);
            QTRY_VERIFY(before->hasFocus());
            QTest::keyClick(before, Qt::Key_Tab);
            QTRY_VERIFY(edit->hasFocus());
            QVERIFY(everythingSelected());

            // An empty box: nothing to select, nothing fails.
            edit->clear();
            cmdOK->setFocus(Qt::OtherFocusReason);
            edit->setFocus(Qt::OtherFocusReason);
            QVERIFY(edit->hasFocus());
            QVERIFY(!edit->hasSelectedText());
        });
    }
};

QTEST_MAIN(TestSettings)
#include "tst_settings.moc"
