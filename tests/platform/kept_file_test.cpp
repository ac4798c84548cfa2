// What a KeptFile holds, whatever happens while it is written.

#include "platform/kept_file.h"
#include "platform/runtime_error.h"
#include "tests/platform/file_steps.h"
#include "tests/support/application.h"
#include "tests/support/file_faults.h"
#include "tests/support/sanitizer.h"
#include "tests/support/temporary_folder.h"

#include <QEventLoop>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <random>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

using platform::errorNumberOf;
using platform::KeptFile;
using support::FileSteps;
using testing::AnyOf;
using testing::ElementsAre;
using Then = FileSteps::Then;
namespace errors = platform::errors;
namespace filesystem = std::filesystem;

class KeptFileTest : public testing::Test {
  protected:
    KeptFileTest() { file.setPath(folder.qtPath("f")); }

    std::vector<std::string> stepsOfWriting() {
        file.writeNow("old");
        const FileSteps steps;
        file.writeNow("new content");
        return steps.calls();
    }

    support::TemporaryFolder folder;
    KeptFile file;
};

TEST_F(KeptFileTest, HoldsWhatWasWrittenLastAndIsTheUsersAlone) {
    EXPECT_FALSE(file.read().has_value());
    for (const std::string& content :
         {std::string("long content"), std::string("a\0\xff", 3), std::string()}) {
        file.writeNow(content);
        EXPECT_EQ(file.read(), content);
        EXPECT_EQ(support::modeOf(folder.path("f")), 0600U);
        EXPECT_EQ(folder.entries(), 1U);
    }
    file.remove();
    EXPECT_EQ(folder.entries(), 0U);
    file.remove();
}

TEST_F(KeptFileTest, IsWrittenBesideTheWindowsAndTellsWhenItIsDone) {
    support::application();
    QEventLoop loop;
    std::vector<int> told;
    const std::string content(5'000'000, 'x');
    file.write(content, [&](int error) {
        told.push_back(error);
        loop.quit();
    });
    EXPECT_TRUE(file.isWriting());
    loop.exec();
    EXPECT_THAT(told, ElementsAre(0));
    EXPECT_FALSE(file.isWriting());
    EXPECT_EQ(file.read(), content);
}

TEST_F(KeptFileTest, WhatIsBeingWrittenDoesNotComeAfterWhatIsWrittenOrRemovedLater) {
    support::application();
    for (int round = 0; round < 20; ++round) {
        file.write(std::string(1'000'000, 'x'), [](int) {});
        file.writeNow("later");
        EXPECT_EQ(file.read(), "later");
        file.write(std::string(1'000'000, 'x'), [](int) {});
        file.remove();
        EXPECT_EQ(folder.entries(), 0U);
    }
}

TEST_F(KeptFileTest, WhatCannotBeWrittenIsToldWithItsNumber) {
    support::application();
    file.setPath(folder.qtPath("missing/f"));
    QEventLoop loop;
    int told = 0;
    file.write("x", [&](int error) {
        told = error;
        loop.quit();
    });
    loop.exec();
    EXPECT_EQ(told, errors::PathFileAccess);
    EXPECT_FALSE(file.read().has_value());
    file.remove();
}

TEST_F(KeptFileTest, TheNewContentIsOnTheDiskBeforeItTakesThePlaceOfTheOldAndTheFolderThereafter) {
    EXPECT_THAT(stepsOfWriting(), ElementsAre("write", "fsync", "rename", "fsync"));
}

TEST_F(KeptFileTest, WhicheverStepFailsTheOldContentStaysOrTheNewIsWhole) {
    const auto steps = stepsOfWriting();
    for (std::size_t step = 0; step < steps.size(); ++step) {
        file.writeNow("old");
        const int error = [&] {
            const FileSteps trouble(FileSteps::Trouble{step, Then::Fail, EIO});
            return errorNumberOf([&] { file.writeNow("new content"); });
        }();
        EXPECT_EQ(error, errors::DeviceInputOutput) << steps[step];
        EXPECT_EQ(file.read(), step + 1 == steps.size() ? "new content" : "old") << steps[step];
    }
}

TEST_F(KeptFileTest, WheneverTheProcessEndsTheOldContentIsThereOrTheNew) {
    const std::size_t steps = stepsOfWriting().size();
    for (std::size_t step = 0; step < steps; ++step) {
        file.writeNow("old");
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            const FileSteps dying(FileSteps::Trouble{step, Then::EndProcess});
            static_cast<void>(errorNumberOf([&] { file.writeNow("new content"); }));
            ::_exit(1);
        }
        int status = -1;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        ASSERT_EQ(status, 0) << "the step never came";
        EXPECT_THAT(*file.read(), AnyOf("old", "new content")) << step;
    }
    // The file that an ended process has left is used again.
    file.writeNow("new content");
    EXPECT_EQ(folder.entries(), 1U);
}

/** Writes one content after the other, each of one letter and of its own length, until it is killed. */
[[noreturn]] void writeOnAndOn(KeptFile& file) {
    for (std::size_t round = 1;; ++round) {
        file.writeNow(std::string(1000 + 997 * (round % 300), static_cast<char>('a' + round % 26)));
    }
}

TEST_F(KeptFileTest, KilledAtRandomMomentsItIsAlwaysWhole) {
    std::mt19937 random(4711);
    std::uniform_int_distribution<useconds_t> microseconds(0, 20'000);
    file.writeNow("first");
    for (int round = 0; round < support::fewerIfSanitized(200, 4); ++round) {
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            writeOnAndOn(file);
        }
        ::usleep(microseconds(random));
        ::kill(child, SIGKILL);
        ASSERT_EQ(::waitpid(child, nullptr, 0), child);
        const auto content = file.read();
        ASSERT_TRUE(content.has_value());
        if (*content != "first") {
            ASSERT_EQ(content->find_first_not_of(content->front()), std::string::npos);
            ASSERT_EQ((content->size() - 1000) % 997, 0U);
        }
    }
    EXPECT_NE(*file.read(), "first");
}

TEST_F(KeptFileTest, ALinkInItsPlaceIsNotWrittenThrough) {
    folder.write("other", "precious");
    filesystem::create_symlink(folder.path("other"), folder.path("f.new"));
    EXPECT_EQ(errorNumberOf([&] { file.writeNow("new"); }), errors::PathFileAccess);
    EXPECT_EQ(folder.read("other"), "precious");
}

} // namespace
