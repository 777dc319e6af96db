#include "core/database/PlannerStatistics.h"

#include <sqlite3.h>

#include <algorithm>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

namespace PlannerStatistics {
namespace {

const char* const IngredientIndex = "SectionIngredientIngredient";
const char* const RecipeOrderIndex = "RecipeSectionRecipe";

// The first column of the first row of a statement as text ("" when no row).
std::string FirstText(sqlite3* db, const char* sql) {
    sqlite3_stmt* statement = nullptr;
    std::string text;
    if (sqlite3_prepare_v2(db, sql, -1, &statement, nullptr) == SQLITE_OK &&
        sqlite3_step(statement) == SQLITE_ROW) {
        if (const unsigned char* value = sqlite3_column_text(statement, 0)) {
            text = reinterpret_cast<const char*>(value);
        }
    }
    sqlite3_finalize(statement);
    return text;
}

std::vector<long long> Numbers(const std::string& stat) {
    std::vector<long long> numbers;
    std::istringstream words(stat);
    long long number = 0;
    while (words >> number) {
        numbers.push_back(number);
    }
    return numbers;
}

bool Run(sqlite3* db, const std::string& sql) {
    return sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK;
}

std::string StatOf(sqlite3* db, const char* index) {
    return FirstText(
        db, (std::string("SELECT stat FROM sqlite_stat1 WHERE idx = '") + index + "'").c_str());
}

// The sections of a recipe in their order serve one recipe at a time; a search over all method
// texts or section titles is to read the sections as they lie and look up the recipes of the
// matching ones, not to read them in recipe order (one lookup per section) just to spare sorting
// the recipes found. "unordered" tells the planner not to use the index for an order.
bool KeepUnordered(sqlite3* db) {
    const std::string stat = StatOf(db, RecipeOrderIndex);
    if (stat.empty() || stat.find("unordered") != std::string::npos) {
        return false;
    }
    return Run(db, "UPDATE sqlite_stat1 SET stat = '" + stat + " unordered' WHERE idx = '" +
                       RecipeOrderIndex + "'");
}

}  // namespace

long long IngredientLinesFigure(long long lines, long long ingredients) {
    const long long perIngredient = lines / std::max(1LL, ingredients);
    return std::max(1LL, perIngredient / std::max(1LL, ingredients));
}

void Keep(sqlite3* db) {
    if (!db || sqlite3_db_readonly(db, "main") != 0) {
        return;
    }
    const bool hasLines = !FirstText(db, "SELECT 1 FROM [SectionIngredient] LIMIT 1").empty();
    if (!hasLines) {
        return;
    }
    const bool hasStatistics =
        !FirstText(db, "SELECT 1 FROM sqlite_master WHERE name = 'sqlite_stat1'").empty();
    if (!hasStatistics || StatOf(db, IngredientIndex).empty()) {
        Run(db, "ANALYZE");
    }
    bool changed = KeepUnordered(db);
    std::vector<long long> stat = Numbers(StatOf(db, IngredientIndex));
    const long long ingredients =
        std::atoll(FirstText(db, "SELECT COUNT(*) FROM [Ingredient]").c_str());
    if (stat.size() >= 2 && stat[1] != IngredientLinesFigure(stat[0], ingredients)) {
        stat[1] = IngredientLinesFigure(stat[0], ingredients);
        std::string text;
        for (const long long number : stat) {
            text += (text.empty() ? "" : " ") + std::to_string(number);
        }
        changed |= Run(db, "UPDATE sqlite_stat1 SET stat = '" + text + "' WHERE idx = '" +
                               IngredientIndex + "'");
    }
    if (changed) {
        Run(db, "ANALYZE sqlite_schema");  // the connection reads the statistics again
    }
}

}  // namespace PlannerStatistics
