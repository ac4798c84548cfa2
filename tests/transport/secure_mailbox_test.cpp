#include "tests/support/openssl_client.h"
#include "tests/support/pop3_script.h"
#include "tests/support/scripted_server.h"
#include "tests/support/smtp_script.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace {

using support::OpensslClient;
using support::Pop3Mailbox;
using support::ScriptedServer;
using support::SmtpMailbox;
using support::TlsIdentity;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

/** Sends a line and returns the first one of the answer. */
std::string ask(OpensslClient& client, const std::string& line) {
    client.sendLine(line);
    return client.readLine();
}

/** All lines of a POP3 answer, up to the dot. */
std::string askForLines(OpensslClient& client, const std::string& line) {
    std::string answer = ask(client, line);
    while (!answer.ends_with("\r\n.\r\n")) {
        answer += client.readLine();
    }
    return answer;
}

TEST(SecurePop3Mailbox, BeginsTlsBehindItsAnswerToStls) {
    Pop3Mailbox mailbox({"Subject: one\r\n\r\nbody\r\n"});
    mailbox.offers({.stls = true, .passwordInClear = false});
    ScriptedServer server(mailbox);
    OpensslClient client(server.port());
    EXPECT_EQ(client.readLine(), "+OK ready\r\n");
    EXPECT_THAT(askForLines(client, "CAPA"), HasSubstr("\r\nSTLS\r\n"));
    EXPECT_THAT(ask(client, "USER tim"), StartsWith("-ERR [AUTH]"));
    EXPECT_EQ(ask(client, "STLS"), "+OK begin TLS\r\n");
    ASSERT_TRUE(client.beginTls()) << client.failure();
    EXPECT_THAT(askForLines(client, "CAPA"), testing::Not(HasSubstr("STLS")));
    EXPECT_THAT(ask(client, "USER tim"), StartsWith("+OK"));
    EXPECT_THAT(ask(client, "PASS any"), StartsWith("+OK"));
    EXPECT_EQ(ask(client, "STAT"), "+OK 1 22\r\n");
    EXPECT_THAT(ask(client, "QUIT"), StartsWith("+OK"));
    EXPECT_THAT(server.commands(),
                ElementsAre("CAPA", "USER tim", "STLS", "CAPA", "USER tim", "PASS any", "STAT", "QUIT"));
}

TEST(SecurePop3Mailbox, SpeaksTlsFromTheStartWithTheCertificateThatItIsGiven) {
    const mailserver::Authority other("Another root");
    Pop3Mailbox mailbox;
    mailbox.tlsFromTheStart(TlsIdentity(other.issue(support::loopback()))).offers({.stls = true});
    ScriptedServer server(mailbox);
    OpensslClient stranger(server.port());
    EXPECT_FALSE(stranger.beginTls());
    stranger.hangUp();
    OpensslClient client(server.port(), {.trustedPem = other.certificatePem()});
    ASSERT_TRUE(client.beginTls()) << client.failure();
    EXPECT_EQ(client.readLine(), "+OK ready\r\n");
    EXPECT_THAT(askForLines(client, "CAPA"), testing::Not(HasSubstr("STLS")));
}

TEST(SecurePop3Mailbox, AnAnswerOfTheTestsToStlsBeginsNothing) {
    Pop3Mailbox mailbox;
    mailbox.offers({.stls = true}).answer("STLS", "-ERR not today\r\n");
    ScriptedServer server(mailbox);
    OpensslClient client(server.port());
    client.readLine();
    EXPECT_EQ(ask(client, "STLS"), "-ERR not today\r\n");
    EXPECT_THAT(ask(client, "USER tim"), StartsWith("+OK"));
}

TEST(SecurePop3Mailbox, KnowsThePasswordThatMechanismsHide) {
    Pop3Mailbox mailbox;
    mailbox.allowOnly("tim", "tanstaaftanstaaf")
        .offers({.mechanisms = {"CRAM-MD5"},
                 .sasl = {.challenge = "<1896.697170952@postoffice.reston.mci.net>"}});
    ScriptedServer server(mailbox);
    OpensslClient client(server.port());
    client.readLine();
    EXPECT_THAT(ask(client, "AUTH CRAM-MD5"), StartsWith("+ "));
    EXPECT_EQ(ask(client, "dGltIGI5MTNhNjAyYzdlZGE3YTQ5NWI0ZTZlNzMzNGQzODkw"), "+OK welcome\r\n");
}

TEST(SecurePop3Mailbox, ItsProperAnswersCanBeAltered) {
    Pop3Mailbox mailbox;
    mailbox.alter([](const std::string& line, std::string answer) {
        return line == "STAT" ? answer.replace(0, 3, "+ok") : answer;
    });
    ScriptedServer server(mailbox);
    OpensslClient client(server.port());
    client.readLine();
    EXPECT_EQ(ask(client, "USER tim"), "+OK the password, please\r\n");
    EXPECT_EQ(ask(client, "PASS any"), "+OK welcome\r\n");
    EXPECT_EQ(ask(client, "STAT"), "+ok 0 0\r\n");
}

TEST(SecureSmtpMailbox, TakesMailOverTlsFromWhoHasLoggedOn) {
    SmtpMailbox mailbox;
    mailbox.allowOnly("tim", "secret")
        .offers({.startTls = true, .demandsEncryption = true, .mechanisms = {"PLAIN"}, .demandsLogOn = true});
    ScriptedServer server(mailbox);
    OpensslClient client(server.port());
    client.readLine();
    client.sendLine("EHLO client");
    while (!client.readLine().starts_with("250 ")) {
    }
    EXPECT_THAT(ask(client, "MAIL FROM:<a@example.org>"), StartsWith("530"));
    EXPECT_THAT(ask(client, "STARTTLS"), StartsWith("220"));
    ASSERT_TRUE(client.beginTls()) << client.failure();
    client.sendLine("EHLO client");
    while (!client.readLine().starts_with("250 ")) {
    }
    EXPECT_THAT(ask(client, "AUTH PLAIN AHRpbQBzZWNyZXQ="), StartsWith("235"));
    EXPECT_THAT(ask(client, "MAIL FROM:<a@example.org>"), StartsWith("250"));
    EXPECT_THAT(ask(client, "RCPT TO:<b@example.org>"), StartsWith("250"));
    EXPECT_THAT(ask(client, "DATA"), StartsWith("354"));
    EXPECT_THAT(ask(client, "hello\r\n."), StartsWith("250"));
    EXPECT_THAT(mailbox.messages(), ElementsAre("hello\r\n"));
}

TEST(SecureSmtpMailbox, AMechanismCanBeAnsweredByTheTest) {
    SmtpMailbox mailbox;
    mailbox.offers({.mechanisms = {"PLAIN", "LOGIN"}}).answer("AUTH PLAIN", "504 5.5.4 no\r\n");
    ScriptedServer server(mailbox);
    OpensslClient client(server.port());
    client.readLine();
    client.sendLine("EHLO client");
    while (!client.readLine().starts_with("250 ")) {
    }
    EXPECT_THAT(ask(client, "AUTH PLAIN AHRpbQBzZWNyZXQ="), StartsWith("504"));
    EXPECT_THAT(ask(client, "AUTH LOGIN"), StartsWith("334"));
}

} // namespace
