// Answers in the standard way of mail: a message from a real Dovecot is opened, answered and forwarded
// through a real Exim, and what arrives is looked at.

#include "tests/interop/real_servers_fixture.h"
#include "tests/support/mail_mode_is.h"
#include "windows/frmFrom.h"
#include "windows/frmMain.h"
#include "windows/frmSend.h"

#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include <string>
#include <vector>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {
const std::string kOriginal = "From: =?utf-8?Q?M=C3=BCller=2C_Ann?= <ann@example.org>\r\n"
                              "Reply-To: \"List, The\" <bob@example.org>\r\n"
                              "Subject: =?utf-8?Q?Gr=C3=B6=C3=9Fe?=\r\n"
                              "Message-ID: <1@example.org>\r\n"
                              "MIME-Version: 1.0\r\n"
                              "Content-Type: text/plain; charset=utf-8\r\n"
                              "Content-Transfer-Encoding: 8bit\r\n"
                              "\r\n"
                              "Gr\xc3\xbc\xc3\x9f"
                              "e\r\n.dot\r\n";

class AnswerThroughExim : public support::BetweenRealServers {
  protected:
    void SetUp() override {
        BetweenRealServers::SetUp();
        if (IsSkipped()) {
            return;
        }
        qputenv("BRINDLEWAKE_DRIVE_C", QByteArray::fromStdString(folder.path().string()));
        dovecot->deliver(kOriginal);
        logInAsBob();
        doubleClick(1);
        ASSERT_TRUE(QTest::qWaitFor([] { return messageWindow().isVisible(); }));
    }

    /** Presses Send and returns what has arrived, as it lies in the mailbox. */
    std::string arrived() {
        composeWindow().cmdSndit->click();
        EXPECT_THAT(boxTexts(), ElementsAre(QStringLiteral("Your message has been sent."))) << exim->log();
        EXPECT_EQ(exim->awaitMessages(2), 2U) << "the original and its answer\n" << exim->log();
        const std::vector<std::string> messages = dovecot->messages();
        return messages.empty() ? std::string() : messages.back();
    }

    /** As a file has it. */
    static std::string withoutReturns(std::string text) {
        std::erase(text, '\r');
        return text;
    }

    support::MailModeIs standard{MailMode::Standard};
};
} // namespace

TEST_F(AnswerThroughExim, AReplyGoesWhereItIsWantedAndNamesTheMessage) {
    messageWindow().cmdReply->click();
    EXPECT_EQ(composeWindow().tTo->text(), QStringLiteral("\"List, The\" <bob@example.org>"));
    composeWindow().tMessage->setPlainText(QStringLiteral("Danke schön"));
    const std::string text = withoutReturns(arrived());
    EXPECT_THAT(text, HasSubstr("\nIn-Reply-To: <1@example.org>\n"));
    EXPECT_THAT(text, HasSubstr("\nReferences: <1@example.org>\n"));
    EXPECT_THAT(text, HasSubstr("\nTo: \"List, The\" <bob@example.org>\n"));
    EXPECT_THAT(text, HasSubstr("\nDanke sch\xc3\xb6n"));
}

TEST_F(AnswerThroughExim, AForwardedMessageArrivesWholeBesideItsText) {
    messageWindow().cmdFwrd->click();
    composeWindow().tTo->setText(QStringLiteral("bob@example.org"));
    const std::string text = withoutReturns(arrived());
    EXPECT_THAT(text, HasSubstr("\nContent-Type: message/rfc822"));
    EXPECT_THAT(text, HasSubstr("\n\n" + withoutReturns(kOriginal) + "\n--"));
    EXPECT_THAT(text, HasSubstr("----------Foward Message Follows----------"));
}
