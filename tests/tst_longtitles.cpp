// A recipe list's long title as a browser shows it: wrapped inside the first column, its number
// in the column of numbers, in the middle of the row's height; the rows around it as they were.
#include <QAbstractTextDocumentLayout>
#include <QTest>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextFrame>
#include <QTextLayout>
#include <QTextTable>
#include <memory>

#include "core/Windows1250.h"
#include "display/PageDocument.h"

namespace {

QString U(const char* utf8) { return QString::fromUtf8(utf8); }

const QString Head =
    U("<html><head><title>T</title><style type=\"text/css\"><!--body{font-family:verdana;"
      "font-size:12px;}h1{font-size:22px;}h2{font-size:18px;}h3{font-size:14px;margin-bottom:5px;}"
      "table{font-family:verdana;font-size:12px;}--></style></head><body>");

// A title of 170 characters.
const QString LongTitle =
    U("Počasi pečena svinjska plečka z jabolki, čebulo, korenjem in "
      "krompirjem, kot jo je pripravljala stara mama ob nedeljah, "
      "s kislim zeljem in domačim kruhom iz krušne peči");

std::unique_ptr<QTextDocument> GroupPage(qreal width) {
    const QString page = Head +
                         U("<h1>Skupina</h1><h2>Podskupina</h1>"
                           "<table width=\"100%\" border=\"0\">"
                           "<tr><td>Kratek</td><td align=\"right\">12</td></tr>"
                           "<tr><td>") +
                         LongTitle +
                         U("</td><td align=\"right\">123456</td></tr>"
                           "<tr><td>Drugi</td><td align=\"right\">7</td></tr></table>"
                           "</body></html>");
    auto document = std::make_unique<QTextDocument>();
    PageDocument::BuildFromBytes(*document, Windows1250::Encode(page));
    document->setTextWidth(width);
    PageDocument::FitWidth(*document, width);
    static_cast<void>(document->size());  // laid out whole
    return document;
}

QRectF Box(const QTextDocument& document, const QTextBlock& block) {
    return document.documentLayout()->blockBoundingRect(block);
}

// The right edge of the text of a block (its widest line, trailing spaces left out).
qreal TextRight(const QTextDocument& document, const QTextBlock& block) {
    qreal right = 0;
    const QTextLayout* layout = block.layout();
    const QString text = block.text();
    for (int i = 0; i < layout->lineCount(); ++i) {
        const QTextLine line = layout->lineAt(i);
        int end = line.textStart() + line.textLength();
        while (end > line.textStart() && text.at(end - 1).isSpace()) {
            --end;
        }
        right = std::max(right, line.cursorToX(end));
    }
    return Box(document, block).x() + right;
}

QTextBlock BlockWithText(const QTextDocument& document, const QString& text) {
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        if (block.text() == text) {
            return block;
        }
    }
    return QTextBlock();
}

}  // namespace

class TestLongTitles : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void longTitleWrapsInItsColumn_data() {
        QTest::addColumn<qreal>("width");
        QTest::newRow("500") << qreal(500);
        QTest::newRow("320") << qreal(320);
        QTest::newRow("900") << qreal(900);
    }
    void longTitleWrapsInItsColumn() {
        QFETCH(qreal, width);
        const auto document = GroupPage(width);
        const QTextBlock title = BlockWithText(*document, LongTitle);
        const QTextBlock number = BlockWithText(*document, QStringLiteral("123456"));
        QVERIFY(title.isValid());
        QVERIFY(number.isValid());
        QVERIFY2(title.layout()->lineCount() >= 2, "the title wraps");
        // The number has its own column: no line of the title reaches it.
        QVERIFY(TextRight(*document, title) <= Box(*document, number).x() + 0.5);
        // It stands in the middle of the title's lines.
        QVERIFY(qAbs(Box(*document, number).center().y() - Box(*document, title).center().y()) <=
                1.0);
        // Numbers keep one right edge, and the rows around keep their form.
        const QTextBlock first = BlockWithText(*document, U("Kratek\t12"));
        const QTextBlock last = BlockWithText(*document, U("Drugi\t7"));
        QVERIFY(first.isValid());
        QVERIFY(last.isValid());
        QVERIFY(qAbs(TextRight(*document, number) - TextRight(*document, first)) <= 1.0);
        QVERIFY(qAbs(TextRight(*document, number) - TextRight(*document, last)) <= 1.0);
        QVERIFY(Box(*document, first).bottom() <= Box(*document, title).top());
        QVERIFY(Box(*document, title).bottom() <= Box(*document, last).top());
        QCOMPARE(document->toPlainText(),
                 U("Skupina\nPodskupina\nKratek\t12\n") + LongTitle + U("\n123456\nDrugi\t7"));
    }

    // A page first laid out narrow, then at its width, shows the same as one laid out at once.
    void narrowThenWide() {
        const auto document = GroupPage(60);
        document->setTextWidth(500);
        PageDocument::FitWidth(*document, 500);
        static_cast<void>(document->size());
        const QTextBlock number = BlockWithText(*document, QStringLiteral("123456"));
        QVERIFY(number.isValid());
        QCOMPARE(number.layout()->lineCount(), 1);
        QVERIFY(BlockWithText(*document, U("Kratek\t12")).isValid());
        QVERIFY(BlockWithText(*document, U("Drugi\t7")).isValid());
        QCOMPARE(document->rootFrame()->childFrames().size(), 1);
    }

    // A long list laid out in a sliver of width, then at its width, is the list laid out once.
    void manyRowsInASliver() {
        QString rows;
        for (int i = 1; i <= 40; ++i) {
            rows += U("<tr><td>Recept %1</td><td align=\"right\">%2</td></tr>").arg(i).arg(i * 37);
        }
        const QString page = Head + U("<h1>S</h1><table width=\"100%\" border=\"0\">") + rows +
                             U("</table><h2>Konec</h2></body></html>");
        const auto build = [&](qreal width) {
            auto document = std::make_unique<QTextDocument>();
            PageDocument::BuildFromBytes(*document, Windows1250::Encode(page));
            document->setTextWidth(width);
            PageDocument::FitWidth(*document, width);
            static_cast<void>(document->size());
            return document;
        };
        const auto once = build(600);
        const auto twice = build(20);
        QCOMPARE(twice->rootFrame()->childFrames().size(), 40);
        twice->setTextWidth(600);
        PageDocument::FitWidth(*twice, 600);
        static_cast<void>(twice->size());
        QVERIFY(twice->rootFrame()->childFrames().isEmpty());
        QCOMPARE(twice->toPlainText(), once->toPlainText());
        QCOMPARE(twice->size(), once->size());
    }

    // A title that fits stays a row of text; a row made a table becomes a row again when the
    // page is widened.
    void rowsFollowTheWidth() {
        const auto document = GroupPage(2000);
        QVERIFY(document->rootFrame()->childFrames().isEmpty());
        QVERIFY(BlockWithText(*document, LongTitle + U("\t123456")).isValid());
        document->setTextWidth(400);
        PageDocument::FitWidth(*document, 400);
        static_cast<void>(document->size());
        QCOMPARE(document->rootFrame()->childFrames().size(), 1);
        document->setTextWidth(2000);
        PageDocument::FitWidth(*document, 2000);
        static_cast<void>(document->size());
        QVERIFY(document->rootFrame()->childFrames().isEmpty());
        const QTextBlock row = BlockWithText(*document, LongTitle + U("\t123456"));
        QVERIFY(row.isValid());
        QCOMPARE(row.layout()->lineCount(), 1);
        const QTextBlock first = BlockWithText(*document, U("Kratek\t12"));
        QVERIFY(qAbs(TextRight(*document, row) - TextRight(*document, first)) <= 1.0);
        QCOMPARE(Box(*document, first).height(), Box(*document, row).height());
        QCOMPARE(document->toPlainText(), GroupPage(2000)->toPlainText());
    }
};

QTEST_MAIN(TestLongTitles)
#include "tst_longtitles.moc"
