#include "editor/SectionCatalogue.h"

#include <QSet>
#include <algorithm>
#include <iterator>
#include <limits>

#include "core/AppError.h"
#include "core/database/Recordset.h"
#include "core/database/SqlStatement.h"
#include "core/database/modDatabase.h"

const QString SectionCatalogue::TitledSectionsSql = QStringLiteral(
    "SELECT [RecipeSection].recipeID, [RecipeSection].sectionID, (SELECT COUNT(*) FROM "
    "[RecipeSection] AS [Link] WHERE [Link].sectionID = [RecipeSection].sectionID) AS links FROM "
    "([Recipe] INNER JOIN [RecipeSection] ON [RecipeSection].recipeID = [Recipe].recipeID) INNER "
    "JOIN [Section] ON [Section].sectionID = [RecipeSection].sectionID WHERE [Section].title IS "
    "NOT NULL AND [Recipe].typeID = $1;");

namespace {

// Runs one of the picker's own statements with its values, handing each row to `row`.
template <class F>
void ForEachRow(const QString& sql, const QVariantList& values, F&& row) {
    modDatabase::DbConnection& connection = *modDatabase::Connection;
    SqlStatement statement(connection, SqlStatement::Streamed);
    if (!statement.Exec(connection.Translate(sql), values)) {
        modDatabase::RaiseDriverError(connection, statement.Failure());
    }
    while (statement.Next()) {
        row(statement);
    }
    if (!statement.Failure().text.isEmpty()) {
        modDatabase::RaiseDriverError(connection, statement.Failure());
    }
}

}  // namespace

void SectionCatalogue::Clear() {
    for (auto& level : m_levels) {
        level.clear();
        level.shrink_to_fit();
    }
    m_owners.clear();
}

QString SectionCatalogue::Key(int level, qint32 id) {
    static const char letters[] = {'G', 'T', 'R', 'S'};
    return QLatin1Char(letters[level]) + QString::number(id);
}

int SectionCatalogue::Add(int level, int parent, qint32 id, const QString& text) {
    std::vector<Node>& nodes = m_levels[level];
    const int index = static_cast<int>(nodes.size());
    Node node;
    node.text = text;
    node.id = id;
    node.parent = parent;
    node.first = static_cast<int>(m_levels[std::min(level + 1, int(SectionLevel))].size());
    nodes.push_back(std::move(node));
    if (parent >= 0) {
        Node& above = m_levels[level - 1][parent];
        if (above.count == 0) {
            above.first = index;
        }
        ++above.count;
    }
    return index;
}

void SectionCatalogue::ReadCatalogue() {
    using modDatabase::GetRecordset;
    Clear();
    Recordset groups = GetRecordset(QStringLiteral("SELECT * FROM [Group] ORDER BY name;"));
    for (; !groups.Eof(); groups.MoveNext()) {
        const qint32 groupID = groups.Long(QStringLiteral("groupID"));
        const int group = Add(GroupLevel, -1, groupID, groups.Text(QStringLiteral("Name")));
        Recordset types =
            GetRecordset(QStringLiteral("SELECT * FROM [Type] WHERE groupID = ") +
                         QString::number(groupID) + QStringLiteral(" ORDER BY name;"));
        for (; !types.Eof(); types.MoveNext()) {
            Add(TypeLevel, group, types.Long(QStringLiteral("typeID")),
                types.Text(QStringLiteral("Name")));
        }
        types.Close();
    }
    groups.Close();
}

bool SectionCatalogue::CanFetch(int level, int index) {
    if (level == RecipeLevel) {
        return !(m_levels[RecipeLevel][index].state & Node::Fetched) && HasSections(index);
    }
    return level == GroupLevel && !(m_levels[GroupLevel][index].state & Node::Fetched);
}

void SectionCatalogue::MarkRead(int level, int index) {
    m_levels[level][index].state |= Node::Fetched;
}

void SectionCatalogue::ReadRecipes(int type, std::vector<Node>& recipes) {
    MarkRead(TypeLevel, type);
    Recordset rows = modDatabase::GetRecordset(
        QStringLiteral("SELECT * FROM [Recipe] WHERE typeID = ") +
        QString::number(m_levels[TypeLevel][type].id) + QStringLiteral(" ORDER BY title;"));
    for (; !rows.Eof(); rows.MoveNext()) {
        Node recipe;
        recipe.id = rows.Long(QStringLiteral("recipeID"));
        recipe.text = rows.Text(QStringLiteral("Title"));
        recipe.parent = type;
        recipes.push_back(std::move(recipe));
    }
    rows.Close();
}

void SectionCatalogue::Attach(int level, int parent, std::vector<Node>& children) {
    std::vector<Node>& nodes = m_levels[level];
    Node& above = m_levels[level - 1][parent];
    above.first = static_cast<int>(nodes.size());
    above.count = static_cast<int>(children.size());
    std::move(children.begin(), children.end(), std::back_inserter(nodes));
    children.clear();
}

bool SectionCatalogue::HasSections(int recipe) {
    Node& node = m_levels[RecipeLevel][recipe];
    if (node.state & Node::Fetched) {
        return node.count > 0;
    }
    if (!(node.state & Node::Known)) {
        ReadAnswers(node.parent);
    }
    return (node.state & Node::HasSections) != 0;
}

bool SectionCatalogue::AnswersKnown(int type) const {
    const Node& subgroup = m_levels[TypeLevel][type];
    return subgroup.count == 0 || (m_levels[RecipeLevel][subgroup.first].state & Node::Known);
}

// Answers for every recipe of the subgroup whether it shows sections: one that holds a titled
// section linked to it alone does; a section linked to several recipes counts for the first of
// them in the tree only.
void SectionCatalogue::ReadAnswers(int type) {
    std::vector<Node>& recipes = m_levels[RecipeLevel];
    const Node& subgroup = m_levels[TypeLevel][type];
    QHash<qint32, int> byKey;
    byKey.reserve(subgroup.count);
    for (int i = subgroup.first; i < subgroup.first + subgroup.count; ++i) {
        recipes[i].state |= Node::Known;
        byKey.insert(recipes[i].id, i);
    }
    std::vector<std::pair<int, qint32>> shared;  // recipe index, section key
    ForEachRow(TitledSectionsSql, {subgroup.id}, [&](const SqlStatement& row) {
        const int recipe = byKey.value(row.Value(0).toInt(), -1);
        if (recipe < 0) {
            return;
        }
        if (row.Value(2).toLongLong() > 1) {
            shared.emplace_back(recipe, row.Value(1).toInt());
        } else {
            recipes[recipe].state |= Node::HasSections;
        }
    });
    for (const auto& [recipe, sectionID] : shared) {
        if (OwnerOf(sectionID) == recipes[recipe].id) {
            recipes[recipe].state |= Node::HasSections;
        }
    }
}

qint32 SectionCatalogue::OwnerOf(qint32 sectionID) {
    const auto found = m_owners.constFind(sectionID);
    if (found != m_owners.cend()) {
        return found.value();
    }
    qint32 owner = 0;
    std::pair<int, int> first{-1, 0};
    Recordset links = modDatabase::GetRecordset(
        QStringLiteral("SELECT * FROM [RecipeSection] WHERE sectionID = ") +
        QString::number(sectionID) + QStringLiteral(";"));
    for (; !links.Eof(); links.MoveNext()) {
        const qint32 recipeID = links.Long(QStringLiteral("recipeID"));
        const std::pair<int, int> place = PlaceOf(recipeID);
        if (place.first >= 0 && (first.first < 0 || place < first)) {
            first = place;
            owner = recipeID;
        }
    }
    links.Close();
    m_owners.insert(sectionID, owner);
    return owner;
}

std::pair<int, int> SectionCatalogue::PlaceOf(qint32 recipeID) {
    const std::vector<Node>& recipes = m_levels[RecipeLevel];
    for (size_t i = 0; i < recipes.size(); ++i) {
        if (recipes[i].id == recipeID) {
            return {recipes[i].parent, static_cast<int>(i)};
        }
    }
    // Not read yet: its subgroup's place decides.
    qint32 typeID = 0;
    Recordset recipe =
        modDatabase::GetRecordset(QStringLiteral("SELECT * FROM [Recipe] WHERE recipeID = ") +
                                  QString::number(recipeID) + QStringLiteral(";"));
    if (!recipe.Eof()) {
        typeID = recipe.Long(QStringLiteral("typeID"));
    }
    recipe.Close();
    const std::vector<Node>& types = m_levels[TypeLevel];
    for (size_t i = 0; i < types.size(); ++i) {
        if (types[i].id == typeID) {
            return {static_cast<int>(i), std::numeric_limits<int>::max()};
        }
    }
    return {-1, 0};
}

void SectionCatalogue::ReadSections(int recipe, std::vector<Node>& sections) {
    const bool any = HasSections(recipe);
    m_levels[RecipeLevel][recipe].state |= Node::Fetched;
    if (!any) {
        return;
    }
    Recordset rows = modDatabase::GetRecordset(
        QStringLiteral("SELECT [Section].sectionID, [Section].title FROM [Section] INNER JOIN "
                       "[RecipeSection] ON [Section].sectionID = [RecipeSection].sectionID WHERE "
                       "[Section].title IS NOT NULL AND [RecipeSection].recipeID = ") +
        QString::number(m_levels[RecipeLevel][recipe].id) +
        QStringLiteral(" ORDER BY [RecipeSection].place;"));
    QSet<qint32> shown;
    for (; !rows.Eof(); rows.MoveNext()) {
        const qint32 sectionID = rows.Long(QStringLiteral("sectionID"));
        const auto owner = m_owners.constFind(sectionID);
        // A section linked twice to the recipe, or to an earlier recipe too, is offered once.
        if (shown.contains(sectionID) ||
            (owner != m_owners.cend() && owner.value() != m_levels[RecipeLevel][recipe].id)) {
            continue;
        }
        shown.insert(sectionID);
        Node section;
        section.id = sectionID;
        section.text = rows.Text(QStringLiteral("Title"));
        section.parent = recipe;
        sections.push_back(std::move(section));
    }
    rows.Close();
}
