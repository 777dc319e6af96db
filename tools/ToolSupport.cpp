#include "tools/ToolSupport.h"

#include "core/AppError.h"
#include "core/DatabaseAddress.h"
#include "core/modDatabase.h"
#include "core/modGeneral.h"
#include "tools/ToolCommands.h"

namespace ToolSupport {

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
