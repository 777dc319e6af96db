#include "tests/support/MessageRecorder.h"

#include <QStringList>

#include "core/ui/UiServices.h"

MessageRecorder::MessageRecorder() {
    UiServices::SetMsgBoxHandler([this](const QString& text, int style, const QString& title) {
        m_messages << Message{text, style, title};
        if (!m_answers.isEmpty()) {
            return m_answers.takeFirst();
        }
        return (style & 0x7) == UiServices::vbYesNo ? int(UiServices::vbYes)
                                                    : int(UiServices::vbOK);
    });
}

MessageRecorder::~MessageRecorder() { UiServices::SetMsgBoxHandler({}); }

QStringList MessageRecorder::Texts() const {
    QStringList texts;
    for (const Message& message : m_messages) {
        texts << message.text;
    }
    return texts;
}
