// The list editor on the real widgets: captions per list, the names in Slovenian order with their
// keys, the filter (any part, any case, apostrophes dropped as they are typed), adding, editing by
// button and by double click, deleting an unused record and a used one through the replacement
// dialog, the buttons' enabled states, and failures on the error path.
#include <sqlite3.h>

#include <QApplication>
#include <QComboBox>
#include <QDeadlineTimer>
#include <QFile>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>
#include <functional>
#include <memory>

#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "core/ui/ColumnFit.h"
#include "core/ui/Controls.h"
#include "core/ui/UiServices.h"
#include "lists/frmEditList.h"
#include "tests/support/DialogDriver.h"
#include "tests/support/MessageRecorder.h"
#include "tests/support/TestDatabase.h"

using TestDatabase::Rows;
using namespace DialogDriver;

namespace {

const QString Title = QStringLiteral("Morvena");
constexpr int Question = UiServices::vbYesNo + UiServices::vbQuestion;
constexpr int Exclamation = UiServices::vbExclamation;
const QString UnexpectedError = QStringLiteral(
    "Prišlo je do nepričakovane napake.\r\n\r\nOpis napake v datoteki errors.log sporočite "
    "avtorju.");
const QString ReallyDelete = QStringLiteral("Ali res želite izbrisati zapis?");

QString InUseText(int count) {
    return QStringLiteral(
               "Izbrani zapis je uporabljen v %1 nadrejenih zapisih. Izberite zapis, s "
               "katerim želite izbrisanega v teh nadrejenih zapisih nadomestiti.")
        .arg(count);
}

QTreeWidget* List(QWidget* dialog) { return Control<QTreeWidget>(dialog, "lstRecords"); }
QLineEdit* Filter(QWidget* dialog) { return Control<QLineEdit>(dialog, "txtFilter"); }

// The list's entries as "key name".
QStringList Entries(QWidget* dialog) {
    QTreeWidget* list = List(dialog);
    QStringList entries;
    for (int i = 0; i < list->topLevelItemCount(); ++i) {
        entries << modGeneral::ItemKey(list->topLevelItem(i)) + QLatin1Char(' ') +
                       list->topLevelItem(i)->text(0);
    }
    return entries;
}

// The key of the selected entry ("" when none is selected).
QString SelectedKey(QWidget* dialog) {
    const QList<QTreeWidgetItem*> selected = List(dialog)->selectedItems();
    return selected.isEmpty() ? QString() : modGeneral::ItemKey(selected.first());
}

QTreeWidgetItem* Entry(QWidget* dialog, const QString& key) {
    QTreeWidget* list = List(dialog);
    for (int i = 0; i < list->topLevelItemCount(); ++i) {
        if (modGeneral::ItemKey(list->topLevelItem(i)) == key) {
            return list->topLevelItem(i);
        }
    }
    return nullptr;
}

// A mouse click on the entry with the key.
void ClickEntry(QWidget* dialog, const QString& key,
                Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    QTreeWidget* list = List(dialog);
    QTreeWidgetItem* item = Entry(dialog, key);
    QVERIFY2(item, qPrintable(key));
    list->scrollToItem(item);
    QTest::mouseClick(list->viewport(), Qt::LeftButton, modifiers,
                      list->visualItemRect(item).center());
}

// The states of Add, Edit and Delete as "add edit delete" with 1 for enabled.
QString ButtonStates(QWidget* dialog) {
    return QStringLiteral("%1%2%3")
        .arg(int(Button(dialog, "cmdAdd")->isEnabled()))
        .arg(int(Button(dialog, "cmdEdit")->isEnabled()))
        .arg(int(Button(dialog, "cmdDelete")->isEnabled()));
}

const QString LinesQuery = QStringLiteral(
    "SELECT sectionIngredientID, sectionID, ingredientID, unitID, amount FROM "
    "[SectionIngredient] ORDER BY sectionIngredientID;");
const QString RecipesQuery =
    QStringLiteral("SELECT recipeID, typeID, sourceID, title FROM [Recipe] ORDER BY recipeID;");
const QStringList Lines{"1|1|1|1|100", "2|4|2|1|500", "3|4|3|1|200", "4|2|1|1|300", "5|3|4|2|2"};
const QStringList Recipes{"1|1|1|Goveja juha", "2|2|NULL|Korenčkova juha", "3|3|2|čokoladna torta"};
const QString IngredientsQuery = QStringLiteral(
    "SELECT ingredientID, name, description FROM [Ingredient] ORDER BY "
    "ingredientID;");
const QStringList Ingredients{"1|moka|NULL", "2|korenje|NULL", "3|krompir|NULL", "4|Čokolada|NULL"};
const QStringList IngredientEntries{"I4 Čokolada", "I2 korenje", "I3 krompir", "I1 moka"};

}  // namespace

class TestEditList : public QObject {
    Q_OBJECT

private:
    static void OpenCollection(const QString& kind) {
        TestDatabase::OpenFresh(kind);
        TestDatabase::LoadSmallCollection();
    }

    // Shows the list editor of the mode modally as the main window does and runs `drive` on it.
    static int ShowEditor(int mode, const std::function<void(QDialog*)>& drive) {
        frmEditList editor;
        editor.rtMode = mode;
        const auto ran = WhenShown(QStringLiteral("frmEditList"), [&](QDialog* shown) {
            if (shown != &editor) {
                QTest::qFail("the list editor is not the active modal window", __FILE__, __LINE__);
                return;
            }
            if (!QTest::qWaitForWindowExposed(shown)) {
                QTest::qFail("the list editor is not shown", __FILE__, __LINE__);
                return;
            }
            drive(shown);
        });
        const int result = editor.exec();
        if (!*ran) {
            QTest::qFail("the list editor closed before the test could drive it", __FILE__,
                         __LINE__);
        }
        return result;
    }

    // The data rows: both kinds.
    static void Kinds() { TestDatabase::AddKinds(); }

private Q_SLOTS:
    void initTestCase() { TestDatabase::IsolateEnvironment(); }

    void init() {
        DialogDriver::ForgetPendingDrivers();
        QFile::remove(QStringLiteral("errors.log"));
        UiServices::SetMousePointer(UiServices::vbDefault);
        modGeneral::lngLastID = -1;
    }

    void cleanup() {
        DialogDriver::ForgetPendingDrivers();
        modDatabase::Connection.reset();
        QFile::remove(QStringLiteral("errors.log"));
    }

    void captionControlsAndListPerMode_data() {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<int>("mode");
        QTest::addColumn<QString>("caption");
        QTest::addColumn<QStringList>("entries");
        for (const QString& kind : {TestDatabase::Sqlite, TestDatabase::Postgres}) {
            QTest::addRow("%s 3 sources", qPrintable(kind))
                << kind << 3 << "Urejanje seznama virov"
                << QStringList{"I1 Babičina kuharica", "I2 Knjiga"};
            QTest::addRow("%s 4 units", qPrintable(kind))
                << kind << 4 << "Urejanje seznama enot" << QStringList{"I1 g", "I2 žlica"};
            QTest::addRow("%s 5 ingredients", qPrintable(kind))
                << kind << 5 << "Urejanje seznama sestavin" << IngredientEntries;
        }
    }
    void captionControlsAndListPerMode() {
        QFETCH(QString, kind);
        QFETCH(int, mode);
        QFETCH(QString, caption);
        QFETCH(QStringList, entries);
        OpenCollection(kind);
        MessageRecorder messages;
        UiServices::SetMousePointer(UiServices::vbHourglass);  // as the main window leaves it
        const int result = ShowEditor(mode, [&](QDialog* dialog) {
            QVERIFY(dialog->isModal());
            QCOMPARE(dialog->windowTitle(), caption);
            QCOMPARE(Control<QLabel>(dialog, "lblFilter")->text(), QStringLiteral("Filter:"));
            QCOMPARE(Filter(dialog)->maxLength(), 50);
            QCOMPARE(Filter(dialog)->text(), QString());
            QCOMPARE(Button(dialog, "cmdAdd")->text(), QStringLiteral("Dodaj..."));
            QCOMPARE(Button(dialog, "cmdEdit")->text(), QStringLiteral("Uredi..."));
            QCOMPARE(Button(dialog, "cmdDelete")->text(), QStringLiteral("Izbriši"));
            QTreeWidget* list = List(dialog);
            QCOMPARE(list->columnCount(), 1);
            QCOMPARE(ColumnFit::Given(list, 0), Controls::TextPixels(3500, list->font()));
            QVERIFY(list->isHeaderHidden());
            QCOMPARE(Entries(dialog), entries);
            QCOMPARE(SelectedKey(dialog), QString());
            QCOMPARE(ButtonStates(dialog), QStringLiteral("100"));
            QCOMPARE(UiServices::MousePointer(), int(UiServices::vbDefault));
            QCOMPARE(dialog->cursor().shape(), Qt::ArrowCursor);
            // Enter presses no button (no dialog opens), Escape closes.
            QTest::keyClick(Filter(dialog), Qt::Key_Return);
            QVERIFY(dialog->isVisible());
            QTest::keyClick(Filter(dialog), Qt::Key_Escape);
            QVERIFY(!dialog->isVisible());
        });
        QCOMPARE(result, int(QDialog::Rejected));
        QVERIFY(messages.Messages().isEmpty());
        QVERIFY(LoggedErrors().isEmpty());
    }

    void closingByButtonAndCloseBox_data() {
        QTest::addColumn<QString>("how");
        QTest::newRow("cmdCancel") << "cmdCancel";
        QTest::newRow("close box") << "close box";
    }
    void closingByButtonAndCloseBox() {
        QFETCH(QString, how);
        OpenCollection(TestDatabase::Sqlite);
        const int result = ShowEditor(3, [&](QDialog* dialog) {
            if (how == QStringLiteral("cmdCancel")) {
                QTest::mouseClick(Button(dialog, "cmdCancel"), Qt::LeftButton);
            } else {
                QVERIFY(dialog->close());
            }
            QVERIFY(!dialog->isVisible());
        });
        QCOMPARE(result, int(QDialog::Rejected));
        QCOMPARE(Rows(QStringLiteral("SELECT sourceID, name FROM [Source] ORDER BY sourceID;")),
                 (QStringList{"1|Babičina kuharica", "2|Knjiga"}));
    }

    void listInSlovenianNameOrder_data() { Kinds(); }
    void listInSlovenianNameOrder() {
        QFETCH(QString, kind);
        OpenCollection(kind);
        for (const char* name :
             {"cvetača", "čebula", "Cimet", "Zelje", "žafran", "Ajdova moka", "dateljni"}) {
            TestDatabase::Insert("Ingredient", {{"name", name}});
        }
        SqliteStatements statements;
        ShowEditor(5, [&](QDialog* dialog) {
            QCOMPARE(Entries(dialog),
                     (QStringList{"I10 Ajdova moka", "I7 Cimet", "I5 cvetača", "I6 čebula",
                                  "I4 Čokolada", "I11 dateljni", "I2 korenje", "I3 krompir",
                                  "I1 moka", "I8 Zelje", "I9 žafran"}));
            if (statements.Active()) {
                QCOMPARE(statements.TakeSelects(),
                         QStringList{"SELECT * FROM [Ingredient] WHERE name LIKE '%%' ORDER BY "
                                     "name;"});
            }
        });
        QVERIFY(LoggedErrors().isEmpty());
    }

    void filterMatchesAnyPartInAnyCase_data() { Kinds(); }
    void filterMatchesAnyPartInAnyCase() {
        QFETCH(QString, kind);
        OpenCollection(kind);
        TestDatabase::Insert("Ingredient", {{"name", "Ajdova MOKA"}});  // 5
        TestDatabase::Insert("Ingredient", {{"name", "čebula"}});       // 6
        SqliteStatements statements;
        MessageRecorder messages;
        ShowEditor(5, [&](QDialog* dialog) {
            QLineEdit* filter = Filter(dialog);
            statements.TakeSelects();
            QTest::keyClicks(filter, QStringLiteral("oK"));
            QCOMPARE(Entries(dialog), (QStringList{"I5 Ajdova MOKA", "I4 Čokolada", "I1 moka"}));
            if (statements.Active()) {
                QCOMPARE(statements.TakeSelects(),
                         (QStringList{
                             "SELECT * FROM [Ingredient] WHERE name LIKE '%o%' ORDER BY name;",
                             "SELECT * FROM [Ingredient] WHERE name LIKE '%oK%' ORDER BY name;"}));
            }
            // The end, the start and the middle of a name; a letter with a caron in either case.
            filter->setText(QStringLiteral("je"));
            QCOMPARE(Entries(dialog), QStringList{"I2 korenje"});
            filter->setText(QStringLiteral("KR"));
            QCOMPARE(Entries(dialog), QStringList{"I3 krompir"});
            filter->setText(QStringLiteral("ova m"));
            QCOMPARE(Entries(dialog), QStringList{"I5 Ajdova MOKA"});
            filter->setText(QStringLiteral("č"));
            QCOMPARE(Entries(dialog), (QStringList{"I6 čebula", "I4 Čokolada"}));
            filter->setText(QStringLiteral("ČE"));
            QCOMPARE(Entries(dialog), QStringList{"I6 čebula"});
            filter->setText(QStringLiteral("x"));
            QCOMPARE(Entries(dialog), QStringList());
            QCOMPARE(ButtonStates(dialog), QStringLiteral("100"));
            // An empty filter lists every record.
            filter->clear();
            QCOMPARE(Entries(dialog), (QStringList{"I5 Ajdova MOKA", "I6 čebula", "I4 Čokolada",
                                                   "I2 korenje", "I3 krompir", "I1 moka"}));
        });
        QVERIFY(messages.Messages().isEmpty());
        QVERIFY(LoggedErrors().isEmpty());
    }

    void filterKeepsTheSelectionWhileListed_data() { Kinds(); }
    void filterKeepsTheSelectionWhileListed() {
        QFETCH(QString, kind);
        OpenCollection(kind);
        ShowEditor(5, [&](QDialog* dialog) {
            ClickEntry(dialog, QStringLiteral("I1"));
            QCOMPARE(SelectedKey(dialog), QStringLiteral("I1"));
            QLineEdit* filter = Filter(dialog);
            QTest::keyClicks(filter, QStringLiteral("o"));
            QCOMPARE(Entries(dialog),
                     (QStringList{"I4 Čokolada", "I2 korenje", "I3 krompir", "I1 moka"}));
            QCOMPARE(SelectedKey(dialog), QStringLiteral("I1"));
            QCOMPARE(ButtonStates(dialog), QStringLiteral("111"));
            QTest::keyClicks(filter, QStringLiteral("k"));
            QCOMPARE(Entries(dialog), (QStringList{"I4 Čokolada", "I1 moka"}));
            QCOMPARE(SelectedKey(dialog), QStringLiteral("I1"));
            // No longer listed: nothing selected, and nothing to remember afterwards.
            QTest::keyClicks(filter, QStringLiteral("o"));
            QCOMPARE(Entries(dialog), QStringList{"I4 Čokolada"});
            QCOMPARE(SelectedKey(dialog), QString());
            QCOMPARE(ButtonStates(dialog), QStringLiteral("100"));
            QTest::keyClick(filter, Qt::Key_Backspace);
            QCOMPARE(Entries(dialog), (QStringList{"I4 Čokolada", "I1 moka"}));
            QCOMPARE(SelectedKey(dialog), QString());
            QCOMPARE(ButtonStates(dialog), QStringLiteral("100"));
        });
        QVERIFY(LoggedErrors().isEmpty());
    }

    void apostropheIsDroppedAtOnce_data() { Kinds(); }
    void apostropheIsDroppedAtOnce() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        TestDatabase::Insert("Source", {{"name", "O'Brienova kuharica"}});  // 1
        TestDatabase::Insert("Source", {{"name", "OBrien"}});               // 2
        TestDatabase::Insert("Source", {{"name", "Babičina kuharica"}});    // 3
        SqliteStatements statements;
        MessageRecorder messages;
        ShowEditor(3, [&](QDialog* dialog) {
            QLineEdit* filter = Filter(dialog);
            QCOMPARE(Entries(dialog),
                     (QStringList{"I3 Babičina kuharica", "I1 O'Brienova kuharica", "I2 OBrien"}));
            QTest::keyClicks(filter, QStringLiteral("O'"));
            QCOMPARE(filter->text(), QStringLiteral("O"));
            QCOMPARE(filter->cursorPosition(), 1);
            QTest::keyClicks(filter, QStringLiteral("B"));
            QCOMPARE(filter->text(), QStringLiteral("OB"));
            QCOMPARE(Entries(dialog), QStringList{"I2 OBrien"});
            // Typed in the middle: the cursor stays where the apostrophe went in.
            filter->setCursorPosition(1);
            QTest::keyClick(filter, Qt::Key_Apostrophe, Qt::NoModifier);
            QCOMPARE(filter->text(), QStringLiteral("OB"));
            QCOMPARE(filter->cursorPosition(), 1);
            QTest::keyClicks(filter, QStringLiteral("''"));
            QCOMPARE(filter->text(), QStringLiteral("OB"));
            // Pasted with several apostrophes.
            filter->selectAll();
            filter->insert(QStringLiteral("'k'uh'"));
            QCOMPARE(filter->text(), QStringLiteral("kuh"));
            QCOMPARE(filter->cursorPosition(), 3);
            QCOMPARE(Entries(dialog),
                     (QStringList{"I3 Babičina kuharica", "I1 O'Brienova kuharica"}));
            // Only an apostrophe: the empty filter.
            filter->setText(QStringLiteral("'"));
            QCOMPARE(filter->text(), QString());
            QCOMPARE(Entries(dialog).size(), 3);
        });
        if (statements.Active()) {
            const QStringList selects = statements.TakeSelects();
            QVERIFY(selects.size() >= 8);
            for (const QString& sql : selects) {
                QVERIFY2(
                    sql.startsWith(QStringLiteral("SELECT * FROM [Source] WHERE name LIKE '%")),
                    qPrintable(sql));
                QVERIFY2(sql.count(QLatin1Char('\'')) == 2, qPrintable(sql));
            }
        }
        QVERIFY(messages.Messages().isEmpty());
        QVERIFY(LoggedErrors().isEmpty());
    }

    void filterBoxSelectsAllOnFocus() {
        OpenCollection(TestDatabase::Sqlite);
        ShowEditor(5, [&](QDialog* dialog) {
            QVERIFY(QTest::qWaitForWindowActive(dialog));
            QLineEdit* filter = Filter(dialog);
            QTest::keyClicks(filter, QStringLiteral("ko"));
            const auto everythingSelected = [&] {
                return filter->hasFocus() && filter->selectedText() == QStringLiteral("ko");
            };
            QTreeWidget* list = List(dialog);
            list->setFocus(Qt::OtherFocusReason);
            QTRY_VERIFY(list->hasFocus());
            filter->deselect();
            QTest::keyClick(list, Qt::Key_Backtab, Qt::ShiftModifier);
            QTRY_VERIFY(filter->hasFocus());
            QVERIFY(everythingSelected());
            list->setFocus(Qt::OtherFocusReason);
            QTRY_VERIFY(list->hasFocus());
            filter->deselect();
            QTest::mouseClick(filter, Qt::LeftButton, {},
                              QPoint(filter->width() / 2, filter->height() / 2));
            QVERIFY(everythingSelected());
        });
        QVERIFY(LoggedErrors().isEmpty());
    }

    void buttonsFollowTheSelection_data() { Kinds(); }
    void buttonsFollowTheSelection() {
        QFETCH(QString, kind);
        OpenCollection(kind);
        MessageRecorder messages;
        ShowEditor(4, [&](QDialog* dialog) {
            QCOMPARE(ButtonStates(dialog), QStringLiteral("100"));
            ClickEntry(dialog, QStringLiteral("I2"));
            QCOMPARE(SelectedKey(dialog), QStringLiteral("I2"));
            QCOMPARE(ButtonStates(dialog), QStringLiteral("111"));
            // Ctrl+click on the selected entry keeps it selected; only the program clears.
            ClickEntry(dialog, QStringLiteral("I2"), Qt::ControlModifier);
            QCOMPARE(SelectedKey(dialog), QStringLiteral("I2"));
            QCOMPARE(ButtonStates(dialog), QStringLiteral("111"));
            List(dialog)->clearSelection();
            QCOMPARE(SelectedKey(dialog), QString());
            QCOMPARE(ButtonStates(dialog), QStringLiteral("100"));
            QTreeWidget* list = List(dialog);
            list->setFocus(Qt::OtherFocusReason);
            QTest::keyClick(list, Qt::Key_Up);
            QVERIFY(!SelectedKey(dialog).isEmpty());
            QCOMPARE(ButtonStates(dialog), QStringLiteral("111"));
        });
        QVERIFY(messages.Messages().isEmpty());
    }

    void deleteIgnoresAClickWithoutASelection_data() { Kinds(); }
    void deleteIgnoresAClickWithoutASelection() {
        QFETCH(QString, kind);
        OpenCollection(kind);
        MessageRecorder messages;
        SqliteStatements statements;
        ShowEditor(4, [&](QDialog* dialog) {
            QPushButton* cmdDelete = Button(dialog, "cmdDelete");
            QVERIFY(!cmdDelete->isEnabled());
            statements.TakeSelects();
            // Only a disabled button stands in the way: enabled from code, clicked.
            cmdDelete->setEnabled(true);
            QTest::mouseClick(cmdDelete, Qt::LeftButton);
            QVERIFY(dialog->isVisible());
            QCOMPARE(Entries(dialog), (QStringList{"I1 g", "I2 žlica"}));
            QCOMPARE(dialog->cursor().shape(), Qt::ArrowCursor);
            if (statements.Active()) {
                QCOMPARE(statements.TakeSelects(), QStringList());
            }
            // Edit likewise.
            QPushButton* cmdEdit = Button(dialog, "cmdEdit");
            cmdEdit->setEnabled(true);
            const auto entry = WhenShown(QStringLiteral("frmAddRecord"), [](QDialog*) {});
            QTest::mouseClick(cmdEdit, Qt::LeftButton);
            QVERIFY(!*entry);
            QCOMPARE(UiServices::MousePointer(), int(UiServices::vbDefault));
        });
        QVERIFY(messages.Messages().isEmpty());
        QCOMPARE(Rows(QStringLiteral("SELECT unitID, name FROM [Unit] ORDER BY unitID;")),
                 (QStringList{"1|g", "2|žlica"}));
        QCOMPARE(Rows(LinesQuery), Lines);
        QVERIFY(LoggedErrors().isEmpty());
    }

    void addSelectsTheNewRecord_data() {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<int>("mode");
        QTest::addColumn<QString>("caption");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("newKey");
        QTest::addColumn<QStringList>("entries");
        QTest::addColumn<QString>("query");
        QTest::addColumn<QStringList>("rows");
        for (const QString& kind : {TestDatabase::Sqlite, TestDatabase::Postgres}) {
            QTest::addRow("%s source", qPrintable(kind))
                << kind << 3 << "Vnos vira receptov"
                << "Časopis"
                << "I3" << QStringList{"I1 Babičina kuharica", "I3 Časopis", "I2 Knjiga"}
                << "SELECT sourceID, name, description FROM [Source] ORDER BY sourceID;"
                << QStringList{"1|Babičina kuharica|NULL", "2|Knjiga|NULL", "3|Časopis|opis"};
            QTest::addRow("%s unit", qPrintable(kind))
                << kind << 4 << "Vnos merske enote"
                << "dl"
                << "I3" << QStringList{"I3 dl", "I1 g", "I2 žlica"}
                << "SELECT unitID, name, description FROM [Unit] ORDER BY unitID;"
                << QStringList{"1|g|NULL", "2|žlica|NULL", "3|dl|opis"};
            QTest::addRow("%s ingredient", qPrintable(kind))
                << kind << 5 << "Vnos sestavine"
                << "cimet"
                << "I5"
                << QStringList{"I5 cimet", "I4 Čokolada", "I2 korenje", "I3 krompir", "I1 moka"}
                << IngredientsQuery
                << QStringList{"1|moka|NULL", "2|korenje|NULL", "3|krompir|NULL", "4|Čokolada|NULL",
                               "5|cimet|opis"};
        }
    }
    void addSelectsTheNewRecord() {
        QFETCH(QString, kind);
        QFETCH(int, mode);
        QFETCH(QString, caption);
        QFETCH(QString, name);
        QFETCH(QString, newKey);
        QFETCH(QStringList, entries);
        QFETCH(QString, query);
        QFETCH(QStringList, rows);
        OpenCollection(kind);
        MessageRecorder messages;
        ShowEditor(mode, [&](QDialog* dialog) {
            ClickEntry(dialog, QStringLiteral("I2"));
            const auto entry = WhenShown(QStringLiteral("frmAddRecord"), [&](QDialog* add) {
                QCOMPARE(add->parentWidget(), dialog);
                QCOMPARE(add->windowTitle(), caption);
                QCOMPARE(Control<QLineEdit>(add, "txtName")->text(), QString());
                QCOMPARE(Control<QPlainTextEdit>(add, "txtDescription")->toPlainText(), QString());
                QCOMPARE(UiServices::MousePointer(), int(UiServices::vbDefault));
                Control<QLineEdit>(add, "txtName")->setText(name);
                Control<QPlainTextEdit>(add, "txtDescription")->setPlainText("opis");
                QTest::mouseClick(Button(add, "cmdOK"), Qt::LeftButton);
                QVERIFY(!add->isVisible());
            });
            QTest::mouseClick(Button(dialog, "cmdAdd"), Qt::LeftButton);
            QVERIFY(*entry);
            QCOMPARE(Entries(dialog), entries);
            QCOMPARE(SelectedKey(dialog), newKey);
            QCOMPARE(ButtonStates(dialog), QStringLiteral("111"));
            QCOMPARE(UiServices::MousePointer(), int(UiServices::vbDefault));
            QCOMPARE(dialog->cursor().shape(), Qt::ArrowCursor);
        });
        QCOMPARE(modGeneral::lngLastID, newKey.mid(1).toInt());
        QCOMPARE(Rows(query), rows);
        QVERIFY(messages.Messages().isEmpty());
        QVERIFY(LoggedErrors().isEmpty());
    }

    void addedRecordOutsideTheFilterIsNotListed_data() { Kinds(); }
    void addedRecordOutsideTheFilterIsNotListed() {
        QFETCH(QString, kind);
        OpenCollection(kind);
        ShowEditor(5, [&](QDialog* dialog) {
            Filter(dialog)->setText(QStringLiteral("kr"));
            ClickEntry(dialog, QStringLiteral("I3"));
            const auto entry = WhenShown(QStringLiteral("frmAddRecord"), [&](QDialog* add) {
                Control<QLineEdit>(add, "txtName")->setText(QStringLiteral("sol"));
                QTest::mouseClick(Button(add, "cmdOK"), Qt::LeftButton);
            });
            QTest::mouseClick(Button(dialog, "cmdAdd"), Qt::LeftButton);
            QVERIFY(*entry);
            QCOMPARE(Entries(dialog), QStringList{"I3 krompir"});
            QCOMPARE(SelectedKey(dialog), QString());
            QCOMPARE(ButtonStates(dialog), QStringLiteral("100"));
        });
        QCOMPARE(Rows(QStringLiteral("SELECT name FROM [Ingredient] WHERE ingredientID = 5;")),
                 QStringList{"sol"});
    }

    void cancelledAddKeepsTheSelection_data() {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("how");
        QTest::addColumn<QString>("selected");
        for (const QString& kind : {TestDatabase::Sqlite, TestDatabase::Postgres}) {
            QTest::addRow("%s Prekliči", qPrintable(kind)) << kind << "Prekliči"
                                                           << "I2";
            QTest::addRow("%s close box", qPrintable(kind)) << kind << "close box"
                                                            << "I3";
            QTest::addRow("%s Escape", qPrintable(kind)) << kind << "Escape"
                                                         << "I4";
            QTest::addRow("%s nothing selected", qPrintable(kind)) << kind << "Prekliči"
                                                                   << "";
        }
    }
    void cancelledAddKeepsTheSelection() {
        QFETCH(QString, kind);
        QFETCH(QString, how);
        QFETCH(QString, selected);
        OpenCollection(kind);
        MessageRecorder messages;
        ShowEditor(5, [&](QDialog* dialog) {
            // An earlier addition leaves its key in lngLastID.
            const auto first = WhenShown(QStringLiteral("frmAddRecord"), [&](QDialog* add) {
                Control<QLineEdit>(add, "txtName")->setText(QStringLiteral("sol"));
                QTest::mouseClick(Button(add, "cmdOK"), Qt::LeftButton);
            });
            QTest::mouseClick(Button(dialog, "cmdAdd"), Qt::LeftButton);
            QVERIFY(*first);
            QCOMPARE(modGeneral::lngLastID, 5);
            QCOMPARE(SelectedKey(dialog), QStringLiteral("I5"));
            if (selected.isEmpty()) {
                List(dialog)->clearSelection();  // the user cannot clear it; the program can
            } else {
                ClickEntry(dialog, selected);
            }
            QCOMPARE(SelectedKey(dialog), selected);
            const auto entry = WhenShown(QStringLiteral("frmAddRecord"), [&](QDialog* add) {
                QLineEdit* txtName = Control<QLineEdit>(add, "txtName");
                QCOMPARE(txtName->text(), QString());
                txtName->setText(QStringLiteral("poper"));
                if (how == QStringLiteral("Prekliči")) {
                    QTest::mouseClick(Button(add, "cmdCancel"), Qt::LeftButton);
                } else if (how == QStringLiteral("close box")) {
                    QVERIFY(add->close());
                } else {
                    QTest::keyClick(txtName, Qt::Key_Escape);
                }
                QVERIFY(!add->isVisible());
            });
            QTest::mouseClick(Button(dialog, "cmdAdd"), Qt::LeftButton);
            QVERIFY(*entry);
            QCOMPARE(modGeneral::lngLastID, -1);
            QCOMPARE(SelectedKey(dialog), selected);
            QCOMPARE(ButtonStates(dialog),
                     selected.isEmpty() ? QStringLiteral("100") : QStringLiteral("111"));
            QCOMPARE(Entries(dialog),
                     (QStringList{"I4 Čokolada", "I2 korenje", "I3 krompir", "I1 moka", "I5 sol"}));
        });
        QCOMPARE(Rows(IngredientsQuery), (Ingredients + QStringList{"5|sol|NULL"}));
        QVERIFY(messages.Messages().isEmpty());
        QVERIFY(LoggedErrors().isEmpty());
    }

    void editByButtonAndDoubleClick_data() {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<bool>("doubleClick");
        for (const QString& kind : {TestDatabase::Sqlite, TestDatabase::Postgres}) {
            QTest::addRow("%s Uredi", qPrintable(kind)) << kind << false;
            QTest::addRow("%s double click", qPrintable(kind)) << kind << true;
        }
    }
    void editByButtonAndDoubleClick() {
        QFETCH(QString, kind);
        QFETCH(bool, doubleClick);
        OpenCollection(kind);
        TestDatabase::Exec(
            QStringLiteral("UPDATE [Ingredient] SET description = 'bela' WHERE ingredientID = 1;"));
        MessageRecorder messages;
        ShowEditor(5, [&](QDialog* dialog) {
            ClickEntry(dialog, QStringLiteral("I1"));
            const auto entry = WhenShown(QStringLiteral("frmAddRecord"), [&](QDialog* add) {
                QCOMPARE(add->windowTitle(), QStringLiteral("Vnos sestavine"));
                QLineEdit* txtName = Control<QLineEdit>(add, "txtName");
                QCOMPARE(txtName->text(), QStringLiteral("moka"));
                QCOMPARE(Control<QPlainTextEdit>(add, "txtDescription")->toPlainText(),
                         QStringLiteral("bela"));
                txtName->setText(QStringLiteral("Bela moka"));
                QTest::mouseClick(Button(add, "cmdOK"), Qt::LeftButton);
                QVERIFY(!add->isVisible());
            });
            if (doubleClick) {
                QTreeWidget* list = List(dialog);
                QTest::mouseDClick(
                    list->viewport(), Qt::LeftButton, {},
                    list->visualItemRect(Entry(dialog, QStringLiteral("I1"))).center());
            } else {
                QTest::mouseClick(Button(dialog, "cmdEdit"), Qt::LeftButton);
            }
            QVERIFY(*entry);
            QCOMPARE(Entries(dialog),
                     (QStringList{"I1 Bela moka", "I4 Čokolada", "I2 korenje", "I3 krompir"}));
            QCOMPARE(SelectedKey(dialog), QStringLiteral("I1"));
            QCOMPARE(ButtonStates(dialog), QStringLiteral("111"));
            QCOMPARE(UiServices::MousePointer(), int(UiServices::vbDefault));

            // Edited and cancelled: nothing changes, the selection stays.
            ClickEntry(dialog, QStringLiteral("I3"));
            const auto cancelled = WhenShown(QStringLiteral("frmAddRecord"), [&](QDialog* add) {
                QLineEdit* txtName = Control<QLineEdit>(add, "txtName");
                QCOMPARE(txtName->text(), QStringLiteral("krompir"));
                txtName->setText(QStringLiteral("Krompir, mlad"));
                QTest::mouseClick(Button(add, "cmdCancel"), Qt::LeftButton);
            });
            QTest::mouseClick(Button(dialog, "cmdEdit"), Qt::LeftButton);
            QVERIFY(*cancelled);
            QCOMPARE(SelectedKey(dialog), QStringLiteral("I3"));
            QCOMPARE(Entries(dialog),
                     (QStringList{"I1 Bela moka", "I4 Čokolada", "I2 korenje", "I3 krompir"}));
        });
        QCOMPARE(modGeneral::lngLastID, -1);
        QCOMPARE(Rows(IngredientsQuery), (QStringList{"1|Bela moka|bela", "2|korenje|NULL",
                                                      "3|krompir|NULL", "4|Čokolada|NULL"}));
        QVERIFY(messages.Messages().isEmpty());
        QVERIFY(LoggedErrors().isEmpty());
    }

    void editedRecordLeavingTheFilterIsNoLongerSelected_data() { Kinds(); }
    void editedRecordLeavingTheFilterIsNoLongerSelected() {
        QFETCH(QString, kind);
        OpenCollection(kind);
        ShowEditor(3, [&](QDialog* dialog) {
            Filter(dialog)->setText(QStringLiteral("knj"));
            ClickEntry(dialog, QStringLiteral("I2"));
            const auto entry = WhenShown(QStringLiteral("frmAddRecord"), [&](QDialog* add) {
                Control<QLineEdit>(add, "txtName")->setText(QStringLiteral("Zvezek"));
                QTest::mouseClick(Button(add, "cmdOK"), Qt::LeftButton);
            });
            QTest::mouseClick(Button(dialog, "cmdEdit"), Qt::LeftButton);
            QVERIFY(*entry);
            QCOMPARE(Entries(dialog), QStringList());
            QCOMPARE(ButtonStates(dialog), QStringLiteral("100"));
        });
        QCOMPARE(Rows(QStringLiteral("SELECT name FROM [Source] WHERE sourceID = 2;")),
                 QStringList{"Zvezek"});
    }

    void deleteAnsweredNoChangesNothing_data() { Kinds(); }
    void deleteAnsweredNoChangesNothing() {
        QFETCH(QString, kind);
        OpenCollection(kind);
        const qint32 unused = TestDatabase::Insert("Source", {{"name", "Revija"}});
        MessageRecorder messages;
        messages.Answer(UiServices::vbNo);
        messages.Answer(UiServices::vbNo);
        ShowEditor(3, [&](QDialog* dialog) {
            for (const QString key : {QStringLiteral("I1"), QString("I%1").arg(unused)}) {
                ClickEntry(dialog, key);
                const auto replacement =
                    WhenShown(QStringLiteral("frmChangeLink"), [](QDialog*) {});
                QTest::mouseClick(Button(dialog, "cmdDelete"), Qt::LeftButton);
                QVERIFY(!*replacement);
                QCOMPARE(SelectedKey(dialog), key);
                QCOMPARE(ButtonStates(dialog), QStringLiteral("111"));
                QCOMPARE(dialog->cursor().shape(), Qt::ArrowCursor);
            }
            QCOMPARE(Entries(dialog),
                     (QStringList{"I1 Babičina kuharica", "I2 Knjiga", "I3 Revija"}));
        });
        QCOMPARE(messages.Texts(), (QStringList{ReallyDelete, ReallyDelete}));
        for (const MessageRecorder::Message& message : messages.Messages()) {
            QCOMPARE(message.style, Question);
            QCOMPARE(message.title, Title);
        }
        QCOMPARE(Rows(QStringLiteral("SELECT sourceID, name FROM [Source] ORDER BY sourceID;")),
                 (QStringList{"1|Babičina kuharica", "2|Knjiga", "3|Revija"}));
        QCOMPARE(Rows(RecipesQuery), Recipes);
        QVERIFY(LoggedErrors().isEmpty());
    }

    void deletingAnUnusedRecordAsksOnce_data() {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<int>("mode");
        QTest::addColumn<QString>("table");
        QTest::addColumn<QString>("checkSql");
        QTest::addColumn<QString>("deleteSql");
        QTest::addColumn<QStringList>("entries");
        QTest::addColumn<QString>("query");
        QTest::addColumn<QStringList>("rows");
        for (const QString& kind : {TestDatabase::Sqlite, TestDatabase::Postgres}) {
            QTest::addRow("%s source", qPrintable(kind))
                << kind << 3 << "Source"
                << "SELECT recipeID FROM [Recipe] WHERE sourceID = 3;"
                << "SELECT * FROM [Source] WHERE sourceID = 3;"
                << QStringList{"I1 Babičina kuharica", "I2 Knjiga"}
                << "SELECT sourceID, name FROM [Source] ORDER BY sourceID;"
                << QStringList{"1|Babičina kuharica", "2|Knjiga"};
            QTest::addRow("%s unit", qPrintable(kind))
                << kind << 4 << "Unit"
                << "SELECT sectionIngredientID FROM [SectionIngredient] WHERE unitID = 3;"
                << "SELECT * FROM [Unit] WHERE unitID = 3;" << QStringList{"I1 g", "I2 žlica"}
                << "SELECT unitID, name FROM [Unit] ORDER BY unitID;"
                << QStringList{"1|g", "2|žlica"};
            QTest::addRow("%s ingredient", qPrintable(kind))
                << kind << 5 << "Ingredient"
                << "SELECT sectionIngredientID FROM [SectionIngredient] WHERE ingredientID = 5;"
                << "SELECT * FROM [Ingredient] WHERE ingredientID = 5;" << IngredientEntries
                << "SELECT ingredientID, name FROM [Ingredient] ORDER BY ingredientID;"
                << QStringList{"1|moka", "2|korenje", "3|krompir", "4|Čokolada"};
        }
    }
    void deletingAnUnusedRecordAsksOnce() {
        QFETCH(QString, kind);
        QFETCH(int, mode);
        QFETCH(QString, table);
        QFETCH(QString, checkSql);
        QFETCH(QString, deleteSql);
        QFETCH(QStringList, entries);
        QFETCH(QString, query);
        QFETCH(QStringList, rows);
        OpenCollection(kind);
        const qint32 id = TestDatabase::Insert(table, {{"name", "Zadnji"}});
        MessageRecorder messages;
        SqliteStatements statements;
        ShowEditor(mode, [&](QDialog* dialog) {
            ClickEntry(dialog, QStringLiteral("I%1").arg(id));
            statements.TakeSelects();
            const auto replacement = WhenShown(QStringLiteral("frmChangeLink"), [](QDialog*) {});
            QTest::mouseClick(Button(dialog, "cmdDelete"), Qt::LeftButton);
            QVERIFY(!*replacement);
            QCOMPARE(Entries(dialog), entries);
            QCOMPARE(SelectedKey(dialog), QString());
            QCOMPARE(List(dialog)->currentItem(), nullptr);
            QCOMPARE(ButtonStates(dialog), QStringLiteral("100"));
            QCOMPARE(dialog->cursor().shape(), Qt::ArrowCursor);
            if (statements.Active()) {
                const QStringList selects = statements.TakeSelects();
                QCOMPARE(selects.mid(0, 2), (QStringList{checkSql, deleteSql}));
                QCOMPARE(selects.size(), 3);  // and the refresh
                QVERIFY(selects[2].contains(QStringLiteral(" WHERE name LIKE '%%' ORDER BY")));
            }
        });
        QCOMPARE(messages.Texts(), QStringList{ReallyDelete});
        QCOMPARE(messages.Messages()[0].style, Question);
        QCOMPARE(messages.Messages()[0].title, Title);
        QCOMPARE(Rows(query), rows);
        QCOMPARE(Rows(LinesQuery), Lines);
        QCOMPARE(Rows(RecipesQuery), Recipes);
        QVERIFY(LoggedErrors().isEmpty());
    }

    void deletingAUnitUsedByThreeLinesReplacesIt_data() { Kinds(); }
    void deletingAUnitUsedByThreeLinesReplacesIt() {
        QFETCH(QString, kind);
        OpenCollection(kind);
        const qint32 dl = TestDatabase::Insert("Unit", {{"name", "dl"}});  // 3
        for (const QList<int>& line : QList<QList<int>>{{1, 3, 2}, {2, 2, 1}, {4, 1, 5}}) {
            TestDatabase::Insert("SectionIngredient", {{"sectionID", line[0]},
                                                       {"ingredientID", line[1]},
                                                       {"unitID", dl},
                                                       {"amount", line[2]}});
        }
        MessageRecorder messages;
        SqliteStatements statements;
        bool replacementShown = false;
        ShowEditor(4, [&](QDialog* dialog) {
            QCOMPARE(Entries(dialog), (QStringList{"I3 dl", "I1 g", "I2 žlica"}));
            ClickEntry(dialog, QStringLiteral("I3"));
            statements.TakeSelects();
            UiServices::SetMousePointer(UiServices::vbDefault);
            WhenShown(QStringLiteral("frmChangeLink"), [&](QDialog* replacement) {
                replacementShown = true;
                QCOMPARE(replacement->parentWidget(), dialog);
                QCOMPARE(replacement->windowTitle(), QStringLiteral("Zapis v uporabi"));
                QCOMPARE(Control<QLabel>(replacement, "lblRecordInUse")->text(), InUseText(3));
                auto* combo = Control<QComboBox>(replacement, "cmbReplacement");
                QCOMPARE(combo->count(), 2);
                QCOMPARE(combo->itemText(0), QStringLiteral("g"));
                QCOMPARE(combo->itemData(0).toInt(), 1);
                QCOMPARE(combo->itemText(1), QStringLiteral("žlica"));
                QCOMPARE(combo->itemData(1).toInt(), 2);
                QCOMPARE(combo->currentIndex(), -1);
                QCOMPARE(UiServices::MousePointer(), int(UiServices::vbDefault));
                // The record still exists while the dialog is up.
                QCOMPARE(Rows(QStringLiteral("SELECT name FROM [Unit] WHERE unitID = 3;")),
                         QStringList{"dl"});
                combo->setCurrentIndex(0);
                QTest::mouseClick(Button(replacement, "cmdOK"), Qt::LeftButton);
                QVERIFY(!replacement->isVisible());
            });
            QTest::mouseClick(Button(dialog, "cmdDelete"), Qt::LeftButton);
            QVERIFY(replacementShown);
            QCOMPARE(Entries(dialog), (QStringList{"I1 g", "I2 žlica"}));
            QCOMPARE(SelectedKey(dialog), QString());
            QCOMPARE(ButtonStates(dialog), QStringLiteral("100"));
            QCOMPARE(dialog->cursor().shape(), Qt::ArrowCursor);
            if (statements.Active()) {
                QCOMPARE(
                    statements.TakeSelects(),
                    (QStringList{"SELECT sectionIngredientID FROM [SectionIngredient] WHERE unitID "
                                 "= 3;",
                                 "SELECT * FROM [Unit] WHERE unitID <> 3 ORDER BY name;",
                                 "SELECT name FROM [Unit] WHERE unitID = 3;",  // the test's own
                                 "SELECT * FROM [SectionIngredient] WHERE unitID = 3",
                                 "SELECT * FROM [Unit] WHERE unitID = 3;",
                                 "SELECT * FROM [Unit] WHERE name LIKE '%%' ORDER BY name;"}));
            }
        });
        QVERIFY(replacementShown);
        QCOMPARE(messages.Texts(), QStringList{ReallyDelete});
        QCOMPARE(Rows(LinesQuery), (Lines + QStringList{"6|1|3|1|2", "7|2|2|1|1", "8|4|1|1|5"}));
        QCOMPARE(Rows(QStringLiteral("SELECT unitID, name FROM [Unit] ORDER BY unitID;")),
                 (QStringList{"1|g", "2|žlica"}));
        QVERIFY(LoggedErrors().isEmpty());
    }

    void deletingAUsedSourceReplacesItInTheRecipes_data() { Kinds(); }
    void deletingAUsedSourceReplacesItInTheRecipes() {
        QFETCH(QString, kind);
        OpenCollection(kind);
        TestDatabase::Insert("Recipe", {{"typeID", 3}, {"sourceID", 2}, {"title", "Piškoti"}});
        MessageRecorder messages;
        bool replacementShown = false;
        ShowEditor(3, [&](QDialog* dialog) {
            ClickEntry(dialog, QStringLiteral("I2"));
            WhenShown(QStringLiteral("frmChangeLink"), [&](QDialog* replacement) {
                replacementShown = true;
                QCOMPARE(Control<QLabel>(replacement, "lblRecordInUse")->text(), InUseText(2));
                auto* combo = Control<QComboBox>(replacement, "cmbReplacement");
                QCOMPARE(combo->count(), 1);
                QCOMPARE(combo->itemText(0), QStringLiteral("Babičina kuharica"));
                combo->setCurrentIndex(0);
                QTest::mouseClick(Button(replacement, "cmdOK"), Qt::LeftButton);
            });
            QTest::mouseClick(Button(dialog, "cmdDelete"), Qt::LeftButton);
            QCOMPARE(Entries(dialog), QStringList{"I1 Babičina kuharica"});
        });
        QVERIFY(replacementShown);
        QCOMPARE(Rows(RecipesQuery), (QStringList{"1|1|1|Goveja juha", "2|2|NULL|Korenčkova juha",
                                                  "3|3|1|čokoladna torta", "4|3|1|Piškoti"}));
        QCOMPARE(Rows(QStringLiteral("SELECT sourceID, name FROM [Source];")),
                 QStringList{"1|Babičina kuharica"});
    }

    void cancellingTheReplacementDeletesNothing_data() {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("how");
        for (const QString& kind : {TestDatabase::Sqlite, TestDatabase::Postgres}) {
            for (const char* how : {"Prekliči", "close box", "Escape"}) {
                QTest::addRow("%s %s", qPrintable(kind), how) << kind << QString::fromUtf8(how);
            }
        }
    }
    void cancellingTheReplacementDeletesNothing() {
        QFETCH(QString, kind);
        QFETCH(QString, how);
        OpenCollection(kind);
        MessageRecorder messages;
        bool replacementShown = false;
        ShowEditor(5, [&](QDialog* dialog) {
            ClickEntry(dialog, QStringLiteral("I1"));  // moka: two lines
            WhenShown(QStringLiteral("frmChangeLink"), [&](QDialog* replacement) {
                replacementShown = true;
                QCOMPARE(Control<QLabel>(replacement, "lblRecordInUse")->text(), InUseText(2));
                auto* combo = Control<QComboBox>(replacement, "cmbReplacement");
                combo->setCurrentIndex(1);
                if (how == QStringLiteral("Prekliči")) {
                    QTest::mouseClick(Button(replacement, "cmdCancel"), Qt::LeftButton);
                } else if (how == QStringLiteral("close box")) {
                    QVERIFY(replacement->close());
                } else {
                    QTest::keyClick(combo, Qt::Key_Escape);
                }
                QVERIFY(!replacement->isVisible());
            });
            QTest::mouseClick(Button(dialog, "cmdDelete"), Qt::LeftButton);
            QVERIFY(replacementShown);
            QVERIFY(dialog->isVisible());
            QCOMPARE(Entries(dialog), IngredientEntries);
            QCOMPARE(SelectedKey(dialog), QString());  // the list was refreshed
            QCOMPARE(ButtonStates(dialog), QStringLiteral("100"));
        });
        QVERIFY(replacementShown);
        QCOMPARE(messages.Texts(), QStringList{ReallyDelete});
        QCOMPARE(Rows(IngredientsQuery), Ingredients);
        QCOMPARE(Rows(LinesQuery), Lines);
        QVERIFY(LoggedErrors().isEmpty());
    }

    void failingLoadTakesTheErrorPath_data() { Kinds(); }
    void failingLoadTakesTheErrorPath() {
        QFETCH(QString, kind);
        OpenCollection(kind);
        MessageRecorder messages;
        UiServices::SetMousePointer(UiServices::vbHourglass);
        ShowEditor(2, [&](QDialog* dialog) {  // not a list kind: no table
            QCOMPARE(dialog->windowTitle(), QString());
            QCOMPARE(Entries(dialog), QStringList());
            QCOMPARE(UiServices::MousePointer(), int(UiServices::vbDefault));
            QCOMPARE(dialog->cursor().shape(), Qt::ArrowCursor);
        });
        QCOMPARE(messages.Texts(), QStringList{UnexpectedError});
        QCOMPARE(messages.Messages()[0].style, Exclamation);
        QCOMPARE(messages.Messages()[0].title, Title);
        const QStringList logged = LoggedErrors();
        QCOMPARE(logged.size(), 1);
        QVERIFY2(logged[0].startsWith(QStringLiteral(
                     "frmEditList:Form_Load->frmEditList:RefreshList->modDatabase:GetRecordset->")),
                 qPrintable(logged[0]));
    }

    void failingFilterTakesTheErrorPath_data() { Kinds(); }
    void failingFilterTakesTheErrorPath() {
        QFETCH(QString, kind);
        OpenCollection(kind);
        MessageRecorder messages;
        ShowEditor(5, [&](QDialog* dialog) {
            TestDatabase::Exec(QStringLiteral("DROP TABLE [Ingredient];"));
            QTest::keyClicks(Filter(dialog), QStringLiteral("m"));
            QCOMPARE(Filter(dialog)->text(), QStringLiteral("m"));
            QVERIFY(dialog->isVisible());
            QCOMPARE(Entries(dialog), QStringList());
            QCOMPARE(dialog->cursor().shape(), Qt::ArrowCursor);
        });
        QCOMPARE(messages.Texts(), QStringList{UnexpectedError});
        QCOMPARE(messages.Messages()[0].style, Exclamation);
        const QStringList logged = LoggedErrors();
        QCOMPARE(logged.size(), 1);
        QVERIFY2(logged[0].startsWith(QStringLiteral("frmEditList:txtFilterChange->"
                                                     "frmEditList:RefreshList->"
                                                     "modDatabase:GetRecordset->")),
                 qPrintable(logged[0]));
    }

    void failingDeleteLeavesTheList_data() { Kinds(); }
    void failingDeleteLeavesTheList() {
        QFETCH(QString, kind);
        OpenCollection(kind);
        const qint32 id = TestDatabase::Insert("Unit", {{"name", "dl"}});
        MessageRecorder messages;
        ShowEditor(4, [&](QDialog* dialog) {
            ClickEntry(dialog, QStringLiteral("I%1").arg(id));
            // Deleted meanwhile by someone else.
            TestDatabase::Exec(QStringLiteral("DELETE FROM [Unit] WHERE unitID = %1;").arg(id));
            QTest::mouseClick(Button(dialog, "cmdDelete"), Qt::LeftButton);
            QCOMPARE(Entries(dialog), (QStringList{"I3 dl", "I1 g", "I2 žlica"}));
            QCOMPARE(SelectedKey(dialog), QStringLiteral("I3"));
            QCOMPARE(dialog->cursor().shape(), Qt::ArrowCursor);
        });
        QCOMPARE(messages.Texts(), (QStringList{ReallyDelete, UnexpectedError}));
        const QStringList logged = LoggedErrors();
        QCOMPARE(logged.size(), 1);
        QCOMPARE(logged[0], QStringLiteral("frmEditList:cmdDelete_Click->Morvena->No current "
                                           "record."));
    }
};

QTEST_MAIN(TestEditList)
#include "tst_editlist.moc"
