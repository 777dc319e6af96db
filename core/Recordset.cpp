#include "core/Recordset.h"

#include <QRegularExpression>
#include <QSqlQuery>
#include <QSqlRecord>
#include <limits>

#include "core/AppError.h"
#include "core/modDatabase.h"

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

}  // namespace

Recordset GetRecordsetFor(const std::shared_ptr<modDatabase::DbConnection>& connection,
                          const QString& sql) {
    if (!connection || connection->State() != modDatabase::adStateOpen) {
        ErrorPath::Raise(3709, connection && !connection->LastError().isEmpty()
                                   ? connection->LastError()
                                   : QStringLiteral("The connection is closed."));
    }
    QSqlQuery query(connection->Database());
    query.setForwardOnly(true);
    if (!query.exec(connection->Translate(sql))) {
        modDatabase::RaiseDriverError(*connection, query.lastError());
    }
    Recordset rs;
    rs.m_connection = connection;
    rs.m_table = UpdatableTable(sql);
    const QSqlRecord record = query.record();
    const int columns = record.count();
    for (int i = 0; i < columns; ++i) {
        rs.m_names << record.fieldName(i);
    }
    while (query.next()) {
        QVector<QVariant> row(columns);
        for (int i = 0; i < columns; ++i) {
            row[i] = query.value(i);
        }
        rs.m_rows.push_back(std::move(row));
    }
    rs.m_deleted.assign(rs.m_rows.size(), false);
    rs.m_changed.fill(false, columns);
    return rs;
}

bool Recordset::Eof() const { return m_position >= m_rows.size(); }

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
    for (int i = 0; i < m_names.size(); ++i) {
        if (m_names[i].compare(name, Qt::CaseInsensitive) == 0) {
            return i;
        }
    }
    ErrorPath::Raise(3265, QStringLiteral("Item %1 not found in this collection.").arg(name));
}

const QVector<QVariant>& Recordset::CurrentRow() const {
    if (Eof() || m_deleted[m_position]) {
        NoCurrentRecord();
    }
    return m_rows[m_position];
}

QVector<QVariant>& Recordset::CurrentRow() {
    return const_cast<QVector<QVariant>&>(std::as_const(*this).CurrentRow());
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
    m_rows.emplace_back(FieldCount());
    m_deleted.push_back(false);
    m_position = m_rows.size() - 1;
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
    QVector<QVariant>& row = CurrentRow();
    for (int i = 0; i < FieldCount(); ++i) {
        if (m_changed[i]) {
            columns << Bracketed(m_names[i]);
            markers << QStringLiteral("?");
        }
    }
    const QString sql =
        QStringLiteral("INSERT INTO ") + m_table +
        (columns.isEmpty() ? QStringLiteral(" DEFAULT VALUES")
                           : QStringLiteral(" (") + columns.join(QStringLiteral(", ")) +
                                 QStringLiteral(") VALUES (") + markers.join(QStringLiteral(", ")) +
                                 QLatin1Char(')')) +
        QStringLiteral(" RETURNING *");
    QSqlQuery query(m_connection->Database());
    query.setForwardOnly(true);
    query.prepare(m_connection->Translate(sql));
    for (int i = 0; i < FieldCount(); ++i) {
        if (m_changed[i]) {
            query.addBindValue(row[i]);
        }
    }
    if (!query.exec()) {
        modDatabase::RaiseDriverError(*m_connection, query.lastError());
    }
    if (query.next()) {
        for (int i = 0; i < FieldCount() && i < query.record().count(); ++i) {
            row[i] = query.value(i);
        }
    }
    query.finish();
}

void Recordset::WriteChanges() {
    QStringList assignments;
    QVector<QVariant>& row = CurrentRow();
    for (int i = 0; i < FieldCount(); ++i) {
        if (m_changed[i]) {
            assignments << Bracketed(m_names[i]) + QStringLiteral(" = ?");
        }
    }
    QSqlQuery query(m_connection->Database());
    query.prepare(
        m_connection->Translate(QStringLiteral("UPDATE ") + m_table + QStringLiteral(" SET ") +
                                assignments.join(QStringLiteral(", ")) + QStringLiteral(" WHERE ") +
                                Bracketed(m_names[0]) + QStringLiteral(" = ?")));
    for (int i = 0; i < FieldCount(); ++i) {
        if (m_changed[i]) {
            query.addBindValue(row[i]);
        }
    }
    query.addBindValue(row[0]);
    if (!query.exec()) {
        modDatabase::RaiseDriverError(*m_connection, query.lastError());
    }
}

void Recordset::Delete() {
    RequireUpdatable();
    const QVariant key = CurrentRow()[0];
    QSqlQuery query(m_connection->Database());
    query.prepare(m_connection->Translate(QStringLiteral("DELETE FROM ") + m_table +
                                          QStringLiteral(" WHERE ") + Bracketed(m_names[0]) +
                                          QStringLiteral(" = ?")));
    query.addBindValue(key);
    if (!query.exec()) {
        modDatabase::RaiseDriverError(*m_connection, query.lastError());
    }
    m_deleted[m_position] = true;
    m_adding = false;
}

void Recordset::Close() {
    m_connection.reset();
    m_rows.clear();
    m_deleted.clear();
    m_position = 0;
    m_adding = false;
}
