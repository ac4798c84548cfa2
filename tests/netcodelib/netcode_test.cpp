#include "components/netcodelib/netcode.h"
#include "platform/runtime_error.h"
#include "tests/platform/file_steps.h"
#include "tests/support/file_faults.h"
#include "tests/support/held_file.h"
#include "tests/support/random_bytes.h"
#include "tests/support/sanitizer.h"
#include "tests/support/temporary_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

using netcodelib::Action;
using netcodelib::NetCode;
using platform::errorNumberOf;
using support::contentOf;
using support::modeOf;
using support::randomBytes;
namespace errors = platform::errors;

/** Drive T: is a folder of the test's own. */
class NetCodeTest : public testing::Test {
  protected:
    void SetUp() override {
        qputenv("BRINDLEWAKE_DRIVE_T", QByteArray::fromStdString(folder_.path().string()));
        codec_.setOverwrite(true);
        codec_.setCodingFormat(NetCode::kBase64);
    }

    void TearDown() override { qunsetenv("BRINDLEWAKE_DRIVE_T"); }

    int run(Action action, const QString& source, const QString& target) {
        codec_.setSourceFile(QStringLiteral("T:\\") + source);
        codec_.setTargetFile(QStringLiteral("T:\\") + target);
        return errorNumberOf([&] { codec_.setAction(action); });
    }

    int encode(const QString& source = QStringLiteral("in")) {
        return run(Action::Encode, source, QStringLiteral("out"));
    }

    int decode(const QString& source = QStringLiteral("in")) {
        return run(Action::Decode, source, QStringLiteral("out"));
    }

    bool exists(const char* name) const {
        return std::filesystem::exists(std::filesystem::symlink_status(folder_.path(name)));
    }

    support::TemporaryFolder folder_;
    NetCode codec_;
};

TEST_F(NetCodeTest, EncodesAFileIntoLinesOfText) {
    folder_.write("in", std::string(58, 'x'));
    EXPECT_EQ(encode(), 0);
    std::string line;
    for (int group = 0; group < 19; ++group) {
        line += "eHh4";
    }
    EXPECT_EQ(folder_.read("out"), line + "\r\neA==\r\n");
    EXPECT_EQ(codec_.targetFile(), QStringLiteral("T:\\out"));
    EXPECT_EQ(modeOf(folder_.path("out")), 0600U);
}

TEST_F(NetCodeTest, DecodesAFile) {
    folder_.write("in", "Zm9v\r\nYmFy\r\n--\r\n");
    EXPECT_EQ(decode(), 0);
    EXPECT_EQ(folder_.read("out"), "foobar");
    EXPECT_EQ(modeOf(folder_.path("out")), 0600U);
    EXPECT_EQ(folder_.entries(), 2U);
}

TEST_F(NetCodeTest, DecodesWhatItHasEncodedWhateverTheLength) {
    for (const std::size_t length : {0U, 1U, 56U, 57U, 65'549U, 65'550U, 65'551U, 3'000'000U}) {
        const std::string bytes = randomBytes(length, 1);
        folder_.write("in", bytes);
        ASSERT_EQ(run(Action::Encode, QStringLiteral("in"), QStringLiteral("text")), 0);
        ASSERT_EQ(run(Action::Decode, QStringLiteral("text"), QStringLiteral("out")), 0);
        EXPECT_TRUE(folder_.read("out") == bytes) << length;
    }
}

TEST_F(NetCodeTest, HeaderLinesLeftInFrontAreNotDecoded) {
    folder_.write("in", "Content-ID: <part1>\r\n\r\nZm9v\r\n");
    EXPECT_EQ(decode(), 0);
    EXPECT_EQ(folder_.read("out"), "foo");
}

TEST_F(NetCodeTest, NoActionDoesNothing) {
    EXPECT_EQ(run(Action::None, QStringLiteral("in"), QStringLiteral("out")), 0);
    EXPECT_EQ(folder_.entries(), 0U);
}

TEST_F(NetCodeTest, KnowsBase64Only) {
    for (const int format : {-1, 0, 2, 3}) {
        EXPECT_EQ(errorNumberOf([&] { codec_.setCodingFormat(format); }), errors::InvalidProcedureCall);
    }
}

TEST_F(NetCodeTest, KeepsTheFileName) {
    codec_.setFileName(QStringLiteral("REPORT.TXT"));
    EXPECT_EQ(codec_.fileName(), QStringLiteral("REPORT.TXT"));
}

TEST_F(NetCodeTest, ReplacesAnExistingTarget) {
    folder_.write("in", "Zm9v");
    folder_.write("out", std::string(100, 'o'));
    std::filesystem::permissions(folder_.path("out"), std::filesystem::perms::all);
    EXPECT_EQ(decode(), 0);
    EXPECT_EQ(folder_.read("out"), "foo");
    EXPECT_EQ(modeOf(folder_.path("out")), 0600U);
    EXPECT_EQ(encode(), 0);
    EXPECT_EQ(folder_.read("out"), "Wm05dg==\r\n");
}

TEST_F(NetCodeTest, KeepsAnExistingTargetUnlessToldToOverwrite) {
    codec_.setOverwrite(false);
    folder_.write("in", "Zm9v");
    folder_.write("out", "old");
    EXPECT_EQ(encode(), errors::PathFileAccess);
    EXPECT_EQ(decode(), errors::PathFileAccess);
    EXPECT_EQ(folder_.read("out"), "old");
    std::filesystem::remove(folder_.path("out"));
    EXPECT_EQ(decode(), 0);
    EXPECT_EQ(folder_.read("out"), "foo");
}

TEST_F(NetCodeTest, TheSourceIsNeverTheTargetToo) {
    folder_.write("in", "Zm9v");
    for (const Action action : {Action::Encode, Action::Decode}) {
        EXPECT_EQ(run(action, QStringLiteral("in"), QStringLiteral("in")), errors::PathFileAccess);
        EXPECT_EQ(run(action, QStringLiteral("in"), QStringLiteral(".\\in")), errors::PathFileAccess);
        EXPECT_EQ(folder_.read("in"), "Zm9v");
    }
}

TEST_F(NetCodeTest, ASourceThatIsNoPlainFileIsAnErrorAndNeverWaits) {
    std::filesystem::create_directory(folder_.path("folder"));
    ASSERT_EQ(::mkfifo(folder_.path("pipe").c_str(), 0600), 0);
    std::filesystem::create_symlink("/dev/zero", folder_.path("zero"));
    std::filesystem::create_symlink(folder_.path("nowhere"), folder_.path("dangling"));
    const std::vector<std::pair<const char*, int>> sources{
        {"missing", errors::FileNotFound},   {"missing\\file", errors::FileNotFound},
        {"folder", errors::PathFileAccess},  {"pipe", errors::PathFileAccess},
        {"zero", errors::PathFileAccess},    {"dangling", errors::PathFileAccess},
        {"pipe\\file", errors::FileNotFound}};
    for (const auto& [name, error] : sources) {
        EXPECT_EQ(encode(QString::fromLatin1(name)), error) << name;
        EXPECT_EQ(decode(QString::fromLatin1(name)), error) << name;
        EXPECT_FALSE(exists("out")) << name;
    }
}

TEST_F(NetCodeTest, ASourceThatMayNotBeReadIsAnError) {
    std::filesystem::permissions(folder_.write("in", "Zm9v"), std::filesystem::perms::none);
    int error = 0;
    ASSERT_TRUE(support::withoutPrivileges([&] { error = encode(); }));
    EXPECT_EQ(error, errors::PathFileAccess);
    EXPECT_FALSE(exists("out"));
}

TEST_F(NetCodeTest, DrivesThatAreNotReadyAreAnError) {
    folder_.write("in", "Zm9v");
    codec_.setSourceFile(QStringLiteral("Q:\\in"));
    codec_.setTargetFile(QStringLiteral("T:\\out"));
    EXPECT_EQ(errorNumberOf([&] { codec_.setAction(Action::Encode); }), errors::DeviceUnavailable);
    codec_.setSourceFile(QStringLiteral("T:\\in"));
    codec_.setTargetFile(QStringLiteral("Q:\\out"));
    EXPECT_EQ(errorNumberOf([&] { codec_.setAction(Action::Decode); }), errors::DeviceUnavailable);
}

TEST_F(NetCodeTest, ATargetInAFolderThatIsMissingIsAnError) {
    folder_.write("in", "Zm9v");
    const QString target = QStringLiteral("missing\\out");
    EXPECT_EQ(run(Action::Encode, QStringLiteral("in"), target), errors::PathFileAccess);
    EXPECT_EQ(run(Action::Decode, QStringLiteral("in"), target), errors::PathFileAccess);
}

/** Which targets are refused is tested with PrivateOutput; this tests that NetCode uses it. */
TEST_F(NetCodeTest, ATargetThatIsALinkIsNotFollowed) {
    folder_.write("in", "Zm9v");
    folder_.write("key", "secret");
    std::filesystem::create_symlink(folder_.path("key"), folder_.path("out"));
    EXPECT_EQ(encode(), errors::PathFileAccess);
    EXPECT_EQ(decode(), errors::PathFileAccess);
    EXPECT_EQ(folder_.read("key"), "secret");
}

TEST_F(NetCodeTest, ASourceThatGrowsWhileItIsReadLeavesNoEncodedFile) {
    folder_.write("in", randomBytes(3'000'000, 1));
    codec_.Progress = [this](std::int64_t /*bytesDone*/, std::int64_t /*bytesInAll*/) {
        support::grow(folder_.path("in"), "more");
    };
    EXPECT_EQ(encode(), errors::DeviceInputOutput);
    EXPECT_FALSE(exists("out"));
}

TEST_F(NetCodeTest, ASourceThatShrinksWhileItIsReadLeavesTheOldDecodedFile) {
    folder_.write("in", std::string(3'000'000, 'A'));
    folder_.write("out", "old");
    codec_.Progress = [this](std::int64_t bytesDone, std::int64_t /*bytesInAll*/) {
        std::filesystem::resize_file(folder_.path("in"), static_cast<std::uintmax_t>(bytesDone) + 4);
    };
    EXPECT_EQ(decode(), errors::DeviceInputOutput);
    EXPECT_EQ(folder_.read("out"), "old");
    EXPECT_EQ(folder_.entries(), 2U);
}

TEST_F(NetCodeTest, CutTextLeavesTheOldFileOrNone) {
    folder_.write("in", std::string(100'001, 'A'));
    EXPECT_EQ(decode(), errors::BadEncodedText);
    EXPECT_EQ(folder_.entries(), 1U);
    folder_.write("out", "old");
    EXPECT_EQ(decode(), errors::BadEncodedText);
    EXPECT_EQ(folder_.read("out"), "old");
    EXPECT_EQ(folder_.entries(), 2U);
}

TEST_F(NetCodeTest, AFileSizeLimitLeavesNoHalfFileWhereverItStrikes) {
    folder_.write("in", std::string(400'000, 'A'));
    for (const rlim_t limit : {0U, 1U, 65'536U, 299'999U}) {
        int encoding = 0;
        int decoding = 0;
        {
            const support::FileSizeLimit fileSizeLimit(limit);
            encoding = run(Action::Encode, QStringLiteral("in"), QStringLiteral("encoded"));
            decoding = run(Action::Decode, QStringLiteral("in"), QStringLiteral("decoded"));
        }
        EXPECT_EQ(encoding, errors::DeviceInputOutput) << limit;
        EXPECT_EQ(decoding, errors::DeviceInputOutput) << limit;
        EXPECT_EQ(folder_.entries(), 1U) << limit;
    }
}

TEST_F(NetCodeTest, AFullDiskLeavesNoHalfFile) {
    int encoding = 0;
    int decoding = 0;
    std::size_t entries = 0;
    std::string old;
    const bool mounted = support::onSmallDisk(folder_.path(), [&] {
        folder_.write("in", std::string(40'000, 'A'));
        folder_.write("out", "old");
        encoding = run(Action::Encode, QStringLiteral("in"), QStringLiteral("encoded"));
        decoding = decode();
        old = folder_.read("out");
        entries = folder_.entries();
    });
    if (!mounted) {
        GTEST_SKIP() << "a small disk can be mounted by the administrator only";
    }
    EXPECT_EQ(encoding, errors::DiskFull);
    EXPECT_EQ(decoding, errors::DiskFull);
    EXPECT_EQ(old, "old");
    EXPECT_EQ(entries, 2U);
}

TEST_F(NetCodeTest, ReportsProgressUpToTheEnd) {
    folder_.write("in", std::string(5'000'000, 'A'));
    std::vector<std::pair<std::int64_t, std::int64_t>> reports;
    codec_.Progress = [&](std::int64_t bytesDone, std::int64_t bytesInAll) {
        reports.emplace_back(bytesDone, bytesInAll);
    };
    EXPECT_EQ(encode(), 0);
    ASSERT_GE(reports.size(), 4U);
    EXPECT_TRUE(std::is_sorted(reports.begin(), reports.end()));
    EXPECT_EQ(reports.back(), (std::pair<std::int64_t, std::int64_t>{5'000'000, 5'000'000}));
    EXPECT_EQ(reports.front().second, 5'000'000);
}

TEST_F(NetCodeTest, AnErrorOfTheProgressListenerEndsTheWork) {
    folder_.write("in", std::string(2'000'000, 'A'));
    codec_.Progress = [](std::int64_t /*bytesDone*/, std::int64_t /*bytesInAll*/) {
        throw platform::RuntimeError(errors::Overflow);
    };
    EXPECT_EQ(encode(), errors::Overflow);
    EXPECT_EQ(decode(), errors::Overflow);
    EXPECT_EQ(folder_.entries(), 1U);
}

TEST_F(NetCodeTest, ADecodedFileIsOnTheDiskBeforeItCountsAndAnEncodedOneIsNotWaitedFor) {
    folder_.write("in", "Zm9v");
    folder_.write("out", "old");
    {
        const support::FileSteps steps;
        EXPECT_EQ(decode(), 0);
        EXPECT_THAT(steps.calls(), testing::ElementsAre("write", "fsync", "rename", "fsync"));
    }
    const support::FileSteps steps;
    EXPECT_EQ(encode(), 0);
    EXPECT_THAT(steps.calls(), testing::Not(testing::Contains("fsync")));
}

TEST_F(NetCodeTest, AMediumThatFailsWhenItIsWaitedForLeavesTheOldDecodedFile) {
    folder_.write("in", "Zm9v");
    folder_.write("out", "old");
    for (const auto& [systemError, error] :
         {std::pair{EIO, errors::DeviceInputOutput}, std::pair{ENOSPC, errors::DiskFull},
          std::pair{ENODEV, errors::DeviceUnavailable}}) {
        const support::FileSteps steps(
            support::FileSteps::Trouble{1, support::FileSteps::Then::Fail, systemError});
        EXPECT_EQ(decode(), error);
        EXPECT_EQ(folder_.read("out"), "old");
        EXPECT_EQ(folder_.entries(), 2U);
    }
}

TEST_F(NetCodeTest, TextThatIsNotBase64LeavesTheOldDecodedFile) {
    folder_.write("out", "old");
    for (const char* text : {"\r\n{\"a\": 1}\r\n--\r\n", "Content-ID: <1>\r\n\r\nplain text\r\n--\r\n"}) {
        folder_.write("in", text);
        EXPECT_EQ(decode(), errors::BadEncodedText);
        EXPECT_EQ(folder_.read("out"), "old");
    }
}

TEST_F(NetCodeTest, AClosingTextStandsBehindTheEncodedTextOnly) {
    folder_.write("in", "abc");
    codec_.setClosingText("--end--\r\n");
    EXPECT_EQ(encode(), 0);
    EXPECT_EQ(folder_.read("out"), "YWJj\r\n--end--\r\n");
    folder_.write("in", "YWJj");
    EXPECT_EQ(run(Action::Decode, QStringLiteral("in"), QStringLiteral("decoded")), 0);
    EXPECT_EQ(folder_.read("decoded"), "abc");
}

TEST_F(NetCodeTest, WhatAnotherProcessEncodesIntoTheSameTargetLeavesTheHeldFileAsItIs) {
    folder_.write("in", "mine");
    folder_.write("secret", "the other one's");
    ASSERT_EQ(encode(), 0);
    const platform::HeldFile held = codec_.takeEncodedFile();
    ASSERT_NE(held, nullptr);
    EXPECT_EQ(codec_.takeEncodedFile(), nullptr);
    const pid_t other = ::fork();
    ASSERT_GE(other, 0);
    if (other == 0) {
        ::_exit(encode(QStringLiteral("secret")));
    }
    int status = -1;
    ASSERT_EQ(::waitpid(other, &status, 0), other);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(contentOf(held), "bWluZQ==\r\n");
    EXPECT_EQ(folder_.read("out"), "dGhlIG90aGVyIG9uZSdz\r\n");
}

long peakMemoryKilobytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

TEST_F(NetCodeTest, NeedsNoMoreMemoryForALargeFile) {
    folder_.write("in", "");
    constexpr std::uintmax_t bytes = support::fewerIfSanitized(100'000'000U, 10U);
    std::filesystem::resize_file(folder_.path("in"), bytes);
    const long before = peakMemoryKilobytes();
    EXPECT_EQ(run(Action::Encode, QStringLiteral("in"), QStringLiteral("text")), 0);
    EXPECT_EQ(run(Action::Decode, QStringLiteral("text"), QStringLiteral("out")), 0);
    EXPECT_EQ(std::filesystem::file_size(folder_.path("out")), bytes);
    EXPECT_LT(peakMemoryKilobytes() - before, 4096);
}

} // namespace
