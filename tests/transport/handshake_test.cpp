// Handshakes that break. Whatever the server does in one, the connection is lost and the number is 20325.

#include "tests/transport/encryption_fixture.h"
#include "tests/transport/resolver.h"

#include <QTimer>

#include <string>
#include <vector>

namespace {

using namespace std::chrono_literals;
using support::HandshakeFault;
using support::HoldSilent;
using support::kEncrypting;
using support::overTls;
using support::Script;
using support::ScriptedServer;
using support::Send;
using support::TlsOptions;
using support::TlsVersion;
using transport::Outcome;
using transport::Security;

std::string nameOf(Security security) {
    switch (security) {
    case Security::FromTheStart:
        return "Tls";
    case Security::Demanded:
        return "StartTls";
    case Security::WhenOffered:
        return "Bare";
    case Security::Never:
        break;
    }
    return "Plain";
}

class HandshakeTest : public support::EncryptionFixture, public testing::WithParamInterface<Security> {
  protected:
    void expectToFail(ScriptedServer& server, QDeadlineTimer deadline = soon()) {
        EXPECT_EQ(openEncrypted(server, GetParam(), "127.0.0.1", deadline), Outcome::HandshakeFailed);
        EXPECT_FALSE(connection.isOpen());
        EXPECT_FALSE(connection.hasBytes());
        EXPECT_EQ(connection.protection(), transport::Protection());
        ASSERT_TRUE(server.waitForEndOf(1));
        EXPECT_EQ(server.connections(), 1U);
    }
};

TEST_P(HandshakeTest, FailsWhereverItIsBrokenOff) {
    using enum HandshakeFault::Kind;
    for (const HandshakeFault::Kind kind : {Close, Reset, Garbage}) {
        for (const std::size_t flight : {0U, 1U}) {
            for (const std::size_t bytes : {0U, 1U, 5U, 20U}) {
                SCOPED_TRACE(testing::Message() << static_cast<int>(kind) << ' ' << flight << ' ' << bytes);
                ScriptedServer server(overTls(
                    valid({.maximum = TlsVersion::Tls12, .resumes = false, .fault = {kind, flight, bytes}}),
                    Script{Send{"hello"}}));
                expectToFail(server);
            }
        }
    }
}

TEST_P(HandshakeTest, FailsWhereTheServersFirstFlightIsCut) {
    using enum HandshakeFault::Kind;
    for (const HandshakeFault::Kind kind : {Close, Reset, Garbage}) {
        for (std::size_t bytes = 0; bytes < 200; bytes += 9) {
            SCOPED_TRACE(testing::Message() << static_cast<int>(kind) << ' ' << bytes);
            ScriptedServer server(overTls(valid({.fault = {kind, 0, bytes}}), Script{Send{"hello"}}));
            expectToFail(server);
        }
    }
}

TEST_P(HandshakeTest, FailsAtItsDeadlineWhenTheServerFallsSilent) {
    for (const std::size_t flight : {0U, 1U}) {
        for (const std::size_t bytes : {0U, 5U}) {
            ScriptedServer server(overTls(valid({.maximum = TlsVersion::Tls12,
                                                 .resumes = false,
                                                 .fault = {HandshakeFault::Kind::Silence, flight, bytes}}),
                                          Script{Send{"hello"}}));
            expectToFail(server, QDeadlineTimer(150ms));
        }
    }
}

TEST_P(HandshakeTest, FailsWithAServerThatDoesNotSpeakTls) {
    const std::vector<support::Conversation> conversations{
        Script{}, Script{support::Reset{}}, Script{Send{"+OK ready\r\n"}, HoldSilent{}},
        Script{Send{std::string(100'000, 'x')}, HoldSilent{}}, Script{Send{"\x15\x03\x01"}}};
    for (const support::Conversation& conversation : conversations) {
        // The client's handshake comes first: a connection that is reset before its client has seen it stand
        // is made a second time.
        ScriptedServer server([conversation](support::Peer& peer) {
            peer.awaitBytes();
            conversation(peer);
        });
        expectToFail(server);
    }
}

TEST_P(HandshakeTest, FailsWithoutAWordFromTheServer) {
    ScriptedServer server(Script{HoldSilent{}});
    expectToFail(server, QDeadlineTimer(150ms));
}

TEST_P(HandshakeTest, FailsWithVersionsAndCiphersOfOld) {
    const std::vector<TlsOptions> old{
        {.maximum = TlsVersion::Tls10},
        {.maximum = TlsVersion::Tls11},
        {.maximum = TlsVersion::Tls12, .ciphers = "ECDHE-ECDSA-NULL-SHA:@SECLEVEL=0"},
        {.maximum = TlsVersion::Tls12, .ciphers = "AECDH-AES128-SHA:@SECLEVEL=0"}};
    for (const TlsOptions& options : old) {
        ScriptedServer server(overTls(valid(options), Script{Send{"hello"}}));
        expectToFail(server);
        EXPECT_FALSE(server.tls(0).handshakeDone);
        EXPECT_NE(server.tls(0).failure, "");
    }
}

TEST_P(HandshakeTest, ABreakBehindTheLastFlightOfTls13LosesTheConnection) {
    using enum HandshakeFault::Kind;
    for (const HandshakeFault::Kind kind : {Close, Reset, Garbage}) {
        ScriptedServer server(overTls(valid({.fault = {kind, 1, 0}}), Script{Send{"hello"}}));
        // The client is through before the server's last flight, but may see the break at once.
        const Outcome outcome = openEncrypted(server, GetParam());
        ASSERT_TRUE(outcome == Outcome::Done || outcome == Outcome::HandshakeFailed);
        EXPECT_EQ(takeAll(), "");
        EXPECT_FALSE(connection.isOpen());
    }
}

TEST_P(HandshakeTest, TakesAnyPauseBeforeItsDeadline) {
    ScriptedServer server([identity = valid()](support::Peer& peer) {
        peer.holdSilent();
        peer.beginTls(identity);
        peer.send("hello");
    });
    QTimer::singleShot(50ms, [&server] { server.release(); });
    ASSERT_EQ(openEncrypted(server, GetParam()), Outcome::Done);
    EXPECT_EQ(takeAll(), "hello");
}

INSTANTIATE_TEST_SUITE_P(Spellings, HandshakeTest, testing::ValuesIn(kEncrypting),
                         [](const auto& test) { return nameOf(test.param); });

class NoHandshake : public support::EncryptionFixture {};

TEST_F(NoHandshake, IsReachedWithoutAServer) {
    const support::RefusingPort refusing;
    const auto openAt = [this](const char* host, std::uint16_t port) {
        return connection.open({QString::fromLatin1(host), port, Security::FromTheStart}, soon());
    };
    EXPECT_EQ(openAt("127.0.0.1", refusing.port()), Outcome::Refused);
    EXPECT_EQ(openAt(support::kUnknownName, 995), Outcome::NameUnknown);
    EXPECT_EQ(openAt(support::kUnansweredName, 995), Outcome::NameUnknown);
    EXPECT_EQ(openAt("127.255.255.255", 995), Outcome::Unreachable);
    EXPECT_FALSE(connection.isOpen());
}

TEST_F(NoHandshake, IsBegunTwiceOrWithoutAConnection) {
    EXPECT_EQ(connection.encrypt(soon()), Outcome::HandshakeFailed);
    ScriptedServer server(overTls(valid(), Script{HoldSilent{}}));
    ASSERT_EQ(openEncrypted(server, Security::Demanded), Outcome::Done);
    EXPECT_EQ(connection.encrypt(soon()), Outcome::HandshakeFailed);
    EXPECT_FALSE(connection.isOpen());
}

TEST_F(NoHandshake, FollowsBytesThatCameInClear) {
    ScriptedServer server(Script{Send{"+OK more\r\n"}, HoldSilent{}});
    ASSERT_EQ(open(server), Outcome::Done);
    ASSERT_EQ(connection.waitForBytes(soon()), Outcome::Done);
    EXPECT_EQ(connection.encrypt(soon()), Outcome::HandshakeFailed);
    EXPECT_FALSE(connection.isOpen());
    EXPECT_FALSE(connection.hasBytes()) << "nothing of it counts";
    ASSERT_TRUE(server.waitForEndOf(1));
    EXPECT_EQ(server.commands().size(), 0U);
}

} // namespace
