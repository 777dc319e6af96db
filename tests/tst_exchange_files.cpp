// Every file of the import test data, whole and cut short at many places, read as an import
// reads a file: each is recognised by what it holds (never by its name), and a damaged one
// gives what it can and a reason, never a crash or a hang.
#include <QDirIterator>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include "exchange/RecipeFiles.h"

using Exchange::FileNotes;
using Exchange::Recipe;

namespace {

const QString DataFolder = QStringLiteral(MORVENA_TEST_SOURCE_DIR "/data/import");

QStringList DataFiles() {
    QStringList files;
    QDirIterator it(DataFolder, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        const QString name = it.fileName();
        if (!name.startsWith(QLatin1String("LICENSE")) && name != QLatin1String("COPYING") &&
            name != QLatin1String("CHANGES") && !name.endsWith(QLatin1String(".md")) &&
            !name.endsWith(QLatin1String(".yaml"))) {
            files.append(path);
        }
    }
    files.sort();
    return files;
}

struct Reading {
    QString failure;
    QString format;
    int recipes = 0;
    FileNotes notes;
};

Reading Read(const QString& path) {
    Reading reading;
    reading.failure = Exchange::RecipeFiles::Read(
        path, QString(), [&reading](Recipe&&) { ++reading.recipes; }, reading.notes,
        reading.format);
    return reading;
}

}  // namespace

class TestExchangeFiles : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // What each source's files are: the format recognised and the recipes found in all of them.
    void recognisesEveryFileByItsContent_data() {
        QTest::addColumn<QString>("source");
        QTest::addColumn<QStringList>("formats");
        QTest::addColumn<int>("recipes");
        QTest::addColumn<int>("unread");
        const QString web = QStringLiteral("spletna stran ali JSON (schema.org)");
        QTest::newRow("anymeal") << "wedesoft-anymeal" << QStringList{"MealMaster"} << 42 << 0;
        // The language's own tests in JSON are no recipe file.
        QTest::newRow("cooklang") << "cooklang" << QStringList{"Cooklang"} << 3 << 1;
        // One page holds no recipe; the scrapers' expected results (JSON) are no recipe file.
        QTest::newRow("recipe-scrapers")
            << "hhursev-recipe-scrapers" << QStringList{web} << 13 << 14;
        QTest::newRow("krecipes") << "KDE-krecipes"
                                  << QStringList{"MasterCook MX2", "MasterCook MXP", "MealMaster",
                                                 "RecipeML"}
                                  << 8 << 0;
        QTest::newRow("mealie") << "mealie-recipes-mealie" << QStringList{web} << 13 << 0;
        QTest::newRow("ology") << "ology-Food-Recipe" << QStringList{"MealMaster"} << 340 << 0;
        // Labelled ingredient lines in CSV.
        QTest::newRow("ingredient-parser")
            << "strangetom-ingredient-parser" << QStringList{} << 0 << 2;
        QTest::newRow("gourmet") << "thinkle-gourmet"
                                 << QStringList{"MasterCook MX2", "MealMaster", web} << 106 << 0;
    }
    void recognisesEveryFileByItsContent() {
        QFETCH(QString, source);
        QFETCH(QStringList, formats);
        QFETCH(int, recipes);
        QFETCH(int, unread);
        QStringList seen;
        int found = 0;
        int failed = 0;
        for (const QString& path : DataFiles()) {
            if (!path.startsWith(DataFolder + QLatin1Char('/') + source + QLatin1Char('/'))) {
                continue;
            }
            const Reading reading = Read(path);
            found += reading.recipes;
            failed += reading.failure.isEmpty() ? 0 : 1;
            if (!reading.format.isEmpty() && !seen.contains(reading.format)) {
                seen.append(reading.format);
            }
        }
        seen.sort();
        formats.sort();
        QCOMPARE(seen, formats);
        QCOMPARE(found, recipes);
        QCOMPARE(failed, unread);
    }

    void aFileCutShortDoesNoHarm() {
        QTemporaryDir folder;
        const QString cut = folder.filePath(QStringLiteral("cut"));
        int files = 0;
        for (const QString& path : DataFiles()) {
            QFile file(path);
            QVERIFY(file.open(QIODevice::ReadOnly));
            const QByteArray bytes = file.readAll();
            const Reading whole = Read(path);
            for (int part = 1; part < 8; ++part) {
                QFile shorter(cut);
                QVERIFY(shorter.open(QIODevice::WriteOnly | QIODevice::Truncate));
                shorter.write(bytes.left(bytes.size() * part / 8));
                shorter.close();
                const Reading reading = Read(cut);
                QVERIFY2(reading.recipes <= whole.recipes + 1, qPrintable(path));
            }
            ++files;
        }
        QVERIFY(files >= 100);
    }
};

QTEST_GUILESS_MAIN(TestExchangeFiles)
#include "tst_exchange_files.moc"
