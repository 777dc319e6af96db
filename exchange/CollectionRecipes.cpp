#include "exchange/CollectionRecipes.h"

#include <QHash>

#include "core/Amount.h"
#include "core/modGeneral.h"
#include "exchange/CollectionSql.h"

namespace Exchange {
namespace {

// A batch: at most this many recipes, read with three statements that name their keys (and
// their sections' keys), so that every database finds the rows through their indexes.
constexpr int BatchRecipes = 100;

const QString RecipesSql = QStringLiteral(
    "SELECT [Recipe].recipeID, [Recipe].title, [Source].name, [Group].name, [Type].name FROM "
    "(([Recipe] LEFT OUTER JOIN [Source] ON [Recipe].sourceID = [Source].sourceID) LEFT OUTER "
    "JOIN [Type] ON [Recipe].typeID = [Type].typeID) LEFT OUTER JOIN [Group] ON [Type].groupID = "
    "[Group].groupID WHERE [Recipe].recipeID IN (%1)");
const QString SectionsSql = QStringLiteral(
    "SELECT [RecipeSection].recipeID, [Section].sectionID, [Section].title, "
    "[Section].instructions FROM [RecipeSection] INNER JOIN [Section] ON "
    "[RecipeSection].sectionID = [Section].sectionID WHERE [RecipeSection].recipeID IN (%1) "
    "ORDER BY [RecipeSection].recipeID, [RecipeSection].place");
const QString LinesSql = QStringLiteral(
    "SELECT [SectionIngredient].sectionID, [SectionIngredient].amount, [Unit].name, "
    "[Ingredient].name FROM ([SectionIngredient] INNER JOIN [Unit] ON "
    "[SectionIngredient].unitID = [Unit].unitID) INNER JOIN [Ingredient] ON "
    "[SectionIngredient].ingredientID = [Ingredient].ingredientID WHERE "
    "[SectionIngredient].sectionID IN (%1) ORDER BY [SectionIngredient].sectionIngredientID");

// The statement with a marker for each value in its list: "$1, $2, ..., $n".
QString WithMarkers(const QString& sql, qsizetype count) {
    QStringList markers;
    for (qsizetype n = 1; n <= count; ++n) {
        markers.append(QLatin1Char('$') + QString::number(n));
    }
    return sql.arg(markers.join(QStringLiteral(", ")));
}

QVariantList Values(const QList<qint32>& keys) {
    QVariantList values;
    for (const qint32 key : keys) {
        values.append(key);
    }
    return values;
}

QString Text(const QVariant& value) { return value.isNull() ? QString() : value.toString(); }

// The method text as steps: a step per line, blanks around each left out, empty lines too.
QStringList Steps(const QString& instructions) {
    QStringList steps;
    for (const QString& line : instructions.split(QLatin1Char('\n'))) {
        const QString step = modGeneral::TrimBlanks(QString(line).remove(QLatin1Char('\r')));
        if (!step.isEmpty()) {
            steps.append(step);
        }
    }
    return steps;
}

Line StoredLine(const QVariant& amount, const QString& unit, const QString& ingredient) {
    const QString amountText = Amount::Stored(amount).toString();
    const QString original = QStringList{amountText, unit, ingredient}.join(QLatin1Char(' '));
    return Line{original.trimmed(), amountText, unit, ingredient, QString()};
}

// Reads the recipes of `wanted`, in its order.
QList<Recipe> ReadBatch(modDatabase::DbConnection& connection, const QList<qint32>& wanted) {
    const QVariantList keys = Values(wanted);
    QHash<qint32, qsizetype> indexOf;
    QList<Recipe> recipes(wanted.size());
    for (qsizetype i = 0; i < wanted.size(); ++i) {
        indexOf.insert(wanted.at(i), i);
    }
    CollectionSql::ForEachRow(
        connection, WithMarkers(RecipesSql, keys.size()), keys, [&](const SqlStatement& row) {
            if (const auto at = indexOf.constFind(row.Value(0).toInt()); at != indexOf.constEnd()) {
                Recipe& recipe = recipes[*at];
                recipe.title = Text(row.Value(1));
                recipe.source = Text(row.Value(2));
                for (const QString& category : {Text(row.Value(3)), Text(row.Value(4))}) {
                    if (!category.isEmpty()) {
                        recipe.categories.append(category);
                    }
                }
            }
        });
    QList<std::pair<qsizetype, qint32>> sectionRows;  // recipe index, section key
    CollectionSql::ForEachRow(
        connection, WithMarkers(SectionsSql, keys.size()), keys, [&](const SqlStatement& row) {
            if (const auto at = indexOf.constFind(row.Value(0).toInt()); at != indexOf.constEnd()) {
                recipes[*at].sections.append(
                    Section{Text(row.Value(2)).trimmed(), {}, Steps(Text(row.Value(3)))});
                sectionRows.append({*at, row.Value(1).toInt()});
            }
        });
    QHash<qint32, Section*> sectionOf;
    QHash<qsizetype, qsizetype> taken;  // recipe index -> its sections seen so far
    for (const auto& [recipe, sectionID] : sectionRows) {
        sectionOf.insert(sectionID, &recipes[recipe].sections[taken[recipe]++]);
    }
    QList<qint32> sectionKeys;
    for (const auto& [recipe, sectionID] : sectionRows) {
        sectionKeys.append(sectionID);
    }
    if (sectionKeys.isEmpty()) {
        return recipes;
    }
    const QVariantList sectionValues = Values(sectionKeys);
    CollectionSql::ForEachRow(connection, WithMarkers(LinesSql, sectionValues.size()),
                              sectionValues, [&](const SqlStatement& row) {
                                  if (Section* section = sectionOf.value(row.Value(0).toInt())) {
                                      section->lines.append(StoredLine(
                                          row.Value(1), Text(row.Value(2)), Text(row.Value(3))));
                                  }
                              });
    return recipes;
}

}  // namespace

QList<qint32> RecipeKeys(modDatabase::DbConnection& connection, const RecipeScope& scope) {
    static const QHash<int, QString> sql{
        {RecipeScope::Everything,
         QStringLiteral("SELECT recipeID FROM [Recipe] ORDER BY recipeID")},
        {RecipeScope::OneRecipe,
         QStringLiteral("SELECT recipeID FROM [Recipe] WHERE recipeID = $1")},
        {RecipeScope::OneType, QStringLiteral("SELECT recipeID FROM [Recipe] WHERE typeID = $1 "
                                              "ORDER BY recipeID")},
        {RecipeScope::OneGroup,
         QStringLiteral("SELECT [Recipe].recipeID FROM [Recipe] INNER JOIN [Type] ON "
                        "[Recipe].typeID = [Type].typeID WHERE [Type].groupID = $1 ORDER BY "
                        "[Recipe].recipeID")},
    };
    QList<qint32> keys;
    const QVariantList values =
        scope.kind == RecipeScope::Everything ? QVariantList() : QVariantList{scope.id};
    CollectionSql::ForEachRow(
        connection, sql.value(scope.kind), values,
        [&keys](const SqlStatement& row) { keys.append(row.Value(0).toInt()); });
    return keys;
}

void ReadRecipes(modDatabase::DbConnection& connection, const QList<qint32>& keys,
                 const RecipeSink& sink) {
    for (qsizetype start = 0; start < keys.size();) {
        for (Recipe& recipe : ReadBatch(connection, keys.mid(start, BatchRecipes))) {
            sink(std::move(recipe));
        }
        start += BatchRecipes;
    }
}

}  // namespace Exchange
