#include "exchange/RecipeImport.h"

#include "core/AppError.h"
#include "core/database/modDatabase.h"
#include "exchange/CollectionImport.h"
#include "exchange/RecipeFiles.h"

namespace Exchange {
namespace {

// The end of an import that the progress asked for.
struct Stopped {};

void Count(FileReport& file, const CollectionImport::Result& result) {
    ++file.found;
    switch (result.outcome) {
        case CollectionImport::Outcome::Imported:
            ++file.imported;
            for (const LineNote& note : result.notes) {  // a skipped recipe's lines are no news
                file.lines.append({result.title, note});
            }
            if (file.firstRecipeID == 0) {
                file.firstRecipeID = result.recipeID;
            }
            break;
        case CollectionImport::Outcome::Duplicate:
            file.skipped.append({result.title, QStringLiteral("enak recept je že v zbirki")});
            break;
        case CollectionImport::Outcome::NoTitle:
            file.skipped.append({QString(), QStringLiteral("recept nima naslova")});
            break;
    }
}

// While an import writes into a file, a commit waits for the disk only now and then (when the
// log, up to 64 MB, is copied into the file), not for every recipe: a power cut may lose the
// last recipes imported (never part of one), and a second import of the same files adds just
// those, for the others are then duplicates.
class QuickCommits {
public:
    explicit QuickCommits(modDatabase::DbConnection& connection) : m_connection(connection) {
        if (m_connection.SqliteHandle()) {
            modDatabase::Execute(m_connection, QStringLiteral("PRAGMA synchronous=NORMAL"));
            modDatabase::Execute(m_connection, QStringLiteral("PRAGMA wal_autocheckpoint=16384"));
        }
    }
    ~QuickCommits() {
        if (m_connection.SqliteHandle()) {
            try {
                modDatabase::Execute(m_connection, QStringLiteral("PRAGMA synchronous=FULL"));
                modDatabase::Execute(m_connection,
                                     QStringLiteral("PRAGMA wal_autocheckpoint=1000"));
            } catch (...) {
                // the connection is lost: so is its setting
            }
        }
    }
    QuickCommits(const QuickCommits&) = delete;
    QuickCommits& operator=(const QuickCommits&) = delete;

private:
    modDatabase::DbConnection& m_connection;
};

}  // namespace

ImportReport ImportFiles(modDatabase::DbConnection& connection, const QStringList& paths,
                         const ImportOptions& options, const ImportProgress& progress) {
    ImportReport report;
    report.dryRun = options.dryRun;
    try {
        const QuickCommits commits(connection);
        CollectionImport import(connection, options.typeID, options.dryRun,
                                options.allowDuplicates);
        for (int index = 0; index < paths.size(); ++index) {
            FileReport& file = report.files.emplace_back();
            file.path = paths.at(index);
            FileNotes notes;
            file.failure = RecipeFiles::Read(
                file.path, options.encoding,
                [&](Recipe&& recipe) {
                    Count(file, import.Import(recipe));
                    if (progress && !progress(index, file.found)) {
                        throw Stopped();
                    }
                },
                notes, file.format);
            file.problems = notes.problems;
            file.notRecipes = notes.notRecipes;
        }
    } catch (const Stopped&) {
        report.stopped = QStringLiteral("uvoz je bil prekinjen.");
    } catch (...) {
        const AppError error = ErrorPath::Current();
        report.stopped = QStringLiteral("%1: %2").arg(error.Source(), error.Description());
    }
    return report;
}

}  // namespace Exchange
