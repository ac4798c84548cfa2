#include "email/mailbox.h"
#include "tests/support/pop3_script.h"
#include "tests/support/window_test.h"
#include "windows/frmLogin.h"
#include "windows/frmMain.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include <utility>

using controls::MessageAnswer;
using controls::MessageButtons;
using support::Pop3Mailbox;
using support::ScriptedServer;
using support::WhenItHolds;
using support::WindowTest;
using testing::ElementsAre;
using testing::SizeIs;

namespace {
const QString kQuestion = QStringLiteral("Are you sure you want to delete this message?");

/** A message whose size tells it from the others: 40 bytes plus its number. */
std::string message(int number) {
    const std::string name(1, static_cast<char>('a' + number - 1));
    const std::string head = "From: " + name + "@example.org\r\nSubject: " + name + "\r\n\r\n";
    return head + std::string(static_cast<std::size_t>(40 + number) - head.size() - 2, '-') + "\r\n";
}

class MessageDeletion : public WindowTest {
  protected:
    void logInWith(int messages) {
        for (int number = 1; number <= messages; ++number) {
            mailbox.deliver(message(number));
        }
        logIn(server.address());
        ASSERT_THAT(boxTexts(), testing::IsEmpty());
        ASSERT_TRUE(server.waitForEndOf(1));
    }

    void deleteRow(int row) {
        boxes.clear();
        mainWindow().MailGrid->setCurrentCell(row - 1, 0);
        mainWindow().cmdDelete->click();
    }

    static std::vector<QString> column(int number) {
        std::vector<QString> texts;
        for (int row = 1; row < mainWindow().MailGrid->Rows(); ++row) {
            texts.push_back(mainWindow().MailGrid->TextMatrix(row, number).trimmed());
        }
        return texts;
    }

    void expectFailure(int error) {
        ASSERT_THAT(
            boxTexts(),
            ElementsAre(kQuestion, QStringLiteral("Message can not be deleted at this time.  Error# ") +
                                       QString::number(error)));
        EXPECT_EQ(boxes[1].title, QStringLiteral("Example School E-Mail"));
        EXPECT_EQ(boxes[1].buttons, MessageButtons::Ok);
        expectUsable();
    }

    static void expectUsable() {
        EXPECT_TRUE(mainWindow().isEnabled());
        EXPECT_TRUE(mainWindow().cmdExit->isEnabled());
        EXPECT_TRUE(mainWindow().MailGrid->redraws());
    }

    static QString totals() { return mainWindow().lStats->text(); }

    Pop3Mailbox mailbox;
    ScriptedServer server{mailbox};
};
} // namespace

TEST_F(MessageDeletion, Message2Of4LeavesTheNumbers1To3AndATotalReducedByItsSize) {
    logInWith(4);
    deleteRow(2);
    ASSERT_THAT(boxTexts(), ElementsAre(kQuestion));
    EXPECT_EQ(boxes[0].title, QStringLiteral("Example School E-Mail"));
    EXPECT_EQ(boxes[0].buttons, MessageButtons::YesNo);
    EXPECT_THAT(column(0), ElementsAre(QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("3")));
    EXPECT_THAT(column(3), ElementsAre(QStringLiteral("a"), QStringLiteral("c"), QStringLiteral("d")));
    EXPECT_EQ(totals(), QStringLiteral("3 messages 128 bytes total"));
    EXPECT_EQ(email::mailbox.MessageCount, 3);
    EXPECT_EQ(email::mailbox.LastMessageCount, 3);
    EXPECT_THAT(mailbox.messages(), ElementsAre(message(1), message(3), message(4)));
    expectUsable();
}

TEST_F(MessageDeletion, AsksTheServerInThisOrder) {
    logInWith(2);
    deleteRow(2);
    ASSERT_TRUE(server.waitForEndOf(2));
    EXPECT_THAT(server.commands(1), ElementsAre("USER ann", "PASS secret", "STAT", "UIDL", "LIST 2",
                                                "TOP 2 25", "DELE 2", "QUIT"));
}

TEST_F(MessageDeletion, TheOnlyMessageResetsTheListThoughItsSizeIsNeverSubtracted) {
    logInWith(1);
    email::mailbox.Messages.at(1).Size = 7;
    deleteRow(1);
    EXPECT_EQ(totals(), QStringLiteral("0 messages 0 bytes total"));
    EXPECT_EQ(mainWindow().MailGrid->Rows(), 2);
    EXPECT_THAT(column(3), ElementsAre(QString()));
    EXPECT_EQ(mainWindow().MailGrid->TextMatrix(0, 0), QStringLiteral("Num"));
    EXPECT_FALSE(mainWindow().cmdDelete->isEnabled());
    EXPECT_THAT(mailbox.messages(), SizeIs(0));
    expectUsable();
}

TEST_F(MessageDeletion, AnsweringNoChangesNothing) {
    logInWith(2);
    answer = MessageAnswer::No;
    deleteRow(1);
    EXPECT_THAT(boxTexts(), ElementsAre(kQuestion));
    EXPECT_THAT(mailbox.messages(), SizeIs(2));
    EXPECT_EQ(totals(), QStringLiteral("2 messages 83 bytes total"));
    EXPECT_EQ(server.connectionsEnded(), 1U);
    expectUsable();
}

TEST_F(MessageDeletion, WithoutASelectionAPersonIsAskedToMakeOne) {
    logInWith(2);
    mainWindow().MailGrid->setCurrentItem(nullptr);
    mainWindow().cmdDelete->click();
    ASSERT_THAT(boxTexts(), ElementsAre(QStringLiteral("Please select a message from the list first.")));
    EXPECT_EQ(boxes[0].title, QStringLiteral("Example School E-Mail"));
    EXPECT_EQ(boxes[0].buttons, MessageButtons::Ok);
}

TEST_F(MessageDeletion, AMessageNumberAbove200EndsInTheBoxOfTheBoundsError) {
    logInWith(2);
    mainWindow().MailGrid->setTextMatrix(2, 0, QStringLiteral("201"));
    deleteRow(2);
    expectFailure(9);
    EXPECT_THAT(mailbox.messages(), SizeIs(2));
    EXPECT_EQ(totals(), QStringLiteral("Deleting message..."));
}

TEST_F(MessageDeletion, TheWindowRestsWhileTheServerWorks) {
    logInWith(2);
    mailbox.on("DELE", support::holdAndSay("-ERR\r\n"));
    const WhenItHolds look([this] { return server.keywords().back() == "DELE"; },
                           [this] {
                               EXPECT_EQ(totals(), QStringLiteral("Deleting message..."));
                               EXPECT_FALSE(mainWindow().isEnabled());
                               EXPECT_FALSE(mainWindow().cmdExit->isEnabledTo(&mainWindow()));
                               server.release();
                           });
    deleteRow(1);
    expectFailure(20332);
}

TEST_F(MessageDeletion, TakesNobodyOutOfTheAddressBookAndNewMailComesBehind) {
    logInWith(3);
    deleteRow(1);
    EXPECT_THAT(email::mailbox.Senders, ElementsAre("a@example.org", "b@example.org", "c@example.org"));
    mailbox.deliver(message(4));
    mainWindow().cmdGetMail->click();
    EXPECT_THAT(email::mailbox.Senders,
                ElementsAre("a@example.org", "b@example.org", "c@example.org", "d@example.org"));
}

TEST_F(MessageDeletion, TheTableOfMessagesIsNotCompacted) {
    logInWith(4);
    deleteRow(1);
    EXPECT_EQ(email::mailbox.Messages.at(1).Subject, "a");
    EXPECT_EQ(email::mailbox.Messages.at(2).Subject, "b");
    // Row 1 is message b now, but the size that is subtracted is still that of record 1.
    deleteRow(1);
    EXPECT_EQ(totals(), QStringLiteral("2 messages 88 bytes total"));
    EXPECT_THAT(mailbox.messages(), ElementsAre(message(3), message(4)));
}

TEST_F(MessageDeletion, OneAfterTheOtherFollowsTheServersNumbers) {
    logInWith(5);
    deleteRow(2);
    deleteRow(3);
    deleteRow(1);
    EXPECT_THAT(mailbox.messages(), ElementsAre(message(3), message(5)));
    EXPECT_THAT(column(0), ElementsAre(QStringLiteral("1"), QStringLiteral("2")));
    EXPECT_THAT(column(3), ElementsAre(QStringLiteral("c"), QStringLiteral("e")));
}

TEST_F(MessageDeletion, AMessageThatAnotherClientMovedIsNotDeleted) {
    logInWith(4);
    mailbox.remove(1);
    deleteRow(3);
    expectFailure(20312);
    EXPECT_THAT(mailbox.messages(), SizeIs(3));
    EXPECT_THAT(column(3), SizeIs(4));
    EXPECT_EQ(email::mailbox.MessageCount, 4);
}

TEST_F(MessageDeletion, ChangesNothingUntilTheServerHasConfirmedTheQuit) {
    logInWith(3);
    for (const char* quit : {"-ERR some deleted messages not removed\r\n", ""}) {
        mailbox.on("QUIT", [quit](support::Peer& peer) {
            peer.send(quit);
            peer.close();
        });
        deleteRow(2);
        expectFailure(20302);
        EXPECT_THAT(column(3), SizeIs(3));
        EXPECT_EQ(email::mailbox.MessageCount, 3);
        EXPECT_EQ(email::mailbox.MailboxBytes, 126);
        EXPECT_EQ(totals(), QStringLiteral("Deleting message..."));
        EXPECT_THAT(mailbox.messages(), SizeIs(3));
    }
}

TEST_F(MessageDeletion, ARefusedLogOnIsReportedAndMayBeTriedAgain) {
    logInWith(2);
    mailbox.answer("PASS", "-ERR [IN-USE] come back\r\n");
    deleteRow(1);
    expectFailure(20102);
    mailbox.answerProperly("PASS");
    deleteRow(1);
    EXPECT_THAT(boxTexts(), ElementsAre(kQuestion));
    EXPECT_THAT(mailbox.messages(), ElementsAre(message(2)));
}

TEST_F(MessageDeletion, ACheckThatStartsWhileItWorksIsRefusedAndDoesNoHarm) {
    logInWith(2);
    mailbox.on("DELE", support::holdAndSay("+OK\r\n"));
    const WhenItHolds check([this] { return server.keywords().back() == "DELE"; },
                            [this] {
                                mainWindow().tmrCheckMail_Timer();
                                server.release();
                            });
    deleteRow(1);
    EXPECT_THAT(
        boxTexts(),
        ElementsAre(kQuestion, QStringLiteral("Cannot Re-Enter Mail Server, Please Try Again 20102")));
    EXPECT_THAT(column(3), ElementsAre(QStringLiteral("b")));
    expectUsable();
}

TEST_F(MessageDeletion, ACheckUnderTheQuestionMayChangeTheListAndTheRightMessageIsDeleted) {
    logInWith(3);
    bool checked = false;
    whileBoxIsOpen = [&](const controls::MessageBox& box) {
        if (box.buttons == MessageButtons::YesNo && !std::exchange(checked, true)) {
            mailbox.deliver(message(4));
            mainWindow().tmrCheckMail_Timer();
        }
    };
    deleteRow(2);
    EXPECT_THAT(column(3), ElementsAre(QStringLiteral("a"), QStringLiteral("c"), QStringLiteral("d")));
    EXPECT_THAT(mailbox.messages(), ElementsAre(message(1), message(3), message(4)));
    expectUsable();
}

TEST_F(MessageDeletion, AServerThatDeletesAndFallsSilentNeverLeadsToANeighboursDeletion) {
    logInWith(4);
    mailbox.on("QUIT", [this](support::Peer& peer) {
        mailbox.remove(2);
        peer.close();
    });
    deleteRow(2);
    expectFailure(20302);
    mailbox.answerProperly("QUIT");
    deleteRow(2);
    expectFailure(20312);
    EXPECT_THAT(mailbox.messages(), ElementsAre(message(1), message(3), message(4)));
}

TEST_F(MessageDeletion, ASilentQuitIsAFailureAfterTheTimeOut) {
    logInWith(2);
    mailbox.on("QUIT", [](support::Peer& peer) { peer.holdSilent(); });
    loginWindow().POP1.setTimeouts({std::chrono::milliseconds(50), std::chrono::milliseconds(50)});
    deleteRow(1);
    expectFailure(20302);
    EXPECT_THAT(column(3), SizeIs(2));
}

TEST_F(MessageDeletion, AfterAMessageThatWasTooLargeTheListAndTheServerStillAgree) {
    logInWith(3);
    mailbox.deliver(message(4)).deliver(message(5));
    mailbox.answer("TOP 5", "+OK\r\nSubject: " + std::string(100'000, 'x') + "\r\n\r\n.\r\n");
    loginWindow().POP1.setLimits({.listingBytes = 50'000});
    mainWindow().tmrCheckMail_Timer();
    EXPECT_THAT(boxTexts(), ElementsAre(QStringLiteral("Message is too large.")));
    EXPECT_THAT(column(3), SizeIs(4));
    mailbox.answerProperly("TOP 5");
    deleteRow(1);
    EXPECT_THAT(boxTexts(), ElementsAre(kQuestion));
    EXPECT_THAT(column(3), ElementsAre(QStringLiteral("b"), QStringLiteral("c"), QStringLiteral("d")));
    mainWindow().tmrCheckMail_Timer();
    EXPECT_THAT(column(3), ElementsAre(QStringLiteral("b"), QStringLiteral("c"), QStringLiteral("d"),
                                       QStringLiteral("e")));
}

TEST_F(MessageDeletion, ARowThatStillWaitsForItsMessageCannotBeDeleted) {
    logInWith(1);
    mainWindow().MailGrid->setRows(3);
    deleteRow(2);
    EXPECT_THAT(boxTexts(), ElementsAre(QStringLiteral("Please select a message from the list first.")));
    EXPECT_THAT(mailbox.messages(), SizeIs(1));
}
