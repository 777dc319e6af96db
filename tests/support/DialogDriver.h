#pragma once

#include <QString>
#include <QStringList>
#include <functional>
#include <memory>

class QDialog;
class QPushButton;
class QWidget;
struct sqlite3;

// Driving the program's modal dialogs from tests, and reading what the program left behind.
namespace DialogDriver {

// exec()'s result when the test had to close a dialog itself.
constexpr int ClosedByTest = 99;

// Runs `drive` on the modal dialog with the object name `name` as soon as it is the active modal
// window; a dialog that `drive` leaves open is closed from code afterwards. The flag returned
// tells whether `drive` ran.
std::shared_ptr<bool> WhenShown(const QString& name, std::function<void(QDialog*)> drive);
// Drivers queued by an earlier test never act on a later test's dialogs (call in init/cleanup).
void ForgetPendingDrivers();

// A named control of a window; a missing control ends the test run.
template <class T>
T* Control(QWidget* window, const char* name);
QPushButton* Button(QWidget* window, const char* name);

// The entries of "errors.log" in the current folder (texts without their header lines).
QStringList LoggedErrors();

// The statements that the program runs on the shared file database, as the program wrote them.
class SqliteStatements {
public:
    SqliteStatements();
    ~SqliteStatements();
    SqliteStatements(const SqliteStatements&) = delete;
    SqliteStatements& operator=(const SqliteStatements&) = delete;

    bool Active() const { return m_db != nullptr; }
    // Every statement run so far.
    const QStringList& All() const { return m_statements; }
    // The SELECT statements run so far; forgets them.
    QStringList TakeSelects();

private:
    static int Trace(unsigned, void* context, void*, void* text);

    sqlite3* m_db = nullptr;
    QStringList m_statements;
};

// The file database library's own log (a statement that cannot be prepared is logged with its
// text); switched on before the library starts.
bool StartSqliteLog();
QStringList& SqliteLog();

}  // namespace DialogDriver

#include <QWidget>

template <class T>
T* DialogDriver::Control(QWidget* window, const char* name) {
    T* control = window->findChild<T*>(QString::fromLatin1(name));
    if (!control) {
        qFatal("no control %s", name);
    }
    return control;
}
