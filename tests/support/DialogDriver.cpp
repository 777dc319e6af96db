#include "tests/support/DialogDriver.h"

#include <sqlite3.h>

#include <QApplication>
#include <QDeadlineTimer>
#include <QDialog>
#include <QFile>
#include <QPushButton>
#include <QRegularExpression>
#include <QTimer>

#include "core/database/modDatabase.h"

namespace DialogDriver {
namespace {

int g_generation = 0;

void Poll(const QString& name, const std::function<void(QDialog*)>& drive,
          const std::shared_ptr<bool>& ran, int generation, QDeadlineTimer deadline) {
    if (generation != g_generation) {
        return;
    }
    auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
    if (!dialog || dialog->objectName() != name || !dialog->isVisible()) {
        if (!deadline.hasExpired()) {
            QTimer::singleShot(10, [=] { Poll(name, drive, ran, generation, deadline); });
        }
        return;
    }
    *ran = true;
    drive(dialog);
    if (dialog->isVisible()) {
        dialog->done(ClosedByTest);
    }
}

void LogToList(void*, int, const char* message) { SqliteLog() << QString::fromUtf8(message); }

}  // namespace

std::shared_ptr<bool> WhenShown(const QString& name, std::function<void(QDialog*)> drive) {
    auto ran = std::make_shared<bool>(false);
    const int generation = g_generation;
    QTimer::singleShot(0, [=] { Poll(name, drive, ran, generation, QDeadlineTimer(10000)); });
    return ran;
}

void ForgetPendingDrivers() { ++g_generation; }

QPushButton* Button(QWidget* window, const char* name) {
    return Control<QPushButton>(window, name);
}

QStringList LoggedErrors() {
    QFile file(QStringLiteral("errors.log"));
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    const QString content = QString::fromUtf8(file.readAll());
    static const QRegularExpression header(
        QStringLiteral("^\\d{4}-\\d{2}-\\d{2} \\d{2}:\\d{2} \\(v\\d+\\.\\d+\\.\\d+\\)\\r\\n\\r\\n"),
        QRegularExpression::MultilineOption);
    QStringList entries;
    for (QString entry : content.split(header, Qt::SkipEmptyParts)) {
        if (entry.endsWith(QStringLiteral("\r\n\r\n"))) {
            entry.chop(4);
        }
        entries << entry;
    }
    return entries;
}

SqliteStatements::SqliteStatements() {
    m_db = modDatabase::Connection->SqliteHandle();
    if (m_db) {
        sqlite3_trace_v2(m_db, SQLITE_TRACE_STMT, &Trace, this);
    }
}

SqliteStatements::~SqliteStatements() {
    if (m_db) {
        sqlite3_trace_v2(m_db, 0, nullptr, nullptr);
    }
}

QStringList SqliteStatements::TakeSelects() {
    const QStringList selects = m_statements.filter(QRegularExpression(QStringLiteral("^SELECT ")));
    m_statements.clear();
    return selects;
}

int SqliteStatements::Trace(unsigned, void* context, void*, void* text) {
    const QString sql = QString::fromUtf8(static_cast<const char*>(text));
    if (!sql.startsWith(QStringLiteral("--"))) {
        static_cast<SqliteStatements*>(context)->m_statements << sql;
    }
    return 0;
}

bool StartSqliteLog() {
    return sqlite3_config(SQLITE_CONFIG_LOG, &LogToList, nullptr) == SQLITE_OK;
}

QStringList& SqliteLog() {
    static QStringList log;
    return log;
}

}  // namespace DialogDriver
