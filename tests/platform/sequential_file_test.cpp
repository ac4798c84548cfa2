#include "platform/runtime_error.h"
#include "platform/sequential_file.h"
#include "tests/support/file_faults.h"
#include "tests/support/temporary_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <linux/capability.h>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

using platform::errorNumberOf;
using platform::SequentialInput;
using platform::writeWholeFile;
using support::TemporaryFolder;
using testing::ElementsAre;
using namespace std::string_literals;
using namespace std::string_view_literals;
namespace errors = platform::errors;

std::vector<std::string> linesOf(std::string_view bytes) {
    const TemporaryFolder folder;
    folder.write("f", bytes);
    SequentialInput input(folder.qtPath("f"));
    std::vector<std::string> lines;
    const int error = errorNumberOf([&] {
        for (;;) {
            lines.push_back(input.nextLine());
        }
    });
    EXPECT_EQ(error, errors::InputPastEndOfFile);
    return lines;
}

int errorOfOpeningInput(const QString& path) {
    return errorNumberOf([&] { const SequentialInput input(path); });
}

long peakMemoryKilobytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

TEST(SequentialInput, AFileOfNoBytesHasNoLine) {
    EXPECT_THAT(linesOf(""), ElementsAre());
}

TEST(SequentialInput, AllThreeLineEndsAreTaken) {
    EXPECT_THAT(linesOf("a\r\nb\nc\rd\r\n"), ElementsAre("a", "b", "c", "d"));
}

TEST(SequentialInput, ALoneCarriageReturnEndsALine) {
    EXPECT_THAT(linesOf("a\rb\r\rc"), ElementsAre("a", "b", "", "c"));
}

TEST(SequentialInput, ALastLineMayLackItsEnd) {
    EXPECT_THAT(linesOf("a\r\nb"), ElementsAre("a", "b"));
}

TEST(SequentialInput, AnEmptyLineIsALine) {
    EXPECT_THAT(linesOf("\r\n\n"), ElementsAre("", ""));
}

TEST(SequentialInput, NulAndHighBytesBelongToTheLine) {
    EXPECT_THAT(linesOf("a\0b\xFF\r\n\0"sv), ElementsAre("a\0b\xFF"sv, "\0"sv));
}

TEST(SequentialInput, ALineEndCutInTwoByTheReadsIsOneLineEnd) {
    for (const std::size_t length : {65534U, 65535U, 65536U, 131071U}) {
        const std::string line(length, 'x');
        EXPECT_THAT(linesOf(line + "\r\nb\r\n"), ElementsAre(line, "b")) << length;
    }
}

TEST(SequentialInput, ALineOfTheLongestLengthIsRead) {
    const std::string line(SequentialInput::kMaximumLineBytes, 'x');
    EXPECT_THAT(linesOf(line + "\n"), ElementsAre(line));
}

TEST(SequentialInput, OneByteMoreIsTooLong) {
    const TemporaryFolder folder;
    folder.write("f", std::string(SequentialInput::kMaximumLineBytes + 1, 'x') + "\n");
    SequentialInput input(folder.qtPath("f"));
    EXPECT_EQ(errorNumberOf([&] { input.nextLine(); }), errors::OutOfMemory);
}

TEST(SequentialInput, ALineOfAHundredMegabytesIsErrorSevenAndIsNotHeldInMemory) {
    const TemporaryFolder folder;
    std::filesystem::resize_file(folder.write("f", ""), 100U << 20U);
    const long before = peakMemoryKilobytes();
    SequentialInput input(folder.qtPath("f"));
    EXPECT_EQ(errorNumberOf([&] { input.nextLine(); }), errors::OutOfMemory);
    EXPECT_LT(peakMemoryKilobytes() - before, 16L << 10);
}

TEST(SequentialInput, AMissingFileIsNotFound) {
    const TemporaryFolder folder;
    EXPECT_EQ(errorOfOpeningInput(folder.qtPath("f")), errors::FileNotFound);
    EXPECT_EQ(errorOfOpeningInput(folder.qtPath("no-folder/f")), errors::FileNotFound);
}

TEST(SequentialInput, AFolderIsNoFile) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder.path("f"));
    EXPECT_EQ(errorOfOpeningInput(folder.qtPath("f")), errors::PathFileAccess);
}

TEST(SequentialInput, APipeThatNobodyWritesToDoesNotHang) {
    const TemporaryFolder folder;
    ASSERT_EQ(mkfifo(folder.path("f").c_str(), 0600), 0);
    alarm(20); // ends the process should it hang after all
    EXPECT_EQ(errorOfOpeningInput(folder.qtPath("f")), errors::PathFileAccess);
    alarm(0);
}

TEST(SequentialInput, ADeviceIsNoFile) {
    EXPECT_EQ(errorOfOpeningInput(QStringLiteral("/dev/zero")), errors::PathFileAccess);
}

TEST(SequentialInput, ALinkToAFileIsFollowed) {
    const TemporaryFolder folder;
    std::filesystem::create_symlink(folder.write("target", "a\r\n"), folder.path("f"));
    EXPECT_EQ(SequentialInput(folder.qtPath("f")).nextLine(), "a");
}

TEST(SequentialInput, LinksThatLeadInACircleOrNowhereCannotBeOpened) {
    const TemporaryFolder folder;
    std::filesystem::create_symlink(folder.path("b"), folder.path("a"));
    std::filesystem::create_symlink(folder.path("a"), folder.path("b"));
    std::filesystem::create_symlink(folder.path("nothing"), folder.path("nowhere"));
    EXPECT_EQ(errorOfOpeningInput(folder.qtPath("a")), errors::PathFileAccess);
    EXPECT_EQ(errorOfOpeningInput(folder.qtPath("nowhere")), errors::PathFileAccess);
}

/** Takes from this thread the superuser's right to read what permission bits forbid. */
bool obeyPermissionBits() {
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    const __user_cap_data_struct none[2] = {};
    return syscall(SYS_capset, &header, none) == 0;
}

TEST(SequentialInput, AFileThatMayNotBeReadCannotBeOpened) {
    const TemporaryFolder folder;
    ASSERT_EQ(chmod(folder.write("f", "a\r\n").c_str(), 0), 0);
    bool bound = false;
    int error = 0;
    std::thread([&] {
        bound = obeyPermissionBits();
        error = errorOfOpeningInput(folder.qtPath("f"));
    }).join();
    ASSERT_TRUE(bound);
    EXPECT_EQ(error, errors::PathFileAccess);
}

TEST(SequentialInput, AFileReplacedWhileItIsReadIsReadToItsOldEnd) {
    const TemporaryFolder folder;
    folder.write("f", "old 1\r\nold 2\r\n");
    SequentialInput input(folder.qtPath("f"));
    EXPECT_EQ(input.nextLine(), "old 1");
    writeWholeFile(folder.qtPath("f"), "new 1\r\nnew 2\r\nnew 3\r\n");
    EXPECT_EQ(input.nextLine(), "old 2");
    EXPECT_EQ(errorNumberOf([&] { input.nextLine(); }), errors::InputPastEndOfFile);
}

TEST(WriteWholeFile, MakesTheFileWithExactlyTheBytes) {
    const TemporaryFolder folder;
    writeWholeFile(folder.qtPath("f"), "a\r\n\0\xFF\n"s);
    EXPECT_EQ(folder.read("f"), "a\r\n\0\xFF\n"sv);
    EXPECT_EQ(folder.entries(), 1U);
}

TEST(WriteWholeFile, ReplacesALongerFileAltogether) {
    const TemporaryFolder folder;
    folder.write("f", std::string(100'000, 'x'));
    writeWholeFile(folder.qtPath("f"), "short");
    EXPECT_EQ(folder.read("f"), "short");
    EXPECT_EQ(folder.entries(), 1U);
}

TEST(WriteWholeFile, WritesToWhereALinkLeads) {
    const TemporaryFolder folder;
    std::filesystem::create_symlink(folder.write("target", "old"), folder.path("f"));
    writeWholeFile(folder.qtPath("f"), "new");
    EXPECT_EQ(folder.read("target"), "new");
    EXPECT_TRUE(std::filesystem::is_symlink(folder.path("f")));
}

TEST(WriteWholeFile, AFolderInItsPlaceIsRefused) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder.path("f"));
    EXPECT_EQ(errorNumberOf([&] { writeWholeFile(folder.qtPath("f"), "x"); }), errors::PathFileAccess);
    EXPECT_TRUE(std::filesystem::is_directory(folder.path("f")));
    EXPECT_EQ(folder.entries(), 1U);
}

TEST(WriteWholeFile, AMissingFolderIsRefused) {
    const TemporaryFolder folder;
    EXPECT_EQ(errorNumberOf([&] { writeWholeFile(folder.qtPath("no-folder/f"), "x"); }),
              errors::PathFileAccess);
}

void expectOldContentAfterAFullDisk(rlim_t room, std::size_t length) {
    const TemporaryFolder folder;
    folder.write("f", "old");
    int error = 0;
    {
        const support::FileSizeLimit limit(room);
        error = errorNumberOf([&] { writeWholeFile(folder.qtPath("f"), std::string(length, 'x')); });
    }
    EXPECT_EQ(error, errors::DeviceInputOutput);
    EXPECT_EQ(folder.read("f").substr(0, 10), "old");
    EXPECT_EQ(folder.entries(), 1U);
}

TEST(WriteWholeFile, AFullDiskLeavesTheOldContent) {
    expectOldContentAfterAFullDisk(0, 400);
    expectOldContentAfterAFullDisk(0, 1'000'000);
}

TEST(WriteWholeFile, ADiskThatFillsUpOnTheWayLeavesTheOldContent) {
    expectOldContentAfterAFullDisk(1000, 2000);
    expectOldContentAfterAFullDisk(1000, 1'000'000);
}

} // namespace
