#pragma once

namespace modDatabase {
class DbConnection;
}

// Made-up recipe collections for measuring. The same arguments always give the same collection.
namespace SyntheticDatabase {

enum class Shape {
    // A Slovenian home-cooking collection: ten groups with their own subgroups of very different
    // sizes (at 5,000 recipes the biggest holds a few hundred), dishes, method texts of one to a
    // dozen sentences, about 240 ingredients used from very often (salt, onion, carrots,
    // potatoes) to hardly ever, one to three sections per recipe.
    HomeCooking,
    // The even spread for stress figures: 10 groups of 10 subgroups, 300 ingredients, recipes
    // with one to three sections of three to ten ingredient lines, all drawn evenly.
    Uniform,
};

// Fills an open database that holds the schema and no rows.
void Generate(modDatabase::DbConnection& connection, int recipes, Shape shape = Shape::HomeCooking);

}  // namespace SyntheticDatabase
