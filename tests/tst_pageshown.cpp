// The page in the main window: a node click shows it afresh, also on the node already selected;
// the view keeps the recipe lists fitted to its width; printing in the ordinary situations
// (nothing shown, no printer, the dialog cancelled, a failing printer) keeps the user's page
// set-up and shows no unexpected error.
#include <QAction>
#include <QFile>
#include <QPrinter>
#include <QTest>
#include <QTextBlock>
#include <QTextBrowser>
#include <QTreeView>
#include <QTreeWidget>

#include "core/AppError.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "core/registry/modRegistry.h"
#include "core/ui/UiServices.h"
#include "display/PagePrinter.h"
#include "display/modDisplay.h"
#include "main/frmMain.h"
#include "tests/support/MessageRecorder.h"
#include "tests/support/TestDatabase.h"

namespace {

QString U(const char* utf8) { return QString::fromUtf8(utf8); }

const PagePrinter::PageSetup UsersSetup{QStringLiteral("Moja glava &p"),
                                        QStringLiteral("Moja noga")};

}  // namespace

class TestPageShown : public QObject {
    Q_OBJECT

private:
    QString PdfFile() const { return TestDatabase::WorkFolder() + QStringLiteral("/shown.pdf"); }

    std::unique_ptr<frmMain> Open(const QString& kind, bool withCollection = true) {
        TestDatabase::OpenFresh(kind);
        if (withCollection) {
            TestDatabase::LoadSmallCollection();
        }
        modGeneral::TempFilename = TestDatabase::WorkFolder() + QStringLiteral("/page.html");
        auto window = std::make_unique<frmMain>();
        window->show();
        window->activateWindow();
        if (!QTest::qWaitForWindowActive(window.get())) {
            return nullptr;
        }
        return window;
    }

    void SelectShown(frmMain& window, const QString& key) {
        window.tvRecipes->expandAll();
        window.tvRecipes->setCurrentIndex(window.NodeOfKey(key));
    }

    void CheckSetupIsTheUsers() {
        QCOMPARE(PagePrinter::ReadPageSetup().header, UsersSetup.header);
        QCOMPARE(PagePrinter::ReadPageSetup().footer, UsersSetup.footer);
    }

private Q_SLOTS:
    void initTestCase() { TestDatabase::IsolateEnvironment(); }
    void init() {
        QFile::remove(modRegistry::StoreFile(true));
        QFile::remove(modRegistry::StoreFile(false));
        QFile::remove(PdfFile());
        PagePrinter::WritePageSetup(UsersSetup);
    }
    void cleanup() {
        PagePrinter::SetPrinterPreparer({});
        UiServices::SetPrintDialogHandler({});
    }

    void selectedNodeShowsItsPageAfresh_data() {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("how");
        for (const QString& kind : {TestDatabase::Sqlite, TestDatabase::Postgres}) {
            for (const char* how : {"click", "Return", "Enter", "Space"}) {
                QTest::addRow("%s %s", qPrintable(kind), how) << kind << QString::fromLatin1(how);
            }
        }
    }
    void selectedNodeShowsItsPageAfresh() {
        QFETCH(QString, kind);
        QFETCH(QString, how);
        auto window = Open(kind);
        QVERIFY(window);
        MessageRecorder messages;
        SelectShown(*window, QStringLiteral("R1"));
        QVERIFY(window->webDisplay->toPlainText().contains(U("Vir: Babičina kuharica")));

        // The source is renamed (as the list editor does): the tree stays as it is.
        TestDatabase::Exec(U("UPDATE [Source] SET name = 'Stara kuharica' WHERE sourceID = 1;"));
        QVERIFY(window->webDisplay->toPlainText().contains(U("Vir: Babičina kuharica")));
        const QModelIndex node = window->tvRecipes->currentIndex();
        QCOMPARE(modGeneral::ItemKey(node), QStringLiteral("R1"));
        if (how == QLatin1String("click")) {
            const QPoint centre = window->tvRecipes->visualRect(node).center();
            QTest::mouseClick(window->tvRecipes->viewport(), Qt::LeftButton, {}, centre);
        } else {
            window->tvRecipes->setFocus();
            const Qt::Key key = how == QLatin1String("Return")  ? Qt::Key_Return
                                : how == QLatin1String("Enter") ? Qt::Key_Enter
                                                                : Qt::Key_Space;
            QTest::keyClick(window->tvRecipes, key);
        }
        QCOMPARE(modGeneral::ItemKey(window->tvRecipes->currentIndex()), QStringLiteral("R1"));
        QVERIFY2(window->webDisplay->toPlainText().contains(U("Vir: Stara kuharica")),
                 qPrintable(window->webDisplay->toPlainText()));
        QCOMPARE(messages.Texts(), QStringList());
    }

    // A click on another node shows that node's page (once: the file is written once).
    void clickOnAnotherNodeShowsItsPage_data() { TestDatabase::AddKinds(); }
    void clickOnAnotherNodeShowsItsPage() {
        QFETCH(QString, kind);
        auto window = Open(kind);
        QVERIFY(window);
        SelectShown(*window, QStringLiteral("R1"));
        const QModelIndex other = window->NodeOfKey(QStringLiteral("T2"));
        QTest::mouseClick(window->tvRecipes->viewport(), Qt::LeftButton, {},
                          window->tvRecipes->visualRect(other).center());
        QCOMPARE(modGeneral::ItemKey(window->tvRecipes->currentIndex()), QStringLiteral("T2"));
        QVERIFY(window->webDisplay->toPlainText().startsWith(U("Juhe - Zelenjavne juhe")));
    }

    // The recipe lists' numbers stand at the right edge of the view, also after it is resized.
    void listNumbersFollowTheViewsWidth() {
        auto window = Open(TestDatabase::Sqlite);
        QVERIFY(window);
        SelectShown(*window, QStringLiteral("G1"));
        for (const int width : {900, 600}) {
            window->resize(width, 500);
            QApplication::processEvents();
            const QTextBlock row = [&] {
                for (QTextBlock b = window->webDisplay->document()->begin(); b.isValid();
                     b = b.next()) {
                    if (b.text() == U("Goveja juha\t1")) {
                        return b;
                    }
                }
                return QTextBlock();
            }();
            QVERIFY(row.isValid());
            const QTextBlockFormat format = row.blockFormat();
            QCOMPARE(format.tabPositions().size(), 1);
            QCOMPARE(format.tabPositions()[0].position,
                     window->webDisplay->viewport()->width() -
                         2 * window->webDisplay->document()->documentMargin() -
                         format.leftMargin() - format.rightMargin());
        }
    }

    // Nothing shown (an empty database): both print commands print nothing, show nothing and
    // leave the page set-up as it was.
    void printingWithNothingShown() {
        auto window = Open(TestDatabase::Sqlite, false);
        QVERIFY(window);
        QCOMPARE(window->DisplayedAddress(), QStringLiteral("about:blank"));
        MessageRecorder messages;
        int dialogs = 0;
        int printers = 0;
        UiServices::SetPrintDialogHandler([&](QPrinter&, QWidget*) { return ++dialogs > 0; });
        PagePrinter::SetPrinterPreparer([&](QPrinter& printer) {
            ++printers;
            printer.setOutputFileName(PdfFile());
        });
        window->menus.Button(QStringLiteral("printRecipe"))->trigger();
        window->menus.mnuDocumentPrint->trigger();
        QCOMPARE(messages.Texts(), QStringList());
        QCOMPARE(dialogs, 0);
        QCOMPARE(printers, 0);
        QVERIFY(!QFile::exists(PdfFile()));
        CheckSetupIsTheUsers();
    }

    // No printer installed: the toolbar button opens the print dialog, which offers a PDF file.
    void toolbarWithoutPrinterOpensTheDialog() {
        auto window = Open(TestDatabase::Sqlite);
        QVERIFY(window);
        SelectShown(*window, QStringLiteral("R1"));
        MessageRecorder messages;
        PagePrinter::SetPrinterPreparer([](QPrinter& printer) {
            printer.setPrinterName(QString());  // as on a machine without printers
        });
        QStringList headersInDialog;
        UiServices::SetPrintDialogHandler([&](QPrinter& printer, QWidget*) {
            headersInDialog << PagePrinter::ReadPageSetup().header;
            printer.setOutputFormat(QPrinter::PdfFormat);
            printer.setOutputFileName(PdfFile());
            return true;
        });
        window->menus.Button(QStringLiteral("printRecipe"))->trigger();
        QCOMPARE(messages.Texts(), QStringList());
        QCOMPARE(headersInDialog, QStringList{PagePrinter::ProgramPageSetup.header});
        QVERIFY(QFile::exists(PdfFile()));
        CheckSetupIsTheUsers();
    }

    // With a printer the toolbar button prints at once, without the dialog.
    void toolbarWithAPrinterPrintsAtOnce() {
        auto window = Open(TestDatabase::Sqlite);
        QVERIFY(window);
        SelectShown(*window, QStringLiteral("R1"));
        PagePrinter::SetPrinterPreparer([this](QPrinter& printer) {
            printer.setOutputFormat(QPrinter::PdfFormat);
            printer.setOutputFileName(PdfFile());
        });
        int dialogs = 0;
        UiServices::SetPrintDialogHandler([&](QPrinter&, QWidget*) { return ++dialogs > 0; });
        window->menus.Button(QStringLiteral("printRecipe"))->trigger();
        QCOMPARE(dialogs, 0);
        QVERIFY(QFile::exists(PdfFile()));
        CheckSetupIsTheUsers();
    }

    // Cancelling the print dialog prints nothing and changes nothing.
    void cancelledDialogChangesNothing_data() {
        QTest::addColumn<bool>("toolbar");
        QTest::newRow("menu") << false;
        QTest::newRow("toolbar without printer") << true;
    }
    void cancelledDialogChangesNothing() {
        QFETCH(bool, toolbar);
        auto window = Open(TestDatabase::Sqlite);
        QVERIFY(window);
        SelectShown(*window, QStringLiteral("R1"));
        MessageRecorder messages;
        PagePrinter::SetPrinterPreparer([](QPrinter& printer) { printer.setPrinterName({}); });
        int dialogs = 0;
        UiServices::SetPrintDialogHandler([&](QPrinter&, QWidget*) { return ++dialogs < 0; });
        if (toolbar) {
            window->menus.Button(QStringLiteral("printRecipe"))->trigger();
        } else {
            window->menus.mnuDocumentPrint->trigger();
        }
        QCOMPARE(dialogs, 1);
        QCOMPARE(messages.Texts(), QStringList());
        QVERIFY(!QFile::exists(PdfFile()));
        CheckSetupIsTheUsers();
    }

    // A printer that cannot start is a real failure: the unexpected error, and still the
    // user's own page set-up back in place.
    void failingPrinterPutsThePageSetupBack() {
        auto window = Open(TestDatabase::Sqlite);
        QVERIFY(window);
        SelectShown(*window, QStringLiteral("R1"));
        MessageRecorder messages;
        PagePrinter::SetPrinterPreparer([this](QPrinter& printer) {
            printer.setOutputFormat(QPrinter::PdfFormat);
            printer.setOutputFileName(PdfFile() + QStringLiteral("/no/such/folder/x.pdf"));
        });
        window->menus.Button(QStringLiteral("printRecipe"))->trigger();
        QCOMPARE(messages.Texts(), QStringList{ErrorPath::UnexpectedErrorMessage});
        CheckSetupIsTheUsers();
    }
};

QTEST_MAIN(TestPageShown)
#include "tst_pageshown.moc"
