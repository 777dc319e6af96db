#pragma once

#include <QString>
#include <exception>
#include <string>

// An error on its way from the place that failed up to the event handler that started the work.
// Each procedure on the way wraps it with its own source, so the handler sees the whole chain.
class AppError : public std::exception {
public:
    // The number with which procedures pass errors on (0x80040000).
    static constexpr long PassedOn = -2147221504;

    AppError(long number, QString source, QString description);

    long Number() const { return m_number; }
    const QString& Source() const { return m_source; }
    const QString& Description() const { return m_description; }
    const char* what() const noexcept override { return m_what.c_str(); }

private:
    long m_number;
    QString m_source;
    QString m_description;
    std::string m_what;
};

namespace ErrorPath {

// The one message the user sees when something unexpected happens.
extern const QString UnexpectedErrorMessage;

// Source of errors that the program's own code raises (a NULL where text is required, an
// overflow, a missing record): the program's title.
QString RuntimeSource();

// Raises an error of the program's own code.
[[noreturn]] void Raise(long number, const QString& description);

// The exception being handled, as an AppError (any other exception becomes one with the
// program's title as source).
AppError Current();

// Inside a catch block: raises the current error on to the caller as raised by `source`,
// with the description "<caught source>-><caught description>".
[[noreturn]] void RethrowAs(const QString& source);

// Inside a catch block of an event handler: appends "<source><caught source>-><caught
// description>" to the error log and shows the unexpected-error message.
void Report(const QString& source);

// A procedure that passes errors on: runs `body`; any error leaves it as raised by `source`.
template <class F>
auto PassOn(const char* source, F&& body) -> decltype(body()) {
    try {
        return body();
    } catch (...) {
        RethrowAs(QString::fromUtf8(source));
    }
}

// An event handler: runs `body`; an error is logged and reported with `source` (which ends in
// "->"), and the program goes on. Returns false when an error was handled.
template <class F>
bool Handle(const char* source, F&& body) {
    try {
        body();
        return true;
    } catch (...) {
        Report(QString::fromUtf8(source));
        return false;
    }
}

}  // namespace ErrorPath
