// Requests made while another one runs, or while a session is open: timers fire inside waits and under boxes.

#include "tests/poplib/pop_fixture.h"
#include "tests/support/waiting.h"

#include <gmock/gmock.h>

namespace {

using support::Peer;
using support::Pop3Mailbox;
using support::ScriptedServer;
using testing::ElementsAre;
using testing::IsEmpty;
namespace errors = platform::errors;

const std::string kMessage = "Subject: a\r\n\r\nbody\r\n";

class PopReentry : public support::PopTest, protected support::InsideAWait {};

TEST_F(PopReentry, ARequestInsideARequestMeetsABusyServerAndDoesNoHarm) {
    Pop3Mailbox mailbox({kMessage});
    mailbox.on("TOP 1", support::holdAndSay("+OK\r\n" + support::stuffed(kMessage)));
    ScriptedServer server(mailbox);
    ASSERT_EQ(logOn(server), 0);
    insideTheWait(server, 4, [this] {
        EXPECT_EQ(logOn(), errors::MailServerBusy);
        EXPECT_EQ(request(poplib::Request::RetrieveCurrentMessage), errors::MailServerBusy);
        EXPECT_EQ(request(poplib::Request::DeleteCurrentMessage), errors::MailServerBusy);
        EXPECT_EQ(platform::errorNumberOf([this] { pop.currentMessageSize(); }), errors::MailServerBusy);
        EXPECT_EQ(logOff(), 0) << "the session belongs to the request further down the stack";
    });
    EXPECT_EQ(retrieve(1), 0);
    EXPECT_TRUE(actionRan);
    EXPECT_THAT(content, ElementsAre("header [Subject] [a]", "body 20 [body]"));
    EXPECT_EQ(logOff(), 0);
    EXPECT_THAT(server.keywords(), ElementsAre("CAPA", "USER", "PASS", "STAT", "TOP", "UIDL", "QUIT"));
    EXPECT_EQ(server.connections(), 1U);
}

TEST_F(PopReentry, ALogOnInsideALogOnMeetsABusyServer) {
    Pop3Mailbox mailbox;
    mailbox.on("USER", support::holdAndSay("+OK\r\n"));
    ScriptedServer server(mailbox);
    insideTheWait(server, 1, [this] { EXPECT_EQ(logOn(), errors::MailServerBusy); });
    EXPECT_EQ(logOn(server), 0);
    EXPECT_TRUE(actionRan);
    EXPECT_EQ(server.connections(), 1U);
}

TEST_F(PopReentry, AListenerThatMakesARequestMeetsABusyServer) {
    ScriptedServer server{Pop3Mailbox({kMessage})};
    ASSERT_EQ(logOn(server), 0);
    std::vector<int> numbers;
    pop.Transfer = [&](std::int32_t, const std::string&) { numbers.push_back(logOn()); };
    EXPECT_EQ(retrieve(1), 0);
    EXPECT_THAT(numbers, ElementsAre(errors::MailServerBusy));
    EXPECT_EQ(logOff(), 0);
}

TEST_F(PopReentry, ALogOnWhileASessionIsOpenMeetsABusyServer) {
    ScriptedServer server{Pop3Mailbox({kMessage})};
    ASSERT_EQ(logOn(server), 0);
    EXPECT_EQ(logOn(), errors::MailServerBusy);
    EXPECT_EQ(retrieve(1), 0) << "the open session is unharmed";
    EXPECT_EQ(logOff(), 0);
    EXPECT_EQ(logOn(), 0);
}

TEST_F(PopReentry, ARefusedLogOnKeepsTheSessionOpenUntilTheLogOff) {
    Pop3Mailbox mailbox;
    mailbox.allowOnly("bob", "secret");
    ScriptedServer server(mailbox);
    pop.setLoginPassword("wrong");
    EXPECT_EQ(logOn(server), errors::LogOnRefused);
    EXPECT_EQ(logOn(), errors::MailServerBusy);
    EXPECT_EQ(logOff(), 0);
    pop.setLoginPassword("secret");
    EXPECT_EQ(logOn(), 0);
    EXPECT_THAT(server.commands(0), ElementsAre("CAPA", "USER bob", "PASS wrong", "QUIT"));
}

TEST_F(PopReentry, ARefusedLogOnKeepsOthersOutAlsoWhenTheServerHungUp) {
    Pop3Mailbox mailbox;
    mailbox.on("PASS", [](Peer& peer) {
        peer.send("-ERR wrong password\r\n");
        peer.close();
    });
    ScriptedServer server(mailbox);
    EXPECT_EQ(logOn(server), errors::LogOnRefused);
    ASSERT_TRUE(support::eventsRunUntil([&server] { return server.connectionsEnded() == 1; }));
    EXPECT_EQ(logOn(), errors::MailServerBusy);
    EXPECT_EQ(logOff(), 0);
    mailbox.answerProperly("PASS");
    EXPECT_EQ(logOn(), 0);
}

TEST_F(PopReentry, AServerThatAsksToTryAgainLaterIsNotTakenForAWrongPassword) {
    Pop3Mailbox mailbox;
    mailbox.answer("PASS", "-ERR [IN-USE] another session holds the mailbox\r\n");
    ScriptedServer server(mailbox);
    EXPECT_EQ(logOn(server), errors::MailServerBusy);
    EXPECT_EQ(logOff(), 0);
    mailbox.answerProperly("PASS");
    EXPECT_EQ(logOn(), 0);
}

TEST_F(PopReentry, LoggingOffWithNothingOpenDoesNothing) {
    EXPECT_EQ(logOff(), 0);
    ScriptedServer server{Pop3Mailbox()};
    ASSERT_EQ(logOn(server), 0);
    EXPECT_EQ(logOff(), 0);
    EXPECT_EQ(logOff(), 0);
    EXPECT_THAT(server.keywords(), ElementsAre("CAPA", "USER", "PASS", "STAT", "QUIT"));
}

TEST_F(PopReentry, ALogOnKeepsTheNameAndPasswordThatItStartedWith) {
    Pop3Mailbox mailbox;
    mailbox.on("USER", support::holdAndSay("+OK\r\n"));
    ScriptedServer server(mailbox);
    insideTheWait(server, 1, [this] {
        pop.setLoginPassword("other\r\nDELE 1");
        EXPECT_EQ(logOn(), errors::MailServerBusy);
    });
    EXPECT_EQ(logOn(server), 0);
    EXPECT_TRUE(actionRan);
    EXPECT_THAT(server.commands(), ElementsAre("CAPA", "USER bob", "PASS secret", "STAT"));
}

TEST_F(PopReentry, ARequestWithoutASessionIsTroubleAndRaisesNoEvent) {
    EXPECT_EQ(retrieve(1), errors::MailServerTrouble);
    EXPECT_EQ(sizeOf(1), -errors::MailServerTrouble);
    EXPECT_EQ(remove(1), errors::MailServerTrouble);
    EXPECT_THAT(content, IsEmpty());
}

} // namespace
