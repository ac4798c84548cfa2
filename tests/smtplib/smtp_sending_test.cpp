// What goes over the wire when all goes well, and every reply that a server may send instead.

#include "tests/smtplib/smtp_fixture.h"
#include "tests/support/temporary_folder.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace {

using support::ScriptedServer;
using support::SmtpMailbox;
using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;
namespace errors = platform::errors;

class SmtpSending : public support::SmtpTest {
  protected:
    SmtpSending() { fillIn(); }

    SmtpMailbox mailbox;
};

/** What stands behind the empty line. */
std::string bodyOf(const std::string& message) {
    return message.substr(message.find("\r\n\r\n") + 4);
}

TEST_F(SmtpSending, OneMessageTakesTheseCommandsAndComesWhole) {
    ScriptedServer server(mailbox);
    EXPECT_EQ(send(server), 0);
    ASSERT_TRUE(server.waitForEndOf(1));
    ASSERT_THAT(mailbox.messages(), SizeIs(1));
    const std::string message = mailbox.messages().front();
    EXPECT_THAT(message, MatchesRegex("From: bob@example\\.org\r\nTo: Ann <ann@example\\.org>\r\n"
                                      "Cc: carl@example\\.org\r\nSubject: Hello\r\n"
                                      "Date: [A-Z][a-z]+, [0-9]+ [A-Z][a-z]+ [0-9]+ [0-9:]+ [-+][0-9]+\r\n"
                                      "Message-ID: <[0-9.a-f]+@example\\.org>\r\n\r\ntext\r\n"));
    EXPECT_THAT(trail, ElementsAre("< 220 mail.example.org ESMTP ready", "> EHLO [127.0.0.1]",
                                   "< 250-mail.example.org", "< 250-SIZE 52428800", "< 250-8BITMIME",
                                   "< 250-ENHANCEDSTATUSCODES", "< 250 PIPELINING",
                                   "> MAIL FROM:<bob@example.org> SIZE=" + std::to_string(message.size()),
                                   "> RCPT TO:<ann@example.org>", "> RCPT TO:<carl@example.org>",
                                   "< 250 2.1.0 sender taken", "< 250 2.1.5 recipient taken",
                                   "< 250 2.1.5 recipient taken", "> DATA",
                                   "< 354 the message, then a dot on a line of its own", "> .",
                                   "< 250 2.0.0 message taken", "> QUIT", "< 221 2.0.0 good-bye"));
    EXPECT_EQ(progress.front().first, 0);
    EXPECT_EQ(progress.back(), std::pair(std::int64_t(message.size()), std::int64_t(message.size())));
}

TEST_F(SmtpSending, DotsAreDoubledAndCountOnceForTheSize) {
    smtp.setBody(".\r\n..a\r\nb");
    ScriptedServer server(mailbox);
    EXPECT_EQ(send(server), 0);
    const std::string message = mailbox.messages().at(0);
    EXPECT_EQ(bodyOf(message), "..\r\n...a\r\nb\r\n");
    EXPECT_THAT(trail, Contains(EndsWith(" SIZE=" + std::to_string(message.size() - 2))));
}

TEST_F(SmtpSending, AnEmptyBodyAddsNoLine) {
    smtp.setBody("");
    ScriptedServer server(mailbox);
    EXPECT_EQ(send(server), 0);
    EXPECT_EQ(bodyOf(mailbox.messages().at(0)), "");
}

TEST_F(SmtpSending, AdditionalHeadersAndTheDataFileGoOutAsTheyAre) {
    const support::TemporaryFolder folder;
    folder.write("data", "YmFzZTY0\r\n--end--\r\n");
    smtp.setAdditionalHeaders("MIME-Version: 1.0\r\nX-A: b\r\n");
    smtp.setBody("part\r\n\r\n");
    smtp.setDataFile(folder.qtPath("data"));
    ScriptedServer server(mailbox);
    EXPECT_EQ(send(server), 0);
    EXPECT_THAT(mailbox.messages().at(0), EndsWith("\r\nMIME-Version: 1.0\r\nX-A: b\r\n\r\n"
                                                   "part\r\n\r\nYmFzZTY0\r\n--end--\r\n"));
}

TEST_F(SmtpSending, ALargeDataFileComesWholeWhileTimersGoOn) {
    const support::TemporaryFolder folder;
    std::string content;
    for (int line = 0; content.size() < 8'000'000; ++line) {
        content += "." + std::to_string(line) + std::string(70, 'x') + "\r\n";
    }
    folder.write("data", content);
    smtp.setBody("");
    smtp.setDataFile(folder.qtPath("data"));
    mailbox.on(".", [](support::Peer& peer) { peer.send("250 taken\r\n"); });
    std::size_t lines = 0;
    ScriptedServer server(mailbox);
    EXPECT_EQ(send(server), 0);
    ASSERT_TRUE(server.waitForEndOf(1));
    std::string received;
    for (const std::string& line : server.commands()) {
        if (line.starts_with("..")) {
            received += line.substr(1) + "\r\n";
            ++lines;
        }
    }
    EXPECT_TRUE(received == content) << lines << " lines of " << content.size() << " octets";
    EXPECT_GT(progress.size(), 100U);
    EXPECT_TRUE(std::is_sorted(progress.begin(), progress.end()));
    EXPECT_EQ(progress.back().first, progress.back().second);
}

TEST_F(SmtpSending, TextBeyondAsciiIsAnnouncedWhereTheServerKnowsThat) {
    smtp.setBody("\xc3\xa4\r\n");
    ScriptedServer server(mailbox);
    EXPECT_EQ(send(server), 0);
    EXPECT_THAT(trail, Contains(EndsWith(" BODY=8BITMIME")));
    EXPECT_THAT(mailbox.messages().at(0), Not(HasSubstr("MIME-Version")));
}

TEST_F(SmtpSending, TextBeyondAsciiIsSentAsItIsAlsoWhereTheServerDoesNot) {
    smtp.setBody("\xc3\xa4\r\n");
    mailbox.answer("EHLO", "250 mail\r\n");
    ScriptedServer server(mailbox);
    EXPECT_EQ(send(server), 0);
    EXPECT_THAT(trail, Contains("> MAIL FROM:<bob@example.org>"));
    EXPECT_EQ(bodyOf(mailbox.messages().at(0)), "\xc3\xa4\r\n");
}

TEST_F(SmtpSending, EveryAddressGetsOneCommand) {
    smtp.setRecipients("ann@example.org, \"B, b\" <b@example.org>, team: ann@example.org, c@example.org;, ");
    smtp.setCopies("Ann <ann@EXAMPLE.org>, b@example.org (Bob)");
    ScriptedServer server(mailbox);
    EXPECT_EQ(send(server), 0);
    std::vector<std::string> recipients;
    std::copy_if(trail.begin(), trail.end(), std::back_inserter(recipients),
                 [](const std::string& line) { return line.starts_with("> RCPT"); });
    EXPECT_THAT(recipients, ElementsAre("> RCPT TO:<ann@example.org>", "> RCPT TO:<b@example.org>",
                                        "> RCPT TO:<c@example.org>"));
}

TEST_F(SmtpSending, SeveralMessagesMayGoThroughOneSession) {
    ScriptedServer server(mailbox);
    ASSERT_EQ(open(server), 0);
    EXPECT_EQ(transmit(), 0);
    EXPECT_EQ(transmit(), 0);
    EXPECT_EQ(close(), 0);
    ASSERT_THAT(mailbox.messages(), SizeIs(2));
    EXPECT_EQ(server.connections(), 1U);
    EXPECT_NE(mailbox.messages().at(0), mailbox.messages().at(1)) << "each has a Message-ID of its own";
}

TEST_F(SmtpSending, AMessageTriedAgainKeepsItsMessageId) {
    mailbox.answer(".", "451 try again later\r\n");
    ScriptedServer server(mailbox);
    EXPECT_EQ(send(server), errors::MessageRefusedForNow);
    const std::string id = smtp.messageId();
    EXPECT_THAT(id, StartsWith("<"));
    mailbox.answerProperly(".");
    EXPECT_EQ(send(server), 0);
    EXPECT_THAT(mailbox.messages().at(0), HasSubstr("\r\nMessage-ID: " + id + "\r\n"));
    EXPECT_EQ(smtp.messageId(), "") << "what comes next is another message";
}

TEST_F(SmtpSending, AMessageIdThatWasSetIsUsed) {
    smtp.setMessageId("<mine@example.org>");
    ScriptedServer server(mailbox);
    EXPECT_EQ(send(server), 0);
    EXPECT_THAT(mailbox.messages().at(0), HasSubstr("\r\nMessage-ID: <mine@example.org>\r\n"));
}

TEST_F(SmtpSending, OnlyRequestsThatBlockAreKnown) {
    EXPECT_EQ(platform::errorNumberOf([this] { smtp.setBlocking(true); }), 0);
    EXPECT_EQ(platform::errorNumberOf([this] { smtp.setBlocking(false); }), errors::InvalidProcedureCall);
}

struct Answer {
    const char* name;
    const char* command;
    std::string bytes;
    int error;
};

class SmtpAnswer : public SmtpSending, public testing::WithParamInterface<Answer> {};

TEST_P(SmtpAnswer, GivesItsNumberAndALaterAttemptWorks) {
    mailbox.answer(GetParam().command, GetParam().bytes);
    ScriptedServer server(mailbox);
    EXPECT_EQ(send(server), GetParam().error);
    EXPECT_EQ(close(), 0) << "the session is closed already";
    EXPECT_THAT(mailbox.messages(), IsEmpty());
    mailbox.answerProperly(GetParam().command);
    EXPECT_EQ(send(), 0);
    EXPECT_THAT(mailbox.messages(), SizeIs(1)) << "sent once, by the second attempt";
}

INSTANTIATE_TEST_SUITE_P(
    Codes, SmtpAnswer,
    testing::Values(
        Answer{"GreetingForGood", "GREETING", "554 no\r\n", errors::GreetingRefused},
        Answer{"GreetingForNow", "GREETING", "450 no\r\n", errors::GreetingRefusedForNow},
        Answer{"GreetingServiceEnds", "GREETING", "421 no\r\n", errors::GreetingRefusedForNow},
        Answer{"GreetingAsksForMore", "GREETING", "354 no\r\n", errors::SendingOutOfStep},
        Answer{"GreetingOfManyLines", "GREETING", "220-a\r\n221 b\r\n", errors::SendingOutOfStep},
        Answer{"GreetingEndless", "GREETING", std::string(1U << 20U, 'x'), errors::SendingOutOfStep},
        Answer{"GreetingWithNul", "GREETING", std::string("\0\0\r\n", 4), errors::SendingOutOfStep},
        Answer{"HelloForNow", "EHLO", "451 no\r\n", errors::HelloRefusedForNow},
        Answer{"HelloServiceEnds", "EHLO", "421 no\r\n", errors::HelloRefusedForNow},
        Answer{"HelloFirstDigitSix", "EHLO", "600 no\r\n", errors::SendingOutOfStep},
        Answer{"SenderForGood", "MAIL", "550 no\r\n", errors::SenderRefused},
        Answer{"SenderForNow", "MAIL", "451 no\r\n", errors::SenderRefusedForNow},
        Answer{"SenderServiceEnds", "MAIL", "421\r\n", errors::SenderRefusedForNow},
        Answer{"SenderTooLarge", "MAIL", "552 no\r\n", errors::MessageTooLarge},
        Answer{"SenderUnknownCode", "MAIL", "599\r\n", errors::SenderRefused},
        Answer{"RecipientForGood", "RCPT", "550 no\r\n", errors::RecipientRefused},
        Answer{"RecipientForNow", "RCPT", "450 no\r\n", errors::RecipientRefusedForNow},
        Answer{"RecipientFull", "RCPT", "552 no\r\n", errors::RecipientRefused},
        Answer{"RecipientServiceEnds", "RCPT", "421 no\r\n", errors::RecipientRefusedForNow},
        Answer{"RecipientAsksForMore", "RCPT", "354 no\r\n", errors::SendingOutOfStep},
        Answer{"DataForGood", "DATA", "554 no\r\n", errors::DataRefused},
        Answer{"DataForNow", "DATA", "451 no\r\n", errors::DataRefusedForNow},
        Answer{"DataDoneAlready", "DATA", "250 ok\r\n", errors::SendingOutOfStep},
        Answer{"DataServiceEnds", "DATA", "421 no\r\n", errors::DataRefusedForNow},
        Answer{"MessageForGood", ".", "554 no\r\n", errors::MessageRefused},
        Answer{"MessageForNow", ".", "451 no\r\n", errors::MessageRefusedForNow},
        Answer{"MessageTooLarge", ".", "552 no\r\n", errors::MessageTooLarge},
        Answer{"MessageServiceEnds", ".", "421 no\r\n", errors::MessageRefusedForNow},
        Answer{"MessageGarbage", ".", "ok\r\n", errors::ConfirmationUnclear},
        Answer{"MessageAsksForMore", ".", "354 more\r\n", errors::ConfirmationUnclear},
        Answer{"MessageFirstDigitSix", ".", "650 ok\r\n", errors::ConfirmationUnclear}),
    [](const auto& test) { return test.param.name; });

TEST_F(SmtpSending, OneRefusedRecipientOfThreeKeepsTheMessageFromAll) {
    smtp.setRecipients("a@example.org, b@example.org, c@example.org");
    int recipients = 0;
    mailbox.on("RCPT", [&recipients](support::Peer& peer) {
        peer.send(++recipients == 2 ? "550 no such user\r\n" : "250 ok\r\n");
    });
    ScriptedServer server(mailbox);
    EXPECT_EQ(send(server), errors::RecipientRefused);
    ASSERT_TRUE(server.waitForEndOf(1));
    EXPECT_THAT(server.keywords(), ElementsAre("EHLO", "MAIL", "RCPT", "RCPT", "RCPT", "RCPT", "QUIT"));
}

TEST_F(SmtpSending, AServerThatDoesNotAnswerTheQuitHasTheMessageAllTheSame) {
    smtplib::Timeouts timeouts;
    timeouts.quit = std::chrono::milliseconds(50);
    smtp.setTimeouts(timeouts);
    for (const support::Conversation& action :
         {support::Conversation([](support::Peer& peer) { peer.holdSilent(); }),
          support::Conversation([](support::Peer& peer) { peer.reset(); }),
          support::Conversation([](support::Peer& peer) { peer.send("garbage\r\n"); })}) {
        mailbox.on("QUIT", action);
        ScriptedServer server(mailbox);
        EXPECT_EQ(send(server), 0);
    }
    EXPECT_THAT(mailbox.messages(), SizeIs(3));
}

} // namespace
