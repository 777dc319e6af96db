// Measures converting the Windows program's Access collection of 10,000 recipes
// (bench/data/Morvena-10000.mdb unless --access names another) into a new SQLite file, as a
// whole process (morvena-tool copy, best of --runs) and inside this process (the copy alone).
// The floor, measured in the same run on the same file: mdb-export writing the same nine
// tables as text (nine processes, reading only). The target is 10 s. Prints figures only.
//
// Usage: bench_access --tool PATH [--access FILE] [--runs N]

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QFile>
#include <QThread>
#include <vector>

#include "bench/support/BenchOptions.h"
#include "bench/support/BenchSupport.h"
#include "bench/support/Workspace.h"
#include "collection/CollectionCopy.h"
#include "core/database/modDatabase.h"

extern char** environ;

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

// One process's wall time in seconds and its peak resident memory in MB; its output goes
// nowhere. Negative seconds when it did not run or failed.
struct Process {
    double seconds = -1.0;
    double peakMegabytes = 0.0;
};

Process RunProcess(const QStringList& command) {
    std::vector<QByteArray> arguments;
    for (const QString& argument : command) {
        arguments.push_back(QFile::encodeName(argument));
    }
    std::vector<char*> argv;
    for (QByteArray& argument : arguments) {
        argv.push_back(argument.data());
    }
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    const auto start = Clock::now();
    pid_t child = 0;
    const int spawned = posix_spawnp(&child, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    Process result;
    int status = 0;
    struct rusage usage {};
    if (spawned != 0 || ::wait4(child, &status, 0, &usage) != child || !WIFEXITED(status) ||
        WEXITSTATUS(status) != 0) {
        return result;
    }
    result.seconds = Milliseconds(Clock::now() - start) / 1000.0;
    result.peakMegabytes = double(usage.ru_maxrss) / 1024.0;
    return result;
}

// The best of `runs` conversions by the tool, each into a new file.
Process BestToolCopy(const Options& options, const Workspace& work) {
    Process best;
    const QString target = work.File(QStringLiteral("converted.mdb"));
    for (int run = 0; run < options.runs; ++run) {
        RemoveSqliteFiles(target);
        const Process one =
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
            const Process one = RunProcess({QStringLiteral("mdb-export"), options.access, table});
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
    const Process tool = BestToolCopy(options, work);
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
