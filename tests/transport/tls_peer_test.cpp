#include "tests/support/openssl_client.h"
#include "tests/support/scripted_server.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace {

using support::BeginTls;
using support::ClientOptions;
using support::ExpectLine;
using support::HandshakeFault;
using support::HoldSilent;
using support::OpensslClient;
using support::overTls;
using support::Script;
using support::ScriptedServer;
using support::Send;
using support::TlsIdentity;
using support::TlsOptions;
using support::TlsVersion;
using testing::ElementsAre;
using testing::HasSubstr;

TlsIdentity identity(const TlsOptions& options = {}) {
    return TlsIdentity(support::testRoot().issue(support::loopback()), options);
}

support::Conversation saying(const std::string& word, const TlsOptions& options = {}) {
    return overTls(identity(options), Script{Send{word}});
}

TEST(TlsPeer, SpeaksTlsFromTheFirstByte) {
    ScriptedServer server(
        overTls(identity(), Script{Send{"+OK ready\r\n"}, ExpectLine{}, Send{"+OK bye\r\n"}}));
    OpensslClient client(server.port(), {.serverName = "localhost"});
    ASSERT_TRUE(client.beginTls()) << client.failure();
    EXPECT_EQ(client.readLine(), "+OK ready\r\n");
    client.sendLine("QUIT");
    EXPECT_EQ(client.readAll(), "+OK bye\r\n");
    EXPECT_THAT(server.commands(), ElementsAre("QUIT"));
    EXPECT_EQ(server.bytesSent(), 20U) << "the text alone counts";
}

TEST(TlsPeer, BeginsTlsInTheMiddleOfAConversation) {
    ScriptedServer server(Script{Send{"+OK ready\r\n"}, ExpectLine{}, Send{"+OK begin TLS\r\n"},
                                 BeginTls{identity()}, ExpectLine{}, Send{"+OK bye\r\n"}});
    OpensslClient client(server.port());
    EXPECT_EQ(client.readLine(), "+OK ready\r\n");
    client.sendLine("STLS");
    EXPECT_EQ(client.readLine(), "+OK begin TLS\r\n");
    EXPECT_FALSE(server.tls(0).handshakeDone);
    ASSERT_TRUE(client.beginTls()) << client.failure();
    client.sendLine("QUIT");
    EXPECT_EQ(client.readLine(), "+OK bye\r\n");
    EXPECT_TRUE(server.tls(0).handshakeDone);
    EXPECT_THAT(server.commands(), ElementsAre("STLS", "QUIT"));
}

TEST(TlsPeer, CanSayMoreInClearBehindTheReplyThatInvitesTls) {
    ScriptedServer server(Script{Send{"+OK begin TLS\r\n+OK more\r\n"}, BeginTls{identity()}});
    OpensslClient client(server.port());
    EXPECT_EQ(client.readPiece(), "+OK begin TLS\r\n+OK more\r\n");
}

TEST(TlsPeer, TakesAHandshakeThatCameWhileItWasSilent) {
    ScriptedServer server(Script{Send{"+OK\r\n"}, HoldSilent{}, BeginTls{identity()}, Send{"+OK bye\r\n"}});
    OpensslClient client(server.port());
    EXPECT_EQ(client.readLine(), "+OK\r\n");
    server.release();
    ASSERT_TRUE(client.beginTls()) << client.failure();
    EXPECT_EQ(client.readAll(), "+OK bye\r\n");
}

TEST(TlsPeer, TellsWhatTheClientHasAskedFor) {
    for (const auto& [maximum, protocol] :
         {std::pair(TlsVersion::Tls12, "TLSv1.2"), std::pair(TlsVersion::Tls13, "TLSv1.3")}) {
        ScriptedServer server(saying("+OK\r\n", {.maximum = maximum}));
        for (const char* const name : {"", "localhost"}) {
            const std::size_t connection = server.connections();
            OpensslClient client(server.port(), {.serverName = name});
            ASSERT_TRUE(client.beginTls()) << client.failure();
            EXPECT_EQ(client.readAll(), "+OK\r\n");
            EXPECT_EQ(server.tls(connection).serverName, name);
            EXPECT_EQ(server.tls(connection).protocol, protocol);
            client.hangUp();
            EXPECT_TRUE(server.waitForEndOf(connection + 1));
        }
    }
}

TEST(TlsPeer, ResumesSessionsUnlessItIsToldNotTo) {
    for (const TlsVersion maximum : {TlsVersion::Tls12, TlsVersion::Tls13}) {
        for (const bool resumes : {true, false}) {
            ScriptedServer server(saying("+OK\r\n", {.maximum = maximum, .resumes = resumes}));
            OpensslClient first(server.port(), {.serverName = "localhost"});
            ASSERT_TRUE(first.beginTls()) << first.failure();
            EXPECT_EQ(first.readAll(), "+OK\r\n");
            first.hangUp();
            OpensslClient second(server.port(), {.serverName = "localhost"});
            ASSERT_TRUE(second.beginTls(first.session())) << second.failure();
            EXPECT_EQ(second.readAll(), "+OK\r\n");
            EXPECT_FALSE(server.tls(0).resumed);
            EXPECT_EQ(server.tls(1).resumed, resumes);
            EXPECT_EQ(server.tls(1).serverName, "localhost");
        }
    }
}

TEST(TlsPeer, CanSpeakOldProtocolsOnly) {
    for (const auto& [maximum, protocol] :
         {std::pair(TlsVersion::Tls10, "TLSv1"), std::pair(TlsVersion::Tls11, "TLSv1.1")}) {
        ScriptedServer server(saying("+OK\r\n", {.maximum = maximum}));
        OpensslClient careless(server.port(), {.takesAnything = true});
        ASSERT_TRUE(careless.beginTls()) << careless.failure();
        EXPECT_EQ(careless.readAll(), "+OK\r\n");
        EXPECT_EQ(server.tls(0).protocol, protocol);
        careless.hangUp();
        OpensslClient careful(server.port());
        EXPECT_FALSE(careful.beginTls());
        careful.hangUp();
        EXPECT_TRUE(server.waitForEndOf(2));
        EXPECT_FALSE(server.tls(1).handshakeDone);
    }
}

TEST(TlsPeer, SendsRecordsOfAnySize) {
    ScriptedServer server(saying("1234567", {.recordBytes = 3}));
    OpensslClient client(server.port());
    ASSERT_TRUE(client.beginTls()) << client.failure();
    EXPECT_EQ(client.readPiece(), "123");
    EXPECT_EQ(client.readPiece(), "456");
    EXPECT_EQ(client.readPiece(), "7");
}

TEST(TlsPeer, CutsAConversationAfterEveryByteOfItsText) {
    const std::string text = "+OK ready\r\n";
    ScriptedServer server(saying(text));
    for (std::size_t bytes = 0; bytes <= text.size(); ++bytes) {
        server.cutAfter(bytes);
        OpensslClient client(server.port());
        ASSERT_TRUE(client.beginTls()) << client.failure();
        EXPECT_EQ(client.readAll(), text.substr(0, bytes));
        EXPECT_TRUE(client.sawCloseNotify());
    }
}

TEST(TlsPeer, CanHangUpWithoutTellingTheEndOfItsText) {
    ScriptedServer server(saying("+OK\r\n", {.closeNotify = false}));
    OpensslClient client(server.port());
    ASSERT_TRUE(client.beginTls()) << client.failure();
    EXPECT_EQ(client.readAll(), "+OK\r\n");
    EXPECT_FALSE(client.sawCloseNotify());
}

TEST(TlsPeer, CanBreakOffInEachFlightOfTheHandshake) {
    using enum HandshakeFault::Kind;
    for (const HandshakeFault::Kind kind : {Close, Reset, Garbage}) {
        for (const std::size_t flight : {0U, 1U}) {
            for (const std::size_t bytes : {0U, 1U, 5U, 20U}) {
                ScriptedServer server(
                    saying("+OK\r\n",
                           {.maximum = TlsVersion::Tls12, .resumes = false, .fault = {kind, flight, bytes}}));
                OpensslClient client(server.port());
                EXPECT_FALSE(client.beginTls()) << flight << " " << bytes;
                client.hangUp();
                EXPECT_TRUE(server.waitForEndOf(1));
                EXPECT_EQ(server.bytesSent(), 0U);
            }
        }
    }
}

TEST(TlsPeer, ABreakBehindTheFirstFlightIsSeenLateWithTls13) {
    for (const HandshakeFault::Kind kind : {HandshakeFault::Kind::Close, HandshakeFault::Kind::Garbage}) {
        ScriptedServer server(saying("+OK\r\n", {.fault = {kind, 1, 0}}));
        OpensslClient client(server.port());
        ASSERT_TRUE(client.beginTls()) << client.failure();
        EXPECT_EQ(client.readAll(), "");
        EXPECT_FALSE(client.sawCloseNotify());
    }
}

TEST(TlsPeer, CanFallSilentInTheHandshakeUntilItIsReleased) {
    ScriptedServer server(saying("+OK\r\n", {.fault = {HandshakeFault::Kind::Silence, 0, 0}}));
    OpensslClient client(server.port());
    server.release();
    EXPECT_FALSE(client.beginTls());
}

TEST(TlsPeer, TellsWhyAClientBreaksOff) {
    const mailserver::Authority other("Another root");
    ScriptedServer server(saying("+OK\r\n"));
    OpensslClient client(server.port(), {.trustedPem = other.certificatePem(), .serverName = "localhost"});
    EXPECT_FALSE(client.beginTls());
    client.hangUp();
    EXPECT_TRUE(server.waitForEndOf(1));
    EXPECT_FALSE(server.tls(0).handshakeDone);
    EXPECT_EQ(server.tls(0).serverName, "localhost");
    EXPECT_THAT(server.tls(0).failure, HasSubstr("unknown ca"));
    EXPECT_EQ(server.commands().size(), 0U);
}

TEST(TlsPeer, WhoDoesNotSpeakTlsIsNotHeard) {
    ScriptedServer server(saying("+OK\r\n"));
    OpensslClient client(server.port());
    client.sendLine("CAPA");
    EXPECT_EQ(client.readAll().find("+OK"), std::string::npos);
    client.hangUp();
    EXPECT_TRUE(server.waitForEndOf(1));
    EXPECT_EQ(server.commands().size(), 0U);
    EXPECT_NE(server.tls(0).failure, "");
}

TEST(TlsPeer, RefusesAnIdentityThatIsNone) {
    mailserver::Certificate mixed = support::testRoot().issue(support::loopback());
    mixed.keyPem = support::testRoot().issue(support::loopback()).keyPem;
    EXPECT_THROW(TlsIdentity{mixed}, std::runtime_error);
    EXPECT_THROW(identity({.ciphers = "no such cipher"}), std::runtime_error);
}

TEST(TlsPeer, SendsAnIntermediateWhenItHasOne) {
    const mailserver::Certificate whole =
        support::testRoot().intermediate("Between").issue(support::loopback());
    mailserver::Certificate lacking = whole;
    lacking.intermediatesPem.clear();
    ScriptedServer server(std::vector<support::Conversation>{overTls(TlsIdentity(whole), Script{}),
                                                             overTls(TlsIdentity(lacking), Script{})});
    OpensslClient first(server.port());
    EXPECT_TRUE(first.beginTls()) << first.failure();
    EXPECT_EQ(first.readAll(), "");
    first.hangUp();
    OpensslClient second(server.port());
    EXPECT_FALSE(second.beginTls());
}

} // namespace
