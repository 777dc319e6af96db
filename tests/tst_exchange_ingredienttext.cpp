// Ingredient lines written as free text, read into amount, unit, ingredient and preparation;
// the units' written forms and their keys; and the amounts of the labelled lines of
// strangetom/ingredient-parser (tests/data/import/strangetom-ingredient-parser), each compared
// with its label.
#include <QFile>
#include <QTest>

#include "exchange/IngredientText.h"

using Exchange::IngredientText;
using Exchange::Units;

namespace {

const QString CorpusFolder =
    QStringLiteral(MORVENA_TEST_SOURCE_DIR "/data/import/strangetom-ingredient-parser/train/data");

// The labelled lines whose amount is read otherwise on purpose: the line, the amount read, and
// why.
struct Difference {
    const char* input;
    const char* value;
    const char* reason;
};

const Difference ExpectedDifferences[] = {
    {"Juice and zest of 1/2 lime", "", "the amount is read where the line starts"},
    {"zest of 1/2 unwaxed lemon", "", "the amount is read where the line starts"},
    {"juice of 1/2 lime", "", "the amount is read where the line starts"},
    {"juice of 1/2 lemon", "", "the amount is read where the line starts"},
    {"Zest from 1/2 lemon", "", "the amount is read where the line starts"},
};

const Difference* DifferenceOf(const QString& input) {
    for (const Difference& difference : ExpectedDifferences) {
        if (input == QString::fromUtf8(difference.input)) {
            return &difference;
        }
    }
    return nullptr;
}

// The fields of one CSV line (quoted fields with "" for a quote; no line breaks in a field).
QStringList CsvFields(const QString& line) {
    QStringList fields{QString()};
    bool quoted = false;
    for (qsizetype i = 0; i < line.size(); ++i) {
        const QChar c = line[i];
        if (c == QLatin1Char('"') && quoted && i + 1 < line.size() && line[i + 1] == '"') {
            fields.last() += c;
            ++i;
        } else if (c == QLatin1Char('"')) {
            quoted = !quoted;
        } else if (c == QLatin1Char(',') && !quoted) {
            fields << QString();
        } else {
            fields.last() += c;
        }
    }
    return fields;
}

// A labelled amount as a plain decimal with at most three decimals: "1#1$2" is 1 1/2, "#3$4"
// is 3/4, "2x" (two times) is 2.
QString LabelDecimal(QString label) {
    label.remove(QLatin1Char('x'));
    double value = 0;
    if (label.contains(QLatin1Char('#'))) {
        const QString whole = label.section(QLatin1Char('#'), 0, 0);
        const QString fraction = label.section(QLatin1Char('#'), 1);
        value = whole.toDouble() + fraction.section(QLatin1Char('$'), 0, 0).toDouble() /
                                       fraction.section(QLatin1Char('$'), 1).toDouble();
    } else {
        value = label.toDouble();
    }
    QString text = QString::number(value, 'f', 3);
    while (text.endsWith(QLatin1Char('0'))) {
        text.chop(1);
    }
    if (text.endsWith(QLatin1Char('.'))) {
        text.chop(1);
    }
    return text;
}

}  // namespace

class TestExchangeIngredientText : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void unitsKnowTheirForms() {
        const Units& units = Units::Common();
        QCOMPARE(units.Key(u"Tbsp."), QStringLiteral("tablespoon"));
        QCOMPARE(units.Key(u"TBSP"), QStringLiteral("tablespoon"));
        QCOMPARE(units.Key(u"T"), QStringLiteral("tablespoon"));
        QCOMPARE(units.Key(u"tb"), QStringLiteral("tablespoon"));
        QCOMPARE(units.Key(u"t"), QStringLiteral("teaspoon"));
        QCOMPARE(units.Key(u"ts"), QStringLiteral("teaspoon"));
        QCOMPARE(units.Key(u"C"), QStringLiteral("cup"));
        QCOMPARE(units.Key(u"c."), QStringLiteral("cup"));
        QCOMPARE(units.Key(u"cups"), QStringLiteral("cup"));
        QCOMPARE(units.Key(u"žlici"), QStringLiteral("tablespoon"));
        QCOMPARE(units.Key(u"Esslöffel"), QStringLiteral("tablespoon"));
        QCOMPARE(units.Key(u"dag"), QStringLiteral("decagram"));
        QCOMPARE(units.Key(u"pn"), QStringLiteral("pinch"));
        QCOMPARE(units.Key(u"ds"), QStringLiteral("dash"));
        QCOMPARE(units.Key(u"lg"), QStringLiteral("large"));
        QCOMPARE(units.Key(u"fl oz"), QStringLiteral("fluid ounce"));
        QCOMPARE(units.Key(u"G"), QString());
        QCOMPARE(units.Key(u"x"), QString());
        QCOMPARE(units.Key(u"large"), QString());
    }

    void unitsAreFoundWhereAWordEnds() {
        const Units& units = Units::Common();
        QCOMPARE(units.MatchAt(u"fl oz cream"), qsizetype(5));
        QCOMPARE(units.MatchAt(u"cups flour"), qsizetype(4));
        QCOMPARE(units.MatchAt(u"c. sugar"), qsizetype(2));
        QCOMPARE(units.MatchAt(u"g/4½oz"), qsizetype(1));
        QCOMPARE(units.MatchAt(u"kavne žličke soli"), qsizetype(12));
        QCOMPARE(units.MatchAt(u"large eggs"), qsizetype(0));
        QCOMPARE(units.MatchAt(u"Tomato"), qsizetype(0));
        QCOMPARE(units.MatchAt(u" cup"), qsizetype(0));
    }

    void readsTheLinesOfRecipes_data() {
        QTest::addColumn<QString>("line");
        QTest::addColumn<QStringList>("parts");  // amount as written, value, upper bound, unit,
                                                 // key, ingredient, preparation
        QTest::addColumn<bool>("whole");
        const auto row = [](const char* line, QStringList parts, bool whole) {
            QTest::newRow(line) << QString::fromUtf8(line) << parts << whole;
        };
        row("1 1/2 cups flour, sifted", {"1 1/2", "1.5", "", "cups", "cup", "flour", "sifted"},
            true);
        row("2 large eggs", {"2", "2", "", "", "", "large eggs", ""}, true);
        row("salt to taste", {"", "", "", "", "", "salt to taste", ""}, true);
        row("200 g moke", {"200", "200", "", "g", "gram", "moke", ""}, true);
        row("1 (14 oz) can tomatoes", {"1", "1", "", "can", "can", "tomatoes", "14 oz"}, true);
        row("2 žlici olja", {"2", "2", "", "žlici", "tablespoon", "olja", ""}, true);
        row("10 dag moke (gladke)", {"10", "10", "", "dag", "decagram", "moke (gladke)", ""}, true);
        row("½ c (1 stick) unsalted butter",
            {"½", "0.5", "", "c", "cup", "unsalted butter", "1 stick"}, true);
        row("125g/4½oz shallots, thickly sliced",
            {"125", "125", "", "g", "gram", "shallots", "4½oz, thickly sliced"}, true);
        row("1.5kg/3lb 5oz beef chuck steak",
            {"1.5", "1.5", "", "kg", "kilogram", "beef chuck steak", "3lb 5oz"}, true);
        row("110ml-150ml/4-5fl oz chilled sparkling water",
            {"110", "110", "150", "ml", "millilitre", "chilled sparkling water", "4-5fl oz"}, true);
        row("1 28-ounce can crushed red tomatoes",
            {"1", "1", "", "can", "can", "crushed red tomatoes", "28-ounce"}, true);
        row("1 3-pound whole chicken", {"1", "1", "", "", "", "whole chicken", "3-pound"}, true);
        row("1 1/2-inch piece of ginger",
            {"1 1/2", "1.5", "", "inch", "inch", "piece of ginger", ""}, true);
        row("2-3 tbsp heavy cream (or yogurt)",
            {"2-3", "2", "3", "tbsp", "tablespoon", "heavy cream (or yogurt)", ""}, true);
        row("3 to 4 tablespoons extra virgin olive oil, divided",
            {"3 to 4", "3", "4", "tablespoons", "tablespoon", "extra virgin olive oil", "divided"},
            true);
        row("1 c. sugar", {"1", "1", "", "c.", "cup", "sugar", ""}, true);
        row("3 T butter; softened", {"3", "3", "", "T", "tablespoon", "butter", "softened"}, true);
        row("1 pinch of salt", {"1", "1", "", "pinch", "pinch", "salt", ""}, true);
        row("Pinch of dried red pepper flakes",
            {"", "", "", "Pinch", "pinch", "dried red pepper flakes", ""}, true);
        row("Cloves, whole", {"", "", "", "", "", "Cloves", "whole"}, true);
        row("2 x 250g/9oz punnets strawberries",
            {"2", "2", "", "", "", "x 250g/9oz punnets strawberries", ""}, false);
        row("1 lg or 2 small leeks", {"1", "1", "", "lg", "large", "or 2 small leeks", ""}, false);
        row("1 tbsp 1 tablespoon whiskey",
            {"1", "1", "", "tbsp", "tablespoon", "1 tablespoon whiskey", ""}, false);
        row("Danish Dough (recipe follows",
            {"", "", "", "", "", "Danish Dough (recipe follows", ""}, false);
        row("200 g", {"200", "200", "", "g", "gram", "", ""}, false);
        row("1/x apples", {"1", "1", "", "", "", "/x apples", ""}, false);
    }

    void readsTheLinesOfRecipes() {
        QFETCH(QString, line);
        QFETCH(QStringList, parts);
        QFETCH(bool, whole);
        const IngredientText text = IngredientText::Read(line);
        QCOMPARE(text.original, line);
        QCOMPARE((QStringList{text.amountText, text.quantity.value, text.quantity.rangeTo,
                              text.unit, text.unitKey, text.ingredient, text.preparation}),
                 parts);
        QCOMPARE(text.whole, whole);
    }

    void readsWithTheUnitsItIsGiven() {
        const Units spoons(
            {{QStringLiteral("spoon"), {QStringLiteral("sp"), QStringLiteral("S")}}});
        const IngredientText text = IngredientText::Read(QStringLiteral(" 2 sp sugar "), spoons);
        QCOMPARE(text.original, QStringLiteral("2 sp sugar"));
        QCOMPARE(text.unit, QStringLiteral("sp"));
        QCOMPARE(text.unitKey, QStringLiteral("spoon"));
        QCOMPARE(text.ingredient, QStringLiteral("sugar"));
        const IngredientText grams = IngredientText::Read(QStringLiteral("200 g moke"), spoons);
        QCOMPARE(grams.unit, QString());
        QCOMPARE(grams.ingredient, QStringLiteral("g moke"));
        QCOMPARE(IngredientText::Read(QStringLiteral("2 s sugar"), spoons).unit, QString());
    }

    void becomesALineOfARecipe() {
        const Exchange::Line line =
            IngredientText::Read(QStringLiteral("1 1/2 cups flour, sifted")).ToLine();
        QCOMPARE(line.original, QStringLiteral("1 1/2 cups flour, sifted"));
        QCOMPARE(line.amountText, QStringLiteral("1 1/2"));
        QCOMPARE(line.unit, QStringLiteral("cups"));
        QCOMPARE(line.ingredient, QStringLiteral("flour"));
        QCOMPARE(line.preparation, QStringLiteral("sifted"));
    }

    void splitsThePreparationOutsideParentheses() {
        QCOMPARE(IngredientText::SplitPreparation(QStringLiteral("Butter (or margarine), soft")),
                 (QStringList{"Butter (or margarine)", "soft"}));
        QCOMPARE(IngredientText::SplitPreparation(QStringLiteral("beef (prime, aged); cubed")),
                 (QStringList{"beef (prime, aged)", "cubed"}));
        QCOMPARE(IngredientText::SplitPreparation(QStringLiteral(", or more")),
                 (QStringList{", or more", ""}));
    }

    void readsTheLabelledAmounts_data() {
        QTest::addColumn<QString>("input");
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("rangeTo");
        int rows = 0;
        for (const QString& name :
             {QStringLiteral("bbc/bbc-ingredients-snapshot-2017.excerpt.csv"),
              QStringLiteral("tastecooking/tastecooking-ingredients-snapshot-2024.excerpt.csv")}) {
            QFile file(CorpusFolder + QLatin1Char('/') + name);
            QVERIFY2(file.open(QIODevice::ReadOnly), qPrintable(file.fileName()));
            const QStringList lines = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
            QCOMPARE(CsvFields(lines.first()).mid(0, 4),
                     (QStringList{"input", "name", "quantity", "unit"}));
            for (int i = 1; i < lines.size(); ++i) {
                if (lines[i].trimmed().isEmpty()) {
                    continue;
                }
                const QStringList fields = CsvFields(lines[i]);
                const QString label = fields[2].section(QLatin1Char(' '), 0, 0);
                const QString lower = label.section(QLatin1Char('-'), 0, 0);
                const QString upper = label.section(QLatin1Char('-'), 1, 1);
                QTest::addRow("%s:%d", qPrintable(name.section('/', 0, 0)), i + 1)
                    << fields[0] << (lower.isEmpty() ? QString() : LabelDecimal(lower))
                    << (upper.isEmpty() ? QString() : LabelDecimal(upper));
                ++rows;
            }
        }
        QCOMPARE(rows, 284);
    }

    void readsTheLabelledAmounts() {
        QFETCH(QString, input);
        QFETCH(QString, value);
        QFETCH(QString, rangeTo);
        const IngredientText text = IngredientText::Read(input);
        const Difference* difference = DifferenceOf(input);
        if (difference) {
            QVERIFY2(text.quantity.value != value, difference->reason);
            QCOMPARE(text.quantity.value, QString::fromUtf8(difference->value));
            return;
        }
        QCOMPARE(text.quantity.value, value);
        QCOMPARE(text.quantity.rangeTo, rangeTo);
    }
};

QTEST_GUILESS_MAIN(TestExchangeIngredientText)
#include "tst_exchange_ingredienttext.moc"
