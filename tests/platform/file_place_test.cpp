#include "platform/file_place.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

using platform::isSamePlace;
using support::TemporaryFolder;
namespace filesystem = std::filesystem;

class FilePlace : public testing::Test {
  protected:
    bool same(const char* one, const char* other) const {
        const bool there = isSamePlace(folder_.qtPath(one), folder_.qtPath(other));
        EXPECT_EQ(isSamePlace(folder_.qtPath(other), folder_.qtPath(one)), there);
        return there;
    }

    TemporaryFolder folder_;
};

TEST_F(FilePlace, AFileIsKnownByEverySpellingOfItsPath) {
    filesystem::create_directory(folder_.path("sub"));
    for (const bool there : {false, true}) {
        EXPECT_TRUE(same("f", "f"));
        EXPECT_TRUE(same("f", "./f"));
        EXPECT_TRUE(same("f", "sub/..//f"));
        EXPECT_FALSE(same("f", "g"));
        EXPECT_FALSE(same("f", "sub/f"));
        if (!there) {
            folder_.write("f", "x");
        }
    }
}

TEST_F(FilePlace, AFolderUnderASecondNameIsTheSameFolder) {
    filesystem::create_directory(folder_.path("sub"));
    filesystem::create_directory_symlink(folder_.path("sub"), folder_.path("link"));
    EXPECT_TRUE(same("sub/f", "link/f"));
    folder_.write("sub/f", "x");
    EXPECT_TRUE(same("sub/f", "link/f"));
}

TEST_F(FilePlace, LinksLeadToTheirFile) {
    folder_.write("f", "x");
    filesystem::create_symlink("f", folder_.path("link"));
    filesystem::create_symlink(folder_.path("link"), folder_.path("second"));
    filesystem::create_hard_link(folder_.path("f"), folder_.path("hard"));
    EXPECT_TRUE(same("f", "link"));
    EXPECT_TRUE(same("f", "second"));
    EXPECT_TRUE(same("f", "hard"));
    EXPECT_TRUE(same("link", "hard"));
}

TEST_F(FilePlace, ALinkToAFileThatIsNotThereLeadsToItsPlaceAllTheSame) {
    filesystem::create_symlink(folder_.path("f"), folder_.path("link"));
    EXPECT_TRUE(same("link", "link"));
    EXPECT_TRUE(same("f", "link"));
    EXPECT_FALSE(same("g", "link"));
}

TEST_F(FilePlace, ACircleOfLinksAndAMissingFolderLeadNowhere) {
    filesystem::create_symlink("b", folder_.path("a"));
    filesystem::create_symlink("a", folder_.path("b"));
    EXPECT_FALSE(same("a", "b"));
    EXPECT_FALSE(same("none/f", "none/f"));
}

TEST_F(FilePlace, WhileNeitherFileIsThereCaseDoesNotCount) {
    EXPECT_TRUE(same("Settings.INI", "settings.ini"));
    EXPECT_FALSE(same("settings.ini", "settings.in"));
}

TEST_F(FilePlace, OfTwoFilesThatDifferInCaseTheFileSystemDecides) {
    folder_.write("settings.ini", "x");
    const bool oneName = filesystem::exists(folder_.path("SETTINGS.INI"));
    EXPECT_EQ(same("SETTINGS.INI", "settings.ini"), oneName);
}

TEST_F(FilePlace, ARelativePathStartsInTheCurrentFolder) {
    const filesystem::path before = filesystem::current_path();
    filesystem::current_path(folder_.path());
    EXPECT_TRUE(isSamePlace(QStringLiteral("f"), folder_.qtPath("f")));
    EXPECT_TRUE(isSamePlace(QStringLiteral("./f"), folder_.qtPath("f")));
    folder_.write("f", "x");
    EXPECT_TRUE(isSamePlace(QStringLiteral("f"), folder_.qtPath("f")));
    filesystem::current_path(before);
}

} // namespace
