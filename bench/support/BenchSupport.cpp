#include "bench/support/BenchSupport.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <cstdio>
#include <memory>

#include "collection/SyntheticDatabase.h"
#include "core/AppError.h"
#include "core/database/Schema.h"
#include "core/database/SqlStatement.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"

extern char** environ;

namespace Bench {

const QString PgUser = QStringLiteral("morvena");
const QString PgPassword = QStringLiteral("morvena-test");

double Milliseconds(Clock::duration d) {
    return std::chrono::duration<double, std::milli>(d).count();
}

double MillisecondsSince(Clock::time_point start) { return Milliseconds(Clock::now() - start); }

double Median(std::vector<double> values) {
    if (values.empty()) {
        return 0.0;
    }
    std::sort(values.begin(), values.end());
    const size_t n = values.size();
    return n % 2 == 1 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) / 2.0;
}

void Print(const QString& line) {
    std::printf("%s\n", line.toUtf8().constData());
    std::fflush(stdout);
}

QString Fixed(double value, int decimals) { return QString::number(value, 'f', decimals); }

QString ErrorText() {
    const AppError error = ErrorPath::Current();
    return error.Source() + QStringLiteral("->") + error.Description();
}

// Creates a database the way morvena-tool's generate does; returns the seconds it took, or a
// negative number after printing why it failed.
double GenerateInto(int kind, const QString& server, const QString& database, int recipes,
                    SyntheticDatabase::Shape shape) {
    const auto start = Clock::now();
    auto connection = std::make_shared<modDatabase::DbConnection>(
        kind, modDatabase::BuildConnectionString(
                  kind, server, database, kind == modDatabase::ServerDatabase ? PgUser : QString(),
                  kind == modDatabase::ServerDatabase ? PgPassword : QString()));
    connection->OpenEmpty();
    if (connection->State() != modDatabase::adStateOpen) {
        Print(QStringLiteral("  cannot create %1: %2").arg(database, connection->LastError()));
        return -1.0;
    }
    try {
        Schema::Create(*connection);
        SyntheticDatabase::Generate(*connection, recipes, shape);
    } catch (...) {
        Print(QStringLiteral("  generating %1 failed: %2").arg(database, ErrorText()));
        return -1.0;
    }
    connection.reset();
    return Milliseconds(Clock::now() - start) / 1000.0;
}

void RemoveSqliteFiles(const QString& fileName) {
    for (const QString& suffix :
         {QString(), QStringLiteral("-wal"), QStringLiteral("-shm"), QStringLiteral("-journal")}) {
        QFile::remove(fileName + suffix);
    }
}

QString ShapeName(SyntheticDatabase::Shape shape) {
    return shape == SyntheticDatabase::Shape::Uniform ? QStringLiteral("uniform")
                                                      : QStringLiteral("home");
}

// The SQLite file with the given number of recipes: reused from the cache folder when there,
// otherwise generated (into the cache folder when one is given). Empty on failure.
QString SqliteDatabase(const QString& folder, bool cached, int recipes,
                       SyntheticDatabase::Shape shape) {
    // The name tells the shape and the schema's indexes, so a file from before is not reused.
    const QString fileName =
        folder +
        QStringLiteral("/bench_%1_%2_%3.sqlite")
            .arg(ShapeName(shape))
            .arg(recipes)
            .arg(QString::number(
                qHash(Schema::Statements(modDatabase::FileDatabase).join(QLatin1Char(';'))), 16));
    if (cached && QFileInfo::exists(fileName)) {
        Print(QStringLiteral("sqlite  %1 recipes  reusing %2").arg(recipes).arg(fileName));
        return fileName;
    }
    const QString partial = fileName + QStringLiteral(".part");
    RemoveSqliteFiles(partial);
    const double seconds =
        GenerateInto(modDatabase::FileDatabase, QString(), partial, recipes, shape);
    if (seconds < 0) {
        RemoveSqliteFiles(partial);
        return QString();
    }
    RemoveSqliteFiles(fileName);
    if (!QFile::rename(partial, fileName)) {
        Print(QStringLiteral("  cannot rename %1 to %2").arg(partial, fileName));
        return QString();
    }
    Print(QStringLiteral("sqlite  %1 recipes  generated in %2 s (%3, %4 MB)")
              .arg(recipes)
              .arg(Fixed(seconds))
              .arg(fileName)
              .arg(Fixed(QFileInfo(fileName).size() / 1048576.0, 1)));
    return fileName;
}

bool OpenShared(int kind, const QString& server, const QString& database) {
    modDatabase::CloseConnection();
    modGeneral::DatabaseType = kind;
    modGeneral::ServerName = server;
    modGeneral::DatabaseName = database;
    modGeneral::Username = kind == modDatabase::ServerDatabase ? PgUser : QString();
    modGeneral::Password = kind == modDatabase::ServerDatabase ? PgPassword : QString();
    modDatabase::OpenConnection();
    if (!modDatabase::Connection || modDatabase::Connection->State() != modDatabase::adStateOpen) {
        Print(QStringLiteral("  cannot open %1: %2")
                  .arg(database, modDatabase::Connection ? modDatabase::Connection->LastError()
                                                         : QStringLiteral("?")));
        return false;
    }
    return true;
}

bool CreateServerDatabase(const QString& server, const QString& name) {
    modDatabase::DbConnection admin(
        modDatabase::ServerDatabase,
        modDatabase::BuildConnectionString(modDatabase::ServerDatabase, server,
                                           QStringLiteral("postgres"), PgUser, PgPassword));
    admin.OpenEmpty();
    if (admin.State() != modDatabase::adStateOpen) {
        Print(QStringLiteral("  cannot reach %1: %2").arg(server, admin.LastError()));
        return false;
    }
    for (const QString& sql :
         {QStringLiteral("SET client_min_messages = warning"),
          QStringLiteral("DROP DATABASE IF EXISTS \"%1\" WITH (FORCE)").arg(name),
          QStringLiteral("CREATE DATABASE \"%1\"").arg(name)}) {
        SqlStatement query(admin);
        if (!query.Exec(sql)) {
            Print(QStringLiteral("  %1: %2").arg(sql, query.Failure().text));
            return false;
        }
    }
    return true;
}

bool OpenGeneratedOnServer(const QString& server, const QString& name, int recipes,
                           SyntheticDatabase::Shape shape) {
    if (!CreateServerDatabase(server, name) ||
        GenerateInto(modDatabase::ServerDatabase, server, name, recipes, shape) < 0 ||
        !OpenShared(modDatabase::ServerDatabase, server, name)) {
        return false;
    }
    SqlStatement(*modDatabase::Connection).Exec(QStringLiteral("VACUUM ANALYZE"));
    return true;
}

// The machine's load: figures taken while other work runs are slower and noisier.
QString StatusField(const char* field) {
    QFile status(QStringLiteral("/proc/self/status"));
    if (status.open(QIODevice::ReadOnly)) {
        for (const QByteArray& line : status.readAll().split('\n')) {
            if (line.startsWith(field)) {
                return QString::fromLatin1(line.mid(int(qstrlen(field))).simplified());
            }
        }
    }
    return QString();
}

QString LoadAverage() {
    QFile file(QStringLiteral("/proc/loadavg"));
    if (!file.open(QIODevice::ReadOnly)) {
        return QStringLiteral("load average unknown");
    }
    const QList<QByteArray> fields = file.readAll().split(' ');
    return QStringLiteral("load average %1 %2 %3")
        .arg(QString::fromUtf8(fields.value(0)), QString::fromUtf8(fields.value(1)),
             QString::fromUtf8(fields.value(2)));
}

void PrintDone() { Print(QStringLiteral("done, %1").arg(LoadAverage())); }

// The child's peak resident memory so far in MB (VmHWM of its own address space since it
// started its program); 0 when it cannot be read. The figure the kernel gives at the end
// (ru_maxrss) would include this program's own size, which a spawned child borrows until it
// starts its program.
double PeakSoFar(pid_t child) {
    QFile status(QStringLiteral("/proc/%1/status").arg(child));
    if (!status.open(QIODevice::ReadOnly)) {
        return 0.0;
    }
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith("VmHWM:")) {
            return line.mid(6).trimmed().split(' ').value(0).toDouble() / 1024.0;
        }
    }
    return 0.0;
}

ProcessRun RunProcess(const QStringList& command, double limitSeconds) {
    std::vector<QByteArray> arguments;
    for (const QString& argument : command) {
        arguments.push_back(QFile::encodeName(argument));
    }
    std::vector<char*> argv;
    for (QByteArray& argument : arguments) {
        argv.push_back(argument.data());
    }
    argv.push_back(nullptr);
    // Nothing that earlier work left to write out is written while this process runs.
    ::sync();
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    const auto start = Clock::now();
    pid_t child = 0;
    const int spawned = posix_spawnp(&child, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    ProcessRun result;
    int status = 0;
    struct rusage usage {};
    if (spawned != 0) {
        return result;
    }
    // The child is looked in on every 2 ms for its memory (and its time limit), so its time
    // may come out 2 ms long.
    const auto deadline = start + std::chrono::duration_cast<Clock::duration>(
                                      std::chrono::duration<double>(limitSeconds));
    pid_t waited = 0;
    double peak = 0.0;
    while ((waited = ::wait4(child, &status, WNOHANG, &usage)) == 0) {
        peak = std::max(peak, PeakSoFar(child));
        if (limitSeconds > 0 && Clock::now() >= deadline) {
            ::kill(child, SIGKILL);
            ::wait4(child, &status, 0, &usage);
            result.stopped = true;
            return result;
        }
        ::usleep(2000);
    }
    if (waited != child || !WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        return result;
    }
    result.seconds = Milliseconds(Clock::now() - start) / 1000.0;
    result.peakMegabytes = peak > 0 ? peak : double(usage.ru_maxrss) / 1024.0;
    return result;
}

QString Where(const QString& label, int recipes) {
    return QStringLiteral("%1  %2 recipes").arg(label).arg(recipes);
}

QString Verdict(const QString& target, bool met) {
    return QStringLiteral("[target %1 %2]")
        .arg(target, met ? QStringLiteral("met") : QStringLiteral("MISSED"));
}

double Ratio(double value, double floor) { return floor > 0 ? value / floor : 0.0; }

}  // namespace Bench
