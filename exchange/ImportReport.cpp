#include "exchange/ImportReport.h"

#include <QFileInfo>

namespace Exchange {
namespace {

QString Quoted(const QString& title) {
    return title.isEmpty() ? QStringLiteral("(brez naslova)") : QStringLiteral("»%1«").arg(title);
}

QString NoteText(const LineNote& note) {
    switch (note.kind) {
        case LineNote::Range:
            return QStringLiteral("razpon količin, vzeta je manjša količina: %1");
        case LineNote::NoAmount:
            return QStringLiteral("vrstica brez količine, zapisana na začetek postopka: %1");
        case LineNote::Unread:
            break;
    }
    return QStringLiteral(
        "vrstica ni prebrana kot količina, enota in sestavina, zapisana na začetek postopka: %1");
}

QStringList FileLines(const FileReport& file) {
    QStringList lines;
    const QString format =
        file.format.isEmpty() ? QString() : QStringLiteral(" (%1)").arg(file.format);
    lines << QStringLiteral("Datoteka %1%2").arg(file.path, format);
    if (!file.failure.isEmpty()) {
        lines << QStringLiteral("  Ni prebrana: %1").arg(file.failure);
        return lines;
    }
    lines << QStringLiteral("  Najdeni recepti: %1, uvoženi: %2, preskočeni: %3")
                 .arg(file.found)
                 .arg(file.imported)
                 .arg(file.skipped.size());
    if (file.notRecipes > 0) {
        lines << QStringLiteral("  Deli datoteke, ki niso recepti: %1").arg(file.notRecipes);
    }
    for (const QString& problem : file.problems) {
        lines << QStringLiteral("  %1").arg(problem);
    }
    for (const FileReport::Skipped& skipped : file.skipped) {
        lines << QStringLiteral("  Preskočen %1: %2").arg(Quoted(skipped.title), skipped.reason);
    }
    for (const FileReport::NotedLine& noted : file.lines) {
        lines << QStringLiteral("  %1: %2")
                     .arg(Quoted(noted.title), NoteText(noted.note).arg(noted.note.text));
    }
    return lines;
}

}  // namespace

int ImportReport::Imported() const {
    int imported = 0;
    for (const FileReport& file : files) {
        imported += file.imported;
    }
    return imported;
}

int ImportReport::Skipped() const {
    int skipped = 0;
    for (const FileReport& file : files) {
        skipped += static_cast<int>(file.skipped.size());
    }
    return skipped;
}

int ImportReport::Unread() const {
    int unread = 0;
    for (const FileReport& file : files) {
        unread += file.failure.isEmpty() ? 0 : 1;
    }
    return unread;
}

qint32 ImportReport::FirstRecipeID() const {
    for (const FileReport& file : files) {
        if (file.firstRecipeID > 0) {
            return file.firstRecipeID;
        }
    }
    return 0;
}

QString ImportReport::Text() const {
    QStringList lines;
    for (const FileReport& file : files) {
        lines += FileLines(file);
    }
    if (!stopped.isEmpty()) {
        lines << QStringLiteral("Uvoz se je ustavil: %1").arg(stopped);
    }
    lines << QStringLiteral(
                 "Skupaj: datoteke %1, neprebrane datoteke %2, uvoženi recepti %3, "
                 "preskočeni recepti %4.")
                 .arg(files.size())
                 .arg(Unread())
                 .arg(Imported())
                 .arg(Skipped());
    if (dryRun) {
        lines << QStringLiteral("Poskusni uvoz: v zbirko ni bilo nič zapisano.");
    }
    return lines.join(QLatin1Char('\n')) + QLatin1Char('\n');
}

}  // namespace Exchange
