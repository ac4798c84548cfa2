#pragma once

#include "email/credentials.h"
#include "email/shared_settings.h"
#include "tests/support/smtp_script.h"
#include "tests/support/window_test.h"
#include "windows/frmMain.h"
#include "windows/frmSend.h"

#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QString>

namespace support {

/** The compose window of a member who may attach files, and the server that it sends to. */
class SendTest : public WindowTest {
  protected:
    SendTest() : server(mailbox) {
        qputenv("BRINDLEWAKE_DRIVE_C", QByteArray::fromStdString(folder.path().string()));
        auto fields = schoolSettings(server.address());
        fields.SendAttachments = QStringLiteral("yes");
        writeSettings(fields);
        startUp();
        email::credentials.UserName = QStringLiteral("ann");
        mainWindow().bringUp();
        mainWindow().cmdCmpose->click();
    }

    static void write(const QString& to, const QString& subject, const QString& text,
                      const QString& attachment = QString()) {
        auto& window = composeWindow();
        window.tTo->setText(to);
        window.tSubject->setText(subject);
        window.tMessage->setPlainText(text);
        window.txtAttachment->setText(attachment);
    }

    const QString bob = QStringLiteral("bob@example.org");
    SmtpMailbox mailbox;
    ScriptedServer server;
};

} // namespace support
