#include "email/mailbox.h"
#include "email/opening.h"
#include "email/protections.h"
#include "message/mail_mode.h"
#include "windows/frmLogin.h"
#include "windows/frmMain.h"
#include "windows/windows.h"

void frmLogin::POP1_Header(const std::string& Field, const std::string& Value) {
    if (mailMode() == MailMode::Standard) {
        StandardHeader.add(Field, Value);
        return;
    }
    email::mailbox.EventReader.add(email::mailbox.Messages.at(email::mailbox.CurrentMessage), Field, Value);
}

void frmLogin::POP1_RawHeader(const std::string& Line) {
    email::mailbox.Messages.at(email::mailbox.CurrentMessage).RawHeader.append(Line).append("\r\n");
}

void frmLogin::POP1_Transfer(std::int32_t BytesTransferred, const std::string& Text) {
    // A standard list needs no body lines, and would keep them for thousands of messages.
    if (mailMode() == MailMode::House || email::opening.Retrieving) {
        email::mailbox.Messages.at(email::mailbox.CurrentMessage).BodyText.append(Text).append("\r\n");
    }
    if (email::opening.Retrieving) {
        mainWindow().barProgress->setProgress(BytesTransferred);
    }
}

void frmLogin::POP1_Protected(const transport::Protection& Protection) {
    email::protections.POPServer = Protection;
}

void frmLogin::POP1_PITrail(poplib::Direction /*Direction*/, const std::string& /*Message*/) {
    // The dialogue is neither logged nor shown.
}
