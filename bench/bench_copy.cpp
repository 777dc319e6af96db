// Measures moving and keeping a collection of generated recipes (100,000 unless --recipes
// says otherwise): morvena-tool's copy from a file to the server and back, and backup of a
// file. Each figure is printed beside a floor measured in the same run on the same data:
//   copy into a server database: the generator writing the same rows there (no reading, no
//     checking);
//   copy into a file: the generator writing the same rows into a new file;
//   backup: copying the file's bytes (no consistency, no check).
// The copies' target is 60 s each way. Prints figures only.
//
// Usage: bench_copy [--cache-dir DIR] [--pg-server HOST:PORT] [--recipes N]

#include <QCoreApplication>
#include <QFile>
#include <QThread>
#include <algorithm>

#include "bench/support/BenchOptions.h"
#include "bench/support/BenchSupport.h"
#include "bench/support/Workspace.h"
#include "collection/CollectionBackup.h"
#include "collection/CollectionCopy.h"
#include "core/database/modDatabase.h"

using namespace Bench;

namespace {

constexpr double TargetSeconds = 60.0;

// The options, in the order of the usage line, and what they set.
struct Options {
    std::vector<Option> List() {
        return {Text("--cache-dir", "DIR", cacheDir), Text("--pg-server", "HOST:PORT", pgServer),
                Count("--recipes", recipes)};
    }

    QString cacheDir;
    QString pgServer;
    int recipes = 100000;
};

DatabaseAddress::Address FileAddress(const QString& file) {
    return {modDatabase::FileDatabase, QString(), file, QString(), QString()};
}

DatabaseAddress::Address ServerAddress(const QString& server, const QString& database) {
    return {modDatabase::ServerDatabase, server, database, PgUser, PgPassword};
}

// Seconds of one copy, or a negative number after printing why it failed.
double TimeCopy(const DatabaseAddress::Address& from, const DatabaseAddress::Address& to) {
    const auto start = Clock::now();
    const CollectionCopy::Outcome outcome = CollectionCopy::Copy(from, to, {});
    if (!outcome.copied) {
        Print(QStringLiteral("  copy failed: %1").arg(outcome.message));
        return -1.0;
    }
    return Milliseconds(Clock::now() - start) / 1000.0;
}

void PrintCopy(const QString& way, double seconds, double floorSeconds) {
    Print(QStringLiteral("%1  copy %2 s  floor (generator into the same kind) %3 s  target %4 s "
                         " %5")
              .arg(way, Fixed(seconds), Fixed(floorSeconds), Fixed(TargetSeconds, 0),
                   seconds <= TargetSeconds ? QStringLiteral("met") : QStringLiteral("NOT MET")));
}

int MeasureBackup(const QString& source, const QString& folder) {
    const QString backup = folder + QStringLiteral("/backup.sqlite");
    const QString plain = folder + QStringLiteral("/plain.sqlite");
    RemoveSqliteFiles(backup);
    RemoveSqliteFiles(plain);
    auto start = Clock::now();
    const CollectionBackup::Outcome outcome = CollectionBackup::Backup(source, backup);
    const double seconds = Milliseconds(Clock::now() - start) / 1000.0;
    start = Clock::now();
    const bool copied = QFile::copy(source, plain);
    const double floorSeconds = Milliseconds(Clock::now() - start) / 1000.0;
    RemoveSqliteFiles(backup);
    RemoveSqliteFiles(plain);
    if (!outcome.done || !copied) {
        Print(QStringLiteral("  backup failed: %1").arg(outcome.message));
        return 1;
    }
    Print(QStringLiteral("file backup  %1 s (with integrity check)  floor (copying the file's "
                         "bytes) %2 s")
              .arg(Fixed(seconds), Fixed(floorSeconds)));
    return 0;
}

// Both ways between a file and the server, each beside the generator writing the same rows into
// a database of the same kind.
int MeasureCopies(const QString& server, const QString& source, int recipes,
                  const Workspace& work) {
    const QString fileBack = work.File(QStringLiteral("back.sqlite"));
    const QString fileFloor = work.File(QStringLiteral("floor.sqlite"));
    const double there = TimeCopy(FileAddress(source), ServerAddress(server, "bench_copy"));
    const double thereFloor = GenerateInto(modDatabase::ServerDatabase, server,
                                           QStringLiteral("bench_copy_floor"), recipes);
    const double back = TimeCopy(ServerAddress(server, "bench_copy"), FileAddress(fileBack));
    const double backFloor = GenerateInto(modDatabase::FileDatabase, QString(), fileFloor, recipes);
    RemoveSqliteFiles(fileBack);
    RemoveSqliteFiles(fileFloor);
    if (there < 0 || thereFloor < 0 || back < 0 || backFloor < 0) {
        return 1;
    }
    Print(QStringLiteral("%1 recipes").arg(recipes));
    PrintCopy(QStringLiteral("file to server"), there, thereFloor);
    PrintCopy(QStringLiteral("server to file"), back, backFloor);
    return 0;
}

int Measure(const Options& options, const Workspace& work) {
    Print(QStringLiteral("bench_copy: %1 cores, %2")
              .arg(QThread::idealThreadCount())
              .arg(LoadAverage()));
    const QString source = work.Database(options.recipes);
    if (source.isEmpty()) {
        return 1;
    }
    int status = MeasureBackup(source, work.Path());
    const QString& server = options.pgServer;
    if (server.isEmpty()) {
        Print(QStringLiteral("postgresql  skipped: no --pg-server HOST:PORT given"));
    } else if (!CreateServerDatabase(server, QStringLiteral("bench_copy")) ||
               !CreateServerDatabase(server, QStringLiteral("bench_copy_floor"))) {
        return 1;
    } else {
        status = std::max(status, MeasureCopies(server, source, options.recipes, work));
    }
    PrintDone();
    return status;
}

}  // namespace

int main(int argc, char** argv) {
    return Main<QCoreApplication>(argc, argv, "bench_copy", Measure);
}
