// A settings file that is no plain file of lines, or that changes while it is read.

#include "email/settings_file.h"
#include "platform/runtime_error.h"
#include "platform/sequential_file.h"
#include "tests/email/settings_reading.h"
#include "tests/support/file_faults.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

using support::goodLines;
using support::goodValues;
using support::joined;
using support::readFrom;
using support::Reading;
namespace errors = platform::errors;

TEST(SettingsReader, ALineOfAHundredMegabytesIsErrorSeven) {
    const support::TemporaryFolder folder;
    const std::string start = "ShowSetup=yes\r\n[MailServer Info]\r\nPOPServer=pop.school.example\r\n";
    std::filesystem::resize_file(folder.write(email::kSettingsFileName, start), 100U << 20U);
    const Reading reading = readFrom(folder);
    EXPECT_EQ(reading.error, errors::OutOfMemory);
    EXPECT_EQ(reading.settings.POPServer.toStdString(), "pop.school.example");
    EXPECT_EQ(reading.settings.SMTPServer, email::Settings().SMTPServer);
}

TEST(SettingsReader, AFolderOfTheFilesNameIsErrorSeventyFive) {
    const support::TemporaryFolder folder;
    std::filesystem::create_directory(folder.path(email::kSettingsFileName));
    EXPECT_EQ(readFrom(folder).error, errors::PathFileAccess);
}

TEST(SettingsReader, APipeOfTheFilesNameIsErrorSeventyFiveAndDoesNotHang) {
    const support::TemporaryFolder folder;
    ASSERT_EQ(mkfifo(folder.path(email::kSettingsFileName).c_str(), 0600), 0);
    alarm(20); // ends the process should it hang after all
    EXPECT_EQ(readFrom(folder).error, errors::PathFileAccess);
    alarm(0);
}

TEST(SettingsReader, AFileThatMayNotBeReadIsErrorSeventyFiveWithEveryDefault) {
    const support::TemporaryFolder folder;
    ASSERT_EQ(chmod(folder.write(email::kSettingsFileName, joined(goodLines())).c_str(), 0), 0);
    Reading reading;
    ASSERT_TRUE(support::withoutPrivileges([&] { reading = readFrom(folder); }));
    EXPECT_EQ(reading.error, errors::PathFileAccess);
    EXPECT_EQ(reading.values(), Reading().values());
}

/** Reads the file with the change made to it after its third line has been read. */
Reading readWhile(const support::TemporaryFolder& folder, const std::function<void()>& change) {
    Reading reading;
    int linesRead = 0;
    reading.error = platform::errorNumberOf([&] {
        platform::SequentialInput file(folder.qtPath(email::kSettingsFileName));
        const auto nextLine = [&] {
            if (linesRead++ == 3) {
                change();
            }
            return file.nextLine();
        };
        email::readSettings(nextLine, reading.settings, reading.derived, [](bool) {});
    });
    return reading;
}

TEST(SettingsReader, AFileReplacedWhileItIsReadIsReadAsItWas) {
    const support::TemporaryFolder folder;
    // Longer than what is read at once, so that the end is read after the change.
    std::vector<std::string> lines = goodLines();
    lines.at(5) = std::string(200'000, 'x');
    folder.write(email::kSettingsFileName, joined(lines));
    const Reading reading = readWhile(folder, [&] {
        platform::writeWholeFile(folder.qtPath(email::kSettingsFileName),
                                 email::settingsFileText({}, email::Settings()));
    });
    EXPECT_EQ(reading.error, 0);
    EXPECT_EQ(reading.values(), goodValues());
}

TEST(SettingsReader, AFileCutWhileItIsReadIsErrorSixtyTwoWithAllReadSoFar) {
    const support::TemporaryFolder folder;
    std::vector<std::string> lines = goodLines();
    lines.at(5) = std::string(200'000, 'x');
    folder.write(email::kSettingsFileName, joined(lines));
    const Reading reading = readWhile(folder, [&] { folder.write(email::kSettingsFileName, ""); });
    EXPECT_EQ(reading.error, errors::InputPastEndOfFile);
    EXPECT_EQ(reading.settings.DomainName.toStdString(), "school.example");
    EXPECT_EQ(reading.settings.Institution, email::Settings().Institution);
}

TEST(SettingsReader, AFileRemovedWhileItIsReadIsReadToItsEnd) {
    const support::TemporaryFolder folder;
    folder.write(email::kSettingsFileName, joined(goodLines()));
    const Reading reading =
        readWhile(folder, [&] { std::filesystem::remove(folder.path(email::kSettingsFileName)); });
    EXPECT_EQ(reading.error, 0);
    EXPECT_EQ(reading.values(), goodValues());
}

} // namespace
