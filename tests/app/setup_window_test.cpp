#include "email/state.h"
#include "tests/support/window_test.h"
#include "windows/frmLogin.h"
#include "windows/frmSetup.h"

#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>

using support::WindowTest;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {
class SetupWindow : public WindowTest {
  protected:
    void openWith(const email::SettingsFields& fields) {
        writeSettings(fields);
        startUp();
        loginWindow().cmdSetup->click();
    }

    email::SettingsFields school = support::schoolSettings(QStringLiteral("pop.example.org"));
};
} // namespace

TEST_F(SetupWindow, UpdateWithAnEmptiedPopServerWritesTheOldOneBack) {
    openWith(school);
    setupWindow().txtPOP->clear();
    setupWindow().cmdUpdate->click();
    EXPECT_THAT(folder.read("tolk.ini"), HasSubstr("\r\nPOPServer=pop.example.org\r\n"));
}

TEST_F(SetupWindow, UpdateWritesTheFieldsTellsToRestartAndEndsTheProgram) {
    openWith(school);
    setupWindow().txtSchool->setText(QStringLiteral("Other School"));
    setupWindow().cmdUpdate->click();
    EXPECT_THAT(folder.read("tolk.ini"), HasSubstr("\r\nInstitution=Other School\r\n"));
    ASSERT_THAT(boxTexts(), ElementsAre(QStringLiteral(
                                "You must restart Brindlewake in order for changes to take effect.")));
    EXPECT_EQ(boxes[0].title, QStringLiteral("Brindlewake"));
    EXPECT_EQ(boxes[0].icon, platform::MessageIcon::Exclamation);
    EXPECT_EQ(programEnds, 1);
    EXPECT_EQ(email::settings.Institution, QStringLiteral("Example School"));
}

TEST_F(SetupWindow, UpdateOnUntouchedFieldsWritesTheSameFileAgain) {
    openWith(school);
    const std::string before = folder.read("tolk.ini");
    setupWindow().cmdUpdate->click();
    EXPECT_EQ(folder.read("tolk.ini"), before);
}

TEST_F(SetupWindow, ExitWritesNothingAndBringsTheLoginWindowBack) {
    openWith(school);
    const std::string before = folder.read("tolk.ini");
    loginWindow().hide();
    loginWindow().setEnabled(false);
    setupWindow().txtSchool->setText(QStringLiteral("Other School"));
    setupWindow().cmdExit->click();
    EXPECT_EQ(folder.read("tolk.ini"), before);
    EXPECT_TRUE(loginWindow().isVisible());
    EXPECT_TRUE(loginWindow().isEnabled());
    EXPECT_FALSE(setupWindow().isVisible());
    EXPECT_EQ(programEnds, 0);
}

TEST_F(SetupWindow, ClosedFromItsFrameWithNothingElseToSeeShowsTheMainWindow) {
    startUp();
    ASSERT_TRUE(setupWindow().isVisible());
    setupWindow().close();
    EXPECT_FALSE(loginWindow().isVisible());
    EXPECT_TRUE(loginWindow().isEnabled());
    EXPECT_EQ(programEnds, 0);
}

TEST_F(SetupWindow, AFileThatCannotBeWrittenIsReportedAndTheProgramGoesOn) {
    openWith(school);
    std::filesystem::remove(folder.path("tolk.ini"));
    std::filesystem::create_directory(folder.path("tolk.ini"));
    folder.write("tolk.ini/kept", "x");
    setupWindow().cmdUpdate->click();
    ASSERT_EQ(boxes.size(), 1U);
    EXPECT_TRUE(boxes[0].text.startsWith(QStringLiteral("Run-time error ")));
    EXPECT_EQ(programEnds, 0);
    EXPECT_TRUE(setupWindow().isVisible());
}
