#include "platform/private_file.h"
#include "platform/runtime_error.h"
#include "tests/support/file_faults.h"
#include "tests/support/held_file.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

using platform::errorNumberOf;
using platform::Existing;
using platform::PrivateOutput;
using platform::Writing;
using support::contentOf;
using support::modeOf;
using support::TemporaryFolder;
namespace errors = platform::errors;
namespace filesystem = std::filesystem;

TEST(PrivateOutput, WritingInPlaceRemovesTheFileWhenItFails) {
    const TemporaryFolder folder;
    folder.write("f", "old and long");
    { PrivateOutput(folder.qtPath("f"), Writing::InPlace).write("half"); }
    EXPECT_EQ(folder.entries(), 0U);
}

TEST(PrivateOutput, WritingInPlaceRemovesNothingThatHasTakenTheFilesPlace) {
    const TemporaryFolder folder;
    {
        PrivateOutput output(folder.qtPath("f"), Writing::InPlace);
        filesystem::remove(folder.path("f"));
        folder.write("f", "another");
    }
    EXPECT_EQ(folder.read("f"), "another");
}

TEST(PrivateOutput, AFileThatIsHeldIsNotWrittenIntoAndAnotherTakesItsPlace) {
    const TemporaryFolder folder;
    PrivateOutput first(folder.qtPath("f"), Writing::InPlace);
    first.write("first");
    first.finish();
    const platform::HeldFile held = first.takeFile();
    for (const std::string_view later : {"second, longer", "third"}) {
        PrivateOutput output(folder.qtPath("f"), Writing::InPlace);
        output.write(later);
        output.finish();
        EXPECT_EQ(folder.read("f"), later);
        EXPECT_EQ(contentOf(held), "first");
        EXPECT_EQ(modeOf(folder.path("f")), 0600U);
        EXPECT_EQ(folder.entries(), 1U);
    }
}

TEST(PrivateOutput, AFileThatIsBeingWrittenIsNotWrittenIntoByAnother) {
    const TemporaryFolder folder;
    PrivateOutput first(folder.qtPath("f"), Writing::InPlace);
    first.write("fir");
    PrivateOutput second(folder.qtPath("f"), Writing::InPlace);
    second.write("second");
    second.finish();
    first.write("st");
    first.finish();
    EXPECT_EQ(contentOf(first.takeFile()), "first");
    EXPECT_EQ(folder.read("f"), "second");
    // The file that took the first one's place is locked as well.
    PrivateOutput third(folder.qtPath("f"), Writing::InPlace);
    third.write("third");
    third.finish();
    EXPECT_EQ(contentOf(second.takeFile()), "second");
}

TEST(PrivateOutput, AFileThatIsHeldNoLongerIsWrittenIntoAgain) {
    const TemporaryFolder folder;
    PrivateOutput(folder.qtPath("f"), Writing::InPlace).finish();

    struct stat before {};

    struct stat after {};

    ASSERT_EQ(::stat(folder.path("f").c_str(), &before), 0);
    PrivateOutput(folder.qtPath("f"), Writing::InPlace).finish();
    ASSERT_EQ(::stat(folder.path("f").c_str(), &after), 0);
    EXPECT_EQ(before.st_ino, after.st_ino);
}

TEST(PrivateOutput, WritingBesideLeavesTheTargetAsItIsUntilTheEnd) {
    const TemporaryFolder folder;
    folder.write("f", "old");
    PrivateOutput output(folder.qtPath("f"), Writing::BesideTarget);
    output.write("new");
    EXPECT_EQ(folder.read("f"), "old");
    EXPECT_EQ(folder.entries(), 2U);
    output.finish();
    EXPECT_EQ(folder.read("f"), "new");
    EXPECT_EQ(folder.entries(), 1U);
}

TEST(PrivateOutput, WritingBesideLeavesTheTargetAsItIsWhenItFails) {
    const TemporaryFolder folder;
    filesystem::permissions(folder.write("f", "old"), filesystem::perms::owner_all);
    { PrivateOutput(folder.qtPath("f"), Writing::BesideTarget).write("half"); }
    EXPECT_EQ(folder.read("f"), "old");
    EXPECT_EQ(modeOf(folder.path("f")), 0700U);
    EXPECT_EQ(folder.entries(), 1U);
}

TEST(PrivateOutput, AFolderThatHasTakenTheTargetsPlaceStays) {
    const TemporaryFolder folder;
    {
        PrivateOutput output(folder.qtPath("f"), Writing::BesideTarget);
        filesystem::create_directory(folder.path("f"));
        EXPECT_EQ(errorNumberOf([&] { output.finish(); }), errors::PathFileAccess);
    }
    EXPECT_EQ(folder.entries(), 1U);
}

TEST(PrivateOutput, ALinkThatHasTakenTheTargetsPlaceIsReplacedAndNotFollowed) {
    const TemporaryFolder folder;
    folder.write("key", "secret");
    PrivateOutput output(folder.qtPath("f"), Writing::BesideTarget);
    output.write("new");
    filesystem::create_symlink(folder.path("key"), folder.path("f"));
    output.finish();
    EXPECT_EQ(folder.read("key"), "secret");
    EXPECT_FALSE(filesystem::is_symlink(folder.path("f")));
    EXPECT_EQ(folder.read("f"), "new");
}

TEST(PrivateOutput, AFileThatHasComeMeanwhileIsKeptWhenItIsNotToBeReplaced) {
    const TemporaryFolder folder;
    {
        PrivateOutput output(folder.qtPath("f"), Writing::BesideTarget, Existing::Refuse);
        folder.write("f", "another");
        EXPECT_EQ(errorNumberOf([&] { output.finish(); }), errors::PathFileAccess);
    }
    EXPECT_EQ(folder.read("f"), "another");
    EXPECT_EQ(folder.entries(), 1U);
}

TEST(PrivateOutput, SystemErrorsHaveTheirNumbers) {
    struct Case {
        int systemError;
        int opening;
        int writing;
    };

    const std::vector<Case> cases{
        {ENOSPC, errors::DiskFull, errors::DiskFull},
        {EDQUOT, errors::DiskFull, errors::DiskFull},
        {EFBIG, errors::PathFileAccess, errors::DeviceInputOutput},
        {EIO, errors::DeviceInputOutput, errors::DeviceInputOutput},
        {ENOMEM, errors::OutOfMemory, errors::OutOfMemory},
        {ENODEV, errors::DeviceUnavailable, errors::DeviceUnavailable},
        {ENOMEDIUM, errors::DeviceUnavailable, errors::DeviceUnavailable},
        {EACCES, errors::PathFileAccess, errors::PathFileAccess},
        {EPERM, errors::PathFileAccess, errors::PathFileAccess},
        {EROFS, errors::PathFileAccess, errors::PathFileAccess},
        {ELOOP, errors::PathFileAccess, errors::DeviceInputOutput},
    };
    for (const Case& test : cases) {
        EXPECT_EQ(platform::openingErrorNumber(test.systemError), test.opening) << test.systemError;
        EXPECT_EQ(platform::writingErrorNumber(test.systemError), test.writing) << test.systemError;
    }
}

TEST(PrivateOutput, WhatAFullDeviceAnswersIsAFullDisk) {
    const platform::FileDescriptor full(::open("/dev/full", O_WRONLY));
    ASSERT_TRUE(full.isOpen());
    ASSERT_EQ(::write(full.number(), "x", 1), -1);
    EXPECT_EQ(platform::writingErrorNumber(errno), errors::DiskFull);
}

} // namespace
