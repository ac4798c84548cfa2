// How a server ends a session does not matter once all messages have been received.

#include "email/mailbox.h"
#include "tests/support/pop3_script.h"
#include "tests/support/window_test.h"
#include "windows/frmLogin.h"
#include "windows/frmMain.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

using support::Peer;
using support::Pop3Mailbox;
using support::ScriptedServer;
using support::WindowTest;
using testing::IsEmpty;

namespace {
struct BadEnd {
    const char* name;
    const char* command;
    support::Conversation action;
};

class Quit : public WindowTest, public testing::WithParamInterface<BadEnd> {
  protected:
    Quit() {
        mailbox.on(GetParam().command, GetParam().action);
        writeSettings(support::schoolSettings(server.address()));
        startUp();
        loginWindow().POP1.setTimeouts({std::chrono::seconds(20), std::chrono::milliseconds(50)});
        loginWindow().tUser->setText(QStringLiteral("ann"));
        loginWindow().tpwd->setText(QStringLiteral("secret"));
    }

    Pop3Mailbox mailbox{{"Subject: one\r\n\r\nfirst\r\n", "Subject: two\r\n\r\nsecond\r\n"}};
    ScriptedServer server{mailbox};
};
} // namespace

TEST_P(Quit, LeavesALogInItsRowsAndACheckItsNewMail) {
    loginWindow().cmdLogin->click();
    EXPECT_THAT(boxTexts(), IsEmpty());
    EXPECT_EQ(programEnds, 0);
    EXPECT_EQ(mainWindow().MailGrid->Rows(), 3);
    EXPECT_TRUE(mainWindow().cmdDelete->isEnabled());
    EXPECT_TRUE(mainWindow().lStats->text().startsWith(QStringLiteral("2 messages ")));

    mailbox.deliver("Subject: three\r\n\r\nthird\r\n");
    mainWindow().tmrCheckMail_Timer();
    EXPECT_EQ(mainWindow().MailGrid->TextMatrix(3, 3).trimmed(), QStringLiteral("three"));
    EXPECT_EQ(email::mailbox.LastMessageCount, 3);
    mainWindow().tmrCheckMail_Timer();
    EXPECT_FALSE(email::mailbox.NewMailFound);
    EXPECT_THAT(boxTexts(), IsEmpty());
    EXPECT_EQ(programEnds, 0);
}

INSTANTIATE_TEST_SUITE_P(
    Servers, Quit,
    testing::Values(BadEnd{"SilentAtUidl", "UIDL", [](Peer& peer) { peer.holdSilent(); }},
                    BadEnd{"HangsUpAtUidl", "UIDL", [](Peer& peer) { peer.close(); }},
                    BadEnd{"SilentAtQuit", "QUIT", [](Peer& peer) { peer.holdSilent(); }},
                    BadEnd{"HangsUpAtQuit", "QUIT", [](Peer& peer) { peer.reset(); }},
                    BadEnd{"GarbageAtQuit", "QUIT", [](Peer& peer) { peer.send("<html>\r\n"); }}),
    [](const auto& test) { return test.param.name; });
