#include "platform/private_file.h"
#include "platform/runtime_error.h"
#include "tests/support/file_faults.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <string_view>
#include <sys/stat.h>

namespace {

using platform::errorNumberOf;
using platform::RegularInput;
using support::TemporaryFolder;
namespace errors = platform::errors;
namespace filesystem = std::filesystem;

std::string contentOf(RegularInput& input, std::size_t pieceBytes) {
    std::string content;
    std::string buffer(pieceBytes, '\0');
    for (std::string_view piece = input.read(buffer); !piece.empty(); piece = input.read(buffer)) {
        content += piece;
    }
    return content;
}

int errorOfOpening(const QString& path) {
    return errorNumberOf([&] { const RegularInput input(path); });
}

TEST(RegularInput, ReadsAFileInPiecesOfEverySize) {
    const TemporaryFolder folder;
    folder.write("f", "0123456789");
    for (const std::size_t pieceBytes : {1U, 3U, 10U, 1000U}) {
        RegularInput input(folder.qtPath("f"));
        EXPECT_EQ(input.size(), 10);
        EXPECT_EQ(contentOf(input, pieceBytes), "0123456789");
        EXPECT_EQ(input.bytesRead(), 10);
    }
}

TEST(RegularInput, FollowsALinkToAPlainFile) {
    const TemporaryFolder folder;
    folder.write("f", "content");
    filesystem::create_symlink(folder.path("f"), folder.path("link"));
    RegularInput input(folder.qtPath("link"));
    EXPECT_EQ(contentOf(input, 100), "content");
}

TEST(RegularInput, OpensPlainFilesOnlyAndNeverWaits) {
    const TemporaryFolder folder;
    folder.write("f", "content");
    filesystem::create_directory(folder.path("folder"));
    ASSERT_EQ(::mkfifo(folder.path("pipe").c_str(), 0600), 0);
    filesystem::create_symlink(folder.path("nowhere"), folder.path("dangling"));
    filesystem::create_symlink(folder.path("circle"), folder.path("circle"));
    EXPECT_EQ(errorOfOpening(QString()), errors::FileNotFound);
    EXPECT_EQ(errorOfOpening(folder.qtPath("missing")), errors::FileNotFound);
    EXPECT_EQ(errorOfOpening(folder.qtPath("missing/f")), errors::FileNotFound);
    EXPECT_EQ(errorOfOpening(folder.qtPath("f/f")), errors::FileNotFound);
    for (const char* name : {"folder", "pipe", "dangling", "circle"}) {
        EXPECT_EQ(errorOfOpening(folder.qtPath(name)), errors::PathFileAccess) << name;
    }
    EXPECT_EQ(errorOfOpening(QStringLiteral("/dev/zero")), errors::PathFileAccess);
    EXPECT_EQ(errorOfOpening(folder.qtPath("f") + QChar(u'\0')), errors::PathFileAccess);
}

TEST(RegularInput, AFileThatMayNotBeReadIsAnError) {
    const TemporaryFolder folder;
    filesystem::permissions(folder.write("f", "content"), filesystem::perms::none);
    int error = 0;
    ASSERT_TRUE(support::withoutPrivileges([&] { error = errorOfOpening(folder.qtPath("f")); }));
    EXPECT_EQ(error, errors::PathFileAccess);
}

TEST(RegularInput, AFileThatHasShrunkIsAnError) {
    const TemporaryFolder folder;
    folder.write("f", "0123456789");
    RegularInput input(folder.qtPath("f"));
    filesystem::resize_file(folder.path("f"), 9);
    EXPECT_EQ(errorNumberOf([&] { contentOf(input, 4); }), errors::DeviceInputOutput);
}

TEST(RegularInput, AFileThatHasGrownIsAnError) {
    const TemporaryFolder folder;
    folder.write("f", "0123456789");
    for (const std::size_t pieceBytes : {1U, 4U, 10U, 1000U}) {
        RegularInput input(folder.qtPath("f"));
        support::grow(folder.path("f"), "x");
        EXPECT_EQ(errorNumberOf([&] { contentOf(input, pieceBytes); }), errors::DeviceInputOutput);
    }
}

/** Files below /proc have size 0, so their content cannot be told from growth. */
TEST(RegularInput, AFileThatTheSystemMakesUpIsAnError) {
    RegularInput input(QStringLiteral("/proc/self/status"));
    EXPECT_EQ(errorNumberOf([&] { contentOf(input, 1000); }), errors::DeviceInputOutput);
}

TEST(RegularInput, KnowsItsFileUnderOtherNames) {
    const TemporaryFolder folder;
    folder.write("f", "content");
    folder.write("other", "content");
    filesystem::create_symlink(folder.path("f"), folder.path("link"));
    filesystem::create_hard_link(folder.path("f"), folder.path("name"));
    const RegularInput input(folder.qtPath("f"));
    for (const char* name : {"f", "link", "name", "../f/../f"}) {
        EXPECT_EQ(input.isFileOf(folder.qtPath(name)), std::string_view(name).find('/') == std::string::npos)
            << name;
    }
    EXPECT_FALSE(input.isFileOf(folder.qtPath("other")));
    EXPECT_FALSE(input.isFileOf(folder.qtPath("missing")));
}

} // namespace
