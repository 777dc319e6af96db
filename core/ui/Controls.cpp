#include "core/ui/Controls.h"

#include <QAbstractScrollArea>
#include <QEvent>
#include <QFocusEvent>
#include <QFontMetricsF>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QStyle>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <QtMath>
#include <algorithm>

#include "core/ui/ColumnFit.h"
#include "core/ui/WindowFit.h"

namespace Controls {
namespace {

template <class T>
T* Named(T* control, const QString& name) {
    control->setObjectName(name);
    return control;
}

// A scrolling box (a multi-line text box) takes its mouse presses on its viewport.
class GotFocusFilter : public QObject {
public:
    GotFocusFilter(QWidget* box, std::function<void()> gotFocus)
        : QObject(box), m_box(box), m_gotFocus(std::move(gotFocus)) {
        box->installEventFilter(this);
        if (auto* scrolling = qobject_cast<QAbstractScrollArea*>(box)) {
            scrolling->viewport()->installEventFilter(this);
        }
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (watched != m_box && event->type() != QEvent::MouseButtonPress) {
            return QObject::eventFilter(watched, event);
        }
        switch (event->type()) {
            case QEvent::FocusIn: {
                const Qt::FocusReason reason = static_cast<QFocusEvent*>(event)->reason();
                if (reason != Qt::ActiveWindowFocusReason && reason != Qt::PopupFocusReason) {
                    m_gotFocus();
                    m_focusedByMouse = reason == Qt::MouseFocusReason;
                }
                break;
            }
            case QEvent::FocusOut:
                m_focusedByMouse = false;
                break;
            case QEvent::MouseButtonPress:
                if (m_focusedByMouse) {
                    m_focusedByMouse = false;
                    return true;  // would put the cursor where it was pressed
                }
                break;
            default:
                break;
        }
        return QObject::eventFilter(watched, event);
    }

private:
    QWidget* m_box;
    std::function<void()> m_gotFocus;
    bool m_focusedByMouse = false;
};

}  // namespace

QLabel* NewLabel(QWidget* parent, const QString& name, const QString& caption) {
    auto* label = Named(new QLabel(caption, parent), name);
    label->setTextFormat(Qt::PlainText);
    return label;
}

QLineEdit* NewTextBox(QWidget* parent, const QString& name, int maxLength) {
    auto* box = Named(new QLineEdit(parent), name);
    if (maxLength > 0) {
        box->setMaxLength(maxLength);
    }
    return box;
}

QPlainTextEdit* NewMultiLineTextBox(QWidget* parent, const QString& name) {
    auto* box = Named(new QPlainTextEdit(parent), name);
    box->setTabChangesFocus(true);
    box->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    return box;
}

QPushButton* NewButton(QWidget* parent, const QString& name, const QString& caption) {
    return Named(new QPushButton(caption, parent), name);
}

int TextPixels(int twips, const QFont& font) {
    static const QString letters =
        QStringLiteral("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ");
    const double letterWidth = QFontMetricsF(font).horizontalAdvance(letters) / letters.size();
    return qRound(twips / 15.0 * std::max(1.0, letterWidth / MsSansSerifLetterWidth));
}

int FitPixels(const QTreeView* list, const QString& text) {
    // the item's text margin on either side, as the style draws it, and one pixel to spare
    const int margin = list->style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, list) + 1;
    return qCeil(QFontMetricsF(list->font()).horizontalAdvance(text)) + 2 * margin + 1;
}

QTreeWidget* NewListView(QWidget* parent, const QString& name, const QList<int>& widthsTwips,
                         const QStringList& headings) {
    auto* list = Named(new QTreeWidget(parent), name);
    list->setRootIsDecorated(false);
    list->setColumnCount(widthsTwips.size());
    list->setHeaderLabels(headings);
    list->setHeaderHidden(std::all_of(headings.begin(), headings.end(),
                                      [](const QString& h) { return h.isEmpty(); }));
    list->header()->setStretchLastSection(false);
    SetColumnWidths(list, widthsTwips);
    return list;
}

QTreeView* NewReportView(QWidget* parent, const QString& name, QAbstractItemModel* model,
                         const QList<int>& widthsTwips) {
    auto* list = Named(new QTreeView(parent), name);
    list->setModel(model);
    list->setRootIsDecorated(false);
    list->setItemsExpandable(false);
    list->setUniformRowHeights(true);
    list->header()->setStretchLastSection(false);
    SetColumnWidths(list, widthsTwips);
    return list;
}

void SetColumnWidths(QTreeView* list, const QList<int>& widthsTwips) {
    QList<int> widths;
    for (int i = 0; i < widthsTwips.size(); ++i) {
        widths << TextPixels(widthsTwips[i], list->font());
        list->setColumnWidth(i, widths.last());
        list->setColumnHidden(i, widthsTwips[i] == 0);
    }
    ColumnFit::Apply(list, widths);
}

void SetFirstSize(QWidget* window, int widthTwips, int heightTwips) {
    window->resize(TextPixels(widthTwips, window->font()), TextPixels(heightTwips, window->font()));
    WindowFit::Keep(window);
}

QWidget* NewScrollingPage(QWidget* window) {
    auto* area = Named(new QScrollArea(window), QStringLiteral("scrPage"));
    area->setFrameShape(QFrame::NoFrame);
    area->setWidgetResizable(true);
    auto* page = Named(new QWidget(area), QStringLiteral("picPage"));
    area->setWidget(page);
    auto* layout = new QVBoxLayout(window);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(area);
    return page;
}

void OnGotFocus(QWidget* box, std::function<void()> gotFocus) {
    new GotFocusFilter(box, std::move(gotFocus));
}

void SelectAll(QWidget* box) {
    if (auto* line = qobject_cast<QLineEdit*>(box)) {
        line->selectAll();
    } else if (auto* text = qobject_cast<QPlainTextEdit*>(box)) {
        text->selectAll();
    }
}

QString MultiLineText(const QPlainTextEdit* box) {
    return box->toPlainText().replace(QLatin1Char('\n'), QStringLiteral("\r\n"));
}

void SetMultiLineText(QPlainTextEdit* box, const QString& text) {
    box->setPlainText(QString(text).replace(QStringLiteral("\r\n"), QStringLiteral("\n")));
}

}  // namespace Controls
