#pragma once

#include <QDialog>
#include <QString>

class QComboBox;
class QLabel;
class QPushButton;

// Asked before a source, unit or ingredient that other rows still use is deleted: tells how many
// rows use it and lets the user choose another record of the same table to take its place in
// them. On "Potrdi" every referring row is rewritten to the chosen record and booDelete is true;
// the caller then deletes the record itself.
class frmChangeLink : public QDialog {
    Q_OBJECT

public:
    explicit frmChangeLink(QWidget* parent = nullptr);

    // Set by the caller before the dialog is shown.
    qint16 intCount = 0;    // how many rows refer to the record
    qint32 lngID = 0;       // the record that is to be deleted
    QString strTable;       // its table, bracketed ("[Unit]")
    QString strFieldID;     // its key field, named alike in the referring table ("unitID")
    QString strRelTable;    // the referring table ("[SectionIngredient]")
    QString strRelFieldID;  // the referring table's own key field (for the caller)
    // The result: true when the references were replaced and the record may be deleted.
    bool booDelete = false;

    int exec() override;

protected:
    void reject() override;

private:
    void Form_Load();
    void FillCmbReplacement();
    void cmdOK_Click();
    void cmdCancel_Click();

    QLabel* lblRecordInUse = nullptr;
    QComboBox* cmbReplacement = nullptr;
    QPushButton* cmdOK = nullptr;
    QPushButton* cmdCancel = nullptr;
};
