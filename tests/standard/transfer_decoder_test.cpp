#include "standard/charset_decoder.h"
#include "standard/transfer_decoder.h"
#include "tests/support/sanitizer.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace {
using Encoding = TransferEncoding;

struct TransferCase {
    const char* name;
    Encoding encoding;
    std::string content;
    std::string bytes;
};

class Decoded : public testing::TestWithParam<TransferCase> {};

TEST_P(Decoded, GivesTheBytesAndTheirNumber) {
    const TransferCase& given = GetParam();
    EXPECT_EQ(standard::decoded(given.content, given.encoding), given.bytes);
    EXPECT_EQ(standard::decodedSize(given.content, given.encoding),
              static_cast<std::int64_t>(given.bytes.size()));
}

const TransferCase kTransferCases[] = {
    {"Base64", Encoding::Base64, "SGVsbG8gd29y\r\nbGQ=\r\n", "Hello world"},
    {"Base64OfTwoPaddingSigns", Encoding::Base64, "SGVsbA==", "Hell"},
    {"Base64WithoutPadding", Encoding::Base64, "SGVsbG8", "Hello"},
    {"Base64WithOneDigitTooMany", Encoding::Base64, "SGVsb", "Hel"},
    {"Base64WithForeignCharacters", Encoding::Base64, "SG!V*sb-G8=", "Hello"},
    {"Base64WithBlanks", Encoding::Base64, " SGVs bG8g\td29y bGQ= ", "Hello world"},
    {"Base64WithSignsInTheWrongPlace", Encoding::Base64, "=SGVs=bG8=", "Hello"},
    {"Base64WithTextBehind", Encoding::Base64, "SGVsbG8gd29ybGQsIGhlcmUgd2UgYXJlIGFsbC4=\r\n\r\n____\r\nList",
     "Hello world, here we are all."},
    {"Base64WithMoreTextBehind", Encoding::Base64,
     "SGVsbG8=\r\n\r\n_____\r\nA footer of the list, which is long.", "Hello"},
    {"Base64InTwoPieces", Encoding::Base64, "SGVsbG8=\r\nSGVsbG8=\r\n", "HelloHello"},
    {"Base64InPiecesOnOneLine", Encoding::Base64, "SGVsbG8=SGVsbG8=", "HelloHello"},
    {"WordsAreNoBase64", Encoding::Base64, "This is not base64 at all, it's plain text",
     "This is not base64 at all, it's plain text"},
    {"SignsAreNoBase64", Encoding::Base64, "!!!! ???? ---- SGVs", "!!!! ???? ---- SGVs"},
    {"NoBase64", Encoding::Base64, "", ""},
    {"QuotedPrintable", Encoding::QuotedPrintable, "Caf=C3=A9=20bar", "Café bar"},
    {"LowerCaseDigits", Encoding::QuotedPrintable, "=c3=a9", "é"},
    {"SoftLineBreaks", Encoding::QuotedPrintable, "a=\r\nb=\nc", "abc"},
    {"SoftLineBreakWithBlanks", Encoding::QuotedPrintable, "a= \t\r\nb", "ab"},
    {"SoftLineBreakAtTheEnd", Encoding::QuotedPrintable, "a=", "a"},
    {"SignWithoutDigits", Encoding::QuotedPrintable, "a=b=4==3D=zz", "a=b=4===zz"},
    {"RawBytes", Encoding::QuotedPrintable, "\xFF=41",
     "\xFF"
     "A"},
    {"Uuencode", Encoding::Uuencode, "\r\nbegin 644 cat.txt\r\n#0V%T\r\n`\r\nend\r\n", "Cat"},
    {"UuencodeWithoutFrame", Encoding::Uuencode, "#0V%T\n`\n", "Cat"},
    {"None", Encoding::None, "a=41\r\n", "a=41\r\n"},
    {"Unknown", Encoding::Unknown, "a=41\r\n", "a=41\r\n"},
};

INSTANTIATE_TEST_SUITE_P(Contents, Decoded, testing::ValuesIn(kTransferCases),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(Decoding, HandsOverLargeContentsInPieces) {
    std::string content;
    for (int line = 0; line < 20'000; ++line) {
        content += "QUJDQUJDQUJDQUJDQUJDQUJDQUJDQUJDQUJDQUJDQUJDQUJDQUJDQUJDQUJDQUJDQUJDQUJDQUJD\r\n";
    }
    std::size_t largest = 0;
    std::size_t bytes = 0;
    standard::decode(content, Encoding::Base64, [&](std::string_view piece) {
        largest = std::max(largest, piece.size());
        bytes += piece.size();
    });
    EXPECT_EQ(bytes, 20'000U * 57);
    EXPECT_LE(largest, 100'000U);
}

TEST(Decoding, OfBase64ThatEndsEverywhereTakesTimeInProportion) {
    constexpr unsigned groups = support::fewerIfSanitized(500'000U, 10U);
    std::string content;
    for (unsigned number = 0; number < groups; ++number) {
        content += "QQ==";
    }
    EXPECT_EQ(standard::decodedSize(content, Encoding::Base64), groups);
    EXPECT_EQ(standard::decoded(content, Encoding::Base64), std::string(groups, 'A'));
}

TEST(TransferEncodings, AreKnownInAnyCase) {
    EXPECT_EQ(standard::transferEncodingOf("Base64"), Encoding::Base64);
    EXPECT_EQ(standard::transferEncodingOf(" QUOTED-PRINTABLE (comment)"), Encoding::QuotedPrintable);
    EXPECT_EQ(standard::transferEncodingOf("\"base64\""), Encoding::Base64);
    EXPECT_EQ(standard::transferEncodingOf("base64; x=y"), Encoding::Base64);
    EXPECT_EQ(standard::transferEncodingOf("X-UUENCODE"), Encoding::Uuencode);
    EXPECT_EQ(standard::transferEncodingOf("8-bit"), Encoding::None);
    EXPECT_EQ(standard::transferEncodingOf(""), Encoding::None);
    EXPECT_EQ(standard::transferEncodingOf("x-nobody"), Encoding::Unknown);
}

TEST(TransferEncodings, AreKnownHoweverTheirWordsAreJoined) {
    EXPECT_EQ(standard::transferEncodingOf("quoted printable"), Encoding::QuotedPrintable);
    EXPECT_EQ(standard::transferEncodingOf("Quoted_Printable"), Encoding::QuotedPrintable);
    EXPECT_EQ(standard::transferEncodingOf("base-64"), Encoding::Base64);
    EXPECT_EQ(standard::transferEncodingOf("8bits"), Encoding::None);
    EXPECT_EQ(standard::transferEncodingOf("7 bit"), Encoding::None);
    EXPECT_EQ(standard::transferEncodingOf("plain"), Encoding::None);
    EXPECT_EQ(standard::transferEncodingOf("base64 and a word"), Encoding::Base64);
    EXPECT_EQ(standard::transferEncodingOf("quoted nonsense"), Encoding::Unknown);
}

struct CharsetCase {
    const char* name;
    std::string charset;
    std::string bytes;
    std::string text;
};

class TextOfCharset : public testing::TestWithParam<CharsetCase> {};

TEST_P(TextOfCharset, IsUtf8) {
    EXPECT_EQ(standard::toUtf8(GetParam().bytes, GetParam().charset), GetParam().text);
}

const CharsetCase kCharsets[] = {
    {"None", "", "a\xC3\xA4", "aä"},
    {"NoneAndWindows1252", "", "a\xE4\x80", "aä€"},
    {"Ascii", "us-ascii", "abc", "abc"},
    {"AsciiThatIsNone", "US-ASCII", "\xE4", "ä"},
    {"Utf8", "UTF-8", "ä€😀", "ä€😀"},
    {"Utf8WithAFault", "utf-8",
     "ä\xFF\xE2\x82"
     "b",
     "ä\uFFFD\uFFFD\uFFFD"
     "b"},
    {"Utf8ThatIsNone", "utf-8",
     "Gr\xFC\xDF"
     "e",
     "Grüße"},
    {"Utf8WithNul", "utf-8", std::string("a\0ä", 4), std::string("a\0ä", 4)},
    {"Latin1MeansWindows1252", "ISO-8859-1", "\xE4\x80", "ä€"},
    {"Latin9", "iso-8859-15", "\xA4", "€"},
    {"Cyrillic", "koi8-r", "\xC1", "а"},
    {"WindowsByHyphen", "cp-1251", "\xE0", "а"},
    {"Quoted", "\"koi8-r\"", "\xC1", "а"},
    {"Gb18030ForGb2312", "gb2312", "\xD6\xD0\x81\x30\x81\x30", "中\xC2\x80"},
    {"Big5", "big5", "\xA4\xA4", "中"},
    {"ShiftJis", "shift_jis", "\x82\xA0\x87\x40", "あ①"},
    {"Iso2022Jp", "ISO-2022-JP", "\x1B$B$3$s\x1B(B!", "こん!"},
    {"Iso2022JpLeftOpen", "iso-2022-jp", "\x1B$B$3$s", "こん"},
    {"Utf7", "utf-7", "a+AOQ-b", "aäb"},
    {"Utf16WithMark", "utf-16", std::string("\xFE\xFF\0a\0\xE4", 6), "aä"},
    {"Utf16Be", "utf-16be", std::string("\0a\xD8\0\0b", 6),
     "a\uFFFD"
     "b"},
    {"CutCharacter", "big5", "a\xA4", "a\uFFFD"},
    {"Unknown", "x-nobody", "a\xE4", "aä"},
    {"UnknownOfUtf8", "x-nobody", "aä", "aä"},
    {"NoName", "../../etc/passwd", "a\xE4", "aä"},
    {"NameWithOptions", "latin1//TRANSLIT", "a\xE4", "aä"},
};

INSTANTIATE_TEST_SUITE_P(Charsets, TextOfCharset, testing::ValuesIn(kCharsets),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(CharsetDecoder, DoesNotDependOnThePieces) {
    const std::string bytes = "\x1B$B$3$s\x1B(B! \x1B$B$3$s\x1B(B";
    for (const std::size_t size : {1U, 2U, 3U, 7U}) {
        standard::CharsetDecoder decoder("iso-2022-jp");
        std::string text;
        for (std::size_t at = 0; at < bytes.size(); at += size) {
            decoder.append(std::string_view(bytes).substr(at, size), text);
        }
        decoder.finish(text);
        EXPECT_EQ(text, "こん! こん") << "pieces of " << size;
    }
}
} // namespace
