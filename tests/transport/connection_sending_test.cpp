// What the SMTP client asks of a connection beyond what the POP3 client does.

#include "tests/transport/connection_fixture.h"

#include <QTimer>

#include <string>

namespace {

using namespace std::chrono_literals;
using support::ExpectLine;
using support::HoldSilent;
using support::Script;
using support::ScriptedServer;
using support::Send;
using transport::Outcome;

class ConnectionSending : public support::ConnectionFixture {};

TEST_F(ConnectionSending, KnowsItsOwnAddressWhileItIsOpen) {
    EXPECT_TRUE(connection.localAddress().isEmpty());
    ScriptedServer server(Script{HoldSilent{}});
    ASSERT_EQ(open(server), Outcome::Done);
    EXPECT_EQ(connection.localAddress(), QStringLiteral("127.0.0.1"));
}

TEST_F(ConnectionSending, WhatIsEnqueuedLeavesDuringTheWait) {
    ScriptedServer server(Script{ExpectLine{}});
    ASSERT_EQ(open(server), Outcome::Done);
    connection.enqueue("line\r\n");
    EXPECT_EQ(connection.unsentBytes(), 6);
    EXPECT_EQ(connection.waitUntilSentOrAnswered(soon()), Outcome::Done);
    EXPECT_EQ(connection.unsentBytes(), 0);
    EXPECT_TRUE(server.waitForCommands(1));
}

TEST_F(ConnectionSending, AnAnswerEndsTheWaitOfAStreamThatNobodyReads) {
    ScriptedServer server(Script{HoldSilent{}, Send{"no"}, HoldSilent{}});
    ASSERT_EQ(open(server), Outcome::Done);
    EXPECT_FALSE(connection.hasBytes());
    QTimer::singleShot(0, [&server] { server.release(); });
    EXPECT_EQ(connection.waitForBytes(soon()), Outcome::Done);
    connection.enqueue("line\r\n");
    EXPECT_EQ(connection.waitUntilSentOrAnswered(soon()), Outcome::Done);
    EXPECT_TRUE(connection.hasBytes());
    EXPECT_EQ(connection.unsentBytes(), 6) << "the answer came before anything left";
}

TEST_F(ConnectionSending, AStreamThatBrokeHasNotSentEverything) {
    ScriptedServer server(Script{ExpectLine{}, support::Reset{}});
    ASSERT_EQ(open(server), Outcome::Done);
    std::string bytes = "line\r\n";
    bytes.resize(50'000'000, 'x');
    connection.enqueue(bytes);
    EXPECT_EQ(connection.waitUntilSentOrAnswered(soon()), Outcome::Lost);
}

TEST_F(ConnectionSending, WhatHasNotLeftWhenItIsAbortedNeverLeaves) {
    ScriptedServer server(Script{ExpectLine{}});
    connection.abort();
    ASSERT_EQ(open(server), Outcome::Done);
    connection.enqueue("line\r\n");
    connection.abort();
    EXPECT_FALSE(connection.isOpen());
    EXPECT_TRUE(server.waitForEndOf(1));
    EXPECT_TRUE(server.commands().empty());
}

} // namespace
