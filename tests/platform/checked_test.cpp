#include "platform/checked.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

namespace {

using platform::checkedMultiply;
using platform::checkedSubtract;
using platform::checkedTo;
using platform::errorNumberOf;
namespace errors = platform::errors;

TEST(Checked, ANumberThatFitsIsKept) {
    EXPECT_EQ(checkedTo<std::int16_t>(std::int64_t{32767}), 32767);
    EXPECT_EQ(checkedTo<std::int16_t>(std::int64_t{-32768}), -32768);
    EXPECT_EQ(checkedTo<std::uint8_t>(255), 255);
}

TEST(Checked, ANumberBeyondTheTypeIsAnOverflow) {
    EXPECT_EQ(errorNumberOf([] { checkedTo<std::int16_t>(32768); }), errors::Overflow);
    EXPECT_EQ(errorNumberOf([] { checkedTo<std::int16_t>(-32769); }), errors::Overflow);
    EXPECT_EQ(errorNumberOf([] { checkedTo<std::int32_t>(std::int64_t{1} << 31); }), errors::Overflow);
    EXPECT_EQ(errorNumberOf([] { checkedTo<std::uint32_t>(-1); }), errors::Overflow);
}

TEST(Checked, TheLongestCheckIntervalFitsAndTheNextOneOverflows) {
    constexpr std::int32_t millisecondsPerMinute = 60'000;
    EXPECT_EQ(checkedMultiply(std::int32_t{60}, millisecondsPerMinute), 3'600'000);
    EXPECT_EQ(checkedMultiply(std::int32_t{32767}, millisecondsPerMinute), 1'966'020'000);
    EXPECT_EQ(errorNumberOf([] { checkedMultiply(std::int32_t{35792}, millisecondsPerMinute); }),
              errors::Overflow);
    EXPECT_EQ(errorNumberOf([] { checkedMultiply(std::numeric_limits<std::int32_t>::min(), -1); }),
              errors::Overflow);
}

TEST(Checked, ADifferenceMustFitToo) {
    EXPECT_EQ(checkedSubtract(std::int32_t{5}, std::int32_t{7}), -2);
    EXPECT_EQ(errorNumberOf([] { checkedSubtract(std::numeric_limits<std::int32_t>::min(), 1); }),
              errors::Overflow);
    EXPECT_EQ(errorNumberOf([] { checkedSubtract(std::int16_t{-32768}, std::int16_t{1}); }),
              errors::Overflow);
}

} // namespace
