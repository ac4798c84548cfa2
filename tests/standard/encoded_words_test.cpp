#include "standard/encoded_words.h"

#include <gtest/gtest.h>

#include <string>

namespace {
struct WordsCase {
    const char* name;
    std::string field;
    std::string text;
};

class EncodedWords : public testing::TestWithParam<WordsCase> {};

TEST_P(EncodedWords, AreDecoded) {
    EXPECT_EQ(standard::decodedText(GetParam().field), GetParam().text);
}

const WordsCase kWordsCases[] = {
    {"PlainText", "Just words", "Just words"},
    {"Q", "=?utf-8?Q?Caf=C3=A9_bar?=", "Café bar"},
    {"B", "=?UTF-8?b?Q2Fmw6k=?=", "Café"},
    {"LowerCaseHex", "=?iso-8859-1?q?=e4=F6?=", "äö"},
    {"AmongWords", "a =?utf-8?Q?b?= c", "a b c"},
    {"BlanksBetweenWordsBelongToTheCoding", "=?utf-8?Q?a?= \t =?utf-8?Q?b?=", "ab"},
    {"BlanksBehindTheLastWordStay", "=?utf-8?Q?a?=  b", "a  b"},
    {"CharacterCutInTwo", "=?utf-8?B?ww==?= =?utf-8?B?pA==?=", "ä"},
    {"CharacterCutInTwoInQ", "=?utf-8?Q?=C3?= =?utf-8?Q?=A4?=", "ä"},
    {"TwoCharsets", "=?utf-8?Q?=C3=A4?= =?iso-8859-1?Q?=E4?=", "ää"},
    {"Japanese", "=?iso-2022-jp?B?GyRCJDMkcw==?= =?iso-2022-jp?B?JEskQRsoQg==?=", "こん\u306b\u3061"},
    {"EscapeLeftOpen", "=?iso-2022-jp?B?GyRCJDMkcw==?=", "こん"},
    {"Language", "=?utf-8*de?Q?=C3=A4?=", "ä"},
    {"InQuotes", "\"=?utf-8?Q?=C3=A4?=\" <a@b>", "\"ä\" <a@b>"},
    {"InComment", "a@b (=?utf-8?Q?=C3=A4?=)", "a@b (ä)"},
    {"NextToText", "x=?utf-8?Q?=C3=A4?=y", "xäy"},
    {"NextToOneAnother", "=?utf-8?Q?a?==?utf-8?Q?b?=", "ab"},
    {"BlanksInside", "=?utf-8?Q?hello w=C3=B6rld?=", "hello wörld"},
    {"WithoutPadding", "=?utf-8?B?w6Q?=", "ä"},
    {"ForeignCharactersInB", "=?utf-8?B?w!6Q=?=", "ä"},
    {"NoBase64", "=?utf-8?B?!!!!!?=", "=?utf-8?B?!!!!!?="},
    {"UnknownCharsetIsReadAsBytes", "=?x-nobody?Q?=E4=C3?=", "äÃ"},
    {"UnknownCharsetMayBeUtf8", "=?x-nobody?Q?=C3=A4?=", "ä"},
    {"AsciiThatIsNone", "=?us-ascii?Q?=C3=A4?=", "ä"},
    {"UnknownEncoding", "=?utf-8?X?a?=", "=?utf-8?X?a?="},
    {"NoEnd", "=?utf-8?Q?abc", "=?utf-8?Q?abc"},
    {"NoCharset", "=??Q?a?=", "=??Q?a?="},
    {"Empty",
     "=?utf-8?Q?"
     "?=",
     ""},
    {"AnotherWordBeforeTheEnd", "=?utf-8?Q?a =?utf-8?Q?b?=", "=?utf-8?Q?a b"},
    {"SignWithoutDigits", "=?utf-8?Q?a=b=ZZ?=", "a=b=ZZ"},
    {"QuestionMarkInside", "=?utf-8?Q?why? so?=", "why? so"},
    {"RawUtf8", "Grüße", "Grüße"},
    {"RawWindows1252", "Gr\xFC\xDF \x93x\x94", "Grüß “x”"},
    {"RawBesideWords", "\xFC =?utf-8?Q?=C3=BC?=", "ü ü"},
    {"ControlCharacters", "=?utf-8?Q?a=0D=0ABcc:_x?=", "a\r\nBcc: x"},
    {"Gb2312MeansTheLargerSet", "=?gb2312?B?gTCBMA==?=", "\xC2\x80"},
};

INSTANTIATE_TEST_SUITE_P(Fields, EncodedWords, testing::ValuesIn(kWordsCases),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(EncodedWordsOfStrangers, MayHaveFiveThousandCharacters) {
    const std::string letters(5'000, 'a');
    EXPECT_EQ(standard::decodedText("=?utf-8?Q?" + letters + "?="), letters);
}

TEST(EncodedWordsOfStrangers, TakeTimeInProportionWhenNoneHasAnEnd) {
    std::string field;
    for (int number = 0; number < 200'000; ++number) {
        field += "=?a?q?";
    }
    EXPECT_EQ(standard::decodedText(field), field);
}

TEST(EncodedWords, AreWrittenAnewAsOneInUtf8) {
    EXPECT_EQ(standard::withWordsOfUtf8("=?utf-8?B?ww==?= =?utf-8?B?pA==?= <a@b>"), "=?utf-8?B?w6Q=?= <a@b>");
}
} // namespace
