#pragma once

#include "email/mailbox.h"
#include "tests/support/pop3_script.h"
#include "tests/support/window_test.h"
#include "windows/frmLogin.h"
#include "windows/frmMain.h"

#include <QLabel>
#include <QPushButton>

#include <cstddef>
#include <cstdint>
#include <new>
#include <string>
#include <vector>

namespace support {

/** The program with the list of a mailbox, before a check for new mail. */
class NewMailCheck : public WindowTest {
  protected:
    static std::string message(const std::string& name) {
        return "From: " + name + "@example.org\r\nSubject: About " + name + "\r\n\r\nText of " + name +
               "\r\n";
    }

    void logInWith(int messages) {
        for (int i = 1; i <= messages; ++i) {
            mailbox.deliver(message(std::to_string(i)));
        }
        logIn(server.address());
        ASSERT_THAT(boxTexts(), testing::IsEmpty());
        ASSERT_TRUE(server.waitForEndOf(1));
        sounds.clear();
    }

    static QString cell(int row, int column) {
        return mainWindow().MailGrid->TextMatrix(row, column).trimmed();
    }

    static std::vector<int> newRows() {
        std::vector<int> rows;
        for (int row = 1; row < mainWindow().MailGrid->Rows(); ++row) {
            if (mainWindow().MailGrid->isRowNew(row)) {
                rows.push_back(row);
            }
        }
        return rows;
    }

    void expectBox(const QString& text, const QString& title) {
        ASSERT_THAT(boxTexts(), testing::ElementsAre(text));
        EXPECT_EQ(boxes[0].title, title);
    }

    /** Simulates running out of memory when the client sends or gets this line. */
    static void runOutOfMemoryAt(const std::string& line) {
        loginWindow().POP1.PITrail = [line](poplib::Direction, const std::string& text) {
            if (text == line) {
                throw std::bad_alloc();
            }
        };
    }

    /** Simulates the same when the server tells the size of this message. */
    void runOutOfMemoryAtSizeOf(const std::string& number) {
        const std::string reply = "+OK " + number + " 52 bytes";
        mailbox.answer("LIST " + number, reply + "\r\n");
        runOutOfMemoryAt(reply);
    }

    /** Checks that rows, counters, summary line and row numbers all agree. */
    static void expectList(int messages, std::int32_t bytes) {
        EXPECT_EQ(mainWindow().MailGrid->Rows(), messages + 1);
        EXPECT_EQ(email::mailbox.MessageCount, messages);
        EXPECT_EQ(email::mailbox.MailboxBytes, bytes);
        EXPECT_EQ(mainWindow().lStats->text(),
                  QStringLiteral("%1 messages %2 bytes total").arg(messages).arg(bytes));
        for (int row = 1; row <= messages; ++row) {
            EXPECT_EQ(cell(row, 0), QString::number(row));
            EXPECT_EQ(email::mailbox.MessageNumbers.at(static_cast<std::size_t>(row) - 1), row);
        }
    }

    static void expectUsableWindow() {
        const auto& main = mainWindow();
        EXPECT_TRUE(main.cmdCmpose->isEnabled());
        EXPECT_TRUE(main.MailGrid->redraws());
        EXPECT_NE(main.cursor().shape(), Qt::WaitCursor);
    }

    Pop3Mailbox mailbox;
    ScriptedServer server{mailbox};
};

} // namespace support
