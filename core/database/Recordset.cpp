#include "core/database/Recordset.h"

#include <QRegularExpression>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>
#include <limits>

#include <sqlite3.h>

#include "core/AppError.h"
#include "core/database/SqliteExtensions.h"
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

}  // namespace

namespace {

// The file database is read through SQLite's own interface: the same statement, the same
// values, without a second copy of every row in the database library's buffers. The values are
// those the library would give: integers as 64-bit numbers, texts as QString, NULL as a null text.
QVariant SqliteValue(sqlite3_stmt* statement, int column) {
    switch (sqlite3_column_type(statement, column)) {
        case SQLITE_INTEGER:
            return QVariant(static_cast<qlonglong>(sqlite3_column_int64(statement, column)));
        case SQLITE_FLOAT:
            return QVariant(sqlite3_column_double(statement, column));
        case SQLITE_NULL:
            return QVariant(QMetaType::fromType<QString>());
        case SQLITE_BLOB:
            return QVariant(
                QByteArray(static_cast<const char*>(sqlite3_column_blob(statement, column)),
                           sqlite3_column_bytes(statement, column)));
        default:
            return QVariant(QString::fromUtf8(
                reinterpret_cast<const char*>(sqlite3_column_text(statement, column)),
                sqlite3_column_bytes(statement, column)));
    }
}

[[noreturn]] void RaiseSqliteError(const modDatabase::DbConnection& connection, sqlite3* db,
                                   sqlite3_stmt* statement, const QString& description) {
    const int code = sqlite3_extended_errcode(db);
    sqlite3_finalize(statement);
    modDatabase::RaiseDriverError(
        connection,
        QSqlError(QString(), description, QSqlError::StatementError, QString::number(code)));
}

void ReadSqliteRows(const modDatabase::DbConnection& connection, sqlite3* db, const QString& sql,
                    QStringList& names, std::vector<QVariant>& values, size_t& rowCount) {
    const QByteArray text = sql.toUtf8();
    sqlite3_stmt* statement = nullptr;
    const char* tail = nullptr;
    if (sqlite3_prepare_v2(db, text.constData(), static_cast<int>(text.size()) + 1, &statement,
                           &tail) != SQLITE_OK) {
        RaiseSqliteError(connection, db, statement, QString::fromUtf8(sqlite3_errmsg(db)));
    }
    if (tail && !QByteArray(tail).trimmed().isEmpty()) {
        RaiseSqliteError(connection, db, statement,
                         QStringLiteral("Unable to execute multiple statements at a time"));
    }
    const int columns = statement ? sqlite3_column_count(statement) : 0;
    for (int i = 0; i < columns; ++i) {
        names << QString::fromUtf8(sqlite3_column_name(statement, i));
    }
    int result = SQLITE_DONE;
    while (statement && (result = sqlite3_step(statement)) == SQLITE_ROW) {
        for (int i = 0; i < columns; ++i) {
            values.push_back(SqliteValue(statement, i));
        }
        ++rowCount;
    }
    if (result != SQLITE_DONE) {
        RaiseSqliteError(connection, db, statement, QString::fromUtf8(sqlite3_errmsg(db)));
    }
    sqlite3_finalize(statement);
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
    const QSqlDatabase database = connection->Database();
    if (sqlite3* db = connection->Kind() == modDatabase::FileDatabase
                          ? SqliteExtensions::Handle(database)
                          : nullptr) {
        ReadSqliteRows(*connection, db, connection->Translate(sql), rs.m_names, rs.m_values,
                       rs.m_rowCount);
    } else {
        QSqlQuery query(database);
        query.setForwardOnly(true);
        if (!query.exec(connection->Translate(sql))) {
            modDatabase::RaiseDriverError(*connection, query.lastError());
        }
        const QSqlRecord record = query.record();
        const int columns = record.count();
        for (int i = 0; i < columns; ++i) {
            rs.m_names << record.fieldName(i);
        }
        while (query.next()) {
            for (int i = 0; i < columns; ++i) {
                rs.m_values.push_back(query.value(i));
            }
            ++rs.m_rowCount;
        }
    }
    rs.m_deleted.assign(rs.m_rowCount, false);
    rs.m_changed.fill(false, rs.FieldCount());
    return rs;
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
    QVariant* row = CurrentRow();
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
    QVariant* row = CurrentRow();
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
    m_values.clear();
    m_rowCount = 0;
    m_deleted.clear();
    m_position = 0;
    m_adding = false;
}
