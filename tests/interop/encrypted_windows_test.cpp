// The windows at real servers that encrypt, and what the About window says of them.

#include "tests/support/dovecot_server.h"
#include "tests/support/exim_server.h"
#include "tests/support/trusted_root.h"
#include "tests/support/window_test.h"
#include "windows/frmAbout.h"
#include "windows/frmLogin.h"
#include "windows/frmMain.h"
#include "windows/frmSend.h"

#include <QAction>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>

using support::DovecotServer;
using support::EximServer;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {
const QString kNotYet = QStringLiteral("not connected yet");

class EncryptedWindows : public support::WindowTest {
  protected:
    void SetUp() override {
        for (const std::string& reason : {DovecotServer::whyUnavailable(), EximServer::whyUnavailable()}) {
            if (!reason.empty()) {
                GTEST_SKIP() << reason;
            }
        }
        dovecot = std::make_unique<DovecotServer>(
            DovecotServer::Options{.certificate = support::trustedCertificate()});
        // Exim counts the messages that come after its start.
        dovecot->deliver("From: ann@example.org\r\nSubject: First\r\n\r\ntext\r\n");
        exim = std::make_unique<EximServer>(
            dovecot->maildir(), EximServer::Options{.certificate = support::trustedCertificate(),
                                                    .account = support::EximAccount(),
                                                    .answerToStrangers = "550 5.7.1 log on first"});
    }

    void startWith(const QString& popServer, const QString& smtpServer) {
        forgetEverything();
        email::SettingsFields fields = support::schoolSettings(popServer);
        fields.SMTPServer = smtpServer;
        writeSettings(fields);
        startUp();
    }

    static void logInAs(const QString& user, const QString& password) {
        loginWindow().tUser->setText(user);
        loginWindow().tpwd->setText(password);
        loginWindow().cmdLogin->click();
    }

    static void sendToBob() {
        mainWindow().cmdCmpose->click();
        composeWindow().tTo->setText(QStringLiteral("bob@example.org"));
        composeWindow().tSubject->setText(QStringLiteral("Hello"));
        composeWindow().tMessage->setPlainText(QStringLiteral("text"));
        composeWindow().cmdSndit->click();
    }

    /** Opens the About window, and expects it to say this of the two servers. */
    static void expectAbout(const QString& popServer, const QString& smtpServer) {
        mainWindow().mnuHelp->trigger();
        EXPECT_EQ(aboutWindow().lblPOPServer->text(), QStringLiteral("Mail server (POP3): ") + popServer);
        EXPECT_EQ(aboutWindow().lblSMTPServer->text(), QStringLiteral("Mail server (SMTP): ") + smtpServer);
        aboutWindow().cmdOkAbout->click();
    }

    support::TrustedRoot trustedRoot;
    std::unique_ptr<DovecotServer> dovecot;
    std::unique_ptr<EximServer> exim;
};
} // namespace

TEST_F(EncryptedWindows, ListAndSendWithValidCertificates) {
    const QString valid = QStringLiteral("encrypted, certificate valid (TLS 1.3)");
    startWith(QStringLiteral("tls://") + dovecot->tlsAddress(),
              QStringLiteral("starttls://") + exim->address());
    logInAs(QStringLiteral("bob"), QStringLiteral("secret"));
    ASSERT_THAT(boxTexts(), IsEmpty()) << dovecot->log();
    EXPECT_EQ(mainWindow().MailGrid->TextMatrix(1, 3).trimmed(), QStringLiteral("First"));
    expectAbout(valid, kNotYet);

    sendToBob();
    ASSERT_THAT(boxTexts(), ElementsAre(QStringLiteral("Your message has been sent."))) << exim->log();
    expectAbout(valid, valid);
    EXPECT_EQ(exim->awaitMessages(1), 1U);
    mainWindow().cmdGetMail->click();
    EXPECT_EQ(mainWindow().MailGrid->Rows(), 3);
    EXPECT_EQ(mainWindow().MailGrid->TextMatrix(2, 3).trimmed(), QStringLiteral("Hello"));
}

TEST_F(EncryptedWindows, SayWhenTheServersNeedNotProveTheirNames) {
    const QString unverified = QStringLiteral("encrypted, server not verified (TLS 1.3)");
    startWith(dovecot->address(), exim->address());
    logInAs(QStringLiteral("bob"), QStringLiteral("secret"));
    sendToBob();
    ASSERT_THAT(boxTexts(), ElementsAre(QStringLiteral("Your message has been sent."))) << exim->log();
    expectAbout(unverified, unverified);
}

TEST_F(EncryptedWindows, SayWhenNothingIsEncrypted) {
    const QString inClear = QStringLiteral("not encrypted");
    startWith(QStringLiteral("plain://") + dovecot->address(), QStringLiteral("plain://") + exim->address());
    logInAs(QStringLiteral("bob"), QStringLiteral("secret"));
    sendToBob();
    ASSERT_THAT(boxTexts(), ElementsAre(QStringLiteral("Your message has been sent."))) << exim->log();
    expectAbout(inClear, inClear);
}

TEST_F(EncryptedWindows, TellAWrongPasswordFromACertificateThatIsNotTrusted) {
    startWith(QStringLiteral("tls://") + dovecot->tlsAddress(), QString());
    logInAs(QStringLiteral("bob"), QStringLiteral("mistaken"));
    EXPECT_THAT(boxTexts(),
                ElementsAre(QStringLiteral("Password Or User Name Wrong, Please Try Again 20172")));
    const support::EnvironmentVariable other("SSL_CERT_FILE", "/dev/null");
    startWith(QStringLiteral("tls://") + dovecot->tlsAddress(), QString());
    logInAs(QStringLiteral("bob"), QStringLiteral("secret"));
    EXPECT_THAT(boxTexts(),
                ElementsAre(testing::Property(&QString::toStdString, testing::HasSubstr("20322"))));
    expectAbout(kNotYet, kNotYet);
}
