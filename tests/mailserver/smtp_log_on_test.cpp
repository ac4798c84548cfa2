#include "mailserver/smtp_conversation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace {

using mailserver::IncomingMessage;
using mailserver::Mailbox;
using mailserver::SmtpConversation;
using mailserver::SmtpFeatures;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr std::string_view kMail = "MAIL FROM:<a@example.org>\r\n";
constexpr std::string_view kTim = "AHRpbQB0YW5zdGFhZnRhbnN0YWFm";

class SmtpLogOnTest : public testing::Test {
  protected:
    /** A server with these features, where tim has the password tanstaaftanstaaf. */
    std::unique_ptr<SmtpConversation> offering(SmtpFeatures features) {
        return std::make_unique<SmtpConversation>(
            mailserver::SmtpService{"mail.example.org",
                                    [this](IncomingMessage message) {
                                        taken.push_back(std::move(message));
                                        return true;
                                    },
                                    std::move(features), mailserver::only("tim", "tanstaaftanstaaf")});
    }

    static std::string send(SmtpConversation& server, std::string_view line) {
        return server.receive(std::string(line) + "\r\n");
    }

    std::vector<IncomingMessage> taken;
};

TEST_F(SmtpLogOnTest, NothingIsOfferedUnlessItIsAskedFor) {
    const auto server = offering({});
    EXPECT_EQ(send(*server, "EHLO client"), "250-mail.example.org\r\n250-SIZE 52428800\r\n250-8BITMIME\r\n"
                                            "250-ENHANCEDSTATUSCODES\r\n250 PIPELINING\r\n");
    EXPECT_EQ(send(*server, "STARTTLS"), "500 5.5.1 not known\r\n");
    EXPECT_EQ(send(*server, "AUTH PLAIN"), "500 5.5.1 not known\r\n");
    EXPECT_FALSE(server->wantsEncryption());
}

TEST_F(SmtpLogOnTest, StartTlsLeadsToEncryptionOnceAndForgetsTheGreeting) {
    const auto server = offering({.startTls = true});
    EXPECT_THAT(send(*server, "EHLO client"), HasSubstr("250-STARTTLS\r\n"));
    EXPECT_EQ(send(*server, "STARTTLS now"), "501 5.5.4 nothing stands behind STARTTLS\r\n");
    EXPECT_EQ(send(*server, "STARTTLS"), "220 2.0.0 begin TLS\r\n");
    EXPECT_TRUE(server->wantsEncryption());
    server->encrypted();
    EXPECT_FALSE(server->wantsEncryption());
    EXPECT_EQ(server->receive(std::string(kMail)), "503 5.5.1 not now\r\n");
    EXPECT_THAT(send(*server, "EHLO client"), Not(HasSubstr("STARTTLS")));
    EXPECT_EQ(send(*server, "STARTTLS"), "503 5.5.1 this is encrypted already\r\n");
}

TEST_F(SmtpLogOnTest, WhatCameInClearBehindStartTlsIsThrownAway) {
    const auto server = offering({.startTls = true});
    EXPECT_THAT(server->receive("EHLO client\r\nSTARTTLS\r\nEHLO other\r\nMAIL"),
                EndsWith("220 2.0.0 begin TLS\r\n"));
    EXPECT_EQ(server->receive(" FROM:<a@example.org>\r\n"), "");
    server->encrypted();
    EXPECT_EQ(server->receive(std::string(kMail)), "503 5.5.1 not now\r\n");
}

TEST_F(SmtpLogOnTest, EncryptionCanBeDemanded) {
    const auto server = offering({.startTls = true, .demandsEncryption = true, .mechanisms = {"PLAIN"}});
    send(*server, "EHLO client");
    EXPECT_EQ(server->receive(std::string(kMail)), "530 5.7.0 STARTTLS comes first\r\n");
    EXPECT_EQ(send(*server, "AUTH PLAIN"), "530 5.7.0 STARTTLS comes first\r\n");
    send(*server, "STARTTLS");
    server->encrypted();
    send(*server, "EHLO client");
    EXPECT_EQ(send(*server, "AUTH PLAIN"), "334 \r\n");
    EXPECT_EQ(send(*server, kTim), "235 2.7.0 welcome\r\n");
    EXPECT_EQ(server->receive(std::string(kMail)), "250 2.1.0 sender taken\r\n");
}

TEST_F(SmtpLogOnTest, ALogOnCanBeDemanded) {
    const auto server = offering({.mechanisms = {"PLAIN"}, .demandsLogOn = true});
    send(*server, "EHLO client");
    EXPECT_EQ(server->receive(std::string(kMail)), "530 5.7.0 log on first\r\n");
    EXPECT_EQ(send(*server, "AUTH PLAIN AHRpbQB3cm9uZw=="), "535 5.7.8 wrong name or password\r\n");
    EXPECT_EQ(server->receive(std::string(kMail)), "530 5.7.0 log on first\r\n");
    EXPECT_EQ(send(*server, "AUTH PLAIN " + std::string(kTim)), "235 2.7.0 welcome\r\n");
    EXPECT_EQ(send(*server, "AUTH PLAIN " + std::string(kTim)), "503 5.5.1 you have logged on already\r\n");
    EXPECT_EQ(server->receive(std::string(kMail)), "250 2.1.0 sender taken\r\n");
}

TEST_F(SmtpLogOnTest, MechanismsAreOfferedInBothForms) {
    const auto server = offering({.mechanisms = {"SCRAM-SHA-1", "LOGIN"}, .offersInOldForm = true});
    EXPECT_THAT(send(*server, "EHLO client"),
                HasSubstr("250-AUTH SCRAM-SHA-1 LOGIN\r\n250-AUTH=SCRAM-SHA-1 LOGIN\r\n250 PIPELINING\r\n"));
}

TEST_F(SmtpLogOnTest, PasswordsInClearCanBeForbidden) {
    const auto server =
        offering({.startTls = true, .mechanisms = {"PLAIN", "CRAM-MD5"}, .passwordInClear = false});
    EXPECT_THAT(send(*server, "EHLO client"), HasSubstr("250-AUTH CRAM-MD5\r\n"));
    EXPECT_EQ(send(*server, "AUTH PLAIN"), "538 5.7.11 that mechanism needs encryption\r\n");
    send(*server, "STARTTLS");
    server->encrypted();
    EXPECT_THAT(send(*server, "EHLO client"), HasSubstr("250-AUTH PLAIN CRAM-MD5\r\n"));
    EXPECT_EQ(send(*server, "AUTH PLAIN"), "334 \r\n");
}

TEST_F(SmtpLogOnTest, WithNothingLeftToOfferThereIsNoLineForIt) {
    const auto server = offering({.mechanisms = {"PLAIN"}, .passwordInClear = false});
    EXPECT_THAT(send(*server, "EHLO client"), Not(HasSubstr("AUTH")));
}

TEST_F(SmtpLogOnTest, MechanismsCanBeUnknownOrTooWeak) {
    const auto server = offering({.mechanisms = {"GSSAPI", "CRAM-MD5", "PLAIN"}, .tooWeak = {"CRAM-MD5"}});
    send(*server, "EHLO client");
    for (const char* const command : {"AUTH GSSAPI", "AUTH LOGIN", "AUTH"}) {
        EXPECT_EQ(send(*server, command), "504 5.5.4 that mechanism is not known\r\n") << command;
    }
    EXPECT_EQ(send(*server, "AUTH CRAM-MD5"), "534 5.7.9 that mechanism is too weak\r\n");
    EXPECT_EQ(send(*server, "AUTH PLAIN"), "334 \r\n");
    EXPECT_EQ(send(*server, "*"), "501 5.7.0 cancelled\r\n");
    EXPECT_EQ(send(*server, "AUTH PLAIN no-base64"), "501 5.5.2 that is no response of this mechanism\r\n");
    EXPECT_EQ(send(*server, "NOOP"), "250 2.0.0 done\r\n");
}

TEST_F(SmtpLogOnTest, AuthComesBehindEhloAndBeforeTheMessage) {
    const auto server = offering({.mechanisms = {"PLAIN"}});
    EXPECT_EQ(send(*server, "AUTH PLAIN"), "503 5.5.1 not now\r\n");
    send(*server, "HELO client");
    EXPECT_EQ(send(*server, "AUTH PLAIN"), "503 5.5.1 not now\r\n");
    send(*server, "EHLO client");
    server->receive(std::string(kMail));
    EXPECT_EQ(send(*server, "AUTH PLAIN"), "503 5.5.1 not now\r\n");
}

TEST_F(SmtpLogOnTest, ScramIsTheDialogueOfItsRfc) {
    mailserver::SmtpService service{"mail.example.org",
                                    [](const IncomingMessage& /*message*/) { return true; }};
    service.accounts = mailserver::anyUserWith("pencil");
    service.features.mechanisms = {"SCRAM-SHA-1"};
    service.features.sasl = {.nonce = "3rfcNHYJY1ZVvWVs7j", .salt = "A%\xc2G\xe4:\xb1\xe9<m\xffv"};
    SmtpConversation server(service);
    send(server, "EHLO client");
    EXPECT_EQ(
        send(server, "AUTH SCRAM-SHA-1 biwsbj11c2VyLHI9ZnlrbytkMmxiYkZnT05Sdjlxa3hkYXdM"),
        "334 cj1meWtvK2QybGJiRmdPTlJ2OXFreGRhd0wzcmZjTkhZSlkxWlZ2V1ZzN2oscz1RU1hDUitRNnNlazhiZjkyLGk9NDA5Ng=="
        "\r\n");
    EXPECT_EQ(send(server,
                   "Yz1iaXdzLHI9ZnlrbytkMmxiYkZnT05Sdjlxa3hkYXdMM3JmY05IWUpZMVpWdldWczdqLHA9djBYOHYzQnoyVDBD"
                   "SkdiSlF5RjBYK0hJNFRzPQ=="),
              "334 dj1ybUY5cHFWOFM3c3VBb1pXamE0ZEpSa0ZzS1E9\r\n");
    EXPECT_EQ(send(server, ""), "235 2.7.0 welcome\r\n");
}

TEST_F(SmtpLogOnTest, AMessageTellsHowItCame) {
    const std::string message =
        "EHLO client\r\nMAIL FROM:<>\r\nRCPT TO:<a@example.org>\r\nDATA\r\nx\r\n.\r\n";
    const auto server = offering({.startTls = true, .mechanisms = {"PLAIN"}});
    server->receive(message);
    server->receive("STARTTLS\r\n");
    server->encrypted();
    server->receive(message);
    send(*server, "AUTH PLAIN " + std::string(kTim));
    server->receive(message);
    ASSERT_EQ(taken.size(), 3U);
    EXPECT_FALSE(taken[0].encrypted || taken[0].loggedOn);
    EXPECT_TRUE(taken[1].encrypted && !taken[1].loggedOn);
    EXPECT_TRUE(taken[2].encrypted && taken[2].loggedOn);
}

TEST_F(SmtpLogOnTest, TheTraceLineNamesTheProtocol) {
    Mailbox mailbox;
    SmtpConversation server(mailserver::deliveryInto(mailbox, {.startTls = true, .mechanisms = {"PLAIN"}}));
    server.receive("STARTTLS\r\n");
    server.encrypted();
    server.receive("EHLO client\r\nAUTH PLAIN AHRpbQBkZW1v\r\nMAIL FROM:<>\r\nRCPT "
                   "TO:<a@example.org>\r\nDATA\r\n\r\n.\r\n");
    ASSERT_EQ(mailbox.messages().size(), 1U);
    EXPECT_THAT(mailbox.messages().front()->text,
                StartsWith("Received: from client by demo.example.org with ESMTPSA; "));
}

} // namespace
