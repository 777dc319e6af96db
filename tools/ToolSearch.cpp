#include "tools/ToolSearch.h"

#include <optional>

#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "search/SearchQuery.h"
#include "tools/ToolCommands.h"
#include "tools/ToolSupport.h"

namespace ToolCommands {
namespace {

// What the options ask for: the search window's criteria and how they combine, the sort
// column, the query's text alone or its rows, and the database.
struct Request {
    SearchQuery::Criteria criteria;
    qint16 overall = SearchQuery::AllValues;
    qint16 sortColumn = 1;
    bool sqlOnly = false;
    std::optional<QString> database;
};

// The criterion an option names (--Group, --Type, ...), or -1.
int Criterion(const QString& argument) {
    return argument.startsWith(QLatin1String("--")) ? SearchQuery::CriterionOf(argument.mid(2))
                                                    : -1;
}

bool TakesValue(const QString& argument) {
    return Criterion(argument) >= 0 || argument == QLatin1String("--any") ||
           argument == QLatin1String("--sort") || argument == QLatin1String("--database");
}

// --any KEY: the criterion is met by any one of its values.
bool TakeAny(const QString& key, Request& request, QTextStream& err) {
    const int criterion = SearchQuery::CriterionOf(key);
    if (criterion < 0) {
        ToolSupport::Usage(err, QStringLiteral("--any potrebuje ključ Group, Type, RecipeTitle, "
                                               "SectionTitle, Ingredient ali Instructions."));
        return false;
    }
    request.criteria.match[criterion] = SearchQuery::AnyValue;
    return true;
}

// --sort N: the column to sort by, negative for descending.
bool TakeSort(const QString& value, Request& request, QTextStream& err) {
    bool numeric = false;
    const int number = value.toInt(&numeric);
    if (!numeric || number < -32768 || number > 32767) {
        ToolSupport::Usage(err,
                           QStringLiteral("--sort potrebuje celo število od -32768 do 32767."));
        return false;
    }
    request.sortColumn = static_cast<qint16>(number);
    return true;
}

// Takes an option's value; false after the usage message when the value is not good.
bool TakeValue(const QString& option, const QString& value, Request& request, QTextStream& err) {
    const int criterion = Criterion(option);
    if (criterion >= 0) {
        // As in the search window: a value never holds an apostrophe.
        request.criteria.values[criterion] << modGeneral::RemoveQuotes(value);
        return true;
    }
    if (option == QLatin1String("--any")) {
        return TakeAny(value, request, err);
    }
    if (option == QLatin1String("--sort")) {
        return TakeSort(value, request, err);
    }
    request.database = value;
    return true;
}

// Reads the options after the command's name; false after the usage message.
bool ReadOptions(const QStringList& arguments, Request& request, QTextStream& err) {
    for (int i = 1; i < arguments.size(); ++i) {
        const QString& argument = arguments[i];
        if (argument == QLatin1String("--sql")) {
            request.sqlOnly = true;
        } else if (argument == QLatin1String("--any-criterion")) {
            request.overall = SearchQuery::AnyValue;
        } else if (!TakesValue(argument)) {
            ToolSupport::Usage(
                err, argument.startsWith(QLatin1String("--"))
                         ? QStringLiteral("Neznana možnost: %1").arg(argument)
                         : QStringLiteral("search ne sprejme argumenta %1.").arg(argument));
            return false;
        } else if (i + 1 >= arguments.size()) {
            ToolSupport::Usage(err, QStringLiteral("Možnost %1 potrebuje vrednost.").arg(argument));
            return false;
        } else if (!TakeValue(argument, arguments[++i], request, err)) {
            return false;
        }
    }
    return true;
}

// One line a recipe found: title, number, group and subgroup, separated by tabs. The rows go
// from the database straight into the text, which is shown only when all were read.
QString ResultLines(const QString& sql) {
    RowReader rows = modDatabase::ReadRows(sql);
    const int fields[] = {
        rows.Field(QStringLiteral("Title")), rows.Field(QStringLiteral("recipeID")),
        rows.Field(QStringLiteral("groupName")), rows.Field(QStringLiteral("TypeName"))};
    QByteArray lines;
    while (rows.Next()) {
        for (int i = 0; i < 4; ++i) {
            rows.AppendText(fields[i], lines);
            lines += i < 3 ? '\t' : '\n';
        }
    }
    return QString::fromUtf8(lines);
}

}  // namespace

int Search(const QStringList& arguments, QTextStream& out, QTextStream& err) {
    Request request;
    if (!ReadOptions(arguments, request, err)) {
        return BadArguments;
    }
    QString sql;
    try {
        sql = SearchQuery::BuildQuery(request.criteria, request.overall, request.sortColumn);
    } catch (...) {
        return ToolSupport::Failure(err, ToolSupport::ErrorText());
    }
    if (request.sqlOnly) {
        out << sql << Qt::endl;
        return Done;
    }
    if (const int failed =
            ToolSupport::OpenDatabase(request.database, ToolSupport::Use::Reading, err)) {
        return failed;
    }
    try {
        out << ResultLines(sql);
        out.flush();
    } catch (...) {
        return ToolSupport::Failure(err, ToolSupport::ErrorText());
    }
    return Done;
}

}  // namespace ToolCommands
