#include "message/house_reader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::IsEmpty;
using testing::Optional;

namespace {

TEST(HouseReader, ShowsAPlainBodyAsItCame) {
    email::MessageSummary message;
    message.BodyText = "one\r\n\xff\r\n";
    message.Size = 32'000;
    const ReadMessage read = readHouseMessage(message);
    EXPECT_THAT(read.text, Optional(message.BodyText));
    EXPECT_THAT(read.attachments, IsEmpty());
    EXPECT_EQ(read.error, 0);
}

TEST(HouseReader, ShowsNoPlainBodyOfMoreThan32000Bytes) {
    email::MessageSummary message;
    message.BodyText = "one\r\n";
    message.Size = 32'001;
    const ReadMessage read = readHouseMessage(message);
    EXPECT_FALSE(read.text.has_value()) << "what counts is the size that the server tells";
    EXPECT_EQ(read.error, 0);
}

TEST(HouseReader, ReadsABodyWithABoundaryOfAnySize) {
    email::MessageSummary message;
    message.Size = 1'000'000;
    message.Boundary = "B0";
    message.BodyText = "--B0\r\nContent-Type: text/plain; x\r\n\r\none\r\n--B0--\r\n";
    EXPECT_THAT(readHouseMessage(message).text, Optional(std::string("\r\none\r\n--")));
}

} // namespace
