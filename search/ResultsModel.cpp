#include "search/ResultsModel.h"

ResultsModel::ResultsModel(QStringList headings, QObject* parent)
    : QAbstractTableModel(parent), m_headings(std::move(headings)) {}

void ResultsModel::SetRows(std::vector<Row> rows) {
    beginResetModel();
    m_rows = std::move(rows);
    endResetModel();
}

int ResultsModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

int ResultsModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : Columns;
}

QVariant ResultsModel::Alignment(int column) {
    return QVariant::fromValue(
        Qt::Alignment((column == 0 ? Qt::AlignLeft : Qt::AlignHCenter) | Qt::AlignVCenter));
}

QVariant ResultsModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount() || index.column() >= Columns) {
        return QVariant();
    }
    switch (role) {
        case Qt::DisplayRole:
            return At(index.row())[static_cast<size_t>(index.column())];
        case Qt::TextAlignmentRole:
            return Alignment(index.column());
        default:
            return QVariant();
    }
}

QVariant ResultsModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || section < 0 || section >= Columns) {
        return QVariant();
    }
    switch (role) {
        case Qt::DisplayRole:
            return m_headings.value(section);
        case Qt::TextAlignmentRole:
            return Alignment(section);
        default:
            return QVariant();
    }
}
