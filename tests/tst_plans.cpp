// The query plans of the searches on a generated collection: the search by ingredient starts
// from the matching ingredients and reaches the recipes through the covering indexes; the search
// by method text reads the sections as they lie (SQLite) or through the trigram index
// (PostgreSQL); the planner figures the program writes stay when the file is opened again.
#include <QTest>

#include "collection/SyntheticDatabase.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "search/SearchQuery.h"
#include "tests/support/TestDatabase.h"

namespace {

QString Search(int criterion, const QString& value) {
    SearchQuery::Criteria criteria;
    criteria.values[criterion] = QStringList{value};
    return SearchQuery::BuildQuery(criteria, 0, 1);
}

// The plan as one text, one step a line.
QString Plan(const QString& sql) {
    const bool sqlite = modDatabase::Connection->Kind() == modDatabase::FileDatabase;
    const QStringList rows = TestDatabase::Rows(
        (sqlite ? QStringLiteral("EXPLAIN QUERY PLAN ") : QStringLiteral("EXPLAIN ")) + sql);
    QStringList steps;
    for (const QString& row : rows) {
        steps << (sqlite ? row.section(QLatin1Char('|'), 3) : row);
    }
    return steps.join(QLatin1Char('\n'));
}

}  // namespace

class TestPlans : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { TestDatabase::IsolateEnvironment(); }
    void cleanup() { modDatabase::Connection.reset(); }

    void searchesStartFromWhatMatches_data() { TestDatabase::AddKinds(); }
    void searchesStartFromWhatMatches() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        SyntheticDatabase::Generate(*modDatabase::Connection, 3000,
                                    SyntheticDatabase::Shape::Uniform);
        const QString ingredient = Search(SearchQuery::Ingredient, QStringLiteral("omaka 243"));
        const QString method = Search(SearchQuery::Instructions, QStringLiteral("žafran"));
        if (kind == TestDatabase::Sqlite) {
            // opened again: the statistics the program wrote are read from the file
            modDatabase::OpenConnection();
            const QString byIngredient = Plan(ingredient);
            QVERIFY2(byIngredient.contains(QStringLiteral(
                         "SCAN Ingredient\nSEARCH SectionIngredient USING COVERING INDEX "
                         "SectionIngredientIngredient (ingredientID=?)\nSEARCH RecipeSection "
                         "USING COVERING INDEX RecipeSectionSection (sectionID=?)")),
                     qPrintable(byIngredient));
            const QString byMethod = Plan(method);
            QVERIFY2(byMethod.contains(
                         QStringLiteral("SCAN Section\nSEARCH RecipeSection USING COVERING INDEX "
                                        "RecipeSectionSection (sectionID=?)")),
                     qPrintable(byMethod));
        } else {
            // The collection is small enough for reading whole tables; the indexes must serve
            // when reading them is not an option.
            TestDatabase::Exec(QStringLiteral("SET enable_seqscan = off"));
            const QString byIngredient = Plan(ingredient);
            QVERIFY2(byIngredient.contains(QStringLiteral("on sectioningredient_ingredient")),
                     qPrintable(byIngredient));
            TestDatabase::Exec(QStringLiteral("SET enable_indexscan = off"));
            const QString byMethod = Plan(method);
            QVERIFY2(byMethod.contains(QStringLiteral("section_instructions_trigrams")),
                     qPrintable(byMethod));
        }
        QCOMPARE(TestDatabase::Rows(method), QStringList());
        QVERIFY(TestDatabase::Rows(ingredient).size() > 50);
    }
};

QTEST_MAIN(TestPlans)
#include "tst_plans.moc"
