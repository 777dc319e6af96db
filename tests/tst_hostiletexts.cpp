// Generated hostile texts put into a statement's literal and sent to a real database: through
// the program's query layer a second statement never runs. The same texts sent through each
// library's interface for scripts of many statements (PostgreSQL's simple query protocol,
// sqlite3_exec), which the database programs of old used, do run a second one: the set of
// texts is hostile enough to show it.
#include <libpq-fe.h>
#include <sqlite3.h>

#include <QFile>
#include <QRandomGenerator>
#include <QTest>

#include "core/AppError.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "search/SearchQuery.h"
#include "tests/support/TestDatabase.h"

namespace {

// Enough to find texts that end their literal in ways a reading of quotes alone misses.
constexpr int GeneratedTexts = 4000;

const char* const Payload = "INSERT INTO canary VALUES('x')";
// The server's count of canary rows ever written, before the texts are sent.
qint64 g_hitsAtStart = 0;

// Pieces of SQL's lexical structure: quotes of every kind, escapes, comments, dollar quotes,
// statement ends, and the statement that must never run.
QStringList Fragments() {
    const QString payload = QString::fromLatin1(Payload);
    return {QStringLiteral("'"),
            QStringLiteral("''"),
            QStringLiteral("E'"),
            QStringLiteral("e'"),
            QStringLiteral("U&'"),
            QStringLiteral("B'"),
            QStringLiteral("\\"),
            QStringLiteral("\\'"),
            QStringLiteral("\\\\"),
            QStringLiteral("/*"),
            QStringLiteral("*/"),
            QStringLiteral("--"),
            QStringLiteral("\n"),
            QStringLiteral("\r"),
            QStringLiteral(";"),
            QStringLiteral("$$"),
            QStringLiteral("$a$"),
            QStringLiteral("\""),
            QStringLiteral("["),
            QStringLiteral("]"),
            QStringLiteral("`"),
            QStringLiteral("OR"),
            QStringLiteral("<"),
            QStringLiteral(" "),
            QStringLiteral("%"),
            QStringLiteral(")"),
            QStringLiteral("'));"),
            QStringLiteral("';"),
            QStringLiteral(";") + payload + QStringLiteral("--"),
            QStringLiteral("';") + payload + QStringLiteral(";--"),
            QStringLiteral("'));") + payload + QStringLiteral("--"),
            QStringLiteral("\\';") + payload + QStringLiteral(";/*")};
}

// The texts: the one that passed the program's old guard, texts made from it by putting a
// piece in or taking one out, and texts of 1 to 9 pieces; all with the statement that must
// not run.
QStringList HostileTexts() {
    const QString payload = QString::fromLatin1(Payload);
    const QString known =
        QStringLiteral("'OR'\\'<'/*'OR'/*'<E''\n'\\'/*'));") + payload + QStringLiteral("--");
    QStringList texts{known, QStringLiteral("x'; ") + payload + QStringLiteral("; --")};
    const QStringList fragments = Fragments();
    QRandomGenerator random(20261125);
    const qsizetype prefix = known.indexOf(payload);
    while (texts.size() < GeneratedTexts / 2) {
        QString text = known;
        const int at = random.bounded(int(prefix));
        if (random.bounded(2) == 0) {
            text.insert(at, fragments[random.bounded(int(fragments.size()))]);
        } else {
            text.remove(at, 1);
        }
        texts << text;
    }
    while (texts.size() < GeneratedTexts) {
        QString text;
        const int pieces = random.bounded(1, 10);
        for (int i = 0; i < pieces; ++i) {
            text += fragments[random.bounded(int(fragments.size()))];
        }
        if (text.contains(payload)) {
            texts << text;
        }
    }
    return texts;
}

// Statements with the text where a typed value goes: the record entry dialog's duplicate check
// and the search's test of a recipe title, as they were before typed text was kept apart.
QStringList StatementsWith(const QString& text) {
    using namespace SearchQuery;
    return {QStringLiteral("SELECT * FROM [Unit] WHERE name = '") + text +
                QStringLiteral("' AND unitID <> -1;"),
            JoinQueries(BaseQuery(),
                        GenerateSubQuery(QStringLiteral("[title]"), GetOperator(0), {text}),
                        GetOperator(0)) +
                GenerateOrderSubQuery(1)};
}

qint64 CanaryRows(const QString& kind) {
    const QString rows = QStringLiteral("SELECT COUNT(*) FROM canary;");
    const QString written = QStringLiteral(
        "SELECT COUNT(*) + (SELECT last_value + is_called::int FROM canary_hits) - "
        "%1 FROM canary;");
    return TestDatabase::Rows(kind == TestDatabase::Postgres ? written.arg(g_hitsAtStart) : rows)
        .value(0)
        .toLongLong();
}

// A script interface of each library on a connection of its own, every run rolled back.
class ScriptInterface {
public:
    explicit ScriptInterface(const QString& kind) : m_server(kind == TestDatabase::Postgres) {
        using namespace modGeneral;
        if (m_server) {
            const QByteArray host = ServerName.section(QLatin1Char(':'), 0, 0).toUtf8();
            const QByteArray port = ServerName.section(QLatin1Char(':'), 1).toUtf8();
            const QByteArray database = DatabaseName.toUtf8();
            const QByteArray user = Username.toUtf8();
            const QByteArray password = Password.toUtf8();
            const char* keywords[] = {"host", "port", "dbname", "user", "password", nullptr};
            const char* values[] = {host.constData(), port.constData(),     database.constData(),
                                    user.constData(), password.constData(), nullptr};
            m_pg = PQconnectdbParams(keywords, values, 0);
            PQsetNoticeProcessor(
                m_pg, [](void*, const char*) {}, nullptr);
        } else {
            sqlite3_open(QFile::encodeName(DatabaseName).constData(), &m_sqlite);
            sqlite3_busy_timeout(m_sqlite, 5000);
        }
    }
    ~ScriptInterface() {
        PQfinish(m_pg);
        sqlite3_close(m_sqlite);
    }
    bool Ready() const { return m_server ? PQstatus(m_pg) == CONNECTION_OK : m_sqlite != nullptr; }

    // Whether the script wrote into the canary table (even when a later statement of the
    // script failed and took the row back).
    bool RunsPayload(const QString& sql) {
        if (m_server) {
            const qint64 before = Number("SELECT last_value + (is_called::int) FROM canary_hits");
            PQclear(PQexec(m_pg, sql.toUtf8().constData()));
            PQclear(PQexec(m_pg, "DELETE FROM canary"));
            return Number("SELECT last_value + (is_called::int) FROM canary_hits") > before;
        }
        sqlite3_exec(m_sqlite, "BEGIN", nullptr, nullptr, nullptr);
        sqlite3_exec(m_sqlite, sql.toUtf8().constData(), nullptr, nullptr, nullptr);
        sqlite3_stmt* statement = nullptr;
        sqlite3_prepare_v2(m_sqlite, "SELECT COUNT(*) FROM canary", -1, &statement, nullptr);
        const bool ran =
            sqlite3_step(statement) == SQLITE_ROW && sqlite3_column_int64(statement, 0) > 0;
        sqlite3_finalize(statement);
        sqlite3_exec(m_sqlite, "ROLLBACK", nullptr, nullptr, nullptr);
        return ran;
    }

private:
    qint64 Number(const char* sql) {
        PGresult* result = PQexec(m_pg, sql);
        const qint64 number = PQntuples(result) == 1 ? atoll(PQgetvalue(result, 0, 0)) : -1;
        PQclear(result);
        return number;
    }

    bool m_server;
    PGconn* m_pg = nullptr;
    sqlite3* m_sqlite = nullptr;
};

}  // namespace

class TestHostileTexts : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { TestDatabase::IsolateEnvironment(); }
    void cleanup() { modDatabase::Connection.reset(); }

    void noSecondStatementEverRuns_data() { TestDatabase::AddKinds(); }
    void noSecondStatementEverRuns() {
        const QString kind = TestDatabase::CurrentKind();
        TestDatabase::OpenFresh(kind);
        TestDatabase::LoadSmallCollection();
        if (kind == TestDatabase::Postgres) {
            // Every row written counts, also one taken back by a failure after it.
            TestDatabase::Exec(QStringLiteral("CREATE SEQUENCE canary_hits;"));
            TestDatabase::Exec(QStringLiteral(
                "CREATE TABLE canary (x text, hit bigint DEFAULT nextval('canary_hits'));"));
        } else {
            TestDatabase::Exec(QStringLiteral("CREATE TABLE canary (x text);"));
        }
        ScriptInterface script(kind);
        QVERIFY(script.Ready());

        QStringList statements;
        for (const QString& text : HostileTexts()) {
            statements << StatementsWith(text);
        }
        QStringList ranAsScript;
        int refused = 0;
        int ranAsOne = 0;
        for (const QString& sql : statements) {
            if (script.RunsPayload(modDatabase::Connection->Translate(sql))) {
                ranAsScript << modDatabase::Connection->Translate(sql);
            }
            g_hitsAtStart =
                kind == TestDatabase::Postgres
                    ? TestDatabase::Rows(QStringLiteral("SELECT last_value + is_called::int "
                                                        "FROM canary_hits;"))
                          .value(0)
                          .toLongLong()
                    : 0;
            try {
                modDatabase::GetRecordset(sql);
                ++ranAsOne;
            } catch (const AppError&) {
                ++refused;
            }
            QVERIFY2(CanaryRows(kind) == 0,
                     qPrintable(QStringLiteral("a second statement ran: ") + sql.toHtmlEscaped()));
        }
        qInfo(
            "%s: %lld statements; as a script %lld of them run the second statement; through "
            "the query layer %d run as one statement, %d are refused, none runs a second one",
            qPrintable(kind), static_cast<long long>(statements.size()),
            static_cast<long long>(ranAsScript.size()), ranAsOne, refused);
        QVERIFY(ranAsScript.size() > 100);
        QCOMPARE(ranAsOne + refused, int(statements.size()));
        if (!qEnvironmentVariableIsEmpty("MORVENA_HOSTILE_TEXTS")) {
            QFile out(qEnvironmentVariable("MORVENA_HOSTILE_TEXTS") + QLatin1Char('.') + kind);
            QVERIFY(out.open(QIODevice::WriteOnly));
            for (const QString& sql : ranAsScript) {
                out.write(sql.toUtf8().toBase64() + '\n');
            }
        }
    }
};

QTEST_MAIN(TestHostileTexts)
#include "tst_hostiletexts.moc"
