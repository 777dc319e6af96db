// What the viewer shows of a page: the document built from the display file, read as a browser
// reads it. Each test looks at the document's blocks and character formats (font size in pixels,
// weight) and compares them with the elements of the HTML5 parse tree of the same bytes.
#include <gumbo.h>

#include <QTest>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextFragment>
#include <functional>

#include "collection/SampleDatabase.h"
#include "core/Windows1250.h"
#include "core/database/modDatabase.h"
#include "display/PageDocument.h"
#include "display/modDisplay.h"
#include "tests/support/TestDatabase.h"

namespace {

QString U(const char* utf8) { return QString::fromUtf8(utf8); }

// One run of text in the document with its look.
struct Run {
    QString text;
    int pixels;
    bool bold;
    bool italic;
};

// The runs of one block.
QList<Run> Runs(const QTextBlock& block) {
    QList<Run> runs;
    for (auto it = block.begin(); !it.atEnd(); ++it) {
        const QTextFragment fragment = it.fragment();
        const QTextCharFormat format = fragment.charFormat();
        runs << Run{fragment.text(), format.font().pixelSize(), format.fontWeight() >= QFont::Bold,
                    format.fontItalic()};
    }
    return runs;
}

// The block whose text is exactly `text` (invalid when none).
QTextBlock BlockWithText(const QTextDocument& document, const QString& text) {
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        if (block.text() == text) {
            return block;
        }
    }
    return {};
}

// Every run of the block has this size and weight.
bool AllRuns(const QTextBlock& block, int pixels, bool bold) {
    const QList<Run> runs = Runs(block);
    if (runs.isEmpty()) {
        return false;
    }
    for (const Run& run : runs) {
        if (run.pixels != pixels || run.bold != bold) {
            return false;
        }
    }
    return true;
}

// The text of an element of the parse tree, whitespace collapsed as a line box does.
QString ElementText(const GumboNode* node) {
    QString text;
    std::function<void(const GumboNode*)> walk = [&](const GumboNode* n) {
        if (n->type == GUMBO_NODE_TEXT || n->type == GUMBO_NODE_WHITESPACE) {
            text += QString::fromUtf8(n->v.text.text);
        } else if (n->type == GUMBO_NODE_ELEMENT) {
            for (unsigned i = 0; i < n->v.element.children.length; ++i) {
                walk(static_cast<const GumboNode*>(n->v.element.children.data[i]));
            }
        }
    };
    walk(node);
    return text.simplified();
}

// The parse tree of page bytes, as the elements with a tag in document order.
class ParseTree {
public:
    explicit ParseTree(const QByteArray& bytes) {
        const QByteArray utf8 = Windows1250::Decode(bytes).toUtf8();
        m_output = gumbo_parse(utf8.constData());
        Collect(m_output->root);
    }
    ~ParseTree() { gumbo_destroy_output(&kGumboDefaultOptions, m_output); }
    ParseTree(const ParseTree&) = delete;
    ParseTree& operator=(const ParseTree&) = delete;

    QList<const GumboNode*> Elements(GumboTag tag) const { return m_elements.value(tag); }
    QStringList Texts(GumboTag tag) const {
        QStringList texts;
        for (const GumboNode* node : Elements(tag)) {
            texts << ElementText(node);
        }
        return texts;
    }

private:
    void Collect(const GumboNode* node) {
        if (node->type != GUMBO_NODE_ELEMENT) {
            return;
        }
        m_elements[node->v.element.tag] << node;
        for (unsigned i = 0; i < node->v.element.children.length; ++i) {
            Collect(static_cast<const GumboNode*>(node->v.element.children.data[i]));
        }
    }

    GumboOutput* m_output;
    QHash<int, QList<const GumboNode*>> m_elements;
};

// The rows of the tree's tables: the texts of their cells joined as the document shows a row
// of a recipe list.
QStringList RowTexts(const ParseTree& tree) {
    QStringList rows;
    for (const GumboNode* row : tree.Elements(GUMBO_TAG_TR)) {
        QStringList cells;
        for (unsigned i = 0; i < row->v.element.children.length; ++i) {
            const auto* cell = static_cast<const GumboNode*>(row->v.element.children.data[i]);
            if (cell->type == GUMBO_NODE_ELEMENT) {
                cells << ElementText(cell);
            }
        }
        rows << cells.join(QLatin1Char('\t'));
    }
    return rows;
}

std::unique_ptr<QTextDocument> Shown(const QByteArray& bytes) {
    auto document = std::make_unique<QTextDocument>();
    PageDocument::BuildFromBytes(*document, bytes);
    return document;
}

std::unique_ptr<QTextDocument> Shown(const QString& page) {
    return Shown(Windows1250::Encode(page));
}

const QString Head = U(
    "<html><head><title>T</title><meta http-equiv=\"Content-Type\" content=\"text/html; "
    "charset=windows-1250\"><style type=\"text/css\"><!--body{font-family:verdana;font-size:12px;}"
    "h1{font-size:22px;}h2{font-size:18px;}h3{font-size:14px;margin-bottom:5px;}"
    "table{font-family:verdana;font-size:12px;}--></style></head><body>");

}  // namespace

class TestPageDocument : public QObject {
    Q_OBJECT

private:
    // Checks a group or subgroup page against its parse tree: the h1 and h2 elements are
    // headings of 22 and 18 px in bold, everything else (descriptions, table rows) is 12 px
    // text of normal weight, and every table row is one line with its cells in order.
    void CheckListPage(const QString& page) {
        const QByteArray bytes = Windows1250::Encode(page);
        const ParseTree tree(bytes);
        const auto document = Shown(bytes);
        QStringList headings;
        for (const QString& title : tree.Texts(GUMBO_TAG_H1)) {
            const QTextBlock block = BlockWithText(*document, title);
            QVERIFY2(block.isValid(), qPrintable(title));
            QVERIFY2(AllRuns(block, 22, true), qPrintable(title));
            headings << title;
        }
        for (const QString& name : tree.Texts(GUMBO_TAG_H2)) {
            const QTextBlock block = BlockWithText(*document, name);
            QVERIFY2(block.isValid(), qPrintable(name));
            QVERIFY2(AllRuns(block, 18, true), qPrintable(name));
            headings << name;
        }
        const QStringList rows = RowTexts(tree);
        for (const QString& row : rows) {
            const QTextBlock block = BlockWithText(*document, row);
            QVERIFY2(block.isValid(), qPrintable(row));
            QVERIFY2(AllRuns(block, 12, false), qPrintable(row));
        }
        int bodyBlocks = 0;
        for (QTextBlock block = document->begin(); block.isValid(); block = block.next()) {
            if (block.text().isEmpty() || headings.contains(block.text())) {
                continue;
            }
            QVERIFY2(AllRuns(block, 12, false), qPrintable(block.text()));
            ++bodyBlocks;
        }
        QVERIFY(bodyBlocks >= rows.size());
    }

private Q_SLOTS:
    void initTestCase() { TestDatabase::IsolateEnvironment(); }

    void groupPagesOfTheSampleDatabase_data() { TestDatabase::AddKinds(); }
    void groupPagesOfTheSampleDatabase() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        SampleDatabase::Load(SampleDatabase::BuiltInText());
        const QStringList groups = TestDatabase::Rows("SELECT groupID FROM [Group] ORDER BY name;");
        QVERIFY(groups.size() >= 5);
        for (const QString& group : groups) {
            CheckListPage(modDisplay::GroupPage(group.toInt()));
            if (QTest::currentTestFailed()) {
                return;
            }
        }
        const QStringList types = TestDatabase::Rows("SELECT typeID FROM [Type];");
        for (const QString& type : types) {
            CheckListPage(modDisplay::TypePage(type.toInt()));
            if (QTest::currentTestFailed()) {
                return;
            }
        }
    }

    // The subgroup heading is closed by "</h1>": the heading ends there, and the description
    // and the table after it are ordinary text.
    void subgroupHeadingEndsAtItsClosingTag_data() { TestDatabase::AddKinds(); }
    void subgroupHeadingEndsAtItsClosingTag() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        TestDatabase::LoadSmallCollection();
        TestDatabase::Exec("UPDATE [Type] SET description = 'Jedi z mesom' WHERE typeID = 1;");
        const auto document = Shown(modDisplay::GroupPage(1));
        const QTextBlock heading = BlockWithText(*document, U("Mesne juhe"));
        QVERIFY(heading.isValid());
        QVERIFY(AllRuns(heading, 18, true));
        QCOMPARE(heading.blockFormat().topMargin(), 0.83 * 18);
        const QTextBlock description = heading.next();
        QCOMPARE(description.text(), U("Jedi z mesom"));
        QVERIFY(AllRuns(description, 12, false));
        QCOMPARE(description.next().text(), U("Goveja juha\t1"));
        QVERIFY(AllRuns(description.next(), 12, false));
        // The group's description keeps its words; its line break is a blank as in a browser.
        QVERIFY(BlockWithText(*document, U("Tople juhe in enolončnice")).isValid());
        QCOMPARE(document->metaInformation(QTextDocument::DocumentTitle), U("Juhe"));
    }

    void recipePageHeadings_data() { TestDatabase::AddKinds(); }
    void recipePageHeadings() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        TestDatabase::LoadSmallCollection();
        const QByteArray bytes = Windows1250::Encode(modDisplay::RecipePage(3));
        const ParseTree tree(bytes);
        const auto document = Shown(bytes);
        QCOMPARE(tree.Texts(GUMBO_TAG_H3),
                 (QStringList{"Sestavine:", "Potek dela:", "Sestavine:", "Potek dela:"}));
        int found = 0;
        for (QTextBlock block = document->begin(); block.isValid(); block = block.next()) {
            if (block.text() == U("Sestavine:") || block.text() == U("Potek dela:")) {
                QVERIFY(AllRuns(block, 14, true));
                QCOMPARE(block.blockFormat().bottomMargin(), 5.0);
                ++found;
            }
        }
        QCOMPARE(found, 4);
        const QTextBlock title = BlockWithText(*document, U("čokoladna torta"));
        QVERIFY(AllRuns(title, 22, true));
        for (const QString& section : tree.Texts(GUMBO_TAG_H2)) {
            QVERIFY(AllRuns(BlockWithText(*document, section), 18, true));
        }
        const QTextBlock line = BlockWithText(*document, U("300 g moka"));
        QVERIFY(line.isValid());
        QVERIFY(AllRuns(line, 12, false));
        // The head line and the source: ordinary text, three lines.
        QCOMPARE(document->begin().text(),
                 U("Sladice - Pecivo\u2028Recept št. 3\u2028Vir: Knjiga"));
        QVERIFY(AllRuns(document->begin(), 12, false));

        // Two ingredient lines: one block, a line each, 12 px normal, no empty line after.
        const auto twoLines = Shown(modDisplay::RecipePage(2));
        // (the lines come in the order the database returns them)
        QTextBlock lines = BlockWithText(*twoLines, U("500 g korenje\u2028200 g krompir"));
        if (!lines.isValid()) {
            lines = BlockWithText(*twoLines, U("200 g krompir\u2028500 g korenje"));
        }
        QVERIFY2(lines.isValid(), qPrintable(twoLines->toPlainText()));
        QVERIFY(AllRuns(lines, 12, false));
    }

    // The recipe page ends with a closing table tag that has no table: it shows nothing.
    void strayTableEndShowsNothing() {
        const auto document =
            Shown(Head + U("A - B<br>Recept št. 5<br><h1>Kruh</h1></table></body></html>"));
        QCOMPARE(document->toPlainText().trimmed(), U("A - B\nRecept št. 5\nKruh"));
    }

    // Texts put into the page unescaped behave as markup, as in a browser.
    void textsThatFormTags_data() {
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<QString>("boldPart");
        QTest::addColumn<QString>("italicPart");
        QTest::newRow("bold") << U("Sir <b>močan</b>") << U("Sir močan") << U("Sir močan")
                              << QString();
        QTest::newRow("ampersand")
            << U("Sol & poper") << U("Sol & poper") << U("Sol & poper") << QString();
        QTest::newRow("entity") << U("Sol &amp; poper &lt;3") << U("Sol & poper <3")
                                << U("Sol & poper <3") << QString();
        QTest::newRow("lone less-than") << U("a < b") << U("a < b") << U("a < b") << QString();
        QTest::newRow("italic") << U("<i>Pita</i> z jabolki") << U("Pita z jabolki")
                                << U("Pita z jabolki") << U("Pita");
    }
    void textsThatFormTags() {
        QFETCH(QString, title);
        QFETCH(QString, shown);
        QFETCH(QString, boldPart);
        QFETCH(QString, italicPart);
        const auto document = Shown(Head + U("<h1>") + title + U("</h1>Besedilo</body></html>"));
        const QTextBlock heading = BlockWithText(*document, shown);
        QVERIFY2(heading.isValid(), qPrintable(document->toPlainText()));
        QString bold;
        QString italic;
        for (const Run& run : Runs(heading)) {
            QCOMPARE(run.pixels, 22);
            if (run.bold) {
                bold += run.text;
            }
            if (run.italic) {
                italic += run.text;
            }
        }
        QCOMPARE(bold, boldPart);
        QCOMPARE(italic, italicPart);
        QVERIFY(AllRuns(BlockWithText(*document, U("Besedilo")), 12, false));
    }

    // A tag left open in a title: the parse tree says how far it reaches, the document follows.
    void openTagInATitleReachesAsFarAsTheTreeSays() {
        const QString page = Head + U("<h1><b>Odprto</h1>Opis<table width=\"100%\" border=\"0\">"
                                      "<tr><td>Ena</td><td align=\"right\">1</td></tr></table>"
                                      "</body></html>");
        const ParseTree tree(Windows1250::Encode(page));
        const QStringList boldTexts = tree.Texts(GUMBO_TAG_B);
        const auto document = Shown(page);
        QString bold;
        for (QTextBlock block = document->begin(); block.isValid(); block = block.next()) {
            for (const Run& run : Runs(block)) {
                if (run.bold && run.pixels != 22) {
                    bold += run.text;
                }
            }
        }
        // The formatting element is opened again after the heading (HTML5's reconstruction),
        // up to the table, which does not inherit it.
        QVERIFY(boldTexts.size() >= 2);
        QVERIFY(boldTexts[1].startsWith(U("Opis")));
        QCOMPARE(bold, U("Opis"));
        QVERIFY(AllRuns(BlockWithText(*document, U("Ena\t1")), 12, false));
    }

    // The page format's edge cases: an empty section title gives an empty heading (no line of
    // its own), a subgroup without recipes an empty table (nothing shown), a section without
    // ingredient lines a heading right before the next one, a group without subgroups ends
    // with its description.
    void edgeCasesOfThePages() {
        const auto recipe = Shown(Head + U("A - B<br>Recept št. 7<br><h1>Kruh</h1><h2></h2>"
                                           "<h3>Sestavine:</h3><h3>Potek dela:</h3>Pečemo."
                                           "</table></body></html>"));
        QStringList texts;
        for (QTextBlock block = recipe->begin(); block.isValid(); block = block.next()) {
            texts << block.text();
        }
        QCOMPARE(texts, (QStringList{U("A - B\u2028Recept št. 7"), U("Kruh"), U("Sestavine:"),
                                     U("Potek dela:"), U("Pečemo.")}));
        QVERIFY(AllRuns(recipe->begin().next().next(), 14, true));
        QVERIFY(AllRuns(recipe->lastBlock(), 12, false));

        const auto group = Shown(Head + U("<h1>G</h1>Opis<h2>Prazna</h1>"
                                          "<table width=\"100%\" border=\"0\"></table>"
                                          "<h2>Druga</h1>Opis druge<table width=\"100%\" "
                                          "border=\"0\"><tr><td>R</td><td align=\"right\">4"
                                          "</td></tr></table></body></html>"));
        texts.clear();
        for (QTextBlock block = group->begin(); block.isValid(); block = block.next()) {
            texts << block.text();
        }
        QCOMPARE(texts.mid(0, 6), (QStringList{U("G"), U("Opis"), U("Prazna"), U("Druga"),
                                               U("Opis druge"), U("R\t4")}));
        QVERIFY(AllRuns(BlockWithText(*group, U("Prazna")), 18, true));
        QVERIFY(AllRuns(BlockWithText(*group, U("Druga")), 18, true));

        const auto alone = Shown(Head + U("<h1>Samo</h1>Brez podskupin</body></html>"));
        QCOMPARE(alone->lastBlock().text(), U("Brez podskupin"));
        QVERIFY(AllRuns(alone->lastBlock(), 12, false));
    }

    // Line breaks: each "<br>" starts a line, and the last one of a block adds none.
    void lineBreaksAsABrowserShowsThem() {
        const auto document =
            Shown(Head + U("<h3>Sestavine:</h3>1 g a<br>2 g b<br><h3>Potek dela:</h3>"
                           "x<br><br>y</body></html>"));
        QVERIFY(BlockWithText(*document, U("1 g a\u20282 g b")).isValid());
        QVERIFY(BlockWithText(*document, U("x\u2028\u2028y")).isValid());
    }

    // Whitespace in stored texts collapses: CR LF and runs of blanks show as one blank.
    void whitespaceCollapses() {
        const auto document =
            Shown(Head + U("<h1>G</h1>  Prva vrstica\r\ndruga   vrstica  </body></html>"));
        QVERIFY(BlockWithText(*document, U("Prva vrstica druga vrstica")).isValid());
    }

    // The rows of a recipe list put the number at the right edge of the width given.
    void rowNumbersSitAtTheRightEdge() {
        const auto document =
            Shown(Head + U("<table width=\"100%\" border=\"0\"><tr><td>A</td>"
                           "<td align=\"right\">123456</td></tr></table></body></html>"));
        PageDocument::FitWidth(*document, 600);
        const QTextBlock row = BlockWithText(*document, U("A\t123456"));
        QVERIFY(row.isValid());
        const QList<QTextOption::Tab> tabs = row.blockFormat().tabPositions();
        QCOMPARE(tabs.size(), 1);
        QCOMPARE(tabs[0].type, QTextOption::RightTab);
        const qreal margins = row.blockFormat().leftMargin() + row.blockFormat().rightMargin();
        QCOMPARE(tabs[0].position, 600 - 2 * document->documentMargin() - margins);
    }

    // A table that is not a recipe list stays a table, with its cells as the tree has them.
    void otherTablesStayTables() {
        const auto document = Shown(Head + U("<table border=\"1\"><tr><td>a</td><td>b</td>"
                                             "<td>c</td></tr></table></body></html>"));
        QCOMPARE(document->rootFrame()->childFrames().size(), 1);
        QVERIFY(document->toPlainText().contains(U("a\nb\nc")));
    }
};

QTEST_MAIN(TestPageDocument)
#include "tst_pagedocument.moc"
