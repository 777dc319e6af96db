#pragma once

#include <QList>
#include <QString>

#include "exchange/ExchangeRecipe.h"

// One line of a Cooklang step with its marks: ingredients (@salt, @olive oil{2%tbsp},
// @onion{1}(chopped)), cookware (#pan, #frying pan{}) and timers (~{25%minutes}, ~rest).
namespace Exchange::CooklangStep {

struct ReadLine {
    QString text;             // the line as a cook reads it: each mark as its name, a timer as
                              // its time ("25 minutes") or, without one, its name
    QList<Line> ingredients;  // one line per ingredient mark, in order
};

// Reads a line whose comments are already gone. A sign that starts no mark ("@ home", "# 5")
// stays text.
ReadLine Read(const QString& line);

}  // namespace Exchange::CooklangStep
