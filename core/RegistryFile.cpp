#include "core/RegistryFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace {

const QByteArray Header = "Windows Registry Editor Version 5.00";

QString NormalizedKeyPath(QString path) {
    path.replace(QStringLiteral("\\\\"), QStringLiteral("\\"));
    while (path.endsWith(QLatin1Char('\\'))) {
        path.chop(1);
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

}  // namespace

RegistryFile RegistryFile::Load(const QString& fileName) {
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    return Parse(file.readAll());
}

RegistryFile RegistryFile::Parse(const QByteArray& content) {
    RegistryFile store;
    Key* current = nullptr;
    const QStringList lines = QString::fromUtf8(content).split(QLatin1Char('\n'));
    for (QString line : lines) {
        if (line.endsWith(QLatin1Char('\r'))) {
            line.chop(1);
        }
        if (line.startsWith(QLatin1Char('[')) && line.endsWith(QLatin1Char(']'))) {
            current = &store.EnsureKey(line.mid(1, line.size() - 2));
            continue;
        }
        if (line.startsWith(QLatin1Char('['))) {
            current = nullptr;  // a damaged key line: its values belong to no key
            continue;
        }
        Value value;
        if (current && ParseValueLine(line, value)) {
            store.SetValue(current->path, value);
        }
    }
    return store;
}

QByteArray RegistryFile::Serialize() const {
    QString text = QString::fromLatin1(Header) + QStringLiteral("\n");
    for (const Key& key : m_keys) {
        text += QStringLiteral("\n[") + key.path + QStringLiteral("]\n");
        for (const Value& value : key.values) {
            text += Escaped(value.name) + QLatin1Char('=');
            if (value.type == RegDword) {
                text += QStringLiteral("dword:%1").arg(value.number, 8, 16, QLatin1Char('0'));
            } else if (NeedsHex(value.text)) {
                text += HexText(value.text);
            } else {
                text += Escaped(value.text);
            }
            text += QLatin1Char('\n');
        }
    }
    return text.toUtf8();
}

bool RegistryFile::Save(const QString& fileName) const {
    if (!QDir().mkpath(QFileInfo(fileName).absolutePath())) {
        return false;
    }
    QSaveFile file(fileName);
    if (!file.open(QIODevice::WriteOnly)) {
        return false;
    }
    file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    file.write(Serialize());
    return file.commit();
}

const RegistryFile::Value* RegistryFile::FindValue(const QString& keyPath,
                                                   const QString& valueName) const {
    const QString path = NormalizedKeyPath(keyPath);
    for (const Key& key : m_keys) {
        if (!SameName(key.path, path)) {
            continue;
        }
        for (const Value& value : key.values) {
            if (SameName(value.name, valueName)) {
                return &value;
            }
        }
    }
    return nullptr;
}

bool RegistryFile::HasKey(const QString& keyPath) const {
    const QString path = NormalizedKeyPath(keyPath);
    return std::any_of(m_keys.begin(), m_keys.end(),
                       [&](const Key& key) { return SameName(key.path, path); });
}

RegistryFile::Key& RegistryFile::EnsureKey(const QString& keyPath) {
    const QString path = NormalizedKeyPath(keyPath);
    for (Key& key : m_keys) {
        if (SameName(key.path, path)) {
            return key;
        }
    }
    m_keys.append(Key{path, {}});
    return m_keys.last();
}

void RegistryFile::SetValue(const QString& keyPath, const Value& value) {
    Key& key = EnsureKey(keyPath);
    for (Value& existing : key.values) {
        if (SameName(existing.name, value.name)) {
            const QString spelling = existing.name;
            existing = value;
            existing.name = spelling;
            return;
        }
    }
    key.values.append(value);
}
