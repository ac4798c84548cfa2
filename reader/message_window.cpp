#include "components/controls/line_box.h"
#include "components/controls/message_box.h"
#include "email/mailbox.h"
#include "email/shared_settings.h"
#include "email/titles.h"
#include "message/forwarded_text.h"
#include "platform/text.h"
#include "reader/print_message.h"
#include "windows/frmFrom.h"
#include "windows/frmSend.h"
#include "windows/windows.h"

#include <QLineEdit>
#include <QPushButton>

namespace {
/** Bytes of the subject that a reply or a forwarded message takes over. A longer one is cut and marked. */
constexpr std::size_t kSubjectBytes = 10'000;

/** Returns the text for a one-line field. A line end in it would begin a new header field. */
QString onOneLine(QString text) {
    for (QChar& letter : text) {
        const bool endsLine = letter == u'\r' || letter == u'\n' || letter == u'\0';
        letter = endsLine ? QChar(u' ') : letter;
    }
    return text;
}

email::MessageSummary& messageIn(const frmFrom& window) {
    return email::mailbox.Messages.at(window.OpenMessage);
}

/**
 * Returns the sender's address. When it is too long for the field, shows a box and returns an empty text: a
 * cut address would be a different one.
 */
QString addressToAnswer(const email::MessageSummary& message) {
    constexpr auto most = static_cast<std::size_t>(controls::LineBox::kMostCharacters);
    if (message.From.size() <= most) {
        return onOneLine(platform::fromBytes(message.From));
    }
    controls::showMessage(
        QStringLiteral("The sender's address has %1 bytes, which is too long. Please type the address.")
            .arg(message.From.size()),
        email::programTitle());
    return {};
}

} // namespace

void frmFrom::Form_Load() {
    takeProgramTitle();
    CmdPrint->setEnabled(email::isYes(email::settings.AllowPrinting));
}

void frmFrom::cmdReply_Click() {
    const email::MessageSummary& message = messageIn(*this);
    frmSend& compose = composeWindow();
    if (compose.showIfInUse()) {
        return;
    }
    if (compose.goOnWithKeptLetter()) {
        compose.openFrom(*this, *compose.tMessage);
        return;
    }
    compose.tTo->setText(addressToAnswer(message));
    compose.tSubject->setText(QStringLiteral("RE: ") +
                              onOneLine(platform::startFromBytes(message.Subject, kSubjectBytes)));
    compose.openFrom(*this, *compose.tMessage);
}

void frmFrom::cmdFwrd_Click() {
    const email::MessageSummary& message = messageIn(*this);
    frmSend& compose = composeWindow();
    if (compose.showIfInUse()) {
        return;
    }
    if (compose.goOnWithKeptLetter()) {
        compose.openFrom(*this, *compose.tMessage);
        return;
    }
    compose.tSubject->setText(QStringLiteral("Fwd: ") +
                              onOneLine(platform::startFromBytes(message.Subject, kSubjectBytes)));
    compose.tMessage->setBytes(forwardedText(message));
    compose.openFrom(*this, *compose.tTo);
}

void frmFrom::CmdPrint_Click() {
    const WhileDisabled resting(*this);
    const WhileHourglass waiting(*this);
    printMessageText(tMessage->shownText());
}

void frmFrom::cmdDone_Click() {
    unload(*this);
}

void frmFrom::Form_Unload() {
    tMessage->setBytes({});
    giveControlBack();
}
