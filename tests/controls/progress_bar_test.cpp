#include "components/controls/progress_bar.h"
#include "tests/support/application.h"

#include <QSignalSpy>
#include <QTest>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace {

using controls::PacedShowing;
using MSComctlLib::ProgressBar;
using testing::ElementsAre;

/** Records which values of a changing number have been shown. */
class PacedShowingTest : public testing::Test {
  protected:
    PacedShowingTest() { support::application(); }

    void changeTo(int number) {
        number_ = number;
        showing_.changed();
    }

    int number_ = 0;
    std::vector<int> shown_;
    PacedShowing showing_{[this] { shown_.push_back(number_); }};
};

TEST_F(PacedShowingTest, TheFirstChangeIsShownAtOnce) {
    changeTo(1);
    EXPECT_THAT(shown_, ElementsAre(1));
}

TEST_F(PacedShowingTest, WhatChangesMeanwhileIsShownTogetherAndTheLastChangeInAnyCase) {
    for (int number = 1; number <= 1000; ++number) {
        changeTo(number);
    }
    EXPECT_THAT(shown_, ElementsAre(1));
    EXPECT_TRUE(QTest::qWaitFor([this] { return shown_.size() > 1; }));
    EXPECT_THAT(shown_, ElementsAre(1, 1000));
}

TEST_F(PacedShowingTest, WhatIsToBeSeenAtOnceDoesNotWait) {
    changeTo(1);
    changeTo(2);
    showing_.showNow();
    EXPECT_THAT(shown_, ElementsAre(1, 2));
}

TEST_F(PacedShowingTest, NothingIsShownTwice) {
    changeTo(1);
    changeTo(2);
    showing_.showNow();
    // showing_ is due for another showing before `other`, which was started later, shows its second change.
    int others = 0;
    PacedShowing other([&others] { ++others; });
    other.changed();
    other.changed();
    EXPECT_TRUE(QTest::qWaitFor([&others] { return others == 2; }));
    EXPECT_THAT(shown_, ElementsAre(1, 2));
}

class ProgressBarTest : public testing::Test {
  protected:
    ProgressBarTest() {
        support::application();
        bar().setMin(0);
        bar().setMax(1000);
    }

    ProgressBar& bar() {
        if (!bar_) {
            bar_ = std::make_unique<ProgressBar>();
        }
        return *bar_;
    }

  private:
    std::unique_ptr<ProgressBar> bar_;
};

TEST_F(ProgressBarTest, ManyStepsTogetherAreOnePicture) {
    const QSignalSpy pictures(&bar(), &QProgressBar::valueChanged);
    for (int value = 1; value < 1000; ++value) {
        bar().setProgress(value);
    }
    EXPECT_EQ(pictures.count(), 1);
    EXPECT_EQ(bar().value(), 1);
    EXPECT_TRUE(QTest::qWaitFor([this] { return bar().value() == 999; }));
    EXPECT_EQ(pictures.count(), 2);
}

TEST_F(ProgressBarTest, BothEndsAreShownAtOnce) {
    bar().setProgress(1);
    bar().setProgress(1000);
    EXPECT_EQ(bar().value(), 1000);
    EXPECT_TRUE(bar().isVisible());
    bar().setProgress(0);
    EXPECT_EQ(bar().value(), 0);
    EXPECT_FALSE(bar().isVisible());
}

TEST_F(ProgressBarTest, WhatLiesOutsideItsRangeIsTheNearerEnd) {
    bar().setProgress(2000);
    EXPECT_EQ(bar().value(), 1000);
    bar().setProgress(-5);
    EXPECT_EQ(bar().value(), 0);
}

} // namespace
