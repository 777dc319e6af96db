#include "core/Amount.h"

#include <QLocale>
#include <QRegularExpression>
#include <cmath>

namespace Amount {
namespace {

// A number's text in plain decimal notation (no exponent), as exact as the text is.
QString PlainDecimal(const QString& number) {
    static const QRegularExpression form(
        QStringLiteral(R"(^\s*([+-]?)(\d*)(?:\.(\d*))?(?:[eE]([+-]?\d+))?\s*$)"));
    const QRegularExpressionMatch match = form.match(number);
    if (!match.hasMatch() || (match.captured(2).isEmpty() && match.captured(3).isEmpty())) {
        return QString();
    }
    QString digits = match.captured(2) + match.captured(3);
    qsizetype point = match.captured(2).size();
    bool exponentOk = true;
    const int exponent = match.captured(4).isEmpty() ? 0 : match.captured(4).toInt(&exponentOk);
    if (!exponentOk || std::abs(exponent) > 400) {
        return QString();
    }
    point += exponent;
    if (point < 0) {
        digits.prepend(QString(-point, QLatin1Char('0')));
        point = 0;
    }
    if (point > digits.size()) {
        digits.append(QString(point - digits.size(), QLatin1Char('0')));
    }
    QString whole = digits.left(point);
    QString fraction = digits.mid(point);
    while (whole.size() > 1 && whole.startsWith(QLatin1Char('0'))) {
        whole.remove(0, 1);
    }
    if (whole.isEmpty()) {
        whole = QStringLiteral("0");
    }
    while (fraction.endsWith(QLatin1Char('0'))) {
        fraction.chop(1);
    }
    QString text = fraction.isEmpty() ? whole : whole + QLatin1Char('.') + fraction;
    if (match.captured(1) == QLatin1String("-") && text != QLatin1String("0")) {
        text.prepend(QLatin1Char('-'));
    }
    return text;
}

QString DecimalOf(const QVariant& value) {
    switch (value.typeId()) {
        case QMetaType::Double:
        case QMetaType::Float:
            // The shortest text that reads back as the same number: what the cook typed.
            return PlainDecimal(
                QString::number(value.toDouble(), 'g', QLocale::FloatingPointShortest));
        case QMetaType::Int:
        case QMetaType::UInt:
        case QMetaType::Long:
        case QMetaType::ULong:
        case QMetaType::LongLong:
        case QMetaType::ULongLong:
        case QMetaType::Short:
        case QMetaType::UShort:
            return value.toString();
        default:
            return PlainDecimal(value.toString());
    }
}

// Rounds a canonical decimal to at most `decimals` places, half away from zero.
QString Rounded(const QString& decimal, int decimals) {
    const qsizetype point = decimal.indexOf(QLatin1Char('.'));
    if (point < 0 || decimal.size() - point - 1 <= decimals) {
        return decimal;
    }
    const bool negative = decimal.startsWith(QLatin1Char('-'));
    QString digits = decimal.mid(negative ? 1 : 0);
    const qsizetype dot = digits.indexOf(QLatin1Char('.'));
    const bool up = digits.at(dot + 1 + decimals) >= QLatin1Char('5');
    QString kept = digits.left(dot) + digits.mid(dot + 1, decimals);
    if (up) {
        qsizetype i = kept.size() - 1;
        for (; i >= 0 && kept.at(i) == QLatin1Char('9'); --i) {
            kept[i] = QLatin1Char('0');
        }
        if (i < 0) {
            kept.prepend(QLatin1Char('1'));
        } else {
            kept[i] = QChar(kept.at(i).unicode() + 1);
        }
    }
    const qsizetype wholeDigits = kept.size() - decimals;
    return PlainDecimal((negative ? QStringLiteral("-") : QString()) + kept.left(wholeDigits) +
                        QLatin1Char('.') + kept.mid(wholeDigits));
}

QString WithComma(QString decimal) { return decimal.replace(QLatin1Char('.'), QLatin1Char(',')); }

}  // namespace

QString Canonical(const QString& number) { return PlainDecimal(number); }

QVariant Stored(const QVariant& value) {
    if (value.isNull()) {
        return QVariant();
    }
    const QString decimal = DecimalOf(value);
    if (decimal.contains(QLatin1Char('.'))) {
        return decimal;
    }
    bool ok = false;
    const qlonglong whole = decimal.toLongLong(&ok);
    return ok ? QVariant(whole) : QVariant(decimal);
}

bool IsWhole(const QVariant& value) {
    return value.isNull() || !DecimalOf(value).contains(QLatin1Char('.'));
}

QString PageText(const QVariant& value) {
    if (value.isNull()) {
        return QString();
    }
    const QString decimal = DecimalOf(value);
    return decimal.isEmpty() ? value.toString() : WithComma(Rounded(decimal, 3));
}

QString EditText(const QVariant& value) {
    if (value.isNull()) {
        return QString();
    }
    const QString decimal = DecimalOf(value);
    return decimal.isEmpty() ? value.toString() : WithComma(decimal);
}

}  // namespace Amount
