#include "exchange/Units.h"

#include <QFile>
#include <algorithm>

namespace Exchange {
namespace {

QString Fold(QStringView form) { return form.toString().toCaseFolded(); }

// The rows of the table: a line of four fields separated by TABs (key, name in the collection,
// MealMaster code or "-", forms separated by "|"); "#" starts a comment line.
QList<Units::Row> TableRows(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        qFatal("The units table %s is missing from the program.", qPrintable(path));
    }
    QList<Units::Row> rows;
    while (!file.atEnd()) {
        const QString line = QString::fromUtf8(file.readLine()).trimmed();
        const QStringList fields = line.split(QLatin1Char('\t'));
        if (line.isEmpty() || line.startsWith(QLatin1Char('#')) || fields.size() != 4) {
            continue;
        }
        const QString code = fields.at(2) == QLatin1String("-") ? QString() : fields.at(2);
        rows.append({fields.at(0), fields.at(3).split(QLatin1Char('|')), fields.at(1), code});
    }
    return rows;
}

QStringView WithoutPeriod(QStringView written) {
    return written.size() > 1 && written.endsWith(QLatin1Char('.')) ? written.chopped(1) : written;
}

}  // namespace

Units::Units(const QList<Row>& rows) : m_rows(rows) {
    for (qsizetype index = 0; index < rows.size(); ++index) {
        const Row& row = rows.at(index);
        m_rowOfKey.insert(row.key, index);
        for (const QString& form : row.forms) {
            if (form.size() == 1) {
                m_exact.insert(form, row.key);
            } else {
                m_folded.insert(Fold(form), row.key);
            }
            m_longest = std::max(m_longest, form.size());
        }
    }
}

const Units& Units::Common() {
    static const Units common(TableRows(QStringLiteral(":/exchange/units.tsv")));
    return common;
}

const Units::Row* Units::Find(const QString& key) const {
    const auto found = m_rowOfKey.constFind(key);
    return found == m_rowOfKey.constEnd() ? nullptr : &m_rows.at(*found);
}

QString Units::Key(QStringView written) const {
    const QStringView form = WithoutPeriod(written.trimmed());
    if (form.size() == 1) {
        return m_exact.value(form.toString());
    }
    return m_folded.value(Fold(form));
}

qsizetype Units::MatchAt(QStringView text) const {
    if (text.isEmpty() || !text.front().isLetter()) {
        return 0;
    }
    for (qsizetype length = std::min(m_longest, text.size()); length > 0; --length) {
        const bool endsWord = length == text.size() || !text.at(length).isLetter();
        if (endsWord && !text.at(length - 1).isSpace() && !Key(text.left(length)).isEmpty()) {
            const bool period = length < text.size() && text.at(length) == QLatin1Char('.');
            return period ? length + 1 : length;
        }
    }
    return 0;
}

}  // namespace Exchange
