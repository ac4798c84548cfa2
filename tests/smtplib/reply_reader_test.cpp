#include "components/smtplib/reply_reader.h"
#include "tests/support/pieces.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace {

using smtplib::Extensions;
using smtplib::extensionsOf;
using smtplib::ReplyReader;
using testing::ElementsAreArray;

/** "CODE line|line" for each reply, then "broken" when the bytes are broken. */
std::vector<std::string> replies(std::string_view bytes, std::size_t pieceBytes) {
    ReplyReader reader;
    std::vector<std::string> described;
    support::forEachPiece(bytes, pieceBytes, [&](std::string_view piece) {
        reader.receive(piece);
        while (const auto reply = reader.next()) {
            described.push_back(std::to_string(reply->code));
            for (const std::string& line : reply->lines) {
                described.back() += '|' + line;
            }
        }
    });
    if (reader.isBroken()) {
        described.emplace_back("broken");
    }
    return described;
}

struct Case {
    const char* name;
    std::string bytes;
    std::vector<std::string> replies;
};

std::string lines(std::size_t count) {
    std::string bytes;
    for (std::size_t line = 0; line + 1 < count; ++line) {
        bytes += "250-x\r\n";
    }
    return bytes + "250 x\r\n";
}

std::string manyTexts(std::size_t count) {
    std::string text = "250";
    for (std::size_t line = 0; line < count; ++line) {
        text += "|x";
    }
    return text;
}

const std::vector<Case> kCases{
    {"OneLine", "250 ok\r\n", {"250|ok"}},
    {"BlankAndNoText", "250 \r\n", {"250|"}},
    {"CodeAlone", "250\r\n", {"250|"}},
    {"LineFeedOnly", "250 ok\n250\n", {"250|ok", "250|"}},
    {"Incomplete", "250 ok\r", {}},
    {"ManyLines", "250-a\r\n250-b\r\n250 c\r\n", {"250|a|b|c"}},
    {"ManyLinesWithoutText", "250-\r\n250\r\n", {"250||"}},
    {"TwoReplies", "220 a\r\n221 b\r\n", {"220|a", "221|b"}},
    {"UnknownCode", "299 a\r\n577 b\r\n", {"299|a", "577|b"}},
    {"OddText", "550 \x1b[2J\xff\xc3\xa4\r\r\n", {"550|\x1b[2J\xff\xc3\xa4\r"}},
    {"NulInTheText", std::string("250 a\0b\r\n", 9), {std::string("250|a\0b", 7)}},
    {"LongerThanTheRule", "250 " + std::string(600, 'x') + "\r\n", {"250|" + std::string(600, 'x')}},
    {"LongestLine", "250 " + std::string(4092, 'x') + "\r\n", {"250|" + std::string(4092, 'x')}},
    {"LineTooLong", "250 " + std::string(4094, 'x') + "\r\n", {"broken"}},
    {"LineWithoutEnd", "220 " + std::string(100'000, 'x'), {"broken"}},
    {"MostLines", lines(256), {manyTexts(256)}},
    {"TooManyLines", lines(257), {"broken"}},
    {"DifferingCodes", "250-a\r\n251 b\r\n", {"broken"}},
    {"EmptyLine", "\r\n", {"broken"}},
    {"TwoDigits", "25\r\n", {"broken"}},
    {"FourDigits", "2500 a\r\n", {"broken"}},
    {"LetterBehindTheCode", "250ok\r\n", {"broken"}},
    {"FirstDigitOne", "150 a\r\n", {"broken"}},
    {"FirstDigitSix", "650 a\r\n", {"broken"}},
    {"SignForADigit", "-50 a\r\n", {"broken"}},
    {"BlankForADigit", " 50 a\r\n", {"broken"}},
    {"OtherProtocol", "HTTP/1.1 400 Bad Request\r\n", {"broken"}},
    {"OtherMailProtocol", "+OK ready\r\n", {"broken"}},
    {"EncryptedBytes", std::string("\x15\x03\x01\0\x02\x02\n", 7), {"broken"}},
    {"NothingBehindBrokenBytes", "220 a\r\nx\r\n220 b\r\n", {"220|a", "broken"}},
};

class RepliesOf : public testing::TestWithParam<Case> {};

TEST_P(RepliesOf, AreTheSameInPiecesOfAnySize) {
    for (const std::size_t pieceBytes : support::kPieceSizes) {
        EXPECT_THAT(replies(GetParam().bytes, pieceBytes), ElementsAreArray(GetParam().replies))
            << "in pieces of " << pieceBytes;
    }
}

INSTANTIATE_TEST_SUITE_P(Bytes, RepliesOf, testing::ValuesIn(kCases),
                         [](const auto& test) { return test.param.name; });

TEST(ReplyReader, TellsOfBytesThatAreNoReplyYet) {
    ReplyReader reader;
    EXPECT_FALSE(reader.hasBytes());
    reader.receive("250-a\r\n");
    EXPECT_FALSE(reader.next());
    EXPECT_TRUE(reader.hasBytes()) << "a line of a reply that goes on";
    reader.receive("250 b\r\n2");
    EXPECT_TRUE(reader.next());
    EXPECT_TRUE(reader.hasBytes());
}

TEST(Extensions, AreReadWithoutRegardToCaseAndOrder) {
    const Extensions extensions =
        extensionsOf({250, {"mail.example.org", "PIPELINING", "Size 1000", "8bitmime"}});
    EXPECT_TRUE(extensions.size);
    EXPECT_EQ(extensions.sizeLimit, 1000);
    EXPECT_TRUE(extensions.eightBit);
    EXPECT_FALSE(extensions.smtpUtf8);
    EXPECT_TRUE(extensionsOf({250, {"mail", "SmtpUtf8"}}).smtpUtf8);
    EXPECT_FALSE(extensionsOf({250, {"SMTPUTF8", "XSMTPUTF8"}}).smtpUtf8);
}

TEST(Extensions, ALimitThatIsNoneCountsForNothing) {
    for (const char* line :
         {"SIZE", "SIZE ", "SIZE 0", "SIZE -1", "SIZE 10MB", "SIZE 99999999999999999999"}) {
        const Extensions extensions = extensionsOf({250, {"mail", line}});
        EXPECT_TRUE(extensions.size) << line;
        EXPECT_EQ(extensions.sizeLimit, 0) << line;
        EXPECT_FALSE(extensions.eightBit) << line;
    }
}

TEST(Extensions, TheServersNameIsNone) {
    EXPECT_FALSE(extensionsOf({250, {"SIZE 1000"}}).size);
    EXPECT_FALSE(extensionsOf({250, {"mail", "XSIZE 10", "SIZES"}}).size);
    EXPECT_FALSE(extensionsOf({250, {"STARTTLS", "XSTARTTLS", "STARTTLSX", "AUTH STARTTLS"}}).startTls);
    EXPECT_THAT(extensionsOf({250, {"AUTH PLAIN", "XAUTH PLAIN", "AUTHX PLAIN"}}).mechanisms,
                testing::IsEmpty());
}

TEST(Extensions, EncryptionMayBeOffered) {
    for (const char* const line : {"STARTTLS", "starttls", "StartTLS", "STARTTLS x"}) {
        EXPECT_TRUE(extensionsOf({250, {"mail", line}}).startTls) << line;
    }
    EXPECT_FALSE(extensionsOf({250, {"mail", "SIZE"}}).startTls);
}

struct Offer {
    const char* name;
    std::vector<std::string> lines;
    std::vector<std::string> mechanisms;
};

const std::vector<Offer> kOffers{
    {"None", {"SIZE"}, {}},
    {"WithoutMechanisms", {"AUTH"}, {}},
    {"WithoutMechanismsButABlank", {"AUTH "}, {}},
    {"One", {"AUTH PLAIN"}, {"PLAIN"}},
    {"Many", {"AUTH SCRAM-SHA-256 LOGIN PLAIN"}, {"SCRAM-SHA-256", "LOGIN", "PLAIN"}},
    {"InAnyCase", {"auth Plain login"}, {"PLAIN", "LOGIN"}},
    {"ManyBlanks", {"AUTH  PLAIN   LOGIN "}, {"PLAIN", "LOGIN"}},
    {"Tabs", {"AUTH \tPLAIN\tLOGIN"}, {"PLAIN", "LOGIN"}},
    {"SpelledAsOfOld", {"AUTH=LOGIN PLAIN"}, {"LOGIN", "PLAIN"}},
    {"SpelledAsOfOldInLowerCase", {"auth=login"}, {"LOGIN"}},
    {"SpelledAsOfOldAndEmpty", {"AUTH="}, {}},
    {"SpelledInBothWays", {"AUTH PLAIN", "AUTH=LOGIN"}, {"PLAIN", "LOGIN"}},
    {"Twice", {"AUTH PLAIN", "AUTH PLAIN CRAM-MD5"}, {"PLAIN", "PLAIN", "CRAM-MD5"}},
};

class OfferedMechanisms : public testing::TestWithParam<Offer> {};

TEST_P(OfferedMechanisms, AreRead) {
    std::vector<std::string> lines{"mail.example.org"};
    lines.insert(lines.end(), GetParam().lines.begin(), GetParam().lines.end());
    const Extensions extensions = extensionsOf({250, lines});
    EXPECT_THAT(extensions.mechanisms, ElementsAreArray(GetParam().mechanisms));
    for (const std::string& mechanism : GetParam().mechanisms) {
        EXPECT_TRUE(extensions.offers(mechanism));
    }
    EXPECT_FALSE(extensions.offers("EXTERNAL"));
    EXPECT_FALSE(extensions.offers(""));
}

INSTANTIATE_TEST_SUITE_P(Lines, OfferedMechanisms, testing::ValuesIn(kOffers),
                         [](const auto& test) { return test.param.name; });

} // namespace
