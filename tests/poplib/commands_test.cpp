#include "components/poplib/commands.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using poplib::Command;
using poplib::CommandKind;

struct Case {
    const char* name;
    Command command;
    CommandKind kind;
    std::string sent;
    std::string shown;
    std::int32_t messageNumber;
    std::int32_t bodyLineLimit;
};

const std::vector<Case>& cases() {
    static const std::vector<Case> table{
        {"User", poplib::userCommand("bob"), CommandKind::User, "USER bob", "USER bob", 0, 0},
        {"Pass", poplib::passCommand("secret"), CommandKind::Pass, "PASS secret", "PASS ****", 0, 0},
        {"EmptyPass", poplib::passCommand(""), CommandKind::Pass, "PASS ", "PASS ****", 0, 0},
        {"PassWithBlanks", poplib::passCommand(" a  b "), CommandKind::Pass, "PASS  a  b ", "PASS ****", 0,
         0},
        {"Stat", poplib::statCommand(), CommandKind::Stat, "STAT", "STAT", 0, 0},
        {"List", poplib::listCommand(7), CommandKind::List, "LIST 7", "LIST 7", 7, 0},
        {"Top", poplib::topCommand(200, 25), CommandKind::Top, "TOP 200 25", "TOP 200 25", 200, 25},
        {"Retr", poplib::retrCommand(3), CommandKind::Retr, "RETR 3", "RETR 3", 3, 0},
        {"RetrForAListing", poplib::retrCommand(3, 25), CommandKind::Retr, "RETR 3", "RETR 3", 3, 25},
        {"Dele", poplib::deleCommand(32767), CommandKind::Dele, "DELE 32767", "DELE 32767", 32767, 0},
        {"Quit", poplib::quitCommand(), CommandKind::Quit, "QUIT", "QUIT", 0, 0},
    };
    return table;
}

class CommandCase : public testing::TestWithParam<Case> {};

TEST_P(CommandCase, SaysWhatIsSentAndWhatMayBeShown) {
    const Case& expected = GetParam();
    EXPECT_EQ(expected.command.kind, expected.kind);
    EXPECT_EQ(expected.command.sent, expected.sent);
    EXPECT_EQ(expected.command.shown, expected.shown);
    EXPECT_EQ(expected.command.messageNumber, expected.messageNumber);
    EXPECT_EQ(expected.command.bodyLineLimit, expected.bodyLineLimit);
}

INSTANTIATE_TEST_SUITE_P(Commands, CommandCase, testing::ValuesIn(cases()),
                         [](const auto& test) { return test.param.name; });

struct Argument {
    const char* name;
    std::string text;
    bool canBeSent;
};

const std::vector<Argument>& arguments() {
    static const std::vector<Argument> table{
        {"Name", "bob", true},
        {"Empty", "", true},
        {"Blanks", " two  words ", true},
        {"EightBit", "caf\xc3\xa9", true},
        {"CarriageReturn", "bob\r", false},
        {"LineFeed", "bob\nDELE 1", false},
        {"LineFeedFirst", "\nbob", false},
        {"Nul", std::string("bo\0b", 4), false},
        {"TheLongest", std::string(248, 'x'), true},
        {"OneTooLong", std::string(249, 'x'), false},
        {"MuchTooLong", std::string(1U << 20U, 'x'), false},
    };
    return table;
}

class CommandArgument : public testing::TestWithParam<Argument> {};

TEST_P(CommandArgument, MayBeSentOnlyIfItStaysWithinItsLine) {
    EXPECT_EQ(poplib::canBeSentAsArgument(GetParam().text), GetParam().canBeSent);
}

INSTANTIATE_TEST_SUITE_P(Arguments, CommandArgument, testing::ValuesIn(arguments()),
                         [](const auto& test) { return test.param.name; });

TEST(CommandArgument, TheLongestFillsACommandLine) {
    const std::string longest(248, 'x');
    EXPECT_EQ((poplib::passCommand(longest).sent + "\r\n").size(), poplib::kMaximumCommandBytes);
}

} // namespace
