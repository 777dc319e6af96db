// search/: the search window and the query it builds from the criteria.
// May use: core/database, core/ui, core.
#pragma once

#include <QString>
#include <QStringList>
#include <QWidget>
#include <array>

#include "search/SearchQuery.h"

class QComboBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTreeView;
class QTreeWidget;
class ResultsModel;
class QTreeWidgetItem;

// The search window: six criteria, each with its own list of search values and match mode, an
// overall condition, and the list of the recipes found. Not modal; closing it discards the
// criteria and the results. A double click on a result asks for the recipe to be shown
// (RecipeChosen), which the main window does in its tree.
class frmFind : public QWidget {
    Q_OBJECT

public:
    explicit frmFind(QWidget* parent = nullptr);

    // What the window keeps (read-only, for whoever looks on).
    const std::array<QStringList, SearchQuery::CriterionCount>& CriterionValues() const {
        return criterionValues;
    }
    const std::array<qint16, SearchQuery::CriterionCount>& CriterionMatch() const {
        return criterionMatch;
    }
    qint16 SortColumn() const { return sortColumn; }
    // The text of the last query that "Išči" or a heading click ran (empty before the first).
    const QString& LastQuery() const { return lastQuery; }

Q_SIGNALS:
    // A result was double-clicked: the tree node key of its recipe ("R" and the recipe key).
    void RecipeChosen(const QString& nodeKey);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void Form_Load();
    void FillAvailable();
    void StoreSelected();
    void InitializeSelected();
    void DisplaySearchString();

    void lstCriteria_ItemClick();
    void lstAvailable_DblClick();
    void cmdAdd_Click();
    void cmdDelete_Click();
    void cmbField_Click();
    void txtFilter_Change();
    void txtFilter_GotFocus();
    void cmdFind_Click();
    void lstResults_ColumnClick(int column);
    void lstResults_DblClick();
    void cmdCancel_Click();

    QGroupBox* frmCriteria = nullptr;
    QTreeWidget* lstCriteria = nullptr;
    QLabel* lblCondition = nullptr;
    QComboBox* cmbCondition = nullptr;
    QGroupBox* frmField = nullptr;
    QLabel* lblField = nullptr;
    QComboBox* cmbField = nullptr;
    QLabel* lblFilter = nullptr;
    QLineEdit* txtFilter = nullptr;
    QLabel* lblAvailable = nullptr;
    QTreeWidget* lstAvailable = nullptr;
    QLabel* lblSelected = nullptr;
    QTreeWidget* lstSelected = nullptr;
    QPushButton* cmdAdd = nullptr;
    QPushButton* cmdDelete = nullptr;
    QPushButton* cmdFind = nullptr;
    QGroupBox* frmResults = nullptr;
    QTreeView* lstResults = nullptr;
    ResultsModel* results = nullptr;  // the rows lstResults shows
    QPushButton* cmdCancel = nullptr;

    // Per criterion (in the order of SearchQuery::Criterion): the stored values and match mode.
    std::array<QStringList, SearchQuery::CriterionCount> criterionValues;
    std::array<qint16, SearchQuery::CriterionCount> criterionMatch{};
    // The lstCriteria row whose values lstSelected shows, or none.
    QTreeWidgetItem* currentCriterion = nullptr;
    // Magnitude: the result column ordered by (1 to 4); sign: ascending (+) or descending.
    qint16 sortColumn = 1;
    QString lastQuery;
};
