#pragma once

#include <QByteArray>
#include <QDate>
#include <QList>
#include <QString>
#include <QStringList>
#include <functional>

class QPrinter;
class QWidget;

// Printing the page shown in the main window (the display file) with a page header and footer.
// The header and footer are the per-user page set-up values "header" and "footer" under
// "Software\Microsoft\Internet Explorer\PageSetup", made of codes that stand for the page title,
// the page number, the page count, the page address and the date.
namespace PagePrinter {

// The key of the page set-up values (per-user root of the settings store).
extern const QString PageSetupKey;

struct PageSetup {
    QString header;
    QString footer;
};

// The values read when none are stored: {"&w&bPage &p of &P", "&u&b&d"}.
extern const PageSetup DefaultPageSetup;
// The program's own values while it prints: {"&w&bStran &p od &P", ""}.
extern const PageSetup ProgramPageSetup;

// The per-user values, each with its default when missing.
PageSetup ReadPageSetup();
// Stores both values per-user (an empty value is stored as empty).
void WritePageSetup(const PageSetup& setup);

// What the codes of a header or footer stand for on one page.
struct PageFacts {
    QString title;    // the page's title
    QString address;  // the page's address (a file: URL)
    QDate date;       // the day of printing
    int page = 1;     // number of this page, from 1
    int pageCount = 1;
};

// Expands the codes of a header or footer for one page:
//   &w  the page title            &p  the page number       &P  the page count
//   &u  the page address          &d  the date, d. M. yyyy  &&  a literal "&"
//   &b  separates the alignment parts: text before the first &b is left-aligned and the rest
//       right-aligned; with two &b the parts are left, centre and right. A further &b adds its
//       text to the right part (the code itself is dropped).
// Any other "&" followed by a character, and a lone "&" at the end, is kept as it is. The texts
// put in for the codes are not expanded again. Returns the three parts {left, centre, right}.
QStringList Expand(const QString& codes, const PageFacts& facts);

// Prints the HTML page file (windows-1250) with the header and footer of the page set-up read
// at that moment, on every page. With showDialog the print dialog is shown first
// (UiServices::ShowPrintDialog); when it is cancelled nothing is printed and the result is
// false. Without it the page goes at once to the default printer, or, when no printer is
// installed, the print dialog is shown all the same. Returns true when printed.
// A file that cannot be read, or a printer that cannot be started, raises an error (source
// "PagePrinter:PrintFile").
bool PrintFile(const QString& fileName, bool showDialog, QWidget* parent);

// What a book's printing is doing when it tells its progress: laying out its pages (`done` of
// `total` pages) or printing its sheets (`done` of `total` sheets, a page printing on as many
// sheets as it needs).
enum class BookStage { LayingOut, Printing };
using BookProgress = std::function<void(BookStage stage, int done, int total)>;

// Prints pages (display file bytes, windows-1250) one after another as one book: each page
// starts on a new sheet, and the header's page number and page count run over the whole book
// ("&w" is the title of the page printed on that sheet). `progress` is told after each page
// laid out and each page's sheets printed.
void PrintBook(QPrinter& printer, const QList<QByteArray>& pages, const PageSetup& setup,
               const BookProgress& progress = {});

// Runs on every new printer after its construction and before the print dialog (tests direct
// the output to a PDF file with it). An empty preparer leaves the printer as constructed.
using PrinterPreparer = std::function<void(QPrinter&)>;
void SetPrinterPreparer(PrinterPreparer preparer);

}  // namespace PagePrinter
