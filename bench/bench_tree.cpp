// Measures the recipe tree of the main window on generated databases: the tree read alone (the
// model reloaded after a written row) and the whole RefreshTreeView with its first page, beside
// the floor: the same catalogue statements through the sqlite3 C API, every row read into a key and
// a QString. Also the peak memory of the process with the tree built, and what closing the recipe
// editor costs. With --pg-server, the whole RefreshTreeView and the editor's closing on a
// generated server database too (--pg-sizes, 100,000 recipes unless told). Prints figures only.
//
// Usage: bench_tree [--cache-dir DIR] [--pg-server HOST:PORT] [--sizes 100000,1000000]
//                   [--pg-sizes 100000] [--runs N]

#include <sqlite3.h>

#include <QApplication>
#include <QFile>
#include <QThread>
#include <QTreeView>

#include "bench/support/BenchOptions.h"
#include "bench/support/BenchSupport.h"
#include "bench/support/SqliteFloor.h"
#include "bench/support/Workspace.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "main/RecipeTreeModel.h"
#include "main/frmMain.h"

using namespace Bench;

namespace {

// The options, in the order of the usage line, and what they set.
struct Options {
    std::vector<Option> List() {
        return {Text("--cache-dir", "DIR", cacheDir), Text("--pg-server", "HOST:PORT", pgServer),
                Sizes("--sizes", "N,N", sizes), Sizes("--pg-sizes", "N,N", pgSizes),
                Count("--runs", runs)};
    }

    QString cacheDir;
    QString pgServer;
    std::vector<int> sizes{100000, 1000000};
    std::vector<int> pgSizes{100000};
    int runs = 5;
};

QString PeakMemory() {
    const QString peak = StatusField("VmHWM:");
    return peak.isEmpty() ? QStringLiteral("unknown") : peak;
}

// What closing the recipe editor costs: the tree refreshed and the recipe selected again with
// its page, after "Prekliči" (nothing changed) and after a save (one recipe row written).
void MeasureEditorClose(frmMain& window, const QString& kind, int recipes, const Options& options) {
    const QString key = QStringLiteral("R%1").arg(recipes / 2);
    std::vector<double> cancelled;
    std::vector<double> saved;
    for (int run = 0; run < options.runs + 1; ++run) {
        auto start = Clock::now();
        window.RefreshAndRestore(key);
        const double cancel = Milliseconds(Clock::now() - start);
        modDatabase::Execute(QStringLiteral("UPDATE [Recipe] SET title = title WHERE recipeID = ") +
                             key.mid(1) + QStringLiteral(";"));
        start = Clock::now();
        window.RefreshAndRestore(key);
        if (run > 0) {
            cancelled.push_back(cancel);
            saved.push_back(Milliseconds(Clock::now() - start));
        }
    }
    const double limit = recipes >= 1000000 ? 1500.0 : 150.0;
    const QString target = QStringLiteral("<= %1 ms").arg(limit);
    Print(
        Where(kind, recipes) +
        QStringLiteral("  editor closed, tree refreshed and %1 shown again: after Prekliči median "
                       "%2 ms %3, after a save %4 ms %5 (%6 runs)")
            .arg(key)
            .arg(Fixed(Median(cancelled)))
            .arg(Verdict(target, Median(cancelled) <= limit))
            .arg(Fixed(Median(saved)))
            .arg(Verdict(target, Median(saved) <= limit))
            .arg(cancelled.size()));
}

void MeasureTree(const QString& file, int recipes, const Options& options) {
    SqliteFloor floor(file, true);
    frmMain window;
    window.show();
    QApplication::processEvents();
    auto* model = static_cast<RecipeTreeModel*>(window.tvRecipes->model());
    std::vector<double> trees;
    std::vector<double> totals;
    std::vector<double> floors;
    long long floorRows = 0;
    for (int run = 0; run < options.runs + 1; ++run) {
        // A row written, so that the tree has to be read again.
        modDatabase::Execute(QStringLiteral("UPDATE [Group] SET name = name WHERE groupID = 1;"));
        auto start = Clock::now();
        window.RefreshTreeView();
        const double total = Milliseconds(Clock::now() - start);
        // The tree alone: its page is made while it is read, so it cannot be taken off the whole.
        modDatabase::Execute(QStringLiteral("UPDATE [Group] SET name = name WHERE groupID = 1;"));
        start = Clock::now();
        model->Reload();
        const double tree = Milliseconds(Clock::now() - start);
        start = Clock::now();
        floorRows = FloorCatalogue(floor, true);
        const double floorMs = Milliseconds(Clock::now() - start);
        if (run > 0) {  // the first round warms the caches
            totals.push_back(total);
            trees.push_back(tree);
            floors.push_back(floorMs);
        }
    }
    if (!floor.Error().isEmpty()) {
        Print(Where(QStringLiteral("sqlite"), recipes) +
              QStringLiteral("  floor failed: %1").arg(floor.Error()));
        return;
    }
    const double tree = Median(trees);
    const double floorMedian = Median(floors);
    Print(Where(QStringLiteral("sqlite"), recipes) +
          QStringLiteral("  tree read (RecipeTreeModel::Reload) median %1 ms %2  floor (catalogue "
                         "statements through sqlite3) %3 ms  ratio %4  (whole RefreshTreeView %5 "
                         "ms; %6 floor rows; %7 runs; peak memory %8)")
              .arg(Fixed(tree))
              .arg(recipes < 100000 ? QString() : Verdict(QStringLiteral("<= 200 ms"), tree <= 200))
              .arg(Fixed(floorMedian))
              .arg(Fixed(Ratio(tree, floorMedian)))
              .arg(Fixed(Median(totals)))
              .arg(floorRows)
              .arg(trees.size())
              .arg(PeakMemory()));
    MeasureEditorClose(window, QStringLiteral("sqlite"), recipes, options);
}

// On a server: the whole RefreshTreeView with its first page, and closing the editor.
void MeasureTreeOnServer(int recipes, const Options& options) {
    const QString name = QStringLiteral("bench_tree_%1").arg(recipes);
    if (!OpenGeneratedOnServer(options.pgServer, name, recipes)) {
        return;
    }
    {
        frmMain window;
        window.show();
        QApplication::processEvents();
        std::vector<double> totals;
        for (int run = 0; run < options.runs + 1; ++run) {
            modDatabase::Execute(
                QStringLiteral("UPDATE [Group] SET name = name WHERE groupID = 1;"));
            const auto start = Clock::now();
            window.RefreshTreeView();
            if (run > 0) {
                totals.push_back(Milliseconds(Clock::now() - start));
            }
        }
        Print(Where(QStringLiteral("postgresql"), recipes) +
              QStringLiteral("  RefreshTreeView with its first page shown median %1 ms (%2 runs; "
                             "peak memory %3)")
                  .arg(Fixed(Median(totals)))
                  .arg(totals.size())
                  .arg(PeakMemory()));
        MeasureEditorClose(window, QStringLiteral("postgresql"), recipes, options);
    }
    modDatabase::CloseConnection();
}

int Measure(const Options& options, const Workspace& work) {
    Print(QStringLiteral("bench_tree: %1 cores, SQLite %2, %3")
              .arg(QThread::idealThreadCount())
              .arg(QString::fromUtf8(sqlite3_libversion()), LoadAverage()));
    const int status = ForEachSqliteSize(
        work, options.sizes,
        [&](const QString& file, int recipes) { MeasureTree(file, recipes, options); });
    for (const int recipes : options.pgServer.isEmpty() ? std::vector<int>() : options.pgSizes) {
        MeasureTreeOnServer(recipes, options);
    }
    PrintDone();
    return status;
}

}  // namespace

int main(int argc, char** argv) { return Main<QApplication>(argc, argv, "bench_tree", Measure); }
