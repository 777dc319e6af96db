#include "exchange/RecipeExport.h"

#include <QDir>
#include <QHash>
#include <QJsonDocument>
#include <memory>

#include "core/AppError.h"
#include "exchange/CooklangWriter.h"
#include "exchange/ExportFile.h"
#include "exchange/MealMasterWriter.h"
#include "exchange/SchemaOrgWriter.h"

namespace Exchange {
namespace {

// A Cooklang file's name that no earlier recipe of the export took: the title's, then with
// " (2)", " (3)", ... after it. `taken` holds the names given (case-folded) and, for each
// title's name, the number its next recipe tries first.
QString FreeName(QHash<QString, int>& taken, const Recipe& recipe) {
    const QString name = CooklangWriter::FileName(recipe);
    const QString folded = name.toCaseFolded();
    QString free = name;
    int& next = taken[folded];
    if (next > 0) {
        do {
            free = name.chopped(5) + QStringLiteral(" (%1).cook").arg(++next);
        } while (taken.contains(free.toCaseFolded()));
        taken.insert(free.toCaseFolded(), 1);
    } else {
        next = 1;
    }
    return free;
}

// Writes each recipe as the format does, into one file or a file each.
class Writing {
public:
    Writing(ExportFormat format, const QString& output) : m_format(format), m_output(output) {
        if (format == ExportFormat::Cooklang) {
            if (!QDir().mkpath(output)) {
                ErrorPath::Raise(AppError::PassedOn,
                                 QStringLiteral("Mape %1 ni mogoče ustvariti.").arg(output));
            }
            return;
        }
        m_file = std::make_unique<ExportFile>(output);
        if (format == ExportFormat::SchemaOrg) {
            m_file->Write("[\n");
        }
    }

    void Add(const Recipe& recipe) {
        switch (m_format) {
            case ExportFormat::MealMaster:
                m_file->Write(MealMasterWriter::Write(recipe).toUtf8());
                break;
            case ExportFormat::SchemaOrg:
                m_file->Write((m_count > 0 ? QByteArray(",\n") : QByteArray()) +
                              QJsonDocument(SchemaOrgWriter::Write(recipe))
                                  .toJson(QJsonDocument::Indented)
                                  .trimmed());
                break;
            case ExportFormat::Cooklang: {
                ExportFile::WriteWhole(m_output + QLatin1Char('/') + FreeName(m_taken, recipe),
                                       CooklangWriter::Write(recipe).toUtf8());
                break;
            }
        }
        ++m_count;
    }

    void Finish() {
        if (m_format == ExportFormat::SchemaOrg) {
            m_file->Write("\n]\n");
        }
        if (m_file) {
            m_file->Commit();
        }
    }

private:
    ExportFormat m_format;
    QString m_output;
    std::unique_ptr<ExportFile> m_file;
    QHash<QString, int> m_taken;
    int m_count = 0;
};

}  // namespace

bool ExportFormatNamed(const QString& name, ExportFormat& format) {
    static const QHash<QString, ExportFormat> formats{
        {QStringLiteral("mealmaster"), ExportFormat::MealMaster},
        {QStringLiteral("schema"), ExportFormat::SchemaOrg},
        {QStringLiteral("cooklang"), ExportFormat::Cooklang},
    };
    if (!formats.contains(name.toLower())) {
        return false;
    }
    format = formats.value(name.toLower());
    return true;
}

ExportFormat ExportFormatOfFile(const QString& fileName, QString& output) {
    output = fileName;
    if (fileName.endsWith(QLatin1String(".json"), Qt::CaseInsensitive)) {
        return ExportFormat::SchemaOrg;
    }
    if (fileName.endsWith(QLatin1String(".cook"), Qt::CaseInsensitive)) {
        output.chop(5);
        return ExportFormat::Cooklang;
    }
    return ExportFormat::MealMaster;
}

int ExportRecipes(modDatabase::DbConnection& connection, const RecipeScope& scope,
                  ExportFormat format, const QString& output,
                  const std::function<void(int done, int total)>& progress) {
    Writing writing(format, output);
    const QList<qint32> keys = RecipeKeys(connection, scope);
    int done = 0;
    ReadRecipes(connection, keys, [&](Recipe&& recipe) {
        writing.Add(recipe);
        if (progress) {
            progress(++done, static_cast<int>(keys.size()));
        }
    });
    writing.Finish();
    return static_cast<int>(keys.size());
}

}  // namespace Exchange
