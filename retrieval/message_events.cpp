#include "email/state.h"
#include "windows/frmLogin.h"
#include "windows/frmMain.h"
#include "windows/windows.h"

void frmLogin::POP1_Header(const std::string& Field, const std::string& Value) {
    email::state.headerEvents.add(email::state.Messages.at(email::state.CurrentMessage), Field, Value);
}

void frmLogin::POP1_Transfer(std::int32_t BytesTransferred, const std::string& Text) {
    email::state.Messages.at(email::state.CurrentMessage).BodyText.append(Text).append("\r\n");
    if (email::state.Retrieving) {
        mainWindow().barProgress->setProgress(BytesTransferred);
    }
}

void frmLogin::POP1_PITrail(POPLib::Direction /*Direction*/, const std::string& /*Message*/) {
    // The dialogue is neither logged nor shown.
}
