// The sample collection written out of a file in each format and read into an empty collection,
// a file or a server database: every recipe's page comes back byte for byte (its number aside,
// which the new collection assigns), and the lookup lists hold the same names, none twice.
#include <QDir>
#include <QFile>
#include <QMap>
#include <QTest>

#include "collection/SampleDatabase.h"
#include "core/Windows1250.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "display/modDisplay.h"
#include "exchange/CollectionImport.h"
#include "exchange/RecipeExport.h"
#include "exchange/RecipeImport.h"
#include "support/TestDatabase.h"

using TestDatabase::Rows;

namespace {

struct Subgroup {
    qint32 id;
    QString group;
    QString type;
};

QList<Subgroup> Subgroups() {
    QList<Subgroup> subgroups;
    for (const QString& row :
         Rows("SELECT [Type].typeID, [Group].name, [Type].name FROM [Type] INNER JOIN [Group] ON "
              "[Type].groupID = [Group].groupID ORDER BY [Type].typeID")) {
        const QStringList fields = row.split(QLatin1Char('|'));
        subgroups.append({fields.at(0).toInt(), fields.at(1), fields.at(2)});
    }
    return subgroups;
}

// Every recipe's page by its title, with the recipe's number.
QMap<QString, std::pair<QString, QString>> Pages() {
    QMap<QString, std::pair<QString, QString>> pages;
    for (const QString& row : Rows("SELECT recipeID, title FROM [Recipe] ORDER BY recipeID")) {
        const QString id = row.section(QLatin1Char('|'), 0, 0);
        const QString title = row.section(QLatin1Char('|'), 1);
        modDisplay::DisplayRecipe(id.toInt());
        QFile page(modGeneral::TempFilename);
        if (!page.open(QIODevice::ReadOnly) || pages.contains(title)) {
            qFatal("no page, or a title twice: %s", qPrintable(title));
        }
        pages.insert(title, {id, Windows1250::Decode(page.readAll())});
    }
    return pages;
}

QStringList Names(const QString& table) {
    return Rows(QStringLiteral("SELECT name FROM [%1] ORDER BY name").arg(table));
}

QStringList Lookups() {
    return Names(QStringLiteral("Unit")) + Names(QStringLiteral("Ingredient")) +
           Names(QStringLiteral("Source"));
}

// The files an export into `output` wrote: the file, or a folder's files in name order.
QStringList Written(const QString& output) {
    if (!QFileInfo(output).isDir()) {
        return {output};
    }
    QStringList files;
    for (const QString& name : QDir(output).entryList(QDir::Files, QDir::Name)) {
        files.append(QDir(output).filePath(name));
    }
    return files;
}

qint32 Key(const QString& table, const QString& name) {
    const QStringList keys =
        Rows(QStringLiteral("SELECT %1ID FROM [%2] WHERE name = '%3'")
                 .arg(table.toLower(), table, QString(name).replace("'", "''")));
    return keys.isEmpty() ? TestDatabase::Insert(table, {{QStringLiteral("name"), name}})
                          : keys.first().toInt();
}

// A recipe of two sections beside the sample's: amounts with decimals, units MealMaster has
// no code for, names with a comma, quotes, an ampersand and signs a page escapes.
void AddMeasuredRecipe() {
    using TestDatabase::Insert;
    const qint32 recipe = Insert(QStringLiteral("Recipe"),
                                 {{QStringLiteral("typeID"), 1},
                                  {QStringLiteral("sourceID"), Key("Source", "Iz zvezka")},
                                  {QStringLiteral("title"), QStringLiteral("Mere & znaki")}});
    const QList<std::pair<QString, QList<std::pair<QString, QString>>>> sections{
        {QStringLiteral("Testo"),
         {{"0.5", "skodelica|moka"},
          {"1.25", "dl|mleko"},
          {"0.333", "žlička|sol & poper"},
          {"0.0625", "kg|sladkor"},
          {"3", "dag|orehi, grobo sesekljani"}}},
        {QStringLiteral("Nadev <in> \"preliv\""),
         {{"2", "strok|česen"}, {"1.5", "kos|krompir \"O'Brien\""}, {"12", "g|kvas"}}},
    };
    int place = 0;
    for (const auto& [title, lines] : sections) {
        const qint32 section = Insert(
            QStringLiteral("Section"),
            {{QStringLiteral("title"), title},
             {QStringLiteral("instructions"), QStringLiteral("Zmešamo.\r\nPečemo 20 minut.")}});
        Insert(QStringLiteral("RecipeSection"), {{QStringLiteral("recipeID"), recipe},
                                                 {QStringLiteral("sectionID"), section},
                                                 {QStringLiteral("place"), ++place}});
        for (const auto& [amount, names] : lines) {
            Insert(QStringLiteral("SectionIngredient"),
                   {{QStringLiteral("sectionID"), section},
                    {QStringLiteral("unitID"), Key("Unit", names.section('|', 0, 0))},
                    {QStringLiteral("ingredientID"), Key("Ingredient", names.section('|', 1))},
                    {QStringLiteral("amount"), amount}});
        }
    }
}

}  // namespace

class TestExchangeRoundTrip : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        TestDatabase::IsolateEnvironment();
        modGeneral::TempFilename = TestDatabase::WorkFolder() + QStringLiteral("/prikaz.htm");
    }

    // Written from a file, read into a file or into a server database: the server's pages are
    // the file's, lines in the order they were typed.
    void everyPageComesBackTheSame_data() {
        QTest::addColumn<QString>("format");
        QTest::addColumn<QString>("kind");
        for (const char* format : {"mealmaster", "schema", "cooklang"}) {
            for (const QString& kind : {TestDatabase::Sqlite, TestDatabase::Postgres}) {
                QTest::addRow("%s into %s", format, qPrintable(kind))
                    << QString::fromLatin1(format) << kind;
            }
        }
    }
    void everyPageComesBackTheSame() {
        QFETCH(QString, format);
        QFETCH(QString, kind);
        Exchange::ExportFormat exportFormat;
        QVERIFY(Exchange::ExportFormatNamed(format, exportFormat));
        TestDatabase::OpenFresh(TestDatabase::Sqlite);
        SampleDatabase::Load(SampleDatabase::BuiltInText());
        AddMeasuredRecipe();
        const QList<Subgroup> subgroups = Subgroups();
        const auto pages = Pages();
        const QStringList lookups = Lookups();
        const QString folder =
            TestDatabase::WorkFolder() + QLatin1Char('/') + format + QLatin1Char('-') + kind;
        QVERIFY(QDir().mkpath(folder));
        int exported = 0;
        for (const Subgroup& subgroup : subgroups) {
            exported += Exchange::ExportRecipes(
                *modDatabase::Connection, {Exchange::RecipeScope::OneType, subgroup.id},
                exportFormat, folder + QLatin1Char('/') + QString::number(subgroup.id));
        }
        QCOMPARE(exported, pages.size());

        TestDatabase::OpenFresh(kind);
        for (const Subgroup& subgroup : subgroups) {
            Exchange::ImportOptions options;
            options.typeID =
                Exchange::TypeByNames(*modDatabase::Connection, subgroup.group, subgroup.type);
            const QString output = folder + QLatin1Char('/') + QString::number(subgroup.id);
            if (!QFileInfo::exists(output)) {
                continue;  // a subgroup without recipes writes nothing in Cooklang
            }
            const Exchange::ImportReport report =
                Exchange::ImportFiles(*modDatabase::Connection, Written(output), options);
            QVERIFY2(report.Skipped() == 0 && report.Unread() == 0 && report.stopped.isEmpty(),
                     qPrintable(report.Text()));
            for (const Exchange::FileReport& file : report.files) {
                QVERIFY2(file.lines.isEmpty() && file.problems.isEmpty(),
                         qPrintable(report.Text()));
            }
        }
        const auto again = Pages();
        QCOMPARE(again.keys(), pages.keys());
        for (auto it = pages.constBegin(); it != pages.constEnd(); ++it) {
            const auto& [id, page] = it.value();
            const QString newID = again.value(it.key()).first;
            QString back = again.value(it.key()).second;
            back.replace(QStringLiteral("<title>%1 - ").arg(newID),
                         QStringLiteral("<title>%1 - ").arg(id));
            back.replace(QStringLiteral("Recept št. %1<br>").arg(newID),
                         QStringLiteral("Recept št. %1<br>").arg(id));
            QCOMPARE(back, page);
        }
        QCOMPARE(Lookups(), lookups);
    }
};

QTEST_MAIN(TestExchangeRoundTrip)
#include "tst_exchange_roundtrip.moc"
