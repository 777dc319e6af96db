#include "exchange/SchemaOrgFormat.h"

#include "exchange/SchemaOrgJson.h"
#include "exchange/SchemaOrgPage.h"

namespace Exchange::SchemaOrgFormat {
namespace {

// The data without a byte-order mark and leading blanks.
QByteArray Content(const QByteArray& data) {
    QByteArray content = data.startsWith("\xEF\xBB\xBF") ? data.mid(3) : data;
    return content.trimmed();
}

bool IsJson(const QByteArray& content) {
    return content.startsWith('{') || content.startsWith('[');
}

// A page says what it is near its start: a doctype, <html>, <head> or <body>.
bool IsHtml(const QByteArray& content) {
    if (!content.startsWith('<')) {
        return false;
    }
    const QByteArray start = content.left(4096).toLower();
    return start.contains("<!doctype html") || start.contains("<html") || start.contains("<head") ||
           start.contains("<body");
}

void ReadJson(const QByteArray& content, const RecipeSink& sink, FileNotes& notes) {
    QString error;
    const std::optional<QJsonValue> document = SchemaOrgJson::Parse(content, error);
    if (!document) {
        notes.notRecipes += 1;
        notes.problems.append(QStringLiteral("datoteka JSON ni berljiva: %1").arg(error));
        return;
    }
    const QList<QJsonObject> recipes = SchemaOrgJson::FindRecipes(*document);
    if (recipes.isEmpty()) {
        notes.notRecipes += 1;
        notes.problems.append(QStringLiteral("datoteka JSON nima recepta (schema.org Recipe)"));
        return;
    }
    SchemaOrgJson::Context context;
    SchemaOrgJson::IndexObjects(*document, context.objectsById);
    for (const QJsonObject& recipe : recipes) {
        sink(SchemaOrgJson::ToRecipe(recipe, context));
    }
}

}  // namespace

bool Recognises(const QByteArray& data) {
    const QByteArray content = Content(data);
    if (IsHtml(content)) {
        return true;
    }
    if (!IsJson(content)) {
        return false;
    }
    QString error;
    const std::optional<QJsonValue> document = SchemaOrgJson::Parse(content, error);
    return document && !SchemaOrgJson::FindRecipes(*document).isEmpty();
}

void Read(const QByteArray& data, const RecipeSink& sink, FileNotes& notes) {
    const QByteArray content = Content(data);
    if (IsJson(content)) {
        ReadJson(content, sink, notes);
    } else {
        SchemaOrgPage::Read(data, sink, notes);
    }
}

}  // namespace Exchange::SchemaOrgFormat
