#include "app/command_line.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {
using Words = std::vector<const char*>;

constexpr bool kTerminal = true;
constexpr bool kNoTerminal = false;

std::variant<CommandLine, WrongUse> read(const Words& words, bool inputIsTerminal = kTerminal) {
    QStringList arguments{QStringLiteral("brindlewake")};
    for (const char* const word : words) {
        arguments.append(QString::fromUtf8(word));
    }
    return readCommandLine(arguments, inputIsTerminal);
}

CommandLine rightUse(const Words& words, bool inputIsTerminal = kTerminal) {
    const auto line = read(words, inputIsTerminal);
    const auto* const wrong = std::get_if<WrongUse>(&line);
    EXPECT_EQ(wrong, nullptr) << wrong->reason.toStdString();
    return wrong == nullptr ? std::get<CommandLine>(line) : CommandLine();
}

std::string wrongUse(const Words& words, bool inputIsTerminal = kTerminal) {
    const auto line = read(words, inputIsTerminal);
    const auto* const wrong = std::get_if<WrongUse>(&line);
    return wrong == nullptr ? std::string() : wrong->reason.toStdString();
}

TEST(CommandLine, WithoutOptionsShowsTheWindowsInTheHouseWay) {
    EXPECT_EQ(rightUse({}), CommandLine());
    EXPECT_EQ(rightUse({}, kNoTerminal), CommandLine());
}

TEST(CommandLine, HasATaskForEachOptionThatIsOne) {
    EXPECT_EQ(rightUse({"--help"}).task, Task::TellUsage);
    EXPECT_EQ(rightUse({"-h"}).task, Task::TellUsage);
    EXPECT_EQ(rightUse({"--version"}).task, Task::TellVersion);
    EXPECT_EQ(rightUse({"-v"}).task, Task::TellVersion);
    EXPECT_EQ(rightUse({"--doctor"}).task, Task::Examine);
}

TEST(CommandLine, TakesTheTwoWaysOfReadingMailAndNoOther) {
    EXPECT_EQ(rightUse({"--mail=house"}).mail, MailMode::House);
    EXPECT_EQ(rightUse({"--mail=standard"}).mail, MailMode::Standard);
    EXPECT_EQ(rightUse({"--mail", "standard"}).mail, MailMode::Standard);
    for (const char* const other : {"--mail=Standard", "--mail=mime", "--mail= house"}) {
        EXPECT_FALSE(wrongUse({other}).empty()) << other;
    }
}

TEST(CommandLine, TakesTheFolderOfTheSettingsAsItIsWritten) {
    EXPECT_EQ(rightUse({"--settings-folder=/srv/mail box"}).settingsFolder, QStringLiteral("/srv/mail box"));
    EXPECT_EQ(rightUse({"--settings-folder", "../school"}).settingsFolder, QStringLiteral("../school"));
    EXPECT_EQ(rightUse({"--settings-folder=-odd"}).settingsFolder, QStringLiteral("-odd"));
}

TEST(CommandLine, TakesWhatTheDoctorIsToDo) {
    const CommandLine line =
        rightUse({"--doctor", "--user=ann", "--password-stdin", "--json", "--mail=standard"}, kNoTerminal);
    CommandLine wanted;
    wanted.task = Task::Examine;
    wanted.mail = MailMode::Standard;
    wanted.user = QStringLiteral("ann");
    wanted.passwordFromInput = true;
    wanted.json = true;
    EXPECT_EQ(line, wanted);
    EXPECT_EQ(rightUse({"--doctor", "--user", "ann"}).user, QStringLiteral("ann"));
}

TEST(CommandLine, TakesTheTestOfTheProgramWithAWayOfReadingMail) {
    EXPECT_EQ(rightUse({"--self-test"}).task, Task::TestItself);
    CommandLine wanted;
    wanted.task = Task::TestItself;
    wanted.mail = MailMode::Standard;
    EXPECT_EQ(rightUse({"--self-test", "--mail=standard", "-platform", "xcb"}), wanted);
}

TEST(CommandLine, PassesOverOptionsOfQt) {
    EXPECT_EQ(rightUse({"-platform", "offscreen", "-style=fusion", "--style", "windows", "-reverse",
                        "-display", ":1", "-qwindowtitle", "--doctor", "-qmljsdebugger=port:1"}),
              CommandLine());
    EXPECT_EQ(rightUse({"--doctor", "-platform", "xcb"}).task, Task::Examine);
}

TEST(CommandLine, RefusesEveryWrongUse) {
    const std::vector<Words> wrong = {
        {"--unknown"},
        {"-x"},
        {"word"},
        {"--doctor", "word"},
        {"--", "word"},
        {"--mail"},
        {"--mail="},
        {"--settings-folder"},
        {"--settings-folder="},
        {"--settings-folder", "--doctor"},
        {"--doctor", "--user"},
        {"--doctor", "--user="},
        {"--doctor", "--user", "--json"},
        {"--doctor", "--user=ann", "--user=bob"},
        {"--mail=house", "--mail=standard"},
        {"--doctor=yes"},
        {"--json=yes", "--doctor"},
        {"--doctor", "--password=secret"},
        {"--doctor", "--password-stdin"},
        {"--user=ann"},
        {"--json"},
        {"--password-stdin"},
        {"--password-stdin", "--user=ann"},
        {"--self-test", "--doctor"},
        {"--self-test", "--json"},
        {"--self-test", "--user=ann"},
        {"--self-test", "--settings-folder=/srv"},
        {"--self-test=yes"},
        {"--self-test", "word"},
    };
    for (const auto& words : wrong) {
        EXPECT_FALSE(wrongUse(words).empty()) << words.front();
    }
}

TEST(CommandLine, WithoutATerminalAPasswordHasToComeFromTheInput) {
    EXPECT_FALSE(wrongUse({"--doctor", "--user=ann"}, kNoTerminal).empty());
    EXPECT_TRUE(wrongUse({"--doctor", "--user=ann", "--password-stdin"}, kNoTerminal).empty());
    EXPECT_TRUE(wrongUse({"--doctor", "--user=ann"}, kTerminal).empty());
    EXPECT_TRUE(wrongUse({"--doctor"}, kNoTerminal).empty());
}

TEST(CommandLine, TellsEveryOptionInTheUsage) {
    for (const char* const option : {"--help", "--version", "--mail=", "--settings-folder=", "--doctor",
                                     "--user=", "--password-stdin", "--json"}) {
        EXPECT_TRUE(usageText().contains(QLatin1String(option))) << option;
    }
}
} // namespace
