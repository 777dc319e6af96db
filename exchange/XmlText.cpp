#include "exchange/XmlText.h"

#include <QRegularExpression>
#include <QXmlStreamReader>

#include "exchange/HtmlText.h"
#include "exchange/TextEncoding.h"

namespace Exchange::XmlText {
namespace {

const QRegularExpression Declaration(QStringLiteral(R"(^\s*<\?xml\s[^>]*\?>)"));
const QRegularExpression DeclaredEncoding(QStringLiteral(R"(encoding\s*=\s*["']([^"']*)["'])"));

// The code page of bytes that are not UTF-8.
Encoding SingleByte(QByteArrayView bytes) {
    const QString start = QString::fromLatin1(bytes.first(qMin<qsizetype>(bytes.size(), 200)));
    const QString declaration = Declaration.match(start).captured(0);
    const QString name = DeclaredEncoding.match(declaration).captured(1);
    Encoding encoding = Encoding::Utf8;
    if (!TextEncoding::FromName(name, encoding) || encoding == Encoding::Utf8) {
        return TextEncoding::GuessSingleByte(bytes, Encoding::Windows1252);
    }
    return encoding == Encoding::Latin1 ? Encoding::Windows1252 : encoding;
}

QString Decoded(QByteArrayView bytes) {
    if (!TextEncoding::IsUtf8(bytes)) {
        return TextEncoding::Decode(bytes, SingleByte(bytes));
    }
    QString text = QString::fromUtf8(bytes);
    if (text.startsWith(QChar(0xFEFF))) {
        text.remove(0, 1);
    }
    return text;
}

// Entities that the file does not declare, as HTML knows them ("&eacute;" is "é", "&nbsp;" a
// blank): files declare the entities of HTML in a DTD of their format that is not read. For one
// that HTML does not know either, none: QXmlStreamReader reads the text given here as XML again,
// so an ampersand would call for an entity once more.
class HtmlEntities : public QXmlStreamEntityResolver {
public:
    QString resolveUndeclaredEntity(const QString& name) override {
        const QString text = HtmlText::OfFragment(QLatin1Char('&') + name + QLatin1Char(';'));
        if (text.contains(QLatin1Char('&'))) {
            return QString();
        }
        return text.isEmpty() ? QStringLiteral(" ") : text;
    }
};

QString Problem(const QXmlStreamReader& xml) {
    const QString what = xml.error() == QXmlStreamReader::PrematureEndOfDocumentError
                             ? QStringLiteral("datoteka se konča sredi zapisa XML")
                             : QStringLiteral("zapis XML tu ni pravilen");
    return QStringLiteral("vrstica %1: %2").arg(qMax<qint64>(xml.lineNumber(), 1)).arg(what);
}

}  // namespace

QString Text(QByteArrayView bytes) {
    QString text = Decoded(bytes);
    const QRegularExpressionMatch declaration = Declaration.match(text);
    for (qsizetype at = 0; declaration.hasMatch() && at < declaration.capturedEnd(); ++at) {
        if (text[at] != QLatin1Char('\n') && text[at] != QLatin1Char('\r')) {
            text[at] = QLatin1Char(' ');
        }
    }
    return text;
}

QString RootName(QByteArrayView start) {
    QXmlStreamReader xml(Text(start));
    while (!xml.atEnd()) {
        if (xml.readNext() == QXmlStreamReader::StartElement) {
            return xml.name().toString();
        }
    }
    return QString();
}

QString ElementText(QXmlStreamReader& xml) {
    QString text;
    for (int depth = 1; depth > 0 && !xml.atEnd();) {
        const QXmlStreamReader::TokenType token = xml.readNext();
        if (token == QXmlStreamReader::StartElement) {
            ++depth;
        } else if (token == QXmlStreamReader::EndElement) {
            --depth;
        } else if (token == QXmlStreamReader::Characters) {
            text += xml.text();
        }
    }
    return text;
}

void ReadFile(const QByteArray& data, QLatin1String root, const QString& format, FileNotes& notes,
              const std::function<void(QXmlStreamReader&)>& child) {
    QXmlStreamReader xml(Text(data));
    HtmlEntities entities;
    xml.setEntityResolver(&entities);
    if (xml.readNextStartElement() && xml.name() != root) {
        ++notes.notRecipes;
        notes.problems << QStringLiteral("vrstica %1: datoteka ni v zapisu %2")
                              .arg(xml.lineNumber())
                              .arg(format);
        return;
    }
    while (xml.readNextStartElement()) {
        child(xml);
    }
    if (xml.hasError()) {
        ++notes.notRecipes;
        notes.problems << Problem(xml);
    }
}

}  // namespace Exchange::XmlText
