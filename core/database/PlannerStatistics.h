#pragma once

struct sqlite3;

// The file database's query planner statistics (sqlite_stat1). ANALYZE measures how many rows an
// index finds per key, but the planner cannot know that a LIKE on an ingredient's name keeps only
// a few of the ingredients: it assumes nearly all of them, and then reads every ingredient line
// of every section instead of the lines of the few matching ingredients. The program therefore
// writes the figure of the index that leads with ingredientID itself: the lines of one
// ingredient spread over all ingredients, which leads the planner from the matching ingredients
// to their lines and from there to the recipes. Likewise the index of a recipe's sections in
// their order is marked as one the planner is not to read for an order: a search over method
// texts then reads the sections as they lie and looks up the recipes of the matching ones.
namespace PlannerStatistics {

// Runs ANALYZE when the database has ingredient lines but no statistics for them yet, then
// writes the two corrections and has the connection read the statistics again. Does nothing on
// a database that cannot be written.
void Keep(sqlite3* db);

// The figure written for the ingredient index: lines per ingredient as the planner is to see
// them, from the number of ingredient lines and of ingredients (at least 1).
long long IngredientLinesFigure(long long lines, long long ingredients);

}  // namespace PlannerStatistics
