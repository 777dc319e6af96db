#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <gumbo.h>

#include <functional>
#include <memory>

// The readable text of HTML as a browser would show it: entities decoded, tags gone, scripts
// and styles left out, and a line break wherever a paragraph, list item, heading, row or <br>
// ends a line. Lines come out trimmed with their inner blanks collapsed, empty lines dropped.
namespace Exchange::HtmlText {

// A parsed document that frees itself.
using Document = std::unique_ptr<GumboOutput, void (*)(GumboOutput*)>;

Document Parse(const QByteArray& utf8);

// The text of an element and everything inside it; blanks in the source are blanks.
QString OfNode(const GumboNode* node);

// The text of a piece of HTML that came as a string value (a JSON text). Such texts mean their
// line breaks: a line break in the source stays a line break.
QString OfFragment(const QString& html);

// The lines of a text from OfNode or OfFragment, without empty ones.
QStringList Lines(const QString& text);

// Calls `visit` for the element and each element below it, in document order; `visit` returns
// false to leave out what is inside that element.
void ForEachElement(const GumboNode* node, const std::function<bool(const GumboNode*)>& visit);

// The value of an attribute, or a null string when the element has none.
QString Attribute(const GumboNode* element, const char* name);

}  // namespace Exchange::HtmlText
