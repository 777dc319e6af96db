// The record entry dialog on the real widgets: captions of the five kinds, the controls, the tab
// order, loading a record, the empty and the duplicate name, subgroups of different groups, the
// exact duplicate statement, a name with an apostrophe on the error path, the description as
// NULL and with line breaks, lngLastID after "Potrdi", "Prekliči", the close box and Escape, and
// the keys Enter, Ctrl+Enter and Escape.
#include <sqlite3.h>

#include <QApplication>
#include <QDeadlineTimer>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QTest>
#include <QTimer>
#include <functional>
#include <memory>

#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "core/ui/UiServices.h"
#include "lists/frmAddRecord.h"
#include "tests/support/DialogDriver.h"
#include "tests/support/MessageRecorder.h"
#include "tests/support/TestDatabase.h"

using TestDatabase::Rows;
using namespace DialogDriver;

namespace {

const QString Title = QStringLiteral("Morvena");
constexpr int InformationOK = UiServices::vbOKOnly + UiServices::vbInformation;
constexpr int Exclamation = UiServices::vbExclamation;
const QString UnexpectedError = QStringLiteral(
    "Prišlo je do nepričakovane napake.\r\n\r\nOpis napake v datoteki errors.log sporočite "
    "avtorju.");
const QString EnterName = QStringLiteral("Vnesite naziv!");
const QString NameExists = QStringLiteral("Naziv že obstaja!");

QLineEdit* NameBox(QWidget* dialog) { return Control<QLineEdit>(dialog, "txtName"); }
QPlainTextEdit* DescriptionBox(QWidget* dialog) {
    return Control<QPlainTextEdit>(dialog, "txtDescription");
}

const QString IngredientsQuery = QStringLiteral(
    "SELECT ingredientID, name, description FROM [Ingredient] ORDER BY "
    "ingredientID;");
const QStringList Ingredients{"1|moka|NULL", "2|korenje|NULL", "3|krompir|NULL", "4|Čokolada|NULL"};
const QString TypesQuery =
    QStringLiteral("SELECT typeID, groupID, name, description FROM [Type] ORDER BY typeID;");
const QStringList Types{"1|1|Mesne juhe|NULL", "2|1|Zelenjavne juhe|NULL", "3|2|Pecivo|NULL"};

// The rows of every lookup table.
QStringList AllLookupRows() {
    QStringList rows;
    for (const char* table : {"Group", "Type", "Source", "Unit", "Ingredient"}) {
        rows << QString::fromLatin1(table) + QLatin1Char(':');
        rows << Rows(QStringLiteral("SELECT * FROM [%1] ORDER BY 1;").arg(QLatin1String(table)));
    }
    return rows;
}

}  // namespace

class TestAddRecord : public QObject {
    Q_OBJECT

private:
    static void OpenCollection(const QString& kind) {
        TestDatabase::OpenFresh(kind);
        TestDatabase::LoadSmallCollection();
    }

    // Shows the dialog modally as its callers do and runs `drive` on it; returns exec()'s result.
    static int ShowEntry(frmAddRecord& dialog, const std::function<void(QDialog*)>& drive) {
        const auto ran = WhenShown(QStringLiteral("frmAddRecord"), [&](QDialog* shown) {
            if (shown != &dialog) {
                QTest::qFail("the entry dialog is not the active modal window", __FILE__, __LINE__);
                return;
            }
            drive(shown);
        });
        const int result = dialog.exec();
        if (!*ran) {
            QTest::qFail("the entry dialog closed before the test could drive it", __FILE__,
                         __LINE__);
        }
        return result;
    }
    static int ShowEntry(qint32 mode, qint32 id, const std::function<void(QDialog*)>& drive,
                         qint32 groupID = 0) {
        frmAddRecord dialog;
        dialog.rtMode = mode;
        dialog.lngID = id;
        dialog.lngGroupID = groupID;
        return ShowEntry(dialog, drive);
    }

    // Types a name and presses "Potrdi".
    static void Confirm(QDialog* dialog, const QString& name) {
        NameBox(dialog)->setText(name);
        QTest::mouseClick(Button(dialog, "cmdOK"), Qt::LeftButton);
    }

private Q_SLOTS:
    void initTestCase() {
        QVERIFY(DialogDriver::StartSqliteLog());
        TestDatabase::IsolateEnvironment();
    }

    void init() {
        DialogDriver::ForgetPendingDrivers();
        QFile::remove(QStringLiteral("errors.log"));
        UiServices::SetMousePointer(UiServices::vbDefault);
        modGeneral::lngLastID = 12345;
        DialogDriver::SqliteLog().clear();
    }

    void cleanup() {
        DialogDriver::ForgetPendingDrivers();
        modDatabase::Connection.reset();
        QFile::remove(QStringLiteral("errors.log"));
    }

    void captionsAndControlsOfTheKinds_data() {
        QTest::addColumn<int>("mode");
        QTest::addColumn<QString>("caption");
        QTest::newRow("1 group") << 1 << "Vnos skupine receptov";
        QTest::newRow("2 subgroup") << 2 << "Vnos podskupine receptov";
        QTest::newRow("3 source") << 3 << "Vnos vira receptov";
        QTest::newRow("4 unit") << 4 << "Vnos merske enote";
        QTest::newRow("5 ingredient") << 5 << "Vnos sestavine";
        QTest::newRow("0 none") << 0 << "";
        QTest::newRow("6 none") << 6 << "";
    }
    void captionsAndControlsOfTheKinds() {
        QFETCH(int, mode);
        QFETCH(QString, caption);
        MessageRecorder messages;
        UiServices::SetMousePointer(UiServices::vbHourglass);  // as the callers leave it
        const int result = ShowEntry(mode, -1, [&](QDialog* dialog) {
            QVERIFY(dialog->isModal());
            QCOMPARE(dialog->windowTitle(), caption);
            QCOMPARE(Control<QLabel>(dialog, "lblName")->text(), QStringLiteral("Naziv:"));
            QCOMPARE(Control<QLabel>(dialog, "lblDescription")->text(), QStringLiteral("Opis:"));
            QCOMPARE(Button(dialog, "cmdOK")->text(), QStringLiteral("Potrdi"));
            QCOMPARE(Button(dialog, "cmdCancel")->text(), QStringLiteral("Prekliči"));
            QVERIFY(Button(dialog, "cmdOK")->isDefault());
            QVERIFY(!Button(dialog, "cmdCancel")->isDefault());
            QCOMPARE(NameBox(dialog)->maxLength(), 50);
            QCOMPARE(NameBox(dialog)->text(), QString());
            QCOMPARE(DescriptionBox(dialog)->toPlainText(), QString());
            QCOMPARE(DescriptionBox(dialog)->verticalScrollBarPolicy(), Qt::ScrollBarAlwaysOn);
            QCOMPARE(DescriptionBox(dialog)->lineWrapMode(), QPlainTextEdit::WidgetWidth);
            QCOMPARE(UiServices::MousePointer(), int(UiServices::vbDefault));
            QCOMPARE(dialog->focusWidget(), NameBox(dialog));
            QTest::mouseClick(Button(dialog, "cmdCancel"), Qt::LeftButton);
        });
        QCOMPARE(result, int(QDialog::Rejected));
        QCOMPARE(modGeneral::lngLastID, -1);
        QVERIFY(messages.Messages().isEmpty());
        QVERIFY(LoggedErrors().isEmpty());
    }

    void nameIsLimitedTo50Characters_data() { TestDatabase::AddKinds(); }
    void nameIsLimitedTo50Characters() {
        QFETCH(QString, kind);
        OpenCollection(kind);
        const QString fifty = QStringLiteral("Čžš").repeated(16) + QStringLiteral("ab");
        QCOMPARE(fifty.size(), 50);
        MessageRecorder messages;
        const int result = ShowEntry(5, -1, [&](QDialog* dialog) {
            QLineEdit* txtName = NameBox(dialog);
            QTest::keyClicks(txtName, QStringLiteral("a").repeated(55));
            QCOMPARE(txtName->text(), QStringLiteral("a").repeated(50));
            txtName->setText(fifty + QStringLiteral("cdefg"));
            QCOMPARE(txtName->text(), fifty);
            // The description has no limit.
            DescriptionBox(dialog)->setPlainText(QStringLiteral("d").repeated(5000));
            QTest::mouseClick(Button(dialog, "cmdOK"), Qt::LeftButton);
        });
        QCOMPARE(result, int(QDialog::Accepted));
        QCOMPARE(modGeneral::lngLastID, 5);
        QCOMPARE(Rows(IngredientsQuery),
                 Ingredients + QStringList{QStringLiteral("5|%1|%2").arg(
                                   fifty, QStringLiteral("d").repeated(5000))});
        QVERIFY(messages.Messages().isEmpty());
    }

    void tabOrder() {
        ShowEntry(3, -1, [&](QDialog* dialog) {
            QVERIFY(QTest::qWaitForWindowActive(dialog));
            QLineEdit* txtName = NameBox(dialog);
            QPlainTextEdit* txtDescription = DescriptionBox(dialog);
            QPushButton* cmdOK = Button(dialog, "cmdOK");
            QPushButton* cmdCancel = Button(dialog, "cmdCancel");
            QTRY_VERIFY(txtName->hasFocus());
            const QList<QWidget*> order{txtDescription, cmdOK, cmdCancel, txtName};
            for (QWidget* next : order) {
                QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
                QTRY_COMPARE(QApplication::focusWidget(), next);
            }
            for (auto it = order.rbegin() + 1; it != order.rend(); ++it) {
                QTest::keyClick(QApplication::focusWidget(), Qt::Key_Backtab, Qt::ShiftModifier);
                QTRY_COMPARE(QApplication::focusWidget(), *it);
            }
            QCOMPARE(txtDescription->toPlainText(), QString());  // Tab wrote nothing
        });
    }

    void textBoxesSelectAllOnFocus() {
        ShowEntry(3, -1, [&](QDialog* dialog) {
            QVERIFY(QTest::qWaitForWindowActive(dialog));
            QLineEdit* txtName = NameBox(dialog);
            QPlainTextEdit* txtDescription = DescriptionBox(dialog);
            txtName->setText(QStringLiteral("Knjiga receptov"));
            txtDescription->setPlainText(QStringLiteral("prva\ndruga"));
            QTRY_VERIFY(txtName->hasFocus());
            txtName->deselect();
            QTest::keyClick(txtName, Qt::Key_Tab);
            QTRY_VERIFY(txtDescription->hasFocus());
            QCOMPARE(txtDescription->textCursor().selectedText(),
                     QStringLiteral("prva") + QChar(QChar::ParagraphSeparator) +
                         QStringLiteral("druga"));
            QTest::mouseClick(txtName, Qt::LeftButton, {},
                              QPoint(txtName->width() / 2, txtName->height() / 2));
            QTRY_VERIFY(txtName->hasFocus());
            QCOMPARE(txtName->selectedText(), QStringLiteral("Knjiga receptov"));
            QTest::mouseClick(txtDescription->viewport(), Qt::LeftButton, {}, QPoint(5, 5));
            QTRY_VERIFY(txtDescription->hasFocus());
            QVERIFY(txtDescription->textCursor().hasSelection());
            QCOMPARE(txtDescription->textCursor().selectedText().size(), 10);
        });
        QVERIFY(LoggedErrors().isEmpty());
    }

    void loadsAnExistingRecord_data() {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<int>("mode");
        QTest::addColumn<int>("id");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("description");
        for (const QString& kind : {TestDatabase::Sqlite, TestDatabase::Postgres}) {
            QTest::addRow("%s group", qPrintable(kind)) << kind << 1 << 1 << "Juhe"
                                                        << "Tople juhe\nin enolončnice";
            QTest::addRow("%s subgroup", qPrintable(kind)) << kind << 2 << 2 << "Zelenjavne juhe"
                                                           << "";
            QTest::addRow("%s source", qPrintable(kind)) << kind << 3 << 1 << "Babičina kuharica"
                                                         << "";
            QTest::addRow("%s unit", qPrintable(kind)) << kind << 4 << 2 << "žlica"
                                                       << "";
            QTest::addRow("%s ingredient", qPrintable(kind)) << kind << 5 << 4 << "Čokolada"
                                                             << "";
        }
    }
    void loadsAnExistingRecord() {
        QFETCH(QString, kind);
        QFETCH(int, mode);
        QFETCH(int, id);
        QFETCH(QString, name);
        QFETCH(QString, description);
        OpenCollection(kind);
        TestDatabase::Exec(
            QStringLiteral("UPDATE [Unit] SET description = 'za juho' WHERE unitID = 1;"));
        const QStringList before = AllLookupRows();
        MessageRecorder messages;
        // One dialog shown twice: first with a record that has a description.
        frmAddRecord dialog;
        dialog.rtMode = 4;
        dialog.lngID = 1;
        ShowEntry(dialog, [&](QDialog* shown) {
            QCOMPARE(NameBox(shown)->text(), QStringLiteral("g"));
            QCOMPARE(DescriptionBox(shown)->toPlainText(), QStringLiteral("za juho"));
        });
        dialog.rtMode = mode;
        dialog.lngID = id;
        UiServices::SetMousePointer(UiServices::vbHourglass);
        const int result = ShowEntry(dialog, [&](QDialog* shown) {
            QCOMPARE(NameBox(shown)->text(), name);
            QCOMPARE(DescriptionBox(shown)->toPlainText(), description);
            QCOMPARE(UiServices::MousePointer(), int(UiServices::vbDefault));
            QTest::mouseClick(Button(shown, "cmdCancel"), Qt::LeftButton);
        });
        QCOMPARE(result, int(QDialog::Rejected));
        QCOMPARE(modGeneral::lngLastID, -1);
        QCOMPARE(AllLookupRows(), before);
        QVERIFY(messages.Messages().isEmpty());
        QVERIFY(LoggedErrors().isEmpty());
    }

    void loadingAMissingRecordTakesTheErrorPath_data() { TestDatabase::AddKinds(); }
    void loadingAMissingRecordTakesTheErrorPath() {
        QFETCH(QString, kind);
        OpenCollection(kind);
        MessageRecorder messages;
        ShowEntry(3, 99, [&](QDialog* dialog) {
            QCOMPARE(dialog->windowTitle(), QStringLiteral("Vnos vira receptov"));
            QCOMPARE(NameBox(dialog)->text(), QString());
        });
        QCOMPARE(messages.Texts(), QStringList{UnexpectedError});
        QCOMPARE(messages.Messages()[0].style, Exclamation);
        QCOMPARE(messages.Messages()[0].title, Title);
        QCOMPARE(LoggedErrors(),
                 QStringList{"frmAddRecord:Form_Load->Morvena->No current record."});
    }

    void emptyNameIsRefused_data() {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("name");
        for (const QString& kind : {TestDatabase::Sqlite, TestDatabase::Postgres}) {
            QTest::addRow("%s empty", qPrintable(kind)) << kind << "";
            QTest::addRow("%s blanks", qPrintable(kind)) << kind << "    ";
        }
    }
    void emptyNameIsRefused() {
        QFETCH(QString, kind);
        QFETCH(QString, name);
        OpenCollection(kind);
        const QStringList before = AllLookupRows();
        MessageRecorder messages;
        SqliteStatements statements;
        const int result = ShowEntry(3, -1, [&](QDialog* dialog) {
            NameBox(dialog)->setText(name);
            DescriptionBox(dialog)->setPlainText(QStringLiteral("opis"));
            QTest::mouseClick(Button(dialog, "cmdOK"), Qt::LeftButton);
            QVERIFY(dialog->isVisible());
            QCOMPARE(messages.Messages().size(), 1);
            QCOMPARE(messages.Messages()[0].text, EnterName);
            QCOMPARE(messages.Messages()[0].style, InformationOK);
            QCOMPARE(messages.Messages()[0].title, Title);
            // The input stays as typed; the pointer is normal again.
            QCOMPARE(NameBox(dialog)->text(), name);
            QCOMPARE(DescriptionBox(dialog)->toPlainText(), QStringLiteral("opis"));
            QCOMPARE(dialog->cursor().shape(), Qt::ArrowCursor);
            // Enter gives the same answer.
            QTest::keyClick(NameBox(dialog), Qt::Key_Return);
            QVERIFY(dialog->isVisible());
            QCOMPARE(messages.Texts(), (QStringList{EnterName, EnterName}));
            QTest::mouseClick(Button(dialog, "cmdCancel"), Qt::LeftButton);
        });
        QCOMPARE(result, int(QDialog::Rejected));
        if (statements.Active()) {
            QCOMPARE(statements.TakeSelects(), QStringList());  // no duplicate check
        }
        QCOMPARE(modGeneral::lngLastID, -1);
        QCOMPARE(AllLookupRows(), before);
        QVERIFY(LoggedErrors().isEmpty());
    }

    void duplicateNameIsRefused_data() {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<int>("mode");
        QTest::addColumn<int>("id");
        QTest::addColumn<int>("groupID");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("statement");
        for (const QString& kind : {TestDatabase::Sqlite, TestDatabase::Postgres}) {
            const QByteArray kindName = kind.toUtf8();
            const char* k = kindName.constData();
            QTest::addRow("%s Moka", k)
                << kind << 5 << -1 << 0 << "Moka"
                << "SELECT * FROM [Ingredient]WHERE name = 'Moka' AND ingredientID <> -1;";
            QTest::addRow("%s čokolada", k)
                << kind << 5 << -1 << 0 << "čokolada"
                << "SELECT * FROM [Ingredient]WHERE name = 'čokolada' AND ingredientID <> -1;";
            QTest::addRow("%s ČOKOLADA with blanks", k)
                << kind << 5 << -1 << 0 << "  ČOKOLADA "
                << "SELECT * FROM [Ingredient]WHERE name = 'ČOKOLADA' AND ingredientID <> -1;";
            QTest::addRow("%s renamed to another's name", k)
                << kind << 5 << 2 << 0 << "KROMPIR"
                << "SELECT * FROM [Ingredient]WHERE name = 'KROMPIR' AND ingredientID <> 2;";
            QTest::addRow("%s group", k) << kind << 1 << -1 << 0 << "juhe"
                                         << "SELECT * FROM [Group]WHERE name = 'juhe' AND "
                                            "groupID <> -1;";
            QTest::addRow("%s subgroup of the same group", k)
                << kind << 2 << -1 << 1 << "mesne JUHE"
                << "SELECT * FROM [Type]WHERE name = 'mesne JUHE' AND typeID <> -1 AND groupID "
                   "= 1;";
            QTest::addRow("%s source", k) << kind << 3 << -1 << 0 << "KNJIGA"
                                          << "SELECT * FROM [Source]WHERE name = 'KNJIGA' AND "
                                             "sourceID <> -1;";
            QTest::addRow("%s unit", k) << kind << 4 << -1 << 0 << "Žlica"
                                        << "SELECT * FROM [Unit]WHERE name = 'Žlica' AND unitID "
                                           "<> -1;";
        }
    }
    void duplicateNameIsRefused() {
        QFETCH(QString, kind);
        QFETCH(int, mode);
        QFETCH(int, id);
        QFETCH(int, groupID);
        QFETCH(QString, name);
        QFETCH(QString, statement);
        OpenCollection(kind);
        const QStringList before = AllLookupRows();
        MessageRecorder messages;
        SqliteStatements statements;
        const int result = ShowEntry(
            mode, id,
            [&](QDialog* dialog) {
                statements.TakeSelects();
                DescriptionBox(dialog)->setPlainText(QStringLiteral("nov opis"));
                Confirm(dialog, name);
                QVERIFY(dialog->isVisible());
                QCOMPARE(messages.Texts(), QStringList{NameExists});
                QCOMPARE(messages.Messages()[0].style, InformationOK);
                QCOMPARE(messages.Messages()[0].title, Title);
                QCOMPARE(NameBox(dialog)->text(), name);
                QCOMPARE(DescriptionBox(dialog)->toPlainText(), QStringLiteral("nov opis"));
                QCOMPARE(dialog->cursor().shape(), Qt::ArrowCursor);
                if (statements.Active()) {
                    QCOMPARE(statements.TakeSelects(), QStringList{statement});
                }
                QTest::mouseClick(Button(dialog, "cmdCancel"), Qt::LeftButton);
            },
            groupID);
        QCOMPARE(result, int(QDialog::Rejected));
        QCOMPARE(modGeneral::lngLastID, -1);
        QCOMPARE(AllLookupRows(), before);
        QVERIFY(LoggedErrors().isEmpty());
    }

    void editingWithoutChangingTheNamePasses_data() {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<int>("mode");
        QTest::addColumn<int>("id");
        QTest::addColumn<int>("groupID");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("query");
        QTest::addColumn<QString>("row");
        for (const QString& kind : {TestDatabase::Sqlite, TestDatabase::Postgres}) {
            const QByteArray kindName = kind.toUtf8();
            const char* k = kindName.constData();
            QTest::addRow("%s group", k) << kind << 1 << 1 << 0 << "Juhe"
                                         << "SELECT * FROM [Group] WHERE groupID = 1;"
                                         << "1|Juhe|nov opis";
            QTest::addRow("%s subgroup", k) << kind << 2 << 3 << 2 << "Pecivo"
                                            << "SELECT * FROM [Type] WHERE typeID = 3;"
                                            << "3|2|Pecivo|nov opis";
            QTest::addRow("%s source", k) << kind << 3 << 2 << 0 << "Knjiga"
                                          << "SELECT * FROM [Source] WHERE sourceID = 2;"
                                          << "2|Knjiga|nov opis";
            QTest::addRow("%s unit", k) << kind << 4 << 2 << 0 << "žlica"
                                        << "SELECT * FROM [Unit] WHERE unitID = 2;"
                                        << "2|žlica|nov opis";
            QTest::addRow("%s ingredient, only the case changed", k)
                << kind << 5 << 4 << 0 << "čokolada"
                << "SELECT * FROM [Ingredient] WHERE ingredientID = 4;"
                << "4|čokolada|nov opis";
        }
    }
    void editingWithoutChangingTheNamePasses() {
        QFETCH(QString, kind);
        QFETCH(int, mode);
        QFETCH(int, id);
        QFETCH(int, groupID);
        QFETCH(QString, name);
        QFETCH(QString, query);
        QFETCH(QString, row);
        OpenCollection(kind);
        MessageRecorder messages;
        const int result = ShowEntry(
            mode, id,
            [&](QDialog* dialog) {
                DescriptionBox(dialog)->setPlainText(QStringLiteral("nov opis"));
                Confirm(dialog, name);
                QVERIFY(!dialog->isVisible());
            },
            groupID);
        QCOMPARE(result, int(QDialog::Accepted));
        QCOMPARE(modGeneral::lngLastID, id);
        QCOMPARE(Rows(query), QStringList{row});
        QVERIFY(messages.Messages().isEmpty());
        QVERIFY(LoggedErrors().isEmpty());
    }

    void subgroupsOfDifferentGroupsMayShareAName_data() { TestDatabase::AddKinds(); }
    void subgroupsOfDifferentGroupsMayShareAName() {
        QFETCH(QString, kind);
        OpenCollection(kind);
        MessageRecorder messages;
        SqliteStatements statements;
        // Pecivo (of group 2) again, in group 1.
        int result = ShowEntry(
            2, -1, [&](QDialog* dialog) { Confirm(dialog, QStringLiteral("Pecivo")); }, 1);
        QCOMPARE(result, int(QDialog::Accepted));
        QCOMPARE(modGeneral::lngLastID, 4);
        if (statements.Active()) {
            QCOMPARE(statements.TakeSelects(),
                     (QStringList{"SELECT * FROM [Type]WHERE name = 'Pecivo' AND typeID <> -1 AND "
                                  "groupID = 1;",
                                  "SELECT * FROM [Type] WHERE typeID = -1"}));
        }
        // Zelenjavne juhe (of group 1) in group 2, typed in another case.
        result = ShowEntry(
            2, -1, [&](QDialog* dialog) { Confirm(dialog, QStringLiteral("zelenjavne JUHE")); }, 2);
        QCOMPARE(result, int(QDialog::Accepted));
        QCOMPARE(modGeneral::lngLastID, 5);
        // A second Pecivo in group 2 is refused.
        result = ShowEntry(
            2, -1,
            [&](QDialog* dialog) {
                Confirm(dialog, QStringLiteral("PECIVO"));
                QVERIFY(dialog->isVisible());
                QTest::mouseClick(Button(dialog, "cmdCancel"), Qt::LeftButton);
            },
            2);
        QCOMPARE(result, int(QDialog::Rejected));
        QCOMPARE(messages.Texts(), QStringList{NameExists});
        QCOMPARE(Rows(TypesQuery),
                 (Types + QStringList{"4|1|Pecivo|NULL", "5|2|zelenjavne JUHE|NULL"}));
        QVERIFY(LoggedErrors().isEmpty());
    }

    void subgroupStatementNamesItsGroup_data() { TestDatabase::AddKinds(); }
    void subgroupStatementNamesItsGroup() {
        QFETCH(QString, kind);
        OpenCollection(kind);
        QCOMPARE(TestDatabase::Insert("Group", {{"name", "Kruh"}}), 3);
        for (const char* name : {"Beli kruh", "Črni kruh", "Pogače", "Žemlje"}) {
            TestDatabase::Insert("Type", {{"groupID", 3}, {"name", name}});
        }
        MessageRecorder messages;
        SqliteStatements statements;
        // Subgroup 7 of group 3, saved into group 3 under a new name.
        const int result = ShowEntry(
            2, 7,
            [&](QDialog* dialog) {
                QCOMPARE(NameBox(dialog)->text(), QStringLiteral("Žemlje"));
                statements.TakeSelects();
                Confirm(dialog, QStringLiteral("Žemljice"));
            },
            3);
        QCOMPARE(result, int(QDialog::Accepted));
        QCOMPARE(modGeneral::lngLastID, 7);
        if (statements.Active()) {
            QCOMPARE(statements.TakeSelects(),
                     (QStringList{"SELECT * FROM [Type]WHERE name = 'Žemljice' AND typeID <> 7 "
                                  "AND groupID = 3;",
                                  "SELECT * FROM [Type] WHERE typeID = 7"}));
        }
        QCOMPARE(Rows(QStringLiteral("SELECT * FROM [Type] WHERE typeID = 7;")),
                 QStringList{"7|3|Žemljice|NULL"});
        // Saved from another group's context, the subgroup moves to that group.
        ShowEntry(
            2, 7, [&](QDialog* dialog) { Confirm(dialog, QStringLiteral("Žemljice")); }, 2);
        QCOMPARE(Rows(QStringLiteral("SELECT * FROM [Type] WHERE typeID = 7;")),
                 QStringList{"7|2|Žemljice|NULL"});
        QVERIFY(messages.Messages().isEmpty());
    }

    void apostropheInTheNameTakesTheErrorPath_data() {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<int>("id");
        for (const QString& kind : {TestDatabase::Sqlite, TestDatabase::Postgres}) {
            QTest::addRow("%s new", qPrintable(kind)) << kind << -1;
            QTest::addRow("%s edited", qPrintable(kind)) << kind << 2;
        }
    }
    // A name that would end its literal (a condition typed into it, a second statement) takes the
    // error path: nothing is run, nothing saved.
    void apostropheInTheNameTakesTheErrorPath() {
        QFETCH(QString, kind);
        QFETCH(int, id);
        OpenCollection(kind);
        const QStringList before = AllLookupRows();
        MessageRecorder messages;
        const QString statement =
            QStringLiteral("SELECT * FROM [Unit]WHERE name = 'a'b' AND unitID <> %1;").arg(id);
        const int result = ShowEntry(4, id, [&](QDialog* dialog) {
            Confirm(dialog, QStringLiteral("a'b"));
            QVERIFY(dialog->isVisible());
            QCOMPARE(messages.Texts(), QStringList{UnexpectedError});
            QCOMPARE(messages.Messages()[0].style, Exclamation);
            QCOMPARE(messages.Messages()[0].title, Title);
            QCOMPARE(NameBox(dialog)->text(), QStringLiteral("a'b"));
            QCOMPARE(dialog->cursor().shape(), Qt::ArrowCursor);
            QTest::mouseClick(Button(dialog, "cmdCancel"), Qt::LeftButton);
        });
        QCOMPARE(result, int(QDialog::Rejected));
        QCOMPARE(modGeneral::lngLastID, -1);
        const QStringList logged = LoggedErrors();
        QCOMPARE(logged.size(), 1);
        QVERIFY2(logged[0].startsWith(
                     QStringLiteral("frmAddRecord:cmdOK_Click->modDatabase:GetRecordset->")),
                 qPrintable(logged[0]));
        // The name stays text: the statement that it would end is never run.
        QCOMPARE(logged[0], QStringLiteral("frmAddRecord:cmdOK_Click->modDatabase:GetRecordset->") +
                                (kind == TestDatabase::Postgres ? QStringLiteral("PostgreSQL")
                                                                : QStringLiteral("SQLite")) +
                                QStringLiteral("->Vneseno besedilo vsebuje apostrof, ki bi "
                                               "končal besedilo v poizvedbi; ni bilo izvedeno: "
                                               "a'b"));
        QVERIFY(DialogDriver::SqliteLog().filter(statement).isEmpty());
        QCOMPARE(AllLookupRows(), before);
    }

    void descriptionIsTrimmedAndBlanksAreNull_data() {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("description");
        QTest::addColumn<QString>("row");
        for (const QString& kind : {TestDatabase::Sqlite, TestDatabase::Postgres}) {
            const QByteArray kindName = kind.toUtf8();
            const char* k = kindName.constData();
            QTest::addRow("%s blanks", k) << kind << "Sol"
                                          << "     "
                                          << "5|Sol|NULL";
            QTest::addRow("%s empty", k) << kind << "Sol"
                                         << ""
                                         << "5|Sol|NULL";
            QTest::addRow("%s trimmed", k) << kind << "   Morska sol  "
                                           << "  fina  "
                                           << "5|Morska sol|fina";
        }
    }
    void descriptionIsTrimmedAndBlanksAreNull() {
        QFETCH(QString, kind);
        QFETCH(QString, name);
        QFETCH(QString, description);
        QFETCH(QString, row);
        OpenCollection(kind);
        MessageRecorder messages;
        ShowEntry(5, -1, [&](QDialog* dialog) {
            DescriptionBox(dialog)->setPlainText(description);
            Confirm(dialog, name);
        });
        QCOMPARE(modGeneral::lngLastID, 5);
        QCOMPARE(Rows(IngredientsQuery), (Ingredients + QStringList{row}));
        // Editing a description away stores NULL again.
        TestDatabase::Exec(QStringLiteral(
            "UPDATE [Ingredient] SET description = 'stari' WHERE ingredientID = 2;"));
        ShowEntry(5, 2, [&](QDialog* dialog) {
            QCOMPARE(DescriptionBox(dialog)->toPlainText(), QStringLiteral("stari"));
            DescriptionBox(dialog)->setPlainText(QStringLiteral("  "));
            QTest::mouseClick(Button(dialog, "cmdOK"), Qt::LeftButton);
        });
        QCOMPARE(Rows(QStringLiteral("SELECT * FROM [Ingredient] WHERE ingredientID = 2;")),
                 QStringList{"2|korenje|NULL"});
        QVERIFY(messages.Messages().isEmpty());
    }

    void descriptionLinesAreStoredWithCrLf_data() { TestDatabase::AddKinds(); }
    void descriptionLinesAreStoredWithCrLf() {
        QFETCH(QString, kind);
        OpenCollection(kind);
        MessageRecorder messages;
        const int result = ShowEntry(3, -1, [&](QDialog* dialog) {
            NameBox(dialog)->setText(QStringLiteral("Zvezek"));
            QPlainTextEdit* txtDescription = DescriptionBox(dialog);
            txtDescription->setFocus();
            QTest::keyClicks(txtDescription, QStringLiteral("prva vrstica"));
            QTest::keyClick(txtDescription, Qt::Key_Return, Qt::ControlModifier);
            QVERIFY(dialog->isVisible());
            QTest::keyClicks(txtDescription, QStringLiteral("druga"));
            QTest::keyClick(txtDescription, Qt::Key_Enter,
                            Qt::ControlModifier | Qt::KeypadModifier);
            QTest::keyClicks(txtDescription, QStringLiteral("tretja"));
            QCOMPARE(txtDescription->toPlainText(), QStringLiteral("prva vrstica\ndruga\ntretja"));
            QVERIFY(dialog->isVisible());
            // Enter in the description box presses "Potrdi".
            QTest::keyClick(txtDescription, Qt::Key_Return);
            QVERIFY(!dialog->isVisible());
        });
        QCOMPARE(result, int(QDialog::Accepted));
        QCOMPARE(modGeneral::lngLastID, 3);
        QCOMPARE(Rows(QStringLiteral("SELECT * FROM [Source] WHERE sourceID = 3;")),
                 QStringList{"3|Zvezek|prva vrstica\r\ndruga\r\ntretja"});
        // Loaded again, the lines show as lines.
        ShowEntry(3, 3, [&](QDialog* dialog) {
            QCOMPARE(DescriptionBox(dialog)->toPlainText(),
                     QStringLiteral("prva vrstica\ndruga\ntretja"));
            QCOMPARE(DescriptionBox(dialog)->blockCount(), 3);
        });
        QVERIFY(messages.Messages().isEmpty());
    }

    void enterPressesPotrdi_data() { TestDatabase::AddKinds(); }
    void enterPressesPotrdi() {
        QFETCH(QString, kind);
        OpenCollection(kind);
        MessageRecorder messages;
        int result = ShowEntry(4, -1, [&](QDialog* dialog) {
            QTest::keyClicks(NameBox(dialog), QStringLiteral("dl"));
            QTest::keyClick(NameBox(dialog), Qt::Key_Return);
            QVERIFY(!dialog->isVisible());
        });
        QCOMPARE(result, int(QDialog::Accepted));
        QCOMPARE(modGeneral::lngLastID, 3);
        result = ShowEntry(4, -1, [&](QDialog* dialog) {
            QTest::keyClicks(NameBox(dialog), QStringLiteral("ml"));
            QTest::keyClick(NameBox(dialog), Qt::Key_Enter, Qt::KeypadModifier);
            QVERIFY(!dialog->isVisible());
        });
        QCOMPARE(result, int(QDialog::Accepted));
        QCOMPARE(modGeneral::lngLastID, 4);
        QCOMPARE(Rows(QStringLiteral("SELECT * FROM [Unit] ORDER BY unitID;")),
                 (QStringList{"1|g|NULL", "2|žlica|NULL", "3|dl|NULL", "4|ml|NULL"}));
        QVERIFY(messages.Messages().isEmpty());
    }

    void lngLastIDAfterPotrdiAndCancel_data() {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("how");
        for (const QString& kind : {TestDatabase::Sqlite, TestDatabase::Postgres}) {
            for (const char* how :
                 {"Prekliči", "close box", "Escape in the name", "Escape in the description"}) {
                QTest::addRow("%s %s", qPrintable(kind), how) << kind << QString::fromUtf8(how);
            }
        }
    }
    void lngLastIDAfterPotrdiAndCancel() {
        QFETCH(QString, kind);
        QFETCH(QString, how);
        OpenCollection(kind);
        MessageRecorder messages;
        // A new record: its new key.
        ShowEntry(3, -1, [&](QDialog* dialog) { Confirm(dialog, QStringLiteral("Revija")); });
        QCOMPARE(modGeneral::lngLastID, 3);
        // An edited record: its key.
        ShowEntry(3, 1, [&](QDialog* dialog) { Confirm(dialog, QStringLiteral("Kuharica")); });
        QCOMPARE(modGeneral::lngLastID, 1);
        const QStringList before = AllLookupRows();
        // Cancelled after those saves: -1.
        frmAddRecord dialog;
        dialog.rtMode = 3;
        dialog.lngID = 2;
        const int result = ShowEntry(dialog, [&](QDialog* shown) {
            NameBox(shown)->setText(QStringLiteral("Druga knjiga"));
            DescriptionBox(shown)->setPlainText(QStringLiteral("opis"));
            if (how == QStringLiteral("Prekliči")) {
                QTest::mouseClick(Button(shown, "cmdCancel"), Qt::LeftButton);
            } else if (how == QStringLiteral("close box")) {
                QVERIFY(shown->close());
            } else if (how == QStringLiteral("Escape in the name")) {
                QTest::keyClick(NameBox(shown), Qt::Key_Escape);
            } else {
                DescriptionBox(shown)->setFocus();
                QTest::keyClick(DescriptionBox(shown), Qt::Key_Escape);
            }
            QVERIFY(!shown->isVisible());
        });
        QCOMPARE(result, int(QDialog::Rejected));
        QCOMPARE(modGeneral::lngLastID, -1);
        QCOMPARE(AllLookupRows(), before);
        QCOMPARE(Rows(QStringLiteral("SELECT sourceID, name FROM [Source] ORDER BY sourceID;")),
                 (QStringList{"1|Kuharica", "2|Knjiga", "3|Revija"}));
        QVERIFY(messages.Messages().isEmpty());
        QVERIFY(LoggedErrors().isEmpty());
    }

    void recordDeletedMeanwhileIsAddedAnew_data() { TestDatabase::AddKinds(); }
    void recordDeletedMeanwhileIsAddedAnew() {
        QFETCH(QString, kind);
        OpenCollection(kind);
        MessageRecorder messages;
        ShowEntry(4, 2, [&](QDialog* dialog) {
            QCOMPARE(NameBox(dialog)->text(), QStringLiteral("žlica"));
            TestDatabase::Exec(QStringLiteral("DELETE FROM [Unit] WHERE unitID = 2;"));
            Confirm(dialog, QStringLiteral("žlička"));
            QVERIFY(!dialog->isVisible());
        });
        QCOMPARE(modGeneral::lngLastID, 3);
        QCOMPARE(Rows(QStringLiteral("SELECT * FROM [Unit] ORDER BY unitID;")),
                 (QStringList{"1|g|NULL", "3|žlička|NULL"}));
        QVERIFY(messages.Messages().isEmpty());
        QVERIFY(LoggedErrors().isEmpty());
    }
};

QTEST_MAIN(TestAddRecord)
#include "tst_addrecord.moc"
