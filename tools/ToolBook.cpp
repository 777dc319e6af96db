#include "tools/ToolBook.h"

#include <QElapsedTimer>
#include <algorithm>

#include "core/Windows1250.h"
#include "core/database/Recordset.h"
#include "core/database/modDatabase.h"
#include "display/modDisplay.h"
#include "tools/ToolCommands.h"
#include "tools/ToolSupport.h"

namespace ToolCommands {
namespace {

// The pages of the book in the tree's order (display file bytes), and how many are recipes.
struct Pages {
    QList<QByteArray> pages;
    int recipes = 0;

    void Add(const QString& page) { pages << Windows1250::Encode(page); }
};

// The keys of a statement's rows, read from one field.
QList<qint32> Keys(const QString& sql, const QString& field) {
    QList<qint32> keys;
    Recordset rs = modDatabase::GetRecordset(sql);
    for (; !rs.Eof(); rs.MoveNext()) {
        keys << modDatabase::NullToStr(rs.Fields(field)).toInt();
    }
    rs.Close();
    return keys;
}

QList<qint32> Groups() {
    return Keys(QStringLiteral("SELECT * FROM [Group] ORDER BY name;"), QStringLiteral("groupID"));
}

QList<qint32> TypesOf(qint32 groupID) {
    return Keys(
        QStringLiteral("SELECT * FROM [Type] WHERE groupID = %1 ORDER BY name;").arg(groupID),
        QStringLiteral("typeID"));
}

QList<qint32> RecipesOf(qint32 typeID) {
    return Keys(
        QStringLiteral("SELECT * FROM [Recipe] WHERE typeID = %1 ORDER BY title;").arg(typeID),
        QStringLiteral("recipeID"));
}

// A subgroup's page and then its recipes' pages.
void AddType(qint32 typeID, Pages& book) {
    book.Add(modDisplay::TypePage(typeID));
    for (const qint32 recipeID : RecipesOf(typeID)) {
        book.Add(modDisplay::RecipePage(recipeID));
        ++book.recipes;
    }
}

// A group's page and then its subgroups with their recipes.
void AddGroup(qint32 groupID, Pages& book) {
    book.Add(modDisplay::GroupPage(groupID));
    for (const qint32 typeID : TypesOf(groupID)) {
        AddType(typeID, book);
    }
}

// What goes into the book: one group (--group), one subgroup (--type) or all groups.
struct Selection {
    bool byGroup = false;
    bool byType = false;
    qint32 id = 0;
};

// The selection the options make; nullopt when both are given or the number is not one.
std::optional<Selection> Select(const ToolSupport::Arguments& args) {
    Selection selection;
    selection.byGroup = args.options.contains(QStringLiteral("--group"));
    selection.byType = args.options.contains(QStringLiteral("--type"));
    bool numeric = true;
    if (selection.byGroup) {
        selection.id = args.options.value(QStringLiteral("--group")).toInt(&numeric);
    } else if (selection.byType) {
        selection.id = args.options.value(QStringLiteral("--type")).toInt(&numeric);
    }
    if ((selection.byGroup && selection.byType) || !numeric) {
        return std::nullopt;
    }
    return selection;
}

Pages ReadPages(const Selection& selection) {
    Pages book;
    if (selection.byType) {
        AddType(selection.id, book);
    } else if (selection.byGroup) {
        AddGroup(selection.id, book);
    } else {
        for (const qint32 groupID : Groups()) {
            AddGroup(groupID, book);
        }
    }
    return book;
}

QString Seconds(qint64 milliseconds) { return QString::number(milliseconds / 1000.0, 'f', 1); }

// The printer's progress: the pages laid out, then the sheets printed; told once a second and
// at the end of each stage.
PagePrinter::BookProgress ReportSteps(const QElapsedTimer& timer, QTextStream& err) {
    return [&timer, &err, lastReport = qint64(0)](PagePrinter::BookStage stage, int done,
                                                  int total) mutable {
        if (done != total && timer.elapsed() - lastReport < 1000) {
            return;
        }
        lastReport = timer.elapsed();
        err << QStringLiteral("%1 %2 od %3 strani")
                   .arg(stage == PagePrinter::BookStage::LayingOut ? QStringLiteral("Postavljeno")
                                                                   : QStringLiteral("Natisnjeno"))
                   .arg(done)
                   .arg(total)
            << Qt::endl;
    };
}

}  // namespace

int Book(const QStringList& arguments, QTextStream& err) {
    const auto args = ToolSupport::PrintArguments(
        arguments, {"--pdf", "--paper", "--database", "--group", "--type"}, err);
    if (!args) {
        return BadArguments;
    }
    const auto selection = Select(*args);
    const auto paper = ToolSupport::Paper(*args);
    if (!args->positional.isEmpty() || !selection ||
        !args->options.contains(QStringLiteral("--pdf")) || !paper) {
        return ToolSupport::Usage(
            err, QStringLiteral("book potrebuje --pdf DATOTEKA in največ eno od --group "
                                "ŠTEVILKA ali --type ŠTEVILKA (papir a4 ali letter)."));
    }
    if (const int failed =
            ToolSupport::OpenDatabase(args->options, ToolSupport::Use::Reading, err)) {
        return failed;
    }
    QElapsedTimer timer;
    timer.start();
    try {
        const Pages book = ReadPages(*selection);
        err << QStringLiteral("Knjiga: %1 strani (%2 receptov), prebrane v %3 s.")
                   .arg(book.pages.size())
                   .arg(book.recipes)
                   .arg(Seconds(timer.elapsed()))
            << Qt::endl;
        ToolSupport::PrintPages(book.pages, args->options.value(QStringLiteral("--pdf")), *paper,
                                ReportSteps(timer, err));
        err << QStringLiteral("Knjiga je natisnjena v %1 s (%2 receptov na sekundo).")
                   .arg(Seconds(timer.elapsed()))
                   .arg(book.recipes * 1000.0 / std::max<qint64>(1, timer.elapsed()), 0, 'f', 0)
            << Qt::endl;
    } catch (...) {
        return ToolSupport::Failure(err, ToolSupport::ErrorText());
    }
    return Done;
}

}  // namespace ToolCommands
