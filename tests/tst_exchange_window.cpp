// "Uvozi recepte..." and "Izvozi recepte..." of the main window's Dokument menu: files from the
// file dialog into the subgroup selected (or chosen when none is), the report, the tree rebuilt
// with the first imported recipe selected; the node selected written out in the format its
// file name asks for.
#include <QAction>
#include <QComboBox>
#include <QDialog>
#include <QDir>
#include <QFile>
#include <QInputDialog>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTest>
#include <QTreeView>
#include <QTreeWidget>

#include "core/modGeneral.h"
#include "core/ui/UiServices.h"
#include "main/frmMain.h"
#include "tests/support/DialogDriver.h"
#include "tests/support/MessageRecorder.h"
#include "tests/support/TestDatabase.h"
#include "tests/support/ToolRun.h"

using TestDatabase::Rows;

namespace {

const char* const Recipe =
    "MMMMM----- Recipe via Meal-Master (tm) v8.02\r\n"
    "\r\n"
    "      Title: Kruhova juha\r\n"
    "\r\n"
    "    200 g  kruh\r\n"
    "      1 l  voda\r\n"
    "\r\n"
    "  Kuhamo pol ure.\r\n"
    "\r\n"
    "MMMMM\r\n";

// The dialogs answer as the test says and tell what they were asked.
struct Answers {
    Answers() {
        UiServices::SetFilesDialogHandler([this](const UiServices::FileDialogRequest& request) {
            filesTitle = request.title;
            return files.isEmpty() ? std::nullopt : std::optional<QStringList>(files);
        });
        UiServices::SetFileDialogHandler([this](const UiServices::FileDialogRequest& request) {
            saveTitle = request.title;
            return saveAs.isEmpty() ? std::nullopt : std::optional<QString>(saveAs);
        });
        UiServices::SetReportHandler([this](const QString& title, const QString& text, QWidget*) {
            reports << title + QLatin1Char('\n') + text;
        });
    }
    ~Answers() {
        UiServices::SetFilesDialogHandler({});
        UiServices::SetFileDialogHandler({});
        UiServices::SetReportHandler({});
    }

    QStringList files;
    QString saveAs;
    QString filesTitle;
    QString saveTitle;
    QStringList reports;
};

std::unique_ptr<frmMain> Open() {
    TestDatabase::OpenFresh(TestDatabase::Sqlite);
    TestDatabase::LoadSmallCollection();
    modGeneral::TempFilename = TestDatabase::WorkFolder() + QStringLiteral("/page.html");
    return std::make_unique<frmMain>();
}

void Select(frmMain& window, const QString& key) {
    window.tvRecipes->setCurrentIndex(key.isEmpty() ? QModelIndex() : window.NodeOfKey(key));
}

void Trigger(frmMain& window, const char* name) { window.findChild<QAction*>(name)->trigger(); }

}  // namespace

class TestExchangeWindow : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { TestDatabase::IsolateEnvironment(); }
    void cleanup() { DialogDriver::ForgetPendingDrivers(); }

    void importsIntoTheSelectedSubgroup() {
        auto window = Open();
        Answers answers;
        const QString path = ToolRun::WriteWork(QStringLiteral("juha.mmf"), Recipe);
        answers.files = {path};
        Select(*window, QStringLiteral("T2"));
        Trigger(*window, "mnuDocumentImport");
        QCOMPARE(answers.filesTitle, QStringLiteral("Uvozi recepte"));
        QCOMPARE(answers.reports,
                 QStringList{
                     QStringLiteral("Uvoz receptov\nDatoteka %1 (MealMaster)\n"
                                    "  Najdeni recepti: 1, uvoženi: 1, preskočeni: 0\n"
                                    "Skupaj: datoteke 1, neprebrane datoteke 0, uvoženi recepti 1, "
                                    "preskočeni recepti 0.\n")
                         .arg(path)});
        QCOMPARE(Rows("SELECT recipeID, typeID, title FROM [Recipe] WHERE recipeID > 3"),
                 QStringList{"4|2|Kruhova juha"});
        QCOMPARE(modGeneral::ItemKey(window->tvRecipes->currentIndex()), QStringLiteral("R4"));
        QCOMPARE(window->tvRecipes->currentIndex().data().toString(),
                 QStringLiteral("Kruhova juha"));
        QCOMPARE(modGeneral::ItemKey(window->tvRecipes->currentIndex().parent()),
                 QStringLiteral("T2"));

        // A recipe selected: its subgroup; a second import adds nothing and keeps the tree.
        Select(*window, QStringLiteral("R4"));
        Trigger(*window, "mnuDocumentImport");
        QVERIFY(answers.reports.last().contains(
            QStringLiteral("Preskočen »Kruhova juha«: enak recept je že v zbirki")));
        QCOMPARE(Rows("SELECT COUNT(*) FROM [Recipe]"), QStringList{"4"});
        QCOMPARE(modGeneral::ItemKey(window->tvRecipes->currentIndex()), QStringLiteral("T2"));
    }

    void asksForASubgroupWhenNoneIsSelected() {
        auto window = Open();
        Answers answers;
        answers.files = {ToolRun::WriteWork(QStringLiteral("juha.mmf"), Recipe)};
        QStringList offered;
        QString proposed;
        const auto shown =
            DialogDriver::WhenShown(QStringLiteral("dlgImportType"), [&](QDialog* dialog) {
                auto* input = qobject_cast<QInputDialog*>(dialog);
                offered = input->comboBoxItems();
                proposed = input->textValue();
                input->setTextValue(QStringLiteral("Juhe – Zelenjavne juhe"));
                input->accept();
            });
        Select(*window, QStringLiteral("G2"));
        Trigger(*window, "mnuDocumentImport");
        QVERIFY(*shown);
        QCOMPARE(proposed, QStringLiteral("Sladice – Pecivo"));  // of the group selected
        QCOMPARE(offered,
                 (QStringList{"Juhe – Mesne juhe", "Juhe – Zelenjavne juhe", "Sladice – Pecivo"}));
        QCOMPARE(Rows("SELECT typeID FROM [Recipe] WHERE recipeID = 4"), QStringList{"2"});
        QCOMPARE(modGeneral::ItemKey(window->tvRecipes->currentIndex()), QStringLiteral("R4"));

        // Cancelled: nothing is imported.
        DialogDriver::WhenShown(QStringLiteral("dlgImportType"),
                                [](QDialog* dialog) { dialog->reject(); });
        Select(*window, QString());
        answers.files = {ToolRun::WriteWork(QStringLiteral("druga.mmf"),
                                            QByteArray(Recipe).replace("Kruhova", "Druga"))};
        Trigger(*window, "mnuDocumentImport");
        QCOMPARE(Rows("SELECT COUNT(*) FROM [Recipe]"), QStringList{"4"});
        QCOMPARE(answers.reports.size(), 1);
    }

    void exportsTheSelectedNode() {
        auto window = Open();
        Answers answers;
        MessageRecorder messages;
        answers.saveAs = TestDatabase::WorkFolder() + QStringLiteral("/juhe.json");
        Select(*window, QStringLiteral("G1"));
        Trigger(*window, "mnuDocumentExport");
        QCOMPARE(answers.saveTitle, QStringLiteral("Izvozi recepte"));
        QCOMPARE(messages.Texts(),
                 QStringList{QStringLiteral("Izvoženi recepti: 2\n") + answers.saveAs});
        QFile json(answers.saveAs);
        QVERIFY(json.open(QIODevice::ReadOnly));
        const QJsonArray recipes = QJsonDocument::fromJson(json.readAll()).array();
        QCOMPARE(recipes.size(), 2);
        QCOMPARE(recipes.at(0)[QLatin1String("name")].toString(), QStringLiteral("Goveja juha"));
        QCOMPARE(recipes.at(1)[QLatin1String("name")].toString(),
                 QStringLiteral("Korenčkova juha"));

        // Nothing selected: every recipe; ".cook": a folder of Cooklang files.
        messages.Clear();
        Select(*window, QString());
        answers.saveAs = TestDatabase::WorkFolder() + QStringLiteral("/vse.cook");
        Trigger(*window, "mnuDocumentExport");
        const QString folder = TestDatabase::WorkFolder() + QStringLiteral("/vse");
        QCOMPARE(messages.Texts(), QStringList{QStringLiteral("Izvoženi recepti: 3\n") + folder});
        QCOMPARE(QDir(folder).entryList(QDir::Files, QDir::Name),
                 (QStringList{"Goveja juha.cook", "Korenčkova juha.cook", "čokoladna torta.cook"}));
    }
};

QTEST_MAIN(TestExchangeWindow)
#include "tst_exchange_window.moc"
