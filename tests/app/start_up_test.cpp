#include "email/protections.h"
#include "email/shared_settings.h"
#include "tests/support/window_test.h"
#include "windows/frmAbout.h"
#include "windows/frmFrom.h"
#include "windows/frmLogin.h"
#include "windows/frmMain.h"
#include "windows/frmSend.h"
#include "windows/frmSetup.h"

#include <QAction>
#include <QLabel>
#include <QPushButton>

#include <cmath>
#include <filesystem>
#include <sys/stat.h>

using support::WindowTest;
using testing::ElementsAre;

namespace {
class StartUp : public WindowTest {
  protected:
    /** The 19 lines of the settings file, one of them (counted from 1; 0 for none) replaced. */
    static std::string settingsText(std::size_t replacedLine = 0, const std::string& replacement = {}) {
        std::string text;
        std::size_t line = 0;
        std::string all = email::settingsFileText(support::schoolSettings(QStringLiteral("pop.example.org")),
                                                  email::Settings());
        while (!all.empty()) {
            const std::size_t end = all.find("\r\n");
            text += ++line == replacedLine ? replacement : all.substr(0, end);
            text += "\r\n";
            all.erase(0, end + 2);
        }
        return text;
    }

    static std::string firstLines(std::size_t lines) {
        const std::string text = settingsText();
        std::size_t end = 0;
        while (lines-- > 0) {
            end = text.find("\r\n", end) + 2;
        }
        return text.substr(0, end);
    }

    void expectProblem(int number) {
        ASSERT_THAT(boxTexts(),
                    ElementsAre(QStringLiteral("Problem starting Brindlewake. Error# %1").arg(number)));
        EXPECT_EQ(boxes[0].title, QStringLiteral("Brindlewake"));
        EXPECT_EQ(boxes[0].icon, controls::MessageIcon::None);
        EXPECT_EQ(boxes[0].buttons, controls::MessageButtons::Ok);
        EXPECT_FALSE(loginWindow().isVisible());
        EXPECT_TRUE(mainWindow().isVisible());
        EXPECT_EQ(programEnds, 0);
    }
};
} // namespace

TEST_F(StartUp, ShowsTheLoginWindowAndHidesTheMainWindow) {
    writeSettingsText(settingsText());
    startUp();
    EXPECT_TRUE(loginWindow().isVisible());
    EXPECT_FALSE(mainWindow().isVisible());
    EXPECT_THAT(boxTexts(), ElementsAre());
}

TEST_F(StartUp, WithoutASettingsFileLeadsToTheSetupWindow) {
    startUp();
    ASSERT_THAT(boxTexts(), ElementsAre(QStringLiteral("You must configure Brindlewake!")));
    EXPECT_EQ(boxes[0].title, QStringLiteral("Brindlewake"));
    EXPECT_EQ(boxes[0].icon, controls::MessageIcon::Exclamation);
    EXPECT_EQ(boxes[0].buttons, controls::MessageButtons::Ok);
    EXPECT_TRUE(setupWindow().isVisible());
    EXPECT_FALSE(mainWindow().isVisible());
    EXPECT_FALSE(loginWindow().isVisible());
}

TEST_F(StartUp, WithoutASettingsFileKeepsTitlesDefaultsAndTheGetMailButton) {
    startUp();
    EXPECT_EQ(mainWindow().windowTitle(), QStringLiteral("Brindlewake"));
    EXPECT_EQ(loginWindow().windowTitle(), QStringLiteral("Brindlewake"));
    EXPECT_EQ(aboutWindow().windowTitle(), QStringLiteral("About Brindlewake"));
    EXPECT_EQ(setupWindow().windowTitle(), QStringLiteral("Brindlewake Setup"));
    EXPECT_EQ(messageWindow().windowTitle(), QStringLiteral("Brindlewake"));
    EXPECT_EQ(composeWindow().windowTitle(), QStringLiteral("Brindlewake"));
    EXPECT_FALSE(mainWindow().cmdGetMail->isHidden());
    EXPECT_EQ(email::settings.Institution, QStringLiteral("Your Name Here"));
    EXPECT_EQ(email::settings.LDAPSearchBase, QStringLiteral("c=us"));
    EXPECT_EQ(email::settings.GetMailEvery, 0);
}

TEST_F(StartUp, AFileOf18LinesIsProblem62WithAllValuesUpToLine18Read) {
    writeSettingsText(firstLines(18));
    email::settings.AddressLookup = QStringLiteral("left over");
    startUp();
    expectProblem(62);
    EXPECT_EQ(email::settings.LDAPSearchBase, QStringLiteral("c=us"));
    EXPECT_EQ(email::settings.Institution, QStringLiteral("Example School"));
    EXPECT_EQ(email::settings.AddressLookup, QStringLiteral("Personal Address Book"));
    EXPECT_EQ(mainWindow().windowTitle(), QStringLiteral("Brindlewake"));
    EXPECT_EQ(composeWindow().windowTitle(), QStringLiteral("Brindlewake"));
}

TEST_F(StartUp, AFileThatEverybodyMayWriteIsProblem75AndNothingOfItCounts) {
    writeSettingsText(settingsText());
    ASSERT_EQ(chmod("tolk.ini", 0646), 0);
    startUp();
    expectProblem(75);
    EXPECT_EQ(email::settings.POPServer, email::Settings().POPServer);
}

TEST_F(StartUp, TheTotalsReadZeroFromTheStart) {
    writeSettingsText(settingsText());
    startUp();
    EXPECT_EQ(mainWindow().lStats->text(), QStringLiteral("0 messages 0 bytes total"));
}

TEST_F(StartUp, TheTotalsReadZeroWithoutASettingsFileToo) {
    startUp();
    EXPECT_EQ(mainWindow().lStats->text(), QStringLiteral("0 messages 0 bytes total"));
}

TEST_F(StartUp, AGetMailEveryMadeOfLettersIsProblem13) {
    writeSettingsText(settingsText(16, "GetMailEvery=often"));
    startUp();
    expectProblem(13);
}

TEST_F(StartUp, AGetMailEveryBeyond16BitsIsProblem6) {
    writeSettingsText(settingsText(16, "GetMailEvery=32768"));
    startUp();
    expectProblem(6);
}

TEST_F(StartUp, AnEmptyFileIsProblem62) {
    writeSettingsText({});
    startUp();
    expectProblem(62);
}

TEST_F(StartUp, ABinaryFileEndsInAReport) {
    std::string bytes;
    for (int i = 0; i < 100'000; ++i) {
        bytes += static_cast<char>(i * 7919 >> 3);
    }
    writeSettingsText(bytes);
    startUp();
    expectProblem(13);
}

TEST_F(StartUp, AFileOf100MegabytesWithoutLineEndsIsProblem7) {
    writeSettingsText(std::string(100U << 20U, 'x'));
    startUp();
    expectProblem(7);
}

TEST_F(StartUp, AFileOf100MegabytesOfLinesIsReadToItsLine19) {
    std::string lines = settingsText();
    for (const std::string more(1U << 20U, '\n'); lines.size() < 100U << 20U;) {
        lines += more;
    }
    writeSettingsText(lines);
    startUp();
    EXPECT_THAT(boxTexts(), ElementsAre());
    EXPECT_TRUE(loginWindow().isVisible());
}

TEST_F(StartUp, AFolderOfTheFilesNameIsProblem75) {
    std::filesystem::create_directory(folder.path("tolk.ini"));
    startUp();
    expectProblem(75);
}

TEST_F(StartUp, APipeOfTheFilesNameIsProblem75AndDoesNotBlock) {
    ASSERT_EQ(mkfifo(folder.path("tolk.ini").c_str(), 0600), 0);
    startUp();
    expectProblem(75);
}

TEST_F(StartUp, AFileThatPointsToItselfIsProblem75) {
    std::filesystem::create_symlink("tolk.ini", folder.path("tolk.ini"));
    startUp();
    expectProblem(75);
}

TEST_F(StartUp, TitlesFiveWindowsWithTheInstitution) {
    writeSettingsText(settingsText());
    startUp();
    const QString title = QStringLiteral("Example School E-Mail");
    EXPECT_EQ(aboutWindow().windowTitle(), title);
    EXPECT_EQ(messageWindow().windowTitle(), title);
    EXPECT_EQ(loginWindow().windowTitle(), title);
    EXPECT_EQ(mainWindow().windowTitle(), title);
    EXPECT_EQ(composeWindow().windowTitle(), title);
}

TEST_F(StartUp, AnEmptyInstitutionTitlesWithALeadingSpace) {
    writeSettingsText(settingsText(7, "Institution="));
    startUp();
    EXPECT_EQ(mainWindow().windowTitle(), QStringLiteral(" E-Mail"));
    EXPECT_EQ(loginWindow().windowTitle(), QStringLiteral(" E-Mail"));
}

TEST_F(StartUp, AnInstitutionKeepsItsSpacesInTheTitles) {
    writeSettingsText(settingsText(7, "Institution=  The School "));
    startUp();
    EXPECT_EQ(mainWindow().windowTitle(), QStringLiteral("  The School  E-Mail"));
}

TEST_F(StartUp, ShowGetMailWithACapitalYHidesTheGetMailButton) {
    writeSettingsText(settingsText(15, "ShowGetMail=Yes"));
    startUp();
    EXPECT_TRUE(mainWindow().cmdGetMail->isHidden());
    EXPECT_EQ(email::settings.ShowGetMail, QStringLiteral("Yes"));
}

TEST_F(StartUp, ShowGetMailYesShowsTheGetMailButton) {
    writeSettingsText(settingsText());
    startUp();
    EXPECT_FALSE(mainWindow().cmdGetMail->isHidden());
}

TEST_F(StartUp, ShowSetupOtherThanYesHidesTheSetupButton) {
    writeSettingsText(settingsText(1, "ShowSetup=Yes"));
    startUp();
    EXPECT_TRUE(loginWindow().cmdSetup->isHidden());
    EXPECT_EQ(email::settings.ShowSetup, QStringLiteral("no"));
}

TEST_F(StartUp, ShowSetupIsAppliedEvenWhenALaterLineFails) {
    writeSettingsText("ShowSetup=no\r\n");
    startUp();
    expectProblem(62);
    EXPECT_TRUE(loginWindow().cmdSetup->isHidden());
}

TEST_F(StartUp, DividesTheGridsWidthAmongItsColumns) {
    writeSettingsText(settingsText());
    startUp();
    const auto& grid = *mainWindow().MailGrid;
    const double width = grid.usableWidth();
    const std::array<double, 5> fractions = {0.05, 0.11, 0.365, 0.33, 0.145};
    for (int column = 0; column < 5; ++column) {
        EXPECT_EQ(grid.columnWidth(column),
                  std::lround(width * fractions.at(static_cast<std::size_t>(column))))
            << column;
    }
    EXPECT_GT(width, 600);
}

TEST_F(StartUp, LaterResizingOfTheGridDoesNotChangeTheColumns) {
    writeSettingsText(settingsText());
    startUp();
    auto& main = mainWindow();
    const int before = main.MailGrid->columnWidth(2);
    main.bringUp();
    main.resize(main.width() + 300, main.height());
    EXPECT_EQ(main.MailGrid->columnWidth(2), before);
}

TEST_F(StartUp, WritesTheTitlesAndShowsAnEmptyListWithoutControls) {
    writeSettingsText(settingsText());
    startUp();
    const auto& main = mainWindow();
    const std::array<const char*, 5> titles = {"Num", "Date", "From", "Subject", "Bytes"};
    for (int column = 0; column < 5; ++column) {
        EXPECT_EQ(main.MailGrid->TextMatrix(0, column),
                  QLatin1String(titles.at(static_cast<std::size_t>(column))));
    }
    EXPECT_EQ(main.MailGrid->Rows(), 2);
    EXPECT_FALSE(main.cmdRead->isEnabled());
    EXPECT_FALSE(main.cmdDelete->isEnabled());
    EXPECT_FALSE(main.MailGrid->isEnabled());
}

TEST_F(StartUp, LearnsTheSystemsDirectoryButReadsTheFileInTheCurrentOne) {
    writeSettingsText(settingsText());
    startUp();
    EXPECT_EQ(email::derived.WindowsDirectory, QStringLiteral("Z:\\etc"));
    EXPECT_EQ(email::settings.Institution, QStringLiteral("Example School"));
}

TEST_F(StartUp, ExitEndsTheProgramAtOnce) {
    writeSettingsText(settingsText());
    startUp();
    mainWindow().cmdExit->click();
    EXPECT_EQ(programEnds, 1);
}

TEST_F(StartUp, ClosingTheMainWindowEndsTheProgram) {
    writeSettingsText(settingsText());
    startUp();
    mainWindow().close();
    EXPECT_EQ(programEnds, 1);
}

TEST_F(StartUp, ADisabledMainWindowCannotBeClosed) {
    writeSettingsText(settingsText());
    startUp();
    mainWindow().setEnabled(false);
    mainWindow().close();
    EXPECT_EQ(programEnds, 0);
}

TEST_F(StartUp, ClosingTheLoginWindowDoesNotEndTheProgramButShowsTheMainWindow) {
    writeSettingsText(settingsText());
    startUp();
    loginWindow().close();
    EXPECT_EQ(programEnds, 0);
    EXPECT_TRUE(mainWindow().isVisible());
}

TEST_F(StartUp, TheAboutWindowComesFromTheHelpMenuAndGoesWithItsButton) {
    writeSettingsText(settingsText());
    startUp();
    mainWindow().bringUp();
    mainWindow().mnuHelp->trigger();
    EXPECT_TRUE(aboutWindow().isVisible());
    EXPECT_TRUE(aboutWindow().lblProduct->text().startsWith(QStringLiteral("Brindlewake")));
    aboutWindow().cmdOkAbout->click();
    EXPECT_FALSE(aboutWindow().isVisible());
    EXPECT_TRUE(mainWindow().isVisible());
    EXPECT_EQ(programEnds, 0);
}

TEST_F(StartUp, TheAboutWindowTellsHowTheLastConnectionsWereProtected) {
    writeSettingsText(settingsText());
    startUp();
    mainWindow().mnuHelp->trigger();
    EXPECT_EQ(aboutWindow().lblPOPServer->text(), QStringLiteral("Mail server (POP3): not connected yet"));
    EXPECT_EQ(aboutWindow().lblSMTPServer->text(), QStringLiteral("Mail server (SMTP): not connected yet"));
    email::protections.POPServer = {QStringLiteral("TLS 1.3"), true};
    email::protections.SMTPServer = {QStringLiteral("TLS 1.2"), false};
    mainWindow().mnuHelp->trigger();
    EXPECT_EQ(aboutWindow().lblPOPServer->text(),
              QStringLiteral("Mail server (POP3): encrypted, certificate valid (TLS 1.3)"));
    EXPECT_EQ(aboutWindow().lblSMTPServer->text(),
              QStringLiteral("Mail server (SMTP): encrypted, server not verified (TLS 1.2)"));
    email::protections.SMTPServer = transport::Protection();
    mainWindow().mnuHelp->trigger();
    EXPECT_EQ(aboutWindow().lblSMTPServer->text(), QStringLiteral("Mail server (SMTP): not encrypted"));
}

TEST_F(StartUp, CaptionsAreAsPeopleKnowThem) {
    writeSettingsText(settingsText());
    startUp();
    const auto& main = mainWindow();
    EXPECT_EQ(main.cmdGetMail->text(), QStringLiteral("&Get New Mail"));
    EXPECT_EQ(main.cmdExit->text(), QStringLiteral("E&xit"));
    EXPECT_EQ(main.mnuHelp->text(), QStringLiteral("&About"));
    EXPECT_EQ(main.cmdRead->text(), QStringLiteral("&Read "));
    EXPECT_EQ(main.cmdDelete->text(), QStringLiteral("&Delete"));
    EXPECT_EQ(main.cmdCmpose->text(), QStringLiteral("&Compose Mail"));
    EXPECT_EQ(loginWindow().cmdLogin->text(), QStringLiteral("&Get Mail"));
    EXPECT_EQ(loginWindow().cmdSetup->text(), QStringLiteral("S&etup"));
    EXPECT_EQ(loginWindow().lUser->text(), QStringLiteral("User Name:"));
    EXPECT_EQ(loginWindow().lPwd->text(), QStringLiteral("Password:"));
}
