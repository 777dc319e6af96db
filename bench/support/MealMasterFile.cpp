#include "bench/support/MealMasterFile.h"

#include <QFile>
#include <QStringList>

namespace Bench::MealMasterFile {
namespace {

QString Column(const QString& amount, const QString& unit, const QString& text) {
    return amount.rightJustified(7) + QLatin1Char(' ') + unit.leftJustified(2) + QLatin1Char(' ') +
           text;
}

}  // namespace

QByteArray Recipe(int number) {
    const QStringList lines = {
        QStringLiteral("MMMMM----- Recipe via Meal-Master (tm) v8.02"),
        QStringLiteral("      Title: Generated recipe %1").arg(number),
        QStringLiteral(" Categories: Generated, Bench"),
        QStringLiteral("      Yield: 4 servings"),
        QString(),
        Column("1", "c", "Flour").leftJustified(41) + Column("2", "tb", "Sugar"),
        Column("1 1/2", "ts", "Salt").leftJustified(41) + Column("1", "lg", "Egg, beaten"),
        QStringLiteral("MMMMM-----------------------FILLING-----------------------------"),
        Column("1/2", "lb", "Butter; softened and cut into"),
        Column("", "", "-small pieces"),
        QString(),
        QStringLiteral("  Mix the flour, sugar and salt. Add the egg and stir until the dough"),
        QStringLiteral("  is smooth and leave it to rest for half an hour in a cool place."),
        QString(),
        QStringLiteral("  Spread the filling over the dough and bake for 25 minutes at 200 C."),
        QStringLiteral("MMMMM"),
        QString(),
    };
    return lines.join(QStringLiteral("\r\n")).toLatin1() + "\r\n";
}

int Write(const QString& fileName, int megabytes) {
    QFile file(fileName);
    if (!file.open(QIODevice::WriteOnly)) {
        return 0;
    }
    int recipes = 0;
    while (file.size() < qint64(megabytes) * 1024 * 1024) {
        QByteArray block;
        for (int i = 0; i < 1000; ++i) {
            block += Recipe(++recipes);
        }
        if (file.write(block) != block.size()) {
            return 0;
        }
    }
    return recipes;
}

int ReadLines(const QString& fileName) {
    QFile file(fileName);
    qint64 lines = 0;
    if (file.open(QIODevice::ReadOnly)) {
        while (!file.readLine().isEmpty()) {
            ++lines;
        }
    }
    return lines > 0 ? 0 : 1;
}

}  // namespace Bench::MealMasterFile
