// The guards that disable a window, show the hourglass or stop redrawing restore the state from before.

#include "components/controls/while_not_redrawing.h"
#include "tests/support/window_test.h"
#include "windows/frmAbout.h"
#include "windows/frmFrom.h"
#include "windows/frmLogin.h"
#include "windows/frmMain.h"
#include "windows/frmSend.h"
#include "windows/windows.h"

#include <QPushButton>
#include <QTest>

#include <memory>

using MSFlexGridLib::WhileNotRedrawing;
using support::WindowTest;

namespace {
class Guards : public WindowTest {
  protected:
    Guards() {
        writeSettings(support::schoolSettings(QStringLiteral("pop.example.org")));
        startUp();
        loginWindow().hide();
        mainWindow().bringUp();
    }

    static bool showsHourglass(const Form& window) { return window.cursor().shape() == Qt::WaitCursor; }
};
} // namespace

TEST_F(Guards, AWindowCanBeUsedAgainWhenItHasRested) {
    {
        const WhileDisabled resting(mainWindow());
        EXPECT_FALSE(mainWindow().isEnabled());
    }
    EXPECT_TRUE(mainWindow().isEnabled());
}

TEST_F(Guards, AWindowThatSomebodyElseLetsRestIsNotEnabled) {
    mainWindow().setEnabled(false);
    { const WhileDisabled resting(mainWindow()); }
    EXPECT_FALSE(mainWindow().isEnabled());
}

TEST_F(Guards, AControlThatWasDisabledStaysSo) {
    QPushButton& button = *mainWindow().cmdExit;
    button.setEnabled(false);
    { const WhileDisabled none(button); }
    EXPECT_FALSE(button.isEnabled());
}

TEST_F(Guards, AControlInAWindowThatRestsCanBeUsedWithIt) {
    QPushButton& button = *mainWindow().cmdExit;
    {
        const WhileDisabled resting(mainWindow());
        const WhileDisabled noExit(button);
        EXPECT_FALSE(button.isEnabledTo(&mainWindow()));
    }
    EXPECT_TRUE(button.isEnabled());
}

TEST_F(Guards, AfterARestTheKeyboardIsWhereItWas) {
    ASSERT_TRUE(QTest::qWaitForWindowActive(&mainWindow()));
    mainWindow().cmdCmpose->setFocus();
    { const WhileDisabled resting(mainWindow()); }
    EXPECT_EQ(mainWindow().focusWidget(), mainWindow().cmdCmpose);
}

TEST_F(Guards, TheHourglassStaysUntilTheFirstWhoHasShownItIsDone) {
    {
        const WhileHourglass first(mainWindow());
        { const WhileHourglass second(mainWindow()); }
        EXPECT_TRUE(showsHourglass(mainWindow()));
    }
    EXPECT_FALSE(showsHourglass(mainWindow()));
}

TEST_F(Guards, TheListStaysAsItIsUntilTheFirstWhoHasStoppedItIsDone) {
    auto& grid = *mainWindow().MailGrid;
    {
        const WhileNotRedrawing first(grid);
        { const WhileNotRedrawing second(grid); }
        EXPECT_FALSE(grid.redraws());
    }
    EXPECT_TRUE(grid.redraws());
}

TEST_F(Guards, AWindowThatIsGoneMeanwhileDoesNoHarm) {
    auto window = std::make_unique<frmAbout>();
    const WhileDisabled resting(*window);
    const WhileHourglass waiting(*window);
    window.reset();
    EXPECT_TRUE(mainWindow().isEnabled());
}

TEST_F(Guards, ControlIsGivenBackToTheWindowThatItWasTakenFrom) {
    aboutWindow().takeControlFrom(mainWindow());
    EXPECT_FALSE(mainWindow().isEnabled());
    aboutWindow().giveControlBack();
    EXPECT_TRUE(mainWindow().isEnabled());
}

TEST_F(Guards, ControlIsGivenBackOnce) {
    aboutWindow().takeControlFrom(mainWindow());
    aboutWindow().giveControlBack();
    mainWindow().setEnabled(false);
    aboutWindow().giveControlBack();
    EXPECT_FALSE(mainWindow().isEnabled());
}

TEST_F(Guards, WhoOpenedTheComposeWindowIsKnownWhicheverWindowsRest) {
    mainWindow().cmdCmpose->click();
    messageWindow().show();
    messageWindow().setEnabled(false);
    composeWindow().close();
    EXPECT_TRUE(mainWindow().isEnabled());
    EXPECT_FALSE(messageWindow().isEnabled());
}
