#include "components/controls/message_box.h"
#include "email/credentials.h"
#include "email/shared_settings.h"
#include "email/titles.h"
#include "message/writer_in_use.h"
#include "platform/drives.h"
#include "platform/runtime_error.h"
#include "windows/frmMain.h"
#include "windows/frmSend.h"
#include "windows/windows.h"
#include "windows/wiring.h"

#include <QCloseEvent>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace {
/**
 * Returns the folder in which the dialog for attachments opens: that of the last attached file, or else C:\;
 * empty when neither can be opened.
 */
QString folderToAttachFrom() {
    for (const QString& folder : {attachFolder(), QStringLiteral("C:\\")}) {
        bool isThere = false;
        const int error = platform::errorNumberOf(
            [&] { isThere = !folder.isEmpty() && QFileInfo(platform::nativePath(folder)).isDir(); });
        if (error == 0 && isThere) {
            return folder;
        }
    }
    return {};
}
} // namespace

void frmMain::cmdCmpose_Click() {
    frmSend& compose = composeWindow();
    if (compose.showIfInUse()) {
        return;
    }
    const bool goesOn = compose.goOnWithKeptLetter();
    compose.openFrom(*this, *compose.tTo);
    if (!goesOn && email::isYes(email::settings.SaveCopy)) {
        // A copy is saved by sending it to the sender's own mailbox.
        const QString sender = email::credentials.UserName + email::derived.AtDomain;
        const QString copies = compose.tCc->text();
        compose.tCc->setText(copies.isEmpty() ? sender : copies + QStringLiteral(", ") + sender);
    }
}

void frmSend::Form_Load() {
    takeProgramTitle();
    lblSending->setText(QString());
    showFindAddress(email::isYes(email::settings.ShowDatabase));
    const bool attach = email::isYes(email::settings.SendAttachments);
    cmdAttach->setEnabled(attach);
    lblAttachment->setEnabled(attach);
    txtAttachment->setEnabled(attach);
    tMessage->setEncoder([](const QString& typed) { return writerInUse().bytesOf(typed); });
}

void frmSend::openFrom(Form& opener, QWidget& field) {
    takeControlFrom(opener);
    bringUp();
    field.setFocus();
}

bool frmSend::showIfInUse() {
    const bool shown = sending_ || isVisible();
    if (shown) {
        bringUp();
    }
    return shown || offering_;
}

void frmSend::cmdCancel_Click() {
    unload(*this);
}

void frmSend::cmdAttach_Click() {
    dlgAttach.setFilter(QStringLiteral("All Files *.* | *.*"));
    dlgAttach.setInitDir(folderToAttachFrom());
    const int error = platform::errorNumberOf([this] { dlgAttach.ShowOpen(this); });
    if (!dlgAttach.isNameable() && error == platform::errors::PathFileAccess) {
        controls::showMessage(
            QStringLiteral("This file cannot be attached: its name, or that of a folder it lies in, has a "
                           "backslash (\\) in it. Please copy the file to another folder or name and attach "
                           "the copy."),
            email::programTitle());
        return;
    }
    if (error != 0) {
        throw platform::RuntimeError(error);
    }
    const QString file = dlgAttach.FileName();
    if (!file.isEmpty()) {
        attachFolder() = file.first(file.lastIndexOf(u'\\') + 1);
        txtAttachment->setText(file);
    }
}

void frmSend::Form_Unload() {
    closeFinding();
    removeKeptLetter();
    tTo->clear();
    tCc->clear();
    tSubject->clear();
    origin = {};
    giveControlBack();
}

void frmSend::closeEvent(QCloseEvent* event) {
    if (!sending_ || !isEnabled()) {
        Form::closeEvent(event);
        return;
    }
    event->ignore();
    runHandler([this] {
        closeFinding();
        hide();
        giveControlBack();
    });
}
