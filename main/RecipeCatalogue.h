#pragma once

#include <QByteArray>
#include <QString>
#include <functional>
#include <vector>

#include "core/database/RowReader.h"

// The recipe tree's rows as the catalogue statements return them: the groups by name, each
// group's subgroups by name, each subgroup's recipes by title. A node is a kind ('G', 'T',
// 'R') and an index among the nodes of its kind; the recipes of a subgroup are consecutive.
// Each node keeps its row key and its text in UTF-8 in a buffer shared with its siblings, about 50
// bytes a recipe, so that a million recipes fit in some 60 MB.
class RecipeCatalogue {
public:
    struct Node {
        char kind = 0;  // 0: none
        int index = -1;
        bool IsValid() const { return kind != 0; }
        bool operator==(const Node& other) const {
            return kind == other.kind && index == other.index;
        }
    };

    // Empties the catalogue and reads it anew, statement by statement; a failure raises the
    // database library's error and the rows read so far stay. `groupsRead`, when given, is
    // called with the first group's key ("" when there is none) once the groups are read, before
    // their subgroups.
    void Read(const std::function<void(const QString&)>& groupsRead = {});
    void Clear();

    int GroupCount() const { return static_cast<int>(m_groups.size()); }
    int TypeCount() const { return static_cast<int>(m_types.size()); }
    int RecipeCount() const { return static_cast<int>(m_recipeTypes.size()); }

    // The nodes below a node (the groups below none), and the node above one.
    int ChildCount(Node node) const;
    Node Child(Node node, int row) const;
    Node Parent(Node node) const;
    // The place of a node among the nodes of its parent.
    int Row(Node node) const;

    qint32 Id(Node node) const;
    QString Text(Node node) const;
    // "G", "T" or "R" followed by the row key.
    QString Key(Node node) const;
    // The node with a key (an invalid node when there is none).
    Node Find(const QString& key) const;

private:
    struct Branch {
        qint32 id;
        quint32 textStart;
        quint32 textEnd;
        quint32 parent;      // the group of a subgroup
        quint32 firstChild;  // index of its first subgroup or recipe
        quint32 childCount;
    };
    // One subgroup's recipes by title: keys, and their texts one after another.
    struct Recipes {
        std::vector<qint32> ids;
        std::vector<quint32> textEnds;  // a recipe's text starts where the one before ends
        QByteArray text;
    };
    using RowsOf = std::function<RowReader(const QString& sql)>;

    const Branch* BranchOf(Node node) const;
    static QString TextAt(const QByteArray& buffer, quint32 start, quint32 end);
    void ReadGroups();
    void ReadTypes(quint32 group);
    // The subgroups' recipes, read on two connections at once where the database allows it.
    void ReadAllRecipes();
    void ReadRecipes(const RowsOf& rowsOf, quint32 type);
    // Numbers the recipes in the order of their subgroups.
    void NumberRecipes();

    std::vector<Branch> m_groups;
    std::vector<Branch> m_types;
    std::vector<Recipes> m_recipes;      // by subgroup
    std::vector<quint32> m_recipeTypes;  // by recipe
    QByteArray m_branchText;
};
