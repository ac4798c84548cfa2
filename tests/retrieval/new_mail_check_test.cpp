// What a check for new mail fetches and shows.

#include "email/credentials.h"
#include "email/shared_settings.h"
#include "tests/retrieval/new_mail_check_fixture.h"
#include "windows/frmFind.h"
#include "windows/frmSend.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

using support::NewMailCheck;
using testing::ElementsAre;
using testing::IsEmpty;

TEST_F(NewMailCheck, WithoutNewMessagesTheButtonSaysSoAndShowsTheTotals) {
    logInWith(2);
    mainWindow().cmdGetMail->click();
    expectBox(QStringLiteral("You have no new mail."), QStringLiteral("Brindlewake"));
    EXPECT_TRUE(mainWindow().lStats->text().startsWith(QStringLiteral("2 messages ")));
    EXPECT_THAT(sounds, IsEmpty());
    expectUsableWindow();
}

TEST_F(NewMailCheck, WithoutNewMessagesTheTimerShowsNothing) {
    logInWith(2);
    mainWindow().tmrCheckMail_Timer();
    EXPECT_THAT(boxTexts(), IsEmpty());
    EXPECT_FALSE(email::mailbox.NewMailFound);
    EXPECT_TRUE(mainWindow().lStats->text().startsWith(QStringLiteral("2 messages ")));
    expectUsableWindow();
}

TEST_F(NewMailCheck, ThreeMessagesAtLoginAndFiveNowFetchesOnlyFourAndFive) {
    logInWith(3);
    mailbox.deliver(message("4")).deliver(message("5"));
    mainWindow().cmdGetMail->click();
    EXPECT_THAT(boxTexts(), IsEmpty());
    ASSERT_TRUE(server.waitForEndOf(2));
    EXPECT_THAT(server.commands(1), ElementsAre("USER ann", "PASS secret", "STAT", "LIST 4", "TOP 4 25",
                                                "LIST 5", "TOP 5 25", "UIDL", "QUIT"));
    EXPECT_EQ(mainWindow().MailGrid->Rows(), 6);
    EXPECT_EQ(cell(4, 3), QStringLiteral("About 4"));
    EXPECT_EQ(cell(5, 3), QStringLiteral("About 5"));
    EXPECT_EQ(email::mailbox.LastMessageCount, 5);
    EXPECT_TRUE(email::mailbox.NewMailFound);
    EXPECT_EQ(email::mailbox.MessageNumbers[4], 5);
    EXPECT_THAT(sounds, ElementsAre(QStringLiteral("Gotmail.wav")));
    EXPECT_TRUE(mainWindow().lStats->text().startsWith(QStringLiteral("5 messages ")));
    expectUsableWindow();
}

TEST_F(NewMailCheck, TheFirstMessageOfAnEmptyMailboxFillsTheList) {
    logInWith(0);
    EXPECT_FALSE(mainWindow().MailGrid->isEnabled());
    mailbox.deliver(message("1"));
    mainWindow().tmrCheckMail_Timer();
    EXPECT_EQ(mainWindow().MailGrid->Rows(), 2);
    EXPECT_EQ(cell(1, 3), QStringLiteral("About 1"));
    EXPECT_TRUE(mainWindow().MailGrid->isEnabled());
    EXPECT_TRUE(mainWindow().cmdDelete->isEnabled());
}

TEST_F(NewMailCheck, MessagesDeletedByAnotherClientFetchNothingAndLeaveTheLastCount) {
    logInWith(3);
    mailbox.remove(1);
    mainWindow().tmrCheckMail_Timer();
    ASSERT_TRUE(server.waitForEndOf(2));
    EXPECT_THAT(server.commands(1), ElementsAre("USER ann", "PASS secret", "STAT", "QUIT"));
    EXPECT_EQ(email::mailbox.LastMessageCount, 3);
    EXPECT_EQ(email::mailbox.MessageCount, 2);
    EXPECT_FALSE(email::mailbox.NewMailFound);
}

TEST_F(NewMailCheck, WithoutAUserNameOrAPasswordAsksInTitleCase) {
    logInWith(1);
    email::credentials.Password.clear();
    mainWindow().tmrCheckMail_Timer();
    email::credentials.UserName.clear();
    mainWindow().tmrCheckMail_Timer();
    EXPECT_THAT(boxTexts(), ElementsAre(QStringLiteral("Password Must Be Entered To Get Mail!"),
                                        QStringLiteral("User Name Must Be Entered To Get Mail!")));
    EXPECT_EQ(boxes[0].title, QStringLiteral("Example School Mail"));
    EXPECT_EQ(server.connections(), 1U);
    expectUsableWindow();
}

TEST_F(NewMailCheck, ARefusedPasswordIsReportedAndTheProgramGoesOn) {
    logInWith(1);
    mailbox.answer("PASS", "-ERR no\r\n");
    mainWindow().tmrCheckMail_Timer();
    expectBox(QStringLiteral("Password Or User Name Wrong, Please Try Again 20172"),
              QStringLiteral("Example School Mail Error"));
    EXPECT_EQ(programEnds, 0);
    EXPECT_TRUE(loginWindow().cmdLogin->isEnabled());
    expectUsableWindow();
    mailbox.answerProperly("PASS");
    mainWindow().tmrCheckMail_Timer();
    EXPECT_EQ(boxes.size(), 1U);
}

TEST_F(NewMailCheck, AfterADeletionOnlyWhatCameSinceIsNew) {
    logInWith(3);
    mainWindow().MailGrid->setCurrentCell(0, 0);
    mainWindow().cmdDelete->click();
    boxes.clear();
    mailbox.deliver(message("4"));
    mainWindow().cmdGetMail->click();
    EXPECT_THAT(boxTexts(), IsEmpty());
    EXPECT_EQ(cell(2, 3), QStringLiteral("About 3"));
    EXPECT_EQ(cell(3, 3), QStringLiteral("About 4"));
    EXPECT_EQ(cell(3, 0), QStringLiteral("3"));
    EXPECT_EQ(email::mailbox.MessageNumbers.at(2), 3);
}

TEST_F(NewMailCheck, NewMailTakesTheKeyboardFromNobodyWhoIsWriting) {
    logInWith(1);
    mainWindow().cmdCmpose->click();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&composeWindow()));
    mailbox.deliver(message("2"));
    mainWindow().tmrCheckMail_Timer();
    QCoreApplication::processEvents();
    EXPECT_TRUE(composeWindow().isActiveWindow());
    EXPECT_TRUE(composeWindow().tTo->hasFocus());
    EXPECT_FALSE(mainWindow().isEnabled());
    EXPECT_EQ(mainWindow().MailGrid->Rows(), 3);
}

TEST_F(NewMailCheck, NewMailTakesTheKeyboardFromNobodyWhoFindsAnAddress) {
    logInWith(1);
    email::settings.ShowDatabase = QStringLiteral("yes");
    mainWindow().cmdCmpose->click();
    composeWindow().cmdSendto->click();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&findWindow()));
    mailbox.deliver(message("2"));
    mainWindow().tmrCheckMail_Timer();
    QCoreApplication::processEvents();
    EXPECT_EQ(mainWindow().MailGrid->Rows(), 3);
    EXPECT_TRUE(findWindow().isActiveWindow());
    EXPECT_TRUE(findWindow().txtFind->hasFocus());
    EXPECT_FALSE(composeWindow().isEnabled());
    EXPECT_FALSE(mainWindow().isEnabled());
    findWindow().cmdClose->click();
    EXPECT_TRUE(composeWindow().isEnabled());
    EXPECT_FALSE(mainWindow().isEnabled());
    composeWindow().cmdCancel->click();
    EXPECT_TRUE(mainWindow().isEnabled());
}
