// Messages of which the server refuses to give the first lines: they are fetched behind the others.

#include "tests/retrieval/new_mail_check_fixture.h"

using support::NewMailCheck;
using support::Peer;
using testing::IsEmpty;

namespace {
class LateMessages : public NewMailCheck {
  protected:
    LateMessages() {
        for (const char* const name : {"1", "2", "3"}) {
            mailbox.deliver(message(name));
        }
        mailbox.answer("TOP 2", "-ERR not this one\r\n");
    }
};
} // namespace

TEST_F(LateMessages, StandInTheirRowsBehindALogIn) {
    logIn(server.address());
    EXPECT_THAT(boxTexts(), IsEmpty());
    expectList(3, email::mailbox.MailboxBytes);
    EXPECT_EQ(cell(2, 3), QStringLiteral("About 2"));
    EXPECT_EQ(cell(3, 3), QStringLiteral("About 3"));
    EXPECT_EQ(server.connections(), 2U) << "the first session was told to end behind the listing";
    expectUsableWindow();
}

TEST_F(LateMessages, WhereNobodyIsLetInSoSoonAgainTheOthersAreListed) {
    mailbox.on("PASS", [](Peer& peer) {
        peer.send(peer.connection() == 1 ? "-ERR [IN-USE] still locked\r\n" : "+OK\r\n");
    });
    logIn(server.address());
    EXPECT_THAT(boxTexts(), IsEmpty());
    expectList(3, email::mailbox.MailboxBytes);
    EXPECT_EQ(cell(2, 3), QStringLiteral("'"));
    EXPECT_EQ(cell(3, 3), QStringLiteral("About 3"));
    expectUsableWindow();
    mainWindow().cmdGetMail->click();
    EXPECT_EQ(boxTexts().back(), QStringLiteral("You have no new mail.")) << "the session is free again";
}

TEST_F(LateMessages, StandInTheirRowsBehindACheck) {
    logIn(server.address());
    mailbox.deliver(message("4")).deliver(message("5")).answer("TOP 4", "-ERR not this one\r\n");
    mainWindow().tmrCheckMail_Timer();
    EXPECT_THAT(boxTexts(), IsEmpty());
    expectList(5, email::mailbox.MailboxBytes);
    EXPECT_EQ(cell(4, 3), QStringLiteral("About 4"));
    EXPECT_EQ(cell(5, 3), QStringLiteral("About 5"));
    expectUsableWindow();
}
