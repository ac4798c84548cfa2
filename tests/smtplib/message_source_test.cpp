#include "components/smtplib/message_source.h"
#include "platform/runtime_error.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <sys/stat.h>

namespace {

using SMTPLib::MessageSource;
using SMTPLib::MessageTotals;
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
    int errorOfOpening(const std::string& name) {
        return platform::errorNumberOf([&] { MessageSource(kHeader, "", folder.qtPath(name)); });
    }

    support::TemporaryFolder folder;
};

TEST_F(MessageSourceTest, GivesHeaderBodyAndFileAsOneTextOfTheSizeThatWasMeasured) {
    folder.write("data", "base64\r\nmore");
    MessageSource source(kHeader, "body\nwithout end: ", folder.qtPath("data"));
    const MessageTotals totals = source.measure();
    const std::string text = readAll(source);
    EXPECT_EQ(text, "Subject: a\r\n\r\nbody\r\nwithout end: base64\r\nmore\r\n");
    EXPECT_EQ(totals.octets, static_cast<std::int64_t>(text.size()));
    EXPECT_FALSE(totals.eightBit);
}

TEST_F(MessageSourceTest, ALineEndMayLieHalfInTheBodyAndHalfInTheFile) {
    folder.write("data", "\nfile");
    MessageSource source(kHeader, "body\r", folder.qtPath("data"));
    EXPECT_EQ(readAll(source), "Subject: a\r\n\r\nbody\r\nfile\r\n");
}

TEST_F(MessageSourceTest, AnEmptyBodyOrFileAddsNothing) {
    folder.write("data", "");
    for (const QString& path : {QString(), folder.qtPath("data")}) {
        MessageSource source(kHeader, "", path);
        EXPECT_EQ(source.measure().octets, static_cast<std::int64_t>(kHeader.size()));
        EXPECT_EQ(readAll(source), kHeader);
    }
}

TEST_F(MessageSourceTest, TellsOfOctetsBeyondAsciiInBodyAndFile) {
    folder.write("ascii", "a");
    folder.write("more", "\xc3\xa4");
    EXPECT_FALSE(MessageSource(kHeader, "a", folder.qtPath("ascii")).measure().eightBit);
    EXPECT_TRUE(MessageSource(kHeader, "\xc3\xa4", folder.qtPath("ascii")).measure().eightBit);
    EXPECT_TRUE(MessageSource(kHeader, "a", folder.qtPath("more")).measure().eightBit);
}

TEST_F(MessageSourceTest, AnEncodedFileIsMeasuredByItsSize) {
    folder.write("data", "QUJD\r\nREVG\r\n");
    MessageSource source(kHeader, "body\r\n", folder.qtPath("data"));
    EXPECT_TRUE(source.readsFileToMeasure());
    source.fileIsEncoded();
    EXPECT_FALSE(source.readsFileToMeasure());
    const MessageTotals totals = source.measure();
    const std::string text = readAll(source);
    EXPECT_EQ(text, "Subject: a\r\n\r\nbody\r\nQUJD\r\nREVG\r\n");
    EXPECT_EQ(totals.octets, static_cast<std::int64_t>(text.size()));
    EXPECT_FALSE(totals.eightBit);
}

TEST_F(MessageSourceTest, BehindABodyWithoutALastLineEndAnEncodedFileIsReadAllTheSame) {
    const std::string longLine(SMTPLib::kMaximumTextLineOctets, 'a');
    folder.write("data", "QUJD\r\n");
    for (const std::string& body : {longLine, std::string(), std::string("body\r")}) {
        MessageSource source(kHeader, body, folder.qtPath("data"));
        source.fileIsEncoded();
        EXPECT_TRUE(source.readsFileToMeasure());
        const MessageTotals totals = source.measure();
        EXPECT_EQ(totals.octets, static_cast<std::int64_t>(readAll(source).size()));
    }
}

TEST_F(MessageSourceTest, NoPieceIsMuchLargerThanItsShareOfTheFile) {
    std::string content;
    while (content.size() < 3'000'000) {
        content += "\n\n\nabc\r\r";
    }
    folder.write("data", content);
    MessageSource source(kHeader, content, folder.qtPath("data"));
    const MessageTotals totals = source.measure();
    std::int64_t octets = 0;
    for (std::string piece; source.next(piece);) {
        EXPECT_LE(piece.size(), 2 * MessageSource::kPieceOctets + SMTPLib::kMaximumTextLineOctets);
        octets += static_cast<std::int64_t>(piece.size());
    }
    EXPECT_EQ(octets, totals.octets);
}

TEST_F(MessageSourceTest, OnlyAPlainFileThatIsThereIsTaken) {
    ASSERT_EQ(::mkfifo(folder.path("pipe").c_str(), 0600), 0);
    std::filesystem::create_symlink(folder.path("nothing"), folder.path("dangling"));
    EXPECT_EQ(errorOfOpening("missing"), errors::FileNotFound);
    EXPECT_EQ(errorOfOpening("pipe"), errors::PathFileAccess);
    EXPECT_EQ(errorOfOpening("."), errors::PathFileAccess);
    EXPECT_EQ(errorOfOpening("dangling"), errors::PathFileAccess);
    EXPECT_EQ(platform::errorNumberOf([] { MessageSource(kHeader, "", QStringLiteral("/dev/zero")); }),
              errors::PathFileAccess);
}

TEST_F(MessageSourceTest, AFileThatChangesAfterItWasMeasuredIsNotSent) {
    for (const std::string& content : {std::string("longer than it was"), std::string("sh"), std::string()}) {
        folder.write("data", "measured");
        MessageSource source(kHeader, "", folder.qtPath("data"));
        source.measure();
        folder.write("data", content);
        EXPECT_EQ(platform::errorNumberOf([&] { readAll(source); }), errors::DeviceInputOutput) << content;
    }
}

TEST_F(MessageSourceTest, AFileThatHasGoneMeanwhileIsReadToItsEnd) {
    folder.write("data", "still open");
    MessageSource source(kHeader, "", folder.qtPath("data"));
    source.measure();
    std::filesystem::remove(folder.path("data"));
    EXPECT_EQ(readAll(source), "Subject: a\r\n\r\nstill open\r\n");
}

} // namespace
