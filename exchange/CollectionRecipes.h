#pragma once

#include <QList>
#include <QString>
#include <QtGlobal>
#include <functional>

#include "exchange/ExchangeRecipe.h"

namespace modDatabase {
class DbConnection;
}

namespace Exchange {

// Which recipes of a collection an export takes: one recipe, the recipes of a subgroup or of a
// group, or every recipe.
struct RecipeScope {
    enum Kind { Everything, OneRecipe, OneType, OneGroup };
    Kind kind = Everything;
    qint32 id = 0;
};

// The recipes of those keys (in ascending order), each read into the exchange model and
// handed to `sink`: the title; the source's name; the group's and the subgroup's names as
// categories; each section with its title, its lines in the order they were typed (amount as a
// plain decimal, unit and ingredient as named) and its method text, a step per line. Recipes
// are read a batch at a time, so that a collection of any size is exported in little memory.
void ReadRecipes(modDatabase::DbConnection& connection, const QList<qint32>& keys,
                 const RecipeSink& sink);

// The keys of the recipes of the scope, in order.
QList<qint32> RecipeKeys(modDatabase::DbConnection& connection, const RecipeScope& scope);

}  // namespace Exchange
