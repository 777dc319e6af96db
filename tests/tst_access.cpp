// The Windows program's Access collections: read through libmdb, copied into either kind of
// database with morvena-tool copy, odd and damaged files refused with a message.
#include <QDir>
#include <QFile>
#include <QTest>
#include <QtEndian>

#include "core/Windows1250.h"
#include "core/database/AccessFile.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "display/modDisplay.h"
#include "tests/support/AccessPatch.h"
#include "tests/support/TestDatabase.h"
#include "tests/support/ToolRun.h"

using ToolRun::Result;
using ToolRun::Tool;
using ToolRun::Work;

namespace {

QString TestData(const QString& name) {
    return QStringLiteral(MORVENA_TEST_SOURCE_DIR "/data/access/") + name;
}

// A writable copy of a test file in the work folder.
QString CopyOf(const QString& name, const QString& as) {
    const QString path = Work(as);
    QFile::remove(path);
    QFile::copy(TestData(name), path);
    QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner);
    return path;
}

QString Target(const QString& kind, const QString& name) {
    if (kind == TestDatabase::Postgres) {
        TestDatabase::CreatePostgresDatabase(name);
        return TestDatabase::PostgresUri(name);
    }
    QFile::remove(Work(name + QStringLiteral(".db")));
    return Work(name + QStringLiteral(".db"));
}

void Open(const QString& kind, const QString& name) {
    modDatabase::Connection.reset();
    TestDatabase::UseSettingsFor(kind, kind == TestDatabase::Postgres ? name : name);
    modDatabase::OpenConnection();
}

QStringList Keys(const QString& table, const QString& key) {
    return TestDatabase::Rows(QStringLiteral("SELECT %1 FROM [%2] ORDER BY %1;").arg(key, table));
}

// Every page of the open collection (each group, subgroup and recipe), as the bytes written.
QMap<QString, QByteArray> Pages() {
    QMap<QString, QByteArray> pages;
    for (const QString& key : Keys("Group", "groupID")) {
        pages[QStringLiteral("G") + key] = Windows1250::Encode(modDisplay::GroupPage(key.toInt()));
    }
    for (const QString& key : Keys("Type", "typeID")) {
        pages[QStringLiteral("T") + key] = Windows1250::Encode(modDisplay::TypePage(key.toInt()));
    }
    for (const QString& key : Keys("Recipe", "recipeID")) {
        pages[QStringLiteral("R") + key] = Windows1250::Encode(modDisplay::RecipePage(key.toInt()));
    }
    return pages;
}

QByteArray Double(double value) {
    QByteArray bytes(8, '\0');
    qToLittleEndian(value, bytes.data());
    return bytes;
}

QByteArray Long(qint32 value) {
    QByteArray bytes(4, '\0');
    qToLittleEndian(value, bytes.data());
    return bytes;
}

}  // namespace

class TestAccess : public QObject {
    Q_OBJECT

    QString m_sampleFile;  // the collection the sample Access file was made from
    QMap<QString, QByteArray> m_samplePages;

    // Copies an Access file into a new SQLite file and opens the copy.
    Result CopyAndOpen(const QString& access, const QString& name) {
        const QString target = Target(TestDatabase::Sqlite, name);
        const Result result = Tool({"copy", access, target});
        Open(TestDatabase::Sqlite, target);
        return result;
    }

    // A copy that must fail: exit code 1, the message, no target left behind.
    void Refused(const QString& access, const QString& message) {
        const QString target = Target(TestDatabase::Sqlite, QStringLiteral("refused"));
        const QByteArray before = AccessPatch::Checksum(access);
        const Result result = Tool({"copy", access, target});
        QCOMPARE(result.exitCode, 1);
        QCOMPARE(result.err, message + QLatin1Char('\n'));
        QCOMPARE(result.out, QString());
        QVERIFY(!QFile::exists(target));
        QVERIFY(QDir(TestDatabase::WorkFolder())
                    .entryList({QStringLiteral(".refused*")}, QDir::Hidden | QDir::Files)
                    .isEmpty());
        QCOMPARE(AccessPatch::Checksum(access), before);
    }

private Q_SLOTS:
    void initTestCase() {
        TestDatabase::IsolateEnvironment();
        m_sampleFile = Work(QStringLiteral("sample.db"));
        QFile::remove(m_sampleFile);
        QCOMPARE(Tool({"create-db", "--sample", m_sampleFile}).exitCode, 0);
        Open(TestDatabase::Sqlite, m_sampleFile);
        m_samplePages = Pages();
        QCOMPARE(m_samplePages.size(), 7 + 19 + 65);
    }
    void cleanup() { modDatabase::Connection.reset(); }

    void recognisesAccessFilesByTheirContent() {
        QVERIFY(AccessFile::IsAccessFile(TestData("Morvena-sample.mdb")));
        QVERIFY(!AccessFile::IsAccessFile(m_sampleFile));
        const QString renamed = CopyOf("Morvena-sample.mdb", "recepti.txt");
        QVERIFY(AccessFile::IsAccessFile(renamed));
        QVERIFY(!AccessFile::IsAccessFile(Work("ni_je.mdb")));
    }

    // The sample file copied into either kind gives the very pages of the sample collection,
    // and the Access file keeps its bytes.
    void copiesTheSampleWithEveryPageAsItWas_data() { TestDatabase::AddKinds(); }
    void copiesTheSampleWithEveryPageAsItWas() {
        QFETCH(QString, kind);
        const QString access = CopyOf("Morvena-sample.mdb", "Morvena.mdb");
        const QByteArray before = AccessPatch::Checksum(access);
        const QString target = Target(kind, QStringLiteral("from_access"));
        const Result result = Tool({"copy", access, target});
        QCOMPARE(result.err, QString());
        QCOMPARE(result.exitCode, 0);
        QVERIFY(result.out.contains(QStringLiteral("\nRecipe\t65\t")));
        QVERIFY(result.out.contains(QStringLiteral("\nSectionIngredient\t581\t")));
        QCOMPARE(AccessPatch::Checksum(access), before);

        // The same checksums as a copy of the collection the file was made from.
        const QString fromSample = Target(TestDatabase::Sqlite, QStringLiteral("from_sample"));
        const Result sample = Tool({"copy", m_sampleFile, fromSample});
        QCOMPARE(result.out.section(QLatin1Char('\n'), 1),
                 sample.out.section(QLatin1Char('\n'), 1));

        Open(kind, kind == TestDatabase::Postgres ? QStringLiteral("from_access") : target);
        const QMap<QString, QByteArray> pages = Pages();
        if (kind == TestDatabase::Postgres) {
            // The sample collection on the server, whose ingredient lines come in the
            // server's order.
            QCOMPARE(
                Tool({"copy", m_sampleFile, Target(kind, QStringLiteral("sample_there"))}).exitCode,
                0);
            Open(kind, QStringLiteral("sample_there"));
            QCOMPARE(pages, Pages());
            Open(kind, QStringLiteral("from_access"));
        } else {
            QCOMPARE(pages, m_samplePages);
        }
        // New rows continue after the highest key of each table.
        const qint32 group = TestDatabase::Insert("Group", {{"name", "Nova skupina"}});
        QCOMPARE(group, 8);
        const qint32 line = TestDatabase::Insert(
            "SectionIngredient",
            {{"sectionID", 1}, {"ingredientID", 1}, {"unitID", 1}, {"amount", 2}});
        QCOMPARE(line, 582);
    }

    // The generated file (16-bit amounts, LONG places, memo descriptions): every page of its
    // 2,000 recipes as in the collection it was made from.
    void copiesTheGeneratedCollectionWithEveryPageAsItWas() {
        const QString generated = Work(QStringLiteral("generated.db"));
        QFile::remove(generated);
        QCOMPARE(Tool({"generate", generated, "--recipes", "2000"}).exitCode, 0);
        Open(TestDatabase::Sqlite, generated);
        const QMap<QString, QByteArray> expected = Pages();
        QVERIFY(expected.size() > 2000);

        const QString access = CopyOf("Morvena-2000.mdb", "Morvena-2000.mdb");
        const Result result = CopyAndOpen(access, QStringLiteral("from_2000"));
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(Pages(), expected);
    }

    // Table and field names in other letter case are the same tables and fields.
    void readsNamesWhateverTheirLetterCase() {
        const QString access = CopyOf("Morvena-sample.mdb", "case.mdb");
        QVERIFY(AccessPatch::Rename(access, "SectionIngredient", "SECTIONINGREDIENT") > 0);
        QVERIFY(AccessPatch::Rename(access, "amount", "AMOUNT") > 0);
        QVERIFY(AccessPatch::Rename(access, "instructions", "Instructions") > 0);
        const Result result = CopyAndOpen(access, QStringLiteral("from_case"));
        QCOMPARE(result.err, QString());
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(Pages(), m_samplePages);
    }

    // NULL stays NULL and an empty text stays an empty text (libmdb's bound values give an
    // empty text for both).
    void keepsNullApartFromAnEmptyText() {
        const QString access = CopyOf("Morvena-sample.mdb", "empty.mdb");
        // Section 1 has no title (NULL): marked present, it is a title of no characters.
        const AccessPatch::Place title = AccessPatch::Find(access, "Section", 1, "title");
        QCOMPARE(title.size, 0);
        AccessPatch::SetPresent(access, title, true);
        // Unit 1's description "gram" marked NULL.
        AccessPatch::SetPresent(access, AccessPatch::Find(access, "Unit", 1, "description"), false);
        const Result result = CopyAndOpen(access, QStringLiteral("from_empty"));
        QCOMPARE(result.err, QString());
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(TestDatabase::Rows("SELECT sectionID, title FROM [Section] WHERE sectionID <= 2 "
                                    "ORDER BY sectionID;"),
                 (QStringList{"1|", "2|Juha"}));
        QCOMPARE(TestDatabase::Rows("SELECT unitID, description FROM [Unit] WHERE unitID <= 2 "
                                    "ORDER BY unitID;"),
                 (QStringList{"1|NULL", "2|dekagram, 10 gramov"}));
        // An empty title is an empty heading on the page (a NULL one is none).
        QVERIFY(modDisplay::RecipePage(1).contains(QStringLiteral("</h1><h2></h2><h3>Sestavine:")));
    }

    // Fractions in a number column are kept exactly and shown with a decimal comma.
    void keepsFractionalAmounts() {
        const QString access = CopyOf("Morvena-sample.mdb", "fractions.mdb");
        const AccessPatch::Place first =
            AccessPatch::Find(access, "SectionIngredient", 1, "amount");
        const AccessPatch::Place second =
            AccessPatch::Find(access, "SectionIngredient", 2, "amount");
        QCOMPARE(first.size, 8);
        AccessPatch::Write(access, first.value, Double(0.5));
        AccessPatch::Write(access, second.value, Double(1.25));
        const Result result = CopyAndOpen(access, QStringLiteral("from_fractions"));
        QCOMPARE(result.err, QString());
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(TestDatabase::Rows("SELECT sectionIngredientID, amount FROM [SectionIngredient] "
                                    "WHERE sectionIngredientID <= 3 ORDER BY 1;"),
                 (QStringList{"1|0.5", "2|1.25", "3|3"}));
        const QString page = modDisplay::RecipePage(1);
        QVERIFY2(page.contains(QStringLiteral(
                     "<h3>Sestavine:</h3>0,5 g goveje meso<br>1,25 g goveje kosti<br>3 l voda")),
                 qPrintable(page));
    }

    void namesAMissingTableOrField() {
        const QString noTable = CopyOf("Morvena-sample.mdb", "notable.mdb");
        QVERIFY(AccessPatch::Rename(noTable, "RecipeSection", "RecipeSektion") > 0);
        Refused(noTable, QStringLiteral("V datoteki %1 ni tabele RecipeSection.").arg(noTable));
        const QString noField = CopyOf("Morvena-sample.mdb", "nofield.mdb");
        QVERIFY(AccessPatch::Rename(noField, "amount", "amoxnt") > 0);
        Refused(noField, QStringLiteral("Tabela SectionIngredient v datoteki %1 nima polja amount.")
                             .arg(noField));
    }
};

QTEST_MAIN(TestAccess)
#include "tst_access.moc"
