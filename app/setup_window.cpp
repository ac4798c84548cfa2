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

#include <array>
#include <variant>

namespace {
using Fields = email::SettingsFields;

/** Where a setting is edited: in a combo box or in a field for text. */
struct Editor {
    QString Fields::*setting;
    std::variant<QComboBox * frmSetup::*, QLineEdit * frmSetup::*> control;
};

constexpr std::array<Editor, 16> kEditors = {{
    {&Fields::ShowSetup, &frmSetup::cboSetup},
    {&Fields::POPServer, &frmSetup::txtPOP},
    {&Fields::SMTPServer, &frmSetup::txtSMTP},
    {&Fields::DomainName, &frmSetup::txtDomain},
    {&Fields::Institution, &frmSetup::txtSchool},
    {&Fields::PlayWav, &frmSetup::cboPlayWav},
    {&Fields::ShowDatabase, &frmSetup::cboShowDatabase},
    {&Fields::SendAttachments, &frmSetup::cboAttachments},
    {&Fields::SaveDirectory, &frmSetup::txtSaveDir},
    {&Fields::AllowPrinting, &frmSetup::cboPrinter},
    {&Fields::SaveCopy, &frmSetup::cboSaveCopy},
    {&Fields::ShowGetMail, &frmSetup::cboShowGetMail},
    {&Fields::GetMailEvery, &frmSetup::cboCheckNewMail},
    {&Fields::LDAPServer, &frmSetup::txtLDAPServer},
    {&Fields::LDAPSearchBase, &frmSetup::txtSearchBase},
    {&Fields::AddressLookup, &frmSetup::cboAddressIn},
}};

QString textIn(const QComboBox& box) {
    return box.currentText();
}

QString textIn(const QLineEdit& field) {
    return field.text();
}

/** Shows the text in the combo box, whether or not it is one of the items. */
void showText(QComboBox& box, const QString& text) {
    // The matching item becomes the current one, so that the list opens at it and the arrow keys start there.
    box.setCurrentIndex(box.findText(text, Qt::MatchExactly | Qt::MatchCaseSensitive));
    box.setEditText(text);
}

void showText(QLineEdit& field, const QString& text) {
    field.setText(text);
}

Fields fieldsIn(const frmSetup& window) {
    Fields fields;
    for (const Editor& editor : kEditors) {
        std::visit([&](auto control) { fields.*editor.setting = textIn(*(window.*control)); },
                   editor.control);
    }
    return fields;
}

void showFields(const frmSetup& window, const Fields& fields) {
    for (const Editor& editor : kEditors) {
        std::visit([&](auto control) { showText(*(window.*control), fields.*editor.setting); },
                   editor.control);
    }
}

/** Opens both lists at the folder where attachments are saved, or at C:\ when that cannot be opened. */
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
    // This comes before the fields, since cboDir_Change() writes into the field of the attachment directory.
    startLists(*this);
    showFields(*this, email::fieldsOf(email::settingsOfFile()));
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
                             email::settingsFileText(fieldsIn(*this), email::settingsOfFile()));
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
