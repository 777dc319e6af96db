// Texts fit their columns: widths given in twips for "MS Sans Serif" 8 pt become wide enough
// for the same texts in the fonts here. A text is shown whole when the column is at least as
// wide as the width its item view asks for it (the delegate's size hint, which elides beyond).
#include <QApplication>
#include <QTest>
#include <QTreeWidget>

#include "collection/SampleDatabase.h"
#include "core/ui/Controls.h"
#include "search/ResultsModel.h"
#include "search/frmFind.h"
#include "tests/support/EditorDriver.h"
#include "tests/support/TestDatabase.h"

namespace {

QString U(const char* utf8) { return QString::fromUtf8(utf8); }

// Whether the entry at `index` shows whole in its column.
bool ShowsWhole(const QTreeView* view, const QModelIndex& index) {
    QStyleOptionViewItem option;
    option.initFrom(view);
    option.font = view->font();
    option.features |= QStyleOptionViewItem::HasDisplay;
    const int needed = view->itemDelegateForIndex(index)->sizeHint(option, index).width();
    return needed <= view->columnWidth(index.column());
}

// Whether `text` shows whole in column `column` of the list.
bool ShowsWhole(QTreeWidget* list, int column, const QString& text) {
    auto* item = new QTreeWidgetItem(list);
    item->setText(column, text);
    const bool whole =
        ShowsWhole(list, list->model()->index(list->indexOfTopLevelItem(item), column));
    delete item;
    return whole;
}

QTreeWidget* List(QWidget* window, const char* name) {
    return window->findChild<QTreeWidget*>(QString::fromLatin1(name));
}

// The widest of the texts in the list's font.
QString Widest(const QStringList& texts, const QTreeWidget* list) {
    const QFontMetricsF metrics(list->font());
    QString widest;
    for (const QString& text : texts) {
        if (metrics.horizontalAdvance(text) > metrics.horizontalAdvance(widest)) {
            widest = text;
        }
    }
    return widest;
}

}  // namespace

class TestTextsFit : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { TestDatabase::IsolateEnvironment(); }

    void mappingOfTwips() {
        QFont wide(QStringLiteral("DejaVu Sans"));
        wide.setPixelSize(12);
        const double letters = QFontMetricsF(wide).horizontalAdvance(QStringLiteral(
                                   "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ")) /
                               52;
        QVERIFY(letters > Controls::MsSansSerifLetterWidth);
        QCOMPARE(Controls::TextPixels(1300, wide),
                 qRound(1300 / 15.0 * letters / Controls::MsSansSerifLetterWidth));
        QFont narrow = wide;
        narrow.setPixelSize(6);
        QCOMPARE(Controls::TextPixels(1300, narrow), qRound(1300 / 15.0));
        // sizes the settings store keeps convert at 15 twips a pixel
        QCOMPARE(Controls::Pixels(9600), 640);
    }

    void searchWindowColumns_data() { TestDatabase::AddKinds(); }
    void searchWindowColumns() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        TestDatabase::LoadSmallCollection();
        frmFind window;
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QTreeWidget* criteria = List(&window, "lstCriteria");
        for (const char* label : {"Naslov razdelka", "Naslov recepta", "Podskupina", "Sestavine",
                                  "Potek dela", "Skupina"}) {
            QVERIFY2(ShowsWhole(criteria, 0, U(label)), label);
        }
        auto* results = window.findChild<QTreeView*>(QStringLiteral("lstResults"));
        auto* rows = qobject_cast<ResultsModel*>(results->model());
        rows->SetRows({{U("Kokošja juha z jetrnimi cmočki"), QStringLiteral("123456")},
                       {QString(), QStringLiteral("999999")}});
        QVERIFY(ShowsWhole(results, rows->index(0, 0)));
        QVERIFY(ShowsWhole(results, rows->index(0, 1)));
        QVERIFY(ShowsWhole(results, rows->index(1, 1)));
    }

    void editorColumns_data() { TestDatabase::AddKinds(); }
    void editorColumns() {
        QFETCH(QString, kind);
        TestDatabase::OpenFresh(kind);
        SampleDatabase::Load(SampleDatabase::BuiltInText());
        const QStringList units = TestDatabase::Rows("SELECT name FROM [Unit];");
        const QStringList ingredients = TestDatabase::Rows("SELECT name FROM [Ingredient];");
        QVERIFY(units.size() >= 8);
        QVERIFY(ingredients.size() >= 40);
        EditorDriver::ShowEditor(-1, [&](frmNew* editor) {
            QVERIFY(ShowsWhole(List(editor, "lstSections"), 0, U("Novi razdelek")));
            QTreeWidget* lines = List(editor, "lstSectionIngredient");
            QVERIFY(ShowsWhole(lines, 0, QStringLiteral("99999")));
            const QString unit = Widest(units, lines);
            QVERIFY2(ShowsWhole(lines, 1, unit), qPrintable(unit));
            const QString ingredient = Widest(ingredients, lines);
            QVERIFY2(ShowsWhole(lines, 2, ingredient), qPrintable(ingredient));
            QTreeWidget* offered = List(editor, "lstIngredient");
            QVERIFY2(ShowsWhole(offered, 0, ingredient), qPrintable(ingredient));
        });
    }
};

QTEST_MAIN(TestTextsFit)
#include "tst_textsfit.moc"
