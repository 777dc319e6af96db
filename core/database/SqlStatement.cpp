#include "core/database/SqlStatement.h"

#include "core/database/modDatabase.h"

namespace {

SqlFailure Closed() { return {0, QStringLiteral("Povezava z zbirko podatkov je zaprta.")}; }

}  // namespace

SqlStatement::SqlStatement(modDatabase::DbConnection& connection, Rows rows) {
    if (SqlSession* session = connection.Session()) {
        m_cursor = session->NewCursor(rows == Streamed);
    }
}

SqlStatement::SqlStatement(SqlStatement&&) noexcept = default;
SqlStatement& SqlStatement::operator=(SqlStatement&&) noexcept = default;
SqlStatement::~SqlStatement() = default;

bool SqlStatement::Prepare(const QString& sql) {
    m_failure = {};
    m_prepared = false;
    if (!m_cursor) {
        m_failure = Closed();
        return false;
    }
    m_prepared = m_cursor->Prepare(sql.toUtf8(), m_failure);
    return m_prepared;
}

bool SqlStatement::Run(const QVariantList& values) {
    if (!m_prepared) {
        if (m_failure.text.isEmpty()) {
            m_failure = Closed();
        }
        return false;
    }
    m_failure = {};
    return m_cursor->Run(values, m_failure);
}

bool SqlStatement::Exec(const QString& sql, const QVariantList& values) {
    return Prepare(sql) && Run(values);
}

bool SqlStatement::Next() { return m_prepared && m_cursor->Next(m_failure); }

QVariant SqlStatement::Value(int column) const {
    return m_prepared ? m_cursor->Value(column) : QVariant();
}

const char* SqlStatement::Text(int column, int& length) const {
    length = 0;
    return m_prepared ? m_cursor->Text(column, length) : nullptr;
}

int SqlStatement::ColumnCount() const { return m_prepared ? m_cursor->ColumnCount() : 0; }

QString SqlStatement::ColumnName(int column) const {
    return m_prepared ? m_cursor->ColumnName(column) : QString();
}
