#include "exchange/SchemaOrgWriter.h"

#include <QJsonArray>
#include <QStringList>

namespace Exchange::SchemaOrgWriter {
namespace {

QString Html(const QString& text) {
    return text.toHtmlEscaped().replace(QStringLiteral("&quot;"), QStringLiteral("\""));
}

QString IngredientText(const Line& line) {
    QString amount = line.amountText;
    amount.replace(QLatin1Char('.'), QLatin1Char(','));
    QStringList parts{amount, line.unit, line.ingredient};
    parts.removeAll(QString());
    return Html(parts.join(QLatin1Char(' ')));
}

QJsonArray Steps(const Section& section) {
    QJsonArray steps;
    for (const QString& step : section.steps) {
        steps.append(QJsonObject{{QStringLiteral("@type"), QStringLiteral("HowToStep")},
                                 {QStringLiteral("text"), Html(step)}});
    }
    return steps;
}

QJsonArray Categories(const Recipe& recipe) {
    QJsonArray categories;
    for (const QString& category : recipe.categories) {
        categories.append(Html(category));
    }
    return categories;
}

}  // namespace

QJsonObject Write(const Recipe& recipe) {
    const bool grouped = recipe.sections.size() > 1;
    QJsonArray ingredients;
    QJsonArray instructions;
    for (const Section& section : recipe.sections) {
        if (grouped && !section.title.isEmpty() && !section.lines.isEmpty()) {
            ingredients.append(Html(section.title) + QLatin1Char(':'));
        }
        for (const Line& line : section.lines) {
            ingredients.append(IngredientText(line));
        }
        const QJsonArray steps = Steps(section);
        if (section.title.isEmpty() || !grouped) {
            for (const QJsonValue& step : steps) {
                instructions.append(step);
            }
        } else if (!steps.isEmpty()) {
            instructions.append(
                QJsonObject{{QStringLiteral("@type"), QStringLiteral("HowToSection")},
                            {QStringLiteral("name"), Html(section.title)},
                            {QStringLiteral("itemListElement"), steps}});
        }
    }
    QJsonObject object{{QStringLiteral("@context"), QStringLiteral("https://schema.org")},
                       {QStringLiteral("@type"), QStringLiteral("Recipe")},
                       {QStringLiteral("name"), Html(recipe.title)},
                       {QStringLiteral("recipeCategory"), Categories(recipe)},
                       {QStringLiteral("recipeIngredient"), ingredients},
                       {QStringLiteral("recipeInstructions"), instructions}};
    if (!recipe.source.isEmpty()) {
        object.insert(QStringLiteral("author"),
                      QJsonObject{{QStringLiteral("@type"), QStringLiteral("Person")},
                                  {QStringLiteral("name"), Html(recipe.source)}});
    }
    return object;
}

}  // namespace Exchange::SchemaOrgWriter
