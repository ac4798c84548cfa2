// Opening, saving and forwarding a message that lies on a real mail server.

#include "components/netcodelib/base64_encoder.h"
#include "email/mailbox.h"
#include "email/shared_settings.h"
#include "tests/support/dovecot_server.h"
#include "tests/support/random_bytes.h"
#include "tests/support/window_test.h"
#include "windows/frmFrom.h"
#include "windows/frmMain.h"
#include "windows/frmSend.h"

#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include <memory>

using support::DovecotServer;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {
const std::string kHeader = "From: Ann <ann@example.org>\r\nSubject: Parts\r\nDate: Mon, 2 Mar 2026 10:00:00 "
                            "+0000\r\n";

std::string encoded(const std::string& content) {
    netcodelib::Base64Encoder encoder;
    std::string text;
    encoder.append(content, text);
    encoder.finish(text);
    return text;
}

/** A letter with a file, as mail programs write it, with dots and POP3 replies among the text. */
std::string bodyWithFile(const std::string& content) {
    return "This is a message in several parts.\r\n--=_cut\r\n"
           "Content-Type: text/plain; charset=\"utf-8\"\r\nContent-Transfer-Encoding: 8bit\r\n\r\n"
           "Gr\xc3\xbc\xc3\x9f"
           "e\r\n.\r\n..two dots\r\n+OK\r\n-ERR\r\n\r\n--=_cut\r\n"
           "Content-Type: application/octet-stream;\r\n name=\"report.bin\"\r\n"
           "Content-Transfer-Encoding: base64\r\n"
           "Content-Disposition: attachment;\r\n filename=\"report.bin\"\r\n\r\n" +
           encoded(content) + "--=_cut--\r\n";
}

class OpenAtDovecot : public support::WindowTest {
  protected:
    void SetUp() override {
        if (const std::string reason = DovecotServer::whyUnavailable(); !reason.empty()) {
            GTEST_SKIP() << reason;
        }
        server = std::make_unique<DovecotServer>();
    }

    void logInWith(const std::vector<std::string>& messages) {
        for (const std::string& message : messages) {
            server->deliver(message);
        }
        logIn(server->address(), QStringLiteral("bob"));
        ASSERT_THAT(boxTexts(), IsEmpty());
        qputenv("BRINDLEWAKE_DRIVE_S", folder.path().string().c_str());
        email::settings.SaveDirectory = QStringLiteral("S:\\");
    }

    std::unique_ptr<DovecotServer> server;
};
} // namespace

TEST_F(OpenAtDovecot, AMessageOfPartsIsShownSavedAndForwardedByteForByte) {
    const std::string content = support::randomBytes(2'000'000, 5);
    const std::string body = bodyWithFile(content);
    const std::string type = "Content-Type: multipart/mixed;\r\n boundary=\"=_cut\"\r\n";
    const std::string stored = kHeader + type + "\r\n" + body;
    logInWith({"Subject: first\r\n\r\nfirst\r\n", stored});
    doubleClick(2);
    ASSERT_THAT(boxTexts(), IsEmpty());
    const frmFrom& window = messageWindow();
    EXPECT_TRUE(window.isVisible());
    EXPECT_EQ(window.windowTitle(), QStringLiteral("Message from: Ann <ann@example.org>"));
    EXPECT_EQ(window.txtSubject->text(), QStringLiteral("Parts"));
    EXPECT_EQ(window.txtAttachments->text(), QStringLiteral("report.bin"));
    EXPECT_EQ(window.tMessage->bytes(), "\r\nGr\xc3\xbc\xc3\x9f"
                                        "e\r\n.\r\n..two dots\r\n+OK\r\n-ERR\r\n\r\n--");
    EXPECT_EQ(email::mailbox.Messages.at(2).Size, static_cast<std::int32_t>(stored.size()));

    window.cmdSave->click();
    ASSERT_THAT(boxTexts(), ElementsAre(QStringLiteral("Attachment has been saved to: S:\\report.bin")));
    EXPECT_TRUE(folder.read("report.bin") == content);

    window.cmdFwrd->click();
    const std::string forwarded = composeWindow().tMessage->bytes();
    EXPECT_TRUE(forwarded.find("\r\nSubject: Parts\r\n\r\n" + body + "\r\nFrom: Ann <ann@example.org>\r\n") !=
                std::string::npos);
    EXPECT_THAT(forwarded, testing::EndsWith("Content-Type: multipart/mixed;\r\n:  boundary=\"=_cut\"\r\n"
                                             "---------Foward Message Ends---------------"));
    EXPECT_EQ(server->messages().at(1), stored) << "reading takes nothing away";
}

TEST_F(OpenAtDovecot, AMessageWithoutPartsIsShownAsItIsStored) {
    const std::string body = "One\r\n.\r\n..\r\n\r\n\x1b$B%F%9%H\x1b(B gr\xfc\xdf"
                             "e\r\nlast\r\n";
    logInWith({kHeader + "\r\n" + body});
    doubleClick(1);
    ASSERT_THAT(boxTexts(), IsEmpty());
    EXPECT_EQ(messageWindow().tMessage->bytes(), body);
    EXPECT_FALSE(messageWindow().cmdSave->isEnabled());
    messageWindow().cmdFwrd->click();
    EXPECT_THAT(composeWindow().tMessage->bytes(), testing::HasSubstr("\r\n\r\n" + body + "\r\nFrom: Ann"));
}

TEST_F(OpenAtDovecot, AMessageThatCannotBeOpenedLeavesTheNextOneReadable) {
    logInWith({kHeader + "Content-Type: multipart/mixed; boundary=\"B0\"\r\n\r\n--B0\r\n"
                         "Content-Type: image/png; name=a.png\r\n\r\nQQ==\r\n--B0--\r\n",
               kHeader + "\r\nfine\r\n"});
    doubleClick(1);
    EXPECT_THAT(boxTexts(), ElementsAre(QStringLiteral("There is an error in the message header. Error# 5")));
    EXPECT_FALSE(messageWindow().isVisible());
    doubleClick(2);
    EXPECT_EQ(boxes.size(), 1U);
    EXPECT_EQ(messageWindow().tMessage->bytes(), "fine\r\n");
}

TEST_F(OpenAtDovecot, AMessageThatAnotherProgramHasDeletedMeanwhileIsNotOpened) {
    logInWith({kHeader + "\r\none\r\n", kHeader + "\r\ntwo\r\n"});
    for (const auto& entry : std::filesystem::recursive_directory_iterator(server->maildir())) {
        if (entry.is_regular_file() &&
            entry.path().filename().string().find("dovecot") == std::string::npos) {
            std::filesystem::remove(entry.path());
        }
    }
    doubleClick(2);
    EXPECT_THAT(boxTexts(),
                ElementsAre(QStringLiteral("There is an error in the message header. Error# 20342")));
    EXPECT_FALSE(messageWindow().isVisible());
    EXPECT_TRUE(mainWindow().MailGrid->isEnabled());
}
