// Measures saving a recipe in the recipe editor: a recipe of 3 sections with 10 ingredient lines
// each, on a SQLite database of 100,000 recipes, saved by a real frmNew (offscreen) that loads
// the recipe and gets "Potrdi" pressed, the question answered Yes. Prints the median and spread
// of the saves, the database's journal and synchronous settings, and where the time of a save
// goes (the statements inside SQLite by kind, the rest in the program). Prints figures; the exit
// code only says whether the measuring itself could run, never whether a target was met.
//
// Usage: bench_editor [--cache-dir DIR] [--recipes 100000] [--saves 100] [--warmups 5]
//                     [--no-variants]
// The database is generated as bench_foundation does (bench_<recipes>.sqlite, reused from the
// cache folder when there) and copied into a temporary folder before it is changed.

#include <sqlite3.h>

#include <QApplication>
#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QPushButton>
#include <QThread>
#include <QTimer>
#include <algorithm>
#include <vector>

#include "bench/support/BenchOptions.h"
#include "bench/support/BenchSupport.h"
#include "bench/support/Workspace.h"
#include "core/AppError.h"
#include "core/database/Recordset.h"
#include "core/database/SqlStatement.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "core/ui/UiServices.h"
#include "editor/frmNew.h"
#include "main/frmMain.h"

namespace {

using namespace Bench;

// The options, in the order of the usage line, and what they set.
struct Options {
    std::vector<Option> List() {
        return {Text("--cache-dir", "DIR", cacheDir), Count("--recipes", recipes),
                Count("--saves", saves), Count("--warmups", warmups, 0),
                Switch("--no-variants", variants, false)};
    }

    QString cacheDir;
    int recipes = 100000;
    int saves = 100;
    int warmups = 5;
    bool variants = true;
};

double Percentile(std::vector<double> values, double p) {
    if (values.empty()) {
        return 0.0;
    }
    std::sort(values.begin(), values.end());
    const double position = p * static_cast<double>(values.size() - 1);
    const size_t below = static_cast<size_t>(position);
    const size_t above = std::min(below + 1, values.size() - 1);
    return values[below] +
           (values[above] - values[below]) * (position - static_cast<double>(below));
}

// ---- the database ------------------------------------------------------------------------------

QString PragmaValue(const QString& name) {
    SqlStatement query(*modDatabase::Connection);
    if (!query.Exec(QStringLiteral("PRAGMA ") + name) || !query.Next()) {
        return QStringLiteral("?");
    }
    return query.Value(0).toString();
}

void SetPragma(const QString& assignment) {
    SqlStatement(*modDatabase::Connection).Exec(QStringLiteral("PRAGMA ") + assignment);
}

// Adds a row to the table and returns its key; an error raises as the program's statements do.
qint32 AddRow(const QString& table, const QVariantMap& fields) {
    const QStringList columns = fields.keys();
    QStringList markers;
    for (int i = 1; i <= columns.size(); ++i) {
        markers << QStringLiteral("$%1").arg(i);
    }
    SqlStatement query(*modDatabase::Connection);
    if (!query.Exec(
            QStringLiteral("INSERT INTO \"%1\" (%2) VALUES (%3) RETURNING *")
                .arg(table, columns.join(QStringLiteral(", ")), markers.join(QStringLiteral(", "))),
            fields.values()) ||
        !query.Next()) {
        modDatabase::RaiseDriverError(*modDatabase::Connection, query.Failure());
    }
    return query.Value(0).toInt();
}

qint32 FirstKey(const QString& sql) {
    Recordset rs = modDatabase::GetRecordset(sql);
    const qint32 key = rs.Eof() ? -1 : rs.Long(rs.FieldName(0));
    rs.Close();
    return key;
}

int CountRows(const QString& sql) {
    SqlStatement query(*modDatabase::Connection);
    return query.Exec(sql) && query.Next() ? query.Value(0).toInt() : -1;
}

// The recipe to save: 3 titled sections of 10 ingredient lines each, with instructions.
qint32 AddMeasuredRecipe() {
    const qint32 typeID = FirstKey(QStringLiteral("SELECT typeID FROM [Type] ORDER BY typeID;"));
    const qint32 sourceID =
        FirstKey(QStringLiteral("SELECT sourceID FROM [Source] ORDER BY sourceID;"));
    const qint32 unitID = FirstKey(QStringLiteral("SELECT unitID FROM [Unit] ORDER BY unitID;"));
    const qint32 firstIngredient =
        FirstKey(QStringLiteral("SELECT ingredientID FROM [Ingredient] ORDER BY ingredientID;"));
    const qint32 recipeID = AddRow(
        QStringLiteral("Recipe"),
        {{"typeID", typeID}, {"sourceID", sourceID}, {"title", QStringLiteral("Merjeni recept")}});
    for (int place = 1; place <= 3; ++place) {
        const qint32 sectionID =
            AddRow(QStringLiteral("Section"),
                   {{"title", QStringLiteral("Razdelek %1").arg(place)},
                    {"instructions",
                     QStringLiteral("Prvi korak razdelka %1.\r\nDrugi korak.").arg(place)}});
        AddRow(QStringLiteral("RecipeSection"),
               {{"recipeID", recipeID}, {"sectionID", sectionID}, {"place", place}});
        for (int line = 0; line < 10; ++line) {
            AddRow(QStringLiteral("SectionIngredient"),
                   {{"sectionID", sectionID},
                    {"ingredientID", firstIngredient + (place * 10 + line) % 250},
                    {"unitID", unitID},
                    {"amount", 10 * (line + 1)}});
        }
    }
    return recipeID;
}

// ---- where the time goes -----------------------------------------------------------------------

// Time spent inside SQLite per kind of statement (the first word), from the profile trace: for
// a statement outside a transaction this includes its commit (and the write to disk).
struct StatementTally {
    QMap<QString, std::pair<int, double>> byKind;  // count, milliseconds
    int commits = 0;
    bool on = false;

    void Reset() {
        byKind.clear();
        commits = 0;
    }
    double Milliseconds() const {
        double total = 0;
        for (const auto& entry : byKind) {
            total += entry.second;
        }
        return total;
    }
    int Count() const {
        int total = 0;
        for (const auto& entry : byKind) {
            total += entry.first;
        }
        return total;
    }
};

StatementTally g_tally;

int ProfileCallback(unsigned type, void*, void* statement, void* nanoseconds) {
    if (type == SQLITE_TRACE_PROFILE && g_tally.on) {
        const QString sql =
            QString::fromUtf8(sqlite3_sql(static_cast<sqlite3_stmt*>(statement))).trimmed();
        const QString kind = sql.section(QLatin1Char(' '), 0, 0).toUpper();
        auto& entry = g_tally.byKind[kind];
        entry.first += 1;
        entry.second += static_cast<double>(*static_cast<sqlite3_int64*>(nanoseconds)) / 1e6;
    }
    return 0;
}

int CommitHook(void*) {
    if (g_tally.on) {
        ++g_tally.commits;
    }
    return 0;  // the commit goes ahead
}

bool TraceStatements() {
    sqlite3* db = modDatabase::Connection->SqliteHandle();
    if (!db) {
        return false;
    }
    sqlite3_commit_hook(db, CommitHook, nullptr);
    return sqlite3_trace_v2(db, SQLITE_TRACE_PROFILE, ProfileCallback, nullptr) == SQLITE_OK;
}

// ---- one save through the editor ---------------------------------------------------------------

struct SaveTiming {
    double loadMs = 0;  // exec() until the editor is up (Form_Load)
    double saveMs = 0;  // "Potrdi" until the editor has closed
    bool ok = false;
    QString problem;
};

SaveTiming SaveOnce(qint32 recipeID) {
    SaveTiming timing;
    frmNew editor;
    editor.lngRecipeID = recipeID;
    modGeneral::lngLastID = -1;
    int questions = 0;
    QStringList other;
    UiServices::SetMsgBoxHandler([&](const QString& text, int style, const QString&) {
        if (text == QStringLiteral("Ali res želite shraniti recept?")) {
            ++questions;
            return int(UiServices::vbYes);
        }
        other << text;
        return (style & 0x7) == UiServices::vbYesNo ? int(UiServices::vbNo) : int(UiServices::vbOK);
    });
    const auto opened = Clock::now();
    QTimer::singleShot(0, &editor, [&] {
        timing.loadMs = Milliseconds(Clock::now() - opened);
        auto* cmdOK = editor.findChild<QPushButton*>(QStringLiteral("cmdOK"));
        g_tally.on = true;
        const auto start = Clock::now();
        cmdOK->click();
        timing.saveMs = Milliseconds(Clock::now() - start);
        g_tally.on = false;
        if (editor.isVisible()) {
            editor.done(99);
        }
    });
    const int result = editor.exec();
    UiServices::SetMsgBoxHandler({});
    timing.ok = result == QDialog::Accepted && questions == 1 && other.isEmpty() &&
                modGeneral::lngLastID == recipeID;
    if (!timing.ok) {
        timing.problem = QStringLiteral("result %1, %2 questions, lngLastID %3, messages: %4")
                             .arg(result)
                             .arg(questions)
                             .arg(modGeneral::lngLastID)
                             .arg(other.join(QStringLiteral(" / ")));
    }
    return timing;
}

struct Saves {
    std::vector<double> saves;
    std::vector<double> loads;
    std::vector<double> insideSqlite;
    std::vector<int> commits;
    StatementTally tally;  // over all measured saves
    bool ok = true;
};

Saves MeasureSaves(qint32 recipeID, int warmups, int saves) {
    Saves run;
    for (int i = 0; i < warmups + saves; ++i) {
        g_tally.Reset();
        const SaveTiming timing = SaveOnce(recipeID);
        if (!timing.ok) {
            Print(QStringLiteral("  save %1 failed: %2").arg(i + 1).arg(timing.problem));
            run.ok = false;
            return run;
        }
        if (i < warmups) {
            continue;
        }
        run.saves.push_back(timing.saveMs);
        run.loads.push_back(timing.loadMs);
        run.insideSqlite.push_back(g_tally.Milliseconds());
        run.commits.push_back(g_tally.commits);
        for (auto it = g_tally.byKind.cbegin(); it != g_tally.byKind.cend(); ++it) {
            auto& total = run.tally.byKind[it.key()];
            total.first += it.value().first;
            total.second += it.value().second;
        }
    }
    return run;
}

void Report(const QString& label, const Saves& run, int saves) {
    if (!run.ok || run.saves.empty()) {
        return;
    }
    const double median = Percentile(run.saves, 0.5);
    Print(QStringLiteral("%1: save median %2 ms (min %3, p10 %4, p90 %5, max %6) over %7 saves; "
                         "loading the editor median %8 ms")
              .arg(label, Fixed(median), Fixed(Percentile(run.saves, 0.0)),
                   Fixed(Percentile(run.saves, 0.1)), Fixed(Percentile(run.saves, 0.9)),
                   Fixed(Percentile(run.saves, 1.0)))
              .arg(saves)
              .arg(Fixed(Percentile(run.loads, 0.5))));
    const double inside = Percentile(run.insideSqlite, 0.5);
    Print(QStringLiteral(
              "  %1 commits (write transactions) per save; profiled statement time "
              "median %2 ms per save (a DELETE's time includes its commit, an "
              "INSERT ... RETURNING's commit comes at its reset and is not in it; SQLite's "
              "profile clock counts whole milliseconds), "
              "the rest %3 ms")
              .arg(run.commits.empty() ? 0 : run.commits.front())
              .arg(Fixed(inside), Fixed(median - inside)));
    for (auto it = run.tally.byKind.cbegin(); it != run.tally.byKind.cend(); ++it) {
        Print(QStringLiteral("    %1: %2 statements per save, %3 ms per save")
                  .arg(it.key(), -7)
                  .arg(Fixed(static_cast<double>(it.value().first) / saves, 1))
                  .arg(Fixed(it.value().second / saves)));
    }
}

// The measured database: a copy of the generated one in the temporary folder, opened as the
// program's connection. Empty after printing why it could not be.
QString OpenWorkingCopy(const Workspace& work, int recipes) {
    const QString source = work.Database(recipes);
    if (source.isEmpty()) {
        return QString();
    }
    const QString fileName = work.File(QStringLiteral("measured.sqlite"));
    if (!QFile::copy(source, fileName)) {
        Print(QStringLiteral("cannot copy %1 to %2").arg(source, fileName));
        return QString();
    }
    Print(QStringLiteral("working copy %1 (%2 MB)")
              .arg(fileName)
              .arg(Fixed(QFileInfo(fileName).size() / 1048576.0, 1)));
    modGeneral::DatabaseType = modDatabase::FileDatabase;
    modGeneral::DatabaseName = fileName;
    modGeneral::ServerName.clear();
    modGeneral::Username.clear();
    modGeneral::Password.clear();
    modDatabase::OpenConnection();
    if (!modDatabase::Connection || modDatabase::Connection->State() != modDatabase::adStateOpen) {
        Print(QStringLiteral("cannot open %1").arg(fileName));
        return QString();
    }
    return fileName;
}

// The recipe the saves rewrite, added to the database; -1 after printing why it could not be.
qint32 AddRecipe() {
    try {
        const qint32 recipeID = AddMeasuredRecipe();
        Print(QStringLiteral("measured recipe %1: 3 sections of 10 ingredient lines; %2 recipes in "
                             "the database")
                  .arg(recipeID)
                  .arg(CountRows(QStringLiteral("SELECT COUNT(*) FROM \"Recipe\""))));
        return recipeID;
    } catch (...) {
        Print(QStringLiteral("cannot add the measured recipe: %1").arg(ErrorText()));
        return -1;
    }
}

void PrintRecipeAfterSaves(qint32 recipeID) {
    const int sections = CountRows(
        QStringLiteral("SELECT COUNT(*) FROM \"RecipeSection\" WHERE recipeID = %1").arg(recipeID));
    const int lines = CountRows(
        QStringLiteral(
            "SELECT COUNT(*) FROM \"SectionIngredient\" INNER JOIN \"RecipeSection\" ON "
            "\"SectionIngredient\".sectionID = \"RecipeSection\".sectionID WHERE recipeID = %1")
            .arg(recipeID));
    Print(QStringLiteral("after the saves recipe %1 has %2 sections and %3 ingredient lines")
              .arg(recipeID)
              .arg(sections)
              .arg(lines));
}

// Diagnostics only: the same saves with less durable settings on this connection, to show the
// share of the disk writes. The program itself never runs so.
void MeasureVariants(qint32 recipeID, const Options& options, const Saves& full) {
    const double median = Percentile(full.saves, 0.5);
    double withoutSync = 0.0;
    for (const char* setting : {"NORMAL", "OFF"}) {
        SetPragma(QStringLiteral("synchronous=%1").arg(QLatin1String(setting)));
        const Saves run = MeasureSaves(recipeID, options.warmups, options.saves);
        Report(QStringLiteral("diagnostic, journal_mode=%1 synchronous=%2 (%3)")
                   .arg(PragmaValue(QStringLiteral("journal_mode")), QLatin1String(setting),
                        PragmaValue(QStringLiteral("synchronous"))),
               run, options.saves);
        withoutSync = run.saves.empty() ? 0.0 : Percentile(run.saves, 0.5);
    }
    SetPragma(QStringLiteral("synchronous=FULL"));
    const int commits = full.commits.empty() ? 0 : full.commits.front();
    if (withoutSync > 0.0 && commits > 0) {
        Print(QStringLiteral("the durable commits cost %1 ms of the %2 ms median save (FULL "
                             "minus OFF), %3 ms for each of the %4 commits")
                  .arg(Fixed(median - withoutSync), Fixed(median),
                       Fixed((median - withoutSync) / commits))
                  .arg(commits));
    }
}

// The saves as the program runs, then (unless --no-variants) the diagnostic variants.
int MeasureRecipe(qint32 recipeID, const Options& options) {
    const QString journal = PragmaValue(QStringLiteral("journal_mode"));
    const QString synchronous = PragmaValue(QStringLiteral("synchronous"));
    Print(QStringLiteral("each save: the editor loads recipe %1, \"Potrdi\" is pressed, the "
                         "question answered Yes; timed from the click until the editor has "
                         "closed; %2 warm-up saves first")
              .arg(recipeID)
              .arg(options.warmups));
    const Saves full = MeasureSaves(recipeID, options.warmups, options.saves);
    if (!full.ok) {
        return 1;
    }
    Report(QStringLiteral("sqlite %1 recipes, journal_mode=%2 synchronous=%3 (as the program "
                          "runs)")
               .arg(options.recipes)
               .arg(journal, synchronous),
           full, options.saves);
    Print(QStringLiteral("target: under 30 ms: %1")
              .arg(Percentile(full.saves, 0.5) < 30.0 ? QStringLiteral("met")
                                                      : QStringLiteral("missed")));
    PrintRecipeAfterSaves(recipeID);
    if (options.variants) {
        MeasureVariants(recipeID, options, full);
    }
    return 0;
}

int Measure(const Options& options, const Workspace& work) {
    Print(QStringLiteral("bench_editor: %1 cores, SQLite %2, Qt %3, platform %4")
              .arg(QThread::idealThreadCount())
              .arg(QString::fromUtf8(sqlite3_libversion()), QString::fromUtf8(qVersion()),
                   QApplication::platformName()));
    if (OpenWorkingCopy(work, options.recipes).isEmpty()) {
        return 1;
    }
    Print(QStringLiteral("program's connection: journal_mode=%1, synchronous=%2 (0 OFF, 1 NORMAL, "
                         "2 FULL, 3 EXTRA); every statement commits by itself")
              .arg(PragmaValue(QStringLiteral("journal_mode")),
                   PragmaValue(QStringLiteral("synchronous"))));
    const qint32 recipeID = AddRecipe();
    if (recipeID < 0) {
        return 1;
    }
    // The main window: its routine deletes the old sections on saving.
    const auto mainStart = Clock::now();
    frmMain mainWindow;
    Print(QStringLiteral("main window built in %1 s (its tree holds the whole collection)")
              .arg(Fixed(MillisecondsSince(mainStart) / 1000.0)));
    if (!TraceStatements()) {
        Print(QStringLiteral("(no statement trace: the SQLite handle is not reachable)"));
    }
    if (MeasureRecipe(recipeID, options) != 0) {
        return 1;
    }
    modDatabase::CloseConnection();
    Print(QStringLiteral("done"));
    return 0;
}

}  // namespace

int main(int argc, char** argv) { return Main<QApplication>(argc, argv, "bench_editor", Measure); }
