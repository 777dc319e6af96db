#include "exchange/LineReader.h"

#include <QIODevice>
#include <algorithm>
#include <iterator>

namespace Exchange {
namespace {

constexpr qint64 BlockSize = 1 << 20;

bool IsLineEnd(char c) { return c == '\n' || c == '\r'; }

bool HasHighByte(QByteArrayView bytes) {
    return std::any_of(bytes.begin(), bytes.end(),
                       [](char c) { return static_cast<unsigned char>(c) >= 0x80; });
}

}  // namespace

LineReader::LineReader(QIODevice& device, std::optional<Encoding> encoding,
                       Encoding singleByteFallback)
    : m_device(device), m_fallback(singleByteFallback) {
    if (encoding) {
        m_encoding = *encoding;
        m_decided = m_final = true;
    }
    Fill();
    if (m_buffer.startsWith("\xEF\xBB\xBF")) {
        m_position = 3;
        if (!m_final) {
            m_encoding = Encoding::Utf8;
            m_decided = m_final = true;
        }
    }
}

bool LineReader::Next(QString& line) {
    qsizetype end = LineEnd();
    while (end < 0 && !m_atEnd) {
        Fill();
        end = LineEnd();
    }
    if (end < 0) {
        if (m_position >= m_buffer.size()) {
            return false;
        }
        end = m_buffer.size();
    }
    const QByteArrayView bytes(m_buffer.constData() + m_position, end - m_position);
    line = TextEncoding::Decode(bytes, m_encoding);
    ++m_lineNumber;
    const bool crlf =
        end + 1 < m_buffer.size() && m_buffer[end] == '\r' && m_buffer[end + 1] == '\n';
    m_position = std::min(m_buffer.size(), end + (crlf ? 2 : 1));
    return true;
}

// Where the line that starts at m_position ends; -1 when the buffer does not tell yet (no end,
// or a CR at its very end that a LF may follow).
qsizetype LineReader::LineEnd() const {
    const char* begin = m_buffer.constData();
    const char* found = std::find_if(begin + m_position, begin + m_buffer.size(), IsLineEnd);
    const auto end = static_cast<qsizetype>(found - begin);
    if (end == m_buffer.size() || (*found == '\r' && end + 1 == m_buffer.size() && !m_atEnd)) {
        return -1;
    }
    return end;
}

// Reads the next block behind what is left of the buffer and judges its whole lines.
bool LineReader::Fill() {
    m_buffer.remove(0, m_position);
    m_judged -= m_position;
    m_position = 0;
    const QByteArray block = m_device.read(BlockSize);
    m_atEnd = block.isEmpty();
    m_buffer += block;
    const char* begin = m_buffer.constData();
    const auto last = std::find_if(std::make_reverse_iterator(begin + m_buffer.size()),
                                   std::make_reverse_iterator(begin), IsLineEnd);
    Judge(m_atEnd ? m_buffer.size() : static_cast<qsizetype>(last.base() - begin));
    return !block.isEmpty();
}

// Decides the encoding, or changes it once, by the bytes from m_judged to `end`.
void LineReader::Judge(qsizetype end) {
    if (end <= m_judged) {
        return;
    }
    const QByteArrayView bytes(m_buffer.constData() + m_judged, end - m_judged);
    m_judged = end;
    if (m_final || !HasHighByte(bytes)) {
        return;
    }
    const bool utf8 = TextEncoding::IsUtf8(bytes);
    if (!m_decided && utf8) {
        m_decided = true;
    } else if (!utf8) {
        m_encoding = TextEncoding::GuessSingleByte(bytes, m_fallback);
        m_decided = m_final = true;
    }
}

}  // namespace Exchange
