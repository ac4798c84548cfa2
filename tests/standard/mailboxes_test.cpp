#include "standard/mailboxes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace {
using standard::mailboxesText;
using standard::messageIdsOf;
using testing::ElementsAre;
using testing::IsEmpty;

struct MailboxesCase {
    const char* name;
    std::string field;
    std::string text;
};

class MailboxesText : public testing::TestWithParam<MailboxesCase> {};

TEST_P(MailboxesText, IsAsAPersonTypesIt) {
    EXPECT_EQ(mailboxesText(GetParam().field), GetParam().text);
}

const MailboxesCase kMailboxesCases[] = {
    {"Address", "ann@example.org", "ann@example.org"},
    {"AngleBrackets", "<ann@example.org>", "ann@example.org"},
    {"Name", "Ann Lee <ann@example.org>", "Ann Lee <ann@example.org>"},
    {"QuotesThatAreNotNeeded", "\"Ann Lee\" <ann@example.org>", "Ann Lee <ann@example.org>"},
    {"QuotesThatAreNeeded", "\"Lee, Ann\" <ann@example.org>", "\"Lee, Ann\" <ann@example.org>"},
    {"DecodedComma", "=?utf-8?Q?M=C3=BCller=2C_Hans?= <h@example.org>", "\"Müller, Hans\" <h@example.org>"},
    {"DecodedQuote", "=?utf-8?Q?a=22b?= <h@example.org>", "\"a\\\"b\" <h@example.org>"},
    {"DecodedAddress", "=?utf-8?Q?x=40y_=3Cz=3E?= <h@example.org>", "\"x@y <z>\" <h@example.org>"},
    {"DecodedLineEnd", "=?utf-8?Q?a=0D=0ABcc=3A_x?= <h@example.org>", "\"a  Bcc: x\" <h@example.org>"},
    {"CharacterCutInTwo", "=?utf-8?B?ww==?= =?utf-8?B?pA==?= <h@example.org>", "ä <h@example.org>"},
    {"RawUtf8", "Müller <h@example.org>", "Müller <h@example.org>"},
    {"RawWindows1252", "M\xFCller <h@example.org>", "Müller <h@example.org>"},
    {"Comment", "ann@example.org (Ann)", "Ann <ann@example.org>"},
    {"Several", "a@example.org, B <b@example.org>", "a@example.org, B <b@example.org>"},
    {"Group", "Team: a@example.org, B <b@example.org>;, c@example.org",
     "a@example.org, B <b@example.org>, c@example.org"},
    {"EmptyGroup", "Undisclosed recipients: ;", ""},
    {"NoAddress", "nobody", ""},
    {"Nothing", "", ""},
};

INSTANTIATE_TEST_SUITE_P(Fields, MailboxesText, testing::ValuesIn(kMailboxesCases),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(MessageIds, StandBetweenAngleBrackets) {
    EXPECT_THAT(messageIdsOf("<a@b> (comment)\t<c@d>"), ElementsAre("<a@b>", "<c@d>"));
    EXPECT_THAT(messageIdsOf("a@b"), IsEmpty());
    EXPECT_THAT(messageIdsOf("<>"), IsEmpty());
}

TEST(MessageIds, AreLeftOutWhenTheyCouldNotBeWritten) {
    EXPECT_THAT(messageIdsOf("<a b@c> <a\r\nBcc: x@y> <\xC3\xA4@b> <c@d>"), ElementsAre("<c@d>"));
    EXPECT_THAT(messageIdsOf("<a<b@c>"), ElementsAre("<b@c>"));
    EXPECT_THAT(messageIdsOf("<" + std::string(1'000, 'a') + ">"), IsEmpty());
}
} // namespace
