// Lookup records that someone else changed after a window read them: the record entry dialog
// asks before it saves over the other user's change, and the list editor asks before it deletes
// a record that is no longer as the list showed it. No writes nothing and keeps what the user
// typed; Yes goes ahead; a change made while the question is on screen is asked about again.
#include <QComboBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>
#include <QTreeWidget>
#include <functional>

#include "collection/CollectionCheck.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "core/ui/UiServices.h"
#include "lists/frmAddRecord.h"
#include "lists/frmEditList.h"
#include "tests/support/DialogDriver.h"
#include "tests/support/MessageRecorder.h"
#include "tests/support/TestDatabase.h"

using TestDatabase::Rows;
using namespace DialogDriver;

namespace {

constexpr int Question = UiServices::vbYesNo + UiServices::vbQuestion;
const QString RecordChanged =
    QStringLiteral("Vnos je medtem spremenil nekdo drug. Ali ga želite kljub temu shraniti?");
const QString ReallyDelete = QStringLiteral("Ali res želite izbrisati zapis?");
const QString DeleteChanged =
    QStringLiteral("Zapis je medtem spremenil nekdo drug. Ali ga želite kljub temu izbrisati?");
const QString LinesQuery = QStringLiteral(
    "SELECT sectionIngredientID, sectionID, ingredientID, unitID, amount FROM "
    "[SectionIngredient] ORDER BY sectionIngredientID;");
const QStringList Lines{"1|1|1|1|100", "2|4|2|1|500", "3|4|3|1|200", "4|2|1|1|300", "5|3|4|2|2"};
const QString UnitsQuery = QStringLiteral("SELECT * FROM [Unit] ORDER BY unitID;");

QLineEdit* NameBox(QWidget* dialog) { return Control<QLineEdit>(dialog, "txtName"); }
QTreeWidget* List(QWidget* dialog) { return Control<QTreeWidget>(dialog, "lstRecords"); }

// The list editor's entries as "key name", and the selected entry's key.
QStringList Entries(QWidget* dialog) {
    QStringList entries;
    for (int i = 0; i < List(dialog)->topLevelItemCount(); ++i) {
        const QTreeWidgetItem* item = List(dialog)->topLevelItem(i);
        entries << modGeneral::ItemKey(item) + QLatin1Char(' ') + item->text(0);
    }
    return entries;
}
QString SelectedKey(QWidget* dialog) {
    const QList<QTreeWidgetItem*> selected = List(dialog)->selectedItems();
    return selected.isEmpty() ? QString() : modGeneral::ItemKey(selected.first());
}

// Selects the entry with the key as a mouse click does.
void ClickEntry(QWidget* dialog, const QString& key) {
    QTreeWidget* list = List(dialog);
    for (int i = 0; i < list->topLevelItemCount(); ++i) {
        QTreeWidgetItem* item = list->topLevelItem(i);
        if (modGeneral::ItemKey(item) == key) {
            list->scrollToItem(item);
            QTest::mouseClick(list->viewport(), Qt::LeftButton, {},
                              list->visualItemRect(item).center());
            return;
        }
    }
    QFAIL(qPrintable(key));
}

// Shows a dialog modally as its callers do and runs `drive` once it is the active window.
int ShowModal(QDialog& dialog, const QString& name, const std::function<void(QDialog*)>& drive) {
    const auto ran = WhenShown(name, [&](QDialog* shown) {
        if (shown == &dialog) {
            drive(shown);
        } else {
            QTest::qFail("not the active modal window", __FILE__, __LINE__);
        }
    });
    const int result = dialog.exec();
    if (!*ran) {
        QTest::qFail("closed before the test could drive it", __FILE__, __LINE__);
    }
    return result;
}

void VerifyCollectionClean() {
    const CollectionCheck::Report report = CollectionCheck::Check(*modDatabase::Connection);
    for (const CollectionCheck::Finding& finding : report.findings) {
        QVERIFY2(finding.keys.isEmpty() && finding.error.isEmpty(),
                 qPrintable(finding.description + QStringLiteral(": ") + finding.table));
    }
}

}  // namespace

class TestRecordsChanged : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { TestDatabase::IsolateEnvironment(); }

    void init() {
        ForgetPendingDrivers();
        QFile::remove(QStringLiteral("errors.log"));
        modGeneral::lngLastID = 12345;
        TestDatabase::OpenFresh(TestDatabase::CurrentKind());  // every test runs on both kinds
        TestDatabase::LoadSmallCollection();
    }

    void cleanup() {
        ForgetPendingDrivers();
        UiServices::SetMsgBoxHandler({});
        QVERIFY(LoggedErrors().isEmpty());
        modDatabase::Connection.reset();
    }

    // ---- the record entry dialog ----------------------------------------------------------

    void entryChangedMeanwhileIsAskedAbout_data() {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<int>("mode");
        QTest::addColumn<int>("id");
        QTest::addColumn<int>("groupID");
        QTest::addColumn<QString>("change");
        QTest::addColumn<QString>("query");
        QTest::addColumn<QString>("changed");  // the row after the other user's change
        QTest::addColumn<QString>("name");     // typed by the user
        QTest::addColumn<QString>("saved");    // the row after Yes
        for (const QString& kind : {TestDatabase::Sqlite, TestDatabase::Postgres}) {
            const QByteArray tag = kind.toUtf8();
            const char* k = tag.constData();
            QTest::addRow("%s group", k)
                << kind << 1 << 2 << 0
                << "UPDATE [Group] SET description = 'Torte' WHERE groupID = 2"
                << "SELECT * FROM [Group] WHERE groupID = 2;"
                << "2|Sladice|Torte"
                << "Sladice in torte"
                << "2|Sladice in torte|NULL";
            QTest::addRow("%s subgroup", k)
                << kind << 2 << 3 << 2 << "UPDATE [Type] SET name = 'Piškoti' WHERE typeID = 3"
                << "SELECT * FROM [Type] WHERE typeID = 3;"
                << "3|2|Piškoti|NULL"
                << "Kvašeno pecivo"
                << "3|2|Kvašeno pecivo|NULL";
            QTest::addRow("%s source", k)
                << kind << 3 << 2 << 0
                << "UPDATE [Source] SET name = 'Knjiga receptov' WHERE sourceID = 2"
                << "SELECT * FROM [Source] WHERE sourceID = 2;"
                << "2|Knjiga receptov|NULL"
                << "Moja knjiga"
                << "2|Moja knjiga|NULL";
            QTest::addRow("%s unit", k)
                << kind << 4 << 2 << 0
                << "UPDATE [Unit] SET description = 'jedilna' WHERE unitID = 2"
                << "SELECT * FROM [Unit] WHERE unitID = 2;"
                << "2|žlica|jedilna"
                << "žlička"
                << "2|žlička|NULL";
            QTest::addRow("%s ingredient", k)
                << kind << 5 << 4 << 0
                << "UPDATE [Ingredient] SET name = 'Temna čokolada' WHERE ingredientID = 4"
                << "SELECT * FROM [Ingredient] WHERE ingredientID = 4;"
                << "4|Temna čokolada|NULL"
                << "Mlečna čokolada"
                << "4|Mlečna čokolada|NULL";
        }
    }
    void entryChangedMeanwhileIsAskedAbout() {
        QFETCH(int, mode);
        QFETCH(int, id);
        QFETCH(int, groupID);
        QFETCH(QString, change);
        QFETCH(QString, query);
        QFETCH(QString, changed);
        QFETCH(QString, name);
        QFETCH(QString, saved);
        MessageRecorder messages;
        messages.Answer(UiServices::vbNo);
        frmAddRecord entry;
        entry.rtMode = mode;
        entry.lngID = id;
        entry.lngGroupID = groupID;
        const int result = ShowModal(entry, QStringLiteral("frmAddRecord"), [&](QDialog* dialog) {
            TestDatabase::Exec(change);
            NameBox(dialog)->setText(name);
            QTest::mouseClick(Button(dialog, "cmdOK"), Qt::LeftButton);
            QVERIFY(dialog->isVisible());
            QCOMPARE(messages.Texts(), QStringList{RecordChanged});
            QCOMPARE(messages.Messages()[0].style, Question);
            QCOMPARE(messages.Messages()[0].title, QStringLiteral("Morvena"));
            QCOMPARE(Rows(query), QStringList{changed});
            QCOMPARE(NameBox(dialog)->text(), name);
            QCOMPARE(dialog->cursor().shape(), Qt::ArrowCursor);
            QCOMPARE(modGeneral::lngLastID, 12345);
            // Asked again; Yes saves what the user typed.
            messages.Clear();
            QTest::mouseClick(Button(dialog, "cmdOK"), Qt::LeftButton);
            QVERIFY(!dialog->isVisible());
        });
        QCOMPARE(result, int(QDialog::Accepted));
        QCOMPARE(messages.Texts(), QStringList{RecordChanged});
        QCOMPARE(Rows(query), QStringList{saved});
        QCOMPARE(modGeneral::lngLastID, id);
    }

    // The same values written again are no change.
    void entryWrittenAgainAsItWasAsksNothing_data() { TestDatabase::AddKinds(); }
    void entryWrittenAgainAsItWasAsksNothing() {
        MessageRecorder messages;
        frmAddRecord entry;
        entry.rtMode = 4;
        entry.lngID = 2;
        ShowModal(entry, QStringLiteral("frmAddRecord"), [&](QDialog* dialog) {
            TestDatabase::Exec(QStringLiteral(
                "UPDATE [Unit] SET name = 'žlica', description = NULL WHERE unitID = 2"));
            NameBox(dialog)->setText(QStringLiteral("žlička"));
            QTest::mouseClick(Button(dialog, "cmdOK"), Qt::LeftButton);
            QVERIFY(!dialog->isVisible());
        });
        QCOMPARE(messages.Texts(), QStringList());
        QCOMPARE(Rows(UnitsQuery), (QStringList{"1|g|NULL", "2|žlička|NULL"}));
    }

    void entryChangedDuringTheQuestionIsAskedAgain_data() { TestDatabase::AddKinds(); }
    void entryChangedDuringTheQuestionIsAskedAgain() {
        QStringList said;
        UiServices::SetMsgBoxHandler([&](const QString& text, int style, const QString&) {
            said << QString::number(style) + QLatin1Char(' ') + text;
            if (said.size() == 1) {
                TestDatabase::Exec(
                    QStringLiteral("UPDATE [Unit] SET description = 'velika' WHERE unitID = 2"));
            }
            return int(UiServices::vbYes);
        });
        frmAddRecord entry;
        entry.rtMode = 4;
        entry.lngID = 2;
        ShowModal(entry, QStringLiteral("frmAddRecord"), [&](QDialog* dialog) {
            TestDatabase::Exec(
                QStringLiteral("UPDATE [Unit] SET description = 'jedilna' WHERE unitID = 2"));
            NameBox(dialog)->setText(QStringLiteral("žlička"));
            QTest::mouseClick(Button(dialog, "cmdOK"), Qt::LeftButton);
            QVERIFY(!dialog->isVisible());
        });
        const QString asked = QStringLiteral("36 ") + RecordChanged;
        QCOMPARE(said, (QStringList{asked, asked}));
        QCOMPARE(Rows(UnitsQuery), (QStringList{"1|g|NULL", "2|žlička|NULL"}));
        QCOMPARE(modGeneral::lngLastID, 2);
    }

    // ---- the list editor ------------------------------------------------------------------

    void deletingAnEntryChangedMeanwhileAsks_data() { TestDatabase::AddKinds(); }
    void deletingAnEntryChangedMeanwhileAsks() {
        QCOMPARE(TestDatabase::Insert("Unit", {{"name", "dl"}}), 3);
        MessageRecorder messages;
        frmEditList editor;
        editor.rtMode = 4;
        ShowModal(editor, QStringLiteral("frmEditList"), [&](QDialog* dialog) {
            QCOMPARE(Entries(dialog), (QStringList{"I3 dl", "I1 g", "I2 žlica"}));
            ClickEntry(dialog, QStringLiteral("I3"));
            TestDatabase::Exec(QStringLiteral("UPDATE [Unit] SET name = 'dcl' WHERE unitID = 3"));
            messages.Answer(UiServices::vbYes);
            messages.Answer(UiServices::vbNo);
            QTest::mouseClick(Button(dialog, "cmdDelete"), Qt::LeftButton);
            QCOMPARE(messages.Texts(), (QStringList{ReallyDelete, DeleteChanged}));
            QCOMPARE(messages.Messages()[1].style, Question);
            QCOMPARE(messages.Messages()[1].title, QStringLiteral("Morvena"));
            // Kept, and listed as it is now.
            QCOMPARE(Rows(UnitsQuery), (QStringList{"1|g|NULL", "2|žlica|NULL", "3|dcl|NULL"}));
            QCOMPARE(Entries(dialog), (QStringList{"I3 dcl", "I1 g", "I2 žlica"}));
            QCOMPARE(SelectedKey(dialog), QStringLiteral("I3"));
            QCOMPARE(dialog->cursor().shape(), Qt::ArrowCursor);
            // Changed once more; this time Yes.
            TestDatabase::Exec(
                QStringLiteral("UPDATE [Unit] SET description = 'decilitri' WHERE unitID = 3"));
            messages.Clear();
            QTest::mouseClick(Button(dialog, "cmdDelete"), Qt::LeftButton);
            QCOMPARE(messages.Texts(), (QStringList{ReallyDelete, DeleteChanged}));
            QCOMPARE(Entries(dialog), (QStringList{"I1 g", "I2 žlica"}));
            QCOMPARE(SelectedKey(dialog), QString());
        });
        QCOMPARE(Rows(UnitsQuery), (QStringList{"1|g|NULL", "2|žlica|NULL"}));
        QCOMPARE(Rows(LinesQuery), Lines);
        VerifyCollectionClean();
    }

    // A record in use hands its lines over first; the question comes when it is to be deleted.
    void deletingAUsedEntryChangedMeanwhileAsks_data() { TestDatabase::AddKinds(); }
    void deletingAUsedEntryChangedMeanwhileAsks() {
        MessageRecorder messages;
        frmEditList editor;
        editor.rtMode = 4;
        ShowModal(editor, QStringLiteral("frmEditList"), [&](QDialog* dialog) {
            ClickEntry(dialog, QStringLiteral("I2"));
            TestDatabase::Exec(
                QStringLiteral("UPDATE [Unit] SET name = 'velika žlica' WHERE unitID = 2"));
            WhenShown(QStringLiteral("frmChangeLink"), [](QDialog* replacement) {
                Control<QComboBox>(replacement, "cmbReplacement")->setCurrentIndex(0);  // g
                QTest::mouseClick(Button(replacement, "cmdOK"), Qt::LeftButton);
            });
            QTest::mouseClick(Button(dialog, "cmdDelete"), Qt::LeftButton);
            QCOMPARE(messages.Texts(), (QStringList{ReallyDelete, DeleteChanged}));
            QCOMPARE(Entries(dialog), QStringList{"I1 g"});
        });
        QCOMPARE(Rows(UnitsQuery), QStringList{"1|g|NULL"});
        QCOMPARE(Rows(LinesQuery), (QStringList{"1|1|1|1|100", "2|4|2|1|500", "3|4|3|1|200",
                                                "4|2|1|1|300", "5|3|4|1|2"}));
        VerifyCollectionClean();
    }

    void entryChangedDuringTheDeleteQuestionIsAskedAgain_data() { TestDatabase::AddKinds(); }
    void entryChangedDuringTheDeleteQuestionIsAskedAgain() {
        QCOMPARE(TestDatabase::Insert("Unit", {{"name", "dl"}}), 3);
        QStringList said;
        UiServices::SetMsgBoxHandler([&](const QString& text, int, const QString&) {
            said << text;
            if (said.size() == 2) {
                TestDatabase::Exec(
                    QStringLiteral("UPDATE [Unit] SET name = 'cl' WHERE unitID = 3"));
            }
            return int(UiServices::vbYes);
        });
        frmEditList editor;
        editor.rtMode = 4;
        ShowModal(editor, QStringLiteral("frmEditList"), [&](QDialog* dialog) {
            ClickEntry(dialog, QStringLiteral("I3"));
            TestDatabase::Exec(QStringLiteral("UPDATE [Unit] SET name = 'dcl' WHERE unitID = 3"));
            QTest::mouseClick(Button(dialog, "cmdDelete"), Qt::LeftButton);
            QCOMPARE(Entries(dialog), (QStringList{"I1 g", "I2 žlica"}));
        });
        QCOMPARE(said, (QStringList{ReallyDelete, DeleteChanged, DeleteChanged}));
        QCOMPARE(Rows(UnitsQuery), (QStringList{"1|g|NULL", "2|žlica|NULL"}));
    }
};

QTEST_MAIN(TestRecordsChanged)
#include "tst_records_changed.moc"
