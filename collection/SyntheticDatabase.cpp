#include "collection/SyntheticDatabase.h"

#include <QStringList>
#include <algorithm>
#include <array>
#include <vector>

#include "collection/HomeCooking.h"
#include "core/AppError.h"
#include "core/database/PlannerStatistics.h"
#include "core/database/modDatabase.h"

namespace SyntheticDatabase {
namespace {

constexpr int Groups = 10;
constexpr int TypesPerGroup = 10;
constexpr int Sources = 20;
constexpr int Ingredients = 300;
constexpr int RowsPerStatement = 500;

const std::array<const char*, 12> Units = {
    "g", "dag", "kg", "ml", "dl", "l", "kos", "žlica", "žlička", "ščepec", "skodelica", "strok"};
const std::array<const char*, 10> GroupNames = {
    "Juhe",    "Enolončnice", "Mesne jedi", "Ribje jedi", "Zelenjavne jedi",
    "Priloge", "Solate",      "Sladice",    "Peciva",     "Zimnica"};
const std::array<const char*, 12> Adjectives = {"Domača",     "Pečena",    "Kuhana",  "Dušena",
                                                "Hrustljava", "Babičina",  "Poletna", "Zimska",
                                                "Kmečka",     "Praznična", "Žametna", "Čebulna"};
const std::array<const char*, 12> Nouns = {"juha",   "enolončnica", "pečenka", "omaka",
                                           "solata", "potica",      "pita",    "rižota",
                                           "kaša",   "zloženka",    "štruca",  "jed"};
const std::array<const char*, 10> Additions = {"s krompirjem", "z gobami", "s česnom",  "z zeljem",
                                               "s skuto",      "z orehi",  "s špinačo", "z jabolki",
                                               "s fižolom",    "z ajdo"};
const std::array<const char*, 6> Steps = {
    "Sestavine pripravimo in odtehtamo.",  "Čebulo drobno sesekljamo in prepražimo.",
    "Vse skupaj dušimo na zmernem ognju.", "Občasno premešamo in po potrebi prilijemo vode.",
    "Začinimo s soljo in poprom.",         "Postrežemo toplo."};

// A small, fully determined random sequence.
class Sequence {
public:
    unsigned Next(unsigned bound) {
        m_state = m_state * 6364136223846793005ULL + 1442695040888963407ULL;
        return static_cast<unsigned>((m_state >> 33) % bound);
    }

private:
    unsigned long long m_state = 0x4d6f7276656e61ULL;
};

// Collects rows of one table and writes them in statements of many rows each.
class BulkInsert {
public:
    BulkInsert(modDatabase::DbConnection& connection, QString head)
        : m_connection(connection), m_head(std::move(head)) {}
    ~BulkInsert() = default;

    void Add(const QStringList& values) {
        m_rows << QLatin1Char('(') + values.join(QStringLiteral(", ")) + QLatin1Char(')');
        if (m_rows.size() == RowsPerStatement) {
            Flush();
        }
    }
    void Flush() {
        if (m_rows.isEmpty()) {
            return;
        }
        m_connection.Run(m_head + QStringLiteral(" VALUES ") + m_rows.join(QStringLiteral(", ")));
        m_rows.clear();
    }

private:
    modDatabase::DbConnection& m_connection;
    QString m_head;
    QStringList m_rows;
};

QString Quoted(const QString& text) { return QLatin1Char('\'') + text + QLatin1Char('\''); }
QString Number(long long value) { return QString::number(value); }

void Run(modDatabase::DbConnection& connection, const QString& sql) { connection.Run(sql); }

// The rows of recipes, their sections, the links between them and the ingredient lines, with
// keys counted from 1 in the order they are added.
class RecipeRows {
public:
    explicit RecipeRows(modDatabase::DbConnection& c)
        : m_recipes(c, QStringLiteral("INSERT INTO [Recipe] (recipeID, typeID, sourceID, title)")),
          m_sections(c, QStringLiteral("INSERT INTO [Section] (sectionID, title, instructions)")),
          m_links(c, QStringLiteral("INSERT INTO [RecipeSection] (recipeSectionID, recipeID, "
                                    "sectionID, place)")),
          m_lines(c, QStringLiteral("INSERT INTO [SectionIngredient] (sectionIngredientID, "
                                    "sectionID, ingredientID, unitID, amount)")) {}

    // `source` is the key as SQL text or NULL.
    void AddRecipe(long long recipeID, long long typeID, const QString& source,
                   const QString& title) {
        m_recipes.Add({Number(recipeID), Number(typeID), source, Quoted(title)});
    }
    // `title` is quoted SQL text or NULL; returns the new section's key (also its link's key).
    long long AddSection(long long recipeID, unsigned place, const QString& title,
                         const QString& instructions) {
        ++m_sectionID;
        m_sections.Add({Number(m_sectionID), title, Quoted(instructions)});
        m_links.Add({Number(m_sectionID), Number(recipeID), Number(m_sectionID), Number(place)});
        return m_sectionID;
    }
    void AddLine(long long sectionID, long long ingredientID, long long unitID, long long amount) {
        m_lines.Add({Number(++m_lineID), Number(sectionID), Number(ingredientID), Number(unitID),
                     Number(amount)});
    }
    void Flush() {
        m_recipes.Flush();
        m_sections.Flush();
        m_links.Flush();
        m_lines.Flush();
    }

private:
    BulkInsert m_recipes;
    BulkInsert m_sections;
    BulkInsert m_links;
    BulkInsert m_lines;
    long long m_sectionID = 0;
    long long m_lineID = 0;
};

void GenerateLookups(modDatabase::DbConnection& c) {
    BulkInsert groups(c, QStringLiteral("INSERT INTO [Group] (groupID, name, description)"));
    BulkInsert types(c, QStringLiteral("INSERT INTO [Type] (typeID, groupID, name, description)"));
    for (int g = 0; g < Groups; ++g) {
        groups.Add({Number(g + 1), Quoted(QString::fromUtf8(GroupNames[g])),
                    Quoted(QStringLiteral("Skupina št. %1").arg(g + 1))});
        for (int t = 0; t < TypesPerGroup; ++t) {
            const int typeID = g * TypesPerGroup + t + 1;
            types.Add(
                {Number(typeID), Number(g + 1),
                 Quoted(QStringLiteral("%1 %2").arg(QString::fromUtf8(GroupNames[g])).arg(t + 1)),
                 QStringLiteral("NULL")});
        }
    }
    groups.Flush();
    types.Flush();
    BulkInsert sources(c, QStringLiteral("INSERT INTO [Source] (sourceID, name, description)"));
    for (int s = 1; s <= Sources; ++s) {
        sources.Add(
            {Number(s), Quoted(QStringLiteral("Kuharica %1").arg(s)), QStringLiteral("NULL")});
    }
    sources.Flush();
    BulkInsert units(c, QStringLiteral("INSERT INTO [Unit] (unitID, name, description)"));
    for (size_t u = 0; u < Units.size(); ++u) {
        units.Add({Number(u + 1), Quoted(QString::fromUtf8(Units[u])), QStringLiteral("NULL")});
    }
    units.Flush();
    BulkInsert ingredients(
        c, QStringLiteral("INSERT INTO [Ingredient] (ingredientID, name, description)"));
    for (int i = 1; i <= Ingredients; ++i) {
        ingredients.Add(
            {Number(i),
             Quoted(QStringLiteral("%1 %2").arg(QString::fromUtf8(Nouns[i % Nouns.size()])).arg(i)),
             QStringLiteral("NULL")});
    }
    ingredients.Flush();
}

void GenerateRecipes(modDatabase::DbConnection& c, int count) {
    Sequence random;
    RecipeRows rows(c);
    for (int recipeID = 1; recipeID <= count; ++recipeID) {
        const QString title =
            QStringLiteral("%1 %2 %3 %4")
                .arg(QString::fromUtf8(Adjectives[random.Next(Adjectives.size())]),
                     QString::fromUtf8(Nouns[random.Next(Nouns.size())]),
                     QString::fromUtf8(Additions[random.Next(Additions.size())]))
                .arg(recipeID);
        const unsigned source = random.Next(Sources + 5);
        rows.AddRecipe(recipeID, random.Next(Groups * TypesPerGroup) + 1,
                       source < Sources ? Number(source + 1) : QStringLiteral("NULL"), title);
        const unsigned sectionCount = 1 + random.Next(3);
        for (unsigned place = 1; place <= sectionCount; ++place) {
            QStringList method;
            for (unsigned s = 0, n = 2 + random.Next(4); s < n; ++s) {
                method << QString::fromUtf8(Steps[random.Next(Steps.size())]);
            }
            const long long sectionID = rows.AddSection(
                recipeID, place,
                sectionCount == 1 ? QStringLiteral("NULL")
                                  : Quoted(QStringLiteral("Razdelek %1").arg(place)),
                method.join(QStringLiteral("\r\n")));
            for (unsigned l = 0, n = 3 + random.Next(8); l < n; ++l) {
                const unsigned ingredient = random.Next(Ingredients) + 1;
                const unsigned unit = random.Next(Units.size()) + 1;
                rows.AddLine(sectionID, ingredient, unit, 1 + random.Next(500));
            }
        }
    }
    rows.Flush();
}

// Picks indexes with given weights: index i with weight[i] out of their sum.
class WeightedPick {
public:
    explicit WeightedPick(const std::vector<unsigned>& weights) {
        for (const unsigned weight : weights) {
            m_total += weight;
            m_bounds.push_back(m_total);
        }
    }
    // Weights falling with the rank, as words are used: the first most, the last least.
    static WeightedPick Ranked(size_t count) {
        std::vector<unsigned> weights;
        for (size_t i = 0; i < count; ++i) {
            weights.push_back(static_cast<unsigned>(100000 / (i + 1)));
        }
        return WeightedPick(weights);
    }
    size_t Next(Sequence& random) const {
        const unsigned value = random.Next(m_total);
        return static_cast<size_t>(std::upper_bound(m_bounds.begin(), m_bounds.end(), value) -
                                   m_bounds.begin());
    }

private:
    std::vector<unsigned> m_bounds;
    unsigned m_total = 0;
};

QString Word(const char* text) { return QString::fromUtf8(text); }

template <class T>
const T& AnyOf(const std::vector<T>& items, Sequence& random) {
    return items[random.Next(static_cast<unsigned>(items.size()))];
}

// The lookup lists of a home-cooking collection; returns the first subgroup key of each group.
std::vector<int> HomeCookingLookups(modDatabase::DbConnection& c) {
    BulkInsert groups(c, QStringLiteral("INSERT INTO [Group] (groupID, name, description)"));
    BulkInsert types(c, QStringLiteral("INSERT INTO [Type] (typeID, groupID, name, description)"));
    std::vector<int> firstTypes;
    int typeID = 0;
    for (size_t g = 0; g < HomeCooking::Groups().size(); ++g) {
        const HomeCooking::Group& group = HomeCooking::Groups()[g];
        groups.Add({Number(g + 1), Quoted(Word(group.name)),
                    g % 2 == 0 ? Quoted(Word(group.name) + QStringLiteral(" iz domače kuhinje."))
                               : QStringLiteral("NULL")});
        firstTypes.push_back(typeID + 1);
        for (const char* type : group.types) {
            types.Add(
                {Number(++typeID), Number(g + 1), Quoted(Word(type)), QStringLiteral("NULL")});
        }
    }
    groups.Flush();
    types.Flush();
    const auto list = [&](const char* table, const char* key,
                          const std::vector<const char*>& names) {
        BulkInsert rows(c, QStringLiteral("INSERT INTO [%1] (%2, name, description)")
                               .arg(QLatin1String(table), QLatin1String(key)));
        for (size_t i = 0; i < names.size(); ++i) {
            rows.Add({Number(i + 1), Quoted(Word(names[i])), QStringLiteral("NULL")});
        }
        rows.Flush();
    };
    list("Source", "sourceID", HomeCooking::Sources());
    list("Unit", "unitID", HomeCooking::Units());
    list("Ingredient", "ingredientID", HomeCooking::Ingredients());
    return firstTypes;
}

int IngredientKey(const char* name) {
    const std::vector<const char*>& names = HomeCooking::Ingredients();
    for (size_t i = 0; i < names.size(); ++i) {
        if (qstrcmp(names[i], name) == 0) {
            return static_cast<int>(i + 1);
        }
    }
    return 1;
}

void GenerateHomeCooking(modDatabase::DbConnection& c, int count) {
    const std::vector<int> firstTypes = HomeCookingLookups(c);
    Sequence random;
    std::vector<unsigned> groupWeights;
    std::vector<WeightedPick> typePicks;
    std::vector<std::vector<int>> favourites;
    for (const HomeCooking::Group& group : HomeCooking::Groups()) {
        groupWeights.push_back(static_cast<unsigned>(group.weight));
        typePicks.push_back(WeightedPick::Ranked(group.types.size()));
        favourites.emplace_back();
        for (const char* name : group.favourites) {
            favourites.back().push_back(IngredientKey(name));
        }
    }
    const WeightedPick groupPick(groupWeights);
    const WeightedPick ingredientPick = WeightedPick::Ranked(HomeCooking::Ingredients().size());
    const WeightedPick sourcePick = WeightedPick::Ranked(HomeCooking::Sources().size());
    RecipeRows rows(c);
    for (int recipeID = 1; recipeID <= count; ++recipeID) {
        const size_t g = groupPick.Next(random);
        const HomeCooking::Group& group = HomeCooking::Groups()[g];
        const int typeID = firstTypes[g] + static_cast<int>(typePicks[g].Next(random));
        const QString addition = Word(AnyOf(group.additions, random));
        const QString title = Word(AnyOf(group.dishes, random)) +
                              (addition.isEmpty() ? QString() : QLatin1Char(' ') + addition);
        const bool hasSource = random.Next(10) < 7;
        rows.AddRecipe(recipeID, typeID,
                       hasSource ? Number(sourcePick.Next(random) + 1) : QStringLiteral("NULL"),
                       title);
        const unsigned roll = random.Next(100);
        const unsigned sectionCount = roll < 70 ? 1 : roll < 92 ? 2 : 3;
        const unsigned firstTitle =
            random.Next(static_cast<unsigned>(HomeCooking::SectionTitles().size()));
        for (unsigned place = 1; place <= sectionCount; ++place) {
            QStringList method;
            const unsigned sentences =
                1 + random.Next(3) + (random.Next(4) == 0 ? random.Next(9) : 0);
            for (unsigned s = 0; s < sentences; ++s) {
                method << Word(random.Next(2) == 0 ? AnyOf(group.steps, random)
                                                   : AnyOf(HomeCooking::CommonSteps(), random));
            }
            const QString instructions =
                random.Next(30) == 0 ? QStringLiteral(" ") : method.join(QStringLiteral("\r\n"));
            const QString sectionTitle =
                Word(HomeCooking::SectionTitles()[(firstTitle + place - 1) %
                                                  HomeCooking::SectionTitles().size()]);
            const long long sectionID = rows.AddSection(
                recipeID, place, sectionCount == 1 ? QStringLiteral("NULL") : Quoted(sectionTitle),
                instructions);
            const unsigned lineCount =
                2 + random.Next(5) + (random.Next(3) == 0 ? random.Next(7) : 0);
            for (unsigned l = 0; l < lineCount; ++l) {
                const int ingredient = random.Next(100) < 45
                                           ? AnyOf(favourites[g], random)
                                           : static_cast<int>(ingredientPick.Next(random) + 1);
                const unsigned unit =
                    random.Next(static_cast<unsigned>(HomeCooking::Units().size()));
                const unsigned amount = unit < 6 ? 10 * (1 + random.Next(50)) : 1 + random.Next(6);
                rows.AddLine(sectionID, ingredient, unit + 1, amount);
            }
        }
    }
    rows.Flush();
}

// Keys written explicitly leave the server's key sequences behind; move them past the rows.
void AdvanceServerKeys(modDatabase::DbConnection& c) {
    const QStringList tables{"group",   "type",          "source",
                             "unit",    "ingredient",    "recipe",
                             "section", "recipesection", "sectioningredient"};
    for (const QString& table : tables) {
        const QString key = table + QStringLiteral("id");
        Run(c, QStringLiteral("SELECT setval(pg_get_serial_sequence('\"%1\"', '%2'), "
                              "COALESCE((SELECT MAX(%2) FROM \"%1\"), 0) + 1, false)")
                   .arg(table, key));
    }
}

}  // namespace

void Generate(modDatabase::DbConnection& connection, int recipes, Shape shape) {
    ErrorPath::PassOn("SyntheticDatabase:Generate", [&] {
        modDatabase::Transaction transaction(modDatabase::Transaction::Writing, connection);
        if (shape == Shape::Uniform) {
            GenerateLookups(connection);
            GenerateRecipes(connection, recipes);
        } else {
            GenerateHomeCooking(connection, recipes);
        }
        if (connection.Kind() == modDatabase::ServerDatabase) {
            AdvanceServerKeys(connection);
        }
        transaction.Commit();
        Run(connection, QStringLiteral("ANALYZE"));  // the query planner's statistics
        if (connection.Kind() == modDatabase::FileDatabase) {
            PlannerStatistics::Keep(connection.SqliteHandle());
        }
    });
}

}  // namespace SyntheticDatabase
