// What one session has shown of a server is not asked for in the next.

#include "tests/poplib/encrypted_pop_fixture.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

using support::Peer;
using support::ScriptedServer;
using support::validIdentity;
using testing::ElementsAre;
using testing::StartsWith;
namespace errors = platform::errors;

class PopKnownServer : public support::EncryptedPopTest {
  protected:
    /** A whole session; returns the error of the log-on. */
    int session(const ScriptedServer& server, const char* scheme = "plain://") {
        const int error = logOn(server, scheme);
        logOff();
        return error;
    }

    static bool asks(const ScriptedServer& server, std::size_t connection) {
        const std::vector<std::string> commands = server.commands(connection);
        return std::find(commands.begin(), commands.end(), "CAPA") != commands.end();
    }
};

TEST_F(PopKnownServer, IsNotAskedWhatItCanDoAgain) {
    mailbox.answerProperly("CAPA");
    ScriptedServer server(mailbox);
    ASSERT_EQ(session(server), 0);
    ASSERT_EQ(session(server), 0);
    EXPECT_TRUE(asks(server, 0));
    EXPECT_THAT(server.commands(1), ElementsAre("USER bob", "PASS secret", "STAT", "QUIT"));
    EXPECT_EQ(pop.roundTrips(), 3U) << "USER and PASS still go together";
}

TEST_F(PopKnownServer, IsNotAskedAgainWhenItDoesNotKnowTheQuestion) {
    mailbox.answer("CAPA", "-ERR\r\n");
    ScriptedServer server(mailbox);
    ASSERT_EQ(session(server), 0);
    ASSERT_EQ(session(server), 0);
    EXPECT_TRUE(asks(server, 0));
    EXPECT_FALSE(asks(server, 1));
}

TEST_F(PopKnownServer, IsEncryptedAtOnce) {
    inviteToTls(validIdentity());
    for (const char* const scheme : kUpgrading) {
        ScriptedServer server(mailbox);
        ASSERT_EQ(session(server, scheme), 0);
        ASSERT_EQ(session(server, scheme), 0);
        EXPECT_THAT(server.commands(1), ElementsAre("STLS", "USER bob", "PASS secret", "STAT", "QUIT"));
        EXPECT_TRUE(server.tls(1).handshakeDone);
    }
}

TEST_F(PopKnownServer, IsAskedAnewAfterASessionThatFailed) {
    ScriptedServer server(mailbox);
    ASSERT_EQ(session(server), 0);
    mailbox.on("STAT", [](Peer& peer) { peer.close(); });
    ASSERT_EQ(session(server), errors::MailServerTrouble);
    mailbox.answerProperly("STAT");
    ASSERT_EQ(session(server), 0);
    EXPECT_FALSE(asks(server, 1));
    EXPECT_TRUE(asks(server, 2));
}

TEST_F(PopKnownServer, IsAskedAnewAfterARefusedLogOn) {
    ScriptedServer server(mailbox);
    ASSERT_EQ(session(server), 0);
    mailbox.answer("PASS", "-ERR no\r\n");
    ASSERT_EQ(session(server), errors::LogOnRefused);
    ASSERT_EQ(session(server), errors::LogOnRefused);
    EXPECT_FALSE(asks(server, 1));
    EXPECT_TRUE(asks(server, 2));
}

TEST_F(PopKnownServer, IsAskedAnewWhenItNoLongerEncrypts) {
    inviteToTls(validIdentity());
    ScriptedServer server(mailbox);
    ASSERT_EQ(session(server, ""), 0);
    mailbox.answer("STLS", "-ERR not now\r\n");
    ASSERT_EQ(session(server, ""), 0);
    EXPECT_THAT(server.commands(1), ElementsAre("STLS")) << "a new session takes over in clear";
    EXPECT_TRUE(asks(server, 2));
}

TEST_F(PopKnownServer, IsStillEncryptedOrLeftWhereEncryptionIsDemanded) {
    inviteToTls(validIdentity());
    ScriptedServer server(mailbox);
    ASSERT_EQ(session(server, "starttls://"), 0);
    mailbox.answer("STLS", "-ERR not now\r\n");
    EXPECT_EQ(session(server, "starttls://"), errors::EncryptionNotOffered);
    EXPECT_THAT(server.commands(1), ElementsAre("STLS"));
}

TEST_F(PopKnownServer, IsAnotherOneUnderAnotherName) {
    ScriptedServer first(mailbox);
    ScriptedServer second(mailbox);
    ASSERT_EQ(session(first), 0);
    ASSERT_EQ(session(second), 0);
    ASSERT_EQ(session(first), 0);
    EXPECT_TRUE(asks(second, 0));
    EXPECT_TRUE(asks(first, 1));
}

TEST_F(PopKnownServer, GetsCommandsAheadOnceAListingHasShownThatItTakesThem) {
    mailbox.answer("CAPA", "+OK\r\nUSER\r\n.\r\n");
    mailbox.deliver(support::message("one"));
    ScriptedServer server(mailbox);
    pop.setListing(true);
    ASSERT_EQ(session(server), 0);
    pop.setListing(false);
    ASSERT_EQ(logOn(server, "plain://"), 0);
    pop.openAhead(1);
    EXPECT_GT(sizeOf(1), 0);
    EXPECT_EQ(retrieve(1, 0), 0);
    EXPECT_EQ(logOff(), 0);
    EXPECT_EQ(pop.roundTrips(), 4U) << "USER; PASS; STAT; LIST, RETR, QUIT";
    EXPECT_THAT(server.commands(1).back(), StartsWith("QUIT"));
}

} // namespace
