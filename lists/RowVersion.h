#pragma once

#include <QByteArray>
#include <QMetaType>

class Recordset;

// One row as a window read it, kept so that a later read of the same statement can tell whether
// someone else has changed the row since: the values of all its fields, NULL told apart from an
// empty text. A window compares before it writes and asks before it overwrites.
class RowVersion {
public:
    // The version of a row that is not there.
    RowVersion() = default;
    // The current row of a result set; a result set at its end gives a row that is not there.
    explicit RowVersion(const Recordset& rs);

    bool Exists() const { return !m_values.isEmpty(); }
    bool operator==(const RowVersion& other) const { return m_values == other.m_values; }
    bool operator!=(const RowVersion& other) const { return !(*this == other); }

    // The current row of a result set as bytes in which no two different rows are alike (each
    // value NULL or its text with its length).
    static QByteArray Encode(const Recordset& rs);

private:
    QByteArray m_values;
};

Q_DECLARE_METATYPE(RowVersion)
