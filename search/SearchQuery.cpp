#include "search/SearchQuery.h"

#include "core/AppError.h"

namespace SearchQuery {
namespace {

struct CriterionText {
    const char* key;
    const char* label;
};

const CriterionText Criteria_[CriterionCount] = {
    {"Group", "Skupina"},
    {"Type", "Podskupina"},
    {"RecipeTitle", "Naslov recepta"},
    {"SectionTitle", "Naslov razdelka"},
    {"Ingredient", "Sestavine"},
    {"Instructions", "Potek dela"},
};

// The terms of the values, the first as it is and every later one preceded by the operator,
// wrapped once more in parentheses; empty without values.
QString JoinTerms(const QStringList& values, const QString& op, const QString& before,
                  const QString& after) {
    if (values.isEmpty()) {
        return QString();
    }
    QString joined = QStringLiteral("(");
    for (qsizetype i = 0; i < values.size(); ++i) {
        if (i > 0) {
            joined += op;
        }
        joined += before;
        joined += values[i];
        joined += after;
    }
    joined += QLatin1Char(')');
    return joined;
}

const QString SubSelectEnd = QStringLiteral("%'))");

}  // namespace

QString Key(int criterion) {
    return criterion >= 0 && criterion < CriterionCount
               ? QString::fromUtf8(Criteria_[criterion].key)
               : QString();
}

QString Label(int criterion) {
    return criterion >= 0 && criterion < CriterionCount
               ? QString::fromUtf8(Criteria_[criterion].label)
               : QString();
}

int CriterionOf(const QString& key) {
    for (int i = 0; i < CriterionCount; ++i) {
        if (key == QLatin1String(Criteria_[i].key)) {
            return i;
        }
    }
    return -1;
}

QString BaseQuery() {
    return QStringLiteral("SELECT [title], [recipeID], [Group].[name] AS [groupName], ") +
           QStringLiteral(
               "[Type].[name] AS typeName FROM (([Recipe] INNER JOIN [Type] ON "
               "[Recipe].[typeID] = [Type].[typeID]) ") +
           QStringLiteral("INNER JOIN [Group] ON [Group].[groupID] = [Type].[groupID]) ");
}

QString GetOperator(qint16 mode) {
    return ErrorPath::PassOn("frmFind:GetOperator", [&] {
        switch (mode) {
            case AllValues:
                return QStringLiteral(" AND ");
            case AnyValue:
                return QStringLiteral(" OR ");
            default:
                return QString();
        }
    });
}

QString GenerateSubQuery(const QString& field, const QString& op, const QStringList& values) {
    return ErrorPath::PassOn("frmFind:GenerateSubQuery", [&] {
        return JoinTerms(values, op, QStringLiteral("(") + field + QStringLiteral(" LIKE '%"),
                         QStringLiteral("%')"));
    });
}

QString GenerateSectionQuery(const QString& op, const QStringList& values) {
    return ErrorPath::PassOn("frmFind:GenerateSectionQuery", [&] {
        return JoinTerms(
            values, op,
            QStringLiteral("(recipeID IN (SELECT DISTINCT recipeID FROM ([Section] INNER JOIN "
                           "[RecipeSection] ON [Section].sectionID = [RecipeSection].sectionID) "
                           "WHERE [Section].title LIKE '%"),
            SubSelectEnd);
    });
}

QString GenerateIngredientQuery(const QString& op, const QStringList& values) {
    return ErrorPath::PassOn("frmFind:GenerateIngredientQuery", [&] {
        return JoinTerms(
            values, op,
            QStringLiteral("(recipeID IN (SELECT DISTINCT recipeID FROM (([SectionIngredient] "
                           "INNER JOIN [RecipeSection] ON [SectionIngredient].sectionID = "
                           "[RecipeSection].sectionID) INNER JOIN [Ingredient] ON "
                           "[SectionIngredient].ingredientID = [Ingredient].ingredientID) "
                           "WHERE [Ingredient].name LIKE '%"),
            SubSelectEnd);
    });
}

QString GenerateInstructionsQuery(const QString& op, const QStringList& values) {
    return ErrorPath::PassOn("frmFind:GenerateInstructionsQuery", [&] {
        return JoinTerms(
            values, op,
            QStringLiteral("(recipeID IN (SELECT DISTINCT recipeID FROM ([Section] INNER JOIN "
                           "[RecipeSection] ON [Section].sectionID = [RecipeSection].sectionID) "
                           "WHERE [Section].instructions LIKE '%"),
            SubSelectEnd);
    });
}

QString JoinQueries(const QString& query, const QString& subQuery, const QString& op) {
    return ErrorPath::PassOn("frmFind:JoinQueries", [&] {
        // On the text, not with a flag: a "where" inside a value counts too.
        if (!query.contains(QLatin1String("WHERE"), Qt::CaseInsensitive)) {
            return query + QStringLiteral(" WHERE ") + subQuery;
        }
        return query + op + subQuery;
    });
}

QString GenerateOrderSubQuery(qint16 sortColumn) {
    return ErrorPath::PassOn("frmFind:GenerateOrderSubQuery", [&] {
        QString clause = QStringLiteral(" ORDER BY ");
        // The magnitude in 32 bits: -32768 has none in 16.
        switch (qAbs(static_cast<int>(sortColumn))) {
            case 1:
                clause += QStringLiteral("[title]");
                break;
            case 2:
                clause += QStringLiteral("[recipeID]");
                break;
            case 3:
                clause += QStringLiteral("[Group].[name]");
                break;
            case 4:
                clause += QStringLiteral("[Type].[name]");
                break;
            default:
                break;
        }
        clause += sortColumn >= 1 ? QStringLiteral(" ASC;") : QStringLiteral(" DESC;");
        return clause;
    });
}

QString CriterionTest(int criterion, const QStringList& values, const QString& op) {
    switch (criterion) {
        case Group:
            return GenerateSubQuery(QStringLiteral("[Group].[name]"), op, values);
        case Type:
            return GenerateSubQuery(QStringLiteral("[Type].[name]"), op, values);
        case RecipeTitle:
            return GenerateSubQuery(QStringLiteral("[title]"), op, values);
        case SectionTitle:
            return GenerateSectionQuery(op, values);
        case Ingredient:
            return GenerateIngredientQuery(op, values);
        case Instructions:
            return GenerateInstructionsQuery(op, values);
        default:
            return QString();
    }
}

QString BuildQuery(const Criteria& criteria, qint16 overallCondition, qint16 sortColumn) {
    QString query = BaseQuery();
    const QString overall = GetOperator(overallCondition);
    for (int criterion = 0; criterion < CriterionCount; ++criterion) {
        const QString test = CriterionTest(criterion, criteria.values[criterion],
                                           GetOperator(criteria.match[criterion]));
        if (!test.isEmpty()) {
            query = JoinQueries(query, test, overall);
        }
    }
    return query + GenerateOrderSubQuery(sortColumn);
}

}  // namespace SearchQuery
