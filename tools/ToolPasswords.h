#pragma once

#include <QString>
#include <optional>

// Passwords of database servers in morvena-tool: out of the process list, and asked for on the
// terminal when libpq's own places have none.
namespace ToolPasswords {

// Overwrites with "x" every password in the command line (the password of a postgresql:// URI,
// its password= parameter, the value of --password), so that other users no longer read it in
// the process list. Call after the arguments were read.
void HideFromProcessList(int argc, char** argv);

// Asks for the password of `who` on the controlling terminal, without showing what is typed;
// std::nullopt when the process has no terminal.
std::optional<QString> AskOnTerminal(const QString& who);

}  // namespace ToolPasswords
