#include "components/controls/drive_list_box.h"
#include "tests/support/application.h"
#include "tests/support/drive_stands_for.h"
#include "tests/support/temporary_folder.h"

#include <QSignalSpy>
#include <QTest>
#include <QWheelEvent>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

using controls::DriveListBox;
using support::DriveStandsFor;
using support::TemporaryFolder;
using testing::Contains;
using testing::ElementsAre;
using testing::Not;

class DriveListBoxTest : public testing::Test {
  protected:
    DriveListBoxTest() { support::application(); }

    static std::vector<std::string> texts(const DriveListBox& list) {
        std::vector<std::string> all;
        all.reserve(static_cast<std::size_t>(list.count()));
        for (int i = 0; i < list.count(); ++i) {
            all.push_back(list.itemText(i).toStdString());
        }
        return all;
    }

    const TemporaryFolder home_;
    const DriveStandsFor c_{'C', home_.qtPath("")};
};

TEST_F(DriveListBoxTest, ShowsEveryDriveWithWhatItStandsFor) {
    std::filesystem::create_directory(home_.path("docs"));
    const DriveStandsFor d('D', home_.qtPath("docs"));
    const DriveStandsFor a('A', home_.qtPath("missing"));
    const DriveListBox list;
    const std::string c = "C: [" + home_.path().filename().string() + "]";
    EXPECT_THAT(texts(list), ElementsAre("A: [missing]", c, "D: [docs]", "Z: [/]"));
}

TEST_F(DriveListBoxTest, GivesTheChosenDriveAndTakesOneFromAPath) {
    DriveListBox list;
    list.setDrive(QStringLiteral("c:\\DOCS"));
    EXPECT_EQ(list.drive(), QStringLiteral("C:"));
    list.setDrive(QStringLiteral("Z:\\"));
    EXPECT_EQ(list.drive(), QStringLiteral("Z:"));
    list.setDrive(QStringLiteral("Q:\\"));
    EXPECT_EQ(list.drive(), QString());
    list.setDrive(QString());
    EXPECT_EQ(list.drive(), QString());
}

TEST_F(DriveListBoxTest, TellsOfAChoiceButNotOfADriveThatIsSet) {
    DriveListBox list;
    list.setDrive(QStringLiteral("C:"));
    QSignalSpy changes(&list, &QComboBox::currentIndexChanged);
    list.setDrive(QStringLiteral("Z:"));
    EXPECT_EQ(changes.count(), 0);
    list.show();
    QTest::keyClick(&list, Qt::Key_C);
    EXPECT_EQ(list.drive(), QStringLiteral("C:"));
    EXPECT_EQ(changes.count(), 1);
}

TEST_F(DriveListBoxTest, LooksForDrivesAgainWhenItIsDroppedDown) {
    DriveListBox list;
    list.setDrive(QStringLiteral("Z:"));
    QSignalSpy changes(&list, &QComboBox::currentIndexChanged);
    const DriveStandsFor d('D', home_.qtPath("docs"));
    EXPECT_THAT(texts(list), Not(Contains("D: [docs]")));
    list.show();
    list.showPopup();
    EXPECT_THAT(texts(list), Contains("D: [docs]"));
    EXPECT_EQ(list.drive(), QStringLiteral("Z:"));
    EXPECT_EQ(changes.count(), 0);
    list.hidePopup();
}

TEST_F(DriveListBoxTest, AVolumesNameIsShownAndNotObeyed) {
    const DriveStandsFor d('D', home_.qtPath("") + QStringLiteral("a\u202Eb\nc"));
    EXPECT_THAT(texts(DriveListBox()), Contains("D: [a<202E>b c]"));
}

TEST_F(DriveListBoxTest, TheWheelChoosesOnlyWhereTheKeysGo) {
    DriveListBox list;
    list.setDrive(QStringLiteral("C:"));
    QWheelEvent turn(QPointF(1, 1), QPointF(1, 1), QPoint(), QPoint(0, -120), Qt::NoButton, Qt::NoModifier,
                     Qt::NoScrollPhase, false);
    QApplication::sendEvent(&list, &turn);
    EXPECT_EQ(list.drive(), QStringLiteral("C:"));
    EXPECT_FALSE(turn.isAccepted());
    list.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&list));
    list.setFocus();
    QApplication::sendEvent(&list, &turn);
    EXPECT_EQ(list.drive(), QStringLiteral("Z:"));
}

} // namespace
