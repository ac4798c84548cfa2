// Requests made while another one runs, or while a session is open: timers fire inside waits and under boxes.

#include "tests/smtplib/smtp_fixture.h"
#include "tests/support/waiting.h"

#include <gmock/gmock.h>

namespace {

using support::ScriptedServer;
using support::SmtpMailbox;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;
namespace errors = platform::errors;

class SmtpReentry : public support::SmtpTest, protected support::InsideAWait {
  protected:
    SmtpReentry() { fillIn(); }

    SmtpMailbox mailbox;
};

TEST_F(SmtpReentry, ARequestInsideATransmissionMeetsABusyServerAndDoesNoHarm) {
    mailbox.on("MAIL", support::holdAndSay("250 ok\r\n"));
    ScriptedServer server(mailbox);
    ASSERT_EQ(open(server), 0);
    insideTheWait(server, 2, [this] {
        EXPECT_EQ(open(), errors::MailServerBusy);
        EXPECT_EQ(transmit(), errors::MailServerBusy);
        EXPECT_EQ(close(), 0) << "the session belongs to the request further down the stack";
    });
    EXPECT_EQ(transmit(), 0);
    EXPECT_TRUE(actionRan);
    EXPECT_EQ(close(), 0);
    EXPECT_THAT(mailbox.messages(), SizeIs(1));
    EXPECT_EQ(server.connections(), 1U);
}

TEST_F(SmtpReentry, ARequestWhileTheConnectionIsOpenedMeetsABusyServer) {
    mailbox.on("EHLO", support::holdAndSay("250 mail\r\n"));
    ScriptedServer server(mailbox);
    insideTheWait(server, 1, [this] {
        EXPECT_EQ(open(), errors::MailServerBusy);
        EXPECT_EQ(transmit(), errors::MailServerBusy);
        EXPECT_EQ(close(), 0);
    });
    EXPECT_EQ(send(server), 0);
    EXPECT_TRUE(actionRan);
    EXPECT_EQ(server.connections(), 1U);
}

TEST_F(SmtpReentry, AListenerThatMakesARequestMeetsABusyServer) {
    ScriptedServer server(mailbox);
    std::vector<int> numbers;
    smtp.PITrail = [&](smtplib::Direction, const std::string& message) {
        if (message == "DATA") {
            numbers = {open(), transmit(), close()};
        }
    };
    EXPECT_EQ(send(server), 0);
    EXPECT_THAT(numbers, ElementsAre(errors::MailServerBusy, errors::MailServerBusy, 0));
    EXPECT_THAT(mailbox.messages(), SizeIs(1));
}

TEST_F(SmtpReentry, OpeningWhileASessionIsOpenMeetsABusyServer) {
    ScriptedServer server(mailbox);
    ASSERT_EQ(open(server), 0);
    EXPECT_EQ(open(), errors::MailServerBusy);
    EXPECT_EQ(transmit(), 0) << "the open session is unharmed";
    EXPECT_EQ(close(), 0);
}

TEST_F(SmtpReentry, AMessageKeepsWhatItHadWhenItsTransmissionBegan) {
    mailbox.on("MAIL", support::holdAndSay("250 ok\r\n"));
    ScriptedServer server(mailbox);
    ASSERT_EQ(open(server), 0);
    insideTheWait(server, 2, [this] {
        smtp.setRecipients("eve@example.org");
        smtp.setSubject("Other");
        smtp.setBody("other");
    });
    EXPECT_EQ(transmit(), 0);
    EXPECT_TRUE(actionRan);
    EXPECT_THAT(mailbox.messages().at(0), HasSubstr("Subject: Hello\r\n"));
    EXPECT_THAT(server.commands(), testing::Not(testing::Contains("RCPT TO:<eve@example.org>")));
}

TEST_F(SmtpReentry, ClosingWithNothingOpenDoesNothing) {
    EXPECT_EQ(close(), 0);
    ScriptedServer server(mailbox);
    ASSERT_EQ(open(server), 0);
    EXPECT_EQ(close(), 0);
    EXPECT_EQ(close(), 0);
    EXPECT_THAT(server.keywords(), ElementsAre("EHLO", "QUIT"));
}

TEST_F(SmtpReentry, TransmittingWithNothingOpenSendsNothing) {
    EXPECT_EQ(transmit(), errors::SendingLost);
}

} // namespace
