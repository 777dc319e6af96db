#include "tools/ToolSupport.h"

#include "core/AppError.h"
#include "core/database/DatabaseAddress.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "core/startup/Startup.h"
#include "tools/ToolCommands.h"

namespace ToolSupport {

std::optional<Arguments> Parse(const QStringList& arguments, const QStringList& valued,
                               QString& problem) {
    Arguments parsed;
    for (int i = 0; i < arguments.size(); ++i) {
        const QString& argument = arguments[i];
        if (argument == QLatin1String("--sample")) {
            parsed.sample = true;
        } else if (valued.contains(argument)) {
            if (i + 1 >= arguments.size()) {
                problem = QStringLiteral("Možnost %1 potrebuje vrednost.").arg(argument);
                return std::nullopt;
            }
            parsed.options.insert(argument, arguments[++i]);
        } else if (argument.startsWith(QLatin1String("--"))) {
            problem = QStringLiteral("Neznana možnost: %1").arg(argument);
            return std::nullopt;
        } else {
            parsed.positional << argument;
        }
    }
    return parsed;
}

int Usage(QTextStream& err, const QString& problem) {
    err << problem << " (morvena-tool --help)" << Qt::endl;
    return ToolCommands::BadArguments;
}

int Failure(QTextStream& err, const QString& message) {
    err << message << Qt::endl;
    return ToolCommands::Failed;
}

QString ErrorText() {
    const AppError error = ErrorPath::Current();
    return error.Source() + QStringLiteral("->") + error.Description();
}

bool UseDatabase(const QString& value, QString& problem) {
    const auto address = DatabaseAddress::Parse(value, problem);
    if (address) {
        DatabaseAddress::UseForProgram(*address);
    }
    return address.has_value();
}

int OpenDatabase(const std::optional<QString>& database, QTextStream& err) {
    modGeneral::ReadSettings();
    QString problem;
    if (database && !UseDatabase(*database, problem)) {
        return Usage(err, problem);
    }
    modDatabase::OpenConnection();
    if (modDatabase::Connection->State() != modDatabase::adStateOpen) {
        return Failure(err, modDatabase::Connection->LastError());
    }
    return ToolCommands::Done;
}

int OpenDatabase(const QMap<QString, QString>& options, QTextStream& err) {
    const auto named = options.find(QStringLiteral("--database"));
    return OpenDatabase(named == options.end() ? std::nullopt : std::optional<QString>(*named),
                        err);
}

}  // namespace ToolSupport
