#include "exchange/IngredientText.h"

namespace Exchange {
namespace {

// Words that join an ingredient text to what came before it: a line that starts its ingredient
// with one of them was not understood ("1 lg or 2 small leeks", "2 x 250g punnets").
const QStringList JoiningWords = {
    QStringLiteral("or"),   QStringLiteral("to"),  QStringLiteral("and"), QStringLiteral("plus"),
    QStringLiteral("x"),    QStringLiteral("ali"), QStringLiteral("in"),  QStringLiteral("do"),
    QStringLiteral("oder"), QStringLiteral("und"), QStringLiteral("bis"),
};

bool IsDash(QChar c) { return c == QLatin1Char('-') || c == QChar(0x2013) || c == QChar(0x2014); }

bool ParenthesesClose(const QString& text) {
    int depth = 0;
    for (const QChar c : text) {
        depth += c == QLatin1Char('(') ? 1 : c == QLatin1Char(')') ? -1 : 0;
        if (depth < 0) {
            return false;
        }
    }
    return depth == 0;
}

bool StartsWithJoiningWord(const QString& text) {
    return JoiningWords.contains(text.section(QLatin1Char(' '), 0, 0), Qt::CaseInsensitive);
}

// Reads one line from left to right; each step takes its part at the position and moves on.
class LineReading {
public:
    LineReading(const QString& line, const Units& units) : m_text(line.trimmed()), m_units(units) {
        m_result.original = m_text;
    }

    IngredientText Read() {
        const bool amount = ReadAmount();
        if (amount) {
            ReadNotes();
        }
        if (ReadUnit(amount)) {
            ReadRangeWithUnit();
            ReadNotes();
            SkipOf();
        }
        const QStringList parts = IngredientText::SplitPreparation(m_text.mid(m_position));
        m_result.ingredient = parts.at(0);
        m_notes << parts.at(1);
        m_notes.removeAll(QString());
        m_result.preparation = m_notes.join(QStringLiteral(", "));
        m_result.whole = !m_result.ingredient.isEmpty() && m_result.ingredient[0].isLetter() &&
                         !StartsWithJoiningWord(m_result.ingredient) && ParenthesesClose(m_text);
        return m_result;
    }

private:
    QStringView Rest(qsizetype from) const { return QStringView(m_text).mid(from); }

    qsizetype SkipSpaces(qsizetype from) const {
        while (from < m_text.size() && m_text[from].isSpace()) {
            ++from;
        }
        return from;
    }

    bool At(qsizetype position, QChar c) const {
        return position < m_text.size() && m_text[position] == c;
    }

    bool ReadAmount() {
        m_result.quantity = Quantity::Read(m_text);
        m_result.amountText = m_text.left(m_result.quantity.length).trimmed();
        m_position = m_result.quantity.length;
        return !m_result.quantity.IsEmpty();
    }

    // A unit right after the amount, or after its hyphen ("1 1/2-inch"); without an amount only
    // as in "pinch of salt".
    bool ReadUnit(bool amount) {
        qsizetype start = SkipSpaces(m_position);
        if (amount && start == m_position && start < m_text.size() && IsDash(m_text[start])) {
            ++start;
        }
        const qsizetype length = m_units.MatchAt(Rest(start));
        const bool of = Rest(start + length).startsWith(QLatin1String(" of "), Qt::CaseInsensitive);
        if (length == 0 || (!amount && !of)) {
            return false;
        }
        m_result.unit = m_text.mid(start, length);
        m_result.unitKey = m_units.Key(m_result.unit);
        m_position = start + length;
        return true;
    }

    // "110ml-150ml": the upper bound written with the same unit.
    void ReadRangeWithUnit() {
        const qsizetype dash = SkipSpaces(m_position);
        if (!m_result.quantity.rangeTo.isEmpty() || dash >= m_text.size() ||
            !IsDash(m_text[dash])) {
            return;
        }
        const Quantity upper = Quantity::Read(Rest(dash + 1));
        const qsizetype unit = SkipSpaces(dash + 1 + upper.length);
        const qsizetype length = m_units.MatchAt(Rest(unit));
        if (!upper.IsEmpty() && length > 0 &&
            m_units.Key(Rest(unit).left(length)) == m_result.unitKey) {
            m_result.quantity.rangeTo = upper.value;
            m_position = unit + length;
        }
    }

    // Where a measure that starts at `from` ends ("4½oz", "3lb 5oz", "14oz-17oz", "10½ fl oz");
    // -1 when none starts there.
    qsizetype MeasureEnd(qsizetype from) const {
        qsizetype end = -1;
        for (;;) {
            const Quantity amount = Quantity::Read(Rest(from));
            const qsizetype unit = SkipSpaces(from + amount.length);
            const qsizetype length = m_units.MatchAt(Rest(unit));
            if (amount.IsEmpty() || length == 0) {
                return end;
            }
            end = from = unit + length;
            if (At(from, QLatin1Char('-'))) {
                ++from;
            }
        }
    }

    // Notes on the size: "(14 oz)", "/4½oz", and after the amount "28-ounce".
    void ReadNotes() {
        for (;;) {
            const qsizetype start = SkipSpaces(m_position);
            const qsizetype end = NoteEnd(start);
            if (end < 0) {
                return;
            }
            QString note = m_text.mid(start, end - start);
            if (note.startsWith(QLatin1Char('(')) || note.startsWith(QLatin1Char('/'))) {
                note = note.mid(1);
            }
            if (note.endsWith(QLatin1Char(')'))) {
                note.chop(1);
            }
            m_notes << note.trimmed();
            m_position = end;
        }
    }

    qsizetype NoteEnd(qsizetype start) const {
        if (At(start, QLatin1Char('('))) {
            const qsizetype close = m_text.indexOf(QLatin1Char(')'), start);
            return close < 0 ? -1 : close + 1;
        }
        if (At(start, QLatin1Char('/'))) {
            return MeasureEnd(start + 1);
        }
        const Quantity size = Quantity::Read(Rest(start));
        const qsizetype hyphen = start + size.length;
        const qsizetype unit = m_units.MatchAt(Rest(hyphen + 1));
        const bool sized = m_result.unit.isEmpty() && !size.IsEmpty() && size.length > 0 &&
                           At(hyphen, QLatin1Char('-')) && unit > 0;
        return sized ? hyphen + 1 + unit : -1;
    }

    void SkipOf() {
        const qsizetype start = SkipSpaces(m_position);
        if (Rest(start).startsWith(QLatin1String("of "), Qt::CaseInsensitive)) {
            m_position = start + 3;
        }
    }

    QString m_text;
    const Units& m_units;
    IngredientText m_result;
    QStringList m_notes;
    qsizetype m_position = 0;
};

}  // namespace

IngredientText IngredientText::Read(const QString& line, const Units& units) {
    return LineReading(line, units).Read();
}

QStringList IngredientText::SplitPreparation(const QString& text) {
    int depth = 0;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        depth += c == QLatin1Char('(') ? 1 : c == QLatin1Char(')') ? -1 : 0;
        const bool separator = c == QLatin1Char(',') || c == QLatin1Char(';');
        if (separator && depth <= 0 && !text.left(i).trimmed().isEmpty()) {
            return {text.left(i).trimmed(), text.mid(i + 1).trimmed()};
        }
    }
    return {text.trimmed(), QString()};
}

Line IngredientText::ToLine() const {
    return Line{original, amountText, unit, ingredient, preparation};
}

}  // namespace Exchange
