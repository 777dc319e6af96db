// Measures converting the Windows program's Access collection of 10,000 recipes
// (bench/data/Morvena-10000.mdb unless --access names another) into a new SQLite file, as a
// whole process (morvena-tool copy, best of --runs) and inside this process (the copy alone).
// The floor, measured in the same run on the same file: mdb-export writing the same nine
// tables as text (nine processes, reading only). The target is 10 s. Prints figures only.
//
// Usage: bench_access --tool PATH [--access FILE] [--runs N]

#include <QCoreApplication>
#include <QFile>
#include <QThread>
#include <vector>

#include "bench/support/BenchOptions.h"
#include "bench/support/BenchSupport.h"
#include "bench/support/Workspace.h"
#include "collection/CollectionCopy.h"
#include "core/database/modDatabase.h"

using namespace Bench;

namespace {

constexpr double TargetSeconds = 10.0;

struct Options {
    std::vector<Option> List() {
        return {Path("--tool", "PATH", tool), Path("--access", "FILE", access),
                Count("--runs", runs)};
    }

    QString cacheDir;  // none: the file is read where it is
    QString tool;
    QString access = QStringLiteral(MORVENA_BENCH_DATA "/Morvena-10000.mdb");
    int runs = 3;
};

// The best of `runs` conversions by the tool, each into a new file.
ProcessRun BestToolCopy(const Options& options, const Workspace& work) {
    ProcessRun best;
    const QString target = work.File(QStringLiteral("converted.mdb"));
    for (int run = 0; run < options.runs; ++run) {
        RemoveSqliteFiles(target);
        const ProcessRun one =
            RunProcess({options.tool, QStringLiteral("copy"), options.access, target});
        if (one.seconds < 0) {
            return one;
        }
        if (best.seconds < 0 || one.seconds < best.seconds) {
            best = one;
        }
    }
    RemoveSqliteFiles(target);
    return best;
}

// The best of `runs` exports of the nine tables by mdb-export (the nine processes' times summed).
double BestExport(const Options& options) {
    static const QStringList tables{"Group",   "Type",          "Recipe",
                                    "Source",  "Unit",          "Ingredient",
                                    "Section", "RecipeSection", "SectionIngredient"};
    double best = -1.0;
    for (int run = 0; run < options.runs; ++run) {
        double seconds = 0.0;
        for (const QString& table : tables) {
            const ProcessRun one =
                RunProcess({QStringLiteral("mdb-export"), options.access, table});
            if (one.seconds < 0) {
                return -1.0;
            }
            seconds += one.seconds;
        }
        best = best < 0 ? seconds : std::min(best, seconds);
    }
    return best;
}

double InProcessCopy(const Options& options, const Workspace& work) {
    const QString target = work.File(QStringLiteral("inprocess.mdb"));
    RemoveSqliteFiles(target);
    const auto start = Clock::now();
    const CollectionCopy::Outcome outcome = CollectionCopy::Copy(
        {modDatabase::FileDatabase, QString(), options.access, QString(), QString()},
        {modDatabase::FileDatabase, QString(), target, QString(), QString()}, {});
    const double seconds = Milliseconds(Clock::now() - start) / 1000.0;
    RemoveSqliteFiles(target);
    if (!outcome.copied) {
        Print(QStringLiteral("  in-process copy failed: %1").arg(outcome.message));
        return -1.0;
    }
    return seconds;
}

int Measure(const Options& options, const Workspace& work) {
    Print(QStringLiteral("bench_access: %1 cores, %2, %3")
              .arg(QThread::idealThreadCount())
              .arg(LoadAverage(), options.access));
    if (options.tool.isEmpty()) {
        Print(QStringLiteral("  --tool PATH (morvena-tool) is needed"));
        return 2;
    }
    const ProcessRun tool = BestToolCopy(options, work);
    const double floorSeconds = BestExport(options);
    const double inProcess = InProcessCopy(options, work);
    if (tool.seconds < 0 || floorSeconds < 0 || inProcess < 0) {
        Print(QStringLiteral("  a run failed (is mdbtools installed?)"));
        return 1;
    }
    Print(QStringLiteral("conversion (morvena-tool copy, whole process)  %1 s  peak %2 MB  "
                         "floor (mdb-export of the nine tables) %3 s  ratio %4  %5")
              .arg(Fixed(tool.seconds), Fixed(tool.peakMegabytes, 1), Fixed(floorSeconds),
                   Fixed(Ratio(tool.seconds, floorSeconds), 1),
                   Verdict(QStringLiteral("%1 s").arg(Fixed(TargetSeconds, 0)),
                           tool.seconds <= TargetSeconds)));
    Print(QStringLiteral("conversion inside the process (read, write, verify, commit)  %1 s")
              .arg(Fixed(inProcess)));
    PrintDone();
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    return Main<QCoreApplication>(argc, argv, "bench_access", Measure);
}
