#include "components/controls/common_dialog.h"
#include "email/credentials.h"
#include "email/shared_settings.h"
#include "tests/support/window_test.h"
#include "windows/frmFrom.h"
#include "windows/frmMain.h"
#include "windows/frmSend.h"

#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>

using support::WindowTest;
using testing::ElementsAre;

namespace {
class ComposeWindow : public WindowTest {
  protected:
    void start(const email::SettingsFields& fields) {
        writeSettings(fields);
        startUp();
        email::credentials.UserName = QStringLiteral("ann");
        mainWindow().bringUp();
    }

    void SetUp() override { start(school); }

    email::SettingsFields school = support::schoolSettings(QStringLiteral("mail.example.org"));
};

class ComposeWindowWith : public ComposeWindow {
  protected:
    void SetUp() override {}
};
} // namespace

TEST_F(ComposeWindow, ComposeDisablesTheMainWindowAndAwaitsTheRecipient) {
    mainWindow().cmdCmpose->click();
    EXPECT_FALSE(mainWindow().isEnabled());
    EXPECT_TRUE(composeWindow().isVisible());
    ASSERT_TRUE(QTest::qWaitForWindowActive(&composeWindow()));
    EXPECT_TRUE(composeWindow().tTo->hasFocus());
    EXPECT_EQ(composeWindow().tCc->text(), QString());
    EXPECT_EQ(composeWindow().lblSending->text(), QString());
}

TEST_F(ComposeWindow, SaveCopyPutsTheSenderIntoAnEmptyCc) {
    email::settings.SaveCopy = QStringLiteral("yes");
    mainWindow().cmdCmpose->click();
    EXPECT_EQ(composeWindow().tCc->text(), QStringLiteral("ann@example.org"));
}

TEST_F(ComposeWindow, SaveCopyAddsTheSenderToTheAddressesInCc) {
    email::settings.SaveCopy = QStringLiteral("yes");
    composeWindow().tCc->setText(QStringLiteral("bob@example.org"));
    mainWindow().cmdCmpose->click();
    EXPECT_EQ(composeWindow().tCc->text(), QStringLiteral("bob@example.org, ann@example.org"));
}

TEST_F(ComposeWindow, SaveCopyWithACapitalYKeepsNoCopy) {
    email::settings.SaveCopy = QStringLiteral("Yes");
    mainWindow().cmdCmpose->click();
    EXPECT_EQ(composeWindow().tCc->text(), QString());
}

TEST_F(ComposeWindow, WithoutShowDatabaseFindAddressIsHidden) {
    EXPECT_TRUE(composeWindow().cmdSendto->isHidden());
    EXPECT_TRUE(composeWindow().cmdCCto->isHidden());
}

TEST_F(ComposeWindowWith, ShowDatabaseFindAddressIsShown) {
    school.ShowDatabase = QStringLiteral("yes");
    start(school);
    EXPECT_FALSE(composeWindow().cmdSendto->isHidden());
    EXPECT_FALSE(composeWindow().cmdCCto->isHidden());
    EXPECT_EQ(composeWindow().cmdSendto->text(), QStringLiteral("Find Address"));
    EXPECT_EQ(composeWindow().cmdCCto->text(), QStringLiteral("Find Address"));
}

TEST_F(ComposeWindow, WithoutSendAttachmentsNothingCanBeAttached) {
    EXPECT_FALSE(composeWindow().cmdAttach->isEnabled());
    EXPECT_FALSE(composeWindow().lblAttachment->isEnabled());
    EXPECT_FALSE(composeWindow().txtAttachment->isEnabled());
}

TEST_F(ComposeWindowWith, SendAttachmentsTheChosenFileComesAsADrivePath) {
    school.SendAttachments = QStringLiteral("yes");
    start(school);
    qputenv("BRINDLEWAKE_DRIVE_D", QByteArray::fromStdString(folder.path().string()));
    folder.write("report.txt", "x");
    MSComDlg::replaceOpenDialog([this](const QString& /*folder*/) { return folder.qtPath("report.txt"); });
    EXPECT_TRUE(composeWindow().cmdAttach->isEnabled());
    EXPECT_TRUE(composeWindow().txtAttachment->isEnabled());
    composeWindow().cmdAttach->click();
    EXPECT_EQ(composeWindow().txtAttachment->text(), QStringLiteral("D:\\report.txt"));
    MSComDlg::replaceOpenDialog([](const QString& /*folder*/) { return QString(); });
    composeWindow().cmdAttach->click();
    EXPECT_EQ(composeWindow().txtAttachment->text(), QStringLiteral("D:\\report.txt"))
        << "left without a choice";
    MSComDlg::replaceOpenDialog({});
}

TEST_F(ComposeWindowWith, AttachStartsAtHomeAndThenWhereTheLastFileWas) {
    school.SendAttachments = QStringLiteral("yes");
    start(school);
    const QString home = folder.qtPath("home");
    const QString files = folder.qtPath("home/files");
    ASSERT_TRUE(QDir().mkpath(files));
    qputenv("BRINDLEWAKE_DRIVE_C", home.toUtf8());
    QStringList startedIn;
    QString chosen;
    MSComDlg::replaceOpenDialog([&](const QString& startFolder) {
        startedIn.append(QDir::cleanPath(startFolder));
        return chosen;
    });
    composeWindow().cmdAttach->click();
    chosen = files + QStringLiteral("/report.txt");
    composeWindow().cmdAttach->click();
    unload(composeWindow());
    chosen.clear();
    composeWindow().cmdAttach->click();
    ASSERT_TRUE(QDir(files).removeRecursively());
    composeWindow().cmdAttach->click();
    EXPECT_THAT(startedIn, ElementsAre(home, home, files, home));
    MSComDlg::replaceOpenDialog({});
}

TEST_F(ComposeWindowWith, AFileWithABackslashInItsNameIsToldKindlyAndNotAttached) {
    school.SendAttachments = QStringLiteral("yes");
    start(school);
    composeWindow().txtAttachment->setText(QStringLiteral("C:\\before.txt"));
    MSComDlg::replaceOpenDialog([this](const QString& /*folder*/) { return folder.qtPath("a\\b.txt"); });
    composeWindow().cmdAttach->click();
    EXPECT_THAT(boxTexts(), ElementsAre(QStringLiteral(
                                "This file cannot be attached: its name, or that of a folder it lies in, has "
                                "a backslash (\\) in it. Please copy the file to another folder or name and "
                                "attach the copy.")));
    EXPECT_EQ(boxes.at(0).title, school.Institution + QStringLiteral(" E-Mail"));
    EXPECT_EQ(composeWindow().txtAttachment->text(), QStringLiteral("C:\\before.txt"));
    MSComDlg::replaceOpenDialog({});
}

TEST_F(ComposeWindow, WithoutFindAddressTheFieldsReachAsFarAsTheSubject) {
    mainWindow().cmdCmpose->click();
    const frmSend& compose = composeWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&composeWindow()));
    EXPECT_EQ(compose.tTo->geometry().right(), compose.tSubject->geometry().right());
    EXPECT_EQ(compose.tCc->geometry().right(), compose.tSubject->geometry().right());
}

TEST_F(ComposeWindowWith, BesideFindAddressTheFieldsEndOnOneLine) {
    school.ShowDatabase = QStringLiteral("yes");
    start(school);
    mainWindow().cmdCmpose->click();
    const frmSend& compose = composeWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&composeWindow()));
    EXPECT_LT(compose.tTo->geometry().right(), compose.cmdSendto->geometry().left());
    EXPECT_EQ(compose.tTo->geometry().right(), compose.txtAttachment->geometry().right());
    EXPECT_EQ(compose.tCc->geometry().right(), compose.txtAttachment->geometry().right());
    EXPECT_EQ(compose.cmdSendto->geometry().right(), compose.tSubject->geometry().right());
}

TEST_F(ComposeWindow, TheFilterShowsAllFilesWithADotInTheirNameOrWithout) {
    EXPECT_EQ(MSComDlg::qtFilter(QStringLiteral("All Files *.* | *.*")), QStringLiteral("All Files *.* (*)"));
}

TEST_F(ComposeWindow, CancelGivesTheMainWindowBackWithoutSending) {
    mainWindow().cmdCmpose->click();
    composeWindow().tTo->setText(QStringLiteral("bob@example.org"));
    composeWindow().cmdCancel->click();
    EXPECT_TRUE(mainWindow().isEnabled());
    EXPECT_TRUE(mainWindow().isVisible());
    EXPECT_FALSE(composeWindow().isVisible());
    EXPECT_EQ(composeWindow().tTo->text(), QString());
    EXPECT_TRUE(boxes.empty());
}

TEST_F(ComposeWindow, AMessageInTheWindowIsShownAgainAndNeverFilledOver) {
    email::settings.SaveCopy = QStringLiteral("yes");
    mainWindow().cmdCmpose->click();
    composeWindow().tSubject->setText(QStringLiteral("mine"));
    mainWindow().setEnabled(true);
    mainWindow().cmdCmpose->click();
    messageWindow().OpenMessage = 1;
    messageWindow().cmdReply_Click();
    messageWindow().cmdFwrd_Click();
    EXPECT_EQ(composeWindow().tCc->text(), QStringLiteral("ann@example.org"));
    EXPECT_EQ(composeWindow().tSubject->text(), QStringLiteral("mine"));
    EXPECT_EQ(composeWindow().tMessage->bytes(), "");
    EXPECT_TRUE(messageWindow().isEnabled());
}

TEST_F(ComposeWindow, ClosedWhenTheMessageWindowHasOpenedItItGivesThatOneBack) {
    messageWindow().show();
    mainWindow().setEnabled(false);
    composeWindow().openFrom(messageWindow(), *composeWindow().tMessage);
    composeWindow().close();
    EXPECT_TRUE(messageWindow().isEnabled());
    EXPECT_FALSE(mainWindow().isEnabled());
}

TEST_F(ComposeWindow, TypedTextCanBeUndone) {
    composeWindow().show();
    QTest::keyClicks(composeWindow().tMessage, QStringLiteral("word"));
    QTest::keyClick(composeWindow().tMessage, Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(composeWindow().tMessage->toPlainText(), QString());
}
