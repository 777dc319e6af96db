#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QLatin1String>
#include <QString>
#include <functional>

#include "exchange/ExchangeRecipe.h"

class QXmlStreamReader;

// The XML files of other programs (MasterCook's MX2, RecipeML) as text that QXmlStreamReader
// reads, and the frame of reading one.
namespace Exchange::XmlText {

// The text of an XML file's bytes. Bytes that are UTF-8 throughout (a byte order mark left out)
// are UTF-8. Others are in the code page that the XML declaration names, where ISO-8859-1 is
// read as windows-1252: programs that declare it write Windows' quotes and dashes in the bytes
// 0x80 to 0x9F, which ISO-8859-1 leaves to control characters. A declaration that names no code
// page TextEncoding knows leaves it to TextEncoding::GuessSingleByte (windows-1252 when the
// bytes tell nothing).
//
// The XML declaration itself is left out, blanks in its place so that lines and columns stay:
// the text is decoded already, and programs write its parts in an order XML does not allow
// (MasterCook writes "standalone" before "encoding").
QString Text(QByteArrayView bytes);

// The name of the first element at the start of a file; empty when the start holds none, or
// holds something other than XML before it.
QString RootName(QByteArrayView start);

// The text of the current element and of all elements inside it, read to the element's end.
// QXmlStreamReader's own readElementText goes down into the elements inside by recursion, which
// a file nested deep enough overflows; this reads at any depth.
QString ElementText(QXmlStreamReader& xml);

// Reads an XML file whose root element is `root`, handing each element inside the root to
// `child`, which reads it to its end. A file with another root is counted as a part that is no
// recipe and named among the problems, `format` naming what it should be ("MasterCook MX2");
// so is the part of a file from where it stops being XML that is well-formed, with its line: in
// a damaged file the line of the damage, in a file cut short the line where the element or text
// it cuts starts. Entities the file does not declare are read as HTML's ("&eacute;" is "é"); one
// that HTML does not know either is left out where the file names a DTD, and damages the file where
// it names none.
void ReadFile(const QByteArray& data, QLatin1String root, const QString& format, FileNotes& notes,
              const std::function<void(QXmlStreamReader&)>& child);

}  // namespace Exchange::XmlText
