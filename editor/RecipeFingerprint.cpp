#include "editor/RecipeFingerprint.h"

#include <QCryptographicHash>
#include <QString>

#include "core/AppError.h"
#include "core/database/modDatabase.h"
#include "lists/RowVersion.h"

namespace {

// Adds every row of a statement, and how many there were.
int AddRows(QCryptographicHash& hash, const QString& sql) {
    Recordset rs = modDatabase::GetRecordset(sql);
    int rows = 0;
    for (; !rs.Eof(); rs.MoveNext()) {
        hash.addData(RowVersion::Encode(rs));
        ++rows;
    }
    rs.Close();
    hash.addData(QByteArray::number(rows) + ';');
    return rows;
}

}  // namespace

RecipeFingerprint RecipeFingerprint::Read(qint32 recipeID) {
    return ErrorPath::PassOn("RecipeFingerprint:Read", [&] {
        const QString id = QString::number(recipeID);
        QCryptographicHash hash(QCryptographicHash::Sha256);
        const int recipes = AddRows(
            hash, QStringLiteral("SELECT typeID, sourceID, title FROM [Recipe] WHERE recipeID = ") +
                      id + QStringLiteral(";"));
        AddRows(hash,
                QStringLiteral("SELECT [RecipeSection].place, [Section].title, "
                               "[Section].instructions FROM [RecipeSection] INNER JOIN [Section] "
                               "ON [RecipeSection].sectionID = [Section].sectionID WHERE "
                               "[RecipeSection].recipeID = ") +
                    id +
                    QStringLiteral(" ORDER BY [RecipeSection].place, "
                                   "[RecipeSection].recipeSectionID;"));
        AddRows(hash,
                QStringLiteral("SELECT [RecipeSection].place, [SectionIngredient].amount, "
                               "[SectionIngredient].unitID, [SectionIngredient].ingredientID FROM "
                               "[RecipeSection] INNER JOIN [SectionIngredient] ON "
                               "[RecipeSection].sectionID = [SectionIngredient].sectionID WHERE "
                               "[RecipeSection].recipeID = ") +
                    id +
                    QStringLiteral(" ORDER BY [RecipeSection].place, "
                                   "[SectionIngredient].sectionIngredientID;"));
        RecipeFingerprint fingerprint;
        if (recipes > 0) {
            fingerprint.m_digest = hash.result();
        }
        return fingerprint;
    });
}
