#include "components/netcodelib/base64_encoder.h"
#include "tests/support/pieces.h"
#include "tests/support/random_bytes.h"

#include <QByteArray>
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <string_view>

namespace {

using netcodelib::Base64Encoder;
using support::randomBytes;

constexpr std::array<std::size_t, 8> kEncodedPieces{1, 2, 7, 56, 57, 58, 65'536, std::string_view::npos};

std::string encoded(std::string_view bytes, std::size_t pieceBytes = std::string_view::npos) {
    Base64Encoder encoder;
    std::string text;
    support::forEachPiece(bytes, pieceBytes, [&](std::string_view piece) { encoder.append(piece, text); });
    encoder.finish(text);
    return text;
}

/** What Qt makes of the bytes, cut into lines. */
std::string reference(std::string_view bytes) {
    const std::string text =
        QByteArray(bytes.data(), static_cast<qsizetype>(bytes.size())).toBase64().toStdString();
    std::string lines;
    for (std::size_t start = 0; start < text.size(); start += 76) {
        lines.append(text, start, 76).append("\r\n");
    }
    return lines;
}

struct Vector {
    const char* bytes;
    const char* text;
};

// RFC 4648 section 10.
constexpr std::array<Vector, 7> kVectors{{{"", ""},
                                          {"f", "Zg==\r\n"},
                                          {"fo", "Zm8=\r\n"},
                                          {"foo", "Zm9v\r\n"},
                                          {"foob", "Zm9vYg==\r\n"},
                                          {"fooba", "Zm9vYmE=\r\n"},
                                          {"foobar", "Zm9vYmFy\r\n"}}};

TEST(Base64Encoder, KnowsTheStandardsExamples) {
    for (const Vector& vector : kVectors) {
        EXPECT_EQ(encoded(vector.bytes), vector.text) << vector.bytes;
    }
}

TEST(Base64Encoder, UsesEveryLetterOfTheAlphabet) {
    std::string bytes;
    for (unsigned value = 0; value < 64; value += 4) {
        const unsigned bits = value << 18U | (value + 1) << 12U | (value + 2) << 6U | (value + 3);
        bytes += {static_cast<char>(bits >> 16U), static_cast<char>(bits >> 8U), static_cast<char>(bits)};
    }
    EXPECT_EQ(encoded(bytes), "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/\r\n");
}

TEST(Base64Encoder, GivesTheReferencesTextForEveryLengthInPiecesOfEverySize) {
    const std::string bytes = randomBytes(200, 1);
    for (std::size_t length = 0; length <= bytes.size(); ++length) {
        for (const std::size_t pieceBytes : kEncodedPieces) {
            const auto part = std::string_view(bytes).substr(0, length);
            ASSERT_EQ(encoded(part, pieceBytes), reference(part)) << length << " in " << pieceBytes;
        }
    }
}

TEST(Base64Encoder, GivesTheReferencesTextForLongBytes) {
    for (unsigned seed = 0; seed < 20; ++seed) {
        const std::string bytes = randomBytes(100'000 + seed * 1009, seed);
        for (const std::size_t pieceBytes : {std::size_t{57}, std::size_t{1000}, std::size_t{65'536}}) {
            ASSERT_EQ(encoded(bytes, pieceBytes), reference(bytes)) << seed << " in " << pieceBytes;
        }
    }
}

TEST(Base64Encoder, EndsAFullLastLineOnce) {
    EXPECT_EQ(encoded(std::string(57, '\0')), std::string(76, 'A') + "\r\n");
    EXPECT_EQ(encoded(std::string(58, '\0')), std::string(76, 'A') + "\r\nAA==\r\n");
}

TEST(Base64Encoder, AddsToTheTextThatIsThere) {
    Base64Encoder encoder;
    std::string text = "before ";
    encoder.append("foo", text);
    EXPECT_EQ(text, "before ");
    encoder.finish(text);
    EXPECT_EQ(text, "before Zm9v\r\n");
}

TEST(Base64Encoder, BeginsAnewAfterTheEnd) {
    Base64Encoder encoder;
    std::string text;
    encoder.append("fo", text);
    encoder.finish(text);
    encoder.append("foo", text);
    encoder.finish(text);
    EXPECT_EQ(text, "Zm8=\r\nZm9v\r\n");
}

} // namespace
