#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <optional>

namespace Exchange {

// The encodings in which the files of other programs come: UTF-8 and the single-byte code pages
// of DOS (437, MealMaster's own) and of Windows (1250 Central European, 1252 Western).
enum class Encoding { Utf8, Cp437, Windows1250, Windows1252, Latin1 };

namespace TextEncoding {

// The encoding a name stands for, in any letter case: "UTF-8", "utf8", "CP437", "IBM437",
// "437", "windows-1250", "cp1250", "windows-1252", "cp1252", "ISO-8859-1", "latin1". False when
// the name is none of them.
bool FromName(const QString& name, Encoding& encoding);
// The encoding a caller names, as FromName reads the name; none for an empty name. A name that
// FromName does not know raises an error.
std::optional<Encoding> Given(const QString& name);
// The name of an encoding as FromName takes it ("UTF-8", "CP437", "windows-1250", ...).
QString Name(Encoding encoding);

// The text of bytes in an encoding. A byte a code page leaves undefined stands for itself; a
// sequence that is not UTF-8 becomes U+FFFD.
QString Decode(QByteArrayView bytes, Encoding encoding);

// True when the bytes are UTF-8 throughout.
bool IsUtf8(QByteArrayView bytes);

// The single-byte code page that bytes which are not UTF-8 most likely are in; `fallback` when
// their bytes above 0x7F tell nothing. Only bytes beside an ASCII letter count, for such a byte
// is a letter of a word:
// - a byte from 0x80 to 0xA5 is a letter in CP437 (é, ü, ä, ç, á, ñ, ...) and a Windows
//   punctuation mark or nothing, so it counts for CP437 (except 0x8A 0x8C 0x8E 0x9A 0x9C 0x9E
//   0x9F, letters in Windows too; the quotes 0x91 to 0x94; 0x85 0x96 0x97, Windows' ellipsis
//   and dashes, which may touch a word);
// - a byte from 0xC0 to 0xFF is a letter in Windows and a box, Greek letter or sign in CP437,
//   so it counts for Windows (except 0xE1, ß in CP437, and 0xF8, the degree sign of CP437,
//   which counts only between two letters), and so do 0x9A and 0x9E (š ž);
// - the page with more votes wins; with as many, `fallback`.
// Between the two Windows pages, windows-1250 only when Slovenian and Croatian letters (č ć đ
// Č Ć Đ) and letters only windows-1250 has (ł ą ľ ť Ł Ą ...) outnumber the Western letters on
// bytes where windows-1250 has others (à ã å ê ì ï ñ ò õ ø ù û œ ...).
Encoding GuessSingleByte(QByteArrayView bytes, Encoding fallback);

}  // namespace TextEncoding
}  // namespace Exchange
