#include "addresses/written_address.h"
#include "components/smtplib/address_list.h"
#include "message/writer_in_use.h"
#include "platform/runtime_error.h"
#include "tests/support/mail_mode_is.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using addresses::hasAddress;
using addresses::writtenAddress;

struct WrittenCase {
    const char* what;
    std::string name;
    std::string written;
};

class WrittenAddress : public testing::TestWithParam<WrittenCase> {};

} // namespace

TEST_P(WrittenAddress, IsReadBackAsTheSameNameAndGoesOutInBothWaysOfMail) {
    const std::string written = writtenAddress({GetParam().name, "ann@example.org", "Mail"});
    EXPECT_EQ(written, GetParam().written);
    const std::string list = "bob@example.org, " + written + ", " + written;
    for (const MailMode mode : {MailMode::House, MailMode::Standard}) {
        const support::MailModeIs inUse(mode);
        smtplib::Message message;
        message.sender = "me@example.org";
        message.recipients = list;
        EXPECT_EQ(platform::errorNumberOf([&] { writerInUse().check(message); }), 0);
    }
    const auto read = smtplib::parseAddressList(list);
    ASSERT_EQ(read.size(), 3U);
    EXPECT_EQ(read[1].displayName, GetParam().name);
    EXPECT_EQ(read[1].mailbox(), "ann@example.org");
    EXPECT_TRUE(hasAddress(list, "ANN@EXAMPLE.ORG"));
}

INSTANTIATE_TEST_SUITE_P(
    Names, WrittenAddress,
    testing::Values(
        WrittenCase{"None", "", "ann@example.org"},
        WrittenCase{"Words", "Ann Smith", "Ann Smith <ann@example.org>"},
        WrittenCase{"Comma", "Smith, Ann", "\"Smith, Ann\" <ann@example.org>"},
        WrittenCase{"Dot", "Ann M. Smith", "\"Ann M. Smith\" <ann@example.org>"},
        WrittenCase{"Quotes", "Ann \"A\" Smith", R"("Ann \"A\" Smith" <ann@example.org>)"},
        WrittenCase{"Backslash", "a\\b", R"("a\\b" <ann@example.org>)"},
        WrittenCase{"OnlyABackslash", "\\", R"("\\" <ann@example.org>)"},
        WrittenCase{"Comment", "Ann (Sales)", "\"Ann (Sales)\" <ann@example.org>"},
        WrittenCase{"Angle", "Ann <ann@example.net>", "\"Ann <ann@example.net>\" <ann@example.org>"},
        WrittenCase{"Group", "Us: all;", "\"Us: all;\" <ann@example.org>"},
        WrittenCase{"Brackets", "[x]", "\"[x]\" <ann@example.org>"},
        WrittenCase{"AddressSign", "@ann", "\"@ann\" <ann@example.org>"},
        WrittenCase{"Signs", "Ann & Bob's", "Ann & Bob's <ann@example.org>"},
        WrittenCase{"BeyondAscii", "Zo\xC3\xAB M\xC3\xBCller", "Zo\xC3\xAB M\xC3\xBCller <ann@example.org>"},
        WrittenCase{"BeyondAsciiWithAComma", "M\xC3\xBCller, Zo\xC3\xAB",
                    "\"M\xC3\xBCller, Zo\xC3\xAB\" <ann@example.org>"},
        WrittenCase{"FourBytes", "\xF0\x9F\x90\xA6", "\xF0\x9F\x90\xA6 <ann@example.org>"},
        WrittenCase{"RightToLeft", "\xD7\xA9\xD7\x9C\xD7\x95\xD7\x9D",
                    "\xD7\xA9\xD7\x9C\xD7\x95\xD7\x9D <ann@example.org>"},
        WrittenCase{"EncodedWord", "=?utf-8?Q?Zo=C3=AB?=", "=?utf-8?Q?Zo=C3=AB?= <ann@example.org>"},
        WrittenCase{"Longest", std::string(64, '"'),
                    '"' +
                        [] {
                            std::string escaped;
                            for (int count = 0; count < 64; ++count) {
                                escaped += "\\\"";
                            }
                            return escaped;
                        }() +
                        "\" <ann@example.org>"}),
    [](const auto& one) { return std::string(one.param.what); });

TEST(WrittenAddress, OfAQuotedLocalPartIsReadBackToo) {
    const std::string written = writtenAddress({"Ann", "\"a b\"@example.org", "Mail"});
    const auto read = smtplib::parseAddressList(written);
    ASSERT_EQ(read.size(), 1U);
    EXPECT_EQ(read[0].mailbox(), "\"a b\"@example.org");
}

TEST(WrittenAddress, IsFoundInAListThatHasItAndInNoOther) {
    EXPECT_TRUE(hasAddress("Ann <a@x.org>, b@x.org", "B@X.org"));
    EXPECT_TRUE(hasAddress("Us: a@x.org;", "a@x.org"));
    EXPECT_TRUE(hasAddress("a@b\xC3\xBCro.example", "a@xn--bro-hoa.example"));
    EXPECT_TRUE(hasAddress("a@xn--bro-hoa.example", "a@b\xC3\xBCro.example"));
    EXPECT_FALSE(hasAddress("aa@x.org", "a@x.org"));
    EXPECT_FALSE(hasAddress("", "a@x.org"));
    EXPECT_FALSE(hasAddress("a@x.org, half", "a@x.org")) << "a list that is no list yet has nothing";
}
