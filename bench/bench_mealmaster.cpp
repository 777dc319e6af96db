// Measures reading a MealMaster file of --megabytes MB (50 by default), generated in a temporary
// folder: recipes of two ingredient columns, a heading, a continuation and two paragraphs. Each
// reading runs as a process of its own (this program with --read), so that its wall time and
// peak resident memory are its own; the best of --runs. The floor, measured in the same run on
// the same file: reading its lines alone with QFile::readLine (--lines). A file is never held
// whole, so the peak memory should not grow with the file. Prints figures only.
//
// Usage: bench_mealmaster [--megabytes 50] [--runs 3]
#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>

#include "bench/support/BenchOptions.h"
#include "bench/support/BenchSupport.h"
#include "bench/support/MealMasterFile.h"
#include "exchange/MealMasterFormat.h"

using namespace Bench;

namespace {

struct Options {
    std::vector<Option> List() {
        return {Count("--megabytes", megabytes), Count("--runs", runs),
                Path("--read", "FILE", read), Path("--lines", "FILE", lines)};
    }

    int megabytes = 50;
    int runs = 3;
    QString read;   // a child: reads this file's recipes
    QString lines;  // a child: reads this file's lines only
};

int ReadRecipes(const QString& fileName) {
    QFile file(fileName);
    int count = 0;
    Exchange::FileNotes notes;
    if (file.open(QIODevice::ReadOnly)) {
        Exchange::MealMasterFormat::Read(
            file, [&count](Exchange::Recipe&&) { ++count; }, notes);
    }
    return count > 0 ? 0 : 1;
}

ProcessRun Best(const QString& mode, const QString& fileName, int runs) {
    ProcessRun best;
    for (int run = 0; run < runs; ++run) {
        const ProcessRun one =
            RunProcess({QCoreApplication::applicationFilePath(), mode, fileName});
        if (one.seconds < 0) {
            return one;
        }
        if (best.seconds < 0 || one.seconds < best.seconds) {
            best = one;
        }
    }
    return best;
}

QString Figure(const QString& label, const ProcessRun& run) {
    return QStringLiteral("%1  %2 s  peak %3 MB")
        .arg(label.leftJustified(28), Fixed(run.seconds), Fixed(run.peakMegabytes, 1));
}

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    Options options;
    if (!ReadOptions(QStringLiteral("bench_mealmaster"), options.List())) {
        return 2;
    }
    if (!options.read.isEmpty()) {
        return ReadRecipes(options.read);
    }
    if (!options.lines.isEmpty()) {
        return MealMasterFile::ReadLines(options.lines);
    }
    QTemporaryDir folder;
    const QString fileName = folder.filePath(QStringLiteral("generated.mmf"));
    const int recipes = MealMasterFile::Write(fileName, options.megabytes);
    Print(QStringLiteral("MealMaster file  %1 MB  %2 recipes")
              .arg(Fixed(QFile(fileName).size() / 1048576.0, 1))
              .arg(recipes));
    const ProcessRun read = Best(QStringLiteral("--read"), fileName, options.runs);
    const ProcessRun lines = Best(QStringLiteral("--lines"), fileName, options.runs);
    Print(Figure(QStringLiteral("reading the recipes"), read));
    Print(Figure(QStringLiteral("floor: reading the lines"), lines));
    Print(QStringLiteral("recipes / floor  %1x").arg(Fixed(Ratio(read.seconds, lines.seconds), 1)));
    PrintDone();
    return read.seconds < 0 || lines.seconds < 0 ? 1 : 0;
}
