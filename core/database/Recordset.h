#pragma once

#include <QHash>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVariantList>
#include <QVector>
#include <memory>
#include <vector>

namespace modDatabase {
class DbConnection;
}
class SqlStatement;

// The complete result of one SELECT, read into memory when the query runs. Rows do not change
// when other statements change the tables. A result over all columns of one table
// ("SELECT * FROM [Table] ...") is also updatable: add a row, change fields of the current row,
// write it with Update (after an insert the key field holds the new key), delete the current
// row. The key is the table's first column.
class Recordset {
public:
    Recordset() = default;

    // True when the current position is past the last row (at once for an empty result).
    bool Eof() const;
    void MoveNext();
    int RecordCount() const;
    int FieldCount() const { return static_cast<int>(m_names.size()); }
    QString FieldName(int index) const { return m_names.value(index); }

    // The value of a field of the current row, looked up by name without regard to case.
    QVariant Fields(const QString& name) const;
    QVariant Fields(int index) const;
    // Field as text or number; a NULL is an error ("Invalid use of Null").
    QString Text(const QString& name) const;
    qint32 Long(const QString& name) const;

    // Puts the rows in the order in which `order` lists them, and goes back to the first row.
    // A row takes the place of the first row of `order` not yet taken whose fields named in
    // `fields` hold the same values; rows that `order` does not list follow in their own order.
    void Arrange(const Recordset& order, const QStringList& fields);

    void SetField(const QString& name, const QVariant& value);
    void AddNew();
    void Update();
    void Delete();
    void Close();

private:
    friend Recordset GetRecordsetFor(const std::shared_ptr<modDatabase::DbConnection>&,
                                     const QString&);
    int FieldIndex(const QString& name) const;
    // The fields of the current row (FieldCount() values).
    QVariant* CurrentRow();
    const QVariant* CurrentRow() const;
    void Insert();
    void WriteChanges();
    void RequireUpdatable() const;
    // Runs a statement of the program's SQL with its values on the result set's connection.
    SqlStatement Run(const QString& sql, const QVariantList& values);

    std::shared_ptr<modDatabase::DbConnection> m_connection;
    QString m_table;  // bracketed, empty when the result is not updatable
    QStringList m_names;
    // The rows one after the other, FieldCount() values each.
    std::vector<QVariant> m_values;
    size_t m_rowCount = 0;
    std::vector<bool> m_deleted;
    // The last names looked up and their fields (callers read the same few names row by row).
    mutable QString m_lookedUp[4];
    mutable int m_lookedUpIndex[4] = {};
    QVector<bool> m_changed;
    bool m_adding = false;
    size_t m_position = 0;
};

// Runs a SELECT on a connection into a new result set; errors carry the driver's name as source.
Recordset GetRecordsetFor(const std::shared_ptr<modDatabase::DbConnection>& connection,
                          const QString& sql);
