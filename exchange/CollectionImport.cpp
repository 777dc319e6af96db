#include "exchange/CollectionImport.h"

#include <QCryptographicHash>
#include <algorithm>

#include "core/Amount.h"
#include "core/database/modDatabase.h"
#include "exchange/CollectionSql.h"

namespace Exchange {
namespace {

QString LineKey(const QVariant& amount, const QString& unit, const QString& ingredient) {
    return Amount::Canonical(amount.toString()) + QLatin1Char('|') + unit.toCaseFolded() +
           QLatin1Char('|') + ingredient.toCaseFolded();
}

// A recipe as duplicates are found: a digest of its folded title and its lines, sorted: 16
// bytes a recipe, however many a run imports (MD5 serves: nobody forges recipes to collide).
QByteArray Fingerprint(const QString& title, QStringList lines) {
    std::sort(lines.begin(), lines.end());
    const QString text = title.toCaseFolded() + QChar(0x1F) + lines.join(QChar(0x1E));
    return QCryptographicHash::hash(text.toUtf8(), QCryptographicHash::Md5);
}

QByteArray FingerprintOf(const StoredRecipe& recipe) {
    QStringList lines;
    for (const StoredSection& section : recipe.sections) {
        for (const StoredLine& line : section.lines) {
            lines.append(LineKey(line.amount, line.unit, line.ingredient));
        }
    }
    return Fingerprint(recipe.title, lines);
}

QVariant NullWhenEmpty(const QString& text) { return text.isEmpty() ? QVariant() : text; }

// The key of the entry of that name in [Group] or [Type]; 0 for none.
qint32 Named(modDatabase::DbConnection& connection, const QString& sql,
             const QVariantList& values) {
    return CollectionSql::Value(connection, sql, values).toInt();
}

}  // namespace

CollectionImport::CollectionImport(modDatabase::DbConnection& connection, qint32 typeID,
                                   bool dryRun, bool allowDuplicates)
    : m_connection(connection),
      m_typeID(typeID),
      m_dryRun(dryRun),
      m_allowDuplicates(allowDuplicates),
      m_prepared(connection),
      m_units(connection, m_prepared, QStringLiteral("[Unit]"), QStringLiteral("unitID")),
      m_ingredients(connection, m_prepared, QStringLiteral("[Ingredient]"),
                    QStringLiteral("ingredientID")),
      m_sources(connection, m_prepared, QStringLiteral("[Source]"), QStringLiteral("sourceID")) {
    m_units.Load();
    m_ingredients.Load();
    m_sources.Load();
    CollectionSql::ForEachRow(
        m_connection, QStringLiteral("SELECT recipeID, title FROM [Recipe]"), {},
        [this](const SqlStatement& row) {
            m_unread[row.Value(1).toString().toCaseFolded()].append(row.Value(0).toInt());
        });
}

CollectionImport::Result CollectionImport::Import(const Recipe& recipe) {
    const MappedRecipe mapped = Mapping().Map(recipe);
    Result result;
    result.title = mapped.recipe.title;
    result.notes = mapped.notes;
    if (mapped.recipe.title.isEmpty()) {
        result.outcome = Outcome::NoTitle;
        return result;
    }
    const QByteArray fingerprint = FingerprintOf(mapped.recipe);
    if (!m_allowDuplicates && IsDuplicate(mapped.recipe.title, fingerprint)) {
        result.outcome = Outcome::Duplicate;
        return result;
    }
    result.recipeID = Write(mapped.recipe);
    m_fingerprints.insert(fingerprint);
    return result;
}

bool CollectionImport::IsDuplicate(const QString& title, const QByteArray& fingerprint) {
    // The lines of the collection's recipes of that title are read when a recipe of the title
    // first comes, and only once.
    for (const qint32 recipeID : m_unread.take(title.toCaseFolded())) {
        m_fingerprints.insert(Fingerprint(title, StoredLines(recipeID)));
    }
    return m_fingerprints.contains(fingerprint);
}

QStringList CollectionImport::StoredLines(qint32 recipeID) {
    QStringList lines;
    CollectionSql::ForEachRow(
        m_connection,
        QStringLiteral(
            "SELECT [SectionIngredient].amount, [Unit].name, [Ingredient].name FROM "
            "(([RecipeSection] INNER JOIN [SectionIngredient] ON [RecipeSection].sectionID = "
            "[SectionIngredient].sectionID) INNER JOIN [Unit] ON [SectionIngredient].unitID = "
            "[Unit].unitID) INNER JOIN [Ingredient] ON [SectionIngredient].ingredientID = "
            "[Ingredient].ingredientID WHERE [RecipeSection].recipeID = $1"),
        {recipeID}, [&lines](const SqlStatement& row) {
            lines.append(LineKey(row.Value(0), row.Value(1).toString(), row.Value(2).toString()));
        });
    std::sort(lines.begin(), lines.end());
    return lines;
}

qint32 CollectionImport::Write(const StoredRecipe& recipe) {
    if (m_dryRun) {
        for (const StoredSection& section : recipe.sections) {
            for (const StoredLine& line : section.lines) {
                m_units.Key(line.unit, true);
                m_ingredients.Key(line.ingredient, true);
            }
        }
        m_units.Keep();
        m_ingredients.Keep();
        return 0;
    }
    try {
        modDatabase::Transaction transaction(modDatabase::Transaction::Writing, m_connection);
        const QVariant sourceID =
            recipe.source.isEmpty() ? QVariant() : QVariant(m_sources.Key(recipe.source, false));
        const qint32 recipeID =
            m_prepared
                .Value(QStringLiteral("INSERT INTO [Recipe] (typeID, sourceID, title) "
                                      "VALUES ($1, $2, $3) RETURNING recipeID"),
                       {m_typeID, sourceID, recipe.title})
                .toInt();
        for (int place = 1; place <= recipe.sections.size(); ++place) {
            WriteSection(recipeID, recipe.sections.at(place - 1), place);
        }
        transaction.Commit();
        m_units.Keep();
        m_ingredients.Keep();
        m_sources.Keep();
        return recipeID;
    } catch (...) {
        ForgetPending();
        throw;
    }
}

qint32 CollectionImport::WriteSection(qint32 recipeID, const StoredSection& section, int place) {
    const qint32 sectionID =
        m_prepared
            .Value(QStringLiteral("INSERT INTO [Section] (title, instructions) VALUES "
                                  "($1, $2) RETURNING sectionID"),
                   {NullWhenEmpty(section.title), section.instructions})
            .toInt();
    m_prepared.Run(QStringLiteral("INSERT INTO [RecipeSection] (recipeID, sectionID, place) "
                                  "VALUES ($1, $2, $3)"),
                   {recipeID, sectionID, place});
    for (const StoredLine& line : section.lines) {
        m_prepared.Run(QStringLiteral("INSERT INTO [SectionIngredient] (sectionID, "
                                      "ingredientID, unitID, amount) VALUES ($1, $2, $3, $4)"),
                       {sectionID, m_ingredients.Key(line.ingredient, false),
                        m_units.Key(line.unit, false), line.amount});
    }
    return sectionID;
}

const RecipeMapping& CollectionImport::Mapping() {
    const QStringList units = m_units.Names();
    if (!m_mapping || units.size() != m_mappedUnits) {
        m_mapping.emplace(units);
        m_mappedUnits = units.size();
    }
    return *m_mapping;
}

void CollectionImport::ForgetPending() {
    m_units.Forget();
    m_ingredients.Forget();
    m_sources.Forget();
}

qint32 ExistingType(modDatabase::DbConnection& connection, qint32 typeID) {
    return Named(connection, QStringLiteral("SELECT typeID FROM [Type] WHERE typeID = $1"),
                 {typeID});
}

qint32 FoundType(modDatabase::DbConnection& connection, const QString& group, const QString& type) {
    return Named(connection,
                 QStringLiteral("SELECT [Type].typeID FROM [Type] INNER JOIN [Group] ON "
                                "[Type].groupID = [Group].groupID WHERE [Group].name = $1 AND "
                                "[Type].name = $2"),
                 {group, type});
}

qint32 TypeByNames(modDatabase::DbConnection& connection, const QString& group,
                   const QString& type) {
    modDatabase::Transaction transaction(modDatabase::Transaction::Writing, connection);
    qint32 groupID =
        Named(connection, QStringLiteral("SELECT groupID FROM [Group] WHERE name = $1"), {group});
    if (groupID == 0) {
        groupID = Named(connection,
                        QStringLiteral("INSERT INTO [Group] (name) VALUES ($1) RETURNING groupID"),
                        {group});
    }
    qint32 typeID = Named(
        connection, QStringLiteral("SELECT typeID FROM [Type] WHERE name = $1 AND groupID = $2"),
        {type, groupID});
    if (typeID == 0) {
        typeID = Named(connection,
                       QStringLiteral("INSERT INTO [Type] (groupID, name) VALUES ($1, $2) "
                                      "RETURNING typeID"),
                       {groupID, type});
    }
    transaction.Commit();
    return typeID;
}

}  // namespace Exchange
