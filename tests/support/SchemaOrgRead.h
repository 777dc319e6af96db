// What the schema.org reader's tests share: reading data whole, the test data's files, and the
// parts of a recipe as lists to compare.
#pragma once

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>

#include "exchange/SchemaOrgFormat.h"

namespace SchemaOrgRead {

using Exchange::FileNotes;
using Exchange::Recipe;
using Exchange::Section;

inline QString DataPath(const QString& name) {
    return QStringLiteral(MORVENA_TEST_SOURCE_DIR "/data/import/") + name;
}

inline QByteArray FileBytes(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

inline QList<Recipe> ReadAll(const QByteArray& data, FileNotes& notes) {
    QList<Recipe> recipes;
    Exchange::SchemaOrgFormat::Read(
        data, [&recipes](Recipe&& recipe) { recipes.append(std::move(recipe)); }, notes);
    return recipes;
}

inline Recipe ReadOne(const QByteArray& data) {
    FileNotes notes;
    const QList<Recipe> recipes = ReadAll(data, notes);
    return recipes.size() == 1 ? recipes.first() : Recipe();
}

inline QStringList Lines(const Section& section) {
    QStringList lines;
    for (const Exchange::Line& line : section.lines) {
        lines.append(line.original);
    }
    return lines;
}

inline QStringList Titles(const Recipe& recipe) {
    QStringList titles;
    for (const Section& section : recipe.sections) {
        titles.append(section.title);
    }
    return titles;
}

inline QStringList AllLines(const Recipe& recipe) {
    QStringList lines;
    for (const Section& section : recipe.sections) {
        lines += Lines(section);
    }
    return lines;
}

inline QStringList AllSteps(const Recipe& recipe) {
    QStringList steps;
    for (const Section& section : recipe.sections) {
        steps += section.steps;
    }
    return steps;
}

}  // namespace SchemaOrgRead
