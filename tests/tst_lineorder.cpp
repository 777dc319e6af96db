// A section's ingredient lines come out as the cook typed them (in the order of their keys) on
// the recipe page and in the editor, on both kinds, whatever plan the database picks for the
// statement that reads them: a collection of one recipe and one of many recipes, with lines over
// many ingredients and units typed in random orders (so that neither the names nor the keys of
// the ingredients and units follow the typing), read with fresh statistics and after ANALYZE.
// A recipe saved by the editor keeps its lines in that order.
#include <QFile>
#include <QRegularExpression>
#include <QTest>
#include <QTreeWidget>
#include <algorithm>
#include <random>

#include "core/Windows1250.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "display/modDisplay.h"
#include "tests/support/EditorDriver.h"
#include "tests/support/MessageRecorder.h"
#include "tests/support/TestDatabase.h"

using namespace EditorDriver;
using TestDatabase::Insert;

namespace {

struct Line {
    int amount;
    qint32 unitID;
    QString unit;
    qint32 ingredientID;
    QString ingredient;
};

// The lines of each section of each recipe, in typing order.
using Sections = QList<QList<Line>>;

struct Shape {
    int recipes;
    int ingredients;
    int units;
    int mostSections;
    int fewestLines;
    int mostLines;
};

const QStringList UnitNames{"žlička", "dag",   "ščepec", "kos",    "ml", "g",         "strok",
                            "dl",     "žlica", "kg",     "vejica", "l",  "skodelica", "list"};

// Names inserted in a shuffled order, so that keys, names and typing follow three orders.
QList<std::pair<qint32, QString>> InsertNames(const QString& table, QStringList names,
                                              std::mt19937& random) {
    std::shuffle(names.begin(), names.end(), random);
    QList<std::pair<qint32, QString>> rows;
    for (const QString& name : names) {
        rows.append({Insert(table, {{QStringLiteral("name"), name}}), name});
    }
    return rows;
}

QMap<qint32, Sections> Generate(const Shape& shape, unsigned seed) {
    std::mt19937 random(seed);
    const qint32 group = Insert(QStringLiteral("Group"), {{QStringLiteral("name"), "Jedi"}});
    const qint32 type = Insert(QStringLiteral("Type"), {{QStringLiteral("groupID"), group},
                                                        {QStringLiteral("name"), "Razno"}});
    const qint32 source = Insert(QStringLiteral("Source"), {{QStringLiteral("name"), "Zvezek"}});
    QStringList ingredientNames;
    for (int i = 1; i <= shape.ingredients; ++i) {
        ingredientNames << QStringLiteral("sestavina %1").arg(i, 3, 10, QLatin1Char('0'));
    }
    const auto ingredients = InsertNames(QStringLiteral("Ingredient"), ingredientNames, random);
    const auto units = InsertNames(QStringLiteral("Unit"), UnitNames.mid(0, shape.units), random);
    std::uniform_int_distribution<int> pickIngredient(0, shape.ingredients - 1);
    std::uniform_int_distribution<int> pickUnit(0, shape.units - 1);
    std::uniform_int_distribution<int> pickAmount(1, 999);
    std::uniform_int_distribution<int> pickSections(1, shape.mostSections);
    std::uniform_int_distribution<int> pickLines(shape.fewestLines, shape.mostLines);
    QMap<qint32, Sections> recipes;
    for (int r = 1; r <= shape.recipes; ++r) {
        const qint32 recipe =
            Insert(QStringLiteral("Recipe"),
                   {{QStringLiteral("typeID"), type},
                    {QStringLiteral("sourceID"), source},
                    {QStringLiteral("title"), QStringLiteral("Recept %1").arg(r)}});
        const int count = pickSections(random);
        Sections sections;
        for (int place = 1; place <= count; ++place) {
            const qint32 section =
                Insert(QStringLiteral("Section"),
                       {{QStringLiteral("title"),
                         count == 1 ? QVariant() : QVariant(QStringLiteral("Del %1").arg(place))},
                        {QStringLiteral("instructions"), QStringLiteral("Zmešamo.")}});
            Insert(QStringLiteral("RecipeSection"), {{QStringLiteral("recipeID"), recipe},
                                                     {QStringLiteral("sectionID"), section},
                                                     {QStringLiteral("place"), place}});
            QList<Line> lines;
            for (int n = pickLines(random); n > 0; --n) {
                const auto& [ingredientID, ingredient] = ingredients[pickIngredient(random)];
                const auto& [unitID, unit] = units[pickUnit(random)];
                const Line line{pickAmount(random), unitID, unit, ingredientID, ingredient};
                Insert(QStringLiteral("SectionIngredient"),
                       {{QStringLiteral("sectionID"), section},
                        {QStringLiteral("ingredientID"), line.ingredientID},
                        {QStringLiteral("unitID"), line.unitID},
                        {QStringLiteral("amount"), line.amount}});
                lines.append(line);
            }
            sections.append(lines);
        }
        recipes.insert(recipe, sections);
    }
    // Rows written again move to the end of a server's table: the table no longer lies in key
    // order either.
    TestDatabase::Exec(QStringLiteral(
        "UPDATE [SectionIngredient] SET amount = amount WHERE sectionIngredientID % 3 = 1"));
    return recipes;
}

// The ingredient lines of each section of a recipe's page.
QStringList PageLines(qint32 recipeID) {
    modDisplay::DisplayRecipe(recipeID);
    QFile file(modGeneral::TempFilename);
    if (!file.open(QIODevice::ReadOnly)) {
        return {QStringLiteral("no page")};
    }
    const QString page = Windows1250::Decode(file.readAll());
    static const QRegularExpression block(
        QStringLiteral("<h3>Sestavine:</h3>(.*?)<h3>Potek dela:</h3>"));
    QStringList blocks;
    for (auto it = block.globalMatch(page); it.hasNext();) {
        blocks << it.next().captured(1);
    }
    return blocks;
}

QStringList ExpectedPageLines(const Sections& sections) {
    QStringList blocks;
    for (const QList<Line>& lines : sections) {
        QString block;
        for (const Line& line : lines) {
            block +=
                QStringLiteral("%1 %2 %3<br>").arg(line.amount).arg(line.unit, line.ingredient);
        }
        blocks << block;
    }
    return blocks;
}

QStringList ExpectedEditorLines(const QList<Line>& lines) {
    QStringList texts;
    for (const Line& line : lines) {
        texts << QStringLiteral("%1|%2|%3|%4|%5")
                     .arg(line.amount)
                     .arg(line.unit, line.ingredient)
                     .arg(line.unitID)
                     .arg(line.ingredientID);
    }
    return texts;
}

// The editor's lines of each section, as its lists show them.
QList<QStringList> EditorLines(frmNew* editor) {
    QList<QStringList> sections;
    QTreeWidget* lstSections = List(editor, "lstSections");
    if (lstSections->topLevelItemCount() == 0) {
        sections << LineTexts(editor);
    }
    for (int i = 0; i < lstSections->topLevelItemCount(); ++i) {
        ClickEntry(lstSections, i);
        sections << LineTexts(editor);
    }
    return sections;
}

}  // namespace

class TestLineOrder : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        TestDatabase::IsolateEnvironment();
        modGeneral::TempFilename = TestDatabase::WorkFolder() + QStringLiteral("/page.html");
    }
    void cleanup() { modDatabase::Connection.reset(); }

    void linesComeAsTyped_data() {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<bool>("analysed");
        QTest::addColumn<int>("recipes");
        QTest::addColumn<int>("ingredients");
        QTest::addColumn<int>("units");
        // One recipe of one long section over few units (a planner then reads the table of
        // units or of ingredients first, or the section's lines through the units' index), the
        // same over two ingredients and two units, and a collection.
        const QList<std::tuple<const char*, int, int, int>> shapes{
            {"one recipe", 1, 12, 3}, {"two ingredients", 1, 2, 2}, {"many recipes", 60, 150, 14}};
        for (const QString& kind : {TestDatabase::Sqlite, TestDatabase::Postgres}) {
            for (const auto& [name, recipes, ingredients, units] : shapes) {
                for (const bool analysed : {false, true}) {
                    QTest::addRow("%s, %s, %s", qPrintable(kind), name,
                                  analysed ? "analysed" : "fresh statistics")
                        << kind << analysed << recipes << ingredients << units;
                }
            }
        }
    }
    void linesComeAsTyped() {
        QFETCH(QString, kind);
        QFETCH(bool, analysed);
        QFETCH(int, recipes);
        QFETCH(int, ingredients);
        QFETCH(int, units);
        TestDatabase::OpenFresh(kind);
        const bool many = recipes > 1;
        const QMap<qint32, Sections> typed =
            Generate(many ? Shape{recipes, ingredients, units, 3, 3, 14}
                          : Shape{1, ingredients, units, 1, 12, 12},
                     many ? 20240611 : 7);
        if (analysed) {
            TestDatabase::Exec(QStringLiteral("ANALYZE"));
            modDatabase::OpenConnection();  // a file's statistics are read when it opens
        }
        int shown = 0;
        for (auto it = typed.constBegin(); it != typed.constEnd(); ++it) {
            QCOMPARE(PageLines(it.key()), ExpectedPageLines(it.value()));
            if (++shown > 12) {
                continue;  // the editor opens a dozen of them
            }
            ShowEditor(it.key(), [&](frmNew* editor) {
                const QList<QStringList> lines = EditorLines(editor);
                QCOMPARE(lines.size(), it.value().size());
                for (int s = 0; s < lines.size(); ++s) {
                    QCOMPARE(lines[s], ExpectedEditorLines(it.value()[s]));
                }
            });
        }
    }

    // Saving a recipe writes its lines anew in the order the editor loaded them.
    void savedRecipeKeepsItsLines_data() { TestDatabase::AddKinds(); }
    void savedRecipeKeepsItsLines() {
        const QString kind = TestDatabase::CurrentKind();
        TestDatabase::OpenFresh(kind);
        const QMap<qint32, Sections> recipes = Generate(Shape{20, 80, 10, 2, 6, 10}, 99);
        TestDatabase::Exec(QStringLiteral("ANALYZE"));
        modDatabase::OpenConnection();
        for (const qint32 recipe : {recipes.firstKey(), recipes.lastKey()}) {
            MessageRecorder messages;
            ShowEditor(recipe, [&](frmNew* editor) { Click(editor, "cmdOK"); });
            QCOMPARE(modGeneral::lngLastID, recipe);
            QCOMPARE(PageLines(recipe), ExpectedPageLines(recipes.value(recipe)));
        }
    }
};

QTEST_MAIN(TestLineOrder)
#include "tst_lineorder.moc"
