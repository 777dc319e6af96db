#include "core/database/Schema.h"

#include <QFile>
#include <QRegularExpression>

#include "core/AppError.h"
#include "core/database/SqlStatement.h"
#include "core/database/modDatabase.h"

namespace Schema {

const QStringList& TableNames() {
    static const QStringList names{
        QStringLiteral("Group"),
        QStringLiteral("Type"),
        QStringLiteral("Recipe"),
        QStringLiteral("Source"),
        QStringLiteral("Unit"),
        QStringLiteral("Ingredient"),
        QStringLiteral("Section"),
        QStringLiteral("RecipeSection"),
        QStringLiteral("SectionIngredient"),
    };
    return names;
}

QStringList Statements(int kind) {
    QFile file(kind == modDatabase::ServerDatabase
                   ? QStringLiteral(":/morvena/schema/postgresql.sql")
                   : QStringLiteral(":/morvena/schema/sqlite.sql"));
    file.open(QIODevice::ReadOnly);
    QString text = QString::fromUtf8(file.readAll());
    text.remove(QRegularExpression(QStringLiteral("--[^\n]*")));
    QStringList statements;
    for (const QString& statement : text.split(QLatin1Char(';'))) {
        if (!statement.trimmed().isEmpty()) {
            statements << statement.trimmed();
        }
    }
    return statements;
}

void Create(modDatabase::DbConnection& connection) {
    ErrorPath::PassOn("Schema:Create", [&] {
        for (const QString& statement : Statements(connection.Kind())) {
            SqlStatement query(connection);
            if (!query.Exec(statement)) {
                modDatabase::RaiseDriverError(connection, query.Failure());
            }
        }
    });
}

}  // namespace Schema
