#include "components/netcodelib/base64_decoder.h"
#include "components/netcodelib/base64_encoder.h"
#include "platform/runtime_error.h"
#include "tests/support/pieces.h"
#include "tests/support/random_bytes.h"
#include "tests/support/sanitizer.h"

#include <QByteArray>
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace {

using netcodelib::Base64Decoder;
using support::randomBytes;
using namespace std::string_literals;

constexpr std::array<std::size_t, 9> kPieces{1, 2, 3, 7, 57, 76, 78, 65'536, std::string_view::npos};

struct Result {
    std::string bytes;
    int error = 0;

    bool operator==(const Result&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Result& result) {
    return out << testing::PrintToString(result.bytes) << " error " << result.error;
}

Result decoded(std::string_view text, std::size_t pieceBytes = std::string_view::npos) {
    Base64Decoder decoder;
    Result result;
    result.error = platform::errorNumberOf([&] {
        support::forEachPiece(text, pieceBytes,
                              [&](std::string_view piece) { decoder.append(piece, result.bytes); });
        decoder.finish(result.bytes);
    });
    if (result.error != 0) {
        result.bytes.clear();
    }
    return result;
}

struct DecoderCase {
    const char* name;
    std::string text;
    Result expected;
};

const std::vector<DecoderCase>& cases() {
    static const std::vector<DecoderCase> table{
        {"Nothing", "", {"", 0}},
        {"OneByte", "Zg==", {"f", 0}},
        {"TwoBytes", "Zm8=", {"fo", 0}},
        {"ThreeBytes", "Zm9v", {"foo", 0}},
        {"FourBytes", "Zm9vYg==", {"foob", 0}},
        {"SixBytes", "Zm9vYmFy", {"foobar", 0}},
        {"HighBits", "+/+/", {"\xFB\xFF\xBF", 0}},

        {"CarriageReturnLineFeed", "Zm9v\r\nYmFy\r\n", {"foobar", 0}},
        {"LineFeedAlone", "Zm9v\nYmFy\n", {"foobar", 0}},
        {"LineEndInsideAGroup", "Zm\r\n9vYm\r\nFy", {"foobar", 0}},
        {"EmptyLines", "\r\n\r\nZm9v\r\n\r\nYmFy\r\n\r\n", {"foobar", 0}},
        {"OnlyLineEnds", "\r\n\r\n", {"", 0}},
        {"BlanksAndTabs", " Z\tm 9 v\t Ym Fy ", {"foobar", 0}},
        {"ForeignCharacters", "Z!m#9v\x80\xFFYm*Fy:", {"foobar", 0}},
        {"Nul", "Zm9\0vYmFy"s, {"foobar", 0}},
        {"LettersOfTheAddressSafeAlphabetAreForeign", "Zm9v-_-_YmFy", {"foobar", 0}},
        {"HyphensOfTheNextBoundary", "Zm9vYmFy\r\n--", {"foobar", 0}},
        {"HyphensAfterPadding", "Zm9vYg==\r\n--", {"foob", 0}},
        {"OnlyForeignCharacters", "!!!! ---- !!!!", {"", 0}},

        {"NoPaddingAfterTwoCharacters", "Zm9vYg", {"foob", 0}},
        {"NoPaddingAfterThreeCharacters", "Zm9vYmE", {"fooba", 0}},
        {"NoPaddingBeforeHyphens", "Zm9vYmE\r\n--", {"fooba", 0}},
        {"HalfThePadding", "Zm9vYg=", {"foob", 0}},
        {"PaddingAcrossLines", "Zm9vYg=\r\n=\r\n", {"foob", 0}},
        {"TooMuchPadding", "Zm9vYmE====", {"fooba", 0}},
        {"PaddingAfterAWholeGroup", "Zm9v=", {"foo", 0}},
        {"OnlyPadding", "====", {"", 0}},
        {"BitsLeftOverAreDropped", "Zh==", {"f", 0}},

        {"TextAfterPadding", "Zm8=\r\n__________\r\nfriends mailing list\r\n", {"fo", 0}},
        {"PaddingInside", "Zm8=Zm9v", {"fo", 0}},
        {"ASingleCharacterAfterPadding", "Zm8=Z", {"fo", 0}},
        {"TextAfterPaddingOfNothing", "=Zm9v", {"", 0}},

        {"OneCharacter", "Z", {"", platform::errors::BadEncodedText}},
        {"CutAfterOneCharacterOfAGroup", "Zm9vY", {"", platform::errors::BadEncodedText}},
        {"CutBeforeALineEnd", "Zm9vY\r\n", {"", platform::errors::BadEncodedText}},
        {"CutBeforePadding", "Zm9vY===", {"", platform::errors::BadEncodedText}},
        {"CutBeforePaddingAndText", "Zm9vY=\r\nZm9v", {"", platform::errors::BadEncodedText}},
    };
    return table;
}

class Base64DecoderCase : public testing::TestWithParam<DecoderCase> {};

TEST_P(Base64DecoderCase, GivesTheSameBytesForPiecesOfEverySize) {
    for (const std::size_t pieceBytes : kPieces) {
        EXPECT_EQ(decoded(GetParam().text, pieceBytes), GetParam().expected) << pieceBytes;
    }
}

/** Behind many whole lines the decoder uses its fast way when the special case comes. */
TEST_P(Base64DecoderCase, GivesTheSameBytesBehindWholeLines) {
    const std::string before = randomBytes(5700, 1);
    netcodelib::Base64Encoder encoder;
    std::string text;
    encoder.append(before, text);
    encoder.finish(text);
    text += GetParam().text;
    Result expected = GetParam().expected;
    if (expected.error == 0) {
        expected.bytes.insert(0, before);
    }
    for (const std::size_t pieceBytes : kPieces) {
        EXPECT_TRUE(decoded(text, pieceBytes) == expected) << pieceBytes;
    }
}

INSTANTIATE_TEST_SUITE_P(Texts, Base64DecoderCase, testing::ValuesIn(cases()),
                         [](const auto& test) { return test.param.name; });

TEST(Base64Decoder, UndoesTheReferenceForEveryLength) {
    const std::string bytes = randomBytes(200, 2);
    for (std::size_t length = 0; length <= bytes.size(); ++length) {
        const std::string text =
            QByteArray(bytes.data(), static_cast<qsizetype>(length)).toBase64().toStdString();
        for (const std::size_t pieceBytes : kPieces) {
            ASSERT_EQ(decoded(text, pieceBytes), (Result{bytes.substr(0, length), 0})) << length;
        }
    }
}

TEST(Base64Decoder, UndoesTheEncoderInPiecesOfEverySize) {
    for (unsigned seed = 0; seed < support::fewerIfSanitized(20U, 5U); ++seed) {
        const std::string bytes = randomBytes(50'000 + seed * 1009, seed);
        netcodelib::Base64Encoder encoder;
        std::string text;
        encoder.append(bytes, text);
        encoder.finish(text);
        for (const std::size_t pieceBytes : kPieces) {
            ASSERT_TRUE(decoded(text, pieceBytes) == (Result{bytes, 0})) << seed << " in " << pieceBytes;
        }
    }
}

TEST(Base64Decoder, IgnoresAForeignCharacterAtEveryPlace) {
    const std::string bytes = randomBytes(114, 3);
    netcodelib::Base64Encoder encoder;
    std::string text;
    encoder.append(bytes, text);
    for (std::size_t place = 0; place <= text.size(); ++place) {
        std::string disturbed = text;
        disturbed.insert(place, 1, '~');
        ASSERT_TRUE(decoded(disturbed) == (Result{bytes, 0})) << place;
    }
}

TEST(Base64Decoder, TakesEveryOtherCharacterForForeign) {
    constexpr std::string_view known = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/=";
    for (int code = 0; code < 256; ++code) {
        const char character = static_cast<char>(code);
        if (known.find(character) == std::string_view::npos) {
            std::string text = "Zm9vYmFyZm9vYmFy";
            text.insert(6, 1, character);
            EXPECT_EQ(decoded(text), (Result{"foobarfoobar", 0})) << code;
        }
    }
}

TEST(Base64Decoder, ReadsLinesOfAnyLength) {
    const std::string bytes = randomBytes(1000, 4);
    const std::string text =
        QByteArray(bytes.data(), static_cast<qsizetype>(bytes.size())).toBase64().toStdString();
    for (std::size_t length = 1; length < 100; ++length) {
        std::string lines;
        for (std::size_t start = 0; start < text.size(); start += length) {
            lines.append(text, start, length).append("\r\n");
        }
        ASSERT_TRUE(decoded(lines) == (Result{bytes, 0})) << length;
    }
}

TEST(Base64Decoder, TellsEveryCutInsideAByte) {
    const std::string text = "Zm9vYmFyZm9vYmFy";
    for (std::size_t length = 0; length <= text.size(); ++length) {
        EXPECT_EQ(decoded(text.substr(0, length)).error,
                  length % 4 == 1 ? platform::errors::BadEncodedText : 0)
            << length;
    }
}

TEST(Base64Decoder, BeginsAnewAfterAnErrorAndAddsNothingBeyondTheText) {
    Base64Decoder decoder;
    std::string bytes;
    EXPECT_EQ(platform::errorNumberOf([&] { decoder.append("Zm9vY=ignored", bytes); }),
              platform::errors::BadEncodedText);
    EXPECT_EQ(bytes, "foo");
    decoder.append("Zm9vY", bytes);
    EXPECT_EQ(platform::errorNumberOf([&] { decoder.finish(bytes); }), platform::errors::BadEncodedText);
    EXPECT_EQ(bytes, "foofoo");
    decoder.append("Zm8=", bytes);
    decoder.finish(bytes);
    EXPECT_EQ(bytes, "foofoofo");
}

TEST(Base64Decoder, BeginsAnewAfterTheEnd) {
    Base64Decoder decoder;
    std::string bytes;
    decoder.append("Zm8=ignored", bytes);
    decoder.finish(bytes);
    decoder.append("Zm9v", bytes);
    decoder.finish(bytes);
    EXPECT_EQ(bytes, "fofoo");
}

} // namespace
