#include "exchange/MasterCookXmlFormat.h"

#include <QRegularExpression>
#include <QXmlStreamReader>

#include "exchange/MasterCookParts.h"
#include "exchange/XmlText.h"

namespace Exchange::MasterCookXmlFormat {
namespace {

const QRegularExpression Blanks(QStringLiteral(R"(\s+)"));
const QRegularExpression WholeNumber(QStringLiteral(R"(^\d+$)"));
const QRegularExpression ZerosAfterPoint(QStringLiteral(R"(\.?0+$)"));

// A recipe as it is read.
struct Reading {
    Recipe recipe;
    QStringList sources;
    QString servings;
    QString otherYield;
    QStringList steps;
    QStringList notes;
};

using ElementReader = void (*)(QXmlStreamReader& xml, Reading& reading);

QString Attribute(const QXmlStreamReader& xml, QLatin1String name) {
    return OneLine(xml.attributes().value(name).toString());
}

// The amount of a "qty" attribute: its numbers, a whole number followed by a fraction taken as
// one, and two numbers joined by a dash.
QString AmountText(const QString& qty) {
    QStringList numbers;
    for (const QString& word : qty.split(Blanks, Qt::SkipEmptyParts)) {
        if (!numbers.isEmpty() && word.contains(QLatin1Char('/')) &&
            WholeNumber.match(numbers.last()).hasMatch()) {
            numbers.last() += QLatin1Char(' ') + word;
        } else {
            numbers << word;
        }
    }
    return numbers.join(numbers.size() == 2 ? QStringLiteral("-") : QStringLiteral(" "));
}

// A decimal without the zeros at its end: "2.000000" is "2", "1.750000" "1.75".
QString WithoutTrailingZeros(const QString& number) {
    if (!number.contains(QLatin1Char('.'))) {
        return number;
    }
    return QString(number).remove(ZerosAfterPoint);
}

void ReadServings(QXmlStreamReader& xml, Reading& reading) {
    reading.servings = Attribute(xml, QLatin1String("qty"));
    xml.skipCurrentElement();
}

void ReadYield(QXmlStreamReader& xml, Reading& reading) {
    const QString qty = WithoutTrailingZeros(Attribute(xml, QLatin1String("qty")));
    reading.otherYield = (qty + QLatin1Char(' ') + Attribute(xml, QLatin1String("unit"))).trimmed();
    xml.skipCurrentElement();
}

void ReadCategories(QXmlStreamReader& xml, Reading& reading) {
    while (xml.readNextStartElement()) {
        if (xml.name() != QLatin1String("CatT")) {
            xml.skipCurrentElement();
            continue;
        }
        const QString category = OneLine(XmlText::ElementText(xml));
        if (!category.isEmpty()) {
            reading.recipe.categories << category;
        }
    }
}

void ReadIngredient(QXmlStreamReader& xml, Reading& reading) {
    const QString amount = AmountText(Attribute(xml, QLatin1String("qty")));
    const QString unit = Attribute(xml, QLatin1String("unit"));
    const QString name = Attribute(xml, QLatin1String("name"));
    const bool heading = Attribute(xml, QLatin1String("code")) == QLatin1String("S");
    QString preparation;
    while (xml.readNextStartElement()) {
        if (xml.name() == QLatin1String("IPrp")) {
            preparation = OneLine(XmlText::ElementText(xml));
        } else {
            xml.skipCurrentElement();
        }
    }
    const Line line = LineOfParts(amount, unit, name, preparation);
    if (!line.original.isEmpty()) {
        MasterCookParts::AddIngredient(reading.recipe, line, heading);
    }
}

void ReadDirections(QXmlStreamReader& xml, Reading& reading) {
    while (xml.readNextStartElement()) {
        if (xml.name() == QLatin1String("DirT")) {
            reading.steps << Paragraphs(XmlText::ElementText(xml));
        } else {
            xml.skipCurrentElement();
        }
    }
}

void ReadNote(QXmlStreamReader& xml, Reading& reading) {
    reading.notes << Paragraphs(XmlText::ElementText(xml));
}

void ReadSource(QXmlStreamReader& xml, Reading& reading) {
    const QString source = OneLine(XmlText::ElementText(xml));
    if (!source.isEmpty()) {
        reading.sources << source;
    }
}

void ReadOtherSource(QXmlStreamReader& xml, Reading& reading) {
    const QString label = Attribute(xml, QLatin1String("label"));
    const QString source = Attribute(xml, QLatin1String("source"));
    if (!source.isEmpty()) {
        reading.sources << (label.isEmpty() ? source : label + QStringLiteral(": ") + source);
    }
    xml.skipCurrentElement();
}

const std::pair<QLatin1String, ElementReader> ElementReaders[] = {
    {QLatin1String("Serv"), ReadServings},   {QLatin1String("Yield"), ReadYield},
    {QLatin1String("CatS"), ReadCategories}, {QLatin1String("IngR"), ReadIngredient},
    {QLatin1String("DirS"), ReadDirections}, {QLatin1String("Note"), ReadNote},
    {QLatin1String("Srce"), ReadSource},     {QLatin1String("AltS"), ReadOtherSource},
};

void ReadElement(QXmlStreamReader& xml, Reading& reading) {
    for (const auto& [name, read] : ElementReaders) {
        if (xml.name() == name) {
            read(xml, reading);
            return;
        }
    }
    xml.skipCurrentElement();
}

void ReadRecipe(QXmlStreamReader& xml, const RecipeSink& sink, FileNotes& notes) {
    const int startLine = static_cast<int>(xml.lineNumber());
    Reading reading;
    reading.recipe.title = Attribute(xml, QLatin1String("name"));
    const QString author = MasterCookParts::Author(Attribute(xml, QLatin1String("author")));
    if (!author.isEmpty()) {
        reading.sources << author;
    }
    while (xml.readNextStartElement()) {
        ReadElement(xml, reading);
    }
    if (xml.hasError()) {
        return;
    }
    Recipe& recipe = reading.recipe;
    recipe.source = reading.sources.join(QStringLiteral("; "));
    recipe.yield = MasterCookParts::Yield(reading.servings, reading.otherYield);
    AddMethod(recipe, reading.steps + reading.notes);
    HandOver(std::move(recipe), startLine, sink, notes);
}

}  // namespace

bool Recognizes(QByteArrayView start) { return XmlText::RootName(start) == QLatin1String("mx2"); }

void Read(const QByteArray& data, const RecipeSink& sink, FileNotes& notes) {
    XmlText::ReadFile(data, QLatin1String("mx2"), QStringLiteral("MasterCook MX2"), notes,
                      [&](QXmlStreamReader& xml) {
                          if (xml.name() == QLatin1String("RcpE")) {
                              ReadRecipe(xml, sink, notes);
                          } else {
                              xml.skipCurrentElement();
                          }
                      });
}

}  // namespace Exchange::MasterCookXmlFormat
