#include "collection/AccessSource.h"

#include <algorithm>
#include <limits>

#include "core/AppError.h"

namespace {

enum class Need { Key, Whole, WholeOrNull, Place, Number, Text };

struct Rule {
    const char* table;
    const char* column;
    Need need;
    const char* parent = nullptr;  // the table whose key the value must be
};

// What the collection needs of each field (keys are checked by their position).
const Rule Rules[] = {
    {"Group", "name", Need::Text},
    {"Type", "groupID", Need::Whole, "Group"},
    {"Type", "name", Need::Text},
    {"Recipe", "typeID", Need::Whole, "Type"},
    {"Recipe", "sourceID", Need::WholeOrNull},
    {"Recipe", "title", Need::Text},
    {"Source", "name", Need::Text},
    {"Unit", "name", Need::Text},
    {"Ingredient", "name", Need::Text},
    {"Section", "instructions", Need::Text},
    {"RecipeSection", "recipeID", Need::Whole},
    {"RecipeSection", "sectionID", Need::Whole},
    {"RecipeSection", "place", Need::Place},
    {"SectionIngredient", "sectionID", Need::Whole},
    {"SectionIngredient", "ingredientID", Need::Whole},
    {"SectionIngredient", "unitID", Need::Whole},
    {"SectionIngredient", "amount", Need::Number},
};

int ColumnIndex(const QStringList& columns, QLatin1String name) {
    for (int i = 0; i < columns.size(); ++i) {
        if (columns[i].compare(name, Qt::CaseInsensitive) == 0) {
            return i;
        }
    }
    return -1;
}

bool IsWhole(const QVariant& value) { return value.typeId() == QMetaType::LongLong; }

bool InRange(const QVariant& value, qlonglong lowest, qlonglong highest) {
    return IsWhole(value) && value.toLongLong() >= lowest && value.toLongLong() <= highest;
}

// Why a value does not do, or nothing when it does.
QString Problem(Need need, const QVariant& value) {
    constexpr qlonglong Highest = std::numeric_limits<qint32>::max();
    switch (need) {
        case Need::Key:
            return InRange(value, 1, Highest) ? QString()
                                              : QStringLiteral("ključ ni pozitivno celo število");
        case Need::WholeOrNull:
            if (value.isNull()) {
                return QString();
            }
            [[fallthrough]];
        case Need::Whole:
            return InRange(value, std::numeric_limits<qint32>::min(), Highest)
                       ? QString()
                       : QStringLiteral("vrednost ni celo število");
        case Need::Place:
            return InRange(value, std::numeric_limits<qint16>::min(),
                           std::numeric_limits<qint16>::max())
                       ? QString()
                       : QStringLiteral("mesto ni celo število med -32768 in 32767");
        case Need::Number:
            return value.isNull() ? QStringLiteral("količina je prazna (NULL)") : QString();
        case Need::Text:
            return value.isNull() ? QStringLiteral("besedilo je prazno (NULL)") : QString();
    }
    return QString();
}

[[noreturn]] void Refuse(const QString& table, const QVariant& key, const QString& field,
                         const QString& why) {
    throw CopySource::Refused{
        QStringLiteral("Tabela %1, ključ %2, polje %3: %4.")
            .arg(table, key.isNull() ? QStringLiteral("NULL") : key.toString(), field, why)};
}

// The rows of a table read whole, in key order.
class RowsInMemory : public CopySource::Feed {
public:
    explicit RowsInMemory(AccessFile::Table table) : m_table(std::move(table)) {
        std::sort(m_table.rows.begin(), m_table.rows.end(),
                  [](const QVector<QVariant>& a, const QVector<QVariant>& b) {
                      return a[0].toLongLong() < b[0].toLongLong();
                  });
    }
    QStringList Columns() const override { return m_table.columns; }
    qint64 Total() const override { return qint64(m_table.rows.size()); }
    bool Next(QVector<QVariant>& row) override {
        if (m_next == m_table.rows.size()) {
            return false;
        }
        row = std::move(m_table.rows[m_next++]);
        return true;
    }

private:
    AccessFile::Table m_table;
    size_t m_next = 0;
};

}  // namespace

AccessSource::AccessSource(QString path) : m_path(std::move(path)) {}

QString AccessSource::Open() {
    m_file = std::make_unique<AccessFile::Database>(m_path);
    return m_file->Problem();
}

std::unique_ptr<CopySource::Feed> AccessSource::Rows(const QString& table,
                                                     const QStringList& columns) {
    AccessFile::Table rows;
    try {
        rows = m_file->Read(table, columns, {});
    } catch (const AppError& error) {
        throw CopySource::Refused{error.Description()};
    }
    Check(rows, columns);
    return std::make_unique<RowsInMemory>(std::move(rows));
}

void AccessSource::Check(const AccessFile::Table& table, const QStringList& columns) {
    QSet<qlonglong>& keys = m_keys[columns.value(0).toLower()];
    keys.reserve(qsizetype(table.rows.size()));
    for (const QVector<QVariant>& row : table.rows) {
        const QString why = Problem(Need::Key, row[0]);
        if (!why.isEmpty()) {
            Refuse(table.name, row[0], table.columns[0], why);
        }
        if (keys.contains(row[0].toLongLong())) {
            Refuse(table.name, row[0], table.columns[0], QStringLiteral("ključ se ponovi"));
        }
        keys.insert(row[0].toLongLong());
    }
    for (const Rule& rule : Rules) {
        if (table.name.compare(QLatin1String(rule.table), Qt::CaseInsensitive) != 0) {
            continue;
        }
        const int index = ColumnIndex(columns, QLatin1String(rule.column));
        const QSet<qlonglong>* parents =
            rule.parent ? &m_keys[QString::fromLatin1(rule.parent).toLower() + QStringLiteral("id")]
                        : nullptr;
        for (const QVector<QVariant>& row : table.rows) {
            const QString why = Problem(rule.need, row[index]);
            if (!why.isEmpty()) {
                Refuse(table.name, row[0], table.columns[index], why);
            }
            if (parents && !parents->contains(row[index].toLongLong())) {
                Refuse(table.name, row[0], table.columns[index],
                       QStringLiteral("vrstice %1 s ključem %2 ni")
                           .arg(QLatin1String(rule.parent), row[index].toString()));
            }
        }
    }
}
