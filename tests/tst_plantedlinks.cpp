// Nothing is written through a link that someone else planted at a name the program writes:
// the error log and the PDFs of morvena-tool.
#include <sys/stat.h>

#include <QDir>
#include <QFile>
#include <QTest>

#include "core/modGeneral.h"
#include "tests/support/TestDatabase.h"
#include "tests/support/ToolRun.h"

using ToolRun::FileBytes;
using ToolRun::Result;
using ToolRun::Tool;
using ToolRun::Work;

namespace {

// A file that belongs to someone else, with a link to it planted at `name`.
QString PlantLink(const QString& name) {
    const QString victim = Work(QStringLiteral("victim.txt"));
    QFile::remove(victim);
    QFile file(victim);
    file.open(QIODevice::WriteOnly);
    file.write("nedotaknjeno\n");
    file.close();
    QFile::remove(name);
    QFile::link(victim, name);
    return victim;
}

mode_t Mode(const QString& path) {
    struct stat info {};
    return ::lstat(QFile::encodeName(path).constData(), &info) == 0 ? info.st_mode : 0;
}

}  // namespace

class TestPlantedLinks : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { TestDatabase::IsolateEnvironment(); }

    void theErrorLogIsNotWrittenThroughALink() {
        const QString log = Work(QStringLiteral("errors.log"));
        const QString victim = PlantLink(log);
        modGeneral::LogError(QStringLiteral("frmAddRecord:cmdOK_Click->Mamin zvezek"));
        QCOMPARE(FileBytes(victim), QByteArray("nedotaknjeno\n"));
        QVERIFY(S_ISLNK(Mode(log)));
    }

    void theErrorLogIsTheOwnersAlone() {
        const QString log = Work(QStringLiteral("errors.log"));
        QFile::remove(log);
        const mode_t mask = ::umask(0);  // the most open umask: the log stays private
        modGeneral::LogError(QStringLiteral("frmMain:Form_Load->x"));
        ::umask(mask);
        QVERIFY(S_ISREG(Mode(log)));
        QCOMPARE(Mode(log) & 0777, mode_t(0600));
        QVERIFY(FileBytes(log).endsWith("frmMain:Form_Load->x\r\n\r\n"));
    }

    // A PDF replaces a link at its name instead of writing into the link's target.
    void aPdfReplacesALinkAtItsName_data() {
        QTest::addColumn<QStringList>("command");
        QTest::newRow("print") << QStringList{"print", "R", "1"};
        QTest::newRow("book") << QStringList{"book", "--type", "1"};
    }
    void aPdfReplacesALinkAtItsName() {
        QFETCH(QStringList, command);
        const QString database = Work(QStringLiteral("links.db"));
        if (!QFile::exists(database)) {
            QCOMPARE(Tool({"create-db", "--sample", database}).exitCode, 0);
        }
        const QString pdf = Work(QStringLiteral("recept.pdf"));
        const QString victim = PlantLink(pdf);
        const Result result = Tool(command + QStringList{"--pdf", pdf, "--database", database});
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(FileBytes(victim), QByteArray("nedotaknjeno\n"));
        QVERIFY(S_ISREG(Mode(pdf)));
        QVERIFY(FileBytes(pdf).startsWith("%PDF-"));
        QVERIFY(QDir(TestDatabase::WorkFolder())
                    .entryList({QStringLiteral(".recept.pdf*")}, QDir::Hidden | QDir::Files)
                    .isEmpty());
    }
};

QTEST_MAIN(TestPlantedLinks)
#include "tst_plantedlinks.moc"
