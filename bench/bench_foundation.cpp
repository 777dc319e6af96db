// Measures the foundation under the catalogue and the display page: the catalogue's query
// pattern through modDatabase::GetRecordset against the same statements through the sqlite3 C
// API, DisplayRecipe, and the same on a PostgreSQL server. Prints figures; the exit code only
// says whether the measuring itself could run, never whether a target was met.
//
// Usage: bench_foundation [--cache-dir DIR] [--pg-server HOST:PORT] [--sizes 10000,100000]
//                         [--runs 15] [--warmups 2] [--displays 1000]

#include <sqlite3.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QStringList>
#include <QTemporaryDir>
#include <QThread>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <memory>
#include <random>
#include <vector>

#include "bench/support/BenchSupport.h"
#include "bench/support/SqliteFloor.h"
#include "collection/SyntheticDatabase.h"
#include "core/AppError.h"
#include "core/database/Recordset.h"
#include "core/database/Schema.h"
#include "core/database/SqliteExtensions.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "display/modDisplay.h"

namespace {

using namespace Bench;

struct Options {
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

// ---- databases ---------------------------------------------------------------------------------

// ---- measurements ------------------------------------------------------------------------------

QString PassText(const Pass& pass) {
    return QStringLiteral("%1 queries, %2 rows").arg(pass.queries).arg(pass.rows);
}

// Median of the catalogue through GetRecordset, and (for SQLite) of the floor, run alternately.
void MeasureCatalogue(const QString& label, int recipes, const Options& options,
                      CatalogueFloor* floor, CatalogueFloor* plainFloor = nullptr) {
    std::vector<double> recordsetTimes;
    std::vector<double> floorTimes;
    std::vector<double> plainTimes;
    Pass recordsetPass;
    Pass floorPass;
    try {
        for (int run = 0; run < options.warmups + options.runs; ++run) {
            auto start = Clock::now();
            recordsetPass = CatalogueThroughRecordset();
            const double recordsetMs = Milliseconds(Clock::now() - start);
            double floorMs = 0.0;
            if (floor) {
                start = Clock::now();
                floorPass = floor->Catalogue();
                floorMs = Milliseconds(Clock::now() - start);
            }
            double plainMs = 0.0;
            if (plainFloor) {
                start = Clock::now();
                plainFloor->Catalogue();
                plainMs = Milliseconds(Clock::now() - start);
            }
            if (run >= options.warmups) {
                recordsetTimes.push_back(recordsetMs);
                floorTimes.push_back(floorMs);
                plainTimes.push_back(plainMs);
            }
        }
    } catch (...) {
        Print(QStringLiteral("%1  %2 recipes  catalogue failed: %3")
                  .arg(label)
                  .arg(recipes)
                  .arg(ErrorText()));
        return;
    }
    const double recordsetMedian = Median(recordsetTimes);
    if (!floor) {
        Print(QStringLiteral("%1  %2 recipes  catalogue GetRecordset median %3 ms  min %4 ms  "
                             "(%5; %6 runs after %7 warm-ups)")
                  .arg(label)
                  .arg(recipes)
                  .arg(Fixed(recordsetMedian))
                  .arg(Fixed(*std::min_element(recordsetTimes.begin(), recordsetTimes.end())))
                  .arg(PassText(recordsetPass))
                  .arg(options.runs)
                  .arg(options.warmups));
        return;
    }
    if (!floor->Error().isEmpty()) {
        Print(QStringLiteral("%1  %2 recipes  floor failed: %3")
                  .arg(label)
                  .arg(recipes)
                  .arg(floor->Error()));
        return;
    }
    const double floorMedian = Median(floorTimes);
    const double ratio = floorMedian > 0 ? recordsetMedian / floorMedian : 0.0;
    Print(QStringLiteral("%1  %2 recipes  catalogue GetRecordset median %3 ms  floor %4 ms  "
                         "ratio %5 %6  (floor without the program's functions %7 ms; %8; %9 "
                         "runs after %10 warm-ups)")
              .arg(label)
              .arg(recipes)
              .arg(Fixed(recordsetMedian))
              .arg(Fixed(floorMedian))
              .arg(Fixed(ratio))
              .arg(ratio <= 1.3 ? QStringLiteral("[target <= 1.3 met]")
                                : QStringLiteral("[target <= 1.3 MISSED]"))
              .arg(plainFloor ? Fixed(Median(plainTimes)) : QStringLiteral("-"))
              .arg(PassText(recordsetPass))
              .arg(options.runs)
              .arg(options.warmups));
    if (!recordsetPass.SameAs(floorPass)) {
        Print(QStringLiteral("%1  %2 recipes  WARNING: GetRecordset and the floor saw different "
                             "rows (%3 vs %4, order fingerprint %5 vs %6)")
                  .arg(label)
                  .arg(recipes)
                  .arg(PassText(recordsetPass), PassText(floorPass))
                  .arg(recordsetPass.fingerprint, 0, 16)
                  .arg(floorPass.fingerprint, 0, 16));
    }
}

// Medians of DisplayRecipe and of its two halves (building the page, writing the file).
void MeasureDisplay(const QString& label, int recipes, const Options& options) {
    std::mt19937 random(20261122);
    std::uniform_int_distribution<qint32> pick(1, recipes);
    std::vector<qint32> ids(options.displays);
    for (qint32& id : ids) {
        id = pick(random);
    }
    std::vector<double> displayTimes;
    std::vector<double> pageTimes;
    std::vector<double> writeTimes;
    qsizetype pageBytes = 0;
    try {
        for (int i = 0; i < 20 && i < options.displays; ++i) {  // warm-up
            modDisplay::DisplayRecipe(ids[i]);
        }
        for (const qint32 id : ids) {
            const auto start = Clock::now();
            modDisplay::DisplayRecipe(id);
            displayTimes.push_back(Milliseconds(Clock::now() - start));
        }
        for (const qint32 id : ids) {
            auto start = Clock::now();
            const QString page = modDisplay::RecipePage(id);
            pageTimes.push_back(Milliseconds(Clock::now() - start));
            start = Clock::now();
            modDisplay::WriteDisplayFile(page);
            writeTimes.push_back(Milliseconds(Clock::now() - start));
            pageBytes += page.size();
        }
    } catch (...) {
        Print(QStringLiteral("%1  %2 recipes  DisplayRecipe failed: %3")
                  .arg(label)
                  .arg(recipes)
                  .arg(ErrorText()));
        return;
    }
    const double median = Median(displayTimes);
    std::vector<double> sorted = displayTimes;
    std::sort(sorted.begin(), sorted.end());
    const double p95 = sorted[std::min(sorted.size() - 1, sorted.size() * 95 / 100)];
    Print(QStringLiteral("%1  %2 recipes  DisplayRecipe median %3 ms %4  p95 %5 ms  max %6 ms  "
                         "(%7 recipes; page alone %8 ms, file write alone %9 ms, mean page "
                         "%10 chars)")
              .arg(label)
              .arg(recipes)
              .arg(Fixed(median, 3))
              .arg(median < 1.0 ? QStringLiteral("[target < 1 ms met]")
                                : QStringLiteral("[target < 1 ms MISSED]"))
              .arg(Fixed(p95, 3))
              .arg(Fixed(sorted.back(), 3))
              .arg(options.displays)
              .arg(Fixed(Median(pageTimes), 3))
              .arg(Fixed(Median(writeTimes), 3))
              .arg(ids.empty() ? 0 : pageBytes / static_cast<qsizetype>(ids.size())));
}

// ---- PostgreSQL --------------------------------------------------------------------------------

void RunPostgres(const Options& options) {
    if (options.pgServer.isEmpty()) {
        Print(QStringLiteral("postgresql  skipped: no --pg-server HOST:PORT given"));
        return;
    }
    if (!QSqlDatabase::isDriverAvailable(QStringLiteral("QPSQL"))) {
        Print(QStringLiteral("postgresql  skipped: the Qt driver QPSQL is not installed"));
        return;
    }
    for (const int recipes : options.sizes) {
        const QString name = QStringLiteral("bench_%1").arg(recipes);
        modDatabase::CloseConnection();
        if (!CreateServerDatabase(options.pgServer, name)) {
            continue;
        }
        const double seconds =
            GenerateInto(modDatabase::ServerDatabase, options.pgServer, name, recipes);
        if (seconds < 0) {
            continue;
        }
        Print(QStringLiteral("postgresql  %1 recipes  generated in %2 s (database %3 on %4)")
                  .arg(recipes)
                  .arg(Fixed(seconds))
                  .arg(name, options.pgServer));
        if (!OpenShared(modDatabase::ServerDatabase, options.pgServer, name)) {
            continue;
        }
        // A database in use has been vacuumed by the server long ago; a fresh one would be
        // vacuumed by autovacuum in the middle of the measurements.
        const auto vacuumStart = Clock::now();
        QSqlQuery vacuum(modDatabase::Connection->Database());
        if (vacuum.exec(QStringLiteral("VACUUM ANALYZE"))) {
            Print(QStringLiteral("postgresql  %1 recipes  VACUUM ANALYZE took %2 s")
                      .arg(recipes)
                      .arg(Fixed(Milliseconds(Clock::now() - vacuumStart) / 1000.0)));
        } else {
            Print(QStringLiteral("postgresql  %1 recipes  VACUUM ANALYZE failed: %2")
                      .arg(recipes)
                      .arg(vacuum.lastError().text()));
        }
        MeasureCatalogue(QStringLiteral("postgresql"), recipes, options, nullptr);
        MeasureDisplay(QStringLiteral("postgresql"), recipes, options);
        modDatabase::CloseConnection();
    }
}

// ---- main --------------------------------------------------------------------------------------

bool ParseOptions(const QStringList& arguments, Options& options) {
    for (int i = 1; i < arguments.size(); ++i) {
        const QString& argument = arguments[i];
        const bool hasValue = i + 1 < arguments.size();
        if (argument == QLatin1String("--cache-dir") && hasValue) {
            options.cacheDir = arguments[++i];
        } else if (argument == QLatin1String("--pg-server") && hasValue) {
            options.pgServer = arguments[++i];
        } else if (argument == QLatin1String("--sizes") && hasValue) {
            options.sizes.clear();
            for (const QString& size : arguments[++i].split(QLatin1Char(','))) {
                bool ok = false;
                const int value = size.toInt(&ok);
                if (!ok || value < 1) {
                    return false;
                }
                options.sizes.push_back(value);
            }
        } else if ((argument == QLatin1String("--runs") || argument == QLatin1String("--warmups") ||
                    argument == QLatin1String("--displays")) &&
                   hasValue) {
            bool ok = false;
            const int value = arguments[++i].toInt(&ok);
            if (!ok || value < (argument == QLatin1String("--warmups") ? 0 : 1)) {
                return false;
            }
            (argument == QLatin1String("--runs")      ? options.runs
             : argument == QLatin1String("--warmups") ? options.warmups
                                                      : options.displays) = value;
        } else {
            return false;
        }
    }
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    Options options;
    if (!ParseOptions(QCoreApplication::arguments(), options)) {
        std::fprintf(stderr,
                     "usage: bench_foundation [--cache-dir DIR] [--pg-server HOST:PORT] "
                     "[--sizes N,N...] [--runs N] [--warmups N] [--displays N]\n");
        return 2;
    }

    // Relative paths are taken before the current folder changes.
    const bool cached = !options.cacheDir.isEmpty();
    const QString sqliteFolderCached = cached ? QDir(options.cacheDir).absolutePath() : QString();
    if (cached && !QDir().mkpath(sqliteFolderCached)) {
        std::fprintf(stderr, "cannot create %s\n", qPrintable(sqliteFolderCached));
        return 1;
    }
    QTemporaryDir work;
    if (!work.isValid()) {
        std::fprintf(stderr, "cannot create a temporary folder\n");
        return 1;
    }
    const QString sqliteFolder = cached ? sqliteFolderCached : work.path();
    // Nothing the program's code writes on the way (error log) lands in the current folder.
    QDir::setCurrent(work.path());
    modGeneral::TempFilename = work.path() + QStringLiteral("/tmpRecipeDB.html");

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

    int status = 0;
    for (const int recipes : options.sizes) {
        const QString fileName = SqliteDatabase(sqliteFolder, cached, recipes);
        if (fileName.isEmpty()) {
            status = 1;
            continue;
        }
        if (!OpenShared(modDatabase::FileDatabase, QString(), fileName)) {
            status = 1;
            continue;
        }
        {
            CatalogueFloor floor(fileName, true);
            CatalogueFloor plainFloor(fileName, false);
            if (!floor.Error().isEmpty()) {
                Print(QStringLiteral("  floor cannot open %1: %2").arg(fileName, floor.Error()));
                status = 1;
                continue;
            }
            MeasureCatalogue(QStringLiteral("sqlite"), recipes, options, &floor, &plainFloor);
        }
        MeasureDisplay(QStringLiteral("sqlite"), recipes, options);
        modDatabase::CloseConnection();
    }

    RunPostgres(options);
    Print(QStringLiteral("done, %1").arg(LoadAverage()));
    return status;
}
