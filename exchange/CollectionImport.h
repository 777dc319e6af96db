#pragma once

#include <QHash>
#include <QList>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QtGlobal>
#include <optional>

#include "exchange/CollectionLookups.h"
#include "exchange/RecipeMapping.h"

namespace modDatabase {
class DbConnection;
}

namespace Exchange {

// Recipes written into one subgroup of a collection (in a dry run, whose subgroup may not be
// there yet, the key is never used), each in its own transaction: a recipe is
// there whole or not at all. The recipe row gets the subgroup and the source (a Source entry
// named as the file names it); each section its Section and RecipeSection rows, places 1, 2,
// ...; each line its SectionIngredient row with the Unit and Ingredient entries of its names,
// found without regard to letter case and added when the collection has none.
//
// A recipe whose title and ingredient lines (amount, unit and ingredient, in any order) equal
// those of a recipe already in the collection, letter case aside, is a duplicate: it is skipped
// unless duplicates are allowed. Recipes imported earlier in the same run count as in the
// collection, also when nothing is written (a dry run).
class CollectionImport {
public:
    enum class Outcome { Imported, NoTitle, Duplicate };

    struct Result {
        Outcome outcome = Outcome::Imported;
        qint32 recipeID = 0;  // the new recipe's key; 0 in a dry run or when skipped
        QList<LineNote> notes;
        QString title;
    };

    // Reads what the import needs of the collection: the lookup lists and the recipes' titles.
    CollectionImport(modDatabase::DbConnection& connection, qint32 typeID, bool dryRun,
                     bool allowDuplicates);

    Result Import(const Recipe& recipe);

private:
    bool IsDuplicate(const QString& title, const QByteArray& fingerprint);
    // The lines of a recipe of the collection as folded "amount|unit|ingredient".
    QStringList StoredLines(qint32 recipeID);
    qint32 Write(const StoredRecipe& recipe);
    qint32 WriteSection(qint32 recipeID, const StoredSection& section, int place);
    void ForgetPending();
    const RecipeMapping& Mapping();

    modDatabase::DbConnection& m_connection;
    qint32 m_typeID;
    bool m_dryRun;
    bool m_allowDuplicates;
    CollectionSql::Prepared m_prepared;
    CollectionLookups m_units;
    CollectionLookups m_ingredients;
    CollectionLookups m_sources;
    std::optional<RecipeMapping> m_mapping;  // made again when a unit is added
    qsizetype m_mappedUnits = -1;
    // The collection's recipes by folded title, until their lines are read; then the folded
    // title and sorted lines of every recipe known, also of those imported in this run.
    QHash<QString, QList<qint32>> m_unread;
    QSet<QByteArray> m_fingerprints;
};

// The subgroup of that key; 0 when the collection has none.
qint32 ExistingType(modDatabase::DbConnection& connection, qint32 typeID);
// The subgroup of that name in the group of that name (names compared as the database compares
// them); 0 when there is none.
qint32 FoundType(modDatabase::DbConnection& connection, const QString& group, const QString& type);
// The same, each added when there is none, in one transaction.
qint32 TypeByNames(modDatabase::DbConnection& connection, const QString& group,
                   const QString& type);

}  // namespace Exchange
