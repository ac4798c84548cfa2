#include "email/mailbox.h"
#include "email/opening.h"
#include "email/shared_settings.h"
#include "tests/reader/reader_fixture.h"

using support::attachmentPart;
using support::multipart;
using support::plainPart;
using support::ReaderTest;
using support::WhenItHolds;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {
class OpenMessage : public ReaderTest {};

/** A message of exactly so many bytes, header included, without a boundary. */
std::string plainMessageOf(std::size_t bytes) {
    std::string message = "From: ann@example.org\r\nSubject: Long\r\n\r\n";
    while (message.size() < bytes - 2) {
        message += message.size() % 80 == 79 ? "\r\n" : "x";
    }
    message.resize(bytes - 2, 'x');
    return message + "\r\n";
}

std::string partsOf(int count) {
    std::vector<std::string> parts;
    for (int number = 1; number <= count; ++number) {
        parts.push_back(plainPart("<" + std::to_string(number) + ">"));
    }
    return multipart(parts);
}
} // namespace

TEST_F(OpenMessage, KeepsTheHeaderAsItCameBesideWhatIsMadeOfIt) {
    openOnly("Subject:  two spaces\r\nX:\ttab\r\n folded\r\n\r\nbody\r\n");
    EXPECT_EQ(email::mailbox.Messages.at(1).RawHeader, "Subject:  two spaces\r\nX:\ttab\r\n folded\r\n");
    EXPECT_EQ(email::mailbox.Messages.at(1).Subject, " two spaces");
}

TEST_F(OpenMessage, ShowsSenderSubjectAndTheBodyAsItStands) {
    openOnly("From: Ann <ann@example.org>\r\nSubject: Hello\r\nDate: today\r\n\r\nOne "
             "=3D\r\n.two\r\n\r\nthree\r\n");
    EXPECT_THAT(boxTexts(), IsEmpty());
    frmFrom& window = messageWindow();
    EXPECT_TRUE(window.isVisible());
    EXPECT_EQ(window.windowTitle(), QStringLiteral("Message from: Ann <ann@example.org>"));
    EXPECT_EQ(window.txtFrom->text(), QStringLiteral("Ann <ann@example.org>"));
    EXPECT_EQ(window.txtSubject->text(), QStringLiteral("Hello"));
    EXPECT_EQ(window.tMessage->bytes(), "One =3D\r\n.two\r\n\r\nthree\r\n");
    EXPECT_EQ(window.txtAttachments->text(), QString());
    EXPECT_FALSE(window.cmdSave->isEnabled());
}

TEST_F(OpenMessage, AsksForTheWholeMessageInASessionOfItsOwn) {
    logInWith({"Subject: 1\r\n\r\none\r\n", "Subject: 2\r\n\r\ntwo\r\n"});
    doubleClick(2);
    ASSERT_TRUE(server.waitForEndOf(2));
    EXPECT_THAT(server.commands(1),
                ElementsAre("USER ann", "PASS secret", "STAT", "LIST 2", "RETR 2", "QUIT"));
    EXPECT_EQ(email::mailbox.CurrentMessage, 2);
    EXPECT_EQ(messageWindow().OpenMessage, 2);
}

TEST_F(OpenMessage, ReturnInTheListOpensTooForThoseWithoutAMouse) {
    logInWith({"Subject: 1\r\n\r\none\r\n"});
    mainWindow().MailGrid->setFocus();
    mainWindow().MailGrid->setCurrentCell(0, 0);
    ASSERT_TRUE(QTest::qWaitForWindowActive(&mainWindow()));
    QTest::keyClick(mainWindow().MailGrid, Qt::Key_Return);
    EXPECT_TRUE(messageWindow().isVisible());
}

TEST_F(OpenMessage, TheMainWindowRestsUntilTheMessageIsClosed) {
    openOnly("Subject: 1\r\n\r\none\r\n");
    EXPECT_FALSE(mainWindow().isEnabled());
    EXPECT_EQ(mainWindow().lStats->text(), QStringLiteral("Done"));
    messageWindow().cmdDone->click();
    expectUsableMainWindow();
    EXPECT_TRUE(mainWindow().isVisible());
    EXPECT_FALSE(messageWindow().isVisible());
}

TEST_F(OpenMessage, WhileItIsFetchedButtonsListAndTimerRest) {
    logInWith({plainMessageOf(3'000)});
    email::settings.GetMailEvery = 5;
    mainWindow().tmrCheckMail->setPeriod(300'000);
    mainWindow().tmrCheckMail->setEnabled(true);
    bool looked = false;
    mailbox.on("RETR", [](support::Peer& peer) {
        peer.send("+OK\r\nSubject: late\r\n\r\n0123456789\r\n");
        peer.holdSilent();
        peer.send("end\r\n.\r\n");
    });
    const WhenItHolds look(
        [] { return mainWindow().barProgress->value() > 0; },
        [&] {
            const frmMain& main = mainWindow();
            for (const QWidget* control : std::initializer_list<const QWidget*>{
                     main.cmdRead, main.cmdDelete, main.cmdGetMail, main.cmdCmpose, main.MailGrid}) {
                EXPECT_FALSE(control->isEnabled()) << control->objectName().toStdString();
            }
            EXPECT_FALSE(main.tmrCheckMail->isEnabled());
            EXPECT_EQ(main.lStats->text(), QStringLiteral("Opening message..."));
            EXPECT_EQ(main.cursor().shape(), Qt::WaitCursor);
            EXPECT_EQ(main.barProgress->maximum(), 3'000);
            EXPECT_EQ(main.barProgress->value(), 29);
            EXPECT_TRUE(email::opening.Retrieving);
            looked = true;
            server.release();
        });
    doubleClick(1);
    EXPECT_TRUE(looked);
    EXPECT_TRUE(mainWindow().tmrCheckMail->isEnabled());
    EXPECT_FALSE(email::opening.Retrieving);
    EXPECT_EQ(mainWindow().barProgress->value(), 0);
    EXPECT_TRUE(mainWindow().MailGrid->isEnabledTo(&mainWindow()));
}

TEST_F(OpenMessage, WithoutAnIntervalTheTimerStaysOff) {
    openOnly("Subject: 1\r\n\r\none\r\n");
    EXPECT_FALSE(mainWindow().tmrCheckMail->isEnabled());
}

TEST_F(OpenMessage, AMessageOfExactly32000BytesIsShown) {
    openOnly(plainMessageOf(32'000));
    EXPECT_THAT(boxTexts(), IsEmpty());
    EXPECT_EQ(email::mailbox.Messages.at(1).Size, 32'000);
    EXPECT_EQ(messageWindow().tMessage->bytes(), email::mailbox.Messages.at(1).BodyText);
    EXPECT_FALSE(messageWindow().tMessage->bytes().empty());
}

TEST_F(OpenMessage, AMessageOf32001BytesIsNotShown) {
    openOnly(plainMessageOf(32'001));
    ASSERT_THAT(boxTexts(), ElementsAre(QStringLiteral("There was a problem with the message header.")));
    EXPECT_EQ(boxes[0].title, QStringLiteral("Brindlewake"));
    EXPECT_EQ(email::mailbox.Messages.at(1).Size, 32'001);
    EXPECT_TRUE(messageWindow().isVisible());
    EXPECT_EQ(shownText(), QString());
}

TEST_F(OpenMessage, OddPlaceholdersStandWhereSubjectAndDateAreMissing) {
    openOnly("From: a@example.org\r\n\r\ntext\r\n");
    EXPECT_EQ(messageWindow().txtSubject->text(), QStringLiteral("'"));
    EXPECT_EQ(email::mailbox.Messages.at(1).Date, "':");
}

TEST_F(OpenMessage, AMultipartMessageWithMoreThan20PartsShowsOnlyWhatTheFirst20Yield) {
    openOnly(partsOf(23));
    const QString text = shownText();
    EXPECT_TRUE(text.contains(QStringLiteral("<20>")));
    EXPECT_FALSE(text.contains(QStringLiteral("<21>")));
}

TEST_F(OpenMessage, APartWithoutAnySemicolonAfterItsTypeEndsInTheHeaderErrorBox) {
    openOnly(multipart({"Content-Type: text/plain\r\n\r\nHello"}));
    expectHeaderErrorBox(5);
}

TEST_F(OpenMessage, APartWhoseSemicolonComesInALaterLineIsNeitherTextNorAttachment) {
    openOnly(multipart({"Content-Type: text/plain\r\n\r\nHello; you", plainPart("kept")}));
    EXPECT_THAT(boxTexts(), IsEmpty());
    EXPECT_EQ(messageWindow().tMessage->bytes(), "\r\nkept\r\n--");
    EXPECT_EQ(messageWindow().txtAttachments->text(), QString());
}

TEST_F(OpenMessage, APlainAndAnHtmlPartAreBothShownInTheOrderInWhichTheyStand) {
    openOnly(multipart({plainPart("plain"), "Content-Type: text/html; charset=utf-8\r\n\r\n<b>html</b>"}));
    EXPECT_EQ(messageWindow().tMessage->bytes(), "\r\nplain\r\n--\r\n\r\n<b>html</b>\r\n--");
}

TEST_F(OpenMessage, AMessageWithNoTextPartLeavesTheTextEmptyAndStillListsTheAttachment) {
    openOnly(multipart({attachmentPart("a.bin", "AAAA")}));
    EXPECT_EQ(shownText(), QString());
    EXPECT_EQ(messageWindow().txtAttachments->text(), QStringLiteral("a.bin"));
    EXPECT_TRUE(messageWindow().cmdSave->isEnabled());
}

TEST_F(OpenMessage, ALowerCaseContentTypeIsNotFoundAndThePartInheritsTheTypeBefore) {
    openOnly(multipart(
        {attachmentPart("a.bin", "AAAA"), "content-type: text/plain;\r\nname=\"b.bin\"\r\n\r\nBBBB"}));
    EXPECT_EQ(messageWindow().txtAttachments->text(), QStringLiteral("b.bin"));
    EXPECT_EQ(shownText(), QString());
}

TEST_F(OpenMessage, ATextPartFollowedByOneWithoutATypeEndsInTheHeaderErrorBox) {
    openOnly(multipart({plainPart("first"), "\r\nsecond"}));
    expectHeaderErrorBox(5);
}

TEST_F(OpenMessage, OfTwoAttachmentsOnlyTheLastIsWrittenAndOffered) {
    openOnly(multipart({attachmentPart("one.bin", "b25l"), attachmentPart("two.bin", "dHdv")}));
    EXPECT_EQ(messageWindow().txtAttachments->text(), QStringLiteral("two.bin"));
    EXPECT_EQ(email::opening.CurrentAttachment, "two.bin");
    EXPECT_EQ(email::mailbox.Messages.at(1).AttachmentName, "two.bin");
    EXPECT_EQ(folder.read("_tolk.tmp"), "\r\ndHdv\r\n--\r\n");
}

TEST_F(OpenMessage, AnAttachmentWithoutQuotesAroundItsNameWritesNoFile) {
    openOnly(multipart({"Content-Type: application/pdf; name=a.pdf\r\n\r\nAAAA"}));
    expectHeaderErrorBox(5);
    EXPECT_FALSE(std::filesystem::exists(folder.path("_tolk.tmp")));
}

TEST_F(OpenMessage, WhatWasFoundBeforeAnErrorStaysFound) {
    openOnly(multipart({attachmentPart("a.bin", "AAAA"), "Content-Type: text/plain\r\n\r\nno semicolon"}));
    expectHeaderErrorBox(5);
    EXPECT_EQ(email::opening.CurrentAttachment, "a.bin");
    EXPECT_EQ(email::mailbox.Messages.at(1).AttachmentName, "a.bin");
    EXPECT_EQ(folder.read("_tolk.tmp"), "\r\nAAAA\r\n--\r\n");
}

TEST_F(OpenMessage, WhatAFailedOpeningLeftIsNotShownWithTheNextMessage) {
    logInWith({multipart({plainPart("of another"), attachmentPart("a.bin", "AAAA"),
                          "Content-Type: text/plain\r\n"}),
               "Subject: next\r\n\r\nmine\r\n"});
    doubleClick(1);
    expectHeaderErrorBox(5);
    doubleClick(2);
    EXPECT_EQ(messageWindow().tMessage->bytes(), "mine\r\n");
    EXPECT_EQ(messageWindow().txtAttachments->text(), QString());
    EXPECT_FALSE(messageWindow().cmdSave->isEnabled());
}

TEST_F(OpenMessage, AnAttachmentFileThatCannotBeWrittenEndsInTheHeaderErrorBox) {
    std::filesystem::create_directory(folder.path("_tolk.tmp"));
    openOnly(multipart({attachmentPart("a.bin", "AAAA")}));
    expectHeaderErrorBox(75);
}

TEST_F(OpenMessage, ALinkInPlaceOfTheAttachmentFileIsNotFollowed) {
    folder.write("key", "secret");
    std::filesystem::create_symlink(folder.path("key"), folder.path("_tolk.tmp"));
    openOnly(multipart({attachmentPart("a.bin", "AAAA")}));
    expectHeaderErrorBox(75);
    EXPECT_EQ(folder.read("key"), "secret");
}

TEST_F(OpenMessage, ABoundaryWithoutQuotesEndsInTheHeaderErrorBox) {
    logInWith({"Subject: good\r\n\r\ntext\r\n"});
    mailbox.answer("RETR", "+OK\r\nContent-Type: multipart/mixed; boundary=cut\r\n\r\n--cut--\r\n.\r\n");
    doubleClick(1);
    expectHeaderErrorBox(5);
}

TEST_F(OpenMessage, ARowOutsideTheTableEndsInTheHeaderErrorBox) {
    logInWith({"Subject: 1\r\n\r\none\r\n"});
    mainWindow().MailGrid->setCurrentItem(nullptr);
    mainWindow().MailGrid_DblClick();
    EXPECT_THAT(boxTexts(), IsEmpty());
    mainWindow().MailGrid->setRows(202);
    mainWindow().MailGrid->setCurrentCell(200, 0);
    mainWindow().MailGrid_DblClick();
    expectHeaderErrorBox(9);
}

TEST_F(OpenMessage, AServerThatIsGoneEndsInTheHeaderErrorBoxAndTheNextTryWorks) {
    logInWith({"Subject: 1\r\n\r\none\r\n"});
    mailbox.on("RETR", [](support::Peer& peer) { peer.reset(); });
    doubleClick(1);
    expectHeaderErrorBox(20302);
    EXPECT_EQ(mainWindow().lStats->text(), QStringLiteral("1 messages 19 bytes total"));
    mailbox.answerProperly("RETR");
    doubleClick(1);
    EXPECT_TRUE(messageWindow().isVisible());
    EXPECT_EQ(messageWindow().tMessage->bytes(), "one\r\n");
}

TEST_F(OpenMessage, ARefusedLogOnEndsInTheHeaderErrorBoxAndTheNextTryWorks) {
    logInWith({"Subject: 1\r\n\r\none\r\n"});
    mailbox.answer("PASS", "-ERR no\r\n");
    doubleClick(1);
    expectHeaderErrorBox(20172);
    mailbox.answerProperly("PASS");
    doubleClick(1);
    EXPECT_TRUE(messageWindow().isVisible());
}

TEST_F(OpenMessage, AMessageThatTheServerDoesNotGiveIsNotOpenedAndItsRecordStays) {
    logInWith({multipart({plainPart("text")}, "To: bob@example.org\r\n")});
    const email::MessageSummary before = email::mailbox.Messages.at(1);
    for (const char* command : {"RETR", "LIST"}) {
        mailbox.answer(command, "-ERR no such message\r\n");
        doubleClick(1);
        expectHeaderErrorBox(20342);
        EXPECT_EQ(mainWindow().lStats->text(), QStringLiteral("1 messages %1 bytes total").arg(before.Size));
        EXPECT_EQ(mainWindow().focusWidget(), mainWindow().MailGrid);
        const email::MessageSummary& after = email::mailbox.Messages.at(1);
        EXPECT_EQ(after.From, before.From);
        EXPECT_EQ(after.Subject, before.Subject);
        EXPECT_EQ(after.Date, before.Date);
        EXPECT_EQ(after.HeaderText, before.HeaderText);
        EXPECT_EQ(after.Size, before.Size);
        EXPECT_EQ(after.BodyText, before.BodyText);
        EXPECT_EQ(after.ContentType, before.ContentType);
        EXPECT_EQ(after.Boundary, before.Boundary);
        boxes.clear();
        mailbox.answerProperly(command);
    }
    doubleClick(1);
    EXPECT_THAT(boxTexts(), IsEmpty());
    EXPECT_EQ(messageWindow().tMessage->bytes(), "\r\ntext\r\n--");
}

TEST_F(OpenMessage, AMessageThatBreaksOffLeavesItsRecordAsItWas) {
    logInWith({"From: ann@example.org\r\nSubject: 1\r\n\r\none\r\n"});
    mailbox.on("RETR", [](support::Peer& peer) {
        peer.send("+OK\r\nFrom: bob@example.org\r\nSubject: 2\r\n\r\ntwo\r\n");
        peer.reset();
    });
    doubleClick(1);
    expectHeaderErrorBox(20302);
    EXPECT_EQ(email::mailbox.Messages.at(1).From, "ann@example.org");
    EXPECT_EQ(email::mailbox.Messages.at(1).Subject, "1");
    EXPECT_EQ(email::mailbox.Messages.at(1).BodyText, "one\r\n");
}

TEST_F(OpenMessage, InTheListAMessageThatTheServerDoesNotGiveKeepsItsPlaceholders) {
    mailbox.answer("LIST", "-ERR\r\n").answer("TOP", "-ERR\r\n").answer("RETR", "-ERR\r\n");
    logInWith({"From: ann@example.org\r\nSubject: 1\r\n\r\none\r\n"});
    EXPECT_EQ(mainWindow().MailGrid->TextMatrix(1, 3).trimmed(), QStringLiteral("'"));
    EXPECT_EQ(mainWindow().MailGrid->TextMatrix(1, 4), QStringLiteral("(0 bytes)"));
}

TEST_F(OpenMessage, ASecondDoubleClickWhileTheFirstIsAtWorkDoesNothing) {
    logInWith({"Subject: 1\r\n\r\none\r\n"});
    mailbox.on("RETR", [](support::Peer& peer) {
        peer.send("+OK\r\nSubject: late\r\n\r\n0123456789\r\n");
        peer.holdSilent();
        peer.send("end\r\n.\r\n");
    });
    const WhenItHolds again([] { return mainWindow().barProgress->value() > 0; },
                            [&] {
                                mainWindow().MailGrid_DblClick();
                                server.release();
                            });
    doubleClick(1);
    EXPECT_THAT(boxTexts(), IsEmpty());
    EXPECT_EQ(messageWindow().tMessage->bytes(), "0123456789\r\nend\r\n");
}

TEST_F(OpenMessage, ACheckThatIsAtWorkIsNotDisturbed) {
    logInWith({"Subject: 1\r\n\r\none\r\n"});
    mailbox.deliver("Subject: 2\r\n\r\ntwo\r\n");
    mailbox.on("LIST 2", support::holdAndSay("+OK 2 21\r\n"));
    const WhenItHolds open([] { return email::mailbox.CurrentMessage == 2; },
                           [&] {
                               mainWindow().MailGrid->setCurrentCell(0, 0);
                               mainWindow().MailGrid_DblClick();
                               server.release();
                           });
    mainWindow().cmdGetMail->click();
    EXPECT_THAT(boxTexts(),
                ElementsAre(QStringLiteral("There is an error in the message header. Error# 20102")));
    EXPECT_EQ(mainWindow().MailGrid->TextMatrix(2, 3).trimmed(), QStringLiteral("2"));
    EXPECT_EQ(email::mailbox.LastMessageCount, 2);
}

TEST_F(OpenMessage, ASenderWithControlCharactersIsShownOnOneLineWithoutObeyingThem) {
    openOnly("From: \x1b[31mboss\xe2\x80\xae<gro.live@x>\r\nSubject: a\x07"
             "b\xe2\x80\xae"
             "c\r\n\r\ntext\r\n");
    for (const QString& text : {messageWindow().windowTitle(), messageWindow().txtFrom->text(),
                                messageWindow().txtSubject->text()}) {
        EXPECT_FALSE(text.contains(QChar(0x202E))) << text.toStdString();
        EXPECT_FALSE(text.contains(QChar(0x1B))) << text.toStdString();
        EXPECT_FALSE(text.contains(QChar(0x07))) << text.toStdString();
        EXPECT_FALSE(text.contains(u'\n'));
    }
    EXPECT_EQ(email::mailbox.Messages.at(1).Subject, "a\x07"
                                                     "b\xe2\x80\xae"
                                                     "c");
}

TEST_F(OpenMessage, TextInALetterThatIsNoUtf8IsReadAsWindows1252) {
    openOnly("Subject: 1\r\n\r\nGr\xfc\xdf"
             "e \x80\r\n");
    EXPECT_EQ(shownText(), QStringLiteral("Grüße €\n"));
}

TEST_F(OpenMessage, TheBodyOfAnotherOpeningIsForgotten) {
    logInWith({"Subject: 1\r\n\r\none\r\n"});
    doubleClick(1);
    messageWindow().cmdDone->click();
    doubleClick(1);
    EXPECT_EQ(messageWindow().tMessage->bytes(), "one\r\n");
}
