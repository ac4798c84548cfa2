#include "email/shared_settings.h"
#include "tests/support/file_faults.h"
#include "tests/support/pop3_script.h"
#include "tests/support/window_test.h"
#include "windows/frmLogin.h"
#include "windows/frmSetup.h"

#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QWheelEvent>

using support::WindowTest;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {
class SetupWindow : public WindowTest {
  protected:
    void openWith(const email::SettingsFields& fields) {
        writeSettings(fields);
        startUp();
        loginWindow().cmdSetup->click();
    }

    /** Clicks Update, which must end the program, and returns what the file holds then. */
    std::string updated() {
        setupWindow().cmdUpdate->click();
        EXPECT_EQ(programEnds, 1);
        return folder.read("tolk.ini");
    }

    email::SettingsFields school = support::schoolSettings(QStringLiteral("pop.example.org"));
};
} // namespace

TEST_F(SetupWindow, UpdateWithAnEmptiedPopServerWritesTheOldOneBack) {
    openWith(school);
    setupWindow().txtPOP->clear();
    setupWindow().cmdUpdate->click();
    EXPECT_THAT(folder.read("tolk.ini"), HasSubstr("\r\nPOPServer=pop.example.org\r\n"));
}

TEST_F(SetupWindow, AHostTypedAtTheLogOnIsNeitherShownNorWritten) {
    support::Pop3Mailbox mailbox;
    mailbox.answer("PASS", "-ERR no\r\n");
    const support::ScriptedServer server(mailbox);
    writeSettings(school);
    const std::string before = folder.read("tolk.ini");
    startUp();
    const QString otherName =
        server.address().replace(QStringLiteral("127.0.0.1"), QStringLiteral("localhost"));
    for (const QString& host : {otherName, server.address()}) {
        loginWindow().tUser->setText(QStringLiteral("ann@") + host);
        loginWindow().tpwd->setText(QStringLiteral("secret"));
        whileBoxIsOpen = [&host](const auto&) { EXPECT_EQ(email::settings.POPServer, host); };
        loginWindow().cmdLogin->click();
    }
    EXPECT_EQ(boxes.size(), 2U);
    EXPECT_EQ(email::settings.POPServer, server.address());
    EXPECT_EQ(email::settings.SMTPServer, server.address());
    EXPECT_EQ(email::derived.AtDomain, QStringLiteral("@127.0.0.1"));
    whileBoxIsOpen = nullptr;
    loginWindow().cmdSetup->click();
    EXPECT_EQ(setupWindow().txtPOP->text(), school.POPServer);
    EXPECT_EQ(setupWindow().txtSMTP->text(), school.SMTPServer);
    EXPECT_EQ(setupWindow().txtDomain->text(), school.DomainName);
    setupWindow().txtPOP->clear();
    setupWindow().txtSMTP->clear();
    EXPECT_EQ(updated(), before);
}

TEST_F(SetupWindow, UpdateWritesTheFieldsTellsToRestartAndEndsTheProgram) {
    openWith(school);
    setupWindow().txtSchool->setText(QStringLiteral("Other School"));
    setupWindow().cmdUpdate->click();
    EXPECT_THAT(folder.read("tolk.ini"), HasSubstr("\r\nInstitution=Other School\r\n"));
    ASSERT_THAT(boxTexts(), ElementsAre(QStringLiteral(
                                "You must restart Brindlewake in order for changes to take effect.")));
    EXPECT_EQ(boxes[0].title, QStringLiteral("Brindlewake"));
    EXPECT_EQ(boxes[0].icon, controls::MessageIcon::Exclamation);
    EXPECT_EQ(programEnds, 1);
    EXPECT_EQ(email::settings.Institution, QStringLiteral("Example School"));
}

TEST_F(SetupWindow, UpdateOnUntouchedFieldsWritesTheSameFileAgain) {
    openWith(school);
    const std::string before = folder.read("tolk.ini");
    setupWindow().cmdUpdate->click();
    EXPECT_EQ(folder.read("tolk.ini"), before);
}

TEST_F(SetupWindow, ExitAfterEditingWritesNothingAndTheLoginWindowComesBackEnabled) {
    openWith(school);
    const std::string before = folder.read("tolk.ini");
    loginWindow().hide();
    loginWindow().setEnabled(false);
    setupWindow().txtSchool->setText(QStringLiteral("Other School"));
    setupWindow().cmdExit->click();
    EXPECT_EQ(folder.read("tolk.ini"), before);
    EXPECT_TRUE(loginWindow().isVisible());
    EXPECT_TRUE(loginWindow().isEnabled());
    EXPECT_FALSE(setupWindow().isVisible());
    EXPECT_EQ(programEnds, 0);
}

TEST_F(SetupWindow, ClosedFromItsFrameWithNothingElseToSeeShowsTheMainWindow) {
    startUp();
    ASSERT_TRUE(setupWindow().isVisible());
    setupWindow().close();
    EXPECT_FALSE(loginWindow().isVisible());
    EXPECT_TRUE(loginWindow().isEnabled());
    EXPECT_EQ(programEnds, 0);
}

TEST_F(SetupWindow, EscapeClosesItAsItsFrameDoes) {
    openWith(school);
    const std::string before = folder.read("tolk.ini");
    loginWindow().setEnabled(false);
    setupWindow().txtSchool->setText(QStringLiteral("Other School"));
    setupWindow().bringUp();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&setupWindow()));
    QTest::keyClick(setupWindow().cboPlayWav, Qt::Key_Escape);
    EXPECT_FALSE(setupWindow().isVisible());
    EXPECT_TRUE(loginWindow().isEnabled());
    EXPECT_EQ(folder.read("tolk.ini"), before);
    EXPECT_EQ(setupWindow().txtSchool->text(), school.Institution) << "it was unloaded";
    EXPECT_EQ(programEnds, 0);
}

TEST_F(SetupWindow, EveryFieldShowsItsSettingAndUpdateWritesItUnderItsKey) {
    const email::SettingsFields all = {.ShowSetup = QStringLiteral("yes"),
                                       .POPServer = QStringLiteral("tls://pop.example.org"),
                                       .SMTPServer = QStringLiteral("StartTLS://smtp.example.org:2525"),
                                       .DomainName = QStringLiteral("mail.example.org"),
                                       .Institution = QStringLiteral(" Hill School "),
                                       .PlayWav = QStringLiteral("yes"),
                                       .ShowDatabase = QStringLiteral("no"),
                                       .SendAttachments = QStringLiteral("yes"),
                                       .SaveDirectory = QStringLiteral("Q:\\no such folder"),
                                       .AllowPrinting = QStringLiteral("Yes"),
                                       .SaveCopy = QStringLiteral("perhaps"),
                                       .ShowGetMail = QStringLiteral("no"),
                                       .GetMailEvery = QStringLiteral("-61"),
                                       .LDAPServer = QStringLiteral("ldap.example.org"),
                                       .LDAPSearchBase = QStringLiteral("o=Hill School,c=gb"),
                                       .AddressLookup = QStringLiteral("Directory Server")};
    openWith(all);
    const frmSetup& window = setupWindow();
    EXPECT_EQ(window.cboSetup->currentText(), all.ShowSetup);
    EXPECT_EQ(window.txtPOP->text(), all.POPServer);
    EXPECT_EQ(window.txtSMTP->text(), all.SMTPServer);
    EXPECT_EQ(window.txtDomain->text(), all.DomainName);
    EXPECT_EQ(window.txtSchool->text(), all.Institution);
    EXPECT_EQ(window.cboPlayWav->currentText(), all.PlayWav);
    EXPECT_EQ(window.cboShowDatabase->currentText(), all.ShowDatabase);
    EXPECT_EQ(window.cboAttachments->currentText(), all.SendAttachments);
    EXPECT_EQ(window.txtSaveDir->text(), all.SaveDirectory);
    EXPECT_EQ(window.cboPrinter->currentText(), all.AllowPrinting);
    EXPECT_EQ(window.cboSaveCopy->currentText(), all.SaveCopy);
    EXPECT_EQ(window.cboShowGetMail->currentText(), all.ShowGetMail);
    EXPECT_EQ(window.cboCheckNewMail->currentText(), all.GetMailEvery);
    EXPECT_EQ(window.txtLDAPServer->text(), all.LDAPServer);
    EXPECT_EQ(window.txtSearchBase->text(), all.LDAPSearchBase);
    EXPECT_EQ(window.cboAddressIn->currentText(), all.AddressLookup);
    EXPECT_EQ(updated(), email::settingsFileText(all, email::Settings()));
}

TEST_F(SetupWindow, UpdateWithoutASettingsFileWritesTheDefaultsAsNineteenLines) {
    startUp();
    boxes.clear();
    EXPECT_EQ(updated(), email::settingsFileText({}, email::Settings()));
}

TEST_F(SetupWindow, UpdateWithEveryFieldEmptiedWritesEverySettingBack) {
    openWith(school);
    for (auto* field : setupWindow().findChildren<QLineEdit*>()) {
        field->clear();
    }
    EXPECT_EQ(updated(), email::settingsFileText(school, email::Settings()));
}

TEST_F(SetupWindow, TheBoxOfUpdateComesWhenTheFileIsWrittenAndTheWindowHidden) {
    openWith(school);
    setupWindow().txtSchool->setText(QStringLiteral("Other School"));
    whileBoxIsOpen = [this](const controls::MessageBox& box) {
        EXPECT_EQ(box.buttons, controls::MessageButtons::Ok);
        EXPECT_FALSE(setupWindow().isVisible());
        EXPECT_THAT(folder.read("tolk.ini"), HasSubstr("Institution=Other School\r\n"));
        EXPECT_EQ(programEnds, 0);
    };
    updated();
    EXPECT_EQ(boxes.size(), 1U);
}

TEST_F(SetupWindow, WithThePersonalAddressBookTheLdapFieldsAreDisabledYetUpdateWritesTheirTexts) {
    school.AddressLookup = QStringLiteral("Directory Server");
    openWith(school);
    auto& window = setupWindow();
    EXPECT_TRUE(window.txtLDAPServer->isEnabled());
    EXPECT_TRUE(window.txtSearchBase->isEnabled());
    window.txtLDAPServer->setText(QStringLiteral("typed.example.org"));
    window.txtSearchBase->setText(QStringLiteral("o=typed"));
    window.cboAddressIn->setCurrentIndex(0);
    EXPECT_EQ(window.cboAddressIn->currentText(), QStringLiteral("Personal Address Book"));
    EXPECT_FALSE(window.txtLDAPServer->isEnabled());
    EXPECT_FALSE(window.txtSearchBase->isEnabled());
    EXPECT_THAT(updated(), HasSubstr("\r\nLDAPServer=typed.example.org\r\nLDAPSearchBase=o=typed\r\n"
                                     "AddressLookup=Personal Address Book\r\n"));
}

TEST_F(SetupWindow, AnAddressLookupOfAnotherLetterCaseLeavesTheLdapFieldsDisabledWhenTheWindowOpens) {
    school.AddressLookup = QStringLiteral("Directory server");
    openWith(school);
    EXPECT_EQ(setupWindow().cboAddressIn->currentText(), QStringLiteral("Directory server"));
    EXPECT_FALSE(setupWindow().txtLDAPServer->isEnabled());
    EXPECT_FALSE(setupWindow().txtSearchBase->isEnabled());
}

TEST_F(SetupWindow, EmptyingCboCheckNewMailAndPressingUpdateWritesTheCurrentGetMailEveryValue) {
    school.GetMailEvery = QStringLiteral("15");
    openWith(school);
    setupWindow().cboCheckNewMail->clearEditText();
    EXPECT_THAT(updated(), HasSubstr("\r\nGetMailEvery=15\r\n"));
}

TEST_F(SetupWindow, TheIntervalTakesNoLettersWhichWouldKeepTheProgramFromStarting) {
    openWith(school);
    QComboBox& interval = *setupWindow().cboCheckNewMail;
    interval.clearEditText();
    QTest::keyClicks(interval.lineEdit(), QStringLiteral("ab-1c2"));
    EXPECT_EQ(interval.currentText(), QStringLiteral("12"));
}

TEST_F(SetupWindow, TheListItemsAreYesAndNoAndTheMinutesFrom0To60) {
    openWith(school);
    const auto items = [](const QComboBox* box) {
        QStringList texts;
        for (int i = 0; i < box->count(); ++i) {
            texts.append(box->itemText(i));
        }
        return texts;
    };
    const frmSetup& window = setupWindow();
    for (const QComboBox* box :
         {window.cboSetup, window.cboPlayWav, window.cboShowDatabase, window.cboAttachments,
          window.cboPrinter, window.cboSaveCopy, window.cboShowGetMail}) {
        EXPECT_EQ(items(box).join(u','), QStringLiteral("yes,no"));
    }
    EXPECT_EQ(items(window.cboAddressIn).join(u','),
              QStringLiteral("Personal Address Book,Directory Server"));
    QStringList minutes;
    for (int minute = 0; minute <= 60; ++minute) {
        minutes.append(QString::number(minute));
    }
    EXPECT_EQ(items(window.cboCheckNewMail), minutes);
}

TEST_F(SetupWindow, TheArrowKeysGoOnFromTheSettingThatIsShown) {
    school.GetMailEvery = QStringLiteral("15");
    openWith(school);
    QTest::keyClick(setupWindow().cboCheckNewMail, Qt::Key_Down);
    EXPECT_EQ(setupWindow().cboCheckNewMail->currentText(), QStringLiteral("16"));
}

TEST_F(SetupWindow, WalkingThroughTheFieldsChangesNoneOfThem) {
    school.AllowPrinting = QStringLiteral("Yes");
    school.SaveCopy = QStringLiteral("NO");
    school.AddressLookup = QStringLiteral("directory server");
    openWith(school);
    frmSetup& window = setupWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    for (int i = 0; i < 25; ++i) {
        QTest::keyClick(window.focusWidget(), Qt::Key_Tab);
    }
    EXPECT_EQ(updated(), email::settingsFileText(school, email::Settings()));
}

TEST_F(SetupWindow, TurningTheWheelOverAFieldScrollsThePageAndChangesNoSetting) {
    openWith(school);
    const QString before = setupWindow().cboSetup->currentText();
    QWheelEvent turn(QPointF(1, 1), QPointF(1, 1), QPoint(), QPoint(0, -120), Qt::NoButton, Qt::NoModifier,
                     Qt::NoScrollPhase, false);
    QApplication::sendEvent(setupWindow().cboSetup, &turn);
    EXPECT_EQ(setupWindow().cboSetup->currentText(), before);
    EXPECT_FALSE(turn.isAccepted());
}

TEST_F(SetupWindow, HiddenAndOpenedAgainItKeepsWhatWasTyped) {
    openWith(school);
    setupWindow().txtSchool->setText(QStringLiteral("Other School"));
    setupWindow().cmdExit->click();
    loginWindow().cmdSetup->click();
    EXPECT_TRUE(setupWindow().isVisible());
    EXPECT_EQ(setupWindow().txtSchool->text(), QStringLiteral("Other School"));
}

TEST_F(SetupWindow, ClosedAndOpenedAgainItShowsTheSettings) {
    openWith(school);
    setupWindow().txtSchool->setText(QStringLiteral("Other School"));
    loginWindow().setEnabled(false);
    setupWindow().close();
    EXPECT_TRUE(loginWindow().isEnabled());
    EXPECT_EQ(folder.read("tolk.ini"), email::settingsFileText(school, email::Settings()));
    loginWindow().cmdSetup->click();
    EXPECT_EQ(setupWindow().txtSchool->text(), QStringLiteral("Example School"));
}

TEST_F(SetupWindow, AFileThatCannotBeWrittenIsReportedAndTheProgramGoesOn) {
    openWith(school);
    std::filesystem::remove(folder.path("tolk.ini"));
    std::filesystem::create_directory(folder.path("tolk.ini"));
    folder.write("tolk.ini/kept", "x");
    setupWindow().cmdUpdate->click();
    ASSERT_EQ(boxes.size(), 1U);
    EXPECT_TRUE(boxes[0].text.startsWith(QStringLiteral("Run-time error ")));
    EXPECT_EQ(programEnds, 0);
    EXPECT_TRUE(setupWindow().isVisible());
}

TEST_F(SetupWindow, AFileThatCannotBeWrittenToItsEndLeavesTheOldOneAndTheFieldsAsTyped) {
    openWith(school);
    const std::string before = folder.read("tolk.ini");
    setupWindow().txtSchool->setText(QStringLiteral("Other School"));
    {
        const support::FileSizeLimit full(0);
        setupWindow().cmdUpdate->click();
    }
    ASSERT_EQ(boxes.size(), 1U);
    EXPECT_TRUE(boxes[0].text.startsWith(QStringLiteral("Run-time error "))) << boxes[0].text.toStdString();
    EXPECT_EQ(boxes[0].title, QStringLiteral("Brindlewake"));
    EXPECT_EQ(folder.read("tolk.ini"), before);
    EXPECT_EQ(folder.entries(), 1U);
    EXPECT_EQ(programEnds, 0);
    EXPECT_TRUE(setupWindow().isVisible());
    EXPECT_TRUE(setupWindow().isEnabled());
    EXPECT_EQ(setupWindow().txtSchool->text(), QStringLiteral("Other School"));
    // Once the disk has room again, Update succeeds with the same fields.
    EXPECT_THAT(updated(), HasSubstr("\r\nInstitution=Other School\r\n"));
}
