#include "mailserver/smtp_conversation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace {

using mailserver::Mailbox;
using mailserver::SmtpConversation;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

class SmtpConversationTest : public testing::Test {
  protected:
    std::string send(const std::string& line) { return conversation.receive(line + "\r\n"); }

    /** Everything up to the answer to DATA. */
    void openMessage(const std::string& recipient = "a@example.org") {
        EXPECT_THAT(send("EHLO client"), StartsWith("250"));
        EXPECT_THAT(send("MAIL FROM:<b@example.org>"), StartsWith("250"));
        EXPECT_THAT(send("RCPT TO:<" + recipient + ">"), StartsWith("250"));
        EXPECT_THAT(send("DATA"), StartsWith("354"));
    }

    Mailbox mailbox;
    SmtpConversation conversation{mailbox};
};

TEST_F(SmtpConversationTest, EhloOffersSizeEightBitAndPipelining) {
    const std::string answer = send("EHLO client");
    EXPECT_THAT(answer, HasSubstr("\r\n250-SIZE 52428800\r\n"));
    EXPECT_THAT(answer, HasSubstr("250-8BITMIME\r\n"));
    EXPECT_THAT(answer, EndsWith("\r\n250 PIPELINING\r\n"));
    EXPECT_EQ(send("HELO client"), "250 demo.example.org\r\n");
    EXPECT_THAT(send("EHLO"), StartsWith("501"));
}

TEST_F(SmtpConversationTest, AMessageIsDeliveredWithATraceLineAndWithoutStuffedDots) {
    openMessage();
    EXPECT_EQ(send("Subject: hello\r\n\r\n..dot\r\n.x"), "");
    EXPECT_THAT(send("."), StartsWith("250"));
    ASSERT_EQ(mailbox.messages().size(), 1U);
    const std::string& text = mailbox.messages().front()->text;
    EXPECT_THAT(text, StartsWith("Received: from client by demo.example.org with ESMTP; "));
    EXPECT_THAT(text, EndsWith("\r\nSubject: hello\r\n\r\n.dot\r\nx\r\n"));
}

TEST_F(SmtpConversationTest, WhatBecomesOfAMessageCanBeGiven) {
    std::vector<mailserver::IncomingMessage> taken;
    SmtpConversation other({"mail.example.org", [&taken](mailserver::IncomingMessage message) {
                                taken.push_back(std::move(message));
                                return taken.size() == 1;
                            }});
    EXPECT_EQ(other.greeting(), "220 mail.example.org ESMTP ready\r\n");
    EXPECT_THAT(other.receive("EHLO client\r\n"), StartsWith("250-mail.example.org\r\n"));
    const std::string message = "MAIL FROM:<>\r\nRCPT TO:<a@example.com>\r\nRCPT TO:<b@example.org>\r\n"
                                "DATA\r\n..dot\r\n.\r\n";
    EXPECT_THAT(other.receive(message), EndsWith("250 2.0.0 message taken\r\n"));
    EXPECT_THAT(other.receive(message), EndsWith("452 4.3.1 the mailbox is full\r\n"));
    ASSERT_EQ(taken.size(), 2U);
    EXPECT_EQ(taken[0].clientName, "client");
    EXPECT_TRUE(taken[0].extended);
    EXPECT_THAT(taken[0].recipients, testing::ElementsAre("a@example.com", "b@example.org"));
    EXPECT_EQ(taken[1].lines, "..dot\r\n");
}

TEST_F(SmtpConversationTest, MailForOtherDomainsIsAcceptedAndDropped) {
    openMessage("a@example.com");
    EXPECT_THAT(send("Subject: away\r\n\r\n."), StartsWith("250"));
    EXPECT_TRUE(mailbox.messages().empty());
}

TEST_F(SmtpConversationTest, OneLocalRecipientOfManyIsEnoughAndTheDomainsCaseIsNothing) {
    send("HELO client\r\nMAIL FROM:<>\r\nRCPT TO:<a@example.com>\r\nRCPT TO:<b@Example.ORG>");
    EXPECT_THAT(send("DATA\r\nSubject: x\r\n\r\n."), EndsWith("250 2.0.0 message taken\r\n"));
    EXPECT_EQ(mailbox.messages().size(), 1U);
}

TEST_F(SmtpConversationTest, CommandsOutOfOrderAreRefused) {
    EXPECT_THAT(send("MAIL FROM:<a@example.org>"), StartsWith("503"));
    EXPECT_THAT(send("DATA"), StartsWith("503"));
    send("EHLO client");
    EXPECT_THAT(send("RCPT TO:<a@example.org>"), StartsWith("503"));
    send("MAIL FROM:<a@example.org>");
    EXPECT_THAT(send("MAIL FROM:<a@example.org>"), StartsWith("503"));
    EXPECT_THAT(send("DATA"), StartsWith("554"));
    EXPECT_THAT(send("RSET"), StartsWith("250"));
    EXPECT_THAT(send("RCPT TO:<a@example.org>"), StartsWith("503"));
    EXPECT_THAT(send("NONSENSE"), StartsWith("500"));
}

TEST_F(SmtpConversationTest, MalformedAddressesAreRefused) {
    send("EHLO client");
    EXPECT_THAT(send("MAIL FROM:a@example.org"), StartsWith("501"));
    EXPECT_THAT(send("MAIL a@example.org"), StartsWith("501"));
    send("MAIL FROM:<a@example.org>");
    for (const char* const path :
         {"<>", "<a>", "<@example.org>", "<a@>", "a@example.org", "<a@example.org"}) {
        EXPECT_THAT(send(std::string("RCPT TO:") + path), StartsWith("501")) << path;
    }
}

TEST_F(SmtpConversationTest, AnAnnouncedSizeThatIsTooLargeIsRefusedAtOnce) {
    send("EHLO client");
    EXPECT_THAT(send("MAIL FROM:<a@example.org> SIZE=52428801"), StartsWith("552"));
    EXPECT_THAT(send("MAIL FROM:<a@example.org> SIZE=99999999999999999999999"), StartsWith("552"));
    EXPECT_THAT(send("MAIL FROM:<a@example.org> SIZE=52428800 BODY=8BITMIME"), StartsWith("250"));
}

TEST_F(SmtpConversationTest, AMessageThatIsTooLargeIsRefusedAtItsEnd) {
    openMessage();
    const std::string line = std::string(1U << 20U, 'x') + "\r\n";
    for (int megabyte = 0; megabyte < 51; ++megabyte) {
        EXPECT_EQ(conversation.receive(line), "");
    }
    EXPECT_THAT(send("."), StartsWith("552"));
    EXPECT_TRUE(mailbox.messages().empty());
    EXPECT_THAT(send("MAIL FROM:<a@example.org>"), StartsWith("250"));
}

TEST_F(SmtpConversationTest, ALineThatIsTooLongIsNeverTheEndOfAMessage) {
    openMessage();
    EXPECT_EQ(conversation.receive("." + std::string(2U << 20U, 'x') + "\r\n"), "");
    EXPECT_THAT(send("."), StartsWith("552"));
    EXPECT_THAT(send("NOOP" + std::string(1000, ' ')), StartsWith("500"));
    EXPECT_THAT(send("NOOP"), StartsWith("250"));
}

TEST_F(SmtpConversationTest, OnlyADotBetweenCrLfsEndsAMessage) {
    openMessage();
    EXPECT_EQ(conversation.receive("one\n.\ntwo\r.\rthree\r\n.\nMAIL FROM:<x@example.org>\r\n"), "");
    EXPECT_THAT(send("."), StartsWith("250"));
    EXPECT_EQ(mailbox.messages().size(), 1U);
}

TEST_F(SmtpConversationTest, TooManyRecipientsAreRefused) {
    send("EHLO client\r\nMAIL FROM:<a@example.org>");
    for (std::size_t i = 0; i < SmtpConversation::kMaximumRecipients; ++i) {
        EXPECT_THAT(send("RCPT TO:<a@example.org>"), StartsWith("250"));
    }
    EXPECT_THAT(send("RCPT TO:<a@example.org>"), StartsWith("452"));
}

TEST_F(SmtpConversationTest, APipelinedSessionInPiecesOfAnySizeGivesTheSameAnswers) {
    const std::string dialogue = "EHLO client\r\nMAIL FROM:<a@example.org>\r\nRCPT TO:<b@example.org>\r\n"
                                 "DATA\r\nSubject: x\r\n\r\n..\r\n.\r\nRSET\r\nQUIT\r\nNOOP\r\n";
    const std::string wanted = SmtpConversation(mailbox).receive(dialogue);
    EXPECT_THAT(wanted, EndsWith("250 2.0.0 forgotten\r\n221 2.0.0 good-bye\r\n"));
    for (const std::size_t size : {1U, 2U, 7U}) {
        SmtpConversation inPieces(mailbox);
        std::string answers;
        for (std::size_t start = 0; start < dialogue.size(); start += size) {
            answers += inPieces.receive(std::string_view(dialogue).substr(start, size));
        }
        EXPECT_EQ(answers, wanted) << size;
    }
    EXPECT_EQ(mailbox.messages().size(), 4U);
}

} // namespace
