#include "exchange/RecipeFiles.h"

#include <QFile>
#include <QFileInfo>

#include "exchange/CooklangFormat.h"
#include "exchange/MasterCookTextFormat.h"
#include "exchange/MasterCookXmlFormat.h"
#include "exchange/MealMasterFormat.h"
#include "exchange/RecipeMlFormat.h"
#include "exchange/SchemaOrgFormat.h"

namespace Exchange::RecipeFiles {
namespace {

// How much of a file tells its format.
constexpr qint64 StartSize = 64 * 1024;

const QString MealMaster = QStringLiteral("MealMaster");
const QString MasterCookText = QStringLiteral("MasterCook MXP");
const QString MasterCookXml = QStringLiteral("MasterCook MX2");
const QString RecipeMl = QStringLiteral("RecipeML");
const QString WebPage = QStringLiteral("spletna stran ali JSON (schema.org)");
const QString Cooklang = QStringLiteral("Cooklang");

}  // namespace

QString FormatOf(const QByteArray& data) {
    if (MealMasterFormat::Recognizes(data)) {
        return MealMaster;
    }
    if (MasterCookTextFormat::Recognizes(data)) {
        return MasterCookText;
    }
    if (MasterCookXmlFormat::Recognizes(data)) {
        return MasterCookXml;
    }
    if (RecipeMlFormat::Recognizes(data)) {
        return RecipeMl;
    }
    if (SchemaOrgFormat::Recognises(data)) {
        return WebPage;
    }
    if (CooklangFormat::Recognizes(data)) {
        return Cooklang;
    }
    return QString();
}

QString Read(const QString& path, const QString& encoding, const RecipeSink& sink, FileNotes& notes,
             QString& format) {
    QFile file(path);
    if (QFileInfo(path).isDir()) {
        return QStringLiteral("To je mapa, ne datoteka.");
    }
    if (!file.open(QIODevice::ReadOnly)) {
        return QStringLiteral("Datoteke ni mogoče odpreti: %1").arg(file.errorString());
    }
    const QByteArray start = file.peek(StartSize);
    if (start.isEmpty()) {
        return QStringLiteral("Datoteka je prazna.");
    }
    format = MealMasterFormat::Recognizes(start) ? MealMaster : QString();
    if (format == MealMaster) {
        MealMasterFormat::Read(file, sink, notes, encoding);  // streams: a file of any size
        return QString();
    }
    const QByteArray data = file.readAll();
    format = FormatOf(data);
    if (format == MasterCookText) {
        MasterCookTextFormat::Read(data, sink, notes, encoding);
    } else if (format == MasterCookXml) {
        MasterCookXmlFormat::Read(data, sink, notes);
    } else if (format == RecipeMl) {
        RecipeMlFormat::Read(data, sink, notes);
    } else if (format == WebPage) {
        SchemaOrgFormat::Read(data, sink, notes);
    } else if (format == Cooklang) {
        CooklangFormat::Read(data, path, sink, notes);
    } else {
        return QStringLiteral(
            "Datoteka ni v nobeni od oblik, ki jih program pozna (MealMaster, MasterCook, "
            "RecipeML, Cooklang, spletna stran ali JSON z recepti schema.org).");
    }
    return QString();
}

}  // namespace Exchange::RecipeFiles
