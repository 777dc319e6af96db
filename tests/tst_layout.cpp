// The layout of the source tree: every room is a library of its own whose main header says what
// it may use; the rooms include only what their headers name, and no folder includes a folder
// that includes it, directly or through others.
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>
#include <QTest>
#include <functional>

namespace {

// A room of the program, its main header (relative to the root) and its CMake library.
struct Room {
    QString folder;
    QString mainHeader;
    QString library;  // empty for a program
};

const QList<Room> Rooms{
    {"core", "core/modGeneral.h", "morvena_core"},
    {"core/ui", "core/ui/UiServices.h", "morvena_ui"},
    {"core/registry", "core/registry/modRegistry.h", "morvena_registry"},
    {"core/database", "core/database/modDatabase.h", "morvena_database"},
    {"core/startup", "core/startup/Startup.h", "morvena_startup"},
    {"collection", "collection/CollectionCopy.h", "morvena_collection"},
    {"exchange", "exchange/ExchangeRecipe.h", "morvena_exchange"},
    {"display", "display/modDisplay.h", "morvena_display"},
    {"about", "about/frmAbout.h", "morvena_about"},
    {"settings", "settings/frmSettings.h", "morvena_settings"},
    {"lists", "lists/frmEditList.h", "morvena_lists"},
    {"search", "search/frmFind.h", "morvena_search"},
    {"editor", "editor/frmNew.h", "morvena_editor"},
    {"main", "main/frmMain.h", "morvena_main"},
    {"tools", "tools/ToolCommands.h", QString()},
    {"app", "app/main.cpp", QString()},
};

// One #include of a file of the program.
struct Include {
    QString file;  // the including file, relative to the root
    int line = 0;
    QString target;  // the included file as written
};

// Which folders include which, read from the #include "..." lines of every source file below
// a root. A file belongs to the deepest room that holds it; a file outside every room (the
// tests, the benchmarks) to its top folder.
class IncludeGraph {
public:
    IncludeGraph(const QString& root, const QStringList& rooms) : m_root(root), m_rooms(rooms) {
        QDirIterator it(root, {"*.cpp", "*.h"}, QDir::Files, QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QString relative = QDir(root).relativeFilePath(it.next());
            if (!relative.startsWith(QLatin1String("build")) && !relative.startsWith('.')) {
                ReadFile(relative);
            }
        }
    }

    // The folder a file belongs to.
    QString UnitOf(const QString& file) const {
        const QString folder = QFileInfo(file).path();
        QString best;
        for (const QString& room : m_rooms) {
            if ((folder == room || folder.startsWith(room + '/')) && room.size() > best.size()) {
                best = room;
            }
        }
        return best.isEmpty() ? folder.section('/', 0, 0) : best;
    }

    // Folder -> folder -> the includes that make that edge.
    const QMap<QString, QMap<QString, QList<Include>>>& Edges() const { return m_edges; }

    // Every cycle of folders, each as "a -> b -> a" with the first include of each step.
    QStringList Cycles() const {
        QStringList cycles;
        QSet<QString> reported;
        for (auto from = m_edges.cbegin(); from != m_edges.cend(); ++from) {
            QStringList path{from.key()};
            FindCycles(path, cycles, reported);
        }
        return cycles;
    }

private:
    void ReadFile(const QString& relative) {
        QFile file(m_root + '/' + relative);
        if (!file.open(QIODevice::ReadOnly)) {
            return;
        }
        static const QRegularExpression include(
            QStringLiteral("^\\s*#\\s*include\\s*\"([^\"]+)\""));
        const QString from = UnitOf(relative);
        int number = 0;
        while (!file.atEnd()) {
            ++number;
            const auto match = include.match(QString::fromUtf8(file.readLine()));
            const QString target = match.captured(1);
            if (!match.hasMatch() || !target.contains('/') ||
                !QFileInfo(m_root + '/' + QFileInfo(target).path()).isDir()) {
                continue;  // a generated header such as "Version.h", or a system one
            }
            const QString to = UnitOf(target);
            if (to != from) {
                m_edges[from][to].append({relative, number, target});
            }
        }
    }

    void FindCycles(QStringList& path, QStringList& cycles, QSet<QString>& reported) const {
        for (const QString& next : m_edges.value(path.last()).keys()) {
            if (next == path.first()) {
                Report(path, cycles, reported);
            } else if (!path.contains(next)) {
                path.append(next);
                FindCycles(path, cycles, reported);
                path.removeLast();
            }
        }
    }

    void Report(const QStringList& path, QStringList& cycles, QSet<QString>& reported) const {
        QStringList sorted = path;
        sorted.sort();
        if (reported.contains(sorted.join(','))) {
            return;
        }
        reported.insert(sorted.join(','));
        QStringList steps;
        for (int i = 0; i < path.size(); ++i) {
            const Include first = m_edges.value(path[i]).value(path[(i + 1) % path.size()]).first();
            steps << QStringLiteral("%1 (%2:%3 includes %4)")
                         .arg(path[i], first.file)
                         .arg(first.line)
                         .arg(first.target);
        }
        cycles << steps.join(QStringLiteral(" -> ")) + QStringLiteral(" -> ") + path.first();
    }

    QString m_root;
    QStringList m_rooms;
    QMap<QString, QMap<QString, QList<Include>>> m_edges;
};

QString SourceRoot() { return QDir::cleanPath(QStringLiteral(MORVENA_TEST_SOURCE_DIR "/..")); }

QStringList RoomFolders() {
    QStringList folders;
    for (const Room& room : Rooms) {
        folders << room.folder;
    }
    return folders;
}

QString ReadText(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

// The comment lines at the top of a file, without their "// ".
QStringList OpeningComment(const QString& path) {
    QStringList lines;
    for (const QString& line : ReadText(path).split('\n')) {
        if (!line.startsWith(QLatin1String("//"))) {
            break;
        }
        lines << line.mid(2).trimmed();
    }
    return lines;
}

// The rooms named after "May use:" in a room's main header.
QSet<QString> MayUse(const QStringList& comment) {
    const QString text = comment.join(' ');
    const qsizetype at = text.indexOf(QLatin1String("May use:"));
    QSet<QString> rooms;
    if (at < 0) {
        return rooms;
    }
    static const QRegularExpression word(QStringLiteral("[a-z/]+"));
    for (auto it = word.globalMatch(text.mid(at + 8)); it.hasNext();) {
        const QString name = it.next().captured();
        if (RoomFolders().contains(name)) {
            rooms.insert(name);
        }
    }
    return rooms;
}

// The program's libraries that a room's CMakeLists.txt names after USES.
QSet<QString> LibrariesUsed(const QString& cmakeText, const QString& library) {
    static const QRegularExpression call(QStringLiteral("morvena_room\\((\\w+)\\s+USES([^)]*)\\)"));
    QSet<QString> used;
    for (auto it = call.globalMatch(cmakeText); it.hasNext();) {
        const auto match = it.next();
        if (match.captured(1) != library) {
            continue;
        }
        for (const QString& name : match.captured(2).split(QRegularExpression("\\s+"))) {
            if (name.startsWith(QLatin1String("morvena_")) && name != "morvena_version") {
                used.insert(name);
            }
        }
    }
    return used;
}

QString LibraryOf(const QString& folder) {
    for (const Room& room : Rooms) {
        if (room.folder == folder) {
            return room.library;
        }
    }
    return QString();
}

void WriteFile(const QString& path, const QByteArray& text) {
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(text);
}

}  // namespace

class TestLayout : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void noFolderIncludesAFolderThatIncludesIt() {
        const IncludeGraph graph(SourceRoot(), RoomFolders());
        QVERIFY(graph.Edges().contains(QStringLiteral("main")));
        const QStringList cycles = graph.Cycles();
        QVERIFY2(cycles.isEmpty(), qPrintable(cycles.join('\n')));
    }

    void everyRoomSaysWhatItIsForAndWhatItMayUse() {
        for (const Room& room : Rooms) {
            const QStringList comment = OpeningComment(SourceRoot() + '/' + room.mainHeader);
            QVERIFY2(!comment.isEmpty() && comment.first().startsWith(room.folder + "/: "),
                     qPrintable(room.mainHeader + " does not open with what " + room.folder +
                                "/ is for"));
            QVERIFY2(comment.join(' ').contains(QLatin1String("May use: ")),
                     qPrintable(room.mainHeader + " does not say what its room may use"));
            QVERIFY2(comment.size() <= 3,
                     qPrintable(room.mainHeader + " takes more than three lines"));
        }
    }

    void roomsIncludeOnlyWhatTheirMainHeadersName() {
        const IncludeGraph graph(SourceRoot(), RoomFolders());
        QStringList strays;
        for (const Room& room : Rooms) {
            const QSet<QString> allowed =
                MayUse(OpeningComment(SourceRoot() + '/' + room.mainHeader));
            const auto targets = graph.Edges().value(room.folder);
            for (auto to = targets.cbegin(); to != targets.cend(); ++to) {
                if (!allowed.contains(to.key())) {
                    const Include& first = to.value().first();
                    strays << QStringLiteral("%1:%2 includes %3")
                                  .arg(first.file)
                                  .arg(first.line)
                                  .arg(first.target);
                }
            }
        }
        QVERIFY2(strays.isEmpty(), qPrintable(strays.join('\n')));
    }

    void everyRoomIsALibraryThatLinksWhatItMayUse() {
        for (const Room& room : Rooms) {
            if (room.library.isEmpty()) {
                continue;
            }
            const QString cmake = ReadText(SourceRoot() + '/' + room.folder + "/CMakeLists.txt");
            QVERIFY2(cmake.contains("morvena_room(" + room.library),
                     qPrintable(room.folder + "/CMakeLists.txt does not make " + room.library));
            QSet<QString> expected;
            for (const QString& folder :
                 MayUse(OpeningComment(SourceRoot() + '/' + room.mainHeader))) {
                expected.insert(LibraryOf(folder));
            }
            QCOMPARE(LibrariesUsed(cmake, room.library), expected);
        }
    }

    // The reading itself: a pair of folders and a longer ring are both found, with the lines
    // that make them, and a tree without them passes.
    void cyclesAreFoundWithTheirIncludes() {
        QTemporaryDir dir;
        const QString root = dir.path();
        WriteFile(root + "/a/A.h", "#pragma once\n#include \"b/B.h\"\n");
        WriteFile(root + "/b/B.cpp", "#include \"b/B.h\"\n\n#include \"a/A.h\"\n");
        WriteFile(root + "/b/B.h", "#pragma once\n#include <QString>\n#include \"Version.h\"\n");
        WriteFile(root + "/c/C.cpp", "#include \"d/D.h\"\n");
        WriteFile(root + "/d/D.cpp", "#  include \"e/E.h\"\n");
        WriteFile(root + "/e/E.h", "#include \"c/C.h\"\n");
        WriteFile(root + "/c/C.h", "\n");
        WriteFile(root + "/tests/support/T.cpp", "#include \"a/A.h\"\n");
        const IncludeGraph graph(root, {"a", "b", "c", "d", "e"});
        QCOMPARE(graph.UnitOf("tests/support/T.cpp"), QStringLiteral("tests"));
        QCOMPARE(graph.Cycles(),
                 (QStringList{"a (a/A.h:2 includes b/B.h) -> b (b/B.cpp:3 includes a/A.h) -> a",
                              "c (c/C.cpp:1 includes d/D.h) -> d (d/D.cpp:1 includes e/E.h) -> "
                              "e (e/E.h:1 includes c/C.h) -> c"}));

        WriteFile(root + "/b/B.cpp", "#include \"b/B.h\"\n");
        WriteFile(root + "/e/E.h", "\n");
        QCOMPARE(IncludeGraph(root, {"a", "b", "c", "d", "e"}).Cycles(), QStringList());
    }

    void mayUseNamesRoomsOnly() {
        QCOMPARE(MayUse({"main/: the main window.", "May use: about, core/ui,", "core (and Qt)."}),
                 (QSet<QString>{"about", "core/ui", "core"}));
        QCOMPARE(MayUse({"core/ui/: helpers.", "May use: nothing else of the program (Qt only)."}),
                 QSet<QString>());
    }
};

QTEST_GUILESS_MAIN(TestLayout)
#include "tst_layout.moc"
