// Telling whether a row or a recipe changed since it was read: a row's version tells NULL from
// an empty text and any changed field; a recipe's fingerprint follows its row, its sections in
// place order and their lines, ignores the keys a save gives them anew, and tells a recipe that
// is gone. On both kinds.
#include <QTest>

#include "core/database/modDatabase.h"
#include "editor/RecipeFingerprint.h"
#include "lists/RowVersion.h"
#include "tests/support/TestDatabase.h"

namespace {

RowVersion UnitRow(qint32 unitID) {
    Recordset rs = modDatabase::GetRecordset(
        QStringLiteral("SELECT * FROM [Unit] WHERE unitID = %1").arg(unitID));
    return RowVersion(rs);
}

// The torte's sections and lines written again with new keys, as a save writes them.
void SaveTorteAgain() {
    TestDatabase::Exec(QStringLiteral("DELETE FROM [SectionIngredient] WHERE sectionID IN (2, 3)"));
    TestDatabase::Exec(QStringLiteral("DELETE FROM [RecipeSection] WHERE recipeID = 3"));
    TestDatabase::Exec(QStringLiteral("DELETE FROM [Section] WHERE sectionID IN (2, 3)"));
    const qint32 testo =
        TestDatabase::Insert("Section", {{"title", "Testo"}, {"instructions", "Zamesimo."}});
    const qint32 krema = TestDatabase::Insert(
        "Section", {{"title", "Krema"}, {"instructions", "Stopimo ČOKOLADO."}});
    TestDatabase::Insert("RecipeSection", {{"recipeID", 3}, {"sectionID", testo}, {"place", 1}});
    TestDatabase::Insert("RecipeSection", {{"recipeID", 3}, {"sectionID", krema}, {"place", 2}});
    TestDatabase::Insert(
        "SectionIngredient",
        {{"sectionID", testo}, {"ingredientID", 1}, {"unitID", 1}, {"amount", 300}});
    TestDatabase::Insert("SectionIngredient",
                         {{"sectionID", krema}, {"ingredientID", 4}, {"unitID", 2}, {"amount", 2}});
}

}  // namespace

class TestRecipeFingerprint : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { TestDatabase::IsolateEnvironment(); }

    void init() {
        TestDatabase::OpenFresh(TestDatabase::CurrentKind());
        TestDatabase::LoadSmallCollection();
    }

    void cleanup() { modDatabase::Connection.reset(); }

    void rowVersionFollowsEveryField_data() { TestDatabase::AddKinds(); }
    void rowVersionFollowsEveryField() {
        const RowVersion read = UnitRow(2);
        QVERIFY(read.Exists());
        QVERIFY(UnitRow(2) == read);
        QVERIFY(UnitRow(1) != read);
        TestDatabase::Exec(QStringLiteral("UPDATE [Unit] SET description = '' WHERE unitID = 2"));
        const RowVersion empty = UnitRow(2);
        QVERIFY(empty != read);  // an empty text is not NULL
        TestDatabase::Exec(QStringLiteral("UPDATE [Unit] SET description = NULL WHERE unitID = 2"));
        QVERIFY(UnitRow(2) == read);
        TestDatabase::Exec(QStringLiteral("UPDATE [Unit] SET name = 'Žlica' WHERE unitID = 2"));
        QVERIFY(UnitRow(2) != read);  // letter case counts
        TestDatabase::Exec(QStringLiteral("DELETE FROM [Unit] WHERE unitID = 2"));
        QVERIFY(!UnitRow(2).Exists());
        QVERIFY(UnitRow(2) == RowVersion());
        QVERIFY(UnitRow(2) != read);
    }

    void recipeReadTwiceIsTheSame_data() { TestDatabase::AddKinds(); }
    void recipeReadTwiceIsTheSame() {
        const RecipeFingerprint torte = RecipeFingerprint::Read(3);
        QVERIFY(torte.Exists());
        QVERIFY(RecipeFingerprint::Read(3) == torte);
        QVERIFY(RecipeFingerprint::Read(1) != torte);
        QVERIFY(RecipeFingerprint::Read(2) != RecipeFingerprint::Read(1));
    }

    // New keys for the same sections and lines: the same recipe.
    void keysOfASaveDoNotCount_data() { TestDatabase::AddKinds(); }
    void keysOfASaveDoNotCount() {
        const RecipeFingerprint torte = RecipeFingerprint::Read(3);
        SaveTorteAgain();
        QCOMPARE(TestDatabase::Rows(QStringLiteral(
                     "SELECT sectionID FROM [RecipeSection] WHERE recipeID = 3 ORDER BY place;")),
                 (QStringList{"5", "6"}));
        QVERIFY(RecipeFingerprint::Read(3) == torte);
    }

    void everyPartOfTheRecipeCounts_data() {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("change");
        for (const QString& kind : {TestDatabase::Sqlite, TestDatabase::Postgres}) {
            const QByteArray tag = kind.toUtf8();
            const char* k = tag.constData();
            const QList<QPair<const char*, const char*>> changes{
                {"title", "UPDATE [Recipe] SET title = 'Čokoladna torta' WHERE recipeID = 3"},
                {"subgroup", "UPDATE [Recipe] SET typeID = 1 WHERE recipeID = 3"},
                {"no source", "UPDATE [Recipe] SET sourceID = NULL WHERE recipeID = 3"},
                {"section title", "UPDATE [Section] SET title = 'Nadev' WHERE sectionID = 3"},
                {"method", "UPDATE [Section] SET instructions = 'Zamesimo. ' WHERE sectionID = 2"},
                {"places", "UPDATE [RecipeSection] SET place = 3 - place WHERE recipeID = 3"},
                {"amount", "UPDATE [SectionIngredient] SET amount = 3 WHERE sectionID = 3"},
                {"unit", "UPDATE [SectionIngredient] SET unitID = 1 WHERE sectionID = 3"},
                {"ingredient",
                 "UPDATE [SectionIngredient] SET ingredientID = 2 WHERE sectionID = 3"},
                {"line removed", "DELETE FROM [SectionIngredient] WHERE sectionID = 3"},
                {"line added",
                 "INSERT INTO [SectionIngredient] (sectionID, ingredientID, unitID, amount) VALUES "
                 "(2, 1, 1, 300)"},
                {"section unlinked", "DELETE FROM [RecipeSection] WHERE sectionID = 3"},
                {"section linked",
                 "INSERT INTO [RecipeSection] (recipeID, sectionID, place) VALUES (3, 1, 3)"},
            };
            for (const auto& [name, sql] : changes) {
                QTest::addRow("%s %s", k, name) << kind << QString::fromUtf8(sql);
            }
        }
    }
    void everyPartOfTheRecipeCounts() {
        QFETCH(QString, change);
        const RecipeFingerprint torte = RecipeFingerprint::Read(3);
        const RecipeFingerprint others[] = {RecipeFingerprint::Read(1), RecipeFingerprint::Read(2)};
        TestDatabase::Exec(change);
        const RecipeFingerprint changed = RecipeFingerprint::Read(3);
        QVERIFY(changed.Exists());
        QVERIFY(changed != torte);
        // Only the torte changed.
        QVERIFY(RecipeFingerprint::Read(1) == others[0]);
        QVERIFY(RecipeFingerprint::Read(2) == others[1]);
    }

    void deletedRecipeIsGone_data() { TestDatabase::AddKinds(); }
    void deletedRecipeIsGone() {
        const RecipeFingerprint soup = RecipeFingerprint::Read(1);
        TestDatabase::Exec(QStringLiteral("DELETE FROM [Recipe] WHERE recipeID = 1"));
        const RecipeFingerprint gone = RecipeFingerprint::Read(1);
        QVERIFY(!gone.Exists());
        QVERIFY(gone != soup);
        QVERIFY(gone == RecipeFingerprint());
        QVERIFY(RecipeFingerprint::Read(99) == gone);
    }
};

QTEST_MAIN(TestRecipeFingerprint)
#include "tst_recipefingerprint.moc"
