// The main window's page view: a page laid out ahead (on a thread of its own, or at once when it
// is long) is the page of the file as it was when it was taken; a page fitted to its view's width
// while the view shows it is laid out for that width; a list's column of numbers is as wide as its
// widest number.
#include <QAbstractTextDocumentLayout>
#include <QFile>
#include <QFileInfo>
#include <QFontMetricsF>
#include <QTemporaryDir>
#include <QTest>
#include <QTextBlock>
#include <QTextBrowser>
#include <QTextDocument>
#include <QTextFrame>
#include <QTextTable>
#include <QThread>

#include "core/Windows1250.h"
#include "display/PageDocument.h"
#include "display/PageTables.h"
#include "display/PageView.h"

namespace {

QString U(const char* utf8) { return QString::fromUtf8(utf8); }

const QString Head =
    U("<html><head><title>Juhe</title><style type=\"text/css\"><!--body{font-family:verdana;"
      "font-size:12px;}h1{font-size:22px;}h2{font-size:18px;}h3{font-size:14px;margin-bottom:5px;}"
      "table{font-family:verdana;font-size:12px;}--></style></head><body><h1>Juhe</h1>"
      "Skupina št. 1<h2>Zelenjavne juhe</h1><table width=\"100%\" border=\"0\">");

// A group page with `rows` recipes, "Juha št. <n>" numbered n.
QString GroupPage(int rows, const QString& longTitle = QString()) {
    QString page = Head;
    for (int row = 1; row <= rows; ++row) {
        page += U("<tr><td>Zelenjavna juha št. %1</td><td align=\"right\">%1</td></tr>").arg(row);
    }
    if (!longTitle.isEmpty()) {
        page += U("<tr><td>") + longTitle + U("</td><td align=\"right\">MM</td></tr>");
        page += U("<tr><td>Kratka</td><td align=\"right\">iiii</td></tr>");
    }
    return page + U("</table></body></html>");
}

QString WriteFile(const QTemporaryDir& folder, const QString& page) {
    const QString name = folder.filePath(QStringLiteral("page.html"));
    QFile file(name);
    file.open(QIODevice::WriteOnly | QIODevice::Truncate);
    file.write(Windows1250::Encode(page));
    return name;
}

QStringList Blocks(const QTextDocument& document) {
    QStringList blocks;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        blocks << block.text();
    }
    return blocks;
}

// The x of the right edge of the last character of a row's block.
qreal RowRight(const QTextDocument& document, const QTextBlock& block) {
    const QTextLine line = block.layout()->lineAt(0);
    return document.documentLayout()->blockBoundingRect(block).x() +
           line.cursorToX(block.length() - 1);
}

}  // namespace

class TestPageView : public QObject {
    Q_OBJECT

private Q_SLOTS:

    // The prepared page is the file's page when it was prepared, whatever the file holds by the
    // time it is shown; it belongs to the view and to the thread of the window. A short page is
    // laid out on a thread of its own, a page of megabytes at once.
    void preparedPageIsTheFilesPage_data() {
        QTest::addColumn<int>("rows");
        QTest::newRow("short") << 500;
        QTest::newRow("megabytes") << 40000;
    }
    void preparedPageIsTheFilesPage() {
        QFETCH(int, rows);
        QTemporaryDir folder;
        const QString file = WriteFile(folder, GroupPage(rows));
        QVERIFY(QFileInfo(file).size() > (rows > 500 ? 2 : 0) * 1024 * 1024);
        QTextBrowser shown;
        PageView::Show(&shown, file);

        PageView::Prepared prepared = PageView::Prepare(file);
        QVERIFY(prepared.IsValid());
        WriteFile(folder, GroupPage(3));
        QTextBrowser view;
        PageView::Show(&view, std::move(prepared));

        QTextDocument* document = view.document();
        QCOMPARE(document->thread(), QThread::currentThread());
        QCOMPARE(document->parent(), &view);
        QCOMPARE(document->metaInformation(QTextDocument::DocumentTitle), U("Juhe"));
        QCOMPARE(Blocks(*document), Blocks(*shown.document()));
        QCOMPARE(document->blockCount(), rows + 3);
        QCOMPARE(document->lastBlock().text(), U("Zelenjavna juha št. %1\t%1").arg(rows));
    }

    // A page the view already shows is fitted again when the view gets narrower: the numbers
    // stand at the new right edge on the first and on the last row, and the page keeps the
    // view's width as its own.
    void shownPageFollowsTheViewsWidth() {
        QTemporaryDir folder;
        QTextBrowser view;
        view.resize(700, 400);
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));
        PageView::Show(&view, WriteFile(folder, GroupPage(2000)));
        view.resize(450, 400);
        QTest::qWait(1);
        QTextDocument* document = view.document();
        const qreal width = view.viewport()->width();
        QCOMPARE(document->pageSize().width(), width);
        static_cast<void>(document->size());  // laid out whole
        const QTextBlock first = document->findBlockByNumber(3);
        const QTextBlock last = document->lastBlock();
        QCOMPARE(first.text(), U("Zelenjavna juha št. 1\t1"));
        QCOMPARE(last.text(), U("Zelenjavna juha št. 2000\t2000"));
        const qreal margin = document->documentMargin();
        for (const QTextBlock& row : {first, last}) {
            const qreal right = RowRight(*document, row);
            QVERIFY2(right <= width - margin + 1 && right >= width - margin - 12,
                     qPrintable(QStringLiteral("right edge %1 of %2").arg(right).arg(width)));
        }
        QCOMPARE(RowRight(*document, first), RowRight(*document, last));
    }

    // The column of numbers is as wide as its widest cell, which need not be its longest: a
    // long title wraps beside two wide letters, not beside four narrow ones.
    void numberColumnIsItsWidestCell() {
        const QString title =
            U("Počasi kuhana zelenjavna juha z ječmenovo kašo, korenjem, "
              "zeleno, porom in suhimi gobami po babičinem receptu");
        QTextDocument document;
        PageDocument::BuildFromBytes(document, Windows1250::Encode(GroupPage(3, title)));
        document.setTextWidth(400);
        PageDocument::FitWidth(document, 400);
        const QList<QTextFrame*> tables = document.rootFrame()->childFrames();
        QCOMPARE(tables.size(), 1);
        auto* table = qobject_cast<QTextTable*>(tables.first());
        QVERIFY(table);
        QCOMPARE(table->cellAt(0, 1).firstCursorPosition().block().text(), U("MM"));
        const QFontMetricsF verdana(
            table->cellAt(0, 1).firstCursorPosition().charFormat().font().resolve(
                document.defaultFont()));
        QVERIFY(verdana.horizontalAdvance(U("MM")) > verdana.horizontalAdvance(U("iiii")));
        QCOMPARE(table->format().property(PageDocument::detail::RowSecondWidthProperty).toReal(),
                 verdana.horizontalAdvance(U("MM")));
    }
};

QTEST_MAIN(TestPageView)
#include "tst_pageview.moc"
