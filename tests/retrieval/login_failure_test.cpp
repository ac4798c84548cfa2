#include "email/mailbox.h"
#include "tests/support/pop3_script.h"
#include "tests/support/window_test.h"
#include "windows/frmLogin.h"
#include "windows/frmMain.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

using support::Ending;
using support::Pop3Mailbox;
using support::ScriptedServer;
using support::WindowTest;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {
class LoginFailure : public WindowTest {
  protected:
    void expectBoxAndEnd(const QString& text, const QString& title) {
        ASSERT_THAT(boxTexts(), ElementsAre(text));
        EXPECT_EQ(boxes[0].title, title);
        EXPECT_EQ(boxes[0].icon, controls::MessageIcon::None);
        EXPECT_EQ(boxes[0].buttons, controls::MessageButtons::Ok);
        EXPECT_EQ(programEnds, 1);
    }

    void expectAnotherTry() {
        EXPECT_EQ(programEnds, 0);
        EXPECT_TRUE(loginWindow().isVisible());
        EXPECT_TRUE(loginWindow().cmdLogin->isEnabled());
        EXPECT_NE(loginWindow().cursor().shape(), Qt::WaitCursor);
        EXPECT_FALSE(mainWindow().isVisible());
    }

    const std::vector<std::string> twoMessages = {"Subject: one\r\n\r\nfirst\r\n",
                                                  "Subject: two\r\n\r\nsecond\r\n"};
};

struct Row {
    int number;
    const char* text;
    const char* titleSuffix;
};

class LoginFailureTable : public LoginFailure, public testing::WithParamInterface<Row> {};
} // namespace

TEST_P(LoginFailureTable, EndsTheProgramAfterItsBox) {
    writeSettings(support::schoolSettings(QStringLiteral("pop.example.org")));
    startUp();
    loginWindow().logInFailed(GetParam().number);
    expectBoxAndEnd(QLatin1String(GetParam().text),
                    QStringLiteral("Example School") + QLatin1String(GetParam().titleSuffix));
}

INSTANTIATE_TEST_SUITE_P(Numbers, LoginFailureTable,
                         testing::Values(Row{20302, "There was trouble connecting with the Mail Server.",
                                             " E-Mail"},
                                         Row{26002, "Mail Server not found.", " E-Mail"},
                                         Row{25062, "Connection refused by host.", " E-Mail"},
                                         Row{25052, "Network is unreachable.", " E-mail"},
                                         Row{5, "Error 5 Please start program again ", " E-Mail"},
                                         Row{6, "Error 6 Please start program again ", " E-Mail"},
                                         Row{7, "Error 7 Please start program again ", " E-Mail"},
                                         Row{9, "Error 9 Please start program again ", " E-Mail"}),
                         [](const auto& row) { return "Error" + std::to_string(row.param.number); });

namespace {
constexpr const char* kUnquotedBoundary = "+OK\r\nContent-Type: multipart/mixed; boundary=abc\r\n\r\n.\r\n";
} // namespace

TEST_F(LoginFailure, TheFootLineTellsWhichMessageHasEndedTheProgram) {
    QString foot;
    whileBoxIsOpen = [&](const controls::MessageBox&) { foot = mainWindow().lStats->text(); };
    Pop3Mailbox mailbox(std::vector<std::string>(12, twoMessages.front()));
    mailbox.answer("TOP 7", kUnquotedBoundary);
    ScriptedServer server{mailbox};
    logIn(server.address());
    EXPECT_THAT(boxTexts(), ElementsAre(QStringLiteral("Error 5 Please start program again ")));
    EXPECT_EQ(foot, QStringLiteral("Receiving 7 of 12"));
}

TEST_F(LoginFailure, TheFootLineTellsOfAMessageThatWasFetchedBehindTheOthers) {
    QString foot;
    whileBoxIsOpen = [&](const controls::MessageBox&) { foot = mainWindow().lStats->text(); };
    Pop3Mailbox mailbox(std::vector<std::string>(12, twoMessages.front()));
    mailbox.answer("TOP 7", "-ERR not this one\r\n").answer("RETR 7", kUnquotedBoundary);
    ScriptedServer server{mailbox};
    logIn(server.address());
    EXPECT_THAT(boxTexts(), ElementsAre(QStringLiteral("Error 5 Please start program again ")));
    EXPECT_EQ(foot, QStringLiteral("Receiving 7 of 12"));
}

TEST_F(LoginFailure, RefusedPasswordIsReportedAndMayBeRetried) {
    Pop3Mailbox mailbox(twoMessages);
    mailbox.answer("PASS", "-ERR no\r\n");
    ScriptedServer server{mailbox};
    std::vector<std::string> commandsUnderTheBox;
    whileBoxIsOpen = [&](const controls::MessageBox&) { commandsUnderTheBox = server.commands(); };
    logIn(server.address());
    ASSERT_THAT(boxTexts(),
                ElementsAre(QStringLiteral("Password Or User Name Wrong, Please Try Again 20172")));
    EXPECT_EQ(boxes[0].title, QStringLiteral("Example School Mail Error"));
    EXPECT_THAT(commandsUnderTheBox, ElementsAre("CAPA", "USER ann", "PASS secret"))
        << "logged off before the box";
    ASSERT_TRUE(server.waitForEndOf(1));
    EXPECT_THAT(server.commands(0), ElementsAre("CAPA", "USER ann", "PASS secret", "QUIT"));
    expectAnotherTry();

    mailbox.answerProperly("PASS");
    loginWindow().cmdLogin->click();
    EXPECT_EQ(boxes.size(), 1U);
    EXPECT_TRUE(mainWindow().isVisible());
    EXPECT_EQ(email::mailbox.MessageCount, 2);
}

TEST_F(LoginFailure, RefusedUserNameIsReportedAsWrong) {
    ScriptedServer server{Pop3Mailbox(twoMessages).answer("USER", "-ERR who?\r\n")};
    logIn(server.address());
    EXPECT_THAT(boxTexts(),
                ElementsAre(QStringLiteral("Password Or User Name Wrong, Please Try Again 20172")));
    expectAnotherTry();
}

TEST_F(LoginFailure, AMailboxInUseIsReportedAfterLoggingOff) {
    ScriptedServer server{Pop3Mailbox(twoMessages).answer("PASS", "-ERR [IN-USE] locked\r\n")};
    std::vector<std::string> commandsUnderTheBox;
    whileBoxIsOpen = [&](const controls::MessageBox&) {
        EXPECT_TRUE(server.waitForEndOf(1));
        commandsUnderTheBox = server.commands();
    };
    logIn(server.address());
    ASSERT_THAT(boxTexts(),
                ElementsAre(QStringLiteral("Cannot Re-Enter Mail Server, Please Try Again 20102")));
    EXPECT_EQ(boxes[0].title, QStringLiteral("Example School Mail Error"));
    EXPECT_THAT(commandsUnderTheBox, ElementsAre("CAPA", "USER ann", "PASS secret", "QUIT"));
    expectAnotherTry();
}

TEST_F(LoginFailure, ASecondLogOnUnderTheBoxMeetsABusyMailServer) {
    ScriptedServer server{Pop3Mailbox(twoMessages).answer("PASS", "-ERR no\r\n")};
    int depth = 0;
    whileBoxIsOpen = [&](const controls::MessageBox&) {
        if (++depth == 1) {
            loginWindow().cmdLogin_Click();
        }
    };
    logIn(server.address());
    EXPECT_THAT(boxTexts(),
                ElementsAre(QStringLiteral("Password Or User Name Wrong, Please Try Again 20172"),
                            QStringLiteral("Cannot Re-Enter Mail Server, Please Try Again 20102")));
    EXPECT_EQ(server.connections(), 1U);
    expectAnotherTry();
}

TEST_F(LoginFailure, ARequestFromATimerWhileTheFirstWaitsMeetsABusyMailServerAndHarmsNothing) {
    Pop3Mailbox mailbox(twoMessages);
    mailbox.on("STAT", support::holdAndSay("+OK 2 44\r\n"));
    ScriptedServer server{mailbox};
    const support::WhenItHolds second([&] { return server.commands().size() == 4; },
                                      [&] {
                                          loginWindow().cmdLogin_Click();
                                          server.release();
                                      });
    logIn(server.address());
    EXPECT_THAT(boxTexts(),
                ElementsAre(QStringLiteral("Cannot Re-Enter Mail Server, Please Try Again 20102")));
    EXPECT_EQ(server.connections(), 1U);
    EXPECT_EQ(email::mailbox.MessageCount, 2);
    EXPECT_EQ(mainWindow().MailGrid->Rows(), 3);
    EXPECT_TRUE(mainWindow().isVisible());
}

TEST_F(LoginFailure, EncryptionThatIsDemandedAndNotOfferedIsReportedByItsNumber) {
    ScriptedServer server{Pop3Mailbox(twoMessages)};
    logIn(QStringLiteral("starttls://") + server.address());
    expectBoxAndEnd(QStringLiteral("Error 20321 Please start program again "),
                    QStringLiteral("Example School E-Mail"));
    EXPECT_THAT(server.commands(), ElementsAre("CAPA")) << "no name and no password";
}

TEST_F(LoginFailure, AServerThatIsNotEncryptedFromTheFirstByteIsReportedByItsNumber) {
    ScriptedServer server{Pop3Mailbox(twoMessages)};
    logIn(QStringLiteral("tls://") + server.address());
    expectBoxAndEnd(QStringLiteral("Error 20325 Please start program again "),
                    QStringLiteral("Example School E-Mail"));
}

TEST_F(LoginFailure, AServerThatTakesNoPasswordInClearIsReportedByItsNumber) {
    Pop3Mailbox mailbox(twoMessages);
    mailbox.answer("USER", "-ERR [AUTH] Plaintext authentication disallowed on non-secure connections.\r\n");
    mailbox.answer("CAPA", "+OK\r\nTOP\r\nUIDL\r\n.\r\n");
    ScriptedServer server{mailbox};
    logIn(server.address());
    expectBoxAndEnd(QStringLiteral("Error 20321 Please start program again "),
                    QStringLiteral("Example School E-Mail"));
    EXPECT_THAT(server.commands(), ElementsAre("CAPA", "USER ann")) << "no password";
}

TEST_F(LoginFailure, AWrongSchemeIsAServerThatIsNotFound) {
    logIn(QStringLiteral("ssl://127.0.0.1"));
    expectBoxAndEnd(QStringLiteral("Mail Server not found."), QStringLiteral("Example School E-Mail"));
}

TEST_F(LoginFailure, AnUnknownServerIsReported) {
    logIn(QStringLiteral("mail.invalid"));
    expectBoxAndEnd(QStringLiteral("Mail Server not found."), QStringLiteral("Example School E-Mail"));
}

TEST_F(LoginFailure, AServerNameThatIsNoneIsReported) {
    logIn(QStringLiteral("mail.example.org:notaport"));
    expectBoxAndEnd(QStringLiteral("Mail Server not found."), QStringLiteral("Example School E-Mail"));
}

TEST_F(LoginFailure, ARefusedConnectionIsReported) {
    QString address;
    {
        const ScriptedServer gone{Pop3Mailbox()};
        address = gone.address();
    }
    logIn(address);
    expectBoxAndEnd(QStringLiteral("Connection refused by host."), QStringLiteral("Example School E-Mail"));
}

TEST_F(LoginFailure, AGreetingThatRefusesIsTrouble) {
    ScriptedServer server{Pop3Mailbox(twoMessages).answer("GREETING", "-ERR closed today\r\n")};
    logIn(server.address());
    expectBoxAndEnd(QStringLiteral("There was trouble connecting with the Mail Server."),
                    QStringLiteral("Example School E-Mail"));
}

TEST_F(LoginFailure, ASilentServerIsTroubleAfterTheTimeOut) {
    ScriptedServer server{support::Script{support::HoldSilent{}}};
    writeSettings(support::schoolSettings(server.address()));
    startUp();
    loginWindow().POP1.setTimeouts({std::chrono::milliseconds(50), std::chrono::milliseconds(50)});
    loginWindow().tUser->setText(QStringLiteral("ann"));
    loginWindow().tpwd->setText(QStringLiteral("secret"));
    loginWindow().cmdLogin->click();
    expectBoxAndEnd(QStringLiteral("There was trouble connecting with the Mail Server."),
                    QStringLiteral("Example School E-Mail"));
}

TEST_F(LoginFailure, AnUnquotedBoundaryIsError5AndEndsTheProgram) {
    ScriptedServer server{Pop3Mailbox({"Content-Type: multipart/mixed; boundary=abc\r\n\r\n--abc\r\n"})};
    logIn(server.address());
    expectBoxAndEnd(QStringLiteral("Error 5 Please start program again "),
                    QStringLiteral("Example School E-Mail"));
}

TEST_F(LoginFailure, AMailboxOfMoreThan16BitsOfMessagesIsError6) {
    ScriptedServer server{Pop3Mailbox().answer("STAT", "+OK 32768 9\r\n")};
    logIn(server.address());
    expectBoxAndEnd(QStringLiteral("Error 6 Please start program again "),
                    QStringLiteral("Example School E-Mail"));
}

TEST_F(LoginFailure, AMailboxOfMoreThanTwoGigabytesIsError6) {
    ScriptedServer server{Pop3Mailbox().answer("STAT", "+OK 1 2147483648\r\n")};
    logIn(server.address());
    expectBoxAndEnd(QStringLiteral("Error 6 Please start program again "),
                    QStringLiteral("Example School E-Mail"));
}

TEST_F(LoginFailure, ACountThatIsAClaimOnlyEndsAtTheTablesEnd) {
    ScriptedServer server{
        Pop3Mailbox(std::vector<std::string>(200, "Subject: x\r\n\r\n")).answer("STAT", "+OK 32767 9\r\n")};
    logIn(server.address());
    expectBoxAndEnd(QStringLiteral("Error 9 Please start program again "),
                    QStringLiteral("Example School E-Mail"));
}

TEST_F(LoginFailure, APasswordWithALineEndNeverReachesTheServer) {
    ScriptedServer server{Pop3Mailbox(twoMessages)};
    writeSettings(support::schoolSettings(server.address()));
    startUp();
    loginWindow().tUser->setText(QStringLiteral("ann"));
    loginWindow().tpwd->setText(QStringLiteral("secret\r\nDELE 1"));
    loginWindow().cmdLogin->click();
    EXPECT_THAT(boxTexts(),
                ElementsAre(QStringLiteral("Password Or User Name Wrong, Please Try Again 20172")));
    EXPECT_THAT(server.commands(), IsEmpty());
    expectAnotherTry();
}

namespace {
class EveryCut : public LoginFailure, public testing::WithParamInterface<Ending> {};
} // namespace

TEST_P(EveryCut, AfterAnyByteOfTheServersIsTroubleUntilEveryMessageHasCome) {
    // What follows the last message. Nothing depends on it.
    const std::string_view quit =
        "+OK the list follows\r\n1 message-1\r\n2 message-2\r\n.\r\n+OK good-bye\r\n";
    std::size_t whole = 0;
    {
        ScriptedServer server{Pop3Mailbox(twoMessages)};
        logIn(server.address());
        ASSERT_THAT(boxTexts(), IsEmpty());
        ASSERT_TRUE(server.waitForEndOf(1));
        whole = server.bytesSent();
    }
    ASSERT_GT(whole, 100U);
    ScriptedServer server{Pop3Mailbox(twoMessages)};
    for (std::size_t bytes = 0; bytes < whole; ++bytes) {
        SCOPED_TRACE(bytes);
        forgetEverything();
        server.cutAfter(bytes, GetParam());
        logIn(server.address());
        if (bytes + quit.size() >= whole) {
            ASSERT_THAT(boxTexts(), IsEmpty());
            ASSERT_EQ(email::mailbox.MessageCount, 2);
            ASSERT_EQ(mainWindow().MailGrid->Rows(), 3);
            continue;
        }
        expectBoxAndEnd(QStringLiteral("There was trouble connecting with the Mail Server."),
                        QStringLiteral("Example School E-Mail"));
    }
    forgetEverything();
    server.cutNoMore();
    logIn(server.address());
    EXPECT_THAT(boxTexts(), IsEmpty());
    EXPECT_EQ(email::mailbox.MessageCount, 2);
}

INSTANTIATE_TEST_SUITE_P(Endings, EveryCut, testing::Values(Ending::Close, Ending::Reset),
                         [](const auto& ending) {
                             return ending.param == Ending::Close ? "Orderly" : "Reset";
                         });
