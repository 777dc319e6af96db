#pragma once

#include <QHash>
#include <QString>
#include <vector>

// What the section picker shows: groups, their subgroups, the subgroups' recipes and the recipes'
// titled sections, kept compactly level by level (the children of a node stand one after the
// other in the level below). Groups and subgroups are read when the picker opens; the recipes of
// a group's subgroups when the group is first expanded, so that each subgroup knows whether it
// has any before it is shown; a recipe's sections when its node is first expanded. Whether a
// recipe has sections is answered for all recipes of a subgroup at once, by one statement, the
// first time it is asked (the subgroup is being expanded). A section linked to several recipes is
// offered once, under the first of them in the tree. Reading raises the program's errors; what
// was read before a failure stays.
class SectionCatalogue {
public:
    enum Level { GroupLevel = 0, TypeLevel = 1, RecipeLevel = 2, SectionLevel = 3 };

    struct Node {
        QString text;
        qint32 id = 0;
        qint32 parent = -1;  // index in the level above; -1 for a group
        qint32 first = 0;    // index of the first child in the level below
        qint32 count = 0;    // children read so far
        quint8 state = 0;    // Node::Known, Node::HasSections, Node::Fetched
        enum : quint8 { Known = 1, HasSections = 2, Fetched = 4 };
    };

    // The statement that tells, for the recipes of one subgroup ($1 its typeID), which titled
    // sections they hold and to how many recipes each of those sections is linked.
    static const QString TitledSectionsSql;

    void Clear();
    // Reads groups and their subgroups in the picker's order (the statements of the recipe
    // tree: the groups, one per group for its subgroups).
    void ReadCatalogue();
    // Whether the node's children are still to be read (a group: its subgroups' recipes; a
    // recipe: its sections).
    bool CanFetch(int level, int index);
    // Reads the subgroup's recipes, in title order, into `recipes` (the subgroup counts as read
    // even when this fails; what was read before the failure stays in `recipes`).
    void ReadRecipes(int type, std::vector<Node>& recipes);
    // Marks a node's children as read, or about to be.
    void MarkRead(int level, int index);
    bool IsRead(int level, int index) const {
        return (m_levels[level][index].state & Node::Fetched) != 0;
    }

    const std::vector<Node>& Level(int level) const { return m_levels[level]; }
    const Node& At(int level, int index) const { return m_levels[level][index]; }

    // Whether it is known which recipes of the subgroup show sections.
    bool AnswersKnown(int type) const;
    // Reads which recipes of the subgroup show sections (one statement); they count as known
    // even when this fails.
    void ReadAnswers(int type);
    // Whether the recipe shows sections: reads the answers for its subgroup if not yet known.
    bool HasSections(int recipe);
    // Reads the recipe's titled sections, in its order, into `sections`; the recipe counts as
    // read even when this fails (what was read before the failure stays in `sections`).
    void ReadSections(int recipe, std::vector<Node>& sections);
    // Makes the nodes read (recipes or sections) the children of the node above them.
    void Attach(int level, int parent, std::vector<Node>& children);

    // "G", "T", "R" or "S" followed by the row's key.
    static QString Key(int level, qint32 id);

private:
    int Add(int level, int parent, qint32 id, const QString& text);
    // The recipe (key) under which a section linked to several recipes is offered: the first of
    // them in the tree (0 when none of them is in it).
    qint32 OwnerOf(qint32 sectionID);
    // Where a recipe stands in the tree: its subgroup's index, then its own index among the
    // recipes read (after all others of its subgroup when not read); the subgroup is -1 when the
    // recipe is not in the tree.
    std::pair<int, int> PlaceOf(qint32 recipeID);

    std::vector<Node> m_levels[4];
    // Sections linked to several recipes: the recipe (key) that shows each.
    QHash<qint32, qint32> m_owners;
};
