#include "exchange/CooklangMetadata.h"

namespace Exchange::CooklangMetadata {
namespace {

// A value without the quotes around it.
QString Unquoted(const QString& text) {
    const QString value = text.trimmed();
    if (value.size() >= 2 && (value.front() == u'"' || value.front() == u'\'') &&
        value.back() == value.front()) {
        return value.mid(1, value.size() - 2);
    }
    return value;
}

// "[a, b]" as its members; any other text as itself.
QStringList ValueList(const QString& text) {
    const QString value = text.trimmed();
    if (!value.startsWith(u'[') || !value.endsWith(u']')) {
        return {Unquoted(value)};
    }
    QStringList members;
    for (const QString& member : value.mid(1, value.size() - 2).split(u',')) {
        if (!Unquoted(member).isEmpty()) {
            members.append(Unquoted(member));
        }
    }
    return members;
}

void Add(Values& values, const QString& key, const QStringList& members) {
    QStringList& present = values[key.trimmed().toLower()];
    for (const QString& member : members) {
        if (!member.isEmpty()) {
            present.append(member);
        }
    }
}

QString First(const Values& values, const QStringList& keys) {
    for (const QString& key : keys) {
        const QStringList members = values.value(key);
        if (!members.isEmpty()) {
            return members.join(QLatin1String(", "));
        }
    }
    return QString();
}

QStringList Categories(const Values& values) {
    QStringList categories;
    for (const char* key : {"category", "tags"}) {
        for (const QString& member : values.value(QLatin1String(key))) {
            for (const QString& part : member.split(u',')) {
                if (!part.trimmed().isEmpty() && !categories.contains(part.trimmed())) {
                    categories.append(part.trimmed());
                }
            }
        }
    }
    return categories;
}

}  // namespace

void ReadFrontMatter(const QStringList& lines, Values& values) {
    QString parent;  // the key whose list or names the indented lines below it give
    for (const QString& line : lines) {
        const QString trimmed = line.trimmed();
        if (trimmed.isEmpty() || trimmed.startsWith(u'#')) {
            continue;
        }
        const bool indented = line.front().isSpace() || trimmed.startsWith(u'-');
        if (indented && !parent.isEmpty() && trimmed.startsWith(u'-')) {
            Add(values, parent, {Unquoted(trimmed.mid(1))});
            continue;
        }
        const qsizetype colon = trimmed.indexOf(u':');
        if (colon <= 0) {
            continue;
        }
        const QString key = trimmed.left(colon).trimmed();
        const QString value = trimmed.mid(colon + 1);
        if (indented && !parent.isEmpty()) {
            Add(values, parent + u'.' + key, ValueList(value));
            continue;
        }
        parent = value.trimmed().isEmpty() ? key : QString();
        Add(values, key, ValueList(value));
    }
}

void ReadLine(const QString& line, Values& values) {
    const qsizetype colon = line.indexOf(u':');
    if (colon > 0) {
        Add(values, line.left(colon), {Unquoted(line.mid(colon + 1))});
    }
}

void Apply(const Values& values, Recipe& recipe) {
    const QString title = First(values, {QStringLiteral("title")});
    if (!title.isEmpty()) {
        recipe.title = title;
    }
    recipe.source = First(values, {QStringLiteral("source.name"), QStringLiteral("source"),
                                   QStringLiteral("author"), QStringLiteral("source.url")});
    recipe.yield = First(values, {QStringLiteral("servings"), QStringLiteral("yield")});
    recipe.categories = Categories(values);
}

}  // namespace Exchange::CooklangMetadata
