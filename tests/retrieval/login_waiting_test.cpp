// What the user sees and can do while the log-on waits, and where the keyboard focus is afterwards.

#include "email/mailbox.h"
#include "platform/runtime_error.h"
#include "tests/support/pop3_script.h"
#include "tests/support/window_test.h"
#include "windows/frmLogin.h"
#include "windows/frmMain.h"

#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QTest>

using support::Pop3Mailbox;
using support::ScriptedServer;
using support::WhenItHolds;
using support::WindowTest;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {
const std::vector<std::string> kTwoMessages = {"Subject: one\r\n\r\nfirst\r\n",
                                               "Subject: two\r\n\r\nsecond\r\n"};

class LoginWaiting : public WindowTest {
  protected:
    static bool showsThatItWaits() { return loginWindow().lblWaiting->isVisible(); }

    /** Has the server send no reply to this command, in any session. */
    void holdAt(const std::string& command) {
        mailbox.on(command, [](support::Peer& peer) { peer.holdSilent(); });
    }

    void pressWithTheKeyboard() {
        writeSettings(support::schoolSettings(server.address()));
        startUp();
        loginWindow().tUser->setText(QStringLiteral("ann"));
        loginWindow().tpwd->setText(QStringLiteral("secret"));
        loginWindow().cmdLogin->setFocus();
        loginWindow().cmdLogin->click();
    }

    static void expectPasswordMarked() {
        const auto& login = loginWindow();
        EXPECT_EQ(login.focusWidget(), login.tpwd);
        EXPECT_EQ(login.tpwd->selectionLength(), 6);
    }

    void expectReadyForAnotherTry() {
        auto& login = loginWindow();
        EXPECT_THAT(boxTexts(), IsEmpty());
        EXPECT_EQ(programEnds, 0);
        EXPECT_TRUE(login.isVisible());
        EXPECT_FALSE(mainWindow().isVisible());
        EXPECT_TRUE(login.cmdLogin->isEnabled());
        EXPECT_FALSE(showsThatItWaits());
        EXPECT_NE(login.cursor().shape(), Qt::WaitCursor);
        EXPECT_EQ(login.tUser->text(), QStringLiteral("ann"));
        EXPECT_EQ(login.tpwd->text(), QStringLiteral("secret"));
        expectPasswordMarked();
    }

    Pop3Mailbox mailbox{kTwoMessages};
    ScriptedServer server{mailbox};
};
} // namespace

TEST_F(LoginWaiting, ARefusedPasswordIsMarkedInItsField) {
    mailbox.answer("PASS", "-ERR no\r\n");
    pressWithTheKeyboard();
    ASSERT_EQ(boxes.size(), 1U);
    expectPasswordMarked();
}

TEST_F(LoginWaiting, TheKeyboardGoesToTheFieldThatIsEmpty) {
    writeSettings(support::schoolSettings(server.address()));
    startUp();
    auto& login = loginWindow();
    login.cmdLogin->setFocus();
    login.cmdLogin->click();
    EXPECT_EQ(login.focusWidget(), login.tUser);
    login.tUser->setText(QStringLiteral("ann"));
    login.cmdLogin->setFocus();
    login.cmdLogin->click();
    EXPECT_EQ(login.focusWidget(), login.tpwd);
    EXPECT_THAT(boxTexts(), ElementsAre(QStringLiteral("User name must be entered to get mail."),
                                        QStringLiteral("Password must be entered to get mail.")));
}

TEST_F(LoginWaiting, WhileItWaitsTheKeyboardIsNotOnSetup) {
    holdAt("STAT");
    const WhenItHolds look([&] { return server.commands().size() == 4; },
                           [] {
                               EXPECT_EQ(loginWindow().focusWidget(), loginWindow().tpwd);
                               loginWindow().close();
                           });
    pressWithTheKeyboard();
}

TEST_F(LoginWaiting, ASilentServerIsWaitedForWithAWordAndAMovingBarAndEscapeGivesUp) {
    holdAt("GREETING");
    const WhenItHolds look(showsThatItWaits, [] {
        auto& login = loginWindow();
        EXPECT_FALSE(login.lblWaiting->text().isEmpty());
        EXPECT_TRUE(login.barWaiting->isVisible());
        EXPECT_EQ(login.barWaiting->minimum(), login.barWaiting->maximum()) << "moves without an end";
        EXPECT_EQ(login.tUser->cursor().shape(), Qt::WaitCursor) << "over the fields too";
        QTest::keyClick(login.tpwd, Qt::Key_Escape);
    });
    pressWithTheKeyboard();
    expectReadyForAnotherTry();
    EXPECT_EQ(loginWindow().tUser->cursor().shape(), Qt::IBeamCursor);
    EXPECT_TRUE(server.waitForEndOf(1));
}

TEST_F(LoginWaiting, AQuickLogOnShowsNothingOfIt) {
    pressWithTheKeyboard();
    EXPECT_TRUE(mainWindow().isVisible());
    EXPECT_FALSE(loginWindow().tmrWaiting->isEnabled());
    EXPECT_GE(loginWindow().tmrWaiting->period(), 200) << "milliseconds";
}

TEST_F(LoginWaiting, TheWindowNeitherGrowsNorMovesItsFieldsToShowIt) {
    writeSettings(support::schoolSettings(server.address()));
    startUp();
    auto& login = loginWindow();
    const QSize size = login.minimumSizeHint();
    const QPoint field = login.tpwd->pos();
    login.tmrWaiting_Timer();
    QTest::qWait(0);
    EXPECT_EQ(login.minimumSizeHint(), size);
    EXPECT_EQ(login.tpwd->pos(), field);
}

TEST_F(LoginWaiting, ClosedWhileItWaitsTheWindowStaysForAnotherTryThatSucceeds) {
    holdAt("STAT");
    const frmLogin* before = nullptr;
    {
        const WhenItHolds close([&] { return server.commands().size() == 4; },
                                [&] {
                                    before = &loginWindow();
                                    loginWindow().close();
                                });
        pressWithTheKeyboard();
    }
    expectReadyForAnotherTry();
    EXPECT_TRUE(server.waitForEndOf(1));
    EXPECT_THAT(server.commands(0), ElementsAre("CAPA", "USER ann", "PASS secret", "STAT"));

    mailbox.answerProperly("STAT");
    loginWindow().cmdLogin->click();
    EXPECT_EQ(before, &loginWindow());
    EXPECT_THAT(boxTexts(), IsEmpty());
    EXPECT_TRUE(mainWindow().isVisible());
    EXPECT_EQ(email::mailbox.MessageCount, 2);
    mainWindow().MailGrid->setCurrentCell(0, 0);
    mainWindow().cmdDelete->click();
    EXPECT_THAT(mailbox.messages(), ElementsAre(kTwoMessages[1]));
}

TEST_F(LoginWaiting, EscapeDoesNothingWhenNothingIsWaitedFor) {
    writeSettings(support::schoolSettings(server.address()));
    startUp();
    QTest::keyClick(loginWindow().tUser, Qt::Key_Escape);
    EXPECT_TRUE(loginWindow().isVisible());
    EXPECT_THAT(boxTexts(), IsEmpty());
}

TEST_F(LoginWaiting, ARequestThatWasGivenUpHasANumberOfItsOwn) {
    holdAt("PASS");
    startUp();
    auto& pop = loginWindow().POP1;
    pop.setMailServer(server.address());
    pop.setLoginUser("ann");
    pop.setLoginPassword("secret");
    const WhenItHolds giveUp([&] { return server.commands().size() == 3; }, [&] { pop.giveUp(); });
    EXPECT_EQ(platform::errorNumberOf([&] { pop.issueRequest(poplib::Request::ConnectAndLogOn); }),
              platform::errors::GivenUp);
    pop.giveUp();
    mailbox.answerProperly("PASS");
    EXPECT_EQ(platform::errorNumberOf([&] { pop.issueRequest(poplib::Request::ConnectAndLogOn); }), 0);
}

TEST_F(LoginWaiting, ThePointerWaitsWhileNewMailIsCheckedFor) {
    logIn(server.address());
    ASSERT_TRUE(server.waitForEndOf(1));
    mailbox.on("STAT", support::holdAndSay("+OK 2 44\r\n"));
    {
        const WhenItHolds look([&] { return server.connections() == 2 && server.commands(1).size() == 3; },
                               [&] {
                                   EXPECT_EQ(mainWindow().cursor().shape(), Qt::WaitCursor);
                                   server.release();
                               });
        mainWindow().tmrCheckMail_Timer();
    }
    EXPECT_NE(mainWindow().cursor().shape(), Qt::WaitCursor);
}

TEST_F(LoginWaiting, ThePointerWaitsWhileAMessageIsDeleted) {
    logIn(server.address());
    ASSERT_TRUE(server.waitForEndOf(1));
    mailbox.on("DELE", support::holdAndSay("-ERR not now\r\n"));
    const WhenItHolds look([&] { return server.keywords().back() == "DELE"; },
                           [&] {
                               EXPECT_EQ(mainWindow().cursor().shape(), Qt::WaitCursor);
                               server.release();
                           });
    mainWindow().MailGrid->setCurrentCell(0, 0);
    mainWindow().cmdDelete->click();
    EXPECT_NE(mainWindow().cursor().shape(), Qt::WaitCursor);
}

TEST_F(LoginWaiting, TypingANamePreparesTheMainWindowWithoutShowingIt) {
    writeSettings(support::schoolSettings(server.address()));
    startUp();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&loginWindow()));
    EXPECT_EQ(mainWindow().windowHandle(), nullptr) << "nobody has waited for it yet";
    QTest::keyClicks(loginWindow().tUser, QStringLiteral("a"));
    EXPECT_NE(mainWindow().windowHandle(), nullptr);
    EXPECT_FALSE(mainWindow().isVisible());
    EXPECT_TRUE(loginWindow().isActiveWindow());
}
