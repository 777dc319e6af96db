#pragma once

#include <QByteArray>
#include <QString>
#include <functional>
#include <vector>

// The recipe tree's rows as the catalogue statements return them: the groups by name, each
// group's subgroups by name, each subgroup's recipes by title. A node is a kind ('G', 'T',
// 'R') and an index among the nodes of its kind; the recipes of a subgroup are consecutive.
// Each node keeps its row key and its text in UTF-8 in one shared buffer, about 50 bytes a
// recipe, so that a million recipes fit in some 60 MB.
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
    int RecipeCount() const { return static_cast<int>(m_recipeIds.size()); }

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

    const Branch* BranchOf(Node node) const;
    static QString TextAt(const QByteArray& buffer, quint32 start, quint32 end);
    void ReadGroups();
    void ReadTypes(quint32 group);
    void ReadRecipes(quint32 type);

    std::vector<Branch> m_groups;
    std::vector<Branch> m_types;
    std::vector<qint32> m_recipeIds;
    std::vector<quint32> m_recipeTextEnds;  // a recipe's text starts where the one before ends
    std::vector<quint32> m_recipeTypes;
    QByteArray m_branchText;
    QByteArray m_recipeText;
};
