#pragma once

#include <QHash>
#include <QSet>

#include "collection/CopySource.h"
#include "core/database/AccessFile.h"

// An Access file of the Windows program as the source of a copy. Its tables and fields are
// found by name without regard to letter case; other tables and fields are left out. Rows
// that no window could show stop the copy with a message naming the table, the key and the
// field: a key that is not a positive whole number or is there twice, a NULL where the
// collection needs a value, a number where a whole one is needed, a subgroup without its group
// and a recipe without its subgroup. Rows that every window and page can live with are taken
// as they stand: a recipe whose source is missing (shown without a source), links of sections
// to recipes or sections that are missing and ingredient lines of missing sections (never
// read), lines whose unit or ingredient is missing (left out of pages and the editor).
class AccessSource : public CopySource::Source {
public:
    explicit AccessSource(QString path);

    QString Open() override;
    void Begin() override {}
    std::unique_ptr<CopySource::Feed> Rows(const QString& table,
                                           const QStringList& columns) override;
    void End() override {}

private:
    void Check(const AccessFile::Table& table, const QStringList& columns);

    QString m_path;
    std::unique_ptr<AccessFile::Database> m_file;
    QHash<QString, QSet<qlonglong>> m_keys;  // the keys of the tables read so far
};
