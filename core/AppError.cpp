#include "core/AppError.h"

#include "Version.h"
#include "core/modGeneral.h"
#include "core/ui/UiServices.h"

AppError::AppError(long number, QString source, QString description)
    : m_number(number),
      m_source(std::move(source)),
      m_description(std::move(description)),
      m_what((m_source + QStringLiteral("->") + m_description).toStdString()) {}

namespace ErrorPath {

const QString UnexpectedErrorMessage = QStringLiteral(
    "Prišlo je do nepričakovane napake.\r\n\r\nOpis napake v datoteki errors.log sporočite "
    "avtorju.");

QString RuntimeSource() { return QString::fromUtf8(Version::Title); }

void Raise(long number, const QString& description) {
    throw AppError(number, RuntimeSource(), description);
}

AppError Current() {
    try {
        throw;
    } catch (const AppError& error) {
        return error;
    } catch (const std::exception& error) {
        return AppError(0, RuntimeSource(), QString::fromLocal8Bit(error.what()));
    } catch (...) {
        return AppError(0, RuntimeSource(), QStringLiteral("Unknown error"));
    }
}

void RethrowAs(const QString& source) {
    const AppError caught = Current();
    throw AppError(AppError::PassedOn, source,
                   caught.Source() + QStringLiteral("->") + caught.Description());
}

void Report(const QString& source) {
    const AppError caught = Current();
    modGeneral::LogError(source + caught.Source() + QStringLiteral("->") + caught.Description());
    UiServices::MsgBox(UnexpectedErrorMessage, UiServices::vbExclamation);
}

}  // namespace ErrorPath
