#include "exchange/ExchangeRecipe.h"

namespace Exchange {

int LineCount(const Recipe& recipe) {
    int lines = 0;
    for (const Section& section : recipe.sections) {
        lines += static_cast<int>(section.lines.size());
    }
    return lines;
}

}  // namespace Exchange
