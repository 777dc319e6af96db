#include "collection/CollectionCopy.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>

#include "collection/AccessSource.h"
#include "collection/CollectionCheck.h"
#include "collection/CopySource.h"
#include "collection/CopyTables.h"
#include "collection/Statements.h"
#include "core/AppError.h"
#include "core/database/AccessFile.h"
#include "core/database/Schema.h"
#include "core/database/modDatabase.h"

namespace CollectionCopy {
namespace {

using modDatabase::DbConnection;

// A copy stopped by the user; the target is rolled back.
struct Interrupted {};

// Reads a table's rows in key order, one at a time.
class TableReader : public CopySource::Feed {
public:
    TableReader(DbConnection& connection, const QString& table)
        : m_columns(CopyTables::Columns(connection, table)),
          m_total(CountRows(connection, table)),
          m_query(Statements::Run(
              connection,
              QStringLiteral("SELECT * FROM [%1] ORDER BY %2;").arg(table, m_columns.value(0)),
              SqlStatement::Streamed)),
          m_connection(connection) {}

    QStringList Columns() const override { return m_columns; }
    qint64 Total() const override { return m_total; }
    bool Next(QVector<QVariant>& row) override {
        if (!m_query.Next()) {
            // A row the database could not read ends the table with the library's error.
            if (!m_query.Failure().text.isEmpty()) {
                modDatabase::RaiseDriverError(m_connection, m_query.Failure());
            }
            return false;
        }
        row.resize(m_columns.size());
        for (int i = 0; i < m_columns.size(); ++i) {
            row[i] = CopyTables::Normalized(m_query.Value(i));
        }
        return true;
    }

private:
    static qint64 CountRows(DbConnection& connection, const QString& table) {
        SqlStatement query =
            Statements::Run(connection, QStringLiteral("SELECT COUNT(*) FROM [%1];").arg(table));
        return query.Next() ? query.Value(0).toLongLong() : 0;
    }

    QStringList m_columns;
    qint64 m_total;
    SqlStatement m_query;
    DbConnection& m_connection;
};

TableSummary CopyTable(CopySource::Source& source, DbConnection& target, const QString& table,
                       const Hooks& hooks) {
    const QStringList targetColumns = CopyTables::Columns(target, table);
    const std::unique_ptr<CopySource::Feed> feed = source.Rows(table, targetColumns);
    const qint64 total = feed->Total();
    const QVector<int> positions = CopyTables::MatchColumns(table, feed->Columns(), targetColumns);
    CopyTables::TableSum sum(feed->Columns());
    CopyTables::TableWriter writer(target, table, targetColumns);
    QVector<QVariant> row;
    QVector<QVariant> written(positions.size());
    qint64 done = 0;
    while (feed->Next(row)) {
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

// A collection in a database as the source, read in one snapshot for the whole copy.
class DatabaseSource : public CopySource::Source {
public:
    explicit DatabaseSource(const DatabaseAddress::Address& address)
        : m_connection(DatabaseAddress::Connection(address)),
          m_name(DatabaseAddress::Describe(address)) {}

    // A damaged file is never copied: what it still answers need not be all it held.
    QString Open() override {
        m_connection->Open();
        if (m_connection->State() != modDatabase::adStateOpen) {
            return m_connection->LastError();
        }
        return CollectionCheck::Damage(*m_connection, m_name);
    }
    void Begin() override {
        Statements::Run(
            *m_connection,
            m_connection->Kind() == modDatabase::ServerDatabase
                ? QStringLiteral("START TRANSACTION ISOLATION LEVEL REPEATABLE READ, READ ONLY")
                : QStringLiteral("BEGIN"));
    }
    std::unique_ptr<CopySource::Feed> Rows(const QString& table, const QStringList&) override {
        return std::make_unique<TableReader>(*m_connection, table);
    }
    void End() override { SqlStatement(*m_connection).Exec(QStringLiteral("COMMIT")); }

private:
    std::shared_ptr<DbConnection> m_connection;
    QString m_name;
};

std::vector<TableSummary> CopyAll(CopySource::Source& source, DbConnection& target,
                                  const Hooks& hooks) {
    source.Begin();
    if (target.Kind() == modDatabase::ServerDatabase) {
        // The server's notices (an extension already there, a rollback after a failure) are
        // not the tool's output.
        Statements::Run(target, QStringLiteral("SET client_min_messages TO ERROR"));
    }
    target.Run(QStringLiteral("BEGIN"));
    try {
        Schema::Create(target);
        std::vector<TableSummary> copied;
        for (const QString& table : Schema::TableNames()) {
            copied.push_back(CopyTable(source, target, table, hooks));
        }
        if (target.Kind() == modDatabase::ServerDatabase) {
            CopyTables::ContinueServerKeys(target);
        }
        CopyTables::Verify(copied, Summarize(target));
        if (hooks.cancelled && hooks.cancelled()) {
            throw Interrupted();
        }
        target.Run(QStringLiteral("COMMIT"));
        // Once committed the copy stands; what follows only helps.
        source.End();
        SqlStatement(target).Exec(QStringLiteral("ANALYZE"));  // the query planner's statistics
        return copied;
    } catch (...) {
        SqlStatement(target).Exec(QStringLiteral("ROLLBACK"));
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
            CopyTables::TableSum sum(reader.Columns());
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
    const std::unique_ptr<CopySource::Source> from = CopySource::At(source);
    outcome.message = from->Open();
    if (!outcome.message.isEmpty()) {
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
    } catch (const CopySource::Refused& refused) {
        outcome.message = refused.message;
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

namespace CopySource {

std::unique_ptr<Source> At(const DatabaseAddress::Address& address) {
    if (address.kind == modDatabase::FileDatabase && AccessFile::IsAccessFile(address.database)) {
        return std::make_unique<AccessSource>(address.database);
    }
    return std::make_unique<CollectionCopy::DatabaseSource>(address);
}

}  // namespace CopySource
