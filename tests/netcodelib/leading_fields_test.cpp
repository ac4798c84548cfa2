#include "components/netcodelib/leading_fields.h"
#include "platform/runtime_error.h"
#include "tests/support/pieces.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace {

using netcodelib::LeadingFields;

const std::string kTooLong(LeadingFields::kMaximumLineBytes, 'A');

struct FieldsCase {
    const char* name;
    std::string text;
    std::string left;
    int error = 0;
};

const std::vector<FieldsCase>& fieldsCases() {
    static const std::vector<FieldsCase> table{
        {"Nothing", "", ""},
        {"OnlyTheEmptyLine", "\r\n", "\r\n"},
        {"EmptyLineFirst", "\r\nZm9v\r\n", "\r\nZm9v\r\n"},
        {"LineOfBlanksFirst", " \t\r\nZm9v\r\n", " \t\r\nZm9v\r\n"},
        {"NoEmptyLine", "Zm9v\r\nYmFy\r\n", "Zm9v\r\nYmFy\r\n"},
        {"NoLineEnd", "Zm9v", "Zm9v"},

        {"OneField", "Content-ID: <part1>\r\n\r\nZm9v\r\n", "\r\nZm9v\r\n"},
        {"SeveralFields", "X-Attachment-Id: f_1\r\nContent-ID: <f_1>\r\n\r\nZm9v\r\n", "\r\nZm9v\r\n"},
        {"FoldedField", "Content-Description: a\r\n\tlong name\r\n here\r\n\r\nZm9v\r\n", "\r\nZm9v\r\n"},
        {"RestOfAFoldedField", " size=35648;\r\n filename*=utf-8''x\r\n\r\nZm9v\r\n", "\r\nZm9v\r\n"},
        {"RestWithATab", "\tcreation-date=\"Fri, 1 Mar 2024 10:00:00 GMT\"\r\n\r\nZm9v\r\n", "\r\nZm9v\r\n"},
        {"RestThenFields", " size=1\r\nContent-MD5: Zm9v\r\n\r\nZm9v\r\n", "\r\nZm9v\r\n"},
        {"RestThatLooksEncoded", " Zm9v\r\n\r\nYmFy\r\n", "\r\nYmFy\r\n"},
        {"LineFeedAlone", "Content-ID: <part1>\n\nZm9v\n", "\nZm9v\n"},
        {"FieldWithoutValue", "X-Empty:\r\n\r\nZm9v\r\n", "\r\nZm9v\r\n"},
        {"FieldWithoutBlank", "X-ID:1\r\n\r\nZm9v\r\n", "\r\nZm9v\r\n"},
        {"LineOfBlanksBehindFields", "A: b\r\n \r\nZm9v\r\n", " \r\nZm9v\r\n"},
        {"LongField", "A: " + std::string(60'000, 'b') + "\r\n\r\nZm9v", "\r\nZm9v"},
        {"OnlyFieldsAndTheEmptyLine", "A: b\r\n\r\n", "\r\n"},

        {"FieldBehindTheEmptyLineIsText", "\r\nA: b\r\n\r\nZm9v\r\n", "\r\nA: b\r\n\r\nZm9v\r\n"},
        {"FieldBehindFieldsAndTheEmptyLineIsText", "A: b\r\n\r\nC: d\r\n", "\r\nC: d\r\n"},
        {"FieldBehindTextIsText", "Zm9v\r\nA: b\r\n", "Zm9v\r\nA: b\r\n"},
        {"QuotedNameIsText", "\"A\": \"b\"\r\n\r\nZm9v\r\n", "\"A\": \"b\"\r\n\r\nZm9v\r\n"},
        {"ColonWithoutAName", ": Zm9v\r\n", ": Zm9v\r\n"},
        {"UnderscoreInTheName", "Zm_9v: x\r\n", "Zm_9v: x\r\n"},
        {"BlankBeforeTheColon", "Zm 9v: x\r\n", "Zm 9v: x\r\n"},
        {"LongTextWithoutLineEnd", std::string(5000, 'A'), std::string(5000, 'A')},
        {"LineThatIsTooLongForAField", kTooLong + ": b\r\n", kTooLong + ": b\r\n"},
        {"VeryLongTextWithoutLineEnd", kTooLong + kTooLong, kTooLong + kTooLong},

        {"NoEmptyLineBehindTheFields", "Content-ID: <part1>\r\nZm9v\r\n", "", 20502},
        {"NoEmptyLineBehindTheRest", " size=1\r\nZm9v\r\n", "", 20502},
        {"OnlyAField", "Content-ID: <part1>", "", 20502},
        {"OnlyAFieldAndItsLineEnd", "Content-ID: <part1>\r\n", "", 20502},
        {"FieldsThenALineThatIsNone", "A: b\r\n{\r\n\r\nZm9v\r\n", "", 20502},
        {"FieldsThenALineThatIsTooLong", "A: b\r\n" + kTooLong + ": b\r\n\r\nZm9v", "", 20502},
    };
    return table;
}

class LeadingFieldsCase : public testing::TestWithParam<FieldsCase> {};

TEST_P(LeadingFieldsCase, LeavesTheEncodedText) {
    for (const std::size_t pieceBytes :
         {std::size_t{1}, std::size_t{2}, std::size_t{7}, std::size_t{500}, std::size_t{1} << 20U}) {
        LeadingFields fields;
        std::string left;
        const int error = platform::errorNumberOf([&] {
            support::forEachPiece(GetParam().text, pieceBytes,
                                  [&](std::string_view piece) { left += fields.take(piece); });
            left += fields.takeLast();
        });
        EXPECT_EQ(error, GetParam().error) << pieceBytes;
        EXPECT_EQ(left, GetParam().left) << pieceBytes;
    }
}

INSTANTIATE_TEST_SUITE_P(Texts, LeadingFieldsCase, testing::ValuesIn(fieldsCases()),
                         [](const auto& test) { return test.param.name; });

} // namespace
