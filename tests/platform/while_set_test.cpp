#include "platform/while_set.h"
#include "platform/while_true.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

using platform::WhileSet;
using platform::WhileTrue;

TEST(WhileSet, TheVariableThenHasTheValueBackThatItHadBefore) {
    std::string place = "list";
    {
        const WhileSet there(place, std::string("message"));
        EXPECT_EQ(place, "message");
    }
    EXPECT_EQ(place, "list");
}

TEST(WhileSet, EveryOneInsideAnotherPutsBackWhatItFound) {
    int open = 0;
    {
        const WhileSet first(open, open + 1);
        {
            const WhileSet second(open, open + 1);
            EXPECT_EQ(open, 2);
        }
        EXPECT_EQ(open, 1);
    }
    EXPECT_EQ(open, 0);
}

TEST(WhileSet, AnErrorPutsItBackToo) {
    int open = 0;
    const auto fail = [&open] {
        const WhileSet one(open, 1);
        throw std::runtime_error("failed");
    };
    EXPECT_THROW(fail(), std::runtime_error);
    EXPECT_EQ(open, 0);
}

TEST(WhileTrue, AFlagThatWasTrueStaysTrue) {
    bool runs = false;
    {
        const WhileTrue outer(runs);
        { const WhileTrue inner(runs); }
        EXPECT_TRUE(runs);
    }
    EXPECT_FALSE(runs);
}
