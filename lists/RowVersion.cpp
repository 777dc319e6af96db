#include "lists/RowVersion.h"

#include <QVariant>

#include "core/database/Recordset.h"

RowVersion::RowVersion(const Recordset& rs) {
    if (!rs.Eof()) {
        m_values = Encode(rs);
    }
}

QByteArray RowVersion::Encode(const Recordset& rs) {
    QByteArray bytes("R");
    for (int i = 0; i < rs.FieldCount(); ++i) {
        const QVariant value = rs.Fields(i);
        if (value.isNull()) {
            bytes += 'N';
        } else {
            const QByteArray text = value.toString().toUtf8();
            bytes += 'T' + QByteArray::number(text.size()) + ':' + text;
        }
    }
    return bytes;
}
