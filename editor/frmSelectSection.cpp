#include "editor/frmSelectSection.h"

#include <QFont>
#include <QKeyEvent>
#include <QPushButton>
#include <QTreeWidget>

#include "core/AppError.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "core/ui/Controls.h"
#include "core/ui/KeepSelection.h"
#include "core/ui/UiServices.h"
#include "editor/frmNew.h"

namespace {

// The tree's place in the dialog and the margins kept free right of it and below it (twips).
constexpr int TreeLeftTwips = 120;
constexpr int TreeTopTwips = 120;
constexpr int RightMarginTwips = 120;
constexpr int BottomStripTwips = 375;

}  // namespace

frmSelectSection::frmSelectSection(frmNew* editor, QWidget* parent)
    : QDialog(parent), m_editor(editor) {
    using Controls::Pixels;
    setObjectName(QStringLiteral("frmSelectSection"));
    setWindowTitle(QStringLiteral("Izbira obstoječega razdelka"));
    tvSections = new QTreeWidget(this);
    tvSections->setObjectName(QStringLiteral("tvSections"));
    tvSections->setHeaderHidden(true);
    tvSections->setColumnCount(1);
    tvSections->setSelectionMode(QAbstractItemView::SingleSelection);
    tvSections->setEditTriggers(QAbstractItemView::NoEditTriggers);
    tvSections->setExpandsOnDoubleClick(true);
    KeepSelection::Apply(tvSections);
    tvSections->move(Pixels(TreeLeftTwips), Pixels(TreeTopTwips));
    cmdCancel = Controls::NewButton(this, QStringLiteral("cmdCancel"), QStringLiteral("Command1"));
    cmdCancel->setAutoDefault(false);
    cmdCancel->setVisible(false);
    connect(cmdCancel, &QPushButton::clicked, this, &frmSelectSection::cmdCancel_Click);
    connect(tvSections, &QTreeWidget::itemDoubleClicked, this,
            &frmSelectSection::tvSections_DblClick);
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

QTreeWidgetItem* frmSelectSection::AddNode(QTreeWidgetItem* parent, const QString& key,
                                           const QString& text, bool bold) {
    auto* node = parent ? new QTreeWidgetItem(parent, QStringList{text})
                        : new QTreeWidgetItem(tvSections, QStringList{text});
    node->setData(0, modGeneral::KeyRole, key);
    if (bold) {
        QFont font = node->font(0);
        font.setBold(true);
        node->setFont(0, font);
    }
    m_keys.insert(key);
    return node;
}

void frmSelectSection::RefreshTreeView() {
    ErrorPath::PassOn("frmSelectSection:RefreshTreeView", [&] {
        using modDatabase::GetRecordset;
        tvSections->clear();
        m_keys.clear();
        Recordset groups = GetRecordset(QStringLiteral("SELECT * FROM [Group] ORDER BY name;"));
        for (; !groups.Eof(); groups.MoveNext()) {
            const QString groupID = QString::number(groups.Long(QStringLiteral("groupID")));
            QTreeWidgetItem* group = AddNode(nullptr, QStringLiteral("G") + groupID,
                                             groups.Text(QStringLiteral("Name")), true);
            Recordset types = GetRecordset(QStringLiteral("SELECT * FROM [Type] WHERE groupID = ") +
                                           groupID + QStringLiteral(" ORDER BY name;"));
            for (; !types.Eof(); types.MoveNext()) {
                const QString typeID = QString::number(types.Long(QStringLiteral("typeID")));
                QTreeWidgetItem* type = AddNode(group, QStringLiteral("T") + typeID,
                                                types.Text(QStringLiteral("Name")), true);
                Recordset recipes =
                    GetRecordset(QStringLiteral("SELECT * FROM [Recipe] WHERE typeID = ") + typeID +
                                 QStringLiteral(" ORDER BY title;"));
                for (; !recipes.Eof(); recipes.MoveNext()) {
                    const QString recipeID =
                        QString::number(recipes.Long(QStringLiteral("recipeID")));
                    QTreeWidgetItem* recipe = AddNode(type, QStringLiteral("R") + recipeID,
                                                      recipes.Text(QStringLiteral("Title")), false);
                    Recordset sections = GetRecordset(
                        QStringLiteral("SELECT [Section].sectionID, [Section].title FROM [Section] "
                                       "INNER JOIN [RecipeSection] ON [Section].sectionID = "
                                       "[RecipeSection].sectionID WHERE [Section].title IS NOT "
                                       "NULL AND [RecipeSection].recipeID = ") +
                        recipeID + QStringLiteral(" ORDER BY [RecipeSection].place;"));
                    for (; !sections.Eof(); sections.MoveNext()) {
                        const QString key =
                            QStringLiteral("S") +
                            QString::number(sections.Long(QStringLiteral("sectionID")));
                        // A section linked to two recipes is offered once, under the first.
                        if (!m_keys.contains(key)) {
                            AddNode(recipe, key, sections.Text(QStringLiteral("Title")), false);
                        }
                    }
                    sections.Close();
                }
                recipes.Close();
            }
            types.Close();
        }
        groups.Close();
    });
}

void frmSelectSection::UnloadFromCode() {
    m_unloadingFromCode = true;
    QDialog::reject();
}

void frmSelectSection::tvSections_DblClick() {
    ErrorPath::Handle("frmSelectSection:tvSections_DblClick->", [&] {
        const QString key = modGeneral::ItemKey(tvSections->currentItem());
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
