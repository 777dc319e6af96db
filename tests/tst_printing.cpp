// Printing the display file: the codes of the page header and footer, the per-user page set-up
// values, and whole recipe pages printed to PDF and read back as text with pdftotext.
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QProcess>
#include <QRegularExpression>
#include <QTest>
#include <QUrl>
#include <QWidget>
#include <QtPrintSupport/QPrinter>

#include "core/AppError.h"
#include "core/registry/RegistryFile.h"
#include "core/registry/modRegistry.h"
#include "core/ui/UiServices.h"
#include "display/PagePrinter.h"
#include "tests/support/TestDatabase.h"

using PagePrinter::PageFacts;
using PagePrinter::PageSetup;

namespace {

QString U(const char* utf8) { return QString::fromUtf8(utf8); }

const QString PageSetupKey = QStringLiteral("Software\\Microsoft\\Internet Explorer\\PageSetup");

// The letters outside ASCII that the page here uses, with their windows-1250 bytes.
const QHash<char32_t, char>& LetterBytes() {
    static const QHash<char32_t, char> table = {
        {U'č', '\xE8'}, {U'Č', '\xC8'}, {U'š', '\x9A'},
        {U'Š', '\x8A'}, {U'ž', '\x9E'}, {U'Ž', '\x8E'},
    };
    return table;
}

// Text in windows-1250 through the table above (a letter missing from it becomes SUB).
QByteArray Cp1250(const QString& text) {
    QByteArray bytes;
    for (const char32_t c : text.toUcs4()) {
        bytes += c < 0x80 ? static_cast<char>(c) : LetterBytes().value(c, '\x1A');
    }
    return bytes;
}

// The ingredients of the page, by turns: line n has the ingredient n % 6.
QStringList Ingredients() {
    return {U("g goveje pljučke"), U("kos korenja"), U("čebula"),
            U("šopek peteršilja"), U("žlička soli"), U("kos zelene")};
}

// A recipe page exactly as the display file holds it, long enough for two A4 pages.
QString RecipePage() {
    QString page =
        U("<html><head><title>12 - Goveja juha</title>"
          "<meta http-equiv=\"Content-Type\" content=\"text/html; charset=windows-1250\">"
          "<style type=\"text/css\"><!--body{font-family:verdana;font-size:12px;}"
          "h1{font-size:22px;}h2{font-size:18px;}h3{font-size:14px;margin-bottom:5px;}--></style>"
          "</head><body>Juhe - Mesne juhe<br>Recept št. 12<br>Vir: Babičina kuharica"
          "<h1>Goveja juha</h1><h3>Sestavine:</h3>");
    const QStringList ingredients = Ingredients();
    for (int i = 1; i <= 45; ++i) {
        page += QStringLiteral("%1 %2<br>").arg(i).arg(ingredients[i % ingredients.size()]);
    }
    page += U("<h3>Potek dela:</h3>");
    for (int i = 1; i <= 40; ++i) {
        page += U("Korak %1: meso in zelenjavo počasi kuhaj, peno poberi in juho "
                  "začini s soljo in žafranom.<br>")
                    .arg(i);
    }
    page += QStringLiteral("</table></body></html>");
    return page;
}

void WriteBytes(const QString& fileName, const QByteArray& bytes) {
    QFile file(fileName);
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    QCOMPARE(file.write(bytes), bytes.size());
}

// The text of a PDF file, one entry per page, from pdftotext in layout mode.
QStringList PdfPages(const QString& pdf) {
    QProcess process;
    process.start(QStringLiteral("pdftotext"),
                  {QStringLiteral("-layout"), pdf, QStringLiteral("-")});
    if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit ||
        process.exitCode() != 0) {
        qWarning("pdftotext failed: %s", process.readAllStandardError().constData());
        return {};
    }
    const QString text = QString::fromUtf8(process.readAllStandardOutput());
    // Every page ends with a form feed: the text after the last one must be empty.
    QStringList pages = text.split(QLatin1Char('\f'));
    if (pages.last().trimmed().isEmpty()) {
        pages.removeLast();
    } else {
        pages << QStringLiteral("<text after the last form feed>");
    }
    return pages;
}

// The line of a page text that matches the pattern (a regular expression), or "" when none does.
QString LineMatching(const QString& pageText, const QString& pattern) {
    const QRegularExpression expression(pattern);
    for (const QString& line : pageText.split(QLatin1Char('\n'))) {
        if (expression.match(line).hasMatch()) {
            return line;
        }
    }
    return QString();
}

PageFacts Facts() {
    PageFacts facts;
    facts.title = QStringLiteral("12 - Goveja juha");
    facts.address = QStringLiteral("file:///tmp/tmpRecipeDB.html");
    facts.date = QDate(2026, 3, 7);
    facts.page = 3;
    facts.pageCount = 11;
    return facts;
}

}  // namespace

class TestPrinting : public QObject {
    Q_OBJECT

private:
    QString PageFile() const { return TestDatabase::WorkFolder() + QStringLiteral("/page.html"); }
    QString PdfFile() const { return TestDatabase::WorkFolder() + QStringLiteral("/print.pdf"); }
    QString Address() const { return QUrl::fromLocalFile(PageFile()).toString(); }
    int m_preparerCalls = 0;

    // Directs every printer to the PDF file, on A4 paper.
    void PrintToPdf() {
        PagePrinter::SetPrinterPreparer([this](QPrinter& printer) {
            ++m_preparerCalls;
            printer.setOutputFormat(QPrinter::PdfFormat);
            printer.setOutputFileName(PdfFile());
            printer.setPageSize(QPageSize(QPageSize::A4));
        });
    }

private Q_SLOTS:
    void initTestCase() { TestDatabase::IsolateEnvironment(); }

    void init() {
        QFile::remove(modRegistry::StoreFile(false));
        QFile::remove(modRegistry::StoreFile(true));
        QFile::remove(PdfFile());
        m_preparerCalls = 0;
        WriteBytes(PageFile(), Cp1250(RecipePage()));
    }

    void cleanup() {
        PagePrinter::SetPrinterPreparer({});
        UiServices::SetPrintDialogHandler({});
    }

    // --- Codes of the header and footer ---

    void expand_data() {
        QTest::addColumn<QString>("codes");
        QTest::addColumn<QString>("left");
        QTest::addColumn<QString>("centre");
        QTest::addColumn<QString>("right");
        const QString title = Facts().title;
        const QString address = Facts().address;

        QTest::newRow("empty") << QString() << QString() << QString() << QString();
        QTest::newRow("plain text") << U("Kuharica") << U("Kuharica") << QString() << QString();
        QTest::newRow("title &w") << U("&w") << title << QString() << QString();
        QTest::newRow("page &p") << U("&p") << U("3") << QString() << QString();
        QTest::newRow("count &P") << U("&P") << U("11") << QString() << QString();
        QTest::newRow("address &u") << U("&u") << address << QString() << QString();
        QTest::newRow("date &d") << U("&d") << U("7. 3. 2026") << QString() << QString();
        QTest::newRow("literal &&") << U("&&") << U("&") << QString() << QString();
        QTest::newRow("&& before p") << U("&&p") << U("&p") << QString() << QString();
        QTest::newRow("&& before b") << U("A&&bB") << U("A&bB") << QString() << QString();
        QTest::newRow("&& then code") << U("a&&&p") << U("a&3") << QString() << QString();
        QTest::newRow("codes in text")
            << U("Šifra &p od &P, &d") << U("Šifra 3 od 11, 7. 3. 2026") << QString() << QString();
        QTest::newRow("codes side by side")
            << U("&p&P&w") << U("311") + title << QString() << QString();
        QTest::newRow("one &b") << U("L&bR") << U("L") << QString() << U("R");
        QTest::newRow("two &b") << U("L&bC&bR") << U("L") << U("C") << U("R");
        QTest::newRow("three &b") << U("L&bC&bR&bX") << U("L") << U("C") << U("RX");
        QTest::newRow("&b first") << U("&bR") << QString() << QString() << U("R");
        QTest::newRow("&b last") << U("L&b") << U("L") << QString() << QString();
        QTest::newRow("&b only") << U("&b") << QString() << QString() << QString();
        QTest::newRow("centre only") << U("&bC&b") << QString() << U("C") << QString();
        QTest::newRow("program header")
            << U("&w&bStran &p od &P") << title << QString() << U("Stran 3 od 11");
        QTest::newRow("default header")
            << U("&w&bPage &p of &P") << title << QString() << U("Page 3 of 11");
        QTest::newRow("default footer") << U("&u&b&d") << address << QString() << U("7. 3. 2026");
        QTest::newRow("all codes, three parts")
            << U("&w&b&p/&P&b&u &d") << title << U("3/11") << address + U(" 7. 3. 2026");
        // Codes outside the set are kept as they are, "&" included; so is a lone "&" at the end.
        QTest::newRow("unknown &x") << U("a&xb") << U("a&xb") << QString() << QString();
        QTest::newRow("unknown &t &T &D")
            << U("&t &T &D") << U("&t &T &D") << QString() << QString();
        QTest::newRow("upper-case &B is no separator")
            << U("L&BR") << U("L&BR") << QString() << QString();
        QTest::newRow("& and blank") << U("A & B") << U("A & B") << QString() << QString();
        QTest::newRow("lone & at the end") << U("Konec&") << U("Konec&") << QString() << QString();
        QTest::newRow("unknown before &b") << U("&q&b&p") << U("&q") << QString() << U("3");
    }
    void expand() {
        QFETCH(QString, codes);
        QFETCH(QString, left);
        QFETCH(QString, centre);
        QFETCH(QString, right);
        const QStringList parts = PagePrinter::Expand(codes, Facts());
        QCOMPARE(parts, QStringList({left, centre, right}));
    }

    void expandPutsInTextsWithoutExpandingThemAgain() {
        PageFacts facts = Facts();
        facts.title = U("Čaj &p &b &&");
        facts.address = U("file:///tmp/a&b.html");
        QCOMPARE(PagePrinter::Expand(U("&w|&u"), facts),
                 QStringList({U("Čaj &p &b &&|file:///tmp/a&b.html"), QString(), QString()}));
    }

    void expandDates_data() {
        QTest::addColumn<QDate>("date");
        QTest::addColumn<QString>("text");
        QTest::newRow("one digit each") << QDate(2026, 1, 5) << U("5. 1. 2026");
        QTest::newRow("two digits each") << QDate(2026, 12, 24) << U("24. 12. 2026");
        QTest::newRow("leap day") << QDate(2028, 2, 29) << U("29. 2. 2028");
    }
    void expandDates() {
        QFETCH(QDate, date);
        QFETCH(QString, text);
        PageFacts facts = Facts();
        facts.date = date;
        QCOMPARE(PagePrinter::Expand(U("&d"), facts).value(0), text);
    }

    void expandPageNumbers() {
        PageFacts facts = Facts();
        facts.page = 1;
        facts.pageCount = 1;
        QCOMPARE(PagePrinter::Expand(PagePrinter::ProgramPageSetup.header, facts).value(2),
                 U("Stran 1 od 1"));
        facts.page = 120;
        facts.pageCount = 1234;
        QCOMPARE(PagePrinter::Expand(PagePrinter::ProgramPageSetup.header, facts).value(2),
                 U("Stran 120 od 1234"));
    }

    void expandEmptyFacts() {
        PageFacts facts;
        facts.page = 1;
        facts.pageCount = 1;
        QCOMPARE(PagePrinter::Expand(U("[&w][&u][&d]"), facts),
                 QStringList({U("[][][]"), QString(), QString()}));
    }

    // --- Page set-up values ---

    void pageSetupConstants() {
        QCOMPARE(PagePrinter::PageSetupKey, PageSetupKey);
        QCOMPARE(PagePrinter::DefaultPageSetup.header, U("&w&bPage &p of &P"));
        QCOMPARE(PagePrinter::DefaultPageSetup.footer, U("&u&b&d"));
        QCOMPARE(PagePrinter::ProgramPageSetup.header, U("&w&bStran &p od &P"));
        QCOMPARE(PagePrinter::ProgramPageSetup.footer, QString());
    }

    void readPageSetupDefaults() {
        const PageSetup setup = PagePrinter::ReadPageSetup();
        QCOMPARE(setup.header, U("&w&bPage &p of &P"));
        QCOMPARE(setup.footer, U("&u&b&d"));
        // Reading creates nothing.
        QVERIFY(!QFileInfo::exists(modRegistry::StoreFile(false)));
        QVERIFY(!QFileInfo::exists(modRegistry::StoreFile(true)));
    }

    void readPageSetupDefaultsForEachMissingValue() {
        modRegistry::SetRegistryString(PageSetupKey, U("header"), U("Samo glava"), false);
        PageSetup setup = PagePrinter::ReadPageSetup();
        QCOMPARE(setup.header, U("Samo glava"));
        QCOMPARE(setup.footer, U("&u&b&d"));

        QFile::remove(modRegistry::StoreFile(false));
        modRegistry::SetRegistryString(PageSetupKey, U("footer"), U("Samo noga"), false);
        setup = PagePrinter::ReadPageSetup();
        QCOMPARE(setup.header, U("&w&bPage &p of &P"));
        QCOMPARE(setup.footer, U("Samo noga"));
    }

    void readPageSetupIgnoresMachineWideValues() {
        modRegistry::SetRegistryString(PageSetupKey, U("header"), U("Za vse"), true);
        QCOMPARE(PagePrinter::ReadPageSetup().header, U("&w&bPage &p of &P"));
    }

    void writeAndReadPageSetup_data() {
        QTest::addColumn<QString>("header");
        QTest::addColumn<QString>("footer");
        QTest::newRow("program's") << U("&w&bStran &p od &P") << QString();
        QTest::newRow("user's own") << U("Moj &w &p/&P") << U("&d&b&u");
        QTest::newRow("both empty") << QString() << QString();
        QTest::newRow("letters") << U("Kuharica Čebelica &p") << U("žlica & šopek");
    }
    void writeAndReadPageSetup() {
        QFETCH(QString, header);
        QFETCH(QString, footer);
        PagePrinter::WritePageSetup({header, footer});
        const PageSetup setup = PagePrinter::ReadPageSetup();
        QCOMPARE(setup.header, header);
        QCOMPARE(setup.footer, footer);
    }

    void pageSetupLivesInTheUserFile() {
        PagePrinter::WritePageSetup({U("Moj &w"), U("&d")});
        QVERIFY(QFileInfo::exists(modRegistry::StoreFile(false)));
        QVERIFY(!QFileInfo::exists(modRegistry::StoreFile(true)));

        const RegistryFile store = RegistryFile::Load(modRegistry::StoreFile(false));
        QVERIFY(store.HasKey(PageSetupKey));
        const RegistryFile::Value* header = store.FindValue(PageSetupKey, U("header"));
        const RegistryFile::Value* footer = store.FindValue(PageSetupKey, U("footer"));
        QVERIFY(header && footer);
        QCOMPARE(header->name, U("header"));
        QCOMPARE(header->type, RegistryFile::RegSz);
        QCOMPARE(header->text, U("Moj &w"));
        QCOMPARE(footer->name, U("footer"));
        QCOMPARE(footer->text, U("&d"));

        const QString file = QString::fromUtf8([&] {
            QFile f(modRegistry::StoreFile(false));
            return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
        }());
        QVERIFY2(file.contains(U("[Software\\Microsoft\\Internet Explorer\\PageSetup]")),
                 qPrintable(file));
        QVERIFY2(file.contains(U("\"header\"=\"Moj &w\"")), qPrintable(file));
    }

    void pageSetupOfTheProgramStoresAnEmptyFooter() {
        PagePrinter::WritePageSetup({U("x"), U("y")});
        PagePrinter::WritePageSetup(PagePrinter::ProgramPageSetup);
        const RegistryFile store = RegistryFile::Load(modRegistry::StoreFile(false));
        const RegistryFile::Value* footer = store.FindValue(PageSetupKey, U("footer"));
        QVERIFY(footer);
        QCOMPARE(footer->type, RegistryFile::RegSz);
        QCOMPARE(PagePrinter::ReadPageSetup().footer, QString());
        QCOMPARE(PagePrinter::ReadPageSetup().header, U("&w&bStran &p od &P"));
    }

    // --- Printing ---

    void pageFileIsWindows1250() {
        QFile file(PageFile());
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray bytes = file.readAll();
        QVERIFY(
            bytes.contains("Recept \x9A"
                           "t. 12"));            // š
        QVERIFY(bytes.contains("Babi\xE8ina"));  // č
        QVERIFY(bytes.contains("\x9El"));        // ž
        QVERIFY(!bytes.contains('\x1A'));
    }

    void printRecipeWithTheProgramsHeader() {
        PrintToPdf();
        PagePrinter::WritePageSetup(PagePrinter::ProgramPageSetup);
        QVERIFY(PagePrinter::PrintFile(PageFile(), false, nullptr));
        QCOMPARE(m_preparerCalls, 1);
        QVERIFY(QFileInfo::exists(PdfFile()));

        const QStringList pages = PdfPages(PdfFile());
        QCOMPARE(pages.size(), 2);
        const QString first = LineMatching(pages[0], U("12 - Goveja juha\\s+Stran 1 od 2\\s*$"));
        QVERIFY2(!first.isEmpty(), qPrintable(pages[0]));
        QVERIFY2(first.trimmed().startsWith(U("12 - Goveja juha")), qPrintable(first));
        const QString second = LineMatching(pages[1], U("12 - Goveja juha\\s+Stran 2 od 2\\s*$"));
        QVERIFY2(!second.isEmpty(), qPrintable(pages[1]));
        QVERIFY(!pages[0].contains(U("Stran 2 od 2")));
        QVERIFY(!pages[1].contains(U("Stran 1 od 2")));

        // The page's own text, with its letters, on the pages in order.
        QVERIFY2(pages[0].contains(U("Recept št. 12")), qPrintable(pages[0]));
        QVERIFY(pages[0].contains(U("Vir: Babičina kuharica")));
        QVERIFY(pages[0].contains(U("Goveja juha")));
        QVERIFY(pages[0].contains(U("Sestavine:")));
        QVERIFY(pages[0].contains(U("1 kos korenja")));
        QVERIFY(pages[0].contains(U("šopek peteršilja")));
        QVERIFY(pages[0].contains(U("žlička soli")));
        QVERIFY2(pages[1].contains(U("Korak 40: meso in zelenjavo počasi kuhaj")),
                 qPrintable(pages[1]));
        QVERIFY(pages[1].contains(U("žafranom")));

        // The footer is empty: no address, no date, nothing of the browser's defaults.
        const QString all = pages.join(QLatin1Char('\n'));
        QVERIFY2(!all.contains(U("file:")), qPrintable(all));
        QVERIFY(!all.contains(QDate::currentDate().toString(U("d. M. yyyy"))));
        QVERIFY(!all.contains(U("Page ")));
        QVERIFY(!all.contains(U("&")));

        // Printing leaves the page set-up as it found it.
        QCOMPARE(PagePrinter::ReadPageSetup().header, PagePrinter::ProgramPageSetup.header);
        QCOMPARE(PagePrinter::ReadPageSetup().footer, QString());
    }

    void everyLineIsPrintedOnce() {
        PrintToPdf();
        PagePrinter::WritePageSetup(PagePrinter::ProgramPageSetup);
        QVERIFY(PagePrinter::PrintFile(PageFile(), false, nullptr));
        const QStringList pages = PdfPages(PdfFile());
        QCOMPARE(pages.size(), 2);
        const QString all = pages.join(QLatin1Char('\n'));
        qsizetype last = -1;
        for (int step = 1; step <= 40; ++step) {
            const QString text = U("Korak %1: meso").arg(step);
            QCOMPARE(all.count(text), 1);
            const qsizetype at = all.indexOf(text);
            QVERIFY2(at > last, qPrintable(text));  // in order, over the page break
            last = at;
        }
        for (int line = 1; line <= 45; ++line) {
            const QString text = U("%1 %2").arg(line).arg(Ingredients()[line % 6]);
            const QRegularExpression alone(
                U("^\\s*") + QRegularExpression::escape(text) + U("\\s*$"),
                QRegularExpression::MultilineOption);
            QCOMPARE(qsizetype(all.count(alone)), 1);
        }
        QCOMPARE(all.count(U("Stran 1 od 2")), 1);
        QCOMPARE(all.count(U("Stran 2 od 2")), 1);
    }

    void longParagraphOverPageEnds() {
        // One paragraph of numbered words, wrapped over three pages.
        QString words;
        for (int i = 1; i <= 1400; ++i) {
            words += U("beseda%1 ").arg(i, 4, 10, QLatin1Char('0'));
        }
        WriteBytes(PageFile(), Cp1250(U("<html><head><title>Dolgo</title></head><body>") + words +
                                      U("</body></html>")));
        PrintToPdf();
        PagePrinter::WritePageSetup(PagePrinter::ProgramPageSetup);
        QVERIFY(PagePrinter::PrintFile(PageFile(), false, nullptr));
        const QStringList pages = PdfPages(PdfFile());
        QVERIFY2(pages.size() >= 2, qPrintable(QString::number(pages.size())));
        const QString all = pages.join(QLatin1Char('\n'));
        qsizetype last = -1;
        for (int i = 1; i <= 1400; ++i) {
            const QString word = U("beseda%1").arg(i, 4, 10, QLatin1Char('0'));
            QCOMPARE(all.count(word), 1);
            const qsizetype at = all.indexOf(word);
            QVERIFY2(at > last, qPrintable(word));
            last = at;
        }
        for (int page = 1; page <= pages.size(); ++page) {
            const QString header =
                U("^\\s*Dolgo\\s+Stran %1 od %2\\s*$").arg(page).arg(pages.size());
            QVERIFY2(!LineMatching(pages[page - 1], header).isEmpty(), qPrintable(pages[page - 1]));
        }
    }

    void printRecipeWithTheUsersOwnHeaderAndFooter() {
        PrintToPdf();
        PagePrinter::WritePageSetup({U("Moj &w &p/&P"), U("&d&b&u")});
        QVERIFY(PagePrinter::PrintFile(PageFile(), false, nullptr));

        const QStringList pages = PdfPages(PdfFile());
        QCOMPARE(pages.size(), 2);
        const QString date =
            QRegularExpression::escape(QDate::currentDate().toString(U("d. M. yyyy")));
        const QString address = QRegularExpression::escape(Address());
        for (int page = 1; page <= 2; ++page) {
            const QString& text = pages[page - 1];
            const QString header = U("^\\s*Moj 12 - Goveja juha %1/2\\s*$").arg(page);
            QVERIFY2(!LineMatching(text, header).isEmpty(), qPrintable(text));
            QVERIFY2(!LineMatching(text, U("^\\s*%1\\s+%2\\s*$").arg(date, address)).isEmpty(),
                     qPrintable(text));
            QVERIFY(!text.contains(U("Stran")));
        }
    }

    void printWithTheDefaultPageSetup() {
        PrintToPdf();
        QVERIFY(PagePrinter::PrintFile(PageFile(), false, nullptr));
        const QStringList pages = PdfPages(PdfFile());
        QCOMPARE(pages.size(), 2);
        QVERIFY2(!LineMatching(pages[1], U("12 - Goveja juha\\s+Page 2 of 2\\s*$")).isEmpty(),
                 qPrintable(pages[1]));
        QVERIFY2(pages[1].contains(Address()), qPrintable(pages[1]));
    }

    void printDialogCancelledPrintsNothing() {
        PrintToPdf();
        PagePrinter::WritePageSetup(PagePrinter::ProgramPageSetup);
        QWidget parent;
        int calls = 0;
        QString outputSeen;
        QWidget* parentSeen = nullptr;
        UiServices::SetPrintDialogHandler([&](QPrinter& printer, QWidget* p) {
            ++calls;
            outputSeen = printer.outputFileName();
            parentSeen = p;
            return false;
        });
        QVERIFY(!PagePrinter::PrintFile(PageFile(), true, &parent));
        QCOMPARE(calls, 1);
        QCOMPARE(parentSeen, &parent);
        QCOMPARE(outputSeen, PdfFile());  // the preparer ran before the dialog
        QVERIFY(!QFileInfo::exists(PdfFile()));
    }

    void printDialogConfirmedPrints() {
        PrintToPdf();
        PagePrinter::WritePageSetup(PagePrinter::ProgramPageSetup);
        int calls = 0;
        UiServices::SetPrintDialogHandler([&](QPrinter&, QWidget*) {
            ++calls;
            return true;
        });
        QVERIFY(PagePrinter::PrintFile(PageFile(), true, nullptr));
        QCOMPARE(calls, 1);
        const QStringList pages = PdfPages(PdfFile());
        QCOMPARE(pages.size(), 2);
        QVERIFY(!LineMatching(pages[1], U("12 - Goveja juha\\s+Stran 2 od 2\\s*$")).isEmpty());
    }

    void printWithoutDialogDoesNotShowIt() {
        PrintToPdf();
        int calls = 0;
        UiServices::SetPrintDialogHandler([&](QPrinter&, QWidget*) {
            ++calls;
            return false;
        });
        QVERIFY(PagePrinter::PrintFile(PageFile(), false, nullptr));
        QCOMPARE(calls, 0);
        QVERIFY(QFileInfo::exists(PdfFile()));
    }

    void printDialogPageRange() {
        PrintToPdf();
        PagePrinter::WritePageSetup(PagePrinter::ProgramPageSetup);
        UiServices::SetPrintDialogHandler([&](QPrinter& printer, QWidget*) {
            printer.setPrintRange(QPrinter::PageRange);
            printer.setFromTo(2, 2);
            return true;
        });
        QVERIFY(PagePrinter::PrintFile(PageFile(), true, nullptr));
        const QStringList pages = PdfPages(PdfFile());
        QCOMPARE(pages.size(), 1);
        QVERIFY2(!LineMatching(pages[0], U("Stran 2 od 2\\s*$")).isEmpty(), qPrintable(pages[0]));
    }

    void shortPageIsOnePage() {
        WriteBytes(PageFile(),
                   Cp1250(U("<html><head><title>Juhe</title><meta http-equiv=\"Content-Type\" "
                            "content=\"text/html; charset=windows-1250\"></head><body><h1>Juhe"
                            "</h1>Mesne juhe</body></html>")));
        PrintToPdf();
        PagePrinter::WritePageSetup(PagePrinter::ProgramPageSetup);
        QVERIFY(PagePrinter::PrintFile(PageFile(), false, nullptr));
        const QStringList pages = PdfPages(PdfFile());
        QCOMPARE(pages.size(), 1);
        QVERIFY2(!LineMatching(pages[0], U("^\\s*Juhe\\s+Stran 1 od 1\\s*$")).isEmpty(),
                 qPrintable(pages[0]));
    }

    void missingFileRaisesAnError() {
        PrintToPdf();
        bool dialogShown = false;
        UiServices::SetPrintDialogHandler([&](QPrinter&, QWidget*) {
            dialogShown = true;
            return true;
        });
        const QString missing = TestDatabase::WorkFolder() + U("/ni-ga.html");
        try {
            PagePrinter::PrintFile(missing, true, nullptr);
            QFAIL("no error raised");
        } catch (const AppError& error) {
            QCOMPARE(error.Number(), AppError::PassedOn);
            QCOMPARE(error.Source(), U("PagePrinter:PrintFile"));
            QVERIFY2(error.Description().startsWith(ErrorPath::RuntimeSource() + U("->")),
                     qPrintable(error.Description()));
            QVERIFY2(error.Description().contains(missing), qPrintable(error.Description()));
        }
        QVERIFY(!dialogShown);
        QCOMPARE(m_preparerCalls, 0);
        QVERIFY(!QFileInfo::exists(PdfFile()));
    }

    void folderInsteadOfFileRaisesAnError() {
        PrintToPdf();
        QVERIFY_THROWS_EXCEPTION(
            AppError, PagePrinter::PrintFile(TestDatabase::WorkFolder(), false, nullptr));
        QVERIFY(!QFileInfo::exists(PdfFile()));
    }
};

QTEST_MAIN(TestPrinting)
#include "tst_printing.moc"
