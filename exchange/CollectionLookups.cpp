#include "exchange/CollectionLookups.h"

#include "exchange/CollectionSql.h"

namespace Exchange {

CollectionLookups::CollectionLookups(modDatabase::DbConnection& connection,
                                     CollectionSql::Prepared& prepared, QString table, QString key)
    : m_connection(connection),
      m_prepared(prepared),
      m_table(std::move(table)),
      m_key(std::move(key)) {}

void CollectionLookups::Load() {
    m_keys.clear();
    m_names.clear();
    m_pending.clear();
    CollectionSql::ForEachRow(m_connection,
                              QStringLiteral("SELECT %1, name FROM %2").arg(m_key, m_table), {},
                              [this](const SqlStatement& row) {
                                  const QString name = row.Value(1).toString();
                                  m_keys.insert(name.toCaseFolded(), row.Value(0).toInt());
                                  m_names.insert(name.toCaseFolded(), name);
                              });
}

qint32 CollectionLookups::Key(const QString& name, bool dryRun) {
    const QString folded = name.toCaseFolded();
    if (const auto found = m_keys.constFind(folded); found != m_keys.constEnd()) {
        return *found;
    }
    if (const auto found = m_pending.constFind(folded); found != m_pending.constEnd()) {
        return *found;
    }
    const qint32 key = dryRun ? 0 : Add(name);
    m_pending.insert(folded, key);
    m_names.insert(folded, name);
    return key;
}

QStringList CollectionLookups::Names() const { return m_names.values(); }

void CollectionLookups::Keep() {
    m_keys.insert(m_pending);
    m_pending.clear();
}

void CollectionLookups::Forget() {
    for (auto it = m_pending.constBegin(); it != m_pending.constEnd(); ++it) {
        m_names.remove(it.key());
    }
    m_pending.clear();
}

qint32 CollectionLookups::Add(const QString& name) {
    return m_prepared
        .Value(QStringLiteral("INSERT INTO %1 (name) VALUES ($1) RETURNING %2").arg(m_table, m_key),
               {name})
        .toInt();
}

}  // namespace Exchange
