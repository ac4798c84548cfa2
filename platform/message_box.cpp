#include "platform/message_box.h"

#include "platform/nested_wait.h"
#include "platform/runtime_error.h"

#include <QApplication>
#include <QMessageBox>

#include <utility>

namespace platform {

namespace {
std::function<MessageAnswer(const MessageBox&)>& messageBoxStandIn() {
    static std::function<MessageAnswer(const MessageBox&)> standIn;
    return standIn;
}

QMessageBox::Icon iconOf(MessageIcon icon) {
    switch (icon) {
    case MessageIcon::Exclamation:
        return QMessageBox::Warning;
    case MessageIcon::Question:
        return QMessageBox::Question;
    case MessageIcon::None:
        break;
    }
    return QMessageBox::NoIcon;
}
} // namespace

MessageAnswer showMessageBox(const MessageBox& box) {
    const NestedWait wait;
    if (const auto& standIn = messageBoxStandIn()) {
        return standIn(box);
    }
    const bool yesNo = box.buttons == MessageButtons::YesNo;
    // A disabled window cannot be the parent: its box would be disabled with it.
    QWidget* active = QApplication::activeWindow();
    QMessageBox dialog(active != nullptr && active->isEnabled() ? active : nullptr);
    dialog.setObjectName(QStringLiteral("messageBox"));
    dialog.setIcon(iconOf(box.icon));
    dialog.setTextFormat(Qt::PlainText);
    dialog.setText(box.text);
    dialog.setWindowTitle(box.title);
    dialog.setStandardButtons(yesNo ? QMessageBox::Yes | QMessageBox::No : QMessageBox::Ok);
    dialog.setEscapeButton(yesNo ? QMessageBox::No : QMessageBox::Ok);
    const int answer = dialog.exec();
    if (!yesNo) {
        return MessageAnswer::Ok;
    }
    return answer == QMessageBox::Yes ? MessageAnswer::Yes : MessageAnswer::No;
}

void showMessage(const QString& text, const QString& title) {
    showMessageBox({text, title, MessageIcon::None, MessageButtons::Ok});
}

void reportError(int errorNumber) {
    showMessageBox({QStringLiteral("Run-time error %1\n\n%2")
                        .arg(errorNumber)
                        .arg(QString::fromStdString(meaningOf(errorNumber))),
                    QStringLiteral("Brindlewake"), MessageIcon::Exclamation, MessageButtons::Ok});
}

void replaceMessageBox(std::function<MessageAnswer(const MessageBox&)> standIn) {
    messageBoxStandIn() = std::move(standIn);
}

} // namespace platform
