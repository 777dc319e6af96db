// Crash safety of saving: a child process saves recipes through the editor in a loop
// (morvena-saveloop) and is killed with SIGKILL at random moments, again and again. Afterwards
// the database is whole (SQLite's integrity check) and every recipe that a page can show still
// opens in the editor and shows its page. On both kinds.
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRandomGenerator>
#include <QTest>
#include <QThread>

#include "collection/CollectionCheck.h"
#include "core/database/SqlStatement.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "display/modDisplay.h"
#include "main/frmMain.h"
#include "tests/support/EditorDriver.h"
#include "tests/support/MessageRecorder.h"
#include "tests/support/TestDatabase.h"
#include "tests/support/ToolRun.h"

using TestDatabase::Rows;

namespace {

constexpr int Kills = 22;

}  // namespace

class TestKillSave : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        TestDatabase::IsolateEnvironment();
        QVERIFY(QFile::exists(qEnvironmentVariable("MORVENA_SAVELOOP")));
    }
    void cleanup() { modDatabase::Connection.reset(); }

    void killedSavesLeaveAWholeDatabase_data() { TestDatabase::AddKinds(); }
    void killedSavesLeaveAWholeDatabase() {
        const QString kind = TestDatabase::CurrentKind();
        TestDatabase::OpenFresh(kind);
        TestDatabase::LoadSmallCollection();
        const QString database = ToolRun::LoopDatabase();
        modDatabase::Connection.reset();

        const quint32 start = QRandomGenerator::global()->generate();
        qInfo("kill moments from the random start %u", start);
        QRandomGenerator random(start);
        const QString folder = TestDatabase::WorkFolder() + QStringLiteral("/loop-") + kind;
        QVERIFY(QDir().mkpath(folder));
        int saves = 0;
        for (int kill = 1; kill <= Kills; ++kill) {
            QProcess loop;
            ToolRun::StartSaveLoop(loop, folder, {database});
            QVERIFY2(loop.waitForStarted(10000), qPrintable(loop.errorString()));
            // Running its loop: at least one save done; then killed at a random moment.
            QByteArray output;
            while (!output.contains("saved") && loop.state() == QProcess::Running) {
                loop.waitForReadyRead(100);
                output += loop.readAllStandardOutput();
            }
            QVERIFY2(output.contains("saved"), loop.readAllStandardError().constData());
            QThread::msleep(random.bounded(1, 250));
            QVERIFY2(loop.state() == QProcess::Running,
                     (QByteArray("the save loop ended by itself: ") + loop.readAllStandardError())
                         .constData());
            loop.kill();  // SIGKILL
            QVERIFY(loop.waitForFinished(10000));
            QCOMPARE(loop.exitStatus(), QProcess::CrashExit);
            output += loop.readAllStandardOutput();
            saves += int(output.count("saved"));
        }
        qInfo("%d kills, %d saves finished in between", Kills, saves);
        QVERIFY(saves >= Kills);
        QVERIFY2(!QFile::exists(folder + QStringLiteral("/errors.log")),
                 qPrintable(folder + QStringLiteral("/errors.log")));

        modDatabase::OpenConnection();
        QCOMPARE(modDatabase::Connection->State(), int(modDatabase::adStateOpen));
        if (kind == TestDatabase::Sqlite) {
            SqlStatement check(*modDatabase::Connection);
            QVERIFY(check.Exec(QStringLiteral("PRAGMA integrity_check")));
            QVERIFY(check.Next());
            QCOMPARE(check.Value(0).toString(), QStringLiteral("ok"));
            QVERIFY(!check.Next());
        }

        // A save is whole or absent: nothing that a save half-done leaves behind (a section no
        // recipe uses, a recipe without sections, a line of a missing section).
        const CollectionCheck::Report report = CollectionCheck::Check(*modDatabase::Connection);
        for (const CollectionCheck::Finding& finding : report.findings) {
            QVERIFY2(finding.keys.isEmpty() && finding.error.isEmpty(),
                     qPrintable(finding.description +
                                QStringLiteral(": %1 rows of ").arg(finding.keys.size()) +
                                finding.table));
        }

        // Every recipe listed on a subgroup page opens in the editor with its title, and its
        // own page is written.
        const QStringList listed = Rows(QStringLiteral(
            "SELECT [Recipe].recipeID, [Recipe].title FROM [Recipe] INNER JOIN [Type] ON "
            "[Recipe].typeID = [Type].typeID ORDER BY [Recipe].recipeID;"));
        QVERIFY(listed.size() > 3);
        modGeneral::TempFilename = TestDatabase::WorkFolder() + QStringLiteral("/page.html");
        MessageRecorder messages;
        frmMain mainWindow;
        for (const QString& row : listed) {
            const qint32 recipeID = row.section(QLatin1Char('|'), 0, 0).toInt();
            const QString title = row.section(QLatin1Char('|'), 1);
            QString shown;
            EditorDriver::ShowEditor(recipeID, [&](frmNew* editor) {
                shown = EditorDriver::Box(editor, "txtRecipeTitle")->text();
            });
            QCOMPARE(shown, title);
            modDisplay::DisplayRecipe(recipeID);
        }
        QCOMPARE(EditorDriver::Said(messages), QStringList());
    }
};

QTEST_MAIN(TestKillSave)
#include "tst_killsave.moc"
