// The shared helpers of the windows: text checks, selecting entries of lists and trees, the
// error log and the error path, opening documents, the mouse pointer and the start-up settings.
#include <unistd.h>

#include <QApplication>
#include <QComboBox>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTest>
#include <QTreeWidget>
#include <stdexcept>

#include "core/AppError.h"
#include "core/modGeneral.h"
#include "core/registry/modRegistry.h"
#include "core/startup/Startup.h"
#include "core/ui/UiServices.h"
#include "tests/support/MessageRecorder.h"
#include "tests/support/TestDatabase.h"

using namespace modGeneral;

namespace {

const QString LogName = QStringLiteral("errors.log");

QString ConfigFolder() { return TestDatabase::WorkFolder() + QStringLiteral("/config"); }

QByteArray ReadLog() {
    QFile file(LogName);
    if (!file.open(QIODevice::ReadOnly)) {
        return QByteArray();
    }
    return file.readAll();
}

void RemoveLog() {
    QFileInfo info(LogName);
    if (info.isDir()) {
        QDir(LogName).removeRecursively();
    } else {
        QFile::remove(LogName);
    }
}

// The times of the log entries in `log` (each "yyyy-MM-dd HH:mm (v1.3.0)\r\n\r\n<text>\r\n\r\n"),
// or an empty list when the log does not consist of exactly such entries with these texts.
QList<QDateTime> EntryTimes(const QByteArray& log, const QStringList& texts) {
    QString pattern = QStringLiteral("\\A");
    for (const QString& text : texts) {
        pattern +=
            QStringLiteral("(\\d{4}-\\d{2}-\\d{2} \\d{2}:\\d{2}) \\(v1\\.3\\.0\\)\\r\\n\\r\\n") +
            QRegularExpression::escape(text) + QStringLiteral("\\r\\n\\r\\n");
    }
    pattern += QStringLiteral("\\z");
    const QRegularExpressionMatch match = QRegularExpression(pattern).match(QString::fromUtf8(log));
    QList<QDateTime> times;
    if (!match.hasMatch()) {
        return times;
    }
    for (int i = 1; i <= texts.size(); ++i) {
        times << QDateTime::fromString(match.captured(i), QStringLiteral("yyyy-MM-dd HH:mm"));
    }
    return times;
}

// The start of the minute of a time.
QDateTime MinuteOf(const QDateTime& time) {
    return QDateTime(time.date(), QTime(time.time().hour(), time.time().minute()));
}

// A tree:
//   R1
//     A
//       A1
//       A2
//     B
//       B1
//         B1a
//       B2
//     C
//       C1
//   R2
//     D
QTreeWidgetItem* Node(QTreeWidgetItem* parent, const QString& key) {
    auto* item = new QTreeWidgetItem(parent, QStringList{key});
    item->setData(0, KeyRole, key);
    return item;
}
QTreeWidgetItem* TopNode(QTreeWidget* tree, const QString& key) {
    auto* item = new QTreeWidgetItem(tree, QStringList{key});
    item->setData(0, KeyRole, key);
    return item;
}
void FillTree(QTreeWidget* tree) {
    QTreeWidgetItem* r1 = TopNode(tree, QStringLiteral("R1"));
    QTreeWidgetItem* a = Node(r1, QStringLiteral("A"));
    Node(a, QStringLiteral("A1"));
    Node(a, QStringLiteral("A2"));
    QTreeWidgetItem* b = Node(r1, QStringLiteral("B"));
    QTreeWidgetItem* b1 = Node(b, QStringLiteral("B1"));
    Node(b1, QStringLiteral("B1a"));
    Node(b, QStringLiteral("B2"));
    QTreeWidgetItem* c = Node(r1, QStringLiteral("C"));
    Node(c, QStringLiteral("C1"));
    QTreeWidgetItem* r2 = TopNode(tree, QStringLiteral("R2"));
    Node(r2, QStringLiteral("D"));
}
QTreeWidgetItem* FindByText(QTreeWidget* tree, const QString& text) {
    const QList<QTreeWidgetItem*> found =
        tree->findItems(text, Qt::MatchExactly | Qt::MatchRecursive | Qt::MatchCaseSensitive);
    return found.size() == 1 ? found.first() : nullptr;
}

}  // namespace

class TestGeneral : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { TestDatabase::IsolateEnvironment(); }

    void init() {
        qputenv("MORVENA_CONFIG_DIR", QFile::encodeName(ConfigFolder()));
        QDir(ConfigFolder()).removeRecursively();
        RemoveLog();
    }

    void cleanup() {
        UiServices::SetOpenerHandler({});
        UiServices::SetMousePointer(UiServices::vbDefault);
        RemoveLog();
    }

    // Text checks

    void isNumeric_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("numeric");
        QTest::newRow("empty") << QString() << true;
        QTest::newRow("empty text") << QStringLiteral("") << true;
        QTest::newRow("12") << QStringLiteral("12") << true;
        QTest::newRow("0") << QStringLiteral("0") << true;
        QTest::newRow("leading zeros") << QStringLiteral("0078") << true;
        QTest::newRow("all digits") << QStringLiteral("0123456789") << true;
        QTest::newRow("decimal point") << QStringLiteral("1.5") << false;
        QTest::newRow("decimal comma") << QStringLiteral("1,5") << false;
        QTest::newRow("minus") << QStringLiteral("-1") << false;
        QTest::newRow("plus") << QStringLiteral("+1") << false;
        QTest::newRow("leading space") << QStringLiteral(" 1") << false;
        QTest::newRow("trailing space") << QStringLiteral("1 ") << false;
        QTest::newRow("exponent") << QStringLiteral("1e3") << false;
        QTest::newRow("letters") << QStringLiteral("G12") << false;
        QTest::newRow("other digits") << QStringLiteral("\u0661\u0662") << false;
    }
    void isNumeric() {
        QFETCH(QString, text);
        QFETCH(bool, numeric);
        QCOMPARE(IsNumeric(text), numeric);
    }

    void removeQuotes() {
        QCOMPARE(RemoveQuotes(QStringLiteral("O'Brien's")), QStringLiteral("OBriens"));
        QCOMPARE(RemoveQuotes(QStringLiteral("''")), QString());
        QCOMPARE(RemoveQuotes(QStringLiteral("juha")), QStringLiteral("juha"));
        QCOMPARE(RemoveQuotes(QStringLiteral("\"čaj\"")), QStringLiteral("\"čaj\""));
    }

    // Drop-down lists

    void selectComboItem() {
        QComboBox combo;
        combo.addItem(QStringLiteral("ten"), QVariant(qint32(10)));
        combo.addItem(QStringLiteral("twenty"), QVariant(qint32(20)));
        combo.addItem(QStringLiteral("twenty again"), QVariant(qint32(20)));
        combo.addItem(QStringLiteral("large"), QVariant(qlonglong(100000)));
        combo.addItem(QStringLiteral("minus"), QVariant(qint32(-4)));

        SelectComboItem(&combo, 20);
        QCOMPARE(combo.currentIndex(), 1);
        SelectComboItem(&combo, 100000);
        QCOMPARE(combo.currentIndex(), 3);
        SelectComboItem(&combo, -4);
        QCOMPARE(combo.currentIndex(), 4);
        SelectComboItem(&combo, 10);
        QCOMPARE(combo.currentIndex(), 0);

        SelectComboItem(&combo, 30);
        QCOMPARE(combo.currentIndex(), -1);
        SelectComboItem(&combo, 20);
        QCOMPARE(combo.currentIndex(), 1);
        SelectComboItem(&combo, -1);
        QCOMPARE(combo.currentIndex(), -1);
    }

    // List views

    void selectListItem() {
        QTreeWidget list;
        list.setRootIsDecorated(false);
        for (int i = 0; i < 200; ++i) {
            auto* row = new QTreeWidgetItem(&list, QStringList{QStringLiteral("Row %1").arg(i)});
            row->setData(0, KeyRole, QStringLiteral("I%1").arg(i));
        }
        // A second row with an existing key: the first one wins.
        auto* twin = new QTreeWidgetItem(&list, QStringList{QStringLiteral("Twin")});
        twin->setData(0, KeyRole, QStringLiteral("I150"));
        // Rows below the top level are no rows of the list.
        auto* child = new QTreeWidgetItem(list.topLevelItem(0), QStringList{QStringLiteral("c")});
        child->setData(0, KeyRole, QStringLiteral("Child"));
        // Without scrolling along with the current row, only the helper scrolls.
        list.setAutoScroll(false);
        list.resize(300, 150);
        list.show();
        QVERIFY(QTest::qWaitForWindowExposed(&list));

        QTreeWidgetItem* target = list.topLevelItem(150);
        QVERIFY(!list.viewport()->rect().intersects(list.visualItemRect(target)));
        SelectListItem(&list, QStringLiteral("I150"));
        QCOMPARE(list.currentItem(), target);
        QVERIFY(target->isSelected());
        QCOMPARE(list.selectedItems().size(), 1);
        QVERIFY(list.viewport()->rect().contains(list.visualItemRect(target)));

        // Keys compare with case; unknown keys change nothing.
        SelectListItem(&list, QStringLiteral("i5"));
        QCOMPARE(list.currentItem(), target);
        SelectListItem(&list, QStringLiteral("I1500"));
        QCOMPARE(list.currentItem(), target);
        SelectListItem(&list, QStringLiteral("Child"));
        QCOMPARE(list.currentItem(), target);
        QVERIFY(target->isSelected());

        SelectListItem(&list, QStringLiteral("I5"));
        QCOMPARE(list.currentItem(), list.topLevelItem(5));
        QVERIFY(list.topLevelItem(5)->isSelected());
        QVERIFY(!target->isSelected());
        QVERIFY(list.viewport()->rect().contains(list.visualItemRect(list.topLevelItem(5))));
    }

    // Trees

    void selectNodesItemSearchesDepthFirst() {
        QTreeWidget tree;
        FillTree(&tree);
        QTreeWidgetItem* r1 = tree.topLevelItem(0);
        QCOMPARE(SelectNodesItem(r1, QStringLiteral("R1")), r1);
        for (const QString key : {QStringLiteral("A"), QStringLiteral("A2"), QStringLiteral("B1a"),
                                  QStringLiteral("B2"), QStringLiteral("C1"), QStringLiteral("R2"),
                                  QStringLiteral("D")}) {
            QTreeWidgetItem* found = SelectNodesItem(r1, key);
            QVERIFY2(found, qPrintable(key));
            QCOMPARE(found, FindByText(&tree, key));
        }
        QCOMPARE(SelectNodesItem(r1, QStringLiteral("b1a")), nullptr);
        QCOMPARE(SelectNodesItem(r1, QStringLiteral("E")), nullptr);
        QCOMPARE(SelectNodesItem(nullptr, QStringLiteral("A")), nullptr);
    }

    void selectNodesItemFromAMiddleNode() {
        QTreeWidget tree;
        FillTree(&tree);
        QTreeWidgetItem* b = FindByText(&tree, QStringLiteral("B"));
        QVERIFY(b);
        // The node itself, its subtree and its following siblings with their subtrees.
        for (const QString key :
             {QStringLiteral("B"), QStringLiteral("B1"), QStringLiteral("B1a"),
              QStringLiteral("B2"), QStringLiteral("C"), QStringLiteral("C1")}) {
            QCOMPARE(SelectNodesItem(b, key), FindByText(&tree, key));
        }
        // Nothing before it, and nothing beyond its parent.
        for (const QString key :
             {QStringLiteral("R1"), QStringLiteral("A"), QStringLiteral("A1"), QStringLiteral("A2"),
              QStringLiteral("R2"), QStringLiteral("D")}) {
            QVERIFY2(!SelectNodesItem(b, key), qPrintable(key));
        }
        // From a node deep inside: its later siblings only.
        QTreeWidgetItem* a1 = FindByText(&tree, QStringLiteral("A1"));
        QCOMPARE(SelectNodesItem(a1, QStringLiteral("A2")),
                 FindByText(&tree, QStringLiteral("A2")));
        QCOMPARE(SelectNodesItem(a1, QStringLiteral("B")), nullptr);
        QTreeWidgetItem* a2 = FindByText(&tree, QStringLiteral("A2"));
        QCOMPARE(SelectNodesItem(a2, QStringLiteral("A1")), nullptr);
    }

    void selectNodesItemFindsTheFirstInSearchOrder() {
        QTreeWidget tree;
        FillTree(&tree);
        // A child comes before the next sibling of its parent.
        FindByText(&tree, QStringLiteral("A1"))->setData(0, KeyRole, QStringLiteral("twin"));
        FindByText(&tree, QStringLiteral("B"))->setData(0, KeyRole, QStringLiteral("twin"));
        QCOMPARE(SelectNodesItem(tree.topLevelItem(0), QStringLiteral("twin")),
                 FindByText(&tree, QStringLiteral("A1")));
        QCOMPARE(SelectNodesItem(FindByText(&tree, QStringLiteral("A")), QStringLiteral("twin")),
                 FindByText(&tree, QStringLiteral("A1")));
        // A deep node of an earlier subtree comes before a later top-level node.
        FindByText(&tree, QStringLiteral("C1"))->setData(0, KeyRole, QStringLiteral("late"));
        FindByText(&tree, QStringLiteral("R2"))->setData(0, KeyRole, QStringLiteral("late"));
        QCOMPARE(SelectNodesItem(tree.topLevelItem(0), QStringLiteral("late")),
                 FindByText(&tree, QStringLiteral("C1")));
    }

    void selectNodesItemInALongListOfSiblings() {
        QTreeWidget tree;
        QTreeWidgetItem* root = TopNode(&tree, QStringLiteral("root"));
        for (int i = 0; i < 20000; ++i) {
            Node(root, QStringLiteral("S%1").arg(i));
        }
        QCOMPARE(SelectNodesItem(root, QStringLiteral("S19999")), root->child(19999));
        QCOMPARE(SelectNodesItem(root->child(0), QStringLiteral("none")), nullptr);
    }

    void selectTreeViewItem() {
        QTreeWidget tree;
        FillTree(&tree);
        tree.show();
        QVERIFY(QTest::qWaitForWindowExposed(&tree));

        QTreeWidgetItem* b1a = FindByText(&tree, QStringLiteral("B1a"));
        SelectTreeViewItem(&tree, QStringLiteral("B1a"));
        QCOMPARE(tree.currentItem(), b1a);
        QVERIFY(b1a->isSelected());
        QCOMPARE(tree.selectedItems().size(), 1);

        // A node in a later top-level subtree.
        QTreeWidgetItem* d = FindByText(&tree, QStringLiteral("D"));
        SelectTreeViewItem(&tree, QStringLiteral("D"));
        QCOMPARE(tree.currentItem(), d);
        QVERIFY(d->isSelected());
        QVERIFY(!b1a->isSelected());

        // An unknown key leaves the selection.
        SelectTreeViewItem(&tree, QStringLiteral("Nothing"));
        SelectTreeViewItem(&tree, QStringLiteral("d"));
        QCOMPARE(tree.currentItem(), d);
        QVERIFY(d->isSelected());
        QCOMPARE(tree.selectedItems().size(), 1);

        QTreeWidget empty;
        SelectTreeViewItem(&empty, QStringLiteral("A"));
        QCOMPARE(empty.currentItem(), nullptr);
        QCOMPARE(empty.topLevelItemCount(), 0);
    }

    // The error log

    void logErrorWritesEntries() {
        QVERIFY(!QFileInfo::exists(LogName));
        const QDateTime before = MinuteOf(QDateTime::currentDateTime());
        LogError(QStringLiteral("first error"));
        QVERIFY(QFileInfo(QDir(TestDatabase::WorkFolder()).filePath(LogName)).isFile());
        QList<QDateTime> times = EntryTimes(ReadLog(), {QStringLiteral("first error")});
        QCOMPARE(times.size(), 1);

        LogError(QStringLiteral("second\r\nerror"));
        const QDateTime after = QDateTime::currentDateTime();
        times = EntryTimes(ReadLog(),
                           {QStringLiteral("first error"), QStringLiteral("second\r\nerror")});
        QCOMPARE(times.size(), 2);
        for (const QDateTime& time : times) {
            QVERIFY(time.isValid());
            QVERIFY2(before <= time && time <= after, qPrintable(time.toString(Qt::ISODate)));
            QVERIFY(qAbs(time.secsTo(QDateTime::currentDateTime())) <= 120);
        }
        QVERIFY(times[0] <= times[1]);
    }

    void logErrorExactBytes() {
        LogError(QStringLiteral("x"));
        const QByteArray log = ReadLog();
        QCOMPARE(log.size(), 16 + 9 + 4 + 1 + 4);
        QVERIFY(log.mid(16).startsWith(" (v1.3.0)\r\n\r\nx\r\n\r\n"));
        QCOMPARE(QDateTime::fromString(QString::fromLatin1(log.left(16)),
                                       QStringLiteral("yyyy-MM-dd HH:mm"))
                     .isValid(),
                 true);
    }

    void logErrorNeverFails() {
        QVERIFY(QDir().mkdir(LogName));  // a folder where the log would go
        bool threw = false;
        try {
            LogError(QStringLiteral("lost"));
        } catch (...) {
            threw = true;
        }
        QVERIFY(!threw);
        QVERIFY(QFileInfo(LogName).isDir());
    }

    // The error path

    void errorThreeProceduresDeep() {
        MessageRecorder messages;
        const auto procedureC = [] { ErrorPath::Raise(11, QStringLiteral("Division by zero")); };
        const auto procedureB = [&] { ErrorPath::PassOn("mod:B", [&] { procedureC(); }); };
        const auto procedureA = [&] { ErrorPath::PassOn("mod:A", [&] { procedureB(); }); };
        bool afterTheError = false;
        const bool result = ErrorPath::Handle("frmX:cmd_Click->", [&] {
            procedureA();
            afterTheError = true;
        });

        QCOMPARE(result, false);
        QVERIFY(!afterTheError);
        QCOMPARE(messages.Messages().size(), 1);
        const MessageRecorder::Message& message = messages.Messages().first();
        QCOMPARE(message.text,
                 QStringLiteral("Prišlo je do nepričakovane napake.\r\n\r\nOpis napake v datoteki "
                                "errors.log sporočite avtorju."));
        QCOMPARE(message.text, ErrorPath::UnexpectedErrorMessage);
        QCOMPARE(message.style, 48);
        QCOMPARE(message.title, QStringLiteral("Morvena"));

        const QList<QDateTime> times = EntryTimes(
            ReadLog(), {QStringLiteral("frmX:cmd_Click->mod:A->mod:B->Morvena->Division by zero")});
        QCOMPARE(times.size(), 1);
    }

    void handleWithoutErrorReturnsTrue() {
        MessageRecorder messages;
        bool ran = false;
        QCOMPARE(ErrorPath::Handle("frmX:cmd_Click->", [&] { ran = true; }), true);
        QVERIFY(ran);
        QCOMPARE(messages.Messages().size(), 0);
        QVERIFY(!QFileInfo::exists(LogName));
    }

    void raisedAndPassedOnErrors() {
        try {
            ErrorPath::Raise(91, QStringLiteral("Object variable not set"));
            QFAIL("no error");
        } catch (const AppError& error) {
            QCOMPARE(error.Number(), 91L);
            QCOMPARE(error.Source(), QStringLiteral("Morvena"));
            QCOMPARE(error.Source(), ErrorPath::RuntimeSource());
            QCOMPARE(error.Description(), QStringLiteral("Object variable not set"));
        }

        try {
            ErrorPath::PassOn(
                "mod:B", [] { ErrorPath::Raise(91, QStringLiteral("Object variable not set")); });
            QFAIL("no error");
        } catch (const AppError& error) {
            QCOMPARE(error.Number(), -2147221504L);
            QCOMPARE(error.Number(), AppError::PassedOn);
            QCOMPARE(error.Source(), QStringLiteral("mod:B"));
            QCOMPARE(error.Description(), QStringLiteral("Morvena->Object variable not set"));
        }

        // A procedure that passes errors on returns its body's value.
        QCOMPARE(ErrorPath::PassOn("mod:C", [] { return 42; }), 42);
    }

    void foreignExceptionBecomesProgramError() {
        try {
            throw std::runtime_error("disk full");
        } catch (...) {
            const AppError error = ErrorPath::Current();
            QCOMPARE(error.Source(), QStringLiteral("Morvena"));
            QCOMPARE(error.Description(), QStringLiteral("disk full"));
        }

        try {
            ErrorPath::PassOn("mod:Save", [] { throw std::runtime_error("disk full"); });
            QFAIL("no error");
        } catch (const AppError& error) {
            QCOMPARE(error.Number(), AppError::PassedOn);
            QCOMPARE(error.Source(), QStringLiteral("mod:Save"));
            QCOMPARE(error.Description(), QStringLiteral("Morvena->disk full"));
        }

        MessageRecorder messages;
        QCOMPARE(ErrorPath::Handle("frmY:cmdSave_Click->",
                                   [] { throw std::runtime_error("disk full"); }),
                 false);
        QCOMPARE(messages.Messages().size(), 1);
        QCOMPARE(EntryTimes(ReadLog(), {QStringLiteral("frmY:cmdSave_Click->Morvena->disk full")})
                     .size(),
                 1);
    }

    // Opening documents

    void openRegisteredFile_data() {
        QTest::addColumn<QString>("installDir");  // null: not set
        QTest::addColumn<QString>("folder");
        const QString apps = TestDatabase::WorkFolder() + QStringLiteral("/opt/apps");
        QDir().mkpath(apps);
        QTest::newRow("without final slash") << apps << apps + QLatin1Char('/');
        QTest::newRow("with final slash") << apps + QLatin1Char('/') << apps + QLatin1Char('/');
        QTest::newRow("not set") << QString() << DefaultInstallDir() + QStringLiteral("/");
    }
    void openRegisteredFile() {
        QFETCH(QString, installDir);
        QFETCH(QString, folder);
        if (!installDir.isNull()) {
            modRegistry::SetRegistryString(QStringLiteral("Software\\Orlessa\\Morvena"),
                                           QStringLiteral("InstallDir"), installDir, true);
        }
        QList<QPair<QString, QString>> calls;
        UiServices::SetOpenerHandler([&](const QString& target, const QString& workingFolder) {
            calls << qMakePair(target, workingFolder);
        });
        OpenRegisteredFile(QStringLiteral("docs/page11.html"));
        UiServices::SetOpenerHandler({});

        QCOMPARE(calls.size(), 1);
        QCOMPARE(calls.first().first, QStringLiteral("docs/page11.html"));
        QCOMPARE(calls.first().second, folder);
    }

    void installDirIsAMachineWideSetting() {
        modRegistry::SetRegistryString(modRegistry::ProgramKey, QStringLiteral("InstallDir"),
                                       QStringLiteral("/home/cook/apps"), false);
        QStringList folders;
        UiServices::SetOpenerHandler(
            [&](const QString&, const QString& workingFolder) { folders << workingFolder; });
        OpenRegisteredFile(QStringLiteral("docs/page11.html"));
        UiServices::SetOpenerHandler({});
        QCOMPARE(folders, QStringList{DefaultInstallDir() + QStringLiteral("/")});
    }

    // The mouse pointer

    void mousePointerIsASwitch() {
        QCOMPARE(QApplication::overrideCursor(), nullptr);
        UiServices::SetMousePointer(11);
        QCOMPARE(UiServices::MousePointer(), 11);
        QVERIFY(QApplication::overrideCursor());
        QCOMPARE(QApplication::overrideCursor()->shape(), Qt::WaitCursor);
        UiServices::SetMousePointer(11);
        QCOMPARE(UiServices::MousePointer(), 11);
        QVERIFY(QApplication::overrideCursor());
        UiServices::SetMousePointer(0);
        QCOMPARE(QApplication::overrideCursor(), nullptr);
        QCOMPARE(UiServices::MousePointer(), 0);

        // Twice the hourglass is one override, not two.
        UiServices::SetMousePointer(UiServices::vbHourglass);
        UiServices::SetMousePointer(UiServices::vbHourglass);
        QApplication::restoreOverrideCursor();
        QCOMPARE(QApplication::overrideCursor(), nullptr);
        UiServices::SetMousePointer(UiServices::vbDefault);
        QCOMPARE(UiServices::MousePointer(), 0);
        QCOMPARE(QApplication::overrideCursor(), nullptr);
    }

    // The display file

    // The user's private temporary folder: $XDG_RUNTIME_DIR when it is private to the user.
    void temporaryFolderAndDisplayFile() {
        const QString runtime = TestDatabase::WorkFolder() + QStringLiteral("/run");
        QVERIFY(QDir().mkpath(runtime));
        QVERIFY(QFile::setPermissions(
            runtime, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner));
        const QByteArray saved = qgetenv("XDG_RUNTIME_DIR");
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(runtime + QStringLiteral("/")));
        const QString folder = TemporaryFolder();
        const QString file = DefaultTempFilename();
        qputenv("XDG_RUNTIME_DIR", saved);
        QCOMPARE(folder, runtime);
        QCOMPARE(file, runtime + QStringLiteral("/tmpRecipeDB.html"));
    }

    // Without a private $XDG_RUNTIME_DIR: a folder of the user's own, mode 0700, in the system's
    // temporary folder.
    void temporaryFolderFromTheEnvironment() {
        const QByteArray savedTmp = qgetenv("TMPDIR");
        const QByteArray savedRuntime = qgetenv("XDG_RUNTIME_DIR");
        const QString custom = TestDatabase::WorkFolder() + QStringLiteral("/my temp");
        const QString open = TestDatabase::WorkFolder() + QStringLiteral("/open run");
        QVERIFY(QDir().mkpath(custom));
        QVERIFY(QDir().mkpath(open));
        QVERIFY(QFile::setPermissions(open, QFileDevice::ReadOwner | QFileDevice::WriteOwner |
                                                QFileDevice::ExeOwner | QFileDevice::ReadOther |
                                                QFileDevice::ExeOther));
        qputenv("TMPDIR", QFile::encodeName(custom + QStringLiteral("/")));
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(open));
        const QString folder = TemporaryFolder();
        const QString file = DefaultTempFilename();
        qunsetenv("XDG_RUNTIME_DIR");
        const QString withoutRuntime = TemporaryFolder();
        qputenv("TMPDIR", savedTmp);
        qputenv("XDG_RUNTIME_DIR", savedRuntime);
        const QString own =
            QFileInfo(custom).canonicalFilePath() + QStringLiteral("/morvena-%1").arg(::geteuid());
        QCOMPARE(folder, own);
        QCOMPARE(withoutRuntime, own);
        QCOMPARE(file, own + QStringLiteral("/tmpRecipeDB.html"));
        QCOMPARE(QFile::permissions(own) & QFileDevice::Permissions(0x7077),
                 QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    }

    // The start-up settings

    void readSettingsWithAnEmptyStore() {
        ServerName = QStringLiteral("x");
        DatabaseName = QStringLiteral("x");
        TempFilename = QStringLiteral("x");
        Username = QStringLiteral("x");
        Password = QStringLiteral("x");
        DatabaseType = 7;
        ReadSettings();
        QCOMPARE(ServerName, QString());
        QCOMPARE(DatabaseName, QStringLiteral("Morvena.mdb"));
        QCOMPARE(TempFilename, DefaultTempFilename());
        QCOMPARE(Username, QString());
        QCOMPARE(Password, QString());
        QCOMPARE(DatabaseType, 1);
        QVERIFY(!QFileInfo::exists(ConfigFolder()));
    }

    void readSettingsWithStoredValues() {
        using namespace modRegistry;
        const QString key = QStringLiteral("Software\\Orlessa\\Morvena");
        SetRegistryString(key, QStringLiteral("ServerName"), QStringLiteral("localhost:5433"),
                          true);
        SetRegistryString(key, QStringLiteral("Databasename"), QStringLiteral("recepti_čšž"), true);
        SetRegistryString(key, QStringLiteral("TempFilename"),
                          QStringLiteral("/var/tmp/prikaz.html"), true);
        SetRegistryString(key, QStringLiteral("Username"), QStringLiteral("ana"), true);
        SetRegistryString(key, QStringLiteral("Password"), QStringLiteral("skriv\"no\\"), true);
        SetRegistryLong(key, QStringLiteral("DatabaseType"), 2, true);
        ReadSettings();
        QCOMPARE(ServerName, QStringLiteral("localhost:5433"));
        QCOMPARE(DatabaseName, QStringLiteral("recepti_čšž"));
        QCOMPARE(TempFilename, QStringLiteral("/var/tmp/prikaz.html"));
        QCOMPARE(Username, QStringLiteral("ana"));
        QCOMPARE(Password, QStringLiteral("skriv\"no\\"));
        QCOMPARE(DatabaseType, 2);
    }

    void readSettingsWithStoredEmptyTexts() {
        using namespace modRegistry;
        SetRegistryString(ProgramKey, QStringLiteral("DatabaseName"), QString(), true);
        SetRegistryString(ProgramKey, QStringLiteral("ServerName"), QString(), true);
        ServerName = QStringLiteral("x");
        DatabaseName = QStringLiteral("x");
        ReadSettings();
        QCOMPARE(ServerName, QString());
        QCOMPARE(DatabaseName, QString());
        QCOMPARE(DatabaseType, 1);
    }
};

QTEST_MAIN(TestGeneral)
#include "tst_general.moc"
