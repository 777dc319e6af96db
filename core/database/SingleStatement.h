#pragma once

#include <QString>

// Every SQL text the program runs is one statement. Texts are built by concatenation with what
// the user typed, so a typed name could close the statement and add another one; the database
// server would run both. Before a text goes to the database it is read the way the database's
// own lexer reads it (string literals, quoted identifiers, comments), and a ";" outside them
// that is followed by anything but blanks and comments marks a second statement.
namespace SingleStatement {

enum class Lexer {
    Sqlite,      // '...' with '' inside; "..." `...` [...] identifiers; -- and /* */ comments
    PostgreSql,  // '...'; E'...' with backslash escapes; $tag$...$tag$; "..."; nested /* */
};

// True when the text holds at most one statement (a final ";" and blanks or comments after it
// are allowed). For PostgreSQL the text is also read as a server without standard conforming
// strings would read it (backslash escapes in every '...'); both readings must agree.
bool IsSingle(const QString& sql, Lexer lexer);

// The description of the error raised for a text that holds more than one statement.
QString RefusedDescription();

}  // namespace SingleStatement
