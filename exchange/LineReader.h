#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

#include "exchange/TextEncoding.h"

class QIODevice;

namespace Exchange {

// The lines of a text file of any size, read from a device a block at a time (a file is never
// held whole), as text. Lines end with CR LF, LF or CR. A UTF-8 byte order mark is left out.
// The device is at its end when a read gives nothing (a file or a buffer, not a socket).
//
// The encoding is the one given, or found: the first block with a byte above 0x7F decides, as
// UTF-8 when the block is UTF-8 throughout, otherwise as the single-byte code page that
// TextEncoding::GuessSingleByte finds in it (with the format's own code page as its fallback).
// When a later block is not UTF-8 after all, its code page is guessed from it and kept for the
// rest of the file; the lines before it were UTF-8 and stay as they were read. A file with a
// byte order mark is UTF-8.
class LineReader {
public:
    LineReader(QIODevice& device, std::optional<Encoding> encoding, Encoding singleByteFallback);

    // The next line, without its end; false after the last line.
    bool Next(QString& line);

    // The number of the line that Next gave last, from 1.
    int LineNumber() const { return m_lineNumber; }

    // The encoding of the lines read so far (UTF-8 while every byte was below 0x80).
    Encoding CurrentEncoding() const { return m_encoding; }

private:
    bool Fill();
    void Judge(qsizetype end);
    qsizetype LineEnd() const;

    QIODevice& m_device;
    Encoding m_encoding = Encoding::Utf8;
    Encoding m_fallback;
    bool m_decided = false;  // the encoding was given or a byte above 0x7F decided it
    bool m_final = false;    // it stays what it is for the rest of the file
    QByteArray m_buffer;
    qsizetype m_position = 0;  // where the next line starts in the buffer
    qsizetype m_judged = 0;    // the buffer's bytes before this were judged
    bool m_atEnd = false;      // the device has nothing more
    int m_lineNumber = 0;
};

}  // namespace Exchange
