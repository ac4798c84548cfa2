// STARTTLS and what may go wrong with it, and connections that are encrypted from the first byte.

#include "tests/smtplib/encrypted_smtp_fixture.h"

#include <gmock/gmock.h>

#include <string>
#include <utility>
#include <vector>

namespace {

using namespace std::chrono_literals;
using support::overTls;
using support::Peer;
using support::ScriptedServer;
using support::TlsIdentity;
using support::validIdentity;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using transport::Protection;
namespace errors = platform::errors;

const Protection kProven{QStringLiteral("TLS 1.3"), true};
const Protection kUnproven{QStringLiteral("TLS 1.3"), false};

class SmtpEncryption : public support::EncryptedSmtpTest {};

TEST_F(SmtpEncryption, IsBegunBeforeAnythingElseIsSaid) {
    inviteToTls(validIdentity());
    for (const char* const scheme : kUpgrading) {
        ScriptedServer server(mailbox);
        ASSERT_EQ(send(server, scheme), 0);
        std::vector<std::string> keywords = server.keywords();
        ASSERT_GE(keywords.size(), 4U);
        keywords.resize(4);
        EXPECT_THAT(keywords, ElementsAre("EHLO", "STARTTLS", "EHLO", "MAIL"));
        EXPECT_EQ(server.connections(), 1U);
        EXPECT_TRUE(server.tls(0).handshakeDone);
    }
    EXPECT_THAT(mailbox.messages(), SizeIs(2));
    EXPECT_THAT(protections, ElementsAre(kProven, kUnproven));
}

TEST_F(SmtpEncryption, MayStandFromTheFirstByte) {
    ScriptedServer server(overTls(validIdentity(), mailbox));
    ASSERT_EQ(send(server, "tls://"), 0);
    std::vector<std::string> keywords = server.keywords();
    ASSERT_GE(keywords.size(), 2U);
    keywords.resize(2);
    EXPECT_THAT(keywords, ElementsAre("EHLO", "MAIL")) << "what is encrypted is not encrypted again";
    EXPECT_THAT(mailbox.messages(), SizeIs(1));
    EXPECT_THAT(protections, ElementsAre(kProven));
}

TEST_F(SmtpEncryption, IsNotBegunWhereItIsForbidden) {
    ScriptedServer server(mailbox);
    ASSERT_EQ(send(server, "plain://"), 0);
    EXPECT_EQ(server.keywords().at(1), "MAIL");
    EXPECT_THAT(protections, ElementsAre(Protection()));
}

TEST_F(SmtpEncryption, TellsTheCertificatesFaultsApart) {
    for (const auto& [name, certificate, error] : support::faultyCertificates()) {
        SCOPED_TRACE(name);
        const TlsIdentity identity(certificate);
        inviteToTls(identity);
        ScriptedServer fromTheStart(overTls(identity, mailbox));
        EXPECT_EQ(send(fromTheStart, "tls://"), error);
        expectOnlyClearCommands(fromTheStart, {});
        ScriptedServer upgrading(mailbox);
        EXPECT_EQ(send(upgrading, "starttls://"), error);
        expectOnlyClearCommands(upgrading, {"EHLO", "STARTTLS"});
        EXPECT_THAT(protections, IsEmpty());
        EXPECT_EQ(send(upgrading, ""), 0) << "this spelling does not look at it";
        EXPECT_THAT(std::exchange(protections, {}), ElementsAre(kUnproven));
    }
}

TEST_F(SmtpEncryption, AServerInClearIsNoneThatIsEncryptedFromTheStart) {
    ScriptedServer server(mailbox);
    waitNoLongerThan(200ms);
    EXPECT_EQ(send(server, "tls://"), errors::EncryptionFailed);
    expectOnlyClearCommands(server, {});
    const support::RefusingPort refusing;
    smtp.setHost(QStringLiteral("tls://") + refusing.address());
    EXPECT_EQ(open(), errors::ConnectionRefused);
    smtp.setHost(QStringLiteral("tls://no-such-host.invalid"));
    EXPECT_EQ(open(), errors::HostNotFound);
}

TEST_F(SmtpEncryption, ThatIsOfferedAndRefusedIsDoneWithoutOnlyWhereNothingWasPromised) {
    for (const char* const answer : {"454 not now\r\n", "502 what?\r\n", "501 no\r\n", "421 not now\r\n"}) {
        SCOPED_TRACE(answer);
        mailbox.answer("STARTTLS", answer);
        ScriptedServer strict(mailbox);
        EXPECT_EQ(send(strict, "starttls://"), errors::EncryptionNotOffered);
        expectOnlyClearCommands(strict, {"EHLO", "STARTTLS"});
        EXPECT_THAT(protections, IsEmpty());
        EXPECT_THAT(mailbox.messages(), IsEmpty());
    }
    for (const char* const answer : {"454 not now\r\n", "502 what?\r\n", "501 no\r\n", "421 not now\r\n"}) {
        SCOPED_TRACE(answer);
        mailbox.answer("STARTTLS", answer);
        ScriptedServer bare(mailbox);
        EXPECT_EQ(send(bare, ""), 0);
        EXPECT_EQ(bare.connections(), 2U);
        EXPECT_EQ(bare.commands(0).size(), 2U) << "nothing behind EHLO and STARTTLS";
        EXPECT_TRUE(bare.commands(1).at(1).starts_with("MAIL "));
        EXPECT_THAT(std::exchange(protections, {}), ElementsAre(Protection()));
    }
    EXPECT_THAT(mailbox.messages(), SizeIs(4));
}

TEST_F(SmtpEncryption, ThatIsNotOfferedIsMissedWhereItWasPromised) {
    for (const char* const hello : {"250 mail\r\n", "250-mail\r\n250 SIZE\r\n", "250 STARTTLS\r\n",
                                    "250-mail\r\n250-XSTARTTLS\r\n250 AUTH STARTTLS\r\n", "502 what?\r\n"}) {
        SCOPED_TRACE(hello);
        mailbox.answer("EHLO", hello);
        ScriptedServer server(mailbox);
        EXPECT_EQ(send(server, "starttls://"), errors::EncryptionNotOffered);
        expectOnlyClearCommands(server, {"EHLO"});
    }
    EXPECT_THAT(mailbox.messages(), IsEmpty());
}

TEST_F(SmtpEncryption, MakesTheServerForgetWhatItSaidInClear) {
    struct Lists {
        const char* inClear;
        const char* later;
        /** What follows the second EHLO. */
        const char* command;
        int error;
    };

    const std::vector<Lists> table{
        {"250-mail\r\n250-STARTTLS\r\n250-SIZE 1\r\n250 AUTH PLAIN\r\n", "250 mail\r\n",
         "MAIL FROM:<bob@example.org>", 0},
        {"250-mail\r\n250-STARTTLS\r\n250 AUTH CRAM-MD5\r\n", "250-mail\r\n250 AUTH PLAIN\r\n",
         "AUTH PLAIN AGJvYgBzZWNyZXQ=", 0},
        {"250-mail\r\n250 STARTTLS\r\n", "250-mail\r\n250 SIZE 1\r\n", nullptr, errors::MessageTooLarge},
        {"250-mail\r\n250-STARTTLS\r\n250 AUTH PLAIN\r\n", "502 what?\r\n", "HELO [127.0.0.1]", 0},
    };
    mailbox.answer("AUTH", "235 in\r\n");
    for (const char* const scheme : kUpgrading) {
        for (const Lists& lists : table) {
            SCOPED_TRACE(lists.later);
            mailbox.answer("EHLO", lists.inClear);
            mailbox.on("STARTTLS", [this, later = lists.later, identity = validIdentity()](Peer& peer) {
                peer.send("220 go ahead\r\n");
                peer.beginTls(identity);
                mailbox.answer("EHLO", later);
            });
            ScriptedServer server(mailbox);
            EXPECT_EQ(send(server, scheme), lists.error);
            const std::vector<std::string> commands = server.commands();
            ASSERT_GT(commands.size(), 2U);
            EXPECT_TRUE(commands[2].starts_with("EHLO"));
            if (lists.command != nullptr) {
                ASSERT_GT(commands.size(), 3U);
                EXPECT_EQ(commands[3], lists.command);
            }
        }
    }
}

TEST_F(SmtpEncryption, ShowsThePasswordOnlyBehindIt) {
    // The server is on this computer, where it may be shown in clear too.
    mailbox.answer("EHLO", "250-mail\r\n250-STARTTLS\r\n250 AUTH PLAIN\r\n").answer("AUTH", "235 in\r\n");
    mailbox.answer("STARTTLS", "454 not now\r\n");
    ScriptedServer refusing(mailbox);
    EXPECT_EQ(send(refusing, "starttls://"), errors::EncryptionNotOffered);
    expectOnlyClearCommands(refusing, {"EHLO", "STARTTLS"});
    inviteToTls(validIdentity());
    ScriptedServer server(mailbox);
    EXPECT_EQ(send(server, "starttls://"), 0);
    EXPECT_EQ(server.commands().at(3), "AUTH PLAIN AGJvYgBzZWNyZXQ=");
}

} // namespace
