#include "collection/RecipeRows.h"

#include "core/AppError.h"
#include "core/database/modDatabase.h"

namespace RecipeRows {

void DeleteRows(const QString& sql) {
    Recordset rs = modDatabase::GetRecordset(sql);
    modDatabase::DeleteRecordset(rs);
    rs.Close();
}

void DeleteSection(qint32 sectionID) {
    ErrorPath::PassOn("frmMain:DeleteSection", [&] {
        const QString key = QString::number(sectionID);
        DeleteRows(QStringLiteral("SELECT * FROM [SectionIngredient] WHERE ") +
                   QStringLiteral("sectionID = ") + key + QStringLiteral(";"));
        DeleteRows(QStringLiteral("SELECT * FROM [RecipeSection] WHERE sectionID = ") + key +
                   QStringLiteral(";"));
        DeleteRows(QStringLiteral("SELECT * FROM [Section] WHERE sectionID = ") + key +
                   QStringLiteral(";"));
    });
}

}  // namespace RecipeRows
