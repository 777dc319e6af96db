#include "core/SlovenianText.h"

#include <QChar>
#include <array>
#include <string>

namespace SlovenianText {
namespace {

// Decodes the next code point of a UTF-8 text; a malformed byte stands for itself.
inline char32_t NextCodePoint(std::string_view text, size_t& pos) {
    const auto byte = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char lead = byte(pos);
    if (lead < 0x80) {
        ++pos;
        return lead;
    }
    int length = lead < 0x80           ? 1
                 : (lead >> 5) == 0x6  ? 2
                 : (lead >> 4) == 0xe  ? 3
                 : (lead >> 3) == 0x1e ? 4
                                       : 0;
    if (length == 0 || pos + length > text.size()) {
        ++pos;
        return lead;
    }
    char32_t cp = length == 1 ? lead : lead & (0x7f >> length);
    for (int i = 1; i < length; ++i) {
        const unsigned char next = byte(pos + i);
        if ((next & 0xc0) != 0x80) {
            ++pos;
            return lead;
        }
        cp = (cp << 6) | (next & 0x3f);
    }
    pos += length;
    return cp;
}

// Primary weights: blanks and punctuation, then digits, then letters, then everything else.
constexpr char32_t TableSize = 0x250;
constexpr uint32_t LetterBase = 0x200;
constexpr uint32_t OtherBase = 0x10000;

uint32_t LetterWeight(char letter, int after = 0) {
    return LetterBase + uint32_t(letter - 'a') * 4 + after;
}

std::array<uint32_t, TableSize> BuildWeights() {
    std::array<uint32_t, TableSize> weights{};
    for (char32_t cp = 0; cp < TableSize; ++cp) {
        weights[cp] = OtherBase + cp;
    }
    const std::string_view punctuation = "\t\n\v\f\r _-,;:!?.'\"()[]{}@*/\\&#%`^+<=>|~$0123456789";
    for (size_t i = 0; i < punctuation.size(); ++i) {
        weights[static_cast<unsigned char>(punctuation[i])] = uint32_t(i + 1);
    }
    for (char32_t cp = 0x80; cp < TableSize; ++cp) {
        const QString decomposed = QChar::decomposition(cp);
        const char32_t base = decomposed.isEmpty() ? 0 : Fold(decomposed.at(0).unicode());
        if (base >= 'a' && base <= 'z') {
            weights[cp] = LetterWeight(char(base));
        }
    }
    for (char c = 'a'; c <= 'z'; ++c) {
        weights[static_cast<unsigned char>(c)] = LetterWeight(c);
    }
    weights[0x10d] = LetterWeight('c', 1);  // č
    weights[0x107] = LetterWeight('c', 2);  // ć
    weights[0x111] = LetterWeight('d', 1);  // đ
    weights[0x161] = LetterWeight('s', 1);  // š
    weights[0x17e] = LetterWeight('z', 1);  // ž
    return weights;
}

uint32_t PrimaryWeight(char32_t folded) {
    static const std::array<uint32_t, TableSize> weights = BuildWeights();
    return folded < TableSize ? weights[folded] : OtherBase + folded;
}

std::u32string& FoldedInto(std::u32string& out, std::string_view text) {
    out.clear();
    for (size_t pos = 0; pos < text.size();) {
        out.push_back(Fold(NextCodePoint(text, pos)));
    }
    return out;
}

}  // namespace

char32_t Fold(char32_t codePoint) {
    if (codePoint < 0x80) {
        return codePoint >= 'A' && codePoint <= 'Z' ? codePoint + 32 : codePoint;
    }
    return QChar::toCaseFolded(codePoint);
}

int Compare(std::string_view a, std::string_view b) {
    // One pass over both texts: the first difference of primary weights decides; then the
    // shorter text; then the first difference of the folded characters (accents, other scripts).
    size_t posA = 0;
    size_t posB = 0;
    int secondary = 0;
    while (posA < a.size() && posB < b.size()) {
        const char32_t ca = Fold(NextCodePoint(a, posA));
        const char32_t cb = Fold(NextCodePoint(b, posB));
        if (ca == cb) {
            continue;
        }
        const uint32_t wa = PrimaryWeight(ca);
        const uint32_t wb = PrimaryWeight(cb);
        if (wa != wb) {
            return wa < wb ? -1 : 1;
        }
        if (secondary == 0) {
            secondary = ca < cb ? -1 : 1;
        }
    }
    if (posA < a.size()) {
        return 1;
    }
    if (posB < b.size()) {
        return -1;
    }
    return secondary;
}

int Compare(const QString& a, const QString& b) {
    const QByteArray utf8A = a.toUtf8();
    const QByteArray utf8B = b.toUtf8();
    return Compare(std::string_view(utf8A.constData(), utf8A.size()),
                   std::string_view(utf8B.constData(), utf8B.size()));
}

bool Like(std::string_view pattern, std::string_view text, char32_t escape) {
    thread_local std::u32string p;
    thread_local std::u32string t;
    FoldedInto(p, pattern);
    FoldedInto(t, text);
    escape = escape ? Fold(escape) : 0;
    size_t pi = 0;
    size_t ti = 0;
    size_t starP = std::u32string::npos;
    size_t starT = 0;
    while (ti < t.size()) {
        if (pi < p.size() && escape && p[pi] == escape && pi + 1 < p.size()) {
            if (p[pi + 1] == t[ti]) {
                pi += 2;
                ++ti;
                continue;
            }
        } else if (pi < p.size() && p[pi] == U'%') {
            starP = pi++;
            starT = ti;
            continue;
        } else if (pi < p.size() && (p[pi] == U'_' || p[pi] == t[ti])) {
            ++pi;
            ++ti;
            continue;
        }
        if (starP == std::u32string::npos) {
            return false;
        }
        pi = starP + 1;
        ti = ++starT;
    }
    while (pi < p.size() && p[pi] == U'%') {
        ++pi;
    }
    return pi == p.size();
}

}  // namespace SlovenianText
