#include "platform/windows_directory.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

namespace {

using platform::GetWindowsDirectoryA;

TEST(WindowsDirectory, IsADrivePathThatEndsInNul) {
    std::array<char, 260> buffer{};
    buffer.fill('x');
    const std::size_t length = GetWindowsDirectoryA(buffer.data(), buffer.size());
    EXPECT_EQ(std::string(buffer.data()), "Z:\\etc");
    EXPECT_EQ(length, 6U);
    EXPECT_EQ(buffer.at(length + 1), 'x');
}

TEST(WindowsDirectory, ABufferThatIsTooSmallIsLeftAlone) {
    std::array<char, 7> buffer{};
    buffer.fill('x');
    EXPECT_EQ(GetWindowsDirectoryA(buffer.data(), 6), 0U);
    EXPECT_EQ(std::string(buffer.data(), buffer.size()), "xxxxxxx");
}

TEST(WindowsDirectory, ABufferThatIsJustLargeEnoughIsFilled) {
    std::array<char, 8> buffer{};
    buffer.fill('x');
    EXPECT_EQ(GetWindowsDirectoryA(buffer.data(), 7), 6U);
    EXPECT_EQ(std::string(buffer.data()), "Z:\\etc");
    EXPECT_EQ(buffer.back(), 'x');
}

} // namespace
