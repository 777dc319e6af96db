#include "core/registry/RegistryFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <cerrno>
#include <cstring>

namespace {

const QByteArray Header = "Windows Registry Editor Version 5.00";

bool SameValue(const RegistryFile::Value& a, const RegistryFile::Value& b) {
    return a.type == b.type &&
           (a.type == RegistryFile::RegDword ? a.number == b.number : a.text == b.text);
}

QString ValueLineText(const RegistryFile::Value& value);

// A key's path without a root: a file of one root holds only that root's keys, and Regedit's
// export names the root in front ("HKEY_LOCAL_MACHINE\\Software\\...").
QString NormalizedKeyPath(QString path) {
    path.replace(QStringLiteral("\\\\"), QStringLiteral("\\"));
    while (path.endsWith(QLatin1Char('\\'))) {
        path.chop(1);
    }
    for (const char* root : {"HKEY_LOCAL_MACHINE\\", "HKEY_CURRENT_USER\\"}) {
        if (path.startsWith(QLatin1String(root), Qt::CaseInsensitive)) {
            return path.mid(qsizetype(strlen(root)));
        }
    }
    return path;
}

bool SameName(const QString& a, const QString& b) { return a.compare(b, Qt::CaseInsensitive) == 0; }

QString Escaped(const QString& text) {
    QString result = text;
    result.replace(QLatin1Char('\\'), QStringLiteral("\\\\"));
    result.replace(QLatin1Char('"'), QStringLiteral("\\\""));
    return QLatin1Char('"') + result + QLatin1Char('"');
}

// Reads a quoted string starting at `pos` (at the opening quote); returns false when malformed.
bool ReadQuoted(const QString& line, int& pos, QString& out) {
    if (pos >= line.size() || line[pos] != QLatin1Char('"')) {
        return false;
    }
    out.clear();
    for (++pos; pos < line.size(); ++pos) {
        const QChar c = line[pos];
        if (c == QLatin1Char('\\')) {
            if (++pos >= line.size()) {
                return false;
            }
            out += line[pos];
        } else if (c == QLatin1Char('"')) {
            ++pos;
            return true;
        } else {
            out += c;
        }
    }
    return false;
}

bool NeedsHex(const QString& text) {
    for (const QChar c : text) {
        if (c.unicode() < 0x20) {
            return true;
        }
    }
    return false;
}

QString HexText(const QString& text) {
    QStringList bytes;
    for (const QChar c : text) {
        bytes << QStringLiteral("%1").arg(c.unicode() & 0xff, 2, 16, QLatin1Char('0'))
              << QStringLiteral("%1").arg(c.unicode() >> 8, 2, 16, QLatin1Char('0'));
    }
    return QStringLiteral("hex(1):") + bytes.join(QLatin1Char(','));
}

bool ParseHexText(const QString& data, QString& out) {
    const QStringList bytes = data.split(QLatin1Char(','), Qt::SkipEmptyParts);
    if (bytes.size() % 2 != 0) {
        return false;
    }
    out.clear();
    for (int i = 0; i < bytes.size(); i += 2) {
        bool okLow = false;
        bool okHigh = false;
        const uint low = bytes[i].trimmed().toUInt(&okLow, 16);
        const uint high = bytes[i + 1].trimmed().toUInt(&okHigh, 16);
        if (!okLow || !okHigh || low > 0xff || high > 0xff) {
            return false;
        }
        out += QChar(char16_t(low | (high << 8)));
    }
    return true;
}

bool ParseValueLine(const QString& line, RegistryFile::Value& value) {
    int pos = 0;
    if (!ReadQuoted(line, pos, value.name) || pos >= line.size() || line[pos] != QLatin1Char('=')) {
        return false;
    }
    const QString data = line.mid(pos + 1);
    if (data.startsWith(QLatin1Char('"'))) {
        int dataPos = 0;
        value.type = RegistryFile::RegSz;
        return ReadQuoted(data, dataPos, value.text) && data.mid(dataPos).trimmed().isEmpty();
    }
    if (data.startsWith(QLatin1String("dword:"))) {
        bool ok = false;
        const QString digits = data.mid(6).trimmed();
        value.type = RegistryFile::RegDword;
        value.number = digits.toUInt(&ok, 16);
        return ok && digits.size() <= 8;
    }
    if (data.startsWith(QLatin1String("hex(1):"))) {
        value.type = RegistryFile::RegSz;
        return ParseHexText(data.mid(7), value.text);
    }
    return false;
}

QString ValueLineText(const RegistryFile::Value& value) {
    QString text = Escaped(value.name) + QLatin1Char('=');
    if (value.type == RegistryFile::RegDword) {
        text += QStringLiteral("dword:%1").arg(value.number, 8, 16, QLatin1Char('0'));
    } else if (NeedsHex(value.text)) {
        text += HexText(value.text);
    } else {
        text += Escaped(value.text);
    }
    return text;
}

bool WriteAll(int fd, const QByteArray& bytes) {
    qsizetype done = 0;
    while (done < bytes.size()) {
        const ssize_t n = ::write(fd, bytes.constData() + done, size_t(bytes.size() - done));
        if (n < 0 && errno == EINTR) {
            continue;
        }
        if (n <= 0) {
            return false;
        }
        done += n;
    }
    return true;
}

}  // namespace

RegistryFile RegistryFile::Load(const QString& fileName) {
    RegistryFile unreadable;
    unreadable.m_readable = false;
    // Opened without waiting (a FIFO would block for ever), then read only when it is a plain
    // file of a sensible size: a device, a folder or a huge file reads as an unreadable store.
    const int fd = ::open(QFile::encodeName(fileName).constData(),
                          O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (fd < 0) {
        return errno == ENOENT ? RegistryFile() : unreadable;
    }
    struct stat info {};
    QByteArray content;
    bool whole = ::fstat(fd, &info) == 0 && S_ISREG(info.st_mode) && info.st_size <= MostBytes;
    if (whole) {
        content.resize(qsizetype(info.st_size) + 1);
        qsizetype done = 0;
        while (done < content.size()) {
            const ssize_t n = ::read(fd, content.data() + done, size_t(content.size() - done));
            if (n < 0 && errno == EINTR) {
                continue;
            }
            if (n <= 0) {
                whole = n == 0;
                break;
            }
            done += n;
        }
        content.truncate(done);
        whole = whole && done <= MostBytes;
    }
    ::close(fd);
    if (!whole) {
        return unreadable;
    }
    // Regedit's own export: UTF-16LE after a byte-order mark.
    if (content.startsWith("\xff\xfe")) {
        const QString text = QString::fromUtf16(
            reinterpret_cast<const char16_t*>(content.constData() + 2), (content.size() - 2) / 2);
        RegistryFile store = Parse(EncodeText(text));
        store.m_utf16 = true;
        return store;
    }
    return Parse(content);
}

RegistryFile::Line RegistryFile::ReadLine(const QByteArray& bytes, QString& currentKey) {
    Line line;
    line.bytes = bytes;
    QString text = DecodeBytes(bytes);
    if (text.endsWith(QLatin1Char('\n'))) {
        text.chop(1);
    }
    if (text.endsWith(QLatin1Char('\r'))) {
        text.chop(1);
    }
    if (text.startsWith(QLatin1Char('['))) {
        // A damaged key line ends the key before it: its values belong to no key.
        currentKey = text.endsWith(QLatin1Char(']'))
                         ? NormalizedKeyPath(text.mid(1, text.size() - 2))
                         : QString();
        line.header = true;
    } else if (!currentKey.isEmpty()) {
        line.hasValue = ParseValueLine(text, line.value);
    }
    line.key = currentKey;
    return line;
}

RegistryFile RegistryFile::Parse(const QByteArray& content) {
    RegistryFile store;
    QString currentKey;
    qsizetype start = 0;
    while (start < content.size()) {
        const qsizetype end = content.indexOf('\n', start);
        const qsizetype next = end < 0 ? content.size() : end + 1;
        store.m_lines.append(ReadLine(content.mid(start, next - start), currentKey));
        start = next;
    }
    return store;
}

QByteArray RegistryFile::Serialize() const {
    QByteArray content;
    for (const Line& line : m_lines) {
        content += line.bytes;
    }
    if (m_utf16) {
        const QString text = DecodeBytes(content);
        return QByteArray("\xff\xfe", 2) +
               QByteArray(reinterpret_cast<const char*>(text.utf16()), text.size() * 2);
    }
    return content;
}

bool RegistryFile::Save(const QString& fileName) const {
    if (!m_readable || !QDir().mkpath(QFileInfo(fileName).absolutePath())) {
        return false;
    }
    // A new file of the owner's only, beside the old one, then renamed over it: a crash leaves
    // either file whole, and no one else's link at the temporary name is followed.
    QByteArray temporary = QFile::encodeName(fileName) + ".XXXXXX";
    const int fd = ::mkstemp(temporary.data());
    if (fd < 0) {
        return false;
    }
    const bool written = WriteAll(fd, Serialize()) && ::fchmod(fd, S_IRUSR | S_IWUSR) == 0;
    const bool closed = ::close(fd) == 0;
    if (!written || !closed ||
        ::rename(temporary.constData(), QFile::encodeName(fileName).constData()) != 0) {
        ::unlink(temporary.constData());
        return false;
    }
    return true;
}

const RegistryFile::Value* RegistryFile::FindValue(const QString& keyPath,
                                                   const QString& valueName) const {
    const QString path = NormalizedKeyPath(keyPath);
    for (auto line = m_lines.crbegin(); line != m_lines.crend(); ++line) {
        if (line->hasValue && SameName(line->key, path) && SameName(line->value.name, valueName)) {
            return &line->value;
        }
    }
    return nullptr;
}

bool RegistryFile::HasKey(const QString& keyPath) const {
    const QString path = NormalizedKeyPath(keyPath);
    return std::any_of(m_lines.begin(), m_lines.end(),
                       [&](const Line& line) { return line.header && SameName(line.key, path); });
}

QByteArray RegistryFile::NewLineEnd() const {
    for (const Line& line : m_lines) {
        if (line.bytes.endsWith('\n')) {
            return line.bytes.endsWith("\r\n") ? QByteArray("\r\n") : QByteArray("\n");
        }
    }
    return QByteArray("\n");
}

// After the last line that is not blank in the last part of the file that holds the key; -1
// when the key has no line.
int RegistryFile::InsertPosition(const QString& path) const {
    int position = -1;
    bool inKey = false;
    for (int i = 0; i < m_lines.size(); ++i) {
        const Line& line = m_lines[i];
        if (line.header) {
            inKey = SameName(line.key, path);
            if (inKey) {
                position = i + 1;
            }
        } else if (inKey && !DecodeBytes(line.bytes).trimmed().isEmpty()) {
            position = i + 1;
        }
    }
    return position;
}

bool RegistryFile::SetValue(const QString& keyPath, const Value& value) {
    const QString path = NormalizedKeyPath(keyPath);
    const QByteArray end = NewLineEnd();
    for (auto line = m_lines.rbegin(); line != m_lines.rend(); ++line) {
        if (line->hasValue && SameName(line->key, path) && SameName(line->value.name, value.name)) {
            if (SameValue(line->value, value)) {
                return false;
            }
            const QString spelling = line->value.name;
            line->value = value;
            line->value.name = spelling;
            const QByteArray lineEnd = line->bytes.endsWith("\r\n") ? QByteArray("\r\n")
                                       : line->bytes.endsWith('\n') ? QByteArray("\n")
                                                                    : QByteArray();
            line->bytes = EncodeText(ValueLineText(line->value)) + lineEnd;
            return true;
        }
    }
    Line added;
    added.bytes = EncodeText(ValueLineText(value)) + end;
    added.key = path;
    added.hasValue = true;
    added.value = value;
    int position = InsertPosition(path);
    if (position < 0) {
        // A new key at the end, after a blank line (the header first in a new file).
        if (m_lines.isEmpty()) {
            m_lines.append(Line{Header + end, QString(), false, false, {}});
        }
        m_lines.append(Line{end, QString(), false, false, {}});
        m_lines.append(Line{
            EncodeText(QLatin1Char('[') + path + QLatin1Char(']')) + end, path, true, false, {}});
        position = m_lines.size();
    }
    if (position > 0 && !m_lines[position - 1].bytes.endsWith('\n')) {
        m_lines[position - 1].bytes += end;  // the last line had no line end
    }
    m_lines.insert(position, added);
    return true;
}

QString RegistryFile::DecodeBytes(const QByteArray& bytes) {
    QString text;
    text.reserve(bytes.size());
    const auto* data = reinterpret_cast<const unsigned char*>(bytes.constData());
    const qsizetype n = bytes.size();
    for (qsizetype i = 0; i < n;) {
        const unsigned char lead = data[i];
        int length = 0;
        char32_t code = 0;
        char32_t minimum = 0;
        if (lead < 0x80) {
            length = 1;
            code = lead;
        } else if (lead >= 0xc2 && lead <= 0xdf) {
            length = 2;
            code = lead & 0x1f;
            minimum = 0x80;
        } else if (lead >= 0xe0 && lead <= 0xef) {
            length = 3;
            code = lead & 0x0f;
            minimum = 0x800;
        } else if (lead >= 0xf0 && lead <= 0xf4) {
            length = 4;
            code = lead & 0x07;
            minimum = 0x10000;
        }
        bool valid = length > 0 && i + length <= n;
        for (int k = 1; valid && k < length; ++k) {
            valid = (data[i + k] & 0xc0) == 0x80;
            code = (code << 6) | (data[i + k] & 0x3f);
        }
        valid = valid && code >= minimum && code <= 0x10ffff && !(code >= 0xd800 && code <= 0xdfff);
        if (!valid) {
            text += QChar(char16_t(0xdc00 + lead));
            ++i;
            continue;
        }
        if (code >= 0x10000) {
            text += QChar(QChar::highSurrogate(code));
            text += QChar(QChar::lowSurrogate(code));
        } else {
            text += QChar(char16_t(code));
        }
        i += length;
    }
    return text;
}

QByteArray RegistryFile::EncodeText(const QString& text) {
    QByteArray bytes;
    bytes.reserve(text.size());
    qsizetype runStart = 0;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t c = text[i].unicode();
        const bool pairedLow = i > 0 && QChar::isHighSurrogate(text[i - 1].unicode());
        if (c >= 0xdc80 && c <= 0xdcff && !pairedLow) {
            bytes += text.mid(runStart, i - runStart).toUtf8();
            bytes += char(c - 0xdc00);
            runStart = i + 1;
        }
    }
    bytes += text.mid(runStart).toUtf8();
    return bytes;
}
