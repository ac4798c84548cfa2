#include "components/controls/line_box.h"
#include "components/controls/message_box.h"
#include "email/mailbox.h"
#include "email/shared_settings.h"
#include "email/titles.h"
#include "message/answers.h"
#include "platform/text.h"
#include "reader/print_message.h"
#include "windows/frmFrom.h"
#include "windows/frmSend.h"
#include "windows/windows.h"

#include <QLineEdit>
#include <QPushButton>

#include <string>
#include <utility>

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

OpenedMessage openedIn(const frmFrom& window) {
    return {email::mailbox.Messages.at(window.OpenMessage), window.Read.answerTo, window.Answered,
            [&window] { return window.tMessage->bytes(); }};
}

/**
 * Returns the sender's address. When it is too long for the field, shows a box and returns an empty text: a
 * cut address would be a different one.
 */
QString addressToAnswer(const std::string& address) {
    constexpr auto most = static_cast<std::size_t>(controls::LineBox::kMostCharacters);
    if (address.size() <= most) {
        return onOneLine(platform::fromBytes(address));
    }
    controls::showMessage(
        QStringLiteral("The sender's address has %1 bytes, which is too long. Please type the address.")
            .arg(address.size()),
        email::programTitle());
    return {};
}

QString subjectOf(const Answer& answer) {
    return answer.prefix + onOneLine(platform::startFromBytes(answer.subject, kSubjectBytes));
}
} // namespace

void frmFrom::Form_Load() {
    takeProgramTitle();
    CmdPrint->setEnabled(email::isYes(email::settings.AllowPrinting));
}

void frmFrom::cmdReply_Click() {
    frmSend& compose = composeWindow();
    if (compose.showIfInUse()) {
        return;
    }
    if (compose.goOnWithKeptLetter()) {
        compose.openFrom(*this, *compose.tMessage);
        return;
    }
    const Answer answer = answerTo(openedIn(*this));
    compose.tTo->setText(addressToAnswer(answer.to));
    compose.tSubject->setText(subjectOf(answer));
    compose.origin = answer.origin;
    compose.openFrom(*this, *compose.tMessage);
}

void frmFrom::cmdFwrd_Click() {
    frmSend& compose = composeWindow();
    if (compose.showIfInUse()) {
        return;
    }
    if (compose.goOnWithKeptLetter()) {
        compose.openFrom(*this, *compose.tMessage);
        return;
    }
    const bool withOriginal = email::isYes(email::settings.SendAttachments);
    Answer answer = handingOn(openedIn(*this), withOriginal);
    compose.tSubject->setText(subjectOf(answer));
    compose.tMessage->setBytes(std::move(answer.text));
    compose.origin = std::move(answer.origin);
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
    Read = {};
    Answered = {};
    giveControlBack();
}
