#include "editor/SectionTreeModel.h"

#include <QScopeGuard>

#include "core/AppError.h"
#include "core/modGeneral.h"
#include "core/ui/UiServices.h"

namespace {

// An index's internal id: the level in the top bits, the node's index in its level below.
constexpr int LevelShift = 32;
constexpr quintptr NodeMask = 0xffffffffu;

}  // namespace

SectionTreeModel::SectionTreeModel(const char* expandSource, QObject* parent)
    : QAbstractItemModel(parent), m_expandSource(expandSource) {
    m_bold.setBold(true);
}

void SectionTreeModel::Refresh() {
    beginResetModel();
    const auto shown = qScopeGuard([&] { endResetModel(); });
    m_catalogue.ReadCatalogue();
}

int SectionTreeModel::LevelOf(const QModelIndex& index) {
    return static_cast<int>(index.internalId() >> LevelShift);
}

int SectionTreeModel::NodeOf(const QModelIndex& index) {
    return static_cast<int>(index.internalId() & NodeMask);
}

QModelIndex SectionTreeModel::IndexOf(int level, int node) const {
    const SectionCatalogue::Node& at = m_catalogue.At(level, node);
    const int row = at.parent < 0 ? node : node - m_catalogue.At(level - 1, at.parent).first;
    return createIndex(row, 0,
                       (static_cast<quintptr>(level) << LevelShift) | static_cast<quintptr>(node));
}

QModelIndex SectionTreeModel::index(int row, int column, const QModelIndex& parent) const {
    if (column != 0 || row < 0 || row >= rowCount(parent)) {
        return {};
    }
    if (!parent.isValid()) {
        return IndexOf(SectionCatalogue::GroupLevel, row);
    }
    const int level = LevelOf(parent) + 1;
    return IndexOf(level, m_catalogue.At(level - 1, NodeOf(parent)).first + row);
}

QModelIndex SectionTreeModel::parent(const QModelIndex& child) const {
    if (!child.isValid() || LevelOf(child) == SectionCatalogue::GroupLevel) {
        return {};
    }
    return IndexOf(LevelOf(child) - 1, m_catalogue.At(LevelOf(child), NodeOf(child)).parent);
}

int SectionTreeModel::rowCount(const QModelIndex& parent) const {
    if (!parent.isValid()) {
        return static_cast<int>(m_catalogue.Level(SectionCatalogue::GroupLevel).size());
    }
    if (parent.column() != 0 || LevelOf(parent) == SectionCatalogue::SectionLevel) {
        return 0;
    }
    return m_catalogue.At(LevelOf(parent), NodeOf(parent)).count;
}

int SectionTreeModel::columnCount(const QModelIndex&) const { return 1; }

bool SectionTreeModel::RecipeHasSections(int recipe) const {
    bool answer = false;
    ErrorPath::Handle(m_expandSource, [&] {
        ErrorPath::PassOn("frmSelectSection:ReadSectionAnswers",
                          [&] { answer = m_catalogue.HasSections(recipe); });
    });
    return answer;
}

bool SectionTreeModel::hasChildren(const QModelIndex& parent) const {
    if (!parent.isValid()) {
        return rowCount(parent) > 0;
    }
    switch (LevelOf(parent)) {
        case SectionCatalogue::GroupLevel:
            return rowCount(parent) > 0;
        case SectionCatalogue::TypeLevel:
            // Read when its group is expanded; asked before that, it is read now.
            if (!m_catalogue.IsRead(SectionCatalogue::TypeLevel, NodeOf(parent))) {
                const_cast<SectionTreeModel*>(this)->ReadRecipes(NodeOf(parent), false);
            }
            return rowCount(parent) > 0;
        case SectionCatalogue::RecipeLevel:
            return RecipeHasSections(NodeOf(parent));
        default:
            return false;
    }
}

bool SectionTreeModel::ReadRecipes(int type, bool announce) {
    std::vector<SectionCatalogue::Node> recipes;
    return ErrorPath::Handle(m_expandSource, [&] {
        ErrorPath::PassOn("frmSelectSection:ReadRecipes", [&] {
            // What was read joins the tree, also when reading fails part-way.
            const auto attach = qScopeGuard([&] {
                const bool any = announce && !recipes.empty();
                if (any) {
                    beginInsertRows(IndexOf(SectionCatalogue::TypeLevel, type), 0,
                                    static_cast<int>(recipes.size()) - 1);
                }
                m_catalogue.Attach(SectionCatalogue::RecipeLevel, type, recipes);
                if (any) {
                    endInsertRows();
                }
            });
            m_catalogue.ReadRecipes(type, recipes);
        });
    });
}

// A group being expanded: its subgroups' recipes, so that each subgroup shows whether it has
// any. A subgroup being expanded: which of its recipes show sections, before the view asks each.
// A recipe being expanded: its sections.
bool SectionTreeModel::canFetchMore(const QModelIndex& parent) const {
    if (!parent.isValid()) {
        return false;
    }
    const int node = NodeOf(parent);
    switch (LevelOf(parent)) {
        case SectionCatalogue::GroupLevel:
            return m_catalogue.CanFetch(SectionCatalogue::GroupLevel, node);
        case SectionCatalogue::TypeLevel:
            return m_catalogue.IsRead(SectionCatalogue::TypeLevel, node) &&
                   !m_catalogue.AnswersKnown(node);
        case SectionCatalogue::RecipeLevel:
            return RecipeHasSections(node) &&
                   m_catalogue.CanFetch(SectionCatalogue::RecipeLevel, node);
        default:
            return false;
    }
}

void SectionTreeModel::fetchMore(const QModelIndex& parent) {
    if (!canFetchMore(parent)) {
        return;
    }
    const int node = NodeOf(parent);
    switch (LevelOf(parent)) {
        case SectionCatalogue::GroupLevel: {
            // A group of a large collection holds many recipes: the hourglass while they come.
            UiServices::SetMousePointer(UiServices::vbHourglass);
            const auto pointer =
                qScopeGuard([] { UiServices::SetMousePointer(UiServices::vbDefault); });
            m_catalogue.MarkRead(SectionCatalogue::GroupLevel, node);
            const SectionCatalogue::Node& group =
                m_catalogue.At(SectionCatalogue::GroupLevel, node);
            bool failed = false;
            for (int type = group.first; type < group.first + group.count; ++type) {
                if (failed) {
                    // After a failure the remaining subgroups stay empty.
                    m_catalogue.MarkRead(SectionCatalogue::TypeLevel, type);
                } else if (!m_catalogue.IsRead(SectionCatalogue::TypeLevel, type)) {
                    failed = !ReadRecipes(type, true);
                }
            }
            return;
        }
        case SectionCatalogue::TypeLevel:
            ErrorPath::Handle(m_expandSource, [&] {
                ErrorPath::PassOn("frmSelectSection:ReadSectionAnswers",
                                  [&] { m_catalogue.ReadAnswers(node); });
            });
            return;
        default:
            break;
    }
    std::vector<SectionCatalogue::Node> sections;
    ErrorPath::Handle(m_expandSource, [&] {
        ErrorPath::PassOn("frmSelectSection:FetchSections", [&] {
            const auto attach = qScopeGuard([&] {
                if (!sections.empty()) {
                    beginInsertRows(parent, 0, static_cast<int>(sections.size()) - 1);
                    m_catalogue.Attach(SectionCatalogue::SectionLevel, node, sections);
                    endInsertRows();
                }
            });
            m_catalogue.ReadSections(node, sections);
        });
    });
}

QVariant SectionTreeModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) {
        return {};
    }
    const int level = LevelOf(index);
    const SectionCatalogue::Node& node = m_catalogue.At(level, NodeOf(index));
    switch (role) {
        case Qt::DisplayRole:
            return node.text;
        case Qt::FontRole:
            return level <= SectionCatalogue::TypeLevel ? QVariant(m_bold) : QVariant();
        case modGeneral::KeyRole:
            return SectionCatalogue::Key(level, node.id);
        default:
            return {};
    }
}

Qt::ItemFlags SectionTreeModel::flags(const QModelIndex& index) const {
    return index.isValid() ? Qt::ItemIsEnabled | Qt::ItemIsSelectable : Qt::NoItemFlags;
}
