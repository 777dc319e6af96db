#include "display/PagePrinter.h"

#include <QAbstractTextDocumentLayout>
#include <QFile>
#include <QFileInfo>
#include <QFontMetricsF>
#include <QImage>
#include <QPainter>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextLayout>
#include <QTextList>
#include <QUrl>
#include <QtPrintSupport/QPrinter>
#include <algorithm>
#include <cmath>
#include <memory>

#include "core/AppError.h"
#include "core/registry/modRegistry.h"
#include "core/ui/UiServices.h"
#include "display/PageDocument.h"

namespace PagePrinter {

const QString PageSetupKey = QStringLiteral("Software\\Microsoft\\Internet Explorer\\PageSetup");
const PageSetup DefaultPageSetup{QStringLiteral("&w&bPage &p of &P"), QStringLiteral("&u&b&d")};
const PageSetup ProgramPageSetup{QStringLiteral("&w&bStran &p od &P"), QString()};

namespace {

const QString HeaderName = QStringLiteral("header");
const QString FooterName = QStringLiteral("footer");

PrinterPreparer g_preparer;

QByteArray ReadPageFile(const QString& fileName) {
    const QFileInfo info(fileName);
    if (!info.exists()) {
        ErrorPath::Raise(53, QStringLiteral("File not found: %1").arg(fileName));
    }
    QFile file(fileName);
    if (info.isDir() || !file.open(QIODevice::ReadOnly)) {
        ErrorPath::Raise(75, QStringLiteral("Path/File access error: %1").arg(fileName));
    }
    return file.readAll();
}

// Lengths of the printed page.
constexpr qreal BandMillimetres = 8.0;          // height of the header band and of the footer band
constexpr qreal LeastMarginMillimetres = 10.0;  // least space from the paper edge to the print
constexpr qreal BandFontPoints = 8.0;           // size of the header and footer text
constexpr qreal LayoutDotsPerInch = 96.0;       // the page's own unit: a CSS pixel, 1/96 inch
constexpr qreal PartGapMillimetres = 3.0;       // least space between two parts of a band
constexpr qreal EdgeHair = 0.25;  // in page units: how far inside a page its text must reach

qreal MillimetresToDots(qreal millimetres, int dotsPerInch) {
    return millimetres / 25.4 * dotsPerInch;
}

// Draws the three parts {left, centre, right} in a band; the left and the centre part give way
// (shortened with an ellipsis) when the parts would overlap, and a right part wider than the
// band is shortened too.
void DrawBand(QPainter& painter, const QRectF& band, const QStringList& parts, qreal gap) {
    const QFontMetricsF metrics = painter.fontMetrics();
    const QString right =
        metrics.elidedText(parts.value(2), Qt::ElideRight, std::max<qreal>(band.width(), 0));
    const qreal rightWidth = right.isEmpty() ? 0 : metrics.horizontalAdvance(right) + gap;
    QString centre = parts.value(1);
    qreal centreHalf = 0;
    if (!centre.isEmpty()) {
        const qreal room = band.width() - 2 * rightWidth;
        centre = metrics.elidedText(centre, Qt::ElideRight, std::max<qreal>(room, 0));
        centreHalf = metrics.horizontalAdvance(centre) / 2 + gap;
    }
    const qreal leftRoom =
        centre.isEmpty() ? band.width() - rightWidth : band.width() / 2 - centreHalf;
    const QString left =
        metrics.elidedText(parts.value(0), Qt::ElideRight, std::max<qreal>(leftRoom, 0));

    const int vertical = Qt::AlignVCenter | Qt::TextSingleLine;
    painter.drawText(band, Qt::AlignLeft | vertical, left);
    painter.drawText(band, Qt::AlignHCenter | vertical, centre);
    painter.drawText(band, Qt::AlignRight | vertical, right);
}

// Splits a paragraph in two at a position: the second part starts a new block of the same
// kind, without the space above it, the first-line indent or a list bullet of its own; the
// first part loses the space below it. A line break that stood at the position goes.
void SplitBlockAt(QTextDocument& document, int position) {
    QTextCursor cursor(&document);
    cursor.setPosition(position);
    QTextBlockFormat firstPart = cursor.blockFormat();
    QTextBlockFormat secondPart = firstPart;
    firstPart.setBottomMargin(0);
    secondPart.setTopMargin(0);
    secondPart.setTextIndent(0);
    if (position > cursor.block().position() &&
        document.characterAt(position - 1) == QChar::LineSeparator) {
        cursor.deletePreviousChar();
    }
    cursor.insertBlock(secondPart);
    QTextCursor(cursor.block().previous()).setBlockFormat(firstPart);
    if (QTextList* list = cursor.block().textList()) {
        const int indent = list->format().indent();
        list->remove(cursor.block());
        QTextBlockFormat continued = cursor.blockFormat();
        continued.setIndent(indent);
        cursor.setBlockFormat(continued);
    }
}

// Makes every paragraph that runs on from one page to the next two paragraphs, split where
// the page ends, so that drawing one page draws no line of another: the text layout draws
// the last line above its clip as well, which would leave an invisible copy of that line in
// the print (and in the text of a PDF file). The pages stay as they were.
void SplitBlocksAtPageEnds(QTextDocument& document) {
    const qreal pageHeight = document.pageSize().height();
    QAbstractTextDocumentLayout* layout = document.documentLayout();
    for (int round = 0; round < 3; ++round) {
        QList<int> positions;
        for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
            const QTextLayout* lines = block.layout();
            if (!lines || lines->lineCount() < 2) {
                continue;
            }
            const qreal top = layout->blockBoundingRect(block).top();
            int previousPage = -1;
            for (int i = 0; i < lines->lineCount(); ++i) {
                const QTextLine line = lines->lineAt(i);
                const int page = int(std::floor((top + line.y() + line.height() / 2) / pageHeight));
                if (i > 0 && page != previousPage) {
                    positions << block.position() + line.textStart();
                }
                previousPage = page;
            }
        }
        if (positions.isEmpty()) {
            return;
        }
        std::sort(positions.begin(), positions.end());
        QTextCursor edit(&document);
        edit.beginEditBlock();
        for (auto it = positions.crbegin(); it != positions.crend(); ++it) {
            SplitBlockAt(document, *it);
        }
        edit.endEditBlock();
    }
}

}  // namespace

PageSetup ReadPageSetup() {
    return ErrorPath::PassOn("PagePrinter:ReadPageSetup", [] {
        return PageSetup{modRegistry::GetRegistryString(PageSetupKey, HeaderName,
                                                        DefaultPageSetup.header, false),
                         modRegistry::GetRegistryString(PageSetupKey, FooterName,
                                                        DefaultPageSetup.footer, false)};
    });
}

void WritePageSetup(const PageSetup& setup) {
    ErrorPath::PassOn("PagePrinter:WritePageSetup", [&] {
        modRegistry::SetRegistryString(PageSetupKey, HeaderName, setup.header, false);
        modRegistry::SetRegistryString(PageSetupKey, FooterName, setup.footer, false);
    });
}

QStringList Expand(const QString& codes, const PageFacts& facts) {
    QStringList pieces{QString()};
    for (qsizetype i = 0; i < codes.size(); ++i) {
        const QChar c = codes[i];
        if (c != QLatin1Char('&') || i + 1 == codes.size()) {
            pieces.last() += c;
            continue;
        }
        const QChar code = codes[++i];
        switch (code.unicode()) {
            case u'w':
                pieces.last() += facts.title;
                break;
            case u'p':
                pieces.last() += QString::number(facts.page);
                break;
            case u'P':
                pieces.last() += QString::number(facts.pageCount);
                break;
            case u'u':
                pieces.last() += facts.address;
                break;
            case u'd':
                pieces.last() += facts.date.toString(QStringLiteral("d. M. yyyy"));
                break;
            case u'&':
                pieces.last() += QLatin1Char('&');
                break;
            case u'b':
                pieces << QString();
                break;
            default:
                pieces.last() += c;
                pieces.last() += code;
                break;
        }
    }
    switch (pieces.size()) {
        case 1:
            return {pieces[0], QString(), QString()};
        case 2:
            return {pieces[0], QString(), pieces[1]};
        default:
            return {pieces[0], pieces[1], pieces.mid(2).join(QString())};
    }
}

namespace {

// Where a printer prints: the header band, the footer band and the page's text between them,
// in device dots with the painter's origin at the top left corner of the printable area. The
// area is the printable area, kept at least LeastMarginMillimetres from the paper's edges. The
// page's text is laid out in its own unit (1/96 inch) and scaled to the device.
struct Sheet {
    QRectF headerBand;
    QRectF footerBand;
    QRectF body;
    qreal scaleX = 1;
    qreal scaleY = 1;
    QSizeF pageSize;  // of the text on one sheet, in the page's unit
    qreal gap = 0;    // between two parts of a band
};

Sheet SheetOf(QPrinter& printer) {
    const int dpiX = printer.logicalDpiX();
    const int dpiY = printer.logicalDpiY();
    const QRectF paper = printer.paperRect(QPrinter::DevicePixel);
    const QRectF printable = printer.pageRect(QPrinter::DevicePixel);
    const qreal leastX = MillimetresToDots(LeastMarginMillimetres, dpiX);
    const qreal leastY = MillimetresToDots(LeastMarginMillimetres, dpiY);
    QRectF area = paper.adjusted(leastX, leastY, -leastX, -leastY) & printable;
    area.translate(-printable.topLeft());
    const qreal band = MillimetresToDots(BandMillimetres, dpiY);
    Sheet sheet;
    sheet.headerBand = QRectF(area.left(), area.top(), area.width(), band);
    sheet.footerBand = QRectF(area.left(), area.bottom() - band, area.width(), band);
    sheet.body = QRectF(area.left(), area.top() + band, area.width(), area.height() - 2 * band);
    if (sheet.body.width() <= 0 || sheet.body.height() <= 0) {
        ErrorPath::Raise(482, QStringLiteral("Printer error: the paper is too small"));
    }
    sheet.scaleX = dpiX / LayoutDotsPerInch;
    sheet.scaleY = dpiY / LayoutDotsPerInch;
    sheet.pageSize = QSizeF(sheet.body.width() / sheet.scaleX, sheet.body.height() / sheet.scaleY);
    sheet.gap = MillimetresToDots(PartGapMillimetres, dpiX);
    return sheet;
}

// The device the pages are laid out on: 96 dots per inch, independent of any screen.
QPaintDevice* LayoutDevice() {
    static QImage device = [] {
        QImage image(1, 1, QImage::Format_RGB32);
        const int dotsPerMetre = qRound(LayoutDotsPerInch / 0.0254);
        image.setDotsPerMeterX(dotsPerMetre);
        image.setDotsPerMeterY(dotsPerMetre);
        return image;
    }();
    return &device;
}

QFont BandFont(const QTextDocument& document) {
    QFont font = document.defaultFont();
    font.setPointSizeF(BandFontPoints);
    font.setBold(false);
    font.setItalic(false);
    // A slight letter spacing keeps the shaping from joining letters (as "fi" in an address),
    // so that the header and footer read back as the very characters.
    font.setLetterSpacing(QFont::AbsoluteSpacing, 0.05);
    return font;
}

// Draws one sheet: page `pageInDocument` (from 1) of the document, with the header and footer
// expanded for the facts.
void DrawSheet(QPainter& painter, QTextDocument& document, int pageInDocument, const Sheet& sheet,
               const PageSetup& setup, const PageFacts& facts) {
    painter.save();
    painter.translate(sheet.body.topLeft());
    painter.scale(sheet.scaleX, sheet.scaleY);
    const QRectF view(0, (pageInDocument - 1) * sheet.pageSize.height(), sheet.pageSize.width(),
                      sheet.pageSize.height());
    painter.translate(0, -view.top());
    painter.setClipRect(view);
    // The clip of the context lies a hair inside the page, so that a paragraph that ends
    // exactly on the page's top edge is not drawn again.
    QAbstractTextDocumentLayout::PaintContext context;
    context.clip = view.adjusted(0, EdgeHair, 0, -EdgeHair);
    context.palette.setColor(QPalette::Text, Qt::black);
    document.documentLayout()->draw(&painter, context);
    painter.restore();

    painter.save();
    painter.setFont(BandFont(document));
    painter.setPen(Qt::black);
    DrawBand(painter, sheet.headerBand, Expand(setup.header, facts), sheet.gap);
    DrawBand(painter, sheet.footerBand, Expand(setup.footer, facts), sheet.gap);
    painter.restore();
}

// No printer to print to at once: none is installed (Qt then falls back to a PDF output with
// no file) and no output file was chosen either.
bool NoPrinter(const QPrinter& printer) {
    return printer.printerName().isEmpty() && printer.outputFileName().isEmpty();
}

// A page laid out for printing on sheets with text areas of `pageSize` (1/96 inch units).
std::unique_ptr<QTextDocument> LayOut(const QByteArray& pageBytes, const QSizeF& pageSize) {
    auto document = std::make_unique<QTextDocument>();
    document->documentLayout()->setPaintDevice(LayoutDevice());
    document->setUseDesignMetrics(true);
    PageDocument::BuildFromBytes(*document, pageBytes);
    document->setPageSize(pageSize);
    PageDocument::FitWidth(*document, pageSize.width());
    SplitBlocksAtPageEnds(*document);
    return document;
}

}  // namespace

bool PrintFile(const QString& fileName, bool showDialog, QWidget* parent) {
    return ErrorPath::PassOn("PagePrinter:PrintFile", [&] {
        const QByteArray bytes = ReadPageFile(fileName);
        QPrinter printer(QPrinter::HighResolution);
        if (g_preparer) {
            g_preparer(printer);
        }
        // With no printer installed the dialog offers the others (as printing to a PDF file).
        if ((showDialog || NoPrinter(printer)) && !UiServices::ShowPrintDialog(printer, parent)) {
            return false;
        }
        const PageSetup setup = ReadPageSetup();
        const Sheet sheet = SheetOf(printer);
        const std::unique_ptr<QTextDocument> document = LayOut(bytes, sheet.pageSize);

        PageFacts facts;
        facts.title = document->metaInformation(QTextDocument::DocumentTitle);
        facts.address = QUrl::fromLocalFile(QFileInfo(fileName).absoluteFilePath()).toString();
        facts.date = QDate::currentDate();
        facts.pageCount = document->pageCount();
        printer.setDocName(facts.title);

        int first = 1;
        int last = facts.pageCount;
        if (printer.printRange() == QPrinter::PageRange && printer.fromPage() > 0) {
            first = std::max(first, printer.fromPage());
            last = std::min(last, printer.toPage() > 0 ? printer.toPage() : last);
        }
        if (first > last) {
            return false;  // the chosen pages do not exist
        }
        QList<int> pages;
        for (int page = first; page <= last; ++page) {
            pages << page;
        }
        if (printer.pageOrder() == QPrinter::LastPageFirst) {
            std::reverse(pages.begin(), pages.end());
        }

        QPainter painter;
        if (!painter.begin(&printer)) {
            ErrorPath::Raise(482, QStringLiteral("Printer error"));
        }
        for (int index = 0; index < pages.size(); ++index) {
            if (index > 0) {
                printer.newPage();
            }
            facts.page = pages[index];
            DrawSheet(painter, *document, facts.page, sheet, setup, facts);
        }
        if (!painter.end()) {
            ErrorPath::Raise(482, QStringLiteral("Printer error"));
        }
        return true;
    });
}

void PrintBook(QPrinter& printer, const QList<QByteArray>& pages, const PageSetup& setup,
               const BookProgress& progress) {
    ErrorPath::PassOn("PagePrinter:PrintBook", [&] {
        const Sheet sheet = SheetOf(printer);
        // The sheets of every page first (the header counts them over the whole book), then
        // each page again, drawn.
        QList<int> sheets;
        int sheetCount = 0;
        for (int i = 0; i < pages.size(); ++i) {
            sheets << LayOut(pages[i], sheet.pageSize)->pageCount();
            sheetCount += sheets.last();
            if (progress) {
                progress(BookStage::LayingOut, i + 1, int(pages.size()));
            }
        }
        PageFacts facts;
        facts.date = QDate::currentDate();
        facts.pageCount = sheetCount;
        QPainter painter;
        if (!painter.begin(&printer)) {
            ErrorPath::Raise(482, QStringLiteral("Printer error"));
        }
        int sheetNumber = 0;
        for (int i = 0; i < pages.size(); ++i) {
            const std::unique_ptr<QTextDocument> document = LayOut(pages[i], sheet.pageSize);
            facts.title = document->metaInformation(QTextDocument::DocumentTitle);
            for (int page = 1; page <= sheets[i]; ++page) {
                if (sheetNumber > 0) {
                    printer.newPage();
                }
                facts.page = ++sheetNumber;
                DrawSheet(painter, *document, page, sheet, setup, facts);
            }
            if (progress) {
                progress(BookStage::Printing, sheetNumber, sheetCount);
            }
        }
        if (!painter.end()) {
            ErrorPath::Raise(482, QStringLiteral("Printer error"));
        }
    });
}

void SetPrinterPreparer(PrinterPreparer preparer) { g_preparer = std::move(preparer); }

}  // namespace PagePrinter
