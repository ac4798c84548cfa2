#include "components/smtplib/wire_text.h"
#include "tests/support/pieces.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

namespace {

using smtplib::DotStuffer;
using smtplib::WireText;

std::string wireTextOf(std::string_view text, std::size_t pieceBytes) {
    WireText wire;
    std::string output;
    support::forEachPiece(text, pieceBytes, [&](std::string_view piece) { wire.add(piece, output); });
    wire.finish(output);
    return output;
}

std::string stuffed(std::string_view text, std::size_t pieceBytes) {
    DotStuffer stuffer;
    std::string output;
    support::forEachPiece(text, pieceBytes, [&](std::string_view piece) { stuffer.add(piece, output); });
    return output;
}

struct WireTextCase {
    const char* name;
    std::string text;
    std::string wire;
};

std::string repeated(std::string_view text, std::size_t times) {
    std::string all;
    for (std::size_t time = 0; time < times; ++time) {
        all += text;
    }
    return all;
}

const std::string kNul(1, '\0');
const std::string kEnd = "\r\n";

const std::vector<WireTextCase> kWireTexts{
    {"Nothing", "", ""},
    {"OneLine", "a\r\n", "a\r\n"},
    {"NoFinalLineEnd", "a", "a\r\n"},
    {"EmptyLines", "\r\n\r\na\r\n\r\n", "\r\n\r\na\r\n\r\n"},
    {"BareLineFeeds", "a\nb\n\nc", "a\r\nb\r\n\r\nc\r\n"},
    {"BareCarriageReturns", "a\rb\r\rc\r", "a\r\nb\r\n\r\nc\r\n"},
    {"LineFeedThenCarriageReturn", "a\n\rb", "a\r\n\r\nb\r\n"},
    {"CarriageReturnBeforeALineEnd", "a\r\r\nb", "a\r\n\r\nb\r\n"},
    {"NulIsLeftOut", "a" + kNul + "b" + kNul, "ab\r\n"},
    {"NothingButNul", kNul + kNul, ""},
    {"NulInsideALineEnd", "a\r" + kNul + "\nb", "a\r\nb\r\n"},
    {"DotsStayAsTheyAre", ".\r\n..\r\n.a", ".\r\n..\r\n.a\r\n"},
    {"OctetsBeyondAscii", "\xff\xc3\xa4\x80", "\xff\xc3\xa4\x80\r\n"},
    {"LineSeparatorOfUnicode",
     "a\xe2\x80\xa8"
     "b",
     "a\xe2\x80\xa8"
     "b\r\n"},
    {"ControlCharacters", "\x1b[0m\t\f\v", "\x1b[0m\t\f\v\r\n"},
    {"LongestLine", std::string(998, 'x') + kEnd, std::string(998, 'x') + kEnd},
    {"LongestLineWithoutEnd", std::string(998, 'x'), std::string(998, 'x') + kEnd},
    {"OneTooMany", std::string(999, 'x'), std::string(998, 'x') + kEnd + "x\r\n"},
    {"BrokenBehindTheLastBlank", "a b " + std::string(997, 'x'), "a b \r\n" + std::string(997, 'x') + kEnd},
    {"BlankAtTheVeryEnd", std::string(997, 'x') + " y", std::string(997, 'x') + " \r\ny\r\n"},
    {"BlankJustBehindTheEnd", std::string(998, 'x') + " y", std::string(998, 'x') + "\r\n y\r\n"},
    {"TabIsABlank", "a\t" + std::string(997, 'x'), "a\t\r\n" + std::string(997, 'x') + kEnd},
    {"CharacterOfTwoOctets", std::string(997, 'x') + "\xc3\xa4", std::string(997, 'x') + "\r\n\xc3\xa4\r\n"},
    {"CharacterOfFourOctets", std::string(995, 'x') + "\xf0\x9f\x98\x80",
     std::string(995, 'x') + "\r\n\xf0\x9f\x98\x80\r\n"},
    {"CharacterThatJustFits", std::string(994, 'x') + "\xf0\x9f\x98\x80y",
     std::string(994, 'x') + "\xf0\x9f\x98\x80\r\ny\r\n"},
    {"NoUtf8AtAll", std::string(999, '\x80'), std::string(998, '\x80') + "\r\n\x80\r\n"},
    {"VeryLong", std::string(100'000, 'x'),
     repeated(std::string(998, 'x') + kEnd, 100) + std::string(200, 'x') + kEnd},
    {"VeryLongWithBlanks", repeated("1234567 ", 1000),
     repeated(repeated("1234567 ", 124) + kEnd, 8) + repeated("1234567 ", 8) + kEnd},
};

const std::vector<WireTextCase> kStuffedTexts{
    {"Nothing", "", ""},
    {"NoDots", "a\r\nb\r\n", "a\r\nb\r\n"},
    {"DotInLine", "a.b\r\n", "a.b\r\n"},
    {"OpeningDot", ".a\r\n", "..a\r\n"},
    {"LoneDot", "a\r\n.\r\nb\r\n", "a\r\n..\r\nb\r\n"},
    {"TwoDots", "..\r\n.\r\n", "...\r\n..\r\n"},
    {"OnlyDots", ".\r\n.\r\n.\r\n", "..\r\n..\r\n..\r\n"},
    {"DotBehindAnEmptyLine", "\r\n.\r\n", "\r\n..\r\n"},
};

template <std::string (*Made)(std::string_view, std::size_t)>
void checkInPieces(const WireTextCase& test) {
    for (const std::size_t pieceBytes : support::kPieceSizes) {
        EXPECT_EQ(Made(test.text, pieceBytes), test.wire) << "in pieces of " << pieceBytes;
    }
}

TEST(ReadyLines, GoUpToTheLastLineEnd) {
    EXPECT_EQ(smtplib::bytesOfReadyLines("a\r\n\r\nb"), 5U);
    EXPECT_EQ(smtplib::bytesOfReadyLines(std::string(998, 'x') + kEnd), 1000U);
}

TEST(ReadyLines, AreNoneWhereOneLineIsNotReady) {
    for (const std::string& text :
         {std::string(), std::string("a"), std::string("\n"), std::string("a\r\nb\n"),
          std::string("a\rb\r\n"), "a" + kNul + kEnd, std::string(999, 'x') + kEnd, std::string("\r\r\n")}) {
        EXPECT_EQ(smtplib::bytesOfReadyLines(text), 0U) << text;
    }
}

class WireTextOf : public testing::TestWithParam<WireTextCase> {};

TEST_P(WireTextOf, IsTheSameInPiecesOfAnySize) {
    checkInPieces<wireTextOf>(GetParam());
}

TEST_P(WireTextOf, NeedsNothingDoneToItAgain) {
    EXPECT_EQ(wireTextOf(GetParam().wire, 7), GetParam().wire);
}

INSTANTIATE_TEST_SUITE_P(Texts, WireTextOf, testing::ValuesIn(kWireTexts),
                         [](const auto& test) { return test.param.name; });

class StuffedTextOf : public testing::TestWithParam<WireTextCase> {};

TEST_P(StuffedTextOf, IsTheSameInPiecesOfAnySize) {
    checkInPieces<stuffed>(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Texts, StuffedTextOf, testing::ValuesIn(kStuffedTexts),
                         [](const auto& test) { return test.param.name; });

TEST(WireText, CanBeUsedForTheNextText) {
    WireText wire;
    std::string output;
    wire.add("a\r", output);
    wire.finish(output);
    wire.add("\nb", output);
    wire.finish(output);
    EXPECT_EQ(output, "a\r\n\r\nb\r\n");
}

TEST(WireText, GivesOutAllButALineAtOnce) {
    WireText wire;
    std::string output;
    std::size_t fed = 0;
    for (int time = 0; time < 1000; ++time) {
        wire.add(std::string(100, 'x'), output);
        fed += 100;
        EXPECT_GE(output.size() + smtplib::kMaximumTextLineBytes, fed);
    }
}

} // namespace
