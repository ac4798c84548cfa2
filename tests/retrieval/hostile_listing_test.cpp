// No message can keep the list from being shown, or fill the computer's memory.

#include "email/mailbox.h"
#include "tests/support/heap.h"
#include "tests/support/pop3_script.h"
#include "tests/support/window_test.h"
#include "windows/frmLogin.h"
#include "windows/frmMain.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include <algorithm>
#include <atomic>
#include <new>

using support::Peer;
using support::Pop3Mailbox;
using support::ScriptedServer;
using support::WindowTest;
using testing::Contains;
using testing::IsEmpty;
using testing::Not;

namespace {
constexpr std::size_t kMegabyte = 1U << 20U;

class HostileListing : public WindowTest {
  protected:
    static std::string message(const std::string& name, const std::string& body = "text\r\n") {
        return "From: " + name + "@example.org\r\nSubject: About " + name + "\r\nDate: today\r\n\r\n" + body;
    }

    /** Starts the program with this server and fills the login window in; the test presses Get Mail. */
    void startWith(const ScriptedServer& server) {
        writeSettings(support::schoolSettings(server.address()));
        startUp();
        loginWindow().tUser->setText(QStringLiteral("ann"));
        loginWindow().tpwd->setText(QStringLiteral("secret"));
    }

    static QString cell(int row, int column) {
        return mainWindow().MailGrid->TextMatrix(row, column).trimmed();
    }

    /** Checks the rows before and after the hostile message's row. */
    void expectListedAround(int rows) {
        EXPECT_THAT(boxTexts(), IsEmpty());
        EXPECT_EQ(programEnds, 0);
        ASSERT_EQ(mainWindow().MailGrid->Rows(), rows + 1);
        EXPECT_EQ(cell(1, 3), QStringLiteral("About first"));
        EXPECT_EQ(cell(rows, 3), QStringLiteral("About last"));
    }
};

struct LongLine {
    const char* name;
    std::string message;
    bool serverKnowsTop;
    const char* subject;
};

std::vector<LongLine> longLines() {
    const std::string line = std::string(2 * kMegabyte, 'x') + "\r\n";
    const std::string head = "Subject: long\r\nFrom: a@example.org\r\n";
    std::string lines;
    for (int number = 1; number <= 30; ++number) {
        lines += "line\r\n";
    }
    return {{"InTheHeader", head + "X-Line: " + line + "\r\ntext\r\n", true, "long"},
            {"InTheSubject", "Subject: " + line + "\r\ntext\r\n", true,
             "xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx"},
            {"InTheFirstLines", head + "\r\n" + line + "text\r\n", true, "long"},
            {"InTheFirstLinesWithoutTop", head + "\r\n" + line + "text\r\n", false, "long"},
            {"BehindTheFirstLinesWithoutTop", head + "\r\n" + lines + line, false, "long"},
            {"WithAQuoteBehindTheCut",
             head + "Content-Type: multipart/mixed; boundary=\"" + std::string(2 * kMegabyte, 'x') +
                 "\"\r\n\r\ntext\r\n",
             true, "long"}};
}

class ListingOfALongLine : public HostileListing, public testing::WithParamInterface<LongLine> {};
} // namespace

TEST_P(ListingOfALongLine, ShowsItsRowAndAllOthers) {
    Pop3Mailbox mailbox({message("first"), GetParam().message, message("last")});
    if (!GetParam().serverKnowsTop) {
        mailbox.answer("TOP", "-ERR what is that\r\n");
    }
    ScriptedServer server{mailbox};
    logIn(server.address());
    expectListedAround(3);
    EXPECT_EQ(cell(2, 3), QLatin1String(GetParam().subject));
    EXPECT_LE(email::mailbox.Messages.at(2).HeaderText.size(), kMegabyte + 1000);

    // The deletion compares the header with the listed one, so both must be cut in the same place.
    mainWindow().MailGrid->setCurrentCell(1, 0);
    mainWindow().cmdDelete->click();
    EXPECT_EQ(boxes.size(), 1U);
    EXPECT_EQ(mailbox.messages(), (std::vector<std::string>{message("first"), message("last")}));
}

INSTANTIATE_TEST_SUITE_P(Lines, ListingOfALongLine, testing::ValuesIn(longLines()),
                         [](const auto& test) { return test.param.name; });

TEST_F(HostileListing, AnUnquotedBoundaryIsStillError5) {
    ScriptedServer server{Pop3Mailbox(
        {"Content-Type: multipart/mixed; boundary=" + std::string(2 * kMegabyte, 'x') + "\r\n\r\n",
         "Content-Type: multipart/mixed; boundary=abc\r\n\r\n"})};
    logIn(server.address());
    EXPECT_THAT(boxTexts(), testing::ElementsAre(QStringLiteral("Error 5 Please start program again ")));
}

TEST_F(HostileListing, AVeryLargeMessageOnAServerWithoutTopKeepsItsPlaceholders) {
    Pop3Mailbox mailbox({message("first"), message("large"), message("last")});
    mailbox.answer("TOP", "-ERR what is that\r\n").answer("LIST 2", "+OK 2 67108865\r\n");
    ScriptedServer server{mailbox};
    logIn(server.address());
    expectListedAround(3);
    EXPECT_EQ(cell(2, 3), QStringLiteral("'"));
    EXPECT_EQ(cell(2, 4), QStringLiteral("(67108865 bytes)"));
    EXPECT_THAT(server.commands(), Not(Contains("RETR 2")));
}

TEST_F(HostileListing, AMessageOverItsClaimedSizeIsPassedOver) {
    constexpr int megabytes = 70;
    Pop3Mailbox mailbox({message("first"), message("large"), message("last")});
    mailbox.answer("TOP", "-ERR what is that\r\n").on("RETR 2", [](Peer& peer) {
        peer.send("+OK\r\nSubject: large\r\n\r\n");
        const std::string line = std::string(kMegabyte, 'x') + "\r\n";
        for (int number = 0; number < megabytes; ++number) {
            peer.send(line);
        }
        peer.send(".\r\n");
    });
    ScriptedServer server{mailbox};
    logIn(server.address());
    expectListedAround(3);
    EXPECT_EQ(cell(2, 3), QStringLiteral("large"));
}

TEST_F(HostileListing, OneRowForWhichMemoryFailsKeepsItsPlaceholders) {
    for (const bool inTheHeader : {true, false}) {
        forgetEverything();
        Pop3Mailbox mailbox({message("first"), message("second", "a\r\nb\r\n"), message("last")});
        ScriptedServer server{mailbox};
        startWith(server);
        POPLib::POP& pop = loginWindow().POP1;
        const auto header = pop.Header;
        const auto transfer = pop.Transfer;
        pop.Header = [&](const std::string& field, const std::string& value) {
            if (inTheHeader && email::mailbox.CurrentMessage == 2 && field == "Date") {
                throw std::bad_alloc();
            }
            header(field, value);
        };
        pop.Transfer = [&](std::int32_t bytes, const std::string& text) {
            if (email::mailbox.CurrentMessage == 2) {
                throw std::bad_alloc();
            }
            transfer(bytes, text);
        };
        loginWindow().cmdLogin->click();
        expectListedAround(3);
        EXPECT_EQ(cell(2, 1), QStringLiteral("'"));
        EXPECT_EQ(cell(2, 2), QString());
        EXPECT_EQ(cell(2, 3), QStringLiteral("'"));
        EXPECT_EQ(cell(2, 4), QStringLiteral("(%1 bytes)").arg(mailbox.messages()[1].size()));
        EXPECT_EQ(email::mailbox.Messages.at(2).HeaderText, "");

        // The client cannot tell which message this is, so it deletes none.
        mainWindow().MailGrid->setCurrentCell(1, 0);
        mainWindow().cmdDelete->click();
        EXPECT_THAT(boxTexts(),
                    Contains(QStringLiteral("Message can not be deleted at this time.  Error# 20312")));
        EXPECT_EQ(mailbox.messages().size(), 3U);
    }
}

namespace {
/** Sends data that could fill the memory, a piece at a time, and calls `look` after each piece. */
using Flood = std::function<void(Peer& peer, const std::function<void()>& look)>;

void floodWithBodies(Peer& peer, const std::function<void()>& look) {
    static const std::string line = std::string(kMegabyte, 'x') + "\r\n";
    peer.send("+OK\r\nSubject: flood\r\n\r\n");
    for (int number = 0; number < 25; ++number) {
        peer.send(line);
        look();
    }
    peer.send(".\r\n");
}

void floodWithHeaders(Peer& peer, const std::function<void()>& look) {
    static const std::string text = std::string(kMegabyte - 100, 'x') + "\r\n";
    peer.send("+OK\r\nSubject: flood\r\nContent-Type: multipart/mixed; boundary=\"b\";\r\n");
    for (int number = 0; number < 6; ++number) {
        for (const char* start : {"Date: ", "From: ", " ", "X: "}) {
            peer.send(start + text);
            look();
        }
    }
    peer.send("\r\n.\r\n");
}

void floodWithIds(Peer& peer, const std::function<void()>& look) {
    peer.send("+OK\r\n1 a\r\n");
    int number = 10;
    for (int piece = 0; piece < 500; ++piece) {
        std::string lines;
        for (int line = 0; line < 1000; ++line) {
            lines += std::to_string(number++) + " 0123456789012345678901234567890123456789\r\n";
        }
        peer.send(lines);
        look();
    }
    peer.send(".\r\n");
}

struct FloodCase {
    const char* name;
    const char* command;
    Flood flood;
};

class ListingOfAFlood : public HostileListing, public testing::WithParamInterface<FloodCase> {};
} // namespace

TEST_P(ListingOfAFlood, StaysSixtyFourMegabytesAboveTheStart) {
    Pop3Mailbox mailbox(std::vector<std::string>(6, message("last")));
    mailbox.deliver(message("last"));
    std::atomic<std::size_t> peak = 0;
    const auto look = [&peak] { peak = std::max(peak.load(), support::allocatedBytes()); };
    mailbox.on(GetParam().command, [&look](Peer& peer) { GetParam().flood(peer, look); });
    mailbox.answer("TOP 1", "+OK\r\n" + support::stuffed(message("first")));
    mailbox.answer("TOP 7", "+OK\r\n" + support::stuffed(message("last")));
    ScriptedServer server{mailbox};
    startWith(server);
    // Long time-outs, so that none ends the flood on a slow machine.
    loginWindow().POP1.setTimeouts({std::chrono::seconds(60), std::chrono::seconds(60)});
    const std::size_t start = support::allocatedBytes();
    peak = start;
    loginWindow().cmdLogin->click();
    look();
    expectListedAround(7);
    RecordProperty("MegabytesAboveTheStart", static_cast<int>((peak - start) / kMegabyte));
    EXPECT_LT(peak - start, 64 * kMegabyte);
}

INSTANTIATE_TEST_SUITE_P(Floods, ListingOfAFlood,
                         testing::Values(FloodCase{"Bodies", "TOP", floodWithBodies},
                                         FloodCase{"Headers", "TOP", floodWithHeaders},
                                         FloodCase{"UniqueIds", "UIDL", floodWithIds}),
                         [](const auto& test) { return test.param.name; });
