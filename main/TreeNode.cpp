#include "main/TreeNode.h"

#include <QFont>

#include "core/modGeneral.h"

namespace {

const QFont& BoldFont() {
    static const QFont font = [] {
        QFont bold;
        bold.setBold(true);
        return bold;
    }();
    return font;
}

}  // namespace

TreeNode::TreeNode(char kind, qint32 id, QString text)
    : QTreeWidgetItem(UserType), m_text(std::move(text)), m_id(id), m_kind(kind) {}

QVariant TreeNode::data(int column, int role) const {
    if (column == 0 && !m_keyChanged) {
        switch (role) {
            case Qt::DisplayRole:
            case Qt::EditRole:
                return m_text;
            case modGeneral::KeyRole:
                return QString(QLatin1Char(m_kind) + QString::number(m_id));
            case Qt::FontRole:
                return m_kind == 'R' ? QVariant() : QVariant(BoldFont());
            default:
                break;
        }
    }
    return QTreeWidgetItem::data(column, role);
}

void TreeNode::setData(int column, int role, const QVariant& value) {
    if (column == 0 && (role == Qt::DisplayRole || role == Qt::EditRole) && !m_keyChanged) {
        m_text = value.toString();
        emitDataChanged();
        return;
    }
    if (column == 0 && (role == modGeneral::KeyRole || role == Qt::FontRole) && !m_keyChanged) {
        // From now on every value lives in the item itself.
        m_keyChanged = true;
        QTreeWidgetItem::setData(0, Qt::DisplayRole, m_text);
        QTreeWidgetItem::setData(0, modGeneral::KeyRole,
                                 QString(QLatin1Char(m_kind) + QString::number(m_id)));
        if (m_kind != 'R') {
            QTreeWidgetItem::setData(0, Qt::FontRole, BoldFont());
        }
    }
    QTreeWidgetItem::setData(column, role, value);
}
