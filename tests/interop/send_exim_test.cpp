// Mail written in the compose window, sent through a real Exim, and fetched again from a real Dovecot.

#include "components/poplib/pop.h"
#include "email/mailbox.h"
#include "platform/runtime_error.h"
#include "tests/interop/real_servers_fixture.h"
#include "tests/support/random_bytes.h"
#include "windows/frmMain.h"
#include "windows/frmSend.h"

#include <QByteArray>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QProcess>
#include <QPushButton>

#include <filesystem>
#include <map>

using support::EximServer;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;
using testing::UnorderedElementsAre;

namespace {
namespace errors = platform::errors;

const QString kSent = QStringLiteral("Your message has been sent.");

/** A message as the POP3 component hands it over. */
struct Fetched {
    /** Unfolded. */
    std::multimap<std::string, std::string> headers;
    /** Each line with CR LF. */
    std::string body;

    std::string header(const std::string& name) const {
        const auto found = headers.find(name);
        return found == headers.end() ? std::string() : found->second;
    }
};

/** Base64 in lines, as attachments have it, made without the program's own encoder. */
std::string base64Lines(const std::string& bytes) {
    const QByteArray text = QByteArray::fromStdString(bytes).toBase64();
    std::string lines;
    for (qsizetype i = 0; i < text.size(); i += 76) {
        lines += text.mid(i, 76).toStdString() + "\r\n";
    }
    return lines;
}

/** What Python's email package reads in a message: the subject, then a line for each address. */
std::string readByPython(const std::string& message) {
    QProcess python;
    python.start(QStringLiteral("python3"),
                 {QStringLiteral("-c"),
                  QStringLiteral("import email, email.policy, sys\n"
                                 "message = email.message_from_binary_file(sys.stdin.buffer,"
                                 " policy=email.policy.default)\n"
                                 "lines = [message['Subject']]\n"
                                 "lines += [f'{field}: {a.display_name} | {a.addr_spec}'"
                                 " for field in ('From', 'To', 'Cc') for a in message[field].addresses]\n"
                                 "sys.stdout.buffer.write('\\n'.join(lines).encode())\n")});
    python.write(QByteArray::fromStdString(message));
    python.closeWriteChannel();
    EXPECT_TRUE(python.waitForFinished()) << python.errorString().toStdString();
    EXPECT_EQ(python.exitCode(), 0) << python.readAllStandardError().toStdString();
    return python.readAllStandardOutput().toStdString();
}

class SendThroughExim : public support::BetweenRealServers {
  protected:
    void SetUp() override {
        BetweenRealServers::SetUp();
        if (IsSkipped()) {
            return;
        }
        for (const char letter : {'C', 'D'}) {
            const std::string name(1, letter);
            std::filesystem::create_directory(folder.path(name));
            qputenv(("BRINDLEWAKE_DRIVE_" + name).c_str(),
                    QByteArray::fromStdString(folder.path(name).string()));
        }
        logInAsBob();
        mainWindow().cmdCmpose->click();
    }

    static void write(const QString& to, const QString& subject, const QString& text) {
        composeWindow().tTo->setText(to);
        composeWindow().tSubject->setText(subject);
        composeWindow().tMessage->setPlainText(text);
    }

    static void press() { composeWindow().cmdSndit->click(); }

    /** Fetches the only message that was delivered, in a session of its own. */
    Fetched fetchOne() const {
        EXPECT_EQ(exim->awaitMessages(1), 1U) << exim->log();
        Fetched message;
        std::string name;
        POPLib::POP pop;
        pop.setMailServer(dovecot->address());
        pop.setLoginUser("bob");
        pop.setLoginPassword("secret");
        pop.Header = [&](const std::string& field, const std::string& value) {
            if (field.empty()) {
                message.headers.find(name)->second += ' ' + value;
            } else {
                name = field;
                message.headers.emplace(field, value);
            }
        };
        pop.Transfer = [&](std::int32_t /*bytesTransferred*/, const std::string& line) {
            message.body.append(line).append("\r\n");
        };
        pop.issueRequest(poplib::Request::ConnectAndLogOn);
        EXPECT_EQ(pop.messageCount(), 1);
        pop.setCurrentMessage(1);
        pop.setBodyLineLimit(0);
        pop.issueRequest(poplib::Request::RetrieveCurrentMessage);
        pop.issueRequest(poplib::Request::LogOffAndDisconnect);
        return message;
    }

    const QString bob = QStringLiteral("bob@example.org");
};
} // namespace

TEST_F(SendThroughExim, AnAttachmentOf25MegabytesArrivesByteForByte) {
    const std::string bytes = support::randomBytes(25U << 20U, 5);
    folder.write("D/REPORT.BIN", bytes);
    write(bob, QStringLiteral("A large file"), QStringLiteral("Look at this.\n.\nAnd tell me."));
    composeWindow().txtAttachment->setText(QStringLiteral("D:\\REPORT.BIN"));
    press();
    ASSERT_THAT(boxTexts(), ElementsAre(kSent)) << exim->log();

    const Fetched message = fetchOne();
    EXPECT_EQ(message.header("Subject"), "A large file");
    EXPECT_EQ(message.header("MIME-Version"), "1.0");
    EXPECT_EQ(message.header("Content-Type"),
              "multipart/mixed; boundary=\"--*******Brindlewake************\"");
    const std::string before = "This is a multi-part message in MIME format.\r\n"
                               "----*******Brindlewake************\r\n"
                               "\r\n"
                               "Content-Type: text/plain;\r\n"
                               "\r\n"
                               "Look at this.\r\n.\r\nAnd tell me.\r\n"
                               "----*******Brindlewake************\r\n"
                               "Content-Type: application/octet-stream; name=\"REPORT.BIN\"\r\n"
                               "Content-Transfer-Encoding: base64\r\n"
                               "\r\n";
    const std::string after = "----*******Brindlewake************--\r\n";
    const std::string encoded = base64Lines(bytes);
    ASSERT_EQ(message.body.size(), before.size() + encoded.size() + after.size());
    EXPECT_EQ(message.body.substr(0, before.size()), before);
    EXPECT_EQ(message.body.substr(before.size() + encoded.size()), after);
    // Compared as a whole, not printed: a difference would fill the screen.
    EXPECT_TRUE(message.body.compare(before.size(), encoded.size(), encoded) == 0);
    const QByteArray arrived =
        QByteArray::fromBase64(QByteArray::fromStdString(message.body.substr(before.size(), encoded.size())));
    EXPECT_TRUE(arrived.toStdString() == bytes);

    forgetEverything();
    logInAsBob();
    ASSERT_EQ(mainWindow().MailGrid->Rows(), 2);
    EXPECT_EQ(mainWindow().MailGrid->TextMatrix(1, 3).trimmed(), QStringLiteral("A large file"));
    EXPECT_GT(email::mailbox.Messages.at(1).Size, static_cast<std::int32_t>(message.body.size()));
}

TEST_F(SendThroughExim, DotsLongLinesAndUmlautsArriveAsTyped) {
    const QString longest(998, u'x');
    const QString text = QStringLiteral(".\n..\n.dot\n\n \nGr\u00fc\u00dfe, 5 \u20ac\n") + longest +
                         QStringLiteral("\nFrom here on\n.");
    write(bob, QStringLiteral("Dots"), text);
    press();
    ASSERT_THAT(boxTexts(), ElementsAre(kSent)) << exim->log();
    const std::string expected = ".\r\n..\r\n.dot\r\n\r\n \r\nGr\xc3\xbc\xc3\x9f"
                                 "e, 5 \xe2\x82\xac\r\n" +
                                 longest.toStdString() + "\r\nFrom here on\r\n.\r\n";
    EXPECT_EQ(fetchOne().body, expected);
}

TEST_F(SendThroughExim, ALineThatIsTooLongForMailArrivesBrokenAtASpace) {
    const std::string first(900, 'a');
    const std::string second(900, 'b');
    write(bob, QStringLiteral("Long"), QString::fromStdString(first + ' ' + second));
    press();
    ASSERT_THAT(boxTexts(), ElementsAre(kSent)) << exim->log();
    EXPECT_EQ(fetchOne().body, first + " \r\n" + second + "\r\n");
}

TEST_F(SendThroughExim, AnUnknownRecipientStopsTheMessageForAllAndACorrectedOneLetsItGo) {
    write(QStringLiteral("carol@example.org, nobody@example.org"), QStringLiteral("Subject"),
          QStringLiteral("Text"));
    ASSERT_TRUE(composeWindow().cmdAttach->isEnabled());
    press();
    ASSERT_THAT(
        boxTexts(),
        ElementsAre(QStringLiteral("Unable to send message. Error# %1").arg(errors::RecipientRefused)));
    EXPECT_EQ(exim->messagesInQueue(), 0U);
    EXPECT_THAT(dovecot->messages(), IsEmpty());
    EXPECT_TRUE(composeWindow().isVisible());
    EXPECT_EQ(composeWindow().tTo->text(), QStringLiteral("carol@example.org, nobody@example.org"));
    EXPECT_EQ(composeWindow().tSubject->text(), QStringLiteral("Subject"));
    EXPECT_EQ(composeWindow().tMessage->toPlainText(), QStringLiteral("Text"));
    EXPECT_TRUE(composeWindow().cmdSndit->isEnabled());
    EXPECT_FALSE(composeWindow().cmdAttach->isEnabled());

    composeWindow().tTo->setText(QStringLiteral("carol@example.org"));
    press();
    ASSERT_EQ(boxes.size(), 2U);
    EXPECT_EQ(boxes[1].text, kSent);
    const Fetched message = fetchOne();
    EXPECT_EQ(message.header("Envelope-to"), "carol@example.org");
    EXPECT_EQ(message.body, "Text\r\n");
}

TEST_F(SendThroughExim, AMessageAboveTheServersLimitIsNotEvenOffered) {
    // The file is below the limit, but its base64 text is a third larger and above it.
    folder.write("D/HUGE.BIN", "");
    std::filesystem::resize_file(folder.path("D/HUGE.BIN"), EximServer::kSizeLimit * 4 / 5);
    write(bob, QStringLiteral("Huge"), QString());
    composeWindow().txtAttachment->setText(QStringLiteral("D:\\HUGE.BIN"));
    std::vector<std::string> commands;
    composeWindow().SMTP1.PITrail = [&](smtplib::Direction direction, const std::string& line) {
        if (direction == smtplib::Direction::ToServer) {
            commands.push_back(line);
        }
    };
    press();
    ASSERT_THAT(
        boxTexts(),
        ElementsAre(QStringLiteral("Unable to send message. Error# %1").arg(errors::MessageTooLarge)));
    EXPECT_THAT(commands, ElementsAre(StartsWith("EHLO ")));
    EXPECT_EQ(exim->messagesInQueue(), 0U);
    EXPECT_THAT(dovecot->messages(), IsEmpty());
}

TEST_F(SendThroughExim, EachRecipientGetsOneCopyAndTheNamesArriveAsTyped) {
    write(QStringLiteral("\"M\u00fcller, J\u00f6rg\" <joerg@example.org>, Ann O'Neil <ann@example.org>"),
          QStringLiteral("Gr\u00fc\u00dfe an alle, auch \u4e2d\u6587"), QStringLiteral("Text"));
    composeWindow().tCc->setText(
        QStringLiteral("\"Smith, J.\" <smith@example.org>, ann@example.org, Zo\u00eb <zoe@example.org>"));
    press();
    ASSERT_THAT(boxTexts(), ElementsAre(kSent)) << exim->log();
    ASSERT_EQ(exim->awaitMessages(4), 4U) << exim->log();
    std::vector<std::string> receivers;
    for (const std::string& message : dovecot->messages()) {
        receivers.push_back(message.substr(0, message.find('\n')));
        EXPECT_EQ(readByPython(message), "Gr\u00fc\u00dfe an alle, auch \u4e2d\u6587\n"
                                         "From:  | bob@example.org\n"
                                         "To: M\u00fcller, J\u00f6rg | joerg@example.org\n"
                                         "To: Ann O'Neil | ann@example.org\n"
                                         "Cc: Smith, J. | smith@example.org\n"
                                         "Cc:  | ann@example.org\n"
                                         "Cc: Zo\u00eb | zoe@example.org");
        const std::string header = message.substr(0, message.find("\n\n"));
        EXPECT_THAT(header, Each(testing::AllOf(testing::Ge('\0'), testing::Le('~'))))
            << "a header goes out as ASCII";
    }
    EXPECT_THAT(receivers,
                UnorderedElementsAre("Envelope-to: joerg@example.org", "Envelope-to: ann@example.org",
                                     "Envelope-to: smith@example.org", "Envelope-to: zoe@example.org"));
}
