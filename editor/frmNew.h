// editor/: the recipe editor and the section picker.
// May use: lists, collection, core/database, core/ui, core.
#pragma once

#include <QDialog>
#include <QString>
#include <optional>

#include "editor/EditSection.h"
#include "editor/RecipeFingerprint.h"

class QComboBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;

// The recipe editor: holds one recipe (header, sections, ingredient lines) in memory and writes
// it to the database only when the user confirms with "Potrdi". The caller sets lngRecipeID
// (-1 for a new recipe) and calls exec(); afterwards the program-wide lngLastID tells which
// recipe was saved (-1 after "Prekliči").
//
// The code is spread over four files: frmNew.cpp (controls, loading, moving a section between
// the working state and the controls), frmNewLookups.cpp (lookup lists, quick add, leaving
// without saving), frmNewSections.cpp (section and ingredient editing, the checks, reusing a
// section) and frmNewSave.cpp (saving).
class frmNew : public QDialog {
    Q_OBJECT

public:
    explicit frmNew(QWidget* parent = nullptr);

    // Set by the section picker: the chosen section, -1 when nothing was chosen.
    qint32 lngSectionID = -1;
    // Set by the caller: the recipe to edit, -1 for a new recipe.
    qint32 lngRecipeID = -1;

    // Loads the form (Form_Load) and shows it modally.
    int exec() override;

    // The working state, read-only (for the tests).
    const EditSectionArray& WorkingSections() const { return arrSections; }
    bool MultiSectionMode() const { return booSections; }
    QTreeWidgetItem* CurrentSectionEntry() const { return itmSection; }
    QTreeWidgetItem* EditedIngredientLine() const { return itmIngredient; }
    qint32 CurrentGroupID() const { return lngCurrentGroupID; }

protected:
    // The close box and Escape: the form is being closed other than from code.
    void reject() override;

private:
    // ---- frmNew.cpp: controls, loading, state <-> controls
    void BuildControls();
    void ConnectHandlers();
    void Form_Load();
    void LoadRecipe(qint32 recipeID);
    void LoadSection(qint32 sectionID);
    void DisplaySection(int intIndex);
    void StoreSection(int intIndex);
    void EnableControls();
    // Closes the form from code (a successful save, "Prekliči" after Yes): nothing is asked.
    void UnloadFromCode(int result);

    // lstSections: entries, their 1-based index, selection from code.
    QTreeWidgetItem* SelectedSection() const;
    int SectionIndex(const QTreeWidgetItem* entry) const;
    QTreeWidgetItem* SectionEntry(int index) const;
    // Appends an entry; the list selects its first entry by itself when it had none.
    QTreeWidgetItem* AddSectionEntry(const QString& text);
    void SelectSectionEntry(QTreeWidgetItem* entry);
    void ClearSectionEntries();
    void RemoveLastSectionEntry();
    // lstSectionIngredient
    QTreeWidgetItem* SelectedIngredientLine() const;
    void ClearIngredientLines();
    // A line's stored fraction ("0.5"), kept with the entry until the line is edited; empty
    // for a whole amount, which is the entry's text.
    static void KeepFraction(QTreeWidgetItem* entry, const QString& fraction);
    static QString KeptFraction(const QTreeWidgetItem* entry);

    // ---- frmNewLookups.cpp
    void FillCmbGroup();
    void FillCmbType();
    void FillCmbSource();
    void FillCmbUnit();
    void FillLstIngredient();
    void cmbGroup_Click();
    void cmdGroupAdd_Click();
    void cmdTypeAdd_Click();
    void cmdSourceAdd_Click();
    void cmdUnitAdd_Click();
    void cmdIngredientAdd_Click();
    void txtFilter_Change();
    void txtFilter_GotFocus();
    void txtAmount_GotFocus();
    void txtRecipeTitle_GotFocus();
    void txtSectionTitle_GotFocus();
    void cmdCancel_Click();
    bool Form_QueryUnload();
    // Shows the record entry dialog for a new record of the kind; the key to select afterwards.
    qint32 AddRecord(int mode, qint32 selectedBefore);

    // ---- frmNewSections.cpp
    void cmdSectionAdd_Click();
    void cmdSectionDelete_Click();
    void cmdSectionUp_Click();
    void cmdSectionDown_Click();
    void MoveSection(int offset);
    void cmdSectionSelect_Click();
    void lstSections_ItemClick();
    void txtSectionTitle_Change();
    void cmdSectionIngredientAdd_Click();
    void cmdSectionIngredientEdit_Click();
    void cmdSectionIngredientDelete_Click();
    void lstSectionIngredient_DblClick();
    void cmdIngredientOk_Click();
    void cmdIngredientCancel_Click();
    void CopySection(int intFrom, int intTo);
    void InitSectionIngredient();
    void EnableIngredient(bool booEnable);
    bool CheckSectionIngredient();
    bool CheckSection();
    bool CheckRecipe();
    // Shows the section picker modally (the picker writes lngSectionID).
    void ShowSectionPicker();

    // ---- frmNewSave.cpp
    void cmdOK_Click();
    // The parts of cmdOK_Click (their errors are the handler's own). SaveRecipe writes the recipe
    // in one transaction with its row locked when the recipe in the database is still
    // `overwritable`; otherwise it writes nothing and returns the recipe as it is now.
    std::optional<RecipeFingerprint> SaveRecipe(const RecipeFingerprint& overwritable);
    // Tells that the recipe was changed or deleted meanwhile and asks whether to save it anyway.
    bool OverwriteAgreed(const RecipeFingerprint& found);
    // Writes the recipe row and its sections afresh; returns the recipe's key.
    qint32 WriteRecipe();

    // Recipe header
    QLabel* lblGroup = nullptr;
    QComboBox* cmbGroup = nullptr;
    QPushButton* cmdGroupAdd = nullptr;
    QLabel* lblType = nullptr;
    QComboBox* cmbType = nullptr;
    QPushButton* cmdTypeAdd = nullptr;
    QLabel* lblSource = nullptr;
    QComboBox* cmbSource = nullptr;
    QPushButton* cmdSourceAdd = nullptr;
    QLabel* lblRecipeTitle = nullptr;
    QLineEdit* txtRecipeTitle = nullptr;
    QLabel* lblSections = nullptr;
    QTreeWidget* lstSections = nullptr;
    QPushButton* cmdSectionAdd = nullptr;
    QPushButton* cmdSectionDelete = nullptr;
    QPushButton* cmdSectionUp = nullptr;
    QPushButton* cmdSectionDown = nullptr;
    QPushButton* cmdSectionSelect = nullptr;
    // Section frame
    QGroupBox* frmSection = nullptr;
    QLabel* lblSectionTitle = nullptr;
    QLineEdit* txtSectionTitle = nullptr;
    QLabel* lblInstructions = nullptr;
    QPlainTextEdit* txtInstructions = nullptr;
    QTreeWidget* lstSectionIngredient = nullptr;
    QPushButton* cmdSectionIngredientAdd = nullptr;
    QPushButton* cmdSectionIngredientEdit = nullptr;
    QPushButton* cmdSectionIngredientDelete = nullptr;
    // Ingredient frame
    QGroupBox* frmIngredient = nullptr;
    QLabel* lblAmount = nullptr;
    QLineEdit* txtAmount = nullptr;
    QLabel* lblUnit = nullptr;
    QComboBox* cmbUnit = nullptr;
    QPushButton* cmdUnitAdd = nullptr;
    QLabel* lblIngredientsFilter = nullptr;
    QLineEdit* txtFilter = nullptr;
    QTreeWidget* lstIngredient = nullptr;
    QPushButton* cmdIngredientAdd = nullptr;
    QPushButton* cmdIngredientOk = nullptr;
    QPushButton* cmdIngredientCancel = nullptr;
    // Form buttons
    QPushButton* cmdOK = nullptr;
    QPushButton* cmdCancel = nullptr;

    // Working state
    qint32 lngCurrentGroupID = -1;
    EditSectionArray arrSections;
    QTreeWidgetItem* itmSection = nullptr;
    QTreeWidgetItem* itmIngredient = nullptr;
    bool booSections = false;
    // The recipe as the editor read it (for an existing recipe).
    RecipeFingerprint m_loadedRecipe;

    bool m_unloadingFromCode = false;
    bool m_selectingFromCode = false;
    bool m_sectionClickPending = false;
};
