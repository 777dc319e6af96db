#include "core/database/Recordset.h"

#include <QRegularExpression>
#include <algorithm>
#include <iterator>
#include <limits>

#include "core/AppError.h"
#include "core/database/SqlStatement.h"
#include "core/database/modDatabase.h"

namespace {

// "SELECT * FROM [Table] ..." names the one table whose rows the result set may change.
QString UpdatableTable(const QString& sql) {
    static const QRegularExpression pattern(QStringLiteral(R"(^\s*SELECT\s+\*\s+FROM\s+(\[\w+\]))"),
                                            QRegularExpression::CaseInsensitiveOption);
    const QRegularExpressionMatch match = pattern.match(sql);
    return match.hasMatch() ? match.captured(1) : QString();
}

QString Bracketed(const QString& name) { return QLatin1Char('[') + name + QLatin1Char(']'); }

[[noreturn]] void NoCurrentRecord() {
    ErrorPath::Raise(3021, QStringLiteral("No current record."));
}

// The marker of the n-th value (from 1), as both libraries read it.
QString Marker(int number) { return QLatin1Char('$') + QString::number(number); }

// The values of the named fields of one row as one text, NULL told apart from every text.
QString RowKey(const QVariant* row, const QVector<int>& columns) {
    QString key;
    for (const int column : columns) {
        const QVariant& value = row[column];
        key += value.isNull() ? QStringLiteral("\x01") : value.toString();
        key += QChar(0x1f);
    }
    return key;
}

}  // namespace

Recordset GetRecordsetFor(const std::shared_ptr<modDatabase::DbConnection>& connection,
                          const QString& sql) {
    if (!connection || connection->State() != modDatabase::adStateOpen) {
        ErrorPath::Raise(3709, connection && !connection->LastError().isEmpty()
                                   ? connection->LastError()
                                   : QStringLiteral("The connection is closed."));
    }
    Recordset rs;
    rs.m_connection = connection;
    rs.m_table = UpdatableTable(sql);
    SqlStatement query(*connection);
    if (!query.Exec(connection->Translate(sql))) {
        modDatabase::RaiseDriverError(*connection, query.Failure());
    }
    const int columns = query.ColumnCount();
    for (int i = 0; i < columns; ++i) {
        rs.m_names << query.ColumnName(i);
    }
    while (query.Next()) {
        for (int i = 0; i < columns; ++i) {
            rs.m_values.push_back(query.Value(i));
        }
        ++rs.m_rowCount;
    }
    if (!query.Failure().text.isEmpty()) {
        modDatabase::RaiseDriverError(*connection, query.Failure());
    }
    rs.m_deleted.assign(rs.m_rowCount, false);
    rs.m_changed.fill(false, rs.FieldCount());
    return rs;
}

void Recordset::Arrange(const Recordset& order, const QStringList& fields) {
    QVector<int> mine;
    QVector<int> theirs;
    for (const QString& field : fields) {
        mine << FieldIndex(field);
        theirs << order.FieldIndex(field);
    }
    // Where each row of `order` stands, by its values; equal rows in their order.
    QHash<QString, QList<size_t>> places;
    for (size_t row = 0; row < order.m_rowCount; ++row) {
        places[RowKey(order.m_values.data() + row * order.m_names.size(), theirs)].append(row);
    }
    std::vector<std::pair<size_t, size_t>> ranks;  // (place, row)
    ranks.reserve(m_rowCount);
    for (size_t row = 0; row < m_rowCount; ++row) {
        auto found = places.find(RowKey(m_values.data() + row * m_names.size(), mine));
        if (found != places.end() && !found->isEmpty()) {
            ranks.emplace_back(found->takeFirst(), row);
        } else {
            ranks.emplace_back(order.m_rowCount + row, row);
        }
    }
    std::sort(ranks.begin(), ranks.end());
    const size_t width = m_names.size();
    std::vector<QVariant> values;
    values.reserve(m_values.size());
    std::vector<bool> deleted;
    deleted.reserve(m_rowCount);
    for (const auto& [place, row] : ranks) {
        std::move(m_values.begin() + row * width, m_values.begin() + (row + 1) * width,
                  std::back_inserter(values));
        deleted.push_back(m_deleted[row]);
    }
    m_values = std::move(values);
    m_deleted = std::move(deleted);
    m_position = 0;
    m_adding = false;
}

bool Recordset::Eof() const { return m_position >= m_rowCount; }

void Recordset::MoveNext() {
    if (Eof()) {
        NoCurrentRecord();
    }
    ++m_position;
    m_adding = false;
}

int Recordset::RecordCount() const {
    return static_cast<int>(std::count(m_deleted.begin(), m_deleted.end(), false));
}

int Recordset::FieldIndex(const QString& name) const {
    for (int k = 0; k < 4; ++k) {
        if (!m_lookedUp[k].isNull() && m_lookedUp[k] == name) {
            return m_lookedUpIndex[k];
        }
    }
    for (int i = 0; i < m_names.size(); ++i) {
        if (m_names[i].compare(name, Qt::CaseInsensitive) == 0) {
            std::move_backward(m_lookedUp, m_lookedUp + 3, m_lookedUp + 4);
            std::move_backward(m_lookedUpIndex, m_lookedUpIndex + 3, m_lookedUpIndex + 4);
            m_lookedUp[0] = name;
            m_lookedUpIndex[0] = i;
            return i;
        }
    }
    ErrorPath::Raise(3265, QStringLiteral("Item %1 not found in this collection.").arg(name));
}

const QVariant* Recordset::CurrentRow() const {
    if (Eof() || m_deleted[m_position]) {
        NoCurrentRecord();
    }
    return m_values.data() + m_position * m_names.size();
}

QVariant* Recordset::CurrentRow() {
    return const_cast<QVariant*>(std::as_const(*this).CurrentRow());
}

QVariant Recordset::Fields(const QString& name) const { return CurrentRow()[FieldIndex(name)]; }

QVariant Recordset::Fields(int index) const {
    if (index < 0 || index >= FieldCount()) {
        ErrorPath::Raise(3265, QStringLiteral("Item %1 not found in this collection.").arg(index));
    }
    return CurrentRow()[index];
}

QString Recordset::Text(const QString& name) const {
    const QVariant value = Fields(name);
    if (value.isNull()) {
        ErrorPath::Raise(94, QStringLiteral("Invalid use of Null"));
    }
    return value.toString();
}

qint32 Recordset::Long(const QString& name) const {
    const QVariant value = Fields(name);
    if (value.isNull()) {
        ErrorPath::Raise(94, QStringLiteral("Invalid use of Null"));
    }
    bool ok = false;
    const qlonglong number = value.toLongLong(&ok);
    if (!ok || number < std::numeric_limits<qint32>::min() ||
        number > std::numeric_limits<qint32>::max()) {
        ErrorPath::Raise(6, QStringLiteral("Overflow"));
    }
    return static_cast<qint32>(number);
}

void Recordset::RequireUpdatable() const {
    if (m_table.isEmpty() || !m_connection) {
        ErrorPath::Raise(3251, QStringLiteral("The result set cannot be updated."));
    }
}

void Recordset::SetField(const QString& name, const QVariant& value) {
    RequireUpdatable();
    const int index = FieldIndex(name);
    CurrentRow()[index] = value;
    m_changed[index] = true;
}

void Recordset::AddNew() {
    RequireUpdatable();
    m_values.resize(m_values.size() + FieldCount());
    m_deleted.push_back(false);
    m_position = m_rowCount++;
    m_changed.fill(false);
    m_adding = true;
}

void Recordset::Update() {
    if (Eof() || m_deleted[m_position]) {
        return;  // nothing to write after a delete
    }
    RequireUpdatable();
    if (m_adding) {
        Insert();
    } else if (m_changed.contains(true)) {
        WriteChanges();
    }
    m_changed.fill(false);
    m_adding = false;
}

void Recordset::Insert() {
    QStringList columns;
    QStringList markers;
    QVariantList values;
    QVariant* row = CurrentRow();
    for (int i = 0; i < FieldCount(); ++i) {
        if (m_changed[i]) {
            columns << Bracketed(m_names[i]);
            values << row[i];
            markers << Marker(static_cast<int>(values.size()));
        }
    }
    const QString sql =
        QStringLiteral("INSERT INTO ") + m_table +
        (columns.isEmpty() ? QStringLiteral(" DEFAULT VALUES")
                           : QStringLiteral(" (") + columns.join(QStringLiteral(", ")) +
                                 QStringLiteral(") VALUES (") + markers.join(QStringLiteral(", ")) +
                                 QLatin1Char(')')) +
        QStringLiteral(" RETURNING *");
    SqlStatement query = Run(sql, values);
    if (query.Next()) {
        for (int i = 0; i < FieldCount() && i < query.ColumnCount(); ++i) {
            row[i] = query.Value(i);
        }
    }
}

void Recordset::WriteChanges() {
    QStringList assignments;
    QVariantList values;
    QVariant* row = CurrentRow();
    for (int i = 0; i < FieldCount(); ++i) {
        if (m_changed[i]) {
            values << row[i];
            assignments << Bracketed(m_names[i]) + QStringLiteral(" = ") +
                               Marker(static_cast<int>(values.size()));
        }
    }
    values << row[0];
    Run(QStringLiteral("UPDATE ") + m_table + QStringLiteral(" SET ") +
            assignments.join(QStringLiteral(", ")) + QStringLiteral(" WHERE ") +
            Bracketed(m_names[0]) + QStringLiteral(" = ") + Marker(static_cast<int>(values.size())),
        values);
}

void Recordset::Delete() {
    RequireUpdatable();
    Run(QStringLiteral("DELETE FROM ") + m_table + QStringLiteral(" WHERE ") +
            Bracketed(m_names[0]) + QStringLiteral(" = $1"),
        {CurrentRow()[0]});
    m_deleted[m_position] = true;
    m_adding = false;
}

SqlStatement Recordset::Run(const QString& sql, const QVariantList& values) {
    SqlStatement query(*m_connection);
    if (!query.Exec(m_connection->Translate(sql), values)) {
        modDatabase::RaiseDriverError(*m_connection, query.Failure());
    }
    return query;
}

void Recordset::Close() {
    m_connection.reset();
    m_values.clear();
    m_rowCount = 0;
    m_deleted.clear();
    m_position = 0;
    m_adding = false;
}
