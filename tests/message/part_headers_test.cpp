#include "message/part_headers.h"

#include <gtest/gtest.h>

namespace {
struct Case {
    const char* name;
    const char* text;
    const char* stripped;
};

class PartHeaders : public testing::TestWithParam<Case> {};
} // namespace

TEST_P(PartHeaders, AreRemovedKeyByKey) {
    EXPECT_EQ(withoutPartHeaders(GetParam().text), GetParam().stripped);
    StrippedText text;
    text.set(GetParam().text);
    text.strip();
    EXPECT_EQ(text.view(), GetParam().stripped);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, PartHeaders,
    testing::Values(Case{"Nothing", "plain\r\n", "plain\r\n"}, Case{"Empty", "", ""},
                    Case{"OneHeader", "Content-Type: x\r\n\r\nbody", "\r\nbody"},
                    Case{"AllHeaders",
                         "Content-Type: x;\r\n name=\"a\"\r\nContent-Transfer-Encoding: base64\r\n"
                         "Content-Disposition: attachment;\r\n filename=\"a\"\r\n\r\nbody",
                         "\r\nbody"},
                    Case{"TextBeforeAKeyGoesWithIt", "Hello\r\nContent-Type: x\r\nbody", "body"},
                    Case{"KeysInTheBodyCutIt", "one\r\nfilename=\r\ntwo\r\nname=\r\nthree", "three"},
                    Case{"EachKeyOnlyOnce", "name=1\r\nname=2\r\nname=3\r\n", "name=2\r\nname=3\r\n"},
                    Case{"FilenameHoldsNameToo", "filename=1\r\nfilename=2\r\nx", "x"},
                    Case{"AKeyWithoutALineFeedBehindItStays", "a\r\nname=b", "a\r\nname=b"},
                    Case{"LowerCaseIsNoKey", "content-type: x\r\nbody", "content-type: x\r\nbody"},
                    Case{"ALineFeedAloneEndsALine", "Content-Type: x\nbody", "body"}),
    [](const auto& testCase) { return std::string(testCase.param.name); });

TEST(StrippedText, FindsAKeyThatIsCompletedByWhatIsAdded) {
    StrippedText text;
    text.set("one na");
    text.strip();
    text.setOrAppend("x");
    EXPECT_EQ(text.view(), "one na\r\nx");
    StrippedText joined;
    joined.set("Content-");
    joined.strip();
    joined.setOrAppend("\nname=\nrest");
    joined.strip();
    EXPECT_EQ(joined.view(), "rest");
}

TEST(StrippedText, IsTheSameAsStrippingTheWholeTextEachTime) {
    const std::string pieces[] = {"a name=\r\nb", "Content-Type: x\r\n\r\nfilename=\r\nc", "d", "name=\r\n",
                                  "Content-Disposition\r\ne\r\nname=f\r\ng"};
    StrippedText text;
    std::string expected;
    for (const std::string& piece : pieces) {
        text.setOrAppend(piece);
        expected.append(expected.empty() ? "" : "\r\n").append(piece);
        text.strip();
        expected = withoutPartHeaders(expected);
        EXPECT_EQ(text.view(), expected);
    }
}
