#pragma once

class QWidget;

// The cook's collection from the Windows program, met where the database setting names an
// Access file: the program offers to convert it into a collection of its own.
namespace WindowsCollection {

enum class Outcome {
    NotAccess,  // the setting names no Access file
    Declined,   // the cook answered No, or stopped the conversion
    Failed,     // the conversion failed; the cook has been told why
    Converted,  // the new collection is the program's database and its connection is open
};

// When the database setting names an Access file: asks whether to convert it; on Yes converts
// it, with a progress dialog, into a new file (AccessConversion::NewFileFor), makes that file
// the database setting (stored), and opens the connection to it.
Outcome Offer(QWidget* parent);

}  // namespace WindowsCollection
