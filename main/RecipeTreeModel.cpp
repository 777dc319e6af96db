#include "main/RecipeTreeModel.h"

#include <QFont>
#include <QScopeGuard>

#include "core/database/ChangeMark.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"

namespace {

// A node's kind and index in the model index's one number: the kind above the 32 bits of the
// index.
quintptr Pack(RecipeCatalogue::Node node) {
    return (static_cast<quintptr>(static_cast<unsigned char>(node.kind)) << 32) |
           static_cast<quint32>(node.index);
}

RecipeCatalogue::Node Unpack(quintptr id) {
    return RecipeCatalogue::Node{static_cast<char>(id >> 32), static_cast<int>(id & 0xffffffffu)};
}

const QFont& BoldFont() {
    static const QFont font = [] {
        QFont bold;
        bold.setBold(true);
        return bold;
    }();
    return font;
}

}  // namespace

RecipeTreeModel::RecipeTreeModel(QObject* parent) : QAbstractItemModel(parent) {}

void RecipeTreeModel::Reload(const std::function<void(const QString&)>& groupsRead) {
    beginResetModel();
    const auto ended = qScopeGuard([this] { endResetModel(); });
    const QByteArray mark =
        modDatabase::Connection ? ChangeMark::Of(*modDatabase::Connection) : QByteArray();
    if (!mark.isEmpty() && mark == m_readAt) {
        if (groupsRead) {
            groupsRead(m_catalogue.Key(m_catalogue.Child({}, 0)));
        }
        return;
    }
    m_readAt.clear();
    m_catalogue.Read(groupsRead);
    m_readAt = mark;
}

void RecipeTreeModel::Clear() {
    beginResetModel();
    m_catalogue.Clear();
    m_readAt.clear();
    endResetModel();
}

QModelIndex RecipeTreeModel::IndexOf(RecipeCatalogue::Node node) const {
    return node.IsValid() ? createIndex(m_catalogue.Row(node), 0, Pack(node)) : QModelIndex();
}

RecipeCatalogue::Node RecipeTreeModel::NodeOf(const QModelIndex& index) const {
    return index.isValid() && index.model() == this ? Unpack(index.internalId())
                                                    : RecipeCatalogue::Node();
}

QModelIndex RecipeTreeModel::index(int row, int column, const QModelIndex& parent) const {
    if (column != 0) {
        return QModelIndex();
    }
    const RecipeCatalogue::Node node = m_catalogue.Child(NodeOf(parent), row);
    return node.IsValid() ? createIndex(row, 0, Pack(node)) : QModelIndex();
}

QModelIndex RecipeTreeModel::parent(const QModelIndex& child) const {
    return IndexOf(m_catalogue.Parent(NodeOf(child)));
}

int RecipeTreeModel::rowCount(const QModelIndex& parent) const {
    return parent.column() > 0 ? 0 : m_catalogue.ChildCount(NodeOf(parent));
}

int RecipeTreeModel::columnCount(const QModelIndex&) const { return 1; }

bool RecipeTreeModel::hasChildren(const QModelIndex& parent) const { return rowCount(parent) > 0; }

QVariant RecipeTreeModel::data(const QModelIndex& index, int role) const {
    const RecipeCatalogue::Node node = NodeOf(index);
    if (!node.IsValid()) {
        return QVariant();
    }
    switch (role) {
        case Qt::DisplayRole:
            return m_catalogue.Text(node);
        case Qt::FontRole:
            return node.kind == 'R' ? QVariant() : QVariant(BoldFont());
        case modGeneral::KeyRole:
            return m_catalogue.Key(node);
        default:
            return QVariant();
    }
}

QModelIndexList RecipeTreeModel::match(const QModelIndex& start, int role, const QVariant& value,
                                       int hits, Qt::MatchFlags flags) const {
    const bool wholeTree = start == index(0, 0) && flags.testFlag(Qt::MatchRecursive);
    if (role != modGeneral::KeyRole || !wholeTree ||
        (flags & Qt::MatchTypeMask) != Qt::MatchExactly || hits == 0) {
        return QAbstractItemModel::match(start, role, value, hits, flags);
    }
    const QModelIndex found = IndexOf(m_catalogue.Find(value.toString()));
    return found.isValid() ? QModelIndexList{found} : QModelIndexList();
}
