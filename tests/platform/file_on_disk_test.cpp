// Which files are waited for until they are on the disk, and what is left when the disk fails meanwhile.

#include "platform/private_file.h"
#include "platform/runtime_error.h"
#include "tests/platform/file_steps.h"
#include "tests/support/file_faults.h"
#include "tests/support/temporary_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <sys/stat.h>
#include <utility>
#include <vector>

namespace {

using platform::errorNumberOf;
using platform::PrivateOutput;
using platform::Writing;
using support::FileSteps;
using support::TemporaryFolder;
using testing::Contains;
using testing::ElementsAre;
using testing::Not;
using Then = FileSteps::Then;
namespace errors = platform::errors;
namespace filesystem = std::filesystem;

void writeNew(const TemporaryFolder& folder, Writing writing) {
    PrivateOutput output(folder.qtPath("f"), writing);
    output.write("new");
    output.finish();
}

int errorOfWritingBeside(const TemporaryFolder& folder, const FileSteps::Trouble& trouble) {
    folder.write("f", "old");
    const FileSteps steps(trouble);
    return errorNumberOf([&] { writeNew(folder, Writing::BesideTarget); });
}

TEST(FileOnDisk, WrittenBesideItsTargetItIsThereBeforeItTakesThePlaceAndItsFolderThereafter) {
    const TemporaryFolder folder;
    const FileSteps steps;
    writeNew(folder, Writing::BesideTarget);
    EXPECT_THAT(steps.calls(), ElementsAre("write", "fsync", "rename", "fsync"));
}

TEST(FileOnDisk, WrittenInPlaceItIsNotWaitedFor) {
    const TemporaryFolder folder;
    const FileSteps steps;
    writeNew(folder, Writing::InPlace);
    EXPECT_THAT(steps.calls(), Not(Contains("fsync")));
}

TEST(FileOnDisk, WhicheverStepFailsTheOldContentStaysOrTheNewIsWholeAndTheFailureIsTold) {
    const std::vector<std::pair<int, int>> failures{{EIO, errors::DeviceInputOutput},
                                                    {ENOSPC, errors::DiskFull},
                                                    {ENODEV, errors::DeviceUnavailable},
                                                    {EROFS, errors::PathFileAccess}};
    for (std::size_t step = 0; step < 4; ++step) {
        for (const auto& [systemError, error] : failures) {
            const TemporaryFolder folder;
            EXPECT_EQ(errorOfWritingBeside(folder, {step, Then::Fail, systemError}), error) << step;
            EXPECT_EQ(folder.read("f"), step == 3 ? "new" : "old") << step;
            EXPECT_EQ(folder.entries(), 1U) << step;
        }
    }
}

TEST(FileOnDisk, AnInterruptedWaitIsTriedAgainAndAFileSystemThatKnowsNoWaitingWillDo) {
    for (const int systemError : {EINTR, EINVAL, ENOTSUP}) {
        const TemporaryFolder folder;
        EXPECT_EQ(errorOfWritingBeside(folder, {1, Then::Fail, systemError}), 0);
        EXPECT_EQ(errorOfWritingBeside(folder, {3, Then::Fail, systemError}), 0);
        EXPECT_EQ(folder.read("f"), "new");
    }
}

TEST(FileOnDisk, AFolderThatIsGoneIsTold) {
    const TemporaryFolder folder;
    filesystem::create_directory(folder.path("stick"));
    PrivateOutput output(folder.qtPath("stick/f"), Writing::BesideTarget);
    output.write("new");
    filesystem::remove_all(folder.path("stick"));
    EXPECT_EQ(errorNumberOf([&] { output.finish(); }), errors::PathFileAccess);
}

TEST(FileOnDisk, ForAFolderThatMayNotBeReadTheWholeFileSystemIsWaitedFor) {
    const TemporaryFolder folder;
    ASSERT_EQ(::chmod(folder.path().c_str(), 0300), 0);
    std::vector<std::string> calls;
    int failing = 0;
    ASSERT_TRUE(support::withoutPrivileges([&] {
        {
            const FileSteps steps;
            writeNew(folder, Writing::BesideTarget);
            calls = steps.calls();
        }
        const FileSteps steps(FileSteps::Trouble{3, Then::Fail, EIO});
        failing = errorNumberOf([&] { writeNew(folder, Writing::BesideTarget); });
    }));
    ASSERT_EQ(::chmod(folder.path().c_str(), 0700), 0);
    EXPECT_THAT(calls, ElementsAre("write", "fsync", "rename", "syncfs"));
    EXPECT_EQ(failing, errors::DeviceInputOutput);
}

} // namespace
