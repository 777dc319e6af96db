// Every SQL text runs as one statement on both kinds: a text that holds a second statement
// (typed into a name, or into a search value) takes the error path and changes nothing. The
// reading of texts the way each database's lexer reads them: literals, quoted identifiers,
// comments and dollar quotes cannot hide a second statement.
#include <QFile>
#include <QLineEdit>
#include <QProcess>
#include <QPushButton>
#include <QTest>

#include "core/AppError.h"
#include "core/database/SingleStatement.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "core/registry/modRegistry.h"
#include "core/ui/UiServices.h"
#include "lists/frmAddRecord.h"
#include "tests/support/DialogDriver.h"
#include "tests/support/MessageRecorder.h"
#include "tests/support/TestDatabase.h"

using SingleStatement::IsSingle;
using SingleStatement::Lexer;
using TestDatabase::Rows;

namespace {

const QString UnexpectedError = QStringLiteral(
    "Prišlo je do nepričakovane napake.\r\n\r\nOpis napake v datoteki errors.log sporočite "
    "avtorju.");
const QString Refused = QStringLiteral("Besedilo SQL vsebuje več kot en stavek; ni bilo izvedeno.");

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
    return kind == TestDatabase::Postgres ? QStringLiteral("QPSQL") : QStringLiteral("QSQLITE");
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

    void textsAreReadAsTheDatabaseReadsThem_data() {
        QTest::addColumn<QString>("sql");
        QTest::addColumn<bool>("sqlite");
        QTest::addColumn<bool>("postgres");
        const auto row = [](const char* name, const char* sql, bool sqlite, bool postgres) {
            QTest::newRow(name) << QString::fromUtf8(sql) << sqlite << postgres;
        };
        row("one statement with its final semicolon", "SELECT * FROM t WHERE a = 1;", true, true);
        row("blanks after the end", "SELECT 1;  \r\n\t", true, true);
        row("a comment after the end", "SELECT 1; -- done\n/* and */", true, true);
        row("no semicolon", "SELECT 1", true, true);
        row("semicolon in a literal", "SELECT * FROM t WHERE a = 'x; DELETE FROM t';", true, true);
        row("doubled quote in a literal", "SELECT 'it''s; DELETE FROM t';", true, true);
        row("second statement", "SELECT 1; DELETE FROM t;", false, false);
        row("a typed name closes the literal",
            "SELECT * FROM [Unit]WHERE name = 'x'; DELETE FROM [Recipe]; --' AND unitID <> -1;",
            false, false);
        row("two semicolons", "SELECT 1;;", false, false);
        row("semicolon in a quoted identifier", "SELECT \"a;b\" FROM t;", true, true);
        row("semicolon in a line comment", "SELECT 1 -- ; DELETE FROM t\n;", true, true);
        row("line comment ended by CR", "SELECT 1 -- x\r; DELETE FROM t;", false, false);
        row("semicolon in a block comment", "SELECT /* ; DELETE FROM t; */ 1;", true, true);
        row("unterminated literal runs to the end", "SELECT 'x; DELETE FROM t;", true, true);
        // A backslash is an ordinary character in a standard literal: the quote after it ends
        // the literal, and what follows is a second statement.
        row("backslash before the closing quote", "SELECT '\\'; DELETE FROM t; --';", false, false);
        // E'...' takes backslash escapes on the server; SQLite reads E as a name, then a literal.
        row("escape literal", "SELECT E'\\'; DELETE FROM t; --';", false, true);
        row("escape literal after a name is not one", "SELECT xe'\\'; DELETE FROM t; --';", false,
            false);
        row("escape literal hides nothing once closed", "SELECT E'\\\\'; DELETE FROM t;", false,
            false);
        row("dollar quote", "SELECT $$; DELETE FROM t;$$;", false, true);
        row("tagged dollar quote", "SELECT $a$ $$; $b$ ; $a$;", false, true);
        row("dollar quote ended by its own tag", "SELECT $a$ x $a$; DELETE FROM t;", false, false);
        row("dollar in a name is no quote", "SELECT a$$b FROM t; DELETE FROM t; --$$;", false,
            false);
        row("parameter is no quote", "SELECT $1; DELETE FROM t; --$;", false, false);
        row("dollar quote after a number", "SELECT 1$$; DELETE$$;", false, true);
        row("nested block comment on the server", "SELECT /* /* */ ; DELETE FROM t; */ 1;", false,
            true);
        row("block comment closed on the server", "SELECT /* */ */ 1; DELETE FROM t;", false,
            false);
        row("brackets on SQLite", "SELECT [a;b] FROM t;", true, false);
        row("backquotes on SQLite", "SELECT `a;b` FROM t;", true, false);
        row("no-break space is text", "SELECT 1;\u00a0", false, false);
    }
    void textsAreReadAsTheDatabaseReadsThem() {
        QFETCH(QString, sql);
        QFETCH(bool, sqlite);
        QFETCH(bool, postgres);
        QCOMPARE(IsSingle(sql, Lexer::Sqlite), sqlite);
        QCOMPARE(IsSingle(sql, Lexer::PostgreSql), postgres);
    }

    // A server without standard conforming strings reads backslashes in every literal; a text
    // must be one statement in both readings.
    void bothReadingsOfBackslashesMustAgree() {
        QVERIFY(!IsSingle(QStringLiteral("SELECT 'a\\'; DELETE FROM t; --';"), Lexer::PostgreSql));
        QVERIFY(!IsSingle(QStringLiteral("SELECT 'a\\''; DELETE FROM t; --';"), Lexer::PostgreSql));
        QVERIFY(!IsSingle(QStringLiteral("SELECT B'1\\'; DELETE FROM t; --';"), Lexer::PostgreSql));
    }

    void secondStatementIsRefusedBeforeTheDatabase_data() { TestDatabase::AddKinds(); }
    void secondStatementIsRefusedBeforeTheDatabase() {
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
            QCOMPARE(error.Description(), DriverOf(kind) + QStringLiteral("->") + Refused);
        }
        try {
            modDatabase::Execute(QStringLiteral(
                "UPDATE [Recipe] SET title = 'a' WHERE recipeID = 1; DELETE FROM [Section];"));
            QFAIL("the text ran");
        } catch (const AppError& error) {
            QCOMPARE(error.Source(), QStringLiteral("modDatabase:Execute"));
            QCOMPARE(error.Description(), DriverOf(kind) + QStringLiteral("->") + Refused);
        }
        QCOMPARE(AllRows(), before);
    }

    // The record entry dialog's duplicate check puts the name into its statement as typed, and a
    // name that would end its literal is refused before anything runs.
    void typedNameCannotAddAStatement_data() { TestDatabase::AddKinds(); }
    void typedNameCannotAddAStatement() {
        const QString kind = TestDatabase::CurrentKind();
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
                DialogDriver::Control<QLineEdit>(shown, "txtName")
                    ->setText(QStringLiteral("x'; DELETE FROM [Recipe]; --"));
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
                                       "besedilo v poizvedbi; ni bilo izvedeno: x'; DELETE FROM "
                                       "[Recipe]; --")});
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
