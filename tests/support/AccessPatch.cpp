#include "tests/support/AccessPatch.h"

#include <mdbtools.h>

#include <QCryptographicHash>
#include <QFile>
#include <vector>

namespace AccessPatch {

Place Find(const QString& file, const QString& table, qint64 key, const QString& field) {
    Place place;
    MdbHandle* mdb = mdb_open(QFile::encodeName(file).constData(), MDB_NOFLAGS);
    if (!mdb) {
        return place;
    }
    mdb_read_catalog(mdb, MDB_TABLE);
    MdbTableDef* t = mdb_read_table_by_name(mdb, table.toUtf8().data(), MDB_TABLE);
    if (t && mdb_read_columns(t)) {
        const int keyColumn = 0;
        int fieldColumn = -1;
        for (guint i = 0; i < t->num_cols; ++i) {
            auto* column = static_cast<MdbColumn*>(g_ptr_array_index(t->columns, i));
            if (QString::fromUtf8(column->name).compare(field, Qt::CaseInsensitive) == 0) {
                fieldColumn = int(i);
            }
        }
        std::vector<MdbField> fields(t->num_cols);
        mdb_rewind_table(t);
        while (fieldColumn >= 0 && mdb_fetch_row(t)) {
            int start = 0;
            size_t size = 0;
            mdb_find_row(mdb, int(t->cur_row) - 1, &start, &size);
            start &= 0x1fff;
            mdb_crack_row(t, start, size, fields.data());
            if (mdb_get_int32(mdb->pg_buf, fields[keyColumn].start) != key) {
                continue;
            }
            const qint64 page = qint64(t->cur_phys_pg) * mdb->fmt->pg_size;
            auto* column = static_cast<MdbColumn*>(g_ptr_array_index(t->columns, fieldColumn));
            const int rowColumns = mdb_get_int16(mdb->pg_buf, start);
            const qint64 rowEnd = start + qint64(size) - 1;
            place.value = page + fields[fieldColumn].start;
            place.size = fields[fieldColumn].siz;
            place.nullByte = page + rowEnd - (rowColumns + 7) / 8 + 1 + column->col_num / 8;
            place.nullBit = column->col_num % 8;
            break;
        }
    }
    if (t) {
        mdb_free_tabledef(t);
    }
    mdb_close(mdb);
    return place;
}

void Write(const QString& file, qint64 offset, const QByteArray& bytes) {
    QFile out(file);
    if (out.open(QIODevice::ReadWrite) && out.seek(offset)) {
        out.write(bytes);
    }
}

void SetPresent(const QString& file, const Place& place, bool present) {
    QFile data(file);
    if (!data.open(QIODevice::ReadWrite) || !data.seek(place.nullByte)) {
        return;
    }
    char byte = 0;
    data.getChar(&byte);
    byte = present ? char(byte | (1 << place.nullBit)) : char(byte & ~(1 << place.nullBit));
    data.seek(place.nullByte);
    data.putChar(byte);
}

int Rename(const QString& file, const QString& from, const QString& to) {
    QFile data(file);
    if (!data.open(QIODevice::ReadOnly)) {
        return 0;
    }
    QByteArray bytes = data.readAll();
    data.close();
    const auto utf16 = [](const QString& text) {
        return QByteArray(reinterpret_cast<const char*>(text.utf16()), text.size() * 2);
    };
    const QByteArray old = utf16(from);
    const QByteArray replacement = utf16(to);
    int count = 0;
    for (qsizetype at = bytes.indexOf(old); at >= 0; at = bytes.indexOf(old, at + 1)) {
        bytes.replace(at, old.size(), replacement);
        ++count;
    }
    if (data.open(QIODevice::WriteOnly)) {
        data.write(bytes);
    }
    return count;
}

QByteArray Checksum(const QString& file) {
    QFile data(file);
    QCryptographicHash hash(QCryptographicHash::Sha256);
    if (data.open(QIODevice::ReadOnly)) {
        hash.addData(&data);
    }
    return hash.result().toHex();
}

}  // namespace AccessPatch
