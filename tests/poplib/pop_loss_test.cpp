// Connections that end where they should not.

#include "mailserver/pop3_conversation.h"
#include "tests/poplib/pop_fixture.h"
#include "tests/support/waiting.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace {

using support::Ending;
using support::Peer;
using support::Pop3Mailbox;
using support::ScriptedServer;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::SizeIs;
namespace errors = platform::errors;

const std::vector<std::string> kLostMessages{"From: ann@example.org\r\nSubject: one\r\n\r\nHello\r\n.\r\n",
                                             "Subject: two\r\nX: a\r\n b\r\n\r\n"};

support::Conversation ending(Ending how) {
    return [how](Peer& peer) { how == Ending::Reset ? peer.reset() : peer.close(); };
}

std::string nameOf(Ending how) {
    return how == Ending::Reset ? "Reset" : "Closed";
}

class PopLoss : public support::PopTest {};

class LossAfterCommand : public PopLoss,
                         public testing::WithParamInterface<std::tuple<const char*, Ending>> {};

TEST_P(LossAfterCommand, IsTroubleAndALaterAttemptWorks) {
    const auto [command, how] = GetParam();
    Pop3Mailbox mailbox(kLostMessages);
    mailbox.on(command, ending(how));
    ScriptedServer server(mailbox);
    pop.setMailServer(server.address());
    EXPECT_EQ(listing(), errors::MailServerTrouble);
    EXPECT_EQ(logOff(), 0) << "a session that has broken is closed already";
    mailbox.answerProperly(command);
    EXPECT_EQ(listing(), 0);
}

std::string lossName(const testing::TestParamInfo<std::tuple<const char*, Ending>>& test) {
    std::string name = std::get<0>(test.param) + nameOf(std::get<1>(test.param));
    std::erase(name, ' ');
    return name;
}

INSTANTIATE_TEST_SUITE_P(Commands, LossAfterCommand,
                         testing::Combine(testing::Values("GREETING", "USER", "PASS", "STAT", "LIST 1",
                                                          "TOP 1", "LIST 2", "TOP 2"),
                                          testing::Values(Ending::Close, Ending::Reset)),
                         lossName);

class LossAfterByte : public PopLoss, public testing::WithParamInterface<Ending> {};

TEST_P(LossAfterByte, IsTroubleAndNoEventIsMadeUp) {
    ScriptedServer server{Pop3Mailbox(kLostMessages)};
    pop.setMailServer(server.address());
    ASSERT_EQ(listing(), 0);
    // The server counts a byte after it has sent it, so the client may be ahead of the count.
    ASSERT_TRUE(server.waitForEndOf(1));
    const std::size_t total = server.bytesSent();
    const std::vector<std::string> whole = std::exchange(content, {});
    ASSERT_THAT(whole, SizeIs(7));
    const std::string_view quit =
        "+OK the list follows\r\n1 message-1\r\n2 message-2\r\n.\r\n+OK good-bye\r\n";
    mailserver::Mailbox empty;
    const std::string capabilities = mailserver::Pop3Conversation(empty).receive("CAPA\r\n");
    for (std::size_t bytes = 0; bytes < total; ++bytes) {
        SCOPED_TRACE(bytes);
        server.cutAfter(bytes, GetParam());
        // The listing does not depend on the replies to UIDL and QUIT. A server that hangs up at CAPA is
        // spoken to without it from then on, and needs to send less.
        const bool everythingCame = bytes + quit.size() + capabilities.size() >= total;
        ASSERT_EQ(listing(), everythingCame ? 0 : errors::MailServerTrouble);
        ASSERT_LE(content.size(), whole.size());
        ASSERT_TRUE(std::equal(content.begin(), content.end(), whole.begin()));
        content.clear();
    }
    server.cutAfter(total);
    EXPECT_EQ(listing(), 0);
    EXPECT_THAT(content, ElementsAreArray(whole));
    // A reset at once, before the client knows that it is connected, makes the socket try again by itself.
    EXPECT_GE(server.connections(), total + 2);
}

INSTANTIATE_TEST_SUITE_P(Bytes, LossAfterByte, testing::Values(Ending::Close, Ending::Reset),
                         [](const auto& test) { return nameOf(test.param); });

TEST_F(PopLoss, WhatTheServerSentBeforeItHungUpIsUsed) {
    Pop3Mailbox mailbox(kLostMessages);
    mailbox.on("TOP 1", [](Peer& peer) {
        peer.send("+OK\r\n" + support::stuffed("Subject: " + std::string(500'000, 'x') + "\r\n\r\nbody\r\n"));
        peer.close();
    });
    ScriptedServer server(mailbox);
    ASSERT_EQ(logOn(server), 0);
    EXPECT_EQ(retrieve(1), 0);
    EXPECT_THAT(content, SizeIs(2));
    EXPECT_EQ(retrieve(2), errors::MailServerTrouble);
}

TEST_F(PopLoss, AServerThatHangsUpBetweenTwoRequestsIsTroubleOnlyForTheNext) {
    Pop3Mailbox mailbox(kLostMessages);
    mailbox.on("STAT", [](Peer& peer) {
        peer.send("+OK 2 100\r\n");
        peer.close();
    });
    ScriptedServer server(mailbox);
    ASSERT_EQ(logOn(server), 0);
    EXPECT_EQ(sizeOf(1), -errors::MailServerTrouble);
    mailbox.answerProperly("STAT");
    EXPECT_EQ(logOn(), 0);
}

TEST_F(PopLoss, AConnectionThatBrokeUnnoticedDoesNotKeepANewSessionOut) {
    Pop3Mailbox mailbox(kLostMessages);
    mailbox.on("STAT", [](Peer& peer) {
        peer.send("+OK 2 100\r\n");
        peer.close();
    });
    ScriptedServer server(mailbox);
    ASSERT_EQ(logOn(server), 0);
    ASSERT_TRUE(support::eventsRunUntil([&server] { return server.connectionsEnded() == 1; }));
    EXPECT_EQ(logOn(), 0);
}

} // namespace
