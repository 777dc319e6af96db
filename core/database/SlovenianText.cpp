#include "core/database/SlovenianText.h"

#include <QChar>
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
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

// Pattern tokens beside the folded characters (which never come near these values).
constexpr char32_t AnyRun = 0xffffffff;  // %
constexpr char32_t AnyOne = 0xfffffffe;  // _

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

const std::array<uint32_t, TableSize> Weights = BuildWeights();

uint32_t PrimaryWeight(char32_t folded) {
    return folded < TableSize ? Weights[folded] : OtherBase + folded;
}

// The next character of a text, folded, with the plain ASCII letters taken at once.
inline char32_t NextFolded(std::string_view text, size_t& pos) {
    const unsigned char byte = static_cast<unsigned char>(text[pos]);
    if (byte < 0x80) {
        ++pos;
        return byte >= 'A' && byte <= 'Z' ? byte + 32 : byte;
    }
    return Fold(NextCodePoint(text, pos));
}

// Every character outside ASCII whose folded form differs from it, as (folded, character),
// sorted: the characters that fold to a given one.
std::vector<std::pair<char32_t, char32_t>> BuildFoldSources() {
    std::vector<std::pair<char32_t, char32_t>> sources;
    for (char32_t cp = 0x80; cp <= 0x10ffff; ++cp) {
        const char32_t folded = Fold(cp);
        if (folded != cp) {
            sources.emplace_back(folded, cp);
        }
    }
    std::sort(sources.begin(), sources.end());
    return sources;
}

// The first byte of a character in UTF-8.
unsigned char LeadByte(char32_t cp) {
    return cp < 0x80      ? static_cast<unsigned char>(cp)
           : cp < 0x800   ? static_cast<unsigned char>(0xc0 | (cp >> 6))
           : cp < 0x10000 ? static_cast<unsigned char>(0xe0 | (cp >> 12))
                          : static_cast<unsigned char>(0xf0 | (cp >> 18));
}

// The first position from `from` on of one of `count` (1 to 3) byte values, eight bytes at a
// time: a byte equal to a value gives a zero byte in the word XOR the value repeated, and the
// lowest zero byte of a word is found exactly.
size_t FindBytes(std::string_view text, size_t from, const unsigned char* values, int count) {
    constexpr uint64_t Ones = 0x0101010101010101ULL;
    constexpr uint64_t Highs = 0x8080808080808080ULL;
    const uint64_t first = Ones * values[0];
    const uint64_t second = Ones * values[count > 1 ? 1 : 0];
    const uint64_t third = Ones * values[count > 2 ? 2 : 0];
    const auto zeroBytes = [](uint64_t word) { return (word - Ones) & ~word & Highs; };
    size_t pos = from;
    for (; pos + 8 <= text.size(); pos += 8) {
        uint64_t word;
        std::memcpy(&word, text.data() + pos, 8);
        const uint64_t found =
            zeroBytes(word ^ first) | zeroBytes(word ^ second) | zeroBytes(word ^ third);
        if (found) {
            return pos + static_cast<size_t>(__builtin_ctzll(found) / 8);
        }
    }
    for (; pos < text.size(); ++pos) {
        const unsigned char byte = static_cast<unsigned char>(text[pos]);
        if (byte == values[0] || byte == values[count > 1 ? 1 : 0] ||
            byte == values[count > 2 ? 2 : 0]) {
            return pos;
        }
    }
    return text.size();
}

}  // namespace

char32_t Fold(char32_t codePoint) {
    if (codePoint < 0x80) {
        return codePoint >= 'A' && codePoint <= 'Z' ? codePoint + 32 : codePoint;
    }
    return QChar::toCaseFolded(codePoint);
}

int Compare(std::string_view a, std::string_view b) {
    // Identical bytes at the start make no difference; start at the character where they part.
    const size_t common = std::min(a.size(), b.size());
    size_t start = 0;
    while (start < common && a[start] == b[start]) {
        ++start;
    }
    const auto inside = [](std::string_view text, size_t pos) {
        return pos < text.size() && (static_cast<unsigned char>(text[pos]) & 0xc0) == 0x80;
    };
    while (start > 0 && (inside(a, start) || inside(b, start))) {
        --start;
    }
    // One pass over both texts: the first difference of primary weights decides; then the
    // shorter text; then the first difference of the folded characters (accents, other scripts).
    size_t posA = start;
    size_t posB = start;
    int secondary = 0;
    while (posA < a.size() && posB < b.size()) {
        const char32_t ca = NextFolded(a, posA);
        const char32_t cb = NextFolded(b, posB);
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

LikePattern::LikePattern(std::string_view pattern, char32_t escape) {
    escape = escape ? Fold(escape) : 0;
    for (size_t pos = 0; pos < pattern.size();) {
        const char32_t c = NextFolded(pattern, pos);
        if (escape && c == escape && pos < pattern.size()) {
            m_tokens.push_back(NextFolded(pattern, pos));
        } else if (c == U'%') {
            if (m_tokens.empty() || m_tokens.back() != AnyRun) {
                m_tokens.push_back(AnyRun);
            }
        } else if (c == U'_') {
            m_tokens.push_back(AnyOne);
        } else {
            m_tokens.push_back(c);
        }
    }
    m_starts.resize(m_tokens.size());
    for (size_t i = 1; i < m_tokens.size(); ++i) {
        if (m_tokens[i - 1] == AnyRun && m_tokens[i] != AnyOne && m_tokens[i] != AnyRun) {
            m_starts[i] = StartsOf(m_tokens[i]);
        }
    }
}

LikePattern::Starts LikePattern::StartsOf(char32_t folded) {
    static const std::vector<std::pair<char32_t, char32_t>> sources = BuildFoldSources();
    std::vector<char32_t> characters{folded};
    if (folded < 0x80 && folded >= 'a' && folded <= 'z') {
        characters.push_back(folded - 32);
    }
    for (auto it =
             std::lower_bound(sources.begin(), sources.end(), std::make_pair(folded, char32_t(0)));
         it != sources.end() && it->first == folded; ++it) {
        characters.push_back(it->second);
    }
    Starts starts;
    int count = 0;
    const auto add = [&](unsigned char byte) {
        if (std::find(starts.bytes, starts.bytes + std::min(count, 3), byte) ==
            starts.bytes + std::min(count, 3)) {
            if (count < 3) {
                starts.bytes[count] = byte;
            }
            ++count;
        }
    };
    for (const char32_t cp : characters) {
        add(LeadByte(cp));
        if (cp >= 0x80 && cp < 0x100) {
            // a malformed byte stands for itself; one that is also a continuation byte would be
            // found inside other characters
            if (cp < 0xc0) {
                return Starts();
            }
            add(static_cast<unsigned char>(cp));
        }
    }
    starts.count = count <= 3 ? count : -1;
    return starts;
}

size_t LikePattern::Find(std::string_view text, size_t from, size_t token) const {
    const char32_t folded = m_tokens[token];
    const Starts& starts = m_starts[token];
    const size_t size = text.size();
    if (starts.count > 0) {
        for (size_t pos = FindBytes(text, from, starts.bytes, starts.count); pos < size;
             pos = FindBytes(text, pos + 1, starts.bytes, starts.count)) {
            size_t next = pos;
            if (NextFolded(text, next) == folded) {
                return pos;
            }
        }
        return size;
    }
    for (size_t pos = from; pos < size;) {
        const size_t at = pos;
        if (NextFolded(text, pos) == folded) {
            return at;
        }
    }
    return size;
}

bool LikePattern::Matches(std::string_view text) const {
    // Left to right; on a mismatch after a "%", that "%" takes one character more and the
    // matching goes on from there. A literal after a "%" is first looked for directly.
    const size_t count = m_tokens.size();
    const size_t size = text.size();
    constexpr size_t None = size_t(-1);
    size_t pi = 0;
    size_t ti = 0;
    size_t afterRun = None;  // the token after the last "%"
    size_t runEnd = 0;       // where the text after that "%" is tried
    const auto seek = [&](size_t from) {
        return m_tokens[afterRun] == AnyOne ? from : Find(text, from, afterRun);
    };
    while (true) {
        if (pi < count && m_tokens[pi] == AnyRun) {
            afterRun = ++pi;
            if (pi == count) {
                return true;
            }
            ti = runEnd = seek(ti);
            if (ti >= size) {
                return false;
            }
            continue;
        }
        if (ti >= size) {
            break;
        }
        if (pi < count) {
            size_t next = ti;
            const char32_t c = NextFolded(text, next);
            if (m_tokens[pi] == AnyOne || m_tokens[pi] == c) {
                ++pi;
                ti = next;
                continue;
            }
        }
        if (afterRun == None) {
            return false;
        }
        NextFolded(text, runEnd);
        pi = afterRun;
        ti = runEnd = seek(runEnd);
        if (ti >= size) {
            return false;
        }
    }
    return pi == count;
}

bool Like(std::string_view pattern, std::string_view text, char32_t escape) {
    return LikePattern(pattern, escape).Matches(text);
}

}  // namespace SlovenianText
