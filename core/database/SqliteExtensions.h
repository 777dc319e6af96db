#pragma once

struct sqlite3;

// Registers on a file database connection what makes it compare names as the program expects:
// the NOCASE collation of the name columns becomes Slovenian and case-blind for every letter,
// and LIKE ignores the case of every letter. A file opened without them (the plain sqlite3
// shell) still reads, with the built-in ASCII-only rules.
namespace SqliteExtensions {
void Register(sqlite3* db);
}  // namespace SqliteExtensions
