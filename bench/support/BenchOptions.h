#pragma once

#include <QString>
#include <QStringList>
#include <functional>
#include <vector>

#include "collection/SyntheticDatabase.h"

// The command-line options of the benchmark programs: each program lists the options it takes,
// each bound to the variable its value goes into, in the order of its usage line.
namespace Bench {

struct Option {
    QString name;
    // What the value is called in the usage line; empty for an option without a value.
    QString placeholder;
    // Takes the value (empty for an option without one); false when it is not good.
    std::function<bool(const QString& value)> take;
};

// --name TEXT, taken as it is.
Option Text(const char* name, const char* placeholder, QString& target);
// --name PATH, made absolute against the current folder.
Option Path(const char* name, const char* placeholder, QString& target);
// --name N, a whole number of at least `least`.
Option Count(const char* name, int& target, int least = 1);
// --name N,N,..., whole numbers of at least 1.
Option Sizes(const char* name, const char* placeholder, std::vector<int>& target);
// --name uniform,home: the shapes of generated collections.
Option Shapes(const char* name, std::vector<SyntheticDatabase::Shape>& target);
// --name alone, which sets the flag to `value`.
Option Switch(const char* name, bool& target, bool value);

// "usage: PROGRAM [--name VALUE] ..."
QString UsageLine(const QString& program, const std::vector<Option>& options);
// Reads the arguments (the program's own name first) into the options. False for an option
// that is not listed, one without its value, or a value that is not good.
bool ReadOptions(const QStringList& arguments, const std::vector<Option>& options);
// The same with the application's arguments; false after printing the usage line to stderr.
bool ReadOptions(const QString& program, const std::vector<Option>& options);

}  // namespace Bench
