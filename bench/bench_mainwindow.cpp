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
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTextBrowser>
#include <QTextDocument>
#include <QThread>
#include <QTreeWidget>
#include <random>

#include "bench/support/BenchSupport.h"
#include "core/Windows1250.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "display/PageDocument.h"
#include "display/modDisplay.h"
#include "main/frmMain.h"

using namespace Bench;

namespace {

struct Options {
    QString program;
    QString sample;
    QString cacheDir;
    QString pgServer;
    std::vector<int> sizes{10000, 100000};
    int runs = 7;
    int clicks = 200;
};

std::vector<QTreeWidgetItem*> RecipeNodes(QTreeWidget* tree) {
    std::vector<QTreeWidgetItem*> nodes;
    for (int g = 0; g < tree->topLevelItemCount(); ++g) {
        for (int t = 0; t < tree->topLevelItem(g)->childCount(); ++t) {
            QTreeWidgetItem* type = tree->topLevelItem(g)->child(t);
            for (int r = 0; r < type->childCount(); ++r) {
                nodes.push_back(type->child(r));
            }
        }
    }
    return nodes;
}

// A click on each group node until its page is painted, and where that time goes: writing the
// page (queries and file), reading the file, the HTML5 parse alone (the floor of showing any
// page), building the document, and the view taking it and painting its first screen.
void MeasureGroupClicks(frmMain& window, const QString& label, int recipes) {
    std::vector<double> clicks, writes, reads, parses, builds, shows, formers;
    int rows = 0;
    for (int i = 0; i < 2 * window.tvRecipes->topLevelItemCount(); ++i) {
        QTreeWidgetItem* group =
            window.tvRecipes->topLevelItem(i % window.tvRecipes->topLevelItemCount());
        if (window.tvRecipes->currentItem() == group) {
            continue;
        }
        auto start = Clock::now();
        window.tvRecipes->setCurrentItem(group);
        window.webDisplay->viewport()->repaint();
        clicks.push_back(Milliseconds(Clock::now() - start));
        rows = std::max(rows, window.webDisplay->document()->blockCount());

        start = Clock::now();
        modDisplay::DisplayGroup(modGeneral::ItemKey(group).mid(1).toInt());
        writes.push_back(Milliseconds(Clock::now() - start));
        start = Clock::now();
        QFile file(modGeneral::TempFilename);
        file.open(QIODevice::ReadOnly);
        const QByteArray bytes = file.readAll();
        reads.push_back(Milliseconds(Clock::now() - start));
        start = Clock::now();
        const QByteArray utf8 = Windows1250::Decode(bytes).toUtf8();
        GumboOutput* parsed =
            gumbo_parse_with_options(&kGumboDefaultOptions, utf8.constData(), utf8.size());
        parses.push_back(Milliseconds(Clock::now() - start));
        gumbo_destroy_output(&kGumboDefaultOptions, parsed);
        start = Clock::now();
        auto* document = new QTextDocument(window.webDisplay);
        PageDocument::BuildFromBytes(*document, bytes);
        PageDocument::FitWidth(*document, window.webDisplay->viewport()->width());
        builds.push_back(Milliseconds(Clock::now() - start));
        QTextDocument* shown = window.webDisplay->document();
        start = Clock::now();
        window.webDisplay->setDocument(document);
        window.webDisplay->viewport()->repaint();
        shows.push_back(Milliseconds(Clock::now() - start));
        window.webDisplay->setDocument(shown);
        delete document;
        // the former viewer: Qt's own HTML reader on the same page, shown in a view alike
        QTextBrowser former;
        former.resize(window.webDisplay->size());
        former.show();
        start = Clock::now();
        former.setHtml(Windows1250::Decode(bytes));
        former.viewport()->repaint();
        formers.push_back(Milliseconds(Clock::now() - start));
    }
    Print(QStringLiteral("%1  %2 recipes  group node click to page shown median %3 ms "
                         "(%4 clicks, up to %5 blocks)")
              .arg(label)
              .arg(recipes)
              .arg(Fixed(Median(clicks)))
              .arg(clicks.size())
              .arg(rows));
    Print(QStringLiteral("%1  %2 recipes    of which: page written %3 ms, file read %4 ms, "
                         "HTML5 parse alone (floor) %5 ms, document built (parse included) %6 ms, "
                         "view takes it and paints %7 ms")
              .arg(label)
              .arg(recipes)
              .arg(Fixed(Median(writes)))
              .arg(Fixed(Median(reads)))
              .arg(Fixed(Median(parses)))
              .arg(Fixed(Median(builds)))
              .arg(Fixed(Median(shows))));
    Print(QStringLiteral("%1  %2 recipes    before: the same page through QTextBrowser::setHtml "
                         "%3 ms (the former viewer, page writing not included)")
              .arg(label)
              .arg(recipes)
              .arg(Fixed(Median(formers))));
}

void MeasureWindow(const QString& label, int recipes, const Options& options) {
    frmMain window;
    window.show();
    QApplication::processEvents();
    std::vector<double> builds;
    std::vector<double> firstPages;
    for (int run = 0; run < options.runs + 1; ++run) {
        const auto start = Clock::now();
        window.RefreshTreeView();
        window.webDisplay->viewport()->repaint();
        if (run > 0) {  // the first build warms the caches
            builds.push_back(Milliseconds(Clock::now() - start));
            // floor: the first group's page alone, written and shown
            const auto pageStart = Clock::now();
            window.tvRecipes_NodeClick();
            window.webDisplay->viewport()->repaint();
            firstPages.push_back(Milliseconds(Clock::now() - pageStart));
        }
    }
    const int recipeNodes = static_cast<int>(RecipeNodes(window.tvRecipes).size());
    Print(QStringLiteral("%1  %2 recipes  RefreshTreeView with its first page shown median %3 ms "
                         "(%4 runs, %5 recipe nodes; that first page alone %6 ms)")
              .arg(label)
              .arg(recipes)
              .arg(Fixed(Median(builds)))
              .arg(builds.size())
              .arg(recipeNodes)
              .arg(Fixed(Median(firstPages))));
    MeasureGroupClicks(window, label, recipes);
    const std::vector<QTreeWidgetItem*> nodes = RecipeNodes(window.tvRecipes);
    std::mt19937 random(20261122);
    std::vector<double> clicks;
    for (int i = 0; i < options.clicks && !nodes.empty(); ++i) {
        QTreeWidgetItem* node = nodes[random() % nodes.size()];
        const auto start = Clock::now();
        // the node-click handling writes and shows the page
        window.tvRecipes->setCurrentItem(node);
        clicks.push_back(Milliseconds(Clock::now() - start));
    }
    Print(QStringLiteral("%1  %2 recipes  node click to page shown median %3 ms (%4 clicks)")
              .arg(label)
              .arg(recipes)
              .arg(Fixed(Median(clicks), 3))
              .arg(clicks.size()));
}

void MeasureStart(const Options& options, const QString& work) {
    if (options.program.isEmpty() || options.sample.isEmpty()) {
        Print(QStringLiteral("start  skipped: --program and --sample not given"));
        return;
    }
    std::vector<double> starts;
    for (int run = 0; run < options.runs + 1; ++run) {
        const QString folder = work + QStringLiteral("/start%1").arg(run);
        QDir().mkpath(folder + QStringLiteral("/config"));
        QFile::copy(options.sample, folder + QStringLiteral("/Morvena.mdb"));
        const QString page = folder + QStringLiteral("/page.html");
        QFile settings(folder + QStringLiteral("/config/machine.reg"));
        settings.open(QIODevice::WriteOnly);
        settings.write(QStringLiteral("Windows Registry Editor Version 5.00\n\n[Software\\Orlessa\\"
                                      "Morvena]\n\"TempFilename\"=\"%1\"\n")
                           .arg(page)
                           .toUtf8());
        settings.close();
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        environment.insert(QStringLiteral("MORVENA_CONFIG_DIR"),
                           folder + QStringLiteral("/config"));
        process.setProcessEnvironment(environment);
        process.setWorkingDirectory(folder);
        QElapsedTimer timer;
        timer.start();
        process.start(options.program, {});
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
            return;
        }
        if (run > 0) {
            starts.push_back(milliseconds);
        }
    }
    Print(
        QStringLiteral("start  sample database  process start to first page median %1 ms (%2 runs)")
            .arg(Fixed(Median(starts)))
            .arg(starts.size()));
}

bool ParseOptions(const QStringList& arguments, Options& options) {
    for (int i = 1; i + 1 < arguments.size(); i += 2) {
        const QString& name = arguments[i];
        const QString& value = arguments[i + 1];
        if (name == QLatin1String("--program")) {
            options.program = QFileInfo(value).absoluteFilePath();
        } else if (name == QLatin1String("--sample")) {
            options.sample = QFileInfo(value).absoluteFilePath();
        } else if (name == QLatin1String("--cache-dir")) {
            options.cacheDir = QFileInfo(value).absoluteFilePath();
        } else if (name == QLatin1String("--pg-server")) {
            options.pgServer = value;
        } else if (name == QLatin1String("--runs")) {
            options.runs = std::max(1, value.toInt());
        } else if (name == QLatin1String("--sizes")) {
            options.sizes.clear();
            for (const QString& size : value.split(QLatin1Char(','))) {
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
        std::fprintf(stderr,
                     "usage: bench_mainwindow [--program PATH] [--sample FILE] [--cache-dir DIR] "
                     "[--pg-server HOST:PORT] [--sizes N,N] [--runs N]\n");
        return 2;
    }
    QTemporaryDir work;
    qputenv("MORVENA_CONFIG_DIR", QFile::encodeName(work.path() + QStringLiteral("/config")));
    const bool cached = !options.cacheDir.isEmpty();
    const QString folder = cached ? options.cacheDir : work.path();
    QDir().mkpath(folder);
    QDir::setCurrent(work.path());
    modGeneral::TempFilename = work.path() + QStringLiteral("/tmpRecipeDB.html");
    Print(QStringLiteral("bench_mainwindow: %1 cores, %2")
              .arg(QThread::idealThreadCount())
              .arg(LoadAverage()));

    MeasureStart(options, work.path());
    for (const int recipes : options.sizes) {
        const QString file = SqliteDatabase(folder, cached, recipes);
        if (!file.isEmpty() && OpenShared(modDatabase::FileDatabase, QString(), file)) {
            MeasureWindow(QStringLiteral("sqlite"), recipes, options);
        }
        if (options.pgServer.isEmpty()) {
            continue;
        }
        const QString name = QStringLiteral("bench_window_%1").arg(recipes);
        modDatabase::CloseConnection();
        if (CreateServerDatabase(options.pgServer, name) &&
            GenerateInto(modDatabase::ServerDatabase, options.pgServer, name, recipes) >= 0 &&
            OpenShared(modDatabase::ServerDatabase, options.pgServer, name)) {
            QSqlQuery(modDatabase::Connection->Database()).exec(QStringLiteral("VACUUM ANALYZE"));
            MeasureWindow(QStringLiteral("postgresql"), recipes, options);
        }
    }
    modDatabase::CloseConnection();
    Print(QStringLiteral("done, %1").arg(LoadAverage()));
    return 0;
}
