#include "tools/ToolCopy.h"

#include <QElapsedTimer>
#include <atomic>
#include <csignal>

#include "collection/CollectionCopy.h"
#include "core/database/DatabaseAddress.h"
#include "tools/ToolCommands.h"
#include "tools/ToolSupport.h"

namespace ToolCommands {
namespace {

volatile std::sig_atomic_t g_stopRequested = 0;

extern "C" void RequestStop(int) { g_stopRequested = 1; }

// Ctrl+C, a closed terminal or a polite kill stop the copy between two batches of rows, so
// that the target is rolled back rather than left half-written.
class StopOnSignals {
public:
    StopOnSignals() {
        for (int signal : {SIGINT, SIGTERM, SIGHUP}) {
            m_previous.push_back(std::signal(signal, RequestStop));
        }
    }
    ~StopOnSignals() {
        const int signals[] = {SIGINT, SIGTERM, SIGHUP};
        for (size_t i = 0; i < m_previous.size(); ++i) {
            std::signal(signals[i], m_previous[i]);
        }
    }

private:
    std::vector<void (*)(int)> m_previous;
};

}  // namespace

int Copy(const QStringList& arguments, QTextStream& out, QTextStream& err) {
    const auto names = ToolSupport::Names(
        arguments, 2, QStringLiteral("copy potrebuje izvorno in ciljno zbirko."), err);
    if (!names) {
        return BadArguments;
    }
    QString problem;
    const auto source = DatabaseAddress::Parse(names->at(0), problem);
    const auto target = source ? DatabaseAddress::Parse(names->at(1), problem) : std::nullopt;
    if (!source || !target) {
        return ToolSupport::Usage(err, problem);
    }
    QElapsedTimer sinceReport;
    sinceReport.start();
    CollectionCopy::Hooks hooks;
    hooks.cancelled = [] { return g_stopRequested != 0; };
    hooks.progress = [&](const QString& table, qint64 done, qint64 total) {
        if (sinceReport.elapsed() >= 1000) {
            err << QStringLiteral("Kopiranje: %1 %2/%3").arg(table).arg(done).arg(total)
                << Qt::endl;
            sinceReport.restart();
        }
    };
    g_stopRequested = 0;
    const StopOnSignals stopOnSignals;
    const CollectionCopy::Outcome outcome = CollectionCopy::Copy(*source, *target, hooks);
    if (!outcome.copied) {
        return ToolSupport::Failure(err, outcome.message);
    }
    out << QStringLiteral(
               "Zbirka je kopirana v %1 in preverjena (vrstice in kontrolna vsota "
               "SHA-256 vsake tabele):")
               .arg(DatabaseAddress::Describe(*target))
        << Qt::endl;
    for (const CollectionCopy::TableSummary& table : outcome.tables) {
        out << table.table << '\t' << table.rows << '\t' << table.checksum << Qt::endl;
    }
    return Done;
}

}  // namespace ToolCommands
