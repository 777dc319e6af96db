// Measures the search window on generated databases of 100,000 recipes, in both shapes (the
// uniform stress collection and the home-cooking one): the time from "Išči" to the result list
// filled and painted, for the worked example of the query design, one ingredient, a method text
// that most recipes hold and one that none holds; the same split into the query (GetRecordset)
// and the list (reading the rows into the list's model and painting); and beside each the floor:
// the same SQL text through the sqlite3 C API with the program's functions registered, and
// without them (SQLite's built-in NOCASE and LIKE, for scale). SQLite, and PostgreSQL (without a
// floor) when --pg-server is given. With --tool, each search also as a whole process of
// morvena-tool search beside the floor of the same SQL text run by the sqlite3 shell (on
// PostgreSQL by psql, the text as the server receives it). Prints figures only.
//
// Usage: bench_search [--cache-dir DIR] [--pg-server HOST:PORT] [--sizes 100000] [--runs N]
//                     [--shapes uniform,home] [--tool MORVENA-TOOL] [--shell SQLITE3]
//                     [--psql PSQL] [--process-runs N]

#include <sqlite3.h>

#include <QApplication>
#include <QComboBox>
#include <QFile>
#include <QLineEdit>
#include <QPushButton>
#include <QThread>
#include <QTreeView>
#include <QTreeWidget>
#include <memory>

#include "bench/support/BenchOptions.h"
#include "bench/support/BenchSupport.h"
#include "bench/support/ProcessPair.h"
#include "bench/support/SqliteFloor.h"
#include "bench/support/Workspace.h"
#include "core/database/SqlDialect.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "search/ResultsModel.h"
#include "search/SearchQuery.h"
#include "search/frmFind.h"

using namespace Bench;
using SyntheticDatabase::Shape;

namespace {

// The options, in the order of the usage line, and what they set.
struct Options {
    std::vector<Option> List() {
        return {Text("--cache-dir", "DIR", cacheDir), Text("--pg-server", "HOST:PORT", pgServer),
                Sizes("--sizes", "N,N", sizes),       Count("--runs", runs),
                Shapes("--shapes", shapes),           Text("--tool", "MORVENA-TOOL", tool),
                Text("--shell", "SQLITE3", shell),    Text("--psql", "PSQL", psql),
                Count("--process-runs", processRuns)};
    }

    QString cacheDir;
    QString pgServer;
    std::vector<int> sizes{100000};
    std::vector<Shape> shapes{Shape::Uniform, Shape::HomeCooking};
    int runs = 11;
    QString tool;
    QString shell = QStringLiteral("sqlite3");
    QString psql = QStringLiteral("psql");
    int processRuns = 7;
};

struct Case {
    QString name;
    QList<std::tuple<int, QStringList, qint16>> criteria;
    double sqliteTarget;  // ms, 0 for none
    double postgresTarget;
    double postgresProcessTarget = 0;  // ms for the whole process, 0 for none
};

// A whole search process may take this many times its floor's.
constexpr double ProcessRatioTarget = 1.6;

QList<Case> Cases(Shape shape) {
    using namespace SearchQuery;
    // An ingredient in about one recipe of twenty, of the uniform and the home-cooking list.
    const QString ingredient =
        shape == Shape::Uniform ? QStringLiteral("omaka 243") : QStringLiteral("pehtran");
    return {
        {QStringLiteral("worked example (Skupina juhe; Sestavine korenje ali krompir)"),
         {{Group, {"juhe"}, 0}, {Ingredient, {"korenje", "krompir"}, 1}},
         100,
         100},
        {QStringLiteral("one ingredient (Sestavine '%1')").arg(ingredient),
         {{Ingredient, {ingredient}, 0}},
         60,
         60},
        {QStringLiteral("one method text (Potek dela 'prilijemo vode')"),
         {{Instructions, {"prilijemo vode"}, 0}},
         300,
         500,
         500},
        {QStringLiteral("method text found nowhere (Potek dela 'žafran')"),
         {{Instructions, {"žafran"}, 0}},
         50,
         50},
    };
}

template <class T>
T* Control(QWidget* window, const char* name) {
    return window->findChild<T*>(QString::fromLatin1(name));
}

// Composes the case in a search window as the user does: criterion, values, match choice.
void Compose(frmFind& window, const Case& c) {
    auto* criteria = Control<QTreeWidget>(&window, "lstCriteria");
    for (const auto& [criterion, values, match] : c.criteria) {
        criteria->setCurrentItem(criteria->topLevelItem(criterion));
        for (const QString& value : values) {
            Control<QLineEdit>(&window, "txtFilter")->setText(value);
            Control<QPushButton>(&window, "cmdAdd")->click();
        }
        Control<QComboBox>(&window, "cmbField")->setCurrentIndex(match);
    }
    Control<QLineEdit>(&window, "txtFilter")->clear();
    criteria->setCurrentItem(criteria->topLevelItem(0));
}

QString Sql(const Case& c) {
    SearchQuery::Criteria criteria;
    for (const auto& [criterion, values, match] : c.criteria) {
        criteria.values[criterion] = values;
        criteria.match[criterion] = match;
    }
    return SearchQuery::BuildQuery(criteria, 0, 1);
}

// The query alone, then the list alone: the rows read into a model as the window does and the
// first screen of them painted.
struct Parts {
    double query = 0;
    double list = 0;
    int rows = 0;
};

Parts MeasureParts(const QString& sql, QTreeView& view, ResultsModel& model) {
    Parts parts;
    auto start = Clock::now();
    Recordset rs = modDatabase::GetRecordset(sql);
    parts.query = Milliseconds(Clock::now() - start);
    start = Clock::now();
    model.SetRows({});
    std::vector<ResultsModel::Row> entries;
    entries.reserve(static_cast<size_t>(rs.RecordCount()));
    for (; !rs.Eof(); rs.MoveNext()) {
        entries.push_back({rs.Text(QStringLiteral("Title"))});
        entries.back()[1] = rs.Text(QStringLiteral("recipeID"));
        entries.back()[2] = rs.Text(QStringLiteral("groupName"));
        entries.back()[3] = rs.Text(QStringLiteral("TypeName"));
    }
    model.SetRows(std::move(entries));
    view.viewport()->repaint();
    parts.list = Milliseconds(Clock::now() - start);
    parts.rows = model.rowCount();
    return parts;
}

// The floor: the same text, the four columns of every row read into QStrings.
double FloorMedian(SqliteFloor& floor, const QByteArray& sql, int runs, long long& rows) {
    std::vector<double> times;
    for (int run = 0; run < runs + 1; ++run) {
        const auto start = Clock::now();
        rows = floor.Run(sql, [](sqlite3_stmt* s) {
            for (int i = 0; i < 4; ++i) {
                static_cast<void>(SqliteFloor::Text(s, i));
            }
        });
        if (run > 0) {
            times.push_back(Milliseconds(Clock::now() - start));
        }
    }
    return Median(times);
}

// " [target <= T ms met]" or "... MISSED]"; nothing without a target.
QString TargetNote(double median, double target) {
    if (target <= 0) {
        return QString();
    }
    return QLatin1Char(' ') + Verdict(QStringLiteral("<= %1 ms").arg(target), median <= target);
}

QString RatioText(double value, double floor) {
    return floor > 0 ? Fixed(Ratio(value, floor)) : QStringLiteral("-");
}

// The floors of a SQLite file: with the program's functions and without them.
struct Floors {
    explicit Floors(const QString& file) : program(file, true), plain(file, false) {}

    SqliteFloor program;
    SqliteFloor plain;
};

// What one case measured: the clicks on "Išči" and the rows they showed, and the two halves.
struct Figures {
    double click = 0;
    size_t clicks = 0;
    int rows = 0;
    double query = 0;
    double list = 0;
};

// "Išči" clicked until the list is painted, after 2 warm-up clicks.
void TimeClicks(frmFind& window, int runs, Figures& figures) {
    auto* find = Control<QPushButton>(&window, "cmdFind");
    auto* results = Control<QTreeView>(&window, "lstResults");
    std::vector<double> clicks;
    for (int run = 0; run < runs + 2; ++run) {
        const auto start = Clock::now();
        find->click();
        results->viewport()->repaint();
        if (run >= 2) {
            clicks.push_back(Milliseconds(Clock::now() - start));
        }
    }
    figures.click = Median(clicks);
    figures.clicks = clicks.size();
    figures.rows = results->model()->rowCount();
}

// The query and the list measured apart, in a list like the window's.
void TimeHalves(const QString& sql, int runs, Figures& figures) {
    QTreeView view;
    ResultsModel model({QStringLiteral("Naslov recepta"), QStringLiteral("Št."),
                        QStringLiteral("Skupina"), QStringLiteral("Podskupina")},
                       &view);
    view.setModel(&model);
    view.setUniformRowHeights(true);
    view.setRootIsDecorated(false);
    view.resize(640, 300);
    view.show();
    std::vector<double> queries;
    std::vector<double> lists;
    for (int run = 0; run < runs; ++run) {
        const Parts parts = MeasureParts(sql, view, model);
        queries.push_back(parts.query);
        lists.push_back(parts.list);
    }
    figures.query = Median(queries);
    figures.list = Median(lists);
}

// The program's code writes its errors into errors.log in the current folder.
void WarnOfErrorLog(const QString& where) {
    if (!QFile::exists(QStringLiteral("errors.log"))) {
        return;
    }
    QFile log(QStringLiteral("errors.log"));
    log.open(QIODevice::ReadOnly);
    Print(QStringLiteral("%1  WARNING: errors.log was written: %2")
              .arg(where, QString::fromUtf8(log.readAll().right(400))));
    log.close();
    QFile::remove(QStringLiteral("errors.log"));
}

// PostgreSQL: the figures alone.
void PrintWithoutFloor(const QString& where, const Case& c, double target, const Figures& f) {
    Print(QStringLiteral("%1  %2: Išči to list shown median %3 ms%4  (GetRecordset %5 ms, "
                         "list %6 ms%7; %8 rows; %9 runs)")
              .arg(where, c.name, Fixed(f.click), TargetNote(f.click, target), Fixed(f.query),
                   Fixed(f.list), TargetNote(f.list, 40))
              .arg(f.rows)
              .arg(f.clicks));
}

// SQLite: the floors measured on the same SQL text, and the figures beside them.
void PrintBesideFloors(const QString& where, const Case& c, double target, const Figures& f,
                       Floors& floors, int runs) {
    long long floorRows = 0;
    long long plainRows = 0;
    const QByteArray text = Sql(c).toUtf8();
    const double floorMs = FloorMedian(floors.program, text, runs, floorRows);
    const double plainMs = FloorMedian(floors.plain, text, runs, plainRows);
    Print(QStringLiteral("%1  %2: Išči to list shown median %3 ms%4  floor %5 ms  ratio %6  "
                         "(GetRecordset %7 ms, ratio %8 to the floor; list %9 ms%10; floor "
                         "without the program's functions %11 ms; %12 rows, floor %13; %14 "
                         "runs)")
              .arg(where, c.name, Fixed(f.click), TargetNote(f.click, target), Fixed(floorMs),
                   RatioText(f.click, floorMs), Fixed(f.query), RatioText(f.query, floorMs),
                   Fixed(f.list))
              .arg(TargetNote(f.list, 40), Fixed(plainMs))
              .arg(f.rows)
              .arg(floorRows)
              .arg(f.clicks));
    if (!floors.program.Error().isEmpty() || !floors.plain.Error().isEmpty()) {
        Print(QStringLiteral("%1  floor failed: %2 %3")
                  .arg(where, floors.program.Error(), floors.plain.Error()));
    }
}

// One case in a shown search window; on SQLite beside its floors.
void MeasureCase(const QString& where, const Case& c, int runs, Floors* floors) {
    const double target = floors ? c.sqliteTarget : c.postgresTarget;
    frmFind window;
    Compose(window, c);
    window.show();
    QApplication::processEvents();
    Figures figures;
    TimeClicks(window, runs, figures);
    WarnOfErrorLog(where);
    try {
        TimeHalves(Sql(c), runs, figures);
    } catch (...) {
        Print(QStringLiteral("%1  %2: parts failed: %3").arg(where, c.name, ErrorText()));
        return;
    }
    if (floors) {
        PrintBesideFloors(where, c, target, figures, *floors, runs);
    } else {
        PrintWithoutFloor(where, c, target, figures);
    }
}

// morvena-tool's options for the case, as the window composes it.
QStringList ToolSearch(const Options& options, const Case& c, const QString& database) {
    QStringList command{options.tool, QStringLiteral("search")};
    for (const auto& [criterion, values, match] : c.criteria) {
        const QString key = SearchQuery::Key(criterion);
        for (const QString& value : values) {
            command << QStringLiteral("--") + key << value;
        }
        if (match == SearchQuery::AnyValue) {
            command << QStringLiteral("--any") << key;
        }
    }
    return command << QStringLiteral("--database") << database;
}

// Every case as a whole process of morvena-tool search beside its floor process: on a file the
// sqlite3 shell with the same SQL text, on a server psql with the text the server receives.
void MeasureProcesses(const QString& where, Shape shape, const Options& options,
                      const QString& database, const QString& sqliteFile) {
    if (options.tool.isEmpty()) {
        return;
    }
    for (const Case& c : Cases(shape)) {
        const QString sql = Sql(c);
        const QStringList floor = sqliteFile.isEmpty()
                                      ? QStringList{options.psql,
                                                    QStringLiteral("-X"),
                                                    QStringLiteral("-q"),
                                                    QStringLiteral("-A"),
                                                    QStringLiteral("-t"),
                                                    QStringLiteral("-d"),
                                                    database,
                                                    QStringLiteral("-c"),
                                                    SqlDialect::ToPostgres(sql)}
                                      : QStringList{options.shell, sqliteFile, sql};
        const QStringList command = ToolSearch(options, c, database);
        const ProcessPair pair = TimeProcessPair(command, floor, options.processRuns);
        if (pair.median < 0) {
            Print(QStringLiteral("%1  %2: whole process failed: %3")
                      .arg(where, c.name, command.join(QLatin1Char(' '))));
            continue;
        }
        const double ratio = Ratio(pair.median, pair.floor);
        const QString verdict =
            !sqliteFile.isEmpty()
                ? QLatin1Char(' ') +
                      Verdict(QStringLiteral("<= %1 x the floor").arg(ProcessRatioTarget),
                              ratio <= ProcessRatioTarget)
                : TargetNote(pair.median, c.postgresProcessTarget);
        Print(QStringLiteral("%1  %2: morvena-tool search, whole process, median %3 ms%4  floor "
                             "(%5, same SQL text) %6 ms  ratio %7  (peak %8 MB, floor %9 MB; "
                             "%10 runs each, in turn)")
                  .arg(where, c.name, Fixed(pair.median), verdict,
                       sqliteFile.isEmpty() ? QStringLiteral("psql")
                                            : QStringLiteral("sqlite3 shell"),
                       Fixed(pair.floor), RatioText(pair.median, pair.floor),
                       Fixed(pair.peakMegabytes, 1), Fixed(pair.floorPeakMegabytes, 1))
                  .arg(pair.runs));
    }
}

// Every case on the shared connection; the SQLite file's floors when one is given.
void MeasureSearches(const QString& label, Shape shape, int recipes, int runs,
                     const QString& sqliteFile) {
    std::unique_ptr<Floors> floors;
    if (!sqliteFile.isEmpty()) {
        floors = std::make_unique<Floors>(sqliteFile);
    }
    const QString where = QStringLiteral("%1 %2 %3").arg(label, ShapeName(shape)).arg(recipes);
    for (const Case& c : Cases(shape)) {
        MeasureCase(where, c, runs, floors.get());
    }
}

int MeasureOnFile(const Workspace& work, const Options& options, Shape shape, int recipes,
                  int runs) {
    const QString file = work.Database(recipes, shape);
    if (!file.isEmpty()) {
        // Before the program's own connection has the file open (in write-ahead mode).
        MeasureProcesses(QStringLiteral("sqlite %1 %2").arg(ShapeName(shape)).arg(recipes), shape,
                         options, file, file);
    }
    const bool opened = !file.isEmpty() && OpenShared(modDatabase::FileDatabase, QString(), file);
    if (opened) {
        MeasureSearches(QStringLiteral("sqlite"), shape, recipes, runs, file);
    }
    modDatabase::CloseConnection();
    return opened ? 0 : 1;
}

int MeasureOnServer(const QString& server, const Options& options, Shape shape, int recipes,
                    int runs) {
    const QString name = QStringLiteral("bench_search_%1_%2").arg(ShapeName(shape)).arg(recipes);
    const auto start = Clock::now();
    const bool opened = OpenGeneratedOnServer(server, name, recipes, shape);
    if (opened) {
        Print(QStringLiteral("postgresql  %1 %2 recipes  generated and analysed in %3 s")
                  .arg(ShapeName(shape))
                  .arg(recipes)
                  .arg(Fixed(Milliseconds(Clock::now() - start) / 1000.0)));
        MeasureSearches(QStringLiteral("postgresql"), shape, recipes, runs, QString());
        MeasureProcesses(
            QStringLiteral("postgresql %1 %2").arg(ShapeName(shape)).arg(recipes), shape, options,
            QStringLiteral("postgresql://%1:%2@%3/%4").arg(PgUser, PgPassword, server, name),
            QString());
    }
    modDatabase::CloseConnection();
    return opened ? 0 : 1;
}

int Measure(const Options& options, const Workspace& work) {
    Print(QStringLiteral("bench_search: %1 cores, SQLite %2, %3")
              .arg(QThread::idealThreadCount())
              .arg(QString::fromUtf8(sqlite3_libversion()), LoadAverage()));
    Print(QStringLiteral(
        "Išči to list shown: cmdFind of a shown search window (offscreen) and the result list "
        "painted, after 2 warm-up clicks; GetRecordset and list: the two halves measured apart; "
        "floor: the same SQL text through sqlite3_prepare_v2/step on a handle of its own with "
        "SqliteExtensions::Register, the four columns of every row read into QStrings"));
    int status = 0;
    for (const int recipes : options.sizes) {
        for (const Shape shape : options.shapes) {
            status |= MeasureOnFile(work, options, shape, recipes, options.runs);
            if (!options.pgServer.isEmpty()) {
                status |= MeasureOnServer(options.pgServer, options, shape, recipes, options.runs);
            }
        }
    }
    if (options.pgServer.isEmpty()) {
        Print(QStringLiteral("postgresql  skipped: no --pg-server HOST:PORT given"));
    }
    PrintDone();
    return status;
}

}  // namespace

int main(int argc, char** argv) { return Main<QApplication>(argc, argv, "bench_search", Measure); }
