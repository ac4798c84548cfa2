#include "reader/message_fields.h"

#include "platform/background.h"
#include "platform/text.h"
#include "windows/frmFrom.h"

#include <QLineEdit>

QString oneLine(std::string_view value, std::size_t mostBytes) {
    return platform::withControlsVisible(platform::startFromBytes(value, mostBytes));
}

void showFields(const email::MessageSummary& message, frmFrom& window) {
    constexpr std::size_t titleBytes = 300;
    window.setWindowTitle(QStringLiteral("Message from: ") + oneLine(message.From, titleBytes));
    window.txtFrom->setText(oneLine(message.From));
    window.txtSubject->setText(oneLine(message.Subject));
    for (QLineEdit* field : {window.txtFrom, window.txtSubject}) {
        // The field shows the start of a long value.
        field->setCursorPosition(0);
    }
}

void readWhereItBelongs(std::size_t bodyBytes, const std::function<void()>& read) {
    constexpr std::size_t longBody = 1U << 20U;
    if (bodyBytes < longBody) {
        read();
    } else {
        platform::runInBackground(read);
    }
}
