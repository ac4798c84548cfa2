// The form of a message that is settled when the server has told its extensions.

#include "tests/smtplib/smtp_fixture.h"
#include "tests/support/drive_stands_for.h"
#include "tests/support/temporary_folder.h"

#include <gmock/gmock.h>

#include <optional>

namespace {

using support::ScriptedServer;
using support::SmtpMailbox;
using testing::Contains;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
namespace errors = platform::errors;

class SmtpForm : public support::SmtpTest {
  protected:
    SmtpForm() {
        fillIn();
        smtp.setForm([this](const smtplib::Message& message, const smtplib::Extensions& offered,
                            const QDateTime& now) {
            asked = offered;
            smtplib::PreparedMessage prepared = prepareMessage(message, now);
            prepared.body = body;
            prepared.smtpUtf8 = smtpUtf8;
            return prepared;
        });
    }

    SmtpMailbox mailbox;
    std::optional<smtplib::Extensions> asked;
    std::string body = "another text\r\n";
    bool smtpUtf8 = false;
};

TEST_F(SmtpForm, IsMadeWhenTheServerHasToldItsExtensions) {
    ScriptedServer server(mailbox);
    EXPECT_EQ(open(server), 0);
    EXPECT_FALSE(asked.has_value());
    EXPECT_EQ(transmit(), 0);
    ASSERT_TRUE(asked.has_value());
    EXPECT_TRUE(asked->eightBit);
    EXPECT_FALSE(asked->smtpUtf8);
    ASSERT_THAT(mailbox.messages(), SizeIs(1));
    EXPECT_THAT(mailbox.messages()[0], EndsWith("\r\n\r\nanother text\r\n"));
    EXPECT_THAT(trail, Contains(EndsWith(" SIZE=" + std::to_string(mailbox.messages()[0].size()))));
}

TEST_F(SmtpForm, ForAServerThatKnowsOnlyHeloNothingIsOffered) {
    mailbox.answer("EHLO", "500 what?\r\n");
    ScriptedServer server(mailbox);
    EXPECT_EQ(send(server), 0);
    ASSERT_TRUE(asked.has_value());
    EXPECT_FALSE(asked->eightBit);
    EXPECT_THAT(mailbox.messages(), SizeIs(1));
}

TEST_F(SmtpForm, AnnouncesWhatItNeeds) {
    mailbox.answer("EHLO", "250-mail\r\n250-8BITMIME\r\n250 SMTPUTF8\r\n");
    body = "\xc3\xb6\r\n";
    smtpUtf8 = true;
    ScriptedServer server(mailbox);
    EXPECT_EQ(send(server), 0);
    EXPECT_TRUE(asked->smtpUtf8);
    EXPECT_THAT(trail, Contains("> MAIL FROM:<bob@example.org> BODY=8BITMIME SMTPUTF8"));
}

TEST_F(SmtpForm, WhatItRaisesEndsTheSessionBeforeAnythingIsAsked) {
    smtp.setForm([](const smtplib::Message&, const smtplib::Extensions&,
                    const QDateTime&) -> smtplib::PreparedMessage {
        throw platform::RuntimeError(errors::AddressBeyondAscii);
    });
    ScriptedServer server(mailbox);
    EXPECT_EQ(send(server), errors::AddressBeyondAscii);
    ASSERT_TRUE(server.waitForEndOf(1));
    EXPECT_THAT(trail, Not(Contains(HasSubstr("MAIL"))));
    EXPECT_THAT(server.keywords(), Contains("QUIT"));
    EXPECT_THAT(mailbox.messages(), IsEmpty());
}

TEST_F(SmtpForm, TheDataFileFollowsItsBody) {
    const support::TemporaryFolder folder;
    folder.write("data", "YQ==\r\n--end--\r\n");
    const support::DriveStandsFor drive('C', folder.qtPath("."));
    smtp.setDataFile(QStringLiteral("C:\\data"));
    smtp.setDataFileEncoded(true);
    ScriptedServer server(mailbox);
    EXPECT_EQ(send(server), 0);
    EXPECT_THAT(mailbox.messages().at(0), EndsWith("\r\n\r\nanother text\r\nYQ==\r\n--end--\r\n"));
}

TEST_F(SmtpForm, AnEmptyOneIsTheComponentsOwn) {
    smtp.setForm({});
    ScriptedServer server(mailbox);
    EXPECT_EQ(send(server), 0);
    EXPECT_FALSE(asked.has_value());
    EXPECT_THAT(mailbox.messages().at(0), EndsWith("\r\n\r\ntext\r\n"));
}

} // namespace
