#pragma once

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
// as hex(1): followed by their UTF-16LE bytes. Key and value names match without regard to case.
class RegistryFile {
public:
    enum ValueType { RegSz = 1, RegDword = 4 };

    struct Value {
        QString name;
        ValueType type = RegSz;
        QString text;
        quint32 number = 0;
    };
    struct Key {
        QString path;
        QList<Value> values;
    };

    // Reads a file; a missing or unreadable file is an empty store, unreadable lines are skipped.
    static RegistryFile Load(const QString& fileName);
    // Replaces the file atomically, readable by its owner only. Returns false on failure.
    bool Save(const QString& fileName) const;

    static RegistryFile Parse(const QByteArray& content);
    QByteArray Serialize() const;

    const Value* FindValue(const QString& keyPath, const QString& valueName) const;
    bool HasKey(const QString& keyPath) const;
    // Creates the key when missing and sets the value (keeping the spelling of an existing name).
    void SetValue(const QString& keyPath, const Value& value);

private:
    Key& EnsureKey(const QString& keyPath);

    QList<Key> m_keys;
};
