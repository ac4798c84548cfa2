#include "tests/transport/connection_fixture.h"
#include "tests/transport/resolver.h"

#include <QTimer>

#include <string>

namespace {

using namespace std::chrono_literals;
using support::ExpectLine;
using support::HoldSilent;
using support::Script;
using support::ScriptedServer;
using support::Send;
using transport::Connection;
using transport::Outcome;

class ConnectionTest : public support::ConnectionFixture {
  protected:
    using ConnectionFixture::open;

    Outcome open(const char* host, std::uint16_t port) {
        return connection.open({QString::fromLatin1(host), port}, soon());
    }

    /** All bytes that come until the stream ends. */
    std::string takeAll() {
        std::string bytes;
        while (connection.waitForBytes(soon()) == Outcome::Done) {
            bytes += connection.takeBytes();
        }
        return bytes;
    }
};

TEST_F(ConnectionTest, IsNotOpenBeforeItIsOpened) {
    EXPECT_FALSE(connection.isOpen());
    connection.close();
    EXPECT_FALSE(connection.isOpen());
}

TEST_F(ConnectionTest, TellsWhyAServerCannotBeReached) {
    const support::RefusingPort refusing;
    EXPECT_EQ(open("127.0.0.1", refusing.port()), Outcome::Refused);
    EXPECT_EQ(open(support::kUnknownName, 110), Outcome::NameUnknown);
    EXPECT_EQ(open(support::kUnansweredName, 110), Outcome::NameUnknown);
    // A broadcast address has no route for a stream, whatever the machine's network looks like.
    EXPECT_EQ(open("127.255.255.255", 110), Outcome::Unreachable);
    EXPECT_FALSE(connection.isOpen());
}

TEST_F(ConnectionTest, TriesTheNextAddressOfANameWhenTheFirstIsDead) {
    // No server listens at this port on ::1, or there is no such address at all.
    ScriptedServer server(Script{Send{"hello"}});
    ASSERT_EQ(open(support::kNameWithTwoAddresses, server.port()), Outcome::Done);
    EXPECT_EQ(takeAll(), "hello");
}

TEST_F(ConnectionTest, TellsARefusalOnlyWhenNoAddressIsLeft) {
    const support::RefusingPort refusing;
    EXPECT_EQ(open(support::kNameWithTwoAddresses, refusing.port()), Outcome::Refused);
}

TEST_F(ConnectionTest, WaitsNoLongerThanItsDeadline) {
    ScriptedServer server(Script{HoldSilent{}});
    ASSERT_EQ(open(server), Outcome::Done);
    EXPECT_EQ(connection.waitForBytes(QDeadlineTimer(50ms)), Outcome::TimedOut);
    EXPECT_EQ(connection.waitForBytes(QDeadlineTimer(0ms)), Outcome::TimedOut);
    EXPECT_TRUE(connection.isOpen()) << "a time-out is the caller's affair";
}

TEST_F(ConnectionTest, BytesThatHaveComeCountAlsoPastTheDeadline) {
    ScriptedServer server(Script{Send{"a"}, HoldSilent{}});
    ASSERT_EQ(open(server), Outcome::Done);
    ASSERT_EQ(connection.waitForBytes(soon()), Outcome::Done);
    EXPECT_EQ(connection.waitForBytes(QDeadlineTimer(0ms)), Outcome::Done);
}

TEST_F(ConnectionTest, TimersGoOnDuringAWait) {
    ScriptedServer server(Script{HoldSilent{}, Send{"a"}, HoldSilent{}});
    ASSERT_EQ(open(server), Outcome::Done);
    QTimer::singleShot(0, [&server] { server.release(); });
    EXPECT_EQ(connection.waitForBytes(soon()), Outcome::Done) << "only the timer made the server speak";
}

TEST_F(ConnectionTest, GivesAllBytesAlsoOfAServerThatHasGone) {
    const std::string bytes(3U << 20U, 'x'); // more than the read buffer holds
    ScriptedServer server(Script{Send{bytes}});
    ASSERT_EQ(open(server), Outcome::Done);
    EXPECT_EQ(takeAll(), bytes);
    EXPECT_FALSE(connection.isOpen());
    EXPECT_EQ(connection.waitForBytes(soon()), Outcome::Lost);
}

TEST_F(ConnectionTest, TakesNoMoreAtOnceThanItSays) {
    ScriptedServer server(Script{Send{std::string(1U << 20U, 'x')}});
    ASSERT_EQ(open(server), Outcome::Done);
    std::size_t taken = 0;
    while (connection.waitForBytes(soon()) == Outcome::Done) {
        const std::string bytes = connection.takeBytes();
        EXPECT_LE(bytes.size(), static_cast<std::size_t>(Connection::kReadBytes));
        taken += bytes.size();
    }
    EXPECT_EQ(taken, 1U << 20U);
}

TEST_F(ConnectionTest, WhatWasSentArrivesBeforeAnOrderlyEnd) {
    ScriptedServer server(Script{ExpectLine{}, ExpectLine{}});
    ASSERT_EQ(open(server), Outcome::Done);
    connection.send("first\r\n");
    EXPECT_EQ(connection.waitUntilSent(soon()), Outcome::Done);
    connection.send("second\r\n");
    connection.close();
    EXPECT_FALSE(connection.isOpen());
    EXPECT_TRUE(server.waitForEndOf(1));
    EXPECT_EQ(server.commands(), (std::vector<std::string>{"first", "second"}));
}

TEST_F(ConnectionTest, MayBeOpenedAgain) {
    ScriptedServer server(Script{Send{"hello"}});
    for (int turn = 0; turn < 3; ++turn) {
        ASSERT_EQ(open(server), Outcome::Done);
        EXPECT_EQ(takeAll(), "hello");
        connection.close();
    }
    EXPECT_EQ(server.connections(), 3U);
}

TEST_F(ConnectionTest, AResetEndsTheStream) {
    ScriptedServer server(Script{ExpectLine{}, support::Reset{}});
    ASSERT_EQ(open(server), Outcome::Done);
    connection.send("line\r\n");
    EXPECT_EQ(connection.waitForBytes(soon()), Outcome::Lost);
    EXPECT_FALSE(connection.isOpen());
}

} // namespace
