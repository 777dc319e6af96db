#pragma once

#include <QByteArray>
#include <QString>

// Changes to copies of the test data's Access files, made where libmdb says a value lies: the
// odd rows that a cook's old file may hold but the test files do not.
namespace AccessPatch {

// Where one field of the row with the key lies in the file: the byte offset of its value and,
// for its NULL flag, the offset of the byte and the bit that is set when it is not NULL.
struct Place {
    qint64 value = -1;
    int size = 0;
    qint64 nullByte = -1;
    int nullBit = 0;
};
Place Find(const QString& file, const QString& table, qint64 key, const QString& field);

// Writes bytes into the file at an offset.
void Write(const QString& file, qint64 offset, const QByteArray& bytes);
// Marks the field NULL (false) or not NULL (true).
void SetPresent(const QString& file, const Place& place, bool present);
// Replaces every occurrence of a name (stored as UTF-16) by another of the same length.
int Rename(const QString& file, const QString& from, const QString& to);

// The file's SHA-256, to show that it is unchanged.
QByteArray Checksum(const QString& file);

}  // namespace AccessPatch
