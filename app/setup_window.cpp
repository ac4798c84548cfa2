#include "email/settings_file.h"
#include "email/state.h"
#include "platform/message_box.h"
#include "platform/program.h"
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
} // namespace

void frmSetup::Form_Load() {
    const email::SettingsFields current = email::fieldsOf(email::settings);
    cboSetup->setEditText(current.ShowSetup);
    txtPOP->setText(current.POPServer);
    txtSMTP->setText(current.SMTPServer);
    txtDomain->setText(current.DomainName);
    txtSchool->setText(current.Institution);
    cboPlayWav->setEditText(current.PlayWav);
    cboShowDatabase->setEditText(current.ShowDatabase);
    cboAttachments->setEditText(current.SendAttachments);
    txtSaveDir->setText(current.SaveDirectory);
    cboPrinter->setEditText(current.AllowPrinting);
    cboSaveCopy->setEditText(current.SaveCopy);
    cboShowGetMail->setEditText(current.ShowGetMail);
    cboCheckNewMail->setEditText(current.GetMailEvery);
    txtLDAPServer->setText(current.LDAPServer);
    txtSearchBase->setText(current.LDAPSearchBase);
    cboAddressIn->setEditText(current.AddressLookup);
    cboAddressIn_Click();
}

void frmSetup::cboAddressIn_Click() {
    const bool directory = cboAddressIn->currentText() == QLatin1String("Directory Server");
    txtLDAPServer->setEnabled(directory);
    txtSearchBase->setEnabled(directory);
}

void frmSetup::cmdUpdate_Click() {
    platform::writeWholeFile(QLatin1String(email::kSettingsFileName),
                             email::settingsFileText(fieldsOf(*this), email::settings));
    hide();
    platform::showMessageBox(
        {QStringLiteral("You must restart Brindlewake in order for changes to take effect."),
         QStringLiteral("Brindlewake"), platform::MessageIcon::Exclamation, platform::MessageButtons::Ok});
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
