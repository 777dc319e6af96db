#include "main/RecipeCatalogue.h"

#include <algorithm>

#include "core/database/SqlStatement.h"
#include "core/database/modDatabase.h"

namespace {

// The place of a column by its name in any letter case (the server writes names in lower case).
int ColumnOf(const SqlStatement& row, QLatin1String name) {
    for (int column = 0; column < row.ColumnCount(); ++column) {
        if (row.ColumnName(column).compare(name, Qt::CaseInsensitive) == 0) {
            return column;
        }
    }
    return -1;
}

// Column places found at a statement's first row.
struct Columns {
    int key = -1;
    int text = -1;
    void Find(const SqlStatement& row, QLatin1String keyName, QLatin1String textName) {
        if (key < 0) {
            key = ColumnOf(row, keyName);
            text = ColumnOf(row, textName);
        }
    }
};

quint32 Append(QByteArray& buffer, QByteArrayView text) {
    buffer.append(text);
    return static_cast<quint32>(buffer.size());
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

void RecipeCatalogue::Read() {
    Clear();
    ReadGroups();
    for (quint32 group = 0; group < m_groups.size(); ++group) {
        ReadTypes(group);
    }
    m_branchText.squeeze();
    m_recipeText.squeeze();
}

void RecipeCatalogue::ReadGroups() {
    Columns columns;
    modDatabase::ReadRows(
        QStringLiteral("SELECT * FROM [Group] ORDER BY name;"), [&](const SqlStatement& row) {
            columns.Find(row, QLatin1String("groupID"), QLatin1String("Name"));
            const quint32 start = static_cast<quint32>(m_branchText.size());
            m_groups.push_back({row.Value(columns.key).toInt(), start,
                                Append(m_branchText, row.Text(columns.text)), 0, 0, 0});
        });
}

void RecipeCatalogue::ReadTypes(quint32 group) {
    // A subgroup's recipes are read before the next subgroup, as the tree is built.
    Columns columns;
    std::vector<Branch> types;
    modDatabase::ReadRows(
        QStringLiteral("SELECT * FROM [Type] WHERE groupID = ") +
            QString::number(m_groups[group].id) + QStringLiteral(" ORDER BY name;"),
        [&](const SqlStatement& row) {
            columns.Find(row, QLatin1String("typeID"), QLatin1String("Name"));
            const quint32 start = static_cast<quint32>(m_branchText.size());
            types.push_back({row.Value(columns.key).toInt(), start,
                             Append(m_branchText, row.Text(columns.text)), group, 0, 0});
        });
    m_groups[group].firstChild = static_cast<quint32>(m_types.size());
    for (const Branch& type : types) {
        m_types.push_back(type);
        ++m_groups[group].childCount;
        ReadRecipes(static_cast<quint32>(m_types.size() - 1));
    }
}

void RecipeCatalogue::ReadRecipes(quint32 type) {
    Columns columns;
    m_types[type].firstChild = static_cast<quint32>(m_recipeIds.size());
    modDatabase::ReadRows(
        QStringLiteral("SELECT * FROM [Recipe] WHERE typeID = ") +
            QString::number(m_types[type].id) + QStringLiteral(" ORDER BY title;"),
        [&](const SqlStatement& row) {
            columns.Find(row, QLatin1String("recipeID"), QLatin1String("Title"));
            m_recipeIds.push_back(row.Value(columns.key).toInt());
            m_recipeTextEnds.push_back(Append(m_recipeText, row.Text(columns.text)));
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
