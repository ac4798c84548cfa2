// Reply and Forward in the standard way of mail.

#include "email/mailbox.h"
#include "tests/reader/reader_fixture.h"
#include "tests/support/header_of.h"
#include "tests/support/mail_mode_is.h"
#include "tests/support/smtp_script.h"

using support::field;
using support::ReaderTest;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

namespace {
const std::string kHeader = "From: Ann <ann@example.org>\r\nSubject: Hello\r\n";
const std::string kBody = "Text\r\n";

class StandardAnswer : public ReaderTest {
  protected:
    void open(const std::string& subject = "Gr\xc3\xb6\xc3\x9f"
                                           "e") {
        openOnly(kHeader + "\r\n" + kBody);
        email::settings.SMTPServer = sending.address();
        email::settings.SendAttachments = QStringLiteral("yes");
        // What a reader makes of other header fields than these.
        messageWindow().Read.answerTo = "\"M\xc3\xbcller, Ann\" <ann@example.org>";
        messageWindow().Answered = {"<2@x.org>",
                                    {"<1@x.org>", "<2@x.org>"},
                                    std::make_shared<ReceivedMessage>(ReceivedMessage{kHeader, kBody})};
        summary().From = "M\xc3\xbcller, Ann <a@x.org>";
        summary().Subject = subject;
        summary().Date = "2026-11-21 17:42";
    }

    static email::MessageSummary& summary() { return email::mailbox.Messages.at(1); }

    /** Sends what is in the compose window, and returns what the server got. */
    std::string sent() {
        composeWindow().cmdSndit->click();
        EXPECT_THAT(boxTexts(), ElementsAre(QStringLiteral("Your message has been sent.")));
        EXPECT_THAT(outgoing.messages(), SizeIs(1));
        return outgoing.messages().empty() ? std::string() : outgoing.messages()[0];
    }

    support::MailModeIs standard{MailMode::Standard};
    support::SmtpMailbox outgoing;
    support::ScriptedServer sending{outgoing};
};
} // namespace

TEST_F(StandardAnswer, ReplyGoesWhereAnswersGoAndNamesTheMessage) {
    open();
    messageWindow().cmdReply->click();
    frmSend& compose = composeWindow();
    EXPECT_EQ(compose.tTo->text(), QStringLiteral("\"Müller, Ann\" <ann@example.org>"));
    EXPECT_EQ(compose.tSubject->text(), QStringLiteral("RE: Größe"));
    EXPECT_EQ(compose.tMessage->bytes(), "");
    const std::string message = sent();
    EXPECT_EQ(field(message, "To"), "=?utf-8?B?TcO8bGxlciwgQW5u?= <ann@example.org>");
    EXPECT_EQ(field(message, "Subject"), "=?utf-8?B?UkU6IEdyw7bDn2U=?=");
    EXPECT_EQ(field(message, "In-Reply-To"), "<2@x.org>");
    EXPECT_EQ(field(message, "References"), "<1@x.org> <2@x.org>");
    EXPECT_THAT(message, Not(HasSubstr("message/rfc822")));
}

TEST_F(StandardAnswer, TheMarkOfAnAnswerIsNotPutBeforeAnotherOne) {
    open();
    for (const auto& [subject, wanted] :
         std::initializer_list<std::pair<const char*, const char*>>{{"Hello", "RE: Hello"},
                                                                    {"Re: Hello", "Re: Hello"},
                                                                    {"RE:Hello", "RE:Hello"},
                                                                    {"re: Hello", "re: Hello"},
                                                                    {"rE:", "rE:"},
                                                                    {"Aw: Hello", "RE: Aw: Hello"},
                                                                    {"Sv: Hello", "RE: Sv: Hello"},
                                                                    {"  re: Hello", "  re: Hello"},
                                                                    {"Re[2]: Hello", "RE: Re[2]: Hello"},
                                                                    {"Report", "RE: Report"},
                                                                    {"", "RE: "}}) {
        summary().Subject = subject;
        messageWindow().cmdReply->click();
        EXPECT_EQ(composeWindow().tSubject->text(), QString::fromUtf8(wanted));
        unload(composeWindow());
    }
}

TEST_F(StandardAnswer, ForwardHasTheReadableTextAndTheWholeMessageBesideIt) {
    open();
    messageWindow().cmdFwrd->click();
    frmSend& compose = composeWindow();
    EXPECT_EQ(compose.tSubject->text(), QStringLiteral("Fwd: Größe"));
    EXPECT_EQ(compose.tMessage->bytes(),
              "\r\n\r\n\r\n----------Foward Message Follows----------\r\nDate: 2026-11-21 17:42\r\n"
              "From: M\xc3\xbcller, Ann <a@x.org>\r\nSubject: Gr\xc3\xb6\xc3\x9f"
              "e\r\n\r\n"
              "Text\r\n\r\n---------Foward Message Ends---------------");
    EXPECT_EQ(compose.txtAttachment->text(), QString());
    compose.tTo->setText(QStringLiteral("bob@example.org"));
    const std::string message = sent();
    EXPECT_THAT(message, HasSubstr("Content-Type: message/rfc822; name=\"Gro_e.eml\"\r\n"));
    EXPECT_THAT(message, HasSubstr("filename*=utf-8''Gr%C3%B6%C3%9Fe.eml\r\n\r\n" + kHeader + "\r\n" + kBody +
                                   "\r\n--=_"));
    EXPECT_THAT(message, Not(HasSubstr("In-Reply-To")));
}

TEST_F(StandardAnswer, AFileMayStandBesideTheForwardedMessage) {
    open();
    folder.write("a.bin", "ABC");
    messageWindow().cmdFwrd->click();
    composeWindow().tTo->setText(QStringLiteral("bob@example.org"));
    composeWindow().txtAttachment->setText(QStringLiteral("S:\\a.bin"));
    qputenv("BRINDLEWAKE_DRIVE_C", folder.path().string().c_str());
    const std::string message = sent();
    EXPECT_LT(message.find("message/rfc822"), message.find("name=\"a.bin\""));
    EXPECT_THAT(message, HasSubstr("\r\n\r\nQUJD\r\n"));
}

TEST_F(StandardAnswer, WhereFilesMayNotBeSentForwardTakesTheTextAlone) {
    open();
    email::settings.SendAttachments = QStringLiteral("Yes");
    messageWindow().cmdFwrd->click();
    EXPECT_THAT(composeWindow().tMessage->bytes(), HasSubstr("Text\r\n"));
    composeWindow().tTo->setText(QStringLiteral("bob@example.org"));
    const std::string message = sent();
    EXPECT_THAT(message, Not(HasSubstr("message/rfc822")));
    EXPECT_EQ(field(message, "Content-Transfer-Encoding"), "8bit");
}

TEST_F(StandardAnswer, AStrangersSubjectBecomesNeitherALineNorAFolder) {
    open("../x\r\nBcc: eve@example.org");
    messageWindow().cmdFwrd->click();
    EXPECT_EQ(composeWindow().tSubject->text(), QStringLiteral("Fwd: ../x  Bcc: eve@example.org"));
    EXPECT_THAT(composeWindow().tMessage->bytes(), HasSubstr("Subject: ../x  Bcc: eve@example.org\r\n"));
    composeWindow().tTo->setText(QStringLiteral("bob@example.org"));
    const std::string message = sent();
    EXPECT_THAT(message, Not(HasSubstr("\r\nBcc")));
    EXPECT_THAT(message, HasSubstr("filename*=utf-8''___x__Bcc_%20eve%40example.org.eml"));
}

TEST_F(StandardAnswer, TheHousesWayTakesNothingOfThis) {
    open();
    useMailMode(MailMode::House);
    messageWindow().cmdReply->click();
    EXPECT_EQ(composeWindow().tTo->text(), QStringLiteral("Müller, Ann <a@x.org>"));
    EXPECT_TRUE(composeWindow().origin.isEmpty());
}
