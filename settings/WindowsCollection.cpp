#include "settings/WindowsCollection.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QProgressDialog>

#include "collection/AccessConversion.h"
#include "core/database/AccessFile.h"
#include "core/database/Schema.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "core/registry/modRegistry.h"
#include "core/ui/UiServices.h"

namespace WindowsCollection {
namespace {

bool Asked(const QString& accessFile, const QString& newFile) {
    return UiServices::MsgBox(
               QStringLiteral("Datoteka %1 je zbirka receptov programa Morvena za Windows "
                              "(Access).\r\n\r\nAli jo želite pretvoriti v zbirko tega "
                              "programa? Recepti bodo zapisani v novo datoteko %2, datoteka %1 "
                              "pa ostane, kakršna je.")
                   .arg(accessFile, newFile),
               UiServices::vbYesNo + UiServices::vbQuestion) == UiServices::vbYes;
}

// Shows how far the conversion is, table by table, and lets the cook stop it.
class Progress {
public:
    explicit Progress(QWidget* parent)
        : m_dialog(QString(), QStringLiteral("Prekliči"), 0, int(Schema::TableNames().size()),
                   parent) {
        m_dialog.setObjectName(QStringLiteral("dlgConversion"));
        m_dialog.setWindowTitle(UiServices::MsgBoxTitle());
        m_dialog.setWindowModality(Qt::ApplicationModal);
        m_dialog.setMinimumDuration(500);
        m_dialog.setAutoClose(false);
        m_dialog.setAutoReset(false);
        Show(QString());
    }
    CollectionCopy::Hooks Hooks() {
        CollectionCopy::Hooks hooks;
        hooks.progress = [this](const QString& table, qint64 done, qint64 total) {
            if (done == total) {
                Show(table);
            }
        };
        hooks.cancelled = [this] {
            QCoreApplication::processEvents();
            return m_dialog.wasCanceled();
        };
        return hooks;
    }

private:
    void Show(const QString& finishedTable) {
        const int tables = int(Schema::TableNames().size());
        const int finished = int(Schema::TableNames().indexOf(finishedTable)) + 1;
        m_dialog.setLabelText(
            finished < tables
                ? QStringLiteral("Pretvarjanje zbirke: %1 od %2 tabel").arg(finished).arg(tables)
                : QStringLiteral("Preverjanje pretvorjene zbirke"));
        m_dialog.setValue(finished);
    }

    QProgressDialog m_dialog;
};

void UseAsDatabase(const QString& newFile) {
    modGeneral::DatabaseName = newFile;
    // Written with a lower-case n, as the settings dialog writes it.
    modRegistry::SetRegistryString(modRegistry::ProgramKey, QStringLiteral("Databasename"), newFile,
                                   true);
    modRegistry::SetRegistryLong(modRegistry::ProgramKey, QStringLiteral("DatabaseType"),
                                 modDatabase::FileDatabase, true);
    modDatabase::OpenConnection();
}

}  // namespace

Outcome Offer(QWidget* parent) {
    const QString accessFile = modGeneral::DatabaseName;
    if (modGeneral::DatabaseType != modDatabase::FileDatabase ||
        !AccessFile::IsAccessFile(accessFile)) {
        return Outcome::NotAccess;
    }
    const QString newFile = AccessConversion::NewFileFor(accessFile);
    if (!Asked(QFileInfo(accessFile).absoluteFilePath(), newFile)) {
        return Outcome::Declined;
    }
    UiServices::SetMousePointer(UiServices::vbHourglass);
    CollectionCopy::Outcome outcome;
    bool stopped = false;
    {
        Progress progress(parent);
        const CollectionCopy::Hooks hooks = progress.Hooks();
        outcome = AccessConversion::Convert(accessFile, newFile, hooks);
        stopped = !outcome.copied && hooks.cancelled();
    }
    UiServices::SetMousePointer(UiServices::vbDefault);
    if (stopped) {
        return Outcome::Declined;
    }
    if (!outcome.copied) {
        UiServices::MsgBox(QStringLiteral("Pretvorba ni uspela.\r\n\r\n") + outcome.message,
                           UiServices::vbOKOnly + UiServices::vbInformation);
        return Outcome::Failed;
    }
    UseAsDatabase(newFile);
    const auto& connection = modDatabase::Connection;
    return connection && connection->State() == modDatabase::adStateOpen ? Outcome::Converted
                                                                         : Outcome::Failed;
}

}  // namespace WindowsCollection
