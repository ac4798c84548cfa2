#include "platform/nested_wait.h"
#include "platform/window_turns.h"
#include "tests/support/application.h"

#include <QDeadlineTimer>
#include <QTimer>
#include <gtest/gtest.h>

#include <chrono>

TEST(WindowTurns, KeepTheWindowsAliveDuringLongWork) {
    support::application();
    int beats = 0;
    QTimer heart;
    QObject::connect(&heart, &QTimer::timeout, [&beats] { ++beats; });
    heart.start(1);
    {
        platform::WindowTurns turns;
        const QDeadlineTimer deadline(std::chrono::seconds(20));
        while (beats < 3 && !deadline.hasExpired()) {
            turns.giveWhenDue();
        }
        EXPECT_TRUE(platform::NestedWait::anyRuns());
    }
    EXPECT_GE(beats, 3);
    EXPECT_FALSE(platform::NestedWait::anyRuns());
}
