// Measures pages built to hurt: a method text of 15,000 nested divisions, one of 50,000 nested
// tables and one of a million entities. Each is shown (read into a document and laid out at a
// window's width, in this process) and printed by morvena-tool into a PDF (a whole process,
// with its peak memory). The floor, measured in the same run, is the page with the same visible
// text and no markup (the entities written as the characters they stand for). Targets: 10 s and
// 500 MB per page. Prints figures only.
//
// Usage: bench_pages --tool PATH

#include <sqlite3.h>

#include <QFile>
#include <QTextDocument>

#include "bench/support/BenchOptions.h"
#include "bench/support/BenchSupport.h"
#include "bench/support/Workspace.h"
#include "display/PageDocument.h"

using namespace Bench;

namespace {

constexpr double TargetSeconds = 10.0;
constexpr double TargetMegabytes = 500.0;

struct Options {
    std::vector<Option> List() { return {Path("--tool", "PATH", tool)}; }

    QString cacheDir;  // none: the database is made anew
    QString tool;
};

QString Repeated(const QString& piece, int times) { return piece.repeated(times); }

QString Nested(const QString& open, const QString& text, const QString& close, int depth) {
    return Repeated(open, depth) + text + Repeated(close, depth);
}

struct Case {
    QString name;
    QString hostile;
    QString floor;
};

std::vector<Case> Cases() {
    return {{QStringLiteral("15,000 nested <div>"),
             Nested(QStringLiteral("<div>"), QStringLiteral("globoko"), QStringLiteral("</div>"),
                    15000),
             QStringLiteral("globoko")},
            {QStringLiteral("50,000 nested tables"),
             Nested(QStringLiteral("<table><tr><td>"), QStringLiteral("miza"),
                    QStringLiteral("</td></tr></table>"), 50000),
             QStringLiteral("miza")},
            {QStringLiteral("a million entities"), Repeated(QStringLiteral("&amp;"), 1000000),
             QString(1000000, QLatin1Char('&'))}};
}

// The sample collection with the method text of recipe 1's first section set to `text`.
bool WriteMethod(const QString& database, const QString& text) {
    sqlite3* db = nullptr;
    if (sqlite3_open(QFile::encodeName(database).constData(), &db) != SQLITE_OK) {
        sqlite3_close(db);
        return false;
    }
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(db,
                       "UPDATE Section SET instructions = ?1 WHERE sectionID = (SELECT "
                       "MIN(sectionID) FROM RecipeSection WHERE recipeID = 1)",
                       -1, &statement, nullptr);
    const QByteArray bytes = text.toUtf8();
    sqlite3_bind_text(statement, 1, bytes.constData(), int(bytes.size()), SQLITE_STATIC);
    const bool written = sqlite3_step(statement) == SQLITE_DONE && sqlite3_changes(db) == 1;
    sqlite3_finalize(statement);
    sqlite3_close(db);
    return written;
}

// Reading the page into a document and laying it out as the window shows it; milliseconds.
double ShowMilliseconds(const QString& html) {
    const auto start = Clock::now();
    QTextDocument document;
    PageDocument::Build(document, html);
    PageDocument::FitWidth(document, 900);
    document.size();  // the layout of the whole document
    return MillisecondsSince(start);
}

ProcessRun PrintPage(const Options& options, const QString& database, const QString& pdf) {
    QFile::remove(pdf);
    return RunProcess({options.tool, QStringLiteral("print"), QStringLiteral("R"),
                       QStringLiteral("1"), QStringLiteral("--pdf"), pdf,
                       QStringLiteral("--database"), database});
}

void MeasurePage(const Options& options, const Workspace& work, const Case& page) {
    const QString database = work.File(QStringLiteral("strani.db"));
    const QString pdf = work.File(QStringLiteral("stran.pdf"));
    if (!WriteMethod(database, page.floor)) {
        Print(page.name + QStringLiteral("  the method text could not be written"));
        return;
    }
    const double floorShow = ShowMilliseconds(page.floor);
    const ProcessRun floorPrint = PrintPage(options, database, pdf);
    WriteMethod(database, page.hostile);
    const double show = ShowMilliseconds(page.hostile);
    const ProcessRun print = PrintPage(options, database, pdf);
    if (print.seconds < 0 || floorPrint.seconds < 0) {
        Print(page.name + QStringLiteral("  printing failed"));
        return;
    }
    const bool met = show / 1000.0 <= TargetSeconds && print.seconds <= TargetSeconds &&
                     print.peakMegabytes <= TargetMegabytes;
    Print(page.name +
          QStringLiteral("  shown %1 s (floor %2 s, ratio %3); printed %4 s, peak %5 MB (floor "
                         "%6 s, %7 MB, ratio %8); PDF %9 KB  %10")
              .arg(Fixed(show / 1000.0), Fixed(floorShow / 1000.0), Fixed(Ratio(show, floorShow)),
                   Fixed(print.seconds), Fixed(print.peakMegabytes, 0), Fixed(floorPrint.seconds),
                   Fixed(floorPrint.peakMegabytes, 0),
                   Fixed(Ratio(print.seconds, floorPrint.seconds)),
                   QString::number(QFile(pdf).size() / 1024))
              .arg(Verdict(QStringLiteral("<= 10 s and <= 500 MB"), met)));
}

int Measure(const Options& options, const Workspace& work) {
    Print(QStringLiteral("bench_pages: %1").arg(LoadAverage()));
    if (options.tool.isEmpty()) {
        Print(QStringLiteral("  --tool PATH (morvena-tool) is needed"));
        return 2;
    }
    if (RunProcess({options.tool, QStringLiteral("create-db"), QStringLiteral("--sample"),
                    work.File(QStringLiteral("strani.db"))})
            .seconds < 0) {
        Print(QStringLiteral("  morvena-tool create-db failed"));
        return 1;
    }
    for (const Case& page : Cases()) {
        MeasurePage(options, work, page);
    }
    PrintDone();
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    return Main<QGuiApplication>(argc, argv, "bench_pages", Measure);
}
