#include "app/version.h"
#include "email/protections.h"
#include "windows/frmAbout.h"
#include "windows/frmMain.h"
#include "windows/windows.h"

#include <QLabel>

void frmAbout::Form_Load() {
    lblProduct->setText(QStringLiteral("Brindlewake ") + programVersion());
    showProtections();
}

void frmAbout::showProtections() {
    lblPOPServer->setText(QStringLiteral("Mail server (POP3): ") +
                          email::inWords(email::protections.POPServer));
    lblSMTPServer->setText(QStringLiteral("Mail server (SMTP): ") +
                           email::inWords(email::protections.SMTPServer));
}

void frmAbout::cmdOkAbout_Click() {
    unload(*this);
}

void frmAbout::Form_Unload() {
    mainWindow().activateWindow();
}
