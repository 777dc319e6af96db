#include "bench/support/BenchOptions.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <cstdio>

namespace Bench {
namespace {

// The whole number the text holds when it is at least `least`.
bool WholeNumber(const QString& text, int least, int& number) {
    bool ok = false;
    const int value = text.toInt(&ok);
    if (ok && value >= least) {
        number = value;
    }
    return ok && value >= least;
}

const Option* Find(const std::vector<Option>& options, const QString& name) {
    for (const Option& option : options) {
        if (option.name == name) {
            return &option;
        }
    }
    return nullptr;
}

}  // namespace

Option Text(const char* name, const char* placeholder, QString& target) {
    return {QLatin1String(name), QLatin1String(placeholder), [&target](const QString& value) {
                target = value;
                return true;
            }};
}

Option Path(const char* name, const char* placeholder, QString& target) {
    return {QLatin1String(name), QLatin1String(placeholder), [&target](const QString& value) {
                target = QFileInfo(value).absoluteFilePath();
                return true;
            }};
}

Option Count(const char* name, int& target, int least) {
    return {QLatin1String(name), QStringLiteral("N"),
            [&target, least](const QString& value) { return WholeNumber(value, least, target); }};
}

Option Sizes(const char* name, const char* placeholder, std::vector<int>& target) {
    return {QLatin1String(name), QLatin1String(placeholder), [&target](const QString& value) {
                target.clear();
                for (const QString& size : value.split(QLatin1Char(','))) {
                    int recipes = 0;
                    if (!WholeNumber(size, 1, recipes)) {
                        return false;
                    }
                    target.push_back(recipes);
                }
                return true;
            }};
}

Option Shapes(const char* name, std::vector<SyntheticDatabase::Shape>& target) {
    return {QLatin1String(name), QStringLiteral("uniform,home"), [&target](const QString& value) {
                target.clear();
                for (const QString& shape : value.split(QLatin1Char(','))) {
                    if (shape == QLatin1String("uniform")) {
                        target.push_back(SyntheticDatabase::Shape::Uniform);
                    } else if (shape == QLatin1String("home")) {
                        target.push_back(SyntheticDatabase::Shape::HomeCooking);
                    } else {
                        return false;
                    }
                }
                return true;
            }};
}

Option Switch(const char* name, bool& target, bool value) {
    return {QLatin1String(name), QString(), [&target, value](const QString&) {
                target = value;
                return true;
            }};
}

QString UsageLine(const QString& program, const std::vector<Option>& options) {
    QString line = QStringLiteral("usage: ") + program;
    for (const Option& option : options) {
        line += QStringLiteral(" [") + option.name;
        if (!option.placeholder.isEmpty()) {
            line += QLatin1Char(' ') + option.placeholder;
        }
        line += QLatin1Char(']');
    }
    return line;
}

bool ReadOptions(const QStringList& arguments, const std::vector<Option>& options) {
    for (int i = 1; i < arguments.size(); ++i) {
        const Option* option = Find(options, arguments[i]);
        const bool valued = option && !option->placeholder.isEmpty();
        if (!option || (valued && i + 1 >= arguments.size())) {
            return false;
        }
        if (!option->take(valued ? arguments[++i] : QString())) {
            return false;
        }
    }
    return true;
}

bool ReadOptions(const QString& program, const std::vector<Option>& options) {
    if (ReadOptions(QCoreApplication::arguments(), options)) {
        return true;
    }
    std::fprintf(stderr, "%s\n", qPrintable(UsageLine(program, options)));
    return false;
}

}  // namespace Bench
