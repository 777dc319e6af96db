#pragma once

#include <QDialog>
#include <QString>
#include <optional>

#include "lists/RowVersion.h"

class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;

// Entering a new record, or renaming an existing one, of one of the five lookup tables: a recipe
// group, a subgroup, a source, a unit or an ingredient. The key of the saved record is left in
// the program-wide lngLastID (-1 after a cancel).
class frmAddRecord : public QDialog {
    Q_OBJECT

public:
    // The record kinds.
    enum RecordType { rtGroup = 1, rtType = 2, rtSource = 3, rtUnit = 4, rtIngredient = 5 };

    explicit frmAddRecord(QWidget* parent = nullptr);

    // Set by the caller before the dialog is shown.
    qint32 rtMode = 0;
    qint32 lngGroupID = 0;  // for a subgroup: its group
    qint32 lngID = -1;      // the record to edit; 0 or less for a new record

    int exec() override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void reject() override;

private:
    void Form_Load();
    void cmdOK_Click();
    // Part of cmdOK_Click (its errors are the handler's own): writes the record in one
    // transaction with its row locked when the row is still `overwritable` or is gone (a record
    // deleted meanwhile is added anew); otherwise writes nothing and returns the row as it is.
    std::optional<RowVersion> SaveRecord(const RowVersion& overwritable, const QString& name,
                                         const QString& description);
    void cmdCancel_Click();
    void txtName_GotFocus();
    void txtDescription_GotFocus();

    QLabel* lblName = nullptr;
    QLineEdit* txtName = nullptr;
    QLabel* lblDescription = nullptr;
    QPlainTextEdit* txtDescription = nullptr;
    QPushButton* cmdOK = nullptr;
    QPushButton* cmdCancel = nullptr;

    // Per kind, fixed when the dialog loads.
    QString m_table;
    QString m_keyField;
    QString m_loadingStatement;
    QString m_extraCondition;
    // The record's row as the dialog loaded it.
    RowVersion m_loadedRow;
};
