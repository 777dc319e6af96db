// Measures the recipe tree of the main window on generated databases: RefreshTreeView without
// the page it shows at its end (the page is measured right after each build and taken off), beside
// the floor: the same catalogue statements through the sqlite3 C API, every row read into a key and
// a QString. Also the peak memory of the process with the tree built. Prints figures only.
//
// Usage: bench_tree [--cache-dir DIR] [--sizes 10000,100000] [--runs N]

#include <sqlite3.h>

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QThread>
#include <QTreeWidget>
#include <cstdio>

#include "bench/support/BenchSupport.h"
#include "bench/support/SqliteFloor.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "main/frmMain.h"

using namespace Bench;

namespace {

struct Options {
    QString cacheDir;
    std::vector<int> sizes{10000, 100000};
    int runs = 9;
};

// The catalogue as the tree reads it, through the floor: groups, per group its subgroups, per
// subgroup its recipes. Returns the rows read.
long long FloorCatalogue(SqliteFloor& floor) {
    long long rows = 0;
    std::vector<long long> groups;
    rows += floor.Run("SELECT * FROM [Group] ORDER BY name;", [&](sqlite3_stmt* s) {
        groups.push_back(SqliteFloor::Integer(s, 0));
        static_cast<void>(SqliteFloor::Text(s, 1));
    });
    for (const long long group : groups) {
        std::vector<long long> types;
        rows += floor.Run(
            "SELECT * FROM [Type] WHERE groupID = " + QByteArray::number(group) + " ORDER BY name;",
            [&](sqlite3_stmt* s) {
                types.push_back(SqliteFloor::Integer(s, 0));
                static_cast<void>(SqliteFloor::Text(s, 2));
            });
        for (const long long type : types) {
            rows += floor.Run("SELECT * FROM [Recipe] WHERE typeID = " + QByteArray::number(type) +
                                  " ORDER BY title;",
                              [&](sqlite3_stmt* s) {
                                  static_cast<void>(SqliteFloor::Integer(s, 0));
                                  static_cast<void>(SqliteFloor::Text(s, 3));
                              });
        }
    }
    return rows;
}

QString PeakMemory() {
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly)) {
        return QStringLiteral("unknown");
    }
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith("VmHWM:")) {
            return QString::fromLatin1(line.mid(6).simplified());
        }
    }
    return QStringLiteral("unknown");
}

void Measure(const QString& file, int recipes, const Options& options) {
    SqliteFloor floor(file, true);
    frmMain window;
    window.show();
    QApplication::processEvents();
    std::vector<double> trees;
    std::vector<double> totals;
    std::vector<double> floors;
    long long floorRows = 0;
    for (int run = 0; run < options.runs + 1; ++run) {
        auto start = Clock::now();
        window.RefreshTreeView();
        const double total = Milliseconds(Clock::now() - start);
        start = Clock::now();
        window.tvRecipes_NodeClick();  // the same page once more: what the build spent on it
        const double page = Milliseconds(Clock::now() - start);
        start = Clock::now();
        floorRows = FloorCatalogue(floor);
        const double floorMs = Milliseconds(Clock::now() - start);
        if (run > 0) {  // the first round warms the caches
            totals.push_back(total);
            trees.push_back(total - page);
            floors.push_back(floorMs);
        }
    }
    if (!floor.Error().isEmpty()) {
        Print(
            QStringLiteral("sqlite  %1 recipes  floor failed: %2").arg(recipes).arg(floor.Error()));
        return;
    }
    const double tree = Median(trees);
    const double floorMedian = Median(floors);
    Print(QStringLiteral("sqlite  %1 recipes  RefreshTreeView without the page median %2 ms %3  "
                         "floor (catalogue statements through sqlite3) %4 ms  ratio %5  (whole "
                         "RefreshTreeView %6 ms; %7 floor rows; %8 runs; peak memory %9)")
              .arg(recipes)
              .arg(Fixed(tree))
              .arg(recipes < 100000 ? QString()
                   : tree <= 200    ? QStringLiteral("[target <= 200 ms met]")
                                    : QStringLiteral("[target <= 200 ms MISSED]"))
              .arg(Fixed(floorMedian))
              .arg(Fixed(floorMedian > 0 ? tree / floorMedian : 0.0))
              .arg(Fixed(Median(totals)))
              .arg(floorRows)
              .arg(trees.size())
              .arg(PeakMemory()));
}

bool ParseOptions(const QStringList& arguments, Options& options) {
    for (int i = 1; i + 1 < arguments.size(); i += 2) {
        const QString& name = arguments[i];
        const QString& value = arguments[i + 1];
        if (name == QLatin1String("--cache-dir")) {
            options.cacheDir = QFileInfo(value).absoluteFilePath();
        } else if (name == QLatin1String("--runs")) {
            options.runs = std::max(1, value.toInt());
        } else if (name == QLatin1String("--sizes")) {
            options.sizes.clear();
            for (const QString& size : value.split(QLatin1Char(','))) {
                if (size.toInt() < 1) {
                    return false;
                }
                options.sizes.push_back(size.toInt());
            }
        } else {
            return false;
        }
    }
    return arguments.size() % 2 == 1;
}

}  // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    Options options;
    if (!ParseOptions(QCoreApplication::arguments(), options)) {
        std::fprintf(stderr, "usage: bench_tree [--cache-dir DIR] [--sizes N,N] [--runs N]\n");
        return 2;
    }
    QTemporaryDir work;
    qputenv("MORVENA_CONFIG_DIR", QFile::encodeName(work.path() + QStringLiteral("/config")));
    const bool cached = !options.cacheDir.isEmpty();
    const QString folder = cached ? options.cacheDir : work.path();
    QDir().mkpath(folder);
    QDir::setCurrent(work.path());
    modGeneral::TempFilename = work.path() + QStringLiteral("/tmpRecipeDB.html");
    Print(QStringLiteral("bench_tree: %1 cores, SQLite %2, %3")
              .arg(QThread::idealThreadCount())
              .arg(QString::fromUtf8(sqlite3_libversion()), LoadAverage()));
    int status = 0;
    for (const int recipes : options.sizes) {
        const QString file = SqliteDatabase(folder, cached, recipes);
        if (file.isEmpty() || !OpenShared(modDatabase::FileDatabase, QString(), file)) {
            status = 1;
            continue;
        }
        Measure(file, recipes, options);
        modDatabase::CloseConnection();
    }
    Print(QStringLiteral("done, %1").arg(LoadAverage()));
    return status;
}
