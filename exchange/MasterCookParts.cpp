#include "exchange/MasterCookParts.h"

#include <QRegularExpression>

namespace Exchange::MasterCookParts {
namespace {

const QRegularExpression Enclosed(QStringLiteral(R"(^=+\s*(.*?)\s*=+$)"));
const QRegularExpression Servings(QStringLiteral(R"(^\s*(\d+))"));

// The text without a colon at its end, trimmed.
QString WithoutColon(const QString& text) {
    QString title = text.trimmed();
    if (title.endsWith(QLatin1Char(':'))) {
        title.chop(1);
    }
    return title.trimmed();
}

}  // namespace

QString Author(const QString& text) {
    const QString author = text.trimmed();
    return author.compare(QLatin1String("n/a"), Qt::CaseInsensitive) == 0 ? QString() : author;
}

QString Yield(const QString& servings, const QString& otherYield) {
    const QString number = Servings.match(servings).captured(1);
    if (number.isEmpty() || number.toLongLong() == 0) {
        return otherYield.trimmed();
    }
    const QString count = QString::number(number.toLongLong());
    return count +
           (count == QLatin1String("1") ? QStringLiteral(" serving") : QStringLiteral(" servings"));
}

QString HeadingTitle(const Line& line) {
    if (!line.amountText.isEmpty() || !line.unit.isEmpty() || !line.preparation.isEmpty()) {
        return QString();
    }
    const QString enclosed = Enclosed.match(line.ingredient).captured(1);
    if (!enclosed.isEmpty() || !line.ingredient.endsWith(QLatin1Char(':'))) {
        return enclosed;
    }
    return WithoutColon(line.ingredient);
}

void AddIngredient(Recipe& recipe, const Line& line, bool heading) {
    const QString title = HeadingTitle(line);
    if (title.isEmpty() && !heading) {
        LastSection(recipe).lines << line;
        return;
    }
    recipe.sections << Section{title.isEmpty() ? WithoutColon(line.original) : title, {}, {}};
}

}  // namespace Exchange::MasterCookParts
