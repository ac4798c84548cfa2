// Fields that try to become commands or header lines, and fields that are no addresses.

#include "tests/smtplib/smtp_fixture.h"
#include "tests/support/temporary_folder.h"

#include <gmock/gmock.h>

namespace {

using support::ScriptedServer;
using support::SmtpMailbox;
using testing::ElementsAre;
using testing::Not;
using testing::StartsWith;
namespace errors = platform::errors;

struct Field {
    const char* name;
    void (smtplib::SMTP::*set)(std::string);
    std::string value;
    int error;
};

class UnsendableField : public support::SmtpTest, public testing::WithParamInterface<Field> {};

TEST_P(UnsendableField, EndsTheSessionBeforeAnyOfItIsSent) {
    fillIn();
    (smtp.*GetParam().set)(GetParam().value);
    SmtpMailbox mailbox;
    ScriptedServer server(mailbox);
    ASSERT_EQ(open(server), 0);
    EXPECT_EQ(transmit(), GetParam().error);
    ASSERT_TRUE(server.waitForEndOf(1));
    EXPECT_THAT(server.commands(), ElementsAre("EHLO [127.0.0.1]", "QUIT"));
    fillIn();
    smtp.setAdditionalHeaders("");
    smtp.setMessageId("");
    EXPECT_EQ(send(), 0) << "a corrected message can be sent";
}

using smtplib::SMTP;

const std::vector<Field> kFields{
    {"CommandInTo", &SMTP::setRecipients, "ann@example.org>\r\nRCPT TO:<eve@example.org",
     errors::FieldHoldsLineEnd},
    {"LineFeedInTo", &SMTP::setRecipients, "ann@example.org\n", errors::FieldHoldsLineEnd},
    {"BracketInTo", &SMTP::setRecipients, "ann@example.org> SIZE=1", errors::BadAddress},
    {"CommandInCopies", &SMTP::setCopies, "\"a\r\nDATA\" <ann@example.org>", errors::FieldHoldsLineEnd},
    {"CommandInSender", &SMTP::setSender, "bob@example.org>\r\nDATA\r\n", errors::FieldHoldsLineEnd},
    {"NulInSender", &SMTP::setSender, std::string("bob\0@example.org", 16), errors::FieldHoldsLineEnd},
    {"TwoSenders", &SMTP::setSender, "bob@example.org, eve@example.org", errors::BadAddress},
    {"NoSender", &SMTP::setSender, "", errors::BadAddress},
    {"HeaderInSubject", &SMTP::setSubject, "Hello\r\nBcc: eve@example.org", errors::FieldHoldsLineEnd},
    {"BodyInSubject", &SMTP::setSubject, "Hello\r\n\r\nother text", errors::FieldHoldsLineEnd},
    {"CarriageReturnInSubject", &SMTP::setSubject, "Hello\rBcc: eve@example.org", errors::FieldHoldsLineEnd},
    {"NulInSubject", &SMTP::setSubject, std::string("a\0b", 3), errors::FieldHoldsLineEnd},
    {"BodyInAdditionalHeaders", &SMTP::setAdditionalHeaders, "X-A: b\r\n\r\nother text\r\n",
     errors::BadHeaderLine},
    {"EndInAdditionalHeaders", &SMTP::setAdditionalHeaders, ".\r\n", errors::BadHeaderLine},
    {"SecondFromInAdditionalHeaders", &SMTP::setAdditionalHeaders, "From: eve@example.org\r\n",
     errors::BadHeaderLine},
    {"BareLineFeedInAdditionalHeaders", &SMTP::setAdditionalHeaders, "X-A: b\nBcc: c@d\r\n",
     errors::BadHeaderLine},
    {"HeaderInMessageId", &SMTP::setMessageId, "<a@b>\r\nBcc: eve@example.org", errors::BadHeaderLine},
};

INSTANTIATE_TEST_SUITE_P(Fields, UnsendableField, testing::ValuesIn(kFields),
                         [](const auto& test) { return test.param.name; });

TEST_F(UnsendableField, TheEndOfAMessageInABodyIsPartOfTheText) {
    fillIn();
    SmtpMailbox mailbox;
    ScriptedServer server(mailbox);
    for (const char* end : {"\r\n.\r\n", "\n.\n", "\r.\r", "\n.\r\n", "\r\n.\n", "\r\n.\r"}) {
        smtp.setBody(std::string("a") + end + "MAIL FROM:<eve@example.org>\r\n");
        EXPECT_EQ(send(server), 0);
        EXPECT_THAT(mailbox.messages().back(),
                    testing::EndsWith("\r\na\r\n..\r\nMAIL FROM:<eve@example.org>\r\n"));
    }
    EXPECT_EQ(mailbox.messages().size(), 6U);
}

TEST_F(UnsendableField, ADataFileThatCannotBeReadEndsTheSessionBeforeTheMessage) {
    const support::TemporaryFolder folder;
    fillIn();
    ScriptedServer server{SmtpMailbox()};
    for (const auto& [name, error] :
         {std::pair("missing", errors::FileNotFound), std::pair(".", errors::PathFileAccess)}) {
        smtp.setDataFile(folder.qtPath(name));
        ASSERT_EQ(open(server), 0);
        EXPECT_EQ(transmit(), error);
    }
    ASSERT_TRUE(server.waitForEndOf(2));
    EXPECT_THAT(server.commands(), testing::Each(Not(StartsWith("MAIL"))));
}

} // namespace
