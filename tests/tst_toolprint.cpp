// morvena-tool print and book: pages printed to PDF as the program prints them, and cookbooks
// in the tree's order with pages counted over the whole book.
#include <QFile>
#include <QPrinter>
#include <QProcess>
#include <QRegularExpression>
#include <QTest>

#include "core/Windows1250.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "core/registry/modRegistry.h"
#include "display/PagePrinter.h"
#include "display/modDisplay.h"
#include "tests/support/TestDatabase.h"
#include "tests/support/ToolRun.h"

using ToolRun::Result;
using ToolRun::Tool;
using ToolRun::Work;

namespace {

QString U(const char* utf8) { return QString::fromUtf8(utf8); }

QString Output(const QString& program, const QStringList& arguments) {
    QProcess process;
    process.start(program, arguments);
    process.waitForFinished(60000);
    return QString::fromUtf8(process.readAllStandardOutput());
}

// The text of each page of a PDF file.
QStringList PdfPages(const QString& pdf) {
    QStringList pages =
        Output(QStringLiteral("pdftotext"), {QStringLiteral("-layout"), pdf, QStringLiteral("-")})
            .split(QLatin1Char('\f'));
    if (!pages.isEmpty() && pages.last().trimmed().isEmpty()) {
        pages.removeLast();
    }
    return pages;
}

// The header of each page: its first line, blanks between the parts made one.
QStringList Headers(const QStringList& pages) {
    QStringList headers;
    for (const QString& page : pages) {
        headers << page.trimmed().section(QLatin1Char('\n'), 0, 0).simplified();
    }
    return headers;
}

QString PageSize(const QString& pdf) {
    const QString info = Output(QStringLiteral("pdfinfo"), {pdf});
    return QRegularExpression(QStringLiteral("Page size:\\s+([0-9.]+ x [0-9.]+) pts"))
        .match(info)
        .captured(1);
}

}  // namespace

class TestToolPrint : public QObject {
    Q_OBJECT

private:
    // The tool's database: the file named by --database, or the server of the settings.
    QStringList UseDatabase(const QString& kind) {
        TestDatabase::OpenFresh(kind);
        TestDatabase::LoadSmallCollection();
        if (kind == TestDatabase::Sqlite) {
            return {QStringLiteral("--database"), modGeneral::DatabaseName};
        }
        using modRegistry::ProgramKey;
        modRegistry::SetRegistryLong(ProgramKey, QStringLiteral("DatabaseType"), 2, true);
        for (const auto& [name, value] : {std::pair{"ServerName", modGeneral::ServerName},
                                          std::pair{"DatabaseName", modGeneral::DatabaseName},
                                          std::pair{"Username", modGeneral::Username},
                                          std::pair{"Password", modGeneral::Password}}) {
            modRegistry::SetRegistryString(ProgramKey, QString::fromLatin1(name), value, true);
        }
        return {};
    }

private Q_SLOTS:
    void initTestCase() {
        TestDatabase::IsolateEnvironment();
        QVERIFY(QFile::exists(qEnvironmentVariable("MORVENA_TOOL")));
    }
    void init() { QFile::remove(modRegistry::StoreFile(true)); }

    // The tool's PDF holds the same text as the program's print of the same page.
    void printIsThePrintOfTheProgram_data() { TestDatabase::AddKinds(); }
    void printIsThePrintOfTheProgram() {
        QFETCH(QString, kind);
        const QStringList database = UseDatabase(kind);
        for (const QString& node :
             {QStringLiteral("R3"), QStringLiteral("T1"), QStringLiteral("G1")}) {
            QFile::remove(Work("tool.pdf"));
            const Result result =
                Tool(QStringList{"print", node.left(1), node.mid(1), "--pdf", Work("tool.pdf")} +
                     database);
            QCOMPARE(result.exitCode, 0);
            QCOMPARE(PageSize(Work("tool.pdf")), QStringLiteral("595 x 842"));

            modGeneral::TempFilename = Work("page.html");
            const QString page = node.startsWith('R')   ? modDisplay::RecipePage(3)
                                 : node.startsWith('T') ? modDisplay::TypePage(1)
                                                        : modDisplay::GroupPage(1);
            modDisplay::WriteDisplayFile(page);
            PagePrinter::WritePageSetup(PagePrinter::ProgramPageSetup);
            PagePrinter::SetPrinterPreparer([](QPrinter& printer) {
                printer.setOutputFormat(QPrinter::PdfFormat);
                printer.setOutputFileName(Work("program.pdf"));
                printer.setPageSize(QPageSize(QPageSize::A4));
            });
            QVERIFY(PagePrinter::PrintFile(modGeneral::TempFilename, false, nullptr));
            PagePrinter::SetPrinterPreparer({});
            const QStringList program = PdfPages(Work("program.pdf"));
            QCOMPARE(PdfPages(Work("tool.pdf")), program);
        }
        const QStringList pages = PdfPages(Work("tool.pdf"));
        QCOMPARE(Headers(pages), QStringList{U("Juhe Stran 1 od 1")});
        QVERIFY(pages[0].contains(U("Mesne juhe")));
    }

    void printOnLetterPaper() {
        const QStringList database = UseDatabase(TestDatabase::Sqlite);
        const Result result =
            Tool(QStringList{"print", "R", "1", "--pdf", Work("letter.pdf"), "--paper", "letter"} +
                 database);
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(PageSize(Work("letter.pdf")), QStringLiteral("612 x 792"));
        QCOMPARE(Headers(PdfPages(Work("letter.pdf"))),
                 QStringList{U("1 - Goveja juha Stran 1 od 1")});
    }

    void printRefusesBadArguments_data() {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("exitCode");
        QTest::newRow("no pdf") << QStringList{"print", "R", "1"} << 2;
        QTest::newRow("kind") << QStringList{"print", "X", "1", "--pdf", "x.pdf"} << 2;
        QTest::newRow("paper") << QStringList{"print", "R", "1", "--pdf", "x.pdf", "--paper", "a3"}
                               << 2;
        QTest::newRow("book both")
            << QStringList{"book", "--pdf", "x.pdf", "--group", "1", "--type", "1"} << 2;
        QTest::newRow("book no pdf") << QStringList{"book"} << 2;
    }
    void printRefusesBadArguments() {
        QFETCH(QStringList, arguments);
        QFETCH(int, exitCode);
        const Result result = Tool(arguments);
        QCOMPARE(result.exitCode, exitCode);
        QVERIFY(result.err.contains(QStringLiteral("(morvena-tool --help)")));
    }

    void printOfAMissingRecordFails() {
        const QStringList database = UseDatabase(TestDatabase::Sqlite);
        const Result result =
            Tool(QStringList{"print", "R", "99", "--pdf", Work("missing.pdf")} + database);
        QCOMPARE(result.exitCode, 1);
        QVERIFY2(result.err.contains(QStringLiteral("No current record")), qPrintable(result.err));
        QVERIFY(!QFile::exists(Work("missing.pdf")));
    }

    // The whole collection: each group, then each subgroup with its recipes, in the tree's
    // order, each page on its own sheets, numbered over the whole book.
    void bookOfTheWholeCollection_data() { TestDatabase::AddKinds(); }
    void bookOfTheWholeCollection() {
        QFETCH(QString, kind);
        const QStringList database = UseDatabase(kind);
        const Result result = Tool(QStringList{"book", "--pdf", Work("book.pdf")} + database);
        QCOMPARE(result.exitCode, 0);
        QVERIFY2(result.err.contains(U("Natisnjeno 8 od 8 strani")), qPrintable(result.err));
        const QStringList pages = PdfPages(Work("book.pdf"));
        const QStringList titles{U("Juhe"),
                                 U("Juhe - Mesne juhe"),
                                 U("1 - Goveja juha"),
                                 U("Juhe - Zelenjavne juhe"),
                                 U("2 - Korenčkova juha"),
                                 U("Sladice"),
                                 U("Sladice - Pecivo"),
                                 U("3 - čokoladna torta")};
        QStringList expected;
        for (int i = 0; i < titles.size(); ++i) {
            expected << U("%1 Stran %2 od 8").arg(titles[i]).arg(i + 1);
        }
        QCOMPARE(Headers(pages), expected);
        QVERIFY(pages[2].contains(U("Recept št. 1")));
        QVERIFY(!pages[2].contains(U("Korenčkova juha")));
        QVERIFY(pages[7].contains(U("Stopimo ČOKOLADO.")));
    }

    void bookOfOneGroupOrSubgroup_data() {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QStringList>("option");
        QTest::addColumn<QStringList>("titles");
        for (const QString& kind : {TestDatabase::Sqlite, TestDatabase::Postgres}) {
            QTest::addRow("%s group", qPrintable(kind))
                << kind << QStringList{"--group", "2"}
                << QStringList{U("Sladice"), U("Sladice - Pecivo"), U("3 - čokoladna torta")};
            QTest::addRow("%s type", qPrintable(kind))
                << kind << QStringList{"--type", "2"}
                << QStringList{U("Juhe - Zelenjavne juhe"), U("2 - Korenčkova juha")};
        }
    }
    void bookOfOneGroupOrSubgroup() {
        QFETCH(QString, kind);
        QFETCH(QStringList, option);
        QFETCH(QStringList, titles);
        const QStringList database = UseDatabase(kind);
        const Result result =
            Tool(QStringList{"book", "--pdf", Work("part.pdf")} + option + database);
        QCOMPARE(result.exitCode, 0);
        QStringList expected;
        for (int i = 0; i < titles.size(); ++i) {
            expected << U("%1 Stran %2 od %3").arg(titles[i]).arg(i + 1).arg(titles.size());
        }
        QCOMPARE(Headers(PdfPages(Work("part.pdf"))), expected);
    }

    // A page longer than a sheet takes several sheets; the next page starts on a new one.
    void longPagesCountInTheBook() {
        const QStringList database = UseDatabase(TestDatabase::Sqlite);
        QString steps;
        for (int i = 1; i <= 300; ++i) {
            steps += U("Korak %1.\r\n").arg(i);
        }
        TestDatabase::Exec(
            U("UPDATE [Section] SET instructions = '%1' WHERE sectionID = 4;").arg(steps));
        const Result result =
            Tool(QStringList{"book", "--pdf", Work("long.pdf"), "--type", "2"} + database);
        QCOMPARE(result.exitCode, 0);
        const QStringList headers = Headers(PdfPages(Work("long.pdf")));
        QVERIFY2(headers.size() >= 4, qPrintable(headers.join(QLatin1Char('|'))));
        const int count = int(headers.size());
        QCOMPARE(headers[0], U("Juhe - Zelenjavne juhe Stran 1 od %1").arg(count));
        for (int i = 1; i < count; ++i) {
            QCOMPARE(headers[i], U("2 - Korenčkova juha Stran %1 od %2").arg(i + 1).arg(count));
        }
        // The progress counts the two pages laid out, then the sheets printed, as the PDF has.
        QVERIFY2(result.err.contains(U("Postavljeno 2 od 2 strani")), qPrintable(result.err));
        QVERIFY2(result.err.contains(U("Natisnjeno %1 od %1 strani").arg(count)),
                 qPrintable(result.err));
        QVERIFY2(!result.err.contains(U("Natisnjeno 2 od 2 strani")), qPrintable(result.err));
    }
};

QTEST_MAIN(TestToolPrint)
#include "tst_toolprint.moc"
