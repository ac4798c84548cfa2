// The list in the standard way of reading.

#include "email/mailbox.h"
#include "tests/standard/local_zone.h"
#include "tests/support/heap.h"
#include "tests/support/mail_mode_is.h"
#include "tests/support/pop3_script.h"
#include "tests/support/window_test.h"
#include "windows/frmLogin.h"
#include "windows/frmMain.h"

#include <QElapsedTimer>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>

using support::Pop3Mailbox;
using support::ScriptedServer;
using support::WindowTest;
using testing::Contains;
using testing::IsEmpty;

namespace {
class StandardListing : public WindowTest {
  protected:
    void logInWith(const std::vector<std::string>& messages) {
        for (const std::string& message : messages) {
            mailbox.deliver(message);
        }
        logIn(server.address());
        ASSERT_THAT(boxTexts(), IsEmpty());
        EXPECT_EQ(programEnds, 0);
    }

    static QString cell(int row, int column) {
        return mainWindow().MailGrid->TextMatrix(row, column).trimmed();
    }

    static std::string numbered(int number) {
        return "From: a@example.org\r\nSubject: Letter " + std::to_string(number) +
               "\r\nDate: Sat, 21 Nov 2026 17:42:00 +0100\r\n\r\ntext\r\n";
    }

    support::LocalZone berlin_{"Europe/Berlin"};
    support::MailModeIs mode_{MailMode::Standard};
    Pop3Mailbox mailbox;
    ScriptedServer server{mailbox};
};
} // namespace

TEST_F(StandardListing, ShowsDecodedFields) {
    logInWith({"From: =?utf-8?Q?M=C3=BCller=2C_Hans?= <h@example.org>\r\nSubject: =?utf-8?B?w6TDtg==?=\r\n"
               " =?utf-8?Q?x?=\r\nDate: Sat, 21 Nov 2026 12:00:00 -0500 (EST)\r\n\r\ntext\r\n"});
    EXPECT_EQ(cell(1, 0), QStringLiteral("1"));
    EXPECT_EQ(cell(1, 1), QStringLiteral("2026-11-21 18:00"));
    EXPECT_EQ(cell(1, 2), QStringLiteral("Müller, Hans <h@example.org>"));
    EXPECT_EQ(cell(1, 3), QStringLiteral("äöx"));
    EXPECT_EQ(cell(1, 4), QStringLiteral("(%1 bytes)").arg(mailbox.messages()[0].size()));
}

TEST_F(StandardListing, ShowsRawBytesAsTextAndControlCharactersAsSigns) {
    logInWith({"From: Ann\xE2\x80\xAE <a@example.org>\r\nSubject: Gr\xFC\xDF"
               "e =?utf-8?Q?=07?=\r\n\r\ntext\r\n"});
    EXPECT_EQ(cell(1, 2), QStringLiteral("Ann<202E> <a@example.org>"));
    EXPECT_EQ(cell(1, 3), QStringLiteral("Grüße ␇"));
}

TEST_F(StandardListing, CutsToCharactersOfTheDecodedText) {
    std::string words;
    for (int number = 0; number < 60; ++number) {
        words += "=?utf-8?Q?=C3=A4?= ";
    }
    logInWith({"Subject: " + words + "\r\n\r\ntext\r\n"});
    EXPECT_EQ(mainWindow().MailGrid->TextMatrix(1, 3), QString(48, u'ä'));
}

TEST_F(StandardListing, LeavesTheColumnOfAMissingFieldEmpty) {
    logInWith({"X: y\r\n\r\ntext\r\n"});
    for (const int column : {1, 2, 3}) {
        EXPECT_EQ(cell(1, column), QString());
    }
}

TEST_F(StandardListing, TakesTheFirstOfRepeatedFields) {
    logInWith({"Subject: one\r\nSUBJECT: two\r\n three\r\nFrom : a@example.org\r\nodd line\r\nfrom: "
               "b@example.org\r\n"
               "\r\ntext\r\n"});
    EXPECT_EQ(cell(1, 2), QStringLiteral("a@example.org"));
    EXPECT_EQ(cell(1, 3), QStringLiteral("one"));
}

TEST_F(StandardListing, ADateThatIsNoneStandsAsItIs) {
    logInWith({"Date: 31 Feb 2026 17:42:00 +0100\r\n\r\ntext\r\n"});
    EXPECT_EQ(cell(1, 1), QStringLiteral("31 Feb 2026 17:42:00 +0100"));
}

TEST_F(StandardListing, NoBoundaryEndsTheLogOn) {
    logInWith({"Subject: one\r\nContent-Type: multipart/mixed; boundary=cut\r\n\r\n--cut\r\n",
               "Subject: two\r\nContent-Type: multipart/mixed; boundary=\"cut\r\n\r\n--cut\r\n"});
    EXPECT_EQ(cell(1, 3), QStringLiteral("one"));
    EXPECT_EQ(cell(2, 3), QStringLiteral("two"));
}

TEST_F(StandardListing, FindsTheFieldsBehindAnyOtherLines) {
    std::vector<std::string> messages;
    for (int number = 0; number < 60; ++number) {
        std::string message;
        for (int line = 0; line < 80; ++line) {
            message += "X-Line: " + std::string(900, 'x') + "\r\n";
        }
        messages.push_back(message + "Subject: behind\r\n\r\ntext\r\n");
    }
    logInWith(messages);
    EXPECT_EQ(cell(60, 3), QStringLiteral("behind"));
}

TEST_F(StandardListing, HasAsManyMessagesAsThereAre) {
    std::vector<std::string> messages;
    for (int number = 1; number <= 201; ++number) {
        messages.push_back(numbered(number));
    }
    logInWith(messages);
    EXPECT_EQ(cell(201, 3), QStringLiteral("Letter 201"));
    EXPECT_EQ(email::mailbox.MessageNumbers.at(200), 201);

    mailbox.deliver(numbered(202));
    mainWindow().cmdGetMail->click();
    EXPECT_EQ(cell(202, 3), QStringLiteral("Letter 202"));
    EXPECT_TRUE(mainWindow().MailGrid->isRowNew(202));

    mainWindow().MailGrid->setCurrentCell(200, 0);
    mainWindow().cmdDelete->click();
    EXPECT_EQ(mainWindow().MailGrid->Rows(), 202);
    EXPECT_EQ(cell(201, 3), QStringLiteral("Letter 202"));
    EXPECT_EQ(mailbox.messages().size(), 201U);
    EXPECT_THAT(mailbox.messages(), testing::Not(Contains(numbered(201))));
}

TEST_F(StandardListing, KeepsNoBodyLines) {
    logInWith({numbered(1)});
    EXPECT_EQ(email::mailbox.Messages.at(1).BodyText, "");
    EXPECT_EQ(email::mailbox.Messages.at(1).HeaderText, "");
}

TEST_F(StandardListing, OfFiveThousandMessagesTakesLessThanTenKilobytesEach) {
    constexpr int count = 5'000;
    for (int number = 1; number <= count; ++number) {
        mailbox.deliver("From: " + std::string(1'000, 'f') + "\r\nSubject: " + std::string(1'000, 's') +
                        "\r\nDate: " + std::string(1'000, 'd') + "\r\nX: " + std::string(10'000, 'x') +
                        "\r\n\r\n" + std::string(5'000, 'b') + "\r\n");
    }
    writeSettings(support::schoolSettings(server.address()));
    startUp();
    const std::size_t before = support::allocatedBytes();
    logIn(server.address());
    EXPECT_EQ(mainWindow().MailGrid->Rows(), count + 1);
    EXPECT_LT(support::allocatedBytes() - before, count * 10'000U);

    QElapsedTimer time;
    time.start();
    QScrollBar* const bar = mainWindow().MailGrid->verticalScrollBar();
    for (const int place : {0, bar->maximum() / 2, bar->maximum(), 0}) {
        bar->setValue(place);
        mainWindow().MailGrid->repaint();
    }
    // A hundredth of a second on an idle computer.
    EXPECT_LT(time.elapsed(), 2'000);
}
