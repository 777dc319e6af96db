#include "tools/ToolPasswords.h"

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include <cstring>
#include <string>

namespace ToolPasswords {
namespace {

void Mask(char* from, const char* to) {
    for (char* c = from; c < to; ++c) {
        *c = 'x';
    }
}

// The password between "user:" and "@" in the authority part, and every password=... value.
void MaskUri(char* uri) {
    char* authority = std::strstr(uri, "://") + 3;
    char* end = authority + std::strcspn(authority, "/?");
    char* at = static_cast<char*>(std::memchr(authority, '@', end - authority));
    char* colon = at ? static_cast<char*>(std::memchr(authority, ':', at - authority)) : nullptr;
    if (colon) {
        Mask(colon + 1, at);
    }
    for (char* parameter = std::strstr(end, "password="); parameter;
         parameter = std::strstr(parameter + 1, "password=")) {
        char* value = parameter + std::strlen("password=");
        Mask(value, value + std::strcspn(value, "&"));
    }
}

bool IsUri(const char* argument) {
    return std::strncmp(argument, "postgresql://", 13) == 0 ||
           std::strncmp(argument, "postgres://", 11) == 0;
}

void Write(int fd, const std::string& text) {
    size_t written = 0;
    while (written < text.size()) {
        const ssize_t n = ::write(fd, text.data() + written, text.size() - written);
        if (n <= 0) {
            return;
        }
        written += static_cast<size_t>(n);
    }
}

}  // namespace

void HideFromProcessList(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        if (IsUri(argv[i])) {
            MaskUri(argv[i]);
        } else if (std::strcmp(argv[i], "--password") == 0 && i + 1 < argc) {
            Mask(argv[i + 1], argv[i + 1] + std::strlen(argv[i + 1]));
        }
    }
}

std::optional<QString> AskOnTerminal(const QString& who) {
    const int tty = ::open("/dev/tty", O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (tty < 0) {
        return std::nullopt;
    }
    Write(tty, QStringLiteral("Geslo za %1: ").arg(who).toStdString());
    termios shown{};
    const bool terminal = ::tcgetattr(tty, &shown) == 0;
    if (terminal) {
        termios hidden = shown;
        hidden.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        ::tcsetattr(tty, TCSANOW, &hidden);
    }
    std::string line;
    char c = 0;
    while (::read(tty, &c, 1) == 1 && c != '\n' && line.size() < 4096) {
        line += c;
    }
    if (terminal) {
        ::tcsetattr(tty, TCSANOW, &shown);
    }
    Write(tty, "\n");
    ::close(tty);
    if (!line.empty() && line.back() == '\r') {
        line.pop_back();
    }
    return QString::fromStdString(line);
}

}  // namespace ToolPasswords
