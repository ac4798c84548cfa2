// The login window against a real mail server.

#include "email/mailbox.h"
#include "tests/support/dovecot_server.h"
#include "tests/support/window_test.h"
#include "windows/frmLogin.h"
#include "windows/frmMain.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

using support::DovecotServer;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {
class LoginAtDovecot : public support::WindowTest {
  protected:
    void SetUp() override {
        if (const std::string reason = DovecotServer::whyUnavailable(); !reason.empty()) {
            GTEST_SKIP() << reason;
        }
        server = std::make_unique<DovecotServer>();
    }

    static QString cell(int row, int column) {
        return mainWindow().MailGrid->TextMatrix(row, column).trimmed();
    }

    std::unique_ptr<DovecotServer> server;
};
} // namespace

TEST_F(LoginAtDovecot, ListsMessagesOfAllShapes) {
    server->deliver(
        "From: Ann <ann@example.org>\r\nSubject: Plain\r\nDate: Mon, 2 Mar 2026 10:00:00 +0000\r\n\r\n"
        "One line\r\n");
    server->deliver("From: bob@example.org\r\nContent-Type: multipart/mixed;\r\n boundary=\"XyZ\"\r\n\r\n"
                    "--XyZ\r\nContent-Type: text/plain;\r\n\r\n.dots\r\n..more\r\n--XyZ--\r\n");
    std::string longMessage = "From: carol@example.org\r\nSubject: Long\r\n\r\n";
    for (int line = 1; line <= 100; ++line) {
        longMessage += "line " + std::to_string(line) + "\r\n";
    }
    server->deliver(longMessage);
    logIn(server->address(), QStringLiteral("bob"));
    ASSERT_THAT(boxTexts(), IsEmpty());
    EXPECT_EQ(mainWindow().MailGrid->Rows(), 4);
    EXPECT_EQ(cell(1, 2), QStringLiteral("Ann <ann@example.org>"));
    EXPECT_EQ(cell(1, 3), QStringLiteral("Plain"));
    EXPECT_EQ(cell(2, 3), QStringLiteral("'"));
    EXPECT_EQ(email::mailbox.Messages.at(2).Boundary, "XyZ");
    EXPECT_NE(email::mailbox.Messages.at(2).BodyText.find("\r\n.dots\r\n..more\r\n"), std::string::npos);
    const std::string& body = email::mailbox.Messages.at(3).BodyText;
    EXPECT_TRUE(body.ends_with("line 25\r\n")) << body;
    EXPECT_EQ(cell(3, 4), QStringLiteral("(%1 bytes)").arg(longMessage.size()));
    EXPECT_EQ(server->messages().size(), 3U);
}

TEST_F(LoginAtDovecot, AWrongPasswordIsReportedAndTheRightOneThenWorks) {
    server->deliver("Subject: x\r\n\r\n");
    writeSettings(support::schoolSettings(server->address()));
    startUp();
    loginWindow().tUser->setText(QStringLiteral("bob"));
    loginWindow().tpwd->setText(QStringLiteral("wrong"));
    loginWindow().cmdLogin->click();
    EXPECT_THAT(boxTexts(),
                ElementsAre(QStringLiteral("Password Or User Name Wrong, Please Try Again 20172")));
    EXPECT_EQ(programEnds, 0);
    loginWindow().tpwd->setText(QStringLiteral("secret"));
    loginWindow().cmdLogin->click();
    EXPECT_EQ(boxes.size(), 1U);
    EXPECT_EQ(email::mailbox.MessageCount, 1);
}

TEST_F(LoginAtDovecot, TwoHundredMessagesAreListed) {
    for (int i = 1; i <= 200; ++i) {
        server->deliver("Subject: number " + std::to_string(i) + "\r\n\r\nbody\r\n");
    }
    logIn(server->address(), QStringLiteral("bob"));
    ASSERT_THAT(boxTexts(), IsEmpty());
    EXPECT_EQ(cell(200, 3), QStringLiteral("number 200"));
}
