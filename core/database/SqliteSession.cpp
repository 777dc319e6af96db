#include "core/database/SqliteSession.h"

#include <sqlite3.h>

#include <QStringList>
#include <cstdlib>
#include <vector>

namespace {

// How long a statement waits for another process's lock on the file before it fails.
constexpr int BusyMilliseconds = 5000;

SqlFailure FailureOf(sqlite3* db) {
    return {sqlite3_extended_errcode(db), QString::fromUtf8(sqlite3_errmsg(db))};
}

// Integers as 64-bit numbers, texts as QString, NULL as a null text.
QVariant ValueOf(sqlite3_stmt* statement, int column) {
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

int Bind(sqlite3_stmt* statement, int index, const QVariant& value) {
    if (value.isNull()) {
        return sqlite3_bind_null(statement, index);
    }
    switch (value.typeId()) {
        case QMetaType::Bool:
        case QMetaType::Int:
        case QMetaType::UInt:
        case QMetaType::Short:
        case QMetaType::UShort:
        case QMetaType::Long:
        case QMetaType::LongLong:
            return sqlite3_bind_int64(statement, index, value.toLongLong());
        case QMetaType::Double:
        case QMetaType::Float:
            return sqlite3_bind_double(statement, index, value.toDouble());
        case QMetaType::QByteArray: {
            const QByteArray bytes = value.toByteArray();
            return sqlite3_bind_blob64(statement, index, bytes.constData(), bytes.size(),
                                       SQLITE_TRANSIENT);
        }
        default: {
            const QByteArray text = value.toString().toUtf8();
            return sqlite3_bind_text64(statement, index, text.constData(), text.size(),
                                       SQLITE_TRANSIENT, SQLITE_UTF8);
        }
    }
}

class SqliteCursor : public SqlCursor {
public:
    SqliteCursor(std::shared_ptr<SqlSession> session, sqlite3* db)
        : m_session(std::move(session)), m_db(db) {}
    ~SqliteCursor() override { sqlite3_finalize(m_statement); }

    bool Prepare(const QByteArray& sql, SqlFailure& failure) override {
        sqlite3_finalize(m_statement);
        m_statement = nullptr;
        const char* tail = nullptr;
        // With its terminating zero the text is not copied.
        if (sqlite3_prepare_v2(m_db, sql.constData(), static_cast<int>(sql.size()) + 1,
                               &m_statement, &tail) != SQLITE_OK) {
            failure = FailureOf(m_db);
            return false;
        }
        if (HoldsAnotherStatement(tail, sql.constData() + sql.size())) {
            sqlite3_finalize(m_statement);
            m_statement = nullptr;
            failure = {SQLITE_MISUSE,
                       QStringLiteral("Besedilo SQL vsebuje več kot en stavek; ni bilo izvedeno.")};
            return false;
        }
        ReadMarkers();
        m_names.clear();
        for (int i = 0; m_statement && i < sqlite3_column_count(m_statement); ++i) {
            m_names << QString::fromUtf8(sqlite3_column_name(m_statement, i));
        }
        return true;
    }

    bool Run(const QVariantList& values, SqlFailure& failure) override {
        m_row = false;
        m_pending = false;
        if (!m_statement) {
            return true;  // a text of blanks and comments runs as nothing
        }
        sqlite3_reset(m_statement);
        sqlite3_clear_bindings(m_statement);
        for (int i = 0; i < values.size(); ++i) {
            if (Bind(m_statement, MarkerIndex(i + 1), values[i]) != SQLITE_OK) {
                failure = FailureOf(m_db);
                return false;
            }
        }
        // The first step runs the statement, so that a failure shows here.
        return Step(failure) && (m_pending = m_row, true);
    }

    bool Next(SqlFailure& failure) override {
        if (m_pending) {
            m_pending = false;
            return true;
        }
        return m_row && Step(failure) && m_row;
    }

    QVariant Value(int column) const override {
        return m_row && column >= 0 && column < m_names.size() ? ValueOf(m_statement, column)
                                                               : QVariant();
    }
    const char* Text(int column, int& length) const override {
        length = 0;
        if (!m_row || column < 0 || column >= m_names.size() ||
            sqlite3_column_type(m_statement, column) == SQLITE_NULL) {
            return nullptr;
        }
        const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(m_statement, column));
        length = sqlite3_column_bytes(m_statement, column);
        return text;
    }
    int ColumnCount() const override { return static_cast<int>(m_names.size()); }
    QString ColumnName(int column) const override { return m_names.value(column); }

private:
    // What SQLite left unread after the first statement: another statement, or only blanks
    // and comments (which SQLite itself prepares as nothing).
    bool HoldsAnotherStatement(const char* tail, const char* end) const {
        while (tail && tail < end) {
            sqlite3_stmt* next = nullptr;
            const char* rest = nullptr;
            if (sqlite3_prepare_v2(m_db, tail, static_cast<int>(end - tail), &next, &rest) !=
                    SQLITE_OK ||
                next) {
                sqlite3_finalize(next);
                return true;
            }
            if (rest == tail) {
                return false;
            }
            tail = rest;
        }
        return false;
    }

    // The place of the value $number: SQLite numbers markers in the order they first appear.
    int MarkerIndex(int number) const {
        return number <= static_cast<int>(m_markers.size()) && m_markers[number - 1] > 0
                   ? m_markers[number - 1]
                   : number;
    }

    void ReadMarkers() {
        m_markers.clear();
        const int count = m_statement ? sqlite3_bind_parameter_count(m_statement) : 0;
        m_markers.assign(count, 0);
        for (int index = 1; index <= count; ++index) {
            const char* name = sqlite3_bind_parameter_name(m_statement, index);
            const int number = name && name[0] == '$' ? std::atoi(name + 1) : 0;
            if (number >= 1 && number <= count) {
                m_markers[number - 1] = index;
            }
        }
    }

    bool Step(SqlFailure& failure) {
        const int result = sqlite3_step(m_statement);
        m_row = result == SQLITE_ROW;
        if (result != SQLITE_ROW && result != SQLITE_DONE) {
            failure = FailureOf(m_db);
            sqlite3_reset(m_statement);
            return false;
        }
        return true;
    }

    std::shared_ptr<SqlSession> m_session;
    sqlite3* m_db;
    sqlite3_stmt* m_statement = nullptr;
    QStringList m_names;
    std::vector<int> m_markers;  // the place of $1, $2, ... (0 for none)
    bool m_row = false;          // the statement stands on a row
    bool m_pending = false;      // that row has not been handed out yet
};

}  // namespace

std::shared_ptr<SqliteSession> SqliteSession::Open(const QString& uri, SqlFailure& failure) {
    sqlite3* db = nullptr;
    // One connection is used by one thread at a time: no lock around every call.
    const int flags =
        SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_URI | SQLITE_OPEN_NOMUTEX;
    if (sqlite3_open_v2(uri.toUtf8().constData(), &db, flags, nullptr) != SQLITE_OK) {
        failure = db ? FailureOf(db) : SqlFailure{SQLITE_NOMEM, QStringLiteral("out of memory")};
        sqlite3_close_v2(db);
        return nullptr;
    }
    sqlite3_extended_result_codes(db, 1);
    sqlite3_busy_timeout(db, BusyMilliseconds);
    return std::shared_ptr<SqliteSession>(new SqliteSession(db));
}

SqliteSession::~SqliteSession() { sqlite3_close_v2(m_db); }

bool SqliteSession::InTransaction() const { return m_db && !sqlite3_get_autocommit(m_db); }

std::unique_ptr<SqlCursor> SqliteSession::NewCursor(bool) {
    return std::make_unique<SqliteCursor>(shared_from_this(), m_db);
}
