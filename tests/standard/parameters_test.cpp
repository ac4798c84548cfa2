#include "standard/parameters.h"

#include <gtest/gtest.h>

#include <string>

namespace {
using standard::StructuredField;

struct ParameterCase {
    const char* name;
    std::string field;
    std::string fileName;
};

class FileNameOf : public testing::TestWithParam<ParameterCase> {};

TEST_P(FileNameOf, AFieldIsDecoded) {
    EXPECT_EQ(StructuredField(GetParam().field).textOf("filename"), GetParam().fileName);
}

const ParameterCase kParameterCases[] = {
    {"Quoted", "attachment; filename=\"a b.txt\"", "a b.txt"},
    {"Unquoted", "attachment; filename=a.txt; size=3", "a.txt"},
    {"UnquotedWithBlanks", "attachment; filename=my file (1).txt; size=3", "my file (1).txt"},
    {"UpperCase", "ATTACHMENT; FILENAME=\"A.TXT\"", "A.TXT"},
    {"EscapedQuote", R"(attachment; filename="a\"b.txt")", "a\"b.txt"},
    {"PathOfWindows", R"(attachment; filename="C:\temp\b.txt")", R"(C:\temp\b.txt)"},
    {"SemicolonInQuotes", "attachment; filename=\"a;b.txt\"", "a;b.txt"},
    {"SecondQuoteMissing", "attachment; filename=\"a b.txt; size=3", "a b.txt"},
    {"Comments", "attachment (c;d); (e) filename (f) = (g) \"a.txt\" (h)", "a.txt"},
    {"TwoSemicolons", "attachment;; filename=a.txt;", "a.txt"},
    {"SemicolonMissing", "attachment filename=a.txt", "a.txt"},
    {"ValueMissing", "filename=a.txt", "a.txt"},
    {"EncodedWords", "attachment; filename=\"=?utf-8?Q?=C3=A4?= =?utf-8?Q?.txt?=\"", "ä.txt"},
    {"EncodedWordWithoutQuotes", "attachment; filename==?utf-8?B?w6Q=?=", "ä"},
    {"RawUtf8", "attachment; filename=\"ä.txt\"", "ä.txt"},
    {"RawWindows1252", "attachment; filename=\"\xE4.txt\"", "ä.txt"},
    {"Extended", "attachment; filename*=utf-8'de'%c3%A4.txt", "ä.txt"},
    {"ExtendedOfAnotherCharset", "attachment; filename*=iso-8859-1''%E4.txt", "ä.txt"},
    {"ExtendedInQuotes", "attachment; filename*=\"utf-8''%c3%a4.txt\"", "ä.txt"},
    {"ExtendedWithoutCharset", "attachment; filename*=%c3%a4.txt", "ä.txt"},
    {"ExtendedOfUnknownCharset", "attachment; filename*=x-nobody''%e4.txt", "ä.txt"},
    {"ExtendedBehindPlain", "attachment; filename=\"plain\"; filename*=utf-8''%c3%a4", "ä"},
    {"ExtendedBeforePlain", "attachment; filename*=utf-8''%c3%a4; filename=\"plain\"", "ä"},
    {"ExtendedWithWords", "attachment; filename*=utf-8''=?utf-8?B?w6Q=?=", "ä"},
    {"Pieces", "attachment; filename*0=\"a\"; filename*1=\"b.txt\"", "ab.txt"},
    {"PiecesInDisorder", "attachment; filename*2=c; filename*0=a; filename*1=b", "abc"},
    {"PieceMissing", "attachment; filename*0=a; filename*2=c", "ac"},
    {"ExtendedThatLooksLikeAWord", "attachment; filename*=utf-8''%3D%3Futf-8%3FQ%3Fa%3F%3D", "=?utf-8?Q?a?="},
    {"EncodedPieces", "attachment; filename*0*=utf-8''%c3; filename*1*=%a4; filename*2=.txt", "ä.txt"},
    {"WordCutBetweenPieces", "attachment; filename*0=\"=?utf-8?B?w6\"; filename*1=\"Q=?=.txt\"", "ä.txt"},
    {"PercentInAPlainName", "attachment; filename=\"a%20b.txt\"", "a%20b.txt"},
    {"PercentWithoutDigits", "attachment; filename*=utf-8''100%.txt", "100%.txt"},
    {"FirstOfTwo", "attachment; filename=a; filename=b", "a"},
    {"Empty", "attachment; filename=\"\"", ""},
    {"None", "attachment", ""},
};

INSTANTIATE_TEST_SUITE_P(Fields, FileNameOf, testing::ValuesIn(kParameterCases),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(StructuredField, HasItsValueInLowerCase) {
    EXPECT_EQ(StructuredField("Text/HTML ; charset=x").value(), "text/html");
    EXPECT_EQ(StructuredField("text/plain (comment); charset=x").value(), "text/plain");
    EXPECT_EQ(StructuredField("").value(), "");
    EXPECT_EQ(StructuredField("attachment filename=a").value(), "attachment");
}

TEST(StructuredField, LeavesACommentOutOfWhatIsNoName) {
    EXPECT_EQ(StructuredField("text/plain; charset=us-ascii (Plain text)").textOf("charset"), "us-ascii");
}

TEST(StructuredField, ReadsAnUnquotedBoundary) {
    EXPECT_EQ(StructuredField("multipart/mixed; boundary=----=_a?b").textOf("boundary"), "----=_a?b");
}

TEST(StructuredField, LooksAtAFewHundredParametersOnly) {
    std::string field = "attachment";
    for (int number = 0; number < 100'000; ++number) {
        field += ";a*" + std::to_string(number) + "=b";
    }
    EXPECT_EQ(StructuredField(field).textOf("a").size(), StructuredField::kMaximumParameters);
}

TEST(StructuredField, ReadsNestedCommentsWithoutAnEnd) {
    EXPECT_EQ(StructuredField("attachment; " + std::string(1'000'000, '(')).value(), "attachment");
}
} // namespace
