// The replacement dialog on the real widgets: its caption and explanation, the candidates in name
// order without the record being deleted, "Potrdi" without a choice, the rewriting of every
// referring row, "Prekliči", the close box and Escape, a table holding only the record being
// deleted, failures on the error path, and the count that the list editor passes in.
#include <sqlite3.h>

#include <QApplication>
#include <QComboBox>
#include <QDeadlineTimer>
#include <QFile>
#include <QLabel>
#include <QPushButton>
#include <QRegularExpression>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>
#include <functional>
#include <memory>

#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "core/ui/UiServices.h"
#include "lists/frmChangeLink.h"
#include "lists/frmEditList.h"
#include "tests/support/DialogDriver.h"
#include "tests/support/MessageRecorder.h"
#include "tests/support/TestDatabase.h"

using TestDatabase::Rows;
using namespace DialogDriver;

namespace {

const QString Title = QStringLiteral("Morvena");
constexpr int InformationOK = UiServices::vbOKOnly + UiServices::vbInformation;
constexpr int Question = UiServices::vbYesNo + UiServices::vbQuestion;
constexpr int Exclamation = UiServices::vbExclamation;
const QString UnexpectedError = QStringLiteral(
    "Prišlo je do nepričakovane napake.\r\n\r\nOpis napake v datoteki errors.log sporočite "
    "avtorju.");
const QString ChooseReplacement = QStringLiteral("Izbrati morate nadomestni zapis.");
const QString ReallyDelete = QStringLiteral("Ali res želite izbrisati zapis?");

QString InUseText(int count) {
    return QStringLiteral(
               "Izbrani zapis je uporabljen v %1 nadrejenih zapisih. Izberite zapis, s "
               "katerim želite izbrisanega v teh nadrejenih zapisih nadomestiti.")
        .arg(count);
}

QStringList ComboTexts(const QComboBox* combo) {
    QStringList texts;
    for (int i = 0; i < combo->count(); ++i) {
        texts << combo->itemText(i) + QLatin1Char('=') + combo->itemData(i).toString();
    }
    return texts;
}

const QString LinesQuery = QStringLiteral(
    "SELECT sectionIngredientID, sectionID, ingredientID, unitID, amount FROM "
    "[SectionIngredient] ORDER BY sectionIngredientID;");
const QString RecipesQuery =
    QStringLiteral("SELECT recipeID, typeID, sourceID, title FROM [Recipe] ORDER BY recipeID;");
// The lines of the small collection.
const QStringList Lines{"1|1|1|1|100", "2|4|2|1|500", "3|4|3|1|200", "4|2|1|1|300", "5|3|4|2|2"};
const QStringList Recipes{"1|1|1|Goveja juha", "2|2|NULL|Korenčkova juha", "3|3|2|čokoladna torta"};

}  // namespace

class TestChangeLink : public QObject {
    Q_OBJECT

private:
    // The inputs of the usual case: unit 1 (g), used by four ingredient lines.
    static void SetUnitInputs(frmChangeLink& dialog) {
        dialog.intCount = 4;
        dialog.lngID = 1;
        dialog.strTable = QStringLiteral("[Unit]");
        dialog.strFieldID = QStringLiteral("unitID");
        dialog.strRelTable = QStringLiteral("[SectionIngredient]");
        dialog.strRelFieldID = QStringLiteral("sectionIngredientID");
    }

    static void OpenCollection(const QString& kind) {
        TestDatabase::OpenFresh(kind);
        TestDatabase::LoadSmallCollection();
    }

    static void CheckUnchanged() {
        QCOMPARE(Rows(LinesQuery), Lines);
        QCOMPARE(Rows(RecipesQuery), Recipes);
        QCOMPARE(Rows(QStringLiteral("SELECT unitID, name FROM [Unit] ORDER BY unitID;")),
                 (QStringList{"1|g", "2|žlica"}));
    }

private Q_SLOTS:
    void initTestCase() { TestDatabase::IsolateEnvironment(); }

    void init() {
        DialogDriver::ForgetPendingDrivers();
        QFile::remove(QStringLiteral("errors.log"));
        UiServices::SetMousePointer(UiServices::vbDefault);
    }

    void cleanup() {
        DialogDriver::ForgetPendingDrivers();
        modDatabase::Connection.reset();
        QFile::remove(QStringLiteral("errors.log"));
    }

    void captionExplanationAndControls_data() {
        QTest::addColumn<int>("count");
        QTest::newRow("1") << 1;
        QTest::newRow("3") << 3;
        QTest::newRow("250") << 250;
        QTest::newRow("32767") << 32767;
    }
    void captionExplanationAndControls() {
        QFETCH(int, count);
        OpenCollection(TestDatabase::Sqlite);
        MessageRecorder messages;
        frmChangeLink dialog;
        SetUnitInputs(dialog);
        dialog.intCount = static_cast<qint16>(count);
        UiServices::SetMousePointer(UiServices::vbHourglass);  // as the caller leaves it
        const auto ran = WhenShown(QStringLiteral("frmChangeLink"), [&](QDialog* shown) {
            QCOMPARE(shown, &dialog);
            QVERIFY(shown->isModal());
            QCOMPARE(shown->windowTitle(), QStringLiteral("Zapis v uporabi"));
            QCOMPARE(Control<QLabel>(shown, "lblRecordInUse")->text(), InUseText(count));
            QCOMPARE(Button(shown, "cmdOK")->text(), QStringLiteral("Potrdi"));
            QCOMPARE(Button(shown, "cmdCancel")->text(), QStringLiteral("Prekliči"));
            QVERIFY(Button(shown, "cmdOK")->isDefault());
            QVERIFY(!Control<QComboBox>(shown, "cmbReplacement")->isEditable());
            QCOMPARE(UiServices::MousePointer(), int(UiServices::vbDefault));
        });
        dialog.exec();
        QVERIFY(*ran);
        QVERIFY(messages.Messages().isEmpty());
        QVERIFY(LoggedErrors().isEmpty());
    }

    void candidatesInNameOrderWithoutTheRecord_data() { TestDatabase::AddKinds(); }
    void candidatesInNameOrderWithoutTheRecord() {
        QFETCH(QString, kind);
        OpenCollection(kind);
        for (const char* name : {"cvetača", "čebula", "Ajdova moka", "Zelje", "žafran", "Cimet"}) {
            TestDatabase::Insert("Ingredient", {{"name", name}});
        }
        MessageRecorder messages;
        SqliteStatements statements;
        frmChangeLink dialog;
        dialog.intCount = 2;
        dialog.lngID = 1;  // moka
        dialog.strTable = QStringLiteral("[Ingredient]");
        dialog.strFieldID = QStringLiteral("ingredientID");
        dialog.strRelTable = QStringLiteral("[SectionIngredient]");
        dialog.strRelFieldID = QStringLiteral("sectionIngredientID");
        const auto ran = WhenShown(QStringLiteral("frmChangeLink"), [&](QDialog* shown) {
            auto* combo = Control<QComboBox>(shown, "cmbReplacement");
            QCOMPARE(ComboTexts(combo),
                     (QStringList{"Ajdova moka=7", "Cimet=10", "cvetača=5", "čebula=6",
                                  "Čokolada=4", "korenje=2", "krompir=3", "Zelje=8", "žafran=9"}));
            QCOMPARE(combo->currentIndex(), -1);
            QCOMPARE(combo->currentText(), QString());
        });
        const int result = dialog.exec();
        QVERIFY(*ran);
        QCOMPARE(result, ClosedByTest);
        if (statements.Active()) {
            QCOMPARE(statements.All(),
                     QStringList{"SELECT * FROM [Ingredient] WHERE ingredientID <> 1 ORDER BY "
                                 "name;"});
        }
        QVERIFY(messages.Messages().isEmpty());
        QVERIFY(LoggedErrors().isEmpty());
    }

    void okWithoutAChoiceKeepsTheDialogOpen_data() { TestDatabase::AddKinds(); }
    void okWithoutAChoiceKeepsTheDialogOpen() {
        QFETCH(QString, kind);
        OpenCollection(kind);
        MessageRecorder messages;
        frmChangeLink dialog;
        SetUnitInputs(dialog);
        const auto ran = WhenShown(QStringLiteral("frmChangeLink"), [&](QDialog* shown) {
            QTest::mouseClick(Button(shown, "cmdOK"), Qt::LeftButton);
            QVERIFY(shown->isVisible());
            QCOMPARE(messages.Messages().size(), 1);
            QCOMPARE(messages.Messages()[0].text, ChooseReplacement);
            QCOMPARE(messages.Messages()[0].style, InformationOK);
            QCOMPARE(messages.Messages()[0].title, Title);
            // Enter presses "Potrdi" too.
            QTest::keyClick(Control<QComboBox>(shown, "cmbReplacement"), Qt::Key_Return);
            QVERIFY(shown->isVisible());
            QCOMPARE(messages.Texts(), (QStringList{ChooseReplacement, ChooseReplacement}));
            QVERIFY(!dialog.booDelete);
            QTest::mouseClick(Button(shown, "cmdCancel"), Qt::LeftButton);
        });
        const int result = dialog.exec();
        QVERIFY(*ran);
        QCOMPARE(result, int(QDialog::Rejected));
        QVERIFY(!dialog.booDelete);
        CheckUnchanged();
        QVERIFY(LoggedErrors().isEmpty());
    }

    void onlyTheRecordItselfLeavesCancelAsTheWayOut_data() { TestDatabase::AddKinds(); }
    void onlyTheRecordItselfLeavesCancelAsTheWayOut() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        const qint32 unit = TestDatabase::Insert("Unit", {{"name", "ščep"}});
        TestDatabase::Insert(
            "SectionIngredient",
            {{"sectionID", 1}, {"ingredientID", 1}, {"unitID", unit}, {"amount", 1}});
        MessageRecorder messages;
        frmChangeLink dialog;
        SetUnitInputs(dialog);
        dialog.intCount = 1;
        dialog.lngID = unit;
        const auto ran = WhenShown(QStringLiteral("frmChangeLink"), [&](QDialog* shown) {
            auto* combo = Control<QComboBox>(shown, "cmbReplacement");
            QCOMPARE(combo->count(), 0);
            QTest::keyClick(combo, Qt::Key_Down);  // nothing to choose
            QCOMPARE(combo->currentIndex(), -1);
            for (int i = 0; i < 3; ++i) {
                QTest::mouseClick(Button(shown, "cmdOK"), Qt::LeftButton);
                QVERIFY(shown->isVisible());
            }
            QCOMPARE(messages.Texts(),
                     (QStringList{ChooseReplacement, ChooseReplacement, ChooseReplacement}));
            QTest::mouseClick(Button(shown, "cmdCancel"), Qt::LeftButton);
            QVERIFY(!shown->isVisible());
        });
        const int result = dialog.exec();
        QVERIFY(*ran);
        QCOMPARE(result, int(QDialog::Rejected));
        QVERIFY(!dialog.booDelete);
        QCOMPARE(Rows(QStringLiteral("SELECT unitID, name FROM [Unit];")),
                 QStringList{QStringLiteral("%1|ščep").arg(unit)});
        QCOMPARE(Rows(QStringLiteral("SELECT unitID FROM [SectionIngredient];")),
                 QStringList{QString::number(unit)});
        QVERIFY(LoggedErrors().isEmpty());
    }

    void okRewritesEveryReferringRow_data() {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("table");
        QTest::addColumn<QString>("field");
        QTest::addColumn<QString>("relTable");
        QTest::addColumn<QString>("relField");
        QTest::addColumn<int>("id");
        QTest::addColumn<QStringList>("candidates");
        QTest::addColumn<QString>("choice");
        QTest::addColumn<QString>("query");
        QTest::addColumn<QStringList>("expected");
        for (const QString& kind : {TestDatabase::Sqlite, TestDatabase::Postgres}) {
            QTest::addRow("%s unit g by žlica", qPrintable(kind))
                << kind << "[Unit]"
                << "unitID"
                << "[SectionIngredient]"
                << "sectionIngredientID" << 1 << QStringList{"žlica=2"} << "žlica" << LinesQuery
                << QStringList{"1|1|1|2|100", "2|4|2|2|500", "3|4|3|2|200", "4|2|1|2|300",
                               "5|3|4|2|2"};
            QTest::addRow("%s ingredient moka by Čokolada", qPrintable(kind))
                << kind << "[Ingredient]"
                << "ingredientID"
                << "[SectionIngredient]"
                << "sectionIngredientID" << 1 << QStringList{"Čokolada=4", "korenje=2", "krompir=3"}
                << "Čokolada" << LinesQuery
                << QStringList{"1|1|4|1|100", "2|4|2|1|500", "3|4|3|1|200", "4|2|4|1|300",
                               "5|3|4|2|2"};
            QTest::addRow("%s source Babičina kuharica by Knjiga", qPrintable(kind))
                << kind << "[Source]"
                << "sourceID"
                << "[Recipe]"
                << "recipeID" << 1 << QStringList{"Knjiga=2"} << "Knjiga" << RecipesQuery
                << QStringList{"1|1|2|Goveja juha", "2|2|NULL|Korenčkova juha",
                               "3|3|2|čokoladna torta"};
        }
    }
    void okRewritesEveryReferringRow() {
        QFETCH(QString, kind);
        QFETCH(QString, table);
        QFETCH(QString, field);
        QFETCH(QString, relTable);
        QFETCH(QString, relField);
        QFETCH(int, id);
        QFETCH(QStringList, candidates);
        QFETCH(QString, choice);
        QFETCH(QString, query);
        QFETCH(QStringList, expected);
        OpenCollection(kind);
        const QString recordQuery =
            QStringLiteral("SELECT * FROM %1 WHERE %2 = %3;").arg(table, field).arg(id);
        const QStringList record = Rows(recordQuery);
        MessageRecorder messages;
        SqliteStatements statements;
        frmChangeLink dialog;
        dialog.intCount = 9;  // shown only
        dialog.lngID = id;
        dialog.strTable = table;
        dialog.strFieldID = field;
        dialog.strRelTable = relTable;
        dialog.strRelFieldID = relField;
        const auto ran = WhenShown(QStringLiteral("frmChangeLink"), [&](QDialog* shown) {
            auto* combo = Control<QComboBox>(shown, "cmbReplacement");
            QCOMPARE(ComboTexts(combo), candidates);
            combo->setFocus();
            // Chosen with the keyboard: down to the entry.
            const int index = combo->findText(choice);
            QVERIFY(index >= 0);
            for (int i = 0; i <= index; ++i) {
                QTest::keyClick(combo, Qt::Key_Down);
            }
            QCOMPARE(combo->currentText(), choice);
            QTest::mouseClick(Button(shown, "cmdOK"), Qt::LeftButton);
            QVERIFY(!shown->isVisible());
        });
        const int result = dialog.exec();
        const QStringList run = statements.All();
        QVERIFY(*ran);
        QCOMPARE(result, int(QDialog::Accepted));
        QVERIFY(dialog.booDelete);
        QVERIFY(messages.Messages().isEmpty());
        QCOMPARE(Rows(query), expected);
        QCOMPARE(Rows(QStringLiteral("SELECT COUNT(*) FROM %1 WHERE %2 = %3;")
                          .arg(relTable, field)
                          .arg(id)),
                 QStringList{"0"});
        // The record itself is left for the caller to delete.
        QCOMPARE(Rows(recordQuery), record);
        if (statements.Active()) {
            QCOMPARE(run.filter(QRegularExpression(QStringLiteral("^SELECT"))),
                     (QStringList{QStringLiteral("SELECT * FROM %1 WHERE %2 <> %3 ORDER BY name;")
                                      .arg(table, field)
                                      .arg(id),
                                  QStringLiteral("SELECT * FROM %1 WHERE %2 = %3")
                                      .arg(relTable, field)
                                      .arg(id)}));
        }
        QVERIFY(LoggedErrors().isEmpty());
    }

    void cancelCloseBoxAndEscapeWriteNothing_data() {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("how");
        for (const QString& kind : {TestDatabase::Sqlite, TestDatabase::Postgres}) {
            for (const char* how : {"Prekliči", "close box", "Escape"}) {
                QTest::addRow("%s %s", qPrintable(kind), how) << kind << QString::fromUtf8(how);
            }
        }
    }
    void cancelCloseBoxAndEscapeWriteNothing() {
        QFETCH(QString, kind);
        QFETCH(QString, how);
        OpenCollection(kind);
        MessageRecorder messages;
        frmChangeLink dialog;
        SetUnitInputs(dialog);
        dialog.booDelete = true;  // left from an earlier showing
        const auto ran = WhenShown(QStringLiteral("frmChangeLink"), [&](QDialog* shown) {
            auto* combo = Control<QComboBox>(shown, "cmbReplacement");
            combo->setCurrentIndex(0);  // a choice made, then abandoned
            if (how == QStringLiteral("Prekliči")) {
                QTest::mouseClick(Button(shown, "cmdCancel"), Qt::LeftButton);
            } else if (how == QStringLiteral("close box")) {
                QVERIFY(shown->close());
            } else {
                QTest::keyClick(combo, Qt::Key_Escape);
            }
            QVERIFY(!shown->isVisible());
        });
        const int result = dialog.exec();
        QVERIFY(*ran);
        QCOMPARE(result, int(QDialog::Rejected));
        QVERIFY(!dialog.booDelete);
        QVERIFY(messages.Messages().isEmpty());
        CheckUnchanged();
        QVERIFY(LoggedErrors().isEmpty());
    }

    void failingCandidatesTakeTheErrorPath_data() { TestDatabase::AddKinds(); }
    void failingCandidatesTakeTheErrorPath() {
        QFETCH(QString, kind);
        OpenCollection(kind);
        MessageRecorder messages;
        frmChangeLink dialog;
        SetUnitInputs(dialog);
        dialog.strTable = QStringLiteral("[NoSuchTable]");
        UiServices::SetMousePointer(UiServices::vbHourglass);
        const auto ran = WhenShown(QStringLiteral("frmChangeLink"), [&](QDialog* shown) {
            QCOMPARE(Control<QLabel>(shown, "lblRecordInUse")->text(), InUseText(4));
            QCOMPARE(Control<QComboBox>(shown, "cmbReplacement")->count(), 0);
            QCOMPARE(UiServices::MousePointer(), int(UiServices::vbDefault));
            QTest::mouseClick(Button(shown, "cmdCancel"), Qt::LeftButton);
        });
        const int result = dialog.exec();
        QVERIFY(*ran);
        QCOMPARE(result, int(QDialog::Rejected));
        QCOMPARE(messages.Texts(), QStringList{UnexpectedError});
        QCOMPARE(messages.Messages()[0].style, Exclamation);
        QCOMPARE(messages.Messages()[0].title, Title);
        const QStringList logged = LoggedErrors();
        QCOMPARE(logged.size(), 1);
        QVERIFY2(logged[0].startsWith(
                     QStringLiteral("frmChangeLink:Form_Load->frmChangeLink:FillCmbReplacement->"
                                    "modDatabase:GetRecordset->")),
                 qPrintable(logged[0]));
        CheckUnchanged();
    }

    void failingRewriteKeepsTheDialogOpen_data() { TestDatabase::AddKinds(); }
    void failingRewriteKeepsTheDialogOpen() {
        QFETCH(QString, kind);
        OpenCollection(kind);
        MessageRecorder messages;
        frmChangeLink dialog;
        SetUnitInputs(dialog);
        dialog.strRelTable = QStringLiteral("[NoSuchTable]");
        const auto ran = WhenShown(QStringLiteral("frmChangeLink"), [&](QDialog* shown) {
            Control<QComboBox>(shown, "cmbReplacement")->setCurrentIndex(0);
            QTest::mouseClick(Button(shown, "cmdOK"), Qt::LeftButton);
            QVERIFY(shown->isVisible());
            QVERIFY(!dialog.booDelete);
            QCOMPARE(messages.Texts(), QStringList{UnexpectedError});
            QCOMPARE(messages.Messages()[0].style, Exclamation);
            const QStringList logged = LoggedErrors();
            QCOMPARE(logged.size(), 1);
            QVERIFY2(logged[0].startsWith(
                         QStringLiteral("frmChangeLink:cmdOK_Click->modDatabase:GetRecordset->")),
                     qPrintable(logged[0]));
            QTest::mouseClick(Button(shown, "cmdCancel"), Qt::LeftButton);
        });
        const int result = dialog.exec();
        QVERIFY(*ran);
        QCOMPARE(result, int(QDialog::Rejected));
        QVERIFY(!dialog.booDelete);
        CheckUnchanged();
    }

    // The list editor counts the referring rows, not the recipes: an ingredient used twice in
    // one recipe counts twice.
    void theCountIsTheNumberOfReferringRows_data() { TestDatabase::AddKinds(); }
    void theCountIsTheNumberOfReferringRows() {
        QFETCH(QString, kind);
        OpenCollection(kind);
        // korenje (2) a second time in section 4 of Korenčkova juha.
        TestDatabase::Insert("SectionIngredient",
                             {{"sectionID", 4}, {"ingredientID", 2}, {"unitID", 2}, {"amount", 3}});
        MessageRecorder messages;
        frmEditList editor;
        editor.rtMode = 5;
        bool replacementShown = false;
        const auto ran = WhenShown(QStringLiteral("frmEditList"), [&](QDialog* shown) {
            auto* list = Control<QTreeWidget>(shown, "lstRecords");
            modGeneral::SelectListItem(list, QStringLiteral("I2"));
            QCOMPARE(list->currentItem()->text(0), QStringLiteral("korenje"));
            WhenShown(QStringLiteral("frmChangeLink"), [&](QDialog* replacement) {
                replacementShown = true;
                QCOMPARE(Control<QLabel>(replacement, "lblRecordInUse")->text(), InUseText(2));
                auto* combo = Control<QComboBox>(replacement, "cmbReplacement");
                QCOMPARE(ComboTexts(combo), (QStringList{"Čokolada=4", "krompir=3", "moka=1"}));
                combo->setCurrentIndex(combo->findText(QStringLiteral("krompir")));
                QTest::mouseClick(Button(replacement, "cmdOK"), Qt::LeftButton);
            });
            QTest::mouseClick(Button(shown, "cmdDelete"), Qt::LeftButton);
            QVERIFY(replacementShown);
            QVERIFY(shown->isVisible());
        });
        editor.exec();
        QVERIFY(*ran);
        QVERIFY(replacementShown);
        QCOMPARE(messages.Texts(), QStringList{ReallyDelete});
        QCOMPARE(messages.Messages()[0].style, Question);
        QCOMPARE(Rows(LinesQuery), (QStringList{"1|1|1|1|100", "2|4|3|1|500", "3|4|3|1|200",
                                                "4|2|1|1|300", "5|3|4|2|2", "6|4|3|2|3"}));
        QCOMPARE(Rows(QStringLiteral("SELECT ingredientID, name FROM [Ingredient] ORDER BY "
                                     "ingredientID;")),
                 (QStringList{"1|moka", "3|krompir", "4|Čokolada"}));
        QVERIFY(LoggedErrors().isEmpty());
    }
};

QTEST_MAIN(TestChangeLink)
#include "tst_changelink.moc"
