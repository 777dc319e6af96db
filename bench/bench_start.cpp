// Measures the program's start on generated databases, whole processes: from starting it to the
// main window with the first group's page painted, and its peak memory; beside the floor, the
// same page written by `morvena-tool page` (a process that opens the database, writes the page and
// ends). The started program is this one with --show-first-page: it starts as the program does
// (settings, start-up, the main window) and ends when the page has been painted once, leaving
// its resident memory at that moment for the report. Prints figures only.
//
// Usage: bench_start --tool PATH [--cache-dir DIR] [--sizes 100000,1000000] [--runs N]

#include <QApplication>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTextBrowser>
#include <QTimer>
#include <cstdlib>
#include <memory>

#include "bench/support/BenchOptions.h"
#include "bench/support/BenchSupport.h"
#include "bench/support/Workspace.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "core/startup/Startup.h"
#include "core/ui/QtTranslation.h"
#include "main/frmMain.h"

using namespace Bench;

namespace {

struct Options {
    std::vector<Option> List() {
        return {Path("--tool", "PATH", tool), Text("--cache-dir", "DIR", cacheDir),
                Sizes("--sizes", "N,N", sizes), Count("--runs", runs)};
    }

    QString tool;
    QString cacheDir;
    std::vector<int> sizes{100000, 1000000};
    int runs = 3;
};

// Where the started program leaves its resident memory at the first paint.
const char* const ResidentFileVariable = "BENCH_START_RESIDENT_FILE";

void WriteResident() {
    QFile resident(QFile::decodeName(qgetenv(ResidentFileVariable)));
    if (resident.open(QIODevice::WriteOnly)) {
        resident.write(StatusField("VmRSS:").toLatin1());
    }
}

// Ends the program at once when the page view has painted a page.
class FirstPaint : public QObject {
public:
    explicit FirstPaint(QTextBrowser* view) : m_view(view) {
        view->viewport()->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::Paint && !m_view->document()->isEmpty()) {
            QTimer::singleShot(0, [] {
                WriteResident();
                std::_Exit(0);  // the time to close is not measured
            });
        }
        return false;
    }

private:
    QTextBrowser* m_view;
};

// The started program: as the program starts, without its settings dialog.
int ShowFirstPage(int argc, char** argv) {
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Morvena"));
    QtTranslation::Install(app);
    std::unique_ptr<frmMain> window;
    std::unique_ptr<FirstPaint> watch;
    const bool started = modGeneral::Main({
        [] { std::exit(3); },  // the settings named no database that opens
        [&] {
            window = std::make_unique<frmMain>();
            watch = std::make_unique<FirstPaint>(window->webDisplay);
            window->show();
        },
        [] {},
    });
    return started ? QApplication::exec() : 1;
}

// Settings for one start: the database and the display file in the folder.
void WriteSettings(const QString& folder, const QString& database) {
    QDir().mkpath(folder + QStringLiteral("/config"));
    QFile settings(folder + QStringLiteral("/config/machine.reg"));
    settings.open(QIODevice::WriteOnly);
    settings.write(QStringLiteral("Windows Registry Editor Version 5.00\n\n[Software\\Orlessa\\"
                                  "Morvena]\n\"DatabaseName\"=\"%1\"\n\"TempFilename\"=\"%2\"\n"
                                  "\"DatabaseType\"=dword:00000001\n")
                       .arg(database, folder + QStringLiteral("/page.html"))
                       .toUtf8());
}

qint32 FirstGroup() {
    Recordset groups =
        modDatabase::GetRecordset(QStringLiteral("SELECT * FROM [Group] ORDER BY name;"));
    return groups.Eof() ? 0 : groups.Long(QStringLiteral("groupID"));
}

// Median seconds and the largest peak of `runs` runs after one that warms the caches.
ProcessRun Runs(const QStringList& command, int runs) {
    std::vector<double> seconds;
    ProcessRun result;
    for (int run = 0; run < runs + 1; ++run) {
        const ProcessRun one = RunProcess(command, 120.0);
        if (one.seconds < 0) {
            return one;
        }
        if (run > 0) {
            seconds.push_back(one.seconds);
            result.peakMegabytes = std::max(result.peakMegabytes, one.peakMegabytes);
        }
    }
    result.seconds = Median(seconds);
    return result;
}

void MeasureStart(const Options& options, const Workspace& work, int recipes) {
    const QString database = work.Database(recipes);
    if (database.isEmpty() || !OpenShared(modDatabase::FileDatabase, QString(), database)) {
        return;
    }
    const qint32 group = FirstGroup();
    modDatabase::CloseConnection();
    const QString folder = work.Path() + QStringLiteral("/start%1").arg(recipes);
    WriteSettings(folder, database);
    qputenv("MORVENA_CONFIG_DIR", QFile::encodeName(folder + QStringLiteral("/config")));
    const QString residentFile = folder + QStringLiteral("/resident.txt");
    qputenv(ResidentFileVariable, QFile::encodeName(residentFile));
    const ProcessRun start =
        Runs({QCoreApplication::applicationFilePath(), QStringLiteral("--show-first-page")},
             options.runs);
    const ProcessRun floor =
        Runs({options.tool, QStringLiteral("page"), QStringLiteral("G"), QString::number(group),
              QStringLiteral("--output"), folder + QStringLiteral("/floor.html"),
              QStringLiteral("--database"), database},
             options.runs);
    if (start.seconds < 0 || floor.seconds < 0) {
        Print(Where(QStringLiteral("sqlite"), recipes) +
              QStringLiteral("  a process failed (start %1 s, floor %2 s)")
                  .arg(Fixed(start.seconds))
                  .arg(Fixed(floor.seconds)));
        return;
    }
    QFile residentText(residentFile);
    const QString resident = residentText.open(QIODevice::ReadOnly)
                                 ? QString::fromLatin1(residentText.readAll())
                                 : QStringLiteral("unknown");
    const double ratio = Ratio(start.seconds, floor.seconds);
    const QString verdict = recipes >= 1000000
                                ? Verdict(QStringLiteral("<= 3 s, < 250 MB"),
                                          start.seconds <= 3.0 && start.peakMegabytes < 250.0)
                                : Verdict(QStringLiteral("<= 3 x floor"), ratio <= 3.0);
    Print(Where(QStringLiteral("sqlite"), recipes) +
          QStringLiteral("  start to first group page painted median %1 ms, peak %2 MB %3  floor "
                         "(morvena-tool page G%4, whole process) %5 ms, peak %6 MB  ratio %7 "
                         "(%8 runs; resident at the last run's first paint %9)")
              .arg(Fixed(start.seconds * 1000))
              .arg(Fixed(start.peakMegabytes, 1))
              .arg(verdict)
              .arg(group)
              .arg(Fixed(floor.seconds * 1000))
              .arg(Fixed(floor.peakMegabytes, 1))
              .arg(Fixed(ratio))
              .arg(options.runs)
              .arg(resident));
}

int Measure(const Options& options, const Workspace& work) {
    Print(QStringLiteral("bench_start: %1").arg(LoadAverage()));
    if (options.tool.isEmpty()) {
        Print(QStringLiteral("bench_start: --tool not given"));
        return 2;
    }
    for (const int recipes : options.sizes) {
        MeasureStart(options, work, recipes);
    }
    PrintDone();
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 2 && qstrcmp(argv[1], "--show-first-page") == 0) {
        return ShowFirstPage(argc, argv);
    }
    return Main<QApplication>(argc, argv, "bench_start", Measure);
}
