// A damaged collection file is never called copied: copy and backup check the source's
// structure first and refuse a damaged one with the check's message; a copy that ends well
// holds every row of the original.
#include <QFile>
#include <QRandomGenerator>
#include <QTest>

#include "core/database/modDatabase.h"
#include "tests/support/TestDatabase.h"
#include "tests/support/ToolRun.h"

using ToolRun::FileBytes;
using ToolRun::Result;
using ToolRun::Tool;
using ToolRun::Work;

namespace {

const QStringList Tables{"Group",      "Type",    "Recipe",        "Source",           "Unit",
                         "Ingredient", "Section", "RecipeSection", "SectionIngredient"};

// The number of rows of every table of a collection file.
QStringList Counts(const QString& file) {
    modDatabase::Connection.reset();
    TestDatabase::UseSettingsFor(TestDatabase::Sqlite, file);
    modDatabase::OpenConnection();
    QStringList counts;
    for (const QString& table : Tables) {
        counts << TestDatabase::Rows(QStringLiteral("SELECT COUNT(*) FROM [%1];").arg(table));
    }
    modDatabase::Connection.reset();
    return counts;
}

void Write(const QString& file, const QByteArray& bytes) {
    QFile out(file);
    QVERIFY(out.open(QIODevice::WriteOnly | QIODevice::Truncate));
    out.write(bytes);
}

}  // namespace

class TestDamagedSource : public QObject {
    Q_OBJECT

    QString m_original;
    QByteArray m_bytes;
    QStringList m_counts;

private Q_SLOTS:
    void initTestCase() {
        TestDatabase::IsolateEnvironment();
        m_original = Work(QStringLiteral("original.db"));
        QFile::remove(m_original);
        QCOMPARE(Tool({"create-db", "--sample", m_original}).exitCode, 0);
        m_bytes = FileBytes(m_original);
        m_counts = Counts(m_original);
        QCOMPARE(m_counts.value(2), QStringLiteral("65"));
    }
    void cleanup() { modDatabase::Connection.reset(); }

    // A file whose recipe pages are overwritten: the check names it, nothing is copied.
    void aMalformedFileIsRefusedWithTheChecksMessage() {
        QByteArray bytes = m_bytes;
        const int pageSize = 4096;
        for (int i = 4 * pageSize; i < bytes.size(); i += pageSize) {
            bytes[i] = char(0x0d);  // every later page claims to be a table leaf
            bytes[i + 3] = char(0x7f);
        }
        const QString damaged = Work(QStringLiteral("malformed.db"));
        Write(damaged, bytes);
        const QString target = Work(QStringLiteral("malformed_copy.db"));
        QFile::remove(target);
        const Result copy = Tool({"copy", damaged, target});
        QCOMPARE(copy.exitCode, 1);
        QVERIFY2(copy.err.startsWith(QStringLiteral("Zbirka %1 je poškodovana; preverjanje "
                                                    "celovitosti je našlo: ")
                                         .arg(damaged)),
                 qPrintable(copy.err));
        QVERIFY(!QFile::exists(target));
        const Result backup = Tool({"backup", damaged, target});
        QCOMPARE(backup.exitCode, 1);
        QVERIFY2(backup.err.contains(QStringLiteral("je poškodovana; preverjanje celovitosti")),
                 qPrintable(backup.err));
        QVERIFY(!QFile::exists(target));
    }

    // Over a hundred damaged files: cut at many places, and bytes overwritten in every page.
    // A copy either holds every row of the original or ends with exit code 1.
    void noDamagedFileIsCopiedIncompletely() {
        QList<QByteArray> damaged;
        for (int cut = 1; cut <= 50; ++cut) {
            damaged << m_bytes.left(qsizetype(m_bytes.size()) * cut / 51);
        }
        QRandomGenerator random(17);
        for (qsizetype page = 0; page < m_bytes.size() / 4096; ++page) {
            for (int variant = 0; variant < 3; ++variant) {
                QByteArray bytes = m_bytes;
                for (int i = 0; i < 8; ++i) {
                    bytes[page * 4096 + random.bounded(4096)] = char(random.bounded(256));
                }
                damaged << bytes;
            }
        }
        QVERIFY(damaged.size() > 100);
        int refused = 0;
        const QString file = Work(QStringLiteral("damaged.db"));
        const QString target = Work(QStringLiteral("damaged_copy.db"));
        for (int i = 0; i < damaged.size(); ++i) {
            Write(file, damaged[i]);
            QFile::remove(target);
            const Result result = Tool({"copy", file, target});
            QVERIFY2(result.exitCode == 0 || result.exitCode == 1, qPrintable(QString::number(i)));
            if (result.exitCode == 1) {
                ++refused;
                QVERIFY(!QFile::exists(target));
            } else {
                QCOMPARE(Counts(target), m_counts);
            }
        }
        QVERIFY(refused >= 50);
    }
};

QTEST_MAIN(TestDamagedSource)
#include "tst_damagedsource.moc"
