#include "components/sasl/mechanism.h"
#include "tests/sasl/mechanism_steps.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using sasl::Fault;
using support::faultOf;
using support::responseOf;

const sasl::Account kTim{"tim", "tanstaaftanstaaf"};

TEST(Plain, MakesTheResponseOfRfc4616) {
    const auto plain = sasl::makeMechanism("PLAIN", kTim);
    ASSERT_NE(plain, nullptr);
    EXPECT_FALSE(plain->isComplete());
    EXPECT_EQ(plain->initialResponse(), std::string("\0tim\0tanstaaftanstaaf", 21));
    EXPECT_TRUE(plain->isComplete());
}

TEST(Plain, AnswersAnEmptyChallengeWhenNothingWentAlongWithTheCommand) {
    const auto plain = sasl::makeMechanism("PLAIN", kTim);
    EXPECT_EQ(responseOf(plain->answer("")), std::string("\0tim\0tanstaaftanstaaf", 21));
    EXPECT_TRUE(plain->isComplete());
}

TEST(Plain, ShowsNothingToAServerThatSaysSomethingFirst) {
    const auto plain = sasl::makeMechanism("PLAIN", kTim);
    EXPECT_EQ(faultOf(plain->answer("<1@host>")), Fault::ServerNotProven);
    EXPECT_FALSE(plain->isComplete());
    EXPECT_EQ(plain->initialResponse(), std::nullopt);
}

TEST(Plain, HasNoSecondResponse) {
    for (const char* challenge : {"", "more"}) {
        const auto plain = sasl::makeMechanism("PLAIN", kTim);
        plain->initialResponse();
        EXPECT_EQ(faultOf(plain->answer(challenge)), Fault::ServerNotProven) << challenge;
        EXPECT_FALSE(plain->isComplete());
        EXPECT_EQ(faultOf(plain->answer(challenge)), Fault::ServerNotProven) << challenge;
    }
}

struct Prompts {
    const char* name;
    std::string first;
    std::string second;
};

const std::vector<Prompts>& prompts() {
    static const std::vector<Prompts> table{
        {"AsUsual", "User Name", std::string("Password\0", 9)},
        {"OtherWords", "Username:", "Password:"},
        {"InTheOtherOrder", "Password:", "Username:"},
        {"Empty", "", ""},
        {"AnotherLanguage", "Benutzername:", "Kennwort:"},
        {"BytesThatAreNoText", std::string("\0\xFF\r\n", 4), "\x80"},
        {"Long", std::string(9000, 'U'), std::string(9000, 'P')},
    };
    return table;
}

class LoginPrompts : public testing::TestWithParam<Prompts> {};

TEST_P(LoginPrompts, AreAnsweredByTheUserNameAndThenByThePassword) {
    const auto login = sasl::makeMechanism("LOGIN", kTim);
    ASSERT_NE(login, nullptr);
    EXPECT_EQ(login->initialResponse(), std::nullopt);
    EXPECT_EQ(responseOf(login->answer(GetParam().first)), "tim");
    EXPECT_FALSE(login->isComplete());
    EXPECT_EQ(responseOf(login->answer(GetParam().second)), "tanstaaftanstaaf");
    EXPECT_TRUE(login->isComplete());
}

TEST_P(LoginPrompts, AreNoMoreThanTwo) {
    const auto login = sasl::makeMechanism("LOGIN", kTim);
    login->answer(GetParam().first);
    login->answer(GetParam().second);
    EXPECT_EQ(faultOf(login->answer(GetParam().first)), Fault::ServerNotProven);
    EXPECT_FALSE(login->isComplete());
}

INSTANTIATE_TEST_SUITE_P(Texts, LoginPrompts, testing::ValuesIn(prompts()),
                         [](const auto& test) { return test.param.name; });

TEST(CramMd5, MakesTheResponseOfRfc2195) {
    const auto cram = sasl::makeMechanism("CRAM-MD5", kTim);
    ASSERT_NE(cram, nullptr);
    EXPECT_EQ(cram->initialResponse(), std::nullopt);
    EXPECT_FALSE(cram->isComplete());
    EXPECT_EQ(responseOf(cram->answer("<1896.697170952@postoffice.reston.mci.net>")),
              "tim b913a602c7eda7a495b4e6e7334d3890");
    EXPECT_TRUE(cram->isComplete());
}

TEST(CramMd5, TakesNoEmptyChallenge) {
    const auto cram = sasl::makeMechanism("CRAM-MD5", kTim);
    EXPECT_EQ(faultOf(cram->answer("")), Fault::ServerNotProven);
    EXPECT_FALSE(cram->isComplete());
    EXPECT_EQ(faultOf(cram->answer("<1@host>")), Fault::ServerNotProven);
}

TEST(CramMd5, TakesOneChallengeOnly) {
    const auto cram = sasl::makeMechanism("CRAM-MD5", kTim);
    cram->answer("<1@host>");
    EXPECT_EQ(faultOf(cram->answer("<2@host>")), Fault::ServerNotProven);
    EXPECT_FALSE(cram->isComplete());
}

TEST(Mechanisms, AreMadeByTheirNamesOnly) {
    for (const char* name : {"", "plain", "PLAIN ", "XOAUTH2", "GSSAPI", "DIGEST-MD5", "NTLM", "EXTERNAL",
                             "ANONYMOUS", "SCRAM-SHA-1-PLUS", "SCRAM-SHA-256-PLUS", "SCRAM-SHA-512"}) {
        EXPECT_EQ(sasl::makeMechanism(name, kTim), nullptr) << name;
    }
}

TEST(Mechanisms, CanBeLoadedAheadOfTime) {
    sasl::loadMechanisms();
    EXPECT_NE(sasl::makeMechanism("LOGIN", kTim), nullptr);
}

} // namespace
