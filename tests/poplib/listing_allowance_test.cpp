#include "components/poplib/listing_allowance.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using poplib::BodyLine;
using poplib::HeaderLine;
using poplib::ListingAllowance;

constexpr std::size_t kMegabyte = 1U << 20U;

/** Uses up what all messages share. */
ListingAllowance usedUp() {
    ListingAllowance allowance;
    for (int line = 0; line < 4; ++line) {
        HeaderLine header{"X", std::string(kMegabyte, 'x')};
        allowance.cut(header);
    }
    allowance.beginMessage();
    return allowance;
}

TEST(ListingAllowance, LeavesWhatMessagesHaveAsItIs) {
    ListingAllowance allowance;
    for (int message = 0; message < 200; ++message) {
        allowance.beginMessage();
        for (int line = 0; line < 60; ++line) {
            HeaderLine header{"Received", std::string(200, 'x')};
            ASSERT_TRUE(allowance.cut(header));
            ASSERT_EQ(header.value.size(), 200U);
            ASSERT_FALSE(header.cut);
        }
        for (int line = 0; line < 25; ++line) {
            BodyLine body{0, std::string(80, 'x')};
            ASSERT_TRUE(allowance.cut(body));
            ASSERT_EQ(body.text.size(), 80U);
        }
    }
}

TEST(ListingAllowance, HandsOverALongLineWhileThereIsEnoughForAll) {
    ListingAllowance allowance;
    HeaderLine header{"Subject", std::string(kMegabyte, 'x')};
    ASSERT_TRUE(allowance.cut(header));
    EXPECT_EQ(header.value.size(), kMegabyte);
}

TEST(ListingAllowance, LeavesEveryRowItsFieldsHoweverLargeTheOthersAre) {
    ListingAllowance allowance = usedUp();
    for (int message = 0; message < 200; ++message) {
        allowance.beginMessage();
        for (const char* field : {"Subject", "From", "Date"}) {
            HeaderLine header{field, std::string(kMegabyte, 'x')};
            ASSERT_TRUE(allowance.cut(header));
            EXPECT_TRUE(header.cut);
            EXPECT_GT(header.value.size(), 4000U);
            EXPECT_LE(header.value.size(), ListingAllowance::kHeaderLineBytes);
        }
    }
}

TEST(ListingAllowance, EndsWithTheHeadersOwnBytes) {
    ListingAllowance allowance = usedUp();
    std::size_t bytes = 0;
    for (int line = 0; line < 10'000; ++line) {
        HeaderLine header{"X", std::string(100, 'x')};
        bytes += allowance.cut(header) ? header.value.size() : 0;
    }
    EXPECT_GT(bytes, ListingAllowance::kHeaderBytes - 1000);
    EXPECT_LE(bytes, ListingAllowance::kHeaderBytes);
    HeaderLine nameOnly{std::string(5000, 'x'), ""};
    EXPECT_FALSE(allowance.cut(nameOnly));
}

TEST(ListingAllowance, EndsBodiesWithTheirBytes) {
    ListingAllowance allowance;
    std::size_t bytes = 0;
    for (int line = 0; line < 200; ++line) {
        BodyLine body{0, std::string(kMegabyte, 'x')};
        bytes += allowance.cut(body) ? body.text.size() : 0;
    }
    EXPECT_GT(bytes, ListingAllowance::kBodyBytes - 1000);
    EXPECT_LE(bytes, ListingAllowance::kBodyBytes);
    HeaderLine header{"Subject", "a"};
    EXPECT_TRUE(allowance.cut(header)) << "they take nothing from the headers";
}

struct CutParameter {
    const char* name;
    const char* field;
    std::string start;
    std::string left;
};

class CutParameterCase : public testing::TestWithParam<CutParameter> {};

TEST_P(CutParameterCase, IsTakenAwaySoThatNoHalfOfAQuotedTextIsLeft) {
    ListingAllowance allowance = usedUp();
    HeaderLine header{GetParam().field, GetParam().start + std::string(kMegabyte, 'x') + '"'};
    ASSERT_TRUE(allowance.cut(header));
    EXPECT_EQ(header.value.substr(0, 60), GetParam().left);
}

INSTANTIATE_TEST_SUITE_P(
    Lines, CutParameterCase,
    testing::Values(CutParameter{"Boundary", "Content-Type", "multipart/mixed; boundary=\"",
                                 "multipart/mixed"},
                    CutParameter{"AnyCase", "CONTENT-type", "a/b; c=d; boundary=\"", "a/b; c=d"},
                    CutParameter{"Continuation", "", " boundary=\"", ""},
                    CutParameter{"OtherField", "Subject", "a; ", "a; " + std::string(57, 'x')}),
    [](const auto& test) { return test.param.name; });

} // namespace
