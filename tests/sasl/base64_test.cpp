#include "components/sasl/base64.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

struct Pair {
    const char* name;
    std::string bytes;
    std::string text;
};

const std::vector<Pair>& pairs() {
    static const std::vector<Pair> table{
        {"Nothing", "", ""},
        {"OneByte", "f", "Zg=="},
        {"TwoBytes", "fo", "Zm8="},
        {"ThreeBytes", "foo", "Zm9v"},
        {"FourBytes", "foob", "Zm9vYg=="},
        {"FiveBytes", "fooba", "Zm9vYmE="},
        {"SixBytes", "foobar", "Zm9vYmFy"},
        {"Nul", std::string("\0", 1), "AA=="},
        {"BothLastLetters", "\xFB\xFF\xFE", "+//+"},
        {"PlainLogOn", std::string("\0tim\0tanstaaftanstaaf", 21), "AHRpbQB0YW5zdGFhZnRhbnN0YWFm"},
        {"LongerThanALineOfMail", std::string(120, 'U'),
         [] {
             std::string text;
             for (int group = 0; group < 40; ++group) {
                 text += "VVVV";
             }
             return text;
         }()},
    };
    return table;
}

class Base64Pair : public testing::TestWithParam<Pair> {};

TEST_P(Base64Pair, IsWrittenAndReadBack) {
    EXPECT_EQ(sasl::toBase64(GetParam().bytes), GetParam().text);
    EXPECT_EQ(sasl::fromBase64(GetParam().text), GetParam().bytes);
}

INSTANTIATE_TEST_SUITE_P(Texts, Base64Pair, testing::ValuesIn(pairs()),
                         [](const auto& test) { return test.param.name; });

struct Wrong {
    const char* name;
    std::string text;
};

const std::vector<Wrong>& wrongTexts() {
    static const std::vector<Wrong> table{
        {"OneLetter", "Z"},
        {"NoPadding", "Zg"},
        {"HalfThePadding", "Zg="},
        {"PaddingAlone", "="},
        {"PaddingTwice", "Zg==Zg=="},
        {"PaddingInside", "Zg==Zm9v"},
        {"TooMuchPadding", "Zm9v===="},
        {"BitsLeftOverOfOneByte", "Zh=="},
        {"BitsLeftOverOfTwoBytes", "Zm9="},
        {"BlankBefore", " Zm9v"},
        {"BlankBehind", "Zm9v "},
        {"LineEnd", "Zm9v\r\n"},
        {"LetterOfTheOtherAlphabet", "Zm9_"},
        {"Asterisk", "*"},
        {"Words", "send the user name"},
        {"Nul", std::string("Zm9v\0", 5)},
        {"ByteBeyondAscii", "Zm9\xF6"},
    };
    return table;
}

class WrongBase64 : public testing::TestWithParam<Wrong> {};

TEST_P(WrongBase64, StandsForNothing) {
    EXPECT_EQ(sasl::fromBase64(GetParam().text), std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(Texts, WrongBase64, testing::ValuesIn(wrongTexts()),
                         [](const auto& test) { return test.param.name; });

} // namespace
