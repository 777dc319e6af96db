// Odd and damaged Access files: rows that no window could show stop the copy with a message
// naming the table, the key and the field; rows every window can live with are taken as they
// stand; a damaged file gets a message, never a crash, and leaves no target behind.
#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QTest>
#include <QtEndian>

#include "core/database/modDatabase.h"
#include "display/modDisplay.h"
#include "tests/support/AccessPatch.h"
#include "tests/support/TestDatabase.h"
#include "tests/support/ToolRun.h"

using AccessPatch::Find;
using ToolRun::Result;
using ToolRun::Tool;
using ToolRun::Work;

namespace {

QString CopyOf(const QString& name, const QString& as) {
    const QString path = Work(as);
    QFile::remove(path);
    QFile::copy(QStringLiteral(MORVENA_TEST_SOURCE_DIR "/data/access/") + name, path);
    QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner);
    return path;
}

QString Sample(const QString& as) { return CopyOf(QStringLiteral("Morvena-sample.mdb"), as); }

QByteArray Long(qint32 value) {
    QByteArray bytes(4, '\0');
    qToLittleEndian(value, bytes.data());
    return bytes;
}

void SetLong(const QString& file, const QString& table, qint64 key, const QString& field,
             qint32 value) {
    const AccessPatch::Place place = Find(file, table, key, field);
    QVERIFY(place.value > 0);
    AccessPatch::Write(file, place.value, Long(value));
}

void SetNull(const QString& file, const QString& table, qint64 key, const QString& field) {
    const AccessPatch::Place place = Find(file, table, key, field);
    QVERIFY(place.nullByte > 0);
    AccessPatch::SetPresent(file, place, false);
}

QString Target() {
    const QString target = Work(QStringLiteral("target.db"));
    QFile::remove(target);
    return target;
}

// Nothing of a failed copy is left in the folder: no target, no half-written file.
bool NothingLeft(const QString& target) {
    return !QFile::exists(target) &&
           QDir(TestDatabase::WorkFolder())
               .entryList({QStringLiteral(".target.db*")}, QDir::Hidden | QDir::Files)
               .isEmpty();
}

}  // namespace

class TestAccessDamage : public QObject {
    Q_OBJECT

    void Refused(const QString& access, const QString& message) {
        const QByteArray before = AccessPatch::Checksum(access);
        const QString target = Target();
        const Result result = Tool({"copy", access, target});
        QCOMPARE(result.exitCode, 1);
        QCOMPARE(result.err, message + QLatin1Char('\n'));
        QCOMPARE(result.out, QString());
        QVERIFY(NothingLeft(target));
        QCOMPARE(AccessPatch::Checksum(access), before);
    }

    QString Copied(const QString& access) {
        const QString target = Target();
        const Result result = Tool({"copy", access, target});
        [&] {
            QCOMPARE(result.err, QString());
            QCOMPARE(result.exitCode, 0);
        }();
        modDatabase::Connection.reset();
        TestDatabase::UseSettingsFor(TestDatabase::Sqlite, target);
        modDatabase::OpenConnection();
        return target;
    }

private Q_SLOTS:
    void initTestCase() { TestDatabase::IsolateEnvironment(); }
    void cleanup() { modDatabase::Connection.reset(); }

    void stopsAtAKeyThatIsNoKey() {
        QString file = Sample("key0.mdb");
        SetLong(file, "Recipe", 65, "recipeID", 0);
        Refused(file, "Tabela Recipe, ključ 0, polje recipeID: ključ ni pozitivno celo število.");
        file = Sample("twice.mdb");
        SetLong(file, "Ingredient", 109, "ingredientID", 108);
        Refused(file, "Tabela Ingredient, ključ 108, polje ingredientID: ključ se ponovi.");
        file = Sample("nullkey.mdb");
        SetNull(file, "Unit", 12, "unitID");
        Refused(file, "Tabela Unit, ključ NULL, polje unitID: ključ ni pozitivno celo število.");
    }

    void stopsAtANullTheCollectionNeeds() {
        QString file = Sample("nulltitle.mdb");
        SetNull(file, "Recipe", 3, "title");
        Refused(file, "Tabela Recipe, ključ 3, polje title: besedilo je prazno (NULL).");
        file = Sample("nullamount.mdb");
        SetNull(file, "SectionIngredient", 7, "amount");
        Refused(file,
                "Tabela SectionIngredient, ključ 7, polje amount: količina je prazna (NULL).");
        file = Sample("nullname.mdb");
        SetNull(file, "Group", 2, "name");
        Refused(file, "Tabela Group, ključ 2, polje name: besedilo je prazno (NULL).");
    }

    void stopsAtARecipeOrSubgroupWithoutItsParent() {
        QString file = Sample("orphanrecipe.mdb");
        SetLong(file, "Recipe", 3, "typeID", 999);
        Refused(file, "Tabela Recipe, ključ 3, polje typeID: vrstice Type s ključem 999 ni.");
        file = Sample("orphantype.mdb");
        SetLong(file, "Type", 2, "groupID", 77);
        Refused(file, "Tabela Type, ključ 2, polje groupID: vrstice Group s ključem 77 ni.");
    }

    void stopsAtAPlaceBeyondTheRangeOfPlaces() {
        const QString file = CopyOf("Morvena-2000.mdb", "place.mdb");
        SetLong(file, "RecipeSection", 10, "place", 40000);
        Refused(file,
                "Tabela RecipeSection, ključ 10, polje place: mesto ni celo število med "
                "-32768 in 32767.");
    }

    // A recipe whose source is gone shows without a source; a line whose ingredient is gone is
    // left out of the page; links and lines of missing recipes and sections are never read.
    void takesRowsThatEveryWindowCanShow() {
        const QString file = Sample("dangling.mdb");
        SetLong(file, "Recipe", 1, "sourceID", 555);
        SetLong(file, "SectionIngredient", 1, "ingredientID", 9999);
        SetLong(file, "SectionIngredient", 2, "sectionID", 8888);
        SetLong(file, "RecipeSection", 84, "recipeID", 7777);
        Copied(file);
        const QString page = modDisplay::RecipePage(1);
        QVERIFY2(page.contains(QStringLiteral("Recept št. 1<br><h1>Goveja juha z rezanci</h1>"
                                              "<h3>Sestavine:</h3>3 l voda<br>")),
                 qPrintable(page));
        QCOMPARE(TestDatabase::Rows("SELECT recipeID, sectionID FROM [RecipeSection] WHERE "
                                    "recipeSectionID = 84;"),
                 QStringList{"7777|84"});
    }

    void namesAFileThatIsNoCollection() {
        const QString text = Work(QStringLiteral("besedilo.mdb"));
        QFile file(text);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("Goveja juha\n2 l vode\n");
        file.close();
        Refused(text, text + QStringLiteral(" ni zbirka podatkov programa Morvena."));
    }

    void namesATruncatedFile() {
        const QString full = Sample("full.mdb");
        QFile in(full);
        QVERIFY(in.open(QIODevice::ReadOnly));
        const QByteArray bytes = in.readAll();
        for (const int size : {100, 4096 * 3 + 17, 200000}) {
            const QString cut = Work(QStringLiteral("cut%1.mdb").arg(size));
            QFile out(cut);
            QVERIFY(out.open(QIODevice::WriteOnly));
            out.write(bytes.left(size));
            out.close();
            Refused(cut, QStringLiteral("Datoteka %1 je poškodovana: ni cela (njena dolžina ni "
                                        "večkratnik strani).")
                             .arg(cut));
        }
        // Cut at the end of a page: the tables hold fewer rows than they say.
        const QString pages = Work(QStringLiteral("pages.mdb"));
        QFile out(pages);
        QVERIFY(out.open(QIODevice::WriteOnly));
        out.write(bytes.left(4096 * 50));
        out.close();
        Refused(pages, QStringLiteral("Datoteka %1 je poškodovana: tabela Group ima po svojem "
                                      "opisu 7 vrstic, prebrati jih je mogoče 0.")
                           .arg(pages));
    }

    // Bytes overwritten anywhere (the catalog, table descriptions, data and memo pages): the
    // copy either reads the file whole or says why not, and never crashes or leaves a target.
    void neverCrashesOnOverwrittenBytes() {
        const QString original = Sample("original.mdb");
        QFile in(original);
        QVERIFY(in.open(QIODevice::ReadOnly));
        const QByteArray bytes = in.readAll();
        QRandomGenerator random(20261125);
        int refused = 0;
        for (int round = 0; round < 60; ++round) {
            QByteArray damaged = bytes;
            // The first half of the rounds hit the first 16 pages (header, catalog, table
            // descriptions), the rest the whole file.
            const int span = round < 30 ? 16 * 4096 : int(bytes.size());
            for (int i = 0; i < 40; ++i) {
                damaged[random.bounded(span)] = char(random.bounded(256));
            }
            const QString file = Work(QStringLiteral("damaged.mdb"));
            QFile out(file);
            QVERIFY(out.open(QIODevice::WriteOnly | QIODevice::Truncate));
            out.write(damaged);
            out.close();
            const QString target = Target();
            const Result result = Tool({"copy", file, target});
            QVERIFY2(result.exitCode == 0 || result.exitCode == 1,
                     qPrintable(QStringLiteral("round %1: %2").arg(round).arg(result.exitCode)));
            if (result.exitCode == 1) {
                ++refused;
                QVERIFY2(result.err.count(QLatin1Char('\n')) == 1, qPrintable(result.err));
                QVERIFY(NothingLeft(target));
            }
        }
        QVERIFY(refused > 10);
    }
};

QTEST_MAIN(TestAccessDamage)
#include "tst_accessdamage.moc"
