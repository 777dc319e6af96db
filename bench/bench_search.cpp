// Measures the search window on a generated database of 100,000 recipes: the time from "Išči" to
// the result list filled, with a real search window (offscreen, not painted), for the worked
// example of the query design, one ingredient, one method text and a method text that nothing
// holds; and the same split into its parts (building the query, GetRecordset, filling a list).
// SQLite, and PostgreSQL when --pg-server is given. Prints figures only.
//
// Usage: bench_search [--cache-dir DIR] [--pg-server HOST:PORT] [--sizes 100000] [--runs N]

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
#include <QTreeWidget>
#include <algorithm>
#include <cstdio>

#include "bench/support/BenchSupport.h"
#include "core/modDatabase.h"
#include "core/modGeneral.h"
#include "search/SearchQuery.h"
#include "search/frmFind.h"

using namespace Bench;

namespace {

struct Options {
    QString cacheDir;
    QString pgServer;
    std::vector<int> sizes{100000};
    int runs = 15;
};

struct Case {
    const char* name;
    QList<std::tuple<int, QStringList, qint16>> criteria;
    double targetMs;  // 0: none
    bool sqliteOnlyTarget;
};

QList<Case> Cases() {
    using namespace SearchQuery;
    return {
        {"worked example (Skupina juhe; Sestavine korenje ali krompir)",
         {{Group, {"juhe"}, 0}, {Ingredient, {"korenje", "krompir"}, 1}},
         0,
         false},
        {"one ingredient (Sestavine 'omaka 243')", {{Ingredient, {"omaka 243"}, 0}}, 150, true},
        {"one method text (Potek dela 'prilijemo vode')",
         {{Instructions, {"prilijemo vode"}, 0}},
         0,
         false},
        {"method text found nowhere (Potek dela 'žafran')",
         {{Instructions, {"žafran"}, 0}},
         0,
         false},
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

// The parts of cmdFind_Click one by one, on a list of its own.
struct Parts {
    double build = 0;
    double query = 0;
    double fill = 0;
    int rows = 0;
};

Parts MeasureParts(const Case& c, QTreeWidget& list) {
    Parts parts;
    auto start = Clock::now();
    SearchQuery::Criteria criteria;
    for (const auto& [criterion, values, match] : c.criteria) {
        criteria.values[criterion] = values;
        criteria.match[criterion] = match;
    }
    const QString sql = SearchQuery::BuildQuery(criteria, 0, 1);
    parts.build = Milliseconds(Clock::now() - start);
    start = Clock::now();
    Recordset rs = modDatabase::GetRecordset(sql);
    parts.query = Milliseconds(Clock::now() - start);
    start = Clock::now();
    list.clear();
    QList<QTreeWidgetItem*> entries;
    for (; !rs.Eof(); rs.MoveNext()) {
        auto* entry = new QTreeWidgetItem(QStringList{rs.Text(QStringLiteral("Title"))});
        entry->setTextAlignment(0, Qt::AlignLeft | Qt::AlignVCenter);
        for (int column = 1; column < 4; ++column) {
            entry->setTextAlignment(column, Qt::AlignHCenter | Qt::AlignVCenter);
        }
        entry->setText(1, rs.Text(QStringLiteral("recipeID")));
        entry->setText(2, rs.Text(QStringLiteral("groupName")));
        entry->setText(3, rs.Text(QStringLiteral("TypeName")));
        entries << entry;
    }
    list.addTopLevelItems(entries);
    parts.fill = Milliseconds(Clock::now() - start);
    parts.rows = list.topLevelItemCount();
    return parts;
}

void MeasureSearches(const QString& label, int recipes, const Options& options) {
    for (const Case& c : Cases()) {
        frmFind window;
        Compose(window, c);
        auto* find = Control<QPushButton>(&window, "cmdFind");
        auto* results = Control<QTreeWidget>(&window, "lstResults");
        std::vector<double> clicks;
        std::vector<double> firstClicks;
        for (int run = 0; run < options.runs + 2; ++run) {
            // A click on a list that is empty, as the first search of the window ...
            if (run % 2 == 0) {
                results->clear();
            }
            const auto start = Clock::now();
            find->click();
            const double ms = Milliseconds(Clock::now() - start);
            if (run >= 2) {
                (run % 2 == 0 ? firstClicks : clicks).push_back(ms);
            }
        }
        // ... and one that first clears the results of the previous search.
        std::vector<double> all = clicks;
        all.insert(all.end(), firstClicks.begin(), firstClicks.end());
        const double median = Median(all);
        QString verdict;
        if (c.targetMs > 0 && (!c.sqliteOnlyTarget || label == QLatin1String("sqlite"))) {
            verdict = median < c.targetMs
                          ? QStringLiteral(" [target < %1 ms met]").arg(c.targetMs)
                          : QStringLiteral(" [target < %1 ms MISSED]").arg(c.targetMs);
        }
        Print(QStringLiteral("%1  %2 recipes  %3: Išči to list filled median %4 ms%5 (into an "
                             "empty list %6 ms, replacing the previous results %7 ms; %8 rows; "
                             "%9 runs)")
                  .arg(label)
                  .arg(recipes)
                  .arg(QString::fromUtf8(c.name))
                  .arg(Fixed(median))
                  .arg(verdict)
                  .arg(Fixed(Median(firstClicks)))
                  .arg(Fixed(Median(clicks)))
                  .arg(results->topLevelItemCount())
                  .arg(all.size()));
        if (QFile::exists(QStringLiteral("errors.log"))) {
            Print(QStringLiteral("%1  WARNING: errors.log was written: %2")
                      .arg(label)
                      .arg(QString::fromUtf8([] {
                          QFile log(QStringLiteral("errors.log"));
                          log.open(QIODevice::ReadOnly);
                          return log.readAll().right(400);
                      }())));
            QFile::remove(QStringLiteral("errors.log"));
        }
        std::vector<double> builds;
        std::vector<double> queries;
        std::vector<double> fills;
        QTreeWidget list;
        list.setColumnCount(4);
        list.setUniformRowHeights(true);
        Parts parts;
        try {
            for (int run = 0; run < options.runs; ++run) {
                parts = MeasureParts(c, list);
                builds.push_back(parts.build);
                queries.push_back(parts.query);
                fills.push_back(parts.fill);
            }
        } catch (...) {
            Print(QStringLiteral("%1  parts failed: %2").arg(label, ErrorText()));
            continue;
        }
        Print(QStringLiteral("%1  %2 recipes  %3: parts median: query text %4 ms, GetRecordset "
                             "%5 ms, clearing and filling the list %6 ms (%7 rows)")
                  .arg(label)
                  .arg(recipes)
                  .arg(QString::fromUtf8(c.name))
                  .arg(Fixed(Median(builds), 3))
                  .arg(Fixed(Median(queries)))
                  .arg(Fixed(Median(fills)))
                  .arg(parts.rows));
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
                     "[--runs N]\n");
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
    Print(QStringLiteral("bench_search: %1 cores, %2")
              .arg(QThread::idealThreadCount())
              .arg(LoadAverage()));
    Print(
        QStringLiteral("Išči to list filled: cmdFind of a search window that is not shown (no "
                       "painting), alternately into an empty result list and over the "
                       "previous results, after 2 warm-up clicks"));

    int status = 0;
    for (const int recipes : options.sizes) {
        const QString file = SqliteDatabase(folder, cached, recipes);
        if (!file.isEmpty() && OpenShared(modDatabase::FileDatabase, QString(), file)) {
            MeasureSearches(QStringLiteral("sqlite"), recipes, options);
        } else {
            status = 1;
        }
        modDatabase::CloseConnection();
        if (options.pgServer.isEmpty()) {
            Print(QStringLiteral("postgresql  skipped: no --pg-server HOST:PORT given"));
            continue;
        }
        const QString name = QStringLiteral("bench_search_%1").arg(recipes);
        const auto start = Clock::now();
        if (CreateServerDatabase(options.pgServer, name) &&
            GenerateInto(modDatabase::ServerDatabase, options.pgServer, name, recipes) >= 0 &&
            OpenShared(modDatabase::ServerDatabase, options.pgServer, name)) {
            // A database in use has long been vacuumed and analysed by the server.
            QSqlQuery(modDatabase::Connection->Database()).exec(QStringLiteral("VACUUM ANALYZE"));
            Print(QStringLiteral("postgresql  %1 recipes  generated and analysed in %2 s")
                      .arg(recipes)
                      .arg(Fixed(Milliseconds(Clock::now() - start) / 1000.0)));
            MeasureSearches(QStringLiteral("postgresql"), recipes, options);
        } else {
            status = 1;
        }
        modDatabase::CloseConnection();
    }
    Print(QStringLiteral("done, %1").arg(LoadAverage()));
    return status;
}
