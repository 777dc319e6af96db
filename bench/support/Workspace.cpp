#include "bench/support/Workspace.h"

#include <QDir>
#include <QFile>
#include <cstdio>

#include "bench/support/BenchSupport.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"

namespace Bench {

Workspace::Workspace(const QString& cacheDir, const QString& pattern)
    : m_work(pattern.isEmpty() ? std::make_unique<QTemporaryDir>()
                               : std::make_unique<QTemporaryDir>(pattern)) {
    // Relative paths are taken before the current folder changes.
    if (!cacheDir.isEmpty()) {
        m_cacheFolder = QDir(cacheDir).absolutePath();
    }
    m_ready = MakeFolders();
    if (m_ready) {
        qputenv("MORVENA_CONFIG_DIR", QFile::encodeName(File(QStringLiteral("config"))));
        QDir::setCurrent(Path());
        modGeneral::TempFilename = File(QStringLiteral("tmpRecipeDB.html"));
    }
}

bool Workspace::MakeFolders() {
    if (!m_cacheFolder.isEmpty() && !QDir().mkpath(m_cacheFolder)) {
        std::fprintf(stderr, "cannot create %s\n", qPrintable(m_cacheFolder));
        return false;
    }
    if (!m_work->isValid()) {
        std::fprintf(stderr, "cannot create a temporary folder\n");
        return false;
    }
    return true;
}

QString Workspace::File(const QString& name) const { return Path() + QLatin1Char('/') + name; }

QString Workspace::Database(int recipes, SyntheticDatabase::Shape shape) const {
    const bool cached = !m_cacheFolder.isEmpty();
    return SqliteDatabase(cached ? m_cacheFolder : Path(), cached, recipes, shape);
}

int Run(const QString& program, const std::vector<Option>& options, const QString& cacheDir,
        const std::function<int(const Workspace&)>& measure, const QString& pattern) {
    if (!ReadOptions(program, options)) {
        return 2;
    }
    const Workspace work(cacheDir, pattern);
    return work.Ready() ? measure(work) : 1;
}

int ForEachSqliteSize(const Workspace& work, const std::vector<int>& sizes,
                      const std::function<void(const QString& file, int recipes)>& measure) {
    int status = 0;
    for (const int recipes : sizes) {
        const QString file = work.Database(recipes);
        if (file.isEmpty() || !OpenShared(modDatabase::FileDatabase, QString(), file)) {
            status = 1;
            continue;
        }
        measure(file, recipes);
        modDatabase::CloseConnection();
    }
    return status;
}

}  // namespace Bench
