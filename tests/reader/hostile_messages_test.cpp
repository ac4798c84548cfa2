// Hostile messages: the windows show them whole, each value on its own line, and stay responsive.

#include "email/mailbox.h"
#include "email/opening.h"
#include "email/shared_settings.h"
#include "tests/reader/reader_fixture.h"
#include "tests/support/base64_text.h"
#include "tests/support/heartbeat.h"
#include "tests/support/random_bytes.h"
#include "tests/support/sanitizer.h"

#include <sys/stat.h>

using support::attachmentPart;
using support::multipart;
using support::plainPart;
using support::ReaderTest;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {
constexpr std::size_t kLargeBytes = support::kSanitized ? 2'000'000 : 8'000'000;

/** Milliseconds after which a window seems frozen to a person; longer under the sanitizers, which are slow.
 */
constexpr qint64 kStuck = support::kSanitized ? 1'000 : 250;

class HostileMessages : public ReaderTest {
  protected:
    /** Lists a harmless message, then has the server give this one in its place when it is opened. */
    void openFetched(const std::string& message) {
        logInWith({"Subject: harmless\r\n\r\ntext\r\n"});
        mailbox.answer("RETR", "+OK\r\n" + support::stuffed(message));
        doubleClick(1);
    }

    void save() {
        boxes.clear();
        messageWindow().cmdSave->click();
    }

    void expectSaved(const std::string& name, const std::string& content) {
        ASSERT_THAT(boxTexts(), ElementsAre(QStringLiteral("Attachment has been saved to: S:\\") +
                                            QString::fromStdString(name)));
        EXPECT_TRUE(folder.read(name) == content);
    }
};

struct SenderCase {
    const char* label;
    std::string from;
};

class HostileSender : public HostileMessages, public testing::WithParamInterface<SenderCase> {};

const SenderCase kSenders[] = {{"TwoAddresses", "A <a> <b>"},
                               {"QuotedAddressBesideAnother", "\"A <a> <b>\" <c@example.org>"},
                               {"Group", "Friends: a@example.org, b@example.org;"},
                               {"EmptyGroup", "undisclosed recipients: ;"},
                               {"EncodedNulAndFormFeed", "=?utf-8?Q?a=00b=0Ac?= <a@example.org>"},
                               {"EncodedNewline", "=?utf-8?B?YQ0KQmNjOiBiQHg=?= <a@example.org>"},
                               {"MarkupCharacters", "<b>bold</b> &amp; <img src='file:///x'>"},
                               {"AccessKey", "A&B %1 \\n"}};

struct EncodedCase {
    const char* label;
    std::string encoded;
    std::string content;
    int error = 0;
};

class HostileEncoding : public HostileMessages, public testing::WithParamInterface<EncodedCase> {};

const EncodedCase kEncodings[] = {{"ForeignCharacters", "QU*J-D_.\r\n RE!VG", "", 20502},
                                  {"BlanksAtTheEndsOfLines", "QUJD\t\r\n\r\n  REVG ", "ABCDEF"},
                                  {"BlanksBetween", "Q U J D\r\nR E V G", "", 20502},
                                  {"NoPadding", "QUJDRA", "", 20502},
                                  {"HalfThePadding", "QUJDRA=", "", 20502},
                                  {"PaddingInside", "QUI=\r\nQUJD", "", 20502},
                                  {"TextBehindPadding", "QUJDRA==\r\n-- \r\nTo leave the list", "ABCD"},
                                  {"NothingButPadding", "====", ""},
                                  {"OneByte", "QQ==", "A"},
                                  {"NoByte", "", ""},
                                  {"OneCharacter", "Q", "", 20502},
                                  {"CutShort", "QUJDR", "", 20502},
                                  {"CutShortBeforePadding", "QUJDR===", "", 20502}};
} // namespace

TEST_F(HostileMessages, ABoundaryWithoutItsClosingQuoteEndsInTheHeaderErrorBox) {
    openFetched("Content-Type: multipart/mixed; boundary=\"cut\r\n\r\n--cut--\r\n");
    expectHeaderErrorBox(5);
}

TEST_F(HostileMessages, AnEmptyBoundaryIsNoneAndTheBodyIsShownAsItStands) {
    openOnly("Content-Type: multipart/mixed; boundary=\"\"\r\n\r\n--\r\n" + plainPart("text\r\n"));
    EXPECT_THAT(boxTexts(), IsEmpty());
    EXPECT_EQ(messageWindow().tMessage->bytes(), "--\r\n" + plainPart("text\r\n"));
}

TEST_F(HostileMessages, ABoundaryOfTenThousandCharactersCutsLikeAnyOther) {
    const std::string boundary(10'000, 'b');
    openOnly("Content-Type: multipart/mixed; boundary=\"" + boundary + "\"\r\n\r\n--" + boundary + "\r\n" +
             plainPart("text\r\n") + "--" + boundary + "--\r\n");
    EXPECT_THAT(boxTexts(), IsEmpty());
    EXPECT_EQ(messageWindow().tMessage->bytes(), "\r\ntext\r\n--");
}

TEST_F(HostileMessages, ABoundaryThatBeginsAnotherCutsThereToo) {
    openOnly("Content-Type: multipart/mixed; boundary=\"cut\"\r\n\r\n--cut\r\n" + plainPart("one\r\n") +
             "--cut1\r\n" + plainPart("two\r\n") + "--cut--\r\n");
    EXPECT_EQ(messageWindow().tMessage->bytes(), "\r\none\r\n--\r\n\r\ntwo\r\n--");
}

TEST_F(HostileMessages, OfANestedAlternativeThePlainTextReplacesWhatWasThere) {
    openOnly(
        multipart({plainPart("outer"),
                   "Content-Type: multipart/alternative; boundary=\"X1\"\r\n\r\n--X1\r\n" +
                       plainPart("inner\r\n") + "--X1\r\nContent-Type: text/html; x\r\n\r\n<p>\r\n--X1--"}));
    EXPECT_EQ(messageWindow().tMessage->bytes(), "\r\ninner\r\n--");
}

TEST_F(HostileMessages, AfterAMessageThatCannotBeOpenedTheNextOneCan) {
    logInWith({multipart({"Content-Type: image/png; name=a\r\n\r\nQQ=="}), multipart({plainPart("fine")})});
    doubleClick(1);
    expectHeaderErrorBox(5);
    doubleClick(2);
    EXPECT_TRUE(messageWindow().isVisible());
    EXPECT_EQ(messageWindow().tMessage->bytes(), "\r\nfine\r\n--");
}

TEST_P(HostileSender, IsShownAsItCameOnOneLine) {
    openOnly("From: " + GetParam().from + "\r\nSubject: " + GetParam().from + "\r\n\r\ntext\r\n");
    EXPECT_THAT(boxTexts(), IsEmpty());
    const frmFrom& window = messageWindow();
    const QString shown = QString::fromStdString(GetParam().from);
    EXPECT_EQ(window.windowTitle(), QStringLiteral("Message from: ") + shown);
    EXPECT_EQ(window.txtFrom->text(), shown);
    EXPECT_EQ(window.txtSubject->text(), shown);
    messageWindow().cmdReply->click();
    EXPECT_EQ(composeWindow().tTo->text(), shown);
    EXPECT_EQ(composeWindow().tSubject->text(), QStringLiteral("RE: ") + shown);
}

INSTANTIATE_TEST_SUITE_P(Senders, HostileSender, testing::ValuesIn(kSenders),
                         [](const auto& test) { return std::string(test.param.label); });

TEST_F(HostileMessages, ASenderOfThirtyThousandCharactersIsShownCutAndAnsweredWhole) {
    const std::string sender(30'000, 's');
    openOnly(multipart({plainPart("text")}, "From: " + sender + "\r\n"));
    EXPECT_THAT(boxTexts(), IsEmpty());
    const frmFrom& window = messageWindow();
    EXPECT_TRUE(window.isVisible());
    EXPECT_EQ(window.windowTitle().toStdString(), "Message from: " + sender.substr(0, 300) + " [...]");
    EXPECT_LT(window.width(), 2'000) << "the window is no wider for it";
    EXPECT_EQ(email::mailbox.Messages.at(1).From, sender);
    EXPECT_EQ(window.txtFrom->text().toStdString(), sender.substr(0, 10'000) + " [...]");
    messageWindow().cmdReply->click();
    EXPECT_EQ(composeWindow().tTo->text().toStdString(), sender);
    composeWindow().cmdCancel->click();
    messageWindow().cmdFwrd->click();
    EXPECT_NE(composeWindow().tMessage->bytes().find("\r\nFrom: " + sender + "\r\nSubject: Parts\r\n"),
              std::string::npos);
}

TEST_F(HostileMessages, ASenderOfAMegabyteIsNotAnsweredAndABoxSaysWhy) {
    const std::string sender(1'000'000, 's');
    openOnly(multipart({plainPart("text")}, "From: " + sender + "\r\n"));
    messageWindow().cmdReply->click();
    EXPECT_THAT(boxTexts(), ElementsAre(QStringLiteral("The sender's address has 1000000 bytes, which is too "
                                                       "long. Please type the address.")));
    EXPECT_EQ(boxes[0].title, email::settings.Institution + QStringLiteral(" E-Mail"));
    EXPECT_TRUE(composeWindow().isVisible());
    EXPECT_EQ(composeWindow().tTo->text(), QString());
    EXPECT_EQ(composeWindow().tSubject->text(), QStringLiteral("RE: Parts"));
}

TEST_F(HostileMessages, ASubjectOfAMegabyteGoesOutAsItIsSeen) {
    const std::string subject(1'000'000, 's');
    openOnly("From: a@example.org\r\nSubject: " + subject + "\r\n\r\ntext\r\n");
    const std::string seen = subject.substr(0, 10'000) + " [...]";
    EXPECT_EQ(messageWindow().txtSubject->text().toStdString(), seen);
    messageWindow().cmdReply->click();
    EXPECT_EQ(composeWindow().tSubject->text().toStdString(), "RE: " + seen);
    composeWindow().cmdCancel->click();
    messageWindow().cmdFwrd->click();
    EXPECT_EQ(composeWindow().tSubject->text().toStdString(), "Fwd: " + seen);
    EXPECT_NE(composeWindow().tMessage->bytes().find("\r\nSubject: " + subject + "\r\n"), std::string::npos);
}

TEST_F(HostileMessages, AnUnknownLetterSetIsNoError) {
    const std::string part = "Content-Type: text/plain; charset=\"x-nowhere\xff\"\r\n\r\nGr\xfc\xdf"
                             "e";
    openOnly(multipart({part}));
    EXPECT_THAT(boxTexts(), IsEmpty());
    EXPECT_EQ(shownText(), QStringLiteral("\nGrüße\n--"));
}

TEST_F(HostileMessages, LettersOfAnySetAreForwardedByteForByte) {
    const std::string part = "Content-Type: text/plain; charset=ISO-2022-JP\r\n\r\n\x1b$B%F%9%H\x1b(B "
                             "\xed\xa0\x80 \xff\xfe gr\xfc\xc3\xbc" +
                             std::string(1, '\0') + "\x85\xe2\x80\xa8";
    const std::string message = multipart({part, attachmentPart("a.bin", "QUJD")});
    openOnly(message);
    EXPECT_THAT(boxTexts(), IsEmpty());
    EXPECT_EQ(messageWindow().tMessage->bytes().find("\r\n\x1b$B%F%9%H\x1b(B "), 0U);
    messageWindow().cmdFwrd->click();
    const std::string body = message.substr(message.find("\r\n\r\n") + 4);
    EXPECT_NE(composeWindow().tMessage->bytes().find("\r\nSubject: Parts\r\n\r\n" + body + "\r\nFrom: Ann"),
              std::string::npos);
}

TEST_P(HostileEncoding, IsSavedWholeOrNotAtAll) {
    openOnly(multipart({attachmentPart("a.bin", GetParam().encoded)}));
    ASSERT_THAT(boxTexts(), IsEmpty());
    save();
    if (GetParam().error == 0) {
        expectSaved("a.bin", GetParam().content);
    } else {
        EXPECT_THAT(boxTexts(), ElementsAre(QStringLiteral("Please make sure disk is ready. Error#") +
                                            QString::number(GetParam().error)));
        EXPECT_FALSE(std::filesystem::exists(folder.path("a.bin")));
    }
}

INSTANTIATE_TEST_SUITE_P(Encodings, HostileEncoding, testing::ValuesIn(kEncodings),
                         [](const auto& test) { return std::string(test.param.label); });

TEST_F(HostileMessages, WhateverTheTransferEncodingSaysTheFileIsDecodedAsBase64) {
    for (const std::string encoding : {"quoted-printable", "7bit", "x-uuencode", "BASE64"}) {
        email::opening.CurrentAttachment.clear();
        openOnly(multipart({"Content-Type: text/x; y\r\n\r\n",
                            "Content-Type: application/pdf; name=\"a.pdf\"\r\nContent-Transfer-Encoding: " +
                                encoding + "\r\n\r\nQUJDREVG"}));
        save();
        expectSaved("a.pdf", "ABCDEF");
        std::filesystem::remove(folder.path("a.pdf"));
        forgetEverything();
        mailbox.remove(1);
    }
}

TEST_F(HostileMessages, ASavedProgramIsNeitherExecutableNorRun) {
    const std::string program = "#!/bin/sh\ntouch ran\n";
    openOnly(multipart(
        {"Content-Type: application/x-sh; name=\"run.sh\"\r\n\r\n" + support::base64Text(program)}));
    const mode_t before = ::umask(0);
    save();
    ::umask(before);
    expectSaved("run.sh", program);

    struct stat status {};

    ASSERT_EQ(::stat(folder.path("run.sh").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & ALLPERMS, 0600U);
    EXPECT_FALSE(std::filesystem::exists(folder.path("ran")));
}

TEST_F(HostileMessages, ALargeAttachmentIsSavedByteForByteWhileTheWindowsLive) {
    const std::string content = support::randomBytes(kLargeBytes, 7);
    // The boundary holds "_", which base64 never uses, so that the content cannot hold the boundary.
    logInWith({"Content-Type: multipart/mixed; boundary=\"=_cut\"\r\n\r\n--=_cut\r\n" +
               attachmentPart("large.bin", support::base64Text(content)) + "--=_cut--\r\n"});
    support::Heartbeat heartbeat;
    doubleClick(1);
    EXPECT_THAT(boxTexts(), IsEmpty());
    EXPECT_EQ(messageWindow().txtAttachments->text(), QStringLiteral("large.bin"));
    EXPECT_TRUE(messageWindow().cmdSave->isEnabled());
    save();
    EXPECT_LT(heartbeat.longestPause(), kStuck);
    EXPECT_GT(heartbeat.beats(), 2);
    expectSaved("large.bin", content);
}

TEST_F(HostileMessages, ALargeTextAppearsWhileTheWindowsLive) {
    std::string text;
    while (text.size() < kLargeBytes) {
        text += "A line of a text that somebody has pasted into a letter, " + std::to_string(text.size()) +
                "\r\n";
    }
    logInWith({multipart({plainPart(text)})});
    support::Heartbeat heartbeat;
    doubleClick(1);
    const QString shown = shownText();
    EXPECT_LT(heartbeat.longestPause(), kStuck);
    EXPECT_GT(heartbeat.beats(), 2);
    EXPECT_TRUE(messageWindow().tMessage->bytes() == "\r\n" + text + "\r\n--");
    EXPECT_TRUE(shown.endsWith(QStringLiteral("\n\n--")));
}

TEST_F(HostileMessages, ALargeTextOnOneLineAppearsWhileTheWindowsLive) {
    const std::string text(kLargeBytes, 'x');
    logInWith({multipart({plainPart("short")})});
    mailbox.answer("RETR", "+OK\r\n" + support::stuffed(multipart({plainPart(text)})));
    support::Heartbeat heartbeat;
    doubleClick(1);
    shownText();
    EXPECT_LT(heartbeat.longestPause(), kStuck);
    EXPECT_GT(heartbeat.beats(), 2);
    EXPECT_TRUE(messageWindow().tMessage->bytes() == "\r\n" + text + "\r\n--");
}
