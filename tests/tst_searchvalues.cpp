// Values given to morvena-tool search are taken as the search window takes typed values: without
// their apostrophes, so that a value never leaves its literal.
#include <QFile>
#include <QTest>

#include "tests/support/TestDatabase.h"
#include "tests/support/ToolRun.h"

using ToolRun::Result;
using ToolRun::Tool;
using ToolRun::Work;

class TestSearchValues : public QObject {
    Q_OBJECT

    QString m_database;

private Q_SLOTS:
    void initTestCase() {
        TestDatabase::IsolateEnvironment();
        m_database = Work(QStringLiteral("values.db"));
        QFile::remove(m_database);
        QCOMPARE(Tool({"create-db", "--sample", m_database}).exitCode, 0);
    }

    void anApostropheIsRemovedAsTheWindowRemovesIt() {
        const Result sql = Tool({"search", "--RecipeTitle", "Mamin' recept", "--sql"});
        QCOMPARE(sql.exitCode, 0);
        QVERIFY2(sql.out.contains(QStringLiteral("'%Mamin recept%'")), qPrintable(sql.out));
        QVERIFY(!sql.out.contains(QStringLiteral("Mamin'")));
        const Result found =
            Tool({"search", "--RecipeTitle", "Mamin' recept", "--database", m_database});
        QCOMPARE(found.exitCode, 0);
        QCOMPARE(found.err, QString());
    }

    // A value that would close its literal and add a condition finds what its text finds:
    // nothing.
    void aValueNeverAddsACondition() {
        const Result found =
            Tool({"search", "--RecipeTitle", "zzz%' OR 1=1 OR '", "--database", m_database});
        QCOMPARE(found.exitCode, 0);
        QCOMPARE(found.out, QString());
        const Result juha = Tool({"search", "--RecipeTitle", "ju'ha", "--database", m_database});
        QCOMPARE(juha.exitCode, 0);
        QVERIFY(juha.out.contains(QStringLiteral("Goveja juha z rezanci")));
    }
};

QTEST_MAIN(TestSearchValues)
#include "tst_searchvalues.moc"
