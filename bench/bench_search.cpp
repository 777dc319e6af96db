// Measures the search window on generated databases of 100,000 recipes, in both shapes (the
// uniform stress collection and the home-cooking one): the time from "Išči" to the result list
// filled and painted, for the worked example of the query design, one ingredient, a method text
// that most recipes hold and one that none holds; the same split into the query (GetRecordset)
// and the list (reading the rows into the list's model and painting); and beside each the floor:
// the same SQL text through the sqlite3 C API with the program's functions registered, and
// without them (SQLite's built-in NOCASE and LIKE, for scale). SQLite, and PostgreSQL (without a
// floor) when --pg-server is given. Prints figures only.
//
// Usage: bench_search [--cache-dir DIR] [--pg-server HOST:PORT] [--sizes 100000] [--runs N]
//                     [--shapes uniform,home]

#include <sqlite3.h>

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLineEdit>
#include <QPushButton>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QThread>
#include <QTreeView>
#include <QTreeWidget>
#include <algorithm>
#include <cstdio>
#include <memory>

#include "bench/support/BenchSupport.h"
#include "bench/support/SqliteFloor.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "search/ResultsModel.h"
#include "search/SearchQuery.h"
#include "search/frmFind.h"

using namespace Bench;
using SyntheticDatabase::Shape;

namespace {

struct Options {
    QString cacheDir;
    QString pgServer;
    std::vector<int> sizes{100000};
    std::vector<Shape> shapes{Shape::Uniform, Shape::HomeCooking};
    int runs = 11;
};

struct Case {
    QString name;
    QList<std::tuple<int, QStringList, qint16>> criteria;
    double sqliteTarget;  // ms, 0 for none
    double postgresTarget;
};

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

QString Verdict(double median, double target) {
    if (target <= 0) {
        return QString();
    }
    return median <= target ? QStringLiteral(" [target <= %1 ms met]").arg(target)
                            : QStringLiteral(" [target <= %1 ms MISSED]").arg(target);
}

QString Ratio(double value, double floor) {
    return floor > 0 ? Fixed(value / floor) : QStringLiteral("-");
}

void MeasureSearches(const QString& label, Shape shape, int recipes, const Options& options,
                     const QString& sqliteFile) {
    const bool sqlite = !sqliteFile.isEmpty();
    std::unique_ptr<SqliteFloor> floor;
    std::unique_ptr<SqliteFloor> plainFloor;
    if (sqlite) {
        floor = std::make_unique<SqliteFloor>(sqliteFile, true);
        plainFloor = std::make_unique<SqliteFloor>(sqliteFile, false);
    }
    const QString where = QStringLiteral("%1 %2 %3").arg(label, ShapeName(shape)).arg(recipes);
    for (const Case& c : Cases(shape)) {
        const double target = sqlite ? c.sqliteTarget : c.postgresTarget;
        frmFind window;
        Compose(window, c);
        window.show();
        QApplication::processEvents();
        auto* find = Control<QPushButton>(&window, "cmdFind");
        auto* results = Control<QTreeView>(&window, "lstResults");
        std::vector<double> clicks;
        for (int run = 0; run < options.runs + 2; ++run) {
            const auto start = Clock::now();
            find->click();
            results->viewport()->repaint();
            if (run >= 2) {
                clicks.push_back(Milliseconds(Clock::now() - start));
            }
        }
        const double click = Median(clicks);
        const int rows = results->model()->rowCount();
        if (QFile::exists(QStringLiteral("errors.log"))) {
            QFile log(QStringLiteral("errors.log"));
            log.open(QIODevice::ReadOnly);
            Print(QStringLiteral("%1  WARNING: errors.log was written: %2")
                      .arg(where, QString::fromUtf8(log.readAll().right(400))));
            log.close();
            QFile::remove(QStringLiteral("errors.log"));
        }
        const QString sql = Sql(c);
        std::vector<double> queries;
        std::vector<double> lists;
        QTreeView view;
        ResultsModel model({QStringLiteral("Naslov recepta"), QStringLiteral("Št."),
                            QStringLiteral("Skupina"), QStringLiteral("Podskupina")},
                           &view);
        view.setModel(&model);
        view.setUniformRowHeights(true);
        view.setRootIsDecorated(false);
        view.resize(640, 300);
        view.show();
        try {
            for (int run = 0; run < options.runs; ++run) {
                const Parts parts = MeasureParts(sql, view, model);
                queries.push_back(parts.query);
                lists.push_back(parts.list);
            }
        } catch (...) {
            Print(QStringLiteral("%1  %2: parts failed: %3").arg(where, c.name, ErrorText()));
            continue;
        }
        const double query = Median(queries);
        const double list = Median(lists);
        if (!sqlite) {
            Print(QStringLiteral("%1  %2: Išči to list shown median %3 ms%4  (GetRecordset %5 ms, "
                                 "list %6 ms%7; %8 rows; %9 runs)")
                      .arg(where, c.name, Fixed(click), Verdict(click, target), Fixed(query),
                           Fixed(list), Verdict(list, 40))
                      .arg(rows)
                      .arg(clicks.size()));
            continue;
        }
        long long floorRows = 0;
        long long plainRows = 0;
        const QByteArray text = sql.toUtf8();
        const double floorMs = FloorMedian(*floor, text, options.runs, floorRows);
        const double plainMs = FloorMedian(*plainFloor, text, options.runs, plainRows);
        Print(QStringLiteral("%1  %2: Išči to list shown median %3 ms%4  floor %5 ms  ratio %6  "
                             "(GetRecordset %7 ms, ratio %8 to the floor; list %9 ms%10; floor "
                             "without the program's functions %11 ms; %12 rows, floor %13; %14 "
                             "runs)")
                  .arg(where, c.name, Fixed(click), Verdict(click, target), Fixed(floorMs),
                       Ratio(click, floorMs), Fixed(query), Ratio(query, floorMs), Fixed(list))
                  .arg(Verdict(list, 40), Fixed(plainMs))
                  .arg(rows)
                  .arg(floorRows)
                  .arg(clicks.size()));
        if (!floor->Error().isEmpty() || !plainFloor->Error().isEmpty()) {
            Print(QStringLiteral("%1  floor failed: %2 %3")
                      .arg(where, floor->Error(), plainFloor->Error()));
        }
    }
}

bool ParseOptions(const QStringList& arguments, Options& options) {
    for (int i = 1; i + 1 < arguments.size(); i += 2) {
        const QString& name = arguments[i];
        const QString& value = arguments[i + 1];
        if (name == QLatin1String("--cache-dir")) {
            options.cacheDir = QFileInfo(value).absoluteFilePath();
        } else if (name == QLatin1String("--pg-server")) {
            options.pgServer = value;
        } else if (name == QLatin1String("--runs")) {
            options.runs = std::max(1, value.toInt());
        } else if (name == QLatin1String("--sizes")) {
            options.sizes.clear();
            for (const QString& size : value.split(QLatin1Char(','))) {
                const int recipes = size.toInt();
                if (recipes < 1) {
                    return false;
                }
                options.sizes.push_back(recipes);
            }
        } else if (name == QLatin1String("--shapes")) {
            options.shapes.clear();
            for (const QString& shape : value.split(QLatin1Char(','))) {
                if (shape != QLatin1String("uniform") && shape != QLatin1String("home")) {
                    return false;
                }
                options.shapes.push_back(shape == QLatin1String("uniform") ? Shape::Uniform
                                                                           : Shape::HomeCooking);
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
                     "usage: bench_search [--cache-dir DIR] [--pg-server HOST:PORT] [--sizes N,N] "
                     "[--runs N] [--shapes uniform,home]\n");
        return 2;
    }
    QTemporaryDir work;
    if (!work.isValid()) {
        std::fprintf(stderr, "cannot create a temporary folder\n");
        return 1;
    }
    qputenv("MORVENA_CONFIG_DIR", QFile::encodeName(work.path() + QStringLiteral("/config")));
    const bool cached = !options.cacheDir.isEmpty();
    const QString folder = cached ? options.cacheDir : work.path();
    QDir().mkpath(folder);
    // Nothing the program's code writes on the way (error log) lands in the current folder.
    QDir::setCurrent(work.path());
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
            const QString file = SqliteDatabase(folder, cached, recipes, shape);
            if (!file.isEmpty() && OpenShared(modDatabase::FileDatabase, QString(), file)) {
                MeasureSearches(QStringLiteral("sqlite"), shape, recipes, options, file);
            } else {
                status = 1;
            }
            modDatabase::CloseConnection();
            if (options.pgServer.isEmpty()) {
                continue;
            }
            const QString name =
                QStringLiteral("bench_search_%1_%2").arg(ShapeName(shape)).arg(recipes);
            const auto start = Clock::now();
            if (CreateServerDatabase(options.pgServer, name) &&
                GenerateInto(modDatabase::ServerDatabase, options.pgServer, name, recipes, shape) >=
                    0 &&
                OpenShared(modDatabase::ServerDatabase, options.pgServer, name)) {
                // A database in use has long been vacuumed and analysed by the server.
                QSqlQuery(modDatabase::Connection->Database())
                    .exec(QStringLiteral("VACUUM ANALYZE"));
                Print(QStringLiteral("postgresql  %1 %2 recipes  generated and analysed in %3 s")
                          .arg(ShapeName(shape))
                          .arg(recipes)
                          .arg(Fixed(Milliseconds(Clock::now() - start) / 1000.0)));
                MeasureSearches(QStringLiteral("postgresql"), shape, recipes, options, QString());
            } else {
                status = 1;
            }
            modDatabase::CloseConnection();
        }
    }
    if (options.pgServer.isEmpty()) {
        Print(QStringLiteral("postgresql  skipped: no --pg-server HOST:PORT given"));
    }
    Print(QStringLiteral("done, %1").arg(LoadAverage()));
    return status;
}
