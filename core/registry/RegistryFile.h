#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QtGlobal>

// One root of the settings store: a text file in the registry-export style.
//
//   Windows Registry Editor Version 5.00
//
//   [Software\Orlessa\Morvena]
//   "DatabaseName"="/home/cook/Recepti.db"
//   "DatabaseType"=dword:00000001
//
// Text values that hold control characters (an empty value is stored as one NUL) are written
// as hex(1): followed by their UTF-16LE bytes. Key and value names match without regard to case;
// of two lines for the same value the later one counts.
//
// The file belongs to the user: it is kept as its lines, byte for byte. Setting a value changes
// only the line of that value (or adds one at the end of its key); comments, blank lines,
// unknown keys, lines that cannot be read and their line ends stay as they are. Bytes that are
// not UTF-8 are read into texts as the code points U+DC80 to U+DCFF and written back as the same
// bytes, so a value in another code page survives being read and stored again.
class RegistryFile {
public:
    enum ValueType { RegSz = 1, RegDword = 4 };

    struct Value {
        QString name;
        ValueType type = RegSz;
        QString text;
        quint32 number = 0;
    };

    // The largest file that is read.
    static constexpr qint64 MostBytes = 1 << 20;

    // Reads a file: UTF-8 (or another code page, see above), or UTF-16LE after a byte-order
    // mark as Regedit exports it (written back so). A missing file is an empty store. A file
    // that exists but cannot be read (no right, not a plain file, over MostBytes) gives a store
    // that is not Readable(): it never replaces the file.
    static RegistryFile Load(const QString& fileName);
    bool Readable() const { return m_readable; }
    // Replaces the file atomically by a new one beside it (owner-only rights, created
    // exclusively, renamed into place). Returns false on failure and for an unreadable store.
    bool Save(const QString& fileName) const;

    static RegistryFile Parse(const QByteArray& content);
    QByteArray Serialize() const;

    const Value* FindValue(const QString& keyPath, const QString& valueName) const;
    bool HasKey(const QString& keyPath) const;
    // Sets the value (keeping the spelling of an existing name), creating the key when missing.
    // Returns false when the value was already stored so: nothing changed.
    bool SetValue(const QString& keyPath, const Value& value);

    // Texts to and from the file's bytes: UTF-8, with every byte that is not part of valid
    // UTF-8 carried as U+DC80 + (byte - 0x80).
    static QString DecodeBytes(const QByteArray& bytes);
    static QByteArray EncodeText(const QString& text);

private:
    struct Line {
        QByteArray bytes;  // with its line end
        QString key;       // the key it belongs to (normalised); empty outside any key
        bool header = false;
        bool hasValue = false;
        Value value;
    };
    static Line ReadLine(const QByteArray& bytes, QString& currentKey);
    QByteArray NewLineEnd() const;
    int InsertPosition(const QString& path) const;

    QList<Line> m_lines;
    bool m_readable = true;
    bool m_utf16 = false;
};
