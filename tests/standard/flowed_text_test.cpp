#include "standard/flowed_text.h"

#include <gtest/gtest.h>

#include <string>

namespace {
struct FlowedCase {
    const char* name;
    std::string text;
    bool deleteBlanks;
    std::string rejoined;
};

class FlowedText : public testing::TestWithParam<FlowedCase> {};

TEST_P(FlowedText, IsRejoined) {
    EXPECT_EQ(standard::rejoined(GetParam().text, GetParam().deleteBlanks), GetParam().rejoined);
}

const FlowedCase kFlowedCases[] = {
    {"FixedLines", "a\r\nb\r\n", false, "a\r\nb\r\n"},
    {"FlowedLines", "a \r\nb \r\nc\r\nd\r\n", false, "a b c\r\nd\r\n"},
    {"DelSp", "a \r\nb  \r\nc\r\n", true, "ab c\r\n"},
    {"SignatureLine", "a \r\n-- \r\nAnn\r\n", false, "a \r\n-- \r\nAnn\r\n"},
    {"Quotation", "> a \r\n> b\r\nc\r\n", false, "> a b\r\nc\r\n"},
    {"DeeperQuotation", ">> a \r\n> b\r\n", false, ">> a \r\n> b\r\n"},
    {"QuotedSignature", "> a \r\n> -- \r\n> b\r\n", false, "> a \r\n> -- \r\n> b\r\n"},
    {"StuffedBlank", "  a\r\n > b\r\n From c\r\n", false, " a\r\n> b\r\nFrom c\r\n"},
    {"WithoutLineEnd", "a \r\nb", false, "a b"},
    {"EmptyLines", "a\r\n\r\nb\r\n", false, "a\r\n\r\nb\r\n"},
    {"FlowedLastLine", "a \r\n", false, "a "},
};

INSTANTIATE_TEST_SUITE_P(Texts, FlowedText, testing::ValuesIn(kFlowedCases),
                         [](const auto& test) { return std::string(test.param.name); });
} // namespace
