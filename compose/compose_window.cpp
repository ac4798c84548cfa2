#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include "email/state.h"
#include "windows/frmFrom.h"
#include "windows/frmMain.h"
#include "windows/frmSend.h"
#include "windows/windows.h"

void frmMain::cmdCmpose_Click() {
    setEnabled(false);
    frmSend& compose = composeWindow();
    compose.bringUp();
    compose.tTo->setFocus();
    if (email::isYes(email::settings.SaveCopy)) {
        // The copy that is kept is one sent to the sender's own mailbox.
        const QString sender = email::state.UserName + email::derived.AtDomain;
        const QString copies = compose.tCc->text();
        compose.tCc->setText(copies.isEmpty() ? sender : copies + QStringLiteral(", ") + sender);
    }
}

void frmSend::Form_Load() {
    lblSending->setText(QString());
    const bool findAddress = email::isYes(email::settings.ShowDatabase);
    cmdSendto->setVisible(findAddress);
    cmdCCto->setVisible(findAddress);
    const bool attach = email::isYes(email::settings.SendAttachments);
    cmdAttach->setEnabled(attach);
    lblAttachment->setEnabled(attach);
    txtAttachment->setEnabled(attach);
}

void frmSend::cmdCancel_Click() {
    unload(*this);
}

void frmSend::Form_Unload() {
    tTo->clear();
    tCc->clear();
    tSubject->clear();
    // Reply and Forward disable the message window, so an enabled one means that the main window asked.
    Form& opener = messageWindow().isEnabled() ? static_cast<Form&>(mainWindow()) : messageWindow();
    opener.setEnabled(true);
    opener.bringUp();
}
