// The message window in the standard way of reading.

#include "email/mailbox.h"
#include "tests/reader/reader_fixture.h"
#include "tests/standard/local_zone.h"
#include "tests/support/file_faults.h"
#include "tests/support/mail_mode_is.h"

#include <QComboBox>

#include <filesystem>
#include <sys/stat.h>

using support::attachmentPart;
using support::multipart;
using support::plainPart;
using support::ReaderTest;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {
class StandardMessageWindow : public ReaderTest {
  protected:
    static std::vector<QString> attachments() {
        std::vector<QString> texts;
        for (int index = 0; index < messageWindow().cboAttached->count(); ++index) {
            texts.push_back(messageWindow().cboAttached->itemText(index));
        }
        return texts;
    }

    void save(int index) {
        boxes.clear();
        messageWindow().cboAttached->setCurrentIndex(index);
        messageWindow().cmdSave->click();
    }

    void expectSaveRefused(int number) {
        ASSERT_THAT(boxTexts(), ElementsAre(QStringLiteral("Please make sure disk is ready. Error#") +
                                            QString::number(number)));
        EXPECT_TRUE(messageWindow().isEnabled());
    }

    support::MailModeIs mode_{MailMode::Standard};
};

const std::string kThreeFiles = multipart(
    {plainPart("Text"), attachmentPart("one.txt", "T25l\r\n"), attachmentPart("two.txt", "VHdvVHdv\r\n"),
     "Content-Type: text/x-patch; name*=utf-8''%C3%A4.patch\r\nContent-Disposition: attachment\r\n"
     "Content-Transfer-Encoding: quoted-printable\r\n\r\n=C3=A4=\r\nb"});
} // namespace

TEST_F(StandardMessageWindow, ShowsDecodedFieldsAndText) {
    openOnly(
        "From: =?utf-8?Q?M=C3=BCller=2C_Hans?= <h@example.org>\r\nSubject: =?utf-8?B?w6TDtg==?=\r\n"
        "Content-Type: multipart/alternative; boundary=cut\r\n\r\n--cut\r\n"
        "Content-Type: text/plain; charset=iso-8859-1\r\nContent-Transfer-Encoding: quoted-printable\r\n\r\n"
        "Gr=FC=DFe\r\n--cut\r\nContent-Type: text/html\r\n\r\n<p>no</p>\r\n--cut--\r\n");
    EXPECT_THAT(boxTexts(), IsEmpty());
    const frmFrom& window = messageWindow();
    EXPECT_EQ(window.windowTitle(), QStringLiteral("Message from: Müller, Hans <h@example.org>"));
    EXPECT_EQ(window.txtFrom->text(), QStringLiteral("Müller, Hans <h@example.org>"));
    EXPECT_EQ(window.txtSubject->text(), QStringLiteral("äö"));
    EXPECT_EQ(shownText(), QStringLiteral("Grüße"));
    EXPECT_EQ(window.txtAttachments, nullptr);
}

TEST_F(StandardMessageWindow, ShowsControlCharactersInsteadOfObeyingThem) {
    openOnly("From: =?utf-8?Q?a=0D=0Ab=E2=80=AEc?= <h@example.org>\r\nSubject: x\r\n\r\ntext\r\n");
    EXPECT_EQ(messageWindow().txtFrom->text(), QStringLiteral("a  b<202E>c <h@example.org>"));
}

TEST_F(StandardMessageWindow, ListsAllAttachmentsWithTheFirstOneChosen) {
    openOnly(kThreeFiles);
    EXPECT_THAT(attachments(),
                ElementsAre(QStringLiteral("one.txt (3 bytes)"), QStringLiteral("two.txt (6 bytes)"),
                            QStringLiteral("ä.patch (3 bytes)")));
    EXPECT_EQ(messageWindow().cboAttached->currentIndex(), 0);
    EXPECT_TRUE(messageWindow().cboAttached->isEnabled());
    EXPECT_FALSE(messageWindow().cboAttached->isEditable());
    EXPECT_TRUE(messageWindow().cmdSave->isEnabled());
    EXPECT_EQ(messageWindow().lblAttachments->buddy(), messageWindow().cboAttached);
}

TEST_F(StandardMessageWindow, WithoutAttachmentsTheListIsEmptyAndRestsAndSoDoesSave) {
    openOnly("Subject: x\r\n\r\ntext\r\n");
    EXPECT_THAT(attachments(), IsEmpty());
    EXPECT_EQ(messageWindow().cboAttached->currentIndex(), -1);
    EXPECT_FALSE(messageWindow().cboAttached->isEnabled());
    EXPECT_FALSE(messageWindow().cmdSave->isEnabled());
}

TEST_F(StandardMessageWindow, SavesTheChosenAttachmentDecodedByItsOwnEncoding) {
    openOnly(kThreeFiles);
    save(1);
    EXPECT_THAT(boxTexts(), ElementsAre(QStringLiteral("Attachment has been saved to: S:\\two.txt")));
    EXPECT_EQ(folder.read("two.txt"), "TwoTwo");
    save(2);
    EXPECT_THAT(boxTexts(), ElementsAre(QStringLiteral("Attachment has been saved to: S:\\ä.patch")));
    EXPECT_EQ(folder.read("ä.patch"), "äb");

    struct stat status {};

    ASSERT_EQ(stat(folder.path("two.txt").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
    EXPECT_FALSE(std::filesystem::exists(folder.path("one.txt")));
    EXPECT_FALSE(std::filesystem::exists(folder.path("_tolk.tmp")));
}

TEST_F(StandardMessageWindow, SavesNoNameThatLeavesTheFolder) {
    openOnly(
        multipart({attachmentPart("../x", "T25l\r\n"), attachmentPart("=?utf-8?Q?..=2F?=y", "T25l\r\n")}));
    save(0);
    save(1);
    EXPECT_EQ(folder.read("___x"), "One");
    EXPECT_EQ(folder.read("___y"), "One");
}

TEST_F(StandardMessageWindow, SavesNothingOverAFileOfTheProgramsOwn) {
    openOnly(multipart({attachmentPart("tolk.ini", "T25l\r\n")}));
    const std::string before = folder.read("tolk.ini");
    save(0);
    expectSaveRefused(20503);
    EXPECT_EQ(folder.read("tolk.ini"), before);
}

TEST_F(StandardMessageWindow, WhatCannotBeSavedIsTold) {
    openOnly(multipart({attachmentPart("one.txt", "T25l\r\n")}));
    std::filesystem::create_directory(folder.path("one.txt"));
    save(0);
    expectSaveRefused(75);
}

TEST_F(StandardMessageWindow, SavesAMessageInTheMessageByteForByte) {
    openOnly(multipart(
        {plainPart("Text"), "Content-Type: message/rfc822\r\n\r\nSubject:  inner\r\n\r\ninner text"}));
    EXPECT_EQ(shownText(), QStringLiteral("Text"));
    EXPECT_THAT(attachments(), ElementsAre(QStringLiteral("attachment.eml (29 bytes)")));
    save(0);
    EXPECT_EQ(folder.read("attachment.eml"), "Subject:  inner\r\n\r\ninner text");
}

TEST_F(StandardMessageWindow, ShowsMessagesOfAnySize) {
    openOnly("Subject: Long\r\n\r\n" + std::string(40'000, 'x') + "\r\n");
    EXPECT_THAT(boxTexts(), IsEmpty());
    EXPECT_EQ(messageWindow().tMessage->bytes(), std::string(40'000, 'x') + "\r\n");
}

TEST_F(StandardMessageWindow, ReadsALargeMessageBesideTheWindows) {
    const std::string body(2'000'000, 'x');
    openOnly("Subject: Long\r\n\r\n" + body + "\r\n");
    EXPECT_EQ(messageWindow().tMessage->bytes(), body + "\r\n");
}

TEST_F(StandardMessageWindow, NoBoundaryIsAnError) {
    for (const char* boundary : {"boundary=\"cut", "boundary=", "boundary", "charset=x"}) {
        openOnly(std::string("Subject: x\r\nContent-Type: multipart/mixed; ") + boundary +
                 "\r\n\r\ntext\r\n");
        EXPECT_THAT(boxTexts(), IsEmpty()) << boundary;
        EXPECT_EQ(shownText(), QStringLiteral("text\n")) << boundary;
        forgetEverything();
        mailbox.remove(1);
    }
}

TEST_F(StandardMessageWindow, OpenedAgainItIsEmptyBefore) {
    logInWith({kThreeFiles, "Subject: x\r\n\r\ntext\r\n"});
    doubleClick(1);
    messageWindow().cmdDone->click();
    doubleClick(2);
    EXPECT_THAT(attachments(), IsEmpty());
    EXPECT_EQ(shownText(), QStringLiteral("text\n"));
}

TEST_F(StandardMessageWindow, ReplyGoesToReplyTo) {
    openOnly("From: a@example.org\r\nReply-To: =?utf-8?Q?M=C3=BCller=2C_Hans?= <h@example.org>\r\n"
             "Subject: Tea\r\n\r\ntext\r\n");
    messageWindow().cmdReply->click();
    EXPECT_EQ(composeWindow().tTo->text(), QStringLiteral("\"Müller, Hans\" <h@example.org>"));
    EXPECT_EQ(composeWindow().tSubject->text(), QStringLiteral("RE: Tea"));
}

TEST_F(StandardMessageWindow, ReplyKeepsASubjectThatIsAReplyAlready) {
    for (const auto& [subject, expected] :
         std::vector<std::pair<std::string, QString>>{{"Re: Tea", QStringLiteral("Re: Tea")},
                                                      {"rE:Tea", QStringLiteral("rE:Tea")},
                                                      {"Aw: Tea", QStringLiteral("RE: Aw: Tea")},
                                                      {"Sv: Tea", QStringLiteral("RE: Sv: Tea")},
                                                      {"Return: Tea", QStringLiteral("RE: Return: Tea")},
                                                      {"=?utf-8?Q?RE=3A_Tea?=", QStringLiteral("RE: Tea")}}) {
        openOnly("From: a@example.org\r\nSubject: " + subject + "\r\n\r\ntext\r\n");
        messageWindow().cmdReply->click();
        EXPECT_EQ(composeWindow().tSubject->text(), expected);
        forgetEverything();
        mailbox.remove(1);
    }
}

TEST_F(StandardMessageWindow, ForwardCarriesTheReadableTextBetweenTheSeparators) {
    const support::LocalZone berlin("Europe/Berlin");
    openOnly(
        "From: =?utf-8?Q?Andr=C3=A9?= <a@example.org>\r\nDate: Sat, 21 Nov 2026 17:42:00 +0100\r\n"
        "Subject: =?utf-8?Q?Caf=C3=A9?=\r\nContent-Type: text/html; charset=utf-8\r\n\r\n<p>Tea</p>\r\n");
    messageWindow().cmdFwrd->click();
    EXPECT_EQ(composeWindow().tSubject->text(), QStringLiteral("Fwd: Café"));
    EXPECT_EQ(composeWindow().tMessage->bytes(),
              "\r\n\r\n\r\n----------Foward Message Follows----------\r\nDate: 2026-11-21 17:42\r\n"
              "From: André <a@example.org>\r\nSubject: Café\r\n\r\nTea\r\n---------Foward Message "
              "Ends---------------");
}

TEST_F(StandardMessageWindow, TellsTheWriterWhatIsAnswered) {
    const std::string header =
        "Message-ID: <2@example.org>\r\nReferences: <1@example.org>\r\nSubject:  x\r\n";
    openOnly(header + "\r\n.text\r\n");
    const AnsweredMessage& answered = messageWindow().Answered;
    EXPECT_EQ(answered.messageId, "<2@example.org>");
    EXPECT_THAT(answered.references, ElementsAre("<1@example.org>", "<2@example.org>"));
    ASSERT_NE(answered.original, nullptr);
    EXPECT_EQ(answered.original->header, header);
    EXPECT_EQ(answered.original->body, ".text\r\n");
}

TEST_F(StandardMessageWindow, PrintsTheReadableText) {
    logInWith({"Subject: x\r\nContent-Type: text/html\r\n\r\n<p>One</p><script>no</script>\r\n"});
    email::settings.AllowPrinting = QStringLiteral("yes");
    doubleClick(1);
    messageWindow().CmdPrint->click();
    ASSERT_EQ(printed.size(), 1U);
    EXPECT_THAT(printed.front().lines, ElementsAre("One "));
}

TEST_F(StandardMessageWindow, GivesItsMemoryBackWhenItIsClosed) {
    openOnly(kThreeFiles);
    const std::weak_ptr<const ReceivedMessage> original = messageWindow().Answered.original;
    messageWindow().cmdDone->click();
    EXPECT_TRUE(original.expired());
    EXPECT_EQ(email::mailbox.Messages.at(1).BodyText, "");
}
