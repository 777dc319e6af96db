// lists/: the record entry dialog, the list editor and the replacement dialog.
// May use: core/database, core/ui, core.
#pragma once

#include <QDialog>
#include <QString>
#include <optional>

#include "lists/RowVersion.h"

class QLabel;
class QLineEdit;
class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;

// Keeping one of the lookup lists tidy: sources, units or ingredients. Lists the names that
// contain the filter text, adds and renames records through the record entry dialog, and deletes
// them; a record that other rows still use is first replaced in them through frmChangeLink.
class frmEditList : public QDialog {
    Q_OBJECT

public:
    explicit frmEditList(QWidget* parent = nullptr);

    // Set by the caller before the dialog is shown: 3 source, 4 unit, 5 ingredient.
    qint32 rtMode = 0;

    int exec() override;

protected:
    void reject() override;

private:
    void Form_Load();
    void RefreshList();
    void EnableControls();
    void txtFilter_Change();
    void txtFilter_GotFocus();
    void lstRecords_SelectionChanged();
    void lstRecords_DblClick();
    void cmdAdd_Click();
    void cmdEdit_Click();
    void cmdDelete_Click();
    // Part of cmdDelete_Click (its errors are the handler's own): deletes the record in one
    // transaction with its row locked when the row is still `overwritable`; otherwise deletes
    // nothing and returns the row as it is now.
    std::optional<RowVersion> DeleteUnlessChanged(qint32 id, const RowVersion& overwritable);
    void cmdCancel_Click();

    // The list's selected entry, if any.
    QTreeWidgetItem* SelectedItem() const;

    QLabel* lblFilter = nullptr;
    QLineEdit* txtFilter = nullptr;
    QTreeWidget* lstRecords = nullptr;
    QPushButton* cmdAdd = nullptr;
    QPushButton* cmdEdit = nullptr;
    QPushButton* cmdDelete = nullptr;
    QPushButton* cmdCancel = nullptr;

    // Per kind, fixed when the dialog loads.
    QString m_table;
    QString m_keyField;
    QString m_relTable;
    QString m_relFieldID;
};
