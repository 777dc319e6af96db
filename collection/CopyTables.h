#pragma once

#include <QCryptographicHash>
#include <QStringList>
#include <QVariant>
#include <QVector>
#include <optional>
#include <vector>

#include "collection/CollectionCopy.h"
#include "core/database/SqlStatement.h"

namespace modDatabase {
class DbConnection;
}

// The pieces of a copy that do not care where the rows come from: the target's columns, the
// checksum of a table's rows, writing rows many at a time, and the checks before committing.
namespace CopyTables {

// The columns of a table as the database lists them; the first is the key.
QStringList Columns(modDatabase::DbConnection& connection, const QString& table);

// A value as it is written and summed: NULL stays NULL, anything else is its text (an empty
// text stays an empty text, never NULL).
QVariant Normalized(const QVariant& value);

// The source's columns in the order of the target's (matched without regard to case), or an
// error when the two differ.
QVector<int> MatchColumns(const QString& table, const QStringList& source,
                          const QStringList& target);

// Sums a table's rows: for each value in the order of the column names, a mark for NULL or its
// text's UTF-8 bytes with their length.
class TableSum {
public:
    explicit TableSum(const QStringList& columns);
    void Add(const QVector<QVariant>& row);
    CollectionCopy::TableSummary Result(const QString& table);

private:
    QVector<int> m_order;
    QCryptographicHash m_hash{QCryptographicHash::Sha256};
    qint64 m_rows = 0;
};

// Writes rows into a table many at a time.
class TableWriter {
public:
    TableWriter(modDatabase::DbConnection& connection, const QString& table,
                const QStringList& columns);
    void Add(const QVector<QVariant>& row);
    void Flush();

private:
    QString Statement(int rows) const;

    modDatabase::DbConnection& m_connection;
    QString m_table;
    QStringList m_columns;
    int m_rowsPerStatement;
    std::vector<QVector<QVariant>> m_pending;
    std::optional<SqlStatement> m_query;
    int m_preparedRows = 0;
};

// Keys written as they were leave the server's key generators behind: each continues after
// the highest key of its table.
void ContinueServerKeys(modDatabase::DbConnection& target);

// Raises an error when the target's tables differ from what was copied.
void Verify(const std::vector<CollectionCopy::TableSummary>& copied,
            const std::vector<CollectionCopy::TableSummary>& found);

}  // namespace CopyTables
