// Fields that must not become part of a header, Message-IDs, and what a message needs.

#include "components/smtplib/message.h"
#include "components/smtplib/message_header.h"
#include "platform/runtime_error.h"
#include "tests/smtplib/header_fields.h"

#include <gmock/gmock.h>

#include <string>

namespace {

using smtplib::HeaderFields;
using support::at;
using support::plainFields;
using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;
namespace errors = platform::errors;

int errorOf(const HeaderFields& fields) {
    return platform::errorNumberOf([&] { messageHeader(fields); });
}

TEST(MessageHeader, ALineEndInTheSubjectIsRefused) {
    for (const std::string& subject : {std::string("a\r\nBcc: eve@example.org"), std::string("a\n"),
                                       std::string("\ra"), std::string("a\0b", 3)}) {
        HeaderFields fields = plainFields();
        fields.subject = subject;
        EXPECT_EQ(errorOf(fields), errors::FieldHoldsLineEnd);
    }
}

struct HeaderLines {
    const char* name;
    std::string text;
};

std::string linesName(const testing::TestParamInfo<HeaderLines>& test) {
    return test.param.name;
}

class AdditionalLinesRefused : public testing::TestWithParam<HeaderLines> {};

TEST_P(AdditionalLinesRefused, AreRefusedAlsoBehindGoodOnes) {
    HeaderFields fields = plainFields();
    fields.additionalLines = GetParam().text;
    EXPECT_EQ(errorOf(fields), errors::BadHeaderLine);
    fields.additionalLines = "MIME-Version: 1.0\r\n" + GetParam().text;
    EXPECT_EQ(errorOf(fields), errors::BadHeaderLine);
}

INSTANTIATE_TEST_SUITE_P(
    HeaderLines, AdditionalLinesRefused,
    testing::Values(
        HeaderLines{"WithoutEnd", "X-A: b"}, HeaderLines{"LineFeedOnly", "X-A: b\n"},
        HeaderLines{"BareCarriageReturn", "X-A: b\rX-C: d\r\n"},
        HeaderLines{"BareLineFeed", "X-A: b\nX-C: d\r\n"}, HeaderLines{"Nul", std::string("X-A: \0\r\n", 8)},
        HeaderLines{"EmptyLine", "\r\nbody\r\n"}, HeaderLines{"EmptyLineBehind", "X-A: b\r\n\r\nbody: c\r\n"},
        HeaderLines{"LineOfBlanks", "X-A: b\r\n \t\r\n"}, HeaderLines{"NoColon", "X-A\r\n"},
        HeaderLines{"NoName", ": a\r\n"}, HeaderLines{"BlankInTheName", "X A: b\r\n"},
        HeaderLines{"BeyondAscii", "X-A: \xc3\xa4\r\n"}, HeaderLines{"Escape", "X-A: \x1b\r\n"},
        HeaderLines{"TooLong", "X-A: " + std::string(994, 'x') + "\r\n"},
        HeaderLines{"SecondFrom", "From: a@x.org\r\n"}, HeaderLines{"SecondDateInOtherCase", "dATE: now\r\n"},
        HeaderLines{"To", "To: a@x.org\r\n"}, HeaderLines{"Copies", "Cc: a@x.org\r\n"},
        HeaderLines{"Subject", "Subject: a\r\n"}, HeaderLines{"MessageId", "Message-Id: <a@b>\r\n"}),
    linesName);

TEST(MessageHeader, AContinuationLineNeedsALineBeforeIt) {
    HeaderFields fields = plainFields();
    fields.additionalLines = " folded: b\r\n";
    EXPECT_EQ(errorOf(fields), errors::BadHeaderLine);
    fields.additionalLines = "X-A: b\r\n folded: b\r\n";
    EXPECT_EQ(errorOf(fields), 0);
    fields.additionalLines = "X-A: " + std::string(993, 'x') + "\r\n";
    EXPECT_EQ(errorOf(fields), 0) << "the longest line";
}

TEST(MessageHeader, AMessageIdThatIsNoneIsRefused) {
    for (const std::string& id :
         {std::string("1@example.org"), std::string("<1@example.org"), std::string("<1>"),
          std::string("<@b>"), std::string("<a@>"), std::string("<a b@c>"),
          std::string("<a@b>\r\nBcc: <c@d>"), std::string("<a>@<b>"), '<' + std::string(999, 'a') + "@b>"}) {
        HeaderFields fields = plainFields();
        fields.messageId = id;
        EXPECT_EQ(errorOf(fields), errors::BadHeaderLine) << id;
    }
}

TEST(NewMessageId, IsTheSendersAndNeverTheSame) {
    const QDateTime now = at({2024, 3, 1}, {9, 5, 7}, 0);
    const std::string first = smtplib::newMessageId("Bob <bob@mail.example.org>", now);
    EXPECT_THAT(first, AllOf(StartsWith("<1709283907000."), HasSubstr("@mail.example.org>")));
    EXPECT_NE(first, smtplib::newMessageId("bob@mail.example.org", now));
    HeaderFields fields = plainFields();
    fields.messageId = smtplib::newMessageId("bob@[IPv6:::1]", now);
    EXPECT_EQ(errorOf(fields), 0);
}

TEST(PrepareMessage, AMessageIdOfASenderBeyondAsciiIsAsciiAllTheSame) {
    const auto now = QDateTime::currentDateTime();
    EXPECT_TRUE(smtplib::newMessageId("b\xc3\xb6@b\xc3\xbc.org", now).ends_with("@xn--b-eha.org>"));
}

TEST(PrepareMessage, TakesOneSenderAndAtLeastOneRecipient) {
    const auto errorWith = [](const std::string& sender, const std::string& to, const std::string& cc) {
        smtplib::Message message;
        message.sender = sender;
        message.recipients = to;
        message.copies = cc;
        return platform::errorNumberOf([&] { prepareMessage(message, QDateTime::currentDateTime()); });
    };
    EXPECT_EQ(errorWith("bob@x.org", "ann@x.org", ""), 0);
    EXPECT_EQ(errorWith("bob@x.org", "", "ann@x.org"), 0);
    EXPECT_EQ(errorWith("bob@x.org", " , ", ","), errors::NoRecipient);
    EXPECT_EQ(errorWith("bob@x.org", "nobody:;", ""), errors::NoRecipient);
    EXPECT_EQ(errorWith("", "ann@x.org", ""), errors::BadAddress);
    EXPECT_EQ(errorWith("bob", "ann@x.org", ""), errors::BadAddress);
    EXPECT_EQ(errorWith("bob@x.org, carl@x.org", "ann@x.org", ""), errors::BadAddress);
    EXPECT_EQ(errorWith("bob@x.org\r\n", "ann@x.org", ""), errors::FieldHoldsLineEnd);
}

} // namespace
