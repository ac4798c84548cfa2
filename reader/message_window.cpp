#include "email/state.h"
#include "platform/text.h"
#include "reader/forwarded_text.h"
#include "reader/printing.h"
#include "windows/frmFrom.h"
#include "windows/frmMain.h"
#include "windows/frmSend.h"
#include "windows/windows.h"

#include <QLineEdit>
#include <QPushButton>

namespace {
/** A header's value for a field of the compose window: a line end in it would begin a new header line. */
QString onOneLine(const std::string& value) {
    QString text = platform::fromBytes(value);
    for (QChar& letter : text) {
        const bool endsLine = letter == u'\r' || letter == u'\n' || letter == u'\0';
        letter = endsLine ? QChar(u' ') : letter;
    }
    return text;
}

email::MessageSummary& messageIn(const frmFrom& window) {
    return email::state.Messages.at(window.OpenMessage);
}

/** Shows the compose window in front of the message window, which rests until that one is closed. */
void answerIn(frmSend& compose, frmFrom& window, QWidget* field) {
    window.setEnabled(false);
    compose.bringUp();
    field->setFocus();
}
} // namespace

void frmFrom::Form_Load() {
    setWindowTitle(email::settings.Institution + QStringLiteral(" E-Mail"));
    CmdPrint->setEnabled(email::isYes(email::settings.AllowPrinting));
}

void frmFrom::cmdReply_Click() {
    const email::MessageSummary& message = messageIn(*this);
    frmSend& compose = composeWindow();
    if (compose.showIfInUse()) {
        return;
    }
    compose.tTo->setText(onOneLine(message.From));
    compose.tSubject->setText(QStringLiteral("RE: ") + onOneLine(message.Subject));
    answerIn(compose, *this, compose.tMessage);
}

void frmFrom::cmdFwrd_Click() {
    const email::MessageSummary& message = messageIn(*this);
    frmSend& compose = composeWindow();
    if (compose.showIfInUse()) {
        return;
    }
    compose.tSubject->setText(QStringLiteral("Fwd: ") + onOneLine(message.Subject));
    compose.tMessage->setBytes(forwardedText(message));
    answerIn(compose, *this, compose.tTo);
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
    mainWindow().setEnabled(true);
    mainWindow().bringUp();
}
