// Pages no cook writes but a collection may hold: markup nested thousands deep, tables within
// tables, a million entities. The viewer's document keeps every text and stays within the
// bounds a browser keeps (512 elements deep); tables nest at most six deep and a page lays out
// at most 1,000 of them as tables; morvena-tool prints each such page.
#include <QFile>
#include <QTest>
#include <QTextDocument>
#include <QTextFrame>
#include <QTextTable>

#include "core/database/modDatabase.h"
#include "display/PageDocument.h"
#include "tests/support/TestDatabase.h"
#include "tests/support/ToolRun.h"

using ToolRun::FileBytes;
using ToolRun::Tool;
using ToolRun::Work;

namespace {

QString Nested(const QString& open, const QString& text, const QString& close, int times) {
    return open.repeated(times) + text + close.repeated(times);
}

// How deep tables nest in a frame, and how many there are.
void CountTables(QTextFrame* frame, int depth, int& deepest, int& tables) {
    for (QTextFrame* child : frame->childFrames()) {
        const bool table = qobject_cast<QTextTable*>(child) != nullptr;
        tables += table ? 1 : 0;
        deepest = std::max(deepest, depth + (table ? 1 : 0));
        CountTables(child, depth + (table ? 1 : 0), deepest, tables);
    }
}

QString Visible(const QTextDocument& document) {
    return document.toPlainText().remove(QChar(0x200B));
}

}  // namespace

class TestHostilePages : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { TestDatabase::IsolateEnvironment(); }

    void fifteenThousandNestedDivisions() {
        QTextDocument document;
        PageDocument::Build(document, QStringLiteral("<p>Pred</p>") +
                                          Nested("<div>", "globoko", "</div>", 15000) +
                                          QStringLiteral("<p>Po</p>"));
        QCOMPARE(Visible(document).simplified(), QStringLiteral("Pred globoko Po"));
        QVERIFY(document.blockCount() <= 600);
    }

    void fiftyThousandNestedTables() {
        QTextDocument document;
        PageDocument::Build(document,
                            Nested("<table><tr><td>", "miza", "</td></tr></table>", 50000));
        QCOMPARE(Visible(document).simplified(), QStringLiteral("miza"));
        int deepest = 0;
        int tables = 0;
        CountTables(document.rootFrame(), 0, deepest, tables);
        QCOMPARE(deepest, 6);
        QCOMPARE(tables, 6);
    }

    // Tables after the first thousand show their cells as lines of their own.
    void twoThousandTablesInARow() {
        QString html;
        for (int i = 1; i <= 2000; ++i) {
            html += QStringLiteral("<table><tr><td>a%1</td><td>b%1</td></tr></table>").arg(i);
        }
        QTextDocument document;
        PageDocument::Build(document, html);
        int deepest = 0;
        int tables = 0;
        CountTables(document.rootFrame(), 0, deepest, tables);
        QCOMPARE(tables, 1000);
        const QString text = Visible(document);
        QVERIFY(text.contains(QStringLiteral("a1000")));
        QVERIFY(text.contains(QStringLiteral("a2000\nb2000")));
    }

    void aMillionEntities() {
        QTextDocument document;
        PageDocument::Build(document, QStringLiteral("&amp;").repeated(1000000));
        QCOMPARE(Visible(document), QString(1000000, QLatin1Char('&')));
    }

    // Printed whole by morvena-tool: one recipe for each page above.
    void printsEachPage() {
        const QString database = Work(QStringLiteral("hostile.db"));
        QFile::remove(database);
        QCOMPARE(Tool({"create-db", "--sample", database}).exitCode, 0);
        TestDatabase::UseSettingsFor(TestDatabase::Sqlite, database);
        modDatabase::OpenConnection();
        const QStringList texts{Nested("<div>", "globoko", "</div>", 15000),
                                Nested("<table><tr><td>", "miza", "</td></tr></table>", 50000),
                                QStringLiteral("&amp;").repeated(1000000)};
        for (int i = 0; i < texts.size(); ++i) {
            TestDatabase::Exec(QStringLiteral("UPDATE [Section] SET instructions = '%1' WHERE "
                                              "sectionID = %2;")
                                   .arg(texts[i])
                                   .arg(i + 1));
        }
        modDatabase::Connection.reset();
        for (const QString recipe : {"1", "2", "3"}) {
            const QString pdf = Work(QStringLiteral("hostile%1.pdf").arg(recipe));
            const auto result = Tool({"print", "R", recipe, "--pdf", pdf, "--database", database});
            QCOMPARE(result.exitCode, 0);
            QVERIFY(FileBytes(pdf).startsWith("%PDF-"));
        }
    }
};

QTEST_MAIN(TestHostilePages)
#include "tst_hostilepages.moc"
