#pragma once

#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVector>
#include <functional>
#include <memory>
#include <vector>

// A collection of the Windows program: a Microsoft Access (Jet 3, Jet 4 or ACE) database file,
// read through mdbtools' libmdb. The file is opened for reading only and never changed.
namespace AccessFile {

// True when the file begins as an Access database does (whatever its name).
bool IsAccessFile(const QString& path);

// One table's rows, with the columns that were asked for, in that order.
struct Table {
    QString name;         // as the file spells it
    QStringList columns;  // as the file spells them
    std::vector<QVector<QVariant>> rows;
};

// Called now and then while a table is read: rows read so far, rows the table says it has.
using Progress = std::function<void(qint64 done, qint64 total)>;

class Database {
public:
    // Opens the file for reading; IsOpen() and Problem() tell the outcome.
    explicit Database(const QString& path);
    ~Database();
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    bool IsOpen() const;
    // Why the file could not be opened, for the user.
    const QString& Problem() const { return m_problem; }
    // The number of rows a table says it has (-1 when there is no such table).
    qint64 RowCount(const QString& table) const;
    // Reads a user table found by name without regard to letter case, with the named columns
    // (also found case-blind; other columns are left out). Values: any number type gives a
    // whole number as a 64-bit integer and a fraction as its exact decimal text ("0.25"); text
    // and memo give their whole text, an empty text as an empty text and NULL as NULL. A missing
    // table or column, a column of another type, or damage raises an error for the user.
    Table Read(const QString& table, const QStringList& columns, const Progress& progress) const;

private:
    struct Handle;
    std::unique_ptr<Handle> m_handle;
    QString m_path;
    QString m_problem;
};

// The source of the errors that reading raises.
QString ErrorSource();

// The number types of Access, and the value that a field of the type with these bytes is read
// as (see Database::Read); NULL when the bytes hold no number.
enum class NumberType { Byte, Integer, Long, Single, Double, Currency, Numeric };
QVariant NumberFromBytes(NumberType type, const QByteArray& bytes, int scale = 0,
                         int precision = 0);

}  // namespace AccessFile
