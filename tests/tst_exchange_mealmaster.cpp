// MealMaster files read into recipes: the one-rule fixtures of wedesoft/anymeal, the exports of
// Krecipes and Gourmet, and two real collections of ology/Food-Recipe (tests/data/import/...).
#include <QBuffer>
#include <QFile>
#include <QTest>

#include "exchange/MealMasterFormat.h"

using namespace Exchange;

namespace {

const QString ImportData = QStringLiteral(MORVENA_TEST_SOURCE_DIR "/data/import/");

struct FileRead {
    QList<Recipe> recipes;
    FileNotes notes;
};

FileRead ReadDevice(QIODevice& device, const QString& encoding = QString()) {
    FileRead read;
    MealMasterFormat::Read(
        device, [&read](Recipe&& recipe) { read.recipes.append(std::move(recipe)); }, read.notes,
        encoding);
    return read;
}

FileRead ReadBytes(QByteArray bytes, const QString& encoding = QString()) {
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    return ReadDevice(buffer, encoding);
}

FileRead ReadFile(const QString& relative) {
    QFile file(ImportData + relative);
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    return ReadDevice(file);
}

// The one recipe of an anymeal fixture.
Recipe Fixture(const QString& name) {
    const FileRead read = ReadFile(QStringLiteral("wedesoft-anymeal/tests/fixtures/") + name);
    return read.recipes.size() == 1 ? read.recipes.first() : Recipe();
}

// Each line as "amount|unit|ingredient|preparation", the sections one after the other.
QStringList Lines(const Recipe& recipe) {
    QStringList lines;
    for (const Section& section : recipe.sections) {
        for (const Line& line : section.lines) {
            lines << QStringList{line.amountText, line.unit, line.ingredient, line.preparation}
                         .join(QLatin1Char('|'));
        }
    }
    return lines;
}

QStringList SectionTitles(const Recipe& recipe) {
    QStringList titles;
    for (const Section& section : recipe.sections) {
        titles << section.title;
    }
    return titles;
}

QStringList Steps(const Recipe& recipe) {
    QStringList steps;
    for (const Section& section : recipe.sections) {
        steps << section.steps;
    }
    return steps;
}

QStringList Titles(const QList<Recipe>& recipes) {
    QStringList titles;
    for (const Recipe& recipe : recipes) {
        titles << recipe.title;
    }
    return titles;
}

}  // namespace

class TestExchangeMealMaster : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void recognizesMealMasterByContent() {
        QVERIFY(MealMasterFormat::Recognizes(
            "intro\r\nMMMMM----- Recipe via Meal-Master (tm) v8.02\r\n \r\n      Title: Pie\r\n"));
        QVERIFY(MealMasterFormat::Recognizes(
            "---------- Recipe via Meal-Master (tm) v8.05\r      Title: Pie\r"));
        QVERIFY(
            MealMasterFormat::Recognizes("----- Exported by Krecipes [Meal-Master Export "
                                         "Format] -----\n\n      Title: Cookies_Test\n"));
        QVERIFY(!MealMasterFormat::Recognizes("      Title: Pie\nMMMMM\n"));
        QVERIFY(!MealMasterFormat::Recognizes("MMMMM----- Recipe via Meal-Master (tm) v8.02\n"));
        QVERIFY(!MealMasterFormat::Recognizes("@@@@@ Now You're Cooking!\nTitle: Pie\n"));
    }

    // Title, categories, servings or yield.
    void readsTheHeadOfARecipe() {
        const Recipe header = Fixture(QStringLiteral("header.mmf"));
        QCOMPARE(header.title, QStringLiteral("apple pie"));
        QCOMPARE(header.categories, (QStringList{"pastries", "cakes"}));
        QCOMPARE(header.yield, QStringLiteral("42 pies"));
        QCOMPARE(header.sections.size(), 0);
        QCOMPARE(Fixture(QStringLiteral("title_spaces.mmf")).title, QStringLiteral("apple pie"));
        QCOMPARE(Fixture(QStringLiteral("header2.mmf")).yield, QStringLiteral("42 servings"));
        const Recipe servings = Fixture(QStringLiteral("serving_spaces.mmf"));
        QCOMPARE(servings.title, QStringLiteral("Hearty Russian Beet Soup"));
        QCOMPARE(servings.yield, QStringLiteral("8"));
        // A recipe without servings is a recipe all the same.
        const Recipe noServings = Fixture(QStringLiteral("no_servings.mmf"));
        QCOMPARE(noServings.title, QStringLiteral("apple pie"));
        QCOMPARE(noServings.yield, QString());
    }

    void readsTheIngredientColumns() {
        const Recipe preparation = Fixture(QStringLiteral("preparation.mmf"));
        QCOMPARE(Lines(preparation), QStringList{"250|g|brown flour|sifted"});
        QCOMPARE(preparation.sections.first().lines.first().original,
                 QStringLiteral("250 g  brown flour; sifted"));
        QCOMPARE(SectionTitles(preparation), QStringList{""});
        const Recipe continuation = Fixture(QStringLiteral("continuation.mmf"));
        QCOMPARE(Lines(continuation), QStringList{"2.5|g|butter|molten and stirred"});
        QCOMPARE(continuation.sections.first().lines.first().original,
                 QStringLiteral("2.5 g  butter; molten -and stirred"));
        QCOMPARE(Lines(Fixture(QStringLiteral("overlong_ingredient.mmf"))),
                 QStringList{"100 2/3|ts|abcdefghijklmnopqrstuvwxyzabc defghijk|"});
        // A continuation with nothing before it is an ingredient of its own.
        QCOMPARE(Lines(Fixture(QStringLiteral("instructions5.mmf"))), QStringList{"||-|"});
        const Recipe trailing = Fixture(QStringLiteral("two_column_trailing.mmf"));
        QCOMPARE(Lines(trailing), QStringList{"2|tb|lemon juice|"});
        QCOMPARE(
            Steps(trailing),
            QStringList{"In small saucepan with wire whisk beat all ingredients until smooth."});
    }

    // Two columns are read down the left one first; a continuation continues the ingredient
    // before it in that order.
    void readsTwoColumns() {
        const QStringList four = {"1|c|ingredient1|", "1|c|ingredient2|", "1|ts|ingredient3|",
                                  "1|ts|ingredient4|"};
        QCOMPARE(Lines(Fixture(QStringLiteral("column_major.mmf"))), four);
        QCOMPARE(
            Lines(Fixture(QStringLiteral("two_column_continuation.mmf"))),
            (QStringList{"1|c|ingredient1|", "1|c|ingredient2|", "1|ts|ingredient3 continued|"}));
        QCOMPARE(
            Lines(Fixture(QStringLiteral("two_column_continuation2.mmf"))),
            (QStringList{"1|c|ingredient1 continued|", "1|ts|ingredient2|", "1|tb|ingredient3|"}));
        QCOMPARE(
            Lines(Fixture(QStringLiteral("two_column_continuation3.mmf"))),
            (QStringList{"1|c|ingredient1|", "1|ts|ingredient2 continued|", "1|tb|ingredient3|"}));
        const Recipe section = Fixture(QStringLiteral("two_column_section.mmf"));
        QCOMPARE(Lines(section), (QStringList{"1|c|ingredient1|", "1|ts|ingredient2|",
                                              "1|c|ingredient3|", "1|ts|ingredient4|"}));
        QCOMPARE(SectionTitles(section), (QStringList{"", "meringue"}));
        QCOMPARE(section.sections[1].lines.size(), 2);
    }

    void startsASectionAtEachHeading() {
        const Recipe sections = Fixture(QStringLiteral("ingredient_section.mmf"));
        QCOMPARE(SectionTitles(sections), (QStringList{"", "meringue"}));
        QCOMPARE(Lines(sections), (QStringList{"250|g|brown flour|", "150|g|sugar|"}));
        QCOMPARE(sections.sections[1].lines.size(), 1);
        QCOMPARE(SectionTitles(Fixture(QStringLiteral("section_spaces.mmf"))),
                 (QStringList{"", "section spaces"}));
        // The empty part "empty" is dropped.
        const Recipe empty = Fixture(QStringLiteral("empty_ingredient_section.mmf"));
        QCOMPARE(SectionTitles(empty), (QStringList{"", "meringue"}));
        QCOMPARE(Lines(empty), (QStringList{"250|g|brown flour|", "150|g|sugar|"}));
        // A continuation right after a heading continues nothing.
        const Recipe erroneous = Fixture(QStringLiteral("erroneous_continuation.mmf"));
        QCOMPARE(SectionTitles(erroneous), (QStringList{"", "meringue"}));
        QCOMPARE(Lines(erroneous), (QStringList{"2.5|g|butter|molten", "||-and stirred|"}));
        // Headings in the method start sections of the method.
        const Recipe method = Fixture(QStringLiteral("instruction_section.mmf"));
        QCOMPARE(SectionTitles(method), (QStringList{"", "meringue"}));
        QCOMPARE(method.sections[0].steps, QStringList{"First line."});
        QCOMPARE(method.sections[1].steps, QStringList{"Second line."});
        const Recipe header = Fixture(QStringLiteral("instruction_header.mmf"));
        QCOMPARE(SectionTitles(header), (QStringList{"", "meringue"}));
        QCOMPARE(Lines(header), QStringList{"||Ingredient|"});
        QCOMPARE(header.sections[0].steps, QStringList());
        QCOMPARE(header.sections[1].steps, QStringList{"First line."});
    }

    // Paragraphs separated by blank lines, their lines joined by a space.
    void readsTheMethod_data() {
        QTest::addColumn<QString>("fixture");
        QTest::addColumn<QStringList>("steps");
        const auto row = [](const char* fixture, const QStringList& steps) {
            QTest::newRow(fixture) << QString::fromLatin1(fixture) << steps;
        };
        row("two_instructions.mmf", {"First line.", "Third line."});
        row("append_to_line.mmf", {"First part. Second part."});
        row("skip_leading_spaces.mmf", {"First part. Second part."});
        row("discard_two_spaces.mmf", {"Only discard two leading spaces."});
        row("force_newline.mmf", {"First line.", "Second line."});
        row("ignore_0x14.mmf", {"First line."});
        row("replace_0x9.mmf", {"First line."});
        row("stray_ingredient.mmf", {"First line. 200.0 ml milk"});
        row("no_ingredient.mmf", {"20 mg cholesterol"});
        row("instruction_number.mmf", {"Posted on Apr 27, 1998"});
        row("instruction_eol.mmf", {"Posted on Apr 27, 1998."});
        row("instruction_eol3.mmf", {"Posted on Apr 27, 1/"});
        row("instructions1.mmf", {"Cook all the ingredients."});
        row("instructions2.mmf", {"1 cook is used."});
        row("instructions3.mmf", {"Start cooking."});
        row("instructions4.mmf", {"2.5 apples are used."});
        row("instructions6.mmf", {"2 3 apples."});
        row("instructions7.mmf", {"1/x apples."});
        row("instructions8.mmf", {"1/2 apples."});
        row("instructions9.mmf", {"1 2/x apples."});
        row("instructions10.mmf", {"1 2/3 each."});
    }

    void readsTheMethod() {
        QFETCH(QString, fixture);
        QFETCH(QStringList, steps);
        const Recipe recipe = Fixture(fixture);
        QVERIFY(!recipe.title.isEmpty());
        QCOMPARE(Steps(recipe), steps);
        QCOMPARE(LineCount(recipe), 0);
        QCOMPARE(SectionTitles(recipe), QStringList{""});
    }

    void aFirstLineAloneIsNoRecipe() {
        const FileRead read = ReadBytes("MMMMM---MEAL-MASTER Format---\r\n");
        QCOMPARE(read.recipes.size(), 0);
        QCOMPARE(read.notes.notRecipes, 1);
        QCOMPARE(read.notes.problems, QStringList{"vrstica 1: recept brez naslova"});
    }

    // The same recipe twice, with "c." and "tsp." written outside the unit columns.
    void readsTheKrecipesExport() {
        const FileRead read =
            ReadFile(QStringLiteral("KDE-krecipes/src/tests/import-export/mmftest.txt"));
        QCOMPARE(read.recipes.size(), 2);
        QCOMPARE(read.notes.notRecipes, 0);
        QCOMPARE(read.notes.problems, QStringList());
        for (const Recipe& recipe : read.recipes) {
            QCOMPARE(recipe.title, QStringLiteral("Cookies_Test"));
            QCOMPARE(recipe.categories, (QStringList{"Snacks", "Cookies & Squares"}));
            QCOMPARE(recipe.yield, QStringLiteral("2"));
            QCOMPARE(SectionTitles(recipe), (QStringList{"", "Dry Ingredients", "Fat & Liquids"}));
            QCOMPARE(
                Lines(recipe),
                (QStringList{"1|c|a|or", "2|c|b|or", "3|c|c|", "3/4|c.|granulated sugar|",
                             "1|c.|brown sugar|", "2|c.|all-purpose flour|", "1|tsp.|baking soda|",
                             "1|c.|shortening|softened, at room temperature", "1|c.|peanut butter|",
                             "2||eggs|", "1|tsp.|vanilla extract|"}));
            QCOMPARE(
                recipe.sections[2].steps,
                QStringList{"Drop by spoonful on greased cookie sheet.  Bake in moderate oven."});
        }
    }

    void readsTheGourmetFile() {
        const FileRead read =
            ReadFile(QStringLiteral("thinkle-gourmet/gourmet/tests/recipe_files/mealmaster.mmf"));
        QCOMPARE(Titles(read.recipes), (QStringList{"Almond Mushroom Pate", "Almond Puff",
                                                    "Almond Stuffed Dates with Bacon",
                                                    "Anchovy Olive Dip", "Anchoyade"}));
        QCOMPARE(read.notes.notRecipes, 0);
        const Recipe& pate = read.recipes[0];
        QCOMPARE(pate.categories, QStringList{"Appetizers"});
        QCOMPARE(pate.yield, QStringLiteral("6"));
        QCOMPARE(LineCount(pate), 10);
        QCOMPARE(Lines(pate).mid(0, 4),
                 (QStringList{"1-2|tb|Margarine|", "1|sm|Onion|Chopped", "||Clove Garlic|Minced",
                              "1-1 1/2|c|Sliced Mushrooms|"}));
        QCOMPARE(Steps(pate).size(), 1);
        QCOMPARE(read.recipes[1].categories, QStringList{"Appetizers"});
        QCOMPARE(LineCount(read.recipes[1]), 8);
        QCOMPARE(Lines(read.recipes[1]).first(),
                 QStringLiteral("1/2|c|Butter (or margarine)|softened"));
        QCOMPARE(Steps(read.recipes[1]).size(), 6);
        QCOMPARE(Lines(read.recipes[2]).first(),
                 QStringLiteral("1|pk|(4-oz) blanched whole almonds|"));
        QCOMPARE(LineCount(read.recipes[2]), 3);
        QCOMPARE(read.recipes[3].categories, QStringList{"Dips"});
        QCOMPARE(Steps(read.recipes[3]),
                 (QStringList{"Combine ingredients; mix well.  Chill", "Randy Rigg"}));
        QCOMPARE(LineCount(read.recipes[4]), 9);
        QCOMPARE(Lines(read.recipes[4]).at(7),
                 QStringLiteral("8-10||slices French bread|1/2-inch thick, cut into Strips"));
        for (const Recipe& recipe : read.recipes) {
            QCOMPARE(SectionTitles(recipe), QStringList{""});
            QCOMPARE(recipe.source, QString());
        }
    }

    void readsTheCaribouCollection() {
        const FileRead read = ReadFile(QStringLiteral("ology-Food-Recipe/public/MMF/CARIBOU.MMF"));
        QCOMPARE(read.recipes.size(), 49);
        QCOMPARE(read.recipes.first().title, QStringLiteral("Game Cooking"));
        QCOMPARE(read.recipes.last().title, QStringLiteral("Caribou Mincemeat Pie"));
        // The preface, nine chapter lines and an attachment after the last recipe.
        QCOMPARE(read.notes.notRecipes, 11);
        QCOMPARE(read.notes.problems, QStringList());
        for (const Recipe& recipe : read.recipes) {
            QVERIFY2(recipe.yield.size() > 0, qPrintable(recipe.title));
            QVERIFY2(!recipe.sections.isEmpty(), qPrintable(recipe.title));
        }
        const Recipe& meatBalls = read.recipes[1];
        QCOMPARE(meatBalls.title, QStringLiteral("Caribou Meat Balls"));
        QCOMPARE(LineCount(meatBalls), 12);
        QCOMPARE(Lines(meatBalls).at(2),
                 QStringLiteral("1/4|c|Quick oatmeal|Red River cereal, bread or cracker crumbs"));
    }

    void readsTheHolidayCollection() {
        const FileRead read = ReadFile(QStringLiteral("ology-Food-Recipe/public/MMF/HOLIDAY.MMF"));
        QCOMPARE(read.recipes.size(), 291);
        QCOMPARE(read.recipes.first().title, QStringLiteral("Swedish Meatballs"));
        QCOMPARE(read.recipes.last().title, QStringLiteral("Cajun Shrimp"));
        QCOMPARE(read.notes.notRecipes, 0);
        QCOMPARE(read.notes.problems, QStringList());
        int titled = 0;
        int degrees = 0;
        for (const Recipe& recipe : read.recipes) {
            for (const Section& section : recipe.sections) {
                titled += section.title.isEmpty() ? 0 : 1;
                degrees += section.steps.join(' ').count(QStringLiteral("350F°"));
            }
        }
        QCOMPARE(titled, 44);
        QCOMPARE(degrees, 2);
        const Recipe& meatballs = read.recipes.first();
        QCOMPARE(meatballs.yield, QStringLiteral("4 servings"));
        QCOMPARE(LineCount(meatballs), 15);
        QCOMPARE(Lines(meatballs).at(4), QStringLiteral("1 1/2|lb|Ground beef or veal|"));
        QCOMPARE(Steps(meatballs).size(), 1);
    }
};

QTEST_GUILESS_MAIN(TestExchangeMealMaster)
#include "tst_exchange_mealmaster.moc"
