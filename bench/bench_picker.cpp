// Measures opening the editor's section picker ("Izberi...") on generated SQLite databases: from
// exec() until the picker is up with its tree drawn, beside the floor measured in the same run
// through the sqlite3 C API: the statements of the rows it shows (groups, per group its
// subgroups), every row read into a key and a QString; and, for comparison, the catalogue down
// to the recipes. Then expanding the first group (beside the floor of its subgroups' recipe
// statements), its first subgroup (beside the floor of the statement that tells which of its
// recipes hold titled sections) and the subgroup's first recipe with sections. Also the peak memory
// of the process (VmHWM, started afresh before each opening) beside its resident size before the
// first opening, and, once, the whole collection read the eager way through sqlite3 (the catalogue
// and one statement per recipe for its titled sections). With --pg-server, opening and expanding
// on a generated server database too (--pg-sizes, 100,000 recipes unless told). Prints figures
// only.
//
// Usage: bench_picker [--cache-dir DIR] [--pg-server HOST:PORT] [--sizes 100000,1000000]
//                     [--pg-sizes 100000] [--runs N] [--no-eager-floor]

#include <sqlite3.h>

#include <QAbstractItemModel>
#include <QApplication>
#include <QFile>
#include <QThread>
#include <QTimer>
#include <QTreeView>

#include "bench/support/BenchOptions.h"
#include "bench/support/BenchSupport.h"
#include "bench/support/SqliteFloor.h"
#include "bench/support/Workspace.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "editor/SectionCatalogue.h"
#include "editor/frmNew.h"
#include "editor/frmSelectSection.h"

using namespace Bench;

namespace {

// The options, in the order of the usage line, and what they set.
struct Options {
    std::vector<Option> List() {
        return {Text("--cache-dir", "DIR", cacheDir),
                Text("--pg-server", "HOST:PORT", pgServer),
                Sizes("--sizes", "N,N", sizes),
                Sizes("--pg-sizes", "N,N", pgSizes),
                Count("--runs", runs),
                Switch("--no-eager-floor", eagerFloor, false)};
    }

    QString cacheDir;
    QString pgServer;
    std::vector<int> sizes{100000, 1000000};
    std::vector<int> pgSizes{100000};
    int runs = 5;
    bool eagerFloor = true;
};

// ---- memory ------------------------------------------------------------------------------------

double StatusMegabytes(const char* field) {
    const QString value = StatusField(field);
    return value.isEmpty() ? -1.0 : value.section(QLatin1Char(' '), 0, 0).toDouble() / 1024.0;
}

// Starts the peak (VmHWM) afresh at the present resident size.
void ResetPeak() {
    QFile clear(QStringLiteral("/proc/self/clear_refs"));
    if (clear.open(QIODevice::WriteOnly)) {
        clear.write("5");
    }
}

// ---- the floors --------------------------------------------------------------------------------

// What the picker reads as a group is first expanded: its subgroups' recipes (the subgroups
// themselves are read again here, for their keys).
long long FloorGroup(SqliteFloor& floor, qint32 groupID) {
    std::vector<long long> types;
    long long rows = floor.Run(
        "SELECT * FROM [Type] WHERE groupID = " + QByteArray::number(groupID) + " ORDER BY name;",
        [&](sqlite3_stmt* s) { types.push_back(SqliteFloor::Integer(s, 0)); });
    for (const long long type : types) {
        rows += floor.Run("SELECT * FROM [Recipe] WHERE typeID = " + QByteArray::number(type) +
                              " ORDER BY title;",
                          [&](sqlite3_stmt* s) {
                              static_cast<void>(SqliteFloor::Integer(s, 0));
                              static_cast<void>(SqliteFloor::Text(s, 3));
                          });
    }
    return rows;
}

// What the picker reads as a subgroup is first expanded: its statement on titled sections, the
// subgroup's key in place of the marker.
long long FloorSubgroup(SqliteFloor& floor, qint32 typeID) {
    QByteArray sql = SectionCatalogue::TitledSectionsSql.toUtf8();
    sql.replace("$1", QByteArray::number(typeID));
    return floor.Run(sql, [](sqlite3_stmt* s) {
        static_cast<void>(SqliteFloor::Integer(s, 0));
        static_cast<void>(SqliteFloor::Integer(s, 1));
        static_cast<void>(SqliteFloor::Integer(s, 2));
    });
}

QByteArray SectionsOfRecipe(long long recipeID) {
    return "SELECT [Section].sectionID, [Section].title FROM [Section] INNER JOIN [RecipeSection] "
           "ON [Section].sectionID = [RecipeSection].sectionID WHERE [Section].title IS NOT NULL "
           "AND [RecipeSection].recipeID = " +
           QByteArray::number(recipeID) + " ORDER BY [RecipeSection].place;";
}

// The whole collection the eager way: the catalogue and one statement per recipe.
long long FloorEager(SqliteFloor& floor) {
    std::vector<long long> recipes;
    long long rows = FloorCatalogue(floor, true, &recipes);
    for (const long long recipe : recipes) {
        rows += floor.Run(SectionsOfRecipe(recipe), [](sqlite3_stmt* s) {
            static_cast<void>(SqliteFloor::Integer(s, 0));
            static_cast<void>(SqliteFloor::Text(s, 1));
        });
    }
    return rows;
}

template <class F>
double Timed(F&& f) {
    const auto start = Clock::now();
    f();
    return MillisecondsSince(start);
}

// ---- the picker --------------------------------------------------------------------------------

struct Opening {
    double openMs = 0;       // exec() until the picker is up with its tree drawn
    double peakMb = 0;       // the process's peak resident memory meanwhile
    double groupMs = 0;      // then expanding the first group, drawn
    qint32 groupID = 0;      // that group
    double peakAfterMb = 0;  // the peak after the expanding too
    double typeMs = 0;       // expanding the first subgroup of the first group, drawn
    qint32 typeID = 0;       // that subgroup
    double recipeMs = 0;     // then expanding its first recipe that can be expanded, drawn
    int topLevel = 0;
};

QModelIndex FirstExpandable(const QAbstractItemModel* model, const QModelIndex& parent) {
    for (int row = 0; row < model->rowCount(parent); ++row) {
        const QModelIndex index = model->index(row, 0, parent);
        if (model->hasChildren(index)) {
            return index;
        }
    }
    return {};
}

Opening OpenPicker() {
    Opening opening;
    frmNew editor;
    frmSelectSection picker(&editor);
    ResetPeak();
    const auto start = Clock::now();
    QTimer::singleShot(0, &picker, [&] {
        auto* tree = picker.findChild<QTreeView*>(QStringLiteral("tvSections"));
        tree->viewport()->grab();  // drawn
        opening.openMs = MillisecondsSince(start);
        opening.peakMb = StatusMegabytes("VmHWM:");
        QAbstractItemModel* model = tree->model();
        opening.topLevel = model->rowCount();
        const QModelIndex group = FirstExpandable(model, QModelIndex());
        if (!group.isValid()) {
            picker.done(0);
            return;
        }
        opening.groupID = group.data(modGeneral::KeyRole).toString().mid(1).toInt();
        opening.groupMs = Timed([&] {
            tree->expand(group);
            tree->viewport()->grab();
        });
        const QModelIndex type = FirstExpandable(model, group);
        if (type.isValid()) {
            opening.typeID = type.data(modGeneral::KeyRole).toString().mid(1).toInt();
            opening.typeMs = Timed([&] {
                tree->expand(type);
                tree->viewport()->grab();
            });
            const QModelIndex recipe = FirstExpandable(model, type);
            if (recipe.isValid()) {
                opening.recipeMs = Timed([&] {
                    tree->expand(recipe);
                    tree->viewport()->grab();
                });
            }
        }
        opening.peakAfterMb = StatusMegabytes("VmHWM:");
        picker.done(0);
    });
    picker.exec();
    return opening;
}

// The opening's target: 300 ms at 100,000 recipes, 3 s at 1,000,000.
QString OpeningVerdict(double openMs, int recipes) {
    const double target = recipes >= 1000000 ? 3000.0 : 300.0;
    return Verdict(QStringLiteral("<= %1 ms").arg(target), openMs <= target);
}

std::vector<double> Field(const std::vector<Opening>& runs, double Opening::*field) {
    std::vector<double> values;
    for (const Opening& run : runs) {
        values.push_back(run.*field);
    }
    return values;
}

void MeasurePicker(const QString& file, int recipes, const Options& options) {
    SqliteFloor floor(file, true);
    const int runs = recipes >= 1000000 ? std::min(options.runs, 3) : options.runs;
    const double restingMb = StatusMegabytes("VmRSS:");
    std::vector<Opening> openings;
    std::vector<double> floors;
    std::vector<double> subgroupFloors;
    std::vector<double> groupFloors;
    std::vector<double> catalogueFloors;
    long long catalogueRows = 0;
    long long floorRows = 0;
    long long subgroupRows = 0;
    long long groupRows = 0;
    Opening first;  // before any floor has run in this process
    for (int run = 0; run < runs + 1; ++run) {
        const Opening opening = OpenPicker();
        if (run == 0) {
            first = opening;
        }
        const double floorMs = Timed([&] { floorRows = FloorCatalogue(floor, false, nullptr); });
        const double catalogueMs =
            Timed([&] { catalogueRows = FloorCatalogue(floor, true, nullptr); });
        const double subgroupMs =
            Timed([&] { subgroupRows = FloorSubgroup(floor, opening.typeID); });
        const double groupMs = Timed([&] { groupRows = FloorGroup(floor, opening.groupID); });
        if (run > 0) {  // the first round warms the caches
            openings.push_back(opening);
            floors.push_back(floorMs);
            subgroupFloors.push_back(subgroupMs);
            groupFloors.push_back(groupMs);
            catalogueFloors.push_back(catalogueMs);
        }
    }
    if (!floor.Error().isEmpty()) {
        Print(Where(QStringLiteral("sqlite"), recipes) +
              QStringLiteral("  floor failed: %1").arg(floor.Error()));
        return;
    }
    const double open = Median(Field(openings, &Opening::openMs));
    const double floorMs = Median(floors);
    Print(Where(QStringLiteral("sqlite"), recipes) +
          QStringLiteral("  picker open median %1 ms %2  floor (the statements of the rows it "
                         "shows, groups and per group its subgroups, through sqlite3) %3 ms  "
                         "ratio %4  (%5 floor rows; %6 runs; %7 groups)")
              .arg(Fixed(open))
              .arg(recipes < 100000 ? QString() : OpeningVerdict(open, recipes))
              .arg(Fixed(floorMs))
              .arg(Fixed(Ratio(open, floorMs)))
              .arg(floorRows)
              .arg(openings.size())
              .arg(openings.empty() ? 0 : openings.front().topLevel));
    Print(QStringLiteral("  for comparison: the catalogue down to the recipes (one statement "
                         "per subgroup too) through sqlite3 median %1 ms, %2 rows")
              .arg(Fixed(Median(catalogueFloors)))
              .arg(catalogueRows));
    const std::vector<double> peaks = Field(openings, &Opening::peakMb);
    Print(QStringLiteral("  peak memory of the process: %1 MB resident before the first opening, "
                         "%2 MB peak through the first opening and its expanding (%3 ms to open); "
                         "later openings %4 MB (largest %5 MB; the floors' reading stays resident)")
              .arg(Fixed(restingMb, 1))
              .arg(Fixed(first.peakAfterMb, 1))
              .arg(Fixed(first.openMs))
              .arg(Fixed(Median(peaks), 1))
              .arg(Fixed(*std::max_element(peaks.begin(), peaks.end()), 1)));
    Print(QStringLiteral("  then expanding the first group median %1 ms  floor (its subgroups' "
                         "statements through sqlite3) %2 ms, %3 rows; peak memory after the "
                         "expanding below %4 MB")
              .arg(Fixed(Median(Field(openings, &Opening::groupMs))))
              .arg(Fixed(Median(groupFloors)))
              .arg(groupRows)
              .arg(Fixed(Median(Field(openings, &Opening::peakAfterMb)), 1)));
    Print(QStringLiteral("  then expanding the first subgroup median %1 ms  floor (its "
                         "titled-sections statement through sqlite3) %2 ms, %3 rows; its first "
                         "recipe with sections %4 ms (drawn)")
              .arg(Fixed(Median(Field(openings, &Opening::typeMs))))
              .arg(Fixed(Median(subgroupFloors)))
              .arg(subgroupRows)
              .arg(Fixed(Median(Field(openings, &Opening::recipeMs)))));
    if (options.eagerFloor) {
        long long eagerRows = 0;
        const double eager = Timed([&] { eagerRows = FloorEager(floor); });
        Print(QStringLiteral("  for comparison: the eager reading (catalogue and one statement "
                             "per recipe) through sqlite3 %1 ms, %2 rows, once")
                  .arg(Fixed(eager))
                  .arg(eagerRows));
    }
}

// On a server: opening and expanding, without a floor of the library's own.
void MeasurePickerOnServer(int recipes, const Options& options) {
    const QString name = QStringLiteral("bench_picker_%1").arg(recipes);
    if (!OpenGeneratedOnServer(options.pgServer, name, recipes)) {
        return;
    }
    std::vector<Opening> openings;
    for (int run = 0; run < options.runs + 1; ++run) {
        const Opening opening = OpenPicker();
        if (run > 0) {
            openings.push_back(opening);
        }
    }
    const double open = Median(Field(openings, &Opening::openMs));
    Print(Where(QStringLiteral("postgresql"), recipes) +
          QStringLiteral("  picker open median %1 ms %2; then expanding the first group %3 ms, "
                         "its first subgroup %4 ms, that one's first recipe with sections %5 ms "
                         "(%6 runs; peak memory %7 MB)")
              .arg(Fixed(open))
              .arg(OpeningVerdict(open, recipes))
              .arg(Fixed(Median(Field(openings, &Opening::groupMs))))
              .arg(Fixed(Median(Field(openings, &Opening::typeMs))))
              .arg(Fixed(Median(Field(openings, &Opening::recipeMs))))
              .arg(openings.size())
              .arg(Fixed(Median(Field(openings, &Opening::peakAfterMb)), 1)));
    modDatabase::CloseConnection();
}

int Measure(const Options& options, const Workspace& work) {
    Print(QStringLiteral("bench_picker: %1 cores, SQLite %2, Qt %3, platform %4, %5")
              .arg(QThread::idealThreadCount())
              .arg(QString::fromUtf8(sqlite3_libversion()), QString::fromUtf8(qVersion()),
                   QApplication::platformName(), LoadAverage()));
    const int status = ForEachSqliteSize(
        work, options.sizes,
        [&](const QString& file, int recipes) { MeasurePicker(file, recipes, options); });
    for (const int recipes : options.pgServer.isEmpty() ? std::vector<int>() : options.pgSizes) {
        MeasurePickerOnServer(recipes, options);
    }
    PrintDone();
    return status;
}

}  // namespace

int main(int argc, char** argv) { return Main<QApplication>(argc, argv, "bench_picker", Measure); }
