#include "collection/CollectionCopy.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QtEndian>
#include <algorithm>
#include <numeric>
#include <optional>

#include "collection/Statements.h"
#include "core/AppError.h"
#include "core/database/Schema.h"
#include "core/database/modDatabase.h"

namespace CollectionCopy {
namespace {

using modDatabase::DbConnection;

constexpr int MostValuesPerStatement = 2500;
constexpr int MostRowsPerStatement = 500;

// A copy stopped by the user; the target is rolled back.
struct Interrupted {};

// The columns of a table as the database lists them; the first is the key.
QStringList Columns(DbConnection& connection, const QString& table) {
    QSqlQuery query =
        Statements::Run(connection, QStringLiteral("SELECT * FROM [%1] WHERE 1 = 0;").arg(table));
    QStringList names;
    for (int i = 0; i < query.record().count(); ++i) {
        names << query.record().fieldName(i);
    }
    return names;
}

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

// A value as it is written and summed: NULL stays NULL, anything else is its text (an empty
// text stays an empty text, never NULL).
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

// Sums a table's rows: for each value in the summing order, a mark for NULL or its text's
// UTF-8 bytes with their length.
class TableSum {
public:
    explicit TableSum(const QStringList& columns) : m_order(SumOrder(columns)) {}

    void Add(const QVector<QVariant>& row) {
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
    TableSummary Result(const QString& table) { return {table, m_rows, m_hash.result().toHex()}; }

private:
    QVector<int> m_order;
    QCryptographicHash m_hash{QCryptographicHash::Sha256};
    qint64 m_rows = 0;
};

// Reads a table's rows in key order, one at a time.
class TableReader {
public:
    TableReader(DbConnection& connection, const QString& table)
        : m_columns(Columns(connection, table)),
          m_query(Statements::Run(
              connection,
              QStringLiteral("SELECT * FROM [%1] ORDER BY %2;").arg(table, m_columns.value(0)))) {}

    const QStringList& ColumnNames() const { return m_columns; }
    bool Next(QVector<QVariant>& row) {
        if (!m_query.next()) {
            return false;
        }
        row.resize(m_columns.size());
        for (int i = 0; i < m_columns.size(); ++i) {
            row[i] = Normalized(m_query.value(i));
        }
        return true;
    }

private:
    QStringList m_columns;
    QSqlQuery m_query;
};

qint64 CountRows(DbConnection& connection, const QString& table) {
    QSqlQuery query =
        Statements::Run(connection, QStringLiteral("SELECT COUNT(*) FROM [%1];").arg(table));
    return query.next() ? query.value(0).toLongLong() : 0;
}

// Writes rows into a table many at a time.
class TableWriter {
public:
    TableWriter(DbConnection& connection, const QString& table, const QStringList& columns)
        : m_connection(connection),
          m_table(table),
          m_columns(columns),
          m_rowsPerStatement(std::max(
              1, std::min<int>(MostRowsPerStatement,
                               MostValuesPerStatement / std::max(1, int(columns.size()))))) {}

    void Add(const QVector<QVariant>& row) {
        m_pending.push_back(row);
        if (static_cast<int>(m_pending.size()) == m_rowsPerStatement) {
            Flush();
        }
    }
    void Flush() {
        if (m_pending.empty()) {
            return;
        }
        const int rows = static_cast<int>(m_pending.size());
        if (!m_query || rows != m_preparedRows) {
            m_query.emplace(m_connection.Database());
            if (!m_query->prepare(m_connection.Translate(Statement(rows)))) {
                modDatabase::RaiseDriverError(m_connection, m_query->lastError());
            }
            m_preparedRows = rows;
        }
        for (const QVector<QVariant>& row : m_pending) {
            for (const QVariant& value : row) {
                m_query->addBindValue(value);
            }
        }
        if (!m_query->exec()) {
            // After a failed statement the server ignores everything, freeing the prepared
            // statement too, until the transaction is rolled back.
            const QSqlError error = m_query->lastError();
            m_connection.Database().rollback();
            modDatabase::RaiseDriverError(m_connection, error);
        }
        m_pending.clear();
    }

private:
    QString Statement(int rows) const {
        QStringList bracketed;
        for (const QString& column : m_columns) {
            bracketed << QLatin1Char('[') + column + QLatin1Char(']');
        }
        const QString markers =
            QLatin1Char('(') +
            QStringList(m_columns.size(), QStringLiteral("?")).join(QStringLiteral(", ")) +
            QLatin1Char(')');
        return QStringLiteral("INSERT INTO [%1] (%2) VALUES ")
                   .arg(m_table, bracketed.join(QStringLiteral(", "))) +
               QStringList(rows, markers).join(QStringLiteral(", "));
    }

    DbConnection& m_connection;
    QString m_table;
    QStringList m_columns;
    int m_rowsPerStatement;
    std::vector<QVector<QVariant>> m_pending;
    std::optional<QSqlQuery> m_query;
    int m_preparedRows = 0;
};

// The source's columns in the order of the target's, or an error when the two differ.
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

TableSummary CopyTable(DbConnection& source, DbConnection& target, const QString& table,
                       const Hooks& hooks) {
    const qint64 total = CountRows(source, table);
    TableReader reader(source, table);
    const QStringList targetColumns = Columns(target, table);
    const QVector<int> positions = MatchColumns(table, reader.ColumnNames(), targetColumns);
    TableSum sum(reader.ColumnNames());
    TableWriter writer(target, table, targetColumns);
    QVector<QVariant> row;
    QVector<QVariant> written(positions.size());
    qint64 done = 0;
    while (reader.Next(row)) {
        sum.Add(row);
        for (int i = 0; i < positions.size(); ++i) {
            written[i] = row[positions[i]];
        }
        writer.Add(written);
        if (++done % 10000 == 0) {
            if (hooks.cancelled && hooks.cancelled()) {
                throw Interrupted();
            }
            if (hooks.progress) {
                hooks.progress(table, done, total);
            }
        }
    }
    writer.Flush();
    if (hooks.progress) {
        hooks.progress(table, done, total);
    }
    return sum.Result(table);
}

// Keys written as they were leave the server's key generators behind: each continues after
// the highest key of its table.
void ContinueServerKeys(DbConnection& target) {
    for (const QString& table : Schema::TableNames()) {
        const QString key = Columns(target, table).value(0).toLower();
        Statements::Run(target,
                        QStringLiteral("SELECT setval(pg_get_serial_sequence('\"%1\"', '%2'), "
                                       "COALESCE((SELECT MAX(%2) FROM [%3]), 0) + 1, false);")
                            .arg(table.toLower(), key, table));
    }
}

void Verify(const std::vector<TableSummary>& copied, const std::vector<TableSummary>& found) {
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

// One snapshot of the source for the whole copy.
void BeginReading(DbConnection& source) {
    Statements::Run(
        source, source.Kind() == modDatabase::ServerDatabase
                    ? QStringLiteral("START TRANSACTION ISOLATION LEVEL REPEATABLE READ, READ ONLY")
                    : QStringLiteral("BEGIN"));
}

std::vector<TableSummary> CopyAll(DbConnection& source, DbConnection& target, const Hooks& hooks) {
    BeginReading(source);
    if (target.Kind() == modDatabase::ServerDatabase) {
        // The server's notices (an extension already there, a rollback after a failure) are
        // not the tool's output.
        Statements::Run(target, QStringLiteral("SET client_min_messages TO ERROR"));
    }
    QSqlDatabase db = target.Database();
    if (!db.transaction()) {
        modDatabase::RaiseDriverError(target, db.lastError());
    }
    try {
        Schema::Create(target);
        std::vector<TableSummary> copied;
        for (const QString& table : Schema::TableNames()) {
            copied.push_back(CopyTable(source, target, table, hooks));
        }
        if (target.Kind() == modDatabase::ServerDatabase) {
            ContinueServerKeys(target);
        }
        Verify(copied, Summarize(target));
        if (hooks.cancelled && hooks.cancelled()) {
            throw Interrupted();
        }
        if (!db.commit()) {
            modDatabase::RaiseDriverError(target, db.lastError());
        }
        // Once committed the copy stands; what follows only helps.
        QSqlQuery(source.Database()).exec(QStringLiteral("COMMIT"));
        QSqlQuery(db).exec(QStringLiteral("ANALYZE"));  // the query planner's statistics
        return copied;
    } catch (...) {
        db.rollback();
        throw;
    }
}

// A new file is written under a name of its own beside the target and takes the target's name
// only when the copy is complete, so that a copy killed outright leaves no file by that name.
QString PartName(const QString& file) {
    const QFileInfo info(file);
    return info.absolutePath() + QStringLiteral("/.") + info.fileName() +
           QStringLiteral(".part-%1").arg(QCoreApplication::applicationPid());
}

bool Taken(const QString& path) {
    const QFileInfo info(path);
    return info.exists() || info.isSymLink();
}

void RemoveFile(const QString& file) {
    QFile::remove(file + QStringLiteral("-journal"));
    QFile::remove(file);
}

}  // namespace

std::vector<TableSummary> Summarize(DbConnection& connection) {
    return ErrorPath::PassOn("CollectionCopy:Summarize", [&] {
        std::vector<TableSummary> summaries;
        for (const QString& table : Schema::TableNames()) {
            TableReader reader(connection, table);
            TableSum sum(reader.ColumnNames());
            QVector<QVariant> row;
            while (reader.Next(row)) {
                sum.Add(row);
            }
            summaries.push_back(sum.Result(table));
        }
        return summaries;
    });
}

Outcome Copy(const DatabaseAddress::Address& source, const DatabaseAddress::Address& target,
             const Hooks& hooks) {
    Outcome outcome;
    const bool newFile = target.kind == modDatabase::FileDatabase;
    if (newFile && Taken(target.database)) {
        outcome.message = QStringLiteral("Datoteka %1 že obstaja.").arg(target.database);
        return outcome;
    }
    auto from = DatabaseAddress::Connection(source);
    from->Open();
    if (from->State() != modDatabase::adStateOpen) {
        outcome.message = from->LastError();
        return outcome;
    }
    DatabaseAddress::Address writing = target;
    if (newFile) {
        writing.database = PartName(target.database);
    }
    auto to = DatabaseAddress::Connection(writing);
    to->OpenEmpty();
    if (to->State() != modDatabase::adStateOpen) {
        outcome.message = to->LastError();
        return outcome;
    }
    try {
        outcome.tables = CopyAll(*from, *to, hooks);
        outcome.copied = true;
    } catch (const Interrupted&) {
        outcome.message =
            QStringLiteral("Kopiranje je prekinjeno; ciljna zbirka je ostala prazna.");
    } catch (...) {
        const AppError error = ErrorPath::Current();
        outcome.message = QStringLiteral("CollectionCopy:Copy->") + error.Source() +
                          QStringLiteral("->") + error.Description();
    }
    to.reset();
    if (newFile && outcome.copied && !QFile::rename(writing.database, target.database)) {
        outcome.copied = false;
        outcome.message =
            Taken(target.database)
                ? QStringLiteral("Datoteka %1 že obstaja.").arg(target.database)
                : QStringLiteral("Datoteke %1 ni mogoče ustvariti.").arg(target.database);
    }
    if (newFile && !outcome.copied) {
        RemoveFile(writing.database);
    }
    return outcome;
}

}  // namespace CollectionCopy
