#pragma once

#include <QAbstractItemModel>
#include <QFont>

#include "editor/SectionCatalogue.h"

// The section picker's tree as a model over its catalogue: one column, the node's text, groups
// and subgroups bold, the node's key under modGeneral::KeyRole. What a node holds is read when
// the view first expands it (fetchMore): a group's subgroups' recipes, which of a subgroup's
// recipes have sections, a recipe's sections. A failure on the way is reported as an event
// handler's error with the given source and leaves the nodes without the children not read.
class SectionTreeModel : public QAbstractItemModel {
    Q_OBJECT

public:
    explicit SectionTreeModel(const char* expandSource, QObject* parent = nullptr);

    // Empties the tree and reads groups, subgroups and recipes anew. Raises a reading error
    // after showing what was read before it.
    void Refresh();

    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    bool hasChildren(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    bool canFetchMore(const QModelIndex& parent) const override;
    void fetchMore(const QModelIndex& parent) override;

private:
    static int LevelOf(const QModelIndex& index);
    static int NodeOf(const QModelIndex& index);
    QModelIndex IndexOf(int level, int node) const;
    // Whether a recipe shows sections, its subgroup's answers read if needed (errors reported).
    bool RecipeHasSections(int recipe) const;
    // Reads a subgroup's recipes, announcing them to the views when asked to; false after an
    // error, which is reported.
    bool ReadRecipes(int type, bool announce);

    const char* m_expandSource;
    // Reading on demand happens behind the model's const interface.
    mutable SectionCatalogue m_catalogue;
    QFont m_bold;
};
