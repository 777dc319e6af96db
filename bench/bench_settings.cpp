// Measures what a splitter drag costs the settings store: the main window (offscreen, on an
// empty SQLite database) gets a mouse press on its splitter, 200 mouse moves and a release; every
// move stores "SplitterPosition". Prints the time of the 200 stores alone (the same 200 calls of
// SetRegistryLong that the moves make), the whole drag with its layout, and beside them the
// floors measured in the same run: writing the file's bytes 200 times into one open file, and
// 200 replacements of the file that each wait for the disk (what a store costs with a sync).
// Prints figures; the exit code only says whether the measuring itself could run.
//
// Usage: bench_settings [--moves 200]
#include <fcntl.h>
#include <unistd.h>

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QMouseEvent>
#include <QWidget>
#include <cstdio>
#include <memory>

#include "bench/support/BenchOptions.h"
#include "bench/support/BenchSupport.h"
#include "bench/support/Workspace.h"
#include "core/database/Schema.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "core/registry/modRegistry.h"
#include "core/ui/UiServices.h"
#include "main/frmMain.h"

namespace {

using namespace Bench;

// A store as a user's machine holds it after some use.
void WriteUsualStore() {
    using namespace modRegistry;
    SetRegistryString(ProgramKey, QStringLiteral("ServerName"), QString(), true);
    SetRegistryString(ProgramKey, QStringLiteral("DatabaseName"), modGeneral::DatabaseName, true);
    SetRegistryString(ProgramKey, QStringLiteral("TempFilename"), modGeneral::TempFilename, true);
    SetRegistryString(ProgramKey, QStringLiteral("Username"), QString(), true);
    SetRegistryString(ProgramKey, QStringLiteral("Password"), QString(), true);
    SetRegistryLong(ProgramKey, QStringLiteral("DatabaseType"), 1, true);
    SetRegistryString(ProgramKey, QStringLiteral("InstallDir"), QStringLiteral("/usr/share"), true);
}

void SendMouse(QWidget* target, QEvent::Type type, int x) {
    const QPointF local(x, 5);
    QMouseEvent event(type, local, target->mapToGlobal(local), Qt::LeftButton,
                      type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton,
                      Qt::NoModifier);
    QApplication::sendEvent(target, &event);
}

// Moves to and fro by one pixel each, so every move changes the stored position.
double Drag(QWidget* splitter, int moves) {
    SendMouse(splitter, QEvent::MouseButtonPress, 0);
    const auto start = Clock::now();
    for (int i = 0; i < moves; ++i) {
        SendMouse(splitter, QEvent::MouseMove, i % 2 == 0 ? 1 : -1);
    }
    const double ms = Milliseconds(Clock::now() - start);
    SendMouse(splitter, QEvent::MouseButtonRelease, 0);
    return ms;
}

double StoreCalls(int moves) {
    const auto start = Clock::now();
    for (int i = 0; i < moves; ++i) {
        modRegistry::SetRegistryLong(modRegistry::ProgramKey, QStringLiteral("SplitterPosition"),
                                     2000 + 15 * (i % 2), true);
    }
    return Milliseconds(Clock::now() - start);
}

double WriteFloor(const QByteArray& bytes, const QString& fileName, int moves) {
    const int fd = ::open(QFile::encodeName(fileName).constData(), O_WRONLY | O_CREAT, 0600);
    const auto start = Clock::now();
    for (int i = 0; i < moves; ++i) {
        if (::pwrite(fd, bytes.constData(), size_t(bytes.size()), 0) != bytes.size()) {
            break;
        }
    }
    const double ms = Milliseconds(Clock::now() - start);
    ::close(fd);
    return ms;
}

double SyncedReplacements(const QByteArray& bytes, const QString& fileName, int moves) {
    const QByteArray target = QFile::encodeName(fileName);
    const QByteArray temporary = target + ".new";
    const auto start = Clock::now();
    for (int i = 0; i < moves; ++i) {
        const int fd = ::open(temporary.constData(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        const bool ok = ::write(fd, bytes.constData(), size_t(bytes.size())) == bytes.size() &&
                        ::fsync(fd) == 0;
        ::close(fd);
        if (!ok || ::rename(temporary.constData(), target.constData()) != 0) {
            break;
        }
    }
    return Milliseconds(Clock::now() - start);
}

// The program's database: an empty one in the temporary folder.
bool OpenEmptyDatabase(const Workspace& work) {
    modGeneral::DatabaseType = modDatabase::FileDatabase;
    modGeneral::DatabaseName = work.File(QStringLiteral("empty.sqlite"));
    {
        auto empty = std::make_shared<modDatabase::DbConnection>(
            modDatabase::FileDatabase,
            modDatabase::BuildConnectionString(modDatabase::FileDatabase, QString(),
                                               modGeneral::DatabaseName, QString(), QString()));
        empty->OpenEmpty();
        Schema::Create(*empty);
    }
    modDatabase::OpenConnection();
    return modDatabase::Connection->State() == modDatabase::adStateOpen;
}

qint32 StoredPosition() {
    return modRegistry::GetRegistryLong(modRegistry::ProgramKey, QStringLiteral("SplitterPosition"),
                                        -1, true);
}

// That a move of one pixel changes the stored position.
void PrintOneMove(QWidget* splitter) {
    const QString before = QString::number(StoredPosition());
    SendMouse(splitter, QEvent::MouseButtonPress, 0);
    SendMouse(splitter, QEvent::MouseMove, 1);
    SendMouse(splitter, QEvent::MouseButtonRelease, 0);
    Print(QStringLiteral("stored position before and after a move of one pixel: %1, %2 twips")
              .arg(before)
              .arg(StoredPosition()));
}

// The drags, the stores alone and the floors, 5 rounds each; the synced replacements once.
void MeasureMoves(QWidget* splitter, const QByteArray& bytes, const Workspace& work, int moves) {
    std::vector<double> drags, stores, floors;
    for (int round = 0; round < 5; ++round) {
        drags.push_back(Drag(splitter, moves));
        stores.push_back(StoreCalls(moves));
        floors.push_back(WriteFloor(bytes, work.File(QStringLiteral("floor.reg")), moves));
    }
    const double synced = SyncedReplacements(bytes, work.File(QStringLiteral("synced.reg")), moves);
    Print(QStringLiteral("%1 stores of SplitterPosition (read, change one line, write beside, "
                         "rename): median %2 ms (%3 ms each); target at most 50 ms: %4")
              .arg(moves)
              .arg(Fixed(Median(stores)), Fixed(Median(stores) / moves, 3),
                   Median(stores) <= 50.0 ? QStringLiteral("met") : QStringLiteral("missed")));
    Print(QStringLiteral("the whole drag of %1 mouse moves (layout and stores): median %2 ms")
              .arg(moves)
              .arg(Fixed(Median(drags))));
    Print(QStringLiteral("floor: the same bytes written %1 times into one open file: median %2 ms")
              .arg(moves)
              .arg(Fixed(Median(floors))));
    Print(QStringLiteral("for comparison: %1 replacements that each wait for the disk (fsync): "
                         "%2 ms (%3 ms each)")
              .arg(moves)
              .arg(Fixed(synced), Fixed(synced / moves, 3)));
}

int Measure(int moves, const Workspace& work) {
    if (!OpenEmptyDatabase(work)) {
        std::fprintf(stderr, "cannot open the database\n");
        return 1;
    }
    WriteUsualStore();
    UiServices::SetMsgBoxHandler([](const QString&, int, const QString&) { return 6; });
    frmMain window;
    window.resize(900, 600);
    window.show();
    QWidget* splitter = window.findChild<QWidget*>(QStringLiteral("imgSplitter"));
    if (!splitter) {
        std::fprintf(stderr, "no splitter\n");
        return 1;
    }
    QFile file(modRegistry::StoreFile(true));
    const QByteArray bytes = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    Print(QStringLiteral("bench_settings: %1 moves; settings file %2 bytes in %3; load %4")
              .arg(moves)
              .arg(bytes.size())
              .arg(work.Path(), LoadAverage()));
    Drag(splitter, 10);  // warm-up
    PrintOneMove(splitter);
    MeasureMoves(splitter, bytes, work, moves);
    window.hide();
    modDatabase::CloseConnection();
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    QApplication app(argc, argv);
    int moves = 200;
    // A private folder on the same file system as the user's settings (the home folder).
    return Run(
        QStringLiteral("bench_settings"), {Count("--moves", moves, 2)}, QString(),
        [&](const Workspace& work) { return Measure(moves, work); },
        QDir::homePath() + QStringLiteral("/.bench_settings-XXXXXX"));
}
