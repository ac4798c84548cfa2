#include "components/netcodelib/leading_fields.h"
#include "tests/support/pieces.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace {

using NetCodeLib::LeadingFields;

const std::string kTooLong(LeadingFields::kMaximumLineBytes, 'A');

struct Case {
    const char* name;
    std::string text;
    std::string left;
};

const std::vector<Case>& cases() {
    static const std::vector<Case> table{
        {"Nothing", "", ""},
        {"NoFields", "Zm9v\r\nYmFy\r\n", "Zm9v\r\nYmFy\r\n"},
        {"NoLineEnd", "Zm9v", "Zm9v"},
        {"EmptyLineFirst", "\r\nZm9v\r\n", "Zm9v\r\n"},
        {"OneField", "Content-ID: <part1>\r\n\r\nZm9v\r\n", "Zm9v\r\n"},
        {"SeveralFields", "X-Attachment-Id: f_1\r\nContent-ID: <f_1>\r\n\r\nZm9v\r\n", "Zm9v\r\n"},
        {"FoldedField", "Content-Description: a\r\n\tlong name\r\n here\r\n\r\nZm9v\r\n", "Zm9v\r\n"},
        {"LineFeedAlone", "Content-ID: <part1>\n\nZm9v\n", "Zm9v\n"},
        {"FieldWithoutValue", "X-Empty:\r\n\r\nZm9v\r\n", "Zm9v\r\n"},
        {"NoEmptyLineAfterTheFields", "Content-ID: <part1>\r\nZm9v\r\n", "Zm9v\r\n"},
        {"OnlyAField", "Content-ID: <part1>", ""},
        {"EmptyLineBeforeTheFields", "\r\nContent-ID: <part1>\r\n\r\nZm9v\r\n", "Zm9v\r\n"},
        {"FieldAfterTheEmptyLine", "A: b\r\n\r\nC: d\r\nZm9v\r\n", "C: d\r\nZm9v\r\n"},
        {"FieldAfterEncodedText", "Zm9v\r\nA: b\r\n", "Zm9v\r\nA: b\r\n"},
        {"IndentedText", " Zm9v\r\n", " Zm9v\r\n"},
        {"ColonWithoutAName", ": Zm9v\r\n", ": Zm9v\r\n"},
        {"ColonInsideAWord", "Zm:9v\r\n", "Zm:9v\r\n"},
        {"BlankBeforeTheColon", "Zm 9v: x\r\n", "Zm 9v: x\r\n"},
        {"LongTextWithoutLineEnd", std::string(5000, 'A'), std::string(5000, 'A')},
        {"LongField", "A: " + std::string(60'000, 'b') + "\r\n\r\nZm9v", "Zm9v"},
        {"LineThatIsTooLongForAField", kTooLong + ": b\r\n", kTooLong + ": b\r\n"},
    };
    return table;
}

class LeadingFieldsCase : public testing::TestWithParam<Case> {};

TEST_P(LeadingFieldsCase, LeavesTheEncodedText) {
    for (const std::size_t pieceOctets :
         {std::size_t{1}, std::size_t{2}, std::size_t{7}, std::size_t{500}, std::size_t{1} << 20U}) {
        LeadingFields fields;
        std::string left;
        support::forEachPiece(GetParam().text, pieceOctets,
                              [&](std::string_view piece) { left += fields.take(piece); });
        left += fields.takeLast();
        EXPECT_EQ(left, GetParam().left) << pieceOctets;
    }
}

INSTANTIATE_TEST_SUITE_P(Texts, LeadingFieldsCase, testing::ValuesIn(cases()),
                         [](const auto& test) { return test.param.name; });

} // namespace
