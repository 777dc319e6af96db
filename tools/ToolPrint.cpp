#include "tools/ToolPrint.h"

#include <QElapsedTimer>
#include <QMap>
#include <QPageSize>
#include <QtPrintSupport/QPrinter>
#include <optional>

#include "core/AppError.h"
#include "core/Windows1250.h"
#include "core/database/Recordset.h"
#include "core/database/modDatabase.h"
#include "display/PagePrinter.h"
#include "display/modDisplay.h"
#include "tools/ToolCommands.h"
#include "tools/ToolSupport.h"

namespace ToolPrint {
namespace {

using ToolCommands::BadArguments;
using ToolCommands::Done;
using ToolCommands::Failed;

using ToolSupport::Arguments;
using ToolSupport::ErrorText;
using ToolSupport::Usage;

// The command's arguments after its name; --sample belongs to no printing command.
std::optional<Arguments> PrintArguments(const QStringList& arguments, const QStringList& valued,
                                        QTextStream& err) {
    QString problem;
    auto args = ToolSupport::Parse(arguments.mid(1), valued, problem);
    if (args && args->sample) {
        problem = QStringLiteral("Neznana možnost: --sample");
        args.reset();
    }
    if (!args) {
        Usage(err, problem);
    }
    return args;
}

// The paper named by --paper: A4 unless "letter"; nullopt for anything else.
std::optional<QPageSize> Paper(const Arguments& args) {
    const QString paper = args.options.value(QStringLiteral("--paper"), QStringLiteral("a4"));
    if (paper.compare(QLatin1String("a4"), Qt::CaseInsensitive) == 0) {
        return QPageSize(QPageSize::A4);
    }
    if (paper.compare(QLatin1String("letter"), Qt::CaseInsensitive) == 0) {
        return QPageSize(QPageSize::Letter);
    }
    return std::nullopt;
}

// Prints the pages (display file bytes) to the PDF file with the program's header and footer.
void PrintPages(const QList<QByteArray>& pages, const QString& pdf, const QPageSize& paper,
                const std::function<void(int, int)>& progress) {
    QPrinter printer(QPrinter::HighResolution);
    printer.setOutputFormat(QPrinter::PdfFormat);
    printer.setOutputFileName(pdf);
    printer.setPageSize(paper);
    PagePrinter::PrintBook(printer, pages, PagePrinter::ProgramPageSetup, progress);
}

QByteArray PageBytes(const QString& page) { return Windows1250::Encode(page); }

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

// A subgroup's page and then its recipes' pages, in the tree's order.
void AddType(qint32 typeID, QList<QByteArray>& pages, int& recipes) {
    pages << PageBytes(modDisplay::TypePage(typeID));
    for (const qint32 recipeID :
         Keys(QStringLiteral("SELECT * FROM [Recipe] WHERE typeID = ") + QString::number(typeID) +
                  QStringLiteral(" ORDER BY title;"),
              QStringLiteral("recipeID"))) {
        pages << PageBytes(modDisplay::RecipePage(recipeID));
        ++recipes;
    }
}

void AddGroup(qint32 groupID, QList<QByteArray>& pages, int& recipes) {
    pages << PageBytes(modDisplay::GroupPage(groupID));
    for (const qint32 typeID :
         Keys(QStringLiteral("SELECT * FROM [Type] WHERE groupID = ") + QString::number(groupID) +
                  QStringLiteral(" ORDER BY name;"),
              QStringLiteral("typeID"))) {
        AddType(typeID, pages, recipes);
    }
}

}  // namespace

int Print(const QStringList& arguments, QTextStream& err) {
    const auto args = PrintArguments(arguments, {"--pdf", "--paper", "--database"}, err);
    if (!args) {
        return BadArguments;
    }
    const QString kind = args->positional.value(0);
    bool numeric = false;
    const qint32 id = args->positional.value(1).toInt(&numeric);
    if (args->positional.size() != 2 || !numeric || !QStringList{"R", "T", "G"}.contains(kind)) {
        return Usage(err, QStringLiteral("print potrebuje vrsto R, T ali G in številko zapisa."));
    }
    const auto paper = Paper(*args);
    if (!args->options.contains(QStringLiteral("--pdf")) || !paper) {
        return Usage(err, QStringLiteral("print potrebuje --pdf DATOTEKA (papir a4 ali letter)."));
    }
    if (const int failed = ToolSupport::OpenDatabase(args->options, err)) {
        return failed;
    }
    try {
        const QString page = kind == QLatin1String("R")   ? modDisplay::RecipePage(id)
                             : kind == QLatin1String("T") ? modDisplay::TypePage(id)
                                                          : modDisplay::GroupPage(id);
        PrintPages({PageBytes(page)}, args->options.value(QStringLiteral("--pdf")), *paper, {});
    } catch (...) {
        err << ErrorText() << Qt::endl;
        return Failed;
    }
    return Done;
}

int Book(const QStringList& arguments, QTextStream& err) {
    const auto args =
        PrintArguments(arguments, {"--pdf", "--paper", "--database", "--group", "--type"}, err);
    if (!args) {
        return BadArguments;
    }
    const bool byGroup = args->options.contains(QStringLiteral("--group"));
    const bool byType = args->options.contains(QStringLiteral("--type"));
    bool numeric = true;
    const qint32 id = byGroup  ? args->options.value(QStringLiteral("--group")).toInt(&numeric)
                      : byType ? args->options.value(QStringLiteral("--type")).toInt(&numeric)
                               : 0;
    const auto paper = Paper(*args);
    if (!args->positional.isEmpty() || (byGroup && byType) || !numeric ||
        !args->options.contains(QStringLiteral("--pdf")) || !paper) {
        return Usage(err, QStringLiteral("book potrebuje --pdf DATOTEKA in največ eno od --group "
                                         "ŠTEVILKA ali --type ŠTEVILKA (papir a4 ali letter)."));
    }
    if (const int failed = ToolSupport::OpenDatabase(args->options, err)) {
        return failed;
    }
    QElapsedTimer timer;
    timer.start();
    try {
        QList<QByteArray> pages;
        int recipes = 0;
        if (byType) {
            AddType(id, pages, recipes);
        } else if (byGroup) {
            AddGroup(id, pages, recipes);
        } else {
            for (const qint32 groupID : Keys(QStringLiteral("SELECT * FROM [Group] ORDER BY name;"),
                                             QStringLiteral("groupID"))) {
                AddGroup(groupID, pages, recipes);
            }
        }
        err << QStringLiteral("Knjiga: %1 strani (%2 receptov), prebrane v %3 s.")
                   .arg(pages.size())
                   .arg(recipes)
                   .arg(timer.elapsed() / 1000.0, 0, 'f', 1)
            << Qt::endl;
        qint64 lastReport = 0;
        PrintPages(pages, args->options.value(QStringLiteral("--pdf")), *paper,
                   [&](int step, int steps) {
                       if (step == steps || timer.elapsed() - lastReport >= 1000) {
                           lastReport = timer.elapsed();
                           err << QStringLiteral("%1 %2 od %3 strani")
                                      .arg(step * 2 <= steps ? QStringLiteral("Postavljeno")
                                                             : QStringLiteral("Natisnjeno"))
                                      .arg(step * 2 <= steps ? step : step - steps / 2)
                                      .arg(steps / 2)
                               << Qt::endl;
                       }
                   });
        err << QStringLiteral("Knjiga je natisnjena v %1 s (%2 receptov na sekundo).")
                   .arg(timer.elapsed() / 1000.0, 0, 'f', 1)
                   .arg(recipes * 1000.0 / std::max<qint64>(1, timer.elapsed()), 0, 'f', 0)
            << Qt::endl;
    } catch (...) {
        err << ErrorText() << Qt::endl;
        return Failed;
    }
    return Done;
}

}  // namespace ToolPrint
