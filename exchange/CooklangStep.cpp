#include "exchange/CooklangStep.h"

#include <QRegularExpression>
#include <QStringList>
#include <optional>

namespace Exchange::CooklangStep {
namespace {

// A mark as written: its sign, its name and what its braces and parentheses hold.
struct Mark {
    QChar sign;
    QString name;
    QString amount;
    QString unit;
    QString preparation;
    qsizetype end = 0;  // the position after the mark
};

bool IsSign(QChar character) { return character == u'@' || character == u'#' || character == u'~'; }

// Where a one-word name ends: at a blank, a punctuation mark or the next sign.
qsizetype WordEnd(const QString& line, qsizetype from) {
    qsizetype end = from;
    while (end < line.size() && !line[end].isSpace() && !line[end].isPunct() &&
           !IsSign(line[end])) {
        ++end;
    }
    return end;
}

// A name of several words runs up to its braces, holding no sign, brace or punctuation of a
// sentence.
bool CanBeLongName(QStringView name) {
    static const QString forbidden = QStringLiteral("@#~{},.;:!?()[]");
    for (QChar character : name) {
        if (forbidden.contains(character)) {
            return false;
        }
    }
    return !name.isEmpty() && !name.front().isSpace();
}

// "1 / 2" as "1/2", the fraction as Cooklang writes it.
QString AmountText(const QString& amount) {
    static const QRegularExpression slash(QStringLiteral("\\s*/\\s*"));
    return QString(amount).replace(slash, QStringLiteral("/")).trimmed();
}

// The braces at `open`: amount and unit split at '%'; the mark ends after them.
void ReadBraces(const QString& line, qsizetype open, Mark& mark) {
    const qsizetype close = line.indexOf(u'}', open);
    const QString inside = line.mid(open + 1, close - open - 1);
    const qsizetype percent = inside.indexOf(u'%');
    mark.amount = AmountText(percent < 0 ? inside : inside.left(percent));
    mark.unit = percent < 0 ? QString() : inside.mid(percent + 1).trimmed();
    mark.end = close + 1;
}

// An ingredient's preparation in parentheses right after its braces.
void ReadPreparation(const QString& line, Mark& mark) {
    if (mark.sign != u'@' || mark.end >= line.size() || line[mark.end] != u'(') {
        return;
    }
    const qsizetype close = line.indexOf(u')', mark.end);
    if (close > 0) {
        mark.preparation = line.mid(mark.end + 1, close - mark.end - 1).trimmed();
        mark.end = close + 1;
    }
}

std::optional<Mark> ReadMark(const QString& line, qsizetype at) {
    Mark mark;
    mark.sign = line[at];
    const qsizetype start = at + 1;
    const qsizetype open = line.indexOf(u'{', start);
    const bool braces = open >= 0 && line.indexOf(u'}', open) > 0;
    if (braces && (open == start ? mark.sign == u'~'
                                 : CanBeLongName(QStringView(line).mid(start, open - start)))) {
        mark.name = line.mid(start, open - start).trimmed();
        ReadBraces(line, open, mark);
        ReadPreparation(line, mark);
        return mark;
    }
    mark.end = WordEnd(line, start);
    if (mark.end == start) {
        return std::nullopt;
    }
    mark.name = line.mid(start, mark.end - start);
    return mark;
}

QString Joined(const QStringList& parts) {
    QStringList present;
    for (const QString& part : parts) {
        if (!part.isEmpty()) {
            present.append(part);
        }
    }
    return present.join(u' ');
}

Line IngredientLine(const Mark& mark) {
    Line line;
    line.amountText = mark.amount;
    line.unit = mark.unit;
    line.ingredient = mark.name;
    line.preparation = mark.preparation;
    line.original = Joined({mark.amount, mark.unit, mark.name});
    if (!mark.preparation.isEmpty()) {
        line.original += QStringLiteral(", ") + mark.preparation;
    }
    return line;
}

QString MarkText(const Mark& mark) {
    if (mark.sign == u'~' && !mark.amount.isEmpty()) {
        return Joined({mark.amount, mark.unit});
    }
    return mark.name;
}

}  // namespace

ReadLine Read(const QString& line) {
    ReadLine read;
    qsizetype at = 0;
    while (at < line.size()) {
        const std::optional<Mark> mark = IsSign(line[at]) ? ReadMark(line, at) : std::nullopt;
        if (!mark) {
            read.text += line[at];
            ++at;
            continue;
        }
        read.text += MarkText(*mark);
        if (mark->sign == u'@') {
            read.ingredients.append(IngredientLine(*mark));
        }
        at = mark->end;
    }
    return read;
}

}  // namespace Exchange::CooklangStep
