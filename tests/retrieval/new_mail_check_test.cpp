#include "email/credentials.h"
#include "email/mailbox.h"
#include "email/shared_settings.h"
#include "tests/support/pop3_script.h"
#include "tests/support/window_test.h"
#include "windows/frmFind.h"
#include "windows/frmFrom.h"
#include "windows/frmLogin.h"
#include "windows/frmMain.h"
#include "windows/frmSend.h"

#include <QAccessible>
#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include <cstdint>
#include <new>
#include <string>
#include <vector>

using support::Pop3Mailbox;
using support::ScriptedServer;
using support::WhenItHolds;
using support::WindowTest;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {
class NewMailCheck : public WindowTest {
  protected:
    static std::string message(const std::string& name) {
        return "From: " + name + "@example.org\r\nSubject: About " + name + "\r\n\r\nText of " + name +
               "\r\n";
    }

    void logInWith(int messages) {
        for (int i = 1; i <= messages; ++i) {
            mailbox.deliver(message(std::to_string(i)));
        }
        logIn(server.address());
        ASSERT_THAT(boxTexts(), IsEmpty());
        ASSERT_TRUE(server.waitForEndOf(1));
        sounds.clear();
    }

    static QString cell(int row, int column) {
        return mainWindow().MailGrid->TextMatrix(row, column).trimmed();
    }

    static std::vector<int> newRows() {
        std::vector<int> rows;
        for (int row = 1; row < mainWindow().MailGrid->Rows(); ++row) {
            if (mainWindow().MailGrid->isRowNew(row)) {
                rows.push_back(row);
            }
        }
        return rows;
    }

    void expectBox(const QString& text, const QString& title) {
        ASSERT_THAT(boxTexts(), ElementsAre(text));
        EXPECT_EQ(boxes[0].title, title);
    }

    /** Simulates running out of memory when the client sends or gets this line. */
    static void runOutOfMemoryAt(const std::string& line) {
        loginWindow().POP1.PITrail = [line](poplib::Direction, const std::string& text) {
            if (text == line) {
                throw std::bad_alloc();
            }
        };
    }

    /** Simulates the same when the server tells the size of this message. */
    void runOutOfMemoryAtSizeOf(const std::string& number) {
        const std::string reply = "+OK " + number + " 52 bytes";
        mailbox.answer("LIST " + number, reply + "\r\n");
        runOutOfMemoryAt(reply);
    }

    /** Checks that rows, counters, summary line and row numbers all agree. */
    static void expectList(int messages, std::int32_t bytes) {
        EXPECT_EQ(mainWindow().MailGrid->Rows(), messages + 1);
        EXPECT_EQ(email::mailbox.MessageCount, messages);
        EXPECT_EQ(email::mailbox.MailboxBytes, bytes);
        EXPECT_EQ(mainWindow().lStats->text(),
                  QStringLiteral("%1 messages %2 bytes total").arg(messages).arg(bytes));
        for (int row = 1; row <= messages; ++row) {
            EXPECT_EQ(cell(row, 0), QString::number(row));
            EXPECT_EQ(email::mailbox.MessageNumbers.at(static_cast<std::size_t>(row) - 1), row);
        }
    }

    static void expectUsableWindow() {
        const auto& main = mainWindow();
        EXPECT_TRUE(main.cmdCmpose->isEnabled());
        EXPECT_TRUE(main.MailGrid->redraws());
        EXPECT_NE(main.cursor().shape(), Qt::WaitCursor);
    }

    Pop3Mailbox mailbox;
    ScriptedServer server{mailbox};
};
} // namespace

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
    mailbox.on("STAT", [](support::Peer& peer) { peer.holdSilent(); });
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

namespace {
class NobodyLoggedOn : public NewMailCheck {
  protected:
    /** Starts the program and closes the login window. */
    void startWithout(const char* setting, QString email::SettingsFields::*field) {
        auto fields = support::schoolSettings(server.address());
        fields.*field = QLatin1String(setting);
        writeSettings(fields);
        startUp();
        loginWindow().close();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&mainWindow()));
    }

    static void logInAgain() {
        ASSERT_TRUE(loginWindow().isVisible());
        loginWindow().tUser->setText(QStringLiteral("ann"));
        loginWindow().tpwd->setText(QStringLiteral("secret"));
        loginWindow().cmdLogin->click();
    }

    /** Opens the menu as a person does, and closes it. */
    static bool helpOffersToLogIn() {
        QTest::keyClick(&mainWindow(), Qt::Key_H, Qt::AltModifier);
        const bool offered = mainWindow().mnuLogin->isVisible();
        while (QWidget* const menu = QApplication::activePopupWidget()) {
            menu->close();
        }
        return offered;
    }
};
} // namespace

TEST_F(NobodyLoggedOn, GetNewMailLeadsBackToTheLoginWindow) {
    mailbox.deliver(message("1"));
    startWithout("no", &email::SettingsFields::ShowSetup);
    mainWindow().cmdGetMail->click();
    EXPECT_THAT(boxTexts(), ElementsAre(QStringLiteral("User Name Must Be Entered To Get Mail!"),
                                        QStringLiteral("You have no new mail.")));
    EXPECT_EQ(loginWindow().windowTitle(), QStringLiteral("Example School E-Mail"));
    EXPECT_FALSE(loginWindow().cmdSetup->isVisible());
    EXPECT_FALSE(helpOffersToLogIn());
    logInAgain();
    EXPECT_EQ(cell(1, 3), QStringLiteral("About 1"));
    EXPECT_FALSE(loginWindow().isVisible());
    mainWindow().cmdGetMail->click();
    EXPECT_FALSE(loginWindow().isVisible());
}

TEST_F(NobodyLoggedOn, AfterABrokenSettingsFileGetNewMailLeadsToTheLoginWindow) {
    writeSettingsText("\"yes\"\r\n");
    startUp();
    ASSERT_TRUE(mainWindow().isVisible());
    EXPECT_EQ(mainWindow().lStats->text(), QStringLiteral("0 messages 0 bytes total"));
    mainWindow().cmdGetMail->click();
    EXPECT_TRUE(loginWindow().isVisible());
}

TEST_F(NobodyLoggedOn, WhereGetNewMailIsHiddenTheHelpMenuLeadsBack) {
    mailbox.deliver(message("1"));
    startWithout("no", &email::SettingsFields::ShowGetMail);
    EXPECT_TRUE(helpOffersToLogIn());
    mainWindow().mnuLogin->trigger();
    EXPECT_THAT(boxTexts(), IsEmpty());
    logInAgain();
    EXPECT_EQ(cell(1, 3), QStringLiteral("About 1"));
    EXPECT_FALSE(helpOffersToLogIn());
}

namespace {
struct Interval {
    std::int16_t minutes;
    bool runs;
    int milliseconds;
};

class CheckTimer : public WindowTest, public testing::WithParamInterface<Interval> {};
} // namespace

TEST_P(CheckTimer, NeverMakesABusyLoop) {
    Pop3Mailbox mailbox;
    ScriptedServer server{mailbox};
    auto fields = support::schoolSettings(server.address());
    fields.GetMailEvery = QString::number(GetParam().minutes);
    writeSettings(fields);
    startUp();
    loginWindow().tUser->setText(QStringLiteral("ann"));
    loginWindow().tpwd->setText(QStringLiteral("secret"));
    loginWindow().cmdLogin->click();
    EXPECT_THAT(boxTexts(), IsEmpty());
    EXPECT_EQ(mainWindow().tmrCheckMail->isActive(), GetParam().runs);
    if (GetParam().runs) {
        EXPECT_EQ(mainWindow().tmrCheckMail->interval(), GetParam().milliseconds);
    }
}

INSTANTIATE_TEST_SUITE_P(Intervals, CheckTimer,
                         testing::Values(Interval{0, false, 0}, Interval{1, true, 60'000},
                                         Interval{60, true, 3'600'000}, Interval{-1, false, 0},
                                         Interval{-32768, false, 0}, Interval{32767, true, 1'966'020'000}),
                         [](const auto& test) {
                             return (test.param.minutes < 0 ? "Minus" : "") +
                                    std::to_string(std::abs(test.param.minutes)) + "Minutes";
                         });
