#pragma once

#include <QAbstractItemModel>

#include "main/RecipeCatalogue.h"

// The recipe tree as the view shows it: the catalogue's nodes, their texts, groups and
// subgroups bold, each node's key under modGeneral::KeyRole. Nothing is made per node: the view
// asks for the rows it shows.
class RecipeTreeModel : public QAbstractItemModel {
public:
    explicit RecipeTreeModel(QObject* parent = nullptr);

    // Starts the tree anew, every node collapsed and none selected, and reads the catalogue
    // again unless nothing was committed to the database since it was read (then it would read
    // the same rows). A failure part-way keeps the nodes read so far and is raised.
    // `groupsRead` as RecipeCatalogue::Read gives it, also when nothing is read again.
    void Reload(const std::function<void(const QString&)>& groupsRead = {});
    // Removes every node.
    void Clear();
    const RecipeCatalogue& Catalogue() const { return m_catalogue; }
    QModelIndex IndexOf(RecipeCatalogue::Node node) const;
    RecipeCatalogue::Node NodeOf(const QModelIndex& index) const;

    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    bool hasChildren(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    // A search for a key finds its node at once; any other search is the model's usual one.
    QModelIndexList match(const QModelIndex& start, int role, const QVariant& value, int hits,
                          Qt::MatchFlags flags) const override;

private:
    RecipeCatalogue m_catalogue;
    QByteArray m_readAt;  // the database's change mark when the catalogue was read
};
