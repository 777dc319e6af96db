#include "exchange/CooklangFormat.h"

#include <QFileInfo>
#include <QRegularExpression>
#include <QStringList>

#include "exchange/CooklangMetadata.h"
#include "exchange/CooklangStep.h"
#include "exchange/TextEncoding.h"

namespace Exchange::CooklangFormat {
namespace {

// The recipe as it grows, paragraph by paragraph.
struct Reading {
    Recipe recipe;
    CooklangMetadata::Values metadata;
    QStringList stepText;   // the lines of the paragraph being read
    QList<Line> stepLines;  // its ingredients
    bool listed = false;    // it starts with the comment "-- sestavine" or "-- ingredients"
    bool onlyMarks = true;  // every other line of it is one ingredient mark alone
};

// The text without its block comments "[- ... -]"; the line breaks inside one stay, so that
// paragraphs keep their places.
QString WithoutBlockComments(QString text) {
    qsizetype open = text.indexOf(QLatin1String("[-"));
    while (open >= 0) {
        const qsizetype close = text.indexOf(QLatin1String("-]"), open + 2);
        const qsizetype end = close < 0 ? text.size() : close + 2;
        const qsizetype breaks = QStringView(text).mid(open, end - open).count(u'\n');
        text.replace(open, end - open, QString(breaks, u'\n'));
        open = text.indexOf(QLatin1String("[-"), open);
    }
    return text;
}

// The line without its comment: two hyphens and what follows them (a run of three or more
// hyphens is text).
QString WithoutComment(const QString& line) {
    for (qsizetype at = 0; at + 1 < line.size(); ++at) {
        if (line[at] != u'-' || line[at + 1] != u'-') {
            continue;
        }
        qsizetype end = at;
        while (end < line.size() && line[end] == u'-') {
            ++end;
        }
        if (end - at == 2) {
            return line.left(at);
        }
        at = end;
    }
    return line;
}

// The body's lines after a front matter, whose lines go to the metadata.
QStringList TakeFrontMatter(const QStringList& lines, Reading& reading) {
    if (lines.isEmpty() || lines.first().trimmed() != QLatin1String("---")) {
        return lines;
    }
    for (qsizetype end = 1; end < lines.size(); ++end) {
        if (lines[end].trimmed() == QLatin1String("---")) {
            CooklangMetadata::ReadFrontMatter(lines.mid(1, end - 1), reading.metadata);
            return lines.mid(end + 1);
        }
    }
    return lines;
}

Section& CurrentSection(Reading& reading) {
    if (reading.recipe.sections.isEmpty()) {
        reading.recipe.sections.append(Section());
    }
    return reading.recipe.sections.last();
}

// A paragraph that starts with the comment "-- sestavine" (or "-- ingredients") and has an
// ingredient mark alone on each other line lists ingredients: it is no step of the method.
bool IsIngredientList(const Reading& reading) {
    return reading.listed && reading.onlyMarks && !reading.stepLines.isEmpty();
}

bool IsListHeading(const QString& trimmed) {
    const QString words = trimmed.mid(2).trimmed();
    return trimmed.startsWith(QLatin1String("--")) &&
           (words.compare(QLatin1String("sestavine"), Qt::CaseInsensitive) == 0 ||
            words.compare(QLatin1String("ingredients"), Qt::CaseInsensitive) == 0);
}

void EndStep(Reading& reading) {
    const QString step =
        IsIngredientList(reading) ? QString() : reading.stepText.join(u' ').simplified();
    if (!step.isEmpty() || !reading.stepLines.isEmpty()) {
        Section& section = CurrentSection(reading);
        if (!step.isEmpty()) {
            section.steps.append(step);
        }
        section.lines += reading.stepLines;
    }
    reading.stepText.clear();
    reading.stepLines.clear();
    reading.listed = false;
    reading.onlyMarks = true;
}

void StartSection(Reading& reading, const QString& line) {
    EndStep(reading);
    QString title = line;
    while (title.startsWith(u'=')) {
        title.remove(0, 1);
    }
    while (title.endsWith(u'=')) {
        title.chop(1);
    }
    Section& current = CurrentSection(reading);
    if (!current.lines.isEmpty() || !current.steps.isEmpty() || !current.title.isEmpty()) {
        reading.recipe.sections.append(Section());
    }
    reading.recipe.sections.last().title = title.trimmed();
}

void ReadStepLine(Reading& reading, const QString& line) {
    const CooklangStep::ReadLine read = CooklangStep::Read(line);
    reading.stepText.append(read.text);
    reading.stepLines += read.ingredients;
    reading.onlyMarks = reading.onlyMarks && read.ingredients.size() == 1 &&
                        line.trimmed().startsWith(u'@') &&
                        read.text.trimmed() == read.ingredients.first().ingredient;
}

void ReadBodyLine(Reading& reading, const QString& line) {
    const QString trimmed = line.trimmed();
    const bool comment = !trimmed.isEmpty() && WithoutComment(line).trimmed().isEmpty();
    if (trimmed.isEmpty()) {
        EndStep(reading);
    } else if (trimmed.startsWith(QLatin1String(">>"))) {
        CooklangMetadata::ReadLine(trimmed.mid(2), reading.metadata);
    } else if (trimmed.startsWith(u'>')) {
        reading.stepText.append(WithoutComment(trimmed.mid(1)));
        reading.onlyMarks = false;
    } else if (trimmed.startsWith(u'=')) {
        StartSection(reading, WithoutComment(trimmed));
    } else if (comment) {
        reading.listed = reading.listed || (reading.stepText.isEmpty() && IsListHeading(trimmed));
    } else {
        ReadStepLine(reading, WithoutComment(line));
    }
}

}  // namespace

bool Recognizes(const QByteArray& data) {
    static const QRegularExpression mark(
        QStringLiteral(
            "(^|\\s)@[\\p{L}\\p{N}_][^\\n]*|^>>\\s*[^:\\n]+:|\\A---\\s*\\n(.*\\n)*?title\\s*:"),
        QRegularExpression::MultilineOption);
    const QByteArray start = data.left(64).trimmed();
    if (data.contains('\0') || !TextEncoding::IsUtf8(data) || start.startsWith('{') ||
        start.startsWith('[') || start.startsWith('<')) {
        return false;  // no text of steps: binary data, JSON, XML or HTML
    }
    return mark.match(QString::fromUtf8(data)).hasMatch();
}

void Read(const QByteArray& data, const QString& fileName, const RecipeSink& sink,
          FileNotes& notes) {
    QString text = QString::fromUtf8(data);
    if (text.startsWith(QChar(0xFEFF))) {
        text.remove(0, 1);
    }
    text.replace(QLatin1String("\r\n"), QLatin1String("\n")).replace(u'\r', u'\n');
    Reading reading;
    const QStringList body = TakeFrontMatter(WithoutBlockComments(text).split(u'\n'), reading);
    for (const QString& line : body) {
        ReadBodyLine(reading, line);
    }
    EndStep(reading);
    DropEmptySections(reading.recipe);
    if (reading.recipe.sections.isEmpty() && reading.metadata.isEmpty()) {
        notes.notRecipes += 1;
        notes.problems.append(QStringLiteral("datoteka nima ne korakov ne metapodatkov"));
        return;
    }
    reading.recipe.title = QFileInfo(fileName).completeBaseName();
    CooklangMetadata::Apply(reading.metadata, reading.recipe);
    sink(std::move(reading.recipe));
}

}  // namespace Exchange::CooklangFormat
