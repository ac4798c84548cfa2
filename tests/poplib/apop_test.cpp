#include "components/poplib/apop.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

TEST(ApopDigest, IsTheOneOfTheExampleInRfc1939) {
    EXPECT_EQ(poplib::apopDigest("<1896.697170952@dbc.mtview.ca.us>", "tanstaaf"),
              "c4c9334bac560ecc979e58001b3e22fb");
}

TEST(ApopDigest, TakesPasswordsOfAllKinds) {
    EXPECT_EQ(poplib::apopDigest("<1@h>", ""), "674253bf2fe6a1c30cf6dfe81e8225c1");
    EXPECT_EQ(poplib::apopDigest("<1@h>", "gr\u00FC\u00DFe"), "890c66eeacfeb1cd58f050ac0bb2b66e");
    EXPECT_EQ(poplib::apopDigest("<1@h>", std::string("pen\0cil", 7)), "fa6952d8087c5b45e1a6fd8a6b4bffb9");
}

struct Greeting {
    const char* name;
    std::string text;
    std::optional<std::string_view> timestamp;
};

const std::vector<Greeting>& greetings() {
    static const std::vector<Greeting> table{
        {"OfTheRfc", "POP3 server ready <1896.697170952@dbc.mtview.ca.us>",
         "<1896.697170952@dbc.mtview.ca.us>"},
        {"Alone", "<1@h>", "<1@h>"},
        {"WordsBehind", "<1@h> ready", "<1@h>"},
        {"NoBlankAround", "ready<1@h>now", "<1@h>"},
        {"AllAtomLetters", "<aZ0!#$%&'*+-/=?^_`{|}~@h>", "<aZ0!#$%&'*+-/=?^_`{|}~@h>"},
        {"Base64InIt", "Dovecot ready. <17a1.1.5b0e3d8e.Xa+y/w==@mail>", "<17a1.1.5b0e3d8e.Xa+y/w==@mail>"},
        {"AddressLiteral", "<1.2@[192.0.2.1]>", "<1.2@[192.0.2.1]>"},
        {"AddressLiteralOfIpv6", "<1.2@[IPv6:2001:db8::1]>", "<1.2@[IPv6:2001:db8::1]>"},
        {"OtherBracketsBefore", "<ready> a > b <1@h>", "<1@h>"},
        {"BracketOpenBefore", "1 < 2 <1@h>", "<1@h>"},
        {"TwoTimestamps", "<1@h> <2@h>", "<1@h>"},
        {"Empty", "", std::nullopt},
        {"Words", "POP3 server ready", std::nullopt},
        {"NeverClosed", "<1@h", std::nullopt},
        {"NeverOpened", "1@h>", std::nullopt},
        {"TheWrongWayRound", ">1@h<", std::nullopt},
        {"NothingBetween", "<>", std::nullopt},
        {"NoAt", "<1.h>", std::nullopt},
        {"TwoAts", "<1@g@h>", std::nullopt},
        {"NothingOnTheLeft", "<@h>", std::nullopt},
        {"NothingOnTheRight", "<1@>", std::nullopt},
        {"OnlyAt", "<@>", std::nullopt},
        {"DotFirst", "<.1@h>", std::nullopt},
        {"DotLast", "<1.@h>", std::nullopt},
        {"DotLastOnTheRight", "<1@h.>", std::nullopt},
        {"TwoDots", "<1..2@h>", std::nullopt},
        {"OnlyADot", "<.@h>", std::nullopt},
        {"Blank", "<1 2@h>", std::nullopt},
        {"BlankOnTheRight", "<1@h >", std::nullopt},
        {"Quoted", "<\"1\"@h>", std::nullopt},
        {"Comma", "<1,2@h>", std::nullopt},
        {"Tab", "<1\t2@h>", std::nullopt},
        {"Nul", std::string("<1\0@h>", 6), std::nullopt},
        {"Delete", "<1\x7F@h>", std::nullopt},
        {"BeyondAscii", "<1\xE9@h>", std::nullopt},
        {"BeyondAsciiOnTheRight", "<1@h\xE9>", std::nullopt},
        {"BeyondAsciiInALiteral", "<1@[\xE9]>", std::nullopt},
        {"LiteralOnTheLeft", "<[1]@h>", std::nullopt},
        {"LiteralThatIsNotClosed", "<1@[192.0.2.1>", std::nullopt},
        {"BracketWithinALiteral", "<1@[[1]>", std::nullopt},
    };
    return table;
}

class ApopGreeting : public testing::TestWithParam<Greeting> {};

TEST_P(ApopGreeting, HasATimestampOrNone) {
    EXPECT_EQ(poplib::apopTimestamp(GetParam().text), GetParam().timestamp);
}

INSTANTIATE_TEST_SUITE_P(Texts, ApopGreeting, testing::ValuesIn(greetings()),
                         [](const auto& test) { return test.param.name; });

} // namespace
