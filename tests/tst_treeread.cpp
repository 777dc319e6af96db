// The recipe tree of a collection with many subgroups of every size is the tree the catalogue
// statements give one by one, on both kinds, whichever connection read which subgroup; a tree
// read inside a transaction shows what the transaction changed.
#include <QRandomGenerator>
#include <QTest>
#include <QTreeView>

#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "main/RecipeTreeModel.h"
#include "tests/support/TestDatabase.h"

namespace {

QString U(const char* utf8) { return QString::fromUtf8(utf8); }

// Every node as "<indent><key> <text>", in the order the view shows them.
QStringList ModelLines(const QAbstractItemModel& model, const QModelIndex& parent = {},
                       int depth = 0) {
    QStringList lines;
    for (int row = 0; row < model.rowCount(parent); ++row) {
        const QModelIndex node = model.index(row, 0, parent);
        lines << QString(depth * 2, QLatin1Char(' ')) + node.data(modGeneral::KeyRole).toString() +
                     QLatin1Char(' ') + node.data().toString();
        lines << ModelLines(model, node, depth + 1);
    }
    return lines;
}

// The tree as the catalogue statements give it, run one after another on the shared
// connection.
QStringList StatementLines() {
    using modDatabase::GetRecordset;
    QStringList lines;
    Recordset groups = GetRecordset(QStringLiteral("SELECT * FROM [Group] ORDER BY name;"));
    for (; !groups.Eof(); groups.MoveNext()) {
        const QString groupID = QString::number(groups.Long(QStringLiteral("groupID")));
        lines << "G" + groupID + " " + groups.Text(QStringLiteral("Name"));
        Recordset types =
            GetRecordset("SELECT * FROM [Type] WHERE groupID = " + groupID + " ORDER BY name;");
        for (; !types.Eof(); types.MoveNext()) {
            const QString typeID = QString::number(types.Long(QStringLiteral("typeID")));
            lines << "  T" + typeID + " " + types.Text(QStringLiteral("Name"));
            Recordset recipes = GetRecordset("SELECT * FROM [Recipe] WHERE typeID = " + typeID +
                                             " ORDER BY title;");
            for (; !recipes.Eof(); recipes.MoveNext()) {
                lines << "    R" + QString::number(recipes.Long(QStringLiteral("recipeID"))) + " " +
                             recipes.Text(QStringLiteral("Title"));
            }
        }
    }
    return lines;
}

// Three groups of fifteen subgroups each, with 0 to 60 recipes, titled with Slovenian words in
// no order.
void LoadManySubgroups() {
    const QStringList words = {U("čokoladna"),  U("Ajdova"),  U("šmarnica"), U("Žganci"),
                               U("zelenjavna"), U("Češnjev"), U("juha"),     U("Štruklji")};
    QRandomGenerator random(19);
    TestDatabase::Exec(QStringLiteral("BEGIN"));
    for (int group = 0; group < 3; ++group) {
        const qint32 groupID =
            TestDatabase::Insert("Group", {{"name", U("Skupina %1").arg(3 - group)}});
        for (int type = 0; type < 15; ++type) {
            const qint32 typeID = TestDatabase::Insert(
                "Type", {{"groupID", groupID}, {"name", words[type % 8] + QString::number(type)}});
            const int recipes = type == 4 ? 0 : int(random.bounded(61));
            for (int recipe = 0; recipe < recipes; ++recipe) {
                TestDatabase::Insert(
                    "Recipe", {{"typeID", typeID},
                               {"title", words[random.bounded(8)] + U(" ") +
                                             words[random.bounded(8)] + QString::number(recipe)}});
            }
        }
    }
    TestDatabase::Exec(QStringLiteral("COMMIT"));
}

}  // namespace

class TestTreeRead : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { TestDatabase::IsolateEnvironment(); }

    void manySubgroupsAreReadAsTheStatementsGiveThem_data() { TestDatabase::AddKinds(); }
    void manySubgroupsAreReadAsTheStatementsGiveThem() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        LoadManySubgroups();
        RecipeTreeModel model;
        model.Reload();
        const QStringList expected = StatementLines();
        QCOMPARE(expected.size(),
                 3 + 45 + TestDatabase::Rows("SELECT recipeID FROM [Recipe];").size());
        QCOMPARE(ModelLines(model), expected);
        QCOMPARE(model.Catalogue().RecipeCount(), expected.size() - 48);
        // Every recipe's node is found by its key, under its own subgroup.
        for (const QString& id : TestDatabase::Rows("SELECT recipeID FROM [Recipe];")) {
            const RecipeCatalogue::Node node = model.Catalogue().Find("R" + id);
            QVERIFY(node.IsValid());
            QCOMPARE(model.Catalogue().Key(node), "R" + id);
            const QString type =
                TestDatabase::Rows("SELECT typeID FROM [Recipe] WHERE recipeID = " + id + ";")
                    .value(0);
            QCOMPARE(model.Catalogue().Key(model.Catalogue().Parent(node)), "T" + type);
        }
    }

    // A second connection reads beside the shared one, but not while the shared one is inside
    // a transaction, whose changes the tree shows.
    void readingInsideATransactionShowsItsChanges_data() { TestDatabase::AddKinds(); }
    void readingInsideATransactionShowsItsChanges() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        TestDatabase::LoadSmallCollection();
        QVERIFY(modDatabase::OpenReadingPartner());
        RecipeTreeModel model;
        QString added;
        {
            modDatabase::Transaction transaction;
            QVERIFY(!modDatabase::OpenReadingPartner());
            const qint32 type = TestDatabase::Insert("Type", {{"groupID", 2}, {"name", U("Kruh")}});
            const qint32 recipe =
                TestDatabase::Insert("Recipe", {{"typeID", type}, {"title", U("Črni kruh")}});
            model.Reload();
            added = U("    R%1 Črni kruh").arg(recipe);
            QVERIFY(ModelLines(model).contains(added));
            QCOMPARE(ModelLines(model), StatementLines());
        }
        model.Reload();
        QVERIFY(!ModelLines(model).contains(added));
        QCOMPARE(ModelLines(model), StatementLines());
    }

    // On a server, the second connection logs in as the shared one did: a password typed at the
    // prompt is not asked for again, and the tree is read whole.
    void serverPartnerTakesTheTypedPassword() {
        TestDatabase::OpenFresh(TestDatabase::Postgres);
        LoadManySubgroups();
        const QStringList expected = StatementLines();
        modGeneral::Password.clear();
        qunsetenv("PGPASSWORD");
        s_prompts = 0;
        modDatabase::SetPasswordPrompt([](const QString&) -> std::optional<QString> {
            ++s_prompts;
            return TestDatabase::PostgresPassword();
        });
        modDatabase::OpenConnection();
        QCOMPARE(modDatabase::Connection->State(), int(modDatabase::adStateOpen));
        QCOMPARE(s_prompts, 1);
        const std::shared_ptr<modDatabase::DbConnection> partner =
            modDatabase::OpenReadingPartner();
        QVERIFY(partner);
        QCOMPARE(partner->Kind(), int(modDatabase::ServerDatabase));
        RecipeTreeModel model;
        model.Reload();
        modDatabase::SetPasswordPrompt(nullptr);
        QCOMPARE(s_prompts, 1);
        QCOMPARE(ModelLines(model), expected);
    }

private:
    static inline int s_prompts = 0;
};

QTEST_MAIN(TestTreeRead)
#include "tst_treeread.moc"
