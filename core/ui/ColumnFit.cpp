#include "core/ui/ColumnFit.h"

#include <QAbstractItemModel>
#include <QEvent>
#include <QHeaderView>
#include <QPointer>
#include <QTimer>
#include <QTreeView>
#include <algorithm>
#include <numeric>

namespace ColumnFit {
namespace {

const char* const FitterProperty = "morvenaColumnFit";

// Keeps the columns of one list fitted: at once when the list's width changes, and after the
// rows change once the events of the change are handled (a list filled row by row is measured
// once).
class Fitter : public QObject {
public:
    Fitter(QTreeView* list, QList<int> widths)
        : QObject(list),
          m_list(list),
          m_viewport(list->viewport()),
          m_headerViewport(list->header()->viewport()),
          m_given(std::move(widths)) {
        list->setProperty(FitterProperty, QVariant::fromValue(static_cast<QObject*>(this)));
        m_viewport->installEventFilter(this);
        m_headerViewport->installEventFilter(this);
        if (QAbstractItemModel* model = list->model()) {
            connect(model, &QAbstractItemModel::modelReset, this, &Fitter::Changed);
            connect(model, &QAbstractItemModel::layoutChanged, this, &Fitter::Changed);
            connect(model, &QAbstractItemModel::rowsInserted, this, &Fitter::Changed);
            connect(model, &QAbstractItemModel::rowsRemoved, this, &Fitter::Changed);
            connect(model, &QAbstractItemModel::dataChanged, this, &Fitter::Changed);
            connect(model, &QAbstractItemModel::headerDataChanged, this, &Fitter::Changed);
        }
        connect(list->header(), &QHeaderView::sectionResized, this, [this] {
            if (!m_fitting && m_headerPressed) {
                m_usersWidths = true;
            }
        });
        Changed();
    }

    QList<int>& Given() { return m_given; }

    // Measures the values again before the next fit.
    void Changed() {
        m_measured = false;
        if (!m_scheduled) {
            m_scheduled = true;
            QTimer::singleShot(0, this, [this] {
                m_scheduled = false;
                Refit();
            });
        }
    }

    void Refit() {
        if (m_usersWidths) {
            return;
        }
        if (!m_measured) {
            Measure();
        }
        const QHeaderView* header = m_list->header();
        QList<int> columns;  // the shown columns, in the order shown
        for (int visual = 0; visual < header->count(); ++visual) {
            const int column = header->logicalIndex(visual);
            if (!m_list->isColumnHidden(column)) {
                columns << column;
            }
        }
        QList<int> preferred;
        QList<int> needed;
        for (int column : columns) {
            preferred << (column < m_given.size() ? m_given[column] : 0);
            needed << (column < m_needed.size() ? m_needed[column] : 0);
        }
        const QList<int> widths = Widths(preferred, needed, m_list->viewport()->width());
        m_fitting = true;
        for (int i = 0; i < columns.size(); ++i) {
            if (m_list->columnWidth(columns[i]) != widths[i]) {
                m_list->setColumnWidth(columns[i], widths[i]);
            }
        }
        m_fitting = false;
    }

protected:
    // The watched widgets are compared by pointer only: their events also come while the list
    // is being destroyed, when it may no longer be used.
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (watched == m_headerViewport) {
            if (event->type() == QEvent::MouseButtonPress) {
                m_headerPressed = true;
            } else if (event->type() == QEvent::MouseButtonRelease) {
                m_headerPressed = false;
            }
        } else if (watched == m_viewport &&
                   (event->type() == QEvent::Resize || event->type() == QEvent::Show)) {
            Refit();
        }
        return QObject::eventFilter(watched, event);
    }

private:
    // What each column needs to show its heading and its values whole (the values Qt measures
    // for a column: those around the shown rows, up to the header's precision).
    void Measure() {
        const QHeaderView* header = m_list->header();
        const auto* view = static_cast<const QAbstractItemView*>(m_list.data());
        m_needed.clear();
        for (int column = 0; column < header->count(); ++column) {
            const int heading = header->isHidden() ? 0 : header->sectionSizeHint(column);
            m_needed << std::max({0, heading, view->sizeHintForColumn(column)});
        }
        m_measured = true;
    }

    QPointer<QTreeView> m_list;
    QObject* m_viewport;
    QObject* m_headerViewport;
    QList<int> m_given;
    QList<int> m_needed;
    bool m_measured = false;
    bool m_scheduled = false;
    bool m_fitting = false;
    bool m_headerPressed = false;
    bool m_usersWidths = false;
};

Fitter* FitterOf(const QTreeView* list) {
    return static_cast<Fitter*>(list->property(FitterProperty).value<QObject*>());
}

}  // namespace

QList<int> Widths(const QList<int>& preferred, const QList<int>& needed, int available) {
    QList<int> needs;
    QList<int> wants;
    for (int i = 0; i < preferred.size(); ++i) {
        needs << std::max(0, needed.value(i));
        wants << std::max(preferred[i], needs[i]);
    }
    if (wants.isEmpty()) {
        return wants;
    }
    const int wanted = std::accumulate(wants.begin(), wants.end(), 0);
    const int least = std::accumulate(needs.begin(), needs.end(), 0);
    if (wanted <= available) {
        wants.last() += available - wanted;
        return wants;
    }
    if (least >= available) {
        return needs;
    }
    // each column gives up the same share of what it could spare; the rounding goes to the last
    const qint64 spare = wanted - least;
    const qint64 keep = available - least;
    QList<int> widths;
    for (int i = 0; i < wants.size(); ++i) {
        widths << needs[i] + static_cast<int>((wants[i] - needs[i]) * keep / spare);
    }
    widths.last() += available - std::accumulate(widths.begin(), widths.end(), 0);
    return widths;
}

void Apply(QTreeView* list, const QList<int>& widths) {
    if (Fitter* fitter = FitterOf(list)) {
        fitter->Given() = widths;
        fitter->Changed();
        return;
    }
    new Fitter(list, widths);
}

void AtLeast(QTreeView* list, int column, int pixels) {
    Fitter* fitter = FitterOf(list);
    if (!fitter || column >= fitter->Given().size()) {
        return;
    }
    fitter->Given()[column] = std::max(fitter->Given()[column], pixels);
    fitter->Changed();
}

int Given(const QTreeView* list, int column) {
    const Fitter* fitter = FitterOf(list);
    return fitter ? const_cast<Fitter*>(fitter)->Given().value(column) : 0;
}

}  // namespace ColumnFit
