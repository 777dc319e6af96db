#include "core/database/PostgresSession.h"

#include <libpq-fe.h>

#include <QStringList>
#include <QVector>
#include <vector>

namespace {

// Type numbers of the server's catalogue (pg_type) for the values read as numbers.
constexpr Oid BoolType = 16;
constexpr Oid Int8Type = 20;
constexpr Oid Int2Type = 21;
constexpr Oid Int4Type = 23;
constexpr Oid Float4Type = 700;
constexpr Oid Float8Type = 701;

QString Trimmed(const char* message) { return QString::fromUtf8(message).trimmed(); }

SqlFailure FailureOf(pg_conn* connection, const PGresult* result) {
    const char* message = result ? PQresultErrorMessage(result) : "";
    const char* state = result ? PQresultErrorField(result, PG_DIAG_SQLSTATE) : nullptr;
    return {state ? QByteArray(state).toLongLong() : 0,
            *message ? Trimmed(message) : Trimmed(PQerrorMessage(connection))};
}

// Integers and floating point as numbers, truth values as bool, everything else (numeric too,
// digit for digit) as text; NULL as a null of the column's kind.
QVariant ValueOf(Oid type, const char* text, int length, bool null) {
    switch (type) {
        case BoolType:
            return null ? QVariant(QMetaType::fromType<bool>()) : QVariant(text[0] == 't');
        case Int2Type:
        case Int4Type:
            return null ? QVariant(QMetaType::fromType<int>()) : QVariant(atoi(text));
        case Int8Type:
            return null ? QVariant(QMetaType::fromType<qlonglong>())
                        : QVariant(static_cast<qlonglong>(strtoll(text, nullptr, 10)));
        case Float4Type:
        case Float8Type:
            return null ? QVariant(QMetaType::fromType<double>())
                        : QVariant(QByteArray(text, length).toDouble());
        default:
            return null ? QVariant(QMetaType::fromType<QString>())
                        : QVariant(QString::fromUtf8(text, length));
    }
}

// Values go as text; the server gives each the type its place in the statement asks for.
QByteArray TextOf(const QVariant& value) {
    switch (value.typeId()) {
        case QMetaType::Bool:
            return value.toBool() ? QByteArrayLiteral("true") : QByteArrayLiteral("false");
        case QMetaType::Double:
        case QMetaType::Float:
            return QByteArray::number(value.toDouble(), 'g', 17);
        case QMetaType::QByteArray:
            return value.toByteArray();
        default:
            return value.toString().toUtf8();
    }
}

}  // namespace

class PostgresCursor : public SqlCursor {
public:
    PostgresCursor(std::shared_ptr<PostgresSession> session, bool streamed)
        : m_session(std::move(session)), m_streamed(streamed) {}
    ~PostgresCursor() override {
        if (m_session->m_streaming == this) {
            m_session->Settle();
        }
        PQclear(m_result);
    }

    bool Prepare(const QByteArray& sql, SqlFailure&) override {
        m_sql = sql;
        m_parsedAs = 0;
        return true;
    }

    bool Run(const QVariantList& values, SqlFailure& failure) override {
        m_session->Settle();
        Clear();
        std::vector<QByteArray> texts;
        std::vector<const char*> pointers;
        for (const QVariant& value : values) {
            texts.push_back(value.isNull() ? QByteArray() : TextOf(value));
            pointers.push_back(value.isNull() ? nullptr : texts.back().constData());
        }
        const int count = static_cast<int>(values.size());
        return m_streamed ? Stream(count, pointers.data(), failure)
                          : Take(Execute(count, pointers.data()), failure);
    }

    bool Next(SqlFailure& failure) override {
        if (!m_streamed) {
            return m_result && ++m_row < PQntuples(m_result);
        }
        if (m_pending) {
            m_pending = false;
            return true;
        }
        if (m_session->m_streaming != this) {
            return false;
        }
        return NextStreamed(failure);
    }

    QVariant Value(int column) const override {
        if (!m_result || column < 0 || column >= m_types.size() || m_row < 0 ||
            m_row >= PQntuples(m_result)) {
            return QVariant();
        }
        return ValueOf(m_types[column], PQgetvalue(m_result, m_row, column),
                       PQgetlength(m_result, m_row, column),
                       PQgetisnull(m_result, m_row, column) != 0);
    }
    const char* Text(int column, int& length) const override {
        length = 0;
        if (!m_result || column < 0 || column >= m_types.size() || m_row < 0 ||
            m_row >= PQntuples(m_result) || PQgetisnull(m_result, m_row, column)) {
            return nullptr;
        }
        length = PQgetlength(m_result, m_row, column);
        return PQgetvalue(m_result, m_row, column);
    }
    int ColumnCount() const override { return static_cast<int>(m_names.size()); }
    QString ColumnName(int column) const override { return m_names.value(column); }

    // Reads the rest of the rows on their way and drops them.
    void Drain() {
        while (PGresult* result = PQgetResult(m_session->m_connection)) {
            PQclear(result);
        }
        m_session->m_streaming = nullptr;
    }

private:
    // The statement parsed once runs again without being parsed anew, as long as no other
    // statement took the unnamed place meanwhile.
    PGresult* Execute(int count, const char* const* values) {
        pg_conn* connection = m_session->m_connection;
        if (m_parsedAs != 0 && m_parsedAs == m_session->m_parses) {
            return PQexecPrepared(connection, "", count, values, nullptr, nullptr, 0);
        }
        m_parsedAs = ++m_session->m_parses;
        return PQexecParams(connection, m_sql.constData(), count, nullptr, values, nullptr, nullptr,
                            0);
    }

    bool Stream(int count, const char* const* values, SqlFailure& failure) {
        pg_conn* connection = m_session->m_connection;
        m_parsedAs = ++m_session->m_parses;
        if (!PQsendQueryParams(connection, m_sql.constData(), count, nullptr, values, nullptr,
                               nullptr, 0)) {
            failure = FailureOf(connection, nullptr);
            return false;
        }
        PQsetSingleRowMode(connection);
        m_session->m_streaming = this;
        if (!NextStreamed(failure)) {
            return failure.text.isEmpty();
        }
        m_pending = true;
        return true;
    }

    bool NextStreamed(SqlFailure& failure) {
        PQclear(m_result);
        m_result = PQgetResult(m_session->m_connection);
        if (m_result && PQresultStatus(m_result) == PGRES_SINGLE_TUPLE) {
            Describe();
            m_row = 0;
            return true;
        }
        const bool failed = !Ok(m_result);
        if (failed) {
            failure = FailureOf(m_session->m_connection, m_result);
            m_parsedAs = 0;
        } else {
            Describe();
        }
        PQclear(m_result);
        m_result = nullptr;
        Drain();
        return false;
    }

    bool Take(PGresult* result, SqlFailure& failure) {
        m_result = result;
        if (!Ok(m_result)) {
            failure = FailureOf(m_session->m_connection, m_result);
            m_parsedAs = 0;
            Clear();
            return false;
        }
        Describe();
        return true;
    }

    static bool Ok(const PGresult* result) {
        const ExecStatusType status = result ? PQresultStatus(result) : PGRES_FATAL_ERROR;
        return status == PGRES_TUPLES_OK || status == PGRES_COMMAND_OK ||
               status == PGRES_SINGLE_TUPLE;
    }

    void Describe() {
        if (!m_names.isEmpty() || !m_result) {
            return;
        }
        for (int i = 0; i < PQnfields(m_result); ++i) {
            m_names << QString::fromUtf8(PQfname(m_result, i));
            m_types << PQftype(m_result, i);
        }
    }

    void Clear() {
        PQclear(m_result);
        m_result = nullptr;
        m_row = -1;
        m_pending = false;
        m_names.clear();
        m_types.clear();
    }

    std::shared_ptr<PostgresSession> m_session;
    bool m_streamed;
    QByteArray m_sql;
    quint64 m_parsedAs = 0;
    PGresult* m_result = nullptr;
    int m_row = -1;
    bool m_pending = false;  // a streamed row read by Run, not yet handed out
    QStringList m_names;
    QVector<Oid> m_types;
};

std::shared_ptr<PostgresSession> PostgresSession::Open(
    const QList<QPair<QString, QString>>& keywords, SqlFailure& failure, bool& needsPassword) {
    std::vector<QByteArray> texts;
    std::vector<const char*> names;
    std::vector<const char*> values;
    for (const auto& [keyword, value] : keywords) {
        texts.push_back(keyword.toUtf8());
        texts.push_back(value.toUtf8());
    }
    for (size_t i = 0; i < texts.size(); i += 2) {
        names.push_back(texts[i].constData());
        values.push_back(texts[i + 1].constData());
    }
    names.push_back(nullptr);
    values.push_back(nullptr);
    pg_conn* connection = PQconnectdbParams(names.data(), values.data(), 0);
    if (!connection || PQstatus(connection) != CONNECTION_OK) {
        failure = {
            0, connection ? Trimmed(PQerrorMessage(connection)) : QStringLiteral("out of memory")};
        needsPassword = connection && PQconnectionNeedsPassword(connection);
        PQfinish(connection);
        return nullptr;
    }
    // The server's notices are not the program's output.
    PQsetNoticeProcessor(
        connection, [](void*, const char*) {}, nullptr);
    return std::shared_ptr<PostgresSession>(new PostgresSession(connection));
}

PostgresSession::~PostgresSession() { PQfinish(m_connection); }

bool PostgresSession::IsOpen() const { return PQstatus(m_connection) == CONNECTION_OK; }

bool PostgresSession::InTransaction() const {
    const PGTransactionStatusType status = PQtransactionStatus(m_connection);
    return status == PQTRANS_INTRANS || status == PQTRANS_INERROR;
}

std::unique_ptr<SqlCursor> PostgresSession::NewCursor(bool streamed) {
    return std::make_unique<PostgresCursor>(
        std::static_pointer_cast<PostgresSession>(shared_from_this()), streamed);
}

QString PostgresSession::Reported(const char* setting) const {
    return QString::fromUtf8(PQparameterStatus(m_connection, setting));
}

void PostgresSession::Settle() {
    if (m_streaming) {
        m_streaming->Drain();
    }
}
