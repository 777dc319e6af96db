// The display pages of a recipe, a subgroup and a group on both database kinds: the whole display
// file is compared byte for byte with the page written out here, in windows-1250.
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QLocale>
#include <QTest>
#include <functional>

#include "collection/SampleDatabase.h"
#include "core/AppError.h"
#include "core/database/Recordset.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "display/modDisplay.h"
#include "tests/support/TestDatabase.h"

namespace {

QString U(const char* utf8) { return QString::fromUtf8(utf8); }

// The few letters outside ASCII that the pages here use, with their windows-1250 bytes.
const QHash<char32_t, char>& LetterBytes() {
    static const QHash<char32_t, char> table = {
        {U'č', '\xE8'}, {U'Č', '\xC8'}, {U'š', '\x9A'}, {U'Š', '\x8A'}, {U'ž', '\x9E'},
        {U'Ž', '\x8E'}, {U'€', '\x80'}, {U'ő', '\xF5'}, {U'–', '\x96'},
    };
    return table;
}

// Text in windows-1250 through the table above. A letter missing from the table becomes the
// control byte SUB, so that an expectation using it can never match a page by accident.
QByteArray Cp1250(const QString& text) {
    QByteArray bytes;
    for (const char32_t c : text.toUcs4()) {
        if (c < 0x80) {
            bytes += static_cast<char>(c);
        } else {
            bytes += LetterBytes().value(c, '\x1A');
        }
    }
    return bytes;
}

// The reverse of Cp1250; a byte outside the table becomes U+FFFD.
QString FromCp1250(const QByteArray& bytes) {
    QHash<unsigned char, char32_t> reverse;
    for (auto it = LetterBytes().constBegin(); it != LetterBytes().constEnd(); ++it) {
        reverse.insert(static_cast<unsigned char>(it.value()), it.key());
    }
    QString text;
    for (const char b : bytes) {
        const auto byte = static_cast<unsigned char>(b);
        const char32_t c = byte < 0x80 ? byte : reverse.value(byte, U'\uFFFD');
        text += QString::fromUcs4(&c, 1);
    }
    return text;
}

// The head of every page; subgroup and group pages also set the font of their tables.
QString HeadAfterTitle(bool tables) {
    return QStringLiteral("</title>") + QStringLiteral("<meta http-equiv=\"Content-Type\" ") +
           QStringLiteral("content=\"text/html; charset=windows-1250\">") +
           QStringLiteral("<style type=\"text/css\"><!--") +
           QStringLiteral("body{font-family:verdana;font-size:12px;}") +
           QStringLiteral("h1{font-size:22px;}") + QStringLiteral("h2{font-size:18px;}") +
           QStringLiteral("h3{font-size:14px;margin-bottom:5px;}") +
           (tables ? QStringLiteral("table{font-family:verdana;font-size:12px;}") : QString()) +
           QStringLiteral("--></style>") + QStringLiteral("</head><body>");
}
QString Head(const QString& title, bool tables) {
    return QStringLiteral("<html><head><title>") + title + HeadAfterTitle(tables);
}

QString N(qint32 number) { return QString::number(number); }

QString DisplayPath() { return TestDatabase::WorkFolder() + QStringLiteral("/prikaz.htm"); }

QByteArray ReadDisplayFile() {
    QFile file(modGeneral::TempFilename);
    if (!file.open(QIODevice::ReadOnly)) {
        return QByteArray("<display file missing>");
    }
    return file.readAll();
}

void WriteDisplayFileBytes(const QByteArray& bytes) {
    QFile file(modGeneral::TempFilename);
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    QCOMPARE(file.write(bytes), bytes.size());
}

// Rows of the tables, each returning its new key.
qint32 AddGroup(const QString& name, const QVariant& description = QVariant()) {
    return TestDatabase::Insert(
        QStringLiteral("Group"),
        {{QStringLiteral("name"), name}, {QStringLiteral("description"), description}});
}
qint32 AddType(qint32 groupID, const QString& name, const QVariant& description = QVariant()) {
    return TestDatabase::Insert(QStringLiteral("Type"),
                                {{QStringLiteral("groupID"), groupID},
                                 {QStringLiteral("name"), name},
                                 {QStringLiteral("description"), description}});
}
qint32 AddSource(const QString& name) {
    return TestDatabase::Insert(QStringLiteral("Source"), {{QStringLiteral("name"), name}});
}
qint32 AddUnit(const QString& name) {
    return TestDatabase::Insert(QStringLiteral("Unit"), {{QStringLiteral("name"), name}});
}
qint32 AddIngredient(const QString& name) {
    return TestDatabase::Insert(QStringLiteral("Ingredient"), {{QStringLiteral("name"), name}});
}
qint32 AddRecipe(qint32 typeID, const QString& title, const QVariant& sourceID = QVariant()) {
    return TestDatabase::Insert(QStringLiteral("Recipe"), {{QStringLiteral("typeID"), typeID},
                                                           {QStringLiteral("sourceID"), sourceID},
                                                           {QStringLiteral("title"), title}});
}
// A section of a recipe at a place; a null title is stored as NULL.
qint32 AddSection(qint32 recipeID, int place, const QVariant& title, const QString& instructions) {
    const qint32 sectionID = TestDatabase::Insert(
        QStringLiteral("Section"),
        {{QStringLiteral("title"), title}, {QStringLiteral("instructions"), instructions}});
    TestDatabase::Insert(QStringLiteral("RecipeSection"), {{QStringLiteral("recipeID"), recipeID},
                                                           {QStringLiteral("sectionID"), sectionID},
                                                           {QStringLiteral("place"), place}});
    return sectionID;
}
void AddLine(qint32 sectionID, qint32 amount, qint32 unitID, qint32 ingredientID) {
    TestDatabase::Insert(QStringLiteral("SectionIngredient"),
                         {{QStringLiteral("sectionID"), sectionID},
                          {QStringLiteral("ingredientID"), ingredientID},
                          {QStringLiteral("unitID"), unitID},
                          {QStringLiteral("amount"), amount}});
}

// A group "Juhe" with the subgroup "Mesne juhe", the unit "g" and the ingredient "goveje meso".
struct Basics {
    qint32 groupID = 0;
    qint32 typeID = 0;
    qint32 unitID = 0;
    qint32 ingredientID = 0;
};
Basics AddBasics() {
    Basics b;
    b.groupID = AddGroup(QStringLiteral("Juhe"));
    b.typeID = AddType(b.groupID, QStringLiteral("Mesne juhe"));
    b.unitID = AddUnit(QStringLiteral("g"));
    b.ingredientID = AddIngredient(QStringLiteral("goveje meso"));
    return b;
}

// The start of the recipe page of "Juhe - Mesne juhe" up to the recipe's number and its break.
QString RecipeStart(qint32 recipeID, const QString& title) {
    return Head(N(recipeID) + QStringLiteral(" - ") + title, false) +
           QStringLiteral("Juhe - Mesne juhe<br>") + U("Recept št. ") + N(recipeID) +
           QStringLiteral("<br>");
}

// Runs `call` and checks that it raises the passed-on error of `source`.
void ExpectPassedOn(const std::function<void()>& call, const QString& source) {
    try {
        call();
    } catch (const AppError& error) {
        QCOMPARE(error.Source(), source);
        QCOMPARE(error.Number(), -2147221504L);
        QCOMPARE(error.Number(), AppError::PassedOn);
        return;
    }
    QFAIL("no error was raised");
}

// The helpers above report a failure of their own; the test then stops at once.
#define STOP_IF_FAILED()                \
    do {                                \
        if (QTest::currentTestFailed()) \
            return;                     \
    } while (false)

QStringList FolderEntries(const QString& path) {
    return QDir(path).entryList(
        QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}

}  // namespace

class TestDisplay : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        TestDatabase::IsolateEnvironment();
        modGeneral::TempFilename = DisplayPath();
    }
    void init() {
        modGeneral::TempFilename = DisplayPath();
        QFile::remove(DisplayPath());
    }
    void cleanup() {
        modDatabase::Connection.reset();
        QLocale::setDefault(QLocale::c());
    }

    // ---------------------------------------------------------------- the recipe page

    void recipeWithoutSource_data() { TestDatabase::AddKinds(); }
    void recipeWithoutSource() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        const Basics b = AddBasics();
        const qint32 id = AddRecipe(b.typeID, QStringLiteral("Goveja juha"));
        const qint32 section = AddSection(id, 1, QVariant(), QStringLiteral("Kuhamo dve uri."));
        AddLine(section, 600, b.unitID, b.ingredientID);

        modDisplay::DisplayRecipe(id);
        const QString expected =
            Head(N(id) + QStringLiteral(" - Goveja juha"), false) +
            QStringLiteral("Juhe - Mesne juhe<br>") + U("Recept št. ") + N(id) +
            QStringLiteral(
                "<br><h1>Goveja juha</h1><h3>Sestavine:</h3>600 g goveje meso<br>"
                "<h3>Potek dela:</h3>Kuhamo dve uri.</table></body></html>");
        QCOMPARE(ReadDisplayFile(), Cp1250(expected));
    }

    void recipeWhoseSourceRowIsMissing_data() { TestDatabase::AddKinds(); }
    void recipeWhoseSourceRowIsMissing() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        const Basics b = AddBasics();
        const qint32 other = AddSource(U("Mamin zvezek"));
        const qint32 id = AddRecipe(b.typeID, QStringLiteral("Goveja juha"), other + 1000);
        AddSection(id, 1, QVariant(), QStringLiteral("Kuhamo."));

        modDisplay::DisplayRecipe(id);
        QCOMPARE(ReadDisplayFile(),
                 Cp1250(RecipeStart(id, QStringLiteral("Goveja juha")) +
                        QStringLiteral("<h1>Goveja juha</h1><h3>Sestavine:</h3>"
                                       "<h3>Potek dela:</h3>Kuhamo.</table></body></html>")));
    }

    void recipeWithSource_data() { TestDatabase::AddKinds(); }
    void recipeWithSource() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        const Basics b = AddBasics();
        AddSource(QStringLiteral("Drug vir"));
        const qint32 source = AddSource(U("Babičina kuharica"));
        const qint32 id = AddRecipe(b.typeID, QStringLiteral("Goveja juha"), source);
        const qint32 section = AddSection(id, 1, QVariant(), QStringLiteral("Kuhamo."));
        AddLine(section, 600, b.unitID, b.ingredientID);

        modDisplay::DisplayRecipe(id);
        QCOMPARE(
            ReadDisplayFile(),
            Cp1250(RecipeStart(id, QStringLiteral("Goveja juha")) + U("Vir: Babičina kuharica") +
                   QStringLiteral("<h1>Goveja juha</h1><h3>Sestavine:</h3>600 g goveje "
                                  "meso<br><h3>Potek dela:</h3>Kuhamo.</table></body>"
                                  "</html>")));
    }

    void sectionTitleNullAndEmpty_data() { TestDatabase::AddKinds(); }
    void sectionTitleNullAndEmpty() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        const Basics b = AddBasics();
        const qint32 id = AddRecipe(b.typeID, QStringLiteral("Juha"));
        const qint32 untitled = AddSection(id, 1, QVariant(), QStringLiteral("Prvi."));
        const qint32 empty = AddSection(id, 2, QStringLiteral(""), QStringLiteral("Drugi."));
        AddLine(untitled, 1, b.unitID, b.ingredientID);
        AddLine(empty, 2, b.unitID, b.ingredientID);
        QCOMPARE(TestDatabase::Rows(QStringLiteral("SELECT title FROM [Section] ORDER BY "
                                                   "sectionID;")),
                 QStringList({QStringLiteral("NULL"), QString()}));

        modDisplay::DisplayRecipe(id);
        QCOMPARE(ReadDisplayFile(),
                 Cp1250(RecipeStart(id, QStringLiteral("Juha")) +
                        QStringLiteral("<h1>Juha</h1>"
                                       "<h3>Sestavine:</h3>1 g goveje meso<br>"
                                       "<h3>Potek dela:</h3>Prvi."
                                       "<h2></h2><h3>Sestavine:</h3>2 g goveje meso<br>"
                                       "<h3>Potek dela:</h3>Drugi."
                                       "</table></body></html>")));
    }

    void sectionWithoutIngredientLines_data() { TestDatabase::AddKinds(); }
    void sectionWithoutIngredientLines() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        const Basics b = AddBasics();
        const qint32 id = AddRecipe(b.typeID, QStringLiteral("Juha"));
        AddSection(id, 1, QStringLiteral("Priprava"), QStringLiteral("Vse zmešamo."));

        modDisplay::DisplayRecipe(id);
        QCOMPARE(ReadDisplayFile(),
                 Cp1250(RecipeStart(id, QStringLiteral("Juha")) +
                        U("<h1>Juha</h1><h2>Priprava</h2><h3>Sestavine:</h3>"
                          "<h3>Potek dela:</h3>Vse zmešamo.</table></body></html>")));
    }

    void blankInstructionsHaveNoMethodHeading_data() { TestDatabase::AddKinds(); }
    void blankInstructionsHaveNoMethodHeading() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        const Basics b = AddBasics();
        const QStringList blanks = {QStringLiteral(" "), QStringLiteral("   "), QStringLiteral("")};
        for (const QString& instructions : blanks) {
            const qint32 id = AddRecipe(b.typeID, QStringLiteral("Juha"));
            const qint32 section = AddSection(id, 1, QStringLiteral("Del"), instructions);
            AddLine(section, 5, b.unitID, b.ingredientID);

            modDisplay::DisplayRecipe(id);
            QCOMPARE(ReadDisplayFile(),
                     Cp1250(RecipeStart(id, QStringLiteral("Juha")) +
                            QStringLiteral("<h1>Juha</h1><h2>Del</h2><h3>Sestavine:</h3>"
                                           "5 g goveje meso<br></table></body></html>")));
        }
    }

    void instructionLineBreaks_data() { TestDatabase::AddKinds(); }
    void instructionLineBreaks() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        const Basics b = AddBasics();
        const QList<QPair<QString, QByteArray>> cases = {
            {QStringLiteral("line1\r\nline2"), QByteArray("line1<br>line2")},
            {QStringLiteral("line1\r\nline2\r\n"), QByteArray("line1<br>line2<br>")},
            {QStringLiteral("  Kuhamo  dolgo. "), QByteArray("Kuhamo  dolgo.")},
            {QStringLiteral(" a\nb\rc "), QByteArray("a\nb\rc")},
            {QStringLiteral("\na\r"), QByteArray("\na\r")},
            {QStringLiteral("\r\r\n\n"), QByteArray("\r<br>\n")},
            {QStringLiteral("\ta\t"), QByteArray("\ta\t")},
            {QStringLiteral(" \r\n "), QByteArray("<br>")},
        };
        for (const auto& [instructions, method] : cases) {
            const qint32 id = AddRecipe(b.typeID, QStringLiteral("Juha"));
            AddSection(id, 1, QVariant(), instructions);

            modDisplay::DisplayRecipe(id);
            QCOMPARE(ReadDisplayFile(), Cp1250(RecipeStart(id, QStringLiteral("Juha")) +
                                               QStringLiteral("<h1>Juha</h1><h3>Sestavine:</h3>"
                                                              "<h3>Potek dela:</h3>")) +
                                            method + QByteArray("</table></body></html>"));
        }
    }

    void ingredientLinesWithMissingRowsAreLeftOut_data() { TestDatabase::AddKinds(); }
    void ingredientLinesWithMissingRowsAreLeftOut() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        const Basics b = AddBasics();
        const qint32 dl = AddUnit(QStringLiteral("dl"));
        const qint32 milk = AddIngredient(QStringLiteral("mleko"));
        const qint32 id = AddRecipe(b.typeID, QStringLiteral("Juha"));
        const qint32 section = AddSection(id, 1, QVariant(), QStringLiteral("Kuhamo."));
        AddLine(section, 600, b.unitID, b.ingredientID);
        AddLine(section, 3, dl + 100, milk);        // no such unit
        AddLine(section, 4, dl, milk + 100);        // no such ingredient
        AddLine(section, 5, dl + 100, milk + 100);  // neither
        AddLine(section, 2, dl, milk);

        modDisplay::DisplayRecipe(id);
        QCOMPARE(ReadDisplayFile(),
                 Cp1250(RecipeStart(id, QStringLiteral("Juha")) +
                        QStringLiteral("<h1>Juha</h1><h3>Sestavine:</h3>600 g goveje meso<br>"
                                       "2 dl mleko<br><h3>Potek dela:</h3>Kuhamo."
                                       "</table></body></html>")));
    }

    void recipeWithoutSections_data() { TestDatabase::AddKinds(); }
    void recipeWithoutSections() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        const Basics b = AddBasics();
        const qint32 id = AddRecipe(b.typeID, QStringLiteral("Prazen recept"));

        modDisplay::DisplayRecipe(id);
        QCOMPARE(ReadDisplayFile(),
                 Cp1250(RecipeStart(id, QStringLiteral("Prazen recept")) +
                        QStringLiteral("<h1>Prazen recept</h1></table></body></html>")));
    }

    void sectionsComeInPlaceOrder_data() { TestDatabase::AddKinds(); }
    void sectionsComeInPlaceOrder() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        const Basics b = AddBasics();
        const qint32 dag = AddUnit(QStringLiteral("dag"));
        const qint32 flour = AddIngredient(QStringLiteral("moka"));
        const qint32 other = AddRecipe(b.typeID, QStringLiteral("Druga jed"));
        const qint32 id = AddRecipe(b.typeID, U("Juha s cmočki"));
        const qint32 second = AddSection(id, 2, U("Cmočki"), QStringLiteral("Oblikujemo."));
        AddSection(other, 1, QStringLiteral("Tuje"), QStringLiteral("Ne sodi sem."));
        const qint32 third = AddSection(id, 3, QStringLiteral("Serviranje"), QStringLiteral(" "));
        const qint32 first = AddSection(id, 1, QStringLiteral("Juha"), QStringLiteral("Kuhamo."));
        AddLine(second, 10, dag, flour);
        AddLine(first, 600, b.unitID, b.ingredientID);
        AddLine(third, 1, dag, flour);

        modDisplay::DisplayRecipe(id);
        QCOMPARE(ReadDisplayFile(), Cp1250(RecipeStart(id, U("Juha s cmočki")) +
                                           U("<h1>Juha s cmočki</h1>"
                                             "<h2>Juha</h2><h3>Sestavine:</h3>600 g goveje meso<br>"
                                             "<h3>Potek dela:</h3>Kuhamo."
                                             "<h2>Cmočki</h2><h3>Sestavine:</h3>10 dag moka<br>"
                                             "<h3>Potek dela:</h3>Oblikujemo."
                                             "<h2>Serviranje</h2><h3>Sestavine:</h3>1 dag moka<br>"
                                             "</table></body></html>")));
    }

    void ingredientLinesInTheOrderEntered_data() { TestDatabase::AddKinds(); }
    void ingredientLinesInTheOrderEntered() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        const Basics b = AddBasics();
        const qint32 kos = AddUnit(QStringLiteral("kos"));
        const qint32 salt = AddIngredient(QStringLiteral("sol"));
        const qint32 carrot = AddIngredient(QStringLiteral("korenje"));
        const qint32 id = AddRecipe(b.typeID, QStringLiteral("Juha"));
        const qint32 section = AddSection(id, 1, QVariant(), QStringLiteral("Kuhamo."));
        AddLine(section, 3, b.unitID, salt);
        AddLine(section, 600, b.unitID, b.ingredientID);
        AddLine(section, 2, kos, carrot);

        modDisplay::DisplayRecipe(id);
        QCOMPARE(ReadDisplayFile(),
                 Cp1250(RecipeStart(id, QStringLiteral("Juha")) +
                        QStringLiteral("<h1>Juha</h1><h3>Sestavine:</h3>3 g sol<br>"
                                       "600 g goveje meso<br>2 kos korenje<br>"
                                       "<h3>Potek dela:</h3>Kuhamo.</table></body></html>")));
    }

    void numbersAsPlainDigits_data() { TestDatabase::AddKinds(); }
    void numbersAsPlainDigits() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        QLocale::setDefault(QLocale(QLocale::Slovenian, QLocale::Slovenia));
        const Basics b = AddBasics();
        const qint32 id = TestDatabase::Insert(QStringLiteral("Recipe"),
                                               {{QStringLiteral("recipeID"), 1234567},
                                                {QStringLiteral("typeID"), b.typeID},
                                                {QStringLiteral("title"), QStringLiteral("Juha")}});
        QCOMPARE(id, 1234567);
        const qint32 section = AddSection(id, 1, QVariant(), QStringLiteral("Kuhamo."));
        AddLine(section, 0, b.unitID, b.ingredientID);
        AddLine(section, 7, b.unitID, b.ingredientID);
        AddLine(section, 1500, b.unitID, b.ingredientID);

        modDisplay::DisplayRecipe(id);
        QCOMPARE(ReadDisplayFile(),
                 Cp1250(Head(QStringLiteral("1234567 - Juha"), false) +
                        U("Juhe - Mesne juhe<br>Recept št. 1234567<br><h1>Juha</h1>"
                          "<h3>Sestavine:</h3>0 g goveje meso<br>7 g goveje meso<br>"
                          "1500 g goveje meso<br><h3>Potek dela:</h3>Kuhamo."
                          "</table></body></html>")));

        modDisplay::DisplayType(b.typeID);
        QCOMPARE(ReadDisplayFile(),
                 Cp1250(Head(QStringLiteral("Juhe - Mesne juhe"), true) +
                        QStringLiteral("<h1>Juhe - Mesne juhe</h1>"
                                       "<table width=\"100%\" border=\"0\">"
                                       "<tr><td>Juha</td><td align=\"right\">1234567</td></tr>"
                                       "</table></body></html>")));
    }

    void markupAndAmpersandUnchanged_data() { TestDatabase::AddKinds(); }
    void markupAndAmpersandUnchanged() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        const qint32 group = AddGroup(U("Juhe & enolončnice"));
        const qint32 type = AddType(group, QStringLiteral("<i>Mesne</i>"),
                                    QStringLiteral("Za <u>nedeljo</u> & praznike"));
        const qint32 unit = AddUnit(QStringLiteral("g&g"));
        const qint32 ingredient = AddIngredient(QStringLiteral("<em>meso</em>"));
        const qint32 source = AddSource(QStringLiteral("A & B <br>"));
        const qint32 id = AddRecipe(type, QStringLiteral("<b>Juha</b> & kruh"), source);
        const qint32 section =
            AddSection(id, 1, QStringLiteral("<s>Del</s> &amp;"), QStringLiteral("1 < 2 & 3 > 2"));
        AddLine(section, 4, unit, ingredient);

        modDisplay::DisplayRecipe(id);
        QCOMPARE(ReadDisplayFile(),
                 Cp1250(Head(N(id) + QStringLiteral(" - <b>Juha</b> & kruh"), false) +
                        U("Juhe & enolončnice - <i>Mesne</i><br>Recept št. ") + N(id) +
                        QStringLiteral("<br>Vir: A & B <br><h1><b>Juha</b> & kruh</h1>"
                                       "<h2><s>Del</s> &amp;</h2><h3>Sestavine:</h3>"
                                       "4 g&g <em>meso</em><br><h3>Potek dela:</h3>"
                                       "1 < 2 & 3 > 2</table></body></html>")));

        modDisplay::DisplayType(type);
        const QString typeTitle = U("Juhe & enolončnice - <i>Mesne</i>");
        QCOMPARE(ReadDisplayFile(),
                 Cp1250(Head(typeTitle, true) + QStringLiteral("<h1>") + typeTitle +
                        QStringLiteral("</h1>Za <u>nedeljo</u> & praznike"
                                       "<table width=\"100%\" border=\"0\">"
                                       "<tr><td><b>Juha</b> & kruh</td><td align=\"right\">") +
                        N(id) + QStringLiteral("</td></tr></table></body></html>")));
    }

    void charactersOutsideTheCodePage_data() { TestDatabase::AddKinds(); }
    void charactersOutsideTheCodePage() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        const Basics b = AddBasics();
        const qint32 id = AddRecipe(b.typeID, U("Torta € ő → 😀 žŽ"));
        AddSection(id, 1, U("→😀😀"), U("Cena 5 € → 😀"));

        modDisplay::DisplayRecipe(id);
        const QByteArray title = QByteArray("Torta \x80 \xF5 ? ? ") + QByteArray("\x9E\x8E");
        QCOMPARE(ReadDisplayFile(), QByteArray("<html><head><title>") + N(id).toLatin1() +
                                        QByteArray(" - ") + title + Cp1250(HeadAfterTitle(false)) +
                                        QByteArray("Juhe - Mesne juhe<br>Recept \x9At. ") +
                                        N(id).toLatin1() + QByteArray("<br><h1>") + title +
                                        QByteArray("</h1><h2>???"
                                                   "</h2><h3>Sestavine:</h3><h3>Potek dela:</h3>"
                                                   "Cena 5 \x80 ? ?</table></body></html>"));
    }

    void recipePageIsTheSameTwice_data() { TestDatabase::AddKinds(); }
    void recipePageIsTheSameTwice() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        const Basics b = AddBasics();
        const qint32 id = AddRecipe(b.typeID, U("Ričet"));
        const qint32 section = AddSection(id, 1, QVariant(), QStringLiteral("a\r\nb"));
        AddLine(section, 600, b.unitID, b.ingredientID);

        modDisplay::DisplayRecipe(id);
        const QByteArray first = ReadDisplayFile();
        modDisplay::DisplayRecipe(id);
        QCOMPARE(ReadDisplayFile(), first);
        QVERIFY(!first.startsWith("\xEF\xBB\xBF"));
        QVERIFY(!first.endsWith('\n'));
    }

    // ---------------------------------------------------------------- the subgroup page

    void subgroupWithoutRecipes_data() { TestDatabase::AddKinds(); }
    void subgroupWithoutRecipes() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        const qint32 group = AddGroup(QStringLiteral("Sladice"));
        const qint32 type = AddType(group, QStringLiteral("Torte"));
        const qint32 busy = AddType(group, QStringLiteral("Pecivo"));
        AddRecipe(busy, QStringLiteral("Potica"));

        modDisplay::DisplayType(type);
        QCOMPARE(ReadDisplayFile(),
                 Cp1250(Head(QStringLiteral("Sladice - Torte"), true) +
                        QStringLiteral("<h1>Sladice - Torte</h1>"
                                       "<table width=\"100%\" border=\"0\"></table>"
                                       "</body></html>")));
    }

    void subgroupDescriptionAsStored_data() { TestDatabase::AddKinds(); }
    void subgroupDescriptionAsStored() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        const qint32 group = AddGroup(QStringLiteral("Sladice"), QStringLiteral("Ne sodi sem."));
        const QString description = U("  Sladko\r\npecivo\nin <b>torte</b>\r ");
        const qint32 type = AddType(group, QStringLiteral("Torte"), description);
        const qint32 id = AddRecipe(type, QStringLiteral("Sacher"));

        modDisplay::DisplayType(type);
        QCOMPARE(ReadDisplayFile(),
                 Cp1250(Head(QStringLiteral("Sladice - Torte"), true) +
                        QStringLiteral("<h1>Sladice - Torte</h1>") + description +
                        QStringLiteral("<table width=\"100%\" border=\"0\">"
                                       "<tr><td>Sacher</td><td align=\"right\">") +
                        N(id) + QStringLiteral("</td></tr></table></body></html>")));
    }

    void subgroupRecipesInSlovenianOrder_data() { TestDatabase::AddKinds(); }
    void subgroupRecipesInSlovenianOrder() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        const qint32 group = AddGroup(QStringLiteral("Glavne jedi"));
        const qint32 type = AddType(group, QStringLiteral("Mesne jedi"));
        const qint32 elsewhere = AddType(group, QStringLiteral("Druge"));
        const qint32 zganci = AddRecipe(type, U("Žganci"));
        const qint32 dusenoZelje = AddRecipe(type, U("Dušeno zelje"));
        const qint32 cevapcici = AddRecipe(type, U("Čevapčiči"));
        AddRecipe(elsewhere, QStringLiteral("Bograč"));
        const qint32 zelje = AddRecipe(type, QStringLiteral("zelje"));
        const qint32 cvetaca = AddRecipe(type, U("cvetača"));
        const qint32 ananas = AddRecipe(type, QStringLiteral("Ananas v sirupu"));
        const qint32 ajdovi = AddRecipe(type, U("ajdovi žganci"));
        const qint32 cmoki = AddRecipe(type, QStringLiteral("Cmoki"));

        const auto row = [](const QString& title, qint32 id) {
            return QStringLiteral("<tr><td>") + title +
                   QStringLiteral("</td><td align=\"right\">") + N(id) +
                   QStringLiteral("</td></tr>");
        };
        modDisplay::DisplayType(type);
        QCOMPARE(ReadDisplayFile(),
                 Cp1250(Head(QStringLiteral("Glavne jedi - Mesne jedi"), true) +
                        QStringLiteral("<h1>Glavne jedi - Mesne jedi</h1>"
                                       "<table width=\"100%\" border=\"0\">") +
                        row(U("ajdovi žganci"), ajdovi) +
                        row(QStringLiteral("Ananas v sirupu"), ananas) +
                        row(QStringLiteral("Cmoki"), cmoki) + row(U("cvetača"), cvetaca) +
                        row(U("Čevapčiči"), cevapcici) + row(U("Dušeno zelje"), dusenoZelje) +
                        row(QStringLiteral("zelje"), zelje) + row(U("Žganci"), zganci) +
                        QStringLiteral("</table></body></html>")));
    }

    // ---------------------------------------------------------------- the group page

    void groupWithoutSubgroups_data() { TestDatabase::AddKinds(); }
    void groupWithoutSubgroups() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        const qint32 group =
            AddGroup(QStringLiteral("Zimnica"), U("Vložena zelenjava\r\nin marmelade "));
        const qint32 bare = AddGroup(QStringLiteral("Prazna"));
        AddType(AddGroup(QStringLiteral("Druga")), QStringLiteral("Ne sodi sem"));

        modDisplay::DisplayGroup(group);
        QCOMPARE(ReadDisplayFile(),
                 Cp1250(Head(QStringLiteral("Zimnica"), true) +
                        U("<h1>Zimnica</h1>Vložena zelenjava\r\nin marmelade </body></html>")));

        modDisplay::DisplayGroup(bare);
        QCOMPARE(ReadDisplayFile(), Cp1250(Head(QStringLiteral("Prazna"), true) +
                                           QStringLiteral("<h1>Prazna</h1></body></html>")));
    }

    void groupWithSubgroups_data() { TestDatabase::AddKinds(); }
    void groupWithSubgroups() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        const qint32 group = AddGroup(QStringLiteral("Juhe"), QStringLiteral("Tople juhe."));
        const qint32 vegetable = AddType(group, QStringLiteral("Zelenjavne juhe"),
                                         QStringLiteral("Brez mesa.\r\nLahke."));
        const qint32 meat = AddType(group, QStringLiteral("Mesne juhe"),
                                    QStringLiteral("Na kosteh\r\nin mesu.\r\n"));
        const qint32 other = AddType(AddGroup(QStringLiteral("Druga")), QStringLiteral("Tuje"));
        AddRecipe(other, QStringLiteral("Ne sodi sem"));
        const qint32 tomato = AddRecipe(vegetable, U("Paradižnikova juha"));
        const qint32 beef = AddRecipe(meat, QStringLiteral("Goveja juha"));
        const qint32 broth = AddRecipe(meat, QStringLiteral("bistra juha"));
        const qint32 bean = AddRecipe(vegetable, U("Fižolova juha"));
        const qint32 chicken = AddRecipe(meat, U("Kokošja juha"));

        const auto row = [](const QString& title, qint32 id) {
            return QStringLiteral("<tr><td>") + title +
                   QStringLiteral("</td><td align=\"right\">") + N(id) +
                   QStringLiteral("</td></tr>");
        };
        const QString table = QStringLiteral("<table width=\"100%\" border=\"0\">");
        modDisplay::DisplayGroup(group);
        QCOMPARE(
            ReadDisplayFile(),
            Cp1250(Head(QStringLiteral("Juhe"), true) + QStringLiteral("<h1>Juhe</h1>Tople juhe.") +
                   QStringLiteral("<h2>Mesne juhe</h1>Na kosteh\r\nin mesu.\r\n") + table +
                   row(QStringLiteral("bistra juha"), broth) +
                   row(QStringLiteral("Goveja juha"), beef) + row(U("Kokošja juha"), chicken) +
                   QStringLiteral("</table>") +
                   QStringLiteral("<h2>Zelenjavne juhe</h1>Brez mesa.\r\nLahke.") + table +
                   row(U("Fižolova juha"), bean) + row(U("Paradižnikova juha"), tomato) +
                   QStringLiteral("</table>") + QStringLiteral("</body></html>")));
    }

    void groupSubgroupsInSlovenianOrder_data() { TestDatabase::AddKinds(); }
    void groupSubgroupsInSlovenianOrder() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        const qint32 group = AddGroup(QStringLiteral("Jedi"));
        AddType(group, QStringLiteral("Dodatki"));
        AddType(group, U("Čaji"));
        AddType(group, QStringLiteral("cmoki"));
        AddType(group, QStringLiteral("Ajdove jedi"));
        AddType(group, QStringLiteral("ajvar"));

        const QString table = QStringLiteral("<table width=\"100%\" border=\"0\"></table>");
        modDisplay::DisplayGroup(group);
        QCOMPARE(
            ReadDisplayFile(),
            Cp1250(Head(QStringLiteral("Jedi"), true) + QStringLiteral("<h1>Jedi</h1>") +
                   QStringLiteral("<h2>Ajdove jedi</h1>") + table +
                   QStringLiteral("<h2>ajvar</h1>") + table + QStringLiteral("<h2>cmoki</h1>") +
                   table + U("<h2>Čaji</h1>") + table + QStringLiteral("<h2>Dodatki</h1>") + table +
                   QStringLiteral("</body></html>")));
    }

    // ---------------------------------------------------------------- failures

    void unknownIdentifiersRaiseAndKeepTheFile_data() { TestDatabase::AddKinds(); }
    void unknownIdentifiersRaiseAndKeepTheFile() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        const Basics b = AddBasics();
        const qint32 id = AddRecipe(b.typeID, QStringLiteral("Juha"));
        const QByteArray previous("prej\r\n\x9A\x80 stara stran");
        WriteDisplayFileBytes(previous);
        STOP_IF_FAILED();
        const QStringList entries = FolderEntries(TestDatabase::WorkFolder());

        ExpectPassedOn([&] { modDisplay::DisplayRecipe(id + 1000); },
                       QStringLiteral("modDisplay:DisplayRecipe"));
        STOP_IF_FAILED();
        QCOMPARE(ReadDisplayFile(), previous);
        ExpectPassedOn([&] { modDisplay::DisplayType(b.typeID + 1000); },
                       QStringLiteral("modDisplay:DisplayType"));
        STOP_IF_FAILED();
        QCOMPARE(ReadDisplayFile(), previous);
        ExpectPassedOn([&] { modDisplay::DisplayGroup(b.groupID + 1000); },
                       QStringLiteral("modDisplay:DisplayGroup"));
        STOP_IF_FAILED();
        QCOMPARE(ReadDisplayFile(), previous);
        ExpectPassedOn([&] { modDisplay::DisplayRecipe(0); },
                       QStringLiteral("modDisplay:DisplayRecipe"));
        STOP_IF_FAILED();
        ExpectPassedOn([&] { modDisplay::DisplayType(-1); },
                       QStringLiteral("modDisplay:DisplayType"));
        STOP_IF_FAILED();
        ExpectPassedOn([&] { modDisplay::DisplayGroup(0); },
                       QStringLiteral("modDisplay:DisplayGroup"));
        STOP_IF_FAILED();
        QCOMPARE(ReadDisplayFile(), previous);
        QCOMPARE(FolderEntries(TestDatabase::WorkFolder()), entries);
    }

    void failureToWriteLeavesNothing_data() { TestDatabase::AddKinds(); }
    void failureToWriteLeavesNothing() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        const Basics b = AddBasics();
        const qint32 id = AddRecipe(b.typeID, QStringLiteral("Juha"));
        const QByteArray previous("stara stran");
        WriteDisplayFileBytes(previous);
        STOP_IF_FAILED();
        const QString missingFolder = TestDatabase::WorkFolder() + QStringLiteral("/ni-mape");
        const QStringList entries = FolderEntries(TestDatabase::WorkFolder());

        modGeneral::TempFilename = missingFolder + QStringLiteral("/prikaz.htm");
        ExpectPassedOn([&] { modDisplay::DisplayRecipe(id); },
                       QStringLiteral("modDisplay:DisplayRecipe"));
        STOP_IF_FAILED();
        ExpectPassedOn([&] { modDisplay::DisplayType(b.typeID); },
                       QStringLiteral("modDisplay:DisplayType"));
        STOP_IF_FAILED();
        ExpectPassedOn([&] { modDisplay::DisplayGroup(b.groupID); },
                       QStringLiteral("modDisplay:DisplayGroup"));
        STOP_IF_FAILED();
        QVERIFY(!QFileInfo::exists(missingFolder));
        QCOMPARE(FolderEntries(TestDatabase::WorkFolder()), entries);

        modGeneral::TempFilename = DisplayPath();
        QCOMPARE(ReadDisplayFile(), previous);
    }

    // ---------------------------------------------------------------- the sample collection

    void sampleRecipeWithSeveralSections_data() { TestDatabase::AddKinds(); }
    void sampleRecipeWithSeveralSections() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        SampleDatabase::Load(SampleDatabase::BuiltInText());

        const QStringList several = TestDatabase::Rows(
            QStringLiteral("SELECT recipeID FROM [RecipeSection] GROUP BY recipeID HAVING "
                           "COUNT(*) > 1 ORDER BY recipeID;"));
        QVERIFY(!several.isEmpty());
        const qint32 id = several.first().toInt();

        Recordset recipe = modDatabase::GetRecordset(
            QStringLiteral("SELECT title FROM [Recipe] WHERE recipeID = ") + N(id) +
            QStringLiteral(";"));
        const QString title = recipe.Text(QStringLiteral("title"));
        recipe.Close();

        modDisplay::DisplayRecipe(id);
        const QByteArray page = ReadDisplayFile();
        const QString decoded = FromCp1250(page);
        QVERIFY(!decoded.contains(QChar(0xFFFD)));
        QVERIFY(decoded.startsWith(QStringLiteral("<html><head><title>") + N(id) +
                                   QStringLiteral(" - ") + title + QStringLiteral("</title>")));
        QVERIFY(decoded.contains(QStringLiteral("<h1>") + title + QStringLiteral("</h1>")));
        QVERIFY(decoded.endsWith(QStringLiteral("</table></body></html>")));
        QCOMPARE(page, Cp1250(modDisplay::RecipePage(id)));

        Recordset sections = modDatabase::GetRecordset(
            QStringLiteral("SELECT [Section].title, [Section].instructions, [RecipeSection].place "
                           "FROM [RecipeSection] INNER JOIN [Section] ON [RecipeSection].sectionID "
                           "= [Section].sectionID WHERE [RecipeSection].recipeID = ") +
            N(id) + QStringLiteral(" ORDER BY [RecipeSection].place;"));
        QVERIFY(sections.RecordCount() > 1);
        const QString h1 = QStringLiteral("<h1>") + title + QStringLiteral("</h1>");
        QVERIFY(decoded.indexOf(h1) > 0);
        qsizetype position = decoded.indexOf(h1) + h1.size();
        int count = 0;
        for (; !sections.Eof(); sections.MoveNext()) {
            const QVariant sectionTitle = sections.Fields(QStringLiteral("title"));
            const QString heading =
                (sectionTitle.isNull()
                     ? QString()
                     : QStringLiteral("<h2>") + sectionTitle.toString() + QStringLiteral("</h2>")) +
                QStringLiteral("<h3>Sestavine:</h3>");
            const qsizetype at = decoded.indexOf(heading, position);
            QVERIFY2(at >= position, qPrintable(heading));
            position = at + heading.size();
            QString instructions = sections.Fields(QStringLiteral("instructions")).toString();
            while (instructions.startsWith(QLatin1Char(' '))) {
                instructions.remove(0, 1);
            }
            while (instructions.endsWith(QLatin1Char(' '))) {
                instructions.chop(1);
            }
            if (!instructions.isEmpty()) {
                const QString method =
                    QStringLiteral("<h3>Potek dela:</h3>") +
                    QString(instructions).replace(QStringLiteral("\r\n"), QStringLiteral("<br>"));
                const qsizetype methodAt = decoded.indexOf(method, position);
                QVERIFY2(methodAt >= position, qPrintable(method));
                position = methodAt + method.size();
            }
            ++count;
        }
        sections.Close();
        QVERIFY(count > 1);
        QCOMPARE(decoded.mid(position), QStringLiteral("</table></body></html>"));

        modDisplay::DisplayRecipe(id);
        QCOMPARE(ReadDisplayFile(), page);
    }
};

QTEST_MAIN(TestDisplay)
#include "tst_display.moc"
