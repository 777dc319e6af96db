#pragma once

#include <QString>
#include <string_view>
#include <vector>

// How the program compares names: letter case is ignored for every letter (č = Č), and names
// sort in Slovenian order (a b c č ć d đ e ... s š t ... z ž), accented foreign letters next to
// their base letter. Used by the file database's collation and LIKE.
namespace SlovenianText {

// The case-folded code point.
char32_t Fold(char32_t codePoint);

// Compares two UTF-8 texts: < 0, 0 or > 0. Texts that differ only in letter case are equal.
int Compare(std::string_view a, std::string_view b);
int Compare(const QString& a, const QString& b);

// A LIKE pattern read once and matched against many UTF-8 texts, ignoring letter case: "%" any
// run of characters, "_" one character; `escape` (0 for none) makes the next pattern character
// literal. Matching allocates nothing.
class LikePattern {
public:
    LikePattern(std::string_view pattern, char32_t escape = 0);
    bool Matches(std::string_view text) const;

private:
    // The bytes that can begin a character folding to a given one, when there are at most
    // three of them (count -1: too many, every character is decoded).
    struct Starts {
        unsigned char bytes[3] = {};
        int count = -1;
    };
    static Starts StartsOf(char32_t folded);
    // The first position from `from` on where the text holds the character of token `token`,
    // or the text's size when there is none.
    size_t Find(std::string_view text, size_t from, size_t token) const;

    std::vector<char32_t> m_tokens;  // folded characters, AnyRun and AnyOne
    std::vector<Starts> m_starts;    // for each token
};

// SQL LIKE on UTF-8 texts, ignoring letter case (a LikePattern used once).
bool Like(std::string_view pattern, std::string_view text, char32_t escape = 0);

}  // namespace SlovenianText
