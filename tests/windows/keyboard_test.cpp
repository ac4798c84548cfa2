// Which control has the keyboard focus, and what keys do, for a person who works without a mouse.

#include "tests/support/pop3_script.h"
#include "tests/support/window_test.h"
#include "windows/frmAbout.h"
#include "windows/frmFrom.h"
#include "windows/frmLogin.h"
#include "windows/frmMain.h"
#include "windows/frmSend.h"
#include "windows/frmSetup.h"

#include <QApplication>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include <string>

using support::Pop3Mailbox;
using support::ScriptedServer;
using support::WhenItHolds;
using support::WindowTest;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {
const QString kQuestion = QStringLiteral("Are you sure you want to delete this message?");
const QString kNothingChosen = QStringLiteral("Please select a message from the list first.");

std::string message(int number) {
    return "From: ann@example.org\r\nSubject: " + std::to_string(number) + "\r\n\r\ntext\r\n";
}

/** The name of the control that has the keyboard focus, "nothing" when none has. */
QString focus() {
    const QWidget* const control = QApplication::focusWidget();
    return control == nullptr ? QStringLiteral("nothing") : control->objectName();
}

class Keyboard : public WindowTest {
  protected:
    void logInWith(int messages) {
        for (int number = 1; number <= messages; ++number) {
            mailbox.deliver(message(number));
        }
        logIn(server.address());
        ASSERT_THAT(boxTexts(), IsEmpty());
        ASSERT_TRUE(QTest::qWaitForWindowActive(&mainWindow()));
    }

    static void press(Qt::Key key, Qt::KeyboardModifiers held = {}) {
        QWidget* const control = QApplication::focusWidget();
        QTest::keyClick(control != nullptr ? control : QApplication::activeWindow(), key, held);
    }

    /** The rows that are marked, counted as the list numbers them. */
    static std::vector<int> markedRows() {
        std::vector<int> rows;
        for (const QModelIndex& index : mainWindow().MailGrid->selectionModel()->selectedRows()) {
            rows.push_back(index.row() + 1);
        }
        return rows;
    }

    static QString subjectOf(int row) { return mainWindow().MailGrid->TextMatrix(row, 3).trimmed(); }

    Pop3Mailbox mailbox;
    ScriptedServer server{mailbox};
};
} // namespace

TEST_F(Keyboard, IsInTheListAfterTheLogOn) {
    logInWith(2);
    EXPECT_EQ(focus(), QStringLiteral("MailGrid"));
    press(Qt::Key_Space);
    EXPECT_EQ(programEnds, 0);
}

TEST_F(Keyboard, IsOnComposeMailAfterTheLogOnToAnEmptyMailbox) {
    logInWith(0);
    EXPECT_EQ(focus(), QStringLiteral("cmdCmpose"));
}

TEST_F(Keyboard, IsNeverOnExitWhileMessagesAreListed) {
    mailbox.on("TOP 1", support::holdAndSay("+OK\r\n" + support::stuffed(message(1))));
    const WhenItHolds look([] { return mainWindow().isActiveWindow(); },
                           [this] {
                               EXPECT_NE(focus(), QStringLiteral("cmdExit"));
                               press(Qt::Key_Space);
                               EXPECT_EQ(programEnds, 0);
                               server.release();
                           });
    logInWith(1);
    EXPECT_EQ(focus(), QStringLiteral("MailGrid"));
}

TEST_F(Keyboard, IsNeverOnExitWhileAMessageIsFetched) {
    logInWith(1);
    mailbox.on("RETR 1", support::holdAndSay("+OK\r\n" + support::stuffed(message(1))));
    const WhenItHolds look([this] { return server.commands().back() == "RETR 1"; },
                           [this] {
                               EXPECT_NE(focus(), QStringLiteral("cmdExit"));
                               server.release();
                           });
    press(Qt::Key_Down);
    press(Qt::Key_Return);
    EXPECT_TRUE(messageWindow().isVisible());
    EXPECT_EQ(programEnds, 0);
}

TEST_F(Keyboard, TabIntoTheListChoosesNothing) {
    logInWith(2);
    press(Qt::Key_Tab);
    press(Qt::Key_Backtab);
    EXPECT_EQ(focus(), QStringLiteral("MailGrid"));
    EXPECT_EQ(mainWindow().MailGrid->Row(), -1);
    EXPECT_THAT(markedRows(), IsEmpty());
    press(Qt::Key_Tab);
    mainWindow().cmdDelete->click();
    EXPECT_THAT(boxTexts(), ElementsAre(kNothingChosen));
    ASSERT_TRUE(server.waitForEndOf(1));
    EXPECT_THAT(mailbox.messages(), testing::SizeIs(2));
}

TEST_F(Keyboard, ReturnInAListWithNothingChosenDoesNothing) {
    logInWith(2);
    press(Qt::Key_Tab);
    press(Qt::Key_Backtab);
    press(Qt::Key_Return);
    EXPECT_THAT(boxTexts(), IsEmpty());
    EXPECT_EQ(server.connections(), 1U);
    EXPECT_TRUE(mainWindow().isEnabled());
}

TEST_F(Keyboard, ArrowsChooseFromWhereTheyComeAndMarkTheWholeRow) {
    logInWith(3);
    press(Qt::Key_Down);
    EXPECT_EQ(mainWindow().MailGrid->Row(), 1);
    EXPECT_THAT(markedRows(), ElementsAre(1));
    mainWindow().MailGrid->setCurrentItem(nullptr);
    press(Qt::Key_Up);
    EXPECT_EQ(mainWindow().MailGrid->Row(), 3);
    EXPECT_THAT(markedRows(), ElementsAre(3));
}

TEST_F(Keyboard, HomeAndEndGoToTheFirstAndTheLastMessage) {
    logInWith(5);
    press(Qt::Key_End);
    EXPECT_THAT(markedRows(), ElementsAre(5));
    press(Qt::Key_Home);
    EXPECT_THAT(markedRows(), ElementsAre(1));
    press(Qt::Key_Down);
    press(Qt::Key_End);
    EXPECT_EQ(mainWindow().MailGrid->Row(), 5);
}

TEST_F(Keyboard, WhatIsCurrentStaysMarkedWhateverKeyIsHeldDuringTheClick) {
    logInWith(3);
    auto& grid = *mainWindow().MailGrid;
    const QPoint place = grid.visualRect(grid.model()->index(1, 1)).center();
    for (const Qt::KeyboardModifier held : {Qt::NoModifier, Qt::ControlModifier, Qt::ShiftModifier}) {
        QTest::mouseClick(grid.viewport(), Qt::LeftButton, held, place);
        EXPECT_THAT(markedRows(), ElementsAre(2)) << held;
        EXPECT_EQ(grid.Row(), 2) << held;
    }
    press(Qt::Key_Space, Qt::ControlModifier);
    EXPECT_THAT(markedRows(), ElementsAre(2));
}

TEST_F(Keyboard, TheDeleteKeyInTheListIsTheDeleteButton) {
    logInWith(3);
    press(Qt::Key_Delete);
    EXPECT_THAT(boxTexts(), ElementsAre(kNothingChosen));
    boxes.clear();
    press(Qt::Key_Down);
    mainWindow().cmdDelete->setEnabled(false);
    press(Qt::Key_Delete);
    EXPECT_THAT(boxTexts(), IsEmpty());
    mainWindow().cmdDelete->setEnabled(true);
    press(Qt::Key_Delete);
    EXPECT_THAT(boxTexts(), ElementsAre(kQuestion));
    EXPECT_EQ(subjectOf(1), QStringLiteral("2"));
}

TEST_F(Keyboard, AfterADeletionTheRowInItsPlaceIsMarkedAndTheNextDeletionAsksAgain) {
    logInWith(4);
    press(Qt::Key_Down);
    press(Qt::Key_Down);
    press(Qt::Key_Delete);
    EXPECT_EQ(focus(), QStringLiteral("MailGrid"));
    EXPECT_THAT(markedRows(), ElementsAre(2));
    EXPECT_EQ(subjectOf(2), QStringLiteral("3"));
    press(Qt::Key_End);
    press(Qt::Key_Delete);
    EXPECT_THAT(markedRows(), ElementsAre(2));
    EXPECT_EQ(subjectOf(2), QStringLiteral("3"));
    press(Qt::Key_Delete);
    EXPECT_THAT(boxTexts(), ElementsAre(kQuestion, kQuestion, kQuestion));
    EXPECT_THAT(markedRows(), ElementsAre(1));
    press(Qt::Key_Delete);
    EXPECT_EQ(focus(), QStringLiteral("cmdCmpose"));
    EXPECT_EQ(mainWindow().MailGrid->Row(), -1);
}

TEST_F(Keyboard, NothingIsChosenInANewListing) {
    logInWith(3);
    mainWindow().MailGrid->setCurrentCell(2, 0);
    loginWindow().cmdLogin->setEnabled(true);
    loginWindow().tpwd->setText(QStringLiteral("secret"));
    loginWindow().cmdLogin->click();
    EXPECT_EQ(mainWindow().MailGrid->Row(), -1);
    EXPECT_THAT(markedRows(), IsEmpty());
}

TEST_F(Keyboard, ComesBackToTheListWithItsRowMarkedWhenAMessageIsClosed) {
    logInWith(3);
    press(Qt::Key_Down);
    press(Qt::Key_Down);
    press(Qt::Key_Return);
    ASSERT_TRUE(QTest::qWaitForWindowActive(&messageWindow()));
    messageWindow().cmdDone->click();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&mainWindow()));
    EXPECT_EQ(focus(), QStringLiteral("MailGrid"));
    EXPECT_THAT(markedRows(), ElementsAre(2));
}

TEST_F(Keyboard, ComesBackToWhereThePersonWasWhenALetterIsCancelled) {
    logInWith(1);
    for (QWidget* const place :
         {static_cast<QWidget*>(mainWindow().MailGrid), static_cast<QWidget*>(mainWindow().cmdCmpose)}) {
        place->setFocus();
        mainWindow().cmdCmpose->click();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&composeWindow()));
        composeWindow().cmdCancel->click();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&mainWindow()));
        EXPECT_EQ(focus(), place->objectName());
    }
}

TEST_F(Keyboard, ComesBackToTheTextWhenAnAnswerIsCancelled) {
    logInWith(1);
    press(Qt::Key_Down);
    press(Qt::Key_Return);
    ASSERT_TRUE(QTest::qWaitForWindowActive(&messageWindow()));
    messageWindow().cmdReply->click();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&composeWindow()));
    composeWindow().cmdCancel->click();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&messageWindow()));
    EXPECT_EQ(focus(), QStringLiteral("tMessage"));
}

TEST_F(Keyboard, StaysOnAButtonThatRestedDuringACheck) {
    logInWith(1);
    mainWindow().cmdRead->setFocus();
    mailbox.deliver(message(2));
    mainWindow().tmrCheckMail_Timer();
    EXPECT_EQ(focus(), QStringLiteral("cmdRead"));
}

TEST_F(Keyboard, GoesWhereThePersonGoesWhileAButtonRests) {
    logInWith(1);
    mainWindow().cmdRead->setFocus();
    mainWindow().cmdRead->setEnabled(false);
    EXPECT_EQ(QApplication::focusWidget(), &mainWindow());
    mainWindow().cmdGetMail->setFocus();
    mainWindow().cmdRead->setEnabled(true);
    EXPECT_EQ(focus(), QStringLiteral("cmdGetMail"));
}

TEST_F(Keyboard, EscapeDoesNothingInTheMainWindow) {
    logInWith(1);
    press(Qt::Key_Escape);
    mainWindow().cmdRead->setFocus();
    press(Qt::Key_Escape);
    EXPECT_TRUE(mainWindow().isVisible());
    EXPECT_EQ(programEnds, 0);
    EXPECT_FALSE(composeWindow().isVisible());
}

TEST_F(Keyboard, ReturnPressesTheButtonThatHasIt) {
    logInWith(1);
    mainWindow().cmdCmpose->setFocus();
    press(Qt::Key_Return);
    ASSERT_TRUE(QTest::qWaitForWindowActive(&composeWindow()));
    composeWindow().cmdCancel->setFocus();
    press(Qt::Key_Enter);
    EXPECT_FALSE(composeWindow().isVisible());
    ASSERT_TRUE(QTest::qWaitForWindowActive(&mainWindow()));
    mainWindow().MailGrid->setFocus();
    press(Qt::Key_Down);
    mainWindow().MailGrid_DblClick();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&messageWindow()));
    messageWindow().cmdDone->setFocus();
    press(Qt::Key_Return);
    EXPECT_FALSE(messageWindow().isVisible());
    setupWindow().bringUp();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&setupWindow()));
    setupWindow().cmdExit->setFocus();
    press(Qt::Key_Return);
    EXPECT_FALSE(setupWindow().isVisible());
    mainWindow().cmdExit->setFocus();
    mainWindow().activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&mainWindow()));
    press(Qt::Key_Return);
    EXPECT_EQ(programEnds, 1);
}
