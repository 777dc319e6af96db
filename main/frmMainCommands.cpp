// The main window's commands on records, windows, printing and help: new, edit and delete by the
// delete rules, the list editors, the search window, printing the page shown, the settings
// dialog, the user guide and the about box.
#include <QAction>
#include <QScopeGuard>
#include <QTextBrowser>
#include <QTreeView>

#include "about/frmAbout.h"
#include "collection/RecipeRows.h"
#include "core/AppError.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "core/startup/Startup.h"
#include "core/ui/UiServices.h"
#include "display/modDisplay.h"
#include "editor/frmNew.h"
#include "lists/frmAddRecord.h"
#include "lists/frmEditList.h"
#include "main/frmMain.h"
#include "search/frmFind.h"
#include "settings/frmSettings.h"

using UiServices::MsgBox;
using UiServices::SetMousePointer;

namespace {

// Runs a statement through a result set and tells whether it found any row.
bool HasRows(const QString& sql) {
    Recordset rs = modDatabase::GetRecordset(sql);
    const bool found = !rs.Eof();
    rs.Close();
    return found;
}

}  // namespace

qint32 frmMain::EditRecipe(qint32 recipeID) {
    frmNew editor(this);
    editor.lngRecipeID = recipeID;
    editor.exec();
    return modGeneral::lngLastID;
}

void frmMain::mnuDocumentNew_Click() {
    ErrorPath::Handle("frmMain:mnuDocumentNew_Click->", [&] {
        SetMousePointer(UiServices::vbHourglass);
        const QString selected = SelectedKey();
        const qint32 saved = EditRecipe(-1);
        RefreshAndRestore(saved != -1 ? QStringLiteral("R%1").arg(saved) : selected);
    });
}

void frmMain::mnuDocumentEdit_Click() {
    ErrorPath::Handle("frmMain:mnuDocumentEdit_Click->", [&] {
        SetMousePointer(UiServices::vbHourglass);
        if (SelectedKind() != QLatin1String("R")) {
            SetMousePointer(UiServices::vbDefault);
            return;
        }
        EditRecipe(SelectedID());
        RefreshAndRestore(SelectedKey());
    });
}

void frmMain::EditList(qint32 mode) {
    SetMousePointer(UiServices::vbHourglass);
    frmEditList dialog(this);
    dialog.rtMode = mode;
    dialog.exec();
    SetMousePointer(UiServices::vbDefault);
}

void frmMain::mnuEditSources_Click() {
    ErrorPath::Handle("frmMain:mnuEditSources_Click->", [&] { EditList(frmAddRecord::rtSource); });
}

void frmMain::mnuEditIngredients_Click() {
    ErrorPath::Handle("frmMain:mnuEditIngredients_Click->",
                      [&] { EditList(frmAddRecord::rtIngredient); });
}

void frmMain::mnuEditUnits_Click() {
    ErrorPath::Handle("mnuEditUnits_Click->", [&] { EditList(frmAddRecord::rtUnit); });
}

// The search window is not modal: it stays open beside the main window until it is closed.
void frmMain::mnuToolsFind_Click() {
    ErrorPath::Handle("frmMain:mnuToolsFind_Click->", [&] {
        SetMousePointer(UiServices::vbHourglass);
        if (!m_find) {
            m_find = new frmFind(this);
            m_find->setAttribute(Qt::WA_DeleteOnClose);
            connect(m_find, &frmFind::RecipeChosen, this, &frmMain::ShowNode);
        }
        m_find->show();
        m_find->raise();
        m_find->activateWindow();
        SetMousePointer(UiServices::vbDefault);
    });
}

qint32 frmMain::EditRecord(qint32 mode, qint32 id, qint32 groupID) {
    frmAddRecord dialog(this);
    dialog.rtMode = mode;
    dialog.lngID = id;
    dialog.lngGroupID = groupID;
    dialog.exec();
    return modGeneral::lngLastID;
}

// After a new record is saved its node is shown; after a cancel the node that was selected.
void frmMain::mnuEditGroupNew_Click() {
    ErrorPath::Handle("frmMain:mnuEditGroupNew_Click->", [&] {
        SetMousePointer(UiServices::vbHourglass);
        const qint32 saved = EditRecord(frmAddRecord::rtGroup, -1, 0);
        RefreshAndRestore(saved != -1 ? QStringLiteral("G%1").arg(saved) : SelectedKey());
    });
}

void frmMain::mnuEditGroupEdit_Click() {
    ErrorPath::Handle("frmMain:mnuEditGroupEdit_Click->", [&] {
        SetMousePointer(UiServices::vbHourglass);
        if (SelectedKind() != QLatin1String("G")) {
            SetMousePointer(UiServices::vbDefault);
            return;
        }
        const QString key = SelectedKey();
        EditRecord(frmAddRecord::rtGroup, SelectedID(), 0);
        RefreshAndRestore(key);
    });
}

void frmMain::mnuEditTypeNew_Click() {
    ErrorPath::Handle("frmMain:mnuEditTypeNew_Click->", [&] {
        SetMousePointer(UiServices::vbHourglass);
        const QString selected = SelectedKey();
        const qint32 saved = EditRecord(frmAddRecord::rtType, -1, SelectedGroupID());
        RefreshAndRestore(saved != -1 ? QStringLiteral("T%1").arg(saved) : selected);
    });
}

void frmMain::mnuEditTypeEdit_Click() {
    ErrorPath::Handle("frmMain:mnuEditTypeEdit_Click->", [&] {
        SetMousePointer(UiServices::vbHourglass);
        if (SelectedKind() != QLatin1String("T")) {
            SetMousePointer(UiServices::vbDefault);
            return;
        }
        const QString key = SelectedKey();
        EditRecord(frmAddRecord::rtType, SelectedID(), SelectedGroupID());
        RefreshAndRestore(key);
    });
}

void frmMain::mnuDocumentDelete_Click() {
    ErrorPath::Handle("frmMain:mnuDocumentDelete_Click->", [&] {
        SetMousePointer(UiServices::vbHourglass);
        if (SelectedKind() != QLatin1String("R")) {
            SetMousePointer(UiServices::vbDefault);
            return;
        }
        if (MsgBox(QStringLiteral("Ali res želite izbrisati recept?"),
                   UiServices::vbYesNo + UiServices::vbQuestion) == UiServices::vbNo) {
            SetMousePointer(UiServices::vbDefault);
            return;
        }
        const QString key = QString::number(SelectedID());
        Recordset sections = modDatabase::GetRecordset(
            QStringLiteral("SELECT sectionID FROM [RecipeSection] WHERE recipeID = ") + key +
            QStringLiteral(";"));
        for (; !sections.Eof(); sections.MoveNext()) {
            RecipeRows::DeleteSection(sections.Long(QStringLiteral("sectionID")));
        }
        sections.Close();
        RecipeRows::DeleteRows(QStringLiteral("SELECT * FROM [Recipe] WHERE recipeID = ") + key +
                               QStringLiteral(";"));
        RefreshTreeView();
        SetMousePointer(UiServices::vbDefault);
    });
}

void frmMain::mnuEditGroupDelete_Click() {
    ErrorPath::Handle("frmMain:mnuEditGroupDelete_Click->", [&] {
        SetMousePointer(UiServices::vbHourglass);
        if (SelectedKind() == QLatin1String("G") &&
            MsgBox(QStringLiteral("Ali res želite izbrisati skupino?"),
                   UiServices::vbYesNo + UiServices::vbQuestion) == UiServices::vbYes) {
            const QString key = QString::number(SelectedID());
            if (HasRows(QStringLiteral("SELECT typeID FROM [Type] WHERE groupID = ") + key +
                        QStringLiteral(";"))) {
                MsgBox(QStringLiteral("Najprej morate izbrisati vse pripadajoče podskupine."),
                       UiServices::vbOKOnly + UiServices::vbInformation);
            } else {
                RecipeRows::DeleteRows(QStringLiteral("SELECT * FROM [Group] WHERE groupID = ") +
                                       key + QStringLiteral(";"));
                RefreshTreeView();
            }
        }
        SetMousePointer(UiServices::vbDefault);
    });
}

void frmMain::mnuEditTypeDelete_Click() {
    ErrorPath::Handle("frmMain:mnuEditTypeDelete_Click->", [&] {
        SetMousePointer(UiServices::vbHourglass);
        if (SelectedKind() == QLatin1String("T") &&
            MsgBox(QStringLiteral("Ali res želite izbrisati podskupino?"),
                   UiServices::vbYesNo + UiServices::vbQuestion) == UiServices::vbYes) {
            const QString key = QString::number(SelectedID());
            if (HasRows(QStringLiteral("SELECT recipeID FROM [Recipe] WHERE typeID = ") + key +
                        QStringLiteral(";"))) {
                MsgBox(QStringLiteral("Najprej morate izbrisati vse pripadajoče recepte."),
                       UiServices::vbOKOnly + UiServices::vbInformation);
            } else {
                RecipeRows::DeleteRows(QStringLiteral("SELECT * FROM [Type] WHERE typeID = ") +
                                       key + QStringLiteral(";"));
                RefreshTreeView();
            }
        }
        SetMousePointer(UiServices::vbDefault);
    });
}

void frmMain::mnuDocumentPrint_Click() {
    ErrorPath::Handle("frmMain:mnuDocumentPrint_Click->", [&] {
        SetMousePointer(UiServices::vbHourglass);
        PrintDisplay(true);
        SetMousePointer(UiServices::vbDefault);
    });
}

void frmMain::PrintDisplay(bool showDialog) {
    ErrorPath::PassOn("frmMain:PrintDisplay", [&] {
        if (m_address == BlankPage) {
            return;  // nothing is shown, so there is nothing to print
        }
        m_savedPageSetup = PagePrinter::ReadPageSetup();
        PagePrinter::WritePageSetup(PagePrinter::ProgramPageSetup);
        // The user's own page set-up goes back also when printing is cancelled or fails.
        const auto teardown = qScopeGuard([this] { webDisplay_PrintTemplateTeardown(); });
        PagePrinter::PrintFile(m_address, showDialog, this);
    });
}

// When the print job is done the user's own page set-up goes back in place.
void frmMain::webDisplay_PrintTemplateTeardown() {
    ErrorPath::Handle("frmMain:tvRecipes_NodeClick->",
                      [&] { PagePrinter::WritePageSetup(m_savedPageSetup); });
}

void frmMain::mnuDocumentQuit_Click() {
    ErrorPath::Handle("frmMain:mnuDocumentQuit_Click->", [&] {
        SetMousePointer(UiServices::vbHourglass);
        SetMousePointer(UiServices::vbDefault);
        close();
    });
}

void frmMain::mnuToolsSettings_Click() {
    ErrorPath::Handle("frmMain:mnuToolsSettings_Click->", [&] {
        SetMousePointer(UiServices::vbHourglass);
        frmSettings dialog(this);
        dialog.exec();
        SetMousePointer(UiServices::vbDefault);
    });
}

void frmMain::mnuHelpDocumentation_Click() {
    ErrorPath::Handle("frmMain:mnuHelpDocumentation_Click->", [&] {
        SetMousePointer(UiServices::vbHourglass);
        modGeneral::OpenRegisteredFile(QStringLiteral("docs/page11.html"));
        SetMousePointer(UiServices::vbDefault);
    });
}

void frmMain::mnuHelpAbout_Click() {
    ErrorPath::Handle("frmMain:mnuHelpAbout_Click->", [&] {
        SetMousePointer(UiServices::vbHourglass);
        frmAbout dialog(this);
        SetMousePointer(UiServices::vbDefault);
        dialog.exec();
    });
}
