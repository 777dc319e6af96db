// Every SQL text that the program runs, with keys and values filled in, runs unchanged on both
// kinds of database and gives the same rows.
#include <QTest>

#include "core/database/SqlStatement.h"
#include "core/database/modDatabase.h"
#include "editor/SectionCatalogue.h"
#include "tests/support/TestDatabase.h"

namespace {

struct Case {
    const char* name;
    const char* sql;
    QStringList rows;
    bool ordered;  // the statement fixes the order of its rows
};

const QString SearchBase = QStringLiteral(
    "SELECT [title], [recipeID], [Group].[name] AS [groupName], [Type].[name] AS typeName FROM "
    "(([Recipe] INNER JOIN [Type] ON [Recipe].[typeID] = [Type].[typeID]) INNER JOIN [Group] ON "
    "[Group].[groupID] = [Type].[groupID]) ");

QList<Case> Cases() {
    const QStringList allIngredients{"4|Čokolada|NULL", "2|korenje|NULL", "3|krompir|NULL",
                                     "1|moka|NULL"};
    const QStringList groups{"1|Juhe|Tople juhe\r\nin enolončnice", "2|Sladice|NULL"};
    return {
        // the recipe tree and the section picker
        {"groups", "SELECT * FROM [Group] ORDER BY name;", groups, true},
        {"types of group",
         "SELECT * FROM [Type] WHERE groupID = 1 ORDER BY name;",
         {"1|1|Mesne juhe|NULL", "2|1|Zelenjavne juhe|NULL"},
         true},
        {"recipes of type",
         "SELECT * FROM [Recipe] WHERE typeID = 3 ORDER BY title;",
         {"3|3|2|čokoladna torta"},
         true},
        {"titled sections of recipe",
         "SELECT [Section].sectionID, [Section].title FROM [Section] INNER JOIN [RecipeSection] "
         "ON [Section].sectionID = [RecipeSection].sectionID WHERE [Section].title IS NOT NULL "
         "AND [RecipeSection].recipeID = 3 ORDER BY [RecipeSection].place;",
         {"2|Testo", "3|Krema"},
         true},
        // deleting recipes, groups and types
        {"sections of recipe",
         "SELECT sectionID FROM [RecipeSection] WHERE recipeID = 3;",
         {"2", "3"},
         false},
        {"recipe row",
         "SELECT * FROM [Recipe] WHERE recipeID = 2;",
         {"2|2|NULL|Korenčkova juha"},
         true},
        {"lines of section",
         "SELECT * FROM [SectionIngredient] WHERE sectionID = 4;",
         {"2|4|2|1|500", "3|4|3|1|200"},
         false},
        {"links of section",
         "SELECT * FROM [RecipeSection] WHERE sectionID = 3;",
         {"2|3|3|2"},
         true},
        {"section row",
         "SELECT * FROM [Section] WHERE sectionID = 3;",
         {"3|Krema|Stopimo ČOKOLADO."},
         true},
        {"types of group to delete",
         "SELECT typeID FROM [Type] WHERE groupID = 1;",
         {"1", "2"},
         false},
        {"group row", "SELECT * FROM [Group] WHERE groupID = 2;", {"2|Sladice|NULL"}, true},
        {"recipes of type to delete",
         "SELECT recipeID FROM [Recipe] WHERE typeID = 1;",
         {"1"},
         true},
        {"type row", "SELECT * FROM [Type] WHERE typeID = 3;", {"3|2|Pecivo|NULL"}, true},
        // pages
        {"recipe page head",
         "SELECT [Recipe].recipeID, [Recipe].title, [Type].name AS typeName, [Group].name AS "
         "groupName, [Source].name AS sourceName FROM (([Recipe] INNER JOIN [Type] ON "
         "[Recipe].typeID = [Type].typeID) INNER JOIN [Group] ON [Type].groupID = "
         "[Group].groupID) LEFT OUTER JOIN [Source] ON [Recipe].sourceID = [Source].sourceID "
         "WHERE recipeID = 3;",
         {"3|čokoladna torta|Pecivo|Sladice|Knjiga"},
         true},
        {"recipe page head without source",
         "SELECT [Recipe].recipeID, [Recipe].title, [Type].name AS typeName, [Group].name AS "
         "groupName, [Source].name AS sourceName FROM (([Recipe] INNER JOIN [Type] ON "
         "[Recipe].typeID = [Type].typeID) INNER JOIN [Group] ON [Type].groupID = "
         "[Group].groupID) LEFT OUTER JOIN [Source] ON [Recipe].sourceID = [Source].sourceID "
         "WHERE recipeID = 2;",
         {"2|Korenčkova juha|Zelenjavne juhe|Juhe|NULL"},
         true},
        {"recipe page sections",
         "SELECT [RecipeSection].recipeID, [Section].sectionID, [Section].title, "
         "[Section].instructions, [RecipeSection].place FROM [RecipeSection] INNER JOIN "
         "[Section] ON [RecipeSection].sectionID = [Section].sectionID WHERE recipeID = 3 ORDER "
         "BY place;",
         {"3|2|Testo|Zamesimo.|1", "3|3|Krema|Stopimo ČOKOLADO.|2"},
         true},
        {"recipe page lines",
         "SELECT [SectionIngredient].sectionID, [SectionIngredient].amount, [Unit].name AS "
         "unitName, [Ingredient].name AS ingredientName FROM ([SectionIngredient] INNER JOIN "
         "[Ingredient] ON [SectionIngredient].ingredientID = [Ingredient].ingredientID) INNER "
         "JOIN [Unit] ON [SectionIngredient].unitID = [Unit].unitID WHERE sectionID = 4",
         {"4|200|g|krompir", "4|500|g|korenje"},
         false},
        {"recipe page lines in typing order",
         "SELECT [SectionIngredient].sectionID, [SectionIngredient].amount, [Unit].name AS "
         "unitName, [Ingredient].name AS ingredientName FROM (([RecipeSection] INNER JOIN "
         "[SectionIngredient] ON [RecipeSection].sectionID = [SectionIngredient].sectionID) INNER "
         "JOIN [Ingredient] ON [SectionIngredient].ingredientID = [Ingredient].ingredientID) "
         "INNER JOIN [Unit] ON [SectionIngredient].unitID = [Unit].unitID WHERE "
         "[RecipeSection].recipeID = 3 ORDER BY [SectionIngredient].sectionIngredientID;",
         {"2|300|g|moka", "3|2|žlica|Čokolada"},
         true},
        {"subgroup page head",
         "SELECT [Group].name AS groupName, [Type].name as typeName, [Type].description FROM "
         "[Type] INNER JOIN [Group] ON [Type].groupID = [Group].groupID WHERE [Type].typeID = 2;",
         {"Juhe|Zelenjavne juhe|NULL"},
         true},
        {"subgroup page rows",
         "SELECT title, recipeID FROM [Recipe] WHERE typeID = 2 ORDER BY title;",
         {"Korenčkova juha|2"},
         true},
        {"group page head",
         "SELECT name, description FROM [Group] WHERE groupID = 1;",
         {"Juhe|Tople juhe\r\nin enolončnice"},
         true},
        {"group page types",
         "SELECT typeID, name, description FROM [Type] WHERE groupID = 1 ORDER BY name;",
         {"1|Mesne juhe|NULL", "2|Zelenjavne juhe|NULL"},
         true},
        // the recipe editor
        {"editor sections",
         "SELECT sectionID FROM [RecipeSection] WHERE recipeID = 3 ORDER BY place;",
         {"2", "3"},
         true},
        {"editor recipe",
         "SELECT [Type].groupID, Recipe.* FROM [Recipe] INNER JOIN [Type] ON [Type].typeID = "
         "[Recipe].typeID WHERE recipeID = 3;",
         {"2|3|3|2|čokoladna torta"},
         true},
        {"editor section",
         "SELECT title, instructions FROM [Section] WHERE sectionID = 4;",
         {"NULL| "},
         true},
        {"editor section lines",
         "SELECT [SectionIngredient].amount, [Ingredient].ingredientID, [Ingredient].name AS "
         "ingredientName, [Unit].unitID, [Unit].name AS unitName FROM ([SectionIngredient] INNER "
         "JOIN [Ingredient] ON [Ingredient].ingredientID = [SectionIngredient].ingredientID) "
         "INNER JOIN [Unit] ON Unit.unitID = [SectionIngredient].unitID WHERE sectionID = 3;",
         {"2|4|Čokolada|2|žlica"},
         true},
        {"editor section lines in typing order",
         "SELECT amount, ingredientID, unitID FROM [SectionIngredient] WHERE sectionID = 4 ORDER "
         "BY sectionIngredientID;",
         {"500|2|1", "200|3|1"},
         true},
        {"fingerprint recipe",
         "SELECT typeID, sourceID, title FROM [Recipe] WHERE recipeID = 3;",
         {"3|2|čokoladna torta"},
         true},
        {"fingerprint sections",
         "SELECT [RecipeSection].place, [Section].title, [Section].instructions FROM "
         "[RecipeSection] INNER JOIN [Section] ON [RecipeSection].sectionID = [Section].sectionID "
         "WHERE [RecipeSection].recipeID = 3 ORDER BY [RecipeSection].place, "
         "[RecipeSection].recipeSectionID;",
         {"1|Testo|Zamesimo.", "2|Krema|Stopimo ČOKOLADO."},
         true},
        {"fingerprint lines",
         "SELECT [RecipeSection].place, [SectionIngredient].amount, [SectionIngredient].unitID, "
         "[SectionIngredient].ingredientID FROM [RecipeSection] INNER JOIN [SectionIngredient] ON "
         "[RecipeSection].sectionID = [SectionIngredient].sectionID WHERE "
         "[RecipeSection].recipeID = 3 ORDER BY [RecipeSection].place, "
         "[SectionIngredient].sectionIngredientID;",
         {"1|300|1|1", "2|2|2|4"},
         true},
        {"new recipe row", "SELECT * FROM [Recipe] WHERE recipeID = -1;", {}, true},
        {"new section row", "SELECT * FROM [Section] WHERE sectionID = 0;", {}, true},
        {"new link row", "SELECT * FROM [RecipeSection] WHERE recipeSectionID = 0;", {}, true},
        {"new line row",
         "SELECT * FROM [SectionIngredient] WHERE sectionIngredientID = 0;",
         {},
         true},
        {"editor sources",
         "SELECT * FROM [Source] ORDER BY name;",
         {"1|Babičina kuharica|NULL", "2|Knjiga|NULL"},
         true},
        {"editor units", "SELECT * FROM [Unit] ORDER BY name;", {"1|g|NULL", "2|žlica|NULL"}, true},
        {"editor ingredients filtered",
         "SELECT * FROM [Ingredient] WHERE name LIKE '%K%' ORDER BY name;", allIngredients, true},
        {"editor ingredients unfiltered",
         "SELECT * FROM [Ingredient] WHERE name LIKE '%%' ORDER BY name;", allIngredients, true},
        // record entry dialog
        {"load source", "SELECT * FROM [Source] WHERE sourceID = 2", {"2|Knjiga|NULL"}, true},
        {"load group", "SELECT * FROM [Group] WHERE groupID = 1", {groups[0]}, true},
        {"load type", "SELECT * FROM [Type] WHERE typeID = 1", {"1|1|Mesne juhe|NULL"}, true},
        {"load unit", "SELECT * FROM [Unit] WHERE unitID = 2", {"2|žlica|NULL"}, true},
        {"load ingredient",
         "SELECT * FROM [Ingredient] WHERE ingredientID = 4",
         {"4|Čokolada|NULL"},
         true},
        {"duplicate source",
         "SELECT * FROM [Source]WHERE name = 'knjiga' AND sourceID <> -1;",
         {"2|Knjiga|NULL"},
         true},
        {"same source edited",
         "SELECT * FROM [Source]WHERE name = 'Knjiga' AND sourceID <> 2;",
         {},
         true},
        {"duplicate group",
         "SELECT * FROM [Group]WHERE name = 'JUHE' AND groupID <> -1;",
         {groups[0]},
         true},
        {"duplicate type in group",
         "SELECT * FROM [Type]WHERE name = 'pecivo' AND typeID <> -1 AND groupID = 2;",
         {"3|2|Pecivo|NULL"},
         true},
        {"same name in another group",
         "SELECT * FROM [Type]WHERE name = 'pecivo' AND typeID <> -1 AND groupID = 1;",
         {},
         true},
        {"duplicate unit",
         "SELECT * FROM [Unit]WHERE name = 'ŽLICA' AND unitID <> -1;",
         {"2|žlica|NULL"},
         true},
        {"duplicate ingredient",
         "SELECT * FROM [Ingredient]WHERE name = 'čokolada' AND ingredientID <> -1;",
         {"4|Čokolada|NULL"},
         true},
        // list editor and replacement
        {"list sources",
         "SELECT * FROM [Source] WHERE name LIKE '%%' ORDER BY name;",
         {"1|Babičina kuharica|NULL", "2|Knjiga|NULL"},
         true},
        {"list units filtered",
         "SELECT * FROM [Unit] WHERE name LIKE '%Ž%' ORDER BY name;",
         {"2|žlica|NULL"},
         true},
        {"list ingredients",
         "SELECT * FROM [Ingredient] WHERE name LIKE '%ok%' ORDER BY name;",
         {"4|Čokolada|NULL", "1|moka|NULL"},
         true},
        {"recipes of source", "SELECT recipeID FROM [Recipe] WHERE sourceID = 1;", {"1"}, true},
        {"lines of unit",
         "SELECT sectionIngredientID FROM [SectionIngredient] WHERE unitID = 1;",
         {"1", "2", "3", "4"},
         false},
        {"lines of ingredient",
         "SELECT sectionIngredientID FROM [SectionIngredient] WHERE ingredientID = 1;",
         {"1", "4"},
         false},
        {"record to delete", "SELECT * FROM [Source] WHERE sourceID = 2;", {"2|Knjiga|NULL"}, true},
        {"replacement candidates",
         "SELECT * FROM [Unit] WHERE unitID <> 1 ORDER BY name;",
         {"2|žlica|NULL"},
         true},
        {"referring rows",
         "SELECT * FROM [SectionIngredient] WHERE unitID = 2",
         {"5|3|4|2|2"},
         true},
        // search: offered values
        {"offered groups",
         "SELECT DISTINCT [name] FROM [Group] WHERE [name] LIKE '%E%' ORDER BY [name];",
         {"Juhe", "Sladice"},
         true},
        {"offered types",
         "SELECT DISTINCT [name] FROM [Type] WHERE [name] LIKE '%JUHE%' ORDER BY [name];",
         {"Mesne juhe", "Zelenjavne juhe"},
         true},
        {"offered titles",
         "SELECT DISTINCT [title] FROM [Recipe] WHERE [title] LIKE '%juha%' ORDER BY [title];",
         {"Goveja juha", "Korenčkova juha"},
         true},
        {"offered section titles",
         "SELECT DISTINCT [title] FROM [Section] WHERE [title] LIKE '%%' ORDER BY [title];",
         {"Krema", "Testo"},
         true},
        {"offered ingredients",
         "SELECT DISTINCT [name] FROM [Ingredient] WHERE [name] LIKE '%o%' ORDER BY [name];",
         {"Čokolada", "korenje", "krompir", "moka"},
         true},
        {"offered method texts",
         "SELECT DISTINCT [name] FROM [Group] WHERE [groupID] = -1;",
         {},
         true},
    };
}

// Search queries: the generated text behind the base query.
QList<QPair<const char*, QString>> SearchTails() {
    return {
        {"search without criteria", QStringLiteral(" ORDER BY [title] ASC;")},
        {"search worked example",
         QStringLiteral(
             " WHERE (([Group].[name] LIKE '%juhe%')) AND ((recipeID IN (SELECT DISTINCT recipeID "
             "FROM (([SectionIngredient] INNER JOIN [RecipeSection] ON "
             "[SectionIngredient].sectionID = [RecipeSection].sectionID) INNER JOIN [Ingredient] "
             "ON [SectionIngredient].ingredientID = [Ingredient].ingredientID) WHERE "
             "[Ingredient].name LIKE '%korenje%')) OR (recipeID IN (SELECT DISTINCT recipeID FROM "
             "(([SectionIngredient] INNER JOIN [RecipeSection] ON [SectionIngredient].sectionID = "
             "[RecipeSection].sectionID) INNER JOIN [Ingredient] ON "
             "[SectionIngredient].ingredientID "
             "= [Ingredient].ingredientID) WHERE [Ingredient].name LIKE '%krompir%'))) ORDER BY "
             "[title] ASC;")},
        {"search title by key descending",
         QStringLiteral(" WHERE (([title] LIKE '%ČOKOLAD%')) ORDER BY [recipeID] DESC;")},
        {"search type any value by group",
         QStringLiteral(" WHERE (([Type].[name] LIKE '%mesne%') OR ([Type].[name] LIKE "
                        "'%pecivo%')) ORDER BY [Group].[name] ASC;")},
        {"search section title by type descending",
         QStringLiteral(" WHERE ((recipeID IN (SELECT DISTINCT recipeID FROM ([Section] INNER JOIN "
                        "[RecipeSection] ON [Section].sectionID = [RecipeSection].sectionID) WHERE "
                        "[Section].title LIKE '%KREM%'))) ORDER BY [Type].[name] DESC;")},
        {"search method text",
         QStringLiteral(" WHERE ((recipeID IN (SELECT DISTINCT recipeID FROM ([Section] INNER JOIN "
                        "[RecipeSection] ON [Section].sectionID = [RecipeSection].sectionID) WHERE "
                        "[Section].instructions LIKE '%čokolado%'))) ORDER BY [title] ASC;")},
    };
}

QMap<QString, QStringList> SearchRows() {
    const QString torta = QStringLiteral("čokoladna torta|3|Sladice|Pecivo");
    const QString goveja = QStringLiteral("Goveja juha|1|Juhe|Mesne juhe");
    const QString korenckova = QStringLiteral("Korenčkova juha|2|Juhe|Zelenjavne juhe");
    return {
        {"search without criteria", {torta, goveja, korenckova}},
        {"search worked example", {korenckova}},
        {"search title by key descending", {torta}},
        {"search type any value by group", {goveja, torta}},
        {"search section title by type descending", {torta}},
        {"search method text", {torta}},
    };
}

// The program's own statements, with the values that go beside their text: the rows they give on
// the small collection, sorted.
struct OwnCase {
    const char* name;
    QString sql;
    QVariantList values;
    QStringList rows;
};

QList<OwnCase> OwnCases() {
    return {
        // the section picker: the titled sections of a subgroup's recipes and their links
        {"titled sections of subgroup",
         SectionCatalogue::TitledSectionsSql,
         {3},
         {"3|2|1", "3|3|1"}},
        {"titled sections of subgroup without them", SectionCatalogue::TitledSectionsSql, {2}, {}},
    };
}

QStringList OwnRows(const QString& sql, const QVariantList& values) {
    modDatabase::DbConnection& connection = *modDatabase::Connection;
    SqlStatement statement(connection);
    if (!statement.Exec(connection.Translate(sql), values)) {
        QTest::qFail(qPrintable(statement.Failure().text), __FILE__, __LINE__);
        return {};
    }
    QStringList rows;
    while (statement.Next()) {
        QStringList fields;
        for (int i = 0; i < statement.ColumnCount(); ++i) {
            const QVariant value = statement.Value(i);
            fields << (value.isNull() ? QStringLiteral("NULL") : value.toString());
        }
        rows << fields.join(QLatin1Char('|'));
    }
    rows.sort();
    return rows;
}

}  // namespace

class TestSqlTexts : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { TestDatabase::IsolateEnvironment(); }

    void statementGivesTheSameRowsOnBothKinds_data() {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("sql");
        QTest::addColumn<QStringList>("expected");
        QTest::addColumn<bool>("ordered");
        for (const QString& kind : {TestDatabase::Sqlite, TestDatabase::Postgres}) {
            for (const Case& c : Cases()) {
                QTest::addRow("%s: %s", qPrintable(kind), c.name)
                    << kind << QString::fromUtf8(c.sql) << c.rows << c.ordered;
            }
            const QMap<QString, QStringList> searchRows = SearchRows();
            for (const auto& [name, tail] : SearchTails()) {
                QTest::addRow("%s: %s", qPrintable(kind), name)
                    << kind << SearchBase + tail << searchRows.value(QString::fromUtf8(name))
                    << true;
            }
        }
    }
    void statementGivesTheSameRowsOnBothKinds() {
        QFETCH(QString, kind);
        QFETCH(QString, sql);
        QFETCH(QStringList, expected);
        QFETCH(bool, ordered);
        if (m_loadedKind != kind) {
            TestDatabase::OpenFresh(kind);
            TestDatabase::LoadSmallCollection();
            m_loadedKind = kind;
        }
        QStringList rows = TestDatabase::Rows(sql);
        if (!ordered) {
            rows.sort();
        }
        QCOMPARE(rows, expected);
    }

    void ownStatementGivesTheSameRowsOnBothKinds_data() {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("sql");
        QTest::addColumn<QVariantList>("values");
        QTest::addColumn<QStringList>("expected");
        for (const QString& kind : {TestDatabase::Sqlite, TestDatabase::Postgres}) {
            for (const OwnCase& c : OwnCases()) {
                QTest::addRow("%s: %s", qPrintable(kind), c.name)
                    << kind << c.sql << c.values << c.rows;
            }
        }
    }
    void ownStatementGivesTheSameRowsOnBothKinds() {
        QFETCH(QString, kind);
        QFETCH(QString, sql);
        QFETCH(QVariantList, values);
        QFETCH(QStringList, expected);
        if (m_loadedKind != kind) {
            TestDatabase::OpenFresh(kind);
            TestDatabase::LoadSmallCollection();
            m_loadedKind = kind;
        }
        QCOMPARE(OwnRows(sql, values), expected);
    }

    // The statements that write: saving a recipe, replacing references, deleting.
    void writingStatements_data() { TestDatabase::AddKinds(); }
    void writingStatements() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        m_loadedKind.clear();
        TestDatabase::LoadSmallCollection();
        using modDatabase::GetRecordset;

        Recordset recipe =
            GetRecordset(QStringLiteral("SELECT * FROM [Recipe] WHERE recipeID = -1;"));
        recipe.AddNew();
        recipe.SetField(QStringLiteral("typeID"), 2);
        recipe.SetField(QStringLiteral("Title"), QStringLiteral("Ričet"));
        recipe.SetField(QStringLiteral("sourceID"), 1);
        recipe.Update();
        const qint32 recipeID = recipe.Long(QStringLiteral("recipeID"));
        QCOMPARE(recipeID, 4);
        Recordset section =
            GetRecordset(QStringLiteral("SELECT * FROM [Section] WHERE sectionID = 0;"));
        section.AddNew();
        section.SetField(QStringLiteral("Title"), QVariant());
        section.SetField(QStringLiteral("instructions"), QStringLiteral(" "));
        section.Update();
        Recordset link = GetRecordset(
            QStringLiteral("SELECT * FROM [RecipeSection] WHERE recipeSectionID = 0;"));
        link.AddNew();
        link.SetField(QStringLiteral("recipeID"), recipeID);
        link.SetField(QStringLiteral("sectionID"), section.Fields(QStringLiteral("sectionID")));
        link.SetField(QStringLiteral("place"), 1);
        link.Update();
        Recordset line = GetRecordset(
            QStringLiteral("SELECT * FROM [SectionIngredient] WHERE sectionIngredientID = 0;"));
        line.AddNew();
        line.SetField(QStringLiteral("sectionID"), section.Fields(QStringLiteral("sectionID")));
        line.SetField(QStringLiteral("ingredientID"), QStringLiteral("3"));
        line.SetField(QStringLiteral("amount"), QStringLiteral("250"));
        line.SetField(QStringLiteral("unitID"), QStringLiteral("2"));
        line.Update();
        QCOMPARE(TestDatabase::Rows(QStringLiteral("SELECT * FROM [SectionIngredient] WHERE "
                                                   "sectionID = 5;")),
                 QStringList{"6|5|3|2|250"});

        Recordset referring =
            GetRecordset(QStringLiteral("SELECT * FROM [SectionIngredient] WHERE unitID = 2"));
        for (; !referring.Eof(); referring.MoveNext()) {
            referring.SetField(QStringLiteral("unitID"), qint32(1));
            referring.Update();
        }
        Recordset unit = GetRecordset(QStringLiteral("SELECT * FROM [Unit] WHERE unitID = 2;"));
        unit.Delete();
        unit.Update();
        QCOMPARE(TestDatabase::Rows(QStringLiteral(
                     "SELECT sectionIngredientID FROM [SectionIngredient] WHERE unitID = 2;")),
                 QStringList());
        QCOMPARE(TestDatabase::Rows(QStringLiteral("SELECT * FROM [Unit] ORDER BY name;")),
                 QStringList{"1|g|NULL"});

        for (const char* sql : {"SELECT * FROM [SectionIngredient] WHERE sectionID = 2;",
                                "SELECT * FROM [RecipeSection] WHERE sectionID = 2;",
                                "SELECT * FROM [Section] WHERE sectionID = 2;",
                                "SELECT * FROM [Recipe] WHERE recipeID = 3;"}) {
            Recordset rs = GetRecordset(QString::fromUtf8(sql));
            modDatabase::DeleteRecordset(rs);
        }
        QCOMPARE(TestDatabase::Rows(QStringLiteral("SELECT recipeID, sectionID, place FROM "
                                                   "[RecipeSection] ORDER BY recipeSectionID;")),
                 (QStringList{"1|1|1", "3|3|2", "2|4|1", "4|5|1"}));
        QCOMPARE(
            TestDatabase::Rows(QStringLiteral("SELECT recipeID FROM [Recipe] ORDER BY recipeID;")),
            (QStringList{"1", "2", "4"}));
    }

private:
    QString m_loadedKind;
};

QTEST_MAIN(TestSqlTexts)
#include "tst_sqltexts.moc"
