#pragma once

#include <QString>
#include <QStringList>
#include <chrono>
#include <vector>

#include "collection/SyntheticDatabase.h"

// What the benchmark programs share: timing, printing, and the generated databases they
// measure on (SQLite files kept in a cache folder, databases on a private PostgreSQL server).
namespace Bench {

using Clock = std::chrono::steady_clock;

extern const QString PgUser;
extern const QString PgPassword;

double Milliseconds(Clock::duration d);
double MillisecondsSince(Clock::time_point start);
double Median(std::vector<double> values);
void Print(const QString& line);
QString Fixed(double value, int decimals = 2);
// The error being handled as "source->description".
QString ErrorText();
// The machine's load average, for judging how noisy the figures are.
QString LoadAverage();
// A line of this process's /proc/self/status after its field name ("VmHWM:" gives "52344 kB");
// empty when there is none.
QString StatusField(const char* field);
// The last line of a program: "done" and the machine's load.
void PrintDone();

// One process's wall time in seconds and its peak resident memory in MB.
struct ProcessRun {
    double seconds = -1.0;  // negative when it did not run or failed
    double peakMegabytes = 0.0;
    bool stopped = false;  // it ran out of its time and was killed
};
// Runs a program with its arguments, its output going nowhere, and waits for it; with a
// positive `limitSeconds` at most that long, after which it is killed. The disks are synced
// first, and the peak memory is the child's own (VmHWM, looked at every 2 ms).
ProcessRun RunProcess(const QStringList& command, double limitSeconds = 0.0);

// "LABEL  N recipes", where a figure's line starts.
QString Where(const QString& label, int recipes);
// "[target T met]" or "[target T MISSED]".
QString Verdict(const QString& target, bool met);
// A figure over its floor; 0 without a floor.
double Ratio(double value, double floor);

// Creates and fills a generated database like morvena-tool's generate; returns the seconds it
// took, or a negative number after printing why it failed.
double GenerateInto(int kind, const QString& server, const QString& database, int recipes,
                    SyntheticDatabase::Shape shape = SyntheticDatabase::Shape::Uniform);
void RemoveSqliteFiles(const QString& fileName);
// The generated SQLite file with `recipes` recipes in `folder`, reused when `cached` and there.
QString SqliteDatabase(const QString& folder, bool cached, int recipes,
                       SyntheticDatabase::Shape shape = SyntheticDatabase::Shape::Uniform);
// "uniform" or "home" (home cooking).
QString ShapeName(SyntheticDatabase::Shape shape);
// Opens the program's shared connection on a database of the kind.
bool OpenShared(int kind, const QString& server, const QString& database);
// Creates an empty database on the server (dropping one of the same name).
bool CreateServerDatabase(const QString& server, const QString& name);
// Creates a database of that size and shape on the server as generate does and opens the
// shared connection on it, vacuumed and analysed as a database in use long has been.
bool OpenGeneratedOnServer(const QString& server, const QString& name, int recipes,
                           SyntheticDatabase::Shape shape = SyntheticDatabase::Shape::Uniform);

}  // namespace Bench
