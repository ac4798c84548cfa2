#include "doctor/places.h"
#include "doctor/settings_seen.h"
#include "doctor/surroundings.h"
#include "platform/only_program.h"
#include "tests/doctor/findings.h"
#include "tests/support/drive_stands_for.h"
#include "tests/support/window_test.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <system_error>

namespace filesystem = std::filesystem;

namespace {
using doctor::Finding;
using doctor::Grade;
using support::findingOf;
using support::findingWith;

class DoctorsPlaces : public support::WindowTest {
  protected:
    DoctorsPlaces() {
        settings.SaveDirectory = QStringLiteral("S:\\");
        settings.SendAttachments = QStringLiteral("yes");
    }

    std::vector<Finding> rights() { return doctor::findingsOfRights(doctor::readSettingsFile().error); }

    support::DriveStandsFor saving{'S', folder.qtPath(".")};
    support::DriveStandsFor home{'C', folder.qtPath(".")};
    email::Settings settings;
};

TEST_F(DoctorsPlaces, AFolderOfOnesOwnIsAllRight) {
    for (const Finding& finding : doctor::findingsOfFolders(settings)) {
        EXPECT_EQ(finding.grade, Grade::Info) << finding.text.toStdString();
    }
    EXPECT_TRUE(
        findingOf("Drives:", doctor::findingsOfFolders(settings)).text.contains(QStringLiteral("S: is ")));
}

TEST_F(DoctorsPlaces, ADriveThatIsNotReadyIsMetAtSaving) {
    settings.SaveDirectory = QStringLiteral("Q:\\");
    const Finding finding = findingWith(68, doctor::findingsOfFolders(settings));
    EXPECT_EQ(finding.grade, Grade::Met);
    EXPECT_EQ(finding.box, QStringLiteral("Please make sure disk is ready. Error#68"));
}

TEST_F(DoctorsPlaces, AFolderThatIsNotThereIsMetAtSaving) {
    settings.SaveDirectory = QStringLiteral("S:\\none\\");
    EXPECT_EQ(findingWith(75, doctor::findingsOfFolders(settings)).box,
              QStringLiteral("Please make sure disk is ready. Error#75"));
}

TEST_F(DoctorsPlaces, AnAttachmentsFileThatIsALinkIsMetAtOpening) {
    filesystem::create_symlink("elsewhere", folder.path("_tolk.tmp"));
    EXPECT_EQ(findingWith(75, doctor::findingsOfFolders(settings)).box,
              QStringLiteral("There is an error in the message header. Error# 75"));
}

TEST_F(DoctorsPlaces, AStateFolderThatCannotBeMadeIsMetAtWriting) {
    const support::EnvironmentVariable state("XDG_STATE_HOME", folder.write("file", "").string());
    EXPECT_EQ(findingWith(75, doctor::findingsOfFolders(settings)).box,
              QStringLiteral("This letter is not kept. Error# 75"));
}

TEST_F(DoctorsPlaces, AFileThatEverybodyMayWriteIsToldWithItsReason) {
    writeSettings(support::schoolSettings(QStringLiteral("h")));
    EXPECT_TRUE(rights().empty());
    filesystem::permissions(folder.path("tolk.ini"), filesystem::perms::others_write,
                            filesystem::perm_options::add);
    const Finding finding = findingWith(75, rights());
    EXPECT_EQ(finding.grade, Grade::Stops);
    EXPECT_TRUE(finding.text.contains(QStringLiteral("Everybody may write")));
    EXPECT_TRUE(finding.advice.contains(QStringLiteral("chmod o-w")));
}

TEST_F(DoctorsPlaces, ALinkThatLeadsNowhereIsToldWithItsTarget) {
    filesystem::create_symlink("/no/such/folder/tolk.ini", folder.path("tolk.ini"));
    EXPECT_TRUE(findingWith(75, rights()).text.contains(QStringLiteral("/no/such/folder/tolk.ini")));
}

TEST_F(DoctorsPlaces, RightsThatLetOthersChangeTheFileAreTold) {
    writeSettings(support::schoolSettings(QStringLiteral("h")));
    filesystem::permissions(folder.path("tolk.ini"), filesystem::perms::group_write,
                            filesystem::perm_options::add);
    EXPECT_EQ(findingOf("The group", rights()).grade, Grade::Info);
    filesystem::permissions(folder.path(), filesystem::perms::others_write, filesystem::perm_options::add);
    EXPECT_EQ(findingOf("put another tolk.ini", rights()).grade, Grade::Met);
}

TEST_F(DoctorsPlaces, AProgramThatWorksHereIsSeenByItsLock) {
    const support::EnvironmentVariable runtime("XDG_RUNTIME_DIR", folder.path().string());
    filesystem::permissions(folder.path(), filesystem::perms::owner_all);
    EXPECT_FALSE(platform::OnlyProgram::worksHere());
    EXPECT_FALSE(filesystem::exists(folder.path("brindlewake")));
    {
        platform::OnlyProgram program;
        ASSERT_EQ(program.start({}), platform::OnlyProgram::Start::First);
        EXPECT_TRUE(platform::OnlyProgram::worksHere());
        EXPECT_TRUE(findingOf("runs in this folder", doctor::findingsOfFolders(settings))
                        .box.startsWith(QStringLiteral("Brindlewake is already running in this folder")));
    }
    EXPECT_FALSE(platform::OnlyProgram::worksHere());
}

TEST_F(DoctorsPlaces, LogoAndSoundAreLookedFor) {
    settings.PlayWav = QStringLiteral("yes");
    auto findings = doctor::findingsOfSurroundings(settings);
    EXPECT_FALSE(findingOf("No tolk.jpg", findings).text.isEmpty());
    EXPECT_EQ(findingOf("No Gotmail.wav", findings).grade, Grade::Met);
    folder.write("tolk.jpg", "no picture");
    folder.write("Gotmail.wav", "RIFF");
    findings = doctor::findingsOfSurroundings(settings);
    EXPECT_EQ(findingWith(481, findings).grade, Grade::Met);
    EXPECT_TRUE(findingOf("No Gotmail.wav", findings).text.isEmpty());
    settings.PlayWav = QStringLiteral("no");
    filesystem::remove(folder.path("Gotmail.wav"));
    EXPECT_TRUE(findingOf("Gotmail.wav", doctor::findingsOfSurroundings(settings)).text.isEmpty());
}

TEST_F(DoctorsPlaces, WithoutADefaultPrinterPrintingEndsInError482) {
    const support::EnvironmentVariable noServer("CUPS_SERVER", folder.path("no.socket").string());
    const support::EnvironmentVariable noFiles("HOME", folder.path().string());
    settings.AllowPrinting = QStringLiteral("yes");
    const Finding finding = findingWith(482, doctor::findingsOfSurroundings(settings));
    EXPECT_EQ(finding.grade, Grade::Met);
    EXPECT_TRUE(finding.box.startsWith(QStringLiteral("Run-time error 482")));
    settings.AllowPrinting = QStringLiteral("no");
    EXPECT_TRUE(findingWith(482, doctor::findingsOfSurroundings(settings)).text.isEmpty());
}

TEST_F(DoctorsPlaces, FontsAndLibrariesAreNamed) {
    const auto findings = doctor::findingsOfSurroundings(settings);
    EXPECT_FALSE(findingOf("Messages are printed in", findings).text.isEmpty());
    EXPECT_TRUE(findingOf("Qt 6", findings).text.contains(QStringLiteral("OpenSSL")));
}
} // namespace
