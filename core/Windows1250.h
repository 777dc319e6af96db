#pragma once

#include <QByteArray>
#include <QString>

// The single-byte code page of the display file.
namespace Windows1250 {

// The text in windows-1250; a character the code page cannot hold becomes "?".
QByteArray Encode(const QString& text);
// The text of windows-1250 bytes (a byte the code page leaves undefined stands for itself).
QString Decode(const QByteArray& bytes);

}  // namespace Windows1250
