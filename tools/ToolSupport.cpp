#include "tools/ToolSupport.h"

#include "core/AppError.h"
#include "core/DatabaseAddress.h"
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

}  // namespace ToolSupport
