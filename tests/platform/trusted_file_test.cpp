#include "platform/runtime_error.h"
#include "platform/trusted_file.h"
#include "tests/support/file_faults.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/vfs.h>
#include <unistd.h>
#include <vector>

namespace {
constexpr std::int64_t kMemoryStick = 0x4d44;
constexpr std::int64_t kExtendedFileSystem = 0xef53;

/** The type that fstatfs() reports for every file system; 0 for the real one. */
std::atomic<std::int64_t> saidFileSystem = 0;
} // namespace

// Replaces the system library's function.
extern "C" int fstatfs(int file, struct statfs* system) noexcept {
    const auto result = static_cast<int>(::syscall(SYS_fstatfs, file, system));
    if (saidFileSystem != 0) {
        system->f_type = saidFileSystem;
    }
    return result;
}

namespace {
namespace errors = platform::errors;

constexpr uid_t kRoot = 0;
constexpr uid_t kReader = 40'001;
constexpr uid_t kStranger = 40'002;

struct Entry {
    uid_t owner = kReader;
    mode_t mode = 0644;
};

struct Case {
    const char* name;
    Entry folder;
    Entry file;
    int error = 0;
};

/** Files of several owners, as a reader who is not root meets them. */
class TrustedFile : public testing::Test {
  public:
    ~TrustedFile() override {
        saidFileSystem = 0;
        std::filesystem::current_path(folderBefore_);
    }

  protected:
    TrustedFile() : folderBefore_(std::filesystem::current_path()) {
        std::filesystem::current_path(folder.path());
    }

    void SetUp() override {
        if (!support::asUser(kReader, [] {})) {
            GTEST_SKIP() << "only root has files of several owners";
        }
    }

    static void give(const std::string& path, const Entry& entry) {
        ASSERT_EQ(::chown(path.c_str(), entry.owner, static_cast<gid_t>(-1)), 0);
        ASSERT_EQ(::chmod(path.c_str(), entry.mode), 0);
    }

    /** Makes the folder with the file "tolk.ini" in it. */
    static void make(const std::string& name, const Entry& place, const Entry& file) {
        std::filesystem::create_directory(name);
        std::ofstream(name + "/tolk.ini") << "ShowSetup=yes\n";
        give(name + "/tolk.ini", file);
        give(name, place);
    }

    static void link(const std::string& target, const std::string& path, uid_t owner) {
        std::filesystem::create_symlink(target, path);
        ASSERT_EQ(::lchown(path.c_str(), owner, static_cast<gid_t>(-1)), 0);
    }

    /** The error when the reader, with this folder as the current one, opens the file in it. */
    static int errorIn(const std::string& place) {
        const auto back = std::filesystem::current_path();
        std::filesystem::current_path(place);
        int error = -1;
        support::asUser(kReader, [&error] {
            error = platform::errorNumberOf([] { platform::openTrusted(QStringLiteral("tolk.ini")); });
        });
        std::filesystem::current_path(back);
        return error;
    }

    const support::TemporaryFolder folder;

  private:
    std::filesystem::path folderBefore_;
};

TEST_F(TrustedFile, IsRefusedWhereAnybodyMayHaveWrittenIt) {
    const std::vector<Case> cases{
        {"Own", {kReader, 0755}, {kReader, 0644}},
        {"OwnPrivate", {kReader, 0700}, {kReader, 0600}},
        {"OfTheAdministrator", {kRoot, 0755}, {kRoot, 0644}},
        {"OfAMemberWhoAdministers", {kStranger, 0755}, {kStranger, 0644}},
        {"GroupsToWrite", {kStranger, 0755}, {kStranger, 0664}},
        {"EverybodysToWrite", {kReader, 0755}, {kReader, 0646}, errors::PathFileAccess},
        {"EverybodysToWriteOfTheAdministrator", {kRoot, 0755}, {kRoot, 0666}, errors::PathFileAccess},
        {"OwnInAnOpenFolder", {kRoot, 0777}, {kReader, 0644}},
        {"OwnInAnOpenStickyFolder", {kRoot, 01777}, {kReader, 0600}},
        {"OfTheAdministratorInAnOpenStickyFolder", {kRoot, 01777}, {kRoot, 0644}},
        {"OfAStrangerInAnOpenFolder", {kRoot, 0777}, {kStranger, 0644}, errors::PathFileAccess},
        {"OfAStrangerInAnOpenStickyFolder", {kRoot, 01777}, {kStranger, 0644}, errors::PathFileAccess},
        {"OfAStrangerInTheGroupsFolder", {kRoot, 0775}, {kStranger, 0644}},
    };
    for (const Case& each : cases) {
        make(each.name, each.folder, each.file);
        EXPECT_EQ(errorIn(each.name), each.error) << each.name;
    }
}

TEST_F(TrustedFile, AtTheEndOfALinkCountsWithItsFolderAndTheFolderOfTheLink) {
    make("common", {kStranger, 0755}, {kStranger, 0644});
    make("open", {kRoot, 01777}, {kStranger, 0644});
    make("written", {kRoot, 0755}, {kRoot, 0646});

    const struct {
        const char* name;
        Entry place;
        std::string target;
        uid_t owner;
        int error;
    } cases[] = {
        {"toCommon", {kReader, 0755}, "../common/tolk.ini", kReader, 0},
        {"toOpen", {kReader, 0755}, "../open/tolk.ini", kReader, errors::PathFileAccess},
        {"toWritten", {kReader, 0755}, "../written/tolk.ini", kReader, errors::PathFileAccess},
        {"fromOpen", {kRoot, 01777}, "../common/tolk.ini", kStranger, errors::PathFileAccess},
        {"ownFromOpen", {kRoot, 01777}, "../common/tolk.ini", kReader, 0},
        {"throughFromOpen", {kReader, 0755}, "../fromOpen/tolk.ini", kReader, errors::PathFileAccess},
        {"nowhere", {kReader, 0755}, "../nothing/tolk.ini", kReader, errors::PathFileAccess},
        {"itself", {kReader, 0755}, "tolk.ini", kReader, errors::PathFileAccess},
    };

    // The links lead through the common parent folder, which the reader must be able to pass.
    ASSERT_EQ(::chmod(folder.path().c_str(), 0711), 0);
    for (const auto& each : cases) {
        std::filesystem::create_directory(each.name);
        link(each.target, std::string(each.name) + "/tolk.ini", each.owner);
        give(each.name, each.place);
        EXPECT_EQ(errorIn(each.name), each.error) << each.name;
    }
}

TEST_F(TrustedFile, OnAFileSystemThatKeepsNoRightsIsTakenAsItIs) {
    make("stick", {kRoot, 0777}, {kStranger, 0777});
    saidFileSystem = kMemoryStick;
    EXPECT_EQ(errorIn("stick"), 0);
    saidFileSystem = kExtendedFileSystem;
    EXPECT_EQ(errorIn("stick"), errors::PathFileAccess);
}

TEST_F(TrustedFile, InAFolderThatMayNotBeSearchedIsNotAMissingOne) {
    make("closed", {kStranger, 0}, {kStranger, 0644});
    EXPECT_EQ(errorIn("closed"), errors::PathFileAccess);
}

TEST(TrustedFileByAnybody, ThatEverybodyMayWriteIsRefused) {
    const support::TemporaryFolder folder;
    const std::string path = folder.write("tolk.ini", "x");
    const auto error = [&] {
        return platform::errorNumberOf([&] { platform::openTrusted(folder.qtPath("tolk.ini")); });
    };
    EXPECT_EQ(error(), 0);
    ASSERT_EQ(::chmod(path.c_str(), 0602), 0);
    EXPECT_EQ(error(), errors::PathFileAccess);
}

TEST(TrustedFileByAnybody, AtTheEndOfALinkOfAnyKindIsOpened) {
    const support::TemporaryFolder folder;
    folder.write("file", "x");
    std::filesystem::create_symlink(folder.path("file"), folder.path("byItsPath"));
    std::filesystem::create_symlink("byItsPath", folder.path("byTwo"));
    for (const char* name : {"byItsPath", "byTwo"}) {
        EXPECT_TRUE(platform::openTrusted(folder.qtPath(name)).isOpen()) << name;
    }
}

TEST(TrustedFileByAnybody, ThatIsMissingIsErrorFiftyThree) {
    const support::TemporaryFolder folder;
    folder.write("file", "x");
    for (const char* name : {"tolk.ini", "folder/tolk.ini", "file/tolk.ini"}) {
        EXPECT_EQ(platform::errorNumberOf([&] { platform::openTrusted(folder.qtPath(name)); }),
                  errors::FileNotFound)
            << name;
    }
}
} // namespace
