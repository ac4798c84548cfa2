// The drive list and the directory list of the setup window.

#include "tests/support/drive_stands_for.h"
#include "tests/support/window_test.h"
#include "windows/frmLogin.h"
#include "windows/frmSetup.h"

#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include <filesystem>
#include <ostream>
#include <string>
#include <sys/resource.h>

using support::DriveStandsFor;
using support::WindowTest;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {
/** C: and D: are folders of the test's own; nothing is in drive A:. */
class SetupLists : public WindowTest {
  protected:
    void openWith(const QString& saveDirectory) {
        school.SaveDirectory = saveDirectory;
        writeSettings(school);
        startUp();
        loginWindow().cmdSetup->click();
    }

    static void choose(const QString& drive) {
        controls::DriveListBox& list = *setupWindow().cboDrive;
        list.setCurrentIndex(list.findData(drive));
    }

    /** Opens the folder in the row with this text. */
    static void pick(const QString& name) {
        controls::DirectoryListBox& list = *setupWindow().cboDir;
        const QModelIndexList rows =
            list.model()->match(list.model()->index(0, 0), Qt::DisplayRole, name, 1, Qt::MatchExactly);
        ASSERT_EQ(rows.size(), 1) << name.toStdString();
        list.setCurrentIndex(rows.first());
        QTest::keyClick(&list, Qt::Key_Return);
    }

    static QString directory() { return setupWindow().txtSaveDir->text(); }

    support::TemporaryFolder disk;
    const DriveStandsFor a{'A', disk.qtPath("missing")};
    const DriveStandsFor c{'C', disk.qtPath("c")};
    const DriveStandsFor d{'D', disk.qtPath("d")};
    const bool made = std::filesystem::create_directories(disk.path("c/docs/mail")) &&
                      std::filesystem::create_directories(disk.path("d/files"));
    email::SettingsFields school = support::schoolSettings(QStringLiteral("pop.example.org"));
};
} // namespace

TEST_F(SetupLists, ChoosingADriveWithNoMediumGivesTheDriveMessageAndTheDriveListReturnsToThePreviousDrive) {
    openWith(QStringLiteral("C:\\docs\\"));
    choose(QStringLiteral("A:"));
    ASSERT_THAT(boxTexts(), ElementsAre(QStringLiteral("The drive is not ready, please insert disk.")));
    EXPECT_EQ(boxes[0].title, QStringLiteral("Example School E-Mail"));
    EXPECT_EQ(boxes[0].icon, controls::MessageIcon::None);
    EXPECT_EQ(boxes[0].buttons, controls::MessageButtons::Ok);
    EXPECT_EQ(setupWindow().cboDrive->drive(), QStringLiteral("C:"));
    EXPECT_EQ(setupWindow().cboDir->path(), QStringLiteral("C:\\docs"));
    EXPECT_EQ(directory(), QStringLiteral("C:\\docs\\"));
}

TEST_F(SetupLists, TheDriveListStillShowsTheDriveWithoutMediumWhileItsMessageIsOpen) {
    openWith(QStringLiteral("C:\\docs\\"));
    whileBoxIsOpen = [](const controls::MessageBox&) {
        EXPECT_EQ(setupWindow().cboDrive->drive(), QStringLiteral("A:"));
    };
    choose(QStringLiteral("A:"));
    EXPECT_EQ(boxes.size(), 1U);
}

TEST_F(SetupLists, PickingTheRootDirectoryOfADrivePutsItsPathIntoTxtSaveDirUnchanged) {
    openWith(QStringLiteral("C:\\docs\\"));
    pick(QStringLiteral("C:\\"));
    EXPECT_EQ(directory(), QStringLiteral("C:\\"));
}

TEST_F(SetupLists, PickingAnyOtherDirectoryAppendsABackslash) {
    openWith(QStringLiteral("C:\\"));
    pick(QStringLiteral("docs"));
    EXPECT_EQ(directory(), QStringLiteral("C:\\docs\\"));
    pick(QStringLiteral("mail"));
    EXPECT_EQ(directory(), QStringLiteral("C:\\docs\\mail\\"));
    setupWindow().cmdUpdate->click();
    EXPECT_THAT(folder.read("tolk.ini"), HasSubstr("\r\nSaveDirectory=C:\\docs\\mail\\\r\n"));
}

TEST_F(SetupLists, ADoubleClickOnTheFolderThatIsOpenAlreadyTakesIt) {
    openWith(QStringLiteral("A:\\"));
    controls::DirectoryListBox& list = *setupWindow().cboDir;
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&setupWindow()));
    ASSERT_EQ(list.path(), QStringLiteral("C:\\"));
    ASSERT_EQ(directory(), QStringLiteral("A:\\"));
    const QPoint root = list.visualRect(list.model()->index(0, 0)).center();
    QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, root);
    EXPECT_EQ(directory(), QStringLiteral("A:\\"));
    QTest::mouseDClick(list.viewport(), Qt::LeftButton, {}, root);
    EXPECT_EQ(directory(), QStringLiteral("C:\\"));
}

TEST_F(SetupLists, ChoosingAnotherDriveShowsItsFoldersAndTakesItsRoot) {
    openWith(QStringLiteral("C:\\docs\\"));
    choose(QStringLiteral("D:"));
    EXPECT_EQ(setupWindow().cboDir->path(), QStringLiteral("D:\\"));
    EXPECT_EQ(directory(), QStringLiteral("D:\\"));
    pick(QStringLiteral("files"));
    EXPECT_EQ(directory(), QStringLiteral("D:\\files\\"));
    EXPECT_THAT(boxes, IsEmpty());
}

TEST_F(SetupLists, ATypedDirectoryIsTakenAsTyped) {
    openWith(QStringLiteral("C:\\"));
    setupWindow().txtSaveDir->setText(QStringLiteral("D:\\files"));
    setupWindow().cmdUpdate->click();
    EXPECT_THAT(folder.read("tolk.ini"), HasSubstr("\r\nSaveDirectory=D:\\files\r\n"));
}

TEST_F(SetupLists, AnyOtherFailureOfADriveIsIgnored) {
    openWith(QStringLiteral("C:\\docs\\"));
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
    // The drive is there, but its folder cannot be opened.
    rlimit none = before;
    none.rlim_cur = 0;
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
    choose(QStringLiteral("D:"));
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);
    EXPECT_THAT(boxes, IsEmpty());
    EXPECT_EQ(setupWindow().cboDrive->drive(), QStringLiteral("D:"));
    EXPECT_EQ(setupWindow().cboDir->path(), QStringLiteral("C:\\docs"));
    EXPECT_EQ(directory(), QStringLiteral("C:\\docs\\"));
}

TEST_F(SetupLists, AFolderThatCannotBeOpenedIsReportedAndTheListStays) {
    openWith(QStringLiteral("C:\\"));
    std::filesystem::remove_all(disk.path("c/docs"));
    pick(QStringLiteral("docs"));
    ASSERT_THAT(boxTexts(),
                ElementsAre(QStringLiteral("Run-time error 75\n\nA file or folder cannot be opened. "
                                           "Check its name and your rights to it.")));
    EXPECT_EQ(setupWindow().cboDir->path(), QStringLiteral("C:\\"));
    EXPECT_EQ(directory(), QStringLiteral("C:\\"));
    EXPECT_EQ(programEnds, 0);
}

namespace {
struct StartCase {
    const char* name;
    const char* saveDirectory;
    const char* drive;
    const char* path;
};

void PrintTo(const StartCase& test, std::ostream* stream) {
    *stream << test.name;
}

class SetupListsStart : public SetupLists, public testing::WithParamInterface<StartCase> {};
} // namespace

TEST_P(SetupListsStart, IsAtTheAttachmentDirectoryOrC_AndLeavesTheFieldAsItIs) {
    const StartCase& test = GetParam();
    openWith(QLatin1String(test.saveDirectory));
    EXPECT_EQ(setupWindow().cboDrive->drive(), QLatin1String(test.drive));
    EXPECT_EQ(setupWindow().cboDir->path(), QLatin1String(test.path));
    EXPECT_EQ(directory(),
              QString::fromStdString(email::valueOfLine(std::string("SaveDirectory=") + test.saveDirectory)));
    EXPECT_THAT(boxes, IsEmpty());
    setupWindow().cmdUpdate->click();
    EXPECT_EQ(folder.read("tolk.ini"), email::settingsFileText(school, email::Settings()));
}

INSTANTIATE_TEST_SUITE_P(Lists, SetupListsStart,
                         testing::Values(StartCase{"AFolder", "D:\\files\\", "D:", "D:\\files"},
                                         StartCase{"AFolderWithoutItsLastBackslash", "c:\\docs\\mail",
                                                   "C:", "C:\\docs\\mail"},
                                         StartCase{"ARoot", "D:\\", "D:", "D:\\"},
                                         StartCase{"AFolderThatIsNotThere", "D:\\gone\\", "C:", "C:\\"},
                                         StartCase{"ADriveWithNoMedium", "A:\\", "C:", "C:\\"},
                                         StartCase{"ADriveThatIsNone", "Q:\\x", "C:", "C:\\"},
                                         StartCase{"NoPathAtAll", "*?<>|", "C:", "C:\\"}),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_F(SetupLists, WithoutAnyFolderToStartAtTheListsAreEmptyAndTheWindowWorks) {
    std::filesystem::remove_all(disk.path("c"));
    openWith(QStringLiteral("A:\\"));
    EXPECT_EQ(setupWindow().cboDrive->drive(), QString());
    EXPECT_EQ(setupWindow().cboDir->path(), QString());
    choose(QStringLiteral("A:"));
    EXPECT_EQ(setupWindow().cboDrive->drive(), QString());
    choose(QStringLiteral("D:"));
    EXPECT_EQ(directory(), QStringLiteral("D:\\"));
}
