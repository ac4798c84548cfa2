#include "components/netcodelib/part_decoder.h"
#include "platform/runtime_error.h"
#include "tests/support/base64_text.h"
#include "tests/support/pieces.h"
#include "tests/support/random_bytes.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace {

const std::string kFile = support::randomBytes(67'511, 9);

struct DecodedPart {
    std::string bytes;
    int error = 0;
};

DecodedPart decodedPart(std::string_view text, std::size_t pieceBytes) {
    netcodelib::PartDecoder decoder;
    DecodedPart result;
    result.error = platform::errorNumberOf([&] {
        support::forEachPiece(text, pieceBytes,
                              [&](std::string_view piece) { decoder.append(piece, result.bytes); });
        decoder.finish(result.bytes);
    });
    return result;
}

struct PartCase {
    const char* name;
    /** What the stripper leaves of the part's header, without the empty line at its end. */
    std::string restOfHeader;
};

const std::vector<PartCase> kRests{
    {"Nothing", ""},
    {"Size", " size=35648\r\n"},
    {"SizeAndDates", " size=67511;\r\n creation-date=\"Mon, 04 Mar 2024 10:11:12 GMT\";\r\n"
                     " modification-date=\"Mon, 04 Mar 2024 10:11:12 GMT\"\r\n"},
    {"ExtendedName", " filename*=utf-8''Bericht%20M%C3%A4rz.pdf\r\n"},
    {"NumberedName", "\tfilename*1*=rz.pdf; size=3\r\n"},
    {"Identity", "Content-ID: <f_lx1>\r\nX-Attachment-Id: f_lx1\r\n"},
    {"FoldedDescription", "Content-Description: a long\r\n\tdescription: of it\r\n"},
    {"SizeThenIdentity",
     " size=35648;\r\nContent-ID: <1@example.org>\r\nContent-MD5: Q2hlY2sgSW50ZWdyaXR5IQ==\r\n"},
    {"MachineMode", "\tx-unix-mode=0644\r\n"},
};

class PartDecoderBehind : public testing::TestWithParam<PartCase> {};

TEST_P(PartDecoderBehind, GivesEveryByteOfTheFile) {
    const std::string text = GetParam().restOfHeader + "\r\n" + support::base64Text(kFile) + "--\r\n";
    for (const std::size_t pieceBytes : support::kPieceSizes) {
        const DecodedPart result = decodedPart(text, pieceBytes);
        EXPECT_EQ(result.error, 0) << pieceBytes;
        EXPECT_TRUE(result.bytes == kFile) << pieceBytes;
    }
}

TEST_P(PartDecoderBehind, TextThatIsNotBase64IsRefused) {
    for (const char* text : {"{\"a\": 1}\r\n", "Name: value\r\n\r\nQUJD\r\n", "Gr=C3=BC=C3=9Fe\r\n"}) {
        EXPECT_EQ(decodedPart(GetParam().restOfHeader + "\r\n" + text + "--\r\n", 7).error, 20502) << text;
    }
}

INSTANTIATE_TEST_SUITE_P(RestsOfHeaders, PartDecoderBehind, testing::ValuesIn(kRests),
                         [](const auto& test) { return test.param.name; });

TEST(PartDecoder, APartThatHasLostEvenItsEmptyLineIsRefused) {
    // When the encoded text ends in "name=", the stripper takes it for a key and removes everything up to the
    // line end.
    EXPECT_EQ(decodedPart("--\r\n", 1).error, 20502);
    EXPECT_EQ(decodedPart("\r\n--\r\n", 1).error, 0);
}

} // namespace
