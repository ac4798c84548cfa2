// The windows at real servers that serve users of the system from mbox files. Each of them writes its replies
// in another manner, and one changes the messages' headers whenever somebody has looked at them.

#include "components/poplib/pop.h"
#include "email/mailbox.h"
#include "tests/support/inetd_pop3_server.h"
#include "tests/support/window_test.h"
#include "windows/frmFrom.h"
#include "windows/frmLogin.h"
#include "windows/frmMain.h"

#include <QPushButton>

#include <memory>
#include <string>

using support::InetdPop3Server;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {
using Program = InetdPop3Server::Program;

std::string message(const std::string& name) {
    return "From: Ann <ann@example.org>\r\nSubject: " + name +
           "\r\nDate: Mon, 2 Mar 2026 10:00:00 +0000\r\n\r\n.dot\r\ntext of " + name + "\r\n";
}

class AtInetdServer : public support::WindowTest, public testing::WithParamInterface<Program> {
  protected:
    void SetUp() override {
        if (const std::string reason = InetdPop3Server::whyUnavailable(GetParam()); !reason.empty()) {
            GTEST_SKIP() << reason;
        }
        server = std::make_unique<InetdPop3Server>(GetParam());
    }

    void logInWith(const std::vector<std::string>& names) {
        for (const std::string& name : names) {
            server->deliver(message(name));
        }
        logIn(server->address(), QStringLiteral("bob"));
        ASSERT_THAT(boxTexts(), IsEmpty());
    }

    static std::vector<QString> subjects() {
        std::vector<QString> texts;
        for (int row = 1; row < mainWindow().MailGrid->Rows(); ++row) {
            texts.push_back(mainWindow().MailGrid->TextMatrix(row, 3).trimmed());
        }
        return texts;
    }

    std::unique_ptr<InetdPop3Server> server;
};
} // namespace

TEST_P(AtInetdServer, MessagesAreListedOpenedAndDeleted) {
    logInWith({"one", "two", "three"});
    EXPECT_THAT(subjects(),
                ElementsAre(QStringLiteral("one"), QStringLiteral("two"), QStringLiteral("three")));

    doubleClick(2);
    ASSERT_THAT(boxTexts(), IsEmpty());
    EXPECT_EQ(messageWindow().tMessage->bytes(), ".dot\r\ntext of two\r\n");
    messageWindow().close();

    mainWindow().MailGrid->setCurrentCell(1, 0);
    mainWindow().cmdDelete->click();
    EXPECT_THAT(boxTexts(), ElementsAre(QStringLiteral("Are you sure you want to delete this message?")));
    EXPECT_THAT(subjects(), ElementsAre(QStringLiteral("one"), QStringLiteral("three")));
    EXPECT_THAT(server->mailbox(), HasSubstr("text of one"));
    EXPECT_THAT(server->mailbox(), Not(HasSubstr("text of two")));
    EXPECT_THAT(server->mailbox(), HasSubstr("text of three"));
}

TEST_P(AtInetdServer, NewMailIsSeenBehindTheOld) {
    logInWith({"one"});
    server->deliver(message("two"));
    mainWindow().cmdGetMail->click();
    EXPECT_THAT(boxTexts(), IsEmpty());
    EXPECT_THAT(subjects(), ElementsAre(QStringLiteral("one"), QStringLiteral("two")));
}

TEST_P(AtInetdServer, TwoHundredMessagesComeInAFewRoundTrips) {
    std::vector<std::string> names;
    for (int number = 1; number <= 200; ++number) {
        names.push_back("number " + std::to_string(number));
    }
    logInWith(names);
    EXPECT_EQ(subjects().size(), 200U);
    EXPECT_EQ(subjects().back(), QStringLiteral("number 200"));
    EXPECT_LE(loginWindow().POP1.roundTrips(), 8U);
}

INSTANTIATE_TEST_SUITE_P(Servers, AtInetdServer, testing::Values(Program::Popa3d, Program::MailutilsPop3d),
                         [](const auto& test) {
                             return test.param == Program::Popa3d ? "Popa3d" : "MailutilsPop3d";
                         });

class AtServerThatOffersApop : public AtInetdServer {};

// It greets with a timestamp though nobody has a secret for APOP. A refused proof is final, so that a wrong
// password counts once; the administrator is told to switch the timestamp off.
TEST_P(AtServerThatOffersApop, TheLogOnIsRefusedWithoutASecret) {
    server->deliver(message("one"));
    logIn(server->address(), QStringLiteral("bob"));
    EXPECT_THAT(boxTexts(),
                ElementsAre(QStringLiteral("Password Or User Name Wrong, Please Try Again 20172")));
}

INSTANTIATE_TEST_SUITE_P(SolidPop3d, AtServerThatOffersApop, testing::Values(Program::SolidPop3d));
