// MealMaster files as they come: every kind of line end, the encodings of DOS, Windows and
// UTF-8, sources named at the method's end, recipes that lack their last line, text between
// recipes, and a file of about 20 MB read as a stream, one recipe at a time.
#include <QBuffer>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include "core/AppError.h"
#include "core/Windows1250.h"
#include "exchange/MealMasterFormat.h"

using namespace Exchange;

namespace {

struct FileRead {
    QList<Recipe> recipes;
    FileNotes notes;
};

FileRead ReadBytes(QByteArray bytes, const QString& encoding = QString()) {
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    FileRead read;
    MealMasterFormat::Read(
        buffer, [&read](Recipe&& recipe) { read.recipes.append(std::move(recipe)); }, read.notes,
        encoding);
    return read;
}

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

QStringList Steps(const Recipe& recipe) {
    QStringList steps;
    for (const Section& section : recipe.sections) {
        steps << section.steps;
    }
    return steps;
}

// One column of an ingredient line as MealMaster writes it.
QString Column(const QString& amount, const QString& unit, const QString& text) {
    return amount.rightJustified(7) + QLatin1Char(' ') + unit.leftJustified(2) + QLatin1Char(' ') +
           text;
}

// A small recipe in Slovenian, its lines without their ends.
QStringList Potica() {
    return {
        QStringLiteral("MMMMM----- Recipe via Meal-Master (tm) v8.02"),
        QStringLiteral("      Title: Orehova potica"),
        QStringLiteral(" Categories: Sladice, Praznično"),
        QStringLiteral("   Servings: 12"),
        QString(),
        Column(QStringLiteral("500"), QStringLiteral("g"), QStringLiteral("Moka; presejana")),
        Column(QStringLiteral("2"), QStringLiteral("ea"), QStringLiteral("Jajci")),
        QString(),
        QStringLiteral("  Zamesi testo, ga razvaljaj in namaži z nadevom iz orehov in"),
        QStringLiteral("  smetane. Peci pri 180 °C."),
        QStringLiteral("MMMMM"),
    };
}

void CheckPotica(const FileRead& read) {
    QCOMPARE(read.recipes.size(), 1);
    const Recipe& potica = read.recipes.first();
    QCOMPARE(potica.title, QStringLiteral("Orehova potica"));
    QCOMPARE(potica.categories, (QStringList{"Sladice", "Praznično"}));
    QCOMPARE(Lines(potica), (QStringList{"500|g|Moka|presejana", "2|ea|Jajci|"}));
    QCOMPARE(Steps(potica), QStringList{"Zamesi testo, ga razvaljaj in namaži z nadevom iz orehov "
                                        "in smetane. Peci pri 180 °C."});
}

// A recipe with two columns, a heading, a continuation and two paragraphs: about 900 bytes.
QByteArray GeneratedRecipe(int number) {
    const QStringList lines = {
        QStringLiteral("MMMMM----- Recipe via Meal-Master (tm) v8.02"),
        QStringLiteral(" "),
        QStringLiteral("      Title: Generated recipe %1").arg(number),
        QStringLiteral(" Categories: Generated, Test"),
        QStringLiteral("      Yield: 4 servings"),
        QStringLiteral(" "),
        Column("1", "c", "Flour").leftJustified(41) + Column("2", "tb", "Sugar"),
        Column("1 1/2", "ts", "Salt").leftJustified(41) + Column("1", "lg", "Egg, beaten"),
        QStringLiteral("MMMMM-----------------------FILLING-----------------------------"),
        Column("1/2", "lb", "Butter; softened and cut into"),
        Column("", "", "-small pieces"),
        QString(),
        QStringLiteral("  Mix the flour, sugar and salt. Add the egg and stir until the dough"),
        QStringLiteral("  is smooth and leave it to rest for half an hour in a cool place."),
        QString(),
        QStringLiteral("  Spread the filling over the dough and bake for 25 minutes at 200 C,"),
        QStringLiteral("  then leave it to cool on a rack before it is cut and served."),
        QStringLiteral(" "),
        QStringLiteral("MMMMM"),
        QString(),
    };
    return lines.join(QStringLiteral("\r\n")).toLatin1() + "\r\n";
}

}  // namespace

class TestExchangeMealMasterFiles : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void readsEveryLineEnd() {
        for (const char* end : {"\n", "\r\n", "\r"}) {
            CheckPotica(ReadBytes(Potica().join(QLatin1String(end)).toUtf8()));
        }
    }

    void readsUtf8AndWindows1250() {
        const QString text = Potica().join(QStringLiteral("\r\n"));
        CheckPotica(ReadBytes(text.toUtf8()));
        CheckPotica(ReadBytes(Windows1250::Encode(text)));
        CheckPotica(ReadBytes(Windows1250::Encode(text), QStringLiteral("windows-1250")));
    }

    void readsDosAndWindows1252() {
        const QByteArray dos =
            "MMMMM----- Recipe via Meal-Master (tm) v8.02\r\n"
            "      Title: M\x81sli mit K\x84se\r\n"
            "\r\n      1 c  Cr\x8Ame fra\x8C"
            "che\r\n"
            "\r\n  Bake at 350\xF8 for 20 minutes.\r\nMMMMM\r\n";
        const FileRead read = ReadBytes(dos);
        QCOMPARE(read.recipes.size(), 1);
        QCOMPARE(read.recipes.first().title, QStringLiteral("Müsli mit Käse"));
        QCOMPARE(Lines(read.recipes.first()), QStringList{"1|c|Crème fraîche|"});
        QCOMPARE(Steps(read.recipes.first()), QStringList{"Bake at 350° for 20 minutes."});
        const QByteArray windows =
            "---------- Recipe via Meal-Master (tm) v8.05\n"
            "      Title: Cr\xE8me br\xFBl\xE9"
            "e\n-----\n";
        QCOMPARE(ReadBytes(windows).recipes.first().title, QStringLiteral("Crème brûlée"));
        // The encoding named is the encoding read.
        QCOMPARE(ReadBytes(dos, QStringLiteral("windows-1252")).recipes.first().title,
                 QStringLiteral("Msli mit K„se"));
    }

    void refusesAnEncodingItDoesNotKnow() {
        try {
            ReadBytes(Potica().join(QLatin1Char('\n')).toUtf8(), QStringLiteral("EBCDIC"));
            QFAIL("no error");
        } catch (const AppError& error) {
            QCOMPARE(error.Number(), AppError::PassedOn);
            QCOMPARE(error.Source(), QStringLiteral("MealMasterFormat:Read"));
            QVERIFY2(error.Description().endsWith(QLatin1String("->Unknown encoding EBCDIC")),
                     qPrintable(error.Description()));
        }
    }

    // Paragraphs at the method's end that name the source; one that more method follows stays.
    void takesTheSourceFromTheMethodsEnd() {
        QStringList lines = Potica();
        lines.insert(10, QString());
        lines.insert(11, QStringLiteral("  Source: Babičina kuharica,"));
        lines.insert(12, QStringLiteral("  1955"));
        lines.insert(13, QString());
        lines.insert(14, QStringLiteral("  Recipe By     : Ana Novak"));
        const FileRead read = ReadBytes(lines.join(QLatin1Char('\n')).toUtf8());
        QCOMPARE(read.recipes.first().source, QStringLiteral("Babičina kuharica, 1955; Ana Novak"));
        QCOMPARE(Steps(read.recipes.first()).size(), 1);

        lines.insert(15, QString());
        lines.insert(16, QStringLiteral("  Serve warm. From the collection of Ana Novak"));
        const Recipe more = ReadBytes(lines.join(QLatin1Char('\n')).toUtf8()).recipes.first();
        QCOMPARE(more.source, QString());
        QCOMPARE(Steps(more).mid(1),
                 (QStringList{"Source: Babičina kuharica, 1955", "Recipe By     : Ana Novak",
                              "Serve warm. From the collection of Ana Novak"}));
    }

    // Text between recipes, recipes without a last line or a title.
    void notesWhatIsNoRecipe() {
        const QByteArray file =
            "A collection of recipes.\n\n"
            "MMMMM----- Recipe via Meal-Master (tm) v8.02\n"
            "      Title: One\n\n  Mix.\n\n"
            "MMMMM----- Recipe via Meal-Master (tm) v8.02\n"
            "      Title: Two\n\n      1 c  Flour\nMMMMM\n"
            "*** Chapter 2 ***\n"
            "MMMMM----- Recipe via Meal-Master (tm) v8.02\n\n  Mix.\nMMMMM\n"
            "MMMMM----- Recipe via Meal-Master (tm) v8.02\n"
            "      Title: Three\n";
        const FileRead read = ReadBytes(file);
        QCOMPARE(read.recipes.size(), 3);
        QCOMPARE(read.recipes[0].title, QStringLiteral("One"));
        QCOMPARE(Steps(read.recipes[0]), QStringList{"Mix."});
        QCOMPARE(Lines(read.recipes[1]), QStringList{"1|c|Flour|"});
        QCOMPARE(read.recipes[2].title, QStringLiteral("Three"));
        QCOMPARE(read.notes.notRecipes, 3);
        QCOMPARE(
            read.notes.problems,
            (QStringList{"vrstica 3: recept »One« nima zadnje vrstice; prebran je do vrstice 7",
                         "vrstica 14: recept brez naslova",
                         "vrstica 18: recept »Three« nima zadnje vrstice; prebran je do "
                         "vrstice 19"}));
    }

    // About 20 MB of recipes, each handed over as soon as it is read and not kept here.
    void streamsALargeFile() {
        QTemporaryDir folder;
        QFile file(folder.filePath(QStringLiteral("large.mmf")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        int written = 0;
        while (file.size() < 20 * 1024 * 1024) {
            QByteArray block;
            for (int i = 0; i < 1000; ++i) {
                block += GeneratedRecipe(++written);
            }
            QCOMPARE(file.write(block), block.size());
        }
        file.close();
        QVERIFY(file.open(QIODevice::ReadOnly));
        QVERIFY(file.size() >= 20 * 1024 * 1024);
        int count = 0;
        Recipe last;
        FileNotes notes;
        MealMasterFormat::Read(
            file,
            [&](Recipe&& recipe) {
                ++count;
                last = std::move(recipe);
            },
            notes);
        QCOMPARE(count, written);
        QCOMPARE(last.title, QStringLiteral("Generated recipe %1").arg(written));
        QCOMPARE(last.categories, (QStringList{"Generated", "Test"}));
        QCOMPARE(Lines(last),
                 (QStringList{"1|c|Flour|", "1 1/2|ts|Salt|", "2|tb|Sugar|", "1|lg|Egg|beaten",
                              "1/2|lb|Butter|softened and cut into small pieces"}));
        QCOMPARE(last.sections.size(), 2);
        QCOMPARE(last.sections[1].title, QStringLiteral("FILLING"));
        QCOMPARE(last.sections[1].steps.size(), 2);
        QCOMPARE(notes.notRecipes, 0);
        QCOMPARE(notes.problems, QStringList());
    }
};

QTEST_GUILESS_MAIN(TestExchangeMealMasterFiles)
#include "tst_exchange_mealmasterfiles.moc"
