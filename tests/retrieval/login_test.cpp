#include "email/credentials.h"
#include "email/mailbox.h"
#include "email/shared_settings.h"
#include "tests/support/pop3_script.h"
#include "tests/support/window_test.h"
#include "windows/frmLogin.h"
#include "windows/frmMain.h"
#include "windows/frmSetup.h"

#include <QElapsedTimer>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <fstream>
#include <iterator>

using support::Pop3Mailbox;
using support::ScriptedServer;
using support::WhenItHolds;
using support::WindowTest;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {
class Login : public WindowTest {
  protected:
    static std::string message(const std::string& name) {
        return "From: " + name + "@example.org\r\nSubject: About " + name +
               "\r\nDate: Mon, 2 Mar 2026 10:00:00 +0000\r\n\r\nText of " + name + "\r\n";
    }

    static QString cell(int row, int column) { return mainWindow().MailGrid->TextMatrix(row, column); }

    static QString cellWithoutPadding(int row, int column) { return cell(row, column).trimmed(); }
};
} // namespace

TEST_F(Login, WithoutAUserNameAsksForItAndConnectsNowhere) {
    ScriptedServer server{Pop3Mailbox()};
    logIn(server.address(), QString());
    ASSERT_THAT(boxTexts(), ElementsAre(QStringLiteral("User name must be entered to get mail.")));
    EXPECT_EQ(boxes[0].title, QStringLiteral("Example School E-Mail"));
    EXPECT_EQ(server.connections(), 0U);
    EXPECT_TRUE(loginWindow().isVisible());
    EXPECT_TRUE(loginWindow().cmdLogin->isEnabled());
}

TEST_F(Login, WithoutAPasswordAsksForItAndConnectsNowhere) {
    ScriptedServer server{Pop3Mailbox()};
    writeSettings(support::schoolSettings(server.address()));
    startUp();
    loginWindow().tUser->setText(QStringLiteral("ann"));
    loginWindow().cmdLogin->click();
    ASSERT_THAT(boxTexts(), ElementsAre(QStringLiteral("Password must be entered to get mail.")));
    EXPECT_EQ(boxes[0].title, QStringLiteral("Example School E-Mail"));
    EXPECT_EQ(server.connections(), 0U);
}

TEST_F(Login, ListsEveryWaitingMessage) {
    ScriptedServer server{Pop3Mailbox({message("one"), message("two")})};
    logIn(server.address());
    EXPECT_THAT(boxTexts(), IsEmpty());
    EXPECT_EQ(mainWindow().MailGrid->Rows(), 3);
    EXPECT_EQ(cell(1, 0), QStringLiteral("1") + QString(14, u' '));
    EXPECT_EQ(cell(2, 1), QStringLiteral("Mon, 2 Mar 2026 10:00:00 +0000"));
    EXPECT_EQ(cellWithoutPadding(2, 2), QStringLiteral("two@example.org"));
    EXPECT_EQ(cell(2, 2).size(), 50);
    EXPECT_EQ(cellWithoutPadding(2, 3), QStringLiteral("About two"));
    EXPECT_EQ(cell(2, 3).size(), 48);
    const QString size = QString::number(message("two").size());
    EXPECT_EQ(cell(2, 4), QStringLiteral("(") + size + QStringLiteral(" bytes)"));
    EXPECT_EQ(email::mailbox.Messages.at(2).BodyText, "Text of two\r\n");
}

TEST_F(Login, GivesTheServerTheseCommandsInThisOrder) {
    ScriptedServer server{Pop3Mailbox({message("one"), message("two")})};
    logIn(server.address());
    ASSERT_TRUE(server.waitForEndOf(1));
    EXPECT_THAT(server.commands(), ElementsAre("CAPA", "USER ann", "PASS secret", "STAT", "LIST 1",
                                               "TOP 1 25", "LIST 2", "TOP 2 25", "UIDL", "QUIT"));
}

TEST_F(Login, EndsWithTheMainWindowReady) {
    ScriptedServer server{Pop3Mailbox({message("one"), message("two")})};
    logIn(server.address());
    const auto& main = mainWindow();
    EXPECT_TRUE(main.isVisible());
    EXPECT_FALSE(loginWindow().isVisible());
    EXPECT_EQ(main.windowTitle(), QStringLiteral("Welcome ann To Example School E-Mail"));
    for (const QPushButton* button : {main.cmdRead, main.cmdDelete, main.cmdCmpose, main.cmdGetMail}) {
        EXPECT_TRUE(button->isEnabled()) << button->text().toStdString();
    }
    EXPECT_TRUE(main.MailGrid->isEnabled());
    EXPECT_TRUE(main.MailGrid->redraws());
    EXPECT_EQ(main.barProgress->value(), 0);
    const auto bytes = message("one").size() + message("two").size();
    EXPECT_EQ(main.lStats->text(), QStringLiteral("2 messages %1 bytes total").arg(bytes));
    EXPECT_EQ(email::mailbox.MessageCount, 2);
    EXPECT_EQ(email::mailbox.LastMessageCount, 2);
    EXPECT_EQ(email::mailbox.MessageNumbers[0], 1);
    EXPECT_EQ(email::mailbox.MessageNumbers[1], 2);
    EXPECT_NE(main.cursor().shape(), Qt::WaitCursor);
    EXPECT_NE(loginWindow().cursor().shape(), Qt::WaitCursor);
}

TEST_F(Login, ShowsWhatItDoesWhileItReceives) {
    Pop3Mailbox mailbox({message("one"), message("two")});
    mailbox.on("TOP 2", support::holdAndSay("+OK\r\n" + support::stuffed(message("two"))));
    ScriptedServer server{mailbox};
    const WhenItHolds look(
        [&] { return server.commands().size() == 8 && mainWindow().barProgress->value() == 1; },
        [&] {
            const auto& main = mainWindow();
            EXPECT_EQ(main.lStats->text(), QStringLiteral("Receiving 2 of 2"));
            EXPECT_EQ(main.barProgress->maximum(), 2);
            EXPECT_EQ(main.barProgress->value(), 1);
            EXPECT_TRUE(main.isVisible());
            EXPECT_EQ(main.cursor().shape(), Qt::WaitCursor);
            EXPECT_FALSE(loginWindow().isVisible());
            EXPECT_FALSE(loginWindow().cmdLogin->isEnabled());
            EXPECT_FALSE(main.tmrCheckMail->isEnabled());
            EXPECT_FALSE(main.MailGrid->redraws());
            for (const QPushButton* button :
                 {main.cmdRead, main.cmdDelete, main.cmdCmpose, main.cmdGetMail}) {
                EXPECT_FALSE(button->isEnabled()) << button->text().toStdString();
            }
            server.release();
        });
    logIn(server.address());
    EXPECT_EQ(mainWindow().MailGrid->Rows(), 3);
}

TEST_F(Login, KeepsTheWindowsAliveWhileTheServerIsSilent) {
    Pop3Mailbox mailbox({message("one")});
    mailbox.on("PASS", support::holdAndSay("+OK\r\n"));
    ScriptedServer server{mailbox};
    int beats = 0;
    QTimer heart;
    QObject::connect(&heart, &QTimer::timeout, [&] {
        if (++beats == 50) {
            server.release();
        }
    });
    heart.start(1);
    logIn(server.address());
    EXPECT_GE(beats, 50);
    EXPECT_EQ(email::mailbox.MessageCount, 1);
}

TEST_F(Login, AUserNameWithAHostBringsItsServersAndItsDomain) {
    ScriptedServer server{Pop3Mailbox({message("one")})};
    logIn(QStringLiteral("elsewhere.invalid"), QStringLiteral("bob@") + server.address());
    EXPECT_THAT(boxTexts(), IsEmpty());
    EXPECT_THAT(server.commands(), Contains("USER bob"));
    EXPECT_EQ(email::credentials.UserName, QStringLiteral("bob"));
    EXPECT_EQ(email::settings.POPServer, server.address());
    EXPECT_EQ(email::settings.SMTPServer, server.address());
    EXPECT_EQ(email::derived.AtDomain, QStringLiteral("@127.0.0.1")) << "a port is no part of a domain";
    EXPECT_EQ(mainWindow().windowTitle(), QStringLiteral("Welcome bob To Example School E-Mail"));
}

TEST_F(Login, ServersFromATypedHostAreNotWrittenToTheSettingsFile) {
    ScriptedServer server{Pop3Mailbox()};
    writeSettings(support::schoolSettings(QStringLiteral("pop.example.org")));
    const std::string before = folder.read("tolk.ini");
    logIn(QStringLiteral("pop.example.org"), QStringLiteral("bob@") + server.address());
    EXPECT_EQ(folder.read("tolk.ini"), before);
}

TEST_F(Login, AUserNameThatBeginsWithAtGivesAnEmptyPopUser) {
    ScriptedServer server{Pop3Mailbox()};
    logIn(QStringLiteral("pop.example.org"), QStringLiteral("@") + server.address());
    EXPECT_THAT(server.commands(), Contains("USER "));
    EXPECT_EQ(email::credentials.UserName, QString());
}

TEST_F(Login, AUserNameWithTwoAtsIsSplitAtTheFirst) {
    logIn(QStringLiteral("pop.example.org"), QStringLiteral("ann@b@c.invalid"));
    EXPECT_EQ(email::credentials.UserName, QStringLiteral("ann"));
    EXPECT_EQ(email::settings.POPServer, QStringLiteral("b@c.invalid"));
    EXPECT_EQ(email::derived.AtDomain, QStringLiteral("@b@c.invalid"));
}

TEST_F(Login, AUserNameWithoutAHostIsNotTrimmedAndKeepsTheDomain) {
    ScriptedServer server{Pop3Mailbox()};
    logIn(server.address(), QStringLiteral(" ann "));
    EXPECT_THAT(server.commands(), Contains("USER  ann "));
    EXPECT_EQ(email::derived.AtDomain, QStringLiteral("@example.org"));
}

TEST_F(Login, AnEmptyMailboxShowsOneSpaceRowWithoutSound) {
    ScriptedServer server{Pop3Mailbox()};
    logIn(server.address());
    const auto& main = mainWindow();
    EXPECT_TRUE(main.isVisible());
    EXPECT_EQ(main.MailGrid->Rows(), 2);
    EXPECT_EQ(main.lStats->text(), QStringLiteral("0 messages 0 bytes total"));
    EXPECT_THAT(sounds, IsEmpty());
    EXPECT_FALSE(main.cmdRead->isEnabled());
    EXPECT_FALSE(main.cmdDelete->isEnabled());
    EXPECT_FALSE(main.MailGrid->isEnabled());
    EXPECT_TRUE(main.cmdCmpose->isEnabled());
}

TEST_F(Login, WaitingMailPlaysTheSound) {
    ScriptedServer server{Pop3Mailbox({message("one")})};
    logIn(server.address());
    EXPECT_THAT(sounds, ElementsAre(QStringLiteral("Gotmail.wav")));
}

TEST_F(Login, WithPlayWavNoThereIsNoSound) {
    ScriptedServer server{Pop3Mailbox({message("one")})};
    auto fields = support::schoolSettings(server.address());
    fields.PlayWav = QStringLiteral("Yes");
    writeSettings(fields);
    startUp();
    loginWindow().tUser->setText(QStringLiteral("ann"));
    loginWindow().tpwd->setText(QStringLiteral("secret"));
    loginWindow().cmdLogin->click();
    EXPECT_EQ(email::mailbox.MessageCount, 1);
    EXPECT_THAT(sounds, IsEmpty());
}

TEST_F(Login, ExactlyTwoHundredMessagesAreListed) {
    ScriptedServer server{Pop3Mailbox(std::vector<std::string>(200, message("one")))};
    logIn(server.address());
    EXPECT_THAT(boxTexts(), IsEmpty());
    EXPECT_EQ(cellWithoutPadding(200, 0), QStringLiteral("200"));
    EXPECT_EQ(email::mailbox.MessageNumbers[199], 200);
}

TEST_F(Login, MoreThanTwoHundredMessagesAreError9AndEndTheProgram) {
    ScriptedServer server{Pop3Mailbox(std::vector<std::string>(201, message("one")))};
    logIn(server.address());
    EXPECT_THAT(boxTexts(), ElementsAre(QStringLiteral("Error 9 Please start program again ")));
    EXPECT_EQ(boxes.at(0).title, QStringLiteral("Example School E-Mail"));
    EXPECT_EQ(cellWithoutPadding(200, 0), QStringLiteral("200"));
    EXPECT_EQ(programEnds, 1);
}

TEST_F(Login, WithGetMailEvery0TheTimerHasNoIntervalAndIsNotEnabled) {
    ScriptedServer server{Pop3Mailbox()};
    logIn(server.address());
    EXPECT_EQ(mainWindow().tmrCheckMail->period(), 0);
    EXPECT_FALSE(mainWindow().tmrCheckMail->isEnabled());
    EXPECT_FALSE(mainWindow().tmrCheckMail->isActive());
}

TEST_F(Login, GetMailEverySetsTheTimerInMinutes) {
    ScriptedServer server{Pop3Mailbox()};
    auto fields = support::schoolSettings(server.address());
    fields.GetMailEvery = QStringLiteral("5");
    writeSettings(fields);
    startUp();
    loginWindow().tUser->setText(QStringLiteral("ann"));
    loginWindow().tpwd->setText(QStringLiteral("secret"));
    loginWindow().cmdLogin->click();
    EXPECT_EQ(mainWindow().tmrCheckMail->period(), 300'000);
    EXPECT_TRUE(mainWindow().tmrCheckMail->isActive());
}

TEST_F(Login, AMessageWithoutSubjectAndDateShowsAnApostropheForEach) {
    ScriptedServer server{Pop3Mailbox({"From: a@example.org\r\n\r\nx\r\n"})};
    logIn(server.address());
    EXPECT_EQ(cell(1, 1), QStringLiteral("'"));
    EXPECT_EQ(cellWithoutPadding(1, 3), QStringLiteral("'"));
}

TEST_F(Login, AMessageThatTheServerCannotGiveKeepsItsPlaceholdersAndTheListingGoesOn) {
    Pop3Mailbox mailbox({message("one"), message("two"), message("three")});
    mailbox.answer("TOP 2", "-ERR gone\r\n")
        .answer("RETR 2", "-ERR gone\r\n")
        .answer("LIST 2", "-ERR gone\r\n");
    ScriptedServer server{mailbox};
    logIn(server.address());
    EXPECT_THAT(boxTexts(), IsEmpty());
    EXPECT_EQ(cellWithoutPadding(2, 3), QStringLiteral("'"));
    EXPECT_EQ(cell(2, 4), QStringLiteral("(0 bytes)"));
    EXPECT_EQ(cellWithoutPadding(3, 3), QStringLiteral("About three"));
}

TEST_F(Login, TheBodyTextGrowsWhenTheSameNumberIsListedAgain) {
    ScriptedServer server{Pop3Mailbox({message("one")})};
    logIn(server.address());
    loginWindow().cmdLogin->setEnabled(true);
    loginWindow().tpwd->setText(QStringLiteral("secret"));
    loginWindow().cmdLogin->click();
    EXPECT_EQ(email::mailbox.Messages.at(1).BodyText, "Text of one\r\nText of one\r\n");
}

TEST_F(Login, AMissingLogoChangesNothingElse) {
    writeSettings(support::schoolSettings(QStringLiteral("pop.example.org")));
    startUp();
    EXPECT_TRUE(loginWindow().isVisible());
    EXPECT_TRUE(loginWindow().picLogo->pixmap().isNull());
    EXPECT_THAT(boxTexts(), IsEmpty());
}

TEST_F(Login, ABrokenLogoChangesNothingElse) {
    folder.write("tolk.jpg", "no picture at all");
    writeSettings(support::schoolSettings(QStringLiteral("pop.example.org")));
    startUp();
    EXPECT_TRUE(loginWindow().isVisible());
    EXPECT_TRUE(loginWindow().picLogo->pixmap().isNull());
    EXPECT_THAT(boxTexts(), IsEmpty());
}

TEST_F(Login, ALargeLogoIsMadeToFitTheWindow) {
    QImage logo(4000, 3000, QImage::Format_RGB32);
    logo.fill(Qt::blue);
    ASSERT_TRUE(logo.save(folder.qtPath("tolk.jpg"), "PNG"));
    writeSettings(support::schoolSettings(QStringLiteral("pop.example.org")));
    startUp();
    EXPECT_EQ(loginWindow().picLogo->pixmap().deviceIndependentSize(), QSizeF(160, 120));
    EXPECT_LT(loginWindow().width(), 500);
}

TEST_F(Login, ReturnInTheUserNameGoesToThePasswordAndReturnThereGetsTheMail) {
    ScriptedServer server{Pop3Mailbox({message("one")})};
    writeSettings(support::schoolSettings(server.address()));
    startUp();
    auto& login = loginWindow();
    login.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&login));
    EXPECT_TRUE(login.tUser->hasFocus());
    QTest::keyClicks(login.focusWidget(), QStringLiteral("ann"));
    QTest::keyClick(login.focusWidget(), Qt::Key_Return);
    EXPECT_TRUE(login.tpwd->hasFocus());
    QTest::keyClicks(login.focusWidget(), QStringLiteral("secret"));
    QTest::keyClick(login.focusWidget(), Qt::Key_Return);
    EXPECT_EQ(email::mailbox.MessageCount, 1);
    EXPECT_TRUE(mainWindow().isVisible());
}

TEST_F(Login, ShiftCtrlF9OpensTheSetupWindowAlsoWhereItsButtonIsHidden) {
    auto fields = support::schoolSettings(QStringLiteral("pop.example.org"));
    fields.ShowSetup = QStringLiteral("no");
    writeSettings(fields);
    startUp();
    QTest::keyClick(loginWindow().tUser, Qt::Key_F9, Qt::ShiftModifier | Qt::ControlModifier);
    EXPECT_TRUE(setupWindow().isVisible());
}

TEST_F(Login, OtherKeysDoNotOpenTheSetupWindow) {
    writeSettings(support::schoolSettings(QStringLiteral("pop.example.org")));
    startUp();
    QTest::keyClick(loginWindow().tUser, Qt::Key_F9);
    QTest::keyClick(loginWindow().tUser, Qt::Key_F9, Qt::ControlModifier);
    QTest::keyClick(loginWindow().tUser, Qt::Key_F8, Qt::ShiftModifier | Qt::ControlModifier);
    EXPECT_FALSE(setupWindow().isVisible());
}

TEST_F(Login, WhatAConnectionNeedsIsLoadedAsSoonAsANameIsTyped) {
    writeSettings(support::schoolSettings(QStringLiteral("pop.example.org")));
    startUp();
    QTest::keyClicks(loginWindow().tUser, QStringLiteral("a"));
    std::ifstream maps("/proc/self/maps");
    const std::string all{std::istreambuf_iterator<char>(maps), {}};
    EXPECT_NE(all.find("libbrindlewake_network.so"), std::string::npos);
}

TEST_F(Login, TheFieldForgetsThePasswordThatLaterSessionsStillHave) {
    ScriptedServer server{Pop3Mailbox({message("ann")})};
    logIn(server.address());
    EXPECT_EQ(loginWindow().tpwd->text(), QString());
    EXPECT_FALSE(loginWindow().tpwd->isUndoAvailable());
    EXPECT_EQ(email::credentials.Password, QStringLiteral("secret"));
}

TEST_F(Login, ThePasswordIsNotReadable) {
    writeSettings(support::schoolSettings(QStringLiteral("pop.example.org")));
    startUp();
    EXPECT_EQ(loginWindow().tpwd->echoMode(), QLineEdit::Password);
}
