#include "collection/CopyTables.h"

#include <QtEndian>
#include <algorithm>
#include <numeric>

#include "collection/Statements.h"
#include "core/AppError.h"
#include "core/database/Schema.h"
#include "core/database/modDatabase.h"

namespace CopyTables {
namespace {

using modDatabase::DbConnection;

constexpr int MostValuesPerStatement = 2500;
constexpr int MostRowsPerStatement = 500;

// Column positions in the order in which a table's values are summed: by name, so that the
// same rows give the same sum whatever order the database keeps its columns in.
QVector<int> SumOrder(const QStringList& columns) {
    QVector<int> order(columns.size());
    std::iota(order.begin(), order.end(), 0);
    std::sort(order.begin(), order.end(), [&](int a, int b) {
        return columns[a].compare(columns[b], Qt::CaseInsensitive) < 0;
    });
    return order;
}

}  // namespace

QStringList Columns(DbConnection& connection, const QString& table) {
    SqlStatement query =
        Statements::Run(connection, QStringLiteral("SELECT * FROM [%1] WHERE 1 = 0;").arg(table));
    QStringList names;
    for (int i = 0; i < query.ColumnCount(); ++i) {
        names << query.ColumnName(i);
    }
    return names;
}

QVariant Normalized(const QVariant& value) {
    if (value.isNull()) {
        return QVariant();
    }
    if (value.typeId() == QMetaType::QString || value.typeId() == QMetaType::QByteArray) {
        const QString text = value.toString();
        return text.isNull() ? QVariant(QString(QLatin1String(""))) : QVariant(text);
    }
    return value;
}

QVector<int> MatchColumns(const QString& table, const QStringList& source,
                          const QStringList& target) {
    QVector<int> positions;
    for (const QString& column : target) {
        const auto found = std::find_if(source.cbegin(), source.cend(), [&](const QString& name) {
            return name.compare(column, Qt::CaseInsensitive) == 0;
        });
        if (found == source.cend()) {
            break;
        }
        positions << static_cast<int>(found - source.cbegin());
    }
    if (positions.size() != target.size() || source.size() != target.size()) {
        ErrorPath::Raise(
            AppError::PassedOn,
            QStringLiteral("Tabela %1 nima v obeh zbirkah enakih stolpcev.").arg(table));
    }
    return positions;
}

TableSum::TableSum(const QStringList& columns) : m_order(SumOrder(columns)) {}

void TableSum::Add(const QVector<QVariant>& row) {
    for (int index : m_order) {
        const QVariant& value = row[index];
        if (value.isNull()) {
            m_hash.addData(QByteArrayView("\0", 1));
            continue;
        }
        const QByteArray bytes = value.toString().toUtf8();
        char head[5] = {'\1'};
        qToBigEndian<quint32>(static_cast<quint32>(bytes.size()), head + 1);
        m_hash.addData(QByteArrayView(head, sizeof head));
        m_hash.addData(bytes);
    }
    ++m_rows;
}

CollectionCopy::TableSummary TableSum::Result(const QString& table) {
    return {table, m_rows, m_hash.result().toHex()};
}

TableWriter::TableWriter(DbConnection& connection, const QString& table, const QStringList& columns)
    : m_connection(connection),
      m_table(table),
      m_columns(columns),
      m_rowsPerStatement(
          std::max(1, std::min<int>(MostRowsPerStatement,
                                    MostValuesPerStatement / std::max(1, int(columns.size()))))) {}

void TableWriter::Add(const QVector<QVariant>& row) {
    m_pending.push_back(row);
    if (static_cast<int>(m_pending.size()) == m_rowsPerStatement) {
        Flush();
    }
}

void TableWriter::Flush() {
    if (m_pending.empty()) {
        return;
    }
    const int rows = static_cast<int>(m_pending.size());
    if (!m_query || rows != m_preparedRows) {
        m_query.emplace(m_connection);
        if (!m_query->Prepare(m_connection.Translate(Statement(rows)))) {
            modDatabase::RaiseDriverError(m_connection, m_query->Failure());
        }
        m_preparedRows = rows;
    }
    QVariantList values;
    values.reserve(rows * m_columns.size());
    for (const QVector<QVariant>& row : m_pending) {
        for (const QVariant& value : row) {
            values << value;
        }
    }
    if (!m_query->Run(values)) {
        modDatabase::RaiseDriverError(m_connection, m_query->Failure());
    }
    m_pending.clear();
}

QString TableWriter::Statement(int rows) const {
    QStringList bracketed;
    for (const QString& column : m_columns) {
        bracketed << QLatin1Char('[') + column + QLatin1Char(']');
    }
    QStringList tuples;
    for (int row = 0; row < rows; ++row) {
        QStringList markers;
        for (int column = 0; column < m_columns.size(); ++column) {
            markers << QStringLiteral("$%1").arg(row * m_columns.size() + column + 1);
        }
        tuples << QLatin1Char('(') + markers.join(QStringLiteral(", ")) + QLatin1Char(')');
    }
    return QStringLiteral("INSERT INTO [%1] (%2) VALUES ")
               .arg(m_table, bracketed.join(QStringLiteral(", "))) +
           tuples.join(QStringLiteral(", "));
}

void ContinueServerKeys(DbConnection& target) {
    for (const QString& table : Schema::TableNames()) {
        const QString key = Columns(target, table).value(0).toLower();
        Statements::Run(target,
                        QStringLiteral("SELECT setval(pg_get_serial_sequence('\"%1\"', '%2'), "
                                       "COALESCE((SELECT MAX(%2) FROM [%3]), 0) + 1, false);")
                            .arg(table.toLower(), key, table));
    }
}

void Verify(const std::vector<CollectionCopy::TableSummary>& copied,
            const std::vector<CollectionCopy::TableSummary>& found) {
    for (size_t i = 0; i < copied.size(); ++i) {
        if (found[i].rows != copied[i].rows) {
            ErrorPath::Raise(AppError::PassedOn,
                             QStringLiteral("Preverjanje ni uspelo: tabela %1 ima v kopiji %2 "
                                            "vrstic, v izvirniku %3.")
                                 .arg(copied[i].table)
                                 .arg(found[i].rows)
                                 .arg(copied[i].rows));
        }
        if (found[i].checksum != copied[i].checksum) {
            ErrorPath::Raise(AppError::PassedOn,
                             QStringLiteral("Preverjanje ni uspelo: kontrolna vsota tabele %1 se "
                                            "v kopiji razlikuje od izvirnika.")
                                 .arg(copied[i].table));
        }
    }
}

}  // namespace CopyTables
