#include "platform/runtime_error.h"
#include "platform/user_folders.h"
#include "tests/support/environment.h"
#include "tests/support/file_faults.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using platform::errorNumberOf;
using support::EnvironmentVariable;
using support::modeOf;
using support::TemporaryFolder;
namespace errors = platform::errors;
namespace filesystem = std::filesystem;

class UserFolders : public testing::Test {
  protected:
    static int errorOfStateFolder() {
        return errorNumberOf([] { platform::stateFolder(); });
    }

    TemporaryFolder folder;
    EnvironmentVariable home{"HOME", folder.path("home").string()};
    EnvironmentVariable state{"XDG_STATE_HOME", folder.path("state").string()};
    EnvironmentVariable runtime{"XDG_RUNTIME_DIR", folder.path("runtime").string()};
};

TEST_F(UserFolders, TheStateFolderIsMadeForTheUserAlone) {
    const mode_t old = ::umask(0);
    EXPECT_EQ(platform::stateFolder().path, folder.qtPath("state/brindlewake"));
    ::umask(old);
    EXPECT_EQ(modeOf(folder.path("state")), 0700U);
    EXPECT_EQ(modeOf(folder.path("state/brindlewake")), 0700U);
    EXPECT_EQ(platform::stateFolder().path, folder.qtPath("state/brindlewake"));
}

TEST_F(UserFolders, WithoutANameOfItsOwnTheStateFolderLiesInTheHomeFolder) {
    for (const char* const none : {"", "relative/path"}) {
        const EnvironmentVariable noState("XDG_STATE_HOME", none);
        EXPECT_EQ(platform::stateFolder().path, folder.qtPath("home/.local/state/brindlewake"));
    }
}

TEST_F(UserFolders, RightsThatOthersHaveToAnOlderFolderAreTakenAway) {
    filesystem::create_directories(folder.path("state/brindlewake"));
    filesystem::permissions(folder.path("state/brindlewake"), filesystem::perms::all);
    platform::stateFolder();
    EXPECT_EQ(modeOf(folder.path("state/brindlewake")), 0700U);
}

TEST_F(UserFolders, ALinkOrAFileInAFoldersPlaceIsAnError) {
    filesystem::create_directory(folder.path("state"));
    filesystem::create_directory(folder.path("elsewhere"));
    filesystem::create_symlink(folder.path("elsewhere"), folder.path("state/brindlewake"));
    EXPECT_EQ(errorOfStateFolder(), errors::PathFileAccess);
    filesystem::remove(folder.path("state/brindlewake"));
    folder.write("state/brindlewake", "");
    EXPECT_EQ(errorOfStateFolder(), errors::PathFileAccess);
}

TEST_F(UserFolders, SomebodyElsesFolderIsAnError) {
    filesystem::create_directories(folder.path("state/brindlewake"));
    if (::chown(folder.path("state/brindlewake").c_str(), 1234, 1234) != 0) {
        GTEST_SKIP() << "giving a folder away needs more rights";
    }
    EXPECT_EQ(errorOfStateFolder(), errors::PathFileAccess);
}

TEST_F(UserFolders, AnAdministratorMakesNoneInAMembersFolder) {
    filesystem::create_directory(folder.path("state"));
    if (::chown(folder.path("state").c_str(), 1234, 1234) != 0) {
        GTEST_SKIP() << "giving a folder away needs more rights";
    }
    EXPECT_EQ(errorOfStateFolder(), errors::PathFileAccess);
    EXPECT_FALSE(filesystem::exists(folder.path("state/brindlewake")));
}

TEST_F(UserFolders, TheRuntimeFolderIsTheOneOfTheSession) {
    filesystem::create_directory(folder.path("runtime"));
    EXPECT_EQ(platform::runtimeFolder().path, folder.qtPath("runtime/brindlewake"));
    EXPECT_EQ(modeOf(folder.path("runtime/brindlewake")), 0700U);
}

TEST_F(UserFolders, ARuntimeFolderThatOthersMayWriteIntoIsNotUsed) {
    filesystem::create_directory(folder.path("runtime"));
    filesystem::permissions(folder.path("runtime"), filesystem::perms::all);
    EXPECT_NE(platform::runtimeFolder().path, folder.qtPath("runtime/brindlewake"));
    EXPECT_FALSE(filesystem::exists(folder.path("runtime/brindlewake")));
}

} // namespace
