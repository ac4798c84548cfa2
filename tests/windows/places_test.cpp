// Where each window opens, which window it belongs to, and its icon.

#include "components/controls/message_box.h"
#include "tests/support/window_test.h"
#include "windows/frmAbout.h"
#include "windows/frmFrom.h"
#include "windows/frmLogin.h"
#include "windows/frmMain.h"
#include "windows/frmSend.h"
#include "windows/frmSetup.h"

#include <QAccessible>
#include <QApplication>
#include <QFile>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>
#include <QTest>
#include <QTimer>
#include <QWindow>

using support::WindowTest;

namespace {
class Places : public WindowTest {
  protected:
    Places() {
        writeSettings(support::schoolSettings(QStringLiteral("pop.example.org")));
        startUp();
    }

    static void goToTheMainWindow() {
        loginWindow().hide();
        mainWindow().bringUp();
    }

    static void expectAbove(const Form& window, const Form& opener) {
        ASSERT_TRUE(window.isVisible());
        if (QGuiApplication::platformName() != QLatin1String("offscreen")) {
            EXPECT_EQ(window.windowHandle()->transientParent(), opener.windowHandle());
        }
        EXPECT_EQ(window.screen(), opener.screen());
        const QRect all = opener.screen()->availableGeometry();
        EXPECT_TRUE(all.contains(window.frameGeometry()) || window.width() > all.width() ||
                    window.height() > all.height());
    }

    static void expectInTheMiddleOf(const QRect& place, const QRect& window) {
        EXPECT_NEAR(window.center().x(), place.center().x(), 2);
        EXPECT_NEAR(window.center().y(), place.center().y(), 2);
    }
};
} // namespace

TEST_F(Places, TheLoginWindowStandsInTheMiddleOfItsScreen) {
    auto& login = loginWindow();
    EXPECT_EQ(login.windowHandle()->transientParent(), nullptr);
    expectInTheMiddleOf(login.screen()->availableGeometry(), login.frameGeometry());
}

TEST_F(Places, OnAFirstStartSetupStandsInTheMiddleOfItsScreen) {
    forgetEverything();
    ASSERT_TRUE(QFile::remove(QStringLiteral("tolk.ini")));
    startUp();
    ASSERT_TRUE(setupWindow().isVisible());
    expectInTheMiddleOf(setupWindow().screen()->availableGeometry(), setupWindow().frameGeometry());
}

TEST_F(Places, SetupStandsAboveTheLogin) {
    loginWindow().cmdSetup->click();
    expectAbove(setupWindow(), loginWindow());
}

TEST_F(Places, AboutStandsAboveTheMainWindowAndInItsMiddle) {
    goToTheMainWindow();
    EXPECT_EQ(mainWindow().windowHandle()->transientParent(), nullptr) << "the login window is hidden";
    mainWindow().move(30, 20);
    mainWindow().mnuHelp_Click();
    expectAbove(aboutWindow(), mainWindow());
    expectInTheMiddleOf(mainWindow().frameGeometry(), aboutWindow().frameGeometry());
}

TEST_F(Places, AMessageStandsAboveTheListAndItsAnswerAboveTheMessage) {
    goToTheMainWindow();
    messageWindow().bringUp();
    expectAbove(messageWindow(), mainWindow());
    composeWindow().openFrom(messageWindow(), *composeWindow().tMessage);
    expectAbove(composeWindow(), messageWindow());
    EXPECT_TRUE(composeWindow().isEnabled()) << "its opener rests, and it does not rest with it";
}

TEST_F(Places, ANewLetterStandsAboveTheList) {
    goToTheMainWindow();
    mainWindow().cmdCmpose->click();
    expectAbove(composeWindow(), mainWindow());
    EXPECT_TRUE(composeWindow().isEnabled());
}

TEST_F(Places, SizeAndPlaceAreKeptDuringTheRun) {
    goToTheMainWindow();
    aboutWindow().bringUp();
    const QRect chosen(70, 90, 380, 240);
    aboutWindow().setGeometry(chosen);
    aboutWindow().cmdOkAbout->click();
    aboutWindow().bringUp();
    EXPECT_EQ(aboutWindow().geometry(), chosen);
    unload(aboutWindow());
    forgetEverything();
    startUp();
    goToTheMainWindow();
    aboutWindow().bringUp();
    EXPECT_NE(aboutWindow().geometry(), chosen) << "only during the run";
}

TEST_F(Places, ABoxStandsAboveAWindowThatRests) {
    goToTheMainWindow();
    mainWindow().move(60, 40);
    mainWindow().activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&mainWindow()));
    mainWindow().setEnabled(false);
    controls::replaceMessageBox({});
    bool seen = false;
    QTimer::singleShot(0, [&] {
        auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        ASSERT_NE(box, nullptr);
        seen = true;
        EXPECT_TRUE(box->isEnabled());
        EXPECT_EQ(box->windowHandle()->transientParent(), mainWindow().windowHandle());
        EXPECT_TRUE(mainWindow().frameGeometry().contains(box->frameGeometry().center()));
        box->accept();
    });
    controls::showMessage(QStringLiteral("Done"), QStringLiteral("Brindlewake"));
    EXPECT_TRUE(seen);
}

TEST_F(Places, EveryWindowHasTheIconAndIsAWindowToScreenReaders) {
    for (Form* window : std::initializer_list<Form*>{&loginWindow(), &mainWindow(), &aboutWindow(),
                                                     &messageWindow(), &composeWindow(), &setupWindow()}) {
        EXPECT_FALSE(window->windowIcon().pixmap(64, 64).isNull()) << window->objectName().toStdString();
        QAccessibleInterface* const thing = QAccessible::queryAccessibleInterface(window);
        ASSERT_NE(thing, nullptr);
        EXPECT_EQ(thing->role(), QAccessible::Window) << window->objectName().toStdString();
    }
}

TEST_F(Places, ScreenReadersHearNoSpacesThatOnlyPadACell) {
    goToTheMainWindow();
    auto* const grid = mainWindow().MailGrid;
    grid->setRows(2);
    grid->setTextMatrix(1, 2, QStringLiteral("ann@example.org          "));
    QAccessibleInterface* const table = QAccessible::queryAccessibleInterface(grid);
    ASSERT_NE(table->tableInterface(), nullptr);
    QAccessibleInterface* const cell = table->tableInterface()->cellAt(0, 2);
    ASSERT_NE(cell, nullptr);
    EXPECT_EQ(cell->text(QAccessible::Name), QStringLiteral("ann@example.org"));
    EXPECT_EQ(grid->TextMatrix(1, 2), QStringLiteral("ann@example.org          "));
}
