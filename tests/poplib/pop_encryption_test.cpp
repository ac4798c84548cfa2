// STLS and what may go wrong with it, and connections that are encrypted from the first byte.

#include "tests/poplib/encrypted_pop_fixture.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace {

using namespace std::chrono_literals;
using support::overTls;
using support::Peer;
using support::saying;
using support::ScriptedServer;
using support::TlsIdentity;
using support::validIdentity;
using testing::ElementsAre;
using testing::IsEmpty;
using transport::Protection;
namespace errors = platform::errors;

const Protection kProven{QStringLiteral("TLS 1.3"), true};
const Protection kUnproven{QStringLiteral("TLS 1.3"), false};

class PopEncryption : public support::EncryptedPopTest {};

TEST_F(PopEncryption, IsBegunBeforeAnythingElseIsSaid) {
    inviteToTls(validIdentity());
    for (const char* const scheme : kUpgrading) {
        ScriptedServer server(mailbox);
        ASSERT_EQ(logOn(server, scheme), 0);
        EXPECT_EQ(logOff(), 0);
        EXPECT_THAT(server.commands(),
                    ElementsAre("CAPA", "STLS", "CAPA", "USER bob", "PASS secret", "STAT", "QUIT"));
        EXPECT_EQ(server.connections(), 1U);
        EXPECT_TRUE(server.tls(0).handshakeDone);
    }
    EXPECT_THAT(protections, ElementsAre(kProven, kUnproven));
}

TEST_F(PopEncryption, MayStandFromTheFirstByte) {
    ScriptedServer server(overTls(validIdentity(), mailbox));
    ASSERT_EQ(logOn(server, "tls://"), 0);
    EXPECT_EQ(logOff(), 0);
    EXPECT_THAT(server.commands(), ElementsAre("CAPA", "USER bob", "PASS secret", "STAT", "QUIT"))
        << "what is encrypted is not encrypted again";
    EXPECT_THAT(protections, ElementsAre(kProven));
}

TEST_F(PopEncryption, IsNotBegunWhereItIsForbidden) {
    ScriptedServer server(mailbox);
    ASSERT_EQ(logOn(server, "plain://"), 0);
    EXPECT_THAT(server.commands(), ElementsAre("CAPA", "USER bob", "PASS secret", "STAT"));
    EXPECT_THAT(protections, ElementsAre(Protection()));
}

TEST_F(PopEncryption, TellsTheCertificatesFaultsApart) {
    for (const auto& [name, certificate, error] : support::faultyCertificates()) {
        SCOPED_TRACE(name);
        const TlsIdentity identity(certificate);
        inviteToTls(identity);
        ScriptedServer fromTheStart(overTls(identity, mailbox));
        EXPECT_EQ(logOn(fromTheStart, "tls://"), error);
        expectOnlyClearCommands(fromTheStart, {});
        ScriptedServer upgrading(mailbox);
        EXPECT_EQ(logOn(upgrading, "starttls://"), error);
        expectOnlyClearCommands(upgrading, {"CAPA", "STLS"});
        EXPECT_THAT(protections, IsEmpty());
        EXPECT_EQ(logOn(upgrading, ""), 0) << "this spelling does not look at it";
        EXPECT_EQ(logOff(), 0);
        EXPECT_THAT(std::exchange(protections, {}), ElementsAre(kUnproven));
    }
}

TEST_F(PopEncryption, AServerInClearIsNoneThatIsEncryptedFromTheStart) {
    ScriptedServer server(mailbox);
    pop.setTimeouts({200ms, 200ms});
    EXPECT_EQ(logOn(server, "tls://"), errors::EncryptionFailed);
    expectOnlyClearCommands(server, {});
    const support::RefusingPort refusing;
    pop.setMailServer(QStringLiteral("tls://") + refusing.address());
    EXPECT_EQ(logOn(), errors::ConnectionRefused);
    pop.setMailServer(QStringLiteral("tls://no-such-host.invalid"));
    EXPECT_EQ(logOn(), errors::HostNotFound);
}

TEST_F(PopEncryption, ThatIsOfferedAndRefusedIsDoneWithoutOnlyWhereNothingWasPromised) {
    for (const char* const answer : {"-ERR no\r\n", "-ERR [SYS/TEMP] no\r\n", "-ERR\r\n"}) {
        mailbox.answer("STLS", answer);
        ScriptedServer strict(mailbox);
        EXPECT_EQ(logOn(strict, "starttls://"), errors::EncryptionNotOffered);
        expectOnlyClearCommands(strict, {"CAPA", "STLS"});
        EXPECT_THAT(protections, IsEmpty());
        ScriptedServer bare(mailbox);
        EXPECT_EQ(logOn(bare, ""), 0);
        EXPECT_EQ(logOff(), 0);
        EXPECT_THAT(bare.commands(0), ElementsAre("CAPA", "STLS"));
        EXPECT_THAT(bare.commands(1), ElementsAre("CAPA", "USER bob", "PASS secret", "STAT", "QUIT"));
        EXPECT_THAT(std::exchange(protections, {}), ElementsAre(Protection()));
    }
}

TEST_F(PopEncryption, ThatIsNotOfferedIsMissedWhereItWasPromised) {
    for (const auto& [capa, bareLogsOn] :
         {std::pair("+OK\r\nUSER\r\n.\r\n", true), std::pair("+OK\r\n.\r\n", true),
          std::pair("+OK\r\nXSTLS\r\nSTLSX\r\nSASL STLS\r\n.\r\n", true),
          std::pair("-ERR what?\r\n", true)}) {
        mailbox.answer("CAPA", capa);
        ScriptedServer server(mailbox);
        EXPECT_EQ(logOn(server, "starttls://"), errors::EncryptionNotOffered) << capa;
        expectOnlyClearCommands(server, {"CAPA"});
        EXPECT_EQ(logOn(server, ""), bareLogsOn ? 0 : errors::MailServerTrouble);
        EXPECT_EQ(logOff(), 0);
    }
    for (const support::Conversation& capa : {saying("what?\r\n"), saying("+OK\r\nST", &Peer::close)}) {
        mailbox.on("CAPA", capa);
        ScriptedServer server(mailbox);
        EXPECT_EQ(logOn(server, "starttls://"), errors::EncryptionNotOffered);
        expectOnlyClearCommands(server, {"CAPA"});
    }
}

TEST_F(PopEncryption, IsOfferedInAnyCaseAndPlace) {
    inviteToTls(validIdentity());
    for (const char* const capa : {"+OK\r\nstls\r\n.\r\n", "+OK\r\nUSER\r\nStls \r\n.\r\n"}) {
        mailbox.answer("CAPA", capa);
        ScriptedServer server(mailbox);
        EXPECT_EQ(logOn(server, "starttls://"), 0) << capa;
        EXPECT_EQ(logOff(), 0);
        EXPECT_TRUE(server.tls(0).handshakeDone);
    }
}

TEST_F(PopEncryption, MakesTheServerForgetWhatItSaidInClear) {
    struct Lists {
        const char* inClear;
        const char* later;
        std::vector<std::string> commands;
    };

    const std::vector<Lists> table{
        {"+OK\r\nSTLS\r\nSASL CRAM-MD5 PLAIN\r\nUTF8\r\n.\r\n",
         "+OK\r\nUSER\r\n.\r\n",
         {"CAPA", "STLS", "CAPA", "USER bob", "PASS secret", "STAT"}},
        {"+OK\r\nSTLS\r\nUSER\r\nSASL SCRAM-SHA-256\r\n.\r\n",
         "+OK\r\nSASL PLAIN\r\n.\r\n",
         {"CAPA", "STLS", "CAPA", "AUTH PLAIN AGJvYgBzZWNyZXQ=", "STAT"}},
        {"+OK\r\nSTLS\r\n.\r\n",
         "+OK\r\nUSER\r\nUTF8\r\n.\r\n",
         {"CAPA", "STLS", "CAPA", "UTF8", "USER bob", "PASS secret", "STAT"}},
        {"+OK\r\nSTLS\r\nSASL PLAIN\r\n.\r\n",
         "-ERR no\r\n",
         {"CAPA", "STLS", "CAPA", "USER bob", "PASS secret", "STAT"}},
        {"+OK <1.2@mail>\r\nSTLS\r\n.\r\n",
         "+OK\r\n.\r\n",
         {"CAPA", "STLS", "CAPA", "USER bob", "PASS secret", "STAT"}},
    };
    mailbox.answer("GREETING", "+OK ready <1896.697170952@mail.example.org>\r\n");
    mailbox.answer("AUTH", "+OK\r\n").answer("UTF8", "+OK\r\n").answer("STAT", "+OK 0 0\r\n");
    for (const char* const scheme : kUpgrading) {
        for (const Lists& lists : table) {
            mailbox.answer("CAPA", lists.inClear);
            mailbox.on("STLS", [this, later = lists.later, identity = validIdentity()](Peer& peer) {
                peer.send("+OK begin\r\n");
                peer.beginTls(identity);
                mailbox.answer("CAPA", later);
            });
            ScriptedServer server(mailbox);
            ASSERT_EQ(logOn(server, scheme), 0);
            EXPECT_EQ(server.commands(), lists.commands);
            EXPECT_EQ(logOff(), 0);
        }
    }
}

} // namespace
