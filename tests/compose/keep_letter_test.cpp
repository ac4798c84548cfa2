// No letter is lost: what is in the compose window is kept until the user sends or cancels it.

#include "email/credentials.h"
#include "email/mailbox.h"
#include "email/shared_settings.h"
#include "platform/program.h"
#include "tests/support/file_faults.h"
#include "tests/support/pop3_script.h"
#include "tests/support/smtp_script.h"
#include "tests/support/window_test.h"
#include "windows/frmFrom.h"
#include "windows/frmMain.h"
#include "windows/frmSend.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include <filesystem>

using support::ScriptedServer;
using support::SmtpMailbox;
using support::WhenItHolds;
using support::WindowTest;
using testing::ElementsAre;
using testing::IsEmpty;
namespace filesystem = std::filesystem;

namespace {
const QString kOffer = QStringLiteral("A letter that you were writing was neither sent nor cancelled.\n\n"
                                      "Do you want to go on with it? No removes it.");

class KeepLetter : public WindowTest {
  protected:
    KeepLetter() : server(mailbox), school(support::schoolSettings(server.address())) {
        qputenv("BRINDLEWAKE_DRIVE_C", QByteArray::fromStdString(folder.path().string()));
        school.SendAttachments = QStringLiteral("yes");
        start();
    }

    /** Starts the program anew, as after it ended or crashed, and logs in. */
    void start(const QString& user = QStringLiteral("ann")) {
        forgetEverything();
        writeSettings(school);
        startUp();
        email::credentials.UserName = user;
        mainWindow().bringUp();
    }

    static frmSend& compose() {
        mainWindow().cmdCmpose->click();
        return composeWindow();
    }

    static void write(const QString& text = QStringLiteral("Dear Bob,\nthe letter")) {
        frmSend& window = composeWindow();
        window.tTo->setText(QStringLiteral("bob@example.org"));
        window.tCc->setText(QStringLiteral("carl@example.org"));
        window.tSubject->setText(QStringLiteral("Größe"));
        window.txtAttachment->setText(QStringLiteral("C:\\REPORT.TXT"));
        window.tMessage->insertPlainText(text);
    }

    /** Runs the timer's handler, as after the delay, and waits until the letter is written. */
    static void passTime() {
        composeWindow().tmrKeepLetter_Timer();
        ASSERT_TRUE(QTest::qWaitFor([] { return !composeWindow().keptLetter.isWriting(); }));
    }

    std::vector<filesystem::path> keptFiles() const {
        std::vector<filesystem::path> files;
        if (filesystem::exists(stateHome.path("brindlewake"))) {
            for (const auto& entry : filesystem::directory_iterator(stateHome.path("brindlewake"))) {
                files.push_back(entry.path());
            }
        }
        return files;
    }

    void expectTheLetter() {
        EXPECT_THAT(boxTexts(), ElementsAre(kOffer));
        frmSend& window = composeWindow();
        EXPECT_TRUE(window.isVisible());
        EXPECT_EQ(window.tTo->text(), QStringLiteral("bob@example.org"));
        EXPECT_EQ(window.tCc->text(), QStringLiteral("carl@example.org"));
        EXPECT_EQ(window.tSubject->text(), QStringLiteral("Größe"));
        EXPECT_EQ(window.txtAttachment->text(), QStringLiteral("C:\\REPORT.TXT"));
        EXPECT_EQ(window.tMessage->bytes(), "Dear Bob,\r\nthe letter");
    }

    SmtpMailbox mailbox;
    ScriptedServer server;
    email::SettingsFields school;
};
} // namespace

TEST_F(KeepLetter, AfterAnEndOfAnyKindComposeOffersToGoOn) {
    compose();
    write();
    passTime();
    start();
    compose();
    EXPECT_EQ(boxes.at(0).title, QStringLiteral("Example School E-Mail"));
    EXPECT_EQ(boxes.at(0).buttons, controls::MessageButtons::YesNo);
    EXPECT_FALSE(boxes.at(0).takesBareLetters) << "the user may be typing an address already";
    expectTheLetter();
    EXPECT_FALSE(mainWindow().isEnabled());
}

TEST_F(KeepLetter, ItIsKeptTwoSecondsAfterItWasTypedWhoeverTypesOn) {
    compose();
    write();
    EXPECT_TRUE(composeWindow().tmrKeepLetter->isEnabled());
    EXPECT_EQ(composeWindow().tmrKeepLetter->period(), 2000);
    const int remaining = composeWindow().tmrKeepLetter->remainingTime();
    QTest::qWait(20);
    QTest::keyClicks(composeWindow().tMessage, QStringLiteral("more"));
    EXPECT_LT(composeWindow().tmrKeepLetter->remainingTime(), remaining);
}

TEST_F(KeepLetter, TheFileIsTheUsersAloneAndItsNameTellsNothing) {
    compose();
    write();
    passTime();
    ASSERT_EQ(keptFiles().size(), 1U);
    EXPECT_EQ(support::modeOf(keptFiles()[0]), 0600U);
    EXPECT_EQ(support::modeOf(keptFiles()[0].parent_path()), 0700U);
    EXPECT_EQ(keptFiles()[0].string().find("ann"), std::string::npos);
}

TEST_F(KeepLetter, WithNothingKeptComposeAsksNothing) {
    compose();
    EXPECT_THAT(boxes, IsEmpty());
    passTime();
    EXPECT_THAT(keptFiles(), IsEmpty());
}

TEST_F(KeepLetter, ClosingTheOfferGoesOnWithTheLetter) {
    compose();
    write();
    passTime();
    start();
    compose();
    ASSERT_THAT(boxTexts(), ElementsAre(kOffer));
    EXPECT_EQ(boxes[0].closingAnswer, controls::MessageAnswer::Yes);
}

TEST_F(KeepLetter, ALetterThatIsGivenUpIsGone) {
    compose();
    write();
    passTime();
    start();
    answer = controls::MessageAnswer::No;
    compose();
    EXPECT_EQ(composeWindow().tTo->text(), QString());
    EXPECT_EQ(composeWindow().tMessage->bytes(), "");
    EXPECT_THAT(keptFiles(), IsEmpty());
    write();
    passTime();
    EXPECT_EQ(keptFiles().size(), 1U) << "the next one is kept again";
}

TEST_F(KeepLetter, CancelAndTheWindowsCloseButtonRemoveIt) {
    for (const bool cancel : {true, false}) {
        compose();
        write();
        passTime();
        EXPECT_EQ(keptFiles().size(), 1U);
        if (cancel) {
            composeWindow().cmdCancel->click();
        } else {
            composeWindow().close();
        }
        EXPECT_THAT(keptFiles(), IsEmpty());
    }
    compose();
    EXPECT_THAT(boxes, IsEmpty());
}

TEST_F(KeepLetter, ALetterThatWasSentIsGoneBeforeThatIsTold) {
    folder.write("REPORT.TXT", "x");
    compose();
    write();
    passTime();
    std::vector<filesystem::path> keptWhenTold;
    whileBoxIsOpen = [&](const controls::MessageBox&) {
        passTime();
        keptWhenTold = keptFiles();
    };
    composeWindow().cmdSndit->click();
    EXPECT_THAT(boxTexts(), ElementsAre(QStringLiteral("Your message has been sent.")));
    EXPECT_THAT(keptWhenTold, IsEmpty());
    EXPECT_THAT(keptFiles(), IsEmpty());
}

TEST_F(KeepLetter, ALetterThatWasNotSentIsKeptOn) {
    compose();
    write();
    composeWindow().cmdSndit->click();
    EXPECT_THAT(boxTexts(), ElementsAre(QStringLiteral("Unable to send message. Error# 53")));
    passTime();
    start();
    compose();
    expectTheLetter();
}

TEST_F(KeepLetter, ALetterWhoseConfirmationWasLostIsKeptOn) {
    folder.write("REPORT.TXT", "x");
    mailbox.on(".", [](support::Peer& peer) { peer.reset(); });
    compose();
    write();
    composeWindow().cmdSndit->click();
    EXPECT_THAT(boxTexts(), ElementsAre(QStringLiteral("Unable to send message. Error# 20442")));
    passTime();
    EXPECT_EQ(keptFiles().size(), 1U);
}

TEST_F(KeepLetter, AWindowThatHidesWhileItSendsKeepsItsLetter) {
    folder.write("REPORT.TXT", "x");
    mailbox.on("DATA", support::holdAndSay("451 not now\r\n"));
    const WhenItHolds close([&] { return !server.keywords().empty() && server.keywords().back() == "DATA"; },
                            [&] {
                                composeWindow().close();
                                passTime();
                                EXPECT_EQ(keptFiles().size(), 1U);
                                server.release();
                            });
    compose();
    write();
    composeWindow().cmdSndit->click();
    EXPECT_EQ(keptFiles().size(), 1U);
}

TEST_F(KeepLetter, TheProgramsOwnEndKeepsWhatWasTypedLast) {
    compose();
    write();
    platform::endProgram();
    start();
    compose();
    expectTheLetter();
}

TEST_F(KeepLetter, ACheckThatMeetsALostConnectionEndsTheProgramAndNotTheLetter) {
    const ScriptedServer lost([](support::Peer& peer) { peer.close(); });
    email::settings.POPServer = lost.address();
    email::credentials.Password = QStringLiteral("secret");
    compose();
    write();
    mainWindow().tmrCheckMail_Timer();
    EXPECT_EQ(programEnds, 1);
    start();
    compose();
    expectTheLetter();
}

TEST_F(KeepLetter, AnotherSenderIsNotOfferedItAndDoesNotLoseIt) {
    compose();
    write();
    passTime();
    start(QStringLiteral("eve"));
    compose();
    EXPECT_THAT(boxes, IsEmpty());
    QTest::keyClicks(composeWindow().tMessage, QStringLiteral("Eve's"));
    passTime();
    EXPECT_EQ(keptFiles().size(), 2U);
    composeWindow().cmdCancel->click();
    start();
    compose();
    expectTheLetter();
}

TEST_F(KeepLetter, ReplyAndForwardOfferItBeforeTheyFillAnything) {
    for (void (frmFrom::*const handler)() : {&frmFrom::cmdReply_Click, &frmFrom::cmdFwrd_Click}) {
        start();
        compose();
        write();
        passTime();
        start();
        messageWindow().OpenMessage = 1;
        messageWindow().show();
        (messageWindow().*handler)();
        expectTheLetter();
        EXPECT_FALSE(messageWindow().isEnabled());
        composeWindow().cmdCancel->click();
        EXPECT_TRUE(messageWindow().isEnabled());
    }
}

TEST_F(KeepLetter, AForwardedMessageIsKeptByteForByte) {
    email::mailbox.Messages.at(1).BodyText = std::string("bytes \xff\0 of any kind\n\r", 22);
    messageWindow().OpenMessage = 1;
    messageWindow().show();
    messageWindow().cmdFwrd_Click();
    const std::string forwarded = composeWindow().tMessage->bytes();
    passTime();
    start();
    compose();
    EXPECT_EQ(composeWindow().tMessage->bytes(), forwarded);
    EXPECT_NE(forwarded.find('\xff'), std::string::npos);
}

TEST_F(KeepLetter, SaveCopyAddsNothingToAKeptLetterAndIsNoLetterByItself) {
    email::settings.SaveCopy = QStringLiteral("yes");
    compose();
    EXPECT_EQ(composeWindow().tCc->text(), QStringLiteral("ann@example.org"));
    passTime();
    EXPECT_THAT(keptFiles(), IsEmpty());
    write();
    passTime();
    start();
    email::settings.SaveCopy = QStringLiteral("yes");
    compose();
    expectTheLetter();
}

TEST_F(KeepLetter, ALetterOfWhichNothingIsLeftIsNotKept) {
    compose();
    composeWindow().tSubject->setText(QStringLiteral("x"));
    passTime();
    EXPECT_EQ(keptFiles().size(), 1U);
    composeWindow().tSubject->clear();
    passTime();
    EXPECT_THAT(keptFiles(), IsEmpty());
}

TEST_F(KeepLetter, WhatHasNotChangedIsNotWrittenAgain) {
    compose();
    write();
    passTime();
    const filesystem::path file = keptFiles().at(0);
    filesystem::resize_file(file, 0);
    composeWindow().tSubject->setText(QStringLiteral("another"));
    composeWindow().tSubject->setText(QStringLiteral("Größe"));
    passTime();
    EXPECT_EQ(filesystem::file_size(file), 0U);
}

TEST_F(KeepLetter, AFileThatIsCutIsTakenForNone) {
    compose();
    write();
    passTime();
    const filesystem::path file = keptFiles().at(0);
    filesystem::resize_file(file, filesystem::file_size(file) - 3);
    start();
    compose();
    EXPECT_THAT(boxes, IsEmpty());
    EXPECT_EQ(composeWindow().tTo->text(), QString());
}

TEST_F(KeepLetter, AnAttachmentThatMayNotBeSentAnyMoreIsNotTakenBack) {
    compose();
    write();
    passTime();
    school.SendAttachments = QStringLiteral("no");
    start();
    compose();
    EXPECT_EQ(composeWindow().txtAttachment->text(), QString());
    EXPECT_EQ(composeWindow().tTo->text(), QStringLiteral("bob@example.org"));
}

TEST_F(KeepLetter, WhereNothingCanBeKeptTheWindowSaysSoAndWorks) {
    stateHome.write("brindlewake", "no folder");
    folder.write("REPORT.TXT", "x");
    compose();
    EXPECT_EQ(composeWindow().lblSending->text(), QStringLiteral("This letter is not kept. Error# 75"));
    write();
    composeWindow().cmdSndit->click();
    EXPECT_THAT(boxTexts(), ElementsAre(QStringLiteral("Your message has been sent.")));
}

TEST_F(KeepLetter, WhatCouldNotBeWrittenIsToldAndTriedAgain) {
    compose();
    write();
    {
        const support::FileSizeLimit limit(0);
        passTime();
    }
    EXPECT_TRUE(
        composeWindow().lblSending->text().startsWith(QStringLiteral("This letter is not kept. Error# ")));
    EXPECT_TRUE(composeWindow().tmrKeepLetter->isEnabled());
    passTime();
    EXPECT_EQ(composeWindow().lblSending->text(), QString());
    EXPECT_EQ(keptFiles().size(), 1U);
}
