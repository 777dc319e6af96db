#include "core/database/RowReader.h"

#include "core/AppError.h"
#include "core/database/SqlStatement.h"
#include "core/database/modDatabase.h"

RowReader::RowReader(std::shared_ptr<modDatabase::DbConnection> connection, const QString& sql)
    : m_connection(std::move(connection)) {
    if (!m_connection || m_connection->State() != modDatabase::adStateOpen) {
        ErrorPath::Raise(3709, m_connection && !m_connection->LastError().isEmpty()
                                   ? m_connection->LastError()
                                   : QStringLiteral("The connection is closed."));
    }
    m_statement = std::make_unique<SqlStatement>(*m_connection);
    if (!m_statement->Exec(m_connection->Translate(sql))) {
        modDatabase::RaiseDriverError(*m_connection, m_statement->Failure());
    }
}

RowReader::RowReader(RowReader&&) noexcept = default;
RowReader& RowReader::operator=(RowReader&&) noexcept = default;
RowReader::~RowReader() = default;

int RowReader::Field(const QString& name) const {
    for (int i = 0; i < m_statement->ColumnCount(); ++i) {
        if (m_statement->ColumnName(i).compare(name, Qt::CaseInsensitive) == 0) {
            return i;
        }
    }
    ErrorPath::Raise(3265, QStringLiteral("Item %1 not found in this collection.").arg(name));
}

bool RowReader::Next() {
    if (m_statement->Next()) {
        return true;
    }
    if (!m_statement->Failure().text.isEmpty()) {
        ErrorPath::PassOn("modDatabase:GetRecordset", [&] {
            modDatabase::RaiseDriverError(*m_connection, m_statement->Failure());
        });
    }
    return false;
}

void RowReader::AppendText(int field, QByteArray& to) const {
    int length = 0;
    const char* text = m_statement->Text(field, length);
    if (!text) {
        ErrorPath::Raise(94, QStringLiteral("Invalid use of Null"));
    }
    to.append(text, length);
}

qint64 RowReader::Number(int field) const {
    int length = 0;
    const char* text = m_statement->Text(field, length);
    return text ? QByteArrayView(text, length).toLongLong() : 0;
}
