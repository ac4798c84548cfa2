// The built program in each row of the troubleshooting table in docs/administrator.md that has to do with the
// folder and the settings, in the order of the table.

#include "tests/doctor/doctor_program.h"

#include <QTest>
#include <gtest/gtest.h>

#include <algorithm>

namespace {
using support::DoctorProgram;
using support::Ended;
using support::kMet;
using support::kStops;

TEST_F(DoctorProgram, WithoutSettings) {
    const Ended ended = examineAsIs();
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.grade(53, "You must configure Brindlewake!"), kStops);
}

TEST_F(DoctorProgram, WithFewerLines) {
    folder.write("work/tolk.ini", "ShowSetup=yes\r\n[MailServer Info]\r\n");
    EXPECT_EQ(examineAsIs().grade(62, "Problem starting Brindlewake. Error# 62"), kStops);
}

TEST_F(DoctorProgram, WithAnInsertedLine) {
    const std::string text = email::settingsFileText(fields, email::Settings());
    folder.write("work/tolk.ini", "inserted\r\n" + text);
    EXPECT_EQ(examineAsIs().grade(13, "Problem starting Brindlewake. Error# 13"), kStops);
}

TEST_F(DoctorProgram, WithSettingsThatEverybodyMayWriteOrALinkThatLeadsNowhere) {
    writeWork(fields);
    filesystem::permissions(folder.path("work/tolk.ini"), filesystem::perms::others_write,
                            filesystem::perm_options::add);
    EXPECT_EQ(examineAsIs().grade(75, "Problem starting Brindlewake. Error# 75"), kStops);
    filesystem::remove(folder.path("work/tolk.ini"));
    filesystem::create_symlink("nowhere", folder.path("work/tolk.ini"));
    EXPECT_EQ(examineAsIs().grade(75, "nowhere"), kStops);
}

TEST_F(DoctorProgram, WithASwitchThatIsYesInCapitals) {
    fields.AllowPrinting = QStringLiteral("Yes");
    const Ended ended = examine();
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.grade(0, "AllowPrinting is \"Yes\""), kMet);
}

TEST_F(DoctorProgram, WhileTheProgramRunsInTheFolder) {
    writeWork(fields);
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    const auto running = start({});
    ASSERT_TRUE(QTest::qWaitFor(
        [&] {
            const auto files = everything();
            return std::any_of(files.begin(), files.end(),
                               [](const auto& path) { return path.find(".socket ") != std::string::npos; });
        },
        20'000));
    environment.remove(QStringLiteral("QT_QPA_PLATFORM"));
    const Ended ended = examineAsIs();
    EXPECT_EQ(ended.grade(0, "Brindlewake is already running in this folder"), kMet);
    EXPECT_EQ(running->state(), QProcess::Running);
    running->kill();
    EXPECT_TRUE(running->waitForFinished());
}

TEST_F(DoctorProgram, WhereLettersCannotBeKept) {
    folder.write("home/state", "a file");
    EXPECT_EQ(examine().grade(75, "This letter is not kept. Error# 75"), kMet);
}

TEST_F(DoctorProgram, WithoutLogoAndSound) {
    fields.PlayWav = QStringLiteral("yes");
    const Ended ended = examine();
    EXPECT_FALSE(ended.finding(0, "No tolk.jpg").isEmpty());
    EXPECT_EQ(ended.grade(0, "No Gotmail.wav"), kMet);
}

TEST_F(DoctorProgram, WhereTheAttachmentsFileCannotBeWritten) {
    filesystem::create_symlink("/elsewhere", folder.path("work/_tolk.tmp"));
    EXPECT_EQ(examine().grade(75, "There is an error in the message header. Error# 75"), kMet);
}

TEST_F(DoctorProgram, WithADriveThatIsNotReady) {
    fields.SaveDirectory = QStringLiteral("Q:\\");
    EXPECT_EQ(examine().grade(68, "Please make sure disk is ready. Error#68"), kMet);
}

TEST_F(DoctorProgram, WithoutADefaultPrinter) {
    fields.AllowPrinting = QStringLiteral("yes");
    environment.insert(QStringLiteral("CUPS_SERVER"), folder.qtPath("none"));
    EXPECT_EQ(examine().grade(482, "Run-time error 482"), kMet);
}
} // namespace
