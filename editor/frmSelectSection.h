#pragma once

#include <QDialog>
#include <QString>

class QPushButton;
class QTreeView;
class SectionTreeModel;
class frmNew;

// The section picker of the recipe editor: the whole collection as a tree of groups, subgroups,
// recipes and their titled sections. A double click on a section writes its key into the
// editor's lngSectionID and closes the picker; every other way out writes -1. The editor reads
// lngSectionID after the modal call returns. Groups, subgroups and recipes are read as the picker
// opens; a recipe's sections when its node is first expanded.
class frmSelectSection : public QDialog {
    Q_OBJECT

public:
    explicit frmSelectSection(frmNew* editor, QWidget* parent = nullptr);

    // Loads the tree (Form_Load) and shows the picker modally.
    int exec() override;

    QTreeView* tvSections = nullptr;
    // The cancel button; not shown (Escape presses it).
    QPushButton* cmdCancel = nullptr;

protected:
    void reject() override;
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void Form_Load();
    void RefreshTreeView();
    void tvSections_DblClick();
    void cmdCancel_Click();
    void Form_QueryUnload();
    void Form_Resize();
    void UnloadFromCode();

    frmNew* m_editor;
    SectionTreeModel* m_model;
    bool m_unloadingFromCode = false;
};
