#include "addresses/sendable_address.h"
#include "tests/support/mail_mode_is.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace {

using addresses::canBeSentTo;
using addresses::nameForShowing;
using namespace std::string_view_literals;

std::string repeated(std::string_view text, int times) {
    std::string all;
    for (int count = 0; count < times; ++count) {
        all += text;
    }
    return all;
}

TEST(SendableAddress, IsOneBareAddressWhichTheWayOfMailTakes) {
    const std::string longest = std::string(64, 'a') + "@" + repeated("b123456789.", 17) + "bc";
    ASSERT_EQ(longest.size(), 254U);

    const struct {
        std::string_view text;
        bool inTheHousesWay;
        bool inTheStandardWay;
    } cases[] = {
        {"ann@example.org", true, true},
        {"\"ann b\"@example.org", true, true},
        {"ann@[192.0.2.1]", true, true},
        {"ann@b\xc3\xbc.org", false, true},
        {"\xc3\xb6@example.org", false, true},
        {longest, true, true},
        {"", false, false},
        {"ann", false, false},
        {"ann@", false, false},
        {"@example.org", false, false},
        {" ann@example.org", false, false},
        {"ann@example.org ", false, false},
        {"ann@example.org,", false, false},
        {"ann@b\xc3\xbc.org,", false, false},
        {"ann@b\xc3\xbc.org (away)", false, false},
        {"ann@example.org, bob@example.org", false, false},
        {"Ann <ann@example.org>", false, false},
        {"<ann@example.org>", false, false},
        {"friends: ann@example.org;", false, false},
        {"ann(away)@example.org", false, false},
        {"ann@example.org\r\nBcc: bob@example.org", false, false},
        {"ann@[\x01]", false, false},
        {"ann@[\xe2\x80\xae]", false, false},
        {"ann@example.org\0"sv, false, false},
        {"\xff\xfe@example.org", false, false},
    };

    for (const auto& one : cases) {
        const support::MailModeIs house(MailMode::House);
        EXPECT_EQ(canBeSentTo(one.text), one.inTheHousesWay) << one.text;
        const support::MailModeIs standard(MailMode::Standard);
        EXPECT_EQ(canBeSentTo(one.text), one.inTheStandardWay) << one.text;
    }
}

TEST(SendableAddress, OfMoreThan254BytesIsNone) {
    EXPECT_FALSE(canBeSentTo(std::string(64, 'a') + "@" + repeated("b123456789.", 17) + "bcd"));
    EXPECT_FALSE(canBeSentTo(std::string(5'000'000, 'a') + "@example.org"));
}

TEST(NameForShowing, HasOneLineOfVisibleLetters) {
    const struct {
        std::string_view name;
        std::string_view shown;
    } cases[] = {
        {"", ""},
        {"Ann Miller", "Ann Miller"},
        {"  Ann \t\r\n Miller ", "Ann Miller"},
        {"Ann\0Miller"sv, "AnnMiller"},
        {"Ann\x1b[2J\x7f", "Ann[2J"},
        {"Ann \xe2\x80\xaerelliM", "Ann relliM"},
        {"\xd9\x85\xd8\xb1\xd9\x8a\xd9\x85", "\xd9\x85\xd8\xb1\xd9\x8a\xd9\x85"},
        {"J\xf6rg", "J\xc3\xb6rg"},
        {"\xe2\x80\x8b \xe2\x81\xa6", ""},
    };

    for (const auto& one : cases) {
        EXPECT_EQ(nameForShowing(one.name), one.shown);
    }
}

TEST(NameForShowing, HasAtMost64LettersAndNoneInPart) {
    EXPECT_EQ(nameForShowing(std::string(64, 'a')), std::string(64, 'a'));
    EXPECT_EQ(nameForShowing(std::string(65, 'a')), std::string(64, 'a'));
    EXPECT_EQ(nameForShowing(repeated("\xc3\xb6", 65)), repeated("\xc3\xb6", 64));
    EXPECT_EQ(nameForShowing(repeated("\xf0\xa0\x80\x80", 65)), repeated("\xf0\xa0\x80\x80", 64));
    // A letter with its mark above it.
    EXPECT_EQ(nameForShowing(repeated("o\xcc\x88", 65)), repeated("o\xcc\x88", 64));
    EXPECT_EQ(nameForShowing(std::string(63, 'a') + " b"), std::string(63, 'a'));
}

TEST(NameForShowing, IsShortWhateverItsLength) {
    EXPECT_LE(nameForShowing("a" + repeated("\xcc\x88", 100'000)).size(), 512U);
    EXPECT_EQ(nameForShowing(std::string(10'000'000, 'a')).size(), 64U);
}

} // namespace
