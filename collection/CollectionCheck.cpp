#include "collection/CollectionCheck.h"

#include "collection/Statements.h"
#include "core/AppError.h"
#include "core/database/modDatabase.h"

namespace CollectionCheck {
namespace {

using modDatabase::DbConnection;

constexpr int KeysPerStatement = 500;

// A section is used when a link of an existing recipe names it.
const char* const SectionUsed =
    "EXISTS (SELECT * FROM [RecipeSection] INNER JOIN [Recipe] ON [RecipeSection].recipeID = "
    "[Recipe].recipeID WHERE [RecipeSection].sectionID = %1.sectionID)";

const char* const LinkPointsNowhere =
    "NOT EXISTS (SELECT * FROM [Recipe] WHERE [Recipe].recipeID = [RecipeSection].recipeID) OR "
    "NOT EXISTS (SELECT * FROM [Section] WHERE [Section].sectionID = [RecipeSection].sectionID)";

const char* const LinePointsNowhere =
    "NOT EXISTS (SELECT * FROM [Section] WHERE [Section].sectionID = "
    "[SectionIngredient].sectionID) OR NOT EXISTS (SELECT * FROM [Ingredient] WHERE "
    "[Ingredient].ingredientID = [SectionIngredient].ingredientID) OR NOT EXISTS (SELECT * FROM "
    "[Unit] WHERE [Unit].unitID = [SectionIngredient].unitID)";

QString Sql(const char* text) { return QString::fromUtf8(text); }

QString UnusedSections() {
    return QStringLiteral("SELECT sectionID FROM [Section] WHERE NOT ") +
           Sql(SectionUsed).arg(QStringLiteral("[Section]")) +
           QStringLiteral(" ORDER BY sectionID;");
}

QString LinksPointingNowhere() {
    return QStringLiteral("SELECT recipeSectionID FROM [RecipeSection] WHERE ") +
           Sql(LinkPointsNowhere) + QStringLiteral(" ORDER BY recipeSectionID;");
}

QString LinesPointingNowhere() {
    return QStringLiteral("SELECT sectionIngredientID FROM [SectionIngredient] WHERE ") +
           Sql(LinePointsNowhere) + QStringLiteral(" ORDER BY sectionIngredientID;");
}

// The lines that go with the rows a repair deletes: those pointing nowhere and those of
// sections no recipe uses.
QString LinesToDelete() {
    return QStringLiteral("SELECT sectionIngredientID FROM [SectionIngredient] WHERE ") +
           Sql(LinePointsNowhere) + QStringLiteral(" OR NOT ") +
           Sql(SectionUsed).arg(QStringLiteral("[SectionIngredient]")) +
           QStringLiteral(" ORDER BY sectionIngredientID;");
}

const QString RecipesWithoutSections = QStringLiteral(
    "SELECT recipeID FROM [Recipe] WHERE NOT EXISTS (SELECT * FROM [RecipeSection] INNER JOIN "
    "[Section] ON [RecipeSection].sectionID = [Section].sectionID WHERE [RecipeSection].recipeID "
    "= [Recipe].recipeID) ORDER BY recipeID;");

const QString RecipesWithoutType = QStringLiteral(
    "SELECT recipeID FROM [Recipe] WHERE NOT EXISTS (SELECT * FROM [Type] WHERE [Type].typeID = "
    "[Recipe].typeID) ORDER BY recipeID;");

const QString TypesWithoutGroup = QStringLiteral(
    "SELECT typeID FROM [Type] WHERE NOT EXISTS (SELECT * FROM [Group] WHERE [Group].groupID = "
    "[Type].groupID) ORDER BY typeID;");

// A recipe's places run 1, 2, 3 ... without gaps or repeats.
const QString RecipesWithBadPlaces = QStringLiteral(
    "SELECT recipeID FROM [RecipeSection] WHERE recipeID IN (SELECT recipeID FROM [Recipe]) "
    "GROUP BY recipeID HAVING MIN(place) <> 1 OR MAX(place) <> COUNT(*) OR COUNT(DISTINCT "
    "place) <> COUNT(*) ORDER BY recipeID;");

QList<qint64> Keys(DbConnection& connection, const QString& sql) {
    QList<qint64> keys;
    for (const QVariant& key : Statements::FirstColumn(connection, sql)) {
        keys << key.toLongLong();
    }
    return keys;
}

// The lines of SQLite's own check; when the check itself cannot read on, the library's
// message ends them.
QStringList Integrity(DbConnection& connection) {
    SqlStatement query = Statements::Run(connection, QStringLiteral("PRAGMA integrity_check;"));
    QStringList lines;
    while (query.Next()) {
        lines << query.Value(0).toString();
    }
    if (!query.Failure().text.isEmpty()) {
        lines << query.Failure().text;
    }
    return lines;
}

void Delete(DbConnection& connection, const QString& table, const QString& key,
            const QList<qint64>& keys) {
    for (qsizetype first = 0; first < keys.size(); first += KeysPerStatement) {
        QStringList numbers;
        for (qint64 value : keys.mid(first, KeysPerStatement)) {
            numbers << QString::number(value);
        }
        Statements::Run(connection, QStringLiteral("DELETE FROM [%1] WHERE %2 IN (%3);")
                                        .arg(table, key, numbers.join(QStringLiteral(", "))));
    }
}

}  // namespace

bool Report::Clean() const {
    const bool integrityOk = !integrityChecked || integrity == QStringList{QStringLiteral("ok")};
    return integrityOk && std::all_of(findings.cbegin(), findings.cend(), [](const Finding& f) {
               return f.keys.isEmpty() && f.error.isEmpty();
           });
}

QString Damage(DbConnection& connection, const QString& name) {
    if (connection.Kind() != modDatabase::FileDatabase) {
        return QString();
    }
    QStringList found;
    try {
        found = Integrity(connection);
    } catch (const AppError& error) {
        found = QStringList{error.Description()};
    }
    if (found == QStringList{QStringLiteral("ok")}) {
        return QString();
    }
    return QStringLiteral("Zbirka %1 je poškodovana; preverjanje celovitosti je našlo: %2")
        .arg(name, found.mid(0, 3).join(QStringLiteral("; ")));
}

Report Check(DbConnection& connection) {
    return ErrorPath::PassOn("CollectionCheck:Check", [&] {
        Report report;
        if (connection.Kind() == modDatabase::FileDatabase) {
            report.integrityChecked = true;
            report.integrity = Integrity(connection);
        }
        // A damaged file can fail one query and answer the others.
        const auto find = [&](const char* description, const char* table, const QString& sql) {
            Finding finding{QString::fromUtf8(description), QString::fromUtf8(table), {}, {}};
            try {
                finding.keys = Keys(connection, sql);
            } catch (const AppError& error) {
                finding.error = error.Description();
            }
            report.findings.push_back(finding);
        };
        find("Razdelki, ki jih ne uporablja noben recept", "Section", UnusedSections());
        find("Povezave receptov z razdelki, ki kažejo na manjkajoč recept ali razdelek",
             "RecipeSection", LinksPointingNowhere());
        find("Vrstice sestavin, ki kažejo na manjkajoč razdelek, sestavino ali enoto",
             "SectionIngredient", LinesPointingNowhere());
        find("Recepti brez razdelkov", "Recipe", RecipesWithoutSections);
        find("Recepti, katerih podskupine ni", "Recipe", RecipesWithoutType);
        find("Podskupine, katerih skupine ni", "Type", TypesWithoutGroup);
        find("Recepti z vrzeljo ali ponovitvijo v vrstnem redu razdelkov", "Recipe",
             RecipesWithBadPlaces);
        return report;
    });
}

std::vector<Finding> Repair(DbConnection& connection) {
    return ErrorPath::PassOn("CollectionCheck:Repair", [&] {
        modDatabase::Transaction transaction(modDatabase::Transaction::Writing, connection);
        // What goes is decided before anything is deleted.
        const std::vector<Finding> deleted{
            {QStringLiteral("Izbrisane vrstice sestavin"), QStringLiteral("SectionIngredient"),
             Keys(connection, LinesToDelete())},
            {QStringLiteral("Izbrisane povezave receptov z razdelki"),
             QStringLiteral("RecipeSection"), Keys(connection, LinksPointingNowhere())},
            {QStringLiteral("Izbrisani razdelki"), QStringLiteral("Section"),
             Keys(connection, UnusedSections())},
        };
        for (const Finding& rows : deleted) {
            Delete(connection, rows.table,
                   rows.table.left(1).toLower() + rows.table.mid(1) + QStringLiteral("ID"),
                   rows.keys);
        }
        transaction.Commit();
        return deleted;
    });
}

}  // namespace CollectionCheck
