// What an encrypted connection is once it is open: as good a byte stream as one in clear.

#include "tests/support/heartbeat.h"
#include "tests/support/sanitizer.h"
#include "tests/support/waiting.h"
#include "tests/transport/encryption_fixture.h"

#include <QElapsedTimer>

#include <algorithm>
#include <string>
#include <vector>

namespace {

using namespace std::chrono_literals;
using support::ExpectLine;
using support::HoldSilent;
using support::kEncrypting;
using support::overTls;
using support::Peer;
using support::Script;
using support::ScriptedServer;
using support::Send;
using support::TlsIdentity;
using support::TlsVersion;
using transport::Outcome;
using transport::Protection;
using transport::Security;

class Encryption : public support::EncryptionFixture {};

TEST_F(Encryption, TellsItsVersionAndWhetherTheServerIsProven) {
    for (const auto& [version, name] : {std::pair(TlsVersion::Tls12, QStringLiteral("TLS 1.2")),
                                        std::pair(TlsVersion::Tls13, QStringLiteral("TLS 1.3"))}) {
        ScriptedServer server(overTls(valid({.maximum = version}), Script{HoldSilent{}}));
        for (const Security security : kEncrypting) {
            ASSERT_EQ(openEncrypted(server, security), Outcome::Done);
            EXPECT_EQ(connection.protection(), (Protection{name, transport::mustBeProven(security)}));
            EXPECT_TRUE(connection.isToThisComputer());
            EXPECT_EQ(connection.localAddress(), QStringLiteral("127.0.0.1"));
            connection.close();
        }
    }
}

TEST_F(Encryption, IsForgottenByAConnectionInClear) {
    ScriptedServer server(
        std::vector<support::Conversation>{overTls(valid(), Script{Send{"hello"}}), Script{Send{"hello"}}});
    ASSERT_EQ(openEncrypted(server, Security::FromTheStart), Outcome::Done);
    connection.abort();
    ASSERT_EQ(open(server), Outcome::Done);
    EXPECT_EQ(connection.protection(), Protection());
    EXPECT_EQ(takeAll(), "hello");
}

TEST_F(Encryption, CarriesWhatIsSaidBothWays) {
    for (const Security security : kEncrypting) {
        ScriptedServer server(
            overTls(valid(), Script{Send{"one\r\n"}, ExpectLine{}, Send{"two\r\n"}, ExpectLine{}}));
        ASSERT_EQ(openEncrypted(server, security), Outcome::Done);
        ASSERT_EQ(connection.waitForBytes(soon()), Outcome::Done);
        EXPECT_EQ(connection.takeBytes(), "one\r\n");
        connection.send("first\r\n");
        ASSERT_EQ(connection.waitForBytes(soon()), Outcome::Done);
        EXPECT_EQ(connection.takeBytes(), "two\r\n");
        connection.send("second\r\n");
        EXPECT_EQ(connection.waitUntilSent(soon()), Outcome::Done);
        EXPECT_EQ(connection.unsentBytes(), 0);
        connection.send("third\r\n");
        connection.close();
        ASSERT_TRUE(server.waitForEndOf(1));
        EXPECT_EQ(server.commands(), (std::vector<std::string>{"first", "second", "third"}));
    }
}

TEST_F(Encryption, GivesAllBytesAlsoOfAServerThatHasGone) {
    // The read buffer holds a part of the last one only.
    for (const std::size_t size : {1U, 100'000U, 300'000U, 600'000U, 3'000'000U}) {
        const std::string bytes(size, 'x');
        for (const bool closeNotify : {true, false}) {
            ScriptedServer server(overTls(valid({.closeNotify = closeNotify}), Script{Send{bytes}}));
            ASSERT_EQ(openEncrypted(server, Security::FromTheStart), Outcome::Done);
            EXPECT_EQ(takeAll().size(), bytes.size());
            EXPECT_FALSE(connection.isOpen());
            EXPECT_EQ(connection.waitForBytes(soon()), Outcome::Lost);
        }
    }
}

TEST_F(Encryption, TakesRecordsOfOneByte) {
    std::string text;
    while (text.size() < 2000) {
        text += std::to_string(text.size());
    }
    ScriptedServer server(overTls(valid({.recordBytes = 1}), Script{Send{text}}));
    for (const Security security : kEncrypting) {
        ASSERT_EQ(openEncrypted(server, security), Outcome::Done);
        EXPECT_EQ(takeAll(), text);
    }
}

TEST_F(Encryption, GivesAllBytesOfAServerThatHasGoneAlsoToWhoComesLate) {
    for (const std::size_t size : {1U, 100'000U, 300'000U, 600'000U}) {
        ScriptedServer server(overTls(valid({.closeNotify = false}), Script{Send{std::string(size, 'x')}}));
        ASSERT_EQ(openEncrypted(server, Security::Demanded), Outcome::Done);
        // Everything that goes into the buffers has come by then.
        support::eventsRunUntil([&server, size] { return server.bytesSent() == size; });
        QElapsedTimer clock;
        clock.start();
        support::eventsRunUntil([&clock] { return clock.elapsed() > 20; });
        EXPECT_EQ(takeAll().size(), size);
        EXPECT_FALSE(connection.isOpen());
    }
}

TEST_F(Encryption, ALostConnectionHasNotSentEverything) {
    ScriptedServer server(overTls(valid(), Script{ExpectLine{}, support::Reset{}}));
    ASSERT_EQ(openEncrypted(server, Security::FromTheStart), Outcome::Done);
    std::string bytes = "line\r\n";
    bytes.resize(20'000'000, 'x');
    connection.enqueue(bytes);
    EXPECT_EQ(connection.waitUntilSentOrAnswered(soon()), Outcome::Lost);
    EXPECT_FALSE(connection.isOpen());
}

TEST_F(Encryption, WhatHasNotLeftWhenItIsAbortedNeverLeaves) {
    ScriptedServer server(overTls(valid(), Script{ExpectLine{}}));
    ASSERT_EQ(openEncrypted(server, Security::Demanded), Outcome::Done);
    connection.enqueue("line\r\n");
    connection.abort();
    EXPECT_FALSE(connection.isOpen());
    ASSERT_TRUE(server.waitForEndOf(1));
    EXPECT_TRUE(server.commands().empty());
}

TEST_F(Encryption, GarbageInTheMiddleEndsIt) {
    ScriptedServer server(overTls(valid(), [](Peer& peer) {
        peer.send("+OK\r\n");
        peer.sendInClear("+OK this is not encrypted\r\n");
        peer.holdSilent();
    }));
    ASSERT_EQ(openEncrypted(server, Security::FromTheStart), Outcome::Done);
    EXPECT_EQ(takeAll(), "+OK\r\n");
    EXPECT_FALSE(connection.isOpen());
}

constexpr std::size_t kManyBytes = support::kSanitized ? 2'500'000 : 25'000'000;
const std::string kLine = std::string(998, 'x') + "\r\n";

TEST_F(Encryption, CarriesMegabytesBothWaysWhileTimersFire) {
    ScriptedServer server(overTls(valid(), [](Peer& peer) {
        std::size_t left = kManyBytes;
        for (; left > 0; left -= std::min(left, kLine.size() * 1000)) {
            peer.send(std::string(std::min(left, kLine.size() * 1000), 'x'));
        }
        for (std::size_t heard = 0; heard < kManyBytes; heard += kLine.size()) {
            peer.readLine();
        }
        peer.send("done");
    }));
    ASSERT_EQ(openEncrypted(server, Security::FromTheStart), Outcome::Done);
    support::Heartbeat heartbeat;
    std::size_t taken = 0;
    while (taken < kManyBytes && connection.waitForBytes(soon()) == Outcome::Done) {
        taken += connection.takeBytes().size();
    }
    ASSERT_EQ(taken, kManyBytes);
    const int beatsWhileTaking = heartbeat.beats();
    std::string piece;
    while (piece.size() < 50 * kLine.size()) {
        piece += kLine;
    }
    for (std::size_t sent = 0; sent < kManyBytes; sent += piece.size()) {
        connection.enqueue(piece);
        ASSERT_EQ(connection.waitUntilSentOrAnswered(soon()), Outcome::Done);
        ASSERT_FALSE(connection.hasBytes()) << "nothing was to be said before the end";
    }
    EXPECT_EQ(takeAll(), "done");
    EXPECT_GT(beatsWhileTaking, 0);
    EXPECT_GT(heartbeat.beats(), beatsWhileTaking);
    EXPECT_LT(heartbeat.longestPause(), 1000);
}

TEST_F(Encryption, BothSidesMayTalkAtOnce) {
    constexpr std::size_t most = support::kSanitized ? 500'000 : 5'000'000;
    // The server says everything before it hears anything; a client that did the same would wait for ever.
    ScriptedServer server(overTls(valid(), [](Peer& peer) {
        peer.send(std::string(most, 'x'));
        for (std::size_t heard = 0; heard < most; heard += kLine.size()) {
            peer.readLine();
        }
        peer.send("done");
    }));
    ASSERT_EQ(openEncrypted(server, Security::FromTheStart), Outcome::Done);
    std::string bytes;
    while (bytes.size() < most) {
        bytes += kLine;
    }
    connection.enqueue(bytes);
    const std::string taken = takeAll();
    EXPECT_EQ(taken.size(), most + 4);
    EXPECT_TRUE(taken.ends_with("xdone"));
}

} // namespace
