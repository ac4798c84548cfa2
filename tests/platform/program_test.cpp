#include "platform/program.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {
/** The wait status of a process that raises its core limit as far as it may, calls `before` and crashes. */
int statusOfCrash(void (*before)()) {
    const pid_t child = fork();
    if (child == 0) {
        rlimit limit{};
        getrlimit(RLIMIT_CORE, &limit);
        limit.rlim_cur = limit.rlim_max;
        setrlimit(RLIMIT_CORE, &limit);
        before();
        std::signal(SIGABRT, SIG_DFL);
        std::abort();
    }
    int status = 0;
    waitpid(child, &status, 0);
    return status;
}
} // namespace

TEST(Program, ACrashLeavesNoImageWithThePasswordInIt) {
    const int status = statusOfCrash(platform::refuseCoreDumps);
    ASSERT_TRUE(WIFSIGNALED(status));
    EXPECT_FALSE(WCOREDUMP(status));
}

TEST(Program, NeitherAFileNorACollectorGetsAnImage) {
    EXPECT_EXIT(
        {
            platform::refuseCoreDumps();
            rlimit limit{};
            getrlimit(RLIMIT_CORE, &limit);
            // A limit of 0 stops files but not collectors; a limit of 1 stops both.
            std::_Exit(limit.rlim_cur == 1 && limit.rlim_max == 1 ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}
