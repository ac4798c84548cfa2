#include "components/protocol/line_buffer.h"
#include "tests/support/pieces.h"
#include "tests/support/sanitizer.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace {

using protocol::LineBuffer;
using testing::ElementsAreArray;

struct Case {
    const char* name;
    std::string bytes;
    std::vector<std::string> replyLines;
    std::vector<std::string> contentLines;
};

const std::vector<Case>& cases() {
    static const std::vector<Case> table{
        {"Nothing", "", {}, {}},
        {"NoLineEnd", "abc", {}, {}},
        {"OneLine", "abc\r\n", {"abc"}, {"abc"}},
        {"EmptyLines", "\r\n\r\n", {"", ""}, {"", ""}},
        {"LineFeedAlone", "a\nb\r\n", {"a", "b"}, {"a\nb"}},
        {"LineFeedFirst", "\nb\r\n", {"", "b"}, {"\nb"}},
        {"CarriageReturnAlone", "a\rb\r\n", {"a\rb"}, {"a\rb"}},
        {"TwoCarriageReturns", "a\r\r\n", {"a\r"}, {"a\r"}},
        {"LineFeedCarriageReturn", "a\n\rb\r\n", {"a", "\rb"}, {"a\n\rb"}},
        {"CarriageReturnAtTheEnd", "a\r\nb\r", {"a"}, {"a"}},
        {"Nul", std::string("a\0b\r\n", 5), {std::string("a\0b", 3)}, {std::string("a\0b", 3)}},
        {"ManyLines", "a\r\nbc\r\ndef\r\nx", {"a", "bc", "def"}, {"a", "bc", "def"}},
    };
    return table;
}

class LineBufferCase : public testing::TestWithParam<Case> {
  protected:
    /**
     * The lines that the buffer gives for the bytes in pieces of this size, each taken as soon as it is
     * complete.
     */
    std::vector<std::string> lines(std::size_t pieceBytes, bool content) const {
        LineBuffer buffer;
        std::vector<std::string> lines;
        support::forEachPiece(GetParam().bytes, pieceBytes, [&](std::string_view piece) {
            buffer.append(piece);
            while (const auto line = content ? buffer.nextResponseLine() : buffer.nextReplyLine()) {
                lines.emplace_back(*line);
            }
        });
        return lines;
    }
};

TEST_P(LineBufferCase, GivesTheSameLinesForPiecesOfEverySize) {
    for (const std::size_t pieceBytes : support::kPieceSizes) {
        SCOPED_TRACE(pieceBytes);
        EXPECT_THAT(lines(pieceBytes, false), ElementsAreArray(GetParam().replyLines));
        EXPECT_THAT(lines(pieceBytes, true), ElementsAreArray(GetParam().contentLines));
    }
}

INSTANTIATE_TEST_SUITE_P(Lines, LineBufferCase, testing::ValuesIn(cases()),
                         [](const auto& test) { return test.param.name; });

TEST(LineBuffer, CountsTheBytesThatHaveNotBeenGivenOut) {
    LineBuffer buffer;
    EXPECT_EQ(buffer.size(), 0U);
    buffer.append("ab\r\nc");
    EXPECT_EQ(buffer.size(), 5U);
    buffer.nextReplyLine();
    EXPECT_EQ(buffer.size(), 1U);
    buffer.append("d");
    EXPECT_EQ(buffer.size(), 2U);
}

TEST(LineBuffer, KeepsTheLinesGivenOutUntilMoreBytesCome) {
    LineBuffer buffer;
    buffer.append("first\r\nsecond\r\n");
    const auto first = buffer.nextReplyLine();
    const auto second = buffer.nextReplyLine();
    ASSERT_TRUE(first && second);
    EXPECT_EQ(*first, "first");
    EXPECT_EQ(*second, "second");
}

TEST(LineBuffer, ChangesBetweenTheTwoKindsOfLineAtALineEnd) {
    LineBuffer buffer;
    buffer.append("+OK\na\nb\r\n-ERR\n");
    EXPECT_EQ(buffer.nextReplyLine(), "+OK");
    EXPECT_EQ(buffer.nextResponseLine(), "a\nb");
    EXPECT_EQ(buffer.nextReplyLine(), "-ERR");
    EXPECT_EQ(buffer.nextReplyLine(), std::nullopt);
}

TEST(LineBuffer, LooksAtEachByteOfALongLineOnce) {
    constexpr std::size_t bytes = support::fewerIfSanitized(4U << 20U, 4U);
    LineBuffer buffer;
    for (std::size_t index = 0; index < bytes; ++index) {
        buffer.append("x");
        ASSERT_EQ(buffer.nextResponseLine(), std::nullopt);
    }
    buffer.append("\r\n");
    EXPECT_EQ(buffer.nextResponseLine()->size(), bytes);
}

struct CutCase {
    const char* name;
    std::string line;
    std::size_t most;
    std::string kept;
};

class CutLine : public testing::TestWithParam<CutCase> {};

TEST_P(CutLine, KeepsItsFirstPartForPiecesOfEverySizeAndTheNextLineIsWhole) {
    const CutCase& cut = GetParam();
    for (const std::size_t pieceBytes : support::kPieceSizes) {
        SCOPED_TRACE(pieceBytes);
        LineBuffer buffer;
        std::vector<std::string> lines;
        std::vector<std::size_t> dropped;
        support::forEachPiece(cut.line + "\r\nnext\r\n", pieceBytes, [&](std::string_view piece) {
            buffer.append(piece);
            while (const auto line = buffer.nextResponseLine(lines.empty() ? cut.most : 4)) {
                lines.emplace_back(*line);
                dropped.push_back(buffer.droppedBytes());
            }
        });
        EXPECT_THAT(lines, testing::ElementsAre(cut.kept, "next"));
        EXPECT_THAT(dropped, testing::ElementsAre(cut.line.size() - cut.kept.size(), 0U));
    }
}

INSTANTIATE_TEST_SUITE_P(Lines, CutLine,
                         testing::Values(CutCase{"Short", "abc", 3, "abc"},
                                         CutCase{"OneTooLong", "abcd", 3, "abc"},
                                         CutCase{"Long", std::string(100, 'x'), 3, "xxx"},
                                         CutCase{"OneOctetOnly", "..\r.\r", 1, "."},
                                         CutCase{"LineEndsWithin", "a\n\r\rb\nc\r\rd\n\n", 2, "a\n"},
                                         CutCase{"CarriageReturns", "\r\r\r\r\r", 2, "\r\r"}),
                         [](const auto& test) { return test.param.name; });

TEST(LineBuffer, HoldsNoMoreThanItsPartOfALineThatKeepsComing) {
    LineBuffer buffer;
    for (int piece = 0; piece < 1000; ++piece) {
        buffer.append(std::string(1000, piece % 2 == 0 ? 'x' : '\r'));
        ASSERT_EQ(buffer.nextResponseLine(10), std::nullopt);
        ASSERT_LE(buffer.size(), 11U);
    }
    EXPECT_EQ(buffer.size() + buffer.droppedBytes(), 1'000'000U);
}

TEST(LineBuffer, DropsGivenOutLinesWithoutMovingTheRestEachTime) {
    constexpr unsigned many = support::fewerIfSanitized(500'000U, 5U);
    std::string lines;
    for (unsigned line = 0; line < many; ++line) {
        lines += "ab\r\n";
    }
    LineBuffer buffer;
    buffer.append(lines);
    for (unsigned line = 0; line < many; ++line) {
        ASSERT_EQ(buffer.nextReplyLine(), "ab");
        buffer.append("c");
    }
    EXPECT_EQ(buffer.size(), many);
}

} // namespace
