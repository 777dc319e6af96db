#include "exchange/RecipeMlFormat.h"

#include <QXmlStreamReader>
#include <functional>

#include "exchange/Quantity.h"
#include "exchange/XmlText.h"

namespace Exchange::RecipeMlFormat {
namespace {

// The steps of a <dir-div> with its title, or those outside one, untitled.
struct MethodPart {
    QString title;
    QStringList steps;
};

// A recipe as it is read.
struct Reading {
    Recipe recipe;
    QStringList sources;
    QList<MethodPart> method;
    bool groupEnded = false;  // an <ing-div> ended after the last ingredient outside one
};

struct Amount {
    QString quantity;
    QString unit;
};

struct Ingredient {
    Amount amount;
    QString item;
    QString preparation;
};

bool Is(const QXmlStreamReader& xml, const char* name) { return xml.name() == QLatin1String(name); }

// The text of the current element and of all inside it, as one line.
QString ElementText(QXmlStreamReader& xml) { return OneLine(XmlText::ElementText(xml)); }

// Reads the current element to its end: gives its own text, and hands each element inside it to
// `child`, which reads that to its end.
QString ReadMixed(QXmlStreamReader& xml, const std::function<void()>& child) {
    QString text;
    while (!xml.atEnd()) {
        const QXmlStreamReader::TokenType token = xml.readNext();
        if (token == QXmlStreamReader::StartElement) {
            child();
        } else if (token == QXmlStreamReader::Characters) {
            text += xml.text();
        } else if (token == QXmlStreamReader::EndElement) {
            break;
        }
    }
    return text;
}

// <range><q1>3/4</q1><q2>1</q2></range> as "3/4-1".
QString ReadRange(QXmlStreamReader& xml) {
    QStringList bounds;
    while (xml.readNextStartElement()) {
        if (Is(xml, "q1") || Is(xml, "q2")) {
            bounds << ElementText(xml);
        } else {
            xml.skipCurrentElement();
        }
    }
    bounds.removeAll(QString());
    return bounds.join(QLatin1Char('-'));
}

// A <qty>: its text, or its <range>.
QString ReadQuantity(QXmlStreamReader& xml) {
    QString range;
    const QString text = ReadMixed(xml, [&xml, &range] {
        if (Is(xml, "range")) {
            range = ReadRange(xml);
        } else {
            xml.skipCurrentElement();
        }
    });
    return range.isEmpty() ? OneLine(text) : range;
}

// An <amt> or a <yield>: a <qty>, a <range> or a text, and a <unit>.
Amount ReadAmount(QXmlStreamReader& xml) {
    Amount amount;
    const QString text = ReadMixed(xml, [&xml, &amount] {
        if (Is(xml, "qty")) {
            amount.quantity = ReadQuantity(xml);
        } else if (Is(xml, "range")) {
            amount.quantity = ReadRange(xml);
        } else if (Is(xml, "unit")) {
            amount.unit = ElementText(xml);
        } else {
            xml.skipCurrentElement();
        }
    });
    if (amount.quantity.isEmpty()) {
        amount.quantity = OneLine(text);
    }
    return amount;
}

// The yield as text; a number without a unit is a number of servings.
QString YieldText(const Amount& amount) {
    const Quantity number = Quantity::Read(amount.quantity);
    if (!amount.unit.isEmpty() || number.IsEmpty() || number.length < amount.quantity.size()) {
        return (amount.quantity + QLatin1Char(' ') + amount.unit).trimmed();
    }
    const bool one = number.value == QLatin1String("1") && number.rangeTo.isEmpty();
    return amount.quantity + (one ? QStringLiteral(" serving") : QStringLiteral(" servings"));
}

// The parts of an <ing>, its alternatives added to `alternatives`; of an <alt-ing> when that is
// null.
Ingredient ReadIngredient(QXmlStreamReader& xml, QList<Ingredient>* alternatives) {
    Ingredient ingredient;
    while (xml.readNextStartElement()) {
        if (Is(xml, "amt")) {
            ingredient.amount = ReadAmount(xml);
        } else if (Is(xml, "item")) {
            ingredient.item = ElementText(xml);
        } else if (Is(xml, "prep")) {
            ingredient.preparation = ElementText(xml);
        } else if (Is(xml, "alt-ing") && alternatives != nullptr) {
            alternatives->append(ReadIngredient(xml, nullptr));
        } else {
            xml.skipCurrentElement();
        }
    }
    return ingredient;
}

// The lines of an <ing>: its own, then one for each alternative.
QList<Line> IngredientLines(QXmlStreamReader& xml) {
    QList<Ingredient> alternatives;
    const QList<Ingredient> all = QList<Ingredient>{ReadIngredient(xml, &alternatives)}
                                  << alternatives;
    QList<Line> lines;
    for (qsizetype at = 0; at < all.size(); ++at) {
        const Ingredient& ingredient = all[at];
        QString preparation = ingredient.preparation;
        if (at + 1 < all.size()) {
            preparation += preparation.isEmpty() ? QStringLiteral("or") : QStringLiteral(", or");
        }
        const Line line = LineOfParts(ingredient.amount.quantity, ingredient.amount.unit,
                                      ingredient.item, preparation);
        if (!line.original.isEmpty()) {
            lines << line;
        }
    }
    return lines;
}

void ReadGroup(QXmlStreamReader& xml, Reading& reading) {
    reading.recipe.sections << Section();
    while (xml.readNextStartElement()) {
        if (Is(xml, "title")) {
            reading.recipe.sections.last().title = ElementText(xml);
        } else if (Is(xml, "ing")) {
            reading.recipe.sections.last().lines << IngredientLines(xml);
        } else {
            xml.skipCurrentElement();
        }
    }
    reading.groupEnded = true;
}

void ReadIngredients(QXmlStreamReader& xml, Reading& reading) {
    while (xml.readNextStartElement()) {
        if (Is(xml, "ing-div")) {
            ReadGroup(xml, reading);
        } else if (!Is(xml, "ing")) {
            xml.skipCurrentElement();
        } else if (reading.groupEnded || reading.recipe.sections.isEmpty()) {
            reading.recipe.sections << Section{QString(), IngredientLines(xml), {}};
            reading.groupEnded = false;
        } else {
            reading.recipe.sections.last().lines << IngredientLines(xml);
        }
    }
}

// The <directions> or a <dir-div> in them, whose parts go to `groups` (null inside a part).
MethodPart ReadMethodPart(QXmlStreamReader& xml, QList<MethodPart>* groups) {
    MethodPart part;
    const QString text = ReadMixed(xml, [&xml, &part, groups] {
        if (Is(xml, "step")) {
            part.steps << Paragraphs(XmlText::ElementText(xml));
        } else if (Is(xml, "title") && groups == nullptr) {
            part.title = ElementText(xml);
        } else if (Is(xml, "dir-div") && groups != nullptr) {
            groups->append(ReadMethodPart(xml, nullptr));
        } else {
            xml.skipCurrentElement();
        }
    });
    if (part.steps.isEmpty()) {
        part.steps = Paragraphs(text);
    }
    return part;
}

Section& SectionTitled(Recipe& recipe, const QString& title) {
    for (Section& section : recipe.sections) {
        if (section.title == title) {
            return section;
        }
    }
    recipe.sections << Section{title, {}, {}};
    return recipe.sections.last();
}

// The method's steps into the sections: those outside a <dir-div> into the last one.
void PlaceMethod(Reading& reading) {
    QStringList untitled;
    for (const MethodPart& part : reading.method) {
        if (part.title.isEmpty()) {
            untitled << part.steps;
        }
    }
    AddMethod(reading.recipe, untitled);
    for (const MethodPart& part : reading.method) {
        if (!part.title.isEmpty()) {
            SectionTitled(reading.recipe, part.title).steps << part.steps;
        }
    }
}

void ReadSource(QXmlStreamReader& xml, Reading& reading) {
    QStringList items;
    const QString text = ReadMixed(xml, [&xml, &items] {
        if (Is(xml, "srcitem")) {
            items << ElementText(xml);
        } else {
            xml.skipCurrentElement();
        }
    });
    items.removeAll(QString());
    reading.sources << (items.isEmpty() ? QStringList{OneLine(text)} : items);
    reading.sources.removeAll(QString());
}

void ReadCategories(QXmlStreamReader& xml, Reading& reading) {
    while (xml.readNextStartElement()) {
        if (Is(xml, "cat")) {
            reading.recipe.categories << ElementText(xml);
        } else {
            xml.skipCurrentElement();
        }
    }
    reading.recipe.categories.removeAll(QString());
}

void ReadHead(QXmlStreamReader& xml, Reading& reading) {
    while (xml.readNextStartElement()) {
        if (Is(xml, "title")) {
            reading.recipe.title = ElementText(xml);
        } else if (Is(xml, "source")) {
            ReadSource(xml, reading);
        } else if (Is(xml, "categories")) {
            ReadCategories(xml, reading);
        } else if (Is(xml, "yield")) {
            reading.recipe.yield = YieldText(ReadAmount(xml));
        } else {
            xml.skipCurrentElement();
        }
    }
}

void ReadRecipe(QXmlStreamReader& xml, const RecipeSink& sink, FileNotes& notes) {
    const int startLine = static_cast<int>(xml.lineNumber());
    Reading reading;
    while (xml.readNextStartElement()) {
        if (Is(xml, "head")) {
            ReadHead(xml, reading);
        } else if (Is(xml, "ingredients")) {
            ReadIngredients(xml, reading);
        } else if (Is(xml, "directions")) {
            reading.method << ReadMethodPart(xml, &reading.method);
        } else {
            xml.skipCurrentElement();
        }
    }
    if (xml.hasError()) {
        return;
    }
    reading.recipe.source = reading.sources.join(QStringLiteral("; "));
    PlaceMethod(reading);
    HandOver(std::move(reading.recipe), startLine, sink, notes);
}

// A recipe, or the recipes of a menu.
void ReadPart(QXmlStreamReader& xml, const RecipeSink& sink, FileNotes& notes) {
    if (Is(xml, "recipe")) {
        ReadRecipe(xml, sink, notes);
        return;
    }
    if (!Is(xml, "menu")) {
        xml.skipCurrentElement();
        return;
    }
    while (xml.readNextStartElement()) {
        if (Is(xml, "recipe")) {
            ReadRecipe(xml, sink, notes);
        } else {
            xml.skipCurrentElement();
        }
    }
}

}  // namespace

bool Recognizes(QByteArrayView start) {
    return XmlText::RootName(start) == QLatin1String("recipeml");
}

void Read(const QByteArray& data, const RecipeSink& sink, FileNotes& notes) {
    XmlText::ReadFile(data, QLatin1String("recipeml"), QStringLiteral("RecipeML"), notes,
                      [&](QXmlStreamReader& xml) { ReadPart(xml, sink, notes); });
}

}  // namespace Exchange::RecipeMlFormat
