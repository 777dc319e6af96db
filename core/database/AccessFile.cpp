#include "core/database/AccessFile.h"

#include <fcntl.h>
#include <iconv.h>
#include <mdbtools.h>
#include <unistd.h>

#include <QFile>
#include <QFileInfo>
#include <charconv>

#include "core/Amount.h"
#include "core/AppError.h"

namespace AccessFile {
namespace {

constexpr int RowOffsetMask = 0x1fff;
constexpr guint32 MemoLengthMask = 0x3fffffff;

// libmdb reports what it finds wrong in a file on the standard error output, in English, as it
// goes; the reader says it to the user once, in a sentence of its own. While libmdb reads, its
// output goes nowhere.
class LibraryQuiet {
public:
    LibraryQuiet() : m_saved(::dup(STDERR_FILENO)) {
        const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
        if (m_saved >= 0 && nowhere >= 0) {
            ::fflush(stderr);
            ::dup2(nowhere, STDERR_FILENO);
        }
        if (nowhere >= 0) {
            ::close(nowhere);
        }
    }
    ~LibraryQuiet() {
        if (m_saved >= 0) {
            ::fflush(stderr);
            ::dup2(m_saved, STDERR_FILENO);
            ::close(m_saved);
        }
    }
    LibraryQuiet(const LibraryQuiet&) = delete;
    LibraryQuiet& operator=(const LibraryQuiet&) = delete;

private:
    int m_saved;
};

[[noreturn]] void Fail(const QString& description) {
    throw AppError(AppError::PassedOn, ErrorSource(), description);
}

QString Damaged(const QString& file, const QString& what) {
    return QStringLiteral("Datoteka %1 je poškodovana: %2").arg(file, what);
}

// Texts arrive as UTF-8: Jet 4 and later store them as UTF-16 (libmdb expands its compressed
// form); Jet 3 stores them in the Windows code page of the machine that wrote them, for the
// Slovenian cooks of the Windows program windows-1250.
void ReadTextsAsUtf8(MdbHandle* mdb) {
    const char* stored = mdb->f->jet_version == MDB_VER_JET3 ? "CP1250" : "UTF-16LE";
    const iconv_t decoder = iconv_open("UTF-8", stored);
    if (decoder == reinterpret_cast<iconv_t>(-1)) {
        return;
    }
    if (mdb->iconv_in != reinterpret_cast<iconv_t>(-1)) {
        iconv_close(mdb->iconv_in);
    }
    mdb->iconv_in = decoder;
}

QString Decoded(MdbHandle* mdb, const char* bytes, size_t size) {
    if (size == 0) {
        return QString(QLatin1String(""));
    }
    QByteArray text(static_cast<qsizetype>(size) * 4 + 16, Qt::Uninitialized);
    const int length = mdb_unicode2ascii(mdb, bytes, size, text.data(), text.size());
    return QString::fromUtf8(text.constData(), std::max(0, length));
}

template <class Number>
QString ShortestDecimal(Number number) {
    char text[400];
    const auto result = std::to_chars(text, text + sizeof text, number, std::chars_format::fixed);
    return result.ec == std::errc() ? QString::fromLatin1(text, result.ptr - text) : QString();
}

QString TakeText(char* text) {
    const QString result = QString::fromUtf8(text ? text : "");
    g_free(text);
    return result;
}

// The value of a number field whose bytes begin at `start` of the page buffer: a whole number
// as an integer, a fraction as its exact decimal text; NULL when the bytes hold no number.
QVariant NumberAt(MdbHandle* mdb, int type, int start, int scale, int precision) {
    QString text;
    switch (type) {
        case MDB_BYTE:
            return qlonglong(mdb_get_byte(mdb->pg_buf, start));
        case MDB_INT:
            return qlonglong(static_cast<qint16>(mdb_get_int16(mdb->pg_buf, start)));
        case MDB_LONGINT:
            return qlonglong(static_cast<qint32>(mdb_get_int32(mdb->pg_buf, start)));
        case MDB_FLOAT:
            text = ShortestDecimal(mdb_get_single(mdb->pg_buf, start));
            break;
        case MDB_DOUBLE:
            text = ShortestDecimal(mdb_get_double(mdb->pg_buf, start));
            break;
        case MDB_MONEY:
            text = TakeText(mdb_money_to_string(mdb, start));
            break;
        case MDB_NUMERIC:
            // The library's definition takes the precision before the scale (its header names
            // them the other way round).
            text = TakeText(mdb_numeric_to_string(mdb, start, precision, scale));
            break;
        default:
            return QVariant();
    }
    const QString decimal = Amount::Canonical(text);
    return decimal.isEmpty() ? QVariant() : Amount::Stored(decimal);
}

struct TableDeleter {
    void operator()(MdbTableDef* table) const { mdb_free_tabledef(table); }
};
using TablePtr = std::unique_ptr<MdbTableDef, TableDeleter>;

bool SupportedType(int type) {
    switch (type) {
        case MDB_BYTE:
        case MDB_INT:
        case MDB_LONGINT:
        case MDB_MONEY:
        case MDB_FLOAT:
        case MDB_DOUBLE:
        case MDB_NUMERIC:
        case MDB_TEXT:
        case MDB_MEMO:
            return true;
        default:
            return false;
    }
}

// Where a value stands, for the message about it.
struct Where {
    const QString& table;
    const QString& column;
    const QVariant& key;  // NULL while the key itself is read
    QString Text() const {
        return QStringLiteral("polja %1 v tabeli %2 (ključ %3) ni mogoče prebrati.")
            .arg(column, table, key.isNull() ? QStringLiteral("?") : key.toString());
    }
};

// Reads the fields of one table's rows.
class RowReader {
public:
    RowReader(MdbHandle* mdb, MdbTableDef* table, QString file)
        : m_mdb(mdb), m_table(table), m_file(std::move(file)), m_fields(table->num_cols) {}

    // Cracks the row just fetched again, for its NULL flags: the bound values of libmdb give an
    // empty text for NULL too.
    void Crack() {
        int start = 0;
        size_t size = 0;
        if (mdb_find_row(m_mdb, static_cast<int>(m_table->cur_row) - 1, &start, &size) != 0 ||
            mdb_crack_row(m_table, start & RowOffsetMask, size, m_fields.data()) < 0) {
            Fail(Damaged(m_file, QStringLiteral("vrstice tabele %1 ni mogoče prebrati.")
                                     .arg(QString::fromUtf8(m_table->name))));
        }
    }

    QVariant Value(int index, const Where& where) {
        const MdbField& field = m_fields[index];
        if (field.is_null) {
            return QVariant();
        }
        auto* column = static_cast<MdbColumn*>(g_ptr_array_index(m_table->columns, index));
        const int start = field.start;
        const int size = field.siz;
        if (start < 0 || size < 0 || start + size > m_mdb->fmt->pg_size) {
            Fail(Damaged(m_file, where.Text()));
        }
        switch (column->col_type) {
            case MDB_TEXT:
                return Decoded(m_mdb, reinterpret_cast<const char*>(m_mdb->pg_buf) + start,
                               size_t(size));
            case MDB_MEMO:
                return Memo(column, start, size, where);
            default: {
                const QVariant number =
                    NumberAt(m_mdb, column->col_type, start, column->col_scale, column->col_prec);
                if (number.isNull()) {
                    Fail(Damaged(m_file, where.Text()));
                }
                return number;
            }
        }
    }

private:
    // A memo's bytes, read whole however many pages they take, then decoded.
    QString Memo(MdbColumn* column, int start, int size, const Where& where) {
        if (size == 0) {
            return QString(QLatin1String(""));
        }
        if (size < MDB_MEMO_OVERHEAD) {
            Fail(Damaged(m_file, where.Text()));
        }
        char header[MDB_MEMO_OVERHEAD];
        memcpy(header, m_mdb->pg_buf + start, MDB_MEMO_OVERHEAD);
        const guint32 length = guint32(mdb_get_int32(header, 0)) & MemoLengthMask;
        QByteArray bytes;
        QByteArray chunk(2 * MDB_PGSIZE, Qt::Uninitialized);
        column->bind_ptr = chunk.data();
        size_t read = mdb_ole_read(m_mdb, column, header, size_t(chunk.size()));
        while (read > 0 && bytes.size() + qsizetype(read) <= qsizetype(length)) {
            bytes.append(chunk.constData(), qsizetype(read));
            read = mdb_ole_read_next(m_mdb, column, header);
        }
        column->bind_ptr = nullptr;
        if (read > 0 || bytes.size() != qsizetype(length)) {
            Fail(Damaged(m_file, where.Text()));
        }
        return Decoded(m_mdb, bytes.constData(), size_t(bytes.size()));
    }

    MdbHandle* m_mdb;
    MdbTableDef* m_table;
    QString m_file;
    std::vector<MdbField> m_fields;
};

}  // namespace

struct Database::Handle {
    MdbHandle* mdb = nullptr;
    ~Handle() {
        if (mdb) {
            mdb_close(mdb);
        }
    }
    MdbCatalogEntry* Find(const QString& name) const {
        for (guint i = 0; mdb->catalog && i < mdb->catalog->len; ++i) {
            auto* entry = static_cast<MdbCatalogEntry*>(g_ptr_array_index(mdb->catalog, i));
            if (entry->object_type == MDB_TABLE && mdb_is_user_table(entry) &&
                QString::fromUtf8(entry->object_name).compare(name, Qt::CaseInsensitive) == 0) {
                return entry;
            }
        }
        return nullptr;
    }
};

QString ErrorSource() { return QStringLiteral("libmdb"); }

QVariant NumberFromBytes(NumberType type, const QByteArray& bytes, int scale, int precision) {
    auto mdb = std::make_unique<MdbHandle>();
    memcpy(mdb->pg_buf, bytes.constData(), std::min<size_t>(bytes.size(), sizeof mdb->pg_buf));
    static const int types[] = {MDB_BYTE,   MDB_INT,   MDB_LONGINT, MDB_FLOAT,
                                MDB_DOUBLE, MDB_MONEY, MDB_NUMERIC};
    return NumberAt(mdb.get(), types[int(type)], 0, scale, precision);
}

bool IsAccessFile(const QString& path) {
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly)) {
        return false;
    }
    const QByteArray head = file.read(20);
    return head.startsWith(QByteArray("\x00\x01\x00\x00", 4)) &&
           (head.mid(4) == QByteArray("Standard Jet DB\0", 16) ||
            head.mid(4) == QByteArray("Standard ACE DB\0", 16));
}

Database::Database(const QString& path) : m_handle(std::make_unique<Handle>()), m_path(path) {
    if (!IsAccessFile(path)) {
        m_problem = QStringLiteral("%1 ni zbirka podatkov Access.").arg(path);
        return;
    }
    const LibraryQuiet quiet;
    m_handle->mdb = mdb_open(QFile::encodeName(path).constData(), MDB_NOFLAGS);
    if (!m_handle->mdb) {
        m_problem = Damaged(path, QStringLiteral("njene glave ni mogoče prebrati."));
        return;
    }
    const qint64 pageSize = m_handle->mdb->fmt->pg_size;
    if (pageSize <= 0 || QFileInfo(path).size() % pageSize != 0) {
        m_problem = Damaged(path, QStringLiteral("ni cela (njena dolžina ni večkratnik strani)."));
        return;
    }
    ReadTextsAsUtf8(m_handle->mdb);
    if (!mdb_read_catalog(m_handle->mdb, MDB_TABLE)) {
        m_problem = Damaged(path, QStringLiteral("kataloga tabel ni mogoče prebrati."));
    }
}

Database::~Database() = default;

bool Database::IsOpen() const { return m_problem.isEmpty() && m_handle->mdb; }

qint64 Database::RowCount(const QString& table) const {
    const LibraryQuiet quiet;
    MdbCatalogEntry* entry = IsOpen() ? m_handle->Find(table) : nullptr;
    TablePtr definition(entry ? mdb_read_table(entry) : nullptr);
    return definition ? qint64(definition->num_rows) : -1;
}

Table Database::Read(const QString& table, const QStringList& columns,
                     const Progress& progress) const {
    const LibraryQuiet quiet;
    MdbCatalogEntry* entry = IsOpen() ? m_handle->Find(table) : nullptr;
    if (!entry) {
        Fail(QStringLiteral("V datoteki %1 ni tabele %2.").arg(m_path, table));
    }
    TablePtr definition(mdb_read_table(entry));
    if (!definition || !mdb_read_columns(definition.get())) {
        Fail(Damaged(m_path, QStringLiteral("opisa tabele %1 ni mogoče prebrati.").arg(table)));
    }
    MdbTableDef* t = definition.get();
    Table result;
    result.name = QString::fromUtf8(t->name);
    QVector<int> positions;
    for (const QString& wanted : columns) {
        int found = -1;
        for (guint i = 0; i < t->num_cols && found < 0; ++i) {
            auto* column = static_cast<MdbColumn*>(g_ptr_array_index(t->columns, i));
            if (QString::fromUtf8(column->name).compare(wanted, Qt::CaseInsensitive) == 0) {
                found = int(i);
                result.columns << QString::fromUtf8(column->name);
                if (!SupportedType(column->col_type)) {
                    Fail(QStringLiteral("Polje %1 tabele %2 v datoteki %3 ni ne število ne "
                                        "besedilo (vrsta %4).")
                             .arg(result.columns.last(), result.name, m_path,
                                  QString::fromUtf8(mdb_get_colbacktype_string(column))));
                }
            }
        }
        if (found < 0) {
            Fail(QStringLiteral("Tabela %1 v datoteki %2 nima polja %3.")
                     .arg(result.name, m_path, wanted));
        }
        positions << found;
    }
    RowReader reader(m_handle->mdb, t, m_path);
    const qint64 total = t->num_rows;
    mdb_rewind_table(t);
    while (mdb_fetch_row(t)) {
        reader.Crack();
        QVector<QVariant> row(positions.size());
        for (int i = 0; i < positions.size(); ++i) {
            row[i] = reader.Value(positions[i], Where{result.name, result.columns[i], row[0]});
        }
        result.rows.push_back(std::move(row));
        if (progress && result.rows.size() % 1000 == 0) {
            progress(qint64(result.rows.size()), total);
        }
    }
    if (qint64(result.rows.size()) != total) {
        Fail(Damaged(m_path, QStringLiteral("tabela %1 ima po svojem opisu %2 vrstic, prebrati "
                                            "jih je mogoče %3.")
                                 .arg(result.name)
                                 .arg(total)
                                 .arg(result.rows.size())));
    }
    if (progress) {
        progress(total, total);
    }
    return result;
}

}  // namespace AccessFile
