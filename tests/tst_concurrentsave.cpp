// Two cooks saving one recipe at the same time: two save loops (morvena-saveloop) save the same
// recipe 300 times each, each as its own version. Saves follow one another: afterwards the
// collection holds nothing a half-done save leaves, and the recipe is whole, one of the two
// versions. On both kinds.
#include <QDir>
#include <QProcess>
#include <QTest>

#include "collection/CollectionCheck.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "tests/support/TestDatabase.h"
#include "tests/support/ToolRun.h"

using TestDatabase::Rows;

namespace {

constexpr int Saves = 300;

}  // namespace

class TestConcurrentSave : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        TestDatabase::IsolateEnvironment();
        QVERIFY(QFile::exists(qEnvironmentVariable("MORVENA_SAVELOOP")));
    }
    void cleanup() { modDatabase::Connection.reset(); }

    void twoLoopsSavingOneRecipe_data() { TestDatabase::AddKinds(); }
    void twoLoopsSavingOneRecipe() {
        const QString kind = TestDatabase::CurrentKind();
        TestDatabase::OpenFresh(kind);
        TestDatabase::LoadSmallCollection();
        const QString database = ToolRun::LoopDatabase();
        modDatabase::Connection.reset();

        const QString folder = TestDatabase::WorkFolder() + QStringLiteral("/two-") + kind;
        QVERIFY(QDir().mkpath(folder));
        QProcess loops[2];
        const QStringList versions{"A", "BB"};
        for (int i = 0; i < 2; ++i) {
            ToolRun::StartSaveLoop(loops[i], folder,
                                   {database, "--saves", QString::number(Saves), "--recipe", "1",
                                    "--version", versions[i]});
        }
        for (QProcess& loop : loops) {
            QVERIFY(loop.waitForFinished(300000));
            QVERIFY2(loop.exitStatus() == QProcess::NormalExit && loop.exitCode() == 0,
                     loop.readAllStandardError().constData());
            QCOMPARE(loop.readAllStandardOutput().count("saved 1\n"), Saves);
        }

        modDatabase::OpenConnection();
        const CollectionCheck::Report report = CollectionCheck::Check(*modDatabase::Connection);
        QVERIFY(report.Clean());
        const QStringList sections = Rows(QStringLiteral(
            "SELECT [RecipeSection].place, [Section].title, [Section].instructions FROM "
            "[RecipeSection] INNER JOIN [Section] ON [RecipeSection].sectionID = "
            "[Section].sectionID WHERE recipeID = 1;"));
        QCOMPARE(sections.size(), 1);
        const QStringList lines = Rows(QStringLiteral(
            "SELECT [SectionIngredient].amount FROM [RecipeSection] INNER JOIN "
            "[SectionIngredient] ON [RecipeSection].sectionID = [SectionIngredient].sectionID "
            "WHERE recipeID = 1 ORDER BY sectionIngredientID;"));
        if (sections.first() == QStringLiteral("1|NULL|Različica A")) {
            QCOMPARE(lines, (QStringList{"1", "2"}));
        } else {
            QCOMPARE(sections.first(), QStringLiteral("1|NULL|Različica BB"));
            QCOMPARE(lines, (QStringList{"1", "2", "3", "4"}));
        }
    }
};

QTEST_MAIN(TestConcurrentSave)
#include "tst_concurrentsave.moc"
