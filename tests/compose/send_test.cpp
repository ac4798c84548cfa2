#include "tests/compose/send_fixture.h"

#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>

#include <filesystem>
#include <sys/stat.h>

using support::WhenItHolds;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {
class Send : public support::SendTest {
  protected:
    static void press() { composeWindow().cmdSndit->click(); }

    void expectFailure(int number) {
        ASSERT_THAT(boxTexts(), ElementsAre(QStringLiteral("Unable to send message. Error# %1").arg(number)));
        EXPECT_EQ(boxes[0].title, QStringLiteral("Example School E-Mail"));
        EXPECT_EQ(boxes[0].buttons, controls::MessageButtons::Ok);
        auto& window = composeWindow();
        EXPECT_TRUE(window.isVisible());
        EXPECT_TRUE(window.isEnabled());
        EXPECT_TRUE(window.cmdSndit->isEnabled());
        EXPECT_TRUE(window.cmdCancel->isEnabled());
        EXPECT_NE(window.cursor().shape(), Qt::WaitCursor);
        EXPECT_FALSE(mainWindow().isEnabled());
    }

    /** The server withholds its reply to DATA until the test releases it, and then refuses with 451. */
    void refuseDataWhenReleased() { mailbox.on("DATA", support::holdAndSay("451 not now\r\n")); }

    /** The server withholds its reply to EHLO until the test releases it. The attachment is encoded by then.
     */
    void greetWhenReleased() { mailbox.on("EHLO", support::holdAndSay("250 ready\r\n")); }

    bool waitsAtGreeting() { return !server.keywords().empty(); }

    void expectOwnFileSent() {
        EXPECT_THAT(boxTexts(), ElementsAre(QStringLiteral("Your message has been sent.")));
        ASSERT_EQ(mailbox.messages().size(), 1U);
        EXPECT_THAT(mailbox.messages()[0],
                    HasSubstr("\r\n\r\nbXkgb3duIGZpbGU=\r\n----*******Brindlewake************--\r\n"));
    }

    bool waitsAtData() { return !server.keywords().empty() && server.keywords().back() == "DATA"; }
};
} // namespace

TEST_F(Send, TellsThatTheMessageHasBeenSentAndGivesTheMainWindowBack) {
    write(bob, QStringLiteral("Hello"), QStringLiteral("One\nTwo"));
    press();
    ASSERT_THAT(boxTexts(), ElementsAre(QStringLiteral("Your message has been sent.")));
    EXPECT_EQ(boxes[0].title, QStringLiteral("Example School E-Mail"));
    EXPECT_TRUE(mainWindow().isEnabled());
    EXPECT_FALSE(composeWindow().isVisible());
    EXPECT_EQ(composeWindow().tMessage->toPlainText(), QString());
    ASSERT_EQ(mailbox.messages().size(), 1U);
    const std::string message = mailbox.messages()[0];
    EXPECT_THAT(message, HasSubstr("From: ann@example.org\r\n"));
    EXPECT_THAT(message, HasSubstr("To: bob@example.org\r\n"));
    EXPECT_THAT(message, HasSubstr("Subject: Hello\r\n"));
    EXPECT_THAT(message, Not(HasSubstr("Cc:")));
    EXPECT_THAT(message, HasSubstr("\r\n\r\nOne\r\nTwo\r\n"));
}

TEST_F(Send, AnAttachmentGoesOutAsTheComposerMadeIt) {
    folder.write("report.bin", "ABC");
    write(bob, QStringLiteral("File"), QStringLiteral("See there"), QStringLiteral("C:\\report.bin"));
    press();
    ASSERT_EQ(mailbox.messages().size(), 1U);
    EXPECT_THAT(
        mailbox.messages()[0],
        HasSubstr("\r\nThis is a multi-part message in MIME format.\r\n"
                  "----*******Brindlewake************\r\n\r\nContent-Type: text/plain;\r\n\r\nSee there\r\n"
                  "----*******Brindlewake************\r\n"
                  "Content-Type: application/octet-stream; name=\"report.bin\"\r\n"
                  "Content-Transfer-Encoding: base64\r\n\r\nQUJD\r\n"
                  "----*******Brindlewake************--\r\n"));
    EXPECT_EQ(folder.read("_brndwake.tmp"), "QUJD\r\n----*******Brindlewake************--\r\n");
}

TEST_F(Send, WhileAFileIsEncodedTheLabelSaysSo) {
    folder.write("large.bin", std::string(16U << 20U, 'x'));
    write(QString(), QStringLiteral("s"), QString(), QStringLiteral("C:\\large.bin"));
    const auto encodes = [] {
        return composeWindow().lblSending->text() == QStringLiteral("Encoding the attachment...");
    };
    const WhenItHolds look(
        encodes, [] { EXPECT_EQ(composeWindow().tMessage->viewport()->cursor().shape(), Qt::WaitCursor); });
    press();
    EXPECT_EQ(composeWindow().lblSending->text(), QString());
    EXPECT_EQ(composeWindow().tMessage->viewport()->cursor().shape(), Qt::IBeamCursor);
}

TEST_F(Send, TheSizeThatIsAnnouncedIsThatOfTheMessageWithItsAttachment) {
    folder.write("FILE.BIN", std::string(200'000, 'x'));
    write(bob, QStringLiteral("s"), QStringLiteral("a text"), QStringLiteral("C:\\FILE.BIN"));
    press();
    ASSERT_EQ(mailbox.messages().size(), 1U);
    const std::string size = std::to_string(mailbox.messages()[0].size());
    EXPECT_THAT(server.commands(), Contains("MAIL FROM:<ann@example.org> SIZE=" + size));
}

TEST_F(Send, AnEmptyToStillWritesTheEncodedFileAndIsThenRefused) {
    folder.write("report.bin", "ABC");
    write(QString(), QStringLiteral("File"), QString(), QStringLiteral("C:\\report.bin"));
    press();
    ASSERT_THAT(boxTexts(), ElementsAre(QStringLiteral("You need to enter an e-mail address to send to.")));
    EXPECT_EQ(boxes[0].title, QStringLiteral("Example School E-Mail"));
    EXPECT_EQ(folder.read("_brndwake.tmp"), "QUJD\r\n----*******Brindlewake************--\r\n");
    EXPECT_EQ(server.connections(), 0U);
    EXPECT_TRUE(composeWindow().isVisible());
    EXPECT_EQ(composeWindow().focusWidget(), composeWindow().tTo);
}

TEST_F(Send, AnEmptySubjectIsRefused) {
    write(bob, QString(), QStringLiteral("x"));
    press();
    ASSERT_THAT(boxTexts(), ElementsAre(QStringLiteral("You need to enter a subject.")));
    EXPECT_EQ(composeWindow().focusWidget(), composeWindow().tSubject);
    EXPECT_EQ(server.connections(), 0U);
}

TEST_F(Send, ASubjectOfOnlySpacesIsNotEmpty) {
    write(bob, QStringLiteral("   "), QStringLiteral("x"));
    press();
    EXPECT_THAT(boxTexts(), ElementsAre(QStringLiteral("Your message has been sent.")));
}

TEST_F(Send, WhileItSendsTheButtonsAreDisabledAndTheLabelSaysSo) {
    mailbox.on("DATA", support::holdAndSay("554 no\r\n"));
    const WhenItHolds look([this] { return waitsAtData(); },
                           [&] {
                               auto& window = composeWindow();
                               EXPECT_EQ(window.lblSending->text(), QStringLiteral("Sending Mail... "));
                               EXPECT_FALSE(window.cmdSndit->isEnabled());
                               EXPECT_FALSE(window.cmdCancel->isEnabled());
                               EXPECT_FALSE(window.cmdAttach->isEnabled());
                               EXPECT_EQ(window.cursor().shape(), Qt::WaitCursor);
                               server.release();
                           });
    write(bob, QStringLiteral("s"), QStringLiteral("x"));
    press();
    EXPECT_EQ(boxes.size(), 1U);
}

TEST_F(Send, ARefusedRecipientLeavesEverythingForAnotherTryButTheAttachButton) {
    mailbox.answer("RCPT", "550 no such user\r\n");
    write(bob, QStringLiteral("s"), QStringLiteral("my text"));
    composeWindow().tCc->setText(QStringLiteral("carol@example.org"));
    press();
    ASSERT_EQ(boxes.size(), 1U);
    EXPECT_TRUE(boxes[0].text.startsWith(QStringLiteral("Unable to send message. Error# 204")));
    EXPECT_EQ(composeWindow().tTo->text(), bob);
    EXPECT_EQ(composeWindow().tCc->text(), QStringLiteral("carol@example.org"));
    EXPECT_EQ(composeWindow().tSubject->text(), QStringLiteral("s"));
    EXPECT_EQ(composeWindow().tMessage->toPlainText(), QStringLiteral("my text"));
    EXPECT_TRUE(composeWindow().cmdSndit->isEnabled());
    EXPECT_TRUE(composeWindow().cmdCancel->isEnabled());
    EXPECT_FALSE(composeWindow().cmdAttach->isEnabled()) << "left disabled on this path";
    EXPECT_THAT(mailbox.messages(), IsEmpty());

    mailbox.answerProperly("RCPT");
    press();
    EXPECT_EQ(boxes.size(), 2U);
    EXPECT_EQ(mailbox.messages().size(), 1U);
}

TEST_F(Send, AnotherTryKeepsTheMessageId) {
    // The server receives the first attempt's whole message before it refuses it.
    mailbox.answer(".", "451 try again\r\n");
    write(bob, QStringLiteral("s"), QStringLiteral("x"));
    press();
    const std::string first = composeWindow().SMTP1.messageId();
    EXPECT_THAT(first, Not(IsEmpty()));
    mailbox.answerProperly(".");
    press();
    ASSERT_EQ(mailbox.messages().size(), 1U);
    EXPECT_THAT(mailbox.messages()[0], HasSubstr(first));
}

TEST_F(Send, AMissingAttachmentIsTheErrorOfTheMissingFile) {
    write(bob, QStringLiteral("s"), QStringLiteral("x"), QStringLiteral("C:\\gone.txt"));
    press();
    expectFailure(53);
    EXPECT_EQ(server.connections(), 0U);
}

TEST_F(Send, AFolderForAnAttachmentIsRefused) {
    write(bob, QStringLiteral("s"), QStringLiteral("x"), QStringLiteral("Z:\\tmp"));
    press();
    expectFailure(75);
}

TEST_F(Send, AnAttachmentsNameWithAQuoteIsRefused) {
    folder.write("a\"b", "x");
    write(bob, QStringLiteral("s"), QStringLiteral("x"), QStringLiteral("C:\\a\"b"));
    press();
    expectFailure(52);
    EXPECT_EQ(server.connections(), 0U);
}

TEST_F(Send, AnUnknownServerIsItsError) {
    email::settings.SMTPServer = QStringLiteral("mail.invalid");
    write(bob, QStringLiteral("s"), QStringLiteral("x"));
    press();
    expectFailure(26002);
}

TEST_F(Send, AnAddressThatCannotBeSentToIsMarkedInItsFieldBeforeAnybodyIsConnected) {
    const struct {
        QString to;
        QString copies;
        QString marked;
        bool inCopies;
        int error;
    } cases[] = {
        {QStringLiteral("ann@example.org, bob@, cid@example.org"), {}, QStringLiteral("bob@"), false, 20401},
        {QStringLiteral("J\u00f6rg \U0001f600 <j@x.org>, b\u00f6b@x.org"),
         {},
         QStringLiteral("b\u00f6b@x.org"),
         false,
         20401},
        {bob, QStringLiteral("ann@example.org,  cid "), QStringLiteral("cid"), true, 20401},
        {QStringLiteral("ann@x.org\r\nBcc: eve@x.org"),
         {},
         QStringLiteral("ann@x.org\r\nBcc: eve@x.org"),
         false,
         20403},
        {QStringLiteral(", ,"), {}, QStringLiteral(", ,"), false, 20402},
    };

    auto& window = composeWindow();
    for (const auto& [to, copies, marked, inCopies, error] : cases) {
        boxes.clear();
        write(to, QStringLiteral("Hello"), QStringLiteral("x"));
        window.tCc->setText(copies);
        window.tMessage->setFocus();
        press();
        expectFailure(error);
        const QLineEdit* const field = inCopies ? window.tCc : window.tTo;
        EXPECT_EQ(window.focusWidget(), field);
        EXPECT_EQ(field->selectedText(), marked);
    }
    EXPECT_EQ(server.connections(), 0U);
}

TEST_F(Send, TheFieldIsMarkedAfterTheWindowHasRestedForAFileToBeEncoded) {
    folder.write("report.txt", "report");
    write(QStringLiteral("bob"), QStringLiteral("Hello"), QStringLiteral("x"),
          QStringLiteral("C:\\report.txt"));
    composeWindow().cmdSndit->setFocus();
    QTest::keyClick(composeWindow().cmdSndit, Qt::Key_Space);
    expectFailure(20401);
    EXPECT_EQ(composeWindow().focusWidget(), composeWindow().tTo);
    EXPECT_EQ(composeWindow().tTo->selectedText(), QStringLiteral("bob"));
    EXPECT_FALSE(composeWindow().cmdAttach->isEnabled());
}

TEST_F(Send, ASendersAddressThatIsNoneMarksNothing) {
    email::credentials.UserName = QStringLiteral("ann miller");
    write(bob, QStringLiteral("Hello"), QStringLiteral("x"));
    press();
    expectFailure(20401);
    EXPECT_FALSE(composeWindow().tTo->hasSelectedText());
    EXPECT_EQ(server.connections(), 0U);
}

TEST_F(Send, ALineEndInASubjectThatSomebodyElseWroteMakesNoHeader) {
    write(bob, QStringLiteral("RE: x\r\nBcc: eve@example.org"), QStringLiteral("x"));
    press();
    ASSERT_EQ(boxes.size(), 1U);
    EXPECT_TRUE(boxes[0].text.startsWith(QStringLiteral("Unable to send message. Error# 204")));
    EXPECT_THAT(mailbox.messages(), IsEmpty());
    EXPECT_THAT(server.commands(), Not(Contains(HasSubstr("eve"))));
    EXPECT_EQ(composeWindow().focusWidget(), composeWindow().tSubject);
    EXPECT_TRUE(composeWindow().tSubject->hasSelectedText());
}

TEST_F(Send, ClosedWhileItSendsTheWindowHidesAndTheMessageIsSentOnce) {
    refuseDataWhenReleased();
    const WhenItHolds close([this] { return waitsAtData(); },
                            [&] {
                                composeWindow().close();
                                EXPECT_FALSE(composeWindow().isVisible());
                                EXPECT_TRUE(mainWindow().isEnabled());
                                server.release();
                            });
    write(bob, QStringLiteral("s"), QStringLiteral("precious"));
    press();
    ASSERT_EQ(boxes.size(), 1U);
    EXPECT_TRUE(composeWindow().isVisible()) << "what was not sent comes back";
    EXPECT_EQ(composeWindow().tMessage->toPlainText(), QStringLiteral("precious"));
    EXPECT_EQ(server.connections(), 1U);
}

TEST_F(Send, AfterItWasClosedWhileItSentControlIsGivenBackOnce) {
    refuseDataWhenReleased();
    const WhenItHolds close([this] { return waitsAtData(); },
                            [&] {
                                composeWindow().close();
                                // Opening a message disables the main window, too.
                                mainWindow().setEnabled(false);
                                server.release();
                            });
    write(bob, QStringLiteral("s"), QStringLiteral("x"));
    press();
    composeWindow().cmdCancel->click();
    EXPECT_FALSE(mainWindow().isEnabled());
}

TEST_F(Send, WhileAFileIsEncodedTheWindowRestsAndIsNeitherClosedNorCancelled) {
    folder.write("BIG.BIN", std::string(8'000'000, 'b'));
    bool looked = false;
    const WhenItHolds look([] { return !composeWindow().isEnabled(); },
                           [&] {
                               looked = true;
                               composeWindow().close();
                               composeWindow().cmdCancel->click();
                               EXPECT_TRUE(composeWindow().isVisible());
                           });
    write(bob, QStringLiteral("s"), QStringLiteral("x"), QStringLiteral("C:\\BIG.BIN"));
    press();
    EXPECT_TRUE(looked);
    EXPECT_THAT(boxTexts(), ElementsAre(QStringLiteral("Your message has been sent.")));
    EXPECT_EQ(mailbox.messages().size(), 1U);
}

TEST_F(Send, TextThatHoldsTheBoundaryLineItselfIsSentAsItStands) {
    folder.write("A.TXT", "abc");
    const QString text = QStringLiteral("before\n----*******Brindlewake************\nbehind");
    write(bob, QStringLiteral("s"), text, QStringLiteral("C:\\A.TXT"));
    press();
    EXPECT_THAT(boxTexts(), ElementsAre(QStringLiteral("Your message has been sent.")));
    ASSERT_EQ(mailbox.messages().size(), 1U);
    EXPECT_THAT(mailbox.messages()[0],
                HasSubstr("\r\nbefore\r\n----*******Brindlewake************\r\nbehind\r\n"));
}

TEST_F(Send, TheFileThatGoesOutIsTheOneThatWasEncodedWhateverHasItsNameByThen) {
    folder.write("MINE.TXT", "my own file");
    folder.write("another", "c2VjcmV0\r\n");
    greetWhenReleased();
    const WhenItHolds replace([this] { return waitsAtGreeting(); },
                              [&] {
                                  std::filesystem::rename(folder.path("another"),
                                                          folder.path("_brndwake.tmp"));
                                  server.release();
                              });
    write(bob, QStringLiteral("s"), QStringLiteral("x"), QStringLiteral("C:\\MINE.TXT"));
    press();
    expectOwnFileSent();
    EXPECT_EQ(folder.read("_brndwake.tmp"), "c2VjcmV0\r\n");
}

TEST_F(Send, WhatAnotherProgramEncodesMeanwhileGoesIntoAnotherFile) {
    folder.write("MINE.TXT", "my own file");
    folder.write("SECRET.TXT", "secret");
    greetWhenReleased();
    const WhenItHolds encode([this] { return waitsAtGreeting(); },
                             [&] {
                                 NetCodeLib::NetCode another;
                                 another.setOverwrite(true);
                                 another.setSourceFile(QStringLiteral("C:\\SECRET.TXT"));
                                 another.setTargetFile(QStringLiteral("C:\\_brndwake.tmp"));
                                 another.setAction(netcodelib::Action::Encode);
                                 server.release();
                             });
    write(bob, QStringLiteral("s"), QStringLiteral("x"), QStringLiteral("C:\\MINE.TXT"));
    press();
    expectOwnFileSent();
    EXPECT_EQ(folder.read("_brndwake.tmp"), "c2VjcmV0\r\n");
}

TEST_F(Send, AnotherTryEncodesIntoTheSameFile) {
    folder.write("MINE.TXT", "my own file");
    mailbox.answer("DATA", "451 not now\r\n");
    write(bob, QStringLiteral("s"), QStringLiteral("x"), QStringLiteral("C:\\MINE.TXT"));
    const auto encodedInto = [this] {
        press();
        struct stat status {};
        EXPECT_EQ(::stat(folder.path("_brndwake.tmp").c_str(), &status), 0);
        return status.st_ino;
    };
    EXPECT_EQ(encodedInto(), encodedInto());
}

TEST_F(Send, CtrlReturnSends) {
    write(bob, QStringLiteral("s"), QStringLiteral("x"));
    ASSERT_TRUE(QTest::qWaitForWindowActive(&composeWindow()));
    QTest::keyClick(composeWindow().tMessage, Qt::Key_Return, Qt::ControlModifier);
    EXPECT_EQ(mailbox.messages().size(), 1U);
}

TEST_F(Send, PressedAgainWhileTheFirstOneRunsDoesNothing) {
    refuseDataWhenReleased();
    const WhenItHolds again([this] { return waitsAtData(); },
                            [&] {
                                composeWindow().cmdSndit_Click();
                                server.release();
                            });
    write(bob, QStringLiteral("s"), QStringLiteral("x"));
    press();
    EXPECT_EQ(boxes.size(), 1U);
    EXPECT_EQ(server.connections(), 1U);
}
