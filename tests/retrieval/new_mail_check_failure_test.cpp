// Checks for new mail that fail, or meet one another, or are left.

#include "email/shared_settings.h"
#include "tests/retrieval/new_mail_check_fixture.h"

#include <QPushButton>

#include <string>

using support::NewMailCheck;
using support::Pop3Mailbox;
using support::ScriptedServer;
using support::WhenItHolds;
using testing::ElementsAre;
using testing::IsEmpty;

TEST_F(NewMailCheck, AMessageThatIsTooLargeIsReportedAndTheNextCheckWorks) {
    logInWith(1);
    mailbox.deliver(message("2"));
    mailbox.answer("TOP 2", "+OK\r\nSubject: " + std::string(100'000, 'x') + "\r\n\r\n.\r\n");
    loginWindow().POP1.setLimits({.listingBytes = 50'000});
    mainWindow().tmrCheckMail_Timer();
    expectBox(QStringLiteral("Message is too large."), QStringLiteral("Example School E-mail"));
    EXPECT_EQ(programEnds, 0);
    EXPECT_EQ(email::mailbox.LastMessageCount, 1);
    expectUsableWindow();
    mailbox.answerProperly("TOP 2");
    mainWindow().tmrCheckMail_Timer();
    EXPECT_EQ(email::mailbox.LastMessageCount, 2);
    EXPECT_EQ(cell(2, 3), QStringLiteral("About 2"));
}

TEST_F(NewMailCheck, WhatCameBeforeAMessageThatIsTooLargeStaysAndAllNumbersAgree) {
    logInWith(2);
    const std::int32_t bytesBefore = email::mailbox.MailboxBytes;
    mailbox.deliver(message("3")).deliver(message("4")).deliver(message("5"));
    runOutOfMemoryAtSizeOf("5");
    mainWindow().tmrCheckMail_Timer();
    expectBox(QStringLiteral("Message is too large."), QStringLiteral("Example School E-mail"));
    expectList(4, bytesBefore + email::mailbox.Messages.at(3).Size + email::mailbox.Messages.at(4).Size);
    EXPECT_EQ(cell(3, 3), QStringLiteral("About 3"));
    EXPECT_EQ(cell(4, 3), QStringLiteral("About 4"));
    EXPECT_TRUE(email::mailbox.NewMailFound);
    expectUsableWindow();
}

TEST_F(NewMailCheck, AFailedCheckLeavesTheLastCountAndTheNextOneFetchesFromThere) {
    logInWith(1);
    mailbox.deliver(message("2")).deliver(message("3"));
    runOutOfMemoryAtSizeOf("3");
    mainWindow().tmrCheckMail_Timer();
    EXPECT_EQ(email::mailbox.LastMessageCount, 1);
    const std::int32_t bytesAfter = email::mailbox.MailboxBytes;
    // The next check lists the second message again, which must stay one row and be counted once.
    mainWindow().tmrCheckMail_Timer();
    expectList(2, bytesAfter);
    loginWindow().POP1.PITrail = nullptr;
    mainWindow().tmrCheckMail_Timer();
    EXPECT_EQ(email::mailbox.LastMessageCount, 3);
    expectList(3, email::mailbox.MailboxBytes);
    EXPECT_EQ(cell(3, 3), QStringLiteral("About 3"));
}

TEST_F(NewMailCheck, MemoryThatRunsOutAtTheQuitCostsNothing) {
    logInWith(1);
    const std::int32_t bytesBefore = email::mailbox.MailboxBytes;
    mailbox.deliver(message("2"));
    runOutOfMemoryAt("+OK good-bye");
    mainWindow().tmrCheckMail_Timer();
    EXPECT_THAT(boxTexts(), IsEmpty());
    EXPECT_EQ(email::mailbox.LastMessageCount, 2);
    expectList(2, bytesBefore + email::mailbox.Messages.at(2).Size);
    expectUsableWindow();
}

TEST_F(NewMailCheck, WhenNothingCouldBeFetchedTheListIsAsItWas) {
    logInWith(2);
    const std::int32_t bytesBefore = email::mailbox.MailboxBytes;
    mailbox.deliver(message("3"));
    runOutOfMemoryAtSizeOf("3");
    mainWindow().tmrCheckMail_Timer();
    expectList(2, bytesBefore);
    EXPECT_FALSE(email::mailbox.NewMailFound);
}

TEST_F(NewMailCheck, ASecondCheckUnderTheBoxOfTheFirstMeetsABusyServerAndHarmsNothing) {
    logInWith(1);
    mailbox.answer("PASS", "-ERR no\r\n");
    int depth = 0;
    whileBoxIsOpen = [&](const controls::MessageBox&) {
        if (++depth == 1) {
            mainWindow().tmrCheckMail_Timer();
        }
    };
    mainWindow().tmrCheckMail_Timer();
    EXPECT_THAT(boxTexts(),
                ElementsAre(QStringLiteral("Password Or User Name Wrong, Please Try Again 20172"),
                            QStringLiteral("Cannot Re-Enter Mail Server, Please Try Again 20102")));
    EXPECT_EQ(programEnds, 0);
}

TEST_F(NewMailCheck, ASecondCheckWhileTheFirstFetchesLeavesItAlone) {
    logInWith(1);
    mailbox.deliver(message("2"));
    mailbox.on("TOP 2", support::holdAndSay("+OK\r\n" + support::stuffed(message("2"))));
    const WhenItHolds second([&] { return server.commands(1).size() == 5; },
                             [&] {
                                 mainWindow().tmrCheckMail_Timer();
                                 EXPECT_FALSE(mainWindow().cmdDelete->isEnabled());
                                 server.release();
                             });
    mainWindow().tmrCheckMail_Timer();
    EXPECT_THAT(boxTexts(),
                ElementsAre(QStringLiteral("Cannot Re-Enter Mail Server, Please Try Again 20102")));
    EXPECT_EQ(cell(2, 3), QStringLiteral("About 2"));
    EXPECT_EQ(email::mailbox.LastMessageCount, 2);
}

TEST_F(NewMailCheck, AnUnreachableServerEndsTheProgram) {
    logInWith(1);
    email::settings.POPServer = QStringLiteral("mail.invalid");
    mainWindow().tmrCheckMail_Timer();
    expectBox(QStringLiteral("Host Not Found. Please make sure your Settings are correct."),
              QStringLiteral("Example School Mail"));
    EXPECT_EQ(programEnds, 1);
}

TEST_F(NewMailCheck, ABrokenConnectionEndsTheProgram) {
    logInWith(1);
    mailbox.on("STAT", [](support::Peer& peer) { peer.reset(); });
    mainWindow().tmrCheckMail_Timer();
    expectBox(QStringLiteral("There Was Trouble Connecting With The Mail Server, Please Try Again Later "),
              QStringLiteral("Example School Mail"));
    EXPECT_EQ(programEnds, 1);
}

TEST_F(NewMailCheck, BoxesOfFailedChecksDoNotPileUpWhileNobodyIsThere) {
    logInWith(1);
    mailbox.answer("PASS", "-ERR no\r\n");
    whileBoxIsOpen = [&](const controls::MessageBox&) {
        if (boxes.size() < 10) {
            mainWindow().tmrCheckMail_Timer();
        }
    };
    mainWindow().tmrCheckMail_Timer();
    EXPECT_THAT(boxes.size(), 2U);
    EXPECT_EQ(email::mailbox.LastMessageCount, 1);
}

TEST_F(NewMailCheck, ExitInTheMidstOfACheckEndsTheProgramAtOnce) {
    logInWith(1);
    mailbox.on("STAT", [](support::Peer& peer) {
        peer.holdSilent();
        peer.close();
    });
    const WhenItHolds exit([&] { return server.commands().back() == "STAT"; },
                           [&] {
                               mainWindow().cmdExit->click();
                               EXPECT_EQ(programEnds, 1);
                               server.release();
                           });
    mainWindow().tmrCheckMail_Timer();
}

TEST_F(NewMailCheck, AMailboxInUseIsReportedAndTheProgramGoesOn) {
    logInWith(1);
    mailbox.answer("PASS", "-ERR [IN-USE] locked\r\n");
    loginWindow().cmdLogin->setEnabled(false);
    mainWindow().tmrCheckMail_Timer();
    expectBox(QStringLiteral("Cannot Re-Enter Mail Server, Please Try Again 20102"),
              QStringLiteral("Example School Mail Error"));
    EXPECT_EQ(programEnds, 0);
    EXPECT_TRUE(loginWindow().cmdLogin->isEnabled());
    EXPECT_EQ(email::mailbox.LastMessageCount, 1);
    ASSERT_TRUE(server.waitForEndOf(2));
    EXPECT_THAT(server.commands(1), ElementsAre("USER ann", "PASS secret", "QUIT"));
    expectUsableWindow();
}

TEST_F(NewMailCheck, ARefusedConnectionEndsTheProgram) {
    logInWith(1);
    {
        const ScriptedServer gone{Pop3Mailbox()};
        email::settings.POPServer = gone.address();
    }
    mainWindow().tmrCheckMail_Timer();
    expectBox(QStringLiteral("Connection Refused by Host. Please Start Program Again "),
              QStringLiteral("Example School Mail Error"));
    EXPECT_EQ(programEnds, 1);
}

TEST_F(NewMailCheck, AnUnreachableNetworkEndsTheProgram) {
    logInWith(1);
    // The loopback network's broadcast address is unreachable for a connection.
    email::settings.POPServer = QStringLiteral("127.255.255.255");
    mainWindow().tmrCheckMail_Timer();
    expectBox(QStringLiteral("Network is unreachable."), QStringLiteral("Example School E-mail"));
    EXPECT_EQ(programEnds, 1);
}

TEST_F(NewMailCheck, AnyOtherErrorEndsTheProgramWithItsNumber) {
    logInWith(1);
    mailbox.answer("STAT", "+OK 32768 9\r\n");
    mainWindow().tmrCheckMail_Timer();
    expectBox(QStringLiteral("Error 6 Please Start Program Again "),
              QStringLiteral("Example School Mail Error"));
    EXPECT_EQ(programEnds, 1);
}

TEST_F(NewMailCheck, TheTwoHundredAndFirstMessageEndsTheProgram) {
    logInWith(1);
    for (int number = 2; number <= 201; ++number) {
        mailbox.deliver("Subject: x\r\n\r\n");
    }
    mainWindow().tmrCheckMail_Timer();
    expectBox(QStringLiteral("Error 9 Please Start Program Again "),
              QStringLiteral("Example School Mail Error"));
    EXPECT_EQ(email::mailbox.LastMessageCount, 1);
}
