// Measures the foundation under the catalogue and the display page: the catalogue's query
// pattern through modDatabase::GetRecordset against the same statements through the sqlite3 C
// API, DisplayRecipe, and the same on a PostgreSQL server. Prints figures; the exit code only
// says whether the measuring itself could run, never whether a target was met.
//
// Usage: bench_foundation [--cache-dir DIR] [--pg-server HOST:PORT] [--sizes 10000,100000]
//                         [--runs 15] [--warmups 2] [--displays 1000]

#include <sqlite3.h>

#include <QCoreApplication>
#include <QThread>
#include <algorithm>
#include <random>
#include <vector>

#include "bench/support/BenchOptions.h"
#include "bench/support/BenchSupport.h"
#include "bench/support/ServerPageFloor.h"
#include "bench/support/SqliteFloor.h"
#include "bench/support/Workspace.h"
#include "core/database/Recordset.h"
#include "core/database/SqlStatement.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "display/modDisplay.h"

namespace {

using namespace Bench;

// The options, in the order of the usage line, and what they set.
struct Options {
    std::vector<Option> List() {
        return {Text("--cache-dir", "DIR", cacheDir), Text("--pg-server", "HOST:PORT", pgServer),
                Sizes("--sizes", "N,N...", sizes),    Count("--runs", runs),
                Count("--warmups", warmups, 0),       Count("--displays", displays)};
    }

    QString cacheDir;
    QString pgServer;
    std::vector<int> sizes{10000, 100000};
    int runs = 15;
    int warmups = 2;
    int displays = 1000;
};

// What one pass over the catalogue saw; the fingerprint depends on the order of the keys, the
// tally counts the characters of the names and titles plus the fields that are not NULL. Two
// ways of reading agree only when they return the same rows in the same order.
struct Pass {
    int queries = 0;
    long long rows = 0;
    unsigned long long fingerprint = 1469598103934665603ULL;
    qsizetype tally = 0;

    void Row(qint64 key, const QString& name) {
        ++rows;
        fingerprint = (fingerprint ^ static_cast<unsigned long long>(key)) * 1099511628211ULL;
        tally += name.size();
    }
    bool SameAs(const Pass& other) const {
        return queries == other.queries && rows == other.rows && fingerprint == other.fingerprint &&
               tally == other.tally;
    }
};

// ---- through the program's shared connection -------------------------------------------------

// Reads one row as the tree does (its key as a number, its name or title as text, looked up
// by name) and touches the remaining fields too, so every field of the row is read.
qint32 ReadRecordsetRow(const Recordset& rs, const QString& keyName, const QString& textName,
                        Pass& pass) {
    const qint32 key = rs.Long(keyName);
    const QString text = rs.Text(textName);
    for (int i = 0; i < rs.FieldCount(); ++i) {
        const QVariant value = rs.Fields(i);
        pass.tally += value.isNull() ? 0 : 1;
    }
    pass.Row(key, text);
    return key;
}

Pass CatalogueThroughRecordset() {
    Pass pass;
    const QString groupKey = QStringLiteral("groupID");
    const QString typeKey = QStringLiteral("typeID");
    const QString recipeKey = QStringLiteral("recipeID");
    const QString name = QStringLiteral("name");
    const QString title = QStringLiteral("title");

    std::vector<qint32> groups;
    Recordset rs =
        modDatabase::GetRecordset(QStringLiteral("SELECT * FROM [Group] ORDER BY name;"));
    ++pass.queries;
    for (; !rs.Eof(); rs.MoveNext()) {
        groups.push_back(ReadRecordsetRow(rs, groupKey, name, pass));
    }
    rs.Close();
    for (const qint32 group : groups) {
        std::vector<qint32> types;
        Recordset typeRs = modDatabase::GetRecordset(
            QStringLiteral("SELECT * FROM [Type] WHERE groupID = %1 ORDER BY name;").arg(group));
        ++pass.queries;
        for (; !typeRs.Eof(); typeRs.MoveNext()) {
            types.push_back(ReadRecordsetRow(typeRs, typeKey, name, pass));
        }
        typeRs.Close();
        for (const qint32 type : types) {
            Recordset recipeRs = modDatabase::GetRecordset(
                QStringLiteral("SELECT * FROM [Recipe] WHERE typeID = %1 ORDER BY title;")
                    .arg(type));
            ++pass.queries;
            for (; !recipeRs.Eof(); recipeRs.MoveNext()) {
                ReadRecordsetRow(recipeRs, recipeKey, title, pass);
            }
            recipeRs.Close();
        }
    }
    return pass;
}

// ---- the floor: the sqlite3 C API --------------------------------------------------------------

// The catalogue statements through the sqlite3 C API.
class CatalogueFloor {
public:
    CatalogueFloor(const QString& fileName, bool programFunctions)
        : m_floor(fileName, programFunctions) {}

    const QString& Error() const { return m_floor.Error(); }

    // Runs one statement; every column is read: the key (column 0) with sqlite3_column_int,
    // other integers with sqlite3_column_int64, text into a QString (UTF-8 decoded). The
    // column `textColumn` is the name or title the tree shows.
    void Query(const QByteArray& sql, int textColumn, Pass& pass, std::vector<qint32>* keys) {
        const long long rows = m_floor.Run(sql, [&](sqlite3_stmt* statement) {
            const int columns = sqlite3_column_count(statement);
            const qint32 key = sqlite3_column_int(statement, 0);
            qsizetype present = 1;  // the key
            QString shown;
            for (int i = 1; i < columns; ++i) {
                switch (sqlite3_column_type(statement, i)) {
                    case SQLITE_NULL:
                        break;
                    case SQLITE_INTEGER:
                        static_cast<void>(sqlite3_column_int64(statement, i));
                        ++present;
                        break;
                    default: {
                        const auto* text =
                            reinterpret_cast<const char*>(sqlite3_column_text(statement, i));
                        QString value = QString::fromUtf8(text, sqlite3_column_bytes(statement, i));
                        ++present;
                        if (i == textColumn) {
                            shown = std::move(value);
                        }
                    }
                }
            }
            // Counted as the recordset path counts: one for every field that is not NULL.
            pass.tally += present;
            pass.Row(key, shown);
            if (keys) {
                keys->push_back(key);
            }
        });
        if (rows >= 0) {
            ++pass.queries;
        }
    }

    Pass Catalogue() {
        Pass pass;
        std::vector<qint32> groups;
        Query(QByteArrayLiteral("SELECT * FROM [Group] ORDER BY name;"), 1, pass, &groups);
        for (const qint32 group : groups) {
            std::vector<qint32> types;
            Query("SELECT * FROM [Type] WHERE groupID = " + QByteArray::number(group) +
                      " ORDER BY name;",
                  2, pass, &types);
            for (const qint32 type : types) {
                Query("SELECT * FROM [Recipe] WHERE typeID = " + QByteArray::number(type) +
                          " ORDER BY title;",
                      3, pass, nullptr);
            }
        }
        return pass;
    }

private:
    Bench::SqliteFloor m_floor;
};

// ---- measurements ------------------------------------------------------------------------------

QString PassText(const Pass& pass) {
    return QStringLiteral("%1 queries, %2 rows").arg(pass.queries).arg(pass.rows);
}

// The catalogue's runs after the warm-ups: through GetRecordset and, for SQLite, through the
// floor with and without the program's functions, run alternately.
struct CatalogueRuns {
    std::vector<double> recordset;
    std::vector<double> floor;
    std::vector<double> plain;
    Pass recordsetPass;
    Pass floorPass;
};

// Milliseconds of one pass of the floor, 0 without one.
double TimeFloor(CatalogueFloor* floor, Pass& pass) {
    if (!floor) {
        return 0.0;
    }
    const auto start = Clock::now();
    pass = floor->Catalogue();
    return MillisecondsSince(start);
}

CatalogueRuns TimeCatalogue(const Options& options, CatalogueFloor* floor,
                            CatalogueFloor* plainFloor) {
    CatalogueRuns runs;
    Pass plainPass;
    for (int run = 0; run < options.warmups + options.runs; ++run) {
        const auto start = Clock::now();
        runs.recordsetPass = CatalogueThroughRecordset();
        const double recordsetMs = MillisecondsSince(start);
        const double floorMs = TimeFloor(floor, runs.floorPass);
        const double plainMs = TimeFloor(plainFloor, plainPass);
        if (run >= options.warmups) {
            runs.recordset.push_back(recordsetMs);
            runs.floor.push_back(floorMs);
            runs.plain.push_back(plainMs);
        }
    }
    return runs;
}

QString RunsText(const Pass& pass, const Options& options) {
    return QStringLiteral("%1; %2 runs after %3 warm-ups")
        .arg(PassText(pass))
        .arg(options.runs)
        .arg(options.warmups);
}

// On PostgreSQL, without a floor.
void PrintCatalogue(const QString& where, const CatalogueRuns& runs, const Options& options) {
    Print(where + QStringLiteral("  catalogue GetRecordset median %1 ms  min %2 ms  (%3)")
                      .arg(Fixed(Median(runs.recordset)),
                           Fixed(*std::min_element(runs.recordset.begin(), runs.recordset.end())),
                           RunsText(runs.recordsetPass, options)));
}

void PrintCatalogueBesideFloor(const QString& where, const CatalogueRuns& runs,
                               const Options& options, bool plainFloor) {
    const double floorMedian = Median(runs.floor);
    const double ratio = Ratio(Median(runs.recordset), floorMedian);
    Print(where + QStringLiteral("  catalogue GetRecordset median %1 ms  floor %2 ms  ratio %3 %4  "
                                 "(floor without the program's functions %5 ms; %6)")
                      .arg(Fixed(Median(runs.recordset)), Fixed(floorMedian), Fixed(ratio),
                           Verdict(QStringLiteral("<= 1.3"), ratio <= 1.3),
                           plainFloor ? Fixed(Median(runs.plain)) : QStringLiteral("-"),
                           RunsText(runs.recordsetPass, options)));
    if (!runs.recordsetPass.SameAs(runs.floorPass)) {
        Print(where + QStringLiteral("  WARNING: GetRecordset and the floor saw different rows (%1 "
                                     "vs %2, order fingerprint %3 vs %4)")
                          .arg(PassText(runs.recordsetPass), PassText(runs.floorPass))
                          .arg(runs.recordsetPass.fingerprint, 0, 16)
                          .arg(runs.floorPass.fingerprint, 0, 16));
    }
}

// Median of the catalogue through GetRecordset, and (for SQLite) of the floor, run alternately.
void MeasureCatalogue(const QString& label, int recipes, const Options& options,
                      CatalogueFloor* floor, CatalogueFloor* plainFloor = nullptr) {
    const QString where = Where(label, recipes);
    CatalogueRuns runs;
    try {
        runs = TimeCatalogue(options, floor, plainFloor);
    } catch (...) {
        Print(where + QStringLiteral("  catalogue failed: %1").arg(ErrorText()));
        return;
    }
    if (!floor) {
        PrintCatalogue(where, runs, options);
    } else if (!floor->Error().isEmpty()) {
        Print(where + QStringLiteral("  floor failed: %1").arg(floor->Error()));
    } else {
        PrintCatalogueBesideFloor(where, runs, options, plainFloor != nullptr);
    }
}

// DisplayRecipe on each recipe, then its two halves apart: building the page, writing the file.
struct DisplayRuns {
    std::vector<double> displays;
    std::vector<double> pages;
    std::vector<double> writes;
    qsizetype pageChars = 0;
};

// The recipes to show: picked at random, the same ones every run.
std::vector<qint32> RandomRecipes(int recipes, int count) {
    std::mt19937 random(20261122);
    std::uniform_int_distribution<qint32> pick(1, recipes);
    std::vector<qint32> ids(count);
    for (qint32& id : ids) {
        id = pick(random);
    }
    return ids;
}

DisplayRuns TimeDisplays(const std::vector<qint32>& ids) {
    DisplayRuns runs;
    for (size_t i = 0; i < 20 && i < ids.size(); ++i) {  // warm-up
        modDisplay::DisplayRecipe(ids[i]);
    }
    for (const qint32 id : ids) {
        const auto start = Clock::now();
        modDisplay::DisplayRecipe(id);
        runs.displays.push_back(MillisecondsSince(start));
    }
    for (const qint32 id : ids) {
        auto start = Clock::now();
        const QString page = modDisplay::RecipePage(id);
        runs.pages.push_back(MillisecondsSince(start));
        start = Clock::now();
        modDisplay::WriteDisplayFile(page);
        runs.writes.push_back(MillisecondsSince(start));
        runs.pageChars += page.size();
    }
    return runs;
}

// Medians of DisplayRecipe and of its two halves (building the page, writing the file).
void MeasureDisplay(const QString& label, int recipes, const Options& options) {
    const QString where = Where(label, recipes);
    const std::vector<qint32> ids = RandomRecipes(recipes, options.displays);
    DisplayRuns runs;
    try {
        runs = TimeDisplays(ids);
    } catch (...) {
        Print(where + QStringLiteral("  DisplayRecipe failed: %1").arg(ErrorText()));
        return;
    }
    const double median = Median(runs.displays);
    std::vector<double> sorted = runs.displays;
    std::sort(sorted.begin(), sorted.end());
    const double p95 = sorted[std::min(sorted.size() - 1, sorted.size() * 95 / 100)];
    Print(where + QStringLiteral("  DisplayRecipe median %1 ms %2  p95 %3 ms  max %4 ms  (%5 "
                                 "recipes; page alone %6 ms, file write alone %7 ms, mean page "
                                 "%8 chars)")
                      .arg(Fixed(median, 3), Verdict(QStringLiteral("< 1 ms"), median < 1.0),
                           Fixed(p95, 3), Fixed(sorted.back(), 3))
                      .arg(options.displays)
                      .arg(Fixed(Median(runs.pages), 3), Fixed(Median(runs.writes), 3))
                      .arg(ids.empty() ? 0 : runs.pageChars / static_cast<qsizetype>(ids.size())));
}

// ---- PostgreSQL --------------------------------------------------------------------------------

// The floor of the recipe page on the server, over the same recipes as DisplayRecipe.
void MeasureServerPageFloor(const QString& server, int recipes, const Options& options) {
    const QString where = Where(QStringLiteral("postgresql"), recipes);
    ServerPageFloor floor(server, QStringLiteral("bench_%1").arg(recipes));
    const std::vector<qint32> ids = RandomRecipes(recipes, options.displays);
    for (size_t i = 0; i < 20 && i < ids.size(); ++i) {  // warm-up
        floor.Page(ids[i]);
    }
    std::vector<double> pages;
    for (const qint32 id : ids) {
        const auto start = Clock::now();
        if (floor.Page(id) < 0) {
            break;
        }
        pages.push_back(MillisecondsSince(start));
    }
    if (!floor.Error().isEmpty()) {
        Print(where + QStringLiteral("  page floor failed: %1").arg(floor.Error()));
        return;
    }
    Print(where + QStringLiteral("  page floor median %1 ms  (libpq: the page's statements, each "
                                 "section's lines in the order of their keys)")
                      .arg(Fixed(Median(pages), 3)));
}

// A database in use has been vacuumed by the server long ago; a fresh one would be vacuumed by
// autovacuum in the middle of the measurements.
void Vacuum(const QString& where) {
    const auto start = Clock::now();
    SqlStatement vacuum(*modDatabase::Connection);
    if (vacuum.Exec(QStringLiteral("VACUUM ANALYZE"))) {
        Print(where + QStringLiteral("  VACUUM ANALYZE took %1 s")
                          .arg(Fixed(MillisecondsSince(start) / 1000.0)));
    } else {
        Print(where + QStringLiteral("  VACUUM ANALYZE failed: %1").arg(vacuum.Failure().text));
    }
}

// Generates the database of that size on the server and opens the shared connection on it.
bool OpenOnServer(const QString& server, int recipes) {
    const QString name = QStringLiteral("bench_%1").arg(recipes);
    if (!CreateServerDatabase(server, name)) {
        return false;
    }
    const double seconds = GenerateInto(modDatabase::ServerDatabase, server, name, recipes);
    if (seconds < 0) {
        return false;
    }
    Print(Where(QStringLiteral("postgresql"), recipes) +
          QStringLiteral("  generated in %1 s (database %2 on %3)")
              .arg(Fixed(seconds), name, server));
    return OpenShared(modDatabase::ServerDatabase, server, name);
}

void RunPostgres(const Options& options) {
    if (options.pgServer.isEmpty()) {
        Print(QStringLiteral("postgresql  skipped: no --pg-server HOST:PORT given"));
        return;
    }
    const QString label = QStringLiteral("postgresql");
    for (const int recipes : options.sizes) {
        modDatabase::CloseConnection();
        if (!OpenOnServer(options.pgServer, recipes)) {
            continue;
        }
        Vacuum(Where(label, recipes));
        MeasureCatalogue(label, recipes, options, nullptr);
        MeasureDisplay(label, recipes, options);
        MeasureServerPageFloor(options.pgServer, recipes, options);
        modDatabase::CloseConnection();
    }
}

// ---- SQLite ------------------------------------------------------------------------------------

void PrintMethod(const Options& options) {
    Print(QStringLiteral("bench_foundation: %1 cores (QThread::idealThreadCount), SQLite %2, "
                         "Qt %3, %4")
              .arg(QThread::idealThreadCount())
              .arg(QString::fromUtf8(sqlite3_libversion()), QString::fromUtf8(qVersion()),
                   LoadAverage()));
    Print(QStringLiteral(
        "catalogue: 1 x \"SELECT * FROM [Group] ORDER BY name;\", per group "
        "\"SELECT * FROM [Type] WHERE groupID = ... ORDER BY name;\", per type \"SELECT * "
        "FROM [Recipe] WHERE typeID = ... ORDER BY title;\"; every field of "
        "every row read (key with Long, name/title with Text, all fields with "
        "Fields(i))"));
    Print(
        QStringLiteral("floor: the same statements with sqlite3_prepare_v2/step on a second "
                       "handle with SqliteExtensions::Register (and once more without it); key "
                       "with sqlite3_column_int, "
                       "other integers with sqlite3_column_int64, every text column decoded "
                       "into a QString (QString::fromUtf8 of sqlite3_column_text)"));
    Print(QStringLiteral(
              "DisplayRecipe: %1 random recipe ids (std::mt19937 started from 20261122) after "
              "20 warm-up calls; display file %2")
              .arg(options.displays)
              .arg(modGeneral::TempFilename));
}

// The catalogue beside its floors and DisplayRecipe on the SQLite file; 1 when it cannot run.
int MeasureFile(const QString& fileName, int recipes, const Options& options) {
    if (!OpenShared(modDatabase::FileDatabase, QString(), fileName)) {
        return 1;
    }
    {
        CatalogueFloor floor(fileName, true);
        CatalogueFloor plainFloor(fileName, false);
        if (!floor.Error().isEmpty()) {
            Print(QStringLiteral("  floor cannot open %1: %2").arg(fileName, floor.Error()));
            return 1;
        }
        MeasureCatalogue(QStringLiteral("sqlite"), recipes, options, &floor, &plainFloor);
    }
    MeasureDisplay(QStringLiteral("sqlite"), recipes, options);
    modDatabase::CloseConnection();
    return 0;
}

int Measure(const Options& options, const Workspace& work) {
    PrintMethod(options);
    int status = 0;
    for (const int recipes : options.sizes) {
        const QString fileName = work.Database(recipes);
        status |= fileName.isEmpty() ? 1 : MeasureFile(fileName, recipes, options);
    }
    RunPostgres(options);
    PrintDone();
    return status;
}

}  // namespace

int main(int argc, char** argv) {
    return Main<QCoreApplication>(argc, argv, "bench_foundation", Measure);
}
