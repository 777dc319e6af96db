#include "main/RecipeCatalogue.h"

#include <algorithm>

#include "core/database/RowReader.h"
#include "core/database/modDatabase.h"

namespace {

// Reads the rows of a catalogue statement: each row's key and the text appended to `text`;
// `added` takes the key and where the text ends.
template <class Added>
void ReadNodes(const QString& sql, const char* keyName, const char* textName, QByteArray& text,
               Added added) {
    RowReader rows = modDatabase::ReadRows(sql);
    const int key = rows.Field(QLatin1String(keyName));
    const int name = rows.Field(QLatin1String(textName));
    while (rows.Next()) {
        const auto id = static_cast<qint32>(rows.Number(key));
        rows.AppendText(name, text);
        added(id, static_cast<quint32>(text.size()));
    }
}

}  // namespace

void RecipeCatalogue::Clear() {
    m_groups.clear();
    m_types.clear();
    m_recipeIds.clear();
    m_recipeTextEnds.clear();
    m_recipeTypes.clear();
    m_branchText.clear();
    m_recipeText.clear();
}

void RecipeCatalogue::Read(const std::function<void(const QString&)>& groupsRead) {
    Clear();
    ReadGroups();
    if (groupsRead) {
        groupsRead(Key(Child(Node(), 0)));
    }
    for (quint32 group = 0; group < m_groups.size(); ++group) {
        ReadTypes(group);
    }
    m_branchText.squeeze();
    m_recipeText.squeeze();
}

void RecipeCatalogue::ReadGroups() {
    quint32 start = 0;
    ReadNodes(QStringLiteral("SELECT * FROM [Group] ORDER BY name;"), "groupID", "Name",
              m_branchText, [&](qint32 id, quint32 end) {
                  m_groups.push_back({id, start, end, 0, 0, 0});
                  start = end;
              });
}

void RecipeCatalogue::ReadTypes(quint32 group) {
    // A subgroup's recipes are read before the next subgroup, as the tree is built.
    std::vector<Branch> types;
    auto start = static_cast<quint32>(m_branchText.size());
    ReadNodes(QStringLiteral("SELECT * FROM [Type] WHERE groupID = ") +
                  QString::number(m_groups[group].id) + QStringLiteral(" ORDER BY name;"),
              "typeID", "Name", m_branchText, [&](qint32 id, quint32 end) {
                  types.push_back({id, start, end, group, 0, 0});
                  start = end;
              });
    m_groups[group].firstChild = static_cast<quint32>(m_types.size());
    for (const Branch& type : types) {
        m_types.push_back(type);
        ++m_groups[group].childCount;
        ReadRecipes(static_cast<quint32>(m_types.size() - 1));
    }
}

void RecipeCatalogue::ReadRecipes(quint32 type) {
    m_types[type].firstChild = static_cast<quint32>(m_recipeIds.size());
    ReadNodes(QStringLiteral("SELECT * FROM [Recipe] WHERE typeID = ") +
                  QString::number(m_types[type].id) + QStringLiteral(" ORDER BY title;"),
              "recipeID", "Title", m_recipeText, [&](qint32 id, quint32 end) {
                  m_recipeIds.push_back(id);
                  m_recipeTextEnds.push_back(end);
                  m_recipeTypes.push_back(type);
                  ++m_types[type].childCount;
              });
}

int RecipeCatalogue::ChildCount(Node node) const {
    if (!node.IsValid()) {
        return GroupCount();
    }
    const Branch* branch = BranchOf(node);
    return branch ? static_cast<int>(branch->childCount) : 0;
}

RecipeCatalogue::Node RecipeCatalogue::Child(Node node, int row) const {
    if (row < 0 || row >= ChildCount(node)) {
        return Node();
    }
    if (!node.IsValid()) {
        return Node{'G', row};
    }
    const int index = static_cast<int>(BranchOf(node)->firstChild) + row;
    return Node{node.kind == 'G' ? 'T' : 'R', index};
}

RecipeCatalogue::Node RecipeCatalogue::Parent(Node node) const {
    switch (node.kind) {
        case 'T':
            return Node{'G', static_cast<int>(m_types[node.index].parent)};
        case 'R':
            return Node{'T', static_cast<int>(m_recipeTypes[node.index])};
        default:
            return Node();
    }
}

int RecipeCatalogue::Row(Node node) const {
    const Node parent = Parent(node);
    return parent.IsValid() ? node.index - static_cast<int>(BranchOf(parent)->firstChild)
                            : node.index;
}

qint32 RecipeCatalogue::Id(Node node) const {
    if (node.kind == 'R') {
        return m_recipeIds[node.index];
    }
    const Branch* branch = BranchOf(node);
    return branch ? branch->id : 0;
}

QString RecipeCatalogue::Text(Node node) const {
    if (node.kind == 'R') {
        const quint32 start = node.index == 0 ? 0 : m_recipeTextEnds[node.index - 1];
        return TextAt(m_recipeText, start, m_recipeTextEnds[node.index]);
    }
    const Branch* branch = BranchOf(node);
    return branch ? TextAt(m_branchText, branch->textStart, branch->textEnd) : QString();
}

QString RecipeCatalogue::Key(Node node) const {
    return node.IsValid() ? QLatin1Char(node.kind) + QString::number(Id(node)) : QString();
}

RecipeCatalogue::Node RecipeCatalogue::Find(const QString& key) const {
    bool number = false;
    const qint32 id = key.mid(1).toInt(&number);
    if (key.isEmpty() || !number) {
        return Node();
    }
    const char kind = key.at(0).toLatin1();
    const auto indexOf = [&](const auto& ids, auto idOf) {
        const auto found = std::find_if(ids.begin(), ids.end(),
                                        [&](const auto& entry) { return idOf(entry) == id; });
        return found == ids.end() ? -1 : static_cast<int>(found - ids.begin());
    };
    const auto branchId = [](const Branch& branch) { return branch.id; };
    const int index = kind == 'G'   ? indexOf(m_groups, branchId)
                      : kind == 'T' ? indexOf(m_types, branchId)
                      : kind == 'R' ? indexOf(m_recipeIds, [](qint32 recipe) { return recipe; })
                                    : -1;
    const Node node = index < 0 ? Node() : Node{kind, index};
    return Key(node) == key ? node : Node();  // "R007" is no node's key
}

const RecipeCatalogue::Branch* RecipeCatalogue::BranchOf(Node node) const {
    switch (node.kind) {
        case 'G':
            return &m_groups[node.index];
        case 'T':
            return &m_types[node.index];
        default:
            return nullptr;
    }
}

QString RecipeCatalogue::TextAt(const QByteArray& buffer, quint32 start, quint32 end) {
    return QString::fromUtf8(buffer.constData() + start, static_cast<qsizetype>(end - start));
}
