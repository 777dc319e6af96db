#pragma once

#include <QString>
#include <string_view>

// How the program compares names: letter case is ignored for every letter (č = Č), and names
// sort in Slovenian order (a b c č ć d đ e ... s š t ... z ž), accented foreign letters next to
// their base letter. Used by the file database's collation and LIKE.
namespace SlovenianText {

// The case-folded code point.
char32_t Fold(char32_t codePoint);

// Compares two UTF-8 texts: < 0, 0 or > 0. Texts that differ only in letter case are equal.
int Compare(std::string_view a, std::string_view b);
int Compare(const QString& a, const QString& b);

// SQL LIKE on UTF-8 texts, ignoring letter case: "%" any run of characters, "_" one character;
// `escape` (0 for none) makes the next pattern character literal.
bool Like(std::string_view pattern, std::string_view text, char32_t escape = 0);

}  // namespace SlovenianText
