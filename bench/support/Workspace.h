#pragma once

#include <QGuiApplication>
#include <QString>
#include <QTemporaryDir>
#include <functional>
#include <memory>
#include <type_traits>
#include <vector>

#include "bench/support/BenchOptions.h"
#include "collection/SyntheticDatabase.h"

namespace Bench {

// Where a benchmark program works: a temporary folder, made the current folder, that holds the
// program's settings, its display file and whatever its code writes on the way (the error log),
// so that nothing touches the user's files; and the folder of the generated SQLite databases,
// the cache folder when one is given (kept for later runs), else the temporary folder.
class Workspace {
public:
    // `cacheDir` as given on the command line (relative to the current folder), empty for none;
    // `pattern` the temporary folder's template, empty for one in the system's folder.
    explicit Workspace(const QString& cacheDir, const QString& pattern = QString());

    // False after telling stderr which folder could not be made.
    bool Ready() const { return m_ready; }
    QString Path() const { return m_work->path(); }
    // A file in the temporary folder.
    QString File(const QString& name) const;
    // The generated SQLite database of that size and shape: reused from the cache folder, or
    // generated; empty after printing why it failed.
    QString Database(int recipes,
                     SyntheticDatabase::Shape shape = SyntheticDatabase::Shape::Uniform) const;

private:
    bool MakeFolders();

    std::unique_ptr<QTemporaryDir> m_work;
    QString m_cacheFolder;  // absolute, empty for none
    bool m_ready = false;
};

// A program's course after its application is made: reads the options (exit code 2 after the
// usage line when they are not good), makes the workspace with the cache folder they fill in
// `cacheDir` and the temporary folder's `pattern` (1 when it cannot be made) and returns the
// exit code of `measure`.
int Run(const QString& program, const std::vector<Option>& options, const QString& cacheDir,
        const std::function<int(const Workspace&)>& measure, const QString& pattern = QString());

// Runs `measure` with each size's generated SQLite file open as the shared connection, closing
// it afterwards; returns 1 when a file could not be made or opened, else 0.
int ForEachSqliteSize(const Workspace& work, const std::vector<int>& sizes,
                      const std::function<void(const QString& file, int recipes)>& measure);

// The whole of a program's main: makes the application (one that shows windows draws them
// offscreen unless the environment names a platform), reads the program's Options (their List()
// binds each option to a member, cacheDir names the cache folder) and runs `measure` as Run
// does.
template <class Application, class Options>
int Main(int argc, char** argv, const char* program,
         int (*measure)(const Options&, const Workspace&)) {
    if (std::is_base_of_v<QGuiApplication, Application> &&
        qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    Application app(argc, argv);
    Options options;
    return Run(QString::fromLatin1(program), options.List(), options.cacheDir,
               [&](const Workspace& work) { return measure(options, work); });
}

}  // namespace Bench
