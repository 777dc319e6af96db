// The settings store: the two roots and their files, the file format, the rules for reading
// (default values, names without case, damaged files) and for writing (atomic, owner only).
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTest>
#include <climits>
#include <functional>

#include "core/registry/modRegistry.h"
#include "tests/support/TestDatabase.h"

using namespace modRegistry;

namespace {

const QString Header = QStringLiteral("Windows Registry Editor Version 5.00");
const QString OtherKey = QStringLiteral("Software\\Orlessa\\Morvena\\Windows");

QString ConfigFolder() { return TestDatabase::WorkFolder() + QStringLiteral("/config"); }

void UseConfigFolder(const QString& folder) {
    qputenv("MORVENA_CONFIG_DIR", QFile::encodeName(folder));
}

QByteArray ReadBytes(const QString& fileName) {
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        return QByteArray();
    }
    return file.readAll();
}

void WriteBytes(const QString& fileName, const QByteArray& bytes) {
    QDir().mkpath(QFileInfo(fileName).absolutePath());
    QFile file(fileName);
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    QCOMPARE(file.write(bytes), bytes.size());
}

// The lines of a root's file (a CR before the line feed and blank lines at the end dropped).
QStringList FileLines(bool machineWide) {
    QString text = QString::fromUtf8(ReadBytes(StoreFile(machineWide)));
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    QStringList lines = text.split(QLatin1Char('\n'));
    while (!lines.isEmpty() && lines.last().isEmpty()) {
        lines.removeLast();
    }
    return lines;
}

// The lines of the file that start with the quoted value name (compared with case).
QStringList ValueLines(bool machineWide, const QString& name) {
    QStringList result;
    for (const QString& line : FileLines(machineWide)) {
        if (line.startsWith(QLatin1Char('"') + name + QStringLiteral("\"="))) {
            result << line;
        }
    }
    return result;
}

QString WithNul(const QString& before, const QString& after) { return before + QChar(0) + after; }

// The file's identity: a file replaced by a new one has another inode.
ino_t Inode(const QString& fileName) {
    struct stat info {};
    return ::stat(QFile::encodeName(fileName).constData(), &info) == 0 ? info.st_ino : 0;
}

// A file of the user's, as the user edited it: a comment, blank lines, an unknown key, lines
// that cannot be read (an unterminated text, an odd hex value) and a password in windows-1250.
const QByteArray UsersFile =
    "Windows Registry Editor Version 5.00\r\n"
    "\r\n"
    "; my settings, do not lose\r\n"
    "[Software\\Orlessa\\Morvena]\r\n"
    "\"DatabaseName\"=\"/home/cook/Recepti.db\"\r\n"
    "# the old server:  \r\n"
    "\"Password\"=\"broken\r\n"
    "\"Odd\"=hex(1):41,00,42\r\n"
    "\"Username\"=\"kuharica\"\r\n"
    "\"Password\"=\"\x9a\xe8\x9e \x8a\xc8\x8e\"\r\n"
    "\"InstallDir\"=\"/opt/morvena\"\r\n"
    "\r\n"
    "[Software\\Someone\\Else]\r\n"
    "\"Mine\"=dword:00000007\r\n"
    "\r\n";

// Runs `body` as a user that may write the store's folder but not read `fileName` (mode 0200,
// owned by that user); as root, in a child process with the rights of "nobody".
void AsUserWhoCannotRead(const QString& fileName, const std::function<void()>& body) {
    if (::geteuid() != 0) {
        QVERIFY(::chmod(QFile::encodeName(fileName).constData(), S_IWUSR) == 0);
        body();
        ::chmod(QFile::encodeName(fileName).constData(), S_IRUSR | S_IWUSR);
        return;
    }
    const uid_t nobody = 65534;
    const QByteArray folder = QFile::encodeName(QFileInfo(fileName).absolutePath());
    QVERIFY(::chmod(QFile::encodeName(TestDatabase::WorkFolder()).constData(), 0711) == 0);
    QVERIFY(::chown(folder.constData(), nobody, nobody) == 0);
    QVERIFY(::chown(QFile::encodeName(fileName).constData(), nobody, nobody) == 0);
    QVERIFY(::chmod(QFile::encodeName(fileName).constData(), S_IWUSR) == 0);
    const pid_t child = ::fork();
    if (child == 0) {
        const bool dropped = ::setgid(nobody) == 0 && ::setuid(nobody) == 0;
        if (dropped) {
            body();
        }
        ::_exit(dropped ? 0 : 3);
    }
    int status = 0;
    QVERIFY(::waitpid(child, &status, 0) == child);
    QCOMPARE(WEXITSTATUS(status), 0);
    ::chown(folder.constData(), 0, 0);
    ::chown(QFile::encodeName(fileName).constData(), 0, 0);
    ::chmod(QFile::encodeName(fileName).constData(), S_IRUSR | S_IWUSR);
    ::chmod(QFile::encodeName(TestDatabase::WorkFolder()).constData(), 0700);
}

}  // namespace

class TestRegistry : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { TestDatabase::IsolateEnvironment(); }

    void init() {
        UseConfigFolder(ConfigFolder());
        QDir(ConfigFolder()).removeRecursively();
    }

    void storeFilesOfTheTwoRoots() {
        QCOMPARE(StoreFolder(), ConfigFolder());
        QCOMPARE(StoreFile(true), ConfigFolder() + QStringLiteral("/machine.reg"));
        QCOMPARE(StoreFile(false), ConfigFolder() + QStringLiteral("/user.reg"));

        SetRegistryString(ProgramKey, QStringLiteral("Where"), QStringLiteral("machine"), true);
        QVERIFY(QFileInfo::exists(ConfigFolder() + QStringLiteral("/machine.reg")));
        QVERIFY(!QFileInfo::exists(ConfigFolder() + QStringLiteral("/user.reg")));

        SetRegistryString(ProgramKey, QStringLiteral("Where"), QStringLiteral("user"), false);
        QVERIFY(QFileInfo::exists(ConfigFolder() + QStringLiteral("/user.reg")));
    }

    void fileFormatOfTextAndNumber() {
        SetRegistryString(ProgramKey, QStringLiteral("DatabaseName"),
                          QStringLiteral("/home/cook/Recepti.db"), true);
        SetRegistryLong(ProgramKey, QStringLiteral("DatabaseType"), 1, true);
        const QStringList expected{
            Header,
            QString(),
            QStringLiteral("[Software\\Orlessa\\Morvena]"),
            QStringLiteral("\"DatabaseName\"=\"/home/cook/Recepti.db\""),
            QStringLiteral("\"DatabaseType\"=dword:00000001"),
        };
        QCOMPARE(FileLines(true), expected);
    }

    void fileFormatOfTwoKeys() {
        SetRegistryString(ProgramKey, QStringLiteral("A"), QStringLiteral("1"), false);
        SetRegistryLong(OtherKey, QStringLiteral("Left"), 31, false);
        SetRegistryString(ProgramKey, QStringLiteral("B"), QStringLiteral("2"), false);
        const QStringList expected{
            Header,
            QString(),
            QStringLiteral("[Software\\Orlessa\\Morvena]"),
            QStringLiteral("\"A\"=\"1\""),
            QStringLiteral("\"B\"=\"2\""),
            QString(),
            QStringLiteral("[Software\\Orlessa\\Morvena\\Windows]"),
            QStringLiteral("\"Left\"=dword:0000001f"),
        };
        QCOMPARE(FileLines(false), expected);
    }

    void numbersRoundTrip_data() {
        QTest::addColumn<qint32>("value");
        QTest::addColumn<QString>("stored");
        QTest::newRow("zero") << qint32(0) << QStringLiteral("dword:00000000");
        QTest::newRow("one") << qint32(1) << QStringLiteral("dword:00000001");
        QTest::newRow("31") << qint32(31) << QStringLiteral("dword:0000001f");
        QTest::newRow("lower-case hex") << qint32(0xABCDEF) << QStringLiteral("dword:00abcdef");
        QTest::newRow("minus one") << qint32(-1) << QStringLiteral("dword:ffffffff");
        QTest::newRow("minus two") << qint32(-2) << QStringLiteral("dword:fffffffe");
        QTest::newRow("INT_MAX") << qint32(INT_MAX) << QStringLiteral("dword:7fffffff");
        QTest::newRow("INT_MIN") << qint32(INT_MIN) << QStringLiteral("dword:80000000");
    }
    void numbersRoundTrip() {
        QFETCH(qint32, value);
        QFETCH(QString, stored);
        SetRegistryLong(ProgramKey, QStringLiteral("Number"), value, true);
        QCOMPARE(GetRegistryLong(ProgramKey, QStringLiteral("Number"), 12345, true), value);
        QCOMPARE(ValueLines(true, QStringLiteral("Number")),
                 QStringList{QStringLiteral("\"Number\"=") + stored});
    }

    void numberOverwritesNumber() {
        SetRegistryLong(ProgramKey, QStringLiteral("Number"), 7, true);
        SetRegistryLong(ProgramKey, QStringLiteral("Number"), -7, true);
        QCOMPARE(GetRegistryLong(ProgramKey, QStringLiteral("Number"), 0, true), -7);
        QCOMPARE(ValueLines(true, QStringLiteral("Number")),
                 QStringList{QStringLiteral("\"Number\"=dword:fffffff9")});
    }

    void textsRoundTrip_data() {
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("line");  // the value's line in the file; empty: not checked
        QTest::newRow("plain") << QStringLiteral("Recepti") << QStringLiteral("\"V\"=\"Recepti\"");
        QTest::newRow("carons") << QStringLiteral("čebula, špinača, žafran ČŠŽ")
                                << QStringLiteral("\"V\"=\"čebula, špinača, žafran ČŠŽ\"");
        QTest::newRow("quotes") << QStringLiteral("say \"hi\"")
                                << QStringLiteral("\"V\"=\"say \\\"hi\\\"\"");
        QTest::newRow("backslashes")
            << QStringLiteral("C:\\Program Files\\Morvena\\")
            << QStringLiteral("\"V\"=\"C:\\\\Program Files\\\\Morvena\\\\\"");
        QTest::newRow("quote after backslash")
            << QStringLiteral("a\\\"b") << QStringLiteral("\"V\"=\"a\\\\\\\"b\"");
        QTest::newRow("lone quote") << QStringLiteral("\"") << QStringLiteral("\"V\"=\"\\\"\"");
        QTest::newRow("brackets and equals")
            << QStringLiteral("[x]=\"y\"") << QStringLiteral("\"V\"=\"[x]=\\\"y\\\"\"");
        QTest::newRow("spaces kept")
            << QStringLiteral("  x  ") << QStringLiteral("\"V\"=\"  x  \"");
        QTest::newRow("CR LF") << QStringLiteral("line1\r\nline2")
                               << QStringLiteral(
                                      "\"V\"=hex(1):6c,00,69,00,6e,00,65,00,31,00,0d,00,0a,00,"
                                      "6c,00,69,00,6e,00,65,00,32,00");
        QTest::newRow("caron and CR LF")
            << QStringLiteral("č\r\n") << QStringLiteral("\"V\"=hex(1):0d,01,0d,00,0a,00");
        QTest::newRow("tab") << QStringLiteral("a\tb")
                             << QStringLiteral("\"V\"=hex(1):61,00,09,00,62,00");
        QTest::newRow("outside the basic plane") << QStringLiteral("juha \U0001F372") << QString();
    }
    void textsRoundTrip() {
        QFETCH(QString, value);
        QFETCH(QString, line);
        SetRegistryString(ProgramKey, QStringLiteral("V"), value, false);
        QCOMPARE(GetRegistryString(ProgramKey, QStringLiteral("V"), QStringLiteral("dflt"), false),
                 value);
        const QStringList lines = ValueLines(false, QStringLiteral("V"));
        QCOMPARE(lines.size(), 1);
        if (!line.isEmpty()) {
            QCOMPARE(lines.first(), line);
        }
    }

    void emptyTextReadsBackEmpty() {
        SetRegistryString(ProgramKey, QStringLiteral("Empty"), QString(), true);
        SetRegistryString(ProgramKey, QStringLiteral("AlsoEmpty"), QStringLiteral(""), true);
        for (const QString name : {QStringLiteral("Empty"), QStringLiteral("AlsoEmpty")}) {
            const QString read = GetRegistryString(ProgramKey, name, QStringLiteral("dflt"), true);
            QCOMPARE(read.size(), 0);
            QVERIFY(!read.contains(QChar(0)));
            QCOMPARE(ValueLines(true, name),
                     QStringList{QLatin1Char('"') + name + QStringLiteral("\"=hex(1):00,00")});
        }
    }

    void textWithNulInTheMiddleIsCut() {
        SetRegistryString(ProgramKey, QStringLiteral("Nul"),
                          WithNul(QStringLiteral("ab"), QStringLiteral("cd")), true);
        QCOMPARE(GetRegistryString(ProgramKey, QStringLiteral("Nul"), QStringLiteral("dflt"), true),
                 QStringLiteral("ab"));
        QCOMPARE(ValueLines(true, QStringLiteral("Nul")),
                 QStringList{QStringLiteral("\"Nul\"=hex(1):61,00,62,00,00,00,63,00,64,00")});
    }

    void valueOfTheOtherKindReadsAsDefault() {
        SetRegistryString(ProgramKey, QStringLiteral("TextFive"), QStringLiteral("5"), true);
        SetRegistryLong(ProgramKey, QStringLiteral("NumberFive"), 5, true);
        QCOMPARE(GetRegistryLong(ProgramKey, QStringLiteral("TextFive"), -7, true), -7);
        QCOMPARE(GetRegistryString(ProgramKey, QStringLiteral("NumberFive"), QStringLiteral("dflt"),
                                   true),
                 QStringLiteral("dflt"));
        // The other reading still gives the stored value.
        QCOMPARE(GetRegistryString(ProgramKey, QStringLiteral("TextFive"), QString(), true),
                 QStringLiteral("5"));
        QCOMPARE(GetRegistryLong(ProgramKey, QStringLiteral("NumberFive"), 0, true), 5);
    }

    void writingTheOtherKindReplacesTheValue() {
        SetRegistryString(ProgramKey, QStringLiteral("Kind"), QStringLiteral("text"), true);
        SetRegistryLong(ProgramKey, QStringLiteral("Kind"), 3, true);
        QCOMPARE(GetRegistryLong(ProgramKey, QStringLiteral("Kind"), 0, true), 3);
        QCOMPARE(
            GetRegistryString(ProgramKey, QStringLiteral("Kind"), QStringLiteral("dflt"), true),
            QStringLiteral("dflt"));
        QCOMPARE(ValueLines(true, QStringLiteral("Kind")),
                 QStringList{QStringLiteral("\"Kind\"=dword:00000003")});
    }

    void missingFileReadsDefaultAndCreatesNothing() {
        const QString absent = TestDatabase::WorkFolder() + QStringLiteral("/absent");
        UseConfigFolder(absent + QStringLiteral("/deeper"));
        for (const bool machineWide : {true, false}) {
            QCOMPARE(GetRegistryString(ProgramKey, QStringLiteral("DatabaseName"),
                                       QStringLiteral("Morvena.mdb"), machineWide),
                     QStringLiteral("Morvena.mdb"));
            QCOMPARE(GetRegistryString(ProgramKey, QStringLiteral("DatabaseName"), QString(),
                                       machineWide),
                     QString());
            QCOMPARE(GetRegistryLong(ProgramKey, QStringLiteral("DatabaseType"), -3, machineWide),
                     -3);
        }
        QVERIFY(!QFileInfo::exists(absent));
    }

    void missingKeyOrValueReadsDefaultAndChangesNothing() {
        SetRegistryString(ProgramKey, QStringLiteral("Present"), QStringLiteral("yes"), true);
        const QByteArray before = ReadBytes(StoreFile(true));
        QVERIFY(!before.isEmpty());

        QCOMPARE(
            GetRegistryString(OtherKey, QStringLiteral("Present"), QStringLiteral("dflt"), true),
            QStringLiteral("dflt"));
        QCOMPARE(GetRegistryLong(OtherKey, QStringLiteral("Present"), 9, true), 9);
        QCOMPARE(
            GetRegistryString(ProgramKey, QStringLiteral("Absent"), QStringLiteral("dflt"), true),
            QStringLiteral("dflt"));
        QCOMPARE(GetRegistryLong(ProgramKey, QStringLiteral("Absent"), INT_MIN, true), INT_MIN);
        QCOMPARE(
            GetRegistryString(ProgramKey, QStringLiteral("Present"), QStringLiteral("dflt"), false),
            QStringLiteral("dflt"));

        QCOMPARE(ReadBytes(StoreFile(true)), before);
        QCOMPARE(
            QDir(ConfigFolder())
                .entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System),
            QStringList{QStringLiteral("machine.reg")});
    }

    void valueNamesMatchWithoutCase() {
        SetRegistryString(ProgramKey, QStringLiteral("Databasename"), QStringLiteral("first.db"),
                          true);
        QCOMPARE(GetRegistryString(ProgramKey, QStringLiteral("DatabaseName"), QString(), true),
                 QStringLiteral("first.db"));
        QCOMPARE(GetRegistryString(ProgramKey, QStringLiteral("DATABASENAME"), QString(), true),
                 QStringLiteral("first.db"));

        SetRegistryString(ProgramKey, QStringLiteral("DatabaseName"), QStringLiteral("second.db"),
                          true);
        QCOMPARE(GetRegistryString(ProgramKey, QStringLiteral("databasename"), QString(), true),
                 QStringLiteral("second.db"));
        QCOMPARE(ValueLines(true, QStringLiteral("Databasename")),
                 QStringList{QStringLiteral("\"Databasename\"=\"second.db\"")});
        QCOMPARE(ValueLines(true, QStringLiteral("DatabaseName")), QStringList());
        QCOMPARE(FileLines(true).size(), 4);  // header, blank, key, one value

        SetRegistryLong(ProgramKey, QStringLiteral("Databasetype"), 1, true);
        SetRegistryLong(ProgramKey, QStringLiteral("DATABASETYPE"), 2, true);
        QCOMPARE(GetRegistryLong(ProgramKey, QStringLiteral("DatabaseType"), 0, true), 2);
        QCOMPARE(ValueLines(true, QStringLiteral("Databasetype")),
                 QStringList{QStringLiteral("\"Databasetype\"=dword:00000002")});
        QCOMPARE(FileLines(true).size(), 5);
    }

    void keyNamesMatchWithoutCase() {
        SetRegistryString(ProgramKey, QStringLiteral("Name"), QStringLiteral("v1"), true);
        const QString otherSpelling = QStringLiteral("SOFTWARE\\orlessa\\MorVena");
        QCOMPARE(GetRegistryString(otherSpelling, QStringLiteral("Name"), QString(), true),
                 QStringLiteral("v1"));

        SetRegistryString(otherSpelling, QStringLiteral("Name"), QStringLiteral("v2"), true);
        SetRegistryLong(otherSpelling, QStringLiteral("Count"), 4, true);
        QCOMPARE(GetRegistryString(ProgramKey, QStringLiteral("Name"), QString(), true),
                 QStringLiteral("v2"));
        QCOMPARE(GetRegistryLong(ProgramKey, QStringLiteral("Count"), 0, true), 4);
        const QStringList expected{
            Header,
            QString(),
            QStringLiteral("[Software\\Orlessa\\Morvena]"),
            QStringLiteral("\"Name\"=\"v2\""),
            QStringLiteral("\"Count\"=dword:00000004"),
        };
        QCOMPARE(FileLines(true), expected);
    }

    void keysAndRootsAreIndependent() {
        const QString name = QStringLiteral("Value");
        SetRegistryString(ProgramKey, name, QStringLiteral("machine program"), true);
        SetRegistryString(OtherKey, name, QStringLiteral("machine other"), true);
        SetRegistryString(ProgramKey, name, QStringLiteral("user program"), false);
        SetRegistryString(OtherKey, name, QStringLiteral("user other"), false);
        SetRegistryLong(ProgramKey, QStringLiteral("N"), 1, true);
        SetRegistryLong(OtherKey, QStringLiteral("N"), 2, true);
        SetRegistryLong(ProgramKey, QStringLiteral("N"), 3, false);
        SetRegistryLong(OtherKey, QStringLiteral("N"), 4, false);

        QCOMPARE(GetRegistryString(ProgramKey, name, QString(), true),
                 QStringLiteral("machine program"));
        QCOMPARE(GetRegistryString(OtherKey, name, QString(), true),
                 QStringLiteral("machine other"));
        QCOMPARE(GetRegistryString(ProgramKey, name, QString(), false),
                 QStringLiteral("user program"));
        QCOMPARE(GetRegistryString(OtherKey, name, QString(), false), QStringLiteral("user other"));
        QCOMPARE(GetRegistryLong(ProgramKey, QStringLiteral("N"), 0, true), 1);
        QCOMPARE(GetRegistryLong(OtherKey, QStringLiteral("N"), 0, true), 2);
        QCOMPARE(GetRegistryLong(ProgramKey, QStringLiteral("N"), 0, false), 3);
        QCOMPARE(GetRegistryLong(OtherKey, QStringLiteral("N"), 0, false), 4);

        // A value written in one root only is missing in the other.
        SetRegistryString(ProgramKey, QStringLiteral("OnlyUser"), QStringLiteral("u"), false);
        QCOMPARE(
            GetRegistryString(ProgramKey, QStringLiteral("OnlyUser"), QStringLiteral("dflt"), true),
            QStringLiteral("dflt"));
    }

    void writeKeepsOtherValuesAndKeys() {
        SetRegistryString(ProgramKey, QStringLiteral("A"), QStringLiteral("a"), true);
        SetRegistryLong(OtherKey, QStringLiteral("B"), 2, true);
        SetRegistryString(ProgramKey, QStringLiteral("C"), QStringLiteral("c"), true);
        SetRegistryString(ProgramKey, QStringLiteral("A"), QStringLiteral("a2"), true);
        QCOMPARE(GetRegistryString(ProgramKey, QStringLiteral("A"), QString(), true),
                 QStringLiteral("a2"));
        QCOMPARE(GetRegistryLong(OtherKey, QStringLiteral("B"), 0, true), 2);
        QCOMPARE(GetRegistryString(ProgramKey, QStringLiteral("C"), QString(), true),
                 QStringLiteral("c"));
        // The rewritten value keeps its place.
        QCOMPARE(FileLines(true).at(3), QStringLiteral("\"A\"=\"a2\""));
    }

    void writeReplacesTheFileAsAWhole() {
        SetRegistryString(ProgramKey, QStringLiteral("Version"), QStringLiteral("old"), true);
        const QByteArray oldContent = ReadBytes(StoreFile(true));
        // A second name for the same file: a write in place would change it, a replacement
        // of the file by a new one leaves it with the old content.
        const QString link = TestDatabase::WorkFolder() + QStringLiteral("/machine-link.reg");
        QFile::remove(link);
        QCOMPARE(::link(QFile::encodeName(StoreFile(true)).constData(),
                        QFile::encodeName(link).constData()),
                 0);

        SetRegistryString(ProgramKey, QStringLiteral("Version"), QStringLiteral("new"), true);
        QCOMPARE(GetRegistryString(ProgramKey, QStringLiteral("Version"), QString(), true),
                 QStringLiteral("new"));
        QCOMPARE(ReadBytes(link), oldContent);
        QFile::remove(link);

        // No temporary file is left behind.
        QCOMPARE(
            QDir(ConfigFolder())
                .entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System),
            QStringList{QStringLiteral("machine.reg")});
    }

    void fileIsReadableByItsOwnerOnly() {
        const QFileDevice::Permissions others = QFileDevice::ReadGroup | QFileDevice::WriteGroup |
                                                QFileDevice::ExeGroup | QFileDevice::ReadOther |
                                                QFileDevice::WriteOther | QFileDevice::ExeOther;
        const QFileDevice::Permissions owner = QFileDevice::ReadOwner | QFileDevice::WriteOwner;

        SetRegistryString(ProgramKey, QStringLiteral("Password"), QStringLiteral("skrivno"), true);
        SetRegistryLong(ProgramKey, QStringLiteral("DatabaseType"), 2, false);
        for (const bool machineWide : {true, false}) {
            const QFileDevice::Permissions mode = QFile::permissions(StoreFile(machineWide));
            QCOMPARE(mode & owner, owner);
            QCOMPARE(mode & QFileDevice::ExeOwner, QFileDevice::Permissions());
            QCOMPARE(mode & others, QFileDevice::Permissions());
        }

        // A file that others could read loses those rights with the next write.
        QVERIFY(QFile::setPermissions(StoreFile(true),
                                      owner | QFileDevice::ReadGroup | QFileDevice::ReadOther));
        SetRegistryString(ProgramKey, QStringLiteral("Password"), QStringLiteral("novo"), true);
        const QFileDevice::Permissions mode = QFile::permissions(StoreFile(true));
        QCOMPARE(mode & owner, owner);
        QCOMPARE(mode & others, QFileDevice::Permissions());
    }

    void unwritableFolderLosesWritesSilently() {
        const QString blocker = TestDatabase::WorkFolder() + QStringLiteral("/afile");
        WriteBytes(blocker, "not a folder\n");
        UseConfigFolder(blocker + QStringLiteral("/sub"));

        bool threw = false;
        try {
            SetRegistryString(ProgramKey, QStringLiteral("Lost"), QStringLiteral("value"), true);
            SetRegistryLong(ProgramKey, QStringLiteral("LostNumber"), 5, true);
            SetRegistryString(ProgramKey, QStringLiteral("Lost"), QStringLiteral("value"), false);
            SetRegistryLong(ProgramKey, QStringLiteral("LostNumber"), 5, false);
        } catch (...) {
            threw = true;
        }
        QVERIFY(!threw);
        QCOMPARE(
            GetRegistryString(ProgramKey, QStringLiteral("Lost"), QStringLiteral("dflt"), true),
            QStringLiteral("dflt"));
        QCOMPARE(GetRegistryLong(ProgramKey, QStringLiteral("LostNumber"), -1, true), -1);
        QCOMPARE(
            GetRegistryString(ProgramKey, QStringLiteral("Lost"), QStringLiteral("dflt"), false),
            QStringLiteral("dflt"));
        QVERIFY(QFileInfo(blocker).isFile());
        QCOMPARE(ReadBytes(blocker), QByteArray("not a folder\n"));
    }

    void damagedLinesAreSkipped() {
        WriteBytes(StoreFile(true),
                   "Windows Registry Editor Version 5.00\n"
                   "\n"
                   "[Software\\Orlessa\\Morvena]\n"
                   "\"Good\"=\"yes\"\n"
                   "not a value\n"
                   "\"Bad\"=dword:xyz\n"
                   "\"Truncated\"=\"no end\n"
                   "\"Count\"=dword:0000002a\n"
                   "\"Cut\n"
                   "\"After\"=\"still read\"\n");
        bool threw = false;
        try {
            QCOMPARE(GetRegistryString(ProgramKey, QStringLiteral("Good"), QString(), true),
                     QStringLiteral("yes"));
            QCOMPARE(GetRegistryLong(ProgramKey, QStringLiteral("Bad"), -5, true), -5);
            QCOMPARE(
                GetRegistryString(ProgramKey, QStringLiteral("Bad"), QStringLiteral("dflt"), true),
                QStringLiteral("dflt"));
            QCOMPARE(GetRegistryString(ProgramKey, QStringLiteral("Truncated"),
                                       QStringLiteral("dflt"), true),
                     QStringLiteral("dflt"));
            QCOMPARE(
                GetRegistryString(ProgramKey, QStringLiteral("Cut"), QStringLiteral("dflt"), true),
                QStringLiteral("dflt"));
            QCOMPARE(GetRegistryLong(ProgramKey, QStringLiteral("Count"), 0, true), 42);
            QCOMPARE(GetRegistryString(ProgramKey, QStringLiteral("After"), QString(), true),
                     QStringLiteral("still read"));

            // A write keeps the good values.
            SetRegistryLong(ProgramKey, QStringLiteral("New"), 1, true);
        } catch (...) {
            threw = true;
        }
        QVERIFY(!threw);
        QCOMPARE(GetRegistryLong(ProgramKey, QStringLiteral("New"), 0, true), 1);
        QCOMPARE(GetRegistryString(ProgramKey, QStringLiteral("Good"), QString(), true),
                 QStringLiteral("yes"));
        QCOMPARE(GetRegistryLong(ProgramKey, QStringLiteral("Count"), 0, true), 42);
        QCOMPARE(GetRegistryString(ProgramKey, QStringLiteral("After"), QString(), true),
                 QStringLiteral("still read"));
    }

    void handWrittenFileWithDoubleBackslashes() {
        WriteBytes(StoreFile(false),
                   "Windows Registry Editor Version 5.00\r\n"
                   "\r\n"
                   "[Software\\\\Orlessa\\\\Morvena]\r\n"
                   "\"DatabaseName\"=\"/srv/Recepti.db\"\r\n"
                   "\"DatabaseType\"=dword:00000002\r\n"
                   "\"Hex\"=hex(1):48,00,69,00,00,00\r\n");
        QCOMPARE(GetRegistryString(ProgramKey, QStringLiteral("DatabaseName"), QString(), false),
                 QStringLiteral("/srv/Recepti.db"));
        QCOMPARE(GetRegistryLong(ProgramKey, QStringLiteral("DatabaseType"), 0, false), 2);
        QCOMPARE(GetRegistryString(ProgramKey, QStringLiteral("Hex"), QString(), false),
                 QStringLiteral("Hi"));

        // The new value joins the same key; every line already there stays as written.
        SetRegistryString(ProgramKey, QStringLiteral("ServerName"), QStringLiteral("db"), false);
        QCOMPARE(ReadBytes(StoreFile(false)), QByteArray("Windows Registry Editor Version 5.00\r\n"
                                                         "\r\n"
                                                         "[Software\\\\Orlessa\\\\Morvena]\r\n"
                                                         "\"DatabaseName\"=\"/srv/Recepti.db\"\r\n"
                                                         "\"DatabaseType\"=dword:00000002\r\n"
                                                         "\"Hex\"=hex(1):48,00,69,00,00,00\r\n"
                                                         "\"ServerName\"=\"db\"\r\n"));
    }

    void writeChangesOnlyTheLineOfItsValue() {
        WriteBytes(StoreFile(true), UsersFile);
        SetRegistryString(ProgramKey, QStringLiteral("databasename"), QStringLiteral("/srv/b.db"),
                          true);
        QByteArray expected = UsersFile;
        expected.replace("\"DatabaseName\"=\"/home/cook/Recepti.db\"",
                         "\"DatabaseName\"=\"/srv/b.db\"");
        QCOMPARE(ReadBytes(StoreFile(true)), expected);

        // A new value goes to the end of its key, with the file's own line end.
        SetRegistryLong(ProgramKey, QStringLiteral("DatabaseType"), 2, true);
        expected.replace("\"InstallDir\"=\"/opt/morvena\"\r\n",
                         "\"InstallDir\"=\"/opt/morvena\"\r\n\"DatabaseType\"=dword:00000002\r\n");
        QCOMPARE(ReadBytes(StoreFile(true)), expected);

        // A new key goes to the end of the file.
        SetRegistryLong(OtherKey, QStringLiteral("Left"), 31, true);
        expected += "\r\n[Software\\Orlessa\\Morvena\\Windows]\r\n\"Left\"=dword:0000001f\r\n";
        QCOMPARE(ReadBytes(StoreFile(true)), expected);
    }

    void linesThatCannotBeReadStayAndReadAsDefault() {
        WriteBytes(StoreFile(true), UsersFile);
        QCOMPARE(GetRegistryString(ProgramKey, QStringLiteral("Odd"), QStringLiteral("dflt"), true),
                 QStringLiteral("dflt"));
        // The readable password line comes later and counts.
        SetRegistryString(ProgramKey, QStringLiteral("Username"), QStringLiteral("ana"), true);
        QVERIFY(ReadBytes(StoreFile(true)).contains("\"Password\"=\"broken\r\n"));
        QVERIFY(ReadBytes(StoreFile(true)).contains("\"Odd\"=hex(1):41,00,42\r\n"));
    }

    void bytesThatAreNotUtf8ComeBackUnchanged() {
        WriteBytes(StoreFile(true), UsersFile);
        const QString password =
            GetRegistryString(ProgramKey, QStringLiteral("Password"), QString(), true);
        QVERIFY(!password.isEmpty());
        QVERIFY(!password.contains(QChar::ReplacementCharacter));
        // Stored again as read (the settings dialog's "Potrdi" does so): nothing changes.
        const ino_t before = Inode(StoreFile(true));
        SetRegistryString(ProgramKey, QStringLiteral("Password"), password, true);
        QCOMPARE(Inode(StoreFile(true)), before);
        // Changed and put back: the same bytes as at first.
        SetRegistryString(ProgramKey, QStringLiteral("Password"), QStringLiteral("x"), true);
        QVERIFY(Inode(StoreFile(true)) != before);
        SetRegistryString(ProgramKey, QStringLiteral("Password"), password, true);
        QCOMPARE(ReadBytes(StoreFile(true)), UsersFile);
    }

    void valueStoredAsGivenIsNotWrittenAgain() {
        SetRegistryLong(ProgramKey, QStringLiteral("SplitterPosition"), 2400, true);
        SetRegistryString(ProgramKey, QStringLiteral("TempFilename"), QString(), true);
        const ino_t before = Inode(StoreFile(true));
        QVERIFY(before != 0);
        SetRegistryLong(ProgramKey, QStringLiteral("splitterposition"), 2400, true);
        SetRegistryString(ProgramKey, QStringLiteral("TempFilename"), QString(), true);
        QCOMPARE(Inode(StoreFile(true)), before);
        SetRegistryLong(ProgramKey, QStringLiteral("SplitterPosition"), 2415, true);
        QVERIFY(Inode(StoreFile(true)) != before);
        QCOMPARE(GetRegistryLong(ProgramKey, QStringLiteral("SplitterPosition"), 0, true), 2415);
    }

    void fileThatCannotBeReadIsNeverReplaced() {
        WriteBytes(StoreFile(true), UsersFile);
        AsUserWhoCannotRead(StoreFile(true), [] {
            SetRegistryLong(ProgramKey, QStringLiteral("WindowWidth"), 9000, true);
            SetRegistryString(ProgramKey, QStringLiteral("TempFilename"), QStringLiteral("/t"),
                              true);
        });
        QCOMPARE(ReadBytes(StoreFile(true)), UsersFile);

        // The same user writes a file it can read: the write is not refused for other reasons.
        QVERIFY(::chmod(QFile::encodeName(StoreFile(true)).constData(), S_IRUSR | S_IWUSR) == 0);
        if (::geteuid() == 0) {
            const QByteArray folder = QFile::encodeName(ConfigFolder());
            QVERIFY(::chmod(QFile::encodeName(TestDatabase::WorkFolder()).constData(), 0711) == 0);
            QVERIFY(::chown(folder.constData(), 65534, 65534) == 0);
            QVERIFY(::chown(QFile::encodeName(StoreFile(true)).constData(), 65534, 65534) == 0);
            const pid_t child = ::fork();
            if (child == 0) {
                const bool dropped = ::setgid(65534) == 0 && ::setuid(65534) == 0;
                if (dropped) {
                    SetRegistryLong(ProgramKey, QStringLiteral("WindowWidth"), 9000, true);
                }
                ::_exit(dropped ? 0 : 3);
            }
            int status = 0;
            QVERIFY(::waitpid(child, &status, 0) == child);
            QCOMPARE(WEXITSTATUS(status), 0);
            ::chown(folder.constData(), 0, 0);
            ::chmod(QFile::encodeName(TestDatabase::WorkFolder()).constData(), 0700);
        } else {
            SetRegistryLong(ProgramKey, QStringLiteral("WindowWidth"), 9000, true);
        }
        QVERIFY(ReadBytes(StoreFile(true)).contains("\"WindowWidth\"=dword:00002328\r\n"));
    }

    void valuesAfterADamagedKeyLineStayOutOfTheKeyBefore() {
        WriteBytes(StoreFile(true),
                   "Windows Registry Editor Version 5.00\n"
                   "\n"
                   "[Software\\Orlessa\\Morvena]\n"
                   "\"A\"=\"program\"\n"
                   "\n"
                   "[Software\\Other\n"
                   "\"B\"=\"other\"\n");
        QCOMPARE(GetRegistryString(ProgramKey, QStringLiteral("A"), QString(), true),
                 QStringLiteral("program"));
        // The line that cannot be read as a key ends the key before it; its values would
        // otherwise be taken for values of that key.
        QCOMPARE(GetRegistryString(ProgramKey, QStringLiteral("B"), QStringLiteral("dflt"), true),
                 QStringLiteral("dflt"));
    }
};

QTEST_MAIN(TestRegistry)
#include "tst_registry.moc"
