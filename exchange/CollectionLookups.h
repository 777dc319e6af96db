#pragma once

#include <QHash>
#include <QString>
#include <QStringList>
#include <QtGlobal>

#include "exchange/CollectionSql.h"

namespace modDatabase {
class DbConnection;
}

namespace Exchange {

// The entries of one lookup list of a collection ([Unit], [Ingredient] or [Source]) by name,
// found as the database compares names (letter case does not count), for an import that adds
// the entries its recipes name. An entry added inside a recipe's transaction is kept only when
// that transaction is committed.
class CollectionLookups {
public:
    // `table` is the bracketed table name, `key` its key column.
    CollectionLookups(modDatabase::DbConnection& connection, CollectionSql::Prepared& prepared,
                      QString table, QString key);

    // Reads every entry of the list.
    void Load();
    // The key of the entry of that name; an entry is added when there is none (with `dryRun`
    // nothing is written and the key is 0).
    qint32 Key(const QString& name, bool dryRun);
    // The names of every entry.
    QStringList Names() const;

    // The transaction of the recipe has been committed, or rolled back.
    void Keep();
    void Forget();

private:
    qint32 Add(const QString& name);

    modDatabase::DbConnection& m_connection;
    CollectionSql::Prepared& m_prepared;
    QString m_table;
    QString m_key;
    QHash<QString, qint32> m_keys;     // case-folded name -> key
    QHash<QString, QString> m_names;   // case-folded name -> name
    QHash<QString, qint32> m_pending;  // added in the open transaction
};

}  // namespace Exchange
