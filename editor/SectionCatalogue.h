#pragma once

#include <QHash>
#include <QString>
#include <vector>

// What the section picker shows: groups, their subgroups, the subgroups' recipes and the recipes'
// titled sections, kept compactly level by level (the children of a node stand one after the
// other in the level below). Groups, subgroups and recipes are read whole when the picker opens.
// A recipe's sections are read when its node is first expanded; whether a recipe has any is
// answered for all recipes of a subgroup at once, by one statement, the first time it is asked.
// A section linked to several recipes is offered once, under the first of them in the tree.
// Reading raises the program's errors; what was read before a failure stays.
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
    // Reads groups, subgroups and recipes in the picker's order (the statements of the recipe
    // tree, one per group and one per subgroup).
    void ReadCatalogue();

    const std::vector<Node>& Level(int level) const { return m_levels[level]; }
    const Node& At(int level, int index) const { return m_levels[level][index]; }

    // Whether it is known which recipes of the subgroup show sections.
    bool AnswersKnown(int type) const;
    // Reads which recipes of the subgroup show sections (one statement); they count as known
    // even when this fails.
    void ReadAnswers(int type);
    // Whether the recipe shows sections: reads the answers for its subgroup if not yet known.
    bool HasSections(int recipe);
    // Whether the recipe's sections are still to be read.
    bool CanFetch(int recipe);
    // Reads the recipe's titled sections, in its order, into `sections`; the recipe counts as
    // read even when this fails (what was read before the failure stays in `sections`).
    void ReadSections(int recipe, std::vector<Node>& sections);
    // Makes the sections read the recipe's children.
    void AttachSections(int recipe, std::vector<Node>& sections);

    // "G", "T", "R" or "S" followed by the row's key.
    static QString Key(int level, qint32 id);

private:
    int Add(int level, int parent, qint32 id, const QString& text);
    // The recipe to which a section linked to several recipes belongs in the picker: the first
    // of them in the tree (-1 when none of them is in it).
    int OwnerOf(qint32 sectionID);
    int RecipeIndex(qint32 recipeID);

    std::vector<Node> m_levels[4];
    // Sections linked to several recipes: the recipe (index) that shows each.
    QHash<qint32, int> m_owners;
    // Recipe keys and their indexes, by key; made when first needed.
    std::vector<std::pair<qint32, int>> m_recipeIndexes;
};
