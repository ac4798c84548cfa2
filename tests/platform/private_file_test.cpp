#include "platform/private_file.h"
#include "platform/runtime_error.h"
#include "tests/support/file_faults.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <filesystem>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using platform::errorNumberOf;
using platform::Existing;
using platform::PrivateOutput;
using platform::Writing;
using support::modeOf;
using support::TemporaryFolder;
namespace errors = platform::errors;
namespace filesystem = std::filesystem;

constexpr Writing kWritings[] = {Writing::InPlace, Writing::BesideTarget};

void writeWhole(const QString& path, Writing writing, std::string_view bytes,
                Existing existing = Existing::Replace) {
    PrivateOutput output(path, writing, existing);
    output.write(bytes);
    output.finish();
}

int errorOfWriting(const QString& path, Writing writing, Existing existing = Existing::Replace) {
    return errorNumberOf([&] { writeWhole(path, writing, "new", existing); });
}

class EveryWriting : public testing::TestWithParam<Writing> {
  protected:
    int write(const char* name = "f", Existing existing = Existing::Replace) {
        return errorOfWriting(folder_.qtPath(name), GetParam(), existing);
    }

    TemporaryFolder folder_;
};

INSTANTIATE_TEST_SUITE_P(PrivateOutput, EveryWriting, testing::ValuesIn(kWritings), [](const auto& test) {
    switch (test.param) {
    case Writing::InPlace:
        return "InPlace";
    case Writing::BesideTarget:
        break;
    }
    return "BesideTarget";
});

TEST_P(EveryWriting, MakesAFileThatOnlyTheUserMayRead) {
    const mode_t old = ::umask(0);
    EXPECT_EQ(write(), 0);
    ::umask(old);
    EXPECT_EQ(folder_.read("f"), "new");
    EXPECT_EQ(modeOf(folder_.path("f")), 0600U);
    EXPECT_EQ(folder_.entries(), 1U);
}

TEST_P(EveryWriting, TakesAwayWhatOthersMayDoWithAnOlderFile) {
    filesystem::permissions(folder_.write("f", "old"), filesystem::perms::all);
    EXPECT_EQ(write(), 0);
    EXPECT_EQ(modeOf(folder_.path("f")), 0600U);
}

TEST_P(EveryWriting, WritesPiecesAndBytesOfAnyKind) {
    const std::string bytes = std::string("a\0\xFF\r\n", 5);
    PrivateOutput output(folder_.qtPath("f"), GetParam());
    output.write(bytes);
    output.write("");
    output.write(std::string(1'000'000, 'x'));
    output.finish();
    EXPECT_TRUE(folder_.read("f") == bytes + std::string(1'000'000, 'x'));
}

TEST_P(EveryWriting, NothingWrittenIsAnEmptyFile) {
    PrivateOutput(folder_.qtPath("f"), GetParam()).finish();
    EXPECT_EQ(folder_.read("f"), "");
}

TEST(PrivateOutput, WrittenInPlaceLeavesNothingOfALongerFile) {
    const support::TemporaryFolder folder;
    folder.write("f", std::string(10'000, 'o'));
    PrivateOutput output(folder.qtPath("f"), Writing::InPlace);
    output.write("new");
    output.finish();
    EXPECT_EQ(folder.read("f"), "new");
}

TEST_P(EveryWriting, AFileIsKeptWhenItIsNotToBeReplaced) {
    EXPECT_EQ(write("f", Existing::Refuse), 0);
    EXPECT_EQ(write("f", Existing::Refuse), errors::PathFileAccess);
    EXPECT_EQ(folder_.read("f"), "new");
    filesystem::create_symlink(folder_.path("nowhere"), folder_.path("link"));
    EXPECT_EQ(write("link", Existing::Refuse), errors::PathFileAccess);
    EXPECT_EQ(folder_.entries(), 2U);
}

TEST_P(EveryWriting, ALinkIsNotFollowed) {
    folder_.write("key", "secret");
    filesystem::create_symlink(folder_.path("key"), folder_.path("f"));
    EXPECT_EQ(write(), errors::PathFileAccess);
    EXPECT_EQ(folder_.read("key"), "secret");
    EXPECT_TRUE(filesystem::is_symlink(folder_.path("f")));
}

TEST_P(EveryWriting, ALinkToNowhereMakesNoFileThere) {
    filesystem::create_symlink(folder_.path("key"), folder_.path("f"));
    EXPECT_EQ(write(), errors::PathFileAccess);
    EXPECT_EQ(folder_.entries(), 1U);
}

TEST_P(EveryWriting, AFileWithASecondNameIsNotWrittenInto) {
    folder_.write("key", "secret");
    filesystem::create_hard_link(folder_.path("key"), folder_.path("f"));
    EXPECT_EQ(write(), errors::PathFileAccess);
    EXPECT_EQ(folder_.read("key"), "secret");
    EXPECT_EQ(folder_.entries(), 2U);
}

TEST_P(EveryWriting, SomebodyElsesFileIsNotWrittenInto) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only the administrator can give a file away";
    }
    ASSERT_EQ(::chown(folder_.write("f", "theirs").c_str(), 12345, 12345), 0);
    EXPECT_EQ(write(), errors::PathFileAccess);
    EXPECT_EQ(folder_.read("f"), "theirs");
}

TEST_P(EveryWriting, FoldersPipesAndDevicesAreRefusedWithoutWaiting) {
    filesystem::create_directory(folder_.path("folder"));
    ASSERT_EQ(::mkfifo(folder_.path("pipe").c_str(), 0600), 0);
    EXPECT_EQ(write("folder"), errors::PathFileAccess);
    EXPECT_EQ(write("pipe"), errors::PathFileAccess);
    EXPECT_EQ(errorOfWriting(QStringLiteral("/dev/null"), GetParam()), errors::PathFileAccess);
    EXPECT_EQ(errorOfWriting(QStringLiteral("/dev/full"), GetParam()), errors::PathFileAccess);
    EXPECT_EQ(folder_.entries(), 2U);
}

TEST_P(EveryWriting, APipeWithAReaderIsRefusedToo) {
    ASSERT_EQ(::mkfifo(folder_.path("pipe").c_str(), 0600), 0);
    const platform::FileDescriptor reader(::open(folder_.path("pipe").c_str(), O_RDONLY | O_NONBLOCK));
    ASSERT_TRUE(reader.isOpen());
    EXPECT_EQ(write("pipe"), errors::PathFileAccess);
}

TEST_P(EveryWriting, NamesThatCannotBeAreErrors) {
    EXPECT_EQ(errorOfWriting(QString(), GetParam()), errors::PathFileAccess);
    EXPECT_EQ(write("missing/f"), errors::PathFileAccess);
    EXPECT_EQ(write(""), errors::PathFileAccess);
    EXPECT_EQ(write("."), errors::PathFileAccess);
    EXPECT_EQ(write(std::string(256, 'n').c_str()), errors::PathFileAccess);
    EXPECT_EQ(errorOfWriting(folder_.qtPath("f") + QChar(u'\0') + QStringLiteral("x"), GetParam()),
              errors::PathFileAccess);
    EXPECT_EQ(folder_.entries(), 0U);
}

TEST_P(EveryWriting, TheLongestNameIsAllowed) {
    const std::string name(255, 'n');
    EXPECT_EQ(write(name.c_str()), 0);
    EXPECT_EQ(folder_.read(name), "new");
}

TEST_P(EveryWriting, AFileOrFolderWithoutRightsIsAnError) {
    filesystem::permissions(folder_.write("f", "old"), filesystem::perms::owner_read);
    const filesystem::path closed = folder_.path("closed");
    filesystem::create_directory(closed);
    filesystem::permissions(closed, filesystem::perms::owner_read | filesystem::perms::owner_exec);
    int fileError = 0;
    int folderError = 0;
    ASSERT_TRUE(support::withoutPrivileges([&] {
        fileError = write("f");
        folderError = write("closed/f");
    }));
    filesystem::permissions(closed, filesystem::perms::owner_all);
    EXPECT_EQ(fileError, errors::PathFileAccess);
    EXPECT_EQ(folderError, errors::PathFileAccess);
    EXPECT_EQ(folder_.read("f"), "old");
    EXPECT_EQ(folder_.entries(), 2U);
}

TEST_P(EveryWriting, AnUnfinishedFileThatWasNotThereIsGone) {
    {
        PrivateOutput output(folder_.qtPath("f"), GetParam());
        output.write("half");
        EXPECT_EQ(folder_.entries(), 1U);
    }
    EXPECT_EQ(folder_.entries(), 0U);
}

TEST_P(EveryWriting, AFullDiskIsAnErrorAndLeavesNoHalfFile) {
    int error = 0;
    std::size_t entries = 1;
    const bool mounted = support::onSmallDisk(folder_.path(), [&] {
        error =
            errorNumberOf([&] { writeWhole(folder_.qtPath("f"), GetParam(), std::string(100'000, 'x')); });
        entries = folder_.entries();
    });
    if (!mounted) {
        GTEST_SKIP() << "a small disk can be mounted by the administrator only";
    }
    EXPECT_EQ(error, errors::DiskFull);
    EXPECT_EQ(entries, 0U);
}

TEST_P(EveryWriting, AFileSizeLimitIsAnErrorAndLeavesNoHalfFile) {
    for (const rlim_t limit : {0U, 1U, 999U}) {
        int error = 0;
        {
            const support::FileSizeLimit fileSizeLimit(limit);
            error =
                errorNumberOf([&] { writeWhole(folder_.qtPath("f"), GetParam(), std::string(1000, 'x')); });
        }
        EXPECT_EQ(error, errors::DeviceInputOutput) << limit;
        EXPECT_EQ(folder_.entries(), 0U) << limit;
    }
}

TEST_P(EveryWriting, BytesOfSomebodyElseInBetweenAreNoticed) {
    PrivateOutput output(folder_.qtPath("f"), GetParam());
    output.write("new");
    support::grow(filesystem::directory_iterator(folder_.path())->path(), "strange");
    EXPECT_EQ(errorNumberOf([&] { output.finish(); }), errors::DeviceInputOutput);
}

} // namespace
