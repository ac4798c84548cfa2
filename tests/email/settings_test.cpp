#include "email/settings.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

namespace {

using email::GetWinDirectory;

/** A system call that writes the bytes into the buffer and returns the number it is told to. */
auto callThat(std::string_view writes, std::size_t returns) {
    return [writes, returns](char* buffer, std::size_t size) {
        std::copy_n(writes.begin(), std::min(writes.size(), size), buffer);
        return returns;
    };
}

TEST(WinDirectory, IsThePathThatTheSystemGives) {
    EXPECT_EQ(GetWinDirectory().toStdString(), "Z:\\etc");
}

TEST(WinDirectory, TheCallGetsABufferOf260NulCharacters) {
    std::size_t size = 0;
    bool allNul = false;
    GetWinDirectory([&](char* buffer, std::size_t bufferSize) {
        size = bufferSize;
        allNul = std::all_of(buffer, buffer + bufferSize, [](char character) { return character == '\0'; });
        return std::size_t{0};
    });
    EXPECT_EQ(size, 260U);
    EXPECT_TRUE(allNul);
}

TEST(WinDirectory, AFailedCallGivesTheEmptyTextWhateverTheBufferHolds) {
    EXPECT_EQ(GetWinDirectory(callThat("C:\\WINDOWS", 0)).toStdString(), "");
}

TEST(WinDirectory, TheFirstNulCutsThePathAndTheReturnedLengthDoesNot) {
    using namespace std::string_view_literals;
    EXPECT_EQ(GetWinDirectory(callThat("C:\\WINDOWS\0rest"sv, 3)).toStdString(), "C:\\WINDOWS");
    EXPECT_EQ(GetWinDirectory(callThat("C:\\WINDOWS\0rest"sv, 100'000)).toStdString(), "C:\\WINDOWS");
}

TEST(WinDirectory, ABufferFilledToItsEndIsTakenWhole) {
    const std::string path(300, 'x');
    EXPECT_EQ(GetWinDirectory(callThat(path, 260)).toStdString(), std::string(260, 'x'));
}

TEST(Switches, OnlyTheExactTextYesIsYes) {
    EXPECT_TRUE(email::isYes(QStringLiteral("yes")));
    for (const char* value : {"", "no", "Yes", "YES", " yes", "yes ", "yes\n", "y"}) {
        EXPECT_FALSE(email::isYes(QString::fromLatin1(value))) << value;
    }
}

TEST(Defaults, AreTheseUntilALineIsRead) {
    const email::Settings settings;
    EXPECT_EQ(settings.ShowSetup.toStdString(), "yes");
    EXPECT_EQ(settings.POPServer, settings.SMTPServer);
    EXPECT_EQ(settings.Institution.toStdString(), "Your Name Here");
    EXPECT_EQ(settings.PlayWav.toStdString(), "no");
    EXPECT_EQ(settings.ShowDatabase.toStdString(), "no");
    EXPECT_EQ(settings.SendAttachments.toStdString(), "no");
    EXPECT_EQ(settings.SaveDirectory.toStdString(), "A:\\");
    EXPECT_EQ(settings.AllowPrinting.toStdString(), "no");
    EXPECT_EQ(settings.SaveCopy.toStdString(), "no");
    EXPECT_EQ(settings.ShowGetMail.toStdString(), "no");
    EXPECT_EQ(settings.GetMailEvery, 0);
    EXPECT_EQ(settings.LDAPSearchBase.toStdString(), "c=us");
    EXPECT_EQ(settings.AddressLookup.toStdString(), "Personal Address Book");
}

} // namespace
