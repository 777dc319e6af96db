// A PostgreSQL server that is lost while the program works with it is reported through the
// error path within 30 seconds, not waited for. The test runs in a child process with a network
// namespace of its own (only a loopback device) and a private server started there; after the
// connection works, that loopback device goes down, as when the route to the server goes, and
// a query runs. Nothing outside the child's namespace is touched.
#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QFile>
#include <QTest>
#include <cstdio>
#include <cstdlib>

#include "core/AppError.h"
#include "core/database/Schema.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "tests/support/TestDatabase.h"

namespace {

const QString Scripts = QStringLiteral(MORVENA_TEST_SOURCE_DIR "/postgres");

bool Shell(const QString& command) { return std::system(qPrintable(command)) == 0; }

// In the child: a private server in its own network namespace, and a query after the route
// to it is gone. Writes "<milliseconds>\n<error description>" to `result`; the exit code tells
// which step failed (0: the query failed on the error path in time or late, the parent judges the
// time).
int LoseTheServer(const QString& result) {
    if (::unshare(CLONE_NEWNET) != 0 || !Shell(QStringLiteral("ip link set lo up"))) {
        return 10;
    }
    const QString address = TestDatabase::WorkFolder() + QStringLiteral("/lost-server");
    if (!Shell(QStringLiteral("bash '%1/start.sh' '%2' >/dev/null").arg(Scripts, address))) {
        return 11;
    }
    const auto stop = [&] {
        Shell(QStringLiteral("ip link set lo up"));
        Shell(QStringLiteral("bash '%1/stop.sh' '%2'").arg(Scripts, address));
    };
    QFile file(address);
    if (!file.open(QIODevice::ReadOnly)) {
        stop();
        return 12;
    }
    using namespace modGeneral;
    DatabaseType = modDatabase::ServerDatabase;
    ServerName = QString::fromUtf8(file.readAll()).trimmed();
    DatabaseName = QStringLiteral("postgres");
    Username = TestDatabase::PostgresUser();
    Password = TestDatabase::PostgresPassword();
    {
        auto empty = std::make_shared<modDatabase::DbConnection>(
            DatabaseType, modDatabase::BuildConnectionString(DatabaseType, ServerName, DatabaseName,
                                                             Username, Password));
        empty->OpenEmpty();
        if (empty->State() != modDatabase::adStateOpen) {
            stop();
            return 13;
        }
        Schema::Create(*empty);
    }
    modDatabase::OpenConnection();
    if (modDatabase::Connection->State() != modDatabase::adStateOpen) {
        stop();
        return 14;
    }
    TestDatabase::LoadSmallCollection();
    modDatabase::GetRecordset(QStringLiteral("SELECT * FROM [Recipe];")).Close();

    // The route goes: nothing reaches the server or comes back.
    if (!Shell(QStringLiteral("ip link set lo down"))) {
        stop();
        return 15;
    }
    QElapsedTimer timer;
    timer.start();
    QString description = QStringLiteral("(no error)");
    try {
        modDatabase::GetRecordset(QStringLiteral("SELECT * FROM [Recipe] ORDER BY title;"));
    } catch (const AppError& error) {
        description = error.Source() + QStringLiteral("->") + error.Description();
    }
    const qint64 elapsed = timer.elapsed();
    stop();
    QFile out(result);
    if (!out.open(QIODevice::WriteOnly)) {
        return 16;
    }
    out.write(QByteArray::number(elapsed) + '\n' + description.toUtf8());
    return 0;
}

}  // namespace

class TestLostServer : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { TestDatabase::IsolateEnvironment(); }

    void lostServerIsReportedWithinThirtySeconds() {
        if (!Shell(QStringLiteral("command -v ip >/dev/null"))) {
            QFAIL("the test needs ip (iproute2)");
        }
        const QString result = TestDatabase::WorkFolder() + QStringLiteral("/lost-result");
        std::fflush(nullptr);
        const pid_t child = ::fork();
        if (child == 0) {
            ::_exit(LoseTheServer(result));
        }
        // The child ends by itself; a query that waits for ever is ended after two minutes.
        QDeadlineTimer deadline(120000);
        int status = 0;
        pid_t done = 0;
        while ((done = ::waitpid(child, &status, WNOHANG)) == 0 && !deadline.hasExpired()) {
            QTest::qWait(200);
        }
        if (done == 0) {
            ::kill(child, SIGKILL);
            ::waitpid(child, &status, 0);
            QFAIL("the query on the lost server was still waiting after two minutes");
        }
        QVERIFY(WIFEXITED(status));
        QCOMPARE(WEXITSTATUS(status), 0);
        QFile file(result);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray elapsed = file.readLine().trimmed();
        const QString description = QString::fromUtf8(file.readAll());
        qInfo("the lost server was reported after %s ms: %s", elapsed.constData(),
              qPrintable(description));
        QVERIFY2(description.startsWith(QStringLiteral("modDatabase:GetRecordset->PostgreSQL->")),
                 qPrintable(description));
        QVERIFY(elapsed.toLongLong() > 0);
        QVERIFY2(elapsed.toLongLong() <= 30000, elapsed.constData());
    }
};

QTEST_MAIN(TestLostServer)
#include "tst_lostserver.moc"
