// morvena-tool finds a server's password where libpq keeps it (PGPASSWORD, ~/.pgpass) or asks
// for it on the terminal without showing it, and a password written in the command line does
// not stay in the process list.
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTest>

#include "core/modGeneral.h"
#include "tests/support/TestDatabase.h"
#include "tests/support/ToolRun.h"

namespace {

// The tests' database on their server, named without a password.
QString UriWithoutPassword(const QString& database) {
    return QStringLiteral("postgresql://%1@%2/%3")
        .arg(TestDatabase::PostgresUser(), TestDatabase::PostgresServer(), database);
}

// The environment of a user with none of libpq's places set up: no PGPASSWORD, an empty home.
QProcessEnvironment Plain() {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(QStringLiteral("PGPASSWORD"));
    environment.remove(QStringLiteral("PGPASSFILE"));
    environment.remove(QStringLiteral("PGSERVICE"));
    const QString home = ToolRun::Work(QStringLiteral("home"));
    QDir().mkpath(home);
    environment.insert(QStringLiteral("HOME"), home);
    return environment;
}

// Runs the tool without a terminal (in a session of its own).
ToolRun::Result Detached(const QStringList& arguments, const QProcessEnvironment& environment) {
    QProcess tool;
    tool.setProcessEnvironment(environment);
    tool.start(QStringLiteral("setsid"),
               QStringList{QStringLiteral("-w"), qEnvironmentVariable("MORVENA_TOOL")} + arguments);
    tool.waitForFinished(60000);
    return {tool.exitStatus() == QProcess::NormalExit ? tool.exitCode() : -1,
            QString::fromUtf8(tool.readAllStandardOutput()),
            QString::fromUtf8(tool.readAllStandardError())};
}

// The command lines of the running tools that name `database`, as the process list shows them
// to every user.
QStringList ToolCommandLines(const QString& database) {
    QStringList lines;
    for (const QString& pid : QDir(QStringLiteral("/proc")).entryList(QDir::Dirs)) {
        QFile file(QStringLiteral("/proc/%1/cmdline").arg(pid));
        if (file.open(QIODevice::ReadOnly)) {
            const QString line = QString::fromUtf8(file.readAll().replace('\0', ' '));
            if (line.startsWith(qEnvironmentVariable("MORVENA_TOOL")) && line.contains(database)) {
                lines << line.trimmed();
            }
        }
    }
    return lines;
}

}  // namespace

class TestToolPasswords : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        TestDatabase::IsolateEnvironment();
        TestDatabase::OpenFresh(TestDatabase::Postgres);
        TestDatabase::LoadSmallCollection();
        m_database = modGeneral::DatabaseName;
    }

    void withoutAPasswordAnywhereTheServerRefuses() {
        const ToolRun::Result result = Detached(
            {QStringLiteral("search"), QStringLiteral("--RecipeTitle"), QStringLiteral("juha"),
             QStringLiteral("--database"), UriWithoutPassword(m_database)},
            Plain());
        QCOMPARE(result.exitCode, 1);
        QVERIFY2(result.err.contains(QStringLiteral("fe_sendauth: no password supplied")),
                 qPrintable(result.err));
    }

    void passwordFromPgpassword() {
        QProcessEnvironment environment = Plain();
        environment.insert(QStringLiteral("PGPASSWORD"), TestDatabase::PostgresPassword());
        const ToolRun::Result result = Detached(
            {QStringLiteral("search"), QStringLiteral("--RecipeTitle"), QStringLiteral("juha"),
             QStringLiteral("--database"), UriWithoutPassword(m_database)},
            environment);
        QCOMPARE(result.err, QString());
        QCOMPARE(result.out, QStringLiteral("Goveja juha\t1\tJuhe\tMesne juhe\n"
                                            "Korenčkova juha\t2\tJuhe\tZelenjavne juhe\n"));
        QCOMPARE(result.exitCode, 0);
    }

    void passwordFromPgpass() {
        const QProcessEnvironment environment = Plain();
        QFile pgpass(environment.value(QStringLiteral("HOME")) + QStringLiteral("/.pgpass"));
        QVERIFY(pgpass.open(QIODevice::WriteOnly));
        pgpass.write(QStringLiteral("%1:*:%2:%3\n")
                         .arg(TestDatabase::PostgresServer(), TestDatabase::PostgresUser(),
                              TestDatabase::PostgresPassword())
                         .toUtf8());
        pgpass.close();
        QVERIFY(pgpass.setPermissions(QFile::ReadOwner | QFile::WriteOwner));
        const ToolRun::Result result = Detached(
            {QStringLiteral("search"), QStringLiteral("--RecipeTitle"), QStringLiteral("torta"),
             QStringLiteral("--database"), UriWithoutPassword(m_database)},
            environment);
        QVERIFY(pgpass.remove());
        QCOMPARE(result.err, QString());
        QCOMPARE(result.out, QStringLiteral("čokoladna torta\t3\tSladice\tPecivo\n"));
        QCOMPARE(result.exitCode, 0);
    }

    // On a terminal the tool asks, and what is typed is not shown; meanwhile the password of
    // the other address, written in the command line, is hidden from the process list.
    void passwordAskedOnTheTerminalAndHiddenInTheProcessList() {
        const QString target = m_database + QStringLiteral("_kopija");
        TestDatabase::CreatePostgresDatabase(target);
        const QString source =
            QStringLiteral("postgresql://%1:%2@%3/%4")
                .arg(TestDatabase::PostgresUser(), TestDatabase::PostgresPassword(),
                     TestDatabase::PostgresServer(), m_database);
        const QString command =
            QStringLiteral("%1 copy %2 %3")
                .arg(qEnvironmentVariable("MORVENA_TOOL"), source, UriWithoutPassword(target));
        QProcess terminal;
        terminal.setProcessEnvironment(Plain());
        terminal.setProcessChannelMode(QProcess::MergedChannels);
        terminal.start(QStringLiteral("script"),
                       {QStringLiteral("-qec"), command, QStringLiteral("/dev/null")});
        QByteArray shown;
        const QByteArray prompt =
            QStringLiteral("Geslo za %1@%2/%3: ")
                .arg(TestDatabase::PostgresUser(), TestDatabase::PostgresServer(), target)
                .toUtf8();
        while (!shown.contains(prompt) && terminal.waitForReadyRead(30000)) {
            shown += terminal.readAll();
        }
        QVERIFY2(shown.contains(prompt), shown.constData());

        const QStringList lines = ToolCommandLines(target);
        QCOMPARE(lines.size(), 1);
        QCOMPARE(lines[0],
                 QStringLiteral("%1 copy postgresql://%2:%3@%4/%5 %6")
                     .arg(qEnvironmentVariable("MORVENA_TOOL"), TestDatabase::PostgresUser(),
                          QString(TestDatabase::PostgresPassword().size(), 'x'),
                          TestDatabase::PostgresServer(), m_database, UriWithoutPassword(target)));

        terminal.write(TestDatabase::PostgresPassword().toUtf8() + "\n");
        QVERIFY(terminal.waitForFinished(60000));
        shown += terminal.readAll();
        QCOMPARE(terminal.exitCode(), 0);
        QVERIFY2(!shown.contains(TestDatabase::PostgresPassword().toUtf8()), shown.constData());
        QVERIFY2(shown.contains("Recipe"), shown.constData());
    }

private:
    QString m_database;
};

QTEST_MAIN(TestToolPasswords)
#include "tst_toolpasswords.moc"
