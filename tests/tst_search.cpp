// The search window: the criteria and their values, the offered values, the search string, the
// results with their columns and sort order, a failing query, showing a result in the main
// window, closing; and morvena-tool search.
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QProcess>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTreeView>
#include <QTreeWidget>

#include "core/AppError.h"
#include "core/Windows1250.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "core/registry/modRegistry.h"
#include "core/ui/ColumnFit.h"
#include "core/ui/Controls.h"
#include "core/ui/UiServices.h"
#include "display/modDisplay.h"
#include "main/frmMain.h"
#include "search/SearchQuery.h"
#include "search/frmFind.h"
#include "tests/support/MessageRecorder.h"
#include "tests/support/TestDatabase.h"

namespace {

const QString LogName = QStringLiteral("errors.log");

const QString WorkedExample = QStringLiteral(
    "SELECT [title], [recipeID], [Group].[name] AS [groupName], [Type].[name] AS typeName FROM "
    "(([Recipe] INNER JOIN [Type] ON [Recipe].[typeID] = [Type].[typeID]) INNER JOIN [Group] ON "
    "[Group].[groupID] = [Type].[groupID])  WHERE (([Group].[name] LIKE '%juhe%')) AND "
    "((recipeID IN (SELECT DISTINCT recipeID FROM (([SectionIngredient] INNER JOIN "
    "[RecipeSection] ON [SectionIngredient].sectionID = [RecipeSection].sectionID) INNER JOIN "
    "[Ingredient] ON [SectionIngredient].ingredientID = [Ingredient].ingredientID) WHERE "
    "[Ingredient].name LIKE '%korenje%')) OR (recipeID IN (SELECT DISTINCT recipeID FROM "
    "(([SectionIngredient] INNER JOIN [RecipeSection] ON [SectionIngredient].sectionID = "
    "[RecipeSection].sectionID) INNER JOIN [Ingredient] ON [SectionIngredient].ingredientID = "
    "[Ingredient].ingredientID) WHERE [Ingredient].name LIKE '%krompir%'))) ORDER BY [title] "
    "ASC;");

// The rows of the small collection as the result list shows them.
const QString R1 = QStringLiteral("Goveja juha|1|Juhe|Mesne juhe");
const QString R2 = QStringLiteral("Korenčkova juha|2|Juhe|Zelenjavne juhe");
const QString R3 = QStringLiteral("čokoladna torta|3|Sladice|Pecivo");

QByteArray FileBytes(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

template <class T>
T* Control(QWidget* window, const char* name) {
    T* control = window->findChild<T*>(QString::fromLatin1(name));
    if (!control) {
        qFatal("no control %s", name);
    }
    return control;
}

QTreeWidget* List(QWidget* window, const char* name) { return Control<QTreeWidget>(window, name); }

// The result list shows a model of rows; the other lists hold one item per row. Both are read
// through the view's model, row by row.
QTreeView* Results(QWidget* window) { return Control<QTreeView>(window, "lstResults"); }
int RowCount(const QTreeView* list) { return list->model()->rowCount(); }
QString Text(const QTreeView* list, int row, int column, int role = Qt::DisplayRole) {
    return list->model()->data(list->model()->index(row, column), role).toString();
}
int Alignment(const QTreeView* list, int row, int column) {
    return list->model()->data(list->model()->index(row, column), Qt::TextAlignmentRole).toInt();
}

QStringList Texts(const QTreeView* list, int column = 0) {
    QStringList texts;
    for (int i = 0; i < RowCount(list); ++i) {
        texts << Text(list, i, column);
    }
    return texts;
}

QStringList Rows(const QTreeView* list) {
    QStringList rows;
    for (int i = 0; i < RowCount(list); ++i) {
        QStringList fields;
        for (int c = 0; c < list->model()->columnCount(); ++c) {
            fields << Text(list, i, c);
        }
        rows << fields.join(QLatin1Char('|'));
    }
    return rows;
}

QString Key(const QTreeWidgetItem* item) { return modGeneral::ItemKey(item); }
QString Key(const QModelIndex& node) { return modGeneral::ItemKey(node); }

// Mouse actions on a list's entry or on an empty place below the entries.
QPoint EntryPoint(QTreeView* list, int row) {
    return list->visualRect(list->model()->index(row, 0)).center();
}
QPoint EmptyPoint(QTreeView* list) { return QPoint(10, list->viewport()->height() - 5); }
void Click(QTreeView* list, const QPoint& point) {
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, point);
}
// As the system delivers it: press and release, then the second press as a double click.
void DoubleClick(QTreeView* list, const QPoint& point) {
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, point);
    QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, point);
    QTest::mouseRelease(list->viewport(), Qt::LeftButton, {}, point);
}
void ClickHeading(QTreeView* list, int column) {
    QHeaderView* header = list->header();
    QTest::mouseClick(
        header->viewport(), Qt::LeftButton, {},
        QPoint(header->sectionViewportPosition(column) + header->sectionSize(column) / 2,
               header->height() / 2));
}

// One criterion of a search as the user composes it.
struct Entry {
    int criterion;
    QStringList values;
    int match;
};

struct Search {
    const char* name;
    QList<Entry> entries;
    int overall;
    QList<int> headingClicks;  // columns 0..3 clicked after "Išči", in order
    QStringList expected;
};

}  // namespace

class TestSearch : public QObject {
    Q_OBJECT

private:
    QPointer<frmFind> m_window;
    std::unique_ptr<MessageRecorder> m_messages;

    // A new search window, shown, on a fresh database of the kind with the small collection.
    frmFind* Open(const QString& kind, bool collection = true) {
        TestDatabase::OpenFresh(kind);
        if (collection) {
            TestDatabase::LoadSmallCollection();
        }
        return OpenWindow();
    }
    frmFind* OpenWindow() {
        m_window = new frmFind;
        m_window->show();
        if (!QTest::qWaitForWindowExposed(m_window)) {
            qFatal("the search window was not shown");
        }
        return m_window;
    }

    static void Choose(frmFind* w, int criterion) {
        QTreeWidget* criteria = List(w, "lstCriteria");
        Click(criteria, EntryPoint(criteria, criterion));
    }
    static void AddValue(frmFind* w, const QString& value) {
        Control<QLineEdit>(w, "txtFilter")->setText(value);
        Control<QPushButton>(w, "cmdAdd")->click();
    }
    static void Find(frmFind* w) { Control<QPushButton>(w, "cmdFind")->click(); }
    static void Compose(frmFind* w, const QList<Entry>& entries, int overall) {
        for (const Entry& entry : entries) {
            Choose(w, entry.criterion);
            for (const QString& value : entry.values) {
                AddValue(w, value);
            }
            Control<QComboBox>(w, "cmbField")->setCurrentIndex(entry.match);
        }
        Control<QComboBox>(w, "cmbCondition")->setCurrentIndex(overall);
    }
    static QString SearchString(frmFind* w, int criterion) {
        return List(w, "lstCriteria")->topLevelItem(criterion)->text(1);
    }
    static QString Log() { return QString::fromUtf8(FileBytes(LogName)); }

    static QList<Search> Searches() {
        using namespace SearchQuery;
        return {
            {"no criteria", {}, 0, {}, {R3, R1, R2}},
            {"worked example",
             {{Group, {"juhe"}, 0}, {Ingredient, {"korenje", "krompir"}, 1}},
             0,
             {},
             {R2}},
            {"ingredient", {{Ingredient, {"moka"}, 0}}, 0, {}, {R3, R1}},
            {"ingredient in capitals", {{Ingredient, {"ČOKOLAD"}, 0}}, 0, {}, {R3}},
            {"title in capitals", {{RecipeTitle, {"ČOKOLAD"}, 0}}, 0, {}, {R3}},
            {"type", {{Type, {"juhe"}, 0}}, 0, {}, {R1, R2}},
            {"group", {{Group, {"sladice"}, 0}}, 0, {}, {R3}},
            {"two ingredients, all", {{Ingredient, {"moka", "čokolada"}, 0}}, 0, {}, {R3}},
            {"two ingredients, at least one",
             {{Ingredient, {"krompir", "Čokolada"}, 1}},
             0,
             {},
             {R3, R2}},
            {"two ingredients, all, none", {{Ingredient, {"moka", "krompir"}, 0}}, 0, {}, {}},
            {"empty section title", {{SectionTitle, {""}, 0}}, 0, {}, {R3}},
            {"section title", {{SectionTitle, {"kre"}, 0}}, 0, {}, {R3}},
            {"method text with a blank", {{Instructions, {" "}, 0}}, 0, {}, {R3, R2}},
            {"method text in another case", {{Instructions, {"čokolado"}, 0}}, 0, {}, {R3}},
            {"empty method text", {{Instructions, {""}, 0}}, 0, {}, {R3, R1, R2}},
            {"all criteria", {{RecipeTitle, {"juha"}, 0}, {Ingredient, {"moka"}, 0}}, 0, {}, {R1}},
            {"at least one criterion",
             {{RecipeTitle, {"juha"}, 0}, {Ingredient, {"moka"}, 0}},
             1,
             {},
             {R3, R1, R2}},
            {"no match", {{RecipeTitle, {"pica"}, 0}}, 0, {}, {}},
            {"underscore wildcard", {{RecipeTitle, {"Gov_ja"}, 0}}, 0, {}, {R1}},
            {"percent wildcard", {{RecipeTitle, {"k%a"}, 0}}, 0, {}, {R3, R2}},
            {"keys descending", {}, 0, {1, 1}, {R3, R2, R1}},
            {"titles descending", {}, 0, {0}, {R2, R1, R3}},
            {"types descending in one group", {{Group, {"Juhe"}, 0}}, 0, {3, 3}, {R2, R1}},
            {"groups descending", {{Ingredient, {"moka"}, 0}}, 0, {2, 2}, {R3, R1}},
        };
    }

private Q_SLOTS:
    void initTestCase() {
        TestDatabase::IsolateEnvironment();
        QVERIFY(QFile::exists(qEnvironmentVariable("MORVENA_TOOL")));
    }
    void init() {
        QFile::remove(LogName);
        QFile::remove(modRegistry::StoreFile(true));
        m_messages = std::make_unique<MessageRecorder>();
    }
    void cleanup() {
        delete m_window;
        m_messages.reset();
        modDatabase::Connection.reset();
        modGeneral::TempFilename.clear();
    }

    // ---- the criteria ------------------------------------------------------------------------

    void captionsOfTheControls() {
        frmFind* w = Open(TestDatabase::Sqlite);
        QCOMPARE(w->objectName(), QStringLiteral("frmFind"));
        QCOMPARE(w->windowTitle(), QStringLiteral("Iskanje"));
        QVERIFY(!w->isModal());
        QCOMPARE(Control<QGroupBox>(w, "frmCriteria")->title(), QStringLiteral("Kriteriji"));
        QCOMPARE(Control<QGroupBox>(w, "frmField")->title(), QStringLiteral("Skupina"));
        QCOMPARE(Control<QGroupBox>(w, "frmResults")->title(), QStringLiteral("Rezultati"));
        const QList<QPair<const char*, const char*>> labels{
            {"lblCondition", "Rezultati naj zadoščajo:"},
            {"lblField", "Išči:"},
            {"lblFilter", "Filter:"},
            {"lblAvailable", "Nabor vrednosti:"},
            {"lblSelected", "Iskane vrednosti:"}};
        for (const auto& [name, text] : labels) {
            QCOMPARE(Control<QLabel>(w, name)->text(), QString::fromUtf8(text));
        }
        const QList<QPair<const char*, const char*>> buttons{{"cmdAdd", "Dodaj"},
                                                             {"cmdDelete", "Odstrani"},
                                                             {"cmdFind", "Išči"},
                                                             {"cmdCancel", "Command1"}};
        for (const auto& [name, text] : buttons) {
            QCOMPARE(Control<QPushButton>(w, name)->text(), QString::fromUtf8(text));
        }
        QVERIFY(!Control<QPushButton>(w, "cmdCancel")->isVisible());
        QComboBox* condition = Control<QComboBox>(w, "cmbCondition");
        QCOMPARE(condition->count(), 2);
        QCOMPARE(condition->itemText(0), QStringLiteral("vsem pogojem"));
        QCOMPARE(condition->itemText(1), QStringLiteral("vsaj enemu pogoju!"));
        QCOMPARE(condition->currentIndex(), 0);
        QComboBox* field = Control<QComboBox>(w, "cmbField");
        QCOMPARE(field->count(), 2);
        QCOMPARE(field->itemText(0), QStringLiteral("vse vrednosti"));
        QCOMPARE(field->itemText(1), QStringLiteral("vsaj eno vrednost!"));
        QCOMPARE(field->currentIndex(), 0);
        QCOMPARE(Control<QLineEdit>(w, "txtFilter")->text(), QString());
        QCOMPARE(w->SortColumn(), qint16(1));
        QCOMPARE(w->LastQuery(), QString());
        for (const QStringList& values : w->CriterionValues()) {
            QVERIFY(values.isEmpty());
        }
        for (const qint16 match : w->CriterionMatch()) {
            QCOMPARE(match, qint16(0));
        }
    }

    void listViewsColumns() {
        frmFind* w = Open(TestDatabase::Sqlite);
        QTreeWidget* criteria = List(w, "lstCriteria");
        QCOMPARE(criteria->columnCount(), 2);
        QVERIFY(criteria->isHeaderHidden());
        // the given widths; the list fits them to its width (tst_windowsfit)
        QCOMPARE(ColumnFit::Given(criteria, 0), Controls::TextPixels(1300, criteria->font()));
        QCOMPARE(ColumnFit::Given(criteria, 1), Controls::TextPixels(7150, criteria->font()));
        for (const char* name : {"lstAvailable", "lstSelected"}) {
            QTreeWidget* list = List(w, name);
            QCOMPARE(list->columnCount(), 1);
            QCOMPARE(ColumnFit::Given(list, 0), Controls::TextPixels(3900, list->font()));
        }
        QTreeView* results = Results(w);
        QVERIFY(!results->isHeaderHidden());
        QVERIFY(!results->isSortingEnabled());
        QVERIFY(results->header()->sectionsClickable());
        const QStringList headings{"Naslov recepta", "Št.", "Skupina", "Podskupina"};
        const QList<int> widths{3770, 500, 2000, 2000};
        QCOMPARE(results->model()->columnCount(), 4);
        for (int c = 0; c < 4; ++c) {
            QCOMPARE(results->model()->headerData(c, Qt::Horizontal).toString(), headings[c]);
            QCOMPARE(ColumnFit::Given(results, c),
                     c == 1 ? qMax(Controls::TextPixels(500, results->font()),
                                   Controls::FitPixels(results, QStringLiteral("999999")))
                            : Controls::TextPixels(widths[c], results->font()));
            const int alignment =
                results->model()->headerData(c, Qt::Horizontal, Qt::TextAlignmentRole).toInt() &
                Qt::AlignHorizontal_Mask;
            QCOMPARE(alignment, c == 0 ? int(Qt::AlignLeft) : int(Qt::AlignHCenter));
        }
        QCOMPARE(RowCount(results), 0);
    }

    void sixCriteriaWithKeysAndTexts() {
        frmFind* w = Open(TestDatabase::Sqlite);
        QTreeWidget* criteria = List(w, "lstCriteria");
        QCOMPARE(Texts(criteria), (QStringList{"Skupina", "Podskupina", "Naslov recepta",
                                               "Naslov razdelka", "Sestavine", "Potek dela"}));
        QStringList keys;
        for (int i = 0; i < criteria->topLevelItemCount(); ++i) {
            keys << Key(criteria->topLevelItem(i));
        }
        QCOMPARE(keys, (QStringList{"Group", "Type", "RecipeTitle", "SectionTitle", "Ingredient",
                                    "Instructions"}));
        QCOMPARE(Texts(criteria, 1), QStringList(6, QString()));
        QCOMPARE(Key(criteria->currentItem()), QStringLiteral("Group"));
        QCOMPARE(Texts(List(w, "lstSelected")), QStringList());
    }

    void offeredValuesOfEveryCriterion_data() { TestDatabase::AddKinds(); }
    void offeredValuesOfEveryCriterion() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        TestDatabase::LoadSmallCollection();
        // A second section titled Testo is offered once.
        TestDatabase::Insert("Section", {{"title", "Testo"}, {"instructions", "x"}});
        frmFind* w = OpenWindow();
        QTreeWidget* available = List(w, "lstAvailable");
        // On opening: every group name.
        QCOMPARE(Texts(available), (QStringList{"Juhe", "Sladice"}));
        const QList<QStringList> expected{{"Juhe", "Sladice"},
                                          {"Mesne juhe", "Pecivo", "Zelenjavne juhe"},
                                          {"čokoladna torta", "Goveja juha", "Korenčkova juha"},
                                          {"Krema", "Testo"},
                                          {"Čokolada", "korenje", "krompir", "moka"},
                                          {}};
        QGroupBox* field = Control<QGroupBox>(w, "frmField");
        for (int criterion = 5; criterion >= 0; --criterion) {
            Choose(w, criterion);
            QCOMPARE(field->title(), SearchQuery::Label(criterion));
            QCOMPARE(Texts(available), expected[criterion]);
        }
    }

    void offeredValuesFollowEveryKeystroke_data() { TestDatabase::AddKinds(); }
    void offeredValuesFollowEveryKeystroke() {
        QFETCH(QString, kind);
        frmFind* w = Open(kind);
        QTreeWidget* available = List(w, "lstAvailable");
        QLineEdit* filter = Control<QLineEdit>(w, "txtFilter");
        Choose(w, SearchQuery::Ingredient);
        filter->setFocus();
        const QList<QPair<QString, QStringList>> steps{
            {"k", {"Čokolada", "korenje", "krompir", "moka"}},
            {"ko", {"Čokolada", "korenje"}},
            {"kor", {"korenje"}},
            {"kor'", {"korenje"}},
            {"kors", {}},
        };
        for (const auto& [typed, offered] : steps) {
            QTest::keyClick(filter, typed.back().toLatin1());
            QCOMPARE(filter->text(), QString(typed).remove(QLatin1Char('\'')));
            QCOMPARE(Texts(available), offered);
        }
        QTest::keyClick(filter, Qt::Key_Backspace);
        QCOMPARE(filter->text(), QStringLiteral("kor"));
        QCOMPARE(Texts(available), QStringList{"korenje"});
        // An apostrophe typed in the middle goes at once; the cursor stays where it was.
        filter->setCursorPosition(1);
        QTest::keyClick(filter, '\'');
        QCOMPARE(filter->text(), QStringLiteral("kor"));
        QCOMPARE(filter->cursorPosition(), 1);
        QTest::keyClick(filter, 'r');
        QCOMPARE(filter->text(), QStringLiteral("kror"));
        QCOMPARE(Texts(available), QStringList());
        // Letter case does not matter, for č and Č too.
        filter->setText(QStringLiteral("ČO"));
        QCOMPARE(Texts(available), QStringList{"Čokolada"});
        filter->setText(QStringLiteral("čO"));
        QCOMPARE(Texts(available), QStringList{"Čokolada"});
        Choose(w, SearchQuery::RecipeTitle);
        QCOMPARE(Texts(available), QStringList{"čokoladna torta"});
        filter->setText(QStringLiteral("ČOKOLADA"));
        QCOMPARE(Texts(available), QStringList());
        filter->setText(QStringLiteral("JUHA"));
        QCOMPARE(Texts(available), (QStringList{"Goveja juha", "Korenčkova juha"}));
        // A pasted text loses every apostrophe.
        filter->setText(QStringLiteral("'ju'ha'"));
        QCOMPARE(filter->text(), QStringLiteral("juha"));
        QCOMPARE(Texts(available), (QStringList{"Goveja juha", "Korenčkova juha"}));
        QCOMPARE(m_messages->Texts(), QStringList());
    }

    void methodTextOffersNothing() {
        frmFind* w = Open(TestDatabase::Sqlite);
        TestDatabase::Insert("Group", {{"name", "Skuhamo"}});
        Choose(w, SearchQuery::Instructions);
        QTreeWidget* available = List(w, "lstAvailable");
        QCOMPARE(Texts(available), QStringList());
        for (const char* filter : {"", "Skuhamo", "a", "%"}) {
            Control<QLineEdit>(w, "txtFilter")->setText(QString::fromUtf8(filter));
            QCOMPARE(Texts(available), QStringList());
        }
        // Its values come only from "Dodaj".
        AddValue(w, QStringLiteral("Skuhamo"));
        QCOMPARE(Texts(List(w, "lstSelected")), QStringList{"Skuhamo"});
        QCOMPARE(SearchString(w, SearchQuery::Instructions), QStringLiteral("'Skuhamo'"));
    }

    void doubleClickAddsTheOfferedValue() {
        frmFind* w = Open(TestDatabase::Sqlite);
        Choose(w, SearchQuery::Ingredient);
        QTreeWidget* available = List(w, "lstAvailable");
        QTreeWidget* selected = List(w, "lstSelected");
        // Nothing selected: a double click on empty space adds nothing.
        DoubleClick(available, EmptyPoint(available));
        QCOMPARE(Texts(selected), QStringList());
        DoubleClick(available, EntryPoint(available, 3));
        QCOMPARE(Texts(selected), QStringList{"moka"});
        QCOMPARE(SearchString(w, SearchQuery::Ingredient), QStringLiteral("'moka'"));
        DoubleClick(available, EntryPoint(available, 0));
        DoubleClick(available, EntryPoint(available, 3));
        QCOMPARE(Texts(selected), (QStringList{"moka", "Čokolada", "moka"}));
        QCOMPARE(SearchString(w, SearchQuery::Ingredient),
                 QStringLiteral("'moka' in 'Čokolada' in 'moka'"));
        // A double click on empty space with an entry selected before: the list keeps its
        // selected entry, and the double click adds it.
        Click(available, EntryPoint(available, 1));
        DoubleClick(available, EmptyPoint(available));
        QCOMPARE(Texts(selected),
                 (QStringList{"moka", "Čokolada", "moka", available->topLevelItem(1)->text(0)}));
        // A single click adds nothing.
        Click(available, EntryPoint(available, 2));
        QCOMPARE(Texts(selected).size(), 4);
        QVERIFY(!QFile::exists(LogName));
    }

    void addTakesTheFilterTextAsItIs() {
        frmFind* w = Open(TestDatabase::Sqlite);
        QTreeWidget* selected = List(w, "lstSelected");
        Choose(w, SearchQuery::RecipeTitle);
        Control<QPushButton>(w, "cmdAdd")->click();
        QCOMPARE(Texts(selected), QStringList{QString()});
        QCOMPARE(SearchString(w, SearchQuery::RecipeTitle), QStringLiteral("''"));
        AddValue(w, QStringLiteral("juha"));
        AddValue(w, QStringLiteral("juha"));
        AddValue(w, QStringLiteral(" Velike Črke "));
        QCOMPARE(Texts(selected), (QStringList{"", "juha", "juha", " Velike Črke "}));
        QCOMPARE(SearchString(w, SearchQuery::RecipeTitle),
                 QStringLiteral("'' in 'juha' in 'juha' in ' Velike Črke '"));
        // A typed apostrophe never reaches a value.
        AddValue(w, QStringLiteral("O'Brien"));
        QCOMPARE(Texts(selected).last(), QStringLiteral("OBrien"));
        // The empty value counts in the search: every recipe has a title.
        Find(w);
        QCOMPARE(Rows(Results(w)), QStringList());
        while (selected->topLevelItemCount() > 1) {
            delete selected->topLevelItem(1);
        }
        Find(w);
        QCOMPARE(Rows(Results(w)), (QStringList{R3, R1, R2}));
        QVERIFY(w->LastQuery().contains(QStringLiteral(" WHERE (([title] LIKE '%%')) ORDER")));
    }

    void deleteRemovesTheSelectedValue() {
        frmFind* w = Open(TestDatabase::Sqlite);
        QTreeWidget* selected = List(w, "lstSelected");
        QPushButton* remove = Control<QPushButton>(w, "cmdDelete");
        Choose(w, SearchQuery::Ingredient);
        for (const char* value : {"a", "b", "c", "d"}) {
            AddValue(w, QString::fromLatin1(value));
        }
        // Nothing selected: nothing is removed, the search string is written again.
        List(w, "lstCriteria")->topLevelItem(SearchQuery::Ingredient)->setText(1, "stale");
        QVERIFY(selected->selectedItems().isEmpty());
        remove->click();
        QCOMPARE(Texts(selected), (QStringList{"a", "b", "c", "d"}));
        QCOMPARE(SearchString(w, SearchQuery::Ingredient),
                 QStringLiteral("'a' in 'b' in 'c' in 'd'"));
        // The selected one goes; the first that remains is selected.
        Click(selected, EntryPoint(selected, 2));
        remove->click();
        QCOMPARE(Texts(selected), (QStringList{"a", "b", "d"}));
        QCOMPARE(SearchString(w, SearchQuery::Ingredient), QStringLiteral("'a' in 'b' in 'd'"));
        QCOMPARE(selected->selectedItems().size(), 1);
        QCOMPARE(selected->selectedItems().first()->text(0), QStringLiteral("a"));
        remove->click();
        QCOMPARE(Texts(selected), (QStringList{"b", "d"}));
        remove->click();
        remove->click();
        QCOMPARE(Texts(selected), QStringList());
        QCOMPARE(SearchString(w, SearchQuery::Ingredient), QString());
        remove->click();
        QCOMPARE(Texts(selected), QStringList());
        QVERIFY(!QFile::exists(LogName));
    }

    void searchStringShowsTheValuesAndTheMatchChoice() {
        frmFind* w = Open(TestDatabase::Sqlite);
        QComboBox* field = Control<QComboBox>(w, "cmbField");
        Choose(w, SearchQuery::Ingredient);
        AddValue(w, QStringLiteral("moka"));
        QCOMPARE(SearchString(w, SearchQuery::Ingredient), QStringLiteral("'moka'"));
        AddValue(w, QStringLiteral("jajca"));
        QCOMPARE(SearchString(w, SearchQuery::Ingredient), QStringLiteral("'moka' in 'jajca'"));
        field->setCurrentIndex(1);
        QCOMPARE(SearchString(w, SearchQuery::Ingredient), QStringLiteral("'moka' ali 'jajca'"));
        field->setCurrentIndex(0);
        QCOMPARE(SearchString(w, SearchQuery::Ingredient), QStringLiteral("'moka' in 'jajca'"));
        // Shown before it is stored: the stored values change only when the criterion is left.
        QVERIFY(w->CriterionValues()[SearchQuery::Ingredient].isEmpty());
        Choose(w, SearchQuery::Group);
        QCOMPARE(w->CriterionValues()[SearchQuery::Ingredient], (QStringList{"moka", "jajca"}));
        QCOMPARE(SearchString(w, SearchQuery::Ingredient), QStringLiteral("'moka' in 'jajca'"));
        QCOMPARE(SearchString(w, SearchQuery::Group), QString());
        AddValue(w, QString());
        QCOMPARE(SearchString(w, SearchQuery::Group), QStringLiteral("''"));
        field->setCurrentIndex(1);
        QCOMPARE(SearchString(w, SearchQuery::Group), QStringLiteral("''"));
        AddValue(w, QStringLiteral("x"));
        QCOMPARE(SearchString(w, SearchQuery::Group), QStringLiteral("'' ali 'x'"));
    }

    void switchingCriteriaKeepsValuesAndMatchChoice() {
        frmFind* w = Open(TestDatabase::Sqlite);
        QComboBox* field = Control<QComboBox>(w, "cmbField");
        QTreeWidget* selected = List(w, "lstSelected");
        QGroupBox* frame = Control<QGroupBox>(w, "frmField");
        Choose(w, SearchQuery::Type);
        QCOMPARE(frame->title(), QStringLiteral("Podskupina"));
        AddValue(w, QStringLiteral("juhe"));
        AddValue(w, QStringLiteral("pecivo"));
        field->setCurrentIndex(1);
        Choose(w, SearchQuery::SectionTitle);
        QCOMPARE(frame->title(), QStringLiteral("Naslov razdelka"));
        QCOMPARE(Texts(selected), QStringList());
        QCOMPARE(field->currentIndex(), 0);
        AddValue(w, QStringLiteral("testo"));
        Choose(w, SearchQuery::Type);
        QCOMPARE(frame->title(), QStringLiteral("Podskupina"));
        QCOMPARE(Texts(selected), (QStringList{"juhe", "pecivo"}));
        QCOMPARE(field->currentIndex(), 1);
        QCOMPARE(SearchString(w, SearchQuery::Type), QStringLiteral("'juhe' ali 'pecivo'"));
        QCOMPARE(SearchString(w, SearchQuery::SectionTitle), QStringLiteral("'testo'"));
        Choose(w, SearchQuery::SectionTitle);
        QCOMPARE(Texts(selected), QStringList{"testo"});
        QCOMPARE(field->currentIndex(), 0);
        QCOMPARE(w->CriterionValues()[SearchQuery::Type], (QStringList{"juhe", "pecivo"}));
        QCOMPARE(w->CriterionMatch()[SearchQuery::Type], qint16(1));
        QCOMPARE(w->CriterionMatch()[SearchQuery::SectionTitle], qint16(0));
        // The keyboard moves between criteria too.
        QTreeWidget* criteria = List(w, "lstCriteria");
        criteria->setFocus();
        QTest::keyClick(criteria, Qt::Key_Up);
        QCOMPARE(frame->title(), QStringLiteral("Naslov recepta"));
        QTest::keyClick(criteria, Qt::Key_Up);
        QCOMPARE(Texts(selected), (QStringList{"juhe", "pecivo"}));
        // The filter stays and narrows the values offered for the criterion chosen.
        Control<QLineEdit>(w, "txtFilter")->setText(QStringLiteral("ju"));
        Choose(w, SearchQuery::Group);
        QCOMPARE(Texts(List(w, "lstAvailable")), QStringList{"Juhe"});
    }

    void filterBoxSelectsItsTextOnFocus() {
        frmFind* w = Open(TestDatabase::Sqlite);
        QLineEdit* filter = Control<QLineEdit>(w, "txtFilter");
        QApplication::setActiveWindow(w);
        QVERIFY(QTest::qWaitForWindowActive(w));
        filter->setText(QStringLiteral("korenje"));
        List(w, "lstCriteria")->setFocus(Qt::TabFocusReason);
        filter->setFocus(Qt::TabFocusReason);
        QCOMPARE(filter->selectedText(), QStringLiteral("korenje"));
        List(w, "lstCriteria")->setFocus(Qt::TabFocusReason);
        QTest::mouseClick(filter, Qt::LeftButton, {}, QPoint(3, filter->height() / 2));
        QCOMPARE(filter->selectedText(), QStringLiteral("korenje"));
    }

    // ---- the results -------------------------------------------------------------------------

    void searchRunsOnlyOnRequest() {
        frmFind* w = Open(TestDatabase::Sqlite);
        QTreeView* results = Results(w);
        Choose(w, SearchQuery::RecipeTitle);
        AddValue(w, QStringLiteral("juha"));
        Choose(w, SearchQuery::Ingredient);
        Control<QComboBox>(w, "cmbCondition")->setCurrentIndex(1);
        Control<QLineEdit>(w, "txtFilter")->setText(QStringLiteral("mo"));
        DoubleClick(List(w, "lstAvailable"), EntryPoint(List(w, "lstAvailable"), 0));
        QCOMPARE(RowCount(results), 0);
        QCOMPARE(w->LastQuery(), QString());
        Find(w);
        QCOMPARE(Rows(results), (QStringList{R3, R1, R2}));
        // Editing again leaves the results as they are.
        Control<QComboBox>(w, "cmbCondition")->setCurrentIndex(0);
        QCOMPARE(Rows(results), (QStringList{R3, R1, R2}));
        Find(w);
        QCOMPARE(Rows(results), QStringList{R1});
    }

    void resultColumnsAndAlignment_data() { TestDatabase::AddKinds(); }
    void resultColumnsAndAlignment() {
        QFETCH(QString, kind);
        frmFind* w = Open(kind);
        QTreeView* results = Results(w);
        Find(w);
        QCOMPARE(w->LastQuery(),
                 SearchQuery::BaseQuery() + QStringLiteral(" ORDER BY [title] ASC;"));
        QCOMPARE(Rows(results), (QStringList{R3, R1, R2}));
        for (int i = 0; i < RowCount(results); ++i) {
            QCOMPARE(Alignment(results, i, 0) & Qt::AlignHorizontal_Mask, int(Qt::AlignLeft));
            for (int c = 1; c < 4; ++c) {
                QCOMPARE(Alignment(results, i, c) & Qt::AlignHorizontal_Mask,
                         int(Qt::AlignHCenter));
            }
        }
        QCOMPARE(w->cursor().shape(), Qt::ArrowCursor);
        QCOMPARE(m_messages->Texts(), QStringList());
    }

    void searchesGiveTheSameRowsOnBothKinds_data() {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<int>("search");
        const QList<Search> searches = Searches();
        for (const QString& kind : {TestDatabase::Sqlite, TestDatabase::Postgres}) {
            for (int i = 0; i < searches.size(); ++i) {
                QTest::addRow("%s: %s", qPrintable(kind), searches[i].name) << kind << i;
            }
        }
    }
    void searchesGiveTheSameRowsOnBothKinds() {
        QFETCH(QString, kind);
        QFETCH(int, search);
        const Search s = Searches()[search];
        // One fresh database per kind, shared by its searches.
        static QString openKind;
        if (openKind != kind) {
            TestDatabase::OpenFresh(kind);
            TestDatabase::LoadSmallCollection();
            openKind = kind;
        } else {
            modDatabase::OpenConnection();
        }
        frmFind* w = OpenWindow();
        Compose(w, s.entries, s.overall);
        Find(w);
        for (const int column : s.headingClicks) {
            ClickHeading(Results(w), column);
        }
        QCOMPARE(Rows(Results(w)), s.expected);
        QCOMPARE(m_messages->Texts(), QStringList());
        QVERIFY(!QFile::exists(LogName));
    }

    void workedExampleRunsTheDesignedText() {
        frmFind* w = Open(TestDatabase::Sqlite);
        Compose(w,
                {{SearchQuery::Group, {"juhe"}, 0},
                 {SearchQuery::Ingredient, {"korenje", "krompir"}, 1}},
                0);
        Find(w);
        QCOMPARE(w->LastQuery(), WorkedExample);
        QCOMPARE(Rows(Results(w)), QStringList{R2});
    }

    void noMatchEmptiesTheList() {
        frmFind* w = Open(TestDatabase::Sqlite);
        Find(w);
        QCOMPARE(RowCount(Results(w)), 3);
        Choose(w, SearchQuery::RecipeTitle);
        AddValue(w, QStringLiteral("pica"));
        Find(w);
        QCOMPARE(RowCount(Results(w)), 0);
        QCOMPARE(m_messages->Texts(), QStringList());
    }

    void emptyDatabaseListsNothing() {
        frmFind* w = Open(TestDatabase::Sqlite, false);
        QCOMPARE(Texts(List(w, "lstAvailable")), QStringList());
        Find(w);
        QCOMPARE(RowCount(Results(w)), 0);
        QCOMPARE(m_messages->Texts(), QStringList());
    }

    void recipeWithoutTypeOrGroupIsNeverListed_data() { TestDatabase::AddKinds(); }
    void recipeWithoutTypeOrGroupIsNeverListed() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        TestDatabase::LoadSmallCollection();
        TestDatabase::Insert("Recipe", {{"typeID", 99}, {"title", "Sirota brez podskupine"}});
        const qint32 orphanType = TestDatabase::Insert("Type", {{"groupID", 99}, {"name", "Sama"}});
        TestDatabase::Insert("Recipe", {{"typeID", orphanType}, {"title", "Sirota brez skupine"}});
        frmFind* w = OpenWindow();
        Find(w);
        QCOMPARE(Rows(Results(w)), (QStringList{R3, R1, R2}));
        Choose(w, SearchQuery::RecipeTitle);
        AddValue(w, QStringLiteral("Sirota"));
        Find(w);
        QCOMPARE(Rows(Results(w)), QStringList());
        // ... while its title is still offered.
        Control<QLineEdit>(w, "txtFilter")->setText(QStringLiteral("Sirota"));
        QCOMPARE(Texts(List(w, "lstAvailable")),
                 (QStringList{"Sirota brez podskupine", "Sirota brez skupine"}));
    }

    void headingClicksChangeTheOrderAndSearchAgain_data() { TestDatabase::AddKinds(); }
    void headingClicksChangeTheOrderAndSearchAgain() {
        QFETCH(QString, kind);
        frmFind* w = Open(kind);
        QTreeView* results = Results(w);
        // The first click, before any search, searches too: titles descending.
        ClickHeading(results, 0);
        QCOMPARE(w->SortColumn(), qint16(-1));
        QCOMPARE(Rows(results), (QStringList{R2, R1, R3}));
        QVERIFY(w->LastQuery().endsWith(QStringLiteral(" ORDER BY [title] DESC;")));
        ClickHeading(results, 0);
        QCOMPARE(w->SortColumn(), qint16(1));
        QCOMPARE(Rows(results), (QStringList{R3, R1, R2}));
        ClickHeading(results, 1);
        QCOMPARE(w->SortColumn(), qint16(2));
        QCOMPARE(Texts(results, 1), (QStringList{"1", "2", "3"}));
        ClickHeading(results, 1);
        QCOMPARE(w->SortColumn(), qint16(-2));
        QCOMPARE(Texts(results, 1), (QStringList{"3", "2", "1"}));
        ClickHeading(results, 1);
        QCOMPARE(w->SortColumn(), qint16(2));
        QCOMPARE(Texts(results, 1), (QStringList{"1", "2", "3"}));
        ClickHeading(results, 2);
        QCOMPARE(w->SortColumn(), qint16(3));
        QCOMPARE(Texts(results, 2), (QStringList{"Juhe", "Juhe", "Sladice"}));
        QVERIFY(w->LastQuery().endsWith(QStringLiteral(" ORDER BY [Group].[name] ASC;")));
        ClickHeading(results, 2);
        QCOMPARE(w->SortColumn(), qint16(-3));
        QCOMPARE(Texts(results, 2), (QStringList{"Sladice", "Juhe", "Juhe"}));
        ClickHeading(results, 3);
        QCOMPARE(w->SortColumn(), qint16(4));
        QCOMPARE(Rows(results), (QStringList{R1, R3, R2}));
        ClickHeading(results, 3);
        QCOMPARE(w->SortColumn(), qint16(-4));
        QCOMPARE(Rows(results), (QStringList{R2, R3, R1}));
        QVERIFY(w->LastQuery().endsWith(QStringLiteral(" ORDER BY [Type].[name] DESC;")));
        // Another heading always starts ascending.
        ClickHeading(results, 0);
        QCOMPARE(w->SortColumn(), qint16(1));
        QCOMPARE(Rows(results), (QStringList{R3, R1, R2}));
        // The search is made again with the criteria as they are now, stored or not.
        Choose(w, SearchQuery::RecipeTitle);
        AddValue(w, QStringLiteral("juha"));
        QCOMPARE(Rows(results), (QStringList{R3, R1, R2}));
        ClickHeading(results, 1);
        QCOMPARE(Rows(results), (QStringList{R1, R2}));
        // "Išči" keeps the order chosen.
        Find(w);
        QCOMPARE(Rows(results), (QStringList{R1, R2}));
        QVERIFY(w->LastQuery().endsWith(QStringLiteral(" ORDER BY [recipeID] ASC;")));
        QCOMPARE(m_messages->Texts(), QStringList());
    }

    void failedQueryKeepsThePreviousResults_data() { TestDatabase::AddKinds(); }
    void failedQueryKeepsThePreviousResults() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        TestDatabase::LoadSmallCollection();
        TestDatabase::Insert("Ingredient", {{"name", "Jamie's sol"}});
        frmFind* w = OpenWindow();
        QTreeView* results = Results(w);
        Find(w);
        QCOMPARE(Rows(results), (QStringList{R3, R1, R2}));
        // A value from the database with an apostrophe in it.
        Choose(w, SearchQuery::Ingredient);
        Control<QLineEdit>(w, "txtFilter")->setText(QStringLiteral("jamie"));
        QTreeWidget* available = List(w, "lstAvailable");
        QCOMPARE(Texts(available), QStringList{"Jamie's sol"});
        DoubleClick(available, EntryPoint(available, 0));
        QCOMPARE(Texts(List(w, "lstSelected")), QStringList{"Jamie's sol"});
        // The pointer is back to normal before the message shows.
        QList<Qt::CursorShape> pointerAtMessage;
        m_messages.reset();
        UiServices::SetMsgBoxHandler([&](const QString&, int, const QString&) {
            pointerAtMessage << w->cursor().shape();
            return int(UiServices::vbOK);
        });
        Find(w);
        m_messages = std::make_unique<MessageRecorder>();
        QCOMPARE(pointerAtMessage, QList<Qt::CursorShape>{Qt::ArrowCursor});
        QFile::remove(LogName);
        Find(w);
        QCOMPARE(Rows(results), (QStringList{R3, R1, R2}));
        QCOMPARE(m_messages->Texts(), QStringList{ErrorPath::UnexpectedErrorMessage});
        QCOMPARE(m_messages->Messages().first().style, 48);
        QCOMPARE(m_messages->Messages().first().title, QStringLiteral("Morvena"));
        QVERIFY2(Log().contains(
                     QStringLiteral("\r\n\r\nfrmFind:cmdFind_Click->modDatabase:GetRecordset->")),
                 qPrintable(Log()));
        QVERIFY(Log().endsWith(QStringLiteral("\r\n\r\n")));
        QCOMPARE(w->cursor().shape(), Qt::ArrowCursor);
        QVERIFY(w->isVisible());
        // A heading click changes the order even though the search fails again.
        m_messages->Clear();
        ClickHeading(results, 1);
        QCOMPARE(w->SortColumn(), qint16(2));
        QCOMPARE(m_messages->Texts(), QStringList{ErrorPath::UnexpectedErrorMessage});
        QCOMPARE(Rows(results), (QStringList{R3, R1, R2}));
        QCOMPARE(Log().count(QStringLiteral("frmFind:cmdFind_Click->modDatabase:GetRecordset->")),
                 2);
        // Without the value the search works again, in the order chosen.
        Click(List(w, "lstSelected"), EntryPoint(List(w, "lstSelected"), 0));
        Control<QPushButton>(w, "cmdDelete")->click();
        Find(w);
        QCOMPARE(Rows(results), (QStringList{R1, R2, R3}));
        QCOMPARE(m_messages->Texts().size(), 1);
    }

    void emptyOperatorMakesTheDatabaseRefuse() {
        frmFind* w = Open(TestDatabase::Sqlite);
        Find(w);
        // Two criteria joined by the overall condition with no operator between them.
        Compose(w, {{SearchQuery::Group, {"juhe"}, 0}, {SearchQuery::Type, {"juhe"}, 0}}, 0);
        Control<QComboBox>(w, "cmbCondition")->addItem(QStringLiteral("tretja"));
        Control<QComboBox>(w, "cmbCondition")->setCurrentIndex(2);
        Find(w);
        QVERIFY(w->LastQuery().contains(QStringLiteral("'%juhe%'))(([Type]")));
        QCOMPARE(m_messages->Texts(), QStringList{ErrorPath::UnexpectedErrorMessage});
        QCOMPARE(Rows(Results(w)), (QStringList{R3, R1, R2}));
        QVERIFY(
            Log().contains(QStringLiteral("frmFind:cmdFind_Click->modDatabase:GetRecordset->")));
    }

    void moreThan32767ValuesOverflow() {
        frmFind* w = Open(TestDatabase::Sqlite);
        Choose(w, SearchQuery::RecipeTitle);
        QTreeWidget* selected = List(w, "lstSelected");
        QList<QTreeWidgetItem*> many;
        for (int i = 0; i < 32768; ++i) {
            many << new QTreeWidgetItem(QStringList{QStringLiteral("juha")});
        }
        selected->addTopLevelItems(many);
        Find(w);
        QCOMPARE(m_messages->Texts(), QStringList{ErrorPath::UnexpectedErrorMessage});
        QVERIFY2(
            Log().contains(QStringLiteral(
                "\r\n\r\nfrmFind:cmdFind_Click->frmFind:StoreSelected->Morvena->Overflow\r\n")),
            qPrintable(Log()));
        QCOMPARE(RowCount(Results(w)), 0);
        // 32767 values are stored (the query may still be too large for the database).
        delete selected->topLevelItem(0);
        Find(w);
        QCOMPARE(w->CriterionValues()[SearchQuery::RecipeTitle].size(), 32767);
        QCOMPARE(Log().count(QStringLiteral("Overflow")), 1);
    }

    void doubleClickShowsTheRecipeInTheMainWindow_data() { TestDatabase::AddKinds(); }
    void doubleClickShowsTheRecipeInTheMainWindow() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        TestDatabase::LoadSmallCollection();
        modGeneral::TempFilename = TestDatabase::WorkFolder() + QStringLiteral("/page.html");
        frmMain main;
        QCOMPARE(Key(main.tvRecipes->currentIndex()), QStringLiteral("G1"));
        // Opened by the main window's command, which shows the chosen recipe in its tree.
        main.menus.Button(QStringLiteral("find"))->trigger();
        m_window = main.findChild<frmFind*>(QStringLiteral("frmFind"));
        QVERIFY(m_window);
        QVERIFY(QTest::qWaitForWindowExposed(m_window));
        frmFind* w = m_window;
        QTreeView* results = Results(w);
        Find(w);
        // Nothing selected: a double click on empty space does nothing.
        const QByteArray groupPage = FileBytes(modGeneral::TempFilename);
        DoubleClick(results, EmptyPoint(results));
        QCOMPARE(Key(main.tvRecipes->currentIndex()), QStringLiteral("G1"));
        QCOMPARE(FileBytes(modGeneral::TempFilename), groupPage);
        DoubleClick(results, EntryPoint(results, 2));
        QCOMPARE(Key(main.tvRecipes->currentIndex()), QStringLiteral("R2"));
        QCOMPARE(FileBytes(modGeneral::TempFilename),
                 Windows1250::Encode(modDisplay::RecipePage(2)));
        QCOMPARE(main.DisplayedAddress(), modGeneral::TempFilename);
        QVERIFY(m_window);
        QVERIFY(w->isVisible());
        QCOMPARE(Rows(results), (QStringList{R3, R1, R2}));
        DoubleClick(results, EntryPoint(results, 0));
        QCOMPARE(Key(main.tvRecipes->currentIndex()), QStringLiteral("R3"));
        QCOMPARE(FileBytes(modGeneral::TempFilename),
                 Windows1250::Encode(modDisplay::RecipePage(3)));
        // With a result selected, a double click on empty space clears the choice first.
        DoubleClick(results, EmptyPoint(results));
        QCOMPARE(Key(main.tvRecipes->currentIndex()), QStringLiteral("R3"));
        QCOMPARE(m_messages->Texts(), QStringList());
        QVERIFY(!QFile::exists(LogName));
    }

    void doubleClickWithoutMainWindowDoesNothing() {
        QVERIFY(!frmMain::Instance());
        frmFind* w = Open(TestDatabase::Sqlite);
        QSignalSpy chosen(w, &frmFind::RecipeChosen);
        Find(w);
        DoubleClick(Results(w), EntryPoint(Results(w), 0));
        QCOMPARE(chosen.size(), 1);
        QCOMPARE(chosen.first().first().toString(), QStringLiteral("R3"));
        QCOMPARE(m_messages->Texts(), QStringList());
        QVERIFY(!QFile::exists(LogName));
    }

    void closingDiscardsTheWindow() {
        frmFind* w = Open(TestDatabase::Sqlite);
        Choose(w, SearchQuery::Ingredient);
        AddValue(w, QStringLiteral("moka"));
        Control<QComboBox>(w, "cmbField")->setCurrentIndex(1);
        Control<QComboBox>(w, "cmbCondition")->setCurrentIndex(1);
        Find(w);
        Control<QPushButton>(w, "cmdCancel")->click();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(!m_window);
        // Opened again: six empty criteria, the first choices, no filter, no results.
        w = OpenWindow();
        QCOMPARE(Texts(List(w, "lstCriteria"), 1), QStringList(6, QString()));
        QCOMPARE(Control<QComboBox>(w, "cmbField")->currentIndex(), 0);
        QCOMPARE(Control<QComboBox>(w, "cmbCondition")->currentIndex(), 0);
        QCOMPARE(Control<QLineEdit>(w, "txtFilter")->text(), QString());
        QCOMPARE(RowCount(Results(w)), 0);
        Choose(w, SearchQuery::Ingredient);
        QCOMPARE(Texts(List(w, "lstSelected")), QStringList());
        // Escape and the close box close it too.
        QApplication::setActiveWindow(w);
        QVERIFY(QTest::qWaitForWindowActive(w));
        QTest::keyClick(w, Qt::Key_Escape);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(!m_window);
        w = OpenWindow();
        w->close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(!m_window);
        QVERIFY(!QFile::exists(LogName));
    }

    void failingOfferedValuesTakeTheErrorPath() {
        frmFind* w = Open(TestDatabase::Sqlite);
        TestDatabase::Exec(QStringLiteral("DROP TABLE [Ingredient];"));
        Choose(w, SearchQuery::Ingredient);
        QCOMPARE(m_messages->Texts(), QStringList{ErrorPath::UnexpectedErrorMessage});
        QVERIFY2(Log().contains(QStringLiteral("frmFind:lstCriteria_ItemClick->frmFind:"
                                               "FillAvailable->modDatabase:GetRecordset->")),
                 qPrintable(Log()));
        // The window stays open with the state reached: the criterion is current.
        QCOMPARE(Control<QGroupBox>(w, "frmField")->title(), QStringLiteral("Sestavine"));
        m_messages->Clear();
        Control<QLineEdit>(w, "txtFilter")->setText(QStringLiteral("a"));
        QCOMPARE(m_messages->Texts(), QStringList{ErrorPath::UnexpectedErrorMessage});
        QVERIFY(Log().contains(
            QStringLiteral("frmFind:txtFilter_Change->frmFind:FillAvailable->modDatabase:")));
    }

    // ---- morvena-tool search -----------------------------------------------------------------

    void toolSqlEqualsTheWindowsQuery() {
        frmFind* w = Open(TestDatabase::Sqlite);
        Compose(w,
                {{SearchQuery::Group, {"juhe"}, 0},
                 {SearchQuery::Ingredient, {"korenje", "krompir"}, 1}},
                0);
        Find(w);
        const auto tool = Tool({"search", "--Group", "juhe", "--Ingredient", "korenje",
                                "--Ingredient", "krompir", "--any", "Ingredient", "--sql"});
        QCOMPARE(tool.exitCode, 0);
        QCOMPARE(tool.err, QString());
        QCOMPARE(tool.out, w->LastQuery() + QLatin1Char('\n'));
        QCOMPARE(tool.out, WorkedExample + QLatin1Char('\n'));
        // Another composition, sorted by a heading click.
        delete m_window;
        w = OpenWindow();
        Compose(w,
                {{SearchQuery::Type, {"a", "b"}, 1},
                 {SearchQuery::SectionTitle, {""}, 0},
                 {SearchQuery::Instructions, {"x"}, 0},
                 {SearchQuery::RecipeTitle, {"č"}, 1}},
                1);
        ClickHeading(Results(w), 2);
        ClickHeading(Results(w), 2);
        const auto other =
            Tool({"search", "--any-criterion", "--Type", "a", "--any", "Type", "--Type", "b",
                  "--SectionTitle", "", "--Instructions", "x", "--RecipeTitle", "č", "--any",
                  "RecipeTitle", "--sort", "-3", "--sql"});
        QCOMPARE(other.exitCode, 0);
        QCOMPARE(other.out, w->LastQuery() + QLatin1Char('\n'));
        // The values keep their order; nothing is checked against a database.
        QCOMPARE(Tool({"search", "--sql", "--sort", "0", "--database", "ni.db"}).out,
                 SearchQuery::BaseQuery() + QStringLiteral(" ORDER BY  DESC;\n"));
        QCOMPARE(Tool({"search", "--Ingredient", "b", "--Ingredient", "a", "--sql"}).out,
                 SearchQuery::BuildQuery(
                     [] {
                         SearchQuery::Criteria c;
                         c.values[SearchQuery::Ingredient] = QStringList{"b", "a"};
                         return c;
                     }(),
                     0, 1) +
                     QLatin1Char('\n'));
    }

    void toolListsTheResults_data() { TestDatabase::AddKinds(); }
    void toolListsTheResults() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        TestDatabase::LoadSmallCollection();
        const QString database = modGeneral::DatabaseName;
        modDatabase::Connection.reset();
        QStringList where;
        if (kind == TestDatabase::Sqlite) {
            where = QStringList{"--database", database};
        } else {
            WriteServerSettings(database);
        }
        const auto line = [](const QString& row) {
            return QString(row).replace(QLatin1Char('|'), QLatin1Char('\t')) + QLatin1Char('\n');
        };
        auto result = Tool(QStringList{"search"} + where);
        QCOMPARE(result.err, QString());
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(result.out, line(R3) + line(R1) + line(R2));
        result = Tool(QStringList{"search", "--Group", "juhe", "--Ingredient", "korenje",
                                  "--Ingredient", "krompir", "--any", "Ingredient"} +
                      where);
        QCOMPARE(result.out, line(R2));
        result = Tool(QStringList{"search", "--Ingredient", "ČOKOLAD"} + where);
        QCOMPARE(result.out, line(R3));
        result = Tool(QStringList{"search", "--sort", "-2"} + where);
        QCOMPARE(result.out, line(R3) + line(R2) + line(R1));
        result = Tool(QStringList{"search", "--RecipeTitle", "juha", "--Ingredient", "moka",
                                  "--any-criterion", "--sort", "4"} +
                      where);
        QCOMPARE(result.out, line(R1) + line(R3) + line(R2));
        result = Tool(QStringList{"search", "--RecipeTitle", "pica"} + where);
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(result.out, QString());
        // A value is taken without its apostrophes, as the search window takes it.
        result = Tool(QStringList{"search", "--Group", "O'Brien"} + where);
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(result.err, QString());
        QCOMPARE(result.out, QString());
        result = Tool(QStringList{"search", "--Group", "J'uh'e"} + where);
        QCOMPARE(result.out, line(R1) + line(R2));
        QFile::remove(modRegistry::StoreFile(true));
    }

    void toolBadArguments_data() {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("message");
        QTest::newRow("unknown option") << QStringList{"search", "--group", "juhe"}
                                        << "Neznana možnost: --group (morvena-tool --help)\n";
        QTest::newRow("value missing")
            << QStringList{"search", "--Ingredient"}
            << "Možnost --Ingredient potrebuje vrednost. (morvena-tool --help)\n";
        QTest::newRow("bad key for --any")
            << QStringList{"search", "--any", "Sestavine"}
            << "--any potrebuje ključ Group, Type, RecipeTitle, SectionTitle, Ingredient ali "
               "Instructions. (morvena-tool --help)\n";
        QTest::newRow("sort not a number")
            << QStringList{"search", "--sort", "naslov"}
            << "--sort potrebuje celo število od -32768 do 32767. (morvena-tool --help)\n";
        QTest::newRow("sort too large")
            << QStringList{"search", "--sort", "32768"}
            << "--sort potrebuje celo število od -32768 do 32767. (morvena-tool --help)\n";
        QTest::newRow("stray argument")
            << QStringList{"search", "juhe"}
            << "search ne sprejme argumenta juhe. (morvena-tool --help)\n";
        QTest::newRow("database without file")
            << QStringList{"search", "--database"}
            << "Možnost --database potrebuje vrednost. (morvena-tool --help)\n";
    }
    void toolBadArguments() {
        QFETCH(QStringList, arguments);
        QFETCH(QString, message);
        const auto result = Tool(arguments);
        QCOMPARE(result.exitCode, 2);
        QCOMPARE(result.err, message);
        QCOMPARE(result.out, QString());
    }

    void toolMissingDatabase() {
        const QString missing = TestDatabase::WorkFolder() + QStringLiteral("/ni.db");
        const auto result = Tool({"search", "--Group", "juhe", "--database", missing});
        QCOMPARE(result.exitCode, 1);
        QCOMPARE(result.err, QStringLiteral("Datoteka %1 ne obstaja.\n").arg(missing));
        QCOMPARE(result.out, QString());
        QVERIFY(!QFile::exists(missing));
    }

    void toolHelpNamesTheSearch() {
        const auto result = Tool({"--help"});
        QCOMPARE(result.exitCode, 0);
        for (const char* text : {"search [--Group V]", "--any KLJUČ", "--any-criterion", "--sort N",
                                 "--sql", "vsaj eno", "vsaj enemu pogoju!"}) {
            QVERIFY2(result.out.contains(QString::fromUtf8(text)), text);
        }
    }

private:
    struct ToolResult {
        int exitCode;
        QString out;
        QString err;
    };
    static ToolResult Tool(const QStringList& arguments) {
        QProcess process;
        process.start(qEnvironmentVariable("MORVENA_TOOL"), arguments);
        if (!process.waitForFinished(300000)) {
            qFatal("morvena-tool did not finish");
        }
        return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
                QString::fromUtf8(process.readAllStandardError())};
    }
    // The settings of the program pointing at a database on the tests' server.
    static void WriteServerSettings(const QString& database) {
        const QString store = modRegistry::StoreFile(true);
        QDir().mkpath(QFileInfo(store).path());
        QFile file(store);
        if (!file.open(QIODevice::WriteOnly)) {
            qFatal("cannot write %s", qPrintable(store));
        }
        file.write(QStringLiteral("Windows Registry Editor Version 5.00\n\n"
                                  "[Software\\Orlessa\\Morvena]\n"
                                  "\"DatabaseType\"=dword:00000002\n"
                                  "\"ServerName\"=\"%1\"\n\"DatabaseName\"=\"%2\"\n"
                                  "\"Username\"=\"%3\"\n\"Password\"=\"%4\"\n")
                       .arg(TestDatabase::PostgresServer(), database, TestDatabase::PostgresUser(),
                            TestDatabase::PostgresPassword())
                       .toUtf8());
    }
};

QTEST_MAIN(TestSearch)
#include "tst_search.moc"
