// Measures morvena-tool's import and export as whole processes (wall time and peak resident
// memory of the child; the best time of --runs, the highest peak of them), each beside a floor
// measured in the same run on the same data:
//   import of --import-recipes (10,000) MealMaster recipes, made by generating a collection
//     (uniform shape, kept in the cache folder) and exporting it with the tool, into a new empty
//     collection each run; target 5 s. Also the dry run (read and mapped, nothing written). The
//     floor: this program (--copy-rows) writing the rows the import wrote (read from its result
//     into memory first) into an empty collection with the sqlite3 C API, one transaction per
//     recipe, statements prepared once, written ahead into a log with synchronous=NORMAL as the
//     program's import writes; and the same with synchronous=OFF, for scale.
//   the same import into a new database on the PostgreSQL server (--pg-server), beside the same
//     rows written through libpq, one transaction per recipe, a round trip per statement.
//   export of --export-recipes (100,000) generated recipes in each format; target 10 s (an
//     export slower than three times that is run once). The floor: this program (--write-text)
//     reading the same rows with the sqlite3 C API (recipes with their source, group and subgroup,
//     sections, lines with units and ingredients) and writing them as text into one file, or a file
//     per recipe beside the Cooklang export.
//   import of a generated MealMaster file of --megabytes (50) MB with --dry-run; target peak
//     below 200 MB. The floor: reading the file's lines with QFile::readLine (--read-lines), and
//     the tool's dry run of a file of one recipe for its memory. Then the real import of the
//     file into an empty collection, stopped when it takes longer than a minute.
// Prints figures only; the exit code says whether the measuring could run, never whether a
// target was met.
//
// Usage: bench_exchange --tool PATH [--cache-dir DIR] [--pg-server HOST:PORT] [--runs 3]
//                       [--import-recipes 10000] [--export-recipes 100000] [--megabytes 50]

#include <sqlite3.h>

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QThread>
#include <functional>

#include "bench/support/BenchOptions.h"
#include "bench/support/BenchSupport.h"
#include "bench/support/ExportFloor.h"
#include "bench/support/ImportFloor.h"
#include "bench/support/MealMasterFile.h"
#include "bench/support/SqliteFloor.h"
#include "bench/support/Workspace.h"

using namespace Bench;

namespace {

constexpr double ImportTargetSeconds = 5.0;
constexpr double ExportTargetSeconds = 10.0;
constexpr double DryRunTargetMegabytes = 200.0;
constexpr double LargeImportLimitSeconds = 60.0;

// The options, in the order of the usage line, and what they set; the last ones make this
// program a child that does one floor's work.
struct Options {
    std::vector<Option> List() {
        return {Path("--tool", "PATH", tool),
                Text("--cache-dir", "DIR", cacheDir),
                Text("--pg-server", "HOST:PORT", pgServer),
                Count("--runs", runs),
                Count("--import-recipes", importRecipes),
                Count("--export-recipes", exportRecipes),
                Count("--megabytes", megabytes),
                Path("--copy-rows", "DB", copyRows),
                Path("--write-text", "DB", writeText),
                Text("--into", "TARGET", into),
                Switch("--unsynced", unsynced, true),
                Switch("--file-per-recipe", filePerRecipe, true),
                Path("--read-lines", "FILE", readLines)};
    }

    QString tool;
    QString cacheDir;
    QString pgServer;
    int runs = 3;
    int importRecipes = 10000;
    int exportRecipes = 100000;
    int megabytes = 50;
    QString copyRows;   // a child: writes this collection's rows into --into
    QString writeText;  // a child: writes this collection's recipes as text into --into
    QString into;
    bool unsynced = false;
    bool filePerRecipe = false;
    QString readLines;  // a child: reads this file's lines
};

// The best time of `runs` runs of the command and the highest peak memory, `prepare` called
// (untimed) before each; a failed run gives a failed result. A run that takes longer than
// `once` seconds (when given) is not repeated: another would tell nothing new.
ProcessRun Best(int runs, const std::function<bool()>& prepare, const QStringList& command,
                double once = 0.0) {
    ProcessRun best;
    for (int run = 0; run < runs; ++run) {
        const ProcessRun one = prepare() ? RunProcess(command) : ProcessRun();
        if (one.seconds < 0) {
            Print(QStringLiteral("  failed: %1").arg(command.join(QLatin1Char(' '))));
            return one;
        }
        const double peak = std::max(best.peakMegabytes, one.peakMegabytes);
        if (best.seconds < 0 || one.seconds < best.seconds) {
            best = one;
        }
        best.peakMegabytes = peak;
        if (once > 0 && one.seconds > once) {
            break;
        }
    }
    return best;
}

// What the measuring shares: the tool, this program, the folders and the empty collection.
struct Measuring {
    const Options& options;
    const Workspace& work;
    QString empty;  // an empty collection made by create-db

    QStringList Tool(const QStringList& arguments) const {
        return QStringList{options.tool} + arguments;
    }
    QStringList Self(const QStringList& arguments) const {
        return QStringList{QCoreApplication::applicationFilePath()} + arguments;
    }
    // A new empty collection at `fileName`.
    bool Fresh(const QString& fileName) const {
        RemoveSqliteFiles(fileName);
        return QFile::copy(empty, fileName);
    }
    QStringList Import(const QString& file, const QString& database, bool dryRun) const {
        QStringList arguments{QStringLiteral("import"),     file,
                              QStringLiteral("--group"),    QStringLiteral("Uvoz"),
                              QStringLiteral("--type"),     QStringLiteral("MealMaster"),
                              QStringLiteral("--database"), database};
        if (dryRun) {
            arguments.append(QStringLiteral("--dry-run"));
        }
        return Tool(arguments);
    }
};

QString Megabytes(qint64 bytes) { return Fixed(double(bytes) / 1048576.0, 1); }

QString Figure(const ProcessRun& run) {
    return QStringLiteral("%1 s  peak %2 MB").arg(Fixed(run.seconds), Fixed(run.peakMegabytes, 1));
}

// "N Recipe, N Section, N RecipeSection, N SectionIngredient" of a collection file.
QString RowCounts(const QString& fileName) {
    SqliteFloor floor(fileName, false);
    QString counts;
    floor.Run(
        "SELECT (SELECT COUNT(*) FROM [Recipe]), (SELECT COUNT(*) FROM [Section]), (SELECT "
        "COUNT(*) FROM [RecipeSection]), (SELECT COUNT(*) FROM [SectionIngredient])",
        [&counts](sqlite3_stmt* row) {
            counts = QStringLiteral(
                         "%1 Recipe, %2 Section, %3 RecipeSection, %4 "
                         "SectionIngredient")
                         .arg(SqliteFloor::Integer(row, 0))
                         .arg(SqliteFloor::Integer(row, 1))
                         .arg(SqliteFloor::Integer(row, 2))
                         .arg(SqliteFloor::Integer(row, 3));
        });
    return counts.isEmpty() ? floor.Error() : counts;
}

// The MealMaster file of the generated collection, exported by the tool; empty after a failure.
QString MakeMealMasterFile(const Measuring& bench) {
    const QString source = bench.work.Database(bench.options.importRecipes);
    const QString file = bench.work.File(QStringLiteral("import.mmf"));
    const ProcessRun exported =
        source.isEmpty()
            ? ProcessRun()
            : RunProcess(bench.Tool({QStringLiteral("export"), QStringLiteral("--format"),
                                     QStringLiteral("mealmaster"), QStringLiteral("--database"),
                                     source, file}));
    if (exported.seconds < 0) {
        Print(QStringLiteral("  the MealMaster file could not be made"));
        return QString();
    }
    Print(QStringLiteral("MealMaster file  %1 recipes  %2 MB  exported by morvena-tool in %3 s")
              .arg(bench.options.importRecipes)
              .arg(Megabytes(QFileInfo(file).size()), Fixed(exported.seconds)));
    return file;
}

// The import into SQLite files beside its floors; the collection the import wrote (the floors'
// and the server's rows) in `imported`. False when something could not be measured.
bool MeasureImport(const Measuring& bench, const QString& file, const QString& imported) {
    const int runs = bench.options.runs;
    const QString target = bench.work.File(QStringLiteral("import.sqlite"));
    const auto fresh = [&] { return bench.Fresh(target); };
    const ProcessRun dry = Best(runs, fresh, bench.Import(file, target, true));
    const ProcessRun real = Best(runs, fresh, bench.Import(file, target, false));
    RemoveSqliteFiles(imported);
    if (dry.seconds < 0 || real.seconds < 0 || !QFile::copy(target, imported)) {
        return false;
    }
    const ProcessRun floor =
        Best(runs, fresh, bench.Self({"--copy-rows", imported, "--into", target}));
    const QString floorRows = RowCounts(target);
    const ProcessRun unsynced =
        Best(runs, fresh, bench.Self({"--copy-rows", imported, "--into", target, "--unsynced"}));
    if (floor.seconds < 0 || unsynced.seconds < 0) {
        return false;
    }
    const QString where = Where(QStringLiteral("sqlite import"), bench.options.importRecipes);
    Print(QStringLiteral("%1  whole process %2  floor (sqlite3 writing the same rows, WAL, "
                         "synchronous=NORMAL) %3 s  ratio %4  %5")
              .arg(where, Figure(real), Fixed(floor.seconds),
                   Fixed(Ratio(real.seconds, floor.seconds)),
                   Verdict(QStringLiteral("<= %1 s").arg(Fixed(ImportTargetSeconds, 0)),
                           real.seconds <= ImportTargetSeconds)));
    Print(QStringLiteral("%1  --dry-run (read and mapped, nothing written) %2  the writing "
                         "takes the other %3 s")
              .arg(where, Figure(dry), Fixed(real.seconds - dry.seconds)));
    Print(QStringLiteral("%1  floor with synchronous=OFF %2 s: syncing costs the floor %3 s")
              .arg(where, Fixed(unsynced.seconds), Fixed(floor.seconds - unsynced.seconds)));
    const QString rows = RowCounts(imported);
    Print(QStringLiteral("%1  rows written: %2%3")
              .arg(where, rows,
                   floorRows == rows ? QStringLiteral("; the floor wrote as many")
                                     : QStringLiteral("; WARNING: the floor wrote ") + floorRows));
    return true;
}

QString ServerAddress(const QString& server, const QString& name) {
    return QStringLiteral("postgresql://%1:%2@%3/%4").arg(PgUser, PgPassword, server, name);
}

// The import into a new database on the server, beside the same rows written through libpq.
bool MeasureServerImport(const Measuring& bench, const QString& file, const QString& imported) {
    const QString server = bench.options.pgServer;
    const QString name = QStringLiteral("bench_exchange_import");
    const QString address = ServerAddress(server, name);
    const auto fresh = [&] {
        return CreateServerDatabase(server, name) &&
               RunProcess(
                   bench.Tool({QStringLiteral("create-db"), QStringLiteral("--database"), address}))
                       .seconds >= 0;
    };
    const ProcessRun real = Best(bench.options.runs, fresh, bench.Import(file, address, false));
    const ProcessRun floor =
        Best(bench.options.runs, fresh, bench.Self({"--copy-rows", imported, "--into", address}));
    if (real.seconds < 0 || floor.seconds < 0) {
        return false;
    }
    Print(QStringLiteral("%1  whole process %2  floor (libpq writing the same rows, prepared "
                         "statements, a transaction per recipe) %3 s  ratio %4  (the private "
                         "server runs with fsync=off; no target of its own)")
              .arg(Where(QStringLiteral("postgresql import"), bench.options.importRecipes),
                   Figure(real), Fixed(floor.seconds), Fixed(Ratio(real.seconds, floor.seconds))));
    return true;
}

// The size of a file, or of the files in a folder, and how many there are.
QString OutputSize(const QString& path) {
    if (QFileInfo(path).isFile()) {
        return QStringLiteral("%1 MB").arg(Megabytes(QFileInfo(path).size()));
    }
    qint64 bytes = 0;
    int files = 0;
    for (QDirIterator it(path, QDir::Files); it.hasNext(); ++files) {
        bytes += it.nextFileInfo().size();
    }
    return QStringLiteral("%1 MB in %2 files").arg(Megabytes(bytes)).arg(files);
}

bool RemoveOutput(const QString& path) {
    return QFileInfo(path).isDir() ? QDir(path).removeRecursively()
                                   : !QFile::exists(path) || QFile::remove(path);
}

// The export in each format beside the floor of the same rows written as text.
bool MeasureExports(const Measuring& bench) {
    const int recipes = bench.options.exportRecipes;
    const QString source = bench.work.Database(recipes);
    if (source.isEmpty()) {
        return false;
    }
    const QString text = bench.work.File(QStringLiteral("floor.txt"));
    const QString texts = bench.work.File(QStringLiteral("floor-files"));
    const ProcessRun oneFile = Best(
        bench.options.runs, [&] { return RemoveOutput(text); },
        bench.Self({"--write-text", source, "--into", text}));
    const ProcessRun perRecipe = Best(
        bench.options.runs, [&] { return RemoveOutput(texts); },
        bench.Self({"--write-text", source, "--into", texts, "--file-per-recipe"}));
    if (oneFile.seconds < 0 || perRecipe.seconds < 0) {
        return false;
    }
    Print(QStringLiteral("%1  floor (sqlite3 reading the rows, text into one file) %2  %3; a "
                         "file per recipe %4")
              .arg(Where(QStringLiteral("export"), recipes), Figure(oneFile), OutputSize(text),
                   Figure(perRecipe)));
    RemoveOutput(text);
    RemoveOutput(texts);
    bool measured = true;
    for (const QString& format : QStringList{"mealmaster", "schema", "cooklang"}) {
        const bool folder = format == QLatin1String("cooklang");
        const ProcessRun& floor = folder ? perRecipe : oneFile;
        const QString output = bench.work.File(QStringLiteral("export.") + format);
        const ProcessRun run = Best(
            bench.options.runs, [&] { return RemoveOutput(output); },
            bench.Tool({QStringLiteral("export"), QStringLiteral("--format"), format,
                        QStringLiteral("--database"), source, output}),
            3 * ExportTargetSeconds);
        if (run.seconds < 0) {
            measured = false;
            continue;
        }
        Print(QStringLiteral("%1  whole process %2  %3  floor (%4) %5 s  ratio %6  %7")
                  .arg(Where(QStringLiteral("export --format ") + format, recipes), Figure(run),
                       OutputSize(output),
                       folder ? QStringLiteral("a text file per recipe")
                              : QStringLiteral("text into one file"),
                       Fixed(floor.seconds), Fixed(Ratio(run.seconds, floor.seconds)),
                       Verdict(QStringLiteral("<= %1 s").arg(Fixed(ExportTargetSeconds, 0)),
                               run.seconds <= ExportTargetSeconds)));
        RemoveOutput(output);
    }
    return measured;
}

// The import of the large file: its dry run beside its floors, then the real import within
// the time limit.
bool MeasureLargeFile(const Measuring& bench) {
    const QString file = bench.work.File(QStringLiteral("large.mmf"));
    const QString one = bench.work.File(QStringLiteral("one.mmf"));
    const QString target = bench.work.File(QStringLiteral("large.sqlite"));
    const int recipes = MealMasterFile::Write(file, bench.options.megabytes);
    QFile oneFile(one);
    if (recipes == 0 || !oneFile.open(QIODevice::WriteOnly) ||
        oneFile.write(MealMasterFile::Recipe(1)) < 0) {
        Print(QStringLiteral("  the MealMaster files could not be written"));
        return false;
    }
    oneFile.close();
    const auto fresh = [&] { return bench.Fresh(target); };
    const ProcessRun dry = Best(bench.options.runs, fresh, bench.Import(file, target, true));
    const ProcessRun lines = Best(
        bench.options.runs, [] { return true; }, bench.Self({"--read-lines", file}));
    const ProcessRun alone = Best(1, fresh, bench.Import(one, target, true));
    if (dry.seconds < 0 || lines.seconds < 0 || alone.seconds < 0) {
        return false;
    }
    const QString where = QStringLiteral("import of a %1 MB MealMaster file  %2 recipes")
                              .arg(Megabytes(QFileInfo(file).size()))
                              .arg(recipes);
    Print(QStringLiteral("%1  --dry-run %2  floor (reading its lines) %3; the dry run of one "
                         "recipe peaks at %4 MB  %5")
              .arg(where, Figure(dry), Figure(lines), Fixed(alone.peakMegabytes, 1),
                   Verdict(QStringLiteral("peak < %1 MB").arg(Fixed(DryRunTargetMegabytes, 0)),
                           dry.peakMegabytes < DryRunTargetMegabytes)));
    if (!fresh()) {
        return false;
    }
    const ProcessRun real = RunProcess(bench.Import(file, target, false), LargeImportLimitSeconds);
    if (real.stopped) {
        Print(QStringLiteral("%1  into an empty collection: stopped after %2 s, so the dry run "
                             "alone is measured")
                  .arg(where, Fixed(LargeImportLimitSeconds, 0)));
        return true;
    }
    const QString imported = bench.work.File(QStringLiteral("large-imported.sqlite"));
    RemoveSqliteFiles(imported);
    const bool copied = real.seconds >= 0 && QFile::copy(target, imported);
    const ProcessRun floor =
        copied ? Best(1, fresh, bench.Self({"--copy-rows", imported, "--into", target}))
               : ProcessRun();
    RemoveSqliteFiles(imported);
    if (floor.seconds < 0) {
        Print(QStringLiteral("%1  into an empty collection: failed").arg(where));
        return false;
    }
    Print(QStringLiteral("%1  into an empty collection %2  floor (sqlite3 writing the same rows, "
                         "WAL, synchronous=NORMAL) %3 s  ratio %4")
              .arg(where, Figure(real), Fixed(floor.seconds),
                   Fixed(Ratio(real.seconds, floor.seconds))));
    return true;
}

int Measure(const Options& options, const Workspace& work) {
    Print(QStringLiteral("bench_exchange: %1 cores, SQLite %2, %3")
              .arg(QThread::idealThreadCount())
              .arg(QString::fromUtf8(sqlite3_libversion()), LoadAverage()));
    if (options.tool.isEmpty()) {
        Print(QStringLiteral("  --tool PATH (morvena-tool) is needed"));
        return 2;
    }
    const Measuring bench{options, work, work.File(QStringLiteral("empty.sqlite"))};
    if (RunProcess(bench.Tool({QStringLiteral("create-db"), bench.empty})).seconds < 0) {
        Print(QStringLiteral("  morvena-tool create-db failed"));
        return 1;
    }
    bool measured = false;
    const QString file = MakeMealMasterFile(bench);
    const QString imported = work.File(QStringLiteral("imported.sqlite"));
    if (!file.isEmpty() && MeasureImport(bench, file, imported)) {
        measured = options.pgServer.isEmpty() || MeasureServerImport(bench, file, imported);
    }
    if (options.pgServer.isEmpty()) {
        Print(QStringLiteral("postgresql  skipped: no --pg-server HOST:PORT given"));
    }
    measured = MeasureExports(bench) && measured;
    measured = MeasureLargeFile(bench) && measured;
    PrintDone();
    return measured ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    Options options;
    if (!ReadOptions(QStringLiteral("bench_exchange"), options.List())) {
        return 2;
    }
    if (!options.copyRows.isEmpty()) {
        return ImportFloor::Copy(options.copyRows, options.into, !options.unsynced);
    }
    if (!options.writeText.isEmpty()) {
        return ExportFloor::Write(options.writeText, options.into, options.filePerRecipe);
    }
    if (!options.readLines.isEmpty()) {
        return MealMasterFile::ReadLines(options.readLines);
    }
    const Workspace work(options.cacheDir);
    return work.Ready() ? Measure(options, work) : 1;
}
