// The query text of a recipe search, character for character: base query, terms of every kind,
// operators within and between criteria, joining, the order clause, values as they are.
#include <QTest>

#include "search/SearchQuery.h"

using namespace SearchQuery;

namespace {

const QString Base = QStringLiteral(
    "SELECT [title], [recipeID], [Group].[name] AS [groupName], [Type].[name] AS typeName FROM "
    "(([Recipe] INNER JOIN [Type] ON [Recipe].[typeID] = [Type].[typeID]) INNER JOIN [Group] ON "
    "[Group].[groupID] = [Type].[groupID]) ");

const QString WorkedExample = QStringLiteral(
    "SELECT [title], [recipeID], [Group].[name] AS [groupName], [Type].[name] AS typeName FROM "
    "(([Recipe] INNER JOIN [Type] ON [Recipe].[typeID] = [Type].[typeID]) INNER JOIN [Group] ON "
    "[Group].[groupID] = [Type].[groupID])  WHERE (([Group].[name] LIKE '%juhe%')) AND "
    "((recipeID IN (SELECT DISTINCT recipeID FROM (([SectionIngredient] INNER JOIN "
    "[RecipeSection] ON [SectionIngredient].sectionID = [RecipeSection].sectionID) INNER JOIN "
    "[Ingredient] ON [SectionIngredient].ingredientID = [Ingredient].ingredientID) WHERE "
    "[Ingredient].name LIKE '%korenje%')) OR (recipeID IN (SELECT DISTINCT recipeID FROM "
    "(([SectionIngredient] INNER JOIN [RecipeSection] ON [SectionIngredient].sectionID = "
    "[RecipeSection].sectionID) INNER JOIN [Ingredient] ON [SectionIngredient].ingredientID = "
    "[Ingredient].ingredientID) WHERE [Ingredient].name LIKE '%krompir%'))) ORDER BY [title] "
    "ASC;");

QString SectionTerm(const QString& v) {
    return QStringLiteral(
               "(recipeID IN (SELECT DISTINCT recipeID FROM ([Section] INNER JOIN [RecipeSection] "
               "ON [Section].sectionID = [RecipeSection].sectionID) WHERE [Section].title LIKE "
               "'%") +
           v + QStringLiteral("%'))");
}

QString IngredientTerm(const QString& v) {
    return QStringLiteral(
               "(recipeID IN (SELECT DISTINCT recipeID FROM (([SectionIngredient] INNER JOIN "
               "[RecipeSection] ON [SectionIngredient].sectionID = [RecipeSection].sectionID) "
               "INNER JOIN [Ingredient] ON [SectionIngredient].ingredientID = "
               "[Ingredient].ingredientID) WHERE [Ingredient].name LIKE '%") +
           v + QStringLiteral("%'))");
}

QString InstructionsTerm(const QString& v) {
    return QStringLiteral(
               "(recipeID IN (SELECT DISTINCT recipeID FROM ([Section] INNER JOIN [RecipeSection] "
               "ON [Section].sectionID = [RecipeSection].sectionID) WHERE [Section].instructions "
               "LIKE '%") +
           v + QStringLiteral("%'))");
}

Criteria With(std::initializer_list<std::tuple<int, QStringList, qint16>> entries) {
    Criteria criteria;
    for (const auto& [criterion, values, match] : entries) {
        criteria.values[criterion] = values;
        criteria.match[criterion] = match;
    }
    return criteria;
}

}  // namespace

class TestSearchQuery : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void workedExampleWholeText() {
        const Criteria criteria =
            With({{Group, {"juhe"}, 0}, {Ingredient, {"korenje", "krompir"}, 1}});
        QCOMPARE(BuildQuery(criteria, 0, 1), WorkedExample);
    }

    void baseQueryEndsWithOneBlank() {
        QCOMPARE(BaseQuery(), Base);
        QVERIFY(BaseQuery().endsWith(QStringLiteral("[Type].[groupID]) ")));
        QVERIFY(!BaseQuery().contains(QStringLiteral("WHERE"), Qt::CaseInsensitive));
    }

    void noCriteriaGivesBaseAndOrder() {
        QCOMPARE(BuildQuery(Criteria{}, 0, 1), Base + QStringLiteral(" ORDER BY [title] ASC;"));
        QVERIFY(BuildQuery(Criteria{}, 1, 1)
                    .endsWith(QStringLiteral("[Type].[groupID])  ORDER BY [title] ASC;")));
        // Match modes of criteria without values change nothing.
        Criteria modes;
        modes.match = {1, 1, 7, -1, 1, 1};
        QCOMPARE(BuildQuery(modes, 0, 1), BuildQuery(Criteria{}, 0, 1));
    }

    void getOperator_data() {
        QTest::addColumn<qint16>("mode");
        QTest::addColumn<QString>("op");
        QTest::newRow("0 all") << qint16(0) << QStringLiteral(" AND ");
        QTest::newRow("1 any") << qint16(1) << QStringLiteral(" OR ");
        QTest::newRow("2") << qint16(2) << QString();
        QTest::newRow("-1") << qint16(-1) << QString();
        QTest::newRow("32767") << qint16(32767) << QString();
        QTest::newRow("-32768") << qint16(-32768) << QString();
    }
    void getOperator() {
        QFETCH(qint16, mode);
        QFETCH(QString, op);
        QCOMPARE(GetOperator(mode), op);
        QVERIFY(!GetOperator(mode).isNull() || op.isEmpty());
    }

    void everyTermKind_data() {
        QTest::addColumn<int>("criterion");
        QTest::addColumn<QString>("test");
        QTest::newRow("Group") << int(Group) << QStringLiteral("(([Group].[name] LIKE '%juhe%'))");
        QTest::newRow("Type") << int(Type) << QStringLiteral("(([Type].[name] LIKE '%juhe%'))");
        QTest::newRow("RecipeTitle")
            << int(RecipeTitle) << QStringLiteral("(([title] LIKE '%juhe%'))");
        QTest::newRow("SectionTitle")
            << int(SectionTitle) << QLatin1Char('(') + SectionTerm("juhe") + QLatin1Char(')');
        QTest::newRow("Ingredient")
            << int(Ingredient) << QLatin1Char('(') + IngredientTerm("juhe") + QLatin1Char(')');
        QTest::newRow("Instructions")
            << int(Instructions) << QLatin1Char('(') + InstructionsTerm("juhe") + QLatin1Char(')');
    }
    void everyTermKind() {
        QFETCH(int, criterion);
        QFETCH(QString, test);
        Criteria criteria;
        criteria.values[criterion] = QStringList{"juhe"};
        QCOMPARE(BuildQuery(criteria, 0, 1), Base + QStringLiteral(" WHERE ") + test +
                                                 QStringLiteral(" ORDER BY [title] ASC;"));
        QCOMPARE(CriterionTest(criterion, {"juhe"}, QStringLiteral(" AND ")), test);
    }

    void generatorsDirectly() {
        QCOMPARE(GenerateSubQuery("[title]", " OR ", {"a", "b", "c"}),
                 QStringLiteral("(([title] LIKE '%a%') OR ([title] LIKE '%b%') OR ([title] LIKE "
                                "'%c%'))"));
        QCOMPARE(GenerateSubQuery("[title]", " AND ", {}), QString());
        QCOMPARE(GenerateSectionQuery(" AND ", {}), QString());
        QCOMPARE(GenerateIngredientQuery(" AND ", {}), QString());
        QCOMPARE(GenerateInstructionsQuery(" AND ", {}), QString());
        QCOMPARE(GenerateSectionQuery(" AND ", {"a", "b"}),
                 QLatin1Char('(') + SectionTerm("a") + " AND " + SectionTerm("b") + ')');
        QCOMPARE(GenerateIngredientQuery(" OR ", {"a", "b"}),
                 QLatin1Char('(') + IngredientTerm("a") + " OR " + IngredientTerm("b") + ')');
        QCOMPARE(GenerateInstructionsQuery(" OR ", {"a"}),
                 QLatin1Char('(') + InstructionsTerm("a") + ')');
    }

    void ownOperatorWithinOverallOperatorBetween() {
        const Criteria criteria = With({{RecipeTitle, {"a", "b"}, 1}, {Ingredient, {"c"}, 0}});
        QCOMPARE(BuildQuery(criteria, 0, 1),
                 Base + " WHERE (([title] LIKE '%a%') OR ([title] LIKE '%b%')) AND (" +
                     IngredientTerm("c") + ") ORDER BY [title] ASC;");
        const Criteria reverse = With({{Group, {"a", "b"}, 0}, {Type, {"c"}, 1}});
        QCOMPARE(BuildQuery(reverse, 1, 1),
                 Base +
                     " WHERE (([Group].[name] LIKE '%a%') AND ([Group].[name] LIKE '%b%')) OR "
                     "(([Type].[name] LIKE '%c%')) ORDER BY [title] ASC;");
        // ((a OR b)) AND ((c)) in the shape of the terms.
        const QString query = BuildQuery(With({{Group, {"a", "b"}, 1}, {Type, {"c"}, 0}}), 0, 1);
        QVERIFY(query.contains(
            QStringLiteral(" WHERE (([Group].[name] LIKE '%a%') OR ([Group].[name] LIKE '%b%')) "
                           "AND (([Type].[name] LIKE '%c%')) ORDER")));
    }

    void criteriaInFixedOrderWhateverTheirFilling() {
        const Criteria criteria = With({{Instructions, {"f"}, 0},
                                        {Group, {"a"}, 0},
                                        {SectionTitle, {"d"}, 0},
                                        {Type, {"b"}, 0},
                                        {Ingredient, {"e"}, 0},
                                        {RecipeTitle, {"c"}, 0}});
        QCOMPARE(BuildQuery(criteria, 1, 1),
                 Base +
                     " WHERE (([Group].[name] LIKE '%a%')) OR (([Type].[name] LIKE '%b%')) OR "
                     "(([title] LIKE '%c%')) OR (" +
                     SectionTerm("d") + ") OR (" + IngredientTerm("e") + ") OR (" +
                     InstructionsTerm("f") + ") ORDER BY [title] ASC;");
    }

    void criterionModeOtherThanZeroOrOneJoinsBackToBack() {
        for (const qint16 mode : {qint16(2), qint16(-1), qint16(99)}) {
            const Criteria criteria = With({{RecipeTitle, {"a", "b", "c"}, mode}});
            QCOMPARE(BuildQuery(criteria, 0, 1),
                     Base +
                         " WHERE (([title] LIKE '%a%')([title] LIKE '%b%')([title] LIKE '%c%')) "
                         "ORDER BY [title] ASC;");
        }
        QCOMPARE(BuildQuery(With({{Ingredient, {"a", "b"}, 5}}), 0, 1),
                 Base + " WHERE (" + IngredientTerm("a") + IngredientTerm("b") +
                     ") ORDER BY [title] ASC;");
    }

    void overallModeOtherThanZeroOrOneJoinsBackToBack() {
        const Criteria criteria =
            With({{Group, {"a"}, 0}, {Type, {"b"}, 1}, {RecipeTitle, {"c"}, 0}});
        QCOMPARE(BuildQuery(criteria, 2, 1),
                 Base +
                     " WHERE (([Group].[name] LIKE '%a%'))(([Type].[name] LIKE '%b%'))(([title] "
                     "LIKE '%c%')) ORDER BY [title] ASC;");
        QCOMPARE(BuildQuery(criteria, -1, 1), BuildQuery(criteria, 2, 1));
    }

    void joinQueriesSearchesTheTextForWhere() {
        QCOMPARE(JoinQueries("SELECT x ", "(t)", " AND "), QStringLiteral("SELECT x  WHERE (t)"));
        QCOMPARE(JoinQueries("SELECT x WHERE (a)", "(t)", " AND "),
                 QStringLiteral("SELECT x WHERE (a) AND (t)"));
        QCOMPARE(JoinQueries("SELECT x where (a)", "(t)", " OR "),
                 QStringLiteral("SELECT x where (a) OR (t)"));
        QCOMPARE(JoinQueries("SELECT nowhere ", "(t)", " OR "),
                 QStringLiteral("SELECT nowhere  OR (t)"));
        QCOMPARE(JoinQueries("SELECT x WhErE", "(t)", QString()),
                 QStringLiteral("SELECT x WhErE(t)"));
        // A value with "where" in it, in the first criterion, takes the place of WHERE for the
        // next one: the operator follows instead of " WHERE ".
        const Criteria criteria = With({{Group, {"somewhere"}, 0}, {Type, {"b"}, 0}});
        QCOMPARE(BuildQuery(criteria, 0, 1),
                 Base +
                     " WHERE (([Group].[name] LIKE '%somewhere%')) AND (([Type].[name] LIKE "
                     "'%b%')) ORDER BY [title] ASC;");
        // ... and with only a "where" in the last place, nothing introduces the first test.
        QCOMPARE(JoinQueries(Base + "x where", "(t)", " AND "), Base + "x where AND (t)");
    }

    void orderClauseForEverySortColumn_data() {
        QTest::addColumn<qint16>("sortColumn");
        QTest::addColumn<QString>("clause");
        QTest::newRow("1") << qint16(1) << QStringLiteral(" ORDER BY [title] ASC;");
        QTest::newRow("-1") << qint16(-1) << QStringLiteral(" ORDER BY [title] DESC;");
        QTest::newRow("2") << qint16(2) << QStringLiteral(" ORDER BY [recipeID] ASC;");
        QTest::newRow("-2") << qint16(-2) << QStringLiteral(" ORDER BY [recipeID] DESC;");
        QTest::newRow("3") << qint16(3) << QStringLiteral(" ORDER BY [Group].[name] ASC;");
        QTest::newRow("-3") << qint16(-3) << QStringLiteral(" ORDER BY [Group].[name] DESC;");
        QTest::newRow("4") << qint16(4) << QStringLiteral(" ORDER BY [Type].[name] ASC;");
        QTest::newRow("-4") << qint16(-4) << QStringLiteral(" ORDER BY [Type].[name] DESC;");
        QTest::newRow("0") << qint16(0) << QStringLiteral(" ORDER BY  DESC;");
        QTest::newRow("5") << qint16(5) << QStringLiteral(" ORDER BY  ASC;");
        QTest::newRow("-5") << qint16(-5) << QStringLiteral(" ORDER BY  DESC;");
        QTest::newRow("32767") << qint16(32767) << QStringLiteral(" ORDER BY  ASC;");
        QTest::newRow("-32768") << qint16(-32768) << QStringLiteral(" ORDER BY  DESC;");
    }
    void orderClauseForEverySortColumn() {
        QFETCH(qint16, sortColumn);
        QFETCH(QString, clause);
        QCOMPARE(GenerateOrderSubQuery(sortColumn), clause);
        QCOMPARE(BuildQuery(Criteria{}, 0, sortColumn), Base + clause);
    }

    void emptyValueMatchesAnything() {
        QCOMPARE(BuildQuery(With({{RecipeTitle, {""}, 0}}), 0, 1),
                 Base + " WHERE (([title] LIKE '%%')) ORDER BY [title] ASC;");
        QVERIFY(BuildQuery(With({{SectionTitle, {""}, 0}}), 0, 1)
                    .contains(QStringLiteral("[Section].title LIKE '%%'))")));
        QCOMPARE(GenerateSubQuery("[title]", " AND ", {"", ""}),
                 QStringLiteral("(([title] LIKE '%%') AND ([title] LIKE '%%'))"));
    }

    void valuesPassThroughUnchanged_data() {
        QTest::addColumn<QString>("value");
        QTest::newRow("letter case") << QStringLiteral("ČOKOLADa");
        QTest::newRow("percent") << QStringLiteral("50% moke");
        QTest::newRow("underscore") << QStringLiteral("Gov_ja");
        QTest::newRow("apostrophe") << QStringLiteral("O'Brien");
        QTest::newRow("blanks") << QStringLiteral("  dve  besedi ");
        QTest::newRow("brackets") << QStringLiteral("[Group]");
    }
    void valuesPassThroughUnchanged() {
        QFETCH(QString, value);
        QCOMPARE(BuildQuery(With({{Type, {value}, 0}}), 0, 1),
                 Base + " WHERE (([Type].[name] LIKE '%" + value + "%')) ORDER BY [title] ASC;");
        QCOMPARE(GenerateIngredientQuery(" AND ", {value}),
                 QLatin1Char('(') + IngredientTerm(value) + ')');
    }

    void duplicateValuesStay() {
        QCOMPARE(GenerateSubQuery("[title]", " AND ", {"a", "a"}),
                 QStringLiteral("(([title] LIKE '%a%') AND ([title] LIKE '%a%'))"));
    }

    void keysAndLabels() {
        const QStringList keys{"Group",        "Type",       "RecipeTitle",
                               "SectionTitle", "Ingredient", "Instructions"};
        const QStringList labels{"Skupina",         "Podskupina", "Naslov recepta",
                                 "Naslov razdelka", "Sestavine",  "Potek dela"};
        for (int i = 0; i < CriterionCount; ++i) {
            QCOMPARE(Key(i), keys[i]);
            QCOMPARE(Label(i), labels[i]);
            QCOMPARE(CriterionOf(keys[i]), i);
        }
        QCOMPARE(CriterionOf("group"), -1);
        QCOMPARE(CriterionOf(""), -1);
        QCOMPARE(Key(6), QString());
    }
};

QTEST_APPLESS_MAIN(TestSearchQuery)
#include "tst_searchquery.moc"
