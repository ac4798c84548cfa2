#include "platform/runtime_error.h"
#include "platform/text.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>

namespace {

using platform::errorNumberOf;
namespace errors = platform::errors;

QString text(std::u16string_view characters) {
    return QString::fromUtf16(characters.data(), static_cast<qsizetype>(characters.size()));
}

std::string utf8(const QString& characters) {
    return characters.toStdString();
}

struct BytesCase {
    const char* name;
    std::string_view bytes;
    std::u16string_view shown;
};

void PrintTo(const BytesCase& test, std::ostream* stream) {
    *stream << test.name;
}

class FromBytes : public testing::TestWithParam<BytesCase> {};

TEST_P(FromBytes, AreShownAsTheirCharacters) {
    EXPECT_EQ(platform::fromBytes(GetParam().bytes).toStdU16String(), GetParam().shown);
}

using namespace std::string_view_literals;

INSTANTIATE_TEST_SUITE_P(
    Text, FromBytes,
    testing::Values(BytesCase{"Nothing", "", u""}, BytesCase{"Ascii", "abc", u"abc"},
                    BytesCase{"Utf8", "gr\xC3\xBC\xC3\x9F", u"gr\u00FC\u00DF"},
                    BytesCase{"Utf8BeyondTheBasicPlane", "\xF0\x9F\x93\xA7", u"\U0001F4E7"},
                    BytesCase{"Windows1252", "gr\xFC\xDF \x80\x93\x94", u"gr\u00FC\u00DF \u20AC\u201C\u201D"},
                    BytesCase{"OneWrongByteMakesAllWindows1252", "\xC3\xBC\xFF", u"\u00C3\u00BC\u00FF"},
                    BytesCase{"Utf8CutShort", "a\xC3", u"a\u00C3"},
                    BytesCase{"SurrogateInUtf8", "\xED\xA0\x80", u"\u00ED\u00A0\u20AC"},
                    BytesCase{"OverlongSlash", "\xC0\xAF", u"\u00C0\u00AF"},
                    BytesCase{"NulStays", "a\0b"sv, u"a\0b"sv},
                    BytesCase{"EscapeStays", "\x1B$B", u"\x1B$B"}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(Text, AStartEndsBetweenTwoCharacters) {
    EXPECT_EQ(platform::wholeCharacters("abc", 5), 3U);
    EXPECT_EQ(platform::wholeCharacters("abc", 2), 2U);
    EXPECT_EQ(platform::wholeCharacters("a\xc3\xa4", 2), 1U);
    EXPECT_EQ(platform::wholeCharacters("\xf0\x9f\x93\xa7", 3), 0U);
    EXPECT_EQ(platform::wholeCharacters("\x80\x80\x80\x80\x80\x80", 5), 5U) << "no UTF-8";
    EXPECT_EQ(platform::wholeCharacters("\x80\x80", 1), 1U);
}

TEST(Text, AStartThatIsNotAllSaysSo) {
    EXPECT_EQ(platform::startFromBytes("abc", 3), QStringLiteral("abc"));
    EXPECT_EQ(platform::startFromBytes("abcd", 3), QStringLiteral("abc [...]"));
    EXPECT_EQ(platform::startFromBytes("gr\xfc\xdf", 3), QStringLiteral("grü [...]"));
    EXPECT_EQ(platform::startFromBytes("gr\xc3\xbcn", 3), QStringLiteral("gr [...]"));
}

TEST(Text, EveryByteAloneIsShownAsOneCharacter) {
    for (int code = 0; code < 256; ++code) {
        const char byte = static_cast<char>(code);
        EXPECT_EQ(platform::fromBytes({&byte, 1}).size(), 1) << code;
    }
}

TEST(Text, TypedTextGoesOutAsUtf8) {
    EXPECT_EQ(platform::toBytes(text(u"gr\u00FC\u00DF \U0001F4E7")), "gr\xC3\xBC\xC3\x9F \xF0\x9F\x93\xA7");
    EXPECT_EQ(platform::toBytes(text(u"a\0b"sv)), "a\0b"sv);
}

TEST(Text, PositionsCountFromOne) {
    EXPECT_EQ(platform::inStr(1, "a=b=c", "="), 2U);
    EXPECT_EQ(platform::inStr(2, "a=b=c", "="), 2U);
    EXPECT_EQ(platform::inStr(3, "a=b=c", "="), 4U);
}

TEST(Text, WhatIsNotThereHasPositionZero) {
    EXPECT_EQ(platform::inStr(1, "abc", "="), 0U);
    EXPECT_EQ(platform::inStr(1, "", "="), 0U);
    EXPECT_EQ(platform::inStr(4, "abc", "c"), 0U);
    EXPECT_EQ(platform::inStr(3, "a=b", "="), 0U);
}

TEST(Text, SearchesAreCaseSensitive) {
    EXPECT_EQ(platform::inStr(1, "Boundary=", "boundary="), 0U);
}

TEST(Text, MidGivesWhatIsThere) {
    EXPECT_EQ(platform::mid("abcdef", 2, 3), "bcd");
    EXPECT_EQ(platform::mid("abcdef", 5, 100), "ef");
    EXPECT_EQ(platform::mid("abcdef", 6, 0), "");
    EXPECT_EQ(platform::mid("abcdef", 7, 1), "");
    EXPECT_EQ(platform::mid("abcdef", INT64_MAX, INT64_MAX), "");
}

TEST(Text, MidRefusesANegativeLengthAndAStartBeforeTheText) {
    EXPECT_EQ(errorNumberOf([] { platform::mid("abc", 1, -1); }), errors::InvalidProcedureCall);
    EXPECT_EQ(errorNumberOf([] { platform::mid("abc", 0, 1); }), errors::InvalidProcedureCall);
    EXPECT_EQ(errorNumberOf([] { platform::mid("", -5, 1); }), errors::InvalidProcedureCall);
    EXPECT_EQ(errorNumberOf([] { platform::mid("abc", 100, -1); }), errors::InvalidProcedureCall);
}

TEST(Text, OnlySpacesAreTrimmed) {
    EXPECT_EQ(utf8(platform::trimmedSpaces(text(u"  a b  "))), "a b");
    EXPECT_EQ(utf8(platform::trimmedSpaces(text(u" \ta\t "))), "\ta\t");
    EXPECT_EQ(utf8(platform::trimmedSpaces(text(u"    "))), "");
    EXPECT_EQ(utf8(platform::trimmedSpaces(QString())), "");
}

TEST(Text, FittedTextIsPaddedOrCutToItsWidth) {
    EXPECT_EQ(utf8(platform::fitted(text(u"abc"), 5)), "abc  ");
    EXPECT_EQ(utf8(platform::fitted(text(u"abcde"), 5)), "abcde");
    EXPECT_EQ(utf8(platform::fitted(text(u"abcdef"), 5)), "abcde");
    EXPECT_EQ(utf8(platform::fitted(QString(), 3)), "   ");
    EXPECT_EQ(utf8(platform::fitted(text(u"abc"), 0)), "");
}

TEST(Text, FittedTextCountsCharactersAsPeopleDo) {
    const QString letterWithMark = text(u"e\u0301");
    EXPECT_EQ(platform::fitted(letterWithMark + letterWithMark, 1), letterWithMark);
    const QString envelope = text(u"\U0001F4E7");
    EXPECT_EQ(platform::fitted(envelope + envelope, 1), envelope);
    EXPECT_EQ(platform::fitted(envelope, 2), envelope + QChar(u' '));
}

TEST(Text, ControlCharactersAreShownAndNotObeyed) {
    EXPECT_EQ(platform::withControlsVisible(text(u"a\r\nb\tc")), text(u"a  b c"));
    EXPECT_EQ(platform::withControlsVisible(text(u"\x1B[31m")), text(u"\u241B[31m"));
    EXPECT_EQ(platform::withControlsVisible(text(u"a\0b"sv)), text(u"a\u2400b"));
    EXPECT_EQ(platform::withControlsVisible(text(u"\u202Egnp.exe")), text(u"<202E>gnp.exe"));
    EXPECT_EQ(platform::withControlsVisible(text(u"a\u2028b\u0085c\x7F")), text(u"a<2028>b<0085>c<007F>"));
    EXPECT_EQ(platform::withControlsVisible(text(u"gr\u00FC\u00DF \U0001F4E7")),
              text(u"gr\u00FC\u00DF \U0001F4E7"));
}

TEST(Text, UpperCaseChangesOnlyTheLettersOfMailsOwnNames) {
    EXPECT_EQ(platform::upperCase("Content-Type"), "CONTENT-TYPE");
    EXPECT_EQ(platform::upperCase("from \xC3\xBC `{"), "FROM \xC3\xBC `{");
}

struct NumberCase {
    const char* name;
    const char16_t* text;
    int number;
};

void PrintTo(const NumberCase& test, std::ostream* stream) {
    *stream << test.name;
}

class ToInteger16 : public testing::TestWithParam<NumberCase> {};

TEST_P(ToInteger16, Converts) {
    EXPECT_EQ(platform::toInteger16(text(GetParam().text)), GetParam().number);
}

INSTANTIATE_TEST_SUITE_P(
    Text, ToInteger16,
    testing::Values(NumberCase{"Plain", u"15", 15}, NumberCase{"BlanksAround", u"  15   ", 15},
                    NumberCase{"Minus", u"-3", -3}, NumberCase{"Plus", u"+3", 3},
                    NumberCase{"FractionDown", u"2.4", 2}, NumberCase{"FractionUp", u"2.6", 3},
                    NumberCase{"HalfToTheEvenBelow", u"2.5", 2}, NumberCase{"HalfToTheEvenAbove", u"3.5", 4},
                    NumberCase{"NegativeHalf", u"-2.5", -2}, NumberCase{"NothingBeforeThePoint", u".5", 0},
                    NumberCase{"NothingAfterThePoint", u"7.", 7}, NumberCase{"Exponent", u"1e3", 1000},
                    NumberCase{"Largest", u"32767", 32767}, NumberCase{"Smallest", u"-32768", -32768},
                    NumberCase{"LargestAfterRounding", u"32767.4", 32767},
                    NumberCase{"SmallestAfterRounding", u"-32768.5", -32768},
                    NumberCase{"LeadingZeros", u"000000000000000000000015", 15},
                    NumberCase{"SmallerThanAnyDouble", u"1e-999", 0}),
    [](const auto& test) { return std::string(test.param.name); });

struct NoNumberCase {
    const char* name;
    std::u16string_view text;
    int error;
};

void PrintTo(const NoNumberCase& test, std::ostream* stream) {
    *stream << test.name;
}

class NotAnInteger16 : public testing::TestWithParam<NoNumberCase> {};

TEST_P(NotAnInteger16, IsRefused) {
    EXPECT_EQ(errorNumberOf([] { platform::toInteger16(text(GetParam().text)); }), GetParam().error);
}

INSTANTIATE_TEST_SUITE_P(
    Text, NotAnInteger16,
    testing::Values(NoNumberCase{"Nothing", u"", 13}, NoNumberCase{"Blanks", u"   ", 13},
                    NoNumberCase{"Letters", u"often", 13}, NoNumberCase{"LettersBehind", u"15 min", 13},
                    NoNumberCase{"TwoPoints", u"1.2.3", 13}, NoNumberCase{"PointAlone", u".", 13},
                    NoNumberCase{"SignAlone", u"-", 13}, NoNumberCase{"Hexadecimal", u"0x10", 13},
                    NoNumberCase{"Infinity", u"inf", 13}, NoNumberCase{"NotANumber", u"nan", 13},
                    NoNumberCase{"NulInside", u"1\0"sv, 13}, NoNumberCase{"LineEnd", u"1\n", 13},
                    NoNumberCase{"OtherDigits", u"\u0661", 13}, NoNumberCase{"TooLarge", u"32768", 6},
                    NoNumberCase{"TooSmall", u"-32769", 6}, NoNumberCase{"TooLargeByRounding", u"32767.5", 6},
                    NoNumberCase{"TooLargeForAnyNumber", u"1e999", 6},
                    NoNumberCase{"TwentyDigits", u"99999999999999999999", 6}),
    [](const auto& test) { return std::string(test.param.name); });

} // namespace
