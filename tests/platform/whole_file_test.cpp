// What writeWholeFile() leaves behind when any of its steps goes wrong, and whose the file is afterwards.

#include "platform/runtime_error.h"
#include "platform/sequential_file.h"
#include "tests/platform/file_steps.h"
#include "tests/support/file_faults.h"
#include "tests/support/temporary_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

using platform::errorNumberOf;
using platform::writeWholeFile;
using support::FileSteps;
using support::modeOf;
using support::TemporaryFolder;
using testing::AnyOf;
using testing::ElementsAre;
using Then = FileSteps::Then;
namespace errors = platform::errors;
namespace filesystem = std::filesystem;

const std::string kNew = "new content\r\n";

/** Writes the new content over a file of the old content, with one step going wrong. */
int errorOfWriting(const TemporaryFolder& folder, const FileSteps::Trouble& trouble) {
    folder.write("f", "old");
    const FileSteps steps(trouble);
    return errorNumberOf([&] { writeWholeFile(folder.qtPath("f"), kNew); });
}

std::vector<std::string> stepsOfWriting(const TemporaryFolder& folder) {
    folder.write("f", "old");
    const FileSteps steps;
    writeWholeFile(folder.qtPath("f"), kNew);
    return steps.calls();
}

TEST(WholeFile, TheNewContentIsOnTheDiskBeforeItTakesThePlaceOfTheOldAndTheFolderThereafter) {
    const TemporaryFolder folder;
    EXPECT_THAT(stepsOfWriting(folder),
                ElementsAre("fchown", "fchown", "fchmod", "write", "fsync", "rename", "fsync"));
}

TEST(WholeFile, WhicheverStepFailsTheOldContentStaysOrTheNewIsWhole) {
    const TemporaryFolder folder;
    const std::vector<std::string> steps = stepsOfWriting(folder);
    for (std::size_t step = 0; step < steps.size(); ++step) {
        for (const int systemError : {EIO, ENOSPC, EACCES, EDQUOT}) {
            SCOPED_TRACE(testing::Message() << steps[step] << ' ' << step << " error " << systemError);
            const int error = errorOfWriting(folder, {step, Then::Fail, systemError});
            // Owner and group are kept where possible; the file is as good without them. Only the last step,
            // waiting for the folder, comes after the new file has taken its place.
            const bool placed = steps[step] == "fchown" || step + 1 == steps.size();
            EXPECT_EQ(folder.read("f"), placed ? kNew : "old");
            EXPECT_EQ(error == 0, steps[step] == "fchown");
            EXPECT_EQ(folder.entries(), 1U);
        }
    }
}

TEST(WholeFile, WheneverTheProcessEndsTheOldContentIsThereOrTheNew) {
    const TemporaryFolder folder;
    const std::size_t steps = stepsOfWriting(folder).size();
    std::size_t oldContents = 0;
    for (std::size_t step = 0; step < steps; ++step) {
        folder.write("f", "old");
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            const FileSteps dying(FileSteps::Trouble{step, Then::EndProcess});
            static_cast<void>(errorNumberOf([&] { writeWholeFile(folder.qtPath("f"), kNew); }));
            ::_exit(1);
        }
        int status = -1;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        ASSERT_EQ(status, 0) << "the step never came";
        const std::string content = folder.read("f");
        EXPECT_THAT(content, AnyOf("old", kNew)) << step;
        oldContents += content == "old" ? 1U : 0U;
    }
    EXPECT_EQ(oldContents, steps - 1);
    // The file that an ended process has left does not hinder the next one.
    EXPECT_EQ(errorNumberOf([&] { writeWholeFile(folder.qtPath("f"), kNew); }), errors::None);
}

TEST(WholeFile, ALeftOverOfTheSameNameIsNeitherUsedNorFollowed) {
    const TemporaryFolder folder;
    const std::string leftOver = ".brindlewake-" + std::to_string(::getpid()) + "-0";
    filesystem::create_symlink(folder.write("other", "precious"), folder.path(leftOver));
    writeWholeFile(folder.qtPath("f"), kNew);
    EXPECT_EQ(folder.read("f"), kNew);
    EXPECT_EQ(folder.read("other"), "precious");
    EXPECT_EQ(folder.entries(), 3U);
}

TEST(WholeFile, AFullDiskIsErrorSixtyOneWhereverItIsNoticed) {
    const TemporaryFolder folder;
    const std::vector<std::string> steps = stepsOfWriting(folder);
    for (std::size_t step = 2; step < steps.size(); ++step) {
        EXPECT_EQ(errorOfWriting(folder, {step, Then::Fail, ENOSPC}), errors::DiskFull) << steps[step];
    }
}

TEST(WholeFile, AWriteThatTakesLessThanItWasGivenGoesOn) {
    const TemporaryFolder folder;
    EXPECT_EQ(errorOfWriting(folder, {3, Then::WriteOneByte}), errors::None);
    EXPECT_EQ(folder.read("f"), kNew);
}

TEST(WholeFile, AnInterruptedWriteIsTriedAgain) {
    const TemporaryFolder folder;
    EXPECT_EQ(errorOfWriting(folder, {3, Then::Fail, EINTR}), errors::None);
    EXPECT_EQ(folder.read("f"), kNew);
}

TEST(WholeFile, AFileSystemThatKnowsNoWaitingForTheDiskWillDo) {
    const TemporaryFolder folder;
    for (const std::size_t fsync : {4U, 6U}) {
        EXPECT_EQ(errorOfWriting(folder, {fsync, Then::Fail, EINVAL}), errors::None);
        EXPECT_EQ(folder.read("f"), kNew);
    }
}

TEST(WholeFile, AFileSystemThatKeepsNoRightsWillDo) {
    const TemporaryFolder folder;
    EXPECT_EQ(errorOfWriting(folder, {2, Then::Fail, EPERM}), errors::None);
    EXPECT_EQ(folder.read("f"), kNew);
}

TEST(WholeFile, OnARealFullDiskTheOldContentStays) {
    const TemporaryFolder folder;
    int error = 0;
    std::string content;
    const bool mounted = support::onSmallDisk(folder.path(), [&] {
        folder.write("f", "old");
        error = errorNumberOf([&] { writeWholeFile(folder.qtPath("f"), std::string(200'000, 'x')); });
        content = folder.read("f");
    });
    if (!mounted) {
        GTEST_SKIP() << "mounting a small disk needs more rights";
    }
    EXPECT_EQ(error, errors::DiskFull);
    EXPECT_EQ(content, "old");
}

TEST(WholeFile, ANewFileHasTheRightsOfNewFilesButIsNeverEverybodysToWrite) {
    for (const auto& [mask, mode] : {std::pair<mode_t, mode_t>{0027, 0640}, {0, 0664}}) {
        const TemporaryFolder folder;
        const mode_t maskBefore = ::umask(mask);
        writeWholeFile(folder.qtPath("f"), kNew);
        ::umask(maskBefore);
        EXPECT_EQ(modeOf(folder.path("f")), mode);
    }
}

TEST(WholeFile, AFileThatIsThereKeepsItsRights) {
    const TemporaryFolder folder;
    for (const mode_t mode : {0644U, 0600U, 0664U, 0666U}) {
        folder.write("f", "old");
        ASSERT_EQ(::chmod(folder.path("f").c_str(), mode), 0);
        writeWholeFile(folder.qtPath("f"), kNew);
        EXPECT_EQ(modeOf(folder.path("f")), mode);
        EXPECT_EQ(folder.read("f"), kNew);
    }
}

TEST(WholeFile, AnAdministratorLeavesOwnerAndGroupAsTheyAre) {
    const TemporaryFolder folder;
    folder.write("f", "old");
    if (::chown(folder.path("f").c_str(), 1234, 2345) != 0) {
        GTEST_SKIP() << "giving a file away needs more rights";
    }
    writeWholeFile(folder.qtPath("f"), kNew);

    struct stat status {};

    ASSERT_EQ(::stat(folder.path("f").c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, 1234U);
    EXPECT_EQ(status.st_gid, 2345U);
}

TEST(WholeFile, WhatTheOldGroupWasAllowedIsNotAnotherGroups) {
    const TemporaryFolder folder;
    ASSERT_EQ(::chmod(folder.write("f", "old").c_str(), 0664), 0);
    // The second call of fchown() is the one for the group.
    EXPECT_EQ(errorOfWriting(folder, {1, Then::Fail, EPERM}), errors::None);
    EXPECT_EQ(modeOf(folder.path("f")), 0644U);
}

TEST(WholeFile, AFileThatMayNotBeWrittenIsNotReplacedThoughItsFolderAllowsIt) {
    const TemporaryFolder folder;
    ASSERT_EQ(::chmod(folder.write("f", "old").c_str(), 0444), 0);
    int error = 0;
    ASSERT_TRUE(support::withoutPrivileges(
        [&] { error = errorNumberOf([&] { writeWholeFile(folder.qtPath("f"), kNew); }); }));
    EXPECT_EQ(error, errors::PathFileAccess);
    EXPECT_EQ(folder.read("f"), "old");
    EXPECT_EQ(folder.entries(), 1U);
}

TEST(WholeFile, AFileInAFolderThatMayNotBeWrittenIsLeftAsItIs) {
    const TemporaryFolder folder;
    folder.write("f", "old");
    ASSERT_EQ(::chmod(folder.path().c_str(), 0555), 0);
    int error = 0;
    ASSERT_TRUE(support::withoutPrivileges(
        [&] { error = errorNumberOf([&] { writeWholeFile(folder.qtPath("f"), kNew); }); }));
    ASSERT_EQ(::chmod(folder.path().c_str(), 0755), 0);
    EXPECT_EQ(error, errors::PathFileAccess);
    EXPECT_EQ(folder.read("f"), "old");
}

TEST(WholeFile, ALinkIntoAnotherFolderStaysAndTheFileAtItsEndIsReplacedThere) {
    const TemporaryFolder shared;
    const TemporaryFolder folder;
    filesystem::create_symlink(shared.write("settings", "old"), folder.path("f"));
    writeWholeFile(folder.qtPath("f"), kNew);
    EXPECT_EQ(shared.read("settings"), kNew);
    EXPECT_TRUE(filesystem::is_symlink(folder.path("f")));
    EXPECT_EQ(shared.entries(), 1U);
    EXPECT_EQ(folder.entries(), 1U);
}

TEST(WholeFile, LinksThatLeadNowhereOrInACirclePipesAndDevicesAreRefused) {
    const TemporaryFolder folder;
    filesystem::create_symlink(folder.path("nothing"), folder.path("nowhere"));
    filesystem::create_symlink(folder.path("circle"), folder.path("circle"));
    filesystem::create_symlink("/dev/null", folder.path("device"));
    ASSERT_EQ(::mkfifo(folder.path("pipe").c_str(), 0600), 0);
    for (const char* name : {"nowhere", "circle", "device", "pipe"}) {
        EXPECT_EQ(errorNumberOf([&] { writeWholeFile(folder.qtPath(name), kNew); }), errors::PathFileAccess)
            << name;
    }
    EXPECT_EQ(folder.entries(), 4U);
}

} // namespace
