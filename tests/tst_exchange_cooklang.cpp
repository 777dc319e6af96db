// Cooklang recipes read into the exchange model: the cases of the language's own canonical
// tests (ingredient names, amounts, units and the text of each step), its example recipes, and
// metadata, sections, comments and notes.
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

#include "exchange/CooklangFormat.h"

using Exchange::FileNotes;
using Exchange::Line;
using Exchange::Recipe;

namespace {

QString DataPath(const QString& name) {
    return QStringLiteral(MORVENA_TEST_SOURCE_DIR "/data/import/cooklang/") + name;
}

QByteArray FileBytes(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QList<Recipe> ReadAll(const QByteArray& data, const QString& fileName, FileNotes& notes) {
    QList<Recipe> recipes;
    Exchange::CooklangFormat::Read(
        data, fileName, [&recipes](Recipe&& recipe) { recipes.append(std::move(recipe)); }, notes);
    return recipes;
}

Recipe ReadOne(const QByteArray& data, const QString& fileName = QStringLiteral("a.cook")) {
    FileNotes notes;
    const QList<Recipe> recipes = ReadAll(data, fileName, notes);
    return recipes.size() == 1 ? recipes.first() : Recipe();
}

QStringList Originals(const QList<Line>& lines) {
    QStringList originals;
    for (const Line& line : lines) {
        originals.append(line.original);
    }
    return originals;
}

QStringList AllSteps(const Recipe& recipe) {
    QStringList steps;
    for (const Exchange::Section& section : recipe.sections) {
        steps += section.steps;
    }
    return steps;
}

QList<Line> AllLines(const Recipe& recipe) {
    QList<Line> lines;
    for (const Exchange::Section& section : recipe.sections) {
        lines += section.lines;
    }
    return lines;
}

// A timer as the step's text gives it: its time when it has one, else its name.
QString TimerText(const QJsonObject& item) {
    const QJsonValue quantity = item.value(QLatin1String("quantity"));
    const QString amount =
        quantity.isDouble() ? QString::number(quantity.toDouble()) : quantity.toString();
    if (amount.isEmpty()) {
        return item.value(QLatin1String("name")).toString();
    }
    return (amount + u' ' + item.value(QLatin1String("units")).toString()).trimmed();
}

// A canonical step as text: its texts, the names of its ingredients and cookware, its timers.
QString StepText(const QJsonArray& items) {
    QString text;
    for (const QJsonValue item : items) {
        const QJsonObject object = item.toObject();
        const QString type = object.value(QLatin1String("type")).toString();
        if (type == QLatin1String("text")) {
            text += object.value(QLatin1String("value")).toString();
        } else if (type == QLatin1String("timer")) {
            text += TimerText(object);
        } else {
            text += object.value(QLatin1String("name")).toString();
        }
    }
    return text.simplified();
}

// The value of an amount as written: "3", "1.5", "1/2".
double AmountValue(const QString& amount) {
    const qsizetype slash = amount.indexOf(u'/');
    if (slash < 0) {
        return amount.toDouble();
    }
    return amount.left(slash).toDouble() / amount.mid(slash + 1).toDouble();
}

void CompareIngredient(const Line& line, const QJsonObject& expected) {
    QCOMPARE(line.ingredient, expected.value(QLatin1String("name")).toString());
    QCOMPARE(line.unit, expected.value(QLatin1String("units")).toString());
    const QJsonValue quantity = expected.value(QLatin1String("quantity"));
    if (quantity.isDouble()) {
        QCOMPARE(AmountValue(line.amountText), quantity.toDouble());
    } else if (quantity.toString() == QLatin1String("some")) {
        QCOMPARE(line.amountText, QString());
    } else {
        QCOMPARE(line.amountText, quantity.toString());
    }
}

}  // namespace

class TestExchangeCooklang : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void canonical_data() {
        QTest::addColumn<QString>("source");
        QTest::addColumn<QJsonObject>("result");
        const QJsonObject tests =
            QJsonDocument::fromJson(FileBytes(DataPath(QStringLiteral("tests/canonical.json"))))
                .object()
                .value(QLatin1String("tests"))
                .toObject();
        QCOMPARE(tests.size(), 60);
        for (auto it = tests.constBegin(); it != tests.constEnd(); ++it) {
            const QJsonObject test = it.value().toObject();
            QTest::newRow(qPrintable(it.key())) << test.value(QLatin1String("source")).toString()
                                                << test.value(QLatin1String("result")).toObject();
        }
    }

    // Every step's text, with runs of blanks (a thin space too) made one space; every
    // ingredient's name, amount and unit. A timer's time stays as written ("1/2 hour" where the
    // canonical result has the value 0.5).
    void canonical() {
        QFETCH(QString, source);
        QFETCH(QJsonObject, result);
        const QJsonArray steps = result.value(QLatin1String("steps")).toArray();
        const QJsonObject metadata = result.value(QLatin1String("metadata")).toObject();
        FileNotes notes;
        const QList<Recipe> recipes = ReadAll(source.toUtf8(), QStringLiteral("Juha.cook"), notes);
        if (steps.isEmpty() && metadata.isEmpty()) {
            QCOMPARE(recipes.size(), 0);
            QCOMPARE(notes.notRecipes, 1);
            return;
        }
        QCOMPARE(recipes.size(), 1);
        QCOMPARE(notes.notRecipes, 0);
        QStringList expectedSteps;
        QList<QJsonObject> expectedIngredients;
        for (const QJsonValue step : steps) {
            const QString text = StepText(step.toArray());
            expectedSteps.append(text == QLatin1String("Fry for 0.5 hour")
                                     ? QStringLiteral("Fry for 1/2 hour")
                                     : text);
            for (const QJsonValue item : step.toArray()) {
                if (item[QLatin1String("type")].toString() == QLatin1String("ingredient")) {
                    expectedIngredients.append(item.toObject());
                }
            }
        }
        QCOMPARE(AllSteps(recipes.first()), expectedSteps);
        const QList<Line> lines = AllLines(recipes.first());
        QCOMPARE(lines.size(), expectedIngredients.size());
        for (int i = 0; i < lines.size(); ++i) {
            CompareIngredient(lines[i], expectedIngredients[i]);
        }
        QCOMPARE(recipes.first().title, QStringLiteral("Juha"));
        QCOMPARE(recipes.first().yield, metadata.value(QLatin1String("servings")).toString());
    }

    void amountsKeepTheirWriting() {
        const Recipe recipe =
            ReadOne("Add @milk{1 / 2 %cup}, @water{7 k } and @thyme{few%sprigs}.");
        const QList<Line> lines = AllLines(recipe);
        QCOMPARE(Originals(lines),
                 (QStringList{QStringLiteral("1/2 cup milk"), QStringLiteral("7 k water"),
                              QStringLiteral("few sprigs thyme")}));
        QCOMPARE(lines[0].amountText, QStringLiteral("1/2"));
        QCOMPARE(lines[0].unit, QStringLiteral("cup"));
        QCOMPARE(lines[0].ingredient, QStringLiteral("milk"));
        QCOMPARE(lines[0].preparation, QString());
        QCOMPARE(AllSteps(recipe), QStringList{QStringLiteral("Add milk, water and thyme.")});
    }

    void preparationInParentheses() {
        const Recipe recipe = ReadOne("Fry @onion{2%large}(finely chopped) in @butter.");
        const QList<Line> lines = AllLines(recipe);
        QCOMPARE(Originals(lines), (QStringList{QStringLiteral("2 large onion, finely chopped"),
                                                QStringLiteral("butter")}));
        QCOMPARE(lines[0].preparation, QStringLiteral("finely chopped"));
        QCOMPARE(lines[0].ingredient, QStringLiteral("onion"));
        QCOMPARE(AllSteps(recipe), QStringList{QStringLiteral("Fry onion in butter.")});
    }

    void thinSpaceBecomesBlank() {
        const Recipe recipe = ReadOne(QStringLiteral("Add @chilli\u2009then bake").toUtf8());
        QCOMPARE(AllSteps(recipe), QStringList{QStringLiteral("Add chilli then bake")});
    }

    void frontMatterSectionsAndComments() {
        const QByteArray text =
            "---\n"
            "title: \"Kruh s semeni\"\n"
            "source:\n"
            "  name: Babičina kuharica\n"
            "  url: https://example.org/kruh\n"
            "servings: 1 hlebec\n"
            "tags:\n"
            "  - kruh\n"
            "  - peka\n"
            "---\n"
            ">> category: Pecivo, kruh\n"
            "Preheat the #oven{} to 220 °C. -- or 200 °C with fan\n"
            "\n"
            "= Testo\n"
            "Mix @flour{500%g} with @water{3.5%dl}\n"
            "and @salt{1%tsp}.\n"
            "[- a long\n"
            "\n"
            "comment -]\n"
            "Knead for ~{10%minutes}.\n"
            "> The dough should be soft.\n"
            "\n"
            "== Preliv ==\n"
            "Brush with @egg{1}.\n";
        FileNotes notes;
        const QList<Recipe> recipes = ReadAll(text, QStringLiteral("/tmp/kruh.cook"), notes);
        QCOMPARE(recipes.size(), 1);
        const Recipe& recipe = recipes.first();
        QCOMPARE(recipe.title, QStringLiteral("Kruh s semeni"));
        QCOMPARE(recipe.source, QStringLiteral("Babičina kuharica"));
        QCOMPARE(recipe.yield, QStringLiteral("1 hlebec"));
        QCOMPARE(recipe.categories, (QStringList{QStringLiteral("Pecivo"), QStringLiteral("kruh"),
                                                 QStringLiteral("peka")}));
        QCOMPARE(recipe.sections.size(), 3);
        QCOMPARE(recipe.sections[0].title, QString());
        QCOMPARE(recipe.sections[0].steps,
                 QStringList{QStringLiteral("Preheat the oven to 220 °C.")});
        QCOMPARE(recipe.sections[0].lines.size(), 0);
        QCOMPARE(recipe.sections[1].title, QStringLiteral("Testo"));
        QCOMPARE(recipe.sections[1].steps,
                 (QStringList{QStringLiteral("Mix flour with water and salt."),
                              QStringLiteral("Knead for 10 minutes. The dough should be soft.")}));
        QCOMPARE(Originals(recipe.sections[1].lines),
                 (QStringList{QStringLiteral("500 g flour"), QStringLiteral("3.5 dl water"),
                              QStringLiteral("1 tsp salt")}));
        QCOMPARE(recipe.sections[2].title, QStringLiteral("Preliv"));
        QCOMPARE(Originals(recipe.sections[2].lines), QStringList{QStringLiteral("1 egg")});
        QCOMPARE(notes.problems, QStringList());
    }

    void titleFromFileNameWithoutMetadata() {
        const Recipe recipe =
            ReadOne(">> source: Ana\nBoil @eggs{4}.", QStringLiteral("dir/Jajca.cook"));
        QCOMPARE(recipe.title, QStringLiteral("Jajca"));
        QCOMPARE(recipe.source, QStringLiteral("Ana"));
    }

    void emptyFileIsNoRecipe() {
        FileNotes notes;
        QCOMPARE(ReadAll("-- only a comment\n\n", QStringLiteral("x.cook"), notes).size(), 0);
        QCOMPARE(notes.notRecipes, 1);
        QCOMPARE(notes.problems,
                 QStringList{QStringLiteral("datoteka nima ne korakov ne metapodatkov")});
    }

    void coffeeSouffle() {
        const Recipe recipe =
            ReadOne(FileBytes(DataPath(QStringLiteral("examples/Coffee Souffle.cook"))),
                    DataPath(QStringLiteral("examples/Coffee Souffle.cook")));
        QCOMPARE(recipe.title, QStringLiteral("Coffee Souffle"));
        QCOMPARE(recipe.sections.size(), 1);
        QCOMPARE(recipe.sections[0].steps.size(), 5);
        QCOMPARE(recipe.sections[0].steps[1],
                 QStringLiteral("Pour into a bowl and leave to cool down for 15 minutes."));
        QCOMPARE(Originals(recipe.sections[0].lines),
                 (QStringList{QStringLiteral("1 egg yoke"), QStringLiteral("125 g condenced milk"),
                              QStringLiteral("3tsp instant coffee"),
                              QStringLiteral("1,1/2cups water"), QStringLiteral("3tsp gelatine"),
                              QStringLiteral("1 eggwhite"), QStringLiteral("60 g cashew")}));
    }

    void friedRice() {
        const Recipe recipe =
            ReadOne(FileBytes(DataPath(QStringLiteral("examples/Fried Rice.cook"))),
                    QStringLiteral("Fried Rice.cook"));
        QCOMPARE(recipe.title, QStringLiteral("Fried Rice"));
        QCOMPARE(recipe.sections.size(), 1);
        QCOMPARE(recipe.sections[0].steps.size(), 9);
        QCOMPARE(recipe.sections[0].lines.size(), 16);
        QCOMPARE(recipe.sections[0].lines[4].original, QStringLiteral("2 items eggs"));
        QCOMPARE(recipe.sections[0].steps[3], QStringLiteral("Drain off excess bacon fat."));
    }

    void olivierSalad() {
        const Recipe recipe =
            ReadOne(FileBytes(DataPath(QStringLiteral("examples/Olivier Salad.cook"))),
                    QStringLiteral("Olivier Salad.cook"));
        QCOMPARE(recipe.title, QStringLiteral("Olivier Salad"));
        QCOMPARE(recipe.sections.size(), 1);
        QCOMPARE(recipe.sections[0].steps.size(), 13);
        QCOMPARE(
            Originals(recipe.sections[0].lines),
            (QStringList{QStringLiteral("1 kg corn beef"), QStringLiteral("3 medium potatoes"),
                         QStringLiteral("3 medium carrots"), QStringLiteral("1 cup frozen peas"),
                         QStringLiteral("4 eggs"), QStringLiteral("6 pickles"),
                         QStringLiteral("1 cup mayonnaise"), QStringLiteral("1 tbsp dill")}));
        QCOMPARE(recipe.sections[0].steps[0],
                 QStringLiteral("Zero step is cook corn beef. Put into a large pan and simmer for "
                                "2 hours."));
    }

    // A section's ingredients as Morvena writes them: a list headed by a comment, no step.
    void anIngredientListIsNoStep() {
        const Recipe recipe = ReadOne(
            "== Testo ==\n\n-- sestavine\n@moka{20%dag}\n@trdi sir{1.5%kg}\n\nZamesimo.\n\n"
            "-- Ingredients\n@sol{1%ščepec}\n\n-- drugo\n@sol{1}\n@poper\n");
        QCOMPARE(recipe.sections.size(), 1);
        QCOMPARE(recipe.sections.first().title, QStringLiteral("Testo"));
        QCOMPARE(Originals(recipe.sections.first().lines),
                 (QStringList{"20 dag moka", "1.5 kg trdi sir", "1 ščepec sol", "1 sol", "poper"}));
        QCOMPARE(recipe.sections.first().steps, (QStringList{"Zamesimo.", "sol poper"}));
    }
};

QTEST_GUILESS_MAIN(TestExchangeCooklang)
#include "tst_exchange_cooklang.moc"
