// The compose window in the standard way of mail.

#include "message/kept_letter.h"
#include "tests/compose/send_fixture.h"
#include "tests/support/header_of.h"
#include "tests/support/mail_mode_is.h"

#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>

using support::field;
using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

namespace {
/** The mode comes first: the windows are made in it. */
class StandardSend : private support::MailModeIs, public support::SendTest {
  protected:
    StandardSend() : MailModeIs(MailMode::Standard) {}

    /** The server's reply to EHLO, with these extensions. */
    void offer(const std::vector<std::string>& extensions) {
        std::string reply = "250-mail.example.org\r\n";
        for (const std::string& extension : extensions) {
            reply += "250-" + extension + "\r\n";
        }
        mailbox.answer("EHLO", reply + "250 HELP\r\n");
    }

    /** Sends, and returns the header and the body that the server got. */
    std::string sent() {
        composeWindow().cmdSndit->click();
        EXPECT_THAT(boxTexts(), ElementsAre(QStringLiteral("Your message has been sent.")));
        EXPECT_THAT(mailbox.messages(), SizeIs(1));
        return mailbox.messages().empty() ? std::string() : mailbox.messages()[0];
    }
};

const QString kText = QStringLiteral("Größe\n.\nend");
} // namespace

TEST_F(StandardSend, TextGoesOutIn8BitsToAServerThatTakesThem) {
    offer({"8BITMIME"});
    write(bob, QStringLiteral("Größe"), kText);
    const std::string message = sent();
    EXPECT_THAT(server.commands(), Contains("MAIL FROM:<ann@example.org> BODY=8BITMIME"));
    EXPECT_EQ(field(message, "Content-Type"), "text/plain; charset=utf-8");
    EXPECT_EQ(field(message, "Content-Transfer-Encoding"), "8bit");
    EXPECT_EQ(field(message, "Subject"), "=?utf-8?B?R3LDtsOfZQ==?=");
    EXPECT_EQ(field(message, "MIME-Version"), "1.0");
    EXPECT_THAT(field(message, "Message-ID"), testing::MatchesRegex("<.+@example\\.org>"));
    EXPECT_THAT(field(message, "Date"), Not(IsEmpty()));
    EXPECT_THAT(message, EndsWith("\r\n\r\nGr\xc3\xb6\xc3\x9f"
                                  "e\r\n..\r\nend\r\n"));
}

TEST_F(StandardSend, NoByteBeyondAsciiGoesToAServerThatDoesNotTakeIt) {
    offer({"SIZE 1000000"});
    write(QStringLiteral("Jörg <j@example.org>"), QStringLiteral("Größe"), kText);
    const std::string message = sent();
    EXPECT_EQ(field(message, "Content-Transfer-Encoding"), "quoted-printable");
    EXPECT_THAT(message, EndsWith("\r\n\r\nGr=C3=B6=C3=9Fe\r\n..\r\nend\r\n"));
    EXPECT_TRUE(std::all_of(message.begin(), message.end(), [](char byte) { return byte >= 0; }));
    EXPECT_THAT(server.commands(),
                Contains("MAIL FROM:<ann@example.org> SIZE=" + std::to_string(message.size() - 1)))
        << "the doubled dot does not count";
}

TEST_F(StandardSend, ALineThatIsTooLongIsNotBrokenButEncoded) {
    offer({"8BITMIME"});
    write(bob, QStringLiteral("long"), QStringLiteral("x").repeated(1500));
    const std::string message = sent();
    EXPECT_EQ(field(message, "Content-Transfer-Encoding"), "quoted-printable");
    EXPECT_EQ(field(message, "Content-Type"), "text/plain; charset=us-ascii");
    EXPECT_THAT(server.commands(), Contains("MAIL FROM:<ann@example.org>"));
}

TEST_F(StandardSend, AnAddressBeyondAsciiGoesToAServerThatTakesIt) {
    offer({"8BITMIME", "SMTPUTF8"});
    write(QStringLiteral("jörg@bücher.example"), QStringLiteral("Hello"), QStringLiteral("x"));
    const std::string message = sent();
    EXPECT_THAT(server.commands(), Contains("MAIL FROM:<ann@example.org> BODY=8BITMIME SMTPUTF8"));
    EXPECT_THAT(server.commands(), Contains("RCPT TO:<j\xc3\xb6rg@xn--bcher-kva.example>"));
    EXPECT_EQ(field(message, "To"), "j\xc3\xb6rg@xn--bcher-kva.example");
}

TEST_F(StandardSend, AnAddressBeyondAsciiIsMarkedWhenTheServerDoesNotTakeIt) {
    offer({"8BITMIME"});
    write(QStringLiteral("ann@example.org, jörg@example.org"), QStringLiteral("Hello"), QStringLiteral("x"));
    composeWindow().cmdSndit->click();
    EXPECT_THAT(boxTexts(), ElementsAre(QStringLiteral("Unable to send message. Error# 20405")));
    EXPECT_EQ(composeWindow().tTo->selectedText(), QStringLiteral("jörg@example.org"));
    EXPECT_THAT(mailbox.messages(), IsEmpty());
    EXPECT_THAT(server.commands(), Not(Contains(HasSubstr("MAIL"))));
    EXPECT_TRUE(composeWindow().isVisible());
}

TEST_F(StandardSend, WhatIsNoAddressIsMarkedBeforeAnybodyIsConnected) {
    write(QStringLiteral("jörg@example.org, bob@"), QStringLiteral("Hello"), QStringLiteral("x"));
    composeWindow().cmdSndit->click();
    EXPECT_THAT(boxTexts(), ElementsAre(QStringLiteral("Unable to send message. Error# 20401")));
    EXPECT_EQ(composeWindow().tTo->selectedText(), QStringLiteral("bob@"));
    EXPECT_EQ(server.connections(), 0U);
}

TEST_F(StandardSend, AFileGoesOutWithItsTypeAndItsName) {
    folder.write("Prüfung.pdf", "%PDF-1.4\n");
    write(bob, QStringLiteral("File"), QStringLiteral("See there"), QStringLiteral("C:\\Prüfung.pdf"));
    const std::string message = sent();
    const std::string type = field(message, "Content-Type");
    ASSERT_THAT(type, testing::StartsWith("multipart/mixed; boundary=\"=_"));
    const std::string boundary = type.substr(type.find('"') + 1, 34);
    EXPECT_THAT(message, EndsWith("\r\n\r\n--" + boundary +
                                  "\r\nContent-Type: text/plain; charset=us-ascii\r\n"
                                  "Content-Transfer-Encoding: 7bit\r\n\r\nSee there\r\n--" +
                                  boundary +
                                  "\r\nContent-Type: application/pdf; name=\"Prufung.pdf\"\r\n"
                                  "Content-Transfer-Encoding: base64\r\n"
                                  "Content-Disposition: attachment; filename*=utf-8''Pr%C3%BCfung.pdf\r\n\r\n"
                                  "JVBERi0xLjQK\r\n\r\n--" +
                                  boundary + "--\r\n"));
    EXPECT_THAT(server.commands(),
                Contains("MAIL FROM:<ann@example.org> SIZE=" + std::to_string(message.size())));
}

TEST_F(StandardSend, AnotherTryKeepsTheMessageIdAndHasAnotherBoundary) {
    folder.write("a.bin", "x");
    mailbox.answer(".", "451 try again\r\n");
    write(bob, QStringLiteral("s"), QStringLiteral("x"), QStringLiteral("C:\\a.bin"));
    composeWindow().cmdSndit->click();
    const std::string id = composeWindow().SMTP1.messageId();
    EXPECT_THAT(id, Not(IsEmpty()));
    const std::string closing = folder.read("_brndwake.tmp");
    mailbox.answerProperly(".");
    composeWindow().cmdSndit->click();
    ASSERT_THAT(mailbox.messages(), SizeIs(1));
    EXPECT_EQ(field(mailbox.messages()[0], "Message-ID"), id);
    EXPECT_NE(folder.read("_brndwake.tmp"), closing);
}

TEST_F(StandardSend, HalvesOfSurrogatePairsInAPastedTextBecomeReplacementCharacters) {
    const char16_t halves[] = {u'a', 0xDE00, u'b'};
    const QString text = QString::fromUtf16(halves, 3);
    write(bob, text, QString());
    composeWindow().tMessage->insertPlainText(text);
    offer({"8BITMIME"});
    const std::string message = sent();
    EXPECT_THAT(message, EndsWith("\r\n\r\na\xef\xbf\xbd"
                                  "b\r\n"));
    EXPECT_EQ(field(message, "Subject"), "=?utf-8?B?Ye+/vWI=?=");
}

TEST_F(StandardSend, AnAnswerNamesTheMessageThatItAnswers) {
    composeWindow().origin.inReplyTo = "<2@x.org>";
    composeWindow().origin.references = {"<1@x.org>", "<2@x.org>"};
    write(bob, QStringLiteral("RE: s"), QStringLiteral("x"));
    const std::string message = sent();
    EXPECT_EQ(field(message, "In-Reply-To"), "<2@x.org>");
    EXPECT_EQ(field(message, "References"), "<1@x.org> <2@x.org>");
    EXPECT_TRUE(composeWindow().origin.isEmpty()) << "the next letter answers nothing";
}

TEST_F(StandardSend, AKeptAnswerIsStillAnAnswer) {
    auto& window = composeWindow();
    window.origin.inReplyTo = "<2@x.org>";
    window.origin.original = std::make_shared<ReceivedMessage>(ReceivedMessage{"Subject: x\r\n", "y\r\n"});
    window.origin.originalName = QStringLiteral("x.eml");
    write(bob, QStringLiteral("RE: s"), QStringLiteral("x"));
    window.tmrKeepLetter_Timer();
    window.keptLetter.waitForWriter();
    const auto kept = keptLetterIn(window.keptLetter.read().value_or(""));
    ASSERT_TRUE(kept.has_value() && kept->origin.original);
    EXPECT_EQ(kept->origin.inReplyTo, "<2@x.org>");
    EXPECT_EQ(kept->origin.original->body, "y\r\n");
}

TEST_F(StandardSend, WithoutAFormOfItsOwnTheHousesMessageIsTheSameAsEver) {
    useMailMode(MailMode::House);
    write(bob, QStringLiteral("Hello"), QStringLiteral("x"));
    composeWindow().origin.inReplyTo = "<2@x.org>";
    const std::string message = sent();
    EXPECT_THAT(message, Not(HasSubstr("MIME-Version")));
    EXPECT_THAT(message, Not(HasSubstr("In-Reply-To")));
}
