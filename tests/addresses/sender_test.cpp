#include "addresses/sender.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace {

using addresses::Sender;
using addresses::senderOf;

struct Case {
    const char* what;
    std::string from;
    std::optional<Sender> sender;
};

class SenderOfALine : public testing::TestWithParam<Case> {};

} // namespace

TEST_P(SenderOfALine, IsTakenFromItsFromLine) {
    const auto sender = senderOf(GetParam().from);
    ASSERT_EQ(sender.has_value(), GetParam().sender.has_value());
    if (sender) {
        EXPECT_EQ(sender->name, GetParam().sender->name);
        EXPECT_EQ(sender->address, GetParam().sender->address);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Senders, SenderOfALine,
    testing::Values(
        Case{"Plain", "ann@example.org", Sender{"", "ann@example.org"}},
        Case{"Named", "Ann Smith <ann@example.org>", Sender{"Ann Smith", "ann@example.org"}},
        Case{"Quoted", "\"Smith, Ann\" <ann@example.org>", Sender{"Smith, Ann", "ann@example.org"}},
        Case{"QuotesInQuotes", R"("Ann \"A\" Smith" <a@x.org>)", Sender{"Ann \"A\" Smith", "a@x.org"}},
        Case{"NameBehind", "ann@example.org (Ann Smith)", Sender{"Ann Smith", "ann@example.org"}},
        Case{"NoNameInBrackets", "<ann@example.org>", Sender{"", "ann@example.org"}},
        Case{"EncodedWord", "=?utf-8?Q?Zo=C3=AB?= <z@x.org>", Sender{"=?utf-8?Q?Zo=C3=AB?=", "z@x.org"}},
        Case{"BytesBeyondAscii", "Zo\xEB <z@x.org>", Sender{"Zo\xEB", "z@x.org"}},
        Case{"Several", "Ann <ann@x.org>, Bob <bob@x.org>", Sender{"Ann", "ann@x.org"}},
        Case{"Group", "Us: Ann <ann@x.org>;", Sender{"Ann", "ann@x.org"}},
        Case{"DecodedComma", "Smith, Ann <ann@x.org>", Sender{"Smith, Ann", "ann@x.org"}},
        Case{"DecodedBrackets", "Ann [x] <ann@x.org>", Sender{"Ann [x]", "ann@x.org"}},
        Case{"DecodedAngle", "A < B <ann@x.org>", Sender{"A < B", "ann@x.org"}},
        Case{"AnAddressAsName", "bob@x.org <ann@x.org>", Sender{"bob@x.org", "ann@x.org"}},
        Case{"AnOpenQuote", "\"Ann <ann@x.org>", Sender{"\"Ann", "ann@x.org"}},
        Case{"DecodedQuotes", "\"Ann\\\" @\" x\" <ann@x.org>", Sender{"Ann\" @\" x", "ann@x.org"}},
        Case{"SpacesAround", "  Ann   <ann@x.org>  ", Sender{"Ann", "ann@x.org"}},
        Case{"LongestName", std::string(4'000, 'x') + " <ann@x.org>",
             Sender{std::string(4'000, 'x'), "ann@x.org"}},
        Case{"WordsOnly", "Ann Smith", std::nullopt}, Case{"Empty", "", std::nullopt},
        Case{"OnlyTheEndOfBrackets", "ann@x.org>", std::nullopt},
        Case{"BracketsTheWrongWayRound", "> ann <", std::nullopt},
        Case{"ACommentWithoutAnEnd", "ann@x.org (Ann", std::nullopt}),
    [](const auto& one) { return std::string(one.param.what); });
