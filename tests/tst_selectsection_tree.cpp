// The section picker reads a recipe's sections when its node is first expanded. Expanded node by
// node, its tree is the tree read whole (groups, per group its subgroups, per subgroup its
// recipes, per recipe its titled sections): the same nodes in the same order with the same keys,
// texts and bold, and the same recipes can be expanded, on a made-up collection with groups
// without subgroups, subgroups without recipes, recipes without sections or with untitled ones,
// sections with an empty title and sections linked to more than one recipe.
#include <QFile>
#include <QFont>
#include <QRegularExpression>
#include <QSet>
#include <QTest>
#include <QTreeView>

#include "core/AppError.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "editor/frmNew.h"
#include "editor/frmSelectSection.h"
#include "tests/support/EditorDriver.h"
#include "tests/support/MessageRecorder.h"
#include "tests/support/TestDatabase.h"

using namespace EditorDriver;

namespace {

// A node as "<indent><key> <text>", then " (b)" when bold and " +" when it can be expanded.
QString Line(int depth, const QString& key, const QString& text, bool bold, bool expandable) {
    return QString(depth * 2, QLatin1Char(' ')) + key + QLatin1Char(' ') + text +
           (bold ? QStringLiteral(" (b)") : QString()) +
           (expandable ? QStringLiteral(" +") : QString());
}

// The tree read whole, one statement per group, subgroup and recipe; a section already in the
// tree is not added again.
QStringList WholeTree() {
    using modDatabase::GetRecordset;
    struct Entry {
        int depth;
        QString key;
        QString text;
        int children;
    };
    std::vector<Entry> entries;
    QSet<QString> keys;
    const auto add = [&](int depth, const QString& key, const QString& text, int parent) {
        entries.push_back({depth, key, text, 0});
        keys.insert(key);
        if (parent >= 0) {
            ++entries[parent].children;
        }
        return static_cast<int>(entries.size()) - 1;
    };
    Recordset groups = GetRecordset(QStringLiteral("SELECT * FROM [Group] ORDER BY name;"));
    for (; !groups.Eof(); groups.MoveNext()) {
        const QString groupID = QString::number(groups.Long(QStringLiteral("groupID")));
        const int group = add(0, "G" + groupID, groups.Text(QStringLiteral("Name")), -1);
        Recordset types =
            GetRecordset("SELECT * FROM [Type] WHERE groupID = " + groupID + " ORDER BY name;");
        for (; !types.Eof(); types.MoveNext()) {
            const QString typeID = QString::number(types.Long(QStringLiteral("typeID")));
            const int type = add(1, "T" + typeID, types.Text(QStringLiteral("Name")), group);
            Recordset recipes = GetRecordset("SELECT * FROM [Recipe] WHERE typeID = " + typeID +
                                             " ORDER BY title;");
            for (; !recipes.Eof(); recipes.MoveNext()) {
                const QString recipeID = QString::number(recipes.Long(QStringLiteral("recipeID")));
                const int recipe =
                    add(2, "R" + recipeID, recipes.Text(QStringLiteral("Title")), type);
                Recordset sections = GetRecordset(
                    "SELECT [Section].sectionID, [Section].title FROM [Section] INNER JOIN "
                    "[RecipeSection] ON [Section].sectionID = [RecipeSection].sectionID WHERE "
                    "[Section].title IS NOT NULL AND [RecipeSection].recipeID = " +
                    recipeID + " ORDER BY [RecipeSection].place;");
                for (; !sections.Eof(); sections.MoveNext()) {
                    const QString key =
                        "S" + QString::number(sections.Long(QStringLiteral("sectionID")));
                    if (!keys.contains(key)) {
                        add(3, key, sections.Text(QStringLiteral("Title")), recipe);
                    }
                }
            }
        }
    }
    QStringList lines;
    for (const Entry& entry : entries) {
        lines << Line(entry.depth, entry.key, entry.text, entry.depth<2, entry.children> 0);
    }
    return lines;
}

// The picker's tree expanded node by node, depth first; whether a node can be expanded is read
// before it is expanded.
void Expand(QTreeView* tree, const QModelIndex& parent, int depth, QStringList& lines) {
    const QAbstractItemModel* model = tree->model();
    for (int row = 0; row < model->rowCount(parent); ++row) {
        const QModelIndex node = model->index(row, 0, parent);
        lines << Line(depth, node.data(modGeneral::KeyRole).toString(), node.data().toString(),
                      node.data(Qt::FontRole).value<QFont>().bold(), model->hasChildren(node));
        tree->expand(node);
        Expand(tree, node, depth + 1, lines);
    }
}

// A made-up collection: the same every time.
void MakeCollection() {
    quint32 seed = 20240611;
    const auto next = [&](quint32 below) {
        seed = seed * 1103515245u + 12345u;
        return (seed >> 16) % below;
    };
    const QStringList groupNames{"Juhe", "sladice", "Čaji", "Prazna skupina", "Šarklji", "ajde"};
    const QStringList words{"ajdov", "Zelenjavni", "čokoladni", "šipkov", "Žličniki",
                            "bučni", "Cvetačni",   "žgance",    "Ričet",  "jota"};
    std::vector<qint32> types;
    for (int g = 0; g < groupNames.size(); ++g) {
        const qint32 groupID = TestDatabase::Insert("Group", {{"name", groupNames[g]}});
        if (g == 3) {
            continue;  // a group without subgroups
        }
        for (int t = 0, n = 1 + static_cast<int>(next(3)); t < n; ++t) {
            types.push_back(
                TestDatabase::Insert("Type", {{"groupID", groupID},
                                              {"name", words[static_cast<int>(next(words.size()))] +
                                                           QStringLiteral(" %1").arg(t)}}));
        }
    }
    std::vector<qint32> titled;       // titled sections
    std::vector<qint32> titledTypes;  // and the subgroups of their recipes
    std::vector<qint32> recipes;
    for (int r = 0; r < 120; ++r) {
        const size_t type = next(static_cast<quint32>(types.size()));
        if (type == 0) {
            continue;  // the first subgroup stays without recipes
        }
        const QString title = words[static_cast<int>(next(words.size()))] +
                              QStringLiteral(" %1").arg(next(40));  // some titles repeat
        const qint32 recipeID =
            TestDatabase::Insert("Recipe", {{"typeID", types[type]}, {"title", title}});
        recipes.push_back(recipeID);
        const int count = static_cast<int>(next(4));  // 0 to 3 sections
        for (int place = count; place >= 1; --place) {
            const quint32 kind = next(6);
            const QVariant sectionTitle =
                kind == 0   ? QVariant()
                : kind == 1 ? QVariant(QString())
                            : QVariant(QStringLiteral("Razdelek %1 %2").arg(place).arg(next(3)));
            const qint32 sectionID =
                TestDatabase::Insert("Section", {{"title", sectionTitle}, {"instructions", " "}});
            TestDatabase::Insert(
                "RecipeSection",
                {{"recipeID", recipeID}, {"sectionID", sectionID}, {"place", place}});
            if (!sectionTitle.isNull()) {
                titled.push_back(sectionID);
                titledTypes.push_back(types[type]);
            }
        }
    }
    // Sections linked to a second recipe (and one twice to the same recipe).
    for (int i = 0; i < 12; ++i) {
        const qint32 sectionID = titled[next(static_cast<quint32>(titled.size()))];
        const qint32 recipeID =
            i == 0 ? recipes[0] : recipes[next(static_cast<quint32>(recipes.size()))];
        TestDatabase::Insert("RecipeSection", {{"recipeID", recipeID},
                                               {"sectionID", i == 0 ? titled[0] : sectionID},
                                               {"place", 10 + i}});
    }
    // In the subgroup of a titled section: a recipe after the section's own, whose only section
    // it is (so it shows none), and one before it, which shows it instead.
    for (const auto& [title, section] : {std::pair{"Žžž", titled[0]}, {"Aaa", titled[1]}}) {
        const qint32 typeID = titledTypes[section == titled[0] ? 0 : 1];
        const qint32 recipeID = TestDatabase::Insert(
            "Recipe", {{"typeID", typeID}, {"title", QString::fromUtf8(title)}});
        TestDatabase::Insert("RecipeSection",
                             {{"recipeID", recipeID}, {"sectionID", section}, {"place", 1}});
    }
}

}  // namespace

class TestSelectSectionTree : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { TestDatabase::IsolateEnvironment(); }
    void init() { QFile::remove(QStringLiteral("errors.log")); }
    void cleanup() { QVERIFY2(ErrorLog().isEmpty(), qPrintable(ErrorLog())); }

    void expandedTreeIsTheTreeReadWhole_data() { TestDatabase::AddKinds(); }
    void expandedTreeIsTheTreeReadWhole() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        MakeCollection();
        const QStringList whole = WholeTree();
        // The collection has what the comparison is about.
        QVERIFY(whole.filter(QRegularExpression(QStringLiteral("^G\\d+ .* \\(b\\)$"))).size() > 0);
        QVERIFY(whole.filter(QRegularExpression(QStringLiteral("^    R\\d+ .* \\+$"))).size() > 20);
        QVERIFY(whole.filter(QRegularExpression(QStringLiteral("^    R\\d+ [^+]*\\d$"))).size() >
                10);
        QVERIFY(whole.filter(QRegularExpression(QStringLiteral("^      S\\d+ $"))).size() > 0);
        QVERIFY(whole.filter(QRegularExpression(QStringLiteral("^  T\\d+ .* \\(b\\)$"))).size() >
                0);
        MessageRecorder messages;
        frmNew editor;
        frmSelectSection picker(&editor);
        QStringList expanded;
        ShowModal(picker, [&](QDialog* form) {
            QTreeView* tree = Tree(form, "tvSections");
            Expand(tree, QModelIndex(), 0, expanded);
        });
        QCOMPARE(expanded, whole);
        QVERIFY(messages.Messages().isEmpty());
    }
};

QTEST_MAIN(TestSelectSectionTree)
#include "tst_selectsection_tree.moc"
