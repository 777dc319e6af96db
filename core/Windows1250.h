#pragma once

#include <QByteArray>
#include <QString>

// The single-byte code page of the display file.
namespace Windows1250 {

// The text in windows-1250; a character the code page cannot hold becomes "?".
QByteArray Encode(const QString& text);

}  // namespace Windows1250
