#include "components/poplib/reply_text.h"
#include "platform/runtime_error.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

struct Numbers {
    const char* name;
    std::string text;
    std::int64_t first;
    std::int64_t second;
    int error;
};

const std::vector<Numbers>& numbers() {
    static const std::vector<Numbers> table{
        {"Plain", "2 320", 2, 320, 0},
        {"Zero", "0 0", 0, 0, 0},
        {"LeadingZeros", "007 0010", 7, 10, 0},
        {"WordsBehind", "2 320 octets in 2 messages", 2, 320, 0},
        {"BlankBehind", "2 320 ", 2, 320, 0},
        {"NumbersBehind", "1 2 99999999999999999999", 1, 2, 0},
        {"LargestOf32Bits", "4294967295 4294967295", 4294967295, 4294967295, 0},
        {"OneMoreThan32Bits", "4294967296 1", 0, 0, 6},
        {"SecondTooLarge", "1 4294967296", 0, 0, 6},
        {"MoreThan64Bits", "99999999999999999999999 1", 0, 0, 6},
        {"Empty", "", 0, 0, 20302},
        {"Blank", " ", 0, 0, 20302},
        {"OneNumber", "7", 0, 0, 20302},
        {"OneNumberAndBlank", "7 ", 0, 0, 20302},
        {"Words", "seven 9", 0, 0, 20302},
        {"SecondInWords", "7 nine", 0, 0, 20302},
        {"Negative", "-1 1", 0, 0, 20302},
        {"SecondNegative", "1 -1", 0, 0, 20302},
        {"Plus", "+1 1", 0, 0, 20302},
        {"LettersBehindNumber", "1x 1", 0, 0, 20302},
        {"LettersBehindSecondNumber", "1 1x", 0, 0, 20302},
        {"Fraction", "1.5 1", 0, 0, 20302},
        {"Hexadecimal", "0x10 1", 0, 0, 20302},
        {"BlankFirst", " 1 1", 0, 0, 20302},
        {"Nul", std::string("1\0 1", 4), 0, 0, 20302},
    };
    return table;
}

class TwoNumbersCase : public testing::TestWithParam<Numbers> {};

TEST_P(TwoNumbersCase, ReadsThemOrSaysWhyNot) {
    poplib::TwoNumbers read;
    const int error = platform::errorNumberOf([&] { read = poplib::twoNumbers(GetParam().text); });
    EXPECT_EQ(error, GetParam().error);
    EXPECT_EQ(read.first, GetParam().first);
    EXPECT_EQ(read.second, GetParam().second);
}

INSTANTIATE_TEST_SUITE_P(Texts, TwoNumbersCase, testing::ValuesIn(numbers()),
                         [](const auto& test) { return test.param.name; });

struct Code {
    const char* name;
    std::string text;
    bool later;
};

const std::vector<Code>& codes() {
    static const std::vector<Code> table{
        {"InUse", "[IN-USE] mailbox locked", true},
        {"LoginDelay", "[LOGIN-DELAY] too soon", true},
        {"SysTemp", "[SYS/TEMP] disk full", true},
        {"LowerCase", "[in-use]", true},
        {"NoTextBehind", "[IN-USE]", true},
        {"DetailAfterBlank", "[LOGIN-DELAY 900] too soon", true},
        {"DetailAfterSlash", "[SYS/TEMP/QUOTA] full", true},
        {"SysPerm", "[SYS/PERM] broken", false},
        {"Sys", "[SYS]", false},
        {"Authentication", "[AUTH] wrong password", false},
        {"LongerName", "[IN-USERS] wrong", false},
        {"ShorterName", "[IN-US]", false},
        {"NotAtTheStart", "wrong [IN-USE]", false},
        {"NeverClosed", "[IN-USE", false},
        {"NoBracket", "IN-USE]", false},
        {"EmptyCode", "[]", false},
        {"BlankInCode", "[ IN-USE]", false},
        {"Empty", "", false},
        {"Words", "wrong password", false},
    };
    return table;
}

class ResponseCode : public testing::TestWithParam<Code> {};

TEST_P(ResponseCode, TellsWhetherALaterAttemptMaySucceed) {
    EXPECT_EQ(poplib::mayBeTriedLater(GetParam().text), GetParam().later);
}

INSTANTIATE_TEST_SUITE_P(Codes, ResponseCode, testing::ValuesIn(codes()),
                         [](const auto& test) { return test.param.name; });

TEST(ResponseCodes, AreToldFromOtherTexts) {
    for (const char* const text : {"[AUTH] wrong", "[SYS/PERM]", "[X] y", "[]"}) {
        EXPECT_TRUE(poplib::hasResponseCode(text)) << text;
    }
    for (const char* const text : {"", "wrong", "wrong [AUTH]", " [AUTH]", "[AUTH", "AUTH]"}) {
        EXPECT_FALSE(poplib::hasResponseCode(text)) << text;
    }
}

TEST(ResponseCodes, TellWhatIsForGood) {
    for (const char* const text : {"[SYS/PERM] gone", "[sys/perm]", "[SYS/PERM/USER] gone", "[SYS/PERM 1]"}) {
        EXPECT_TRUE(poplib::isForGood(text)) << text;
    }
    for (const char* const text : {"", "[SYS/TEMP]", "[SYS]", "[SYS/PERMANENT]", "no [SYS/PERM]", "[AUTH]"}) {
        EXPECT_FALSE(poplib::isForGood(text)) << text;
    }
}

TEST(DemandForEncryption, IsReadInTheWordsOfServers) {
    for (const char* const text :
         {"[AUTH] Plaintext authentication disallowed on non-secure (SSL/TLS) connections.",
          "USER command only available under a layer", "TLS required", "must use TLSv1.2 first",
          "Plain text log-on not allowed", "clear-text? No cleartext here", "encryption is needed",
          "unencrypted sessions are not allowed", "use STLS", "STARTTLS first", "issue stls first",
          "no ssl"}) {
        EXPECT_TRUE(poplib::demandsEncryption(text)) << text;
    }
}

TEST(DemandForEncryption, IsNotReadIntoOtherWords) {
    for (const char* const text :
         {"", "wrong password", "[AUTH] Authentication failed.", "no such user: player1",
          "Password supplied for \"bottles\" is incorrect", "castles", "hassle", "bad multiplayer account",
          "plain wrong", "clearly wrong"}) {
        EXPECT_FALSE(poplib::demandsEncryption(text)) << text;
    }
}

} // namespace
