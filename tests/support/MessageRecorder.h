#pragma once

#include <QList>
#include <QString>

// Replaces the program's message boxes while it lives: records every message and answers from
// a script (vbYes for a question and vbOK otherwise when the script is empty).
class MessageRecorder {
public:
    struct Message {
        QString text;
        int style;
        QString title;
    };

    MessageRecorder();
    ~MessageRecorder();
    MessageRecorder(const MessageRecorder&) = delete;
    MessageRecorder& operator=(const MessageRecorder&) = delete;

    // The answer to give to the next message box.
    void Answer(int answer) { m_answers << answer; }
    const QList<Message>& Messages() const { return m_messages; }
    QStringList Texts() const;
    void Clear() { m_messages.clear(); }

private:
    QList<Message> m_messages;
    QList<int> m_answers;
};
