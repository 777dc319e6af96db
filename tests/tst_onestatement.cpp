// Every SQL text runs as one statement on both kinds: a text that holds a second statement
// (typed into a name, or into a search value) takes the error path and changes nothing. The
// server refuses it by its protocol; SQLite prepares the first statement and the rest is refused.
#include <QFile>
#include <QLineEdit>
#include <QProcess>
#include <QPushButton>
#include <QTest>

#include "core/AppError.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "core/registry/modRegistry.h"
#include "core/ui/UiServices.h"
#include "lists/frmAddRecord.h"
#include "tests/support/DialogDriver.h"
#include "tests/support/MessageRecorder.h"
#include "tests/support/TestDatabase.h"

using TestDatabase::Rows;

namespace {

const QString UnexpectedError = QStringLiteral(
    "Prišlo je do nepričakovane napake.\r\n\r\nOpis napake v datoteki errors.log sporočite "
    "avtorju.");
// Each library's refusal of a second statement.
QString Refused(const QString& kind) {
    return kind == TestDatabase::Postgres
               ? QStringLiteral(
                     "PostgreSQL->ERROR:  cannot insert multiple commands into a "
                     "prepared statement")
               : QStringLiteral(
                     "SQLite->Besedilo SQL vsebuje več kot en stavek; ni bilo "
                     "izvedeno.");
}

// Everything the small collection holds.
QStringList AllRows() {
    QStringList rows;
    for (const char* table : {"Group", "Type", "Source", "Unit", "Ingredient", "Recipe", "Section",
                              "RecipeSection", "SectionIngredient"}) {
        rows << QString::fromLatin1(table) + QLatin1Char(':');
        rows << Rows(QStringLiteral("SELECT * FROM [%1] ORDER BY 1;").arg(QLatin1String(table)));
    }
    return rows;
}

QString DriverOf(const QString& kind) {
    return kind == TestDatabase::Postgres ? QStringLiteral("PostgreSQL") : QStringLiteral("SQLite");
}

}  // namespace

class TestOneStatement : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { TestDatabase::IsolateEnvironment(); }
    void init() {
        DialogDriver::ForgetPendingDrivers();
        QFile::remove(QStringLiteral("errors.log"));
    }
    void cleanup() { modDatabase::Connection.reset(); }

    void secondStatementIsRefused_data() { TestDatabase::AddKinds(); }
    void secondStatementIsRefused() {
        const QString kind = TestDatabase::CurrentKind();
        TestDatabase::OpenFresh(kind);
        TestDatabase::LoadSmallCollection();
        const QStringList before = AllRows();
        try {
            modDatabase::GetRecordset(
                QStringLiteral("SELECT * FROM [Recipe] WHERE title = 'x'; DELETE FROM [Recipe];"));
            QFAIL("the text ran");
        } catch (const AppError& error) {
            QCOMPARE(error.Number(), AppError::PassedOn);
            QCOMPARE(error.Source(), QStringLiteral("modDatabase:GetRecordset"));
            QCOMPARE(error.Description(), Refused(kind));
        }
        try {
            modDatabase::Execute(QStringLiteral(
                "UPDATE [Recipe] SET title = 'a' WHERE recipeID = 1; DELETE FROM [Section];"));
            QFAIL("the text ran");
        } catch (const AppError& error) {
            QCOMPARE(error.Source(), QStringLiteral("modDatabase:Execute"));
            QCOMPARE(error.Description(), Refused(kind));
        }
        QCOMPARE(AllRows(), before);
    }

    // The record entry dialog's duplicate check puts the name into its statement as typed, and a
    // name that would end its literal is refused before anything runs.
    // A second statement, a call that would hold the dialog for half a minute per row, and a
    // name that would pass the duplicate check of an existing ingredient.
    void typedNameCannotAddAStatement_data() {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("name");
        for (const QString& kind : {TestDatabase::Sqlite, TestDatabase::Postgres}) {
            for (const char* name : {"x'; DELETE FROM [Recipe]; --", "x' OR pg_sleep(30) IS NULL--",
                                     "moka' AND name <> 'moka"}) {
                QTest::addRow("%s: %s", qPrintable(kind), name) << kind << QString::fromUtf8(name);
            }
        }
    }
    void typedNameCannotAddAStatement() {
        const QString kind = TestDatabase::CurrentKind();
        QFETCH(QString, name);
        TestDatabase::OpenFresh(kind);
        TestDatabase::LoadSmallCollection();
        const QStringList before = AllRows();
        MessageRecorder messages;
        modGeneral::lngLastID = 12345;
        frmAddRecord dialog;
        dialog.rtMode = 5;
        dialog.lngID = -1;
        const auto ran =
            DialogDriver::WhenShown(QStringLiteral("frmAddRecord"), [&](QDialog* shown) {
                DialogDriver::Control<QLineEdit>(shown, "txtName")->setText(name);
                QTest::mouseClick(DialogDriver::Button(shown, "cmdOK"), Qt::LeftButton);
                QVERIFY(shown->isVisible());
                QCOMPARE(messages.Texts(), QStringList{UnexpectedError});
                QCOMPARE(messages.Messages()[0].style, int(UiServices::vbExclamation));
                QTest::mouseClick(DialogDriver::Button(shown, "cmdCancel"), Qt::LeftButton);
            });
        QCOMPARE(dialog.exec(), int(QDialog::Rejected));
        QVERIFY(*ran);
        QCOMPARE(modGeneral::lngLastID, -1);
        QCOMPARE(
            DialogDriver::LoggedErrors(),
            QStringList{QStringLiteral("frmAddRecord:cmdOK_Click->modDatabase:GetRecordset->") +
                        DriverOf(kind) +
                        QStringLiteral("->Vneseno besedilo vsebuje apostrof, ki bi končal "
                                       "besedilo v poizvedbi; ni bilo izvedeno: ") +
                        name});
        QCOMPARE(AllRows(), before);
    }

    // morvena-tool search puts its values into the statement without their apostrophes.
    void searchValueCannotAddAStatement_data() { TestDatabase::AddKinds(); }
    void searchValueCannotAddAStatement() {
        const QString kind = TestDatabase::CurrentKind();
        TestDatabase::OpenFresh(kind);
        TestDatabase::LoadSmallCollection();
        const QStringList before = AllRows();
        // The tool reads the database from the settings (the same store as the program's).
        using namespace modRegistry;
        SetRegistryLong(ProgramKey, QStringLiteral("DatabaseType"), modGeneral::DatabaseType, true);
        SetRegistryString(ProgramKey, QStringLiteral("ServerName"), modGeneral::ServerName, true);
        SetRegistryString(ProgramKey, QStringLiteral("DatabaseName"), modGeneral::DatabaseName,
                          true);
        SetRegistryString(ProgramKey, QStringLiteral("Username"), modGeneral::Username, true);
        SetRegistryString(ProgramKey, QStringLiteral("Password"), modGeneral::Password, true);

        QProcess tool;
        tool.start(qEnvironmentVariable("MORVENA_TOOL"),
                   {QStringLiteral("search"), QStringLiteral("--RecipeTitle"),
                    QStringLiteral("x%')) ORDER BY [title]; DELETE FROM [Recipe]; --")});
        QVERIFY(tool.waitForFinished(60000));
        // Its apostrophes removed, as the search window removes them, the value is a title
        // that no recipe has.
        QCOMPARE(tool.exitCode(), 0);
        QCOMPARE(QString::fromUtf8(tool.readAllStandardOutput()), QString());
        QCOMPARE(QString::fromUtf8(tool.readAllStandardError()), QString());
        QCOMPARE(AllRows(), before);
    }
};

QTEST_MAIN(TestOneStatement)
#include "tst_onestatement.moc"
