#include "platform/drives.h"
#include "platform/runtime_error.h"
#include "tests/support/environment.h"
#include "tests/support/temporary_folder.h"

#include <QDir>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using platform::drivePath;
using platform::errorNumberOf;
using platform::nativePath;
using support::TemporaryFolder;
using Variable = support::EnvironmentVariable;
namespace errors = platform::errors;

class DrivesTest : public testing::Test {
  protected:
    QString native(const char16_t* path) { return nativePath(QString::fromUtf16(path)); }

    QString drive(const char16_t* path) { return drivePath(QString::fromUtf16(path)); }

    Variable home_{"HOME", "/home/ann"};
    Variable diskB_{"BRINDLEWAKE_DRIVE_B", "/srv/disk b"};
    Variable diskH_{"BRINDLEWAKE_DRIVE_H", "/home/ann/mail/"};
};

TEST_F(DrivesTest, LettersStandForFolders) {
    EXPECT_EQ(native(u"C:\\DOCS\\REPORT.TXT"), QStringLiteral("/home/ann/DOCS/REPORT.TXT"));
    EXPECT_EQ(native(u"Z:\\etc\\hosts"), QStringLiteral("/etc/hosts"));
    EXPECT_EQ(native(u"B:\\a"), QStringLiteral("/srv/disk b/a"));
    EXPECT_EQ(native(u"H:\\a"), QStringLiteral("/home/ann/mail/a"));
}

TEST_F(DrivesTest, LettersCountInEitherCase) {
    EXPECT_EQ(native(u"c:\\Docs"), QStringLiteral("/home/ann/Docs"));
    EXPECT_EQ(native(u"b:\\a"), QStringLiteral("/srv/disk b/a"));
}

TEST_F(DrivesTest, ADriveAloneIsItsFolder) {
    EXPECT_EQ(native(u"C:"), QStringLiteral("/home/ann"));
    EXPECT_EQ(native(u"C:\\"), QStringLiteral("/home/ann"));
    EXPECT_EQ(native(u"Z:\\"), QStringLiteral("/"));
    EXPECT_EQ(native(u"Z:"), QStringLiteral("/"));
}

TEST_F(DrivesTest, APathWithoutABackslashAfterTheColonStartsAtTheDrivesFolder) {
    EXPECT_EQ(native(u"B:REPORT.TXT"), QStringLiteral("/srv/disk b/REPORT.TXT"));
}

TEST_F(DrivesTest, SlashesSeparateToo) {
    EXPECT_EQ(native(u"C:/DOCS\\REPORT.TXT"), QStringLiteral("/home/ann/DOCS/REPORT.TXT"));
    EXPECT_EQ(native(u"C:\\\\a"), QStringLiteral("/home/ann/a"));
}

TEST_F(DrivesTest, APathWithoutALetterStaysAsTyped) {
    EXPECT_EQ(native(u"_tolk.tmp"), QStringLiteral("_tolk.tmp"));
    EXPECT_EQ(native(u"folder\\file"), QStringLiteral("folder/file"));
    EXPECT_EQ(native(u"\\folder\\file"), QStringLiteral("/folder/file"));
    EXPECT_EQ(native(u"\\\\server\\share\\F.BIN"), QStringLiteral("//server/share/F.BIN"));
    EXPECT_EQ(native(u""), QString());
    EXPECT_EQ(native(u"1:\\a"), QStringLiteral("1:/a"));
    EXPECT_EQ(native(u"é:a"), QStringLiteral("é:a"));
}

TEST_F(DrivesTest, TheEnvironmentIsAskedFirst) {
    const Variable diskC("BRINDLEWAKE_DRIVE_C", "/srv/c");
    const Variable diskA("BRINDLEWAKE_DRIVE_A", "/srv/a");
    const Variable diskZ("BRINDLEWAKE_DRIVE_Z", "/srv/z");
    EXPECT_EQ(native(u"C:\\x"), QStringLiteral("/srv/c/x"));
    EXPECT_EQ(native(u"A:\\x"), QStringLiteral("/srv/a/x"));
    EXPECT_EQ(native(u"Z:\\x"), QStringLiteral("/srv/z/x"));
}

TEST_F(DrivesTest, AnEmptyVariableNamesNoFolder) {
    const Variable diskC("BRINDLEWAKE_DRIVE_C", "");
    EXPECT_EQ(native(u"C:\\x"), QStringLiteral("/home/ann/x"));
}

TEST_F(DrivesTest, ALetterThatStandsForNothingIsNotReady) {
    EXPECT_EQ(errorNumberOf([&] { native(u"Q:\\a"); }), errors::DeviceUnavailable);
    EXPECT_EQ(errorNumberOf([&] { native(u"q:a"); }), errors::DeviceUnavailable);
}

TEST_F(DrivesTest, ANulInAPathIsAnError) {
    const QString withNul = QStringLiteral("C:\\a") + QChar(u'\0') + QStringLiteral("b");
    EXPECT_EQ(errorNumberOf([&] { nativePath(withNul); }), errors::PathFileAccess);
    EXPECT_EQ(errorNumberOf([&] { drivePath(withNul); }), errors::PathFileAccess);
}

TEST_F(DrivesTest, TheRemovableVolumeIsTheFirstOneBelowTheFoldersForMedia) {
    const auto volume = [](const QStringList& mountedAt) { return platform::removableVolume(mountedAt); };
    const QString stick = QStringLiteral("/media/ann/STICK");
    const QString other = QStringLiteral("/run/media/ann/OTHER");
    EXPECT_EQ(volume({}), QString());
    EXPECT_EQ(volume({QStringLiteral("/"), QStringLiteral("/home")}), QString());
    EXPECT_EQ(volume({QStringLiteral("/media"), QStringLiteral("/mediathek/a")}), QString());
    EXPECT_EQ(volume({QStringLiteral("/"), stick, other}), stick);
    EXPECT_EQ(volume({QStringLiteral("/"), other, stick}), other);
}

TEST_F(DrivesTest, TheWayBackTakesTheDriveThatLeadsFurthest) {
    EXPECT_EQ(drive(u"/home/ann/DOCS/REPORT.TXT"), QStringLiteral("C:\\DOCS\\REPORT.TXT"));
    EXPECT_EQ(drive(u"/home/ann/mail/a/b"), QStringLiteral("H:\\a\\b"));
    EXPECT_EQ(drive(u"/srv/disk b/a"), QStringLiteral("B:\\a"));
    EXPECT_EQ(drive(u"/etc/hosts"), QStringLiteral("Z:\\etc\\hosts"));
    EXPECT_EQ(drive(u"/home/anna/x"), QStringLiteral("Z:\\home\\anna\\x"));
}

TEST_F(DrivesTest, TheWayBackOfADrivesFolderEndsInABackslash) {
    EXPECT_EQ(drive(u"/home/ann"), QStringLiteral("C:\\"));
    EXPECT_EQ(drive(u"/home/ann/"), QStringLiteral("C:\\"));
    EXPECT_EQ(drive(u"/home/ann/mail"), QStringLiteral("H:\\"));
    EXPECT_EQ(drive(u"/"), QStringLiteral("Z:\\"));
}

TEST_F(DrivesTest, TheWayBackMakesThePathAbsolute) {
    EXPECT_EQ(drive(u"/home/ann/../bob/./x//y"), QStringLiteral("Z:\\home\\bob\\x\\y"));
    EXPECT_EQ(nativePath(drive(u"file")), QDir::current().absoluteFilePath(QStringLiteral("file")));
}

TEST_F(DrivesTest, TheWayBackLeadsThereAgain) {
    for (const char16_t* path : {u"/home/ann/a b/c.txt", u"/home/ann/mail/äöü", u"/usr/share/x:y", u"/"}) {
        EXPECT_EQ(nativePath(drive(path)), QString::fromUtf16(path));
    }
}

TEST_F(DrivesTest, AFileWithABackslashInItsNameHasNoDrivePath) {
    EXPECT_EQ(errorNumberOf([&] { drive(u"/home/ann/a\\b"); }), errors::PathFileAccess);
}

TEST_F(DrivesTest, ADrivesFolderMayHaveABackslashInItsName) {
    const Variable diskQ("BRINDLEWAKE_DRIVE_Q", "/srv/q\\q");
    EXPECT_EQ(drive(u"/srv/q\\q/a"), QStringLiteral("Q:\\a"));
    EXPECT_EQ(native(u"Q:\\a"), QStringLiteral("/srv/q\\q/a"));
}

TEST_F(DrivesTest, AFileOutsideEveryDriveHasNoDrivePath) {
    const Variable diskZ("BRINDLEWAKE_DRIVE_Z", "/srv/z");
    EXPECT_EQ(errorNumberOf([&] { drive(u"/etc/hosts"); }), errors::PathFileAccess);
}

TEST_F(DrivesTest, TheListHasEveryDriveInTheOrderOfTheLetters) {
    const TemporaryFolder folder;
    const Variable home("HOME", folder.path("").string());
    const Variable diskA("BRINDLEWAKE_DRIVE_A", "/srv/missing");
    std::vector<std::string> names;
    std::vector<bool> ready;
    for (const platform::Drive& drive : platform::drives()) {
        names.push_back(drive.name.toStdString());
        ready.push_back(drive.ready);
    }
    EXPECT_THAT(names,
                testing::ElementsAre("A: [missing]", "B: [disk b]", "C: [home]", "H: [mail]", "Z: [/]"));
    EXPECT_THAT(ready, testing::ElementsAre(false, false, true, false, true));
}

TEST_F(DrivesTest, TheListHasDriveAEvenWhenNothingIsMounted) {
    const std::vector<platform::Drive> drives = platform::drives();
    ASSERT_FALSE(drives.empty());
    const platform::Drive& first = drives.front();
    EXPECT_EQ(first.letter, QChar(u'A'));
    EXPECT_EQ(first.ready, !first.folder.isEmpty());
    EXPECT_EQ(errorNumberOf([&] { native(u"A:\\x"); }),
              first.folder.isEmpty() ? errors::DeviceUnavailable : errors::None);
}

} // namespace
