// Checks for new mail before anybody has logged on.

#include "email/shared_settings.h"
#include "tests/retrieval/new_mail_check_fixture.h"

#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

using support::NewMailCheck;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {
class NobodyLoggedOn : public NewMailCheck {
  protected:
    /** Starts the program and closes the login window. */
    void startWithout(const char* setting, QString email::SettingsFields::*field) {
        auto fields = support::schoolSettings(server.address());
        fields.*field = QLatin1String(setting);
        writeSettings(fields);
        startUp();
        loginWindow().close();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&mainWindow()));
    }

    static void logInAgain() {
        ASSERT_TRUE(loginWindow().isVisible());
        loginWindow().tUser->setText(QStringLiteral("ann"));
        loginWindow().tpwd->setText(QStringLiteral("secret"));
        loginWindow().cmdLogin->click();
    }

    /** Opens the menu as a person does, and closes it. */
    static bool helpOffersToLogIn() {
        QTest::keyClick(&mainWindow(), Qt::Key_H, Qt::AltModifier);
        const bool offered = mainWindow().mnuLogin->isVisible();
        while (QWidget* const menu = QApplication::activePopupWidget()) {
            menu->close();
        }
        return offered;
    }
};
} // namespace

TEST_F(NobodyLoggedOn, GetNewMailLeadsBackToTheLoginWindow) {
    mailbox.deliver(message("1"));
    startWithout("no", &email::SettingsFields::ShowSetup);
    mainWindow().cmdGetMail->click();
    EXPECT_THAT(boxTexts(), ElementsAre(QStringLiteral("User Name Must Be Entered To Get Mail!"),
                                        QStringLiteral("You have no new mail.")));
    EXPECT_EQ(loginWindow().windowTitle(), QStringLiteral("Example School E-Mail"));
    EXPECT_FALSE(loginWindow().cmdSetup->isVisible());
    EXPECT_FALSE(helpOffersToLogIn());
    logInAgain();
    EXPECT_EQ(cell(1, 3), QStringLiteral("About 1"));
    EXPECT_FALSE(loginWindow().isVisible());
    mainWindow().cmdGetMail->click();
    EXPECT_FALSE(loginWindow().isVisible());
}

TEST_F(NobodyLoggedOn, AfterABrokenSettingsFileGetNewMailLeadsToTheLoginWindow) {
    writeSettingsText("\"yes\"\r\n");
    startUp();
    ASSERT_TRUE(mainWindow().isVisible());
    EXPECT_EQ(mainWindow().lStats->text(), QStringLiteral("0 messages 0 bytes total"));
    mainWindow().cmdGetMail->click();
    EXPECT_TRUE(loginWindow().isVisible());
}

TEST_F(NobodyLoggedOn, WhereGetNewMailIsHiddenTheHelpMenuLeadsBack) {
    mailbox.deliver(message("1"));
    startWithout("no", &email::SettingsFields::ShowGetMail);
    EXPECT_TRUE(helpOffersToLogIn());
    mainWindow().mnuLogin->trigger();
    EXPECT_THAT(boxTexts(), IsEmpty());
    logInAgain();
    EXPECT_EQ(cell(1, 3), QStringLiteral("About 1"));
    EXPECT_FALSE(helpOffersToLogIn());
}
