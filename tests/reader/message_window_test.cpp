#include "email/mailbox.h"
#include "email/shared_settings.h"
#include "platform/runtime_error.h"
#include "platform/text_printer.h"
#include "tests/reader/reader_fixture.h"

#include <QScrollBar>
#include <QWheelEvent>

using support::attachmentPart;
using support::multipart;
using support::plainPart;
using support::ReaderTest;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {
class MessageWindow : public ReaderTest {};

const std::string kLetter =
    "From: Ann <ann@example.org>\r\nSubject: Hello\r\nDate: today\r\nX-A: 1\r\n\r\nText\r\n";
} // namespace

TEST_F(MessageWindow, PrintIsOfferedOnlyWhenTheSettingIsExactlyYes) {
    logInWith({kLetter});
    for (const auto& [setting, enabled] : std::initializer_list<std::pair<const char*, bool>>{
             {"yes", true}, {"Yes", false}, {"no", false}, {"", false}}) {
        email::settings.AllowPrinting = QLatin1String(setting);
        doubleClick(1);
        unload(messageWindow());
        doubleClick(1);
        EXPECT_EQ(messageWindow().CmdPrint->isEnabled(), enabled) << setting;
        unload(messageWindow());
    }
}

TEST_F(MessageWindow, WithoutAnAttachmentThereIsNothingToSave) {
    logInWith({multipart({plainPart("text")}), kLetter});
    for (const int row : {1, 2}) {
        doubleClick(row);
        EXPECT_FALSE(messageWindow().cmdSave->isEnabled()) << row;
        unload(messageWindow());
    }
}

TEST_F(MessageWindow, ItsCaptionsAreTheirOwn) {
    openOnly(kLetter);
    const frmFrom& window = messageWindow();
    EXPECT_EQ(window.cmdSave->text(), QStringLiteral(" &Save Attached"));
    EXPECT_EQ(window.cmdReply->text(), QStringLiteral("&Reply"));
    EXPECT_EQ(window.cmdFwrd->text(), QStringLiteral("&Foward"));
    EXPECT_EQ(window.cmdDone->text(), QStringLiteral("E&xit"));
    EXPECT_EQ(window.CmdPrint->text(), QStringLiteral("&Print"));
    EXPECT_EQ(window.lblFrom->text(), QStringLiteral("From:"));
    EXPECT_EQ(window.lblSubject->text(), QStringLiteral("Subject:"));
    EXPECT_EQ(window.lblAttachments->text(), QStringLiteral("Attachments:"));
}

TEST_F(MessageWindow, ItsTextsCanBeChosenButNotChanged) {
    openOnly(kLetter);
    frmFrom& window = messageWindow();
    for (QLineEdit* field : {window.txtFrom, window.txtSubject, window.txtAttachments}) {
        EXPECT_TRUE(field->isReadOnly());
    }
    QTest::keyClicks(window.tMessage, QStringLiteral("typed"));
    EXPECT_EQ(window.tMessage->toPlainText(), QStringLiteral("Text\n"));
    window.tMessage->selectAll();
    EXPECT_EQ(window.tMessage->textCursor().selectedText().left(4), QStringLiteral("Text"));
    EXPECT_NE(window.tMessage->textInteractionFlags() & Qt::TextSelectableByKeyboard, 0);
    EXPECT_EQ(window.tMessage->lineWrapMode(), QPlainTextEdit::WidgetWidth);
}

TEST_F(MessageWindow, ReplyFillsInTheSenderAndTheSubjectAndQuotesNothing) {
    email::settings.SaveCopy = QStringLiteral("yes");
    openOnly(kLetter);
    messageWindow().cmdReply->click();
    frmSend& compose = composeWindow();
    EXPECT_EQ(compose.tTo->text(), QStringLiteral("Ann <ann@example.org>"));
    EXPECT_EQ(compose.tSubject->text(), QStringLiteral("RE: Hello"));
    EXPECT_EQ(compose.tCc->text(), QString());
    EXPECT_EQ(compose.tMessage->bytes(), "");
    EXPECT_FALSE(messageWindow().isEnabled());
    EXPECT_TRUE(compose.isVisible());
    ASSERT_TRUE(QTest::qWaitForWindowActive(&compose));
    EXPECT_TRUE(compose.tMessage->hasFocus());
}

TEST_F(MessageWindow, ForwardHasUnequalHyphensAndTheHeaderLast) {
    openOnly(kLetter);
    messageWindow().cmdFwrd->click();
    frmSend& compose = composeWindow();
    EXPECT_EQ(compose.tSubject->text(), QStringLiteral("Fwd: Hello"));
    EXPECT_EQ(compose.tTo->text(), QString());
    EXPECT_EQ(compose.tMessage->bytes(),
              "\r\n\r\n\r\n----------Foward Message Follows----------\r\n"
              "Date: today\r\nFrom: Ann <ann@example.org>\r\nSubject: Hello\r\n\r\n"
              "Text\r\n\r\n"
              "From: Ann <ann@example.org>\r\nSubject: Hello\r\nDate: today\r\nX-A: 1\r\n"
              "---------Foward Message Ends---------------");
    EXPECT_FALSE(messageWindow().isEnabled());
    ASSERT_TRUE(QTest::qWaitForWindowActive(&compose));
    EXPECT_TRUE(compose.tTo->hasFocus());
}

TEST_F(MessageWindow, ForwardingAMessageWithAnAttachmentForwardsItsEncodedText) {
    openOnly(multipart({plainPart("See the file."), attachmentPart("a.bin", "QUJD")}));
    messageWindow().cmdFwrd->click();
    const std::string text = composeWindow().tMessage->bytes();
    EXPECT_NE(text.find("preamble\r\n--cut\r\nContent-Type: text/plain; charset=utf-8\r\n"),
              std::string::npos);
    EXPECT_NE(text.find("name=\"a.bin\"\r\nContent-Transfer-Encoding: base64\r\n\r\nQUJD\r\n--cut--\r\n"),
              std::string::npos);
}

TEST_F(MessageWindow, ForwardLosesNoByteWhateverTheLettersAre) {
    std::string body;
    for (int byte = 0; byte < 256; ++byte) {
        if (byte != '\r' && byte != '\n') {
            body += static_cast<char>(byte);
        }
    }
    body += "\r\n\x1b$B%F%9%H\x1b(B \xed\xa0\x80 \xe2\x80\xa9 \xe2\x80\xa8 \xc2\xa0 a\tb \r\n";
    openOnly("Subject: bytes\r\n\r\n" + body);
    messageWindow().cmdFwrd->click();
    EXPECT_NE(composeWindow().tMessage->bytes().find("\r\n\r\n" + body + "\r\nSubject: bytes"),
              std::string::npos);
    QTest::keyClicks(composeWindow().tMessage, QStringLiteral("Look:"));
    const std::string edited = composeWindow().tMessage->bytes();
    EXPECT_TRUE(edited.starts_with("Look:\r\n\r\n\r\n----------Foward"));
    EXPECT_NE(edited.find("\r\n\r\n" + body + "\r\nSubject: bytes"), std::string::npos);
}

TEST_F(MessageWindow, ASubjectWithALineEndNeverBecomesASecondHeaderLine) {
    logInWith({kLetter});
    mailbox.answer("RETR", "+OK\r\nFrom: a@x\rBcc: b@x\r\nSubject: a\rBcc: c@x\r\n\r\nT\r\n.\r\n");
    doubleClick(1);
    messageWindow().cmdReply->click();
    for (const QString& text : {composeWindow().tTo->text(), composeWindow().tSubject->text()}) {
        EXPECT_FALSE(text.contains(u'\r') || text.contains(u'\n') || text.contains(u'\0'))
            << text.toStdString();
        EXPECT_TRUE(text.contains(QStringLiteral(" Bcc: "))) << text.toStdString();
    }
}

TEST_F(MessageWindow, ClosingTheAnswerGivesTheMessageWindowBack) {
    openOnly(kLetter);
    for (QPushButton* button : {messageWindow().cmdReply, messageWindow().cmdFwrd}) {
        button->click();
        composeWindow().cmdCancel->click();
        EXPECT_TRUE(messageWindow().isEnabled());
        EXPECT_TRUE(messageWindow().isVisible());
        EXPECT_FALSE(composeWindow().isVisible());
        EXPECT_FALSE(mainWindow().isEnabled());
    }
}

TEST_F(MessageWindow, CannotBeClosedWhileItsAnswerIsWritten) {
    openOnly(kLetter);
    messageWindow().cmdReply->click();
    messageWindow().close();
    EXPECT_TRUE(messageWindow().isVisible());
}

TEST_F(MessageWindow, ClosedByItsFrameItGivesTheMainWindowBack) {
    openOnly(kLetter);
    messageWindow().close();
    EXPECT_FALSE(messageWindow().isVisible());
    expectUsableMainWindow();
}

TEST_F(MessageWindow, ReplyMeansTheMessageInTheWindowAlsoAfterACheckForNewMail) {
    logInWith({"From: one@x\r\nSubject: 1\r\n\r\none\r\n", "From: two@x\r\nSubject: 2\r\n\r\ntwo\r\n"});
    doubleClick(1);
    mailbox.deliver("From: three@x\r\nSubject: 3\r\n\r\nthree\r\n");
    mainWindow().tmrCheckMail_Timer();
    ASSERT_NE(email::mailbox.CurrentMessage, 1);
    messageWindow().cmdReply->click();
    EXPECT_EQ(composeWindow().tTo->text(), QStringLiteral("one@x"));
    EXPECT_EQ(composeWindow().tSubject->text(), QStringLiteral("RE: 1"));
}

TEST_F(MessageWindow, PrintSendsTheTextToThePrinterAndGivesTheWindowBack) {
    email::settings.AllowPrinting = QStringLiteral("yes");
    openOnly("Subject: 1\r\n\r\nDear Bob\r\nAnn\r\n");
    messageWindow().CmdPrint->setEnabled(true);
    messageWindow().CmdPrint->click();
    ASSERT_EQ(printed.size(), 1U);
    EXPECT_THAT(printed.front().lines, ElementsAre("Dear Bob\r\nAnn\r\n "));
    EXPECT_EQ(printed.front().font, "Arial");
    EXPECT_EQ(printed.front().documentEnds, 1);
    EXPECT_TRUE(messageWindow().isEnabled());
    EXPECT_NE(messageWindow().cursor().shape(), Qt::WaitCursor);
}

TEST_F(MessageWindow, WithoutAPrinterABoxSaysSoAndTheWindowGoesOn) {
    platform::replaceDefaultPrinter([]() -> std::unique_ptr<platform::TextPrinter> {
        throw platform::RuntimeError(platform::errors::PrinterError);
    });
    openOnly(kLetter);
    messageWindow().CmdPrint->setEnabled(true);
    messageWindow().CmdPrint->click();
    ASSERT_EQ(boxes.size(), 1U);
    EXPECT_TRUE(boxes[0].text.startsWith(QStringLiteral("Run-time error 482")));
    EXPECT_TRUE(boxes[0].text.contains(QStringLiteral("default printer")));
    EXPECT_TRUE(messageWindow().isEnabled());
    EXPECT_NE(messageWindow().cursor().shape(), Qt::WaitCursor);
}

TEST_F(MessageWindow, CtrlFFindsWordsAndGoesOnFromTheStart) {
    openOnly("Subject: 1\r\n\r\nApple pear APPLE\r\nplum\r\n");
    frmFrom& window = messageWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    EXPECT_FALSE(window.barFind->isVisible());
    QTest::keyClick(&window, Qt::Key_F, Qt::ControlModifier);
    EXPECT_TRUE(window.barFind->isVisible());
    EXPECT_TRUE(window.barFind->txtFind->hasFocus());
    QTest::keyClicks(window.barFind->txtFind, QStringLiteral("apple"));
    std::vector<int> found;
    for (int i = 0; i < 3; ++i) {
        QTest::keyClick(window.barFind->txtFind, Qt::Key_Return);
        found.push_back(window.tMessage->textCursor().selectionStart());
    }
    EXPECT_THAT(found, ElementsAre(0, 11, 0));
    EXPECT_EQ(window.barFind->lblFound->text(), QStringLiteral("Went on from the start"));
    window.barFind->cmdPrevious->click();
    EXPECT_EQ(window.tMessage->textCursor().selectionStart(), 11);
    window.barFind->txtFind->setText(QStringLiteral("cherry"));
    window.barFind->cmdNext->click();
    EXPECT_EQ(window.barFind->lblFound->text(), QStringLiteral("Not found"));
    QTest::keyClick(window.barFind->txtFind, Qt::Key_Escape);
    EXPECT_FALSE(window.barFind->isVisible());
}

TEST_F(MessageWindow, TheRowForFindingIsAsWideAsTheText) {
    openOnly(kLetter);
    frmFrom& window = messageWindow();
    window.barFind->open();
    QCoreApplication::processEvents();
    const auto end = [&window](const QWidget* control) {
        return control->mapTo(&window, QPoint(control->width(), 0)).x();
    };
    EXPECT_EQ(end(window.barFind->cmdPrevious), end(window.tMessage));
    window.barFind->txtFind->setText(QStringLiteral("no such word"));
    window.barFind->findNext();
    QCoreApplication::processEvents();
    EXPECT_TRUE(window.barFind->lblFound->isVisible());
    EXPECT_EQ(end(window.barFind->lblFound), end(window.tMessage));
}

TEST_F(MessageWindow, CtrlAndTheWheelZoomTheText) {
    openOnly(kLetter);
    frmFrom& window = messageWindow();
    const double before = window.tMessage->font().pointSizeF();
    QWidget* const view = window.tMessage->viewport();
    QWheelEvent wheel(view->rect().center(), view->mapToGlobal(view->rect().center()), {}, {0, 120},
                      Qt::NoButton, Qt::ControlModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(view, &wheel);
    EXPECT_GT(window.tMessage->font().pointSizeF(), before);
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    QTest::keyClick(&window, Qt::Key_0, Qt::ControlModifier);
    EXPECT_EQ(window.tMessage->font().pointSizeF(), before);
}

TEST_F(MessageWindow, ForgettingItsTextIsTheLastThingItDoes) {
    openOnly(kLetter);
    const frmFrom& window = messageWindow();
    unload(messageWindow());
    EXPECT_EQ(window.tMessage->bytes(), "");
}
