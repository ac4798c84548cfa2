#include "mailserver/line_reader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

using mailserver::LineReader;

/** Every line of the bytes, fed in pieces of the size given; a line that was too long ends in "...". */
std::vector<std::string> linesOf(const std::string& bytes, std::size_t pieceSize, std::size_t maximumBytes) {
    LineReader reader;
    std::vector<std::string> lines;
    for (std::size_t start = 0; start < bytes.size(); start += pieceSize) {
        reader.append(std::string_view(bytes).substr(start, pieceSize));
        std::string line;
        for (;;) {
            const LineReader::Result result = reader.next(line, maximumBytes);
            if (result == LineReader::Result::Incomplete) {
                break;
            }
            lines.push_back(result == LineReader::Result::Truncated ? line + "..." : line);
        }
    }
    return lines;
}

class LineReaderTest : public testing::TestWithParam<std::size_t> {};

TEST_P(LineReaderTest, OnlyCrLfEndsALine) {
    EXPECT_EQ(linesOf("one\r\ntwo\nstill two\rtoo\r\n\r\nunfinished", GetParam(), 100),
              (std::vector<std::string>{"one", "two\nstill two\rtoo", ""}));
}

TEST_P(LineReaderTest, ALineThatIsTooLongIsCutAndTheNextOneIsWhole) {
    EXPECT_EQ(linesOf("12345\r\n" + std::string(100, 'x') + "\r\nafter\r\n", GetParam(), 5),
              (std::vector<std::string>{"12345", "xxxxx...", "after"}));
}

TEST_P(LineReaderTest, ALineOfExactlyTheMaximumIsNotCut) {
    EXPECT_EQ(linesOf("12345\r\n123456\r\n", GetParam(), 5), (std::vector<std::string>{"12345", "12345..."}));
}

INSTANTIATE_TEST_SUITE_P(PieceSizes, LineReaderTest, testing::Values(1, 2, 3, 7, 1000));

} // namespace
