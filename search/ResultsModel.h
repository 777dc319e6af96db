#pragma once

#include <QAbstractTableModel>
#include <QString>
#include <QStringList>
#include <array>
#include <vector>

// The rows of the search window's result list: title, recipe key, group and subgroup as text,
// the title left-aligned and the other three centred, under the four headings. The view asks
// for the rows it shows, so a search that finds 70,000 recipes lists them at once.
class ResultsModel : public QAbstractTableModel {
    Q_OBJECT

public:
    static constexpr int Columns = 4;
    // One entry: its own text (the title) and the texts of the other columns; columns that
    // were never filled are empty.
    using Row = std::array<QString, Columns>;

    ResultsModel(QStringList headings, QObject* parent);

    // Replaces every entry.
    void SetRows(std::vector<Row> rows);
    const Row& At(int row) const { return m_rows[static_cast<size_t>(row)]; }

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    static QVariant Alignment(int column);

    QStringList m_headings;
    std::vector<Row> m_rows;
};
