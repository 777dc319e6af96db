#include "core/database/SqlDialect.h"

namespace SqlDialect {

QString ToPostgres(const QString& sql) {
    QString result;
    result.reserve(sql.size() + 16);
    bool inLiteral = false;
    for (qsizetype i = 0; i < sql.size(); ++i) {
        const QChar c = sql[i];
        if (c == QLatin1Char('\'')) {
            inLiteral = !inLiteral;  // a doubled quote leaves and re-enters at once
            result += c;
            continue;
        }
        if (!inLiteral && c == QLatin1Char('[')) {
            const qsizetype close = sql.indexOf(QLatin1Char(']'), i + 1);
            if (close > i) {
                result +=
                    QLatin1Char('"') + sql.mid(i + 1, close - i - 1).toLower() + QLatin1Char('"');
                i = close;
                continue;
            }
        }
        result += c;
    }
    return result;
}

}  // namespace SqlDialect
