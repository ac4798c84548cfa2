#pragma once

#include "tests/support/dovecot_server.h"
#include "tests/support/exim_server.h"
#include "tests/support/window_test.h"
#include "windows/frmLogin.h"

#include <QLineEdit>
#include <QPushButton>

#include <memory>
#include <string>

namespace support {

/** The windows between a real Dovecot and a real Exim, which delivers into the Dovecot's mailbox. */
class BetweenRealServers : public WindowTest {
  protected:
    /** Skips the test where one of the servers is not installed. */
    void SetUp() override {
        for (const std::string& reason : {DovecotServer::whyUnavailable(), EximServer::whyUnavailable()}) {
            if (!reason.empty()) {
                GTEST_SKIP() << reason;
            }
        }
        dovecot = std::make_unique<DovecotServer>();
        exim = std::make_unique<EximServer>(dovecot->maildir());
    }

    void logInAsBob() {
        email::SettingsFields fields = schoolSettings(dovecot->address());
        fields.SMTPServer = exim->address();
        fields.SendAttachments = QStringLiteral("yes");
        writeSettings(fields);
        startUp();
        loginWindow().tUser->setText(QStringLiteral("bob"));
        loginWindow().tpwd->setText(QStringLiteral("secret"));
        loginWindow().cmdLogin->click();
        ASSERT_THAT(boxTexts(), testing::IsEmpty());
    }

    std::unique_ptr<DovecotServer> dovecot;
    std::unique_ptr<EximServer> exim;
};

} // namespace support
