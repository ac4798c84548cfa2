#include "mailserver/pop3_conversation.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace {

using mailserver::Mailbox;
using mailserver::Pop3Conversation;
using mailserver::Pop3Features;

constexpr std::string_view kBefore = "+OK this server can\r\n";
constexpr std::string_view kBetween = "TOP\r\nUIDL\r\nPIPELINING\r\nRESP-CODES\r\nAUTH-RESP-CODE\r\n";
constexpr std::string_view kNotInClear = "-ERR [AUTH] Plaintext authentication disallowed\r\n";

std::string capabilities(std::string_view first, std::string_view last) {
    return std::string(kBefore).append(first).append(kBetween).append(last).append(".\r\n");
}

class Pop3LogOnTest : public testing::Test {
  protected:
    /** A server with these features, where tim has the password tanstaaftanstaaf. */
    std::unique_ptr<Pop3Conversation> offering(Pop3Features features) {
        return std::make_unique<Pop3Conversation>(mailbox, mailserver::only("tim", "tanstaaftanstaaf"),
                                                  std::move(features));
    }

    Mailbox mailbox;
};

TEST_F(Pop3LogOnTest, NothingIsOfferedUnlessItIsAskedFor) {
    Pop3Conversation plain(mailbox);
    EXPECT_EQ(plain.greeting(), "+OK ready\r\n");
    EXPECT_EQ(plain.receive("CAPA\r\n"), capabilities("USER\r\n", ""));
    for (const char* const command : {"STLS", "AUTH PLAIN", "APOP a b", "UTF8"}) {
        EXPECT_EQ(plain.receive(std::string(command) + "\r\n"), "-ERR not known before log-on\r\n")
            << command;
    }
    EXPECT_FALSE(plain.wantsEncryption());
}

TEST_F(Pop3LogOnTest, StlsLeadsToEncryptionOnce) {
    const auto server = offering({.stls = true});
    EXPECT_EQ(server->receive("CAPA\r\n"), capabilities("USER\r\n", "STLS\r\n"));
    EXPECT_EQ(server->receive("STLS\r\n"), "+OK begin TLS\r\n");
    EXPECT_TRUE(server->wantsEncryption());
    server->encrypted();
    EXPECT_FALSE(server->wantsEncryption());
    EXPECT_EQ(server->receive("CAPA\r\n"), capabilities("USER\r\n", ""));
    EXPECT_EQ(server->receive("STLS\r\n").substr(0, 4), "-ERR");
    EXPECT_EQ(server->receive("USER tim\r\nPASS tanstaaftanstaaf\r\nSTLS\r\n"),
              "+OK the password, please\r\n+OK welcome\r\n-ERR not known\r\n");
}

TEST_F(Pop3LogOnTest, WhatCameInClearBehindStlsIsThrownAway) {
    const auto server = offering({.stls = true});
    EXPECT_EQ(server->receive("STLS\r\nUSER tim\r\nPA"), "+OK begin TLS\r\n");
    EXPECT_EQ(server->receive("SS tanstaaftanstaaf\r\n"), "");
    server->encrypted();
    EXPECT_EQ(server->receive("PASS tanstaaftanstaaf\r\n"), "-ERR the user name comes first\r\n");
}

TEST_F(Pop3LogOnTest, WhatWasSaidBeforeTlsIsForgotten) {
    const auto server = offering({.stls = true});
    EXPECT_EQ(server->receive("USER tim\r\nSTLS\r\n"), "+OK the password, please\r\n+OK begin TLS\r\n");
    server->encrypted();
    EXPECT_EQ(server->receive("PASS tanstaaftanstaaf\r\n"), "-ERR the user name comes first\r\n");
}

TEST_F(Pop3LogOnTest, PasswordsInClearCanBeForbidden) {
    const auto server =
        offering({.stls = true, .passwordInClear = false, .mechanisms = {"CRAM-MD5", "PLAIN"}});
    EXPECT_EQ(server->receive("CAPA\r\n"), capabilities("", "STLS\r\nSASL CRAM-MD5\r\n"));
    EXPECT_EQ(server->receive("USER tim\r\n"), kNotInClear);
    EXPECT_EQ(server->receive("PASS tanstaaftanstaaf\r\n"), kNotInClear);
    EXPECT_EQ(server->receive("AUTH PLAIN\r\n"), kNotInClear);
    server->receive("STLS\r\n");
    server->encrypted();
    EXPECT_EQ(server->receive("CAPA\r\n"), capabilities("USER\r\n", "SASL CRAM-MD5 PLAIN\r\n"));
    EXPECT_EQ(server->receive("USER tim\r\nPASS tanstaaftanstaaf\r\n"),
              "+OK the password, please\r\n+OK welcome\r\n");
}

TEST_F(Pop3LogOnTest, AServerNeedNotHaveUser) {
    const auto server = offering({.user = false, .mechanisms = {"PLAIN"}});
    EXPECT_EQ(server->receive("CAPA\r\n"), capabilities("", "SASL PLAIN\r\n"));
    EXPECT_EQ(server->receive("USER tim\r\n"), "-ERR not known before log-on\r\n");
}

TEST_F(Pop3LogOnTest, AuthTakesAnInitialResponseOrAsksForIt) {
    const std::string response = "AHRpbQB0YW5zdGFhZnRhbnN0YWFm";
    EXPECT_EQ(offering({.mechanisms = {"PLAIN"}})->receive("AUTH PLAIN " + response + "\r\n"),
              "+OK welcome\r\n");
    const auto server = offering({.mechanisms = {"PLAIN"}});
    EXPECT_EQ(server->receive("auth plain\r\n"), "+ \r\n");
    EXPECT_EQ(server->receive(response + "\r\n"), "+OK welcome\r\n");
    EXPECT_EQ(server->receive("STAT\r\n"), "+OK 0 0\r\n");
    EXPECT_EQ(server->receive("AUTH PLAIN\r\n"), "-ERR not known\r\n");
}

TEST_F(Pop3LogOnTest, CramMd5IsTheDialogueOfItsRfc) {
    const auto server = offering(
        {.mechanisms = {"CRAM-MD5"}, .sasl = {.challenge = "<1896.697170952@postoffice.reston.mci.net>"}});
    EXPECT_EQ(server->receive("AUTH CRAM-MD5\r\n"),
              "+ PDE4OTYuNjk3MTcwOTUyQHBvc3RvZmZpY2UucmVzdG9uLm1jaS5uZXQ+\r\n");
    EXPECT_EQ(server->receive("dGltIGI5MTNhNjAyYzdlZGE3YTQ5NWI0ZTZlNzMzNGQzODkw\r\n"), "+OK welcome\r\n");
}

TEST_F(Pop3LogOnTest, AuthThatFailsLeavesTheSessionBeforeTheLogOn) {
    const auto server = offering({.mechanisms = {"PLAIN", "GSSAPI"}});
    EXPECT_EQ(server->receive("AUTH PLAIN AHRpbQB3cm9uZw==\r\n"), "-ERR [AUTH] wrong name or password\r\n");
    EXPECT_EQ(server->receive("AUTH PLAIN\r\n*\r\n"), "+ \r\n-ERR cancelled\r\n");
    EXPECT_EQ(server->receive("AUTH PLAIN\r\n?\r\n"), "+ \r\n-ERR that is no response of this mechanism\r\n");
    for (const char* const command : {"AUTH GSSAPI", "AUTH LOGIN", "AUTH"}) {
        EXPECT_EQ(server->receive(std::string(command) + "\r\n"), "-ERR that mechanism is not known\r\n")
            << command;
    }
    EXPECT_EQ(server->receive("STAT\r\n"), "-ERR not known before log-on\r\n");
}

TEST_F(Pop3LogOnTest, AResponseMayBeLongerThanACommand) {
    const auto server = offering({.mechanisms = {"PLAIN"}});
    server->receive("AUTH PLAIN\r\n");
    EXPECT_EQ(server->receive(std::string(12288, 'A') + "\r\n"),
              "-ERR that is no response of this mechanism\r\n");
    server->receive("AUTH PLAIN\r\n");
    EXPECT_EQ(server->receive(std::string(12292, 'A') + "\r\n"), "-ERR the line is too long\r\n");
    EXPECT_EQ(server->receive("AUTH PLAIN " + std::string(244, 'A') + "\r\n"),
              "-ERR the line is too long\r\n");
    EXPECT_EQ(server->receive("AUTH PLAIN\r\n"), "+ \r\n") << "the dialogue before is over";
}

TEST_F(Pop3LogOnTest, ApopIsTheOneOfItsRfc) {
    Pop3Conversation server(mailbox, mailserver::only("mrose", "tanstaaf"),
                            {.timestamp = "<1896.697170952@dbc.mtview.ca.us>"});
    EXPECT_EQ(server.greeting(), "+OK ready <1896.697170952@dbc.mtview.ca.us>\r\n");
    EXPECT_EQ(server.receive("APOP mrose c4c9334bac560ecc979e58001b3e22fc\r\n"),
              "-ERR [AUTH] wrong name or password\r\n");
    EXPECT_EQ(server.receive("APOP bob c4c9334bac560ecc979e58001b3e22fb\r\n"),
              "-ERR [AUTH] wrong name or password\r\n");
    EXPECT_EQ(server.receive("APOP mrose\r\n"), "-ERR a user name and a digest are needed\r\n");
    EXPECT_EQ(server.receive("APOP mrose c4c9334bac560ecc979e58001b3e22fb\r\n"), "+OK welcome\r\n");
}

TEST_F(Pop3LogOnTest, Utf8IsTakenBeforeTheLogOnOnly) {
    const auto server = offering({.utf8 = true});
    EXPECT_EQ(server->receive("CAPA\r\n"), capabilities("USER\r\n", "UTF8\r\n"));
    EXPECT_EQ(server->receive("UTF8\r\n").substr(0, 3), "+OK");
    server->receive("USER tim\r\nPASS tanstaaftanstaaf\r\n");
    EXPECT_EQ(server->receive("UTF8\r\n"), "-ERR not known\r\n");
}

TEST_F(Pop3LogOnTest, PiecesOfAnySizeGiveTheSameAnswers) {
    const std::string dialogue =
        "CAPA\r\nAUTH CRAM-MD5\r\ndGltIGI5MTNhNjAyYzdlZGE3YTQ5NWI0ZTZlNzMzNGQzODkw\r\nSTAT\r\nQUIT\r\n";
    const Pop3Features features{.mechanisms = {"CRAM-MD5"},
                                .sasl = {.challenge = "<1896.697170952@postoffice.reston.mci.net>"}};
    const std::string wanted = offering(features)->receive(dialogue);
    EXPECT_NE(wanted.find("+OK welcome\r\n+OK 0 0\r\n"), std::string::npos);
    for (const std::size_t size : {1U, 2U, 7U}) {
        const auto inPieces = offering(features);
        std::string answers;
        for (std::size_t start = 0; start < dialogue.size(); start += size) {
            answers += inPieces->receive(std::string_view(dialogue).substr(start, size));
        }
        EXPECT_EQ(answers, wanted) << size;
    }
}

} // namespace
