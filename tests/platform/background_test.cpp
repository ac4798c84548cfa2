#include "platform/background.h"
#include "platform/nested_wait.h"
#include "platform/runtime_error.h"
#include "tests/support/application.h"

#include <QTimer>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

TEST(Background, ReturnsWhenTheWorkIsDone) {
    support::application();
    int result = 0;
    platform::runInBackground([&result] { result = 42; });
    EXPECT_EQ(result, 42);
    EXPECT_FALSE(platform::NestedWait::anyRuns());
}

TEST(Background, KeepsTheWindowsAliveMeanwhile) {
    support::application();
    std::atomic<int> beats = 0;
    QTimer heart;
    QObject::connect(&heart, &QTimer::timeout, [&beats] { ++beats; });
    heart.start(1);
    platform::runInBackground([&beats] {
        while (beats < 5) {
            std::this_thread::yield();
        }
    });
    EXPECT_GE(beats, 5);
}

TEST(Background, ThrowsAgainWhatTheWorkThrew) {
    support::application();
    const int error = platform::errorNumberOf(
        [] { platform::runInBackground([] { throw platform::RuntimeError(platform::errors::DiskFull); }); });
    EXPECT_EQ(error, platform::errors::DiskFull);
}
