#include "components/controls/message_box.h"
#include "email/settings_file.h"
#include "email/shared_settings.h"
#include "email/titles.h"
#include "email/typed_host.h"
#include "platform/program.h"
#include "platform/runtime_error.h"
#include "platform/sequential_file.h"
#include "windows/frmLogin.h"
#include "windows/frmSetup.h"
#include "windows/windows.h"

#include <QComboBox>
#include <QLineEdit>

namespace {
email::SettingsFields fieldsOf(const frmSetup& window) {
    return {.ShowSetup = window.cboSetup->currentText(),
            .POPServer = window.txtPOP->text(),
            .SMTPServer = window.txtSMTP->text(),
            .DomainName = window.txtDomain->text(),
            .Institution = window.txtSchool->text(),
            .PlayWav = window.cboPlayWav->currentText(),
            .ShowDatabase = window.cboShowDatabase->currentText(),
            .SendAttachments = window.cboAttachments->currentText(),
            .SaveDirectory = window.txtSaveDir->text(),
            .AllowPrinting = window.cboPrinter->currentText(),
            .SaveCopy = window.cboSaveCopy->currentText(),
            .ShowGetMail = window.cboShowGetMail->currentText(),
            .GetMailEvery = window.cboCheckNewMail->currentText(),
            .LDAPServer = window.txtLDAPServer->text(),
            .LDAPSearchBase = window.txtSearchBase->text(),
            .AddressLookup = window.cboAddressIn->currentText()};
}

/** Shows the text as the combo box's own, be it one of its items or not. */
void showText(QComboBox& box, const QString& text) {
    // The item that the text is, so that the list drops down on it and the arrow keys go on from there.
    box.setCurrentIndex(box.findText(text, Qt::MatchExactly | Qt::MatchCaseSensitive));
    box.setEditText(text);
}

/** Puts drive and folders where attachments go now, or to C: when there is no such folder. */
void startLists(const frmSetup& window) {
    for (const QString& path : {email::settings.SaveDirectory, QStringLiteral("C:\\")}) {
        if (platform::errorNumberOf([&] { window.cboDir->setPath(path); }) == 0) {
            break;
        }
    }
    window.cboDrive->setDrive(window.cboDir->path());
}
} // namespace

void frmSetup::Form_Load() {
    // Before the fields, since a change of folder writes the one of the attachment directory.
    startLists(*this);
    const email::SettingsFields current = email::fieldsOf(email::settingsOfFile());
    showText(*cboSetup, current.ShowSetup);
    txtPOP->setText(current.POPServer);
    txtSMTP->setText(current.SMTPServer);
    txtDomain->setText(current.DomainName);
    txtSchool->setText(current.Institution);
    showText(*cboPlayWav, current.PlayWav);
    showText(*cboShowDatabase, current.ShowDatabase);
    showText(*cboAttachments, current.SendAttachments);
    txtSaveDir->setText(current.SaveDirectory);
    showText(*cboPrinter, current.AllowPrinting);
    showText(*cboSaveCopy, current.SaveCopy);
    showText(*cboShowGetMail, current.ShowGetMail);
    showText(*cboCheckNewMail, current.GetMailEvery);
    txtLDAPServer->setText(current.LDAPServer);
    txtSearchBase->setText(current.LDAPSearchBase);
    showText(*cboAddressIn, current.AddressLookup);
    cboAddressIn_Click();
}

void frmSetup::cboAddressIn_Click() {
    const bool directory = cboAddressIn->currentText() == QLatin1String("Directory Server");
    txtLDAPServer->setEnabled(directory);
    txtSearchBase->setEnabled(directory);
}

void frmSetup::cboDrive_Change() {
    const int error = platform::errorNumberOf([this] { cboDir->setPath(cboDrive->drive()); });
    if (error == platform::errors::DeviceUnavailable) {
        controls::showMessage(QStringLiteral("The drive is not ready, please insert disk."),
                              email::programTitle());
        cboDrive->setDrive(cboDir->path());
    }
}

void frmSetup::cboDir_Change() {
    const QString path = cboDir->path();
    txtSaveDir->setText(path.endsWith(u'\\') ? path : path + u'\\');
}

void frmSetup::cmdUpdate_Click() {
    platform::writeWholeFile(QLatin1String(email::kSettingsFileName),
                             email::settingsFileText(fieldsOf(*this), email::settingsOfFile()));
    hide();
    controls::showMessageBox(
        {QStringLiteral("You must restart Brindlewake in order for changes to take effect."),
         QStringLiteral("Brindlewake"), controls::MessageIcon::Exclamation, controls::MessageButtons::Ok});
    platform::endProgram();
}

void frmSetup::cmdExit_Click() {
    hide();
    loginWindow().setEnabled(true);
    loginWindow().bringUp();
}

void frmSetup::Form_Unload() {
    loginWindow().setEnabled(true);
}
