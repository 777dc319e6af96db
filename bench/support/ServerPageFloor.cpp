#include "bench/support/ServerPageFloor.h"

#include <libpq-fe.h>

#include "bench/support/BenchSupport.h"

namespace Bench {

ServerPageFloor::ServerPageFloor(const QString& server, const QString& database) {
    const qsizetype colon = server.lastIndexOf(QLatin1Char(':'));
    const QString keywords =
        QStringLiteral("host=%1 port=%2 dbname=%3 user=%4 password=%5")
            .arg(server.left(colon), server.mid(colon + 1), database, PgUser, PgPassword);
    m_connection = PQconnectdb(keywords.toUtf8().constData());
}

ServerPageFloor::~ServerPageFloor() { PQfinish(m_connection); }

QString ServerPageFloor::Error() const {
    return PQstatus(m_connection) == CONNECTION_OK
               ? m_error
               : QString::fromUtf8(PQerrorMessage(m_connection)).trimmed();
}

long long ServerPageFloor::Page(qint32 recipeID) {
    const QByteArray id = QByteArray::number(recipeID);
    long long values = Run(
        "SELECT \"recipe\".recipeID, \"recipe\".title, \"type\".name AS typeName, \"group\".name "
        "AS groupName, \"source\".name AS sourceName FROM ((\"recipe\" INNER JOIN \"type\" ON "
        "\"recipe\".typeID = \"type\".typeID) INNER JOIN \"group\" ON \"type\".groupID = "
        "\"group\".groupID) LEFT OUTER JOIN \"source\" ON \"recipe\".sourceID = "
        "\"source\".sourceID WHERE recipeID = " +
        id + ";");
    std::vector<QByteArray> sections;
    values +=
        Run("SELECT \"recipesection\".recipeID, \"section\".sectionID, \"section\".title, "
            "\"section\".instructions, \"recipesection\".place FROM \"recipesection\" INNER JOIN "
            "\"section\" ON \"recipesection\".sectionID = \"section\".sectionID WHERE recipeID = " +
                id + " ORDER BY place;",
            &sections);
    for (const QByteArray& section : sections) {
        values += Run(
            "SELECT \"sectioningredient\".amount, \"unit\".name AS unitName, \"ingredient\".name "
            "AS ingredientName FROM (\"sectioningredient\" INNER JOIN \"ingredient\" ON "
            "\"sectioningredient\".ingredientID = \"ingredient\".ingredientID) INNER JOIN "
            "\"unit\" ON \"sectioningredient\".unitID = \"unit\".unitID WHERE sectionID = " +
            section + " ORDER BY \"sectioningredient\".sectionIngredientID;");
    }
    return m_error.isEmpty() ? values : -1;
}

long long ServerPageFloor::Run(const QByteArray& sql, std::vector<QByteArray>* keys) {
    PGresult* result =
        PQexecParams(m_connection, sql.constData(), 0, nullptr, nullptr, nullptr, nullptr, 0);
    long long values = 0;
    if (PQresultStatus(result) != PGRES_TUPLES_OK) {
        m_error = QString::fromUtf8(PQresultErrorMessage(result)).trimmed();
    } else {
        for (int row = 0; row < PQntuples(result); ++row) {
            for (int column = 0; column < PQnfields(result); ++column) {
                const QString value = QString::fromUtf8(PQgetvalue(result, row, column),
                                                        PQgetlength(result, row, column));
                values += value.isNull() ? 0 : 1;
            }
            if (keys) {
                keys->emplace_back(PQgetvalue(result, row, 1));
            }
        }
    }
    PQclear(result);
    return values;
}

}  // namespace Bench
