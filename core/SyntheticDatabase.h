#pragma once

namespace modDatabase {
class DbConnection;
}

// A large made-up recipe collection for measuring: 10 groups of 10 subgroups, 300 ingredients,
// and the asked number of recipes with one to three sections of three to ten ingredient lines.
// The same number always gives the same collection.
namespace SyntheticDatabase {

// Fills an open database that holds the schema and no rows.
void Generate(modDatabase::DbConnection& connection, int recipes);

}  // namespace SyntheticDatabase
