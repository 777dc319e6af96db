// The main window's commands for other programs' files: importing recipes into a subgroup and
// exporting the recipes of the node selected in the tree.
#include <QInputDialog>
#include <QProgressDialog>
#include <QTreeView>

#include "core/AppError.h"
#include "core/database/modDatabase.h"
#include "core/modGeneral.h"
#include "core/ui/UiServices.h"
#include "exchange/RecipeExport.h"
#include "exchange/RecipeImport.h"
#include "main/frmMain.h"

namespace {

const QString ImportFilter = QStringLiteral(
    "Recepti drugih programov (*.mmf *.mm *.txt *.mxp *.mx2 *.xml *.cook *.html *.htm *.json)|"
    "*.mmf;*.mm;*.txt;*.mxp;*.mx2;*.xml;*.cook;*.html;*.htm;*.json|Vse datoteke (*)|*");
const QString ExportFilter = QStringLiteral(
    "MealMaster (*.mmf)|*.mmf|schema.org JSON (*.json)|*.json|Cooklang, mapa datotek (*.cook)|"
    "*.cook");

// The shared connection, opened when it is closed; a failure raises its reason.
modDatabase::DbConnection& OpenConnection() {
    if (!modDatabase::Connection || modDatabase::Connection->State() != modDatabase::adStateOpen) {
        modDatabase::OpenConnection();
    }
    if (modDatabase::Connection->State() != modDatabase::adStateOpen) {
        ErrorPath::Raise(AppError::PassedOn, modDatabase::Connection->LastError());
    }
    return *modDatabase::Connection;
}

// A progress dialog that shows when the work takes longer than a moment.
class Progress : public QProgressDialog {
public:
    Progress(QWidget* parent, const QString& title, int steps)
        : QProgressDialog(QString(), QStringLiteral("Prekliči"), 0, steps, parent) {
        setObjectName(QStringLiteral("dlgProgress"));
        setWindowTitle(title);
        setWindowModality(Qt::WindowModal);
        setMinimumDuration(400);
    }
};

}  // namespace

void frmMain::mnuDocumentImport_Click() {
    ErrorPath::Handle("frmMain:mnuDocumentImport_Click->", [&] {
        UiServices::FileDialogRequest request;
        request.parent = this;
        request.title = QStringLiteral("Uvozi recepte");
        request.filter = ImportFilter;
        request.mustExist = true;
        const std::optional<QStringList> files = UiServices::ShowFilesDialog(request);
        if (!files) {
            return;
        }
        Exchange::ImportOptions options;
        options.typeID = ImportType();
        if (options.typeID == 0) {
            return;
        }
        Progress progress(this, QStringLiteral("Uvoz receptov"), static_cast<int>(files->size()));
        const Exchange::ImportReport report =
            Exchange::ImportFiles(OpenConnection(), *files, options, [&](int file, int recipes) {
                progress.setLabelText(QStringLiteral("Datoteka %1 od %2, prebrani recepti: %3")
                                          .arg(file + 1)
                                          .arg(files->size())
                                          .arg(recipes));
                progress.setValue(file);
                return !progress.wasCanceled();
            });
        progress.reset();
        UiServices::ShowReport(QStringLiteral("Uvoz receptov"), report.Text(), this);
        const qint32 first = report.FirstRecipeID();
        RefreshAndRestore(first > 0 ? QStringLiteral("R%1").arg(first)
                                    : QStringLiteral("T%1").arg(options.typeID));
    });
}

qint32 frmMain::ImportType() {
    if (SelectedKind() == QLatin1String("R")) {
        return modGeneral::ItemKey(tvRecipes->currentIndex().parent()).mid(1).toInt();
    }
    if (SelectedKind() == QLatin1String("T")) {
        return SelectedID();
    }
    QStringList names;
    QList<qint32> keys;
    QString first;  // the first subgroup of the group selected
    Recordset types = modDatabase::GetRecordset(QStringLiteral(
        "SELECT [Type].typeID, [Type].groupID, [Group].name AS groupName, [Type].name AS "
        "typeName FROM [Type] "
        "INNER JOIN [Group] ON [Type].groupID = [Group].groupID ORDER BY [Group].name, "
        "[Type].name;"));
    for (; !types.Eof(); types.MoveNext()) {
        keys.append(types.Long(QStringLiteral("typeID")));
        names.append(types.Text(QStringLiteral("groupName")) + QStringLiteral(" – ") +
                     types.Text(QStringLiteral("typeName")));
        if (first.isEmpty() && SelectedKind() == QLatin1String("G") &&
            types.Long(QStringLiteral("groupID")) == SelectedID()) {
            first = names.last();
        }
    }
    types.Close();
    if (keys.isEmpty()) {
        UiServices::MsgBox(
            QStringLiteral("Zbirka nima podskupine. Najprej dodajte skupino in podskupino."),
            UiServices::vbInformation);
        return 0;
    }
    QInputDialog dialog(this);
    dialog.setObjectName(QStringLiteral("dlgImportType"));
    dialog.setWindowTitle(QStringLiteral("Uvoz receptov"));
    dialog.setLabelText(QStringLiteral("Podskupina, v katero naj se recepti uvozijo:"));
    dialog.setComboBoxItems(names);
    dialog.setTextValue(first.isEmpty() ? names.first() : first);
    dialog.setOkButtonText(QStringLiteral("Potrdi"));
    dialog.setCancelButtonText(QStringLiteral("Prekliči"));
    if (dialog.exec() != QDialog::Accepted) {
        return 0;
    }
    return keys.value(names.indexOf(dialog.textValue()));
}

void frmMain::mnuDocumentExport_Click() {
    ErrorPath::Handle("frmMain:mnuDocumentExport_Click->", [&] {
        static const QHash<QString, Exchange::RecipeScope::Kind> kinds{
            {QStringLiteral("R"), Exchange::RecipeScope::OneRecipe},
            {QStringLiteral("T"), Exchange::RecipeScope::OneType},
            {QStringLiteral("G"), Exchange::RecipeScope::OneGroup},
        };
        const Exchange::RecipeScope scope{
            kinds.value(SelectedKind(), Exchange::RecipeScope::Everything), SelectedID()};
        UiServices::FileDialogRequest request;
        request.parent = this;
        request.save = true;
        request.title = QStringLiteral("Izvozi recepte");
        request.filter = ExportFilter;
        request.defaultExtension = QStringLiteral(".mmf");
        request.initialFile = QStringLiteral("recepti.mmf");
        request.askOverwrite = true;
        const std::optional<QString> file = UiServices::ShowFileDialog(request);
        if (!file) {
            return;
        }
        QString output;
        const Exchange::ExportFormat format = Exchange::ExportFormatOfFile(*file, output);
        Progress progress(this, QStringLiteral("Izvoz receptov"), 0);
        progress.setCancelButton(nullptr);  // quick, and its files are renamed into place whole
        const int written = Exchange::ExportRecipes(OpenConnection(), scope, format, output,
                                                    [&](int done, int total) {
                                                        progress.setMaximum(total);
                                                        progress.setValue(done);
                                                    });
        progress.reset();
        UiServices::MsgBox(QStringLiteral("Izvoženi recepti: %1\n%2").arg(written).arg(output),
                           UiServices::vbInformation);
    });
}
