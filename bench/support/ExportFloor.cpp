#include "bench/support/ExportFloor.h"

#include <sqlite3.h>

#include <QDir>
#include <QFile>
#include <cstdio>
#include <string>

namespace Bench::ExportFloor {
namespace {

const char* const RecipesSql =
    "SELECT r.recipeID, r.title, s.name, g.name, t.name FROM [Recipe] r LEFT OUTER JOIN "
    "[Source] s ON s.sourceID = r.sourceID LEFT OUTER JOIN [Type] t ON t.typeID = r.typeID LEFT "
    "OUTER JOIN [Group] g ON g.groupID = t.groupID ORDER BY r.recipeID";
const char* const SectionsSql =
    "SELECT rs.sectionID, s.title, s.instructions FROM [RecipeSection] rs INNER JOIN [Section] s "
    "ON s.sectionID = rs.sectionID WHERE rs.recipeID = ?1 ORDER BY rs.place, rs.sectionID";
const char* const LinesSql =
    "SELECT si.amount, u.name, i.name FROM [SectionIngredient] si INNER JOIN [Unit] u ON "
    "u.unitID = si.unitID INNER JOIN [Ingredient] i ON i.ingredientID = si.ingredientID WHERE "
    "si.sectionID = ?1 ORDER BY si.sectionIngredientID";

// One statement, prepared once and run again for each key.
class Cursor {
public:
    Cursor(sqlite3* db, const char* sql) {
        m_ok = sqlite3_prepare_v2(db, sql, -1, &m_statement, nullptr) == SQLITE_OK;
    }
    ~Cursor() { sqlite3_finalize(m_statement); }
    Cursor(const Cursor&) = delete;
    Cursor& operator=(const Cursor&) = delete;

    // Runs the statement again for the key.
    void Start(sqlite3_int64 key) {
        sqlite3_reset(m_statement);
        sqlite3_bind_int64(m_statement, 1, key);
    }
    // Moves to the next row; false after the last one, or after a failure.
    bool Next() {
        const int result = m_ok ? sqlite3_step(m_statement) : SQLITE_ERROR;
        m_ok = result == SQLITE_ROW || result == SQLITE_DONE;
        return result == SQLITE_ROW;
    }
    bool Failed() const { return !m_ok; }
    sqlite3_int64 Key(int column) const { return sqlite3_column_int64(m_statement, column); }
    // Appends the column's text to `text`.
    void Add(std::string& text, int column) const {
        const auto* bytes = reinterpret_cast<const char*>(sqlite3_column_text(m_statement, column));
        text.append(bytes ? bytes : "", size_t(sqlite3_column_bytes(m_statement, column)));
    }

private:
    sqlite3_stmt* m_statement = nullptr;
    bool m_ok = false;
};

struct Cursors {
    explicit Cursors(sqlite3* db)
        : recipes(db, RecipesSql), sections(db, SectionsSql), lines(db, LinesSql) {}

    bool Failed() const { return recipes.Failed() || sections.Failed() || lines.Failed(); }

    Cursor recipes;
    Cursor sections;
    Cursor lines;
};

// The recipe the recipes' cursor stands on, as text.
void RecipeText(Cursors& read, std::string& text) {
    read.recipes.Add(text, 1);
    text += '\n';
    for (int column = 2; column <= 4; ++column) {
        read.recipes.Add(text, column);
        text += column < 4 ? " | " : "\n";
    }
    for (read.sections.Start(read.recipes.Key(0)); read.sections.Next();) {
        text += "== ";
        read.sections.Add(text, 1);
        text += '\n';
        for (read.lines.Start(read.sections.Key(0)); read.lines.Next();) {
            for (int column = 0; column <= 2; ++column) {
                read.lines.Add(text, column);
                text += column < 2 ? ' ' : '\n';
            }
        }
        read.sections.Add(text, 2);
        text += "\n\n";
    }
}

bool WriteFile(const QString& fileName, const std::string& text) {
    std::FILE* file = std::fopen(QFile::encodeName(fileName).constData(), "wb");
    const bool written = file && std::fwrite(text.data(), 1, text.size(), file) == text.size();
    return file && std::fclose(file) == 0 && written;
}

}  // namespace

int Write(const QString& from, const QString& into, bool filePerRecipe) {
    sqlite3* db = nullptr;
    const QByteArray path = QFile::encodeName(from);
    if (sqlite3_open_v2(path.constData(), &db, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK) {
        std::fprintf(stderr, "cannot open %s\n", qPrintable(from));
        sqlite3_close(db);
        return 1;
    }
    sqlite3_exec(db, "PRAGMA cache_size=-65536", nullptr, nullptr, nullptr);
    std::FILE* file = nullptr;
    if (filePerRecipe ? !QDir().mkpath(into)
                      : !(file = std::fopen(QFile::encodeName(into).constData(), "wb"))) {
        std::fprintf(stderr, "cannot write %s\n", qPrintable(into));
        sqlite3_close(db);
        return 1;
    }
    bool written = true;
    {
        Cursors read(db);
        std::string text;
        while (written && read.recipes.Next()) {
            text.clear();
            RecipeText(read, text);
            written =
                file ? std::fwrite(text.data(), 1, text.size(), file) == text.size()
                     : WriteFile(QStringLiteral("%1/%2.txt").arg(into).arg(read.recipes.Key(0)),
                                 text);
        }
        written = written && !read.Failed();
    }
    if (file) {
        written = std::fclose(file) == 0 && written;
    }
    sqlite3_close(db);
    if (!written) {
        std::fprintf(stderr, "reading %s or writing %s failed\n", qPrintable(from),
                     qPrintable(into));
    }
    return written ? 0 : 1;
}

}  // namespace Bench::ExportFloor
