#pragma once

// A member who has logged in and opens messages.

#include "email/opening.h"
#include "email/shared_settings.h"
#include "tests/support/pop3_script.h"
#include "tests/support/window_test.h"
#include "windows/frmFrom.h"
#include "windows/frmLogin.h"
#include "windows/frmMain.h"
#include "windows/frmSend.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include <string>
#include <string_view>
#include <vector>

namespace support {

/** A multipart message. Each part brings its own header lines and stands between boundary lines. */
inline std::string multipart(const std::vector<std::string>& parts, std::string_view header = {}) {
    std::string message = "From: Ann <ann@example.org>\r\nSubject: Parts\r\nDate: today\r\n" +
                          std::string(header) +
                          "Content-Type: multipart/mixed; boundary=\"cut\"\r\n\r\npreamble\r\n";
    for (const std::string& part : parts) {
        message += "--cut\r\n" + part + "\r\n";
    }
    return message + "--cut--\r\n";
}

inline std::string plainPart(const std::string& text) {
    return "Content-Type: text/plain; charset=utf-8\r\n\r\n" + text;
}

inline std::string attachmentPart(const std::string& name, const std::string& encoded) {
    return "Content-Type: application/octet-stream; name=\"" + name +
           "\"\r\nContent-Transfer-Encoding: base64\r\n\r\n" + encoded;
}

class ReaderTest : public WindowTest {
  protected:
    void logInWith(const std::vector<std::string>& messages) {
        for (const std::string& message : messages) {
            mailbox.deliver(message);
        }
        logIn(server.address());
        ASSERT_THAT(boxTexts(), testing::IsEmpty());
        ASSERT_TRUE(server.waitForEndOf(1));
        qputenv("BRINDLEWAKE_DRIVE_S", folder.path().string().c_str());
        email::settings.SaveDirectory = QStringLiteral("S:\\");
    }

    /** Logs in to a mailbox with this message and opens it. */
    void openOnly(const std::string& message) {
        logInWith({message});
        doubleClick(1);
    }

    static QString shownText() {
        EXPECT_TRUE(QTest::qWaitFor([] { return !messageWindow().tMessage->isFilling(); }, 60'000));
        return messageWindow().tMessage->toPlainText();
    }

    void expectHeaderErrorBox(int number) {
        ASSERT_THAT(boxTexts(),
                    testing::ElementsAre(QStringLiteral("There is an error in the message header. Error# ") +
                                         QString::number(number)));
        EXPECT_EQ(boxes[0].title, QStringLiteral("Brindlewake"));
        EXPECT_FALSE(messageWindow().isVisible());
        expectUsableMainWindow();
    }

    static void expectUsableMainWindow() {
        const frmMain& main = mainWindow();
        EXPECT_TRUE(main.isEnabled());
        for (const QWidget* control : std::initializer_list<const QWidget*>{
                 main.cmdRead, main.cmdDelete, main.cmdGetMail, main.cmdCmpose, main.MailGrid}) {
            EXPECT_TRUE(control->isEnabled()) << control->objectName().toStdString();
        }
        EXPECT_NE(main.cursor().shape(), Qt::WaitCursor);
        EXPECT_EQ(main.barProgress->value(), 0);
        EXPECT_FALSE(email::opening.Retrieving);
    }

    Pop3Mailbox mailbox;
    ScriptedServer server{mailbox};
};

} // namespace support
