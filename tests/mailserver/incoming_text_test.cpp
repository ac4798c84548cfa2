#include "mailserver/incoming_text.h"
#include "tests/support/pieces.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace {

using mailserver::IncomingText;

struct Taken {
    std::string lines;
    std::string rest;
    bool isComplete = false;
    bool isTooLarge = false;

    bool operator==(const Taken&) const = default;
};

/** What becomes of the bytes, which come in pieces of this size, in a text of at most 100 bytes. */
Taken takenOf(std::string_view bytes, std::size_t pieceBytes) {
    IncomingText text(100);
    Taken taken;
    support::forEachPiece(bytes, pieceBytes, [&](std::string_view piece) {
        taken.rest += text.isComplete() ? piece : text.take(piece);
    });
    taken.isComplete = text.isComplete();
    taken.isTooLarge = text.isTooLarge();
    taken.lines = text.takeLines();
    return taken;
}

class IncomingTextInPieces : public testing::TestWithParam<std::size_t> {};

TEST_P(IncomingTextInPieces, EndsAtADotAloneAndLeavesWhatFollows) {
    EXPECT_EQ(takenOf("one\r\n..two\r\n.\r\nQUIT\r\n", GetParam()),
              (Taken{"one\r\n..two\r\n", "QUIT\r\n", true, false}));
    EXPECT_EQ(takenOf(".\r\n", GetParam()), (Taken{"", "", true, false}));
}

TEST_P(IncomingTextInPieces, GoesOnBehindAnythingElse) {
    const std::string text = "one\n.\ntwo\r.\r\r\n.three\r\n. \r\n\r\n";
    EXPECT_EQ(takenOf(text, GetParam()), (Taken{text, "", false, false}));
}

TEST_P(IncomingTextInPieces, OfAsManyBytesAsAreTakenIsWhole) {
    const std::string text = "." + std::string(99, 'x') + "\r\n";
    EXPECT_EQ(takenOf(text.substr(1) + ".\r\n", GetParam()).isTooLarge, true) << "101 bytes";
    EXPECT_EQ(takenOf(text.substr(2) + ".\r\n", GetParam()), (Taken{text.substr(2), "", true, false}));
    EXPECT_EQ(takenOf("." + text.substr(2) + ".\r\n", GetParam()).isTooLarge, false)
        << "a doubled dot counts once";
}

TEST_P(IncomingTextInPieces, ThatIsTooLargeIsHeardToItsEnd) {
    const std::string lines = std::string(60, 'x') + "\r\n" + std::string(60, '.') + "\r\n.x\r\n";
    EXPECT_EQ(takenOf(lines + ".\r\nQUIT\r\n", GetParam()), (Taken{"", "QUIT\r\n", true, true}));
}

INSTANTIATE_TEST_SUITE_P(PieceSizes, IncomingTextInPieces, testing::ValuesIn(support::kPieceSizes));

TEST(IncomingText, WithALongerLineThanIsTakenIsTooLarge) {
    const std::string line(IncomingText::kMaximumLineBytes, 'x');
    IncomingText text(10 * line.size());
    text.take(line + "\r\n");
    EXPECT_FALSE(text.isTooLarge());
    text.take(line + "x\r\n");
    EXPECT_TRUE(text.isTooLarge());
    EXPECT_EQ(text.take(".\r\n"), "");
    EXPECT_TRUE(text.isComplete());
}

TEST(IncomingText, HasItsDoubledDotsMadeSingle) {
    EXPECT_EQ(mailserver::withoutDoubledDots("..one\r\ntwo.\r\n...\r\n.x\r\n"),
              ".one\r\ntwo.\r\n..\r\nx\r\n");
    EXPECT_EQ(mailserver::withoutDoubledDots(""), "");
}

} // namespace
