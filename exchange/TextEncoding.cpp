#include "exchange/TextEncoding.h"

#include <QStringDecoder>
#include <algorithm>
#include <array>

#include "core/AppError.h"
#include "core/Windows1250.h"

namespace Exchange::TextEncoding {
namespace {

// The characters of the bytes 0x80 to 0xFF in code page 437.
constexpr std::array<char16_t, 128> Cp437UpperHalf = {
    0x00C7, 0x00FC, 0x00E9, 0x00E2, 0x00E4, 0x00E0, 0x00E5, 0x00E7, 0x00EA, 0x00EB, 0x00E8, 0x00EF,
    0x00EE, 0x00EC, 0x00C4, 0x00C5, 0x00C9, 0x00E6, 0x00C6, 0x00F4, 0x00F6, 0x00F2, 0x00FB, 0x00F9,
    0x00FF, 0x00D6, 0x00DC, 0x00A2, 0x00A3, 0x00A5, 0x20A7, 0x0192, 0x00E1, 0x00ED, 0x00F3, 0x00FA,
    0x00F1, 0x00D1, 0x00AA, 0x00BA, 0x00BF, 0x2310, 0x00AC, 0x00BD, 0x00BC, 0x00A1, 0x00AB, 0x00BB,
    0x2591, 0x2592, 0x2593, 0x2502, 0x2524, 0x2561, 0x2562, 0x2556, 0x2555, 0x2563, 0x2551, 0x2557,
    0x255D, 0x255C, 0x255B, 0x2510, 0x2514, 0x2534, 0x252C, 0x251C, 0x2500, 0x253C, 0x255E, 0x255F,
    0x255A, 0x2554, 0x2569, 0x2566, 0x2560, 0x2550, 0x256C, 0x2567, 0x2568, 0x2564, 0x2565, 0x2559,
    0x2558, 0x2552, 0x2553, 0x256B, 0x256A, 0x2518, 0x250C, 0x2588, 0x2584, 0x258C, 0x2590, 0x2580,
    0x03B1, 0x00DF, 0x0393, 0x03C0, 0x03A3, 0x03C3, 0x00B5, 0x03C4, 0x03A6, 0x0398, 0x03A9, 0x03B4,
    0x221E, 0x03C6, 0x03B5, 0x2229, 0x2261, 0x00B1, 0x2265, 0x2264, 0x2320, 0x2321, 0x00F7, 0x2248,
    0x00B0, 0x2219, 0x00B7, 0x221A, 0x207F, 0x00B2, 0x25A0, 0x00A0,
};

// The characters of the bytes 0x80 to 0x9F in windows-1252 (from 0xA0 on it is ISO-8859-1; an
// undefined byte stands for itself).
constexpr std::array<char16_t, 32> Windows1252Controls = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};

struct Named {
    const char* name;
    Encoding encoding;
};

// The first name of each encoding is the one Name gives.
constexpr Named Names[] = {
    {"UTF-8", Encoding::Utf8},         {"utf8", Encoding::Utf8},
    {"CP437", Encoding::Cp437},        {"IBM437", Encoding::Cp437},
    {"437", Encoding::Cp437},          {"windows-1250", Encoding::Windows1250},
    {"cp1250", Encoding::Windows1250}, {"windows-1252", Encoding::Windows1252},
    {"cp1252", Encoding::Windows1252}, {"ISO-8859-1", Encoding::Latin1},
    {"latin1", Encoding::Latin1},
};

// Bytes that are letters of Slovenian and Croatian (č ć đ Č Ć Đ) or letters that only
// windows-1250 has (Ť Ź ť Ł Ą Ş Ż ł ą ş Ľ ľ).
constexpr std::array<unsigned char, 18> CentralLetters = {
    0xC6, 0xC8, 0xD0, 0xE6, 0xE8, 0xF0, 0x8D, 0x8F, 0x9D,
    0xA3, 0xA5, 0xAA, 0xAF, 0xB3, 0xB9, 0xBA, 0xBC, 0xBE,
};

// Bytes that are Western letters in windows-1252 and other letters in windows-1250.
constexpr std::array<unsigned char, 29> WesternLetters = {
    0x8C, 0x9C, 0x9F, 0xC0, 0xC3, 0xC5, 0xCA, 0xCC, 0xCF, 0xD1, 0xD2, 0xD5, 0xD8, 0xD9, 0xDB,
    0xDE, 0xE0, 0xE3, 0xE5, 0xEA, 0xEC, 0xEF, 0xF1, 0xF2, 0xF5, 0xF8, 0xF9, 0xFB, 0xFE,
};

// Bytes from 0x80 to 0xA5 that say nothing for CP437: letters in Windows as well, quotes,
// Windows' ellipsis and dashes.
constexpr std::array<unsigned char, 14> NoCp437Vote = {
    0x8A, 0x8C, 0x8E, 0x9A, 0x9C, 0x9E, 0x9F, 0x91, 0x92, 0x93, 0x94, 0x85, 0x96, 0x97,
};

template <size_t N>
bool OneOf(unsigned char byte, const std::array<unsigned char, N>& bytes) {
    return std::find(bytes.begin(), bytes.end(), byte) != bytes.end();
}

bool IsAsciiLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

QString DecodeWithTable(QByteArrayView bytes, Encoding encoding) {
    QString text(bytes.size(), Qt::Uninitialized);
    QChar* out = text.data();
    for (const char byte : bytes) {
        const auto value = static_cast<unsigned char>(byte);
        char16_t unit = value;
        if (value >= 0x80 && encoding == Encoding::Cp437) {
            unit = Cp437UpperHalf[value - 0x80];
        } else if (value >= 0x80 && value < 0xA0) {
            unit = Windows1252Controls[value - 0x80];
        }
        *out++ = QChar(unit);
    }
    return text;
}

// The votes of the bytes above 0x7F for each reading.
struct Votes {
    int cp437 = 0;
    int windows = 0;
    int central = 0;
    int western = 0;

    void Count(unsigned char byte, bool letterBeside, bool lettersAround) {
        if (!letterBeside) {
            return;
        }
        if (byte <= 0xA5 && !OneOf(byte, NoCp437Vote)) {
            ++cp437;
        }
        const bool windowsLetter = byte >= 0xC0 && byte != 0xE1 && byte != 0xF8;
        if (windowsLetter || byte == 0x9A || byte == 0x9E || (byte == 0xF8 && lettersAround)) {
            ++windows;
        }
        central += OneOf(byte, CentralLetters) ? 1 : 0;
        western += OneOf(byte, WesternLetters) ? 1 : 0;
    }
};

}  // namespace

bool FromName(const QString& name, Encoding& encoding) {
    for (const Named& named : Names) {
        if (name.trimmed().compare(QLatin1String(named.name), Qt::CaseInsensitive) == 0) {
            encoding = named.encoding;
            return true;
        }
    }
    return false;
}

std::optional<Encoding> Given(const QString& name) {
    Encoding encoding = Encoding::Utf8;
    if (name.isEmpty()) {
        return std::nullopt;
    }
    if (!FromName(name, encoding)) {
        ErrorPath::Raise(5, QStringLiteral("Unknown encoding %1").arg(name));
    }
    return encoding;
}

QString Name(Encoding encoding) {
    for (const Named& named : Names) {
        if (named.encoding == encoding) {
            return QString::fromLatin1(named.name);
        }
    }
    return QString();
}

QString Decode(QByteArrayView bytes, Encoding encoding) {
    switch (encoding) {
        case Encoding::Utf8:
            return QString::fromUtf8(bytes);
        case Encoding::Latin1:
            return QString::fromLatin1(bytes);
        case Encoding::Windows1250:
            return Windows1250::Decode(bytes.toByteArray());
        case Encoding::Cp437:
        case Encoding::Windows1252:
            return DecodeWithTable(bytes, encoding);
    }
    return QString();
}

bool IsUtf8(QByteArrayView bytes) {
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder.decode(bytes);
    return !decoder.hasError();
}

Encoding GuessSingleByte(QByteArrayView bytes, Encoding fallback) {
    Votes votes;
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        const auto byte = static_cast<unsigned char>(bytes[i]);
        if (byte < 0x80) {
            continue;
        }
        const bool before = i > 0 && IsAsciiLetter(bytes[i - 1]);
        const bool after = i + 1 < bytes.size() && IsAsciiLetter(bytes[i + 1]);
        votes.Count(byte, before || after, before && after);
    }
    if (votes.cp437 > votes.windows) {
        return Encoding::Cp437;
    }
    if (votes.windows > votes.cp437) {
        return votes.central > votes.western ? Encoding::Windows1250 : Encoding::Windows1252;
    }
    return fallback;
}

}  // namespace Exchange::TextEncoding
