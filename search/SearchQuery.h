#pragma once

#include <QString>
#include <QStringList>
#include <QtGlobal>
#include <array>

// The SQL text of a recipe search: six criteria, each a list of search values with its match
// mode, joined by the overall condition and ordered by the result list's sort column. Shared by
// the search window and morvena-tool. Errors leave these procedures with the search window's
// sources ("frmFind:GenerateSubQuery" ...), as the window's own procedures.
namespace SearchQuery {

// The criteria in the fixed order in which they enter the query (and in which the search window
// lists them).
enum Criterion {
    Group = 0,
    Type = 1,
    RecipeTitle = 2,
    SectionTitle = 3,
    Ingredient = 4,
    Instructions = 5,
    CriterionCount = 6
};

// The criteria's keys ("Group", "Type", "RecipeTitle", "SectionTitle", "Ingredient",
// "Instructions") and their labels in the search window ("Skupina" ...).
QString Key(int criterion);
QString Label(int criterion);
// The criterion with this key (exact, case-sensitive), or -1.
int CriterionOf(const QString& key);

// Match modes (of a criterion and overall): 0 all, 1 at least one; any other value joins the
// terms with nothing between them.
enum Match : qint16 { AllValues = 0, AnyValue = 1 };

// What the user entered: per criterion its values in list order and its match mode.
struct Criteria {
    std::array<QStringList, CriterionCount> values;
    std::array<qint16, CriterionCount> match{};
};

// The query up to the criteria: SELECT ... FROM ... with a final blank.
QString BaseQuery();

// " AND " for 0, " OR " for 1, empty for any other mode.
QString GetOperator(qint16 mode);
// The test of a plain-column criterion ("[Group].[name]", "[Type].[name]", "[title]").
QString GenerateSubQuery(const QString& field, const QString& op, const QStringList& values);
// The tests of the section-title, ingredient and method-text criteria (sub-selects).
QString GenerateSectionQuery(const QString& op, const QStringList& values);
QString GenerateIngredientQuery(const QString& op, const QStringList& values);
QString GenerateInstructionsQuery(const QString& op, const QStringList& values);
// Appends one criterion's test: " WHERE " when the query holds no "WHERE" (any letter case) yet,
// otherwise the overall operator.
QString JoinQueries(const QString& query, const QString& subQuery, const QString& op);
// " ORDER BY <column> ASC;" (sortColumn 1 or more) or " ... DESC;"; the column by the magnitude
// 1 [title], 2 [recipeID], 3 [Group].[name], 4 [Type].[name], none for any other.
QString GenerateOrderSubQuery(qint16 sortColumn);

// The test of one criterion with its values and its own operator.
QString CriterionTest(int criterion, const QStringList& values, const QString& op);

// The whole text: base query, the criteria with values in their fixed order, the order clause.
QString BuildQuery(const Criteria& criteria, qint16 overallCondition, qint16 sortColumn);

}  // namespace SearchQuery
