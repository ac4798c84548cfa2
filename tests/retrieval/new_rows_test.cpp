// How the list shows what a check has brought.

#include "tests/retrieval/new_mail_check_fixture.h"
#include "windows/frmFrom.h"

#include <QAccessible>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

using support::NewMailCheck;
using testing::ElementsAre;
using testing::IsEmpty;

TEST_F(NewMailCheck, WhatACheckBringsIsNewUntilItIsOpened) {
    logInWith(1);
    mailbox.deliver(message("2")).deliver(message("3"));
    mainWindow().tmrCheckMail_Timer();
    EXPECT_THAT(newRows(), ElementsAre(2, 3));
    doubleClick(2);
    ASSERT_TRUE(messageWindow().isVisible());
    EXPECT_THAT(newRows(), ElementsAre(3));
}

TEST_F(NewMailCheck, WhatIsNewStaysSoUnderItsNewNumberAfterADeletion) {
    logInWith(2);
    mailbox.deliver(message("3")).deliver(message("4"));
    mainWindow().tmrCheckMail_Timer();
    mainWindow().MailGrid->setCurrentCell(0, 0);
    mainWindow().cmdDelete->click();
    EXPECT_THAT(newRows(), ElementsAre(2, 3));
    mainWindow().MailGrid->setCurrentCell(1, 0);
    mainWindow().cmdDelete->click();
    EXPECT_THAT(newRows(), ElementsAre(2));
    EXPECT_EQ(cell(2, 3), QStringLiteral("About 4"));
}

TEST_F(NewMailCheck, NothingIsNewInAListing) {
    logInWith(1);
    mailbox.deliver(message("2"));
    mainWindow().tmrCheckMail_Timer();
    EXPECT_THAT(newRows(), ElementsAre(2));
    loginWindow().cmdLogin->setEnabled(true);
    loginWindow().tpwd->setText(QStringLiteral("secret"));
    loginWindow().cmdLogin->click();
    EXPECT_THAT(newRows(), IsEmpty());
}

TEST_F(NewMailCheck, ANewRowIsSeenInBoldLetters) {
    logInWith(1);
    auto& grid = *mainWindow().MailGrid;
    const QImage before = grid.viewport()->grab().toImage();
    grid.setRowNew(1, true);
    EXPECT_NE(grid.viewport()->grab().toImage(), before);
    grid.setRowNew(1, false);
    EXPECT_EQ(grid.viewport()->grab().toImage(), before);
}

TEST_F(NewMailCheck, TheNewestRowComesIntoViewAndNothingIsChosen) {
    logInWith(60);
    auto& grid = *mainWindow().MailGrid;
    const auto lastIsInView = [&grid] {
        return grid.viewport()->rect().contains(grid.visualItemRect(grid.item(grid.Rows() - 2, 0)));
    };
    EXPECT_TRUE(lastIsInView());
    grid.scrollToTop();
    ASSERT_FALSE(lastIsInView());
    mailbox.deliver(message("61"));
    mainWindow().tmrCheckMail_Timer();
    EXPECT_TRUE(lastIsInView());
    EXPECT_EQ(grid.Row(), -1);
}

TEST_F(NewMailCheck, TheFootLineTellsScreenReadersHowManyHaveCome) {
    logInWith(1);
    const auto told = [] {
        return QAccessible::queryAccessibleInterface(mainWindow().lStats)->text(QAccessible::Description);
    };
    EXPECT_EQ(told(), QString());
    mailbox.deliver(message("2")).deliver(message("3"));
    mainWindow().tmrCheckMail_Timer();
    EXPECT_EQ(told(), QStringLiteral("2 new messages"));
    mainWindow().tmrCheckMail_Timer();
    EXPECT_EQ(told(), QString());
}
