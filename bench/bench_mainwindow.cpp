// Measures the main window: building the recipe tree (RefreshTreeView) on generated databases
// of 10,000 and 100,000 recipes, a click on a recipe node until its page is shown, and the time
// from starting the program to its first page on the sample database. Prints figures only.
//
// Usage: bench_mainwindow --program PATH/morvena --sample PATH/Morvena.mdb [--cache-dir DIR]
//                         [--pg-server HOST:PORT] [--sizes 10000,100000] [--runs N]

#include <gumbo.h>
#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTextBrowser>
#include <QTextDocument>
#include <QThread>
#include <QTreeView>
#include <random>

#include "bench/support/BenchOptions.h"
#include "bench/support/BenchSupport.h"
#include "bench/support/Workspace.h"
#include "core/Windows1250.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "display/PageDocument.h"
#include "display/modDisplay.h"
#include "main/frmMain.h"

using namespace Bench;

namespace {

// The options, in the order of the usage line, and what they set.
struct Options {
    std::vector<Option> List() {
        return {Path("--program", "PATH", program),   Path("--sample", "FILE", sample),
                Text("--cache-dir", "DIR", cacheDir), Text("--pg-server", "HOST:PORT", pgServer),
                Sizes("--sizes", "N,N", sizes),       Count("--runs", runs)};
    }

    QString program;
    QString sample;
    QString cacheDir;
    QString pgServer;
    std::vector<int> sizes{10000, 100000};
    int runs = 7;
    int clicks = 200;
};

std::vector<QModelIndex> RecipeNodes(QTreeView* tree) {
    const QAbstractItemModel* model = tree->model();
    std::vector<QModelIndex> nodes;
    for (int g = 0; g < model->rowCount(); ++g) {
        const QModelIndex group = model->index(g, 0);
        for (int t = 0; t < model->rowCount(group); ++t) {
            const QModelIndex type = model->index(t, 0, group);
            for (int r = 0; r < model->rowCount(type); ++r) {
                nodes.push_back(model->index(r, 0, type));
            }
        }
    }
    return nodes;
}

QString MedianText(const std::vector<double>& values, int decimals = 2) {
    return Fixed(Median(values), decimals);
}

// Where the time of a group page goes: writing the page (queries and file), reading the file,
// the HTML5 parse alone (the floor of showing any page), building the document, and the view
// taking it and painting its first screen; and the former viewer on the same page.
struct PageSteps {
    std::vector<double> writes, reads, parses, builds, shows, formers;
};

// The HTML5 parse alone.
double TimeParse(const QByteArray& bytes) {
    const auto start = Clock::now();
    const QByteArray utf8 = Windows1250::Decode(bytes).toUtf8();
    GumboOutput* parsed =
        gumbo_parse_with_options(&kGumboDefaultOptions, utf8.constData(), utf8.size());
    const double ms = MillisecondsSince(start);
    gumbo_destroy_output(&kGumboDefaultOptions, parsed);
    return ms;
}

// A document built from the page and shown in the window's view in place of its own.
void TimeDocument(frmMain& window, const QByteArray& bytes, PageSteps& steps) {
    auto start = Clock::now();
    auto* document = new QTextDocument(window.webDisplay);
    PageDocument::BuildFromBytes(*document, bytes);
    PageDocument::FitWidth(*document, window.webDisplay->viewport()->width());
    steps.builds.push_back(MillisecondsSince(start));
    QTextDocument* shown = window.webDisplay->document();
    start = Clock::now();
    window.webDisplay->setDocument(document);
    window.webDisplay->viewport()->repaint();
    steps.shows.push_back(MillisecondsSince(start));
    window.webDisplay->setDocument(shown);
    delete document;
}

// The former viewer: Qt's own HTML reader on the same page, shown in a view alike.
double TimeFormerViewer(frmMain& window, const QByteArray& bytes) {
    QTextBrowser former;
    former.resize(window.webDisplay->size());
    former.show();
    const auto start = Clock::now();
    former.setHtml(Windows1250::Decode(bytes));
    former.viewport()->repaint();
    return MillisecondsSince(start);
}

void TimePageSteps(frmMain& window, const QModelIndex& group, PageSteps& steps) {
    auto start = Clock::now();
    modDisplay::DisplayGroup(modGeneral::ItemKey(group).mid(1).toInt());
    steps.writes.push_back(MillisecondsSince(start));
    start = Clock::now();
    QFile file(modGeneral::TempFilename);
    file.open(QIODevice::ReadOnly);
    const QByteArray bytes = file.readAll();
    steps.reads.push_back(MillisecondsSince(start));
    steps.parses.push_back(TimeParse(bytes));
    TimeDocument(window, bytes, steps);
    steps.formers.push_back(TimeFormerViewer(window, bytes));
}

void PrintPageSteps(const QString& where, const PageSteps& steps) {
    Print(where + QStringLiteral("    of which: page written %1 ms, file read %2 ms, HTML5 parse "
                                 "alone (floor) %3 ms, document built (parse included) %4 ms, "
                                 "view takes it and paints %5 ms")
                      .arg(MedianText(steps.writes), MedianText(steps.reads),
                           MedianText(steps.parses), MedianText(steps.builds),
                           MedianText(steps.shows)));
    Print(where + QStringLiteral("    before: the same page through QTextBrowser::setHtml %1 ms "
                                 "(the former viewer, page writing not included)")
                      .arg(MedianText(steps.formers)));
}

// A click on each group node (twice round) until its page is painted, and where that time goes.
void MeasureGroupClicks(frmMain& window, const QString& where) {
    QTreeView* tree = window.tvRecipes;
    const int groups = tree->model()->rowCount();
    std::vector<double> clicks;
    PageSteps steps;
    int rows = 0;
    for (int i = 0; i < 2 * groups; ++i) {
        const QModelIndex group = tree->model()->index(i % groups, 0);
        if (tree->currentIndex() == group) {
            continue;
        }
        const auto start = Clock::now();
        tree->setCurrentIndex(group);
        window.webDisplay->viewport()->repaint();
        clicks.push_back(MillisecondsSince(start));
        rows = std::max(rows, window.webDisplay->document()->blockCount());
        TimePageSteps(window, group, steps);
    }
    Print(where + QStringLiteral("  group node click to page shown median %1 ms (%2 clicks, up to "
                                 "%3 blocks)")
                      .arg(MedianText(clicks))
                      .arg(clicks.size())
                      .arg(rows));
    PrintPageSteps(where, steps);
}

// RefreshTreeView with its first page shown, after a first build that warms the caches; and
// that first page alone, written and shown.
void MeasureTreeBuild(frmMain& window, const QString& where, int runs) {
    std::vector<double> builds;
    std::vector<double> firstPages;
    for (int run = 0; run < runs + 1; ++run) {
        const auto start = Clock::now();
        window.RefreshTreeView();
        window.webDisplay->viewport()->repaint();
        if (run > 0) {
            builds.push_back(MillisecondsSince(start));
            const auto pageStart = Clock::now();
            window.tvRecipes_NodeClick();
            window.webDisplay->viewport()->repaint();
            firstPages.push_back(MillisecondsSince(pageStart));
        }
    }
    Print(where + QStringLiteral("  RefreshTreeView with its first page shown median %1 ms (%2 "
                                 "runs, %3 recipe nodes; that first page alone %4 ms)")
                      .arg(MedianText(builds))
                      .arg(builds.size())
                      .arg(RecipeNodes(window.tvRecipes).size())
                      .arg(MedianText(firstPages)));
}

// Clicks on recipe nodes picked at random (the same ones every run); the node-click handling
// writes and shows the page.
void MeasureRecipeClicks(frmMain& window, const QString& where, int count) {
    const std::vector<QModelIndex> nodes = RecipeNodes(window.tvRecipes);
    std::mt19937 random(20261122);
    std::vector<double> clicks;
    for (int i = 0; i < count && !nodes.empty(); ++i) {
        const QModelIndex node = nodes[random() % nodes.size()];
        const auto start = Clock::now();
        window.tvRecipes->setCurrentIndex(node);
        clicks.push_back(MillisecondsSince(start));
    }
    Print(where + QStringLiteral("  node click to page shown median %1 ms (%2 clicks)")
                      .arg(MedianText(clicks, 3))
                      .arg(clicks.size()));
}

void MeasureWindow(const QString& label, int recipes, const Options& options) {
    const QString where = Where(label, recipes);
    frmMain window;
    window.show();
    QApplication::processEvents();
    MeasureTreeBuild(window, where, options.runs);
    MeasureGroupClicks(window, where);
    MeasureRecipeClicks(window, where, options.clicks);
}

// A folder of its own for one start of the program: the sample database and settings that
// name the display file, whose appearance marks the first page shown. Returns that file.
QString PrepareStart(const QString& folder, const QString& sample) {
    QDir().mkpath(folder + QStringLiteral("/config"));
    QFile::copy(sample, folder + QStringLiteral("/Morvena.mdb"));
    const QString page = folder + QStringLiteral("/page.html");
    QFile settings(folder + QStringLiteral("/config/machine.reg"));
    settings.open(QIODevice::WriteOnly);
    settings.write(QStringLiteral("Windows Registry Editor Version 5.00\n\n[Software\\Orlessa\\"
                                  "Morvena]\n\"TempFilename\"=\"%1\"\n")
                       .arg(page)
                       .toUtf8());
    settings.close();
    return page;
}

// Milliseconds from starting the program until the page is there (at most 20 s), or -1 after
// printing that it never came.
double TimeStart(const QString& program, const QString& folder, const QString& page) {
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    environment.insert(QStringLiteral("MORVENA_CONFIG_DIR"), folder + QStringLiteral("/config"));
    process.setProcessEnvironment(environment);
    process.setWorkingDirectory(folder);
    QElapsedTimer timer;
    timer.start();
    process.start(program, {});
    while (!QFileInfo::exists(page) && timer.elapsed() < 20000 &&
           process.state() != QProcess::NotRunning) {
        QThread::usleep(200);
    }
    const double milliseconds = timer.nsecsElapsed() / 1e6;
    process.kill();
    process.waitForFinished();
    if (!QFileInfo::exists(page)) {
        Print(QStringLiteral("start  the program showed no page: %1")
                  .arg(QString::fromUtf8(process.readAllStandardError())));
        return -1.0;
    }
    return milliseconds;
}

void MeasureStart(const Options& options, const QString& work) {
    if (options.program.isEmpty() || options.sample.isEmpty()) {
        Print(QStringLiteral("start  skipped: --program and --sample not given"));
        return;
    }
    std::vector<double> starts;
    for (int run = 0; run < options.runs + 1; ++run) {
        const QString folder = work + QStringLiteral("/start%1").arg(run);
        const double milliseconds =
            TimeStart(options.program, folder, PrepareStart(folder, options.sample));
        if (milliseconds < 0) {
            return;
        }
        if (run > 0) {
            starts.push_back(milliseconds);
        }
    }
    Print(
        QStringLiteral("start  sample database  process start to first page median %1 ms (%2 runs)")
            .arg(MedianText(starts))
            .arg(starts.size()));
}

int Measure(const Options& options, const Workspace& work) {
    Print(QStringLiteral("bench_mainwindow: %1 cores, %2")
              .arg(QThread::idealThreadCount())
              .arg(LoadAverage()));
    MeasureStart(options, work.Path());
    for (const int recipes : options.sizes) {
        const QString file = work.Database(recipes);
        if (!file.isEmpty() && OpenShared(modDatabase::FileDatabase, QString(), file)) {
            MeasureWindow(QStringLiteral("sqlite"), recipes, options);
        }
        if (options.pgServer.isEmpty()) {
            continue;
        }
        modDatabase::CloseConnection();
        if (OpenGeneratedOnServer(options.pgServer, QStringLiteral("bench_window_%1").arg(recipes),
                                  recipes)) {
            MeasureWindow(QStringLiteral("postgresql"), recipes, options);
        }
    }
    modDatabase::CloseConnection();
    PrintDone();
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    return Main<QApplication>(argc, argv, "bench_mainwindow", Measure);
}
