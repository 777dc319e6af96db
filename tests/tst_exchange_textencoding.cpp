// The encodings of other programs' text files and the lines of such a file read from a device:
// the code pages' characters, the guess between DOS and Windows code pages, line ends of every
// kind, and an encoding found in a later block of a long file.
#include <QBuffer>
#include <QTest>

#include "exchange/LineReader.h"
#include "exchange/TextEncoding.h"

using Exchange::Encoding;
using Exchange::LineReader;
using namespace Exchange::TextEncoding;

namespace {

constexpr qsizetype BlockSize = 1 << 20;  // what LineReader reads at a time

struct ReadLines {
    QStringList lines;
    Encoding encoding = Encoding::Utf8;
};

ReadLines LinesOf(const QByteArray& bytes, std::optional<Encoding> given = std::nullopt,
                  Encoding fallback = Encoding::Cp437) {
    QByteArray data = bytes;
    QBuffer buffer(&data);
    buffer.open(QIODevice::ReadOnly);
    LineReader reader(buffer, given, fallback);
    ReadLines read;
    QString line;
    while (reader.Next(line)) {
        read.lines << line;
        if (reader.LineNumber() != read.lines.size()) {
            return {};
        }
    }
    read.encoding = reader.CurrentEncoding();
    return read;
}

// Lines of ASCII text filling at least `size` bytes, each ending in CR LF.
QByteArray AsciiLines(qsizetype size) {
    QByteArray bytes;
    while (bytes.size() < size) {
        bytes += "      1 c  Flour, sifted and measured again before use\r\n";
    }
    return bytes;
}

}  // namespace

class TestExchangeTextEncoding : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void namesTheEncodings() {
        Encoding encoding = Encoding::Utf8;
        QVERIFY(FromName(QStringLiteral("ibm437"), encoding));
        QCOMPARE(encoding, Encoding::Cp437);
        QVERIFY(FromName(QStringLiteral("CP1250"), encoding));
        QCOMPARE(encoding, Encoding::Windows1250);
        QVERIFY(FromName(QStringLiteral("Windows-1252"), encoding));
        QCOMPARE(encoding, Encoding::Windows1252);
        QVERIFY(FromName(QStringLiteral("latin1"), encoding));
        QCOMPARE(encoding, Encoding::Latin1);
        QVERIFY(FromName(QStringLiteral("utf8"), encoding));
        QCOMPARE(encoding, Encoding::Utf8);
        QVERIFY(!FromName(QStringLiteral("EBCDIC"), encoding));
        QCOMPARE(encoding, Encoding::Utf8);
        QCOMPARE(Name(Encoding::Cp437), QStringLiteral("CP437"));
        QCOMPARE(Name(Encoding::Windows1250), QStringLiteral("windows-1250"));
    }

    void decodesTheCodePages() {
        QCOMPARE(Decode("caf\x82 M\x81sli 350\xF8 \xAB \xC9\xCD\xBB", Encoding::Cp437),
                 QStringLiteral("café Müsli 350° ½ ╔═╗"));
        QCOMPARE(Decode("\x93hi\x94 \x80 \x96 \xE8\xE9 \x81", Encoding::Windows1252),
                 QStringLiteral("“hi” € – èé \u0081"));
        QCOMPARE(Decode("\xE8"
                        "ebula, \x9Apina\xE8"
                        "a",
                        Encoding::Windows1250),
                 QStringLiteral("čebula, špinača"));
        QCOMPARE(Decode("\xE8\xF8", Encoding::Latin1), QStringLiteral("èø"));
        QCOMPARE(Decode("\xC4\x8D\xE2\x85\x93", Encoding::Utf8), QStringLiteral("č⅓"));
    }

    void tellsUtf8() {
        QVERIFY(IsUtf8("plain"));
        QVERIFY(IsUtf8("\xC4\x8D\xE2\x85\x93"));
        QVERIFY(!IsUtf8("caf\x82"));
        QVERIFY(!IsUtf8("\xC4"));
        QVERIFY(
            !IsUtf8("\xE8"
                    "ebula"));
    }

    void guessesTheSingleBytePage_data() {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<Encoding>("guess");
        QTest::newRow("German in CP437") << QByteArray("M\x81sli und K\x84se") << Encoding::Cp437;
        QTest::newRow("Spanish in CP437") << QByteArray(
                                                 "pi\xA4"
                                                 "a, lim\xA2n")
                                          << Encoding::Cp437;
        QTest::newRow("French in 1252") << QByteArray(
                                               "cr\xE8me br\xFBl\xE9"
                                               "e, p\xE2te")
                                        << Encoding::Windows1252;
        QTest::newRow("quotes in 1252")
            << QByteArray("don\x92t \x93stir\x94, caf\xE9") << Encoding::Windows1252;
        QTest::newRow("Slovenian in 1250") << QByteArray(
                                                  "\xE8"
                                                  "ebula in \x9Apina\xE8"
                                                  "a, \x9Eli\xE8ka")
                                           << Encoding::Windows1250;
        QTest::newRow("Croatian in 1250") << QByteArray(
                                                 "\xE6"
                                                 "evapi, \xF0"
                                                 "umbir")
                                          << Encoding::Windows1250;
        QTest::newRow("box lines tell nothing")
            << QByteArray("\xC9\xCD\xCD\xBB title \xBA") << Encoding::Cp437;
        QTest::newRow("degree after a letter tells nothing")
            << QByteArray("350F\xF8. Bake") << Encoding::Cp437;
        QTest::newRow("half beside a digit tells nothing")
            << QByteArray("1\xBD cups") << Encoding::Cp437;
    }

    void guessesTheSingleBytePage() {
        QFETCH(QByteArray, bytes);
        QFETCH(Encoding, guess);
        QCOMPARE(GuessSingleByte(bytes, Encoding::Cp437), guess);
    }

    void fallsBackWhenTheBytesTellNothing() {
        QCOMPARE(GuessSingleByte("350F\xF8", Encoding::Windows1250), Encoding::Windows1250);
        QCOMPARE(GuessSingleByte("plain", Encoding::Windows1252), Encoding::Windows1252);
    }

    void readsEveryLineEnd() {
        const ReadLines read = LinesOf("one\r\ntwo\nthree\rfour\r\n\r\nsix\n\nlast");
        QCOMPARE(read.lines, (QStringList{"one", "two", "three", "four", "", "six", "", "last"}));
        QCOMPARE(LinesOf("one\r").lines, QStringList{"one"});
        QCOMPARE(LinesOf("one\n").lines, QStringList{"one"});
        QCOMPARE(LinesOf("").lines, QStringList());
        QCOMPARE(LinesOf("\r\n").lines, QStringList{""});
    }

    // A CR that ends a block and the LF that starts the next are one line end.
    void joinsALineEndSplitBetweenBlocks() {
        QByteArray bytes(BlockSize - 1, 'x');
        bytes += "\r\nnext\r";
        const ReadLines read = LinesOf(bytes);
        QCOMPARE(read.lines.size(), 2);
        QCOMPARE(read.lines[0].size(), BlockSize - 1);
        QCOMPARE(read.lines[1], QStringLiteral("next"));
    }

    void leavesOutTheByteOrderMark() {
        const ReadLines read = LinesOf(
            "\xEF\xBB\xBF\xC4\x8D"
            "ebula\n\xE8");
        QCOMPARE(read.lines, (QStringList{"čebula", QString(QChar::ReplacementCharacter)}));
        QCOMPARE(read.encoding, Encoding::Utf8);
    }

    void findsTheEncoding() {
        QCOMPARE(LinesOf("\xC4\x8D"
                         "ebula\n")
                     .lines,
                 QStringList{"čebula"});
        QCOMPARE(LinesOf("\xC4\x8D"
                         "ebula\n")
                     .encoding,
                 Encoding::Utf8);
        QCOMPARE(LinesOf("M\x81sli\n").lines, QStringList{"Müsli"});
        QCOMPARE(LinesOf("M\x81sli\n").encoding, Encoding::Cp437);
        QCOMPARE(LinesOf("\xE8"
                         "ebula in \x9Apina\xE8"
                         "a\n")
                     .lines,
                 QStringList{"čebula in špinača"});
        QCOMPARE(LinesOf("plain\n").encoding, Encoding::Utf8);
        QCOMPARE(LinesOf("350\xF8\n", std::nullopt, Encoding::Windows1252).lines,
                 QStringList{"350ø"});
    }

    void usesTheEncodingGiven() {
        const ReadLines read = LinesOf("\xC4\x8D\n\xE8\n", Encoding::Windows1250);
        QCOMPARE(read.lines, (QStringList{"ÄŤ", "č"}));
        QCOMPARE(read.encoding, Encoding::Windows1250);
    }

    // A file that is ASCII for more than a block is judged by the block with its first byte
    // above 0x7F.
    void findsTheEncodingInALaterBlock() {
        QByteArray bytes = AsciiLines(BlockSize + 1000);
        bytes +=
            "cr\xE8me br\xFBl\xE9"
            "e\r\n";
        const ReadLines read = LinesOf(bytes);
        QCOMPARE(read.lines.last(), QStringLiteral("crème brûlée"));
        QCOMPARE(read.encoding, Encoding::Windows1252);
    }

    // UTF-8 in the first block, then a block that is not UTF-8: the first stays as read, the
    // rest is read in the code page found in it.
    void changesFromUtf8ToACodePageOnce() {
        QByteArray bytes =
            "\xC4\x8D"
            "ebula\r\n" +
            AsciiLines(BlockSize + 1000);
        bytes += "M\x81sli\r\n";
        const ReadLines read = LinesOf(bytes);
        QCOMPARE(read.lines.first(), QStringLiteral("čebula"));
        QCOMPARE(read.lines.last(), QStringLiteral("Müsli"));
        QCOMPARE(read.encoding, Encoding::Cp437);
    }
};

QTEST_GUILESS_MAIN(TestExchangeTextEncoding)
#include "tst_exchange_textencoding.moc"
