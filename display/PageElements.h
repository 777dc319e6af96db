// What each HTML element is before the page's style rules: the kind of box it makes, and the
// look a browser gives it of its own (its default style sheet and presentational attributes).
#pragma once

#include <gumbo.h>

#include <QChar>
#include <QString>

#include "display/PageStyle.h"

namespace PageDocument::detail {

enum class Kind { Hidden, Inline, Block, ListItem, List, Table, Break, Rule, Image };

Kind KindOf(GumboTag tag);

// The value of an element's attribute; a null string when the element does not have it.
QString Attribute(const GumboNode* node, const char* name);

// The whitespace of HTML text.
inline bool IsSpace(QChar c) {
    return c == u' ' || c == u'\t' || c == u'\n' || c == u'\r' || c == u'\f';
}

// A browser's own rules for an element (its default style sheet), before the page's rules.
void ApplyDefaults(GumboTag tag, const GumboNode* node, bool quirks, Style& style, Box& box);

// Presentational attributes (align, <font>), which count before the page's rules.
void ApplyAttributes(GumboTag tag, const GumboNode* node, Style& style);

}  // namespace PageDocument::detail
