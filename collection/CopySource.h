#pragma once

#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVector>
#include <memory>

#include "core/database/DatabaseAddress.h"

// Where the rows of a copy come from: a collection in a database, or an Access file of the
// Windows program.
namespace CopySource {

// The source's content cannot be copied (damage, rows no window could show): the message
// tells the user why, naming the table, the key and the field.
struct Refused {
    QString message;
};

// One table's rows, in key order.
class Feed {
public:
    virtual ~Feed() = default;
    // The columns of the rows, as the source spells them.
    virtual QStringList Columns() const = 0;
    // The number of rows the table holds.
    virtual qint64 Total() const = 0;
    // The next row, or false at the end.
    virtual bool Next(QVector<QVariant>& row) = 0;
};

class Source {
public:
    virtual ~Source() = default;
    // Opens the source for reading: empty, or why it cannot be read (for the user).
    virtual QString Open() = 0;
    // The copy begins: all tables are read as they stand at this moment.
    virtual void Begin() = 0;
    // A table's rows, with the columns the target has (`columns`, the key first).
    virtual std::unique_ptr<Feed> Rows(const QString& table, const QStringList& columns) = 0;
    // The copy is committed.
    virtual void End() = 0;
};

// The source at an address: an Access file when the file is one, a collection otherwise.
std::unique_ptr<Source> At(const DatabaseAddress::Address& address);

}  // namespace CopySource
