#include "platform/nested_wait.h"
#include "platform/program.h"
#include "platform/runtime_error.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>

namespace {

using platform::errorNumberOf;
using platform::RuntimeError;
namespace errors = platform::errors;

TEST(RuntimeError, CarriesItsNumberAndSaysIt) {
    const RuntimeError error(errors::InputPastEndOfFile);
    EXPECT_EQ(error.number(), 62);
    EXPECT_STREQ(error.what(), "run-time error 62");
}

TEST(RuntimeError, TheTrapGivesTheNumberOfWhatWasRaised) {
    EXPECT_EQ(errorNumberOf([] { throw RuntimeError(errors::TypeMismatch); }), 13);
}

TEST(RuntimeError, TheTrapGivesZeroWhenNothingWasRaised) {
    bool ran = false;
    EXPECT_EQ(errorNumberOf([&ran] { ran = true; }), 0);
    EXPECT_TRUE(ran);
}

TEST(RuntimeError, MemoryThatCannotBeHadIsErrorSeven) {
    EXPECT_EQ(errorNumberOf([] { throw std::bad_alloc(); }), 7);
    EXPECT_EQ(errorNumberOf([] { throw std::length_error("a text longer than any"); }), 7);
}

TEST(RuntimeError, AMistakeOfTheProgramItselfPassesTheTrap) {
    EXPECT_THROW(static_cast<void>(errorNumberOf([] { throw std::logic_error("a mistake"); })),
                 std::logic_error);
}

TEST(RuntimeError, TheNumbersAreTheOnesThatPeopleKnow) {
    EXPECT_EQ(errors::FileNotFound, 53);
    EXPECT_EQ(errors::InputPastEndOfFile, 62);
    EXPECT_EQ(errors::DeviceUnavailable, 68);
    EXPECT_EQ(errors::TypeMismatch, 13);
    EXPECT_EQ(errors::Overflow, 6);
    EXPECT_EQ(errors::SubscriptOutOfRange, 9);
    EXPECT_EQ(errors::OutOfMemory, 7);
    EXPECT_EQ(errors::PrinterError, 482);
    EXPECT_EQ(errors::MailServerBusy, 20102);
    EXPECT_EQ(errors::LogOnRefused, 20172);
    EXPECT_EQ(errors::MailServerTrouble, 20302);
    EXPECT_EQ(errors::NetworkUnreachable, 25052);
    EXPECT_EQ(errors::ConnectionRefused, 25062);
    EXPECT_EQ(errors::HostNotFound, 26002);
}

TEST(NestedWait, RunsForAsLongAsAnyWaitLives) {
    using platform::NestedWait;
    EXPECT_FALSE(NestedWait::anyRuns());
    {
        const NestedWait outer;
        {
            const NestedWait inner;
            EXPECT_TRUE(NestedWait::anyRuns());
        }
        EXPECT_TRUE(NestedWait::anyRuns());
    }
    EXPECT_FALSE(NestedWait::anyRuns());
}

TEST(EndProgram, EndsTheProcessAtOnceWithSuccess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(platform::endProgram(), testing::ExitedWithCode(0), "");
}

TEST(EndProgram, AStandInIsAskedInstead) {
    int asked = 0;
    platform::replaceEndProgram([&asked] { ++asked; });
    platform::endProgram();
    platform::replaceEndProgram({});
    EXPECT_EQ(asked, 1);
}

} // namespace
