#include "components/smtplib/message_source.h"
#include "platform/runtime_error.h"
#include "tests/support/sanitizer.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>

namespace {

using platform::RegularInput;
using smtplib::MessageSource;
using smtplib::MessageTotals;
namespace errors = platform::errors;

constexpr std::string_view kHeader = "Subject: a\r\n\r\n";

std::string readAll(MessageSource& source) {
    std::string text;
    for (std::string piece; source.next(piece);) {
        text += piece;
    }
    return text;
}

class MessageSourceTest : public testing::Test {
  protected:
    RegularInput file(const char* name) { return RegularInput(folder.qtPath(name)); }

    support::TemporaryFolder folder;
};

TEST_F(MessageSourceTest, GivesHeaderBodyAndFileAsOneTextOfTheSizeThatWasMeasured) {
    folder.write("data", "base64\r\nmore");
    MessageSource source(kHeader, "body\nwithout end: ", file("data"));
    const MessageTotals totals = source.measure();
    const std::string text = readAll(source);
    EXPECT_EQ(text, "Subject: a\r\n\r\nbody\r\nwithout end: base64\r\nmore\r\n");
    EXPECT_EQ(totals.bytes, static_cast<std::int64_t>(text.size()));
    EXPECT_FALSE(totals.eightBit);
}

TEST_F(MessageSourceTest, ALineEndMayLieHalfInTheBodyAndHalfInTheFile) {
    folder.write("data", "\nfile");
    MessageSource source(kHeader, "body\r", file("data"));
    EXPECT_EQ(readAll(source), "Subject: a\r\n\r\nbody\r\nfile\r\n");
}

TEST_F(MessageSourceTest, AnEmptyBodyOrFileAddsNothing) {
    folder.write("data", "");
    for (const auto& data : {std::optional<RegularInput>(), std::optional(file("data"))}) {
        MessageSource source(kHeader, "", data);
        EXPECT_EQ(source.measure().bytes, static_cast<std::int64_t>(kHeader.size()));
        EXPECT_EQ(readAll(source), kHeader);
    }
}

TEST_F(MessageSourceTest, TellsOfBytesBeyondAsciiInBodyAndFile) {
    folder.write("ascii", "a");
    folder.write("more", "\xc3\xa4");
    EXPECT_FALSE(MessageSource(kHeader, "a", file("ascii")).measure().eightBit);
    EXPECT_TRUE(MessageSource(kHeader, "\xc3\xa4", file("ascii")).measure().eightBit);
    EXPECT_TRUE(MessageSource(kHeader, "a", file("more")).measure().eightBit);
}

TEST_F(MessageSourceTest, AnEncodedFileIsMeasuredByItsSize) {
    folder.write("data", "QUJD\r\nREVG\r\n");
    MessageSource source(kHeader, "body\r\n", file("data"));
    EXPECT_TRUE(source.readsFileToMeasure());
    source.fileIsEncoded();
    EXPECT_FALSE(source.readsFileToMeasure());
    const MessageTotals totals = source.measure();
    const std::string text = readAll(source);
    EXPECT_EQ(text, "Subject: a\r\n\r\nbody\r\nQUJD\r\nREVG\r\n");
    EXPECT_EQ(totals.bytes, static_cast<std::int64_t>(text.size()));
    EXPECT_FALSE(totals.eightBit);
}

TEST_F(MessageSourceTest, BehindABodyWithoutALastLineEndAnEncodedFileIsReadAllTheSame) {
    const std::string longLine(smtplib::kMaximumTextLineBytes, 'a');
    folder.write("data", "QUJD\r\n");
    for (const std::string& body : {longLine, std::string(), std::string("body\r")}) {
        MessageSource source(kHeader, body, file("data"));
        source.fileIsEncoded();
        EXPECT_TRUE(source.readsFileToMeasure());
        const MessageTotals totals = source.measure();
        EXPECT_EQ(totals.bytes, static_cast<std::int64_t>(readAll(source).size()));
    }
}

TEST_F(MessageSourceTest, NoPieceIsMuchLargerThanItsShareOfTheFile) {
    std::string content;
    constexpr std::size_t bytes = support::kSanitized ? 600'000 : 3'000'000;
    while (content.size() < bytes) {
        content += "\n\n\nabc\r\r";
    }
    folder.write("data", content);
    MessageSource source(kHeader, content, file("data"));
    const MessageTotals totals = source.measure();
    std::int64_t given = 0;
    for (std::string piece; source.next(piece);) {
        EXPECT_LE(piece.size(), 2 * MessageSource::kPieceBytes + smtplib::kMaximumTextLineBytes);
        given += static_cast<std::int64_t>(piece.size());
    }
    EXPECT_EQ(given, totals.bytes);
}

TEST_F(MessageSourceTest, AFileThatChangesAfterItWasMeasuredIsNotSent) {
    for (const std::string& content : {std::string("longer than it was"), std::string("sh"), std::string()}) {
        folder.write("data", "measured");
        MessageSource source(kHeader, "", file("data"));
        source.measure();
        folder.write("data", content);
        EXPECT_EQ(platform::errorNumberOf([&] { readAll(source); }), errors::DeviceInputOutput) << content;
    }
}

TEST_F(MessageSourceTest, AFileThatHasGoneMeanwhileIsReadToItsEnd) {
    folder.write("data", "still open");
    MessageSource source(kHeader, "", file("data"));
    source.measure();
    std::filesystem::remove(folder.path("data"));
    EXPECT_EQ(readAll(source), "Subject: a\r\n\r\nstill open\r\n");
}

} // namespace
