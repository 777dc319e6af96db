#include "editor/frmSelectSection.h"

#include <QKeyEvent>
#include <QPushButton>
#include <QTreeView>

#include "core/AppError.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "core/ui/Controls.h"
#include "core/ui/KeepSelection.h"
#include "core/ui/UiServices.h"
#include "editor/SectionTreeModel.h"
#include "editor/frmNew.h"

namespace {

// The tree's place in the dialog and the margins kept free right of it and below it (twips).
constexpr int TreeLeftTwips = 120;
constexpr int TreeTopTwips = 120;
constexpr int RightMarginTwips = 120;
constexpr int BottomStripTwips = 375;

}  // namespace

frmSelectSection::frmSelectSection(frmNew* editor, QWidget* parent)
    : QDialog(parent),
      m_editor(editor),
      m_model(new SectionTreeModel("frmSelectSection:tvSections_Expand->", this)) {
    using Controls::Pixels;
    setObjectName(QStringLiteral("frmSelectSection"));
    setWindowTitle(QStringLiteral("Izbira obstoječega razdelka"));
    tvSections = new QTreeView(this);
    tvSections->setObjectName(QStringLiteral("tvSections"));
    tvSections->setHeaderHidden(true);
    tvSections->setUniformRowHeights(true);
    tvSections->setModel(m_model);
    tvSections->setSelectionMode(QAbstractItemView::SingleSelection);
    tvSections->setEditTriggers(QAbstractItemView::NoEditTriggers);
    tvSections->setExpandsOnDoubleClick(true);
    KeepSelection::Apply(tvSections);
    tvSections->move(Pixels(TreeLeftTwips), Pixels(TreeTopTwips));
    cmdCancel = Controls::NewButton(this, QStringLiteral("cmdCancel"), QStringLiteral("Command1"));
    cmdCancel->setAutoDefault(false);
    cmdCancel->setVisible(false);
    connect(cmdCancel, &QPushButton::clicked, this, &frmSelectSection::cmdCancel_Click);
    connect(tvSections, &QTreeView::doubleClicked, this, &frmSelectSection::tvSections_DblClick);
    // A node expanded by the user or by code reads its children now, laid out or not.
    connect(tvSections, &QTreeView::expanded, m_model, [this](const QModelIndex& index) {
        if (m_model->canFetchMore(index)) {
            m_model->fetchMore(index);
        }
    });
    Controls::SetFirstSize(this, 4800, 6000);
}

int frmSelectSection::exec() {
    m_unloadingFromCode = false;
    Form_Load();
    return QDialog::exec();
}

void frmSelectSection::Form_Load() {
    ErrorPath::Handle("frmSelectSection:Form_Load->", [&] { RefreshTreeView(); });
    UiServices::SetMousePointer(UiServices::vbDefault);
}

void frmSelectSection::RefreshTreeView() {
    ErrorPath::PassOn("frmSelectSection:RefreshTreeView", [&] { m_model->Refresh(); });
}

void frmSelectSection::UnloadFromCode() {
    m_unloadingFromCode = true;
    QDialog::reject();
}

void frmSelectSection::tvSections_DblClick() {
    ErrorPath::Handle("frmSelectSection:tvSections_DblClick->", [&] {
        const QString key = tvSections->currentIndex().data(modGeneral::KeyRole).toString();
        if (key.left(1) == QLatin1String("S")) {
            m_editor->lngSectionID = EditSections::ToLong(key.mid(1));
            UnloadFromCode();
        }
    });
}

void frmSelectSection::cmdCancel_Click() {
    ErrorPath::Handle("frmSelectSection:cmdCancel_Click->", [&] {
        m_editor->lngSectionID = -1;
        UnloadFromCode();
    });
}

void frmSelectSection::Form_QueryUnload() {
    ErrorPath::Handle("frmSelectSection:Form_QueryUnload->", [&] {
        if (!m_unloadingFromCode) {
            m_editor->lngSectionID = -1;
        }
    });
}

// The close box (and every closing not started by the dialog's own code).
void frmSelectSection::reject() {
    Form_QueryUnload();
    m_unloadingFromCode = true;
    QDialog::reject();
}

// Escape presses the cancel button.
void frmSelectSection::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape && event->modifiers() == Qt::NoModifier) {
        cmdCancel_Click();
        return;
    }
    QDialog::keyPressEvent(event);
}

void frmSelectSection::resizeEvent(QResizeEvent* event) {
    QDialog::resizeEvent(event);
    Form_Resize();
}

void frmSelectSection::Form_Resize() {
    ErrorPath::Handle("frmSelectSection:Form_Resize->", [&] {
        using Controls::Pixels;
        const int width = this->width() - tvSections->x() - Pixels(RightMarginTwips);
        const int height = this->height() - tvSections->y() - Pixels(BottomStripTwips);
        tvSections->resize(std::max(width, 0), std::max(height, 0));
    });
}
