#include "components/controls/shown_lines.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

using testing::ElementsAre;

namespace {
std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    for (controls::ShownLines shown(text); shown.hasNext();) {
        lines.emplace_back(shown.next());
    }
    return lines;
}
} // namespace

TEST(ShownLines, EveryKindOfLineEndEndsALine) {
    EXPECT_THAT(linesOf("a\nb\rc\r\nd"), ElementsAre("a\n", "b\r", "c\r\n", "d"));
    EXPECT_THAT(linesOf("a\r\r\nb"), ElementsAre("a\r", "\r\n", "b"));
    EXPECT_THAT(linesOf("\n\r"), ElementsAre("\n", "\r", ""));
}

TEST(ShownLines, ATextHasOneLineMoreThanLineEnds) {
    EXPECT_THAT(linesOf(""), ElementsAre(""));
    EXPECT_THAT(linesOf("a"), ElementsAre("a"));
    EXPECT_THAT(linesOf("a\r\n"), ElementsAre("a\r\n", ""));
}

TEST(ShownLines, ALineThatIsTooLongIsCutBetweenTwoCharacters) {
    const std::string most(controls::kLongestShownLine, 'x');
    EXPECT_THAT(linesOf(most + "yz\n"), ElementsAre(most, "yz\n", ""));
    EXPECT_THAT(linesOf(most.substr(1) + "\xc3\xa4\n"), ElementsAre(most.substr(1), "\xc3\xa4\n", ""));
    EXPECT_THAT(linesOf(most + "\r\n"), ElementsAre(most + "\r\n", ""));
    EXPECT_THAT(linesOf(most + most + "\ny"), ElementsAre(most, most + "\n", "y"));
    EXPECT_THAT(linesOf(most + most), ElementsAre(most, most));
    EXPECT_THAT(linesOf(most.substr(1) + "\r\n"), ElementsAre(most.substr(1) + "\r\n", ""));
}

TEST(ShownLines, NothingIsLostBetweenTheLines) {
    // All texts of eight of these characters, and so all mixtures of line ends.
    const std::string letters = "a\r\n";
    for (int number = 0; number < 6'561; ++number) {
        std::string text;
        for (int rest = number; text.size() < 8; rest /= 3) {
            text += letters[static_cast<std::size_t>(rest % 3)];
        }
        std::string joined;
        for (const std::string& line : linesOf(text)) {
            joined += line;
            const std::string inside = line.substr(0, line.size() - controls::lineEnd(line).size());
            ASSERT_EQ(inside.find_first_of("\r\n"), std::string::npos) << number;
        }
        ASSERT_EQ(joined, text) << number;
    }
}

TEST(ShownLines, TheSignOfALineEndThatIsNoneIsSeen) {
    const QString sign(QChar::ReplacementCharacter);
    EXPECT_EQ(controls::shownLine(std::string_view("a\0\r\n", 4)), QStringLiteral("a") + sign);
    EXPECT_EQ(controls::shownLine("\xe2\x80\xa9\xef\xb7\x90"), sign + sign);
}
